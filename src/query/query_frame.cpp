#include "query/query_frame.h"

#include <algorithm>
#include <cstring>

#include "core/errors.h"
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

bool QueryCaller::Check(const char* export_name) {
  bool null = ex_form_ ? ex_ == nullptr : khh_arg_ == nullptr;
  if (null) {
    SetLastError(SECMOLRA_ERR_ARGUMENT, msg::kIllegalArgument, export_name, nullptr);
    return false;
  }
  if (khh().empty()) {
    SetLastError(SECMOLRA_ERR_ARGUMENT, msg::kKhhEmpty, export_name, nullptr);
    return false;
  }
  return true;
}

bool RunRequest(const char* func, CusLoginInfo* info, const char* func_code,
                const ReqFields& fields, Answer& out, std::int64_t& code) {
  if (info == nullptr) {
    code = Fail(SECMOLRA_ERR_ARGUMENT, msg::kIllegalArgument, func, nullptr);
    return false;
  }
  std::string khh = KhhOf(*info);
  if (khh.empty()) {
    code = Fail(SECMOLRA_ERR_ARGUMENT, msg::kKhhEmpty, func, info);
    return false;
  }
  ErrorRecord err;
  if (!FindCustomer(khh, out.customer, err)) {
    code = Fail(err.code, err.message, func, info);
    return false;
  }
  std::int32_t node_id = info->NodeID >= 1 ? info->NodeID : NodeTable().Get(khh);
  out.session = AllocTradeSession(*out.customer.conn);
  if (!out.session) {
    code = Fail(SECMOLRA_ERR_SESSION, GetStagedError().message, func, info);
    return false;
  }
  kel::int64 h = out.session.handle();
  CreateHead(out.session, func_code);
  kel::api.Kel_SetNodeId(h, node_id);
  SetRequestFields(h, {ReqField::Text(fid::KHH, khh)});
  SetRequestFields(h, fields);
  if (!kel::api.Kel_Run(h)) {
    code = Fail(SECMOLRA_ERR_SEND, msg::kSendFailed, func, info);
    return false;
  }
  code = kel::api.Kel_GetCode(h);
  if (code < 0) {
    Fail(code, GetErrorString(h), func, info);
    return false;
  }
  return true;
}

std::int64_t RunQuery(const QuerySpec& spec, CusLoginInfo* info, const ReqFields& fields,
                      const RowSink& sink) {
  Answer answer;
  std::int64_t code = 0;
  if (!RunRequest(spec.worker, info, spec.func_code, fields, answer, code)) return code;
  kel::int64 h = answer.session.handle();
  std::vector<char> record(spec.layout.size, 0);
  std::int64_t appended = 0;
  kel::int32 rows = kel::api.Kel_GetCount(h);
  for (kel::int32 row = 0; row < rows; ++row) {
    if (spec.rows == RowMode::kRecheckAnswerCode) {
      code = kel::api.Kel_GetCode(h);
      if (code < 0) return Fail(code, GetErrorString(h), spec.worker, info);
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
