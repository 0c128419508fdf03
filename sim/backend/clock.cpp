#include "clock.h"

#include <chrono>
#include <cstdio>
#include <ctime>

namespace sim {
namespace {

std::tm LocalTm(std::int64_t offset_ms, int* ms) {
  auto now = std::chrono::system_clock::now() + std::chrono::milliseconds(offset_ms);
  auto since = now.time_since_epoch();
  std::time_t t =
      static_cast<std::time_t>(std::chrono::duration_cast<std::chrono::seconds>(since).count());
  if (ms)
    *ms = static_cast<int>(std::chrono::duration_cast<std::chrono::milliseconds>(since).count() %
                           1000);
  std::tm tm{};
#if defined(_WIN32)
  localtime_s(&tm, &t);
#else
  localtime_r(&t, &tm);
#endif
  return tm;
}

}  // namespace

std::int64_t WallTimeOfDay(std::int64_t offset_ms) {
  int ms = 0;
  std::tm tm = LocalTm(offset_ms, &ms);
  return ((tm.tm_hour * 60LL + tm.tm_min) * 60 + tm.tm_sec) * 1000 + ms;
}

std::int64_t WallDate(std::int64_t offset_ms) {
  std::tm tm = LocalTm(offset_ms, nullptr);
  return (tm.tm_year + 1900) * 10000LL + (tm.tm_mon + 1) * 100 + tm.tm_mday;
}

std::int64_t SteadyMs() {
  return std::chrono::duration_cast<std::chrono::milliseconds>(
             std::chrono::steady_clock::now().time_since_epoch())
      .count();
}

std::int64_t NextTradeDate(std::int64_t yyyymmdd) {
  std::tm tm{};
  tm.tm_year = static_cast<int>(yyyymmdd / 10000) - 1900;
  tm.tm_mon = static_cast<int>(yyyymmdd / 100 % 100) - 1;
  tm.tm_mday = static_cast<int>(yyyymmdd % 100);
  tm.tm_hour = 12;
  do {
    ++tm.tm_mday;
    std::mktime(&tm);  // normalises the date and sets the weekday
  } while (tm.tm_wday == 0 || tm.tm_wday == 6);
  return (tm.tm_year + 1900) * 10000LL + (tm.tm_mon + 1) * 100 + tm.tm_mday;
}

void Clock::Configure(const MarketCfg& market, std::int64_t trade_date, std::int64_t offset_ms) {
  mode_ = market.clock;
  speed_ = market.speed;
  start_ms_ = market.start_ms;
  offset_ms_ = offset_ms;
  date_ = trade_date;
  if (mode_ != ClockMode::Realtime && date_ <= 0) date_ = WallDate(offset_ms_);
  ms_ = mode_ == ClockMode::Realtime ? 0 : start_ms_;
  anchor_wall_ms_ = SteadyMs();
  anchor_ms_ = ms_;
}

std::int64_t Clock::Date() const { return date_ > 0 ? date_ : WallDate(offset_ms_); }

std::int64_t Clock::Target() const {
  switch (mode_) {
    case ClockMode::Realtime:
      return WallTimeOfDay(offset_ms_);
    case ClockMode::Speed:
      return anchor_ms_ +
             static_cast<std::int64_t>(static_cast<double>(SteadyMs() - anchor_wall_ms_) * speed_);
    default:
      return ms_;
  }
}

void Clock::MoveTo(std::int64_t ms) { ms_ = ms; }

std::int64_t Clock::Now() const {
  return mode_ == ClockMode::Realtime ? WallTimeOfDay(offset_ms_) : ms_;
}

void Clock::StartDay(std::int64_t date) {
  SetDate(date);
  ms_ = mode_ == ClockMode::Realtime ? 0 : start_ms_;
  anchor_wall_ms_ = SteadyMs();
  anchor_ms_ = ms_;
}

void Clock::SetDate(std::int64_t date) {
  date_ = date;
  if (mode_ != ClockMode::Realtime && date_ <= 0) date_ = WallDate(offset_ms_);
}

void Clock::Restore(std::int64_t date, std::int64_t ms) {
  if (mode_ == ClockMode::Realtime) return;
  date_ = date;
  ms_ = anchor_ms_ = ms;
  anchor_wall_ms_ = SteadyMs();
}

std::int64_t Clock::ShownMs() const {
  std::int64_t ms = mode_ == ClockMode::Realtime ? WallTimeOfDay(offset_ms_) : ms_ + offset_ms_;
  return ((ms % kDayMs) + kDayMs) % kDayMs;
}

std::string Clock::HHMMSS() const {
  std::int64_t s = ShownMs() / 1000;
  char buf[16];
  std::snprintf(buf, sizeof buf, "%02d%02d%02d", static_cast<int>(s / 3600),
                static_cast<int>(s / 60 % 60), static_cast<int>(s % 60));
  return buf;
}

std::string Clock::TimeText() const {
  std::int64_t ms = ShownMs();
  char buf[32];
  std::snprintf(buf, sizeof buf, "%02d:%02d:%02d.%03d", static_cast<int>(ms / 3600000),
                static_cast<int>(ms / 60000 % 60), static_cast<int>(ms / 1000 % 60),
                static_cast<int>(ms % 1000));
  return buf;
}

std::int64_t Clock::ShownDate() const {
  return mode_ == ClockMode::Realtime ? WallDate(offset_ms_) : Date();
}

}  // namespace sim
