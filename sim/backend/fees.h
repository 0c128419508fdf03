// Money of the back end. Balances are yuan kept as doubles rounded to the cent at every
// change; prices have at most three decimals. Fees are worked out in whole units: amounts in
// thousandths of a yuan, rates in billionths, each fee rounded half up to the cent.
#pragma once

#include <cstdint>

#include "config.h"

namespace sim {

std::int64_t Cents(double yuan);  // rounded half away from zero
inline double Yuan(std::int64_t cents) { return static_cast<double>(cents) / 100.0; }
inline double Round2(double yuan) { return Yuan(Cents(yuan)); }
std::int64_t Milli(double price);  // in thousandths of a yuan, rounded
// Whether a price is a whole number of ticks (a price finer than 0.001 never is).
bool OnTick(double price, double tick);
// A price rounded half up to the tick.
double ToTick(double price, double tick);

struct FeeSchedule {
  FeeSchedule() = default;
  explicit FeeSchedule(const FeeCfg& cfg);
  std::int64_t commission_ppb = 0;  // rates in billionths
  std::int64_t commission_min_cents = 0;
  std::int64_t stamp_ppb = 0;
  std::int64_t transfer_ppb = 0;
};

struct MatchFees {
  std::int64_t commission = 0, stamp = 0, transfer = 0;  // cents
  std::int64_t Total() const { return commission + stamp + transfer; }
};

// A fee at a rate on an amount in thousandths of a yuan: cents, half up.
std::int64_t FeeCents(std::int64_t amount_milli, std::int64_t rate_ppb);
// An amount in thousandths of a yuan in cents, half up.
std::int64_t MilliToCents(std::int64_t amount_milli);
// The fees of one match of an order. The commission is owed on the order's matched amount so
// far, at least the minimum once per order: this match pays what that adds to what the
// order's earlier matches paid. Stamp duty (sells) and transfer fee are owed on the match.
MatchFees ChargeFees(const FeeSchedule& f, bool sell, std::int64_t amount_milli,
                     std::int64_t order_amount_before_milli, std::int64_t commission_paid);
// The most a whole order of this amount can pay in fees (a buy freezes it with the amount).
std::int64_t FeeCeiling(const FeeSchedule& f, bool sell, std::int64_t amount_milli);

}  // namespace sim
