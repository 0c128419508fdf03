#include "query/query_frame.h"

#include <algorithm>

#include "comm/kel_api.h"
#include "core/messages.h"
#include "util/field_ids.h"

namespace molra::query {

CusLoginInfo MakeLoginInfo(const char* khh) {
  CusLoginInfo info{};
  info.NodeID = -1;
  info.Token = -1;
  CopyField(info.KHH, khh);
  return info;
}

Status QueryCaller::Check() const {
  const bool null = ex_form_ ? ex_ == nullptr : khh_arg_ == nullptr;
  if (null) return Failure{SECMOLRA_ERR_ARGUMENT, msg::kIllegalArgument};
  if (khh().empty()) return Failure{SECMOLRA_ERR_ARGUMENT, msg::kKhhEmpty};
  return Ok();
}

Result<Answer> CustomerRequest(const char* worker, CusLoginInfo* info, const char* func_code,
                               const ReqFields& fields) {
  if (info == nullptr) return Failure{SECMOLRA_ERR_ARGUMENT, msg::kIllegalArgument, worker};
  const std::string khh = KhhOf(*info);
  if (khh.empty()) return Failure{SECMOLRA_ERR_ARGUMENT, msg::kKhhEmpty, worker, info};
  Result<CustomerRef> customer = FindCustomer(khh);
  if (!customer) return customer.TakeFailure().At(worker, info);
  Result<KelSession> session = AllocTradeSession(*(*customer)->conn);
  if (!session) return session.TakeFailure().At(worker, info);
  const std::int32_t node_id = info->NodeID >= 1 ? info->NodeID : (*customer)->node_id;
  KvRequest request{{}, func_code, {ReqField::NodeId(node_id), ReqField::Text(fid::KHH, khh)}};
  request.fields.insert(request.fields.end(), fields.begin(), fields.end());
  Result<KvAnswer> answer = RunRequest(std::move(*session), request, kNonNegativeCode);
  if (!answer) return answer.TakeFailure().At(worker, info);
  return Answer{std::move(*customer), std::move(answer->session)};
}

Result<std::int64_t> RunQuery(const QuerySpec& spec, CusLoginInfo* info, const ReqFields& fields,
                              const RowSink& sink) {
  Result<Answer> answer = CustomerRequest(spec.worker, info, spec.func_code, fields);
  if (!answer) return answer.TakeFailure();
  const kel::int64 h = answer->session.handle();
  std::vector<char> record(spec.layout.size, 0);
  std::int64_t appended = 0;
  const kel::int32 rows = kel::api.Kel_GetCount(h);
  for (kel::int32 row = 0; row < rows; ++row) {
    if (spec.rows == RowMode::kRecheckAnswerCode) {
      const std::int64_t code = kel::api.Kel_GetCode(h);
      if (code < 0) return Failure{code, GetErrorString(h), spec.worker, info};
    } else {
      if (kel::api.Kel_GetLong(h, fid::ROW_STATE, row) < 0) continue;
      std::fill(record.begin(), record.end(), 0);
    }
    FillRecord(h, row, spec.layout, record.data());
    sink(record.data());
    ++appended;
  }
  return appended;
}

}  // namespace molra::query
