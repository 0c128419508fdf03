// Account management: password change, fund transfers in and out and between nodes, and the
// allocation ratio between nodes.
#include <cmath>

#include "encode.h"
#include "handlers.h"
#include "util/field_ids.h"

namespace sim {
namespace {

bool IsTradeNode(const Customer& cu, std::int32_t node) {
  for (std::int32_t n : cu.TradeNodes())
    if (n == node) return true;
  return false;
}

bool FundAccountOk(HandlerCtx& c, const Customer& cu) {
  std::string zjzh = c.req.Text(fid::ZJZH);
  if (zjzh.empty() || zjzh == cu.cfg.zjzh) return true;
  c.ans.Fail(err::kBadAccount, "fund account " + zjzh + " is not the customer's");
  return false;
}

void Done(HandlerCtx& c, const Customer& cu, const std::string& msg) {
  c.ans.code = 1;
  c.ans.msg = msg;
  Row& r = c.ans.AddRow();
  Put(r, fid::KHH, cu.cfg.khh);
  Put(r, fid::ROW_STATE, 1);
}

}  // namespace

void HandleModifyPwd(HandlerCtx& c) {
  // "610303" changes the trade password, "610304" the fund password; both come in the 3rd
  // form and take effect at once (the next login or transfer checks the new one).
  Customer* cu = KvCustomer(c, false);
  if (cu == nullptr) return;
  std::string& pwd = c.req.func == "610303" ? cu->trade_pwd : cu->fund_pwd;
  std::string oldp, newp;
  if (!DecodePassword(PwdForm::Third, cu->cfg.khh, c.req.Text(fid::OLD_PWD), &oldp) ||
      oldp != pwd) {
    c.ans.Fail(err::kBadPassword, "wrong old password");
    Put(c.ans.AddRow(), fid::ROW_STATE, err::kBadPassword);
    return;
  }
  if (!DecodePassword(PwdForm::Third, cu->cfg.khh, c.req.Text(fid::NEW_PWD), &newp) ||
      newp.empty()) {
    c.ans.Fail(err::kBadPassword, "new password is not valid");
    Put(c.ans.AddRow(), fid::ROW_STATE, err::kBadPassword);
    return;
  }
  pwd = newp;
  Done(c, *cu, "password changed");
}

void HandleTransfer(HandlerCtx& c) {
  // "610403" brings funds in, "610404" takes them out; the fund password in the 3rd form.
  Customer* cu = KvCustomer(c, false);
  if (cu == nullptr || !FundAccountOk(c, *cu)) return;
  std::string pwd;
  if (!DecodePassword(PwdForm::Third, cu->cfg.khh, c.req.Text(fid::JYMM), &pwd) ||
      pwd != cu->fund_pwd)
    return c.ans.Fail(err::kBadPassword, "wrong fund password");
  double amount = c.req.Double(fid::FSJE);
  if (!(amount > 0)) return c.ans.Fail(err::kBadOrder, "amount must be positive");
  auto nodes = cu->TradeNodes();
  double* alloc = nodes.empty() ? nullptr : &cu->node_alloc[nodes[0]];
  if (c.req.func == "610403") {
    cu->AddFunds(amount);
    if (alloc) *alloc += amount;
  } else {
    if (amount > cu->Available() + 1e-6)
      return c.ans.Fail(err::kNoFunds, "insufficient funds: available " + Money(cu->Available()));
    cu->AddFunds(-amount);
    if (alloc) *alloc -= amount;
  }
  Done(c, *cu, "transfer done");
}

void HandleTransferBetweenNodes(HandlerCtx& c) {
  Customer* cu = KvCustomer(c, false);
  if (cu == nullptr || !FundAccountOk(c, *cu)) return;
  auto n1 = static_cast<std::int32_t>(c.req.Long(fid::NODE1));
  auto n2 = static_cast<std::int32_t>(c.req.Long(fid::NODE2));
  if (!IsTradeNode(*cu, n1) || !IsTradeNode(*cu, n2) || n1 == n2)
    return c.ans.Fail(err::kBadNode, "nodes " + std::to_string(n1) + " and " + std::to_string(n2) +
                                         " are not two trading nodes of the customer");
  double amount = c.req.Double(fid::FSJE);
  if (!(amount > 0)) return c.ans.Fail(err::kBadOrder, "amount must be positive");
  if (amount > cu->node_alloc[n1] + 1e-6)
    return c.ans.Fail(err::kNoFunds,
                      "node " + std::to_string(n1) + " holds only " + Money(cu->node_alloc[n1]));
  cu->node_alloc[n1] -= amount;
  cu->node_alloc[n2] += amount;
  Done(c, *cu, "transfer between nodes done");
}

void HandleSetRatio(HandlerCtx& c) {
  Customer* cu = KvCustomer(c, false);
  if (cu == nullptr || !FundAccountOk(c, *cu)) return;
  auto n1 = static_cast<std::int32_t>(c.req.Long(fid::NODE1));
  auto n2 = static_cast<std::int32_t>(c.req.Long(fid::NODE2));
  double r1 = c.req.Double(fid::RATIO1), r2 = c.req.Double(fid::RATIO2);
  if (!IsTradeNode(*cu, n1) || !IsTradeNode(*cu, n2) || n1 == n2)
    return c.ans.Fail(err::kBadNode, "nodes " + std::to_string(n1) + " and " + std::to_string(n2) +
                                         " are not two trading nodes of the customer");
  if (r1 < 0 || r2 < 0 || r1 + r2 > 1.0 + 1e-9)
    return c.ans.Fail(err::kBadOrder, "ratios must be >= 0 and add up to at most 1");
  cu->node_ratio[n1] = r1;
  cu->node_ratio[n2] = r2;
  Done(c, *cu, "allocation ratio set");
}

void HandleQueryRatio(HandlerCtx& c) {
  Customer* cu = KvCustomer(c, false);
  if (cu == nullptr) return;
  auto nodes = cu->TradeNodes();
  c.ans.code = 1;
  // One row per pair of the first trading node with each other one; a single node alone.
  for (std::size_t i = 1; i <= nodes.size() && !nodes.empty(); ++i) {
    std::int32_t n2 = i < nodes.size() ? nodes[i] : 0;
    if (n2 == 0 && nodes.size() > 1) break;
    Row& r = c.ans.AddRow();
    Put(r, fid::KHH, cu->cfg.khh);
    Put(r, fid::ZJZH, cu->cfg.zjzh);
    Put(r, fid::NODE1, nodes[0]);
    Put(r, fid::NODE2, n2);
    PutMoney(r, fid::RATIO1, cu->node_ratio[nodes[0]], 6);
    PutMoney(r, fid::RATIO2, n2 ? cu->node_ratio[n2] : 0.0, 6);
  }
}

void HandleQueryNodeFunds(HandlerCtx& c) {
  Customer* cu = KvCustomer(c, false);
  if (cu == nullptr) return;
  c.ans.code = 1;
  for (std::int32_t n : cu->TradeNodes()) {
    Row& r = c.ans.AddRow();
    Put(r, fid::KHH, cu->cfg.khh);
    Put(r, fid::ZJZH, cu->cfg.zjzh);
    Put(r, fid::NODE_ID, n);
    PutMoney(r, fid::FUND_AMOUNT1, cu->node_alloc[n]);
  }
}

}  // namespace sim
