// The simulated exchange with its broker back end, as one object a host drives: a request in,
// an answer out; pushes out, each addressed to a customer; the market moved by its clock and
// by control calls; the state saved to a file when one is configured. It knows nothing of
// connections, sessions or threads: the simulated transport hosts one per process, and any
// other host (a server, say) can host it the same way. Every member may be called from any
// thread; calls are served one at a time.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

#include "config.h"
#include "feed.h"
#include "message.h"
#include "quote.h"

namespace sim {

class Backend;
class Store;
struct PendingPush;

// Where the exchange's output goes. Both are called with the exchange's lock held, in the
// order things happened and after the state they report was saved: queue them and return;
// never call the exchange from them.
class ExchangeListener {
 public:
  virtual ~ExchangeListener() = default;
  virtual void OnPush(PendingPush&& push) = 0;
  // Quotes are built only for a listener that wants them.
  virtual bool WantsQuotes() const = 0;
  virtual void OnQuote(const Quote& quote) = 0;
};

class Exchange {
 public:
  Exchange();
  ~Exchange();  // saves what is pending
  Exchange(const Exchange&) = delete;
  Exchange& operator=(const Exchange&) = delete;

  // (Re)starts from a configuration: the replay is read, the state file opened and what it
  // holds restored. False with the reason when the replay cannot be read (the exchange is
  // then left as it was) or the state file cannot be used (the exchange is then stopped).
  bool Start(const Config& cfg, std::string* error);
  // Saves what is pending and stops: requests are refused with the reason until a Start.
  void Stop(const std::string& why);
  bool running() const;
  // Why the exchange is not running.
  std::string failure() const;
  void SetListener(ExchangeListener* listener);

  // Answers one request.
  void Handle(const Request& req, const Caller& who, Answer* ans);
  // Between the two, what calls change is saved in one transaction at EndBatch, and the
  // pushes leave then: a host that batches holds every answer of the batch until EndBatch
  // has returned (a server saves the requests of one read so).
  void BeginBatch();
  void EndBatch();

  // The clock. A clock that runs itself (realtime, speed) and has quotes to give is moved by
  // the host calling RunClock every few milliseconds; a manual one by Advance (false for
  // other clocks). Without quotes to give a clock is read when needed and needs no calls.
  bool ClockNeedsRunning() const;
  void RunClock();
  bool Advance(std::int64_t ms);
  // Ends the trading day and starts the next (see EndOfDay in market.h).
  void NewDay();
  // The trade date and the time of day the clock stands at.
  void ClockTime(std::int64_t* date, std::int64_t* ms) const;

  // The market. Unknown securities give false.
  bool GetQuote(const std::string& jys, const std::string& zqdm, Quote* out) const;
  // Sets last, volume, turnover and the ten levels (the previous close too when above 0);
  // false for an unknown security or a quote with a price below 0.
  bool SetQuote(const Quote& q);
  // One level at the price on both sides, unlimited (the liquidity still applies).
  bool SetPrice(const std::string& jys, const std::string& zqdm, double price);
  bool SetLiquidity(const std::string& jys, const std::string& zqdm, std::int64_t qty);
  void SetMatchVolume(std::int64_t volume);
  void SetTimeOffset(std::int64_t ms);
  // A later date than the trade date starts a new day on it.
  void SetTradeDate(std::int64_t yyyymmdd);
  // Saves what is pending (a host calls it when it stops).
  void Save();

 private:
  void StopLocked(const std::string& why);
  void Commit();
  void Emit();
  void Done();  // Commit and Emit
  void RunTo(std::int64_t target);
  void StartDay(std::int64_t date);
  void RollRealtimeDay();
  void QuoteChanged(Security& s);

  mutable std::mutex m_;
  std::unique_ptr<Backend> be_;
  std::unique_ptr<Store> store_;
  Feed feed_;
  ExchangeListener* listener_ = nullptr;
  std::string failure_ = "not started";
  std::int64_t realtime_date_ = 0;  // the wall clock's date the realtime clock last saw
  bool batch_ = false;
};

}  // namespace sim
