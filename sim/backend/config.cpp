#include "config.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <set>
#include <sstream>

#define SI_NO_CONVERSION
#define SI_IMPLEMENTATION
#include <SimpleIni.h>

namespace sim {
namespace {

std::vector<std::string> Split(const std::string& s, char sep) {
  std::vector<std::string> out;
  std::string cur;
  std::istringstream in(s);
  while (std::getline(in, cur, sep)) {
    std::size_t b = cur.find_first_not_of(" \t");
    std::size_t e = cur.find_last_not_of(" \t");
    out.push_back(b == std::string::npos ? std::string() : cur.substr(b, e - b + 1));
  }
  return out;
}

std::string Pad(const std::string& prefix, const std::string& khh, std::size_t width) {
  std::string s = prefix;
  while (s.size() + khh.size() < width) s += '0';
  return s + khh;
}

CustomerCfg MakeCustomer(const std::string& khh, const std::string& pwd,
                         std::vector<NodeCfg> nodes) {
  CustomerCfg c;
  c.khh = khh;
  c.password = pwd;
  c.name = "Customer " + khh;
  c.zjzh = Pad("", khh, 12);
  c.gdh_sh = Pad("A", khh, 10);
  c.gdh_sz = Pad("", khh, 10);
  c.nodes = std::move(nodes);
  c.funds = 1000000.00;
  return c;
}

std::vector<NodeCfg> ParseNodes(const std::string& s) {
  std::vector<NodeCfg> nodes;
  for (const auto& item : Split(s, ',')) {
    if (item.empty()) continue;
    NodeCfg n;
    auto parts = Split(item, ':');
    n.node_id = std::atoi(parts[0].c_str());
    n.system_type = parts.size() > 1 ? std::atoi(parts[1].c_str()) : 4;
    nodes.push_back(n);
  }
  return nodes;
}

bool Bool(const char* v, bool def) {
  if (v == nullptr || *v == '\0') return def;
  return std::strchr("1tTyY", v[0]) != nullptr || std::strcmp(v, "on") == 0;
}

}  // namespace

Config DefaultConfig() {
  Config c;
  for (int i = 1; i <= 4; ++i) c.addresses.push_back("127.0.0.1:910" + std::to_string(i));
  for (int i = 1; i <= 4; ++i) c.addresses.push_back("127.0.0.1:920" + std::to_string(i));

  const struct {
    const char *jys, *zqdm, *name;
    double price;
  } kSecurities[] = {
      {"SH", "600000", "PFYH", 10.00},   {"SH", "600036", "ZSYH", 35.00},
      {"SH", "601318", "ZGPA", 50.00},   {"SZ", "000001", "PAYH", 12.00},
      {"SZ", "000002", "WKA", 20.00},    {"SH", "510050", "50ETF", 2.500},
      {"SH", "510300", "300ETF", 4.000}, {"SZ", "159919", "300ETFSZ", 4.000},
      {"SH", "204001", "GC001", 2.000},  {"SH", "501000", "LOF501000", 1.000},
  };
  for (const auto& s : kSecurities)
    c.securities.push_back(MakeSecurity(s.jys, s.zqdm, s.name, s.price));

  EtfCfg e50;
  e50.jys = "SH";
  e50.zqdm = "510050";
  e50.unit = 10000;
  e50.cash = 1000.00;
  e50.constituents = {
      {"SH", "600000", 1000, 1}, {"SH", "600036", 200, 1}, {"SH", "601318", 100, 0}};
  EtfCfg e300 = e50;
  e300.zqdm = "510300";
  e300.info_date = 20200101;  // stale: never the trade date
  EtfCfg esz;
  esz.jys = "SZ";
  esz.zqdm = "159919";
  esz.unit = 10000;
  esz.cash = 500.00;
  esz.creation_allowed = false;
  esz.constituents = {{"SZ", "000001", 1000, 1}, {"SZ", "000002", 500, 1}};
  c.etfs = {e50, e300, esz};

  CustomerCfg c1 = MakeCustomer("1001", "111111", {{1, 4}});
  c1.positions = {{"SH", "600000", 10000, 10000, 9.50},
                  {"SH", "600036", 2000, 2000, 30.00},
                  {"SH", "601318", 1000, 1000, 48.00},
                  {"SZ", "000001", 5000, 5000, 11.00},
                  {"SH", "510050", 100000, 100000, 2.40}};
  CustomerCfg c2 = MakeCustomer("1002", "222222", {{1, 4}, {2, 4}});
  c2.positions = {{"SZ", "000002", 3000, 3000, 18.00}};
  CustomerCfg c3 = MakeCustomer("1003", "333333", {{3, 4}, {4, 5}});
  c3.positions = {{"SH", "600000", 500, 500, 10.20}};
  CustomerCfg c4 = MakeCustomer("1004", "444444", {{4, 5}});
  CustomerCfg c5 = MakeCustomer("1005", "555555", {{1, 4}});
  c5.token_text = "abc";
  c5.bad_fund_row = true;
  c.customers = {c1, c2, c3, c4, c5};
  return c;
}

SecurityCfg MakeSecurity(const std::string& jys, const std::string& zqdm, const std::string& name,
                         double price) {
  SecurityCfg s;
  s.jys = jys;
  s.zqdm = zqdm;
  s.name = name;
  s.price = price;
  bool fund = (jys == "SH" && zqdm.rfind('5', 0) == 0) ||
              (jys == "SZ" &&
               (zqdm.rfind("15", 0) == 0 || zqdm.rfind("16", 0) == 0 || zqdm.rfind("18", 0) == 0));
  SetKind(s, fund ? SecurityKind::Fund : SecurityKind::Stock);
  return s;
}

void SetKind(SecurityCfg& s, SecurityKind kind) {
  s.kind = kind;
  s.tick = kind == SecurityKind::Fund ? 0.001 : 0.01;
}

std::int64_t ParseTimeOfDay(const std::string& text) {
  int h = 0, m = 0, sec = 0, n = 0;
  if (std::sscanf(text.c_str(), "%2d:%2d:%2d%n", &h, &m, &sec, &n) != 3 || n != 8 || h > 23 ||
      m > 59 || sec > 59 || h < 0 || m < 0 || sec < 0)
    return -1;
  std::int64_t ms = 0;
  std::size_t at = 8;
  if (at < text.size()) {
    if (text[at] != '.' || text.size() - at - 1 < 1 || text.size() - at - 1 > 3) return -1;
    int scale = 100;
    for (std::size_t i = at + 1; i < text.size(); ++i, scale /= 10) {
      if (text[i] < '0' || text[i] > '9') return -1;
      ms += (text[i] - '0') * scale;
    }
  }
  return ((h * 60LL + m) * 60 + sec) * 1000 + ms;
}

namespace {

// One section of the file, its values trimmed and cut at an inline comment (" ;"). The
// sections this back end added reject keys they do not know (a misspelt fee would go
// unnoticed otherwise).
class Section {
 public:
  Section(const CSimpleIniA& ini, const char* name, std::string* error)
      : ini_(ini), name_(name), error_(error) {}

  bool Has(const char* key) const { return ini_.GetValue(name_, key, nullptr) != nullptr; }
  std::string Text(const char* key, const std::string& def = std::string()) {
    used_.insert(key);
    const char* v = ini_.GetValue(name_, key, nullptr);
    if (v == nullptr) return def;
    std::string s = v;
    for (std::size_t p = s.find(';'); p != std::string::npos; p = s.find(';', p + 1))
      if (p > 0 && (s[p - 1] == ' ' || s[p - 1] == '\t')) {
        s.resize(p);
        break;
      }
    std::size_t b = s.find_first_not_of(" \t"), e = s.find_last_not_of(" \t");
    return b == std::string::npos ? std::string() : s.substr(b, e - b + 1);
  }
  // A number in [lo, hi]; a value that is not one fails the file.
  double Number(const char* key, double def, double lo, double hi) {
    std::string v = Text(key);
    if (v.empty()) return def;
    char* end = nullptr;
    double d = std::strtod(v.c_str(), &end);
    if (*end != '\0' || !std::isfinite(d) || d < lo || d > hi)
      return Fail(key, v, "a number from " + Short(lo) + " to " + Short(hi)), def;
    return d;
  }
  std::int64_t Integer(const char* key, std::int64_t def, std::int64_t lo, std::int64_t hi) {
    std::string v = Text(key);
    if (v.empty()) return def;
    char* end = nullptr;
    long long n = std::strtoll(v.c_str(), &end, 10);
    if (*end != '\0' || n < lo || n > hi)
      return Fail(key, v,
                  "a whole number from " + std::to_string(lo) + " to " + std::to_string(hi)),
             def;
    return n;
  }
  void Fail(const char* key, const std::string& value, const std::string& expected) {
    if (error_ != nullptr && error_->empty())
      *error_ = "[" + std::string(name_) + "] " + key + " = " + value + ": expected " + expected;
  }
  // Keys of the section that were never asked for.
  void RejectUnknownKeys() {
    CSimpleIniA::TNamesDepend keys;
    ini_.GetAllKeys(name_, keys);
    for (const auto& k : keys)
      if (used_.count(k.pItem) == 0 && error_ != nullptr && error_->empty())
        *error_ = "[" + std::string(name_) + "] has no key " + k.pItem;
  }
  bool failed() const { return error_ != nullptr && !error_->empty(); }

 private:
  static std::string Short(double d) {
    char buf[32];
    std::snprintf(buf, sizeof buf, "%g", d);
    return buf;
  }
  const CSimpleIniA& ini_;
  const char* name_;
  std::string* error_;
  std::set<std::string> used_;
};

std::string Resolve(const std::string& config_path, const std::string& path) {
  if (path.empty() || path[0] == '/' || path[0] == '\\' || (path.size() > 1 && path[1] == ':'))
    return path;
  std::size_t slash = config_path.find_last_of("/\\");
  return slash == std::string::npos ? path : config_path.substr(0, slash + 1) + path;
}

void ReadMarket(Section& s, const std::string& path, MarketCfg& m) {
  if (s.Has("replay")) m.replay = Resolve(path, s.Text("replay"));
  if (s.Has("seed")) {
    m.random_walk = m.replay.empty();
    m.seed = static_cast<std::uint64_t>(s.Integer("seed", 0, 0, INT64_MAX));
  }
  m.volatility = s.Number("volatility", m.volatility, 0, 10);
  m.step_ms = s.Integer("step_ms", m.step_ms, 1, 86400000);
  std::string clock = s.Text("clock", "realtime");
  if (clock == "manual") {
    m.clock = ClockMode::Manual;
  } else if (clock == "realtime") {
    m.clock = ClockMode::Realtime;
  } else {
    m.clock = ClockMode::Speed;
    m.speed = s.Number("clock", 1, 1e-3, 1e6);
  }
  std::string start = s.Text("start");
  if (!start.empty()) {
    m.start_ms = ParseTimeOfDay(start);
    if (m.start_ms < 0) s.Fail("start", start, "HH:MM:SS[.mmm]");
  }
  s.RejectUnknownKeys();
}

void ReadFees(Section& s, FeeCfg& f) {
  f.commission_rate = s.Number("commission_rate", 0, 0, 0.1);
  f.commission_min = s.Number("commission_min", 0, 0, 1e6);
  f.stamp_duty_rate = s.Number("stamp_duty_rate", 0, 0, 0.1);
  f.transfer_fee_rate = s.Number("transfer_fee_rate", 0, 0, 0.1);
  s.RejectUnknownKeys();
}

SecurityCfg ReadSecurity(Section& s, const std::string& jys, const std::string& zqdm) {
  SecurityCfg c = MakeSecurity(jys, zqdm, s.Text("name", zqdm), s.Number("price", 0, 0, 1e9));
  std::string kind = s.Text("kind");
  if (kind == "fund" || kind == "stock")
    SetKind(c, kind == "fund" ? SecurityKind::Fund : SecurityKind::Stock);
  else if (!kind.empty())
    s.Fail("kind", kind, "stock or fund");
  c.prev_close = s.Number("prev_close", 0, 0, 1e9);
  c.liquidity = s.Integer("liquidity", -1, -1, INT64_MAX);
  c.tick = s.Number("tick", c.tick, 0.001, 1000);
  c.lot = s.Integer("lot", c.lot, 1, 1000000);
  c.limit = s.Number("limit", c.limit, 0, 10);
  c.volatility = s.Number("volatility", -1, -1, 10);
  s.RejectUnknownKeys();
  return c;
}

}  // namespace

bool LoadConfigFile(const std::string& path, Config& out, std::string* error) {
  CSimpleIniA ini;
  ini.SetMultiKey(false);
  if (ini.LoadFile(path.c_str()) < 0) {
    if (error) *error = "cannot read " + path;
    return false;
  }
  std::string problem;
  Config c;
  const char* b = "backend";
  if (Bool(ini.GetValue(b, "include_defaults", ""), false)) c = DefaultConfig();
  const char* addrs = ini.GetValue(b, "addresses", nullptr);
  if (addrs != nullptr) {
    c.addresses.clear();
    for (const auto& a : Split(addrs, ','))
      if (!a.empty()) c.addresses.push_back(a);
  } else if (c.addresses.empty()) {
    c.addresses = DefaultConfig().addresses;
  }
  c.time_offset_ms = ini.GetLongValue(b, "time_offset_ms", static_cast<long>(c.time_offset_ms));
  c.trade_date = std::atoll(ini.GetValue(b, "trade_date", std::to_string(c.trade_date).c_str()));
  c.confirm_func = ini.GetValue(b, "confirm_func", c.confirm_func.c_str());
  c.report_func = ini.GetValue(b, "report_func", c.report_func.c_str());
  c.match_volume = std::atoll(ini.GetValue(b, "match_volume", "0"));
  c.check_token = Bool(ini.GetValue(b, "check_token", ""), true);
  Section backend(ini, b, &problem);
  if (backend.Has("state")) c.state = Resolve(path, backend.Text("state"));

  CSimpleIniA::TNamesDepend sections;
  ini.GetAllSections(sections);
  sections.sort(CSimpleIniA::Entry::LoadOrder());
  for (const auto& sec : sections) {
    std::string name = sec.pItem;
    auto parts = Split(name, '.');
    CSimpleIniA::TNamesDepend keys;
    ini.GetAllKeys(sec.pItem, keys);
    keys.sort(CSimpleIniA::Entry::LoadOrder());
    auto get = [&](const char* key, const char* def) {
      return std::string(ini.GetValue(sec.pItem, key, def));
    };
    Section section(ini, sec.pItem, &problem);
    if (parts.size() == 2 && parts[0] == "customer") {
      CustomerCfg cu = MakeCustomer(parts[1], get("password", ""), ParseNodes(get("nodes", "1:4")));
      cu.name = get("name", cu.name.c_str());
      cu.zjzh = get("zjzh", cu.zjzh.c_str());
      cu.gdh_sh = get("gdh_sh", cu.gdh_sh.c_str());
      cu.gdh_sz = get("gdh_sz", cu.gdh_sz.c_str());
      cu.funds = std::atof(get("funds", "1000000").c_str());
      cu.token_text = get("token_text", "");
      cu.bad_fund_row = Bool(ini.GetValue(sec.pItem, "bad_fund_row", ""), false);
      for (const auto& k : keys) {
        if (std::strncmp(k.pItem, "position", 8) != 0) continue;
        auto f = Split(ini.GetValue(sec.pItem, k.pItem, ""), ',');
        if (f.size() < 3) {
          if (error)
            *error = name + "." + k.pItem + ": expected jys,zqdm,balance[,sellable[,cost]]";
          return false;
        }
        PositionCfg p;
        p.jys = f[0];
        p.zqdm = f[1];
        p.balance = std::atoll(f[2].c_str());
        p.sellable = f.size() > 3 ? std::atoll(f[3].c_str()) : p.balance;
        p.cost = f.size() > 4 ? std::atof(f[4].c_str()) : 0.0;
        cu.positions.push_back(p);
      }
      c.customers.push_back(cu);
    } else if (parts.size() == 3 && parts[0] == "security") {
      SecurityCfg s = ReadSecurity(section, parts[1], parts[2]);
      bool replaced = false;
      for (auto& old : c.securities)
        if (old.jys == s.jys && old.zqdm == s.zqdm) old = s, replaced = true;
      if (!replaced) c.securities.push_back(s);
    } else if (parts.size() == 3 && parts[0] == "etf") {
      EtfCfg e;
      e.jys = parts[1];
      e.zqdm = parts[2];
      e.creation_allowed = Bool(ini.GetValue(sec.pItem, "creation_allowed", ""), true);
      e.info_date = std::atoll(get("info_date", "0").c_str());
      e.unit = std::atoll(get("unit", "10000").c_str());
      e.cash = std::atof(get("cash", "0").c_str());
      for (const auto& k : keys) {
        if (std::strncmp(k.pItem, "constituent", 11) != 0) continue;
        auto f = Split(ini.GetValue(sec.pItem, k.pItem, ""), ',');
        if (f.size() < 3) {
          if (error) *error = name + "." + k.pItem + ": expected jys,zqdm,qty[,flag]";
          return false;
        }
        e.constituents.push_back(
            {f[0], f[1], std::atoll(f[2].c_str()), f.size() > 3 ? std::atoi(f[3].c_str()) : 0});
      }
      c.etfs.push_back(e);
    } else if (name == "market") {
      ReadMarket(section, path, c.market);
    } else if (name == "fees") {
      ReadFees(section, c.fees);
    } else if (name != "backend") {
      if (error) *error = "unknown section [" + name + "]";
      return false;
    }
  }
  if (!problem.empty()) {
    if (error) *error = path + ": " + problem;
    return false;
  }
  out = std::move(c);
  return true;
}

}  // namespace sim
