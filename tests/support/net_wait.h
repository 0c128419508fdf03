// Waiting, within a bound, for what another thread or process does: connection events and
// pushes of the simulated transport, and any condition.
#pragma once

#include <chrono>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "support/sim_api.h"

namespace molra::test {

// Polls `done` until it holds or `seconds` have passed; whether it held.
template <typename F>
bool Await(F done, int seconds = 10) {
  auto until = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
  while (!done()) {
    if (std::chrono::steady_clock::now() > until) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  return true;
}

// Connection events a handler (Kel_SetConnEvent with this as context) received. It stops
// watching when it goes, after the delivery under way.
class ConnEvents {
 public:
  ConnEvents() = default;
  ~ConnEvents() {
    for (kel::int64 conn : watched_) SimKel().Kel_SetConnEvent(conn, nullptr, nullptr);
    SIM_FN(KelSim_WaitIdle)();
  }
  ConnEvents(const ConnEvents&) = delete;
  ConnEvents& operator=(const ConnEvents&) = delete;
  static void Fn(kel::int64 conn, kel::int32 event, void* ctx) {
    auto* self = static_cast<ConnEvents*>(ctx);
    std::lock_guard<std::mutex> lock(self->m_);
    self->events_.emplace_back(conn, event);
  }
  void Watch(kel::int64 conn) {
    watched_.push_back(conn);
    SimKel().Kel_SetConnEvent(conn, &Fn, this);
  }
  // How many times conn received event.
  int Count(kel::int64 conn, kel::int32 event) {
    std::lock_guard<std::mutex> lock(m_);
    int n = 0;
    for (const auto& [c, e] : events_) n += c == conn && e == event;
    return n;
  }
  bool Await(kel::int64 conn, kel::int32 event, int times = 1) {
    return molra::test::Await([&] { return Count(conn, event) >= times; });
  }

 private:
  std::mutex m_;
  std::vector<std::pair<kel::int64, kel::int32>> events_;
  std::vector<kel::int64> watched_;
};

// Records pushed to the subscriptions it made. They end when it goes, after the delivery
// under way.
class PushLog {
 public:
  PushLog() = default;
  ~PushLog() {
    for (kel::int64 id : subs_) SimKel().Kel_Unsubscribe(0, id);
    SIM_FN(KelSim_WaitIdle)();
  }
  PushLog(const PushLog&) = delete;
  PushLog& operator=(const PushLog&) = delete;
  static bool Fn(void* ctx, kel::int64 session) {
    char buf[512];
    kel::int32 len = sizeof buf;
    if (!SimKel().Kel_GetItemBuf(session, 0, buf, &len, 0)) return false;
    auto* self = static_cast<PushLog*>(ctx);
    std::lock_guard<std::mutex> lock(self->m_);
    self->records_.emplace_back(buf, static_cast<std::size_t>(len));
    return true;
  }
  // Subscribes conn to the confirmations and match reports of khh.
  bool Subscribe(kel::int64 conn, const std::string& khh) {
    const kel::Api& k = SimKel();
    for (const char* code : {"DM0003", "DM0004"}) {
      kel::int64 s = k.Kel_AllocateSession(conn);
      k.Kel_CreateHead(s, code);
      std::string cond = "getstring(605)=='" + khh + "'";
      k.Kel_SetSubsCondi(s, cond.c_str());
      kel::int64 id = 0;
      bool ok = k.Kel_Subscribe(s, &id, &Fn, this);
      k.Kel_ReleaseSession(s);
      if (!ok) return false;
      subs_.push_back(id);
    }
    return true;
  }
  std::vector<std::string> Records() {
    std::lock_guard<std::mutex> lock(m_);
    return records_;
  }
  std::size_t Size() {
    std::lock_guard<std::mutex> lock(m_);
    return records_.size();
  }
  bool Await(std::size_t n) {
    return molra::test::Await([&] { return Size() >= n; });
  }

 private:
  std::mutex m_;
  std::vector<std::string> records_;
  std::vector<kel::int64> subs_;
};

}  // namespace molra::test
