// The pool of connection sets, one per customer.
#include "comm/conn_pool.h"

#include "comm/kel_api.h"
#include "comm/timer.h"
#include "core/messages.h"

namespace molra {

namespace {

bool IsUp(kel::int64 handle) { return handle != 0 && kel::api.Kel_IsConnect(handle); }

}  // namespace

Status CheckConnections(const KelComm::KelConn& set) {
  if (!IsUp(set.mgmt_handle)) return Failure{kConnectionFailure, msg::kMgmtInvalid};
  if (!IsUp(set.trade_handle) || !IsUp(set.subscribe_handle)) {
    return Failure{kConnectionFailure, msg::kTradeSubscribeInvalid};
  }
  return Ok();
}

ConnPool::ConnPool() : timer_(std::make_unique<TimerService>()) {}

ConnPool::~ConnPool() = default;

Result<std::shared_ptr<KelComm::KelConn>> ConnPool::GetConnection(const std::string& khh,
                                                                  const std::string& key) {
  // Held across a new set's connect: one slow connect delays every other customer.
  std::lock_guard<std::mutex> lock(mutex_);
  auto it = sets_.find(khh);
  if (it != sets_.end()) {
    // An unusable set stays in the map; the transport may yet bring it back.
    Status usable = CheckConnections(*it->second);
    if (!usable) return usable.TakeFailure();
    return it->second;
  }
  if (key.empty()) return Failure{kConnectionFailure, msg::kNotConnected};
  auto set = std::make_shared<KelComm::KelConn>(key);
  // A set that failed is never kept, so the next request connects again in full.
  Status connected = set->Connect(khh.c_str());
  if (!connected) return connected.TakeFailure();
  sets_.emplace(khh, set);
  return set;
}

std::shared_ptr<KelComm::KelConn> ConnPool::Find(const std::string& khh) {
  std::lock_guard<std::mutex> lock(mutex_);
  auto it = sets_.find(khh);
  return it == sets_.end() ? nullptr : it->second;
}

void ConnPool::TearDown() {
  {
    std::lock_guard<std::mutex> lock(mutex_);
    for (auto& entry : sets_) entry.second->Close();
  }
  timer_->Stop();
  std::lock_guard<std::mutex> lock(mutex_);
  sets_.clear();
}

}  // namespace molra
