// Plain-array forms of the list queries for scripting hosts: each runs its query into a
// temporary list and copies what fits into the caller's array.
#include <vector>

#include "core/guard.h"
#include "query/query_frame.h"
#include "secmolra.h"

namespace molra {

namespace {

// Runs `query` on a temporary list and copies records 0, 1, ... into `out`, stopping before
// `cap` and before the result r; a negative r copies nothing. Returns r unchanged.
template <typename R, typename Query>
std::int64_t CopyOut(R* out, std::int32_t cap, Query&& query) {
  std::vector<R> list;
  std::int64_t r = query(list);
  if (out != nullptr) {
    for (std::int64_t i = 0; i < cap && i < r && i < static_cast<std::int64_t>(list.size()); ++i) {
      out[i] = list[static_cast<std::size_t>(i)];
    }
  }
  return r;
}

}  // namespace
}  // namespace molra

using namespace molra;

extern "C" {

SECMOLRA_API int32_t PYSECMOLRA_QueryCusNodeinfo(const char* lpKeyName, const char* khh,
                                                 CusNodeInfo* records, int32_t cap) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int32_t {
    return static_cast<int32_t>(CopyOut(records, cap, [&](std::vector<CusNodeInfo>& l) {
      return SECMOLRA_QueryCusNodeinfo(lpKeyName, khh, l);
    }));
  });
}

SECMOLRA_API int64_t PYSECMOLRA_QueryFundInfo(const char* khh, FundRecord* records, int32_t cap) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return CopyOut(records, cap,
                   [&](std::vector<FundRecord>& l) { return SECMOLRA_QueryFundInfo(khh, l); });
  });
}

SECMOLRA_API int64_t PYSECMOLRA_QueryAccInfo(const char* khh, AccountRecord* records, int32_t cap) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return CopyOut(records, cap,
                   [&](std::vector<AccountRecord>& l) { return SECMOLRA_QueryAccInfo(khh, l); });
  });
}

SECMOLRA_API int64_t PYSECMOLRA_QueryOrders(const char* khh, int32_t nType, int32_t nSortType,
                                            int32_t nRowcount, int32_t nBrowindex, const char* jys,
                                            const char* zqdm, int64_t lWth, OrderRecord* records,
                                            int32_t cap) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return CopyOut(records, cap, [&](std::vector<OrderRecord>& l) {
      return SECMOLRA_QueryOrders(khh, nType, nSortType, nRowcount, nBrowindex, jys, zqdm, lWth, l);
    });
  });
}

SECMOLRA_API int64_t PYSECMOLRA_QueryMatchs(const char* khh, int32_t nType, int32_t nSortType,
                                            int32_t nRowcount, int32_t nBrowindex, const char* jys,
                                            const char* zqdm, int64_t lWth, MatchRecord* records,
                                            int32_t cap) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return CopyOut(records, cap, [&](std::vector<MatchRecord>& l) {
      return SECMOLRA_QueryMatchs(khh, nType, nSortType, nRowcount, nBrowindex, jys, zqdm, lWth, l);
    });
  });
}

SECMOLRA_API int64_t PYSECMOLRA_QueryPositions(const char* khh, int32_t nSortType,
                                               int32_t nRowcount, int32_t nBrowindex,
                                               const char* gdh, const char* jys, const char* zqdm,
                                               int32_t exeflag, PositionRecord* records,
                                               int32_t cap) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return CopyOut(records, cap, [&](std::vector<PositionRecord>& l) {
      return SECMOLRA_QueryPositions(khh, nSortType, nRowcount, nBrowindex, gdh, jys, zqdm, exeflag,
                                     l);
    });
  });
}

SECMOLRA_API int64_t PYSECMOLRA_QueryPSQY(const char* khh, const char* jys, const char* gdh,
                                          PSQYRecord* records, int32_t cap) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return CopyOut(records, cap, [&](std::vector<PSQYRecord>& l) {
      return SECMOLRA_QueryPSQY(khh, jys, gdh, l);
    });
  });
}

SECMOLRA_API int64_t PYSECMOLRA_QueryETFShare(const char* khh, const char* jjdm,
                                              ETFShareRecord* records, int32_t cap) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return CopyOut(records, cap, [&](std::vector<ETFShareRecord>& l) -> std::int64_t {
      constexpr const char* kName = "PYSECMOLRA_QueryETFShare";
      if (Status checked = query::CheckFundCode(jjdm); !checked) {
        return Report(checked.failure(), kName);
      }
      CusLoginInfo info = query::MakeLoginInfo(khh);
      return Reported(query::QueryETFShare(&info, jjdm, l), kName);
    });
  });
}

}  // extern "C"
