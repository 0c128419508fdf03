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
  const char* name;           // the export called
  std::int64_t (*sync)();
  std::int64_t (*async)();    // null: the family has no asynchronous form
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
inline const std::vector<OrderCall>& OrderCalls() {
  using trade::Fam;
  static const std::vector<OrderCall> calls = {
      {Fam::kOrderEntrust, "OrderEntrust",
       [] { return SECMOLRA_OrderEntrust("1001", "SH", "600000", 1, 100, 10.0, 0, MOLRA_GDH); },
       [] { return SECMOLRA_OrderEntrust_ASync("1001", "SH", "600000", 1, 100, 10.0, 0, MOLRA_GDH, 0); }},
      {Fam::kBatchEntrust, "BatchOrderEntrust",
       [] { std::vector<BatchOrderRow> rows{OneBatchRow()}; return SECMOLRA_BatchOrderEntrust("1001", rows, 7); },
       [] { std::vector<BatchOrderRow> rows{OneBatchRow()}; return SECMOLRA_BatchOrderEntrust_ASync("1001", rows, 7); }},
      {Fam::kETFSubscribe, "ETFEntrust",
       [] { return SECMOLRA_ETFEntrust("1001", "SH", "510050", 29, 10000, MOLRA_GDH, nullptr); },
       [] { return SECMOLRA_ETFEntrust_ASync("1001", "SH", "510050", 29, 10000, MOLRA_GDH, nullptr, 0); }},
      {Fam::kETFRedeem, "ETFEntrust",
       [] { return SECMOLRA_ETFEntrust("1001", "SH", "510050", 30, 10000, MOLRA_GDH, nullptr); },
       [] { return SECMOLRA_ETFEntrust_ASync("1001", "SH", "510050", 30, 10000, MOLRA_GDH, nullptr, 0); }},
      {Fam::kZQHGEntrust, "ZQHGEntrust",
       [] { return SECMOLRA_ZQHGEntrust("1001", "SH", "204001", 4, 10, 2.0, 0, MOLRA_GDH); },
       [] { return SECMOLRA_ZQHGEntrust_ASync("1001", "SH", "204001", 4, 10, 2.0, 0, MOLRA_GDH, 0); }},
      {Fam::kZQHGCrk, "ZQHGCrk",
       [] { return SECMOLRA_ZQHGCrk("1001", "SH", "600000", 37, 10, MOLRA_GDH); },
       [] { return SECMOLRA_ZQHGCrk_ASync("1001", "SH", "600000", 37, 10, MOLRA_GDH, 0); }},
      {Fam::kLof, "Lof",
       [] { return SECMOLRA_Lof("1001", "SH", "501000", 41, 100, 1.0, '0', MOLRA_GDH); },
       [] { return SECMOLRA_Lof_ASync("1001", "SH", "501000", 41, 100, 1.0, '0', MOLRA_GDH, 0); }},
      {Fam::kPHDJEntrust, "PHDJEntrust",
       [] { return SECMOLRA_PHDJEntrust("1001", "SH", "600000", 1, 100, 10.0, 0, MOLRA_GDH); },
       [] { return SECMOLRA_PHDJEntrust_ASync("1001", "SH", "600000", 1, 100, 10.0, 0, MOLRA_GDH, 0); }},
      {Fam::kFXYWPeiGu, "FXYW",
       [] { return SECMOLRA_FXYW("1001", "SH", "600000", 1, 100, 10.0, 0, MOLRA_GDH); },
       [] { return SECMOLRA_FXYW_ASync("1001", "SH", "600000", 1, 100, 10.0, 0, MOLRA_GDH, 0); }},
      {Fam::kDZJY, "DZJY",
       [] { return SECMOLRA_DZJY("1001", "SH", "600000", 55, 100, 10.0, 0, MOLRA_GDH, "", "", "", "", "", 0, 0); },
       nullptr},
      {Fam::kFJYConvertible, "FJY",
       [] { return SECMOLRA_FJY("1001", "SH", "600000", 11, 100, 10.0, 0, MOLRA_GDH); },
       [] { return SECMOLRA_FJY_ASync("1001", "SH", "600000", 11, 100, 10.0, 0, MOLRA_GDH, 0); }},
      {Fam::kOrderWithdraw, "OrderWithdraw",
       [] { return SECMOLRA_OrderWithdraw("1001", "SH", 1); },
       [] { return SECMOLRA_OrderWithdraw_ASync("1001", "SH", 1, 0); }},
      {Fam::kETFWithdraw, "ETFWithdraw",
       [] { return SECMOLRA_ETFWithdraw("1001", "SH", 1); },
       [] { return SECMOLRA_ETFWithdraw_ASync("1001", "SH", 1, 0); }},
      {Fam::kZQHGWithdraw, "ZQHGWithdraw",
       [] { return SECMOLRA_ZQHGWithdraw("1001", "SH", 1); },
       [] { return SECMOLRA_ZQHGWithdraw_ASync("1001", "SH", 1, 0); }},
      {Fam::kLOFWithdraw, "LOFWithdraw",
       [] { return SECMOLRA_LOFWithdraw("1001", "SH", 1); },
       [] { return SECMOLRA_LOFWithdraw_ASync("1001", "SH", 1, 0); }},
      {Fam::kPHDJWithdraw, "PHDJWithdraw",
       [] { return SECMOLRA_PHDJWithdraw("1001", "SH", 1); },
       [] { return SECMOLRA_PHDJWithdraw_ASync("1001", "SH", 1, 0); }},
      {Fam::kFXYWWithdraw, "FXYWWithdraw",
       [] { return SECMOLRA_FXYWWithdraw("1001", "SH", 1); },
       [] { return SECMOLRA_FXYWWithdraw_ASync("1001", "SH", 1, 0); }},
      {Fam::kFJYWithdraw, "FJYWithdraw",
       [] { return SECMOLRA_FJYWithdraw("1001", "SH", 1); },
       [] { return SECMOLRA_FJYWithdraw_ASync("1001", "SH", 1, 0); }},
      {Fam::kBatchWithdraw, "BatchOrderWithdraw",
       [] { return SECMOLRA_BatchOrderWithdraw("1001", 7); },
       [] { return SECMOLRA_BatchOrderWithdraw_ASync("1001", 7); }},
      {Fam::kTradableQty, "TradableQty",
       [] { return SECMOLRA_TradableQty("1001", "SH", "600000", 1, 10.0, 0, MOLRA_GDH); }, nullptr},
      {Fam::kETFTradableQty, "ETFTradableQty",
       [] { return SECMOLRA_ETFTradableQty("1001", "SH", "510050", 29, MOLRA_GDH); }, nullptr},
      {Fam::kZQHGTradableQty, "ZQHGTradableQty",
       [] { return SECMOLRA_ZQHGTradableQty("1001", "SH", "204001", 4, MOLRA_GDH); }, nullptr},
      {Fam::kLOFTradableQty, "LOFTradableQty",
       [] { return SECMOLRA_LOFTradableQty("1001", "SH", "501000", 41, 1.0, 0, MOLRA_GDH); }, nullptr},
      {Fam::kPHDJTradableQty, "PHDJTradableQty",
       [] { return SECMOLRA_PHDJTradableQty("1001", "SH", "600000", 1, 10.0, 0, MOLRA_GDH); }, nullptr},
      {Fam::kFXYWTradableQty, "FXYWTradableQty",
       [] { return SECMOLRA_FXYWTradableQty("1001", "SH", "600000", 1, 10.0, 0, MOLRA_GDH); }, nullptr},
      {Fam::kFJYTradableQty, "FJYTradableQty",
       [] { return SECMOLRA_FJYTradableQty("1001", "SH", "600000", 11, 10.0, 0, MOLRA_GDH); }, nullptr},
  };
  return calls;
}
#undef MOLRA_GDH

}  // namespace molra::test
