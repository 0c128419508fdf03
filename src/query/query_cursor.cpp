// Reference-data tables: SECMOLRA_BeginQuery runs one request through the query frame and
// keeps its session as a cursor, so that the caller reads any field of any row by id;
// SECMOLRA_EndQuery releases it.
#include <atomic>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

#include "api/guard.h"
#include "api/last_error.h"
#include "comm/kel_api.h"
#include "log/log.h"
#include "query/query_cursor.h"
#include "query/query_frame.h"
#include "secmolra.h"

namespace molra::query {

namespace {

constexpr const char* kBegin = "SECMOLRA_BeginQuery";

struct Cursor {
  Answer answer;
  kel::int32 rows = 0;
};

class CursorTable {
 public:
  std::int64_t Add(std::shared_ptr<Cursor> c) {
    std::lock_guard<std::mutex> lock(mutex_);
    std::int64_t id = ++last_id_;
    cursors_[id] = std::move(c);
    return id;
  }
  std::shared_ptr<Cursor> Find(std::int64_t id) const {
    std::lock_guard<std::mutex> lock(mutex_);
    auto it = cursors_.find(id);
    return it == cursors_.end() ? nullptr : it->second;
  }
  bool Remove(std::int64_t id) {
    std::lock_guard<std::mutex> lock(mutex_);
    return cursors_.erase(id) == 1;
  }
  // Empties the table. The cursors are kept, never released: their sessions belong to a
  // transport that is going away.
  void Abandon() {
    std::lock_guard<std::mutex> lock(mutex_);
    for (auto& entry : cursors_) abandoned_.push_back(std::move(entry.second));
    cursors_.clear();
  }

 private:
  mutable std::mutex mutex_;
  std::int64_t last_id_ = 0;
  std::map<std::int64_t, std::shared_ptr<Cursor>> cursors_;
  std::vector<std::shared_ptr<Cursor>> abandoned_;
};

CursorTable& Cursors() {
  // Never destroyed: at process end it would release sessions on a transport already gone.
  static CursorTable* table = new CursorTable();
  return *table;
}

std::int64_t ArgumentError(const char* func) {
  SetLastError(SECMOLRA_ERR_ARGUMENT, "非法参数", func, nullptr);
  return SECMOLRA_ERR_ARGUMENT;
}

}  // namespace

void AbandonCursors() { Cursors().Abandon(); }

}  // namespace molra::query

using namespace molra;
using namespace molra::query;

extern "C" {

SECMOLRA_API int64_t SECMOLRA_BeginQuery(const char* khh, const char* funcCode,
                                         const char* request) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    ReqFields fields;
    if (khh == nullptr || funcCode == nullptr || *funcCode == '\0' ||
        !ParseRequestText(request, fields)) {
      return ArgumentError(kBegin);
    }
    MOLRA_LOG_INFO("{} lpKhh:{} func:{} req:{}", kBegin, khh, funcCode, LogText(request));
    std::string customer = *khh != '\0' ? std::string(khh) : Registry().DefaultKhh(0);
    if (customer.empty()) {
      SetLastError(SECMOLRA_ERR_NOT_LOGGED_IN, "客户未登录", kBegin, nullptr);
      return SECMOLRA_ERR_NOT_LOGGED_IN;
    }
    CusLoginInfo info = MakeLoginInfo(customer.c_str());
    auto cursor = std::make_shared<Cursor>();
    std::int64_t code = 0;
    // A staged connection failure returns its code 0, which is never a cursor id.
    if (!RunRequest(kBegin, &info, funcCode, fields, cursor->answer, code)) return code;
    cursor->rows = kel::api.Kel_GetCount(cursor->answer.session.handle());
    return Cursors().Add(std::move(cursor));
  });
}

SECMOLRA_API int64_t SECMOLRA_GetQueryCount(int64_t cursor) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    auto c = Cursors().Find(cursor);
    return c ? c->rows : ArgumentError("SECMOLRA_GetQueryCount");
  });
}

SECMOLRA_API int64_t SECMOLRA_GetQuery(int64_t cursor, int32_t row, int32_t fieldId, char* buf,
                                       int32_t cap) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    auto c = Cursors().Find(cursor);
    if (!c || row < 0 || row >= c->rows || cap < 0) return ArgumentError("SECMOLRA_GetQuery");
    std::string value = GetItemString(c->answer.session.handle(), fieldId, row);
    if (buf != nullptr && cap > 0) {
      std::size_t n = std::min(value.size(), static_cast<std::size_t>(cap) - 1);
      std::memcpy(buf, value.data(), n);
      buf[n] = '\0';
    }
    return static_cast<int64_t>(value.size());
  });
}

SECMOLRA_API int64_t SECMOLRA_EndQuery(int64_t cursor) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return Cursors().Remove(cursor) ? 1 : ArgumentError("SECMOLRA_EndQuery");
  });
}

}  // extern "C"
