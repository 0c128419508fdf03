// Shared internals of the simulated transport: the registry of connections, sessions and
// subscriptions, and the three threads on which events, asynchronous replies and pushes are
// delivered.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "call_log.h"
#include "comm/kel_abi.h"
#include "session.h"
#include "worker.h"

#if defined(_WIN32)
// Exports are listed in kelapi50.def.
#define KEL_EXPORT extern "C"
#define KEL_CXX_EXPORT
#define KELSIM_EXPORT extern "C"
#else
#define KEL_EXPORT extern "C" __attribute__((visibility("default")))
#define KEL_CXX_EXPORT __attribute__((visibility("default")))
#define KELSIM_EXPORT extern "C" __attribute__((visibility("default")))
#endif

namespace sim {

struct Connection {
  std::int64_t id = 0;
  std::string addr;
  bool up = true;
  kel::ConnEventFn event_fn = nullptr;
  void* event_ctx = nullptr;
  std::string bound_khh;
  bool auto_reconnect = true;
  std::int64_t last_send_ms = 0;
  std::int64_t last_recv_ms = 0;
  // A connection to a server of the back end (remote.h) rather than to the in-process one,
  // with the server's subscription codes of confirmations and match reports.
  bool remote = false;
  std::string confirm_func, report_func;
};

struct Subscription {
  std::int64_t id = 0;
  std::int64_t conn = 0;
  std::string func;  // normalised function code subscribed
  std::string khh;   // customer of the condition; empty: every customer
  kel::SubscribeFn fn = nullptr;
  void* ctx = nullptr;
};

using SessionPtr = std::shared_ptr<Session>;

// The registry. All members are guarded by `mutex`; callbacks are never called under it.
struct Core {
  std::mutex mutex;
  std::map<std::int64_t, Connection> conns;  // handles grow, so this is the order of opening
  std::unordered_map<std::int64_t, SessionPtr> sessions;
  std::map<std::int64_t, Subscription> subs;
  kel::StructPublishFn struct_fn = nullptr;
  void* struct_ctx = nullptr;
  std::string last_error;
  std::int64_t next_handle = 0x1000;  // connections, sessions and subscriptions share it
  std::int32_t default_system_id = 0;
  // From the back end's configuration: the addresses that accept connections, and the
  // subscription codes of confirmations and of match reports.
  std::vector<std::string> addresses;
  std::string confirm_func = "DM0003";
  std::string report_func = "DM0004";
  std::int32_t default_node_id = 0;

  Worker events;
  Worker replies;
  Worker pushes;

  std::int64_t NewHandle() { return next_handle++; }
  SessionPtr FindSession(std::int64_t id);      // takes the lock
  Connection* FindConnLocked(std::int64_t id);  // lock held by the caller
};

Core& core();

// Runs f on the session; false when the session is unknown.
template <typename F>
bool WithSession(std::int64_t session, F f) {
  SessionPtr s = core().FindSession(session);
  if (!s) return false;
  f(*s);
  return true;
}

// Counts one queued delivery; KelSim_WaitIdle waits until none is left.
void PostEvent(std::function<void()> task);
void PostReply(std::function<void()> task);
void PostPush(std::function<void()> task);

// While one lives on a thread, the replies and pushes that thread posts are handed to their
// threads together when it ends: a read of many answers wakes each thread once.
class DeliveryBatch {
 public:
  DeliveryBatch();
  ~DeliveryBatch();
  DeliveryBatch(const DeliveryBatch&) = delete;
  DeliveryBatch& operator=(const DeliveryBatch&) = delete;

 private:
  friend void PostReply(std::function<void()> task);
  friend void PostPush(std::function<void()> task);
  std::vector<std::function<void()>> replies_, pushes_;
  DeliveryBatch* outer_;
};
void WaitIdle();
// Delivers a connection event to the connection's handler (as it is at delivery) on the
// events thread.
void PostConnEvent(std::int64_t conn, std::int32_t event);
void StartThreads();
void StopThreads();

std::int64_t NowMs();  // wall clock, milliseconds since the epoch

}  // namespace sim
