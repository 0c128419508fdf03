// Subscriptions to pushes and the global structured publish handler.
#include "kel_exports.h"
#include "remote.h"

using sim::LogCall;

namespace {

// The customer number of a condition such as "getstring(605)=='1001'"; empty when the
// condition names none (every customer).
std::string ConditionCustomer(const std::string& cond) {
  std::size_t at = cond.find("605");
  if (at == std::string::npos) return std::string();
  std::size_t eq = cond.find("==", at);
  if (eq == std::string::npos) return std::string();
  std::size_t q = cond.find_first_of("'\"", eq + 2);
  if (q == std::string::npos) return std::string();
  std::size_t end = cond.find(cond[q], q + 1);
  if (end == std::string::npos) return std::string();
  return cond.substr(q + 1, end - q - 1);
}

}  // namespace

KEL_EXPORT bool Kel_SetSubsCondi(kel::int64 session, const char* condition) {
  LogCall("Kel_SetSubsCondi", session, condition);
  sim::SessionPtr s = sim::core().FindSession(session);
  if (!s) return false;
  s->set.subs_condi = condition ? condition : "";
  return true;
}

KEL_EXPORT bool Kel_Subscribe(kel::int64 session, kel::int64* subscriptionId, kel::SubscribeFn fn,
                              void* ctx) {
  LogCall("Kel_Subscribe", session, sim::Ptr{reinterpret_cast<const void*>(fn)});
  sim::SessionPtr s = sim::core().FindSession(session);
  if (!s || s->req.func.empty()) return false;
  sim::Core& c = sim::core();
  bool remote;
  {
    std::lock_guard<std::mutex> lock(c.mutex);
    const sim::Connection* conn = c.FindConnLocked(s->conn);
    if (conn == nullptr || !conn->up) return false;
    remote = conn->remote;
    sim::Subscription sub;
    sub.id = c.NewHandle();
    sub.conn = s->conn;
    sub.func = s->req.func;
    sub.khh = ConditionCustomer(s->set.subs_condi);
    sub.fn = fn;
    sub.ctx = ctx;
    c.subs[sub.id] = sub;
    if (subscriptionId) *subscriptionId = sub.id;
  }
  // A server sends the customer's pushes from now on (or, when the connection has just
  // dropped, from its reconnection on).
  if (remote) sim::remote::UpdateInterest(s->conn);
  return true;
}

KEL_EXPORT bool Kel_Unsubscribe(kel::int64 session, kel::int64 subscriptionId) {
  LogCall("Kel_Unsubscribe", session, subscriptionId);
  sim::Core& c = sim::core();
  kel::int64 conn = 0;
  bool remote = false;
  {
    std::lock_guard<std::mutex> lock(c.mutex);
    auto it = c.subs.find(subscriptionId);
    if (it == c.subs.end()) return false;
    conn = it->second.conn;
    const sim::Connection* k = c.FindConnLocked(conn);
    remote = k != nullptr && k->remote;
    c.subs.erase(it);
  }
  if (remote) sim::remote::UpdateInterest(conn);
  return true;
}

KEL_EXPORT void Kel_RegGlobalStructPublishFunc(kel::StructPublishFn fn, void* ctx) {
  LogCall("Kel_RegGlobalStructPublishFunc", sim::Ptr{reinterpret_cast<const void*>(fn)});
  sim::Core& c = sim::core();
  std::lock_guard<std::mutex> lock(c.mutex);
  c.struct_fn = fn;
  c.struct_ctx = fn ? ctx : nullptr;
}
