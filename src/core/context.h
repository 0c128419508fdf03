// The kit's state, in two parts with two lifetimes.
//
// HostSettings: what the host sets with the setters of the interface (paths, node, entrust
// method, callbacks), before or after SECMOLRA_Init. It exists from the library's load to
// the process's end.
//
// Kit: the running kit. It owns what a trading session needs: the push settings read from
// molra.ini, the connection pool with its timer thread, the customer registry, the
// reference-table cursors, the measured server clock and the request counter. SECMOLRA_Init
// creates it once (a later SECMOLRA_Init finds it and does nothing); SECMOLRA_Exit withdraws
// its transport side (the pool, its sets and timer, the cursors), after which calls fail as
// they do without a pool, while the registry and the clock stay readable. It is never freed:
// a transport thread may reach it until the process ends.
#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "core/customers.h"
#include "secmolra.h"

namespace molra {

class ConnPool;  // comm/conn_pool.h
namespace query {
struct Cursor;  // query/query_cursor.cpp
}

class HostSettings {
 public:
  std::string ProfilePath() const { return Get(profile_path_); }
  std::string LogPath() const { return Get(log_path_); }
  std::string Node() const { return Get(node_); }
  std::string Wtfs() const { return Get(wtfs_); }
  void SetProfilePath(std::string v) { Set(profile_path_, std::move(v)); }
  void SetLogPath(std::string v) { Set(log_path_, std::move(v)); }
  void SetNode(std::string v) { Set(node_, std::move(v)); }
  void SetWtfs(std::string v) { Set(wtfs_, std::move(v)); }

  std::atomic<SECMOLRA_MsgCallback> msg_callback{nullptr};
  std::atomic<SECMOLRA_FuncCallback> func_callback{nullptr};
  std::atomic<SECMOLRA_ConnEventCallback> conn_event_callback{nullptr};

 private:
  std::string Get(const std::string& s) const {
    std::lock_guard<std::mutex> lock(mutex_);
    return s;
  }
  void Set(std::string& s, std::string v) {
    std::lock_guard<std::mutex> lock(mutex_);
    s = std::move(v);
  }
  mutable std::mutex mutex_;
  std::string profile_path_ = "./";
  std::string log_path_;
  std::string node_;
  std::string wtfs_;
};

HostSettings& Host();

// The GLOBAL section of molra.ini: how pushes are subscribed and recognised.
struct PushSettings {
  bool struct_push_msg = false;
  std::string confirm_msg_func = "DM0003";
  std::string report_msg_func = "DM0004";
};

// The back end's clock as the last login measured it; written without a lock, readers see
// the value before or after.
struct ServerClock {
  std::atomic<std::int64_t> system_date{0};  // YYYYMMDD as the back end gave it; 0 until measured
  std::atomic<std::int64_t> offset_ms{0};    // to subtract from the local reading; 0 until measured
};

// Objects the host holds by number (the reference-table cursors): numbers from 1, never
// reused. One mutex, held for one map operation.
template <typename T>
class NumberedTable {
 public:
  std::int64_t Add(std::shared_ptr<T> item) {
    std::lock_guard<std::mutex> lock(mutex_);
    items_[++last_] = std::move(item);
    return last_;
  }
  std::shared_ptr<T> Find(std::int64_t id) const {
    std::lock_guard<std::mutex> lock(mutex_);
    auto it = items_.find(id);
    return it == items_.end() ? nullptr : it->second;
  }
  bool Remove(std::int64_t id) {
    std::lock_guard<std::mutex> lock(mutex_);
    return items_.erase(id) == 1;
  }
  // Empties the table without destroying its objects (their sessions belong to a transport
  // that is going away): they are kept, never released.
  void Abandon() {
    std::lock_guard<std::mutex> lock(mutex_);
    for (auto& entry : items_) abandoned_.push_back(std::move(entry.second));
    items_.clear();
  }

 private:
  mutable std::mutex mutex_;
  std::int64_t last_ = 0;
  std::map<std::int64_t, std::shared_ptr<T>> items_;
  std::vector<std::shared_ptr<T>> abandoned_;
};

class Kit {
 public:
  Kit(PushSettings push_settings, ConnPool* pool) : push(std::move(push_settings)), pool_(pool) {}
  Kit(const Kit&) = delete;
  Kit& operator=(const Kit&) = delete;

  const PushSettings push;
  CusRegistry customers;
  NumberedTable<query::Cursor> cursors;
  ServerClock clock;
  std::atomic<std::uint32_t> request_counter{0};  // never reset: one kit per process

  // The pool, or null once withdrawn.
  ConnPool* pool() const { return pool_.load(std::memory_order_acquire); }
  // SECMOLRA_Exit: takes the pool out of the kit (null the second time). The pool is kept
  // here, never freed, for the callers that found it before.
  ConnPool* WithdrawPool() {
    ConnPool* pool = pool_.exchange(nullptr, std::memory_order_acq_rel);
    if (pool != nullptr) withdrawn_ = pool;
    return pool;
  }

 private:
  std::atomic<ConnPool*> pool_;
  ConnPool* withdrawn_ = nullptr;
};

// The running kit: null before the first successful SECMOLRA_Init, the same kit after.
Kit* CurrentKit();
// SECMOLRA_Init, once.
void PublishKit(Kit* kit);

}  // namespace molra
