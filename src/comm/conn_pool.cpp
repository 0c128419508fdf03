// The pool of connection sets, one per customer, and its lifetime.
#include "comm/conn_pool.h"

#include <atomic>
#include <memory>
#include <vector>

#include "core/errors.h"
#include "comm/kel_api.h"
#include "comm/timer.h"
#include "core/messages.h"

namespace molra {


namespace {

bool IsUp(kel::int64 handle) { return handle != 0 && kel::api.Kel_IsConnect(handle); }

// The query connection is not checked: a set without it still serves.
bool Usable(const KelComm::KelConn& set) {
  if (!IsUp(set.mgmt_handle)) {
    StageError(0, msg::kMgmtInvalid);
    return false;
  }
  if (!IsUp(set.trade_handle) || !IsUp(set.subscribe_handle)) {
    StageError(0, msg::kTradeSubscribeInvalid);
    return false;
  }
  return true;
}

}  // namespace

ConnPool::ConnPool() : timer_(std::make_unique<TimerService>()) {}

ConnPool::~ConnPool() = default;

std::shared_ptr<KelComm::KelConn> ConnPool::GetConnection(const std::string& khh,
                                                          const std::string& key) {
  // Held across a new set's connect: one slow connect delays every other customer.
  std::lock_guard<std::mutex> lock(mutex_);
  auto it = sets_.find(khh);
  if (it != sets_.end()) {
    // An unusable set stays in the map; the transport may yet bring it back.
    return Usable(*it->second) ? it->second : nullptr;
  }
  if (key.empty()) {
    StageError(0, msg::kNotConnected);
    return nullptr;
  }
  auto set = std::make_shared<KelComm::KelConn>(key, 0);
  // A set that failed is never kept, so the next request connects again in full.
  if (!set->Connect(khh.c_str())) return nullptr;
  sets_.emplace(khh, set);
  return set;
}

std::shared_ptr<KelComm::KelConn> ConnPool::FindConnection(const std::string& khh) {
  std::lock_guard<std::mutex> lock(mutex_);
  auto it = sets_.find(khh);
  return it != sets_.end() ? it->second : nullptr;
}

bool ConnPool::ReleaseConnection(const std::string& khh) {
  std::lock_guard<std::mutex> lock(mutex_);
  return sets_.erase(khh) > 0;
}

void ConnPool::CloseAll() {
  std::lock_guard<std::mutex> lock(mutex_);
  for (auto& entry : sets_) entry.second->Close();
}

namespace {
// Never destroyed at process exit: a pool still alive then would call into a transport that
// may be gone already. SECMOLRA_Exit withdraws and empties it (TearDownConnPool).
std::atomic<ConnPool*> g_pool{nullptr};
// Pools withdrawn by SECMOLRA_Exit, kept reachable. SECMOLRA_Init does not start the kit
// again after an exit, so there is at most one.
std::vector<std::unique_ptr<ConnPool>>* g_withdrawn = new std::vector<std::unique_ptr<ConnPool>>();
}  // namespace

ConnPool* Pool() { return g_pool.load(std::memory_order_acquire); }

bool CreateConnPool() {
  if (Pool() != nullptr) return true;
  try {
    g_pool.store(new ConnPool(), std::memory_order_release);  // starts the timer thread
  } catch (...) {
    return false;  // out of memory or no thread: SECMOLRA_Init reports it
  }
  return true;
}

bool TearDownConnPool() {
  ConnPool* pool = g_pool.exchange(nullptr, std::memory_order_acq_rel);
  if (pool == nullptr) return true;
  try {
    g_withdrawn->emplace_back(pool);
  } catch (...) {
    // Out of memory: the pool is left unreachable rather than freed under a caller.
  }
  pool->CloseAll();
  pool->Timer().Stop();
  pool->Clear();
  return true;
}

void ConnPool::Clear() {
  std::lock_guard<std::mutex> lock(mutex_);
  sets_.clear();
}

}  // namespace molra
