// The registry of logged-in customers: their login records, the default customer of each
// system type, and the node and token that each customer's requests carry. Each table has
// its own mutex, held for one map operation only; no two are held at once. Every change of
// what a customer's requests read (record, node, token) moves the registry's generation on,
// after the change: a reader that saw a generation may keep what it read under it until the
// generation moves.
#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

namespace KelComm {
class KelConn;  // comm/conn_pool.h
}

namespace molra {

// The only back-office system type the kit accepts.
inline constexpr std::int32_t kSystemType = 4;

// What later requests read of a customer's last successful login. Immutable once
// registered: a new login registers a new record, while requests may still read the old.
struct CusRecord {
  std::int64_t token = -1;
  std::string wtfs;  // the login's entrust method, at most 10 bytes
};

// A value per customer number, absent values read as -1; a change moves `generation` on.
template <typename V>
class KhhTable {
 public:
  explicit KhhTable(std::atomic<std::uint64_t>& generation) : generation_(generation) {}
  V Get(const std::string& khh) const {
    std::lock_guard<std::mutex> lock(mutex_);
    auto it = map_.find(khh);
    return it == map_.end() ? V{-1} : it->second;
  }
  void Set(const std::string& khh, V value) {
    {
      std::lock_guard<std::mutex> lock(mutex_);
      map_[khh] = value;
    }
    generation_.fetch_add(1, std::memory_order_release);
  }

 private:
  std::atomic<std::uint64_t>& generation_;
  mutable std::mutex mutex_;
  std::map<std::string, V> map_;
};

class CusRegistry {
  std::atomic<std::uint64_t> generation_{1};  // first: the tables below hold it

 public:
  // Moves on after every change of a record, node or token; never 0.
  std::uint64_t Generation() const { return generation_.load(std::memory_order_acquire); }

  // Records keyed by (system type, KHH).
  std::shared_ptr<const CusRecord> Find(std::int32_t system_type, const std::string& khh) const;
  void Register(std::int32_t system_type, const std::string& khh,
                std::shared_ptr<const CusRecord> rec);

  // The default customer. Type 0 stands for the last customer that logged in.
  std::string DefaultKhh(std::int32_t system_type) const;
  std::shared_ptr<KelComm::KelConn> DefaultConn(std::int32_t system_type) const;
  void SetDefault(std::int32_t system_type, const std::string& khh,
                  std::shared_ptr<KelComm::KelConn> conn);

  // Takes a customer back to not logged in: node 0, no record, no longer the default. Its
  // connection set stays in the pool (its later requests answer "not logged in").
  void Reset(const std::string& khh);

  KhhTable<std::int32_t> nodes{generation_};   // the trade node of a customer's requests
  KhhTable<std::int64_t> tokens{generation_};  // a host's token (SECMOLRA_SetCusToken), preferred
                                               // to the login's

 private:
  mutable std::mutex records_mutex_;
  std::map<std::pair<std::int32_t, std::string>, std::shared_ptr<const CusRecord>> records_;
  mutable std::mutex defaults_mutex_;
  std::string default_khh_;
  std::shared_ptr<KelComm::KelConn> default_conn_;
  std::map<std::int32_t, std::string> default_khh_by_type_;
  std::map<std::int32_t, std::shared_ptr<KelComm::KelConn>> default_conn_by_type_;
};

}  // namespace molra
