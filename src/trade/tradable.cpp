// Tradable quantity of every business (synchronous only): how many units the customer can
// trade at a price for a security, category and order type.
#include "api/guard.h"
#include "api/last_error.h"
#include "comm/kel_api.h"
#include "secmolra.h"
#include "trade/order_args.h"
#include "trade/order_blocks.h"
#include "trade/order_ops.h"
#include "trade/order_request.h"
#include "util/field_ids.h"

namespace molra::trade {

namespace {

Target TargetOf(Fam fam) {
  switch (fam) {
    case Fam::kLOFTradableQty:
      return ByCategory(Biz::kLOFTradable);
    case Fam::kFJYTradableQty:
      return ByCategory(Biz::kFJYTradable);
    default:
      return Fixed(fam);
  }
}

// The fields after the common prefix differ by family.
void FillTail(OrderRequest& req, Fam fam, const TradableArgs& a) {
  switch (fam) {
    case Fam::kTradableQty: {
      TradableQtyReq& b = req.Block<TradableQtyReq>();
      b.ddlx = a.ddlx;
      b.wtjg = a.wtjg;
      break;
    }
    case Fam::kLOFTradableQty: {
      LOFTradableQtyReq& b = req.Block<LOFTradableQtyReq>();
      b.wtjg = a.wtjg;
      b.ddlx = static_cast<std::uint8_t>(a.ddlx);
      break;
    }
    case Fam::kPHDJTradableQty: {
      PHDJTradableQtyReq& b = req.Block<PHDJTradableQtyReq>();
      b.ddlx = a.ddlx;
      b.wtjg = a.wtjg;
      break;
    }
    default:  // ETF and repurchase carry neither price nor order type
      break;
  }
}

void FillBlock(OrderRequest& req, Fam fam, const CusLoginInfo& rec, const TradableArgs& a) {
  TradableQtyPrefix& p = req.Block<TradableQtyPrefix>();
  CopyField(p.jys, a.jys);
  CopyField(p.gdh, rec.GDH);
  CopyField(p.zqdm, a.zqdm);
  p.jylb = static_cast<std::uint8_t>(a.jylb);
  FillTail(req, fam, a);
}

void SetFields(kel::int64 h, const CusLoginInfo& rec, const TradableArgs& a) {
  SetSecurityFields(h, rec, a.jys, a.zqdm);
  kel::api.Kel_SetInt(h, fid::JYLB, a.jylb);
  kel::api.Kel_SetInt(h, fid::DDLX, a.ddlx);
  kel::api.Kel_SetDouble(h, fid::WTJG, a.wtjg, kPricePrecision);
}

}  // namespace

std::int64_t TradableImpl(Fam fam, CusLoginInfo* record, const TradableArgs& a) {
  const OrderFamily* f = Resolve(TargetOf(fam), a.jylb, record);
  if (f == nullptr) return -222;
  if (record == nullptr || a.jys == nullptr || a.zqdm == nullptr) {
    return Refuse(*f, record, -221, kIllegal);
  }
  OrderRequest req(*f, record);
  if (f->key_value) {
    req.Fields([&](kel::int64 h) { SetFields(h, *record, a); });
  } else {
    FillBlock(req, fam, *record, a);
  }
  req.Log("khh", FieldText(record->KHH)).Log("jys", a.jys).Log("zqdm", a.zqdm);
  req.Log("jylb", a.jylb).Log("wtjg", a.wtjg).Log("ddlx", a.ddlx).Log("gdh", FieldText(record->GDH));
  return req.Run();
}

namespace {

std::int64_t Plain(const char* func, Fam fam, const char* khh, const char* gdh,
                   const TradableArgs& a) {
  ArgCheck c = CheckOrderArgs(func, khh, a.jys, a.zqdm, gdh, false, 0);
  if (!c.ok()) return c.code();
  CusLoginInfo rec = MakeRecord(khh, gdh);
  return TradableImpl(fam, &rec, a);
}

std::int64_t WithRecord(const char* func, Fam fam, CusLoginInfo* rec, const TradableArgs& a) {
  ArgCheck c = CheckOrderArgsEx(func, rec, a.jys, a.zqdm, false, 0);
  if (!c.ok()) return c.code();
  return TradableImpl(fam, rec, a);
}

}  // namespace
}  // namespace molra::trade

using namespace molra::trade;
using molra::Guard;

// Families asked with a price and an order type.
#define MOLRA_TRADABLE_PRICED(Name, fam)                                                      \
  SECMOLRA_API int64_t SECMOLRA_##Name(const char* lpKhh, const char* lpJys,                 \
                                       const char* lpZqdm, int32_t nJylb, double lfWtjg,     \
                                       int32_t lDdlx, const char* lpGdh) {                   \
    return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&] {                                      \
      return Plain("SECMOLRA_" #Name, fam, lpKhh, lpGdh, {lpJys, lpZqdm, nJylb, lfWtjg, lDdlx}); \
    });                                                                                       \
  }                                                                                           \
  SECMOLRA_API int64_t SECMOLRA_##Name##Ex(CusLoginInfo* info, const char* lpJys,            \
                                           const char* lpZqdm, int32_t nJylb, double lfWtjg, \
                                           int32_t lDdlx) {                                  \
    return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&] {                                      \
      return WithRecord("SECMOLRA_" #Name "Ex", fam, info, {lpJys, lpZqdm, nJylb, lfWtjg, lDdlx}); \
    });                                                                                       \
  }

// Families asked without price and order type.
#define MOLRA_TRADABLE_PLAIN(Name, fam)                                                       \
  SECMOLRA_API int64_t SECMOLRA_##Name(const char* lpKhh, const char* lpJys,                 \
                                       const char* lpZqdm, int32_t nJylb, const char* lpGdh) { \
    return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&] {                                      \
      return Plain("SECMOLRA_" #Name, fam, lpKhh, lpGdh, {lpJys, lpZqdm, nJylb, 0, 0});       \
    });                                                                                       \
  }                                                                                           \
  SECMOLRA_API int64_t SECMOLRA_##Name##Ex(CusLoginInfo* info, const char* lpJys,            \
                                           const char* lpZqdm, int32_t nJylb) {              \
    return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&] {                                      \
      return WithRecord("SECMOLRA_" #Name "Ex", fam, info, {lpJys, lpZqdm, nJylb, 0, 0});     \
    });                                                                                       \
  }

extern "C" {

MOLRA_TRADABLE_PRICED(TradableQty, Fam::kTradableQty)
MOLRA_TRADABLE_PLAIN(ETFTradableQty, Fam::kETFTradableQty)
MOLRA_TRADABLE_PLAIN(ZQHGTradableQty, Fam::kZQHGTradableQty)
MOLRA_TRADABLE_PRICED(LOFTradableQty, Fam::kLOFTradableQty)
MOLRA_TRADABLE_PRICED(PHDJTradableQty, Fam::kPHDJTradableQty)
MOLRA_TRADABLE_PRICED(FXYWTradableQty, Fam::kFXYWTradableQty)
MOLRA_TRADABLE_PRICED(FJYTradableQty, Fam::kFJYTradableQty)

}  // extern "C"

#undef MOLRA_TRADABLE_PRICED
#undef MOLRA_TRADABLE_PLAIN
