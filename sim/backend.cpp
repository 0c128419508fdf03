#include "backend.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>

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

Backend& Backend::Get() {
  static Backend* b = [] {
    auto* be = new Backend;
    be->Load(StartConfig());
    return be;
  }();
  return *b;
}

void Backend::Load(const Config& cfg) {
  cfg_ = cfg;
  customers_.clear();
  securities_.clear();
  pending_.clear();
  next_wth_ = 1;
  next_cjbh_ = 1;
  next_token_ = 1;
  match_volume = cfg.match_volume;
  time_offset_ms = cfg.time_offset_ms;
  trade_date = cfg.trade_date;
  for (const auto& cc : cfg.customers) {
    Customer c;
    c.cfg = cc;
    c.trade_pwd = cc.password;
    c.fund_pwd = cc.password;
    c.balance = cc.funds;
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
  }
  for (const auto& sc : cfg.securities) {
    Security s;
    s.cfg = sc;
    s.price = sc.price;
    s.liquidity = sc.liquidity;
    securities_[sc.jys + "." + sc.zqdm] = s;
  }
}

Customer* Backend::FindCustomer(const std::string& khh) {
  auto it = customers_.find(khh);
  return it == customers_.end() ? nullptr : &it->second;
}

std::vector<std::string> Backend::CustomerNumbers() const {
  std::vector<std::string> out;
  for (const auto& [khh, c] : customers_) out.push_back(khh);
  return out;
}

Security* Backend::FindSecurity(const std::string& jys, const std::string& zqdm) {
  auto it = securities_.find(jys + "." + zqdm);
  return it == securities_.end() ? nullptr : &it->second;
}

const EtfCfg* Backend::FindEtf(const std::string& jys, const std::string& zqdm) const {
  for (const auto& e : cfg_.etfs)
    if (e.zqdm == zqdm && (jys.empty() || e.jys == jys)) return &e;
  return nullptr;
}

std::int64_t Backend::IssueToken(Customer& c) {
  // One token per customer for the life of the back end: a second login answers the same.
  if (c.token == 0) c.token = 880000000 + 7919 * next_token_++ + std::atoll(c.cfg.khh.c_str()) % 1000;
  return c.token;
}

bool Backend::TokenValid(const Customer& c, std::int64_t token) const {
  if (!cfg_.check_token) return true;
  if (c.token == 0) return false;  // never logged in
  if (token == c.token) return true;
  // A customer whose token text holds letters: the kit sends 0 (read as a number) or the
  // customer number in its place.
  if (!c.cfg.token_text.empty()) return token == 0 || token == std::atoll(c.cfg.khh.c_str());
  return false;
}

std::int64_t Backend::TradeDate() const { return trade_date > 0 ? trade_date : DateToday(time_offset_ms); }

std::vector<PendingPush> Backend::TakePushes() {
  std::vector<PendingPush> out;
  out.swap(pending_);
  return out;
}

Config StartConfig() {
  const char* path = std::getenv("KELSIM_CONFIG");
  if (path != nullptr && *path != '\0') {
    Config c;
    std::string err;
    if (LoadConfigFile(path, c, &err)) return c;
    std::fprintf(stderr, "kelapi50 (simulated): KELSIM_CONFIG ignored: %s\n", err.c_str());
  }
  return DefaultConfig();
}

namespace {
std::tm LocalTm(std::int64_t offset_ms, int* ms) {
  auto now = std::chrono::system_clock::now() + std::chrono::milliseconds(offset_ms);
  auto since = now.time_since_epoch();
  std::time_t t = static_cast<std::time_t>(std::chrono::duration_cast<std::chrono::seconds>(since).count());
  if (ms) *ms = static_cast<int>(std::chrono::duration_cast<std::chrono::milliseconds>(since).count() % 1000);
  std::tm tm{};
#if defined(_WIN32)
  localtime_s(&tm, &t);
#else
  localtime_r(&t, &tm);
#endif
  return tm;
}
}  // namespace

std::string TimeHHMMSS() {
  std::tm tm = LocalTm(Backend::Get().time_offset_ms, nullptr);
  char buf[16];
  std::snprintf(buf, sizeof buf, "%02d%02d%02d", tm.tm_hour, tm.tm_min, tm.tm_sec);
  return buf;
}

std::string TimeText(std::int64_t offset_ms) {
  int ms = 0;
  std::tm tm = LocalTm(offset_ms, &ms);
  char buf[32];
  std::snprintf(buf, sizeof buf, "%02d:%02d:%02d.%03d", tm.tm_hour, tm.tm_min, tm.tm_sec, ms);
  return buf;
}

std::int64_t DateToday(std::int64_t offset_ms) {
  std::tm tm = LocalTm(offset_ms, nullptr);
  return (tm.tm_year + 1900) * 10000LL + (tm.tm_mon + 1) * 100 + tm.tm_mday;
}

}  // namespace sim
