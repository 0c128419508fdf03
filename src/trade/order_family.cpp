#include "trade/order_family.h"

#include <cstddef>

#include "core/messages.h"
#include "trade/order_blocks.h"
#include "trade/replies.h"

namespace molra::trade {

bool Categories::Admits(std::int32_t jylb) const {
  if (count == 0) return true;
  for (std::uint8_t i = 0; i < count; ++i) {
    if (values[i] == jylb) return true;
  }
  return false;
}

namespace {

constexpr Categories kAny{{}, 0};
constexpr Categories kLofCategories{{41, 42, 43, 47, 48}, 5};

// Log lines: {fn} is the family name, {lsh} the request number (0 when synchronous),
// {cost} the milliseconds spent in the call so far; the rest are the call's arguments.
constexpr const char* kLogEntrustCost =
    "{fn} lpKhh:{khh} lpJys:{jys} lpZqdm:{zqdm} nJylb:{jylb} lWtsl:{wtsl} lfWtjg:{wtjg} "
    "lDdlx:{ddlx} lpGdh:{gdh} lsh:{lsh} cost:{cost}";
constexpr const char* kLogZqhg =
    "{fn} lpKhh:{khh} lpJys:{jys} lpZqdm:{zqdm} nJylb:{jylb} lWtsl:{wtsl} lfWtjg:{wtjg} "
    "lDdlx:{ddlx} lpGdh:{gdh} lsh:{lsh}";
constexpr const char* kLogCrk =
    "{fn} lpKhh:{khh} lpJys:{jys} lpZqdm:{zqdm} nJylb:{jylb} lWtsl:{wtsl} lpGdh:{gdh} lsh:{lsh}";
constexpr const char* kLogPriced =
    "{fn} lpKhh:{khh} lpJys:{jys} lpZqdm:{zqdm} nJylb:{jylb} lWtsl:{wtsl} lwtjg:{wtjg} "
    "lpGdh:{gdh} lsh:{lsh}";
constexpr const char* kLogEtf =
    "{fn} lpKhh:{khh} lpJys:{jys} lpZqdm:{zqdm} nJylb:{jylb} lWtsl:{wtsl} lpGdh:{gdh} "
    "lpStep:{step} lsh:{lsh}";
constexpr const char* kLogDzjy =
    "{fn} lpKhh:{khh} lpJys:{jys} lpZqdm:{zqdm} nJylb:{jylb} lWtsl:{wtsl} lwtjg:{wtjg} "
    "lpGdh:{gdh} lpDfxw:{dfxw} lpLxr:{lxr} lpLxdh:{lxdh} lpHyh:{hyh} lpDfgdh:{dfgdh} "
    "nPddm:{pddm} nTdbz:{tdbz} lsh:{lsh}";
constexpr const char* kLogWithdraw = "{fn} lpKhh:{khh} lpJys:{jys} lWth:{wth} lsh:{lsh}";
constexpr const char* kLogWithdrawByNumber =
    "{fn} lpKhh:{khh} lpJys:{jys} nCxwth:{wth} nCXKFSBDBH:{cxkfsbdbh} KFSBDBH:{lsh}";
constexpr const char* kLogTradable =
    "{fn} lpKhh:{khh} lpJys:{jys} lpZqdm:{zqdm} nJylb:{jylb} lfWtjg:{wtjg} lDdlx:{ddlx} "
    "lpGdh:{gdh} cost:{cost}";
constexpr const char* kLogTradableShort =
    "{fn} lpKhh:{khh} lpJys:{jys} lpZqdm:{zqdm} nJylb:{jylb} lpGdh:{gdh} cost:{cost}";

constexpr std::int32_t kEntrustAns = sizeof(OrderEntrustAns);
constexpr std::int32_t kTradableAns = sizeof(TradableQtyAns);
constexpr std::int32_t kWithdrawReq = sizeof(OrderWithdrawReq);
constexpr std::int32_t kWithdrawNumberAt = offsetof(OrderWithdrawReq, kfsbdbh);
constexpr std::int32_t kWithdrawAns = sizeof(OrderWithdrawAns);

#define BLOCK(T) sizeof(T), static_cast<std::int32_t>(offsetof(T, kfsbdbh))

using RK = ResultKind;

// clang-format off
constexpr OrderFamily kFamilies[] = {
  // id                   biz           name                 code     kv     block length, number at             answer        ok short    result           reply handler                            log               admitted                             refusal
  {Fam::kOrderEntrust,    Biz::kNone,   "OrderEntrust",      "19001", false, BLOCK(OrderEntrustReq),             kEntrustAns,  1, msg::kAnswerShort2, RK::kOrderNumber, Sc_Order_AsyncFuncProcess,               kLogEntrustCost,  kAny,                                nullptr},
  {Fam::kBatchEntrust,    Biz::kNone,   "BatchOrderEntrust", "19012", false, sizeof(BatchOrderReq), kNumberIsTag, sizeof(BatchOrderAns), 0, msg::kAnswerShort2, RK::kCustom, Sc_BatchOrder_AsyncFuncProcess,   nullptr,          kAny,                                nullptr},
  {Fam::kETFSubscribe,    Biz::kETF,    "ETFEntrust",        "19013", false, BLOCK(ETFEntrustReq),               kEntrustAns,  1, msg::kAnswerShort,  RK::kOrderNumber, Sc_ETFSG_AsyncFuncProcess,               kLogEtf,          {{29}, 1},                           msg::kOnlyEtf},
  {Fam::kETFRedeem,       Biz::kETF,    "ETFEntrust",        "19014", false, BLOCK(ETFEntrustReq),               kEntrustAns,  1, msg::kAnswerShort,  RK::kOrderNumber, Sc_ETFSH_AsyncFuncProcess,               kLogEtf,          {{30}, 1},                           msg::kOnlyEtf},
  {Fam::kZQHGEntrust,     Biz::kZQHG,   "ZQHGEntrust",       "19042", false, BLOCK(ZQHGEntrustReq),              kEntrustAns,  1, msg::kAnswerShort2, RK::kOrderNumber, Sc_ZQHG_AsyncFuncProcess,                kLogZqhg,         {{4, 5}, 2},                         msg::kOnlyZqhg},
  {Fam::kZQHGCrk,         Biz::kZQHGCrk,"ZQHGCrk",           "19043", false, BLOCK(ZQHGCrkReq),                  kEntrustAns,  1, msg::kAnswerShort2, RK::kOrderNumber, Sc_ZQCRK_AsyncFuncProcess,               kLogCrk,          {{37, 38}, 2},                       msg::kOnlyCrk},
  {Fam::kLof,             Biz::kLof,    "Lof",               "19025", false, BLOCK(LofEntrustReq),               kEntrustAns,  1, msg::kAnswerShort2, RK::kOrderNumber, Sc_LOF_AsyncFuncProcess,                 kLogPriced,       kLofCategories,                      msg::kOnlyLof},
  {Fam::kPHDJEntrust,     Biz::kNone,   "PHDJEntrust",       "19131", false, BLOCK(OrderEntrustReq),             kEntrustAns,  1, msg::kAnswerShort2, RK::kOrderNumber, Sc_PHDJ_AsyncFuncProcess,                kLogEntrustCost,  kAny,                                nullptr},
  {Fam::kFXYWPeiGu,       Biz::kFXYW,   "FXYW",              "19059", true,  0, kNumberInField,                  0,            0, nullptr, RK::kOrderNumber, Sc_FXYW_AsyncFuncProcess,                kLogPriced,       {{1}, 1},                            msg::kOnlyFxyw},
  {Fam::kFXYWPeiShou,     Biz::kFXYW,   "FXYW",              "19049", true,  0, kNumberInField,                  0,            0, nullptr, RK::kOrderNumber, Sc_FXYW_AsyncFuncProcess,                kLogPriced,       {{3}, 1},                            msg::kOnlyFxyw},
  {Fam::kFXYWCode14,      Biz::kFXYW,   "FXYW",              "19050", true,  0, kNumberInField,                  0,            0, nullptr, RK::kOrderNumber, Sc_FXYW_AsyncFuncProcess,                kLogPriced,       {{14}, 1},                           msg::kOnlyFxyw},
  {Fam::kFXYWCode24,      Biz::kFXYW,   "FXYW",              "19051", true,  0, kNumberInField,                  0,            0, nullptr, RK::kOrderNumber, Sc_FXYW_AsyncFuncProcess,                kLogPriced,       {{24}, 1},                           msg::kOnlyFxyw},
  {Fam::kDZJY,            Biz::kDZJY,   "DZJY",              "19081", true,  0, kNumberInField,                  0,            0, nullptr, RK::kOrderNumber, nullptr,                                 kLogDzjy,         {{55, 56, 57, 58, 59, 60, 78, 79}, 8}, msg::kOnlyDzjy},
  {Fam::kFJYCode212,      Biz::kFJY,    "FJY",               "19090", true,  0, kNumberInField,                  0,            0, nullptr, RK::kOrderNumber, Sc_FJY_AsyncFuncProcess,                 kLogPriced,       {{212}, 1},                          msg::kOnlyFjy},
  {Fam::kFJYConvertible,  Biz::kFJY,    "FJY",               "19091", true,  0, kNumberInField,                  0,            0, nullptr, RK::kOrderNumber, Sc_FJY_AsyncFuncProcess,                 kLogPriced,       {{11, 12}, 2},                       msg::kOnlyFjy},
  {Fam::kFJYTender,       Biz::kFJY,    "FJY",               "19092", true,  0, kNumberInField,                  0,            0, nullptr, RK::kOrderNumber, Sc_FJY_AsyncFuncProcess,                 kLogPriced,       {{76, 77}, 2},                       msg::kOnlyFjy},
  {Fam::kOrderWithdraw,   Biz::kNone,   "OrderWithdraw",     "19002", false, kWithdrawReq, kWithdrawNumberAt,    kWithdrawAns,          1, msg::kAnswerShort,  RK::kOrderNumber, Sc_OrderWithDraw_AsyncFuncProcess,       kLogWithdraw,     kAny,                                nullptr},
  {Fam::kETFWithdraw,     Biz::kNone,   "ETFWithdraw",       "19020", false, kWithdrawReq, kWithdrawNumberAt,    sizeof(ETFWithdrawAns),          1, msg::kAnswerShort,  RK::kOrderNumber, Sc_ETFWithDraw_AsyncFuncProcess,         kLogWithdrawByNumber, kAny,                            nullptr},
  {Fam::kZQHGWithdraw,    Biz::kNone,   "ZQHGWithdraw",      "19044", false, kWithdrawReq, kWithdrawNumberAt,    sizeof(ZQHGWithdrawAns),          1, msg::kAnswerShort,  RK::kOrderNumber, Sc_ZQHGWithDraw_AsyncFuncProcess,        kLogWithdrawByNumber, kAny,                            nullptr},
  {Fam::kLOFWithdraw,     Biz::kNone,   "LOFWithdraw",       "19026", false, kWithdrawReq, kWithdrawNumberAt,    kWithdrawAns,          1, msg::kAnswerShort,  RK::kOrderNumber, Sc_LOFWithDraw_AsyncFuncProcess,         kLogWithdrawByNumber, kAny,                            nullptr},
  // The after-hours withdrawal shares 19002 and writes its own number where the others
  // carry the withdrawn order's.
  {Fam::kPHDJWithdraw,    Biz::kNone,   "PHDJWithdraw",      "19002", false, kWithdrawReq, offsetof(OrderWithdrawReq, cxkfsbdbh), kWithdrawAns, 1, msg::kAnswerShort, RK::kOrderNumber, Sc_PHDJWithDraw_AsyncFuncProcess, kLogWithdraw,   kAny,                                nullptr},
  {Fam::kFXYWWithdraw,    Biz::kNone,   "FXYWWithdraw",      "19052", true,  0, kNumberInField,                  0,            0, nullptr, RK::kOrderNumber, Sc_FXYWWithDraw_AsyncFuncProcess,        kLogWithdraw,     kAny,                                nullptr},
  {Fam::kFJYWithdraw,     Biz::kNone,   "FJYWithdraw",       "19096", true,  0, kNumberInField,                  0,            0, nullptr, RK::kOrderNumber, Sc_FXYWWithDraw_AsyncFuncProcess,        kLogWithdraw,     kAny,                                nullptr},
  {Fam::kBatchWithdraw,   Biz::kNone,   "BatchOrderWithdraw","19063", false, sizeof(BatchWithdrawReq), kNumberIsTag, sizeof(BatchWithdrawAns),       1, msg::kAnswerShort,  RK::kReturnCode,  Sc_BatchOrderWithDraw_AsyncFuncProcess,  nullptr,          kAny,                                nullptr},
  {Fam::kTradableQty,     Biz::kNone,   "TradableQty",       "19011", false, sizeof(TradableQtyReq), kNumberIsTag, kTradableAns, 1, msg::kAnswerShort, RK::kQuantity,    nullptr,                                 kLogTradable,     kAny,                                nullptr},
  {Fam::kETFTradableQty,  Biz::kNone,   "ETFTradableQty",    "19024", false, sizeof(ETFTradableQtyReq), kNumberIsTag, sizeof(ETFTradableQtyAns), 1, msg::kAnswerShort,  RK::kQuantity32,  nullptr,                                 kLogTradableShort, kAny,                               nullptr},
  {Fam::kZQHGTradableQty, Biz::kNone,   "ZQHGTradableQty",   "19045", false, sizeof(ZQHGTradableQtyReq), kNumberIsTag, kTradableAns, 1, msg::kAnswerShort, RK::kQuantity, nullptr,                                 kLogTradableShort, kAny,                               nullptr},
  {Fam::kLOFTradableQty,  Biz::kLOFTradable, "LOFTradableQty", "19028", false, sizeof(LOFTradableQtyReq), kNumberIsTag, kTradableAns, 1, msg::kAnswerShort, RK::kQuantity, nullptr,                               kLogTradable,     kLofCategories,                      msg::kOnlyLof},
  {Fam::kPHDJTradableQty, Biz::kNone,   "PHDJTradableQty",   "19133", false, sizeof(PHDJTradableQtyReq), kNumberIsTag, kTradableAns, 1, msg::kAnswerShort, RK::kQuantity, nullptr,                                 kLogTradable,     kAny,                                nullptr},
  {Fam::kFXYWTradableQty, Biz::kNone,   "FXYWTradableQty",   "19058", true,  0, kNumberIsTag,                    0,            0, nullptr, RK::kQuantity,    nullptr,                                 kLogTradable,     kAny,                                nullptr},
  {Fam::kFJYTradableQty,  Biz::kFJYTradable, "FJYTradableQty", "19105", true, 0, kNumberIsTag,                   0,            0, nullptr, RK::kQuantity,    nullptr,                                 kLogTradable,     {{11, 12, 76}, 3},                   msg::kOnlyFjyTradable},
};
// clang-format on

#undef BLOCK

static_assert(sizeof(kFamilies) / sizeof(kFamilies[0]) == static_cast<std::size_t>(Fam::kCount),
              "one row per family");

constexpr bool RowsInOrder() {
  for (std::size_t i = 0; i < static_cast<std::size_t>(Fam::kCount); ++i) {
    if (static_cast<std::size_t>(kFamilies[i].id) != i) return false;
  }
  return true;
}

}  // namespace

const OrderFamily& Family(Fam id) {
  static_assert(RowsInOrder(), "rows are indexed by Fam");
  return kFamilies[static_cast<std::size_t>(id)];
}

const OrderFamily* Route(Biz biz, std::int32_t jylb) {
  for (const OrderFamily& f : kFamilies) {
    if (f.biz == biz && f.admitted.Admits(jylb)) return &f;
  }
  return nullptr;
}

const OrderFamily& FirstOf(Biz biz) {
  for (const OrderFamily& f : kFamilies) {
    if (f.biz == biz) return f;
  }
  return kFamilies[0];
}

}  // namespace molra::trade
