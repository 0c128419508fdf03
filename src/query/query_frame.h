// The query frame every customer query runs through: find the customer's connection set and
// its login, choose the node, open a session, send the request, check the answer code, and
// turn the accepted rows into records.
#pragma once

#include <cstdint>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "comm/conn_pool.h"
#include "comm/customer.h"
#include "comm/kv_request.h"
#include "core/status.h"
#include "core/text.h"
#include "query/query_table.h"
#include "secmolra.h"

namespace molra::query {

// A login record as the plain exports build it: zero, node id -1, token -1, KHH (at most 16
// bytes; null gives "").
CusLoginInfo MakeLoginInfo(const char* khh);
inline std::string KhhOf(const CusLoginInfo& info) { return FieldText(info.KHH); }

// A request run on a logged-in customer's connection set; the session holds the answer.
struct Answer {
  CustomerRef customer;
  KelSession session;
};

// Steps shared by every request of the frame: "605 = KHH" and `fields` after the head and
// the node id. Failures carry `worker` as function name and `info` as account.
Result<Answer> CustomerRequest(const char* worker, CusLoginInfo* info, const char* func_code,
                               const ReqFields& fields);

using RowSink = std::function<void(const char* record)>;
// The worker: the request, then one record per accepted row handed to `sink`. The number of
// records handed over.
Result<std::int64_t> RunQuery(const QuerySpec& spec, CusLoginInfo* info, const ReqFields& fields,
                              const RowSink& sink);

// The query of record type R (QueryOf), its rows appended to `list`.
template <typename R>
Result<std::int64_t> RunQueryInto(CusLoginInfo* info, const ReqFields& fields,
                                  std::vector<R>& list) {
  return RunQuery(Spec(QueryOf<R>::kind), info, fields, [&list](const char* record) {
    R r;
    std::memcpy(&r, record, sizeof r);
    list.push_back(r);
  });
}

// The customer named by a query export: the plain form's KHH text or the Ex form's record.
class QueryCaller {
 public:
  explicit QueryCaller(const char* khh) : khh_arg_(khh), own_(MakeLoginInfo(khh)) {}
  explicit QueryCaller(CusLoginInfo* info) : ex_(info), ex_form_(true) {}

  // Empties the list; a null or empty KHH is -221 under the export's name.
  template <typename R>
  Status Begin(std::vector<R>& list) {
    list.clear();
    return Check();
  }
  CusLoginInfo* info() { return ex_form_ ? ex_ : &own_; }
  // A query's result as the export reports it: the plain form's own record gets no copy.
  Result<std::int64_t> Finish(Result<std::int64_t> r) const {
    return DropAccount(std::move(r), &own_);
  }
  std::string khh() const {
    return ex_form_ ? (ex_ != nullptr ? KhhOf(*ex_) : std::string()) : LogText(khh_arg_);
  }

 private:
  Status Check() const;
  const char* khh_arg_ = nullptr;
  CusLoginInfo own_{};
  CusLoginInfo* ex_ = nullptr;
  bool ex_form_ = false;
};

// The ETF-share query's own check of the fund code (-221, under the name
// "SECMOLRA_QueryETFShare" for every form), and its worker, which expects a checked code.
Status CheckFundCode(const char* jjdm);
Result<std::int64_t> QueryETFShare(CusLoginInfo* info, const char* jjdm,
                                   std::vector<ETFShareRecord>& list);

}  // namespace molra::query
