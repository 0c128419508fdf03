// Withdrawals of every business, by order number or by the order's request number, and of
// a whole batch.
#include <cstdio>

#include "api/guard.h"
#include "api/last_error.h"
#include "comm/kel_api.h"
#include "log/log.h"
#include "secmolra.h"
#include "trade/order_args.h"
#include "trade/order_blocks.h"
#include "trade/order_ops.h"
#include "trade/order_request.h"
#include "util/field_ids.h"

namespace molra::trade {

std::int64_t WithdrawImpl(Fam fam, CusLoginInfo* record, const WithdrawArgs& a, Mode mode) {
  const OrderFamily& f = Family(fam);
  if (record == nullptr || a.jys == nullptr) return Refuse(f, record, -221, kIllegal);
  if (a.cxwth < 1 && a.cxkfsbdbh < 1) return Refuse(f, record, -221, kIllegal);

  OrderRequest req(f, record);
  const std::string khh = FieldText(record->KHH);
  if (f.key_value) {
    req.Fields([&](kel::int64 h) {
      kel::api.Kel_SetItem(h, fid::KHH, khh.c_str());
      kel::api.Kel_SetItem(h, fid::JYS, a.jys);
      kel::api.Kel_SetLong(h, fid::WTH, a.cxwth);
    });
  } else {
    OrderWithdrawReq& b = req.Block<OrderWithdrawReq>();
    CopyField(b.jys, a.jys);
    b.cxwth = a.cxwth;
    if (a.cxkfsbdbh > 0) {
      char text[32];
      std::snprintf(text, sizeof text, "%lld", static_cast<long long>(a.cxkfsbdbh));
      CopyField(b.cxkfsbdbh, text);
    }
  }
  req.Log("khh", khh).Log("jys", a.jys).Log("wth", a.cxwth).Log("cxkfsbdbh", a.cxkfsbdbh);
  return mode.async ? req.Send(mode.number) : req.Run();
}

std::int64_t BatchWithdrawImpl(CusLoginInfo* record, std::int64_t lsh, bool async) {
  OrderRequest req(Family(Fam::kBatchWithdraw), record);
  req.Block<BatchWithdrawReq>().lsh = lsh;
  return async ? req.Send(lsh) : req.Run();
}

namespace {

constexpr const char* kEmptyWithdrawArgs = "客户号、交易所不能为空";
constexpr const char* kEmptyBatchWithdrawArgs = "客户号为空、流水号不能为负";

enum class By { kWth, kKfsbdbh };

// How the asynchronous withdrawals by request number check the withdrawn order's number;
// the families differ on purpose.
enum class CxRule {
  kRange,              // range message with the label; 0 passes to the implementation
  kPositiveThenRange,  // below 1 is illegal, then the range message with the label
  kPositiveOnly,       // below 1 is illegal; no range check on either number
};
struct WithdrawRule {
  Fam fam;
  CxRule rule;
  const char* label;
};
constexpr WithdrawRule kRules[] = {
    {Fam::kOrderWithdraw, CxRule::kRange, "nCXKFSBDBH"},
    {Fam::kETFWithdraw, CxRule::kRange, "nCXKFSBDBH"},
    {Fam::kZQHGWithdraw, CxRule::kPositiveThenRange, "nCxkfsbdh"},
    {Fam::kLOFWithdraw, CxRule::kPositiveOnly, nullptr},
};

const WithdrawRule& RuleOf(Fam fam) {
  for (const WithdrawRule& r : kRules) {
    if (r.fam == fam) return r;
  }
  return kRules[0];
}

void CheckAsyncByNumber(ArgCheck& c, const WithdrawRule& r, std::int64_t cx, Mode m) {
  switch (r.rule) {
    case CxRule::kRange:
      c.InRange(m.number, "KFSBDBH").InRange(cx, r.label);
      break;
    case CxRule::kPositiveThenRange:
      c.InRange(m.number, "KFSBDBH").Require(cx >= 1).InRange(cx, r.label);
      break;
    case CxRule::kPositiveOnly:
      c.Require(cx >= 1);
      break;
  }
}

// `khh` is the plain form's argument or the record's field (a null record is left to the
// frame, so an Ex form passes `ex` and its khh is not checked for null).
ArgCheck CheckWithdraw(const char* func, Fam fam, By by, const char* khh, bool ex,
                       const char* jys, std::int64_t number, Mode m) {
  ArgCheck c(func);
  const bool async_by_number = m.async && by == By::kKfsbdbh;
  if (!ex) c.NotNull({khh});
  c.NotNull({jys});
  if (!async_by_number) c.Require(number >= 1);
  c.NotEmpty({khh, jys}, kEmptyWithdrawArgs);
  if (async_by_number) {
    CheckAsyncByNumber(c, RuleOf(fam), number, m);
  } else if (m.async) {
    c.InRange(m.number, "KFSBDBH");
  }
  return c;
}

WithdrawArgs ArgsOf(By by, const char* jys, std::int64_t number) {
  return by == By::kWth ? WithdrawArgs{jys, number, 0} : WithdrawArgs{jys, 0, number};
}

void LogPlain(const char* func, By by, const char* khh, const char* jys, std::int64_t number,
              Mode m) {
  const char* label = by == By::kWth ? "nCxwth" : "nCXKFSBDBH";
  if (m.async) {
    MOLRA_LOG_INFO("{} lpKhh:{} lpJys:{} {}:{} nKFSBDBH:{}", func, khh, jys, label, number,
                   m.number);
  } else {
    MOLRA_LOG_INFO("{} lpKhh:{} lpJys:{} {}:{}", func, khh, jys, label, number);
  }
}

std::int64_t PlainWithdraw(const char* func, Fam fam, By by, const char* khh, const char* jys,
                           std::int64_t number, Mode m) {
  ArgCheck c = CheckWithdraw(func, fam, by, khh, false, jys, number, m);
  if (!c.ok()) return c.code();
  LogPlain(func, by, khh, jys, number, m);
  CusLoginInfo rec = MakeRecord(khh, "");
  return WithdrawImpl(fam, &rec, ArgsOf(by, jys, number), m);
}

std::int64_t ExWithdraw(const char* func, Fam fam, By by, CusLoginInfo* rec, const char* jys,
                        std::int64_t number, Mode m) {
  ArgCheck c = CheckWithdraw(func, fam, by, rec ? rec->KHH : nullptr, true, jys, number, m);
  if (!c.ok()) return c.code();
  return WithdrawImpl(fam, rec, ArgsOf(by, jys, number), m);
}

std::int64_t PlainBatchWithdraw(const char* func, const char* khh, std::int64_t lsh,
                                bool async) {
  ArgCheck c(func);
  c.NotNull({khh}).NotEmpty({khh}, kEmptyBatchWithdrawArgs).Require(lsh >= 0, kEmptyBatchWithdrawArgs);
  if (!c.ok()) return c.code();
  MOLRA_LOG_INFO("{} lpKhh:{} nLSH:{}", func, khh, lsh);
  CusLoginInfo rec = MakeRecord(khh, "");
  return BatchWithdrawImpl(&rec, lsh, async);
}

std::int64_t ExBatchWithdraw(const char* func, CusLoginInfo* rec, std::int64_t lsh, bool async) {
  ArgCheck c(func);
  c.NotEmpty({rec ? rec->KHH : nullptr}, kEmptyBatchWithdrawArgs)
      .Require(lsh >= 0, kEmptyBatchWithdrawArgs);
  if (!c.ok()) return c.code();
  return BatchWithdrawImpl(rec, lsh, async);
}

}  // namespace
}  // namespace molra::trade

using namespace molra::trade;
using molra::Guard;

// The four forms of one withdrawal export: plain, Ex, _ASync and Ex_ASync.
#define MOLRA_WITHDRAW_EXPORTS(Name, fam, by, Arg)                                            \
  SECMOLRA_API int64_t SECMOLRA_##Name(const char* lpKhh, const char* lpJys, int64_t Arg) {   \
    return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&] {                                      \
      return PlainWithdraw("SECMOLRA_" #Name, fam, by, lpKhh, lpJys, Arg, kSync);             \
    });                                                                                       \
  }                                                                                           \
  SECMOLRA_API int64_t SECMOLRA_##Name##Ex(CusLoginInfo* info, const char* lpJys,             \
                                           int64_t Arg) {                                     \
    return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&] {                                      \
      return ExWithdraw("SECMOLRA_" #Name "Ex", fam, by, info, lpJys, Arg, kSync);            \
    });                                                                                       \
  }                                                                                           \
  SECMOLRA_API int64_t SECMOLRA_##Name##_ASync(const char* lpKhh, const char* lpJys,          \
                                               int64_t Arg, int64_t nKFSBDBH) {               \
    return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&] {                                      \
      return PlainWithdraw("SECMOLRA_" #Name "_ASync", fam, by, lpKhh, lpJys, Arg,            \
                           Async(nKFSBDBH));                                                  \
    });                                                                                       \
  }                                                                                           \
  SECMOLRA_API int64_t SECMOLRA_##Name##Ex_ASync(CusLoginInfo* info, const char* lpJys,       \
                                                 int64_t Arg, int64_t nKFSBDBH) {             \
    return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&] {                                      \
      return ExWithdraw("SECMOLRA_" #Name "Ex_ASync", fam, by, info, lpJys, Arg,              \
                        Async(nKFSBDBH));                                                     \
    });                                                                                       \
  }

extern "C" {

MOLRA_WITHDRAW_EXPORTS(OrderWithdraw, Fam::kOrderWithdraw, By::kWth, nCxwth)
MOLRA_WITHDRAW_EXPORTS(OrderWithdrawByKFSBDBH, Fam::kOrderWithdraw, By::kKfsbdbh, nCXKFSBDBH)
MOLRA_WITHDRAW_EXPORTS(ETFWithdraw, Fam::kETFWithdraw, By::kWth, nCxwth)
MOLRA_WITHDRAW_EXPORTS(ETFWithdrawByKFSBDBH, Fam::kETFWithdraw, By::kKfsbdbh, nCXKFSBDBH)
MOLRA_WITHDRAW_EXPORTS(ZQHGWithdraw, Fam::kZQHGWithdraw, By::kWth, nCxwth)
MOLRA_WITHDRAW_EXPORTS(ZQHGWithdrawByKFSBDBH, Fam::kZQHGWithdraw, By::kKfsbdbh, nCXKFSBDBH)
MOLRA_WITHDRAW_EXPORTS(LOFWithdraw, Fam::kLOFWithdraw, By::kWth, nCxwth)
MOLRA_WITHDRAW_EXPORTS(LOFWithdrawByKFSBDBH, Fam::kLOFWithdraw, By::kKfsbdbh, nCXKFSBDBH)
MOLRA_WITHDRAW_EXPORTS(PHDJWithdraw, Fam::kPHDJWithdraw, By::kWth, nCxwth)
MOLRA_WITHDRAW_EXPORTS(FXYWWithdraw, Fam::kFXYWWithdraw, By::kWth, nCxwth)
MOLRA_WITHDRAW_EXPORTS(FJYWithdraw, Fam::kFJYWithdraw, By::kWth, nCxwth)

SECMOLRA_API int64_t SECMOLRA_BatchOrderWithdraw(const char* lpKhh, int64_t nLSH) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return PlainBatchWithdraw("SECMOLRA_BatchOrderWithdraw", lpKhh, nLSH, false);
  });
}

SECMOLRA_API int64_t SECMOLRA_BatchOrderWithdrawEx(CusLoginInfo* info, int64_t nLSH) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return ExBatchWithdraw("SECMOLRA_BatchOrderWithdrawEx", info, nLSH, false);
  });
}

SECMOLRA_API int64_t SECMOLRA_BatchOrderWithdraw_ASync(const char* lpKhh, int64_t nLSH) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return PlainBatchWithdraw("SECMOLRA_BatchOrderWithdraw_ASync", lpKhh, nLSH, true);
  });
}

SECMOLRA_API int64_t SECMOLRA_BatchOrderWithdrawEx_ASync(CusLoginInfo* info, int64_t nLSH) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return ExBatchWithdraw("SECMOLRA_BatchOrderWithdrawEx_ASync", info, nLSH, true);
  });
}

}  // extern "C"

#undef MOLRA_WITHDRAW_EXPORTS
