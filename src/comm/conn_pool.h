// Connection sets per customer (KelComm::KelConn), the pool that owns them, sessions and
// the timer service.
#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "comm/kel_abi.h"
#include "config/conn_profile.h"

namespace molra {
class TimerService;
}

namespace KelComm {

// One customer's connection set: management, trade, subscribe and query connections opened
// from one connection key, with the key's backup profile.
class KelConn : public std::enable_shared_from_this<KelConn> {
 public:
  // Reads the key's section and the backup section it names (no reading for an empty key).
  KelConn(std::string key, std::uint32_t kind);
  // Deregisters the event handler and closes whatever is still open.
  ~KelConn();
  KelConn(const KelConn&) = delete;
  KelConn& operator=(const KelConn&) = delete;

  // Opens the four connections of the active profile; false with the reason staged.
  bool Connect(const char* khh);
  // Tear-down: deregisters events, cancels the active subscriptions, closes everything.
  void Close();
  // Registered with Kel_SetConnEvent for each of the four handles; ctx is the set. Events
  // for a set that is closed or gone are ignored (the set must be owned by a shared_ptr).
  static void on_conn_event(kel::int64 handle, kel::int32 event, void* ctx);

  // The profile in use (primary or backup), or null when the set was built without a key.
  const molra::ConnProfile* ActiveProfile() const;
  const molra::ConnProfile& Active() const { return active_profile == 0 ? primary : backup; }
  // Subscription slots of the group in use: [1] confirmation id, [3] match id.
  int ActiveGroup() const { return active_profile == 0 ? 0 : 1; }
  std::atomic<kel::int64>* ActiveSlots() { return slots[ActiveGroup()]; }
  static constexpr int kConfirmSlot = 1;
  static constexpr int kReportSlot = 3;
  // Takes a group's subscription ids for cancelling and clears them, so that the customer's
  // next login subscribes again: the confirmation and match slots, then the confirmation id
  // kept apart when the match subscription took its slot.
  std::vector<kel::int64> TakeSubscriptions(int group);

  std::string key;
  std::uint32_t kind = 0;
  std::string customer;
  // Transport handles, 0 when closed. Atomic because the event handler reads them on
  // transport threads while tear-down may be zeroing them; read them as plain int64.
  std::atomic<kel::int64> mgmt_handle{0};
  std::atomic<kel::int64> trade_handle{0};
  std::atomic<kel::int64> subscribe_handle{0};
  std::atomic<kel::int64> query_handle{0};
  std::atomic<std::int32_t> broken_count{0};
  // Last event code per connection, 0 = up. Atomic because the transport may deliver the
  // events of different connections, and repeated events of one, on different threads.
  std::atomic<std::int32_t> mgmt_state{0};
  std::atomic<std::int32_t> trade_state{0};
  std::atomic<std::int32_t> subscribe_state{0};
  std::atomic<std::int32_t> query_state{0};
  molra::ConnProfile primary{};
  molra::ConnProfile backup{};
  std::uint32_t active_profile = 0;
  // Written by a login, read and cleared on transport threads.
  std::atomic<kel::int64> slots[2][16]{};
  // With StructPushMsg the match subscription takes the confirmation slot; the confirmation
  // id it replaced is kept here, so that cancelling reaches both.
  std::atomic<kel::int64> displaced_confirm[2]{};
  // Held by a login while it checks and subscribes: two logins at once subscribe once.
  std::mutex subscribe_mutex;
  std::int32_t system_type = -1;
  std::int32_t profiles_consistent = 1;
  bool connect_with_ua = false;
  bool has_profile = false;  // a key's section was read

 private:
  void ReadSection(const char* section, molra::ConnProfile& profile, bool first);
};

}  // namespace KelComm

namespace molra {

// One request session on one connection; releases itself unless it was handed over.
class KelSession {
 public:
  KelSession() = default;
  KelSession(kel::int64 handle, bool connect_with_ua) : handle_(handle), ua_(connect_with_ua) {}
  // A session that belongs to someone else (a push's session): never released here.
  static KelSession Borrowed(kel::int64 handle, bool connect_with_ua) {
    KelSession s(handle, connect_with_ua);
    s.borrowed_ = true;
    return s;
  }
  ~KelSession() { Release(); }
  KelSession(KelSession&& o) noexcept : handle_(o.handle_), ua_(o.ua_), borrowed_(o.borrowed_) {
    o.handle_ = 0;
  }
  KelSession& operator=(KelSession&& o) noexcept;
  KelSession(const KelSession&) = delete;
  KelSession& operator=(const KelSession&) = delete;

  kel::int64 handle() const { return handle_; }
  explicit operator bool() const { return handle_ != 0; }
  bool connect_with_ua() const { return ua_; }
  // Calls Kel_ReleaseSession unless the session is borrowed or empty; never throws.
  void Release() noexcept;
  // Hands the session to the transport (a reply handler releases it); returns the handle.
  kel::int64 Detach() noexcept {
    kel::int64 h = handle_;
    handle_ = 0;
    return h;
  }

 private:
  kel::int64 handle_ = 0;
  bool ua_ = false;
  bool borrowed_ = false;
};

// Sessions on one role of a set. An empty session means failure, with the reason staged.
KelSession AllocManagementSession(KelComm::KelConn& conn);
KelSession AllocTradeSession(KelComm::KelConn& conn);
KelSession AllocSubscribeSession(KelComm::KelConn& conn);
KelSession AllocQuerySession(KelComm::KelConn& conn);

// Starts a key/value request; a six-character code goes out as "H" + code when the set
// connects with UA.
bool CreateHead(const KelSession& session, const char* code);
// One answer field as text (any length); the answer's error text.
std::string GetItemString(kel::int64 session, kel::int32 id, kel::int32 row);
std::string GetErrorString(kel::int64 session);

class ConnPool {
 public:
  ConnPool();
  ~ConnPool();

  // Finds the customer's set or builds and connects one from `key`; empty on failure with
  // the reason staged.
  std::shared_ptr<KelComm::KelConn> GetConnection(const std::string& khh, const std::string& key);
  // The customer's set as it stands in the map (no check, nothing staged); empty if none.
  std::shared_ptr<KelComm::KelConn> FindConnection(const std::string& khh);
  bool ReleaseConnection(const std::string& khh);
  // Closes every set (tear-down).
  void CloseAll();
  // Drops every set from the map.
  void Clear();
  TimerService& Timer() { return *timer_; }

 private:
  std::mutex mutex_;
  std::map<std::string, std::shared_ptr<KelComm::KelConn>> sets_;
  std::unique_ptr<TimerService> timer_;
};

// The live pool; null before SECMOLRA_Init and after SECMOLRA_Exit.
ConnPool* Pool();
bool CreateConnPool();
// Withdraws the pool (Pool() is null from here on), closes every set, stops the timer thread
// and empties it. The emptied object is kept, not freed: a host thread still inside a call
// finishes on an empty pool and fails cleanly instead of using freed memory.
bool TearDownConnPool();

}  // namespace molra
