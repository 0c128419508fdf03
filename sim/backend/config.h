// The simulated back end's configuration: customers, securities, ETFs, the market (where
// prices come from and the clock), fees, state file, addresses. Built-in defaults, or an INI
// file (README.md lists every key).
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

enum class SecurityKind { Stock, Fund };

struct SecurityCfg {
  std::string jys, zqdm, name;
  double price = 0;             // last price at the start
  double prev_close = 0;        // 0: the price
  std::int64_t liquidity = -1;  // quantity the market can match; -1 unlimited
  SecurityKind kind = SecurityKind::Stock;
  double tick = 0.01;
  std::int64_t lot = 100;  // buys of ordinary trading come in whole lots
  double limit = 0.10;     // daily price limit around the previous close; 0: none
  double volatility = -1;  // of the random walk, per trading day; -1: the market's
};

struct ConstituentCfg {
  std::string jys, zqdm;
  std::int64_t qty = 0;   // per creation unit
  std::int32_t flag = 0;  // 1: cash substitution allowed
};

struct EtfCfg {
  std::string jys, zqdm;
  bool creation_allowed = true;
  std::int64_t info_date = 0;  // 0: the trade date (up to date)
  std::int64_t unit = 0;       // creation unit
  double cash = 0;             // cash component per unit
  std::vector<ConstituentCfg> constituents;
};

enum class ClockMode { Manual, Realtime, Speed };

struct MarketCfg {
  std::string replay;        // CSV of quotes (path as given, resolved against the file)
  bool random_walk = false;  // a seed was given (and no replay)
  std::uint64_t seed = 0;
  double volatility = 0.02;     // default of the securities'
  std::int64_t step_ms = 3000;  // interval of the random walk's quotes
  ClockMode clock = ClockMode::Realtime;
  double speed = 1;                                  // ClockMode::Speed
  std::int64_t start_ms = 9 * 3600000 + 30 * 60000;  // time of day a day starts at
};

struct FeeCfg {
  double commission_rate = 0;
  double commission_min = 0;   // per order
  double stamp_duty_rate = 0;  // sells
  double transfer_fee_rate = 0;
};

struct Config {
  std::vector<std::string> addresses;
  std::int64_t time_offset_ms = 0;
  std::int64_t trade_date = 0;  // 0: today
  std::string confirm_func = "DM0003";
  std::string report_func = "DM0004";
  std::int64_t match_volume = 0;
  bool check_token = true;
  std::string state;  // state file; empty: state in memory only
  std::vector<CustomerCfg> customers;
  std::vector<SecurityCfg> securities;
  std::vector<EtfCfg> etfs;
  MarketCfg market;
  FeeCfg fees;
};

Config DefaultConfig();
// A security with the defaults of its code: SH 5xxxxx and SZ 15xxxx, 16xxxx, 18xxxx are
// funds (tick 0.001), anything else a stock (tick 0.01).
SecurityCfg MakeSecurity(const std::string& jys, const std::string& zqdm, const std::string& name,
                         double price);
// The kind and its default tick.
void SetKind(SecurityCfg& s, SecurityKind kind);
// Reads an INI file; false (and `out` untouched) when it cannot be read or parsed. Relative
// paths in it (replay, state) are taken against the file's folder.
bool LoadConfigFile(const std::string& path, Config& out, std::string* error);
// "HH:MM:SS[.mmm]" as milliseconds since midnight; -1 when malformed.
std::int64_t ParseTimeOfDay(const std::string& text);

}  // namespace sim
