// Orders against the market. Each security has a book of five levels a side (from quotes, or
// one level at the price set by KelSim_SetPrice) and the exchange's own resting orders.
//
// A marketable limit order takes the opposite side level by level up to its price, within
// each level's volume and the security's liquidity (-1 unlimited), one match report per
// level (split into reports of the match volume when one is set); the rest rests. A market
// order (order type not 0) takes whatever the book holds and the rest is withdrawn. A resting
// order matches at its own price when the book later reaches it, as far as the volume there
// allows; resting orders are served by price, then time. The exchange's orders never match
// each other, and their matches take volume from the book's levels but leave the last price,
// volume and turnover to the market.
//
// Refusals by the back end (negative code, no order, no push): unknown security, bad
// quantity or price, a price off the tick, a buy that is not a whole number of lots, a sell
// whose odd lot is not the whole odd lot of the sellable quantity, an account that is not the
// customer's, a lack of funds or shares. A limit price beyond the day's limits (from the
// previous close) is accepted and refused by the exchange: a confirmation with SBJG 3.
//
// Funds of a buy are frozen at its price (the upper limit for a market buy) with the most its
// fees can come to, and released as it matches or is withdrawn; sells take from the sellable
// quantity at once. Bought shares become sellable on the next trading day. Every accepted
// order produces a confirmation push, every match a match push carrying its settlement
// amount (QSZJ: the change of funds, fees included), a withdrawal a withdrawal confirmation.
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

// What a quote sets. turnover below 0: the volume added since the last quote at the last
// price; prev_close 0 or less: unchanged.
struct QuoteUpdate {
  double last = 0;
  std::int64_t volume = 0;
  double turnover = -1;
  double prev_close = 0;
  Levels bids{}, asks{};
};

// Orders of other businesses (Side::None) are booked and confirmed but never matched by the
// market; they rest until withdrawn, and their security need not be known.
// Buy (1) and sell (2) of ordinary trading.
Side OrdinarySide(std::int32_t jylb);
PlaceResult PlaceOrder(Backend& be, Customer& cu, const OrderIn& in);
// By order number when cxwth > 0, else by the order's request number.
WithdrawResult WithdrawOrder(Backend& be, Customer& cu, std::int64_t cxwth,
                             const std::string& cxkfsbdbh, const std::string& own_kfsbdbh,
                             std::int32_t func);
// The security's market changed: its resting orders that the book now reaches match.
void CrossResting(Backend& be, Security& s);
void ApplyQuote(Backend& be, Security& s, const QuoteUpdate& q);
// Records a match of an order (match record and push) without touching funds or positions.
void RecordMatch(Backend& be, Customer& cu, const Order& o, std::int64_t q, double p, double fees,
                 double qszj);
void PushConfirmation(Backend& be, const Customer& cu, const Order& o);
// The trading day ends: every open order expires (a withdrawal is pushed for each), bought
// shares become sellable, frozen funds are released, each previous close becomes the last
// price, the day's volume and turnover and its order and match lists are cleared (the order
// numbers continue).
void EndOfDay(Backend& be);

}  // namespace sim
