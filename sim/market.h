// The market and the order book of the simulated back end. Each security has a reference
// price: a buy at or above it (a sell at or below it), or any market order (order type not
// 0), matches at the reference price, in reports of the match volume each (0: one report for
// everything), as far as the security's liquidity allows (-1: unlimited). What does not match
// rests until it is withdrawn, or until a change of price or liquidity lets it match.
// Funds of buys are frozen at the order price and released as they match or are withdrawn;
// sells take from the sellable quantity at once. Bought shares are not sellable the same day.
// Every accepted order produces a confirmation push, every match a match push, a withdrawal a
// withdrawal confirmation ("W"). The back end refuses (negative code, no order, no push) an
// unknown security, a bad quantity or price, an account that is not the customer's, and a
// lack of funds or shares; a limit price more than 10% away from the reference price is
// accepted and then refused by the exchange (confirmation with SBJG 3). All calls run with
// the back end's lock.
#pragma once

#include <cstdint>
#include <string>

#include "backend.h"

namespace sim {

struct OrderIn {
  std::int32_t func = 19001;
  std::string jys, gdh, zqdm, kfsbdbh;
  std::int32_t jylb = 0;
  std::int64_t wtsl = 0;
  double wtjg = 0;
  std::int32_t ddlx = 0;
  std::int64_t wtpch = 0;
  Side side = Side::None;
  bool matchable = true;
};

struct PlaceResult {
  int code = 0;
  std::string msg;
  std::int64_t wth = 0;
  double djzj = 0;
  std::string wtsj;
};

struct WithdrawResult {
  int code = 0;
  std::string msg;
  std::int64_t wth = 0;  // the withdrawal's own number
  std::int32_t sbjg = 0;
  std::int64_t cdsl = 0;
  std::string wtsj;
};

// Orders of other businesses (Side::None) are booked and confirmed but never matched by the
// market; they rest until withdrawn, and their security need not be known.
// Buy (1) and sell (2) of ordinary trading.
Side OrdinarySide(std::int32_t jylb);
PlaceResult PlaceOrder(Backend& be, Customer& cu, const OrderIn& in);
// By order number when cxwth > 0, else by the order's request number.
WithdrawResult WithdrawOrder(Backend& be, Customer& cu, std::int64_t cxwth, const std::string& cxkfsbdbh,
                             const std::string& own_kfsbdbh, std::int32_t func);
// Matches the resting orders of a security (after its price or liquidity changed).
void MatchResting(Backend& be, const std::string& jys, const std::string& zqdm);
// Books a match of q at price p for an order (funds, position, match record, push).
void Fill(Backend& be, Customer& cu, Order& o, std::int64_t q, double p);
// Records a match of an order (match record and push) without touching funds or positions.
void RecordMatch(Backend& be, Customer& cu, const Order& o, std::int64_t q, double p);
// The base of a push about an order.
PushValues OrderPush(const Customer& cu, const Order& o);
void PushConfirmation(Backend& be, const Customer& cu, const Order& o);

}  // namespace sim
