// Building a request on a session, and sending it synchronously or asynchronously.
#include <cstdio>

#include "backend/block.h"
#include "bench.h"
#include "dispatch.h"
#include "faults.h"
#include "kel_exports.h"
#include "remote.h"

using sim::LogCall;

namespace {

bool SetField(kel::int64 session, kel::int32 id, std::string value) {
  return sim::WithSession(session, [&](sim::Session& s) { s.req.SetField(id, std::move(value)); });
}

// The connection of a session is open and up; its send time is noted. *remote: whether it
// reaches a server rather than the in-process back end.
bool Sendable(const sim::Session& s, bool* remote) {
  sim::Core& c = sim::core();
  std::lock_guard<std::mutex> lock(c.mutex);
  sim::Connection* k = c.FindConnLocked(s.conn);
  if (k == nullptr || !k->up) return false;
  if (!sim::BenchMode()) k->last_send_ms = k->last_recv_ms = sim::NowMs();
  *remote = k->remote;
  return true;
}

// Hands the answer of a Kel_Write to the session's reply handler, on the reply thread.
void DeliverReply(const sim::SessionPtr& s) {
  s->replied = true;
  // A session released before its answer came has nobody to hand it to.
  if (!sim::core().FindSession(s->id)) return;
  if (s->reply_fn != nullptr) {
    s->reply_fn(s->id);  // the handler owns the session now and releases it
  } else {
    std::lock_guard<std::mutex> lock(sim::core().mutex);
    sim::core().sessions.erase(s->id);
  }
}

// A Kel_Write to a server: the answer comes on the network thread and goes to the reply
// thread; an answer lost with the connection is a failure answer (code -1).
bool WriteToServer(const sim::SessionPtr& s) {
  return sim::remote::Send(s->conn, s->req, s->set.node_id, [s](bool ok, sim::Answer ans) {
    if (ok) sim::Finish(s->req, &ans);
    auto shared = std::make_shared<sim::Answer>(std::move(ans));
    sim::PostReply([s, shared] {
      s->ans = std::move(*shared);
      DeliverReply(s);
    });
  });
}

}  // namespace

KEL_EXPORT void Kel_SetTimeOut(kel::int64 session, kel::int32 seconds) {
  LogCall("Kel_SetTimeOut", session, seconds);
  sim::WithSession(session, [&](sim::Session& s) { s.set.timeout = seconds; });
}
KEL_EXPORT void Kel_SetWTFS(kel::int64 session, const char* wtfs) {
  LogCall("Kel_SetWTFS", session, wtfs);
  sim::WithSession(session, [&](sim::Session& s) { s.set.wtfs = wtfs ? wtfs : ""; });
}
KEL_EXPORT void Kel_SetFBDM(kel::int64 session, const char* fbdm) {
  LogCall("Kel_SetFBDM", session, fbdm);
  sim::WithSession(session, [&](sim::Session& s) { s.set.fbdm = fbdm ? fbdm : ""; });
}
KEL_EXPORT void Kel_SetDestFBDM(kel::int64 session, const char* fbdm) {
  LogCall("Kel_SetDestFBDM", session, fbdm);
  sim::WithSession(session, [&](sim::Session& s) { s.set.dest_fbdm = fbdm ? fbdm : ""; });
}
KEL_EXPORT void Kel_SetNode(kel::int64 session, const char* node) {
  LogCall("Kel_SetNode", session, node);
  sim::WithSession(session, [&](sim::Session& s) { s.set.node = node ? node : ""; });
}
KEL_EXPORT void Kel_SetGYDM(kel::int64 session, const char* gydm) {
  LogCall("Kel_SetGYDM", session, gydm);
  sim::WithSession(session, [&](sim::Session& s) { s.set.gydm = gydm ? gydm : ""; });
}
KEL_EXPORT void Kel_SetUserHeadInfo(kel::int64 session, const char* info) {
  LogCall("Kel_SetUserHeadInfo", session, info);
  sim::WithSession(session, [&](sim::Session& s) { s.set.user_head = info ? info : ""; });
}
KEL_EXPORT void Kel_SetNodeId(kel::int64 session, kel::int32 nodeId) {
  LogCall("Kel_SetNodeId", session, nodeId);
  sim::WithSession(session, [&](sim::Session& s) { s.set.node_id = nodeId; });
}
KEL_EXPORT void Kel_SetSystemId(kel::int64 session, kel::int32 systemId) {
  LogCall("Kel_SetSystemId", session, systemId);
  sim::WithSession(session, [&](sim::Session& s) { s.set.system_id = systemId; });
}
KEL_EXPORT kel::int32 Kel_GetSystemId(kel::int64 session) {
  LogCall("Kel_GetSystemId", session);
  kel::int32 v = 0;
  sim::WithSession(session, [&](sim::Session& s) { v = s.set.system_id; });
  return v;
}
KEL_EXPORT kel::int32 Kel_GetNodeId(kel::int64 session) {
  LogCall("Kel_GetNodeId", session);
  kel::int32 v = 0;
  sim::WithSession(session, [&](sim::Session& s) { v = s.set.node_id; });
  return v;
}
KEL_EXPORT bool Kel_SetSysInfo(kel::int64 session, kel::int32 kind, kel::int32 fieldId) {
  LogCall("Kel_SetSysInfo", session, kind, fieldId);
  return sim::WithSession(session,
                          [&](sim::Session& s) { s.set.sysinfo.emplace_back(kind, fieldId); });
}
KEL_EXPORT kel::int64 Kel_GetToken(kel::int64 session) {
  LogCall("Kel_GetToken", session);
  kel::int64 v = 0;
  sim::WithSession(session, [&](sim::Session& s) { v = s.set.token; });
  return v;
}
KEL_EXPORT void Kel_SetToken(kel::int64 session, kel::int64 token) {
  LogCall("Kel_SetToken", session, token);
  sim::WithSession(session, [&](sim::Session& s) { s.set.token = token; });
}

KEL_EXPORT bool Kel_CreateHead(kel::int64 session, const char* funcCode) {
  LogCall("Kel_CreateHead", session, funcCode);
  if (funcCode == nullptr || *funcCode == '\0') return false;
  return sim::WithSession(session, [&](sim::Session& s) {
    s.req.Clear();
    s.req.raw_func = funcCode;
    s.req.func = sim::NormaliseFuncCode(funcCode);
  });
}

KEL_EXPORT bool Kel_SetItem(kel::int64 session, kel::int32 fieldId, const char* value) {
  LogCall("Kel_SetItem", session, fieldId, value);
  return SetField(session, fieldId, value ? value : "");
}
KEL_EXPORT bool Kel_SetInt(kel::int64 session, kel::int32 fieldId, kel::int32 value) {
  LogCall("Kel_SetInt", session, fieldId, value);
  return SetField(session, fieldId, std::to_string(value));
}
KEL_EXPORT bool Kel_SetLong(kel::int64 session, kel::int32 fieldId, kel::int64 value) {
  LogCall("Kel_SetLong", session, fieldId, value);
  return SetField(session, fieldId, std::to_string(value));
}
KEL_EXPORT bool Kel_SetInt64(kel::int64 session, kel::int32 fieldId, kel::int64 value) {
  LogCall("Kel_SetInt64", session, fieldId, value);
  return SetField(session, fieldId, std::to_string(value));
}
KEL_EXPORT bool Kel_SetDouble(kel::int64 session, kel::int32 fieldId, double value,
                              kel::int32 precision) {
  LogCall("Kel_SetDouble", session, fieldId, value, precision);
  char buf[512];
  std::snprintf(buf, sizeof buf, "%.*f", precision < 0 ? 6 : (precision > 20 ? 20 : precision),
                value);
  return SetField(session, fieldId, buf);
}
KEL_EXPORT bool Kel_SetString(kel::int64 session, kel::int32 fieldId, const char* value,
                              kel::int32 len) {
  LogCall("Kel_SetString", session, fieldId, len);
  if (value == nullptr || len < 0) return SetField(session, fieldId, "");
  return SetField(session, fieldId, std::string(value, static_cast<std::size_t>(len)));
}
KEL_EXPORT bool Kel_SetItemBuf(kel::int64 session, kel::int32 fieldId, const char* data,
                               kel::int32 len) {
  LogCall("Kel_SetItemBuf", session, fieldId, len);
  if (data == nullptr || len < 0) return false;
  return SetField(session, fieldId, std::string(data, static_cast<std::size_t>(len)));
}

KEL_EXPORT bool Kel_SetStructData(kel::int64 session, const char* block, kel::int32 len) {
  LogCall("Kel_SetStructData", session, len);
  if (block == nullptr || len < 2) return false;
  return sim::WithSession(session, [&](sim::Session& s) {
    s.req.Clear();
    s.req.is_block = true;
    s.req.block.assign(block, static_cast<std::size_t>(len));
    // The function number is the block's first int16 (little-endian).
    s.req.func = std::to_string(sim::Block(s.req.block).I16(0));
    s.req.raw_func = s.req.func;
  });
}

KEL_EXPORT void Kel_SetSessData(kel::int64 session, kel::int64 data) {
  LogCall("Kel_SetSessData", session, data);
  sim::WithSession(session, [&](sim::Session& s) { s.data = data; });
}
KEL_EXPORT kel::int64 Kel_GetSessData(kel::int64 session) {
  LogCall("Kel_GetSessData", session);
  kel::int64 v = 0;
  sim::WithSession(session, [&](sim::Session& s) { v = s.data; });
  return v;
}

KEL_EXPORT bool Kel_RegReplyCallFunc(kel::int64 session, kel::ReplyFn fn) {
  LogCall("Kel_RegReplyCallFunc", session, sim::Ptr{reinterpret_cast<const void*>(fn)});
  return sim::WithSession(session, [&](sim::Session& s) { s.reply_fn = fn; });
}

KEL_EXPORT bool Kel_Run(kel::int64 session) {
  LogCall("Kel_Run", session);
  sim::SessionPtr s = sim::core().FindSession(session);
  if (!s || s->req.func.empty()) return false;
  if (!sim::BenchMode() && sim::faults().run.Hit()) return false;
  bool remote = false;
  if (!Sendable(*s, &remote)) return false;
  s->replied = false;
  bool answered = true;
  if (!remote) {
    sim::Dispatch(s->req, s->set, &s->ans);
  } else if (!sim::AnswerHere(s->req, &s->ans)) {
    answered = sim::remote::Call(s->conn, s->req, s->set.node_id, s->set.timeout, &s->ans);
    if (answered) sim::Finish(s->req, &s->ans);
  }
  s->replied = true;
  return answered;
}

KEL_EXPORT bool Kel_Write(kel::int64 session) {
  LogCall("Kel_Write", session);
  sim::SessionPtr s = sim::core().FindSession(session);
  if (!s || s->req.func.empty()) return false;
  if (!sim::BenchMode() && sim::faults().write.Hit()) return false;
  bool remote = false;
  if (!Sendable(*s, &remote)) return false;
  s->replied = false;
  if (remote) {
    if (!sim::AnswerHere(s->req, &s->ans)) return WriteToServer(s);
    sim::PostReply([s] { DeliverReply(s); });
    return true;
  }
  sim::PostReply([s] {
    sim::Dispatch(s->req, s->set, &s->ans);
    DeliverReply(s);
  });
  return true;
}

KEL_EXPORT bool Kel_IsReplyed(kel::int64 session) {
  LogCall("Kel_IsReplyed", session);
  bool v = false;
  sim::WithSession(session, [&](sim::Session& s) { v = s.replied; });
  return v;
}
