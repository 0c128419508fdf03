// The simulated broker back end: customers with their funds, accounts, positions, orders and
// matches, the market's securities, and the push records its business produces. One mutex
// guards it all; handlers run with it held.
#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "config.h"
#include "push_record.h"

namespace sim {

struct Position {
  std::string jys, gdh, zqdm;
  std::int64_t balance = 0;
  std::int64_t sellable = 0;
  double cost = 0;
};

enum class Side { None, Buy, Sell };

struct Order {
  std::int64_t wth = 0;
  std::int32_t func = 19001;  // business (function number of the request)
  std::string khh, jys, gdh, zqdm, kfsbdbh, wtsj;
  std::int32_t jylb = 0;
  std::int64_t wtsl = 0;
  double wtjg = 0;
  std::int32_t ddlx = 0;
  std::int64_t wtpch = 0;
  Side side = Side::None;
  double freeze_price = 0;  // funds frozen per unit of a buy
  std::int64_t matched = 0;
  double matched_amount = 0;
  std::int64_t withdrawn = 0;
  std::int32_t sbjg = 2;  // 2 declared, 3 refused
  std::string jgsm;
  std::string cxbz = "O";  // "W": the record of a withdrawal
  std::int64_t cxwth = 0;  // a withdrawal's withdrawn order
  bool matchable = true;   // the market matches it when its price allows
  std::int64_t Remaining() const { return wtsl - matched - withdrawn; }
  bool Open() const { return sbjg != 3 && cxbz != "W" && Remaining() > 0; }
};

struct MatchRec {
  std::string khh, jys, gdh, zqdm, kfsbdbh, cjbh, cjsj;
  std::int64_t wth = 0;
  std::int32_t jylb = 0;
  std::int64_t qty = 0;
  double price = 0, amount = 0;
};

struct Customer {
  CustomerCfg cfg;
  std::string trade_pwd, fund_pwd;
  std::int64_t token = 0;  // 0 until the first login
  double balance = 0;
  double frozen = 0;
  std::map<std::int32_t, double> node_alloc;  // funds allocated to each trading node
  std::map<std::int32_t, double> node_ratio;  // allocation ratio of each trading node
  std::vector<Position> positions;
  std::map<std::int64_t, Order> orders;       // by order number
  std::vector<MatchRec> matches;
  double Available() const { return balance - frozen; }
  std::vector<std::int32_t> TradeNodes() const;  // nodes of system type 4
  std::string GdhFor(const std::string& jys) const;  // "" for an unknown exchange
  Position* FindPosition(const std::string& jys, const std::string& zqdm);
  Position& GetPosition(const std::string& jys, const std::string& zqdm);
};

struct Security {
  SecurityCfg cfg;
  double price = 0;
  std::int64_t liquidity = -1;
};

// A push the back end has produced, delivered after the handler returns.
struct PendingPush {
  std::string khh;
  int kind = 0;  // 0 confirmation, 1 match
  PushValues values;
};

class Backend {
 public:
  static Backend& Get();
  std::mutex& mutex() { return mutex_; }

  // Lock held by the caller for everything below.
  void Load(const Config& cfg);
  const Config& cfg() const { return cfg_; }
  Config& cfg() { return cfg_; }
  Customer* FindCustomer(const std::string& khh);
  std::vector<std::string> CustomerNumbers() const;
  Security* FindSecurity(const std::string& jys, const std::string& zqdm);
  const EtfCfg* FindEtf(const std::string& jys, const std::string& zqdm) const;
  std::int64_t NextWth() { return next_wth_++; }
  std::string NextMatchNo() { return std::to_string(next_cjbh_++); }
  std::int64_t IssueToken(Customer& c);
  // Whether a token in a request is the customer's (see README: tokens).
  bool TokenValid(const Customer& c, std::int64_t token) const;
  std::int64_t TradeDate() const;
  void Push(const std::string& khh, int kind, PushValues v) { pending_.push_back({khh, kind, std::move(v)}); }
  std::vector<PendingPush> TakePushes();
  std::int64_t match_volume = 0;
  std::int64_t time_offset_ms = 0;
  std::int64_t trade_date = 0;

 private:
  std::mutex mutex_;
  Config cfg_;
  std::map<std::string, Customer> customers_;
  std::map<std::string, Security> securities_;  // by jys + "." + zqdm
  std::vector<PendingPush> pending_;
  std::int64_t next_wth_ = 1;
  std::int64_t next_cjbh_ = 1;
  std::int64_t next_token_ = 1;
};

// The built-in back end, or the one of the file named by KELSIM_CONFIG.
Config StartConfig();
// Local time now shifted by the back end's offset, "HHMMSS" and "HH:MM:SS.mmm".
std::string TimeHHMMSS();
std::string TimeText(std::int64_t offset_ms);
std::int64_t DateToday(std::int64_t offset_ms);

}  // namespace sim
