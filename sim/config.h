// The simulated back end's configuration: customers, securities, ETFs, addresses, clock.
// Built-in defaults, or an INI file (README.md lists every key).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace sim {

struct NodeCfg {
  std::int32_t node_id = 0;
  std::int32_t system_type = 4;
};

struct PositionCfg {
  std::string jys, zqdm;
  std::int64_t balance = 0;
  std::int64_t sellable = 0;
  double cost = 0;
};

struct CustomerCfg {
  std::string khh, password, name, zjzh, gdh_sh, gdh_sz;
  std::vector<NodeCfg> nodes;
  double funds = 0;
  std::vector<PositionCfg> positions;
  std::string token_text;     // non-empty: logins answer this text as the token
  bool bad_fund_row = false;  // the fund query adds a row whose state (507) is -1
};

struct SecurityCfg {
  std::string jys, zqdm, name;
  double price = 0;
  std::int64_t liquidity = -1;  // quantity the market can match; -1 unlimited
};

struct ConstituentCfg {
  std::string jys, zqdm;
  std::int64_t qty = 0;  // per creation unit
  std::int32_t flag = 0; // 1: cash substitution allowed
};

struct EtfCfg {
  std::string jys, zqdm;
  bool creation_allowed = true;
  std::int64_t info_date = 0;  // 0: the trade date (up to date)
  std::int64_t unit = 0;       // creation unit
  double cash = 0;             // cash component per unit
  std::vector<ConstituentCfg> constituents;
};

struct Config {
  std::vector<std::string> addresses;
  std::int64_t time_offset_ms = 0;
  std::int64_t trade_date = 0;  // 0: today
  std::string confirm_func = "DM0003";
  std::string report_func = "DM0004";
  std::int64_t match_volume = 0;
  bool check_token = true;
  std::vector<CustomerCfg> customers;
  std::vector<SecurityCfg> securities;
  std::vector<EtfCfg> etfs;
};

Config DefaultConfig();
// Reads an INI file; false (and `out` untouched) when it cannot be read or parsed.
bool LoadConfigFile(const std::string& path, Config& out, std::string* error);

}  // namespace sim
