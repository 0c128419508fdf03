// Where the market's quotes come from as the day runs: a replay file (the same day's quotes
// each trading day), a seeded random walk (a quote per security every step), or nothing (the
// control interface alone moves prices).
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "backend.h"
#include "replay.h"

namespace sim {

class Feed {
 public:
  // Binds the feed to a back end; securities of a replay that are not configured are added,
  // their previous close the first last price the file gives them.
  void Attach(Backend& be, const MarketCfg& market, std::shared_ptr<const Replay> replay);
  // The quotes of the day up to `ms` count as given (-1: none).
  void Seek(std::int64_t ms);
  // Gives the quotes of the day not given yet up to `to`, in order; the clock stands at each
  // quote's time while it is given. on_quote follows each quote.
  void Run(Backend& be, std::int64_t to, const std::function<void(Security&)>& on_quote);
  // Whether it gives quotes at all (a replay or a random walk).
  bool active() const { return replay_ != nullptr || !walkers_.empty(); }

 private:
  void Step(Backend& be, Security& s, std::int64_t step);

  std::shared_ptr<const Replay> replay_;
  std::vector<Security*> replayed_;  // by the replay's security index
  std::size_t next_ = 0;             // the next replay row
  std::int64_t walked_ms_ = -1;      // the random walk's last step
  std::vector<Security*> walkers_;   // securities of the random walk
  std::uint64_t seed_ = 0;
  std::int64_t step_ms_ = 3000;
  std::int64_t start_ms_ = 0;
  double volatility_ = 0;
};

}  // namespace sim
