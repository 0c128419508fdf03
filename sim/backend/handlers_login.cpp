// Login, the customer's node list, the server's clock and the trade date.
#include "encode.h"
#include "handlers.h"
#include "util/field_ids.h"

namespace sim {

void HandleLogin(HandlerCtx& c) {
  // "610301" (direct) expects the 3rd-form password, "A00401" (authentication) the uni form.
  bool direct = c.req.func == "610301";
  std::string khh = c.req.Text(fid::KHH);
  Customer* cu = c.be.FindCustomer(khh);
  if (cu == nullptr) return c.ans.Fail(err::kNoCustomer, "customer " + khh + " does not exist");
  std::string clear;
  if (!DecodePassword(direct ? PwdForm::Third : PwdForm::Uni, khh, c.req.Text(fid::JYMM), &clear) ||
      clear != cu->trade_pwd)
    return c.ans.Fail(err::kBadPassword, "wrong trade password");
  if (!NodeAllowed(*cu, c.who.node_id))
    return c.ans.Fail(err::kBadNode,
                      "customer " + khh + " has no node " + std::to_string(c.who.node_id));
  std::int64_t token = c.be.IssueToken(*cu);
  c.ans.code = 1;
  c.ans.msg = "login ok";
  Row& r = c.ans.AddRow();
  Put(r, fid::KHH, khh);
  Put(r, fid::TOKEN, cu->cfg.token_text.empty() ? std::to_string(token) : cu->cfg.token_text);
  Put(r, fid::SYSTEM_TYPE, 4);
  Put(r, fid::NODE_ID, c.who.node_id);
  Put(r, fid::ZJZH, cu->cfg.zjzh);
}

void HandleNodeList(HandlerCtx& c) {
  std::string khh = c.req.Text(fid::KHH);
  Customer* cu = c.be.FindCustomer(khh);
  if (cu == nullptr) return c.ans.Fail(err::kNoCustomer, "customer " + khh + " does not exist");
  c.ans.code = 1;
  for (const auto& n : cu->cfg.nodes) {
    Row& r = c.ans.AddRow();
    Put(r, fid::KHH, khh);
    Put(r, fid::SYSTEM_TYPE, n.system_type);
    Put(r, fid::NODE_ID, n.node_id);
    Put(r, fid::JYS, "SH");
  }
}

void HandleServerTime(HandlerCtx& c) {
  c.ans.code = 1;
  Row& r = c.ans.AddRow();
  Put(r, fid::SYS_DATE, c.be.clock.ShownDate());
  Put(r, fid::TIME_UNUSED, 0);
  Put(r, fid::TIME_CORRECTION, 0);
  Put(r, fid::SERVER_TIME, c.be.clock.TimeText());
}

void HandleTradeDate(HandlerCtx& c) {
  c.ans.code = 1;
  Put(c.ans.AddRow(), fid::TRADE_DATE, c.be.TradeDate());
}

}  // namespace sim
