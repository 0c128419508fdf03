// The order layer's operations behind the exports (trade/order_exports.h). Each takes the
// customer as a record (the plain exports build one with MakeRecord), checks what the frame
// needs, fills its family's block or fields and runs the request frame. Failures carry the
// family's name and the record as account.
#pragma once

#include <cstdint>
#include <vector>

#include "comm/kv_request.h"
#include "core/status.h"
#include "secmolra.h"
#include "trade/order_family.h"

namespace molra::trade {

// How a call is sent: synchronously, or asynchronously with the caller's request number
// (0 generates one).
struct Mode {
  bool async = false;
  std::int64_t number = 0;
};
constexpr Mode kSync{};
inline Mode Async(std::int64_t number) { return Mode{true, number}; }

// Which row serves a call: a fixed family, or the row of a business chosen by category.
struct Target {
  Biz biz;
  Fam fam;
};
inline Target Fixed(Fam fam) { return Target{Biz::kNone, fam}; }
inline Target ByCategory(Biz biz) { return Target{biz, Fam::kCount}; }

// A withdrawal names the withdrawn order by its order number or by its request number.
enum class By { kWth, kKfsbdbh };
struct WithdrawTarget {
  Fam fam;
  By by;
};

// The row for `jylb`, or -222 with the business's message under its first row's name.
Result<const OrderFamily*> Resolve(Target target, std::int32_t jylb, CusLoginInfo* record);
// A failure under the family's name, with the record as account.
Failure Refuse(const OrderFamily& family, CusLoginInfo* record, std::int64_t code, const char* msg);

// The arguments of every order export; each export sets those it takes.
struct OrderArgs {
  const char* jys = nullptr;
  const char* zqdm = nullptr;  // also the ETF of a basket
  std::int32_t jylb = 0;
  std::int64_t wtsl = 0;  // travels as 32 bits in blocks
  double wtjg = 0;        // also a basket's price
  std::int64_t ddlx = 0;
  std::uint8_t byte91 = 0;  // the entrust block's byte at 91: order type, 0 or the listed-fund flag
  const char* step = nullptr;  // ETF entrust
  // Block trading.
  const char* dfxw = nullptr;
  const char* lxr = nullptr;
  const char* lxdh = nullptr;
  const char* hyh = nullptr;
  const char* dfgdh = nullptr;
  std::int32_t pddm = 0;
  std::int32_t tdbz = 0;
  // The withdrawn order's number, a batch number or a batch's serial number.
  std::int64_t number = 0;
  std::vector<BatchOrderRow>* rows = nullptr;
  std::int32_t units = 0;  // basket
};

// The first four fields of the key/value entrusts and tradable quantities: 719 security
// code, 571 shareholder account, 605 customer number, 599 exchange.
ReqFields SecurityFields(const CusLoginInfo& rec, const char* jys, const char* zqdm);

// Entrusts of every business: blocks that share the ordinary entrust's first 92 bytes, the
// ETF block, and the key/value businesses.
Result<std::int64_t> EntrustImpl(Target target, CusLoginInfo* record, const OrderArgs& a,
                                 Mode mode);
Result<std::int64_t> TradableImpl(Fam fam, CusLoginInfo* record, const OrderArgs& a);
Result<std::int64_t> WithdrawImpl(WithdrawTarget target, CusLoginInfo* record, const OrderArgs& a,
                                  Mode mode);
Result<std::int64_t> BatchWithdrawImpl(CusLoginInfo* record, std::int64_t lsh, bool async);
Result<std::int64_t> BatchEntrustImpl(CusLoginInfo* record, std::vector<BatchOrderRow>& rows,
                                      std::int64_t wtpch, bool async);
Result<std::int64_t> BasketImpl(CusLoginInfo* record, const OrderArgs& a);

// The customer as an export names it: customer number and shareholder account (plain
// forms), or the caller's record (Ex forms, which leave a null record to the frame).
struct Caller {
  const char* khh = nullptr;
  const char* gdh = "";
  CusLoginInfo* record = nullptr;
  bool ex = false;

  static Caller Plain(const char* khh, const char* gdh) { return Caller{khh, gdh, nullptr, false}; }
  static Caller Ex(CusLoginInfo* record) { return Caller{nullptr, nullptr, record, true}; }
  // The Ex form's record, or one built in `own` from the plain form's texts.
  CusLoginInfo* Record(CusLoginInfo& own) const;
  // The customer number as the checks see it (null for a null record).
  const char* Khh() const { return ex ? (record != nullptr ? record->KHH : nullptr) : khh; }
};

// The operations of the export table (trade/order_exports.h): each checks its export's
// arguments (failures under the export's name `name`), logs the call where its family's
// line does not, and runs its implementation.
Result<std::int64_t> RunEntrust(const char* name, Target target, const Caller& c,
                                const OrderArgs& a, Mode mode);
Result<std::int64_t> RunTradable(const char* name, Fam fam, const Caller& c, const OrderArgs& a,
                                 Mode mode);
Result<std::int64_t> RunWithdraw(const char* name, WithdrawTarget target, const Caller& c,
                                 const OrderArgs& a, Mode mode);
Result<std::int64_t> RunBatchWithdraw(const char* name, Fam fam, const Caller& c,
                                      const OrderArgs& a, Mode mode);
Result<std::int64_t> RunBatchEntrust(const char* name, Fam fam, const Caller& c, const OrderArgs& a,
                                     Mode mode);
Result<std::int64_t> RunBasket(const char* name, Target target, const Caller& c, const OrderArgs& a,
                               Mode mode);

}  // namespace molra::trade
