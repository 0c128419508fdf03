#include "handlers.h"

#include <cstdio>
#include <unordered_map>

#include "util/field_ids.h"

namespace sim {

Handler FindHandler(const std::string& func) {
  // The one table of function code -> handler.
  static const std::unordered_map<std::string, Handler> kTable = {
      // login, nodes, clock
      {"610301", HandleLogin},
      {"A00401", HandleLogin},
      {"D00749", HandleNodeList},
      {"A00210", HandleNodeList},
      {"A00001", HandleServerTime},
      {"A00066", HandleTradeDate},
      // ordinary orders
      {"19001", HandleEntrust},
      {"19002", HandleWithdraw},
      {"19012", HandleBatch},
      {"19063", HandleBatchWithdraw},
      {"19020", HandleWithdraw},
      {"19044", HandleWithdraw},
      {"19026", HandleWithdraw},
      // ETF
      {"19013", HandleEtfEntrust},
      {"19014", HandleEtfEntrust},
      {"D00084", HandleEtfInfo},
      {"D00088", HandleEtfConstituents},
      // other businesses
      {"19042", HandleBlockBusiness},
      {"19043", HandleBlockBusiness},
      {"19025", HandleBlockBusiness},
      {"19131", HandleBlockBusiness},
      {"19059", HandleKvBusiness},
      {"19049", HandleKvBusiness},
      {"19050", HandleKvBusiness},
      {"19051", HandleKvBusiness},
      {"19081", HandleKvBusiness},
      {"19090", HandleKvBusiness},
      {"19091", HandleKvBusiness},
      {"19092", HandleKvBusiness},
      {"19052", HandleKvWithdraw},
      {"19096", HandleKvWithdraw},
      // tradable quantity
      {"19011", HandleTradableQty},
      {"19024", HandleTradableQty},
      {"19045", HandleTradableQty},
      {"19028", HandleTradableQty},
      {"19133", HandleTradableQty},
      {"19058", HandleKvTradableQty},
      {"19105", HandleKvTradableQty},
      // queries
      {"DQ0003", HandleQueryFunds},
      {"D00734", HandleQueryAccounts},
      {"D00985", HandleQueryPsqy},
      {"D00751", HandleQueryOrders},
      {"D00752", HandleQueryMatches},
      {"D00753", HandleQueryPositions},
      {"D00754", HandleQueryEtfShares},
      // account management
      {"610303", HandleModifyPwd},
      {"610304", HandleModifyPwd},
      {"610403", HandleTransfer},
      {"610404", HandleTransfer},
      {"910001", HandleTransferBetweenNodes},
      {"910004", HandleSetRatio},
      {"910005", HandleQueryRatio},
      {"910006", HandleQueryNodeFunds},
  };
  auto it = kTable.find(func);
  return it == kTable.end() ? nullptr : it->second;
}

std::string Money(double v, int decimals) {
  char buf[64];
  std::snprintf(buf, sizeof buf, "%.*f", decimals, v);
  return buf;
}

bool NodeAllowed(const Customer& cu, std::int32_t node_id) {
  if (node_id <= 0) return true;  // the back end routes to the customer's default node
  for (const auto& n : cu.cfg.nodes)
    if (n.node_id == node_id) return true;
  return false;
}

Customer* KvCustomer(HandlerCtx& c, bool token) {
  std::string khh = c.req.Text(fid::KHH);
  Customer* cu = c.be.FindCustomer(khh);
  if (cu == nullptr) {
    c.ans.Fail(err::kNoCustomer, "customer " + khh + " does not exist");
    return nullptr;
  }
  if (!NodeAllowed(*cu, c.who.node_id)) {
    c.ans.Fail(err::kBadNode, "customer " + khh + " has no node " + std::to_string(c.who.node_id));
    return nullptr;
  }
  if (token && !c.be.TokenValid(*cu, c.req.Long(fid::TOKEN))) {
    c.ans.Fail(err::kBadToken, "invalid token, please log in again");
    return nullptr;
  }
  return cu;
}

Block AnswerBlock(const Request& req, std::size_t size, int code, const std::string& msg) {
  Block b(size);
  b.bytes().replace(0, std::min<std::size_t>(30, std::min(size, req.block.size())),
                    req.block.substr(0, std::min<std::size_t>(30, size)));
  b.PutI16(11, code);
  b.PutText(302, 127, msg);
  return b;
}

void SetBlockAnswer(HandlerCtx& c, Block b) {
  c.ans.code = Block(b.bytes()).I16(11);
  c.ans.msg = b.Text(302, 128);
  c.ans.blocks.clear();
  c.ans.blocks.push_back(std::move(b.bytes()));
}

void RefuseBlock(HandlerCtx& c, std::size_t answer_size, int code, const std::string& msg) {
  SetBlockAnswer(c, AnswerBlock(c.req, answer_size, code, msg));
}

Customer* BlockCustomer(HandlerCtx& c, std::size_t answer_size) {
  Block req(c.req.block);
  std::string khh = req.Text(13, 13);
  Customer* cu = c.be.FindCustomer(khh);
  if (cu == nullptr) {
    RefuseBlock(c, answer_size, err::kNoCustomer, "customer " + khh + " does not exist");
    return nullptr;
  }
  if (!NodeAllowed(*cu, c.who.node_id)) {
    RefuseBlock(c, answer_size, err::kBadNode,
                "customer " + khh + " has no node " + std::to_string(c.who.node_id));
    return nullptr;
  }
  if (!c.be.TokenValid(*cu, req.I64(3))) {
    RefuseBlock(c, answer_size, err::kBadToken, "invalid token, please log in again");
    return nullptr;
  }
  return cu;
}

}  // namespace sim
