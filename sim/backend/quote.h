// A security's market as the back end shows it: last price, previous close, limits, volume
// and turnover of the day, and five levels of bid and ask.
#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace sim {

constexpr int kLevels = 5;

struct Level {
  double price = 0;         // 0: no level
  std::int64_t volume = 0;  // -1: unlimited
};
using Levels = std::array<Level, kLevels>;

struct Quote {
  std::string jys, zqdm;
  std::int64_t date = 0;     // trade date, YYYYMMDD
  std::int64_t time_ms = 0;  // of the day
  double last = 0, prev_close = 0, upper_limit = 0, lower_limit = 0, tick = 0;
  std::int64_t volume = 0;
  double turnover = 0;
  Levels bids{}, asks{};
};

}  // namespace sim
