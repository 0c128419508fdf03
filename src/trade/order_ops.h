// The order layer's implementations behind the exports. Each takes the customer as a
// record (the plain exports build one with MakeRecord), checks what the frame needs, fills
// its family's block or fields and runs the request frame. Failures are recorded under the
// family's name with the record as account.
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

// The row for `jylb`, or -222 with the business's message under its first row's name.
Result<const OrderFamily*> Resolve(Target target, std::int32_t jylb, CusLoginInfo* record);
// A failure under the family's name, with the record as account.
Failure Refuse(const OrderFamily& family, CusLoginInfo* record, std::int64_t code,
               const char* msg);

struct EntrustArgs {
  const char* jys;
  const char* zqdm;
  std::int32_t jylb;
  std::int64_t wtsl;  // travels as 32 bits in blocks
  double wtjg;
  std::int64_t ddlx;
  std::uint8_t byte91;  // the block's byte at 91: order type, 0 or the listed-fund flag
};

// Block trading's own fields.
struct DzjyArgs {
  const char* dfxw;
  const char* lxr;
  const char* lxdh;
  const char* hyh;
  const char* dfgdh;
  std::int32_t pddm;
  std::int32_t tdbz;
};

// The first four fields of the key/value entrusts and tradable quantities: 719 security
// code, 571 shareholder account, 605 customer number, 599 exchange.
ReqFields SecurityFields(const CusLoginInfo& rec, const char* jys, const char* zqdm);

// Ordinary, repurchase, pledge, listed-fund, after-hours (blocks sharing the first 92
// bytes) and issuance, block-trading and non-trading (key/value) entrusts.
Result<std::int64_t> EntrustImpl(Target target, CusLoginInfo* record, const EntrustArgs& a, Mode mode,
                         const DzjyArgs* dzjy = nullptr);

// ETF subscription (29) and redemption (30); `step` may be null.
Result<std::int64_t> ETFEntrustImpl(CusLoginInfo* record, const char* jys, const char* zqdm,
                            std::int32_t jylb, std::int32_t wtsl, const char* step, Mode mode);

struct WithdrawArgs {
  const char* jys;
  std::int64_t cxwth;      // order number, or 0
  std::int64_t cxkfsbdbh;  // request number of the order, or 0
};
Result<std::int64_t> WithdrawImpl(Fam fam, CusLoginInfo* record, const WithdrawArgs& a, Mode mode);
Result<std::int64_t> BatchWithdrawImpl(CusLoginInfo* record, std::int64_t lsh, bool async);

Result<std::int64_t> BatchEntrustImpl(CusLoginInfo* record, std::vector<BatchOrderRow>& rows,
                              std::int64_t wtpch, bool async);

struct TradableArgs {
  const char* jys;
  const char* zqdm;
  std::int32_t jylb;
  double wtjg;
  std::int32_t ddlx;
};
Result<std::int64_t> TradableImpl(Fam fam, CusLoginInfo* record, const TradableArgs& a);

}  // namespace molra::trade
