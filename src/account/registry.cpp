#include "account/registry.h"

#include <mutex>

#include "comm/conn_pool.h"
#include "core/messages.h"

namespace molra {

std::int32_t CusNodeTable::Get(const std::string& khh) const {
  std::lock_guard<std::mutex> lock(mutex_);
  auto it = map_.find(khh);
  return it == map_.end() ? -1 : it->second;
}

void CusNodeTable::Set(const std::string& khh, std::int32_t node_id) {
  std::lock_guard<std::mutex> lock(mutex_);
  map_[khh] = node_id;
}

std::int64_t CusTokenTable::Get(const std::string& khh) const {
  std::lock_guard<std::mutex> lock(mutex_);
  auto it = map_.find(khh);
  return it == map_.end() ? -1 : it->second;
}

void CusTokenTable::Set(const std::string& khh, std::int64_t token) {
  std::lock_guard<std::mutex> lock(mutex_);
  map_[khh] = token;
}

std::shared_ptr<CusRecord> CusRegistry::Find(std::int32_t system_type, const std::string& khh) const {
  std::lock_guard<std::mutex> lock(records_mutex_);
  auto it = records_.find({system_type, khh});
  return it == records_.end() ? nullptr : it->second;
}

void CusRegistry::Register(std::int32_t system_type, const std::string& khh,
                           std::shared_ptr<CusRecord> rec) {
  std::lock_guard<std::mutex> lock(records_mutex_);
  records_[{system_type, khh}] = std::move(rec);
}

void CusRegistry::Remove(std::int32_t system_type, const std::string& khh) {
  std::lock_guard<std::mutex> lock(records_mutex_);
  records_.erase({system_type, khh});
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

void CusRegistry::ClearDefault(std::int32_t system_type, const std::string& khh) {
  std::lock_guard<std::mutex> lock(defaults_mutex_);
  auto it = default_khh_by_type_.find(system_type);
  if (it == default_khh_by_type_.end() || it->second != khh) return;
  it->second.clear();
  default_conn_by_type_[system_type] = nullptr;
  if (default_khh_ == khh) {
    default_khh_.clear();
    default_conn_ = nullptr;
  }
}

namespace {
CusRegistry* g_registry = nullptr;
CusNodeTable g_nodes;
CusTokenTable g_tokens;
std::once_flag g_registry_once;
}  // namespace

CusRegistry& Registry() {
  CreateCusRegistry();
  return *g_registry;
}
CusNodeTable& NodeTable() { return g_nodes; }
CusTokenTable& TokenTable() { return g_tokens; }

void CreateCusRegistry() {
  // Constructed at most once, also under concurrent callers; lives until unload.
  std::call_once(g_registry_once, [] { g_registry = new CusRegistry(); });
}

std::int64_t ResetCustomer(const std::string& khh) {
  NodeTable().Set(khh, 0);
  Registry().Remove(4, khh);
  Registry().ClearDefault(4, khh);
  // The customer's connection set stays in the pool: a logged-out customer's queries
  // answer -203 "客户未登录".
  return 1;
}

bool FindCustomer(const std::string& khh, Customer& out, ErrorRecord& err) {
  ConnPool* pool = Pool();
  out.conn = pool ? pool->GetConnection(khh, "") : nullptr;
  if (!out.conn) {
    // The staged record carries code 0 for connection failures; callers report it as is.
    err = pool ? GetStagedError() : ErrorRecord{-203, msg::kNotLoggedIn};
    return false;
  }
  out.record = Registry().Find(out.conn->system_type, khh);
  if (!out.record) {
    err = {-203, msg::kNotLoggedIn};
    return false;
  }
  return true;
}

std::int64_t CustomerToken(const Customer& c, const std::string& khh) {
  std::int64_t token = TokenTable().Get(khh);
  if (token >= 1) return token;
  return c.record ? c.record->token : -1;
}

std::int32_t CustomerNodeId(const std::string& khh) { return NodeTable().Get(khh); }

}  // namespace molra
