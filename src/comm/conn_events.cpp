// Break and reconnect events of a connection set, called by the transport on its threads.
//
// The host hears one break per outage (when the first connection goes down) and one
// recovery (when the last comes back). Breaks are de-duplicated per connection and code,
// recoveries are not: a recovery of a connection that was not broken still lowers the count,
// which can go below zero. A repeated break while the count is 1 reaches the host again.
#include <map>
#include <mutex>

#include "comm/conn_internal.h"
#include "comm/kel_api.h"
#include "core/context.h"
#include "core/guard.h"
#include "core/log.h"
#include "core/messages.h"

namespace KelComm {

using namespace roles;

namespace {

constexpr char kEventHandlerName[] = "KelComm::KelConn::on_conn_event";

struct LiveSets {
  std::mutex mutex;
  std::map<const void*, std::weak_ptr<KelConn>> sets;
};

LiveSets& Live() {
  static LiveSets* live = new LiveSets();  // never destroyed: events may come at exit
  return *live;
}

const RoleInfo* RoleOfHandle(const KelConn& set, kel::int64 handle) {
  for (Role r : kLookupOrder) {
    if (set.*kRoles[r].handle == handle) return &kRoles[r];
  }
  return nullptr;
}

void Notify(const KelConn& set, kel::int32 event) {
  SECMOLRA_ConnEventCallback cb = molra::Host().conn_event_callback.load();
  if (cb == nullptr) return;
  const std::string name = FieldText(set.profile.name);
  cb(set.customer.c_str(), name.c_str(), event, 0);
}

// An unknown handle takes no part in the bookkeeping; the host is still told according to
// the count as it stands.
void OnBreak(KelConn& set, const RoleInfo* role, kel::int32 event) {
  std::int32_t count;
  if (role == nullptr || (set.*role->state).load() == event) {
    count = set.broken_count.load();
  } else {
    (set.*role->state).store(event);
    count = ++set.broken_count;
    MOLRA_LOG_INFO(fmt::runtime(role->broken), set.key);
  }
  if (count == 1) Notify(set, event);
}

void Rebind(const KelConn& set, kel::int64 handle) {
  if (kel::api.Kel_SetCustomerForBindThread(handle, set.customer.c_str())) {
    MOLRA_LOG_INFO(msg::kRebound, set.key, set.customer);
  } else {
    MOLRA_LOG_WARN(msg::kRebindFailed, set.key, set.customer);
  }
}

void OnRecovery(KelConn& set, const RoleInfo* role, kel::int64 handle) {
  std::int32_t count;
  if (role == nullptr) {
    count = set.broken_count.load();
  } else {
    (set.*role->state).store(0);
    count = --set.broken_count;
    MOLRA_LOG_INFO(fmt::runtime(role->restored), set.key, set.customer);
    if (role->bind_customer && BindsCustomer(set.profile)) Rebind(set, handle);
    if (role == &kRoles[kSubscribe]) {
      if (set.profile.cancel_resub) Unsubscribe(handle, set.TakeSubscriptions());
      MOLRA_LOG_INFO(msg::kSubscribeCrash, kEventHandlerName);
    }
  }
  if (count == 0) Notify(set, 0);
}

}  // namespace

namespace roles {

void AdmitEvents(KelConn& set) {
  std::lock_guard<std::mutex> lock(Live().mutex);
  Live().sets[&set] = set.weak_from_this();
}

void StopEvents(const KelConn& set) {
  std::lock_guard<std::mutex> lock(Live().mutex);
  Live().sets.erase(&set);
}

std::shared_ptr<KelConn> SetForEvent(void* ctx) {
  std::lock_guard<std::mutex> lock(Live().mutex);
  auto it = Live().sets.find(ctx);
  return it != Live().sets.end() ? it->second.lock() : nullptr;
}

}  // namespace roles

void KelConn::on_conn_event(kel::int64 handle, kel::int32 event, void* ctx) {
  molra::Guard(
      kEventHandlerName, molra::kNoResult,
      [&] {
        if (ctx == nullptr) return;
        std::shared_ptr<KelConn> set = SetForEvent(ctx);
        if (set == nullptr) return;
        const RoleInfo* role = RoleOfHandle(*set, handle);
        if (event != 0) {
          OnBreak(*set, role, event);
        } else {
          OnRecovery(*set, role, handle);
        }
      },
      molra::Boundary::kEvent);
}

}  // namespace KelComm
