// Connections, their events, and sessions.
#include <atomic>

#include "faults.h"
#include "host.h"
#include "kel_exports.h"
#include "remote.h"

using sim::LogCall;

namespace {

// A connection to a server of the back end: registered down, up once the server welcomed it.
kel::int64 ConnectToServer(const std::string& addr, kel::int32 timeout_s) {
  sim::Core& c = sim::core();
  kel::int64 id;
  {
    std::lock_guard<std::mutex> lock(c.mutex);
    if (sim::faults().connect.Hit(addr)) {
      c.last_error = "connect to " + addr + " timed out";
      return 0;
    }
    sim::Connection conn;
    conn.id = id = c.NewHandle();
    conn.addr = addr;
    conn.up = false;
    conn.remote = true;
    conn.last_recv_ms = conn.last_send_ms = sim::NowMs();
    c.conns[id] = conn;
  }
  std::string why;
  if (sim::remote::Open(id, addr, timeout_s, &why)) return id;
  std::lock_guard<std::mutex> lock(c.mutex);
  c.conns.erase(id);
  c.last_error = why;
  return 0;
}

}  // namespace

KEL_EXPORT kel::int64 Kel_Connect(const char* addr, const char* user, const char* pwd,
                                  kel::int32 timeoutSeconds) {
  LogCall("Kel_Connect", addr, user, pwd, timeoutSeconds);
  std::string a = addr ? addr : "";
  std::string down = sim::exchange().running() ? std::string() : sim::exchange().failure();
  if (sim::remote::IsServerAddress(a)) return ConnectToServer(a, timeoutSeconds);
  sim::Core& c = sim::core();
  std::lock_guard<std::mutex> lock(c.mutex);
  bool known = false;
  for (const auto& k : c.addresses) known = known || k == a;
  if (!down.empty()) {
    c.last_error = "connect to " + a + " refused: the simulated back end is not running: " + down;
    return 0;
  }
  if (!known) {
    c.last_error = "connect to " + a + " refused";
    return 0;
  }
  if (sim::faults().connect.Hit(a)) {
    c.last_error = "connect to " + a + " timed out";
    return 0;
  }
  sim::Connection conn;
  conn.id = c.NewHandle();
  conn.addr = a;
  conn.last_recv_ms = conn.last_send_ms = sim::NowMs();
  c.conns[conn.id] = conn;
  return conn.id;
}

KEL_EXPORT void Kel_Close(kel::int64 conn) {
  LogCall("Kel_Close", conn);
  sim::Core& c = sim::core();
  {
    std::lock_guard<std::mutex> lock(c.mutex);
    c.conns.erase(conn);
    for (auto it = c.subs.begin(); it != c.subs.end();) {
      if (it->second.conn == conn)
        it = c.subs.erase(it);
      else
        ++it;
    }
  }
  sim::remote::Close(conn);
}

KEL_EXPORT bool Kel_IsConnect(kel::int64 conn) {
  LogCall("Kel_IsConnect", conn);
  sim::Core& c = sim::core();
  std::lock_guard<std::mutex> lock(c.mutex);
  const sim::Connection* k = c.FindConnLocked(conn);
  return k != nullptr && k->up;
}

KEL_EXPORT const char* Kel_GetLastErrMsg(char* buf, kel::int32* len) {
  LogCall("Kel_GetLastErrMsg");
  std::string msg;
  {
    std::lock_guard<std::mutex> lock(sim::core().mutex);
    msg = sim::core().last_error;
  }
  return sim::CopyText(msg, buf, len);
}

KEL_EXPORT void Kel_SetConnEvent(kel::int64 conn, kel::ConnEventFn fn, void* ctx) {
  LogCall("Kel_SetConnEvent", conn, sim::Ptr{reinterpret_cast<const void*>(fn)});
  sim::Core& c = sim::core();
  std::lock_guard<std::mutex> lock(c.mutex);
  if (sim::Connection* k = c.FindConnLocked(conn)) {
    k->event_fn = fn;
    k->event_ctx = fn ? ctx : nullptr;
  }
}

KEL_EXPORT bool Kel_SetCustomerForBindThread(kel::int64 conn, const char* khh) {
  LogCall("Kel_SetCustomerForBindThread", conn, khh);
  sim::Core& c = sim::core();
  std::lock_guard<std::mutex> lock(c.mutex);
  sim::Connection* k = c.FindConnLocked(conn);
  if (k == nullptr || !k->up || sim::faults().bind.Hit()) return false;
  k->bound_khh = khh ? khh : "";
  return true;
}

KEL_EXPORT void Kel_SetAutoReconnect(kel::int64 conn, bool on) {
  LogCall("Kel_SetAutoReconnect", conn, on);
  std::lock_guard<std::mutex> lock(sim::core().mutex);
  if (sim::Connection* k = sim::core().FindConnLocked(conn)) k->auto_reconnect = on;
}

KEL_EXPORT bool Kel_GetAutoReconnect(kel::int64 conn) {
  LogCall("Kel_GetAutoReconnect", conn);
  std::lock_guard<std::mutex> lock(sim::core().mutex);
  const sim::Connection* k = sim::core().FindConnLocked(conn);
  return k != nullptr && k->auto_reconnect;
}

KEL_EXPORT kel::int64 Kel_GetLastRecvTime(kel::int64 conn) {
  LogCall("Kel_GetLastRecvTime", conn);
  std::lock_guard<std::mutex> lock(sim::core().mutex);
  const sim::Connection* k = sim::core().FindConnLocked(conn);
  return k ? k->last_recv_ms : 0;
}

KEL_EXPORT kel::int64 Kel_GetLastSendTime(kel::int64 conn) {
  LogCall("Kel_GetLastSendTime", conn);
  std::lock_guard<std::mutex> lock(sim::core().mutex);
  const sim::Connection* k = sim::core().FindConnLocked(conn);
  return k ? k->last_send_ms : 0;
}

KEL_EXPORT const char* Kel_GetConnectIp(kel::int64 conn, char* buf, kel::int32* len) {
  LogCall("Kel_GetConnectIp", conn);
  std::string ip;
  {
    std::lock_guard<std::mutex> lock(sim::core().mutex);
    const sim::Connection* k = sim::core().FindConnLocked(conn);
    if (k == nullptr) return nullptr;
    ip = k->addr.substr(0, k->addr.find(':'));
  }
  return sim::CopyText(ip, buf, len);
}

KEL_EXPORT kel::int64 Kel_AllocateSession(kel::int64 conn) {
  LogCall("Kel_AllocateSession", conn);
  sim::Core& c = sim::core();
  std::lock_guard<std::mutex> lock(c.mutex);
  // A broken connection still hands out sessions; running them fails until it is back.
  if (c.FindConnLocked(conn) == nullptr || sim::faults().alloc.Hit()) return 0;
  auto s = std::make_shared<sim::Session>();
  s->id = c.NewHandle();
  s->conn = conn;
  s->set.node_id = c.default_node_id;
  s->set.system_id = c.default_system_id;
  c.sessions[s->id] = s;
  return s->id;
}

KEL_EXPORT void Kel_ReleaseSession(kel::int64 session) {
  LogCall("Kel_ReleaseSession", session);
  sim::Core& c = sim::core();
  std::lock_guard<std::mutex> lock(c.mutex);
  auto it = c.sessions.find(session);
  // A push session belongs to the transport, which frees it after the handler returns.
  if (it != c.sessions.end() && !it->second->transport_owned) c.sessions.erase(it);
}
