// Withdrawals of every business, by order number or by the order's request number, and of
// a whole batch.
#include <string>

#include "comm/kel_api.h"
#include "core/guard.h"
#include "core/log.h"
#include "core/messages.h"
#include "secmolra.h"
#include "trade/order_args.h"
#include "trade/order_blocks.h"
#include "trade/order_ops.h"
#include "trade/order_request.h"
#include "util/field_ids.h"

namespace molra::trade {

Result<std::int64_t> WithdrawImpl(WithdrawTarget target, CusLoginInfo* record, const OrderArgs& a,
                                  Mode mode) {
  const OrderFamily& f = Family(target.fam);
  const std::int64_t cxwth = target.by == By::kWth ? a.number : 0;
  const std::int64_t cxkfsbdbh = target.by == By::kKfsbdbh ? a.number : 0;
  if (record == nullptr || a.jys == nullptr || (cxwth < 1 && cxkfsbdbh < 1)) {
    return Refuse(f, record, SECMOLRA_ERR_ARGUMENT, msg::kIllegalArgument);
  }
  OrderRequest req(f, record);
  const std::string khh = FieldText(record->KHH);
  if (f.key_value) {
    req.Fields({ReqField::Text(fid::KHH, khh), ReqField::Text(fid::JYS, a.jys),
                ReqField::Long(fid::WTH, cxwth)});
  } else {
    OrderWithdrawReq& b = req.Block<OrderWithdrawReq>();
    CopyField(b.jys, a.jys);
    b.cxwth = cxwth;
    if (cxkfsbdbh > 0) CopyField(b.cxkfsbdbh, std::to_string(cxkfsbdbh).c_str());
  }
  req.Log("khh", khh).Log("jys", a.jys).Log("wth", cxwth).Log("cxkfsbdbh", cxkfsbdbh);
  return mode.async ? req.Send(mode.number) : req.Run();
}

Result<std::int64_t> BatchWithdrawImpl(CusLoginInfo* record, std::int64_t lsh, bool async) {
  OrderRequest req(Family(Fam::kBatchWithdraw), record);
  req.Block<BatchWithdrawReq>().lsh = lsh;
  return async ? req.Send(lsh) : req.Run();
}

namespace {

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
ArgCheck CheckWithdraw(Fam fam, By by, const char* khh, bool ex, const char* jys,
                       std::int64_t number, Mode m) {
  ArgCheck c;
  const bool async_by_number = m.async && by == By::kKfsbdbh;
  if (!ex) c.NotNull({khh});
  c.NotNull({jys});
  if (!async_by_number) c.Require(number >= 1);
  c.NotEmpty({khh, jys}, msg::kEmptyWithdrawArgs);
  if (async_by_number) {
    CheckAsyncByNumber(c, RuleOf(fam), number, m);
  } else if (m.async) {
    c.InRange(m.number, "KFSBDBH");
  }
  return c;
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

}  // namespace

Result<std::int64_t> RunWithdraw(const char* name, WithdrawTarget target, const Caller& c,
                                 const OrderArgs& a, Mode mode) {
  ArgCheck check = CheckWithdraw(target.fam, target.by, c.Khh(), c.ex, a.jys, a.number, mode);
  if (!check.ok()) return check.status().TakeFailure();
  if (!c.ex) LogPlain(name, target.by, c.khh, a.jys, a.number, mode);
  CusLoginInfo own;
  return DropAccount(WithdrawImpl(target, c.Record(own), a, mode), &own);
}

Result<std::int64_t> RunBatchWithdraw(const char* name, Fam, const Caller& c, const OrderArgs& a,
                                      Mode mode) {
  ArgCheck check;
  if (!c.ex) check.NotNull({c.khh});
  check.NotEmpty({c.Khh()}, msg::kEmptyBatchWithdrawArgs)
      .Require(a.number >= 0, msg::kEmptyBatchWithdrawArgs);
  if (!check.ok()) return check.status().TakeFailure();
  if (!c.ex) MOLRA_LOG_INFO("{} lpKhh:{} nLSH:{}", name, c.khh, a.number);
  CusLoginInfo own;
  return DropAccount(BatchWithdrawImpl(c.Record(own), a.number, mode.async), &own);
}

}  // namespace molra::trade
