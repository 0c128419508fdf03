// The customer-query exports. Each one checks its customer, logs its call and runs its
// query through the frame; the plain and Ex forms share one body.
#include "core/guard.h"
#include "core/log.h"
#include "core/messages.h"
#include "query/query_frame.h"
#include "secmolra.h"

namespace molra::query {

namespace {

Result<std::int64_t> FundInfo(const char* name, QueryCaller c, std::vector<FundRecord>& list) {
  if (Status s = c.Begin(list); !s) return s.TakeFailure();
  MOLRA_LOG_INFO("{} lpKhh:{}", name, c.khh());
  return c.Finish(RunQueryInto(c.info(), FundRequest(), list));
}

Result<std::int64_t> AccInfo(const char* name, QueryCaller c, std::vector<AccountRecord>& list) {
  if (Status s = c.Begin(list); !s) return s.TakeFailure();
  MOLRA_LOG_INFO("{} lpKhh:{}", name, c.khh());
  return c.Finish(RunQueryInto(c.info(), AccountRequest(), list));
}

Result<std::int64_t> PSQY(const char* name, QueryCaller c, const char* jys, const char* gdh,
                          std::vector<PSQYRecord>& list) {
  if (Status s = c.Begin(list); !s) return s.TakeFailure();
  MOLRA_LOG_INFO("{} lpKhh:{}, lpJys:{}, lpGdh:{} ", name, c.khh(), LogText(jys), LogText(gdh));
  return c.Finish(RunQueryInto(c.info(), PSQYRequest(jys, gdh), list));
}

template <typename R>
Result<std::int64_t> OrdersOrMatchs(const char* name, QueryCaller c, std::int32_t type,
                                    std::int32_t sort, std::int32_t rowcount,
                                    std::int32_t browindex, const char* jys, const char* zqdm,
                                    std::int64_t wth, std::vector<R>& list) {
  if (Status s = c.Begin(list); !s) return s.TakeFailure();
  MOLRA_LOG_INFO(
      "{} lpKhh:{} nType:{} nSortType:{} nRowcount:{} nBrowindex:{} lpJys:{} lpZqdm:{} lWth:{}",
      name, c.khh(), type, sort, rowcount, browindex, LogText(jys), LogText(zqdm), wth);
  return c.Finish(
      RunQueryInto(c.info(), OrdersRequest(type, sort, rowcount, browindex, jys, zqdm, wth), list));
}

Result<std::int64_t> Positions(const char* name, QueryCaller c, std::int32_t sort,
                               std::int32_t rowcount, std::int32_t browindex, const char* gdh,
                               const char* jys, const char* zqdm, std::int32_t exeflag,
                               std::vector<PositionRecord>& list) {
  if (Status s = c.Begin(list); !s) return s.TakeFailure();
  MOLRA_LOG_INFO(
      "{} lpKhh:{} nSortType:{} nRowcount:{} nBrowindex:{} lpGdh:{} lpJys:{} lpZqdm:{} "
      "exeflag:{}",
      name, c.khh(), sort, rowcount, browindex, LogText(gdh), LogText(jys), LogText(zqdm), exeflag);
  return c.Finish(RunQueryInto(
      c.info(), PositionsRequest(sort, rowcount, browindex, gdh, jys, zqdm, exeflag), list));
}

Result<std::int64_t> ETFShare(const char* name, QueryCaller c, const char* jjdm,
                              std::vector<ETFShareRecord>& list) {
  if (Status s = c.Begin(list); !s) return s.TakeFailure();
  if (Status s = CheckFundCode(jjdm); !s) return s.TakeFailure();
  MOLRA_LOG_INFO("{} lpKhh:{} lpJjdm:{}", name, c.khh(), jjdm);
  return c.Finish(QueryETFShare(c.info(), jjdm, list));
}

template <typename R>
Result<std::int64_t> NodeFundsQuery(const char* name, const char* khh, const char* zjzh,
                                    std::vector<R>& list) {
  list.clear();
  if (khh == nullptr || *khh == '\0' || zjzh == nullptr) return IllegalArgument();
  MOLRA_LOG_INFO("{} lpKhh:{} sZjzh:{}", name, khh, zjzh);
  CusLoginInfo info = MakeLoginInfo(khh);
  return DropAccount(RunQueryInto(&info, NodeFundsRequest(zjzh), list), &info);
}

}  // namespace

Status CheckFundCode(const char* jjdm) {
  constexpr const char* kName = "SECMOLRA_QueryETFShare";
  if (jjdm == nullptr) return Failure{SECMOLRA_ERR_ARGUMENT, msg::kIllegalArgument, kName};
  if (*jjdm == '\0') return Failure{SECMOLRA_ERR_ARGUMENT, msg::kFundCodeEmpty, kName};
  return Ok();
}

Result<std::int64_t> QueryETFShare(CusLoginInfo* info, const char* jjdm,
                                   std::vector<ETFShareRecord>& list) {
  return RunQueryInto(info, ETFShareRequest(jjdm), list);
}

}  // namespace molra::query

using namespace molra::query;
using molra::Export;

extern "C" {

SECMOLRA_API int64_t SECMOLRA_QueryFundInfo(const char* khh, std::vector<FundRecord>& list) {
  return Export(__func__,
                [&] { return FundInfo("SECMOLRA_QueryFundInfo", QueryCaller(khh), list); });
}

SECMOLRA_API int64_t SECMOLRA_QueryFundInfoEx(CusLoginInfo* info, std::vector<FundRecord>& list) {
  return Export(__func__,
                [&] { return FundInfo("SECMOLRA_QueryFundInfoEx", QueryCaller(info), list); });
}

SECMOLRA_API int64_t SECMOLRA_QueryAccInfo(const char* khh, std::vector<AccountRecord>& list) {
  return Export(__func__, [&] { return AccInfo("SECMOLRA_QueryAccInfo", QueryCaller(khh), list); });
}

SECMOLRA_API int64_t SECMOLRA_QueryAccInfoEx(CusLoginInfo* info, std::vector<AccountRecord>& list) {
  return Export(__func__,
                [&] { return AccInfo("SECMOLRA_QueryAccInfoEx", QueryCaller(info), list); });
}

SECMOLRA_API int64_t SECMOLRA_QueryPSQY(const char* khh, const char* jys, const char* gdh,
                                        std::vector<PSQYRecord>& list) {
  return Export(__func__,
                [&] { return PSQY("SECMOLRA_QueryPSQY", QueryCaller(khh), jys, gdh, list); });
}

SECMOLRA_API int64_t SECMOLRA_QueryPSQYEx(CusLoginInfo* info, const char* jys, const char* gdh,
                                          std::vector<PSQYRecord>& list) {
  return Export(__func__,
                [&] { return PSQY("SECMOLRA_QueryPSQYEx", QueryCaller(info), jys, gdh, list); });
}

SECMOLRA_API int64_t SECMOLRA_QueryOrders(const char* khh, int32_t nType, int32_t nSortType,
                                          int32_t nRowcount, int32_t nBrowindex, const char* jys,
                                          const char* zqdm, int64_t lWth,
                                          std::vector<OrderRecord>& list) {
  return Export(__func__, [&] {
    return OrdersOrMatchs("SECMOLRA_QueryOrders", QueryCaller(khh), nType, nSortType, nRowcount,
                          nBrowindex, jys, zqdm, lWth, list);
  });
}

SECMOLRA_API int64_t SECMOLRA_QueryOrdersEx(CusLoginInfo* info, int32_t nType, int32_t nSortType,
                                            int32_t nRowcount, int32_t nBrowindex, const char* jys,
                                            const char* zqdm, int64_t lWth,
                                            std::vector<OrderRecord>& list) {
  return Export(__func__, [&] {
    return OrdersOrMatchs("SECMOLRA_QueryOrdersEx", QueryCaller(info), nType, nSortType, nRowcount,
                          nBrowindex, jys, zqdm, lWth, list);
  });
}

SECMOLRA_API int64_t SECMOLRA_QueryMatchs(const char* khh, int32_t nType, int32_t nSortType,
                                          int32_t nRowcount, int32_t nBrowindex, const char* jys,
                                          const char* zqdm, int64_t lWth,
                                          std::vector<MatchRecord>& list) {
  return Export(__func__, [&] {
    return OrdersOrMatchs("SECMOLRA_QueryMatchs", QueryCaller(khh), nType, nSortType, nRowcount,
                          nBrowindex, jys, zqdm, lWth, list);
  });
}

SECMOLRA_API int64_t SECMOLRA_QueryMatchsEx(CusLoginInfo* info, int32_t nType, int32_t nSortType,
                                            int32_t nRowcount, int32_t nBrowindex, const char* jys,
                                            const char* zqdm, int64_t lWth,
                                            std::vector<MatchRecord>& list) {
  return Export(__func__, [&] {
    return OrdersOrMatchs("SECMOLRA_QueryMatchsEx", QueryCaller(info), nType, nSortType, nRowcount,
                          nBrowindex, jys, zqdm, lWth, list);
  });
}

SECMOLRA_API int64_t SECMOLRA_QueryPositions(const char* khh, int32_t nSortType, int32_t nRowcount,
                                             int32_t nBrowindex, const char* gdh, const char* jys,
                                             const char* zqdm, int32_t exeflag,
                                             std::vector<PositionRecord>& list) {
  return Export(__func__, [&] {
    return Positions("SECMOLRA_QueryPositions", QueryCaller(khh), nSortType, nRowcount, nBrowindex,
                     gdh, jys, zqdm, exeflag, list);
  });
}

SECMOLRA_API int64_t SECMOLRA_QueryPositionsEx(CusLoginInfo* info, int32_t nSortType,
                                               int32_t nRowcount, int32_t nBrowindex,
                                               const char* jys, const char* zqdm, int32_t exeflag,
                                               std::vector<PositionRecord>& list) {
  return Export(__func__, [&] {
    std::string gdh = info ? molra::FieldText(info->GDH) : std::string();
    return Positions("SECMOLRA_QueryPositionsEx", QueryCaller(info), nSortType, nRowcount,
                     nBrowindex, gdh.c_str(), jys, zqdm, exeflag, list);
  });
}

SECMOLRA_API int64_t SECMOLRA_QueryETFShare(const char* khh, const char* jjdm,
                                            std::vector<ETFShareRecord>& list) {
  return Export(__func__,
                [&] { return ETFShare("SECMOLRA_QueryETFShare", QueryCaller(khh), jjdm, list); });
}

SECMOLRA_API int64_t SECMOLRA_QueryETFShareEx(CusLoginInfo* info, const char* jjdm,
                                              std::vector<ETFShareRecord>& list) {
  return Export(__func__, [&] {
    return ETFShare("SECMOLRA_QueryETFShareEx", QueryCaller(info), jjdm, list);
  });
}

SECMOLRA_API int64_t SECMOLRA_QueryZJHBCL(const char* khh, const char* zjzh,
                                          std::vector<ZJHBCLRecord>& list) {
  return Export(__func__, [&] { return NodeFundsQuery("SECMOLRA_QueryZJHBCL", khh, zjzh, list); });
}

SECMOLRA_API int64_t SECMOLRA_QueryJDKYZJ(const char* khh, const char* zjzh,
                                          std::vector<JDKYZJRecord>& list) {
  return Export(__func__, [&] { return NodeFundsQuery("SECMOLRA_QueryJDKYZJ", khh, zjzh, list); });
}

}  // extern "C"
