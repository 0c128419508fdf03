// A replay file: one trading day of quotes in CSV. The first line names the columns, in any
// order: time, exchange, code, last and volume are required; turnover is optional; bidN,
// bidN_volume, askN and askN_volume (N from 1 to 5) add levels, any subset of them, always in
// pairs. Each further line is one quote: time as HH:MM:SS[.mmm] of the trading day, prices in
// yuan, volume as the day's total so far. An empty level (price and volume empty) is no level.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "quote.h"

namespace sim {

struct ReplayRow {
  std::int64_t time_ms = 0;
  std::size_t security = 0;  // index into Replay::securities
  double last = 0;
  std::int64_t volume = 0;
  double turnover = -1;  // -1: not given
  Levels bids{}, asks{};
};

struct Replay {
  struct Security {
    std::string jys, zqdm;
    double first_last = 0;  // previous close of a security that is not configured
  };
  std::vector<Security> securities;
  std::vector<ReplayRow> rows;  // in time order (rows of the same time in file order)
};

// False with the reason (and its line) when the text is not a replay.
bool ReadReplay(std::string_view text, Replay* out, std::string* error);
bool ReadReplayFile(const std::string& path, Replay* out, std::string* error);

}  // namespace sim
