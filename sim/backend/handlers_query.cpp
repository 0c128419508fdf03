// Queries: funds, shareholder accounts, allotment rights, orders, matches, positions, ETF
// shares, and the ETF reference data.
#include <algorithm>
#include <cmath>

#include "handlers.h"
#include "util/field_ids.h"

namespace sim {
namespace {

double LastPrice(Backend& be, const Position& p) {
  const Security* s = be.FindSecurity(p.jys, p.zqdm);
  return s ? s->last : p.cost;
}

std::string SecurityName(Backend& be, const std::string& jys, const std::string& zqdm) {
  const Security* s = be.FindSecurity(jys, zqdm);
  return s ? s->cfg.name : zqdm;
}

double MarketValue(Backend& be, const Customer& cu, const std::string& jys = std::string()) {
  double v = 0;
  for (const auto& p : cu.positions)
    if (jys.empty() || p.jys == jys) v += static_cast<double>(p.balance) * LastPrice(be, p);
  return v;
}

// Optional filters: an empty request field matches everything.
bool Matches(const Request& req, std::int32_t id, const std::string& value) {
  std::string want = req.Text(id);
  return want.empty() || want == value;
}

// Sort (9221: 1 newest first), skip (9223: rows to skip) and count (9222: 0 all).
template <typename T>
std::vector<T> Page(const Request& req, std::vector<T> rows) {
  if (req.Long(fid::Q_SORT) == 1) std::reverse(rows.begin(), rows.end());
  std::size_t skip =
      static_cast<std::size_t>(std::max<std::int64_t>(0, req.Long(fid::Q_BROWINDEX)));
  rows.erase(rows.begin(), rows.begin() + static_cast<std::ptrdiff_t>(std::min(skip, rows.size())));
  std::int64_t count = req.Long(fid::Q_ROWCOUNT);
  if (count > 0 && rows.size() > static_cast<std::size_t>(count))
    rows.resize(static_cast<std::size_t>(count));
  return rows;
}

}  // namespace

void HandleQueryFunds(HandlerCtx& c) {
  Customer* cu = KvCustomer(c, false);
  if (cu == nullptr) return;
  c.ans.code = 1;
  Row& r = c.ans.AddRow();
  Put(r, fid::KHH, cu->cfg.khh);
  Put(r, fid::ZJZH, cu->cfg.zjzh);
  Put(r, fid::BZ, "RMB");
  Put(r, fid::FUND_TEXT2, "0001");
  PutMoney(r, fid::FUND_AMOUNT1, cu->Available());         // available
  PutMoney(r, fid::FUND_AMOUNT3, cu->balance);             // balance
  PutMoney(r, fid::FUND_AMOUNT4, cu->Available());         // withdrawable
  PutMoney(r, fid::FUND_AMOUNT5, 0.0);                     // unsettled
  PutMoney(r, fid::FUND_AMOUNT6, 0.0);                     // interest
  PutMoney(r, fid::FUND_AMOUNT7, MarketValue(c.be, *cu));  // market value
  PutMoney(r, fid::FUND_AMOUNT8, cu->day_start);           // balance at the start of the day
  PutMoney(r, fid::FUND_AMOUNT9, cu->frozen);              // frozen
  Put(r, fid::ROW_STATE, 0);
  if (cu->cfg.bad_fund_row) {
    Row& bad = c.ans.AddRow();
    Put(bad, fid::KHH, cu->cfg.khh);
    Put(bad, fid::ZJZH, cu->cfg.zjzh);
    Put(bad, fid::BZ, "USD");
    PutMoney(bad, fid::FUND_AMOUNT1, 0.0);
    Put(bad, fid::ROW_STATE, -1);
  }
}

void HandleQueryAccounts(HandlerCtx& c) {
  Customer* cu = KvCustomer(c, false);
  if (cu == nullptr) return;
  c.ans.code = 1;
  for (const char* jys : {"SH", "SZ"}) {
    Row& r = c.ans.AddRow();
    Put(r, fid::KHH, cu->cfg.khh);
    Put(r, fid::JYS, jys);
    Put(r, fid::GDH, cu->GdhFor(jys));
    Put(r, fid::ACC_TEXT2, cu->cfg.name);
    Put(r, fid::ACC_TEXT3, cu->cfg.zjzh);
    Put(r, fid::ACC_TEXT4, "0");
    Put(r, fid::BZ, "RMB");
    Put(r, fid::ACC_TEXT5, "0001");
    Put(r, fid::ACC_INT, 1);
    Put(r, fid::ROW_STATE, 0);
  }
}

void HandleQueryPsqy(HandlerCtx& c) {
  // Allotment rights follow the market value held on each exchange: 1000 shares (SH) or 500
  // (SZ) per 10,000.00 held.
  Customer* cu = KvCustomer(c, false);
  if (cu == nullptr) return;
  c.ans.code = 1;
  for (const char* jys : {"SH", "SZ"}) {
    std::string gdh = cu->GdhFor(jys);
    if (!Matches(c.req, fid::JYS, jys) || !Matches(c.req, fid::GDH, gdh)) continue;
    auto units = static_cast<std::int64_t>(std::floor(MarketValue(c.be, *cu, jys) / 10000.0));
    Row& r = c.ans.AddRow();
    Put(r, fid::KHH, cu->cfg.khh);
    Put(r, fid::JYS, jys);
    Put(r, fid::GDH, gdh);
    Put(r, fid::PSQY_VALUE1, units * (std::string(jys) == "SH" ? 1000 : 500));
    Put(r, fid::PSQY_VALUE2, units * 500);
  }
}

void HandleQueryOrders(HandlerCtx& c) {
  // 9220 type: 1 only orders that can still be withdrawn.
  Customer* cu = KvCustomer(c, false);
  if (cu == nullptr) return;
  std::vector<const Order*> found;
  for (const auto& [wth, o] : cu->orders) {
    if (!Matches(c.req, fid::JYS, o.jys) || !Matches(c.req, fid::ZQDM, o.zqdm)) continue;
    if (c.req.Long(fid::WTH) > 0 && c.req.Long(fid::WTH) != wth) continue;
    if (c.req.Long(fid::Q_TYPE) == 1 && !o.Open()) continue;
    found.push_back(&o);
  }
  c.ans.code = 1;
  for (const Order* o : Page(c.req, found)) {
    Row& r = c.ans.AddRow();
    Put(r, fid::KHH, cu->cfg.khh);
    Put(r, fid::JYS, o->jys);
    Put(r, fid::GDH, o->gdh);
    Put(r, fid::ZQDM, o->zqdm);
    Put(r, fid::ZQMC, SecurityName(c.be, o->jys, o->zqdm));
    Put(r, fid::WTH, o->wth);
    Put(r, fid::JYLB, o->jylb);
    Put(r, fid::WTSL, o->wtsl);
    PutMoney(r, fid::WTJG, o->wtjg, 3);
    Put(r, fid::DDLX, o->ddlx);
    Put(r, fid::WTSJ, o->wtsj);
    Put(r, fid::CJSL, o->matched);
    PutMoney(r, fid::CJJG,
             o->matched > 0 ? o->matched_amount / static_cast<double>(o->matched) : 0.0, 3);
    PutMoney(r, fid::CJJE, o->matched_amount);
    Put(r, fid::CDSL, o->withdrawn);
    Put(r, fid::SBJG, o->sbjg);
    Put(r, fid::JGSM, o->jgsm);
    Put(r, fid::CXBZ, o->cxbz);
    Put(r, fid::KFSBDBH, o->kfsbdbh);
    Put(r, fid::WTPCH, o->wtpch);
    PutMoney(r, fid::DJZJ, o->frozen);
    Put(r, fid::ZJZH, cu->cfg.zjzh);
    Put(r, fid::BZ, "RMB");
  }
}

void HandleQueryMatches(HandlerCtx& c) {
  Customer* cu = KvCustomer(c, false);
  if (cu == nullptr) return;
  std::vector<const MatchRec*> found;
  for (const auto& m : cu->matches) {
    if (!Matches(c.req, fid::JYS, m.jys) || !Matches(c.req, fid::ZQDM, m.zqdm)) continue;
    if (c.req.Long(fid::WTH) > 0 && c.req.Long(fid::WTH) != m.wth) continue;
    found.push_back(&m);
  }
  c.ans.code = 1;
  for (const MatchRec* m : Page(c.req, found)) {
    Row& r = c.ans.AddRow();
    Put(r, fid::KHH, cu->cfg.khh);
    Put(r, fid::JYS, m->jys);
    Put(r, fid::GDH, m->gdh);
    Put(r, fid::ZQDM, m->zqdm);
    Put(r, fid::ZQMC, SecurityName(c.be, m->jys, m->zqdm));
    Put(r, fid::WTH, m->wth);
    Put(r, fid::JYLB, m->jylb);
    Put(r, fid::CJSL, m->qty);
    PutMoney(r, fid::CJJG, m->price, 3);
    PutMoney(r, fid::CJJE, m->amount);
    Put(r, fid::CJBH, m->cjbh);
    Put(r, fid::CJSJ, m->cjsj);
    Put(r, fid::KFSBDBH, m->kfsbdbh);
  }
}

void HandleQueryPositions(HandlerCtx& c) {
  // 9224 exeflag: 1 leaves out positions with nothing left.
  Customer* cu = KvCustomer(c, false);
  if (cu == nullptr) return;
  std::vector<const Position*> found;
  for (const auto& p : cu->positions) {
    if (!Matches(c.req, fid::JYS, p.jys) || !Matches(c.req, fid::ZQDM, p.zqdm) ||
        !Matches(c.req, fid::GDH, p.gdh))
      continue;
    if (c.req.Long(fid::Q_EXEFLAG) == 1 && p.balance == 0) continue;
    found.push_back(&p);
  }
  c.ans.code = 1;
  for (const Position* p : Page(c.req, found)) {
    double price = LastPrice(c.be, *p);
    Row& r = c.ans.AddRow();
    Put(r, fid::KHH, cu->cfg.khh);
    Put(r, fid::JYS, p->jys);
    Put(r, fid::GDH, p->gdh);
    Put(r, fid::ZQDM, p->zqdm);
    Put(r, fid::ZQMC, SecurityName(c.be, p->jys, p->zqdm));
    Put(r, fid::GFYE, p->balance);
    Put(r, fid::KMSL, p->sellable);
    PutMoney(r, fid::CBJ, p->cost, 3);
    PutMoney(r, fid::ZXJ, price, 3);
    PutMoney(r, fid::ZXSZ, static_cast<double>(p->balance) * price);
    PutMoney(r, fid::FDYK, static_cast<double>(p->balance) * (price - p->cost));
    Put(r, fid::BZ, "RMB");
  }
}

void HandleQueryEtfShares(HandlerCtx& c) {
  Customer* cu = KvCustomer(c, false);
  if (cu == nullptr) return;
  c.ans.code = 1;
  for (const auto& p : cu->positions) {
    if (c.be.FindEtf(p.jys, p.zqdm) == nullptr || !Matches(c.req, fid::JJDM, p.zqdm)) continue;
    Row& r = c.ans.AddRow();
    Put(r, fid::KHH, cu->cfg.khh);
    Put(r, fid::JYS, p.jys);
    Put(r, fid::GDH, p.gdh);
    Put(r, fid::JJDM, p.zqdm);
    Put(r, fid::ZQDM, p.zqdm);
    Put(r, fid::FESL, p.balance);
  }
}

void HandleEtfInfo(HandlerCtx& c) {
  const EtfCfg* e = c.be.FindEtf(c.req.Text(fid::JYS), c.req.Text(fid::ZQDM));
  if (e == nullptr) return c.ans.Fail(err::kNoEtf, "ETF " + c.req.Text(fid::ZQDM) + " not found");
  c.ans.code = 1;
  Row& r = c.ans.AddRow();
  Put(r, fid::ZQDM, e->zqdm);
  Put(r, fid::JYS, e->jys);
  Put(r, fid::ETF_CREATION_OK, e->creation_allowed ? 1 : 0);
  Put(r, fid::SYS_DATE, e->info_date > 0 ? e->info_date : c.be.TradeDate());
  Put(r, fid::ETF_UNIT, e->unit);
  PutMoney(r, fid::ETF_CASH, e->cash);
}

void HandleEtfConstituents(HandlerCtx& c) {
  const EtfCfg* e = c.be.FindEtf(c.req.Text(fid::JYS), c.req.Text(fid::ZQDM));
  if (e == nullptr) return c.ans.Fail(err::kNoEtf, "ETF " + c.req.Text(fid::ZQDM) + " not found");
  c.ans.code = 1;
  for (const auto& k : e->constituents) {
    Row& r = c.ans.AddRow();
    Put(r, fid::ETF_COMPONENT, k.zqdm);
    Put(r, fid::JYS, k.jys);
    Put(r, fid::ETF_COMPONENT_QTY, k.qty);
    Put(r, fid::ETF_SUBSTITUTE, k.flag);
  }
}

}  // namespace sim
