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
  };
  auto it = kTable.find(func);
  return it == kTable.end() ? nullptr : it->second;
}

std::string Money(double v) {
  char buf[64];
  std::snprintf(buf, sizeof buf, "%.2f", v);
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
  if (!NodeAllowed(*cu, c.set.node_id)) {
    c.ans.Fail(err::kBadNode, "customer " + khh + " has no node " + std::to_string(c.set.node_id));
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
  if (!NodeAllowed(*cu, c.set.node_id)) {
    RefuseBlock(c, answer_size, err::kBadNode, "customer " + khh + " has no node " + std::to_string(c.set.node_id));
    return nullptr;
  }
  if (!c.be.TokenValid(*cu, req.I64(3))) {
    RefuseBlock(c, answer_size, err::kBadToken, "invalid token, please log in again");
    return nullptr;
  }
  return cu;
}

}  // namespace sim
