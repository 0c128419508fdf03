// The customer-query exports. Each one checks its customer, logs its call and runs its
// query through the frame; the plain and Ex forms share one body.
#include "api/guard.h"
#include "log/log.h"
#include "query/query_frame.h"
#include "secmolra.h"

namespace molra::query {

namespace {

std::int64_t ArgumentError(const char* export_name, const char* msg) {
  SetLastError(SECMOLRA_ERR_ARGUMENT, msg, export_name, nullptr);
  return SECMOLRA_ERR_ARGUMENT;
}

std::int64_t FundInfo(const char* name, QueryCaller c, std::vector<FundRecord>& list) {
  if (!c.Begin(name, list)) return SECMOLRA_ERR_ARGUMENT;
  MOLRA_LOG_INFO("{} lpKhh:{}", name, c.khh());
  return RunQueryInto(QueryKind::kFund, c.info(), FundRequest(), list);
}

std::int64_t AccInfo(const char* name, QueryCaller c, std::vector<AccountRecord>& list) {
  if (!c.Begin(name, list)) return SECMOLRA_ERR_ARGUMENT;
  MOLRA_LOG_INFO("{} lpKhh:{}", name, c.khh());
  return RunQueryInto(QueryKind::kAccount, c.info(), AccountRequest(), list);
}

std::int64_t PSQY(const char* name, QueryCaller c, const char* jys, const char* gdh,
                  std::vector<PSQYRecord>& list) {
  if (!c.Begin(name, list)) return SECMOLRA_ERR_ARGUMENT;
  MOLRA_LOG_INFO("{} lpKhh:{}, lpJys:{}, lpGdh:{} ", name, c.khh(), LogText(jys), LogText(gdh));
  return RunQueryInto(QueryKind::kPSQY, c.info(), PSQYRequest(jys, gdh), list);
}

template <typename R>
std::int64_t OrdersOrMatchs(const char* name, QueryKind kind, QueryCaller c, std::int32_t type,
                            std::int32_t sort, std::int32_t rowcount, std::int32_t browindex,
                            const char* jys, const char* zqdm, std::int64_t wth,
                            std::vector<R>& list) {
  if (!c.Begin(name, list)) return SECMOLRA_ERR_ARGUMENT;
  MOLRA_LOG_INFO(
      "{} lpKhh:{} nType:{} nSortType:{} nRowcount:{} nBrowindex:{} lpJys:{} lpZqdm:{} lWth:{}",
      name, c.khh(), type, sort, rowcount, browindex, LogText(jys), LogText(zqdm), wth);
  return RunQueryInto(kind, c.info(),
                      OrdersRequest(type, sort, rowcount, browindex, jys, zqdm, wth), list);
}

std::int64_t Positions(const char* name, QueryCaller c, std::int32_t sort,
                       std::int32_t rowcount, std::int32_t browindex, const char* gdh,
                       const char* jys, const char* zqdm, std::int32_t exeflag,
                       std::vector<PositionRecord>& list) {
  if (!c.Begin(name, list)) return SECMOLRA_ERR_ARGUMENT;
  MOLRA_LOG_INFO(
      "{} lpKhh:{} nSortType:{} nRowcount:{} nBrowindex:{} lpGdh:{} lpJys:{} lpZqdm:{} "
      "exeflag:{}",
      name, c.khh(), sort, rowcount, browindex, LogText(gdh), LogText(jys), LogText(zqdm),
      exeflag);
  return RunQueryInto(QueryKind::kPositions, c.info(),
                      PositionsRequest(sort, rowcount, browindex, gdh, jys, zqdm, exeflag),
                      list);
}

}  // namespace

bool CheckFundCode(const char* jjdm) {
  const char* msg = jjdm == nullptr ? "非法参数" : *jjdm == '\0' ? "基金代码不能为空" : nullptr;
  if (msg != nullptr) ArgumentError("SECMOLRA_QueryETFShare", msg);
  return msg == nullptr;
}

std::int64_t QueryETFShare(CusLoginInfo* info, const char* jjdm,
                           std::vector<ETFShareRecord>& list) {
  return RunQueryInto(QueryKind::kETFShare, info, ETFShareRequest(jjdm), list);
}

namespace {

std::int64_t ETFShare(const char* name, QueryCaller c, const char* jjdm,
                      std::vector<ETFShareRecord>& list) {
  if (!c.Begin(name, list)) return SECMOLRA_ERR_ARGUMENT;
  if (!CheckFundCode(jjdm)) return SECMOLRA_ERR_ARGUMENT;
  MOLRA_LOG_INFO("{} lpKhh:{} lpJjdm:{}", name, c.khh(), jjdm);
  return QueryETFShare(c.info(), jjdm, list);
}

template <typename R>
std::int64_t NodeFundsQuery(const char* name, QueryKind kind, const char* khh, const char* zjzh,
                            std::vector<R>& list) {
  list.clear();
  if (khh == nullptr || *khh == '\0' || zjzh == nullptr) return ArgumentError(name, "非法参数");
  MOLRA_LOG_INFO("{} lpKhh:{} sZjzh:{}", name, khh, zjzh);
  CusLoginInfo info = MakeLoginInfo(khh);
  return RunQueryInto(kind, &info, NodeFundsRequest(zjzh), list);
}

}  // namespace
}  // namespace molra::query

using namespace molra::query;
using molra::Guard;

extern "C" {

SECMOLRA_API int64_t SECMOLRA_QueryFundInfo(const char* khh, std::vector<FundRecord>& list) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return FundInfo("SECMOLRA_QueryFundInfo", QueryCaller(khh), list);
  });
}

SECMOLRA_API int64_t SECMOLRA_QueryFundInfoEx(CusLoginInfo* info, std::vector<FundRecord>& list) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return FundInfo("SECMOLRA_QueryFundInfoEx", QueryCaller(info), list);
  });
}

SECMOLRA_API int64_t SECMOLRA_QueryAccInfo(const char* khh, std::vector<AccountRecord>& list) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return AccInfo("SECMOLRA_QueryAccInfo", QueryCaller(khh), list);
  });
}

SECMOLRA_API int64_t SECMOLRA_QueryAccInfoEx(CusLoginInfo* info,
                                             std::vector<AccountRecord>& list) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return AccInfo("SECMOLRA_QueryAccInfoEx", QueryCaller(info), list);
  });
}

SECMOLRA_API int64_t SECMOLRA_QueryPSQY(const char* khh, const char* jys, const char* gdh,
                                        std::vector<PSQYRecord>& list) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return PSQY("SECMOLRA_QueryPSQY", QueryCaller(khh), jys, gdh, list);
  });
}

SECMOLRA_API int64_t SECMOLRA_QueryPSQYEx(CusLoginInfo* info, const char* jys, const char* gdh,
                                          std::vector<PSQYRecord>& list) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return PSQY("SECMOLRA_QueryPSQYEx", QueryCaller(info), jys, gdh, list);
  });
}

SECMOLRA_API int64_t SECMOLRA_QueryOrders(const char* khh, int32_t nType, int32_t nSortType,
                                          int32_t nRowcount, int32_t nBrowindex,
                                          const char* jys, const char* zqdm, int64_t lWth,
                                          std::vector<OrderRecord>& list) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return OrdersOrMatchs("SECMOLRA_QueryOrders", QueryKind::kOrders, QueryCaller(khh), nType,
                          nSortType, nRowcount, nBrowindex, jys, zqdm, lWth, list);
  });
}

SECMOLRA_API int64_t SECMOLRA_QueryOrdersEx(CusLoginInfo* info, int32_t nType,
                                            int32_t nSortType, int32_t nRowcount,
                                            int32_t nBrowindex, const char* jys,
                                            const char* zqdm, int64_t lWth,
                                            std::vector<OrderRecord>& list) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return OrdersOrMatchs("SECMOLRA_QueryOrdersEx", QueryKind::kOrders, QueryCaller(info), nType,
                          nSortType, nRowcount, nBrowindex, jys, zqdm, lWth, list);
  });
}

SECMOLRA_API int64_t SECMOLRA_QueryMatchs(const char* khh, int32_t nType, int32_t nSortType,
                                          int32_t nRowcount, int32_t nBrowindex,
                                          const char* jys, const char* zqdm, int64_t lWth,
                                          std::vector<MatchRecord>& list) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return OrdersOrMatchs("SECMOLRA_QueryMatchs", QueryKind::kMatchs, QueryCaller(khh), nType,
                          nSortType, nRowcount, nBrowindex, jys, zqdm, lWth, list);
  });
}

SECMOLRA_API int64_t SECMOLRA_QueryMatchsEx(CusLoginInfo* info, int32_t nType,
                                            int32_t nSortType, int32_t nRowcount,
                                            int32_t nBrowindex, const char* jys,
                                            const char* zqdm, int64_t lWth,
                                            std::vector<MatchRecord>& list) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return OrdersOrMatchs("SECMOLRA_QueryMatchsEx", QueryKind::kMatchs, QueryCaller(info), nType,
                          nSortType, nRowcount, nBrowindex, jys, zqdm, lWth, list);
  });
}

SECMOLRA_API int64_t SECMOLRA_QueryPositions(const char* khh, int32_t nSortType,
                                             int32_t nRowcount, int32_t nBrowindex,
                                             const char* gdh, const char* jys, const char* zqdm,
                                             int32_t exeflag,
                                             std::vector<PositionRecord>& list) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return Positions("SECMOLRA_QueryPositions", QueryCaller(khh), nSortType, nRowcount,
                     nBrowindex, gdh, jys, zqdm, exeflag, list);
  });
}

SECMOLRA_API int64_t SECMOLRA_QueryPositionsEx(CusLoginInfo* info, int32_t nSortType,
                                               int32_t nRowcount, int32_t nBrowindex,
                                               const char* jys, const char* zqdm,
                                               int32_t exeflag,
                                               std::vector<PositionRecord>& list) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    std::string gdh = info ? FixedText(info->GDH) : std::string();
    return Positions("SECMOLRA_QueryPositionsEx", QueryCaller(info), nSortType, nRowcount,
                     nBrowindex, gdh.c_str(), jys, zqdm, exeflag, list);
  });
}

SECMOLRA_API int64_t SECMOLRA_QueryETFShare(const char* khh, const char* jjdm,
                                            std::vector<ETFShareRecord>& list) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return ETFShare("SECMOLRA_QueryETFShare", QueryCaller(khh), jjdm, list);
  });
}

SECMOLRA_API int64_t SECMOLRA_QueryETFShareEx(CusLoginInfo* info, const char* jjdm,
                                              std::vector<ETFShareRecord>& list) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return ETFShare("SECMOLRA_QueryETFShareEx", QueryCaller(info), jjdm, list);
  });
}

SECMOLRA_API int64_t SECMOLRA_QueryZJHBCL(const char* khh, const char* zjzh,
                                          std::vector<ZJHBCLRecord>& list) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return NodeFundsQuery("SECMOLRA_QueryZJHBCL", QueryKind::kZJHBCL, khh, zjzh, list);
  });
}

SECMOLRA_API int64_t SECMOLRA_QueryJDKYZJ(const char* khh, const char* zjzh,
                                          std::vector<JDKYZJRecord>& list) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return NodeFundsQuery("SECMOLRA_QueryJDKYZJ", QueryKind::kJDKYZJ, khh, zjzh, list);
  });
}

}  // extern "C"
