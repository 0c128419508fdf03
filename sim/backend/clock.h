// The exchange's clock: the trade date and how far the trading day has run. Manual: the day
// moves only when told. Speed: from the day's start time, that many times faster than the
// wall clock. Realtime: the wall clock's time of day (shifted by the offset), the trade date
// today's unless one is set. The host runs the clock of the last two on a thread of its own.
#pragma once

#include <cstdint>
#include <string>

#include "config.h"

namespace sim {

constexpr std::int64_t kDayMs = 24LL * 3600 * 1000;

class Clock {
 public:
  void Configure(const MarketCfg& market, std::int64_t trade_date, std::int64_t offset_ms);
  ClockMode mode() const { return mode_; }
  bool RunsItself() const { return mode_ != ClockMode::Manual; }
  std::int64_t start_ms() const { return start_ms_; }

  std::int64_t Date() const;
  // How far the day has run (the market has been brought up to this time).
  std::int64_t Ms() const { return ms_; }
  // The time of day it is: realtime the wall clock's, else how far the day has run.
  std::int64_t Now() const;
  // Where the clock says the day is now: realtime and speed; the last position when manual.
  std::int64_t Target() const;
  // The market has been brought up to `ms`.
  void MoveTo(std::int64_t ms);
  // A new trade date (0: today's); the day starts at the start time (realtime: midnight, the
  // market then catches up with the wall clock).
  void StartDay(std::int64_t date);
  // Sets the trade date without a new day (0: today's again).
  void SetDate(std::int64_t date);
  // Restores a saved position (manual and speed clocks).
  void Restore(std::int64_t date, std::int64_t ms);

  void set_offset_ms(std::int64_t ms) { offset_ms_ = ms; }
  std::int64_t offset_ms() const { return offset_ms_; }
  // The time shown in answers and records: the clock's time of day with the offset.
  std::string HHMMSS() const;      // "HHMMSS"
  std::string TimeText() const;    // "HH:MM:SS.mmm"
  std::int64_t ShownDate() const;  // the date of that time (server-time answers)

 private:
  std::int64_t ShownMs() const;

  ClockMode mode_ = ClockMode::Realtime;
  double speed_ = 1;
  std::int64_t start_ms_ = 0;
  std::int64_t offset_ms_ = 0;
  std::int64_t date_ = 0;  // 0: today (realtime)
  std::int64_t ms_ = 0;
  std::int64_t anchor_wall_ms_ = 0;  // speed: the wall clock when the day stood at anchor_ms_
  std::int64_t anchor_ms_ = 0;
};

// The local wall clock shifted by an offset: time of day in ms, and the date as YYYYMMDD.
std::int64_t WallTimeOfDay(std::int64_t offset_ms);
std::int64_t WallDate(std::int64_t offset_ms);
std::int64_t SteadyMs();
// The next weekday after a date.
std::int64_t NextTradeDate(std::int64_t yyyymmdd);

}  // namespace sim
