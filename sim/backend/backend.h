// The simulated broker back end's state: customers with their funds, accounts, positions,
// orders and matches; the market's securities with their quotes and the exchange's resting
// orders; the clock, fees and sequences; the pushes its business produces; and what changed
// since the state was last saved. Not thread-safe: the Exchange (exchange.h) guards it.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "clock.h"
#include "config.h"
#include "fees.h"
#include "push_record.h"
#include "quote.h"

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
  double freeze_price = 0;  // price a buy's funds were frozen at
  double frozen = 0;        // funds a buy still holds frozen
  std::int64_t matched = 0;
  double matched_amount = 0;
  std::int64_t matched_milli = 0;  // the matched amount in thousandths (fees are owed on it)
  std::int64_t commission = 0;     // commission paid so far, cents
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
  double fees = 0;  // commission, stamp duty and transfer fee of this match
  double qszj = 0;  // settlement: what the match did to the funds
};

struct Customer {
  CustomerCfg cfg;
  std::string trade_pwd, fund_pwd;
  std::int64_t token = 0;  // 0 until the first login
  double balance = 0;
  double frozen = 0;
  double day_start = 0;                       // balance when the day began
  std::map<std::int32_t, double> node_alloc;  // funds allocated to each trading node
  std::map<std::int32_t, double> node_ratio;  // allocation ratio of each trading node
  std::vector<Position> positions;
  std::map<std::int64_t, Order> orders;  // the day's, by order number
  std::vector<MatchRec> matches;         // the day's
  std::size_t matches_saved = 0;         // how many of them the state file holds
  bool touched = false;                  // possibly changed since the last save
  double Available() const { return balance - frozen; }
  void AddFunds(double yuan) { balance = Round2(balance + yuan); }
  void Freeze(double yuan) { frozen = Round2(frozen + yuan); }
  std::vector<std::int32_t> TradeNodes() const;      // nodes of system type 4
  std::string GdhFor(const std::string& jys) const;  // "" for an unknown exchange
  Position* FindPosition(const std::string& jys, const std::string& zqdm);
  Position& GetPosition(const std::string& jys, const std::string& zqdm);
};

// The exchange's own resting orders of one side, in priority: best price first, then time.
// Keys are (price in thousandths, negated for buys, order number).
using RestingOrders = std::map<std::pair<std::int64_t, std::int64_t>, Customer*>;

struct Security {
  SecurityCfg cfg;
  double prev_close = 0;
  double last = 0;
  std::int64_t volume = 0;
  double turnover = 0;
  Levels bids{}, asks{};
  std::int64_t quoted_ms = 0;   // the clock's time of day when the market last changed
  std::int64_t liquidity = -1;  // quantity the market can still match; -1 unlimited
  RestingOrders buys, sells;
  bool touched = false;
  double UpperLimit() const;
  double LowerLimit() const;
  // A book of one level at `price` on both sides, its volume unlimited.
  void QuoteAt(double price);
};

// A push the back end has produced, for the customer's subscriptions.
struct PendingPush {
  std::string khh;
  int kind = 0;  // 0 confirmation, 1 match
  PushValues values;
};

class Backend {
 public:
  explicit Backend(const Config& cfg);
  const Config& cfg() const { return cfg_; }

  Customer* FindCustomer(const std::string& khh);  // marks it touched
  std::map<std::string, Customer>& customers() { return customers_; }
  Security* FindSecurity(const std::string& jys, const std::string& zqdm);
  const Security* FindSecurity(const std::string& jys, const std::string& zqdm) const;
  Security& AddSecurity(const SecurityCfg& cfg);
  std::map<std::string, Security>& securities() { return securities_; }
  void Touch(Security& s);
  const EtfCfg* FindEtf(const std::string& jys, const std::string& zqdm) const;

  std::int64_t NextWth() { return next_wth_++; }
  std::string NextMatchNo() { return std::to_string(next_cjbh_++); }
  std::int64_t IssueToken(Customer& c);
  // Whether a token in a request is the customer's (see README: tokens).
  bool TokenValid(const Customer& c, std::int64_t token) const;
  std::int64_t TradeDate() const { return clock.Date(); }

  // A new order of the day, and a change to one: both saved with the next commit.
  Order& AddOrder(Customer& cu, Order o);
  void Changed(const Order& o);

  void Push(const std::string& khh, int kind, PushValues v) {
    pending_.push_back({khh, kind, std::move(v)});
  }
  // The pushes given so far, to be moved out before the next call (a record is some 2 KiB: the
  // two vectors keep their room from call to call).
  std::vector<PendingPush>& TakePushes();
  bool HasPushes() const { return !pending_.empty(); }

  Clock clock;
  FeeSchedule fees;
  std::int64_t match_volume = 0;
  bool check_token = true;

  // Sequences and what changed since the state was last saved (store.h).
  struct Sequences {
    std::int64_t wth = 1, cjbh = 1, token = 1;
  };
  Sequences sequences() const { return {next_wth_, next_cjbh_, next_token_}; }
  void RestoreSequences(const Sequences& s);
  struct Changes {
    std::vector<Customer*> customers;
    std::vector<Security*> securities;
    std::vector<std::pair<Customer*, std::int64_t>> orders;
    bool day_cleared = false;  // the day's orders and matches were cleared first
  };
  Changes TakeChanges();
  void ClearDay();  // the day's orders and matches go

 private:
  Config cfg_;
  std::map<std::string, Customer> customers_;
  std::map<std::string, Security> securities_;  // by jys + "." + zqdm
  std::vector<PendingPush> pending_, taken_;
  Changes changes_;
  std::int64_t next_wth_ = 1;
  std::int64_t next_cjbh_ = 1;
  std::int64_t next_token_ = 1;
};

// The quote of a security as hosts see it.
Quote QuoteOf(const Security& s, const Clock& clock);

}  // namespace sim
