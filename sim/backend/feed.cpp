#include "feed.h"

#include <algorithm>
#include <cmath>

#include "market.h"

namespace sim {
namespace {

constexpr double kTradingDayMs = 4 * 3600 * 1000.0;

std::uint64_t SplitMix(std::uint64_t x) {
  x += 0x9E3779B97F4A7C15ULL;
  x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9ULL;
  x = (x ^ (x >> 27)) * 0x94D049BB133111EBULL;
  return x ^ (x >> 31);
}

// Uniform in (0, 1].
double Unit(std::uint64_t x) {
  return (static_cast<double>(SplitMix(x) >> 11) + 1.0) / 9007199254740992.0;
}

std::uint64_t Hash(const std::string& s) {
  std::uint64_t h = 1469598103934665603ULL;
  for (unsigned char ch : s) h = (h ^ ch) * 1099511628211ULL;
  return h;
}

}  // namespace

void Feed::Attach(Backend& be, const MarketCfg& market, std::shared_ptr<const Replay> replay) {
  replay_ = std::move(replay);
  replayed_.clear();
  walkers_.clear();
  next_ = 0;
  seed_ = market.seed;
  step_ms_ = market.step_ms;
  start_ms_ = market.start_ms;
  volatility_ = market.volatility;
  if (replay_) {
    for (const auto& r : replay_->securities) {
      Security* s = be.FindSecurity(r.jys, r.zqdm);
      if (s == nullptr) s = &be.AddSecurity(MakeSecurity(r.jys, r.zqdm, r.zqdm, r.first_last));
      replayed_.push_back(s);
    }
  } else if (market.random_walk) {
    for (auto& [key, s] : be.securities())
      if ((s.cfg.volatility >= 0 ? s.cfg.volatility : volatility_) > 0 && s.last > 0)
        walkers_.push_back(&s);
  }
}

void Feed::Seek(std::int64_t ms) {
  walked_ms_ = ms;
  if (!replay_) return;
  auto it = std::upper_bound(replay_->rows.begin(), replay_->rows.end(), ms,
                             [](std::int64_t t, const ReplayRow& r) { return t < r.time_ms; });
  next_ = static_cast<std::size_t>(it - replay_->rows.begin());
}

void Feed::Run(Backend& be, std::int64_t to, const std::function<void(Security&)>& on_quote) {
  if (replay_) {
    const auto& rows = replay_->rows;
    for (; next_ < rows.size() && rows[next_].time_ms <= to; ++next_) {
      const ReplayRow& r = rows[next_];
      Security& s = *replayed_[r.security];
      be.clock.MoveTo(r.time_ms);
      ApplyQuote(be, s, {r.last, r.volume, r.turnover, 0, r.bids, r.asks});
      on_quote(s);
    }
  }
  if (!walkers_.empty() && to > walked_ms_) {
    std::int64_t first = std::max(walked_ms_, start_ms_ - 1) / step_ms_ + 1;
    walked_ms_ = to;
    for (std::int64_t step = first; step * step_ms_ <= to; ++step) {
      be.clock.MoveTo(step * step_ms_);
      for (Security* s : walkers_) {
        Step(be, *s, step);
        on_quote(*s);
      }
    }
  }
}

// One step of a security's random walk: a normal move of the volatility scaled to the step,
// on the tick and within the limits, a book of five levels a tick apart, and some volume.
void Feed::Step(Backend& be, Security& s, std::int64_t step) {
  std::uint64_t key = SplitMix(seed_ ^ SplitMix(static_cast<std::uint64_t>(be.clock.Date()))) ^
                      Hash(s.cfg.jys + s.cfg.zqdm) ^ SplitMix(static_cast<std::uint64_t>(step));
  double z = std::sqrt(-2.0 * std::log(Unit(key))) * std::cos(6.283185307179586 * Unit(key + 1));
  double vol = s.cfg.volatility >= 0 ? s.cfg.volatility : volatility_;
  double price =
      ToTick(s.last * std::exp(vol * std::sqrt(static_cast<double>(step_ms_) / kTradingDayMs) * z),
             s.cfg.tick);
  if (s.cfg.limit > 0) price = std::min(std::max(price, s.LowerLimit()), s.UpperLimit());
  price = std::max(price, s.cfg.tick);
  QuoteUpdate q;
  q.last = price;
  std::int64_t traded = s.cfg.lot * static_cast<std::int64_t>(Unit(key + 2) * 50);
  q.volume = s.volume + traded;
  q.turnover = s.turnover + static_cast<double>(traded) * price;
  for (int k = 0; k < kLevels; ++k) {
    std::int64_t depth = s.cfg.lot * (1 + static_cast<std::int64_t>(Unit(key + 3 + 2 * k) * 99));
    q.bids[k] = {std::max(0.0, ToTick(price - k * s.cfg.tick, s.cfg.tick)), depth};
    q.asks[k] = {ToTick(price + (k + 1) * s.cfg.tick, s.cfg.tick),
                 s.cfg.lot * (1 + static_cast<std::int64_t>(Unit(key + 4 + 2 * k) * 99))};
  }
  ApplyQuote(be, s, q);
}

}  // namespace sim
