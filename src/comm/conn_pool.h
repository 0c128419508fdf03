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
#include "core/status.h"

namespace molra {
class TimerService;
}

namespace KelComm {

// One customer's connection set: management, trade, subscribe and query connections opened
// from one connection key of molra.ini.
class KelConn : public std::enable_shared_from_this<KelConn> {
 public:
  // Reads the key's section, and the system type and ConnWithUA of the backup section it
  // names; each positive system type becomes the transport's default.
  explicit KelConn(std::string key);
  // Deregisters the event handler and closes whatever is still open.
  ~KelConn();
  KelConn(const KelConn&) = delete;
  KelConn& operator=(const KelConn&) = delete;

  // Opens the four connections; on failure the connection manager's reason (code 0).
  molra::Status Connect(const char* khh);
  // Tear-down: deregisters events, cancels the subscriptions, closes everything.
  void Close();
  // Registered with Kel_SetConnEvent for each of the four handles; ctx is the set. Events
  // for a set that is closed or gone are ignored (the set must be owned by a shared_ptr).
  static void on_conn_event(kel::int64 handle, kel::int32 event, void* ctx);

  // Takes the subscription ids for cancelling and clears them, so that the customer's next
  // login subscribes again: the confirmation and match ids, then the confirmation id kept
  // apart when the match subscription took its place.
  std::vector<kel::int64> TakeSubscriptions();

  const std::string key;
  molra::ConnProfile profile{};
  std::int32_t system_type = -1;
  bool connect_with_ua = false;
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

  // The customer's trade-message subscriptions: written by a login, read and cleared on
  // transport threads. With StructPushMsg the match subscription takes the confirmation's
  // place; the confirmation id it replaced is kept apart, so that cancelling reaches both.
  struct Subscriptions {
    std::atomic<kel::int64> confirm{0};
    std::atomic<kel::int64> match{0};
    std::atomic<kel::int64> displaced_confirm{0};
    std::mutex mutex;  // held by a login while it checks and subscribes: two logins subscribe once
  } subscriptions;

 private:
  void ReadSection(const char* section, molra::ConnProfile& into);
  bool profiles_consistent_ = true;  // the backup section names the same system type
};

}  // namespace KelComm

namespace molra {

// One request session on one connection; releases itself unless it was handed over.
class KelSession {
 public:
  KelSession() = default;
  KelSession(kel::int64 handle, bool connect_with_ua) : handle_(handle), ua_(connect_with_ua) {}
  ~KelSession() { Release(); }
  KelSession(KelSession&& o) noexcept : handle_(o.handle_), ua_(o.ua_) { o.handle_ = 0; }
  KelSession& operator=(KelSession&& o) noexcept;
  KelSession(const KelSession&) = delete;
  KelSession& operator=(const KelSession&) = delete;

  kel::int64 handle() const { return handle_; }
  explicit operator bool() const { return handle_ != 0; }
  bool connect_with_ua() const { return ua_; }
  // Calls Kel_ReleaseSession unless the session is empty; never throws.
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
};

// A session on one connection of a set, or -202 with the connection manager's reason.
molra::Result<KelSession> AllocManagementSession(KelComm::KelConn& conn);
molra::Result<KelSession> AllocTradeSession(KelComm::KelConn& conn);
molra::Result<KelSession> AllocSubscribeSession(KelComm::KelConn& conn);

// Starts a key/value request; a six-character code goes out as "H" + code when the set
// connects with UA.
bool CreateHead(const KelSession& session, const char* code);
// One answer field as text (any length); the answer's error text.
std::string GetItemString(kel::int64 session, kel::int32 id, kel::int32 row);
std::string GetErrorString(kel::int64 session);

// The checks of a set made before each of its customer's requests: its management, trade and
// subscribe connections up (the query connection is not checked: a set without it still
// serves); the connection manager's reason (code 0) when one is not.
Status CheckConnections(const KelComm::KelConn& set);

// The connection sets, one per customer, and the kit's timer thread. Created by
// SECMOLRA_Init; SECMOLRA_Exit withdraws it from the kit and tears it down (TearDown) but
// never frees it: a host thread still inside a call finishes on an empty pool.
class ConnPool {
 public:
  ConnPool();  // starts the timer thread
  ~ConnPool();

  // The customer's set, or a new one connected from `key`; the connection manager's reason
  // (code 0) when there is none or it is unusable.
  Result<std::shared_ptr<KelComm::KelConn>> GetConnection(const std::string& khh,
                                                          const std::string& key);
  // The customer's set as it stands, or null: no connect, no check.
  std::shared_ptr<KelComm::KelConn> Find(const std::string& khh);
  // Closes every set, stops and joins the timer thread, drops the sets.
  void TearDown();

 private:
  std::mutex mutex_;
  std::map<std::string, std::shared_ptr<KelComm::KelConn>> sets_;
  std::unique_ptr<TimerService> timer_;
};

}  // namespace molra
