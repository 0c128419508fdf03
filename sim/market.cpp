#include "market.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "handlers.h"

namespace sim {
namespace {
constexpr double kEps = 1e-9;

std::string Price(double v) { return Money(v); }

bool Marketable(const Order& o, double price) {
  if (o.ddlx != 0) return true;
  if (o.side == Side::Buy) return o.wtjg + kEps >= price;
  if (o.side == Side::Sell) return o.wtjg <= price + kEps;
  return false;
}

void TryMatch(Backend& be, Customer& cu, Order& o) {
  Security* sec = be.FindSecurity(o.jys, o.zqdm);
  if (sec == nullptr || !o.matchable || !o.Open() || o.side == Side::None || !Marketable(o, sec->price)) return;
  std::int64_t avail = o.Remaining();
  if (sec->liquidity >= 0) avail = std::min(avail, sec->liquidity);
  while (avail > 0) {
    std::int64_t q = be.match_volume > 0 ? std::min(be.match_volume, avail) : avail;
    Fill(be, cu, o, q, sec->price);
    avail -= q;
    if (sec->liquidity >= 0) sec->liquidity -= q;
  }
}

}  // namespace

Side OrdinarySide(std::int32_t jylb) {
  if (jylb == 1) return Side::Buy;
  if (jylb == 2) return Side::Sell;
  return Side::None;
}

PushValues OrderPush(const Customer& cu, const Order& o) {
  PushValues v;
  v.Text("KHH", cu.cfg.khh);
  v.Text("ZJZH", cu.cfg.zjzh);
  v.Int("WTH", o.wth);
  v.Text("YYB", "0001");
  v.Text("JYS", o.jys);
  v.Text("GDH", o.gdh);
  v.Text("BPGDH", o.gdh);
  v.Text("ZQDM", o.zqdm);
  v.Text("ZQLB", "A0");
  v.Text("YWLB", std::to_string(o.func % 100));
  v.Text("CXBZ", o.cxbz);
  v.Text("BZ", "RMB");
  v.Real("WTJG", o.wtjg);
  v.Int("WTSL", o.wtsl);
  v.Int("CDSL", o.withdrawn);
  v.Real("DJZJ", o.side == Side::Buy ? o.freeze_price * static_cast<double>(o.wtsl) : 0.0);
  v.Int("ZCJSL", o.matched);
  v.Real("ZCJJE", o.matched_amount);
  v.Int("JYLB", o.jylb);
  v.Int("DDLX", o.ddlx);
  v.Int("SBJG", o.sbjg);
  v.Text("JGSM", o.jgsm);
  v.Int("CXWTH", o.cxwth);
  v.Int("LSH", o.wtpch);
  v.Text("KFSBDBH", o.kfsbdbh);
  v.Text("MSGCODE", "QR");
  v.Text("QRSJ", o.wtsj);
  return v;
}

void PushConfirmation(Backend& be, const Customer& cu, const Order& o) { be.Push(cu.cfg.khh, 0, OrderPush(cu, o)); }

void Fill(Backend& be, Customer& cu, Order& o, std::int64_t q, double p) {
  if (o.side == Side::None) return;
  double amount = static_cast<double>(q) * p;
  o.matched += q;
  o.matched_amount += amount;
  Position& pos = cu.GetPosition(o.jys, o.zqdm);
  if (pos.gdh.empty()) pos.gdh = o.gdh;
  if (o.side == Side::Buy) {
    cu.frozen -= static_cast<double>(q) * o.freeze_price;
    cu.balance -= amount;
    double cost_total = pos.cost * static_cast<double>(pos.balance) + amount;
    pos.balance += q;
    pos.cost = pos.balance > 0 ? cost_total / static_cast<double>(pos.balance) : 0.0;
  } else {
    pos.balance -= q;
    cu.balance += amount;
  }
  if (std::fabs(cu.frozen) < 1e-6) cu.frozen = 0;
  RecordMatch(be, cu, o, q, p);
}

void RecordMatch(Backend& be, Customer& cu, const Order& o, std::int64_t q, double p) {
  double amount = static_cast<double>(q) * p;
  MatchRec m;
  m.khh = cu.cfg.khh;
  m.jys = o.jys;
  m.gdh = o.gdh;
  m.zqdm = o.zqdm;
  m.kfsbdbh = o.kfsbdbh;
  m.cjbh = be.NextMatchNo();
  m.cjsj = TimeHHMMSS();
  m.wth = o.wth;
  m.jylb = o.jylb;
  m.qty = q;
  m.price = p;
  m.amount = amount;
  cu.matches.push_back(m);

  PushValues v = OrderPush(cu, o);
  v.Text("CJBH", m.cjbh);
  v.Text("CJSJ", m.cjsj);
  v.Int("CJSL", q);
  v.Real("CJJG", p);
  v.Real("CJJE", amount);
  v.Real("QSZJ", amount);
  v.Text("MSGCODE", "CJ");
  be.Push(cu.cfg.khh, 1, std::move(v));
}

PlaceResult PlaceOrder(Backend& be, Customer& cu, const OrderIn& in) {
  PlaceResult r;
  if (in.wtsl <= 0) {
    r.code = err::kBadOrder;
    r.msg = "order quantity must be positive";
    return r;
  }
  std::string acct = cu.GdhFor(in.jys);
  if (acct.empty()) {
    r.code = err::kBadExchange;
    r.msg = "unknown exchange [" + in.jys + "]";
    return r;
  }
  if (!in.gdh.empty() && in.gdh != acct) {
    r.code = err::kBadAccount;
    r.msg = "shareholder account [" + in.gdh + "] is not the customer's on " + in.jys;
    return r;
  }
  Security* sec = be.FindSecurity(in.jys, in.zqdm);
  if (sec == nullptr && in.side != Side::None) {
    r.code = err::kNoSecurity;
    r.msg = "security " + in.jys + "." + in.zqdm + " does not exist";
    return r;
  }
  if (in.ddlx == 0 && in.wtjg <= 0 && in.side != Side::None) {
    r.code = err::kBadOrder;
    r.msg = "order price must be positive";
    return r;
  }
  double unit = in.ddlx != 0 && sec != nullptr ? sec->price : in.wtjg;
  double freeze = in.side == Side::Buy ? unit * static_cast<double>(in.wtsl) : 0.0;
  if (in.side == Side::Buy && freeze > cu.Available() + 1e-6) {
    r.code = err::kNoFunds;
    r.msg = "insufficient funds: needs " + Price(freeze) + ", available " + Price(cu.Available());
    return r;
  }
  Position* pos = cu.FindPosition(in.jys, in.zqdm);
  if (in.side == Side::Sell && (pos == nullptr || pos->sellable < in.wtsl)) {
    r.code = err::kNoShares;
    r.msg = "insufficient shares: sellable " + std::to_string(pos ? pos->sellable : 0);
    return r;
  }

  Order o;
  o.wth = be.NextWth();
  o.func = in.func;
  o.khh = cu.cfg.khh;
  o.jys = in.jys;
  o.gdh = acct;
  o.zqdm = in.zqdm;
  o.kfsbdbh = in.kfsbdbh;
  o.wtsj = TimeHHMMSS();
  o.jylb = in.jylb;
  o.wtsl = in.wtsl;
  o.wtjg = in.wtjg;
  o.ddlx = in.ddlx;
  o.wtpch = in.wtpch;
  o.side = in.side;
  o.freeze_price = in.side == Side::Buy ? unit : 0.0;
  o.matchable = in.matchable;
  o.jgsm = "declared";
  if (in.side == Side::Buy) cu.frozen += freeze;
  if (in.side == Side::Sell) pos->sellable -= in.wtsl;
  if (sec != nullptr && in.ddlx == 0 && in.side != Side::None &&
      (in.wtjg > sec->price * 1.1 + 0.005 || in.wtjg < sec->price * 0.9 - 0.005)) {
    // The exchange refuses a price beyond the daily limit: nothing stays frozen.
    o.sbjg = 3;
    o.jgsm = "price " + Price(in.wtjg) + " beyond the daily limit of " + Price(sec->price) + " +/-10%";
    if (in.side == Side::Buy) cu.frozen -= freeze;
    if (in.side == Side::Sell) pos->sellable += in.wtsl;
  }
  Order& stored = cu.orders[o.wth] = o;
  PushConfirmation(be, cu, stored);
  TryMatch(be, cu, stored);

  r.code = 1;
  r.msg = "order accepted";
  r.wth = stored.wth;
  r.djzj = stored.sbjg == 3 ? 0.0 : freeze;
  r.wtsj = stored.wtsj;
  return r;
}

WithdrawResult WithdrawOrder(Backend& be, Customer& cu, std::int64_t cxwth, const std::string& cxkfsbdbh,
                             const std::string& own_kfsbdbh, std::int32_t func) {
  WithdrawResult r;
  Order* o = nullptr;
  if (cxwth > 0) {
    auto it = cu.orders.find(cxwth);
    if (it != cu.orders.end() && it->second.cxbz != "W") o = &it->second;
  } else if (!cxkfsbdbh.empty()) {
    for (auto& [wth, ord] : cu.orders)
      if (ord.cxbz != "W" && ord.kfsbdbh == cxkfsbdbh) o = &ord;  // the latest of that number
  }
  std::string which = cxwth > 0 ? "order " + std::to_string(cxwth) : "request " + cxkfsbdbh;
  if (o == nullptr) {
    r.code = err::kNoOrder;
    r.msg = which + " not found";
    return r;
  }
  if (!o->Open()) {
    r.code = err::kNoOrder;
    r.msg = which + " cannot be withdrawn: already matched, withdrawn or refused";
    return r;
  }
  std::int64_t rest = o->Remaining();
  o->withdrawn += rest;
  if (o->side == Side::Buy) {
    cu.frozen -= static_cast<double>(rest) * o->freeze_price;
    if (std::fabs(cu.frozen) < 1e-6) cu.frozen = 0;
  } else if (o->side == Side::Sell) {
    if (Position* pos = cu.FindPosition(o->jys, o->zqdm)) pos->sellable += rest;
  }
  Order w = *o;
  w.wth = be.NextWth();
  w.func = func;
  w.cxbz = "W";
  w.cxwth = o->wth;
  w.kfsbdbh = own_kfsbdbh.empty() ? o->kfsbdbh : own_kfsbdbh;
  w.wtsj = TimeHHMMSS();
  w.matched = 0;
  w.matched_amount = 0;
  w.withdrawn = rest;
  w.sbjg = 2;
  w.jgsm = "withdrawn";
  Order& stored = cu.orders[w.wth] = w;
  PushConfirmation(be, cu, stored);

  r.code = 1;
  r.msg = "withdrawal accepted";
  r.wth = stored.wth;
  r.sbjg = 2;
  r.cdsl = rest;
  r.wtsj = stored.wtsj;
  return r;
}

void MatchResting(Backend& be, const std::string& jys, const std::string& zqdm) {
  std::vector<std::pair<std::int64_t, std::string>> book;  // (order number, customer)
  for (const auto& khh : be.CustomerNumbers()) {
    Customer* cu = be.FindCustomer(khh);
    for (const auto& [wth, o] : cu->orders)
      if (o.jys == jys && o.zqdm == zqdm && o.Open() && o.matchable) book.emplace_back(wth, khh);
  }
  std::sort(book.begin(), book.end());
  for (const auto& [wth, khh] : book) {
    Customer* cu = be.FindCustomer(khh);
    TryMatch(be, *cu, cu->orders[wth]);
  }
}

}  // namespace sim
