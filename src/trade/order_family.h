// The order layer's families as data: one row per request kind (function code, block
// length, where the asynchronous request number goes, answer length, reply handler,
// short-answer message, log line, admitted trade categories and their refusal). Every
// entrust, withdrawal and tradable-quantity call runs the one request frame with its row.
#pragma once

#include <cstdint>

#include "comm/kel_abi.h"

namespace molra::trade {

enum class Fam : std::uint8_t {
  kOrderEntrust,
  kBatchEntrust,
  kETFSubscribe,
  kETFRedeem,
  kZQHGEntrust,
  kZQHGCrk,
  kLof,
  kPHDJEntrust,
  kFXYWPeiGu,
  kFXYWPeiShou,
  kFXYWCode14,
  kFXYWCode24,
  kDZJY,
  kFJYCode212,
  kFJYConvertible,
  kFJYTender,
  kOrderWithdraw,
  kETFWithdraw,
  kZQHGWithdraw,
  kLOFWithdraw,
  kPHDJWithdraw,
  kFXYWWithdraw,
  kFJYWithdraw,
  kBatchWithdraw,
  kTradableQty,
  kETFTradableQty,
  kZQHGTradableQty,
  kLOFTradableQty,
  kPHDJTradableQty,
  kFXYWTradableQty,
  kFJYTradableQty,
  kCount
};

// Businesses whose rows are chosen by trade category. Rows of one business share it.
enum class Biz : std::uint8_t {
  kNone,  // a single row, found by its Fam
  kETF,
  kZQHG,
  kZQHGCrk,
  kLof,
  kFXYW,
  kDZJY,
  kFJY,
  kLOFTradable,
  kFJYTradable,
};

enum class ResultKind : std::uint8_t {
  kOrderNumber,  // int64 at 443, or key/value field 681
  kQuantity,     // double at 430 truncated toward zero, or key/value field 684
  kQuantity32,   // int32 at 430 (the ETF answer is 434 bytes long)
  kReturnCode,   // the answer's positive return code
  kCustom,       // the family's own reader (batch rows)
};

// Where an asynchronous request carries its own number.
constexpr std::int32_t kNumberIsTag = -1;    // not written: the caller's tag is session data only
constexpr std::int32_t kNumberInField = -2;  // key/value field 9157

struct Categories {
  std::int16_t values[8];
  std::uint8_t count;  // 0: every category is admitted
  bool Admits(std::int32_t jylb) const;
};

struct OrderFamily {
  Fam id;
  Biz biz;
  const char* name;  // log and last-error function name
  const char* code;  // function code as text; numeric in the block head
  bool key_value;    // built with Kel_CreateHead and field ids instead of a block
  std::int32_t block_len;
  std::int32_t number_at;   // offset of the request number in the block, or kNumberIs*
  std::int32_t answer_len;  // full answer length; the answer must reach it
  std::int16_t min_ok;      // return codes below it are failures
  const char* short_answer;
  ResultKind result;
  kel::ReplyFn reply;      // null: synchronous only
  const char* log_format;  // named fields, see OrderRequest::Log; null: no frame log line
  Categories admitted;
  const char* refusal;  // -222 message when the category is not admitted
};

const OrderFamily& Family(Fam id);
// The row of `biz` that admits `jylb`, or null.
const OrderFamily* Route(Biz biz, std::int32_t jylb);
// The first row of a business: its name and its -222 message.
const OrderFamily& FirstOf(Biz biz);

}  // namespace molra::trade
