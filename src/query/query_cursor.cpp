// Reference-data tables: SECMOLRA_BeginQuery runs one request through the query frame and
// keeps its session as a cursor in the kit, so that the caller reads any field of any row by
// id; SECMOLRA_EndQuery releases it. SECMOLRA_Exit drops the cursors left open without
// calling the transport.
#include <memory>
#include <string>

#include "comm/kel_api.h"
#include "core/context.h"
#include "core/guard.h"
#include "core/log.h"
#include "core/messages.h"
#include "core/text.h"
#include "query/query_frame.h"
#include "secmolra.h"

namespace molra::query {

struct Cursor {
  Answer answer;
  kel::int32 rows = 0;
};

namespace {

constexpr const char* kBegin = "SECMOLRA_BeginQuery";

std::shared_ptr<Cursor> FindCursor(std::int64_t id) {
  Kit* kit = CurrentKit();
  return kit != nullptr ? kit->cursors.Find(id) : nullptr;
}

Result<std::int64_t> BeginQuery(const char* khh, const char* func_code, const char* request) {
  ReqFields fields;
  if (khh == nullptr || func_code == nullptr || *func_code == '\0' ||
      !ParseRequestText(request, fields)) {
    return IllegalArgument();
  }
  MOLRA_LOG_INFO("{} lpKhh:{} func:{} req:{}", kBegin, khh, func_code, LogText(request));
  Kit* kit = CurrentKit();
  const std::string customer =
      *khh != '\0' ? std::string(khh) : (kit != nullptr ? kit->customers.DefaultKhh(0) : "");
  if (customer.empty()) return Failure{SECMOLRA_ERR_NOT_LOGGED_IN, msg::kNotLoggedIn};
  CusLoginInfo info = MakeLoginInfo(customer.c_str());
  // A connection failure returns its code 0, which is never a cursor id.
  Result<Answer> answer = DropAccount(CustomerRequest(kBegin, &info, func_code, fields), &info);
  if (!answer) return answer.TakeFailure();
  auto cursor = std::make_shared<Cursor>();
  cursor->answer = std::move(*answer);
  cursor->rows = kel::api.Kel_GetCount(cursor->answer.session.handle());
  return kit->cursors.Add(std::move(cursor));
}

}  // namespace
}  // namespace molra::query

using namespace molra;
using namespace molra::query;

extern "C" {

SECMOLRA_API int64_t SECMOLRA_BeginQuery(const char* khh, const char* funcCode,
                                         const char* request) {
  return Export(__func__, [&] { return BeginQuery(khh, funcCode, request); });
}

SECMOLRA_API int64_t SECMOLRA_GetQueryCount(int64_t cursor) {
  return Export(__func__, [&]() -> Result<std::int64_t> {
    std::shared_ptr<Cursor> c = FindCursor(cursor);
    if (!c) return IllegalArgument();
    return c->rows;
  });
}

SECMOLRA_API int64_t SECMOLRA_GetQuery(int64_t cursor, int32_t row, int32_t fieldId, char* buf,
                                       int32_t cap) {
  return Export(__func__, [&]() -> Result<std::int64_t> {
    std::shared_ptr<Cursor> c = FindCursor(cursor);
    if (!c || row < 0 || row >= c->rows || cap < 0) return IllegalArgument();
    const std::string value = GetItemString(c->answer.session.handle(), fieldId, row);
    CopyOut(buf, static_cast<std::size_t>(cap), value);
    return static_cast<std::int64_t>(value.size());
  });
}

SECMOLRA_API int64_t SECMOLRA_EndQuery(int64_t cursor) {
  return Export(__func__, [&]() -> Result<std::int64_t> {
    Kit* kit = CurrentKit();
    if (kit == nullptr || !kit->cursors.Remove(cursor)) return IllegalArgument();
    return 1;
  });
}

}  // extern "C"
