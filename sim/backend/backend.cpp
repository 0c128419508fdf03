#include "backend.h"

#include <cstdlib>

namespace sim {

std::vector<std::int32_t> Customer::TradeNodes() const {
  std::vector<std::int32_t> out;
  for (const auto& n : cfg.nodes)
    if (n.system_type == 4) out.push_back(n.node_id);
  return out;
}

std::string Customer::GdhFor(const std::string& jys) const {
  if (jys == "SH") return cfg.gdh_sh;
  if (jys == "SZ") return cfg.gdh_sz;
  return std::string();
}

Position* Customer::FindPosition(const std::string& jys, const std::string& zqdm) {
  for (auto& p : positions)
    if (p.jys == jys && p.zqdm == zqdm) return &p;
  return nullptr;
}

Position& Customer::GetPosition(const std::string& jys, const std::string& zqdm) {
  if (Position* p = FindPosition(jys, zqdm)) return *p;
  Position p;
  p.jys = jys;
  p.zqdm = zqdm;
  p.gdh = GdhFor(jys);
  positions.push_back(p);
  return positions.back();
}

Backend::Backend(const Config& cfg) : cfg_(cfg) {
  fees = FeeSchedule(cfg.fees);
  match_volume = cfg.match_volume;
  check_token = cfg.check_token;
  clock.Configure(cfg.market, cfg.trade_date, cfg.time_offset_ms);
  for (const auto& cc : cfg.customers) {
    Customer c;
    c.cfg = cc;
    c.trade_pwd = cc.password;
    c.fund_pwd = cc.password;
    c.balance = c.day_start = Round2(cc.funds);
    auto nodes = c.TradeNodes();
    for (std::size_t i = 0; i < nodes.size(); ++i) {
      c.node_alloc[nodes[i]] = i == 0 ? cc.funds : 0.0;
      c.node_ratio[nodes[i]] = i == 0 ? 1.0 : 0.0;
    }
    for (const auto& pc : cc.positions) {
      Position& p = c.GetPosition(pc.jys, pc.zqdm);
      p.balance = pc.balance;
      p.sellable = pc.sellable;
      p.cost = pc.cost;
    }
    customers_[cc.khh] = std::move(c);
    FindCustomer(cc.khh);  // a new state file saves it
  }
  for (const auto& sc : cfg.securities) AddSecurity(sc);
}

Customer* Backend::FindCustomer(const std::string& khh) {
  auto it = customers_.find(khh);
  if (it == customers_.end()) return nullptr;
  if (!it->second.touched) {
    it->second.touched = true;
    changes_.customers.push_back(&it->second);
  }
  return &it->second;
}

Security* Backend::FindSecurity(const std::string& jys, const std::string& zqdm) {
  auto it = securities_.find(jys + "." + zqdm);
  return it == securities_.end() ? nullptr : &it->second;
}

const Security* Backend::FindSecurity(const std::string& jys, const std::string& zqdm) const {
  auto it = securities_.find(jys + "." + zqdm);
  return it == securities_.end() ? nullptr : &it->second;
}

Security& Backend::AddSecurity(const SecurityCfg& cfg) {
  Security& s = securities_[cfg.jys + "." + cfg.zqdm];
  s = Security();
  s.cfg = cfg;
  s.prev_close = cfg.prev_close > 0 ? cfg.prev_close : cfg.price;
  s.liquidity = cfg.liquidity;
  s.QuoteAt(cfg.price);
  Touch(s);
  return s;
}

void Backend::Touch(Security& s) {
  if (s.touched) return;
  s.touched = true;
  changes_.securities.push_back(&s);
}

const EtfCfg* Backend::FindEtf(const std::string& jys, const std::string& zqdm) const {
  for (const auto& e : cfg_.etfs)
    if (e.zqdm == zqdm && (jys.empty() || e.jys == jys)) return &e;
  return nullptr;
}

std::int64_t Backend::IssueToken(Customer& c) {
  // One token per customer for the life of the back end: a second login answers the same.
  if (c.token == 0)
    c.token = 880000000 + 7919 * next_token_++ + std::atoll(c.cfg.khh.c_str()) % 1000;
  return c.token;
}

bool Backend::TokenValid(const Customer& c, std::int64_t token) const {
  if (!check_token) return true;
  if (c.token == 0) return false;  // never logged in
  if (token == c.token) return true;
  // A customer whose token text holds letters: the kit sends 0 (read as a number) or the
  // customer number in its place.
  if (!c.cfg.token_text.empty()) return token == 0 || token == std::atoll(c.cfg.khh.c_str());
  return false;
}

Order& Backend::AddOrder(Customer& cu, Order o) {
  std::int64_t wth = o.wth;
  Order& stored = cu.orders[wth] = std::move(o);
  changes_.orders.emplace_back(&cu, wth);
  return stored;
}

void Backend::Changed(const Order& o) {
  auto it = customers_.find(o.khh);
  if (it != customers_.end()) changes_.orders.emplace_back(&it->second, o.wth);
}

std::vector<PendingPush>& Backend::TakePushes() {
  taken_.clear();
  taken_.swap(pending_);
  return taken_;
}

void Backend::RestoreSequences(const Sequences& s) {
  next_wth_ = s.wth;
  next_cjbh_ = s.cjbh;
  next_token_ = s.token;
}

Backend::Changes Backend::TakeChanges() {
  for (Customer* c : changes_.customers) c->touched = false;
  for (Security* s : changes_.securities) s->touched = false;
  Changes out;
  std::swap(out, changes_);
  return out;
}

void Backend::ClearDay() {
  for (auto& [khh, c] : customers_) {
    c.orders.clear();
    c.matches.clear();
    c.matches_saved = 0;
    FindCustomer(khh);
  }
  for (auto& [key, s] : securities_) {
    s.buys.clear();
    s.sells.clear();
  }
  changes_.orders.clear();
  changes_.day_cleared = true;
}

double Security::UpperLimit() const {
  return cfg.limit > 0 ? ToTick(prev_close * (1 + cfg.limit), cfg.tick) : 0.0;
}

double Security::LowerLimit() const {
  return cfg.limit > 0 ? ToTick(prev_close * (1 - cfg.limit), cfg.tick) : 0.0;
}

void Security::QuoteAt(double price) {
  last = price;
  bids = Levels{};
  asks = Levels{};
  if (price <= 0) return;
  bids[0] = {price, -1};
  asks[0] = {price, -1};
}

Quote QuoteOf(const Security& s, const Clock& clock) {
  Quote q;
  q.jys = s.cfg.jys;
  q.zqdm = s.cfg.zqdm;
  q.date = clock.Date();
  q.time_ms = s.quoted_ms;
  q.last = s.last;
  q.prev_close = s.prev_close;
  q.upper_limit = s.UpperLimit();
  q.lower_limit = s.LowerLimit();
  q.tick = s.cfg.tick;
  q.volume = s.volume;
  q.turnover = s.turnover;
  q.bids = s.bids;
  q.asks = s.asks;
  return q;
}

}  // namespace sim
