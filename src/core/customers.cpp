#include "core/customers.h"

namespace molra {

std::shared_ptr<const CusRecord> CusRegistry::Find(std::int32_t system_type,
                                                   const std::string& khh) const {
  std::lock_guard<std::mutex> lock(records_mutex_);
  auto it = records_.find({system_type, khh});
  return it == records_.end() ? nullptr : it->second;
}

void CusRegistry::Register(std::int32_t system_type, const std::string& khh,
                           std::shared_ptr<const CusRecord> rec) {
  {
    std::lock_guard<std::mutex> lock(records_mutex_);
    records_[{system_type, khh}] = std::move(rec);
  }
  generation_.fetch_add(1, std::memory_order_release);
}

std::string CusRegistry::DefaultKhh(std::int32_t system_type) const {
  std::lock_guard<std::mutex> lock(defaults_mutex_);
  if (system_type == 0) return default_khh_;
  auto it = default_khh_by_type_.find(system_type);
  return it == default_khh_by_type_.end() ? std::string() : it->second;
}

std::shared_ptr<KelComm::KelConn> CusRegistry::DefaultConn(std::int32_t system_type) const {
  std::lock_guard<std::mutex> lock(defaults_mutex_);
  if (system_type == 0) return default_conn_;
  auto it = default_conn_by_type_.find(system_type);
  return it == default_conn_by_type_.end() ? nullptr : it->second;
}

void CusRegistry::SetDefault(std::int32_t system_type, const std::string& khh,
                             std::shared_ptr<KelComm::KelConn> conn) {
  std::lock_guard<std::mutex> lock(defaults_mutex_);
  default_khh_ = khh;
  default_conn_ = conn;
  default_khh_by_type_[system_type] = khh;
  default_conn_by_type_[system_type] = std::move(conn);
}

void CusRegistry::Reset(const std::string& khh) {
  nodes.Set(khh, 0);
  {
    std::lock_guard<std::mutex> lock(records_mutex_);
    records_.erase({kSystemType, khh});
  }
  generation_.fetch_add(1, std::memory_order_release);
  std::lock_guard<std::mutex> lock(defaults_mutex_);
  auto it = default_khh_by_type_.find(kSystemType);
  if (it == default_khh_by_type_.end() || it->second != khh) return;
  it->second.clear();
  default_conn_by_type_[kSystemType] = nullptr;
  if (default_khh_ == khh) {
    default_khh_.clear();
    default_conn_ = nullptr;
  }
}

}  // namespace molra
