#include "fees.h"

#include <algorithm>
#include <cmath>

namespace sim {

std::int64_t Cents(double yuan) { return std::llround(yuan * 100.0); }
std::int64_t Milli(double price) { return std::llround(price * 1000.0); }

bool OnTick(double price, double tick) {
  double milli = price * 1000.0;
  if (std::fabs(milli - std::round(milli)) > 1e-6) return false;
  std::int64_t t = Milli(tick);
  return t > 0 && Milli(price) % t == 0;
}

double ToTick(double price, double tick) {
  std::int64_t t = std::max<std::int64_t>(1, Milli(tick));
  std::int64_t p = Milli(price);
  return static_cast<double>((p + t / 2) / t * t) / 1000.0;
}

FeeSchedule::FeeSchedule(const FeeCfg& cfg)
    : commission_ppb(std::llround(cfg.commission_rate * 1e9)),
      commission_min_cents(Cents(cfg.commission_min)),
      stamp_ppb(std::llround(cfg.stamp_duty_rate * 1e9)),
      transfer_ppb(std::llround(cfg.transfer_fee_rate * 1e9)) {}

std::int64_t FeeCents(std::int64_t amount_milli, std::int64_t rate_ppb) {
  // amount / 1000 yuan * rate / 1e9 * 100 cents = amount * rate / 1e10 cents.
  constexpr __int128 kScale = 10000000000;
  __int128 x = static_cast<__int128>(amount_milli) * rate_ppb;
  return static_cast<std::int64_t>((x + kScale / 2) / kScale);
}

std::int64_t MilliToCents(std::int64_t amount_milli) { return (amount_milli + 5) / 10; }

MatchFees ChargeFees(const FeeSchedule& f, bool sell, std::int64_t amount_milli,
                     std::int64_t order_amount_before_milli, std::int64_t commission_paid) {
  MatchFees m;
  std::int64_t owed = std::max(
      f.commission_min_cents, FeeCents(order_amount_before_milli + amount_milli, f.commission_ppb));
  m.commission = std::max<std::int64_t>(0, owed - commission_paid);
  m.stamp = sell ? FeeCents(amount_milli, f.stamp_ppb) : 0;
  m.transfer = FeeCents(amount_milli, f.transfer_ppb);
  return m;
}

std::int64_t FeeCeiling(const FeeSchedule& f, bool sell, std::int64_t amount_milli) {
  return ChargeFees(f, sell, amount_milli, 0, 0).Total();
}

}  // namespace sim
