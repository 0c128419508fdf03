#include "comm/kv_request.h"

#include <cstdlib>
#include <cstring>

#include "comm/kel_api.h"
#include "core/messages.h"
#include "core/text.h"
#include "util/field_ids.h"

namespace molra {

namespace {

ReqField Make(ReqField::Kind kind, std::int32_t id, std::int64_t number = 0, double real = 0,
              std::string text = {}) {
  ReqField f;
  f.kind = kind;
  f.id = id;
  f.number = number;
  f.real = real;
  f.text = std::move(text);
  return f;
}

using K = ReqField::Kind;

void Set(kel::int64 h, const ReqField& f) {
  switch (f.kind) {
    case K::kText:
      kel::api.Kel_SetItem(h, f.id, f.text.c_str());
      break;
    case K::kInt:
      kel::api.Kel_SetInt(h, f.id, static_cast<kel::int32>(f.number));
      break;
    case K::kLong:
      kel::api.Kel_SetLong(h, f.id, f.number);
      break;
    case K::kDouble:
      kel::api.Kel_SetDouble(h, f.id, f.real, 6);
      break;
    case K::kNodeId:
      kel::api.Kel_SetNodeId(h, static_cast<kel::int32>(f.number));
      break;
    case K::kWtfs:
      kel::api.Kel_SetWTFS(h, f.text.c_str());
      break;
    case K::kNode:
      kel::api.Kel_SetNode(h, f.text.c_str());
      break;
    case K::kGydm:
      kel::api.Kel_SetGYDM(h, f.text.c_str());
      break;
    case K::kTimeout:
      kel::api.Kel_SetTimeOut(h, static_cast<kel::int32>(f.number));
      break;
    case K::kSysInfo:
      kel::api.Kel_SetSysInfo(h, static_cast<kel::int32>(f.number), f.id);
      break;
  }
}

}  // namespace

ReqField ReqField::Text(std::int32_t id, const char* value) {
  return Text(id, std::string(LogText(value)));
}
ReqField ReqField::Text(std::int32_t id, std::string value) {
  return Make(K::kText, id, 0, 0, std::move(value));
}
ReqField ReqField::Int(std::int32_t id, std::int32_t value) { return Make(K::kInt, id, value); }
ReqField ReqField::Long(std::int32_t id, std::int64_t value) { return Make(K::kLong, id, value); }
ReqField ReqField::Double(std::int32_t id, double value) { return Make(K::kDouble, id, 0, value); }
ReqField ReqField::NodeId(std::int32_t node_id) { return Make(K::kNodeId, 0, node_id); }
ReqField ReqField::Wtfs(std::string wtfs) { return Make(K::kWtfs, 0, 0, 0, std::move(wtfs)); }
ReqField ReqField::Node(std::string node) { return Make(K::kNode, 0, 0, 0, std::move(node)); }
ReqField ReqField::Gydm(std::string gydm) { return Make(K::kGydm, 0, 0, 0, std::move(gydm)); }
ReqField ReqField::Timeout(std::int32_t seconds) { return Make(K::kTimeout, 0, seconds); }
ReqField ReqField::SysInfo(std::int32_t kind, std::int32_t id) {
  return Make(K::kSysInfo, id, kind);
}

void PrepareRequest(const KelSession& session, const KvRequest& request) {
  const kel::int64 h = session.handle();
  for (const ReqField& f : request.settings) Set(h, f);
  CreateHead(session, request.code);
  for (const ReqField& f : request.fields) Set(h, f);
}

Result<KvAnswer> RunRequest(KelSession session, const KvRequest& request, const AnswerRule& rule) {
  PrepareRequest(session, request);
  return RunPrepared(std::move(session), rule);
}

Result<KvAnswer> RunPrepared(KelSession session, const AnswerRule& rule) {
  const kel::int64 h = session.handle();
  if (!kel::api.Kel_Run(h)) {
    return Failure{SECMOLRA_ERR_SEND,
                   rule.send_text_from_answer ? GetErrorString(h) : msg::kSendFailed};
  }
  const std::int64_t value =
      rule.row_state ? kel::api.Kel_GetLong(h, fid::ROW_STATE, 0) : kel::api.Kel_GetCode(h);
  if (value < rule.lowest_accepted) {
    const bool replaced = value >= 0 && rule.nonnegative_refusal != 0;
    return Failure{replaced ? rule.nonnegative_refusal : value, GetErrorString(h)};
  }
  return KvAnswer{std::move(session), value};
}

bool ParseRequestText(const char* text, ReqFields& out) {
  out.clear();
  if (text == nullptr || *text == '\0') return true;
  const char* p = text;
  for (;;) {
    const char* end = std::strchr(p, '|');
    if (end == nullptr) end = p + std::strlen(p);
    const char* eq =
        static_cast<const char*>(std::memchr(p, '=', static_cast<std::size_t>(end - p)));
    if (eq == nullptr || eq == p) return false;
    std::int64_t id = 0;
    for (const char* d = p; d < eq; ++d) {
      if (*d < '0' || *d > '9') return false;
      id = id * 10 + (*d - '0');
      if (id > INT32_MAX) return false;
    }
    if (id == 0) return false;
    out.push_back(ReqField::Text(static_cast<std::int32_t>(id), std::string(eq + 1, end)));
    if (*end == '\0') return true;
    p = end + 1;
  }
}

std::string EncodePassword3rd(const char* khh, const char* password) {
  char buf[1024] = {};
  CopyField(buf, sizeof buf - 1, password);
  kel::int32 len = sizeof buf;
  kel::api.Kel_UniEncode3rd(khh, buf, &len);
  buf[sizeof buf - 1] = '\0';
  return buf;
}

}  // namespace molra
