// ETF creation (19013, category 29) and redemption (19014, category 30) against the basket of
// the ETF's constituents. Both complete at once: a confirmation and one match report.
// Creation takes the constituents from the customer's sellable positions; a missing quantity
// of a constituent that admits cash substitution is paid in cash at 110% of its price, one
// that does not refuses the creation. The cash component is paid on creation and received
// on redemption.
#include <cmath>

#include "handlers.h"
#include "market.h"
#include "order_blocks.h"

namespace sim {

void HandleEtfEntrust(HandlerCtx& c) {
  constexpr std::size_t size = blk::kEntrustAnswer;
  Customer* cu = BlockCustomer(c, size);
  if (cu == nullptr) return;
  Block req(c.req.block);
  bool creation = c.req.func == "19013";
  std::string jys = req.Text(blk::kEtfJys, 3), zqdm = req.Text(blk::kEtfZqdm, 9),
              gdh = req.Text(blk::kEtfGdh, 11);
  std::int64_t wtsl = req.I32(blk::kEtfWtsl);
  int jylb = req.U8(blk::kEtfJylb);
  if (jylb != (creation ? 29 : 30))
    return RefuseBlock(
        c, size, err::kBadOrder,
        "trade category " + std::to_string(jylb) + " does not fit function " + c.req.func);
  const EtfCfg* etf = c.be.FindEtf(jys, zqdm);
  if (etf == nullptr)
    return RefuseBlock(c, size, err::kNoEtf, "ETF " + jys + "." + zqdm + " not found");
  if (!gdh.empty() && gdh != cu->GdhFor(jys))
    return RefuseBlock(c, size, err::kBadAccount,
                       "shareholder account [" + gdh + "] is not the customer's on " + jys);
  if (creation && !etf->creation_allowed)
    return RefuseBlock(c, size, err::kNotAllowed, "ETF " + zqdm + " admits no creation");
  if (wtsl <= 0 || etf->unit <= 0 || wtsl % etf->unit != 0)
    return RefuseBlock(
        c, size, err::kBadOrder,
        "quantity must be a multiple of the creation unit " + std::to_string(etf->unit));
  std::int64_t units = wtsl / etf->unit;
  double cash = etf->cash * static_cast<double>(units);

  if (creation) {
    // Check the whole basket before touching anything.
    for (const auto& k : etf->constituents) {
      std::int64_t need = k.qty * units;
      Position* p = cu->FindPosition(k.jys, k.zqdm);
      std::int64_t have = p ? std::min(p->sellable, need) : 0;
      if (have < need) {
        if (k.flag != 1)
          return RefuseBlock(c, size, err::kNoShares,
                             "constituent " + k.zqdm + " short by " + std::to_string(need - have) +
                                 " and not substitutable");
        const Security* s = c.be.FindSecurity(k.jys, k.zqdm);
        cash += static_cast<double>(need - have) * (s ? s->last : 0.0) * 1.1;
      }
    }
    if (cash > cu->Available() + 1e-6)
      return RefuseBlock(
          c, size, err::kNoFunds,
          "insufficient funds: needs " + Money(cash) + ", available " + Money(cu->Available()));
    for (const auto& k : etf->constituents) {
      if (Position* p = cu->FindPosition(k.jys, k.zqdm)) {
        std::int64_t take = std::min(p->sellable, k.qty * units);
        p->sellable -= take;
        p->balance -= take;
      }
    }
    cash = Round2(cash);
    cu->AddFunds(-cash);
    Position& e = cu->GetPosition(jys, zqdm);
    e.balance += wtsl;
    e.sellable += wtsl;
  } else {
    Position* e = cu->FindPosition(jys, zqdm);
    if (e == nullptr || e->sellable < wtsl)
      return RefuseBlock(
          c, size, err::kNoShares,
          "insufficient ETF shares: sellable " + std::to_string(e ? e->sellable : 0));
    e->balance -= wtsl;
    e->sellable -= wtsl;
    for (const auto& k : etf->constituents) {
      Position& p = cu->GetPosition(k.jys, k.zqdm);
      p.balance += k.qty * units;
      p.sellable += k.qty * units;
    }
    cu->AddFunds(cash);
  }

  Order o;
  o.wth = c.be.NextWth();
  o.func = creation ? 19013 : 19014;
  o.khh = cu->cfg.khh;
  o.jys = jys;
  o.gdh = cu->GdhFor(jys);
  o.zqdm = zqdm;
  o.kfsbdbh = req.Text(blk::kEtfKfsbdbh, 17);
  o.wtsj = c.be.clock.HHMMSS();
  o.jylb = jylb;
  o.wtsl = wtsl;
  o.side = Side::None;
  o.matchable = false;
  o.matched = wtsl;
  o.matched_amount = cash;
  o.jgsm = creation ? "created" : "redeemed";
  Order& stored = c.be.AddOrder(*cu, o);
  PushConfirmation(c.be, *cu, stored);
  RecordMatch(c.be, *cu, stored, wtsl, cash / static_cast<double>(wtsl), 0.0,
              creation ? -cash : cash);

  Block ans = AnswerBlock(c.req, size, 1, creation ? "creation accepted" : "redemption accepted");
  ans.PutI64(blk::kAnsWth, stored.wth);
  ans.PutText(blk::kAnsWtsj, 12, stored.wtsj);
  ans.PutF64(blk::kAnsDjzj, creation ? cash : 0.0);
  SetBlockAnswer(c, ans);
}

}  // namespace sim
