#include "config.h"

#include <cstdlib>
#include <cstring>
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

CustomerCfg MakeCustomer(const std::string& khh, const std::string& pwd, std::vector<NodeCfg> nodes) {
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

  c.securities = {
      {"SH", "600000", "PFYH", 10.00, -1}, {"SH", "600036", "ZSYH", 35.00, -1},
      {"SH", "601318", "ZGPA", 50.00, -1}, {"SZ", "000001", "PAYH", 12.00, -1},
      {"SZ", "000002", "WKA", 20.00, -1},  {"SH", "510050", "50ETF", 2.500, -1},
      {"SH", "510300", "300ETF", 4.000, -1}, {"SZ", "159919", "300ETFSZ", 4.000, -1},
      {"SH", "204001", "GC001", 2.000, -1}, {"SH", "501000", "LOF501000", 1.000, -1},
  };

  EtfCfg e50;
  e50.jys = "SH";
  e50.zqdm = "510050";
  e50.unit = 10000;
  e50.cash = 1000.00;
  e50.constituents = {{"SH", "600000", 1000, 1}, {"SH", "600036", 200, 1}, {"SH", "601318", 100, 0}};
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
  c1.positions = {{"SH", "600000", 10000, 10000, 9.50},  {"SH", "600036", 2000, 2000, 30.00},
                  {"SH", "601318", 1000, 1000, 48.00},   {"SZ", "000001", 5000, 5000, 11.00},
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

bool LoadConfigFile(const std::string& path, Config& out, std::string* error) {
  CSimpleIniA ini;
  ini.SetMultiKey(false);
  if (ini.LoadFile(path.c_str()) < 0) {
    if (error) *error = "cannot read " + path;
    return false;
  }
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

  CSimpleIniA::TNamesDepend sections;
  ini.GetAllSections(sections);
  sections.sort(CSimpleIniA::Entry::LoadOrder());
  for (const auto& sec : sections) {
    std::string name = sec.pItem;
    auto parts = Split(name, '.');
    CSimpleIniA::TNamesDepend keys;
    ini.GetAllKeys(sec.pItem, keys);
    keys.sort(CSimpleIniA::Entry::LoadOrder());
    auto get = [&](const char* key, const char* def) { return std::string(ini.GetValue(sec.pItem, key, def)); };
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
          if (error) *error = name + "." + k.pItem + ": expected jys,zqdm,balance[,sellable[,cost]]";
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
      SecurityCfg s;
      s.jys = parts[1];
      s.zqdm = parts[2];
      s.name = get("name", s.zqdm.c_str());
      s.price = std::atof(get("price", "0").c_str());
      s.liquidity = std::atoll(get("liquidity", "-1").c_str());
      c.securities.push_back(s);
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
        e.constituents.push_back({f[0], f[1], std::atoll(f[2].c_str()), f.size() > 3 ? std::atoi(f[3].c_str()) : 0});
      }
      c.etfs.push_back(e);
    } else if (name != "backend") {
      if (error) *error = "unknown section [" + name + "]";
      return false;
    }
  }
  out = std::move(c);
  return true;
}

}  // namespace sim
