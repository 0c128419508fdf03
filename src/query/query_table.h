// What the kit knows about each customer query of the back end: worker name, function code,
// record layout (answer keys), row handling, and the request fields each one sends after
// 605 = KHH. query_table.cpp is the one place that holds these.
#pragma once

#include <cstdint>

#include "comm/kv_request.h"
#include "query/record_layout.h"

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

enum class QueryKind { kFund, kAccount, kPSQY, kOrders, kMatchs, kPositions, kETFShare,
                       kZJHBCL, kJDKYZJ };

const QuerySpec& Spec(QueryKind kind);

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
