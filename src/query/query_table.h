// What the kit knows about each customer query of the back end: worker name, function code,
// record layout (answer keys), row handling, and the request fields each one sends after
// 605 = KHH. query_table.cpp is the one place that holds these.
#pragma once

#include <cstdint>

#include "comm/kv_request.h"
#include "query/record_layout.h"
#include "secmolra.h"

namespace molra::query {

enum class RowMode : std::uint8_t {
  kSkipNegativeState,  // rows whose key 507 is negative are skipped; each record zeroed first
  kRecheckAnswerCode,  // Kel_GetCode before each row, a negative one stops the query; one
                       // record buffer is reused across rows, not zeroed in between
};

struct QuerySpec {
  const char* worker;     // function name of the worker's errors
  const char* func_code;  // six-character function code
  RecordLayout layout;
  RowMode rows;
};

enum class QueryKind {
  kFund,
  kAccount,
  kPSQY,
  kOrders,
  kMatchs,
  kPositions,
  kETFShare,
  kZJHBCL,
  kJDKYZJ
};

const QuerySpec& Spec(QueryKind kind);

// The query whose answer rows become records R: each record type has exactly one.
template <typename R>
struct QueryOf;
#define MOLRA_QUERY_OF(R, k)                        \
  template <>                                       \
  struct QueryOf<R> {                               \
    static constexpr QueryKind kind = QueryKind::k; \
  };
MOLRA_QUERY_OF(FundRecord, kFund)
MOLRA_QUERY_OF(AccountRecord, kAccount)
MOLRA_QUERY_OF(PSQYRecord, kPSQY)
MOLRA_QUERY_OF(OrderRecord, kOrders)
MOLRA_QUERY_OF(MatchRecord, kMatchs)
MOLRA_QUERY_OF(PositionRecord, kPositions)
MOLRA_QUERY_OF(ETFShareRecord, kETFShare)
MOLRA_QUERY_OF(ZJHBCLRecord, kZJHBCL)
MOLRA_QUERY_OF(JDKYZJRecord, kJDKYZJ)
#undef MOLRA_QUERY_OF

// Request fields after 605 = KHH.
ReqFields FundRequest();
ReqFields AccountRequest();
ReqFields PSQYRequest(const char* jys, const char* gdh);
// Orders and matches share their request.
ReqFields OrdersRequest(std::int32_t type, std::int32_t sort, std::int32_t rowcount,
                        std::int32_t browindex, const char* jys, const char* zqdm,
                        std::int64_t wth);
ReqFields PositionsRequest(std::int32_t sort, std::int32_t rowcount, std::int32_t browindex,
                           const char* gdh, const char* jys, const char* zqdm,
                           std::int32_t exeflag);
ReqFields ETFShareRequest(const char* jjdm);
// Allocation ratios and node funds: 511 = "RMB", 716 = zjzh.
ReqFields NodeFundsRequest(const char* zjzh);

}  // namespace molra::query
