// One row per order-layer family: the family and a synchronous and an asynchronous export
// call that reaches it for customer 1001 on SH with arguments the kit accepts. Shared by
// the fault tests and the fuzz targets, which vary what the transport does, not the call.
#pragma once

#include <cstdint>
#include <vector>

#include "secmolra.h"
#include "trade/order_family.h"

namespace molra::test {

struct OrderCall {
  trade::Fam fam;
  const char* name;  // the export called
  std::int64_t (*sync)();
  std::int64_t (*async)();  // null: the family has no asynchronous form
};

inline BatchOrderRow OneBatchRow() {
  BatchOrderRow r{};
  r.Jys[0] = 'S';
  r.Jys[1] = 'H';
  for (int i = 0; i < 6; ++i) r.Zqdm[i] = "600000"[i];
  r.Jylb = 1;
  r.Wtjg = 10.0;
  r.Wtsl = 100;
  return r;
}

#define MOLRA_GDH "A000001001"
// A family with both forms: the asynchronous one takes the same arguments and a request
// number (0: generated), except the batch exports, whose serial number is already there.
#define MOLRA_BOTH(fam, fn, ...)                              \
  {                                                           \
    Fam::fam, #fn, [] { return SECMOLRA_##fn(__VA_ARGS__); }, \
        [] { return SECMOLRA_##fn##_ASync(__VA_ARGS__, 0); }  \
  }
#define MOLRA_SYNC(fam, fn, ...)                                      \
  {                                                                   \
    Fam::fam, #fn, [] { return SECMOLRA_##fn(__VA_ARGS__); }, nullptr \
  }
inline const std::vector<OrderCall>& OrderCalls() {
  using trade::Fam;
  static const std::vector<OrderCall> calls = {
      MOLRA_BOTH(kOrderEntrust, OrderEntrust, "1001", "SH", "600000", 1, 100, 10.0, 0, MOLRA_GDH),
      {Fam::kBatchEntrust, "BatchOrderEntrust",
       [] {
         std::vector<BatchOrderRow> rows{OneBatchRow()};
         return SECMOLRA_BatchOrderEntrust("1001", rows, 7);
       },
       [] {
         std::vector<BatchOrderRow> rows{OneBatchRow()};
         return SECMOLRA_BatchOrderEntrust_ASync("1001", rows, 7);
       }},
      MOLRA_BOTH(kETFSubscribe, ETFEntrust, "1001", "SH", "510050", 29, 10000, MOLRA_GDH, nullptr),
      MOLRA_BOTH(kETFRedeem, ETFEntrust, "1001", "SH", "510050", 30, 10000, MOLRA_GDH, nullptr),
      MOLRA_BOTH(kZQHGEntrust, ZQHGEntrust, "1001", "SH", "204001", 4, 10, 2.0, 0, MOLRA_GDH),
      MOLRA_BOTH(kZQHGCrk, ZQHGCrk, "1001", "SH", "600000", 37, 10, MOLRA_GDH),
      MOLRA_BOTH(kLof, Lof, "1001", "SH", "501000", 41, 100, 1.0, '0', MOLRA_GDH),
      MOLRA_BOTH(kPHDJEntrust, PHDJEntrust, "1001", "SH", "600000", 1, 100, 10.0, 0, MOLRA_GDH),
      MOLRA_BOTH(kFXYWPeiGu, FXYW, "1001", "SH", "600000", 1, 100, 10.0, 0, MOLRA_GDH),
      MOLRA_SYNC(kDZJY, DZJY, "1001", "SH", "600000", 55, 100, 10.0, 0, MOLRA_GDH, "", "", "", "",
                 "", 0, 0),
      MOLRA_BOTH(kFJYConvertible, FJY, "1001", "SH", "600000", 11, 100, 10.0, 0, MOLRA_GDH),
      MOLRA_BOTH(kOrderWithdraw, OrderWithdraw, "1001", "SH", 1),
      MOLRA_BOTH(kETFWithdraw, ETFWithdraw, "1001", "SH", 1),
      MOLRA_BOTH(kZQHGWithdraw, ZQHGWithdraw, "1001", "SH", 1),
      MOLRA_BOTH(kLOFWithdraw, LOFWithdraw, "1001", "SH", 1),
      MOLRA_BOTH(kPHDJWithdraw, PHDJWithdraw, "1001", "SH", 1),
      MOLRA_BOTH(kFXYWWithdraw, FXYWWithdraw, "1001", "SH", 1),
      MOLRA_BOTH(kFJYWithdraw, FJYWithdraw, "1001", "SH", 1),
      {Fam::kBatchWithdraw, "BatchOrderWithdraw",
       [] { return SECMOLRA_BatchOrderWithdraw("1001", 7); },
       [] { return SECMOLRA_BatchOrderWithdraw_ASync("1001", 7); }},
      MOLRA_SYNC(kTradableQty, TradableQty, "1001", "SH", "600000", 1, 10.0, 0, MOLRA_GDH),
      MOLRA_SYNC(kETFTradableQty, ETFTradableQty, "1001", "SH", "510050", 29, MOLRA_GDH),
      MOLRA_SYNC(kZQHGTradableQty, ZQHGTradableQty, "1001", "SH", "204001", 4, MOLRA_GDH),
      MOLRA_SYNC(kLOFTradableQty, LOFTradableQty, "1001", "SH", "501000", 41, 1.0, 0, MOLRA_GDH),
      MOLRA_SYNC(kPHDJTradableQty, PHDJTradableQty, "1001", "SH", "600000", 1, 10.0, 0, MOLRA_GDH),
      MOLRA_SYNC(kFXYWTradableQty, FXYWTradableQty, "1001", "SH", "600000", 1, 10.0, 0, MOLRA_GDH),
      MOLRA_SYNC(kFJYTradableQty, FJYTradableQty, "1001", "SH", "600000", 11, 10.0, 0, MOLRA_GDH),
  };
  return calls;
}
#undef MOLRA_SYNC
#undef MOLRA_BOTH
#undef MOLRA_GDH

}  // namespace molra::test
