// Exports of the single entrusts: the argument checks under the export's name, then the
// implementation with the customer as a record.
#include "api/guard.h"
#include "secmolra.h"
#include "trade/order_args.h"
#include "trade/order_ops.h"

namespace molra::trade {
namespace {

std::int64_t Plain(const char* func, Target t, const char* khh, const char* gdh,
                   const EntrustArgs& a, Mode m, const DzjyArgs* d = nullptr) {
  ArgCheck c = CheckOrderArgs(func, khh, a.jys, a.zqdm, gdh, m.async, m.number);
  if (d != nullptr) c.NotNull({d->dfxw, d->lxr, d->lxdh, d->hyh, d->dfgdh});
  if (!c.ok()) return c.code();
  CusLoginInfo rec = MakeRecord(khh, gdh);
  return EntrustImpl(t, &rec, a, m, d);
}

std::int64_t WithRecord(const char* func, Target t, CusLoginInfo* rec, const EntrustArgs& a,
                        Mode m, const DzjyArgs* d = nullptr) {
  ArgCheck c = CheckOrderArgsEx(func, rec, a.jys, a.zqdm, m.async, m.number);
  if (d != nullptr) c.NotNull({d->dfxw, d->lxr, d->lxdh, d->hyh, d->dfgdh});
  if (!c.ok()) return c.code();
  return EntrustImpl(t, rec, a, m, d);
}

std::int64_t PlainEtf(const char* func, const char* khh, const char* jys, const char* zqdm,
                      std::int32_t jylb, std::int32_t wtsl, const char* gdh, const char* step,
                      Mode m) {
  ArgCheck c = CheckOrderArgs(func, khh, jys, zqdm, gdh, m.async, m.number);
  if (!c.ok()) return c.code();
  CusLoginInfo rec = MakeRecord(khh, gdh);
  return ETFEntrustImpl(&rec, jys, zqdm, jylb, wtsl, step, m);
}

std::int64_t EtfWithRecord(const char* func, CusLoginInfo* rec, const char* jys,
                           const char* zqdm, std::int32_t jylb, std::int32_t wtsl,
                           const char* step, Mode m) {
  ArgCheck c = CheckOrderArgsEx(func, rec, jys, zqdm, m.async, m.number);
  if (!c.ok()) return c.code();
  return ETFEntrustImpl(rec, jys, zqdm, jylb, wtsl, step, m);
}

std::uint8_t Low8(std::int64_t v) { return static_cast<std::uint8_t>(v); }

// The family each export places its order in.
namespace target {
const Target kOrder = Fixed(Fam::kOrderEntrust);
const Target kPhdj = Fixed(Fam::kPHDJEntrust);
const Target kZqhg = ByCategory(Biz::kZQHG);
const Target kCrk = ByCategory(Biz::kZQHGCrk);
const Target kLof = ByCategory(Biz::kLof);
const Target kFxyw = ByCategory(Biz::kFXYW);
const Target kDzjy = ByCategory(Biz::kDZJY);
const Target kFjy = ByCategory(Biz::kFJY);
}  // namespace target

}  // namespace
}  // namespace molra::trade

using namespace molra::trade;
using molra::Guard;

extern "C" {

// ---- ordinary entrust ----

SECMOLRA_API int64_t SECMOLRA_OrderEntrust(const char* lpKhh, const char* lpJys,
                                           const char* lpZqdm, int32_t nJylb, int64_t lWtsl,
                                           double lfWtjg, int64_t lDdlx, const char* lpGdh) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return Plain("SECMOLRA_OrderEntrust", target::kOrder, lpKhh, lpGdh,
                 {lpJys, lpZqdm, nJylb, lWtsl, lfWtjg, lDdlx, Low8(lDdlx)}, kSync);
  });
}

SECMOLRA_API int64_t SECMOLRA_OrderEntrustEx(CusLoginInfo* info, const char* lpJys,
                                             const char* lpZqdm, int32_t nJylb, int64_t lWtsl,
                                             double lfWtjg, int64_t lDdlx) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return WithRecord("SECMOLRA_OrderEntrustEx", target::kOrder, info,
                      {lpJys, lpZqdm, nJylb, lWtsl, lfWtjg, lDdlx, Low8(lDdlx)}, kSync);
  });
}

SECMOLRA_API int64_t SECMOLRA_OrderEntrust_ASync(const char* lpKhh, const char* lpJys,
                                                 const char* lpZqdm, int32_t nJylb,
                                                 int64_t lWtsl, double lfWtjg, int64_t lDdlx,
                                                 const char* lpGdh, int64_t nKFSBDBH) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return Plain("SECMOLRA_OrderEntrust_ASync", target::kOrder, lpKhh, lpGdh,
                 {lpJys, lpZqdm, nJylb, lWtsl, lfWtjg, lDdlx, Low8(lDdlx)}, Async(nKFSBDBH));
  });
}

SECMOLRA_API int64_t SECMOLRA_OrderEntrustEx_ASync(CusLoginInfo* info, const char* lpJys,
                                                   const char* lpZqdm, int32_t nJylb,
                                                   int64_t lWtsl, double lfWtjg, int64_t lDdlx,
                                                   int64_t nKFSBDBH) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return WithRecord("SECMOLRA_OrderEntrustEx_ASync", target::kOrder, info,
                      {lpJys, lpZqdm, nJylb, lWtsl, lfWtjg, lDdlx, Low8(lDdlx)}, Async(nKFSBDBH));
  });
}

// ---- ETF subscription and redemption ----

SECMOLRA_API int64_t SECMOLRA_ETFEntrust(const char* lpKhh, const char* lpJys,
                                         const char* lpZqdm, int32_t nJylb, int32_t lWtsl,
                                         const char* lpGdh, const char* lpStep) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return PlainEtf("SECMOLRA_ETFEntrust", lpKhh, lpJys, lpZqdm, nJylb, lWtsl, lpGdh, lpStep,
                    kSync);
  });
}

SECMOLRA_API int64_t SECMOLRA_ETFEntrustEx(CusLoginInfo* info, const char* lpJys,
                                           const char* lpZqdm, int32_t nJylb, int32_t lWtsl,
                                           const char* lpStep) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return EtfWithRecord("SECMOLRA_ETFEntrustEx", info, lpJys, lpZqdm, nJylb, lWtsl, lpStep,
                         kSync);
  });
}

SECMOLRA_API int64_t SECMOLRA_ETFEntrust_ASync(const char* lpKhh, const char* lpJys,
                                               const char* lpZqdm, int32_t nJylb, int32_t lWtsl,
                                               const char* lpGdh, const char* lpStep,
                                               int64_t nKFSBDBH) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return PlainEtf("SECMOLRA_ETFEntrust_ASync", lpKhh, lpJys, lpZqdm, nJylb, lWtsl, lpGdh,
                    lpStep, Async(nKFSBDBH));
  });
}

SECMOLRA_API int64_t SECMOLRA_ETFEntrustEx_ASync(CusLoginInfo* info, const char* lpJys,
                                                 const char* lpZqdm, int32_t nJylb,
                                                 int32_t lWtsl, const char* lpStep,
                                                 int64_t nKFSBDBH) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return EtfWithRecord("SECMOLRA_ETFEntrustEx_ASync", info, lpJys, lpZqdm, nJylb, lWtsl, lpStep,
                         Async(nKFSBDBH));
  });
}

// ---- repurchase ----

SECMOLRA_API int64_t SECMOLRA_ZQHGEntrust(const char* lpKhh, const char* lpJys,
                                          const char* lpZqdm, int32_t nJylb, int32_t lWtsl,
                                          double lfWtjg, int64_t lDdlx, const char* lpGdh) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return Plain("SECMOLRA_ZQHGEntrust", target::kZqhg, lpKhh, lpGdh,
                 {lpJys, lpZqdm, nJylb, lWtsl, lfWtjg, lDdlx, Low8(lDdlx)}, kSync);
  });
}

SECMOLRA_API int64_t SECMOLRA_ZQHGEntrustEx(CusLoginInfo* info, const char* lpJys,
                                            const char* lpZqdm, int32_t nJylb, int32_t lWtsl,
                                            double lfWtjg, int64_t lDdlx) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return WithRecord("SECMOLRA_ZQHGEntrustEx", target::kZqhg, info,
                      {lpJys, lpZqdm, nJylb, lWtsl, lfWtjg, lDdlx, Low8(lDdlx)}, kSync);
  });
}

SECMOLRA_API int64_t SECMOLRA_ZQHGEntrust_ASync(const char* lpKhh, const char* lpJys,
                                                const char* lpZqdm, int32_t nJylb, int32_t lWtsl,
                                                double lfWtjg, int64_t lDdlx, const char* lpGdh,
                                                int64_t nKFSBDBH) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return Plain("SECMOLRA_ZQHGEntrust_ASync", target::kZqhg, lpKhh, lpGdh,
                 {lpJys, lpZqdm, nJylb, lWtsl, lfWtjg, lDdlx, Low8(lDdlx)}, Async(nKFSBDBH));
  });
}

SECMOLRA_API int64_t SECMOLRA_ZQHGEntrustEx_ASync(CusLoginInfo* info, const char* lpJys,
                                                  const char* lpZqdm, int32_t nJylb,
                                                  int32_t lWtsl, double lfWtjg, int64_t lDdlx,
                                                  int64_t nKFSBDBH) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return WithRecord("SECMOLRA_ZQHGEntrustEx_ASync", target::kZqhg, info,
                      {lpJys, lpZqdm, nJylb, lWtsl, lfWtjg, lDdlx, Low8(lDdlx)}, Async(nKFSBDBH));
  });
}

// ---- pledge in and out (the byte at 91 is 0) ----

SECMOLRA_API int64_t SECMOLRA_ZQHGCrk(const char* lpKhh, const char* lpJys, const char* lpZqdm,
                                      int32_t nJylb, int32_t lWtsl, const char* lpGdh) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return Plain("SECMOLRA_ZQHGCrk", target::kCrk, lpKhh, lpGdh, {lpJys, lpZqdm, nJylb, lWtsl, 0, 0, 0},
                 kSync);
  });
}

SECMOLRA_API int64_t SECMOLRA_ZQHGCrkEx(CusLoginInfo* info, const char* lpJys,
                                        const char* lpZqdm, int32_t nJylb, int32_t lWtsl) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return WithRecord("SECMOLRA_ZQHGCrkEx", target::kCrk, info, {lpJys, lpZqdm, nJylb, lWtsl, 0, 0, 0},
                      kSync);
  });
}

SECMOLRA_API int64_t SECMOLRA_ZQHGCrk_ASync(const char* lpKhh, const char* lpJys,
                                            const char* lpZqdm, int32_t nJylb, int32_t lWtsl,
                                            const char* lpGdh, int64_t nKFSBDBH) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return Plain("SECMOLRA_ZQHGCrk_ASync", target::kCrk, lpKhh, lpGdh,
                 {lpJys, lpZqdm, nJylb, lWtsl, 0, 0, 0}, Async(nKFSBDBH));
  });
}

SECMOLRA_API int64_t SECMOLRA_ZQHGCrkEx_ASync(CusLoginInfo* info, const char* lpJys,
                                              const char* lpZqdm, int32_t nJylb, int32_t lWtsl,
                                              int64_t nKFSBDBH) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return WithRecord("SECMOLRA_ZQHGCrkEx_ASync", target::kCrk, info,
                      {lpJys, lpZqdm, nJylb, lWtsl, 0, 0, 0}, Async(nKFSBDBH));
  });
}

// ---- listed fund (the one-byte flag goes to byte 91) ----

SECMOLRA_API int64_t SECMOLRA_Lof(const char* lpKhh, const char* lpJys, const char* lpZqdm,
                                  int32_t nJylb, int32_t lWtsl, double lwtjg, char flag,
                                  const char* lpGdh) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return Plain("SECMOLRA_Lof", target::kLof, lpKhh, lpGdh,
                 {lpJys, lpZqdm, nJylb, lWtsl, lwtjg, 0, static_cast<std::uint8_t>(flag)}, kSync);
  });
}

SECMOLRA_API int64_t SECMOLRA_LofEx(CusLoginInfo* info, const char* lpJys, const char* lpZqdm,
                                    int32_t nJylb, int32_t lWtsl, double lwtjg, char flag) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return WithRecord("SECMOLRA_LofEx", target::kLof, info,
                      {lpJys, lpZqdm, nJylb, lWtsl, lwtjg, 0, static_cast<std::uint8_t>(flag)},
                      kSync);
  });
}

SECMOLRA_API int64_t SECMOLRA_Lof_ASync(const char* lpKhh, const char* lpJys,
                                        const char* lpZqdm, int32_t nJylb, int32_t lWtsl,
                                        double lwtjg, char flag, const char* lpGdh,
                                        int64_t nKFSBDBH) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return Plain("SECMOLRA_Lof_ASync", target::kLof, lpKhh, lpGdh,
                 {lpJys, lpZqdm, nJylb, lWtsl, lwtjg, 0, static_cast<std::uint8_t>(flag)},
                 Async(nKFSBDBH));
  });
}

SECMOLRA_API int64_t SECMOLRA_LofEx_ASync(CusLoginInfo* info, const char* lpJys,
                                          const char* lpZqdm, int32_t nJylb, int32_t lWtsl,
                                          double lwtjg, char flag, int64_t nKFSBDBH) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return WithRecord("SECMOLRA_LofEx_ASync", target::kLof, info,
                      {lpJys, lpZqdm, nJylb, lWtsl, lwtjg, 0, static_cast<std::uint8_t>(flag)},
                      Async(nKFSBDBH));
  });
}

// ---- after-hours priced (categories not checked) ----

SECMOLRA_API int64_t SECMOLRA_PHDJEntrust(const char* lpKhh, const char* lpJys,
                                          const char* lpZqdm, int32_t nJylb, int64_t lWtsl,
                                          double lfWtjg, int64_t lDdlx, const char* lpGdh) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return Plain("SECMOLRA_PHDJEntrust", target::kPhdj, lpKhh, lpGdh,
                 {lpJys, lpZqdm, nJylb, lWtsl, lfWtjg, lDdlx, Low8(lDdlx)}, kSync);
  });
}

SECMOLRA_API int64_t SECMOLRA_PHDJEntrustEx(CusLoginInfo* info, const char* lpJys,
                                            const char* lpZqdm, int32_t nJylb, int64_t lWtsl,
                                            double lfWtjg, int64_t lDdlx) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return WithRecord("SECMOLRA_PHDJEntrustEx", target::kPhdj, info,
                      {lpJys, lpZqdm, nJylb, lWtsl, lfWtjg, lDdlx, Low8(lDdlx)}, kSync);
  });
}

SECMOLRA_API int64_t SECMOLRA_PHDJEntrust_ASync(const char* lpKhh, const char* lpJys,
                                                const char* lpZqdm, int32_t nJylb, int64_t lWtsl,
                                                double lfWtjg, int64_t lDdlx, const char* lpGdh,
                                                int64_t nKFSBDBH) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return Plain("SECMOLRA_PHDJEntrust_ASync", target::kPhdj, lpKhh, lpGdh,
                 {lpJys, lpZqdm, nJylb, lWtsl, lfWtjg, lDdlx, Low8(lDdlx)}, Async(nKFSBDBH));
  });
}

SECMOLRA_API int64_t SECMOLRA_PHDJEntrustEx_ASync(CusLoginInfo* info, const char* lpJys,
                                                  const char* lpZqdm, int32_t nJylb,
                                                  int64_t lWtsl, double lfWtjg, int64_t lDdlx,
                                                  int64_t nKFSBDBH) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return WithRecord("SECMOLRA_PHDJEntrustEx_ASync", target::kPhdj, info,
                      {lpJys, lpZqdm, nJylb, lWtsl, lfWtjg, lDdlx, Low8(lDdlx)}, Async(nKFSBDBH));
  });
}

// ---- issuance (key/value, code by category) ----

SECMOLRA_API int64_t SECMOLRA_FXYW(const char* lpKhh, const char* lpJys, const char* lpZqdm,
                                   int32_t nJylb, int64_t lWtsl, double lwtjg, int64_t lDdlx,
                                   const char* lpGdh) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return Plain("SECMOLRA_FXYW", target::kFxyw, lpKhh, lpGdh,
                 {lpJys, lpZqdm, nJylb, lWtsl, lwtjg, lDdlx, 0}, kSync);
  });
}

SECMOLRA_API int64_t SECMOLRA_FXYWEx(CusLoginInfo* info, const char* lpJys, const char* lpZqdm,
                                     int32_t nJylb, int64_t lWtsl, double lwtjg,
                                     int64_t lDdlx) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return WithRecord("SECMOLRA_FXYWEx", target::kFxyw, info,
                      {lpJys, lpZqdm, nJylb, lWtsl, lwtjg, lDdlx, 0}, kSync);
  });
}

SECMOLRA_API int64_t SECMOLRA_FXYW_ASync(const char* lpKhh, const char* lpJys,
                                         const char* lpZqdm, int32_t nJylb, int64_t lWtsl,
                                         double lwtjg, int64_t lDdlx, const char* lpGdh,
                                         int64_t nKFSBDBH) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return Plain("SECMOLRA_FXYW_ASync", target::kFxyw, lpKhh, lpGdh,
                 {lpJys, lpZqdm, nJylb, lWtsl, lwtjg, lDdlx, 0}, Async(nKFSBDBH));
  });
}

SECMOLRA_API int64_t SECMOLRA_FXYWEx_ASync(CusLoginInfo* info, const char* lpJys,
                                           const char* lpZqdm, int32_t nJylb, int64_t lWtsl,
                                           double lwtjg, int64_t lDdlx, int64_t nKFSBDBH) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return WithRecord("SECMOLRA_FXYWEx_ASync", target::kFxyw, info,
                      {lpJys, lpZqdm, nJylb, lWtsl, lwtjg, lDdlx, 0}, Async(nKFSBDBH));
  });
}

// ---- block trading (key/value, synchronous only) ----

SECMOLRA_API int64_t SECMOLRA_DZJY(const char* lpKhh, const char* lpJys, const char* lpZqdm,
                                   int32_t nJylb, int64_t lWtsl, double lwtjg, int64_t lDdlx,
                                   const char* lpGdh, const char* lpDfxw, const char* lpLxr,
                                   const char* lpLxdh, const char* lpHyh, const char* lpDfgdh,
                                   int32_t nPddm, int32_t nTdbz) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    const DzjyArgs d{lpDfxw, lpLxr, lpLxdh, lpHyh, lpDfgdh, nPddm, nTdbz};
    return Plain("SECMOLRA_DZJY", target::kDzjy, lpKhh, lpGdh,
                 {lpJys, lpZqdm, nJylb, lWtsl, lwtjg, lDdlx, 0}, kSync, &d);
  });
}

SECMOLRA_API int64_t SECMOLRA_DZJYEx(CusLoginInfo* info, const char* lpJys, const char* lpZqdm,
                                     int32_t nJylb, int64_t lWtsl, double lwtjg, int64_t lDdlx,
                                     const char* lpDfxw, const char* lpLxr, const char* lpLxdh,
                                     const char* lpHyh, const char* lpDfgdh, int32_t nPddm,
                                     int32_t nTdbz) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    const DzjyArgs d{lpDfxw, lpLxr, lpLxdh, lpHyh, lpDfgdh, nPddm, nTdbz};
    return WithRecord("SECMOLRA_DZJYEx", target::kDzjy, info,
                      {lpJys, lpZqdm, nJylb, lWtsl, lwtjg, lDdlx, 0}, kSync, &d);
  });
}

// ---- non-trading business (key/value, code by category) ----

SECMOLRA_API int64_t SECMOLRA_FJY(const char* lpKhh, const char* lpJys, const char* lpZqdm,
                                  int32_t nJylb, int64_t lWtsl, double lwtjg, int64_t lDdlx,
                                  const char* lpGdh) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return Plain("SECMOLRA_FJY", target::kFjy, lpKhh, lpGdh,
                 {lpJys, lpZqdm, nJylb, lWtsl, lwtjg, lDdlx, 0}, kSync);
  });
}

SECMOLRA_API int64_t SECMOLRA_FJYEx(CusLoginInfo* info, const char* lpJys, const char* lpZqdm,
                                    int32_t nJylb, int64_t lWtsl, double lwtjg, int64_t lDdlx) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return WithRecord("SECMOLRA_FJYEx", target::kFjy, info, {lpJys, lpZqdm, nJylb, lWtsl, lwtjg, lDdlx, 0},
                      kSync);
  });
}

SECMOLRA_API int64_t SECMOLRA_FJY_ASync(const char* lpKhh, const char* lpJys,
                                        const char* lpZqdm, int32_t nJylb, int64_t lWtsl,
                                        double lwtjg, int64_t lDdlx, const char* lpGdh,
                                        int64_t nKFSBDBH) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return Plain("SECMOLRA_FJY_ASync", target::kFjy, lpKhh, lpGdh,
                 {lpJys, lpZqdm, nJylb, lWtsl, lwtjg, lDdlx, 0}, Async(nKFSBDBH));
  });
}

SECMOLRA_API int64_t SECMOLRA_FJYEx_ASync(CusLoginInfo* info, const char* lpJys,
                                          const char* lpZqdm, int32_t nJylb, int64_t lWtsl,
                                          double lwtjg, int64_t lDdlx, int64_t nKFSBDBH) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return WithRecord("SECMOLRA_FJYEx_ASync", target::kFjy, info,
                      {lpJys, lpZqdm, nJylb, lWtsl, lwtjg, lDdlx, 0}, Async(nKFSBDBH));
  });
}

}  // extern "C"
