#include "market.h"

#include <algorithm>
#include <vector>

#include "handlers.h"

namespace sim {
namespace {

constexpr std::int64_t kUnlimited = -1;

std::int64_t Cap(std::int64_t want, std::int64_t available) {
  return available == kUnlimited ? want : std::min(want, available);
}
void Take(std::int64_t& available, std::int64_t q) {
  if (available != kUnlimited) available -= q;
}

// Whether a level's price is one the order accepts (a market order accepts any).
bool Reaches(const Order& o, std::int64_t level_milli) {
  if (o.ddlx != 0) return true;
  std::int64_t limit = Milli(o.wtjg);
  return o.side == Side::Buy ? level_milli <= limit : level_milli >= limit;
}

std::pair<std::int64_t, std::int64_t> RestKey(const Order& o) {
  std::int64_t p = Milli(o.wtjg);
  return {o.side == Side::Buy ? -p : p, o.wth};
}

RestingOrders& RestSide(Security& s, const Order& o) {
  return o.side == Side::Buy ? s.buys : s.sells;
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
  v.Real("DJZJ", o.side == Side::Buy ? o.frozen : 0.0);
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

void ReleaseFrozen(Customer& cu, Order& o, double yuan) {
  double r = std::min(o.frozen, yuan);
  o.frozen = Round2(o.frozen - r);
  cu.Freeze(-r);
}

// One match of q at p: fees, funds, position, frozen funds, match record and push.
void Fill(Backend& be, Customer& cu, Order& o, std::int64_t q, double p) {
  bool sell = o.side == Side::Sell;
  std::int64_t amount_milli = Milli(p) * q;
  MatchFees fees = ChargeFees(be.fees, sell, amount_milli, o.matched_milli, o.commission);
  std::int64_t amount_cents = MilliToCents(amount_milli);
  std::int64_t qszj = sell ? amount_cents - fees.Total() : -(amount_cents + fees.Total());
  o.matched += q;
  o.matched_amount += static_cast<double>(q) * p;
  o.matched_milli += amount_milli;
  o.commission += fees.commission;
  cu.AddFunds(Yuan(qszj));
  Position& pos = cu.GetPosition(o.jys, o.zqdm);
  if (pos.gdh.empty()) pos.gdh = o.gdh;
  if (sell) {
    pos.balance -= q;
  } else {
    ReleaseFrozen(cu, o, Yuan(MilliToCents(Milli(o.freeze_price) * q) + fees.Total()));
    double cost_total =
        pos.cost * static_cast<double>(pos.balance) + Yuan(amount_cents + fees.Total());
    pos.balance += q;
    pos.cost = pos.balance > 0 ? cost_total / static_cast<double>(pos.balance) : 0.0;
  }
  if (!o.Open()) ReleaseFrozen(cu, o, o.frozen);
  be.Changed(o);
  RecordMatch(be, cu, o, q, p, Yuan(fees.Total()), Yuan(qszj));
}

// Matches q at p, in reports of the match volume each (0: one report).
void FillInReports(Backend& be, Customer& cu, Order& o, std::int64_t q, double p) {
  while (q > 0) {
    std::int64_t part = be.match_volume > 0 ? std::min(be.match_volume, q) : q;
    Fill(be, cu, o, part, p);
    q -= part;
  }
}

// An incoming order takes the opposite side of the book up to its price.
void TakeBook(Backend& be, Customer& cu, Order& o, Security& s) {
  Levels& book = o.side == Side::Buy ? s.asks : s.bids;
  for (Level& lv : book) {
    if (o.Remaining() == 0 || s.liquidity == 0) break;
    if (lv.price <= 0) continue;
    if (!Reaches(o, Milli(lv.price))) break;
    std::int64_t q = Cap(Cap(o.Remaining(), lv.volume), s.liquidity);
    if (q <= 0) continue;
    Take(lv.volume, q);
    Take(s.liquidity, q);
    be.Touch(s);
    FillInReports(be, cu, o, q, lv.price);
  }
}

// Resting orders of one side against the book's other side: each at its own price, as far
// as the volume at prices it reaches allows, best order first.
void CrossSide(Backend& be, Security& s, RestingOrders& rest, Levels& book, bool buy) {
  auto it = rest.begin();
  while (it != rest.end() && s.liquidity != 0) {
    std::int64_t limit = buy ? -it->first.first : it->first.first;
    Customer* cu = it->second;
    Order& o = cu->orders.at(it->first.second);
    std::int64_t got = 0;
    for (Level& lv : book) {
      if (lv.price <= 0 || lv.volume == 0) continue;
      std::int64_t level = Milli(lv.price);
      if (buy ? level > limit : level < limit) break;
      std::int64_t q = Cap(Cap(o.Remaining() - got, lv.volume),
                           s.liquidity == kUnlimited ? kUnlimited : s.liquidity - got);
      Take(lv.volume, q);
      got += q;
      if (got == o.Remaining()) break;
    }
    if (got == 0) break;  // the book reaches no later order either: they are priced worse
    Take(s.liquidity, got);
    be.Touch(s);
    be.FindCustomer(cu->cfg.khh);
    FillInReports(be, *cu, o, got, static_cast<double>(limit) / 1000.0);
    if (o.Open()) break;  // the volume it reached is used up
    it = rest.erase(it);
  }
}

// Withdraws what is left of an open order: its funds or shares released, its place in the
// book given up, a withdrawal record booked and confirmed.
Order& Cancel(Backend& be, Customer& cu, Order& o, std::int32_t func, const std::string& kfsbdbh,
              const std::string& note) {
  std::int64_t rest = o.Remaining();
  if (Security* s = be.FindSecurity(o.jys, o.zqdm); s != nullptr && o.side != Side::None)
    RestSide(*s, o).erase(RestKey(o));
  o.withdrawn += rest;
  if (o.side == Side::Buy) ReleaseFrozen(cu, o, o.frozen);
  if (o.side == Side::Sell)
    if (Position* pos = cu.FindPosition(o.jys, o.zqdm)) pos->sellable += rest;
  be.Changed(o);
  Order w = o;
  w.wth = be.NextWth();
  w.func = func;
  w.cxbz = "W";
  w.cxwth = o.wth;
  w.kfsbdbh = kfsbdbh;
  w.wtsj = be.clock.HHMMSS();
  w.matched = 0;
  w.matched_amount = 0;
  w.matched_milli = 0;
  w.withdrawn = rest;
  w.frozen = 0;
  w.sbjg = 2;
  w.jgsm = note;
  Order& stored = be.AddOrder(cu, w);
  PushConfirmation(be, cu, stored);
  return stored;
}

std::string Refusal(PlaceResult* r, int code, std::string msg) {
  r->code = code;
  r->msg = std::move(msg);
  return r->msg;
}

// The checks of the back end; false with the refusal in r.
bool Acceptable(Customer& cu, const OrderIn& in, Security* sec, PlaceResult* r) {
  if (in.wtsl <= 0) return Refusal(r, err::kBadOrder, "order quantity must be positive"), false;
  std::string acct = cu.GdhFor(in.jys);
  if (acct.empty())
    return Refusal(r, err::kBadExchange, "unknown exchange [" + in.jys + "]"), false;
  if (!in.gdh.empty() && in.gdh != acct)
    return Refusal(r, err::kBadAccount,
                   "shareholder account [" + in.gdh + "] is not the customer's on " + in.jys),
           false;
  if (in.side == Side::None) return true;
  if (sec == nullptr)
    return Refusal(r, err::kNoSecurity, "security " + in.jys + "." + in.zqdm + " does not exist"),
           false;
  if (in.ddlx == 0 && in.wtjg <= 0)
    return Refusal(r, err::kBadOrder, "order price must be positive"), false;
  if (in.ddlx == 0 && !OnTick(in.wtjg, sec->cfg.tick))
    return Refusal(r, err::kBadOrder,
                   "price " + Money(in.wtjg, 4) + " is not a multiple of the tick " +
                       Money(sec->cfg.tick, 3)),
           false;
  if (in.side == Side::Buy && in.wtsl % sec->cfg.lot != 0)
    return Refusal(r, err::kBadOrder,
                   "a buy must be a whole number of lots of " + std::to_string(sec->cfg.lot)),
           false;
  Position* pos = cu.FindPosition(in.jys, in.zqdm);
  std::int64_t sellable = pos ? pos->sellable : 0;
  if (in.side == Side::Sell && sellable < in.wtsl)
    return Refusal(r, err::kNoShares, "insufficient shares: sellable " + std::to_string(sellable)),
           false;
  if (in.side == Side::Sell && in.wtsl % sec->cfg.lot != sellable % sec->cfg.lot)
    return Refusal(r, err::kBadOrder,
                   "odd lots are sold whole: the order's odd part must be " +
                       std::to_string(sellable % sec->cfg.lot)),
           false;
  return true;
}

double MarketBuyPrice(const Security& s) {
  if (s.cfg.limit > 0) return s.UpperLimit();
  double p = s.last;
  for (const Level& lv : s.asks) p = std::max(p, lv.price);
  return p;
}

bool BeyondLimits(const Security& s, double price) {
  if (s.cfg.limit <= 0) return false;
  return Milli(price) > Milli(s.UpperLimit()) || Milli(price) < Milli(s.LowerLimit());
}

}  // namespace

Side OrdinarySide(std::int32_t jylb) {
  if (jylb == 1) return Side::Buy;
  if (jylb == 2) return Side::Sell;
  return Side::None;
}

void PushConfirmation(Backend& be, const Customer& cu, const Order& o) {
  be.Push(cu.cfg.khh, 0, OrderPush(cu, o));
}

void RecordMatch(Backend& be, Customer& cu, const Order& o, std::int64_t q, double p, double fees,
                 double qszj) {
  MatchRec m;
  m.khh = cu.cfg.khh;
  m.jys = o.jys;
  m.gdh = o.gdh;
  m.zqdm = o.zqdm;
  m.kfsbdbh = o.kfsbdbh;
  m.cjbh = be.NextMatchNo();
  m.cjsj = be.clock.HHMMSS();
  m.wth = o.wth;
  m.jylb = o.jylb;
  m.qty = q;
  m.price = p;
  m.amount = static_cast<double>(q) * p;
  m.fees = fees;
  m.qszj = qszj;
  cu.matches.push_back(m);

  PushValues v = OrderPush(cu, o);
  v.Text("CJBH", m.cjbh);
  v.Text("CJSJ", m.cjsj);
  v.Int("CJSL", q);
  v.Real("CJJG", p);
  v.Real("CJJE", m.amount);
  v.Real("QSZJ", qszj);
  v.Text("MSGCODE", "CJ");
  be.Push(cu.cfg.khh, 1, std::move(v));
}

PlaceResult PlaceOrder(Backend& be, Customer& cu, const OrderIn& in) {
  PlaceResult r;
  Security* sec = be.FindSecurity(in.jys, in.zqdm);
  if (!Acceptable(cu, in, sec, &r)) return r;
  double unit = in.ddlx != 0 && sec != nullptr ? MarketBuyPrice(*sec) : in.wtjg;
  double freeze = 0;
  if (in.side == Side::Buy) {
    std::int64_t amount = Milli(unit) * in.wtsl;
    freeze = Yuan(MilliToCents(amount) + FeeCeiling(be.fees, false, amount));
    if (freeze > cu.Available() + 1e-6)
      return Refusal(&r, err::kNoFunds,
                     "insufficient funds: needs " + Money(freeze) + ", available " +
                         Money(cu.Available())),
             r;
  }

  Order o;
  o.wth = be.NextWth();
  o.func = in.func;
  o.khh = cu.cfg.khh;
  o.jys = in.jys;
  o.gdh = cu.GdhFor(in.jys);
  o.zqdm = in.zqdm;
  o.kfsbdbh = in.kfsbdbh;
  o.wtsj = be.clock.HHMMSS();
  o.jylb = in.jylb;
  o.wtsl = in.wtsl;
  o.wtjg = in.wtjg;
  o.ddlx = in.ddlx;
  o.wtpch = in.wtpch;
  o.side = in.side;
  o.freeze_price = in.side == Side::Buy ? unit : 0.0;
  o.matchable = in.matchable;
  o.jgsm = "declared";
  if (sec != nullptr && in.ddlx == 0 && in.side != Side::None && BeyondLimits(*sec, in.wtjg)) {
    // The exchange refuses a price beyond the day's limits: nothing stays frozen.
    o.sbjg = 3;
    o.jgsm = "price " + Money(in.wtjg, 3) + " beyond the limits " + Money(sec->LowerLimit(), 3) +
             " - " + Money(sec->UpperLimit(), 3);
    freeze = 0;
  } else if (in.side == Side::Buy) {
    o.frozen = freeze;
    cu.Freeze(freeze);
  } else if (in.side == Side::Sell) {
    cu.FindPosition(in.jys, in.zqdm)->sellable -= in.wtsl;
  }
  Order& stored = be.AddOrder(cu, o);
  PushConfirmation(be, cu, stored);
  if (sec != nullptr && stored.side != Side::None && stored.matchable && stored.sbjg != 3) {
    TakeBook(be, cu, stored, *sec);
    if (stored.Open() && stored.ddlx != 0)
      Cancel(be, cu, stored, stored.func, stored.kfsbdbh,
             "the rest of a market order is withdrawn");
    else if (stored.Open())
      RestSide(*sec, stored)[RestKey(stored)] = &cu;
  }

  r.code = 1;
  r.msg = "order accepted";
  r.wth = stored.wth;
  r.djzj = freeze;
  r.wtsj = stored.wtsj;
  return r;
}

WithdrawResult WithdrawOrder(Backend& be, Customer& cu, std::int64_t cxwth,
                             const std::string& cxkfsbdbh, const std::string& own_kfsbdbh,
                             std::int32_t func) {
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
  Order& w = Cancel(be, cu, *o, func, own_kfsbdbh.empty() ? o->kfsbdbh : own_kfsbdbh, "withdrawn");
  r.code = 1;
  r.msg = "withdrawal accepted";
  r.wth = w.wth;
  r.sbjg = 2;
  r.cdsl = w.withdrawn;
  r.wtsj = w.wtsj;
  return r;
}

void CrossResting(Backend& be, Security& s) {
  if (!s.buys.empty()) CrossSide(be, s, s.buys, s.asks, true);
  if (!s.sells.empty()) CrossSide(be, s, s.sells, s.bids, false);
}

void ApplyQuote(Backend& be, Security& s, const QuoteUpdate& q) {
  s.turnover =
      q.turnover >= 0
          ? q.turnover
          : s.turnover +
                static_cast<double>(std::max<std::int64_t>(0, q.volume - s.volume)) * q.last;
  s.last = q.last;
  s.volume = q.volume;
  if (q.prev_close > 0) s.prev_close = q.prev_close;
  s.bids = q.bids;
  s.asks = q.asks;
  s.quoted_ms = be.clock.Now();
  be.Touch(s);
  CrossResting(be, s);
}

void EndOfDay(Backend& be) {
  for (auto& [khh, cu] : be.customers()) {
    std::vector<std::int64_t> open;
    for (const auto& [wth, o] : cu.orders)
      if (o.Open()) open.push_back(wth);
    for (std::int64_t wth : open) {
      Order& o = cu.orders[wth];
      Cancel(be, cu, o, o.func, o.kfsbdbh, "expired at the end of the day");
    }
    for (Position& p : cu.positions) p.sellable = p.balance;
    cu.frozen = 0;
    cu.day_start = cu.balance;
    be.FindCustomer(khh);
  }
  for (auto& [key, s] : be.securities()) {
    if (s.last > 0) s.prev_close = s.last;
    s.volume = 0;
    s.turnover = 0;
    be.Touch(s);
  }
  be.ClearDay();
}

}  // namespace sim
