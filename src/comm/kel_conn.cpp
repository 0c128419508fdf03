// Placeholder until the connection manager lands.
#include "comm/conn_pool.h"
#include "api/last_error.h"

namespace KelComm {
KelConn::KelConn(std::string k, std::uint32_t kd) : key(std::move(k)), kind(kd) {}
KelConn::~KelConn() = default;
bool KelConn::Connect(const char*) { return false; }
void KelConn::Close() {}
void KelConn::on_conn_event(kel::int64, kel::int32, void*) {}
const molra::ConnProfile* KelConn::ActiveProfile() const { return has_profile ? &primary : nullptr; }
}  // namespace KelComm

namespace molra {
std::shared_ptr<KelComm::KelConn> ConnPool::GetConnection(const std::string&, const std::string&) {
  StageError(0, "客户未连接登录，无法获取连接");
  return nullptr;
}
bool ConnPool::ReleaseConnection(const std::string&) { return true; }
void ConnPool::CloseAll() {}
KelSession AllocManagementSession(KelComm::KelConn&) { return {}; }
KelSession AllocTradeSession(KelComm::KelConn&) { return {}; }
KelSession AllocSubscribeSession(KelComm::KelConn&) { return {}; }
KelSession AllocQuerySession(KelComm::KelConn&) { return {}; }
bool CreateHead(const KelSession&, const char*) { return false; }
std::string GetItemString(kel::int64, kel::int32, kel::int32) { return {}; }
std::string GetErrorString(kel::int64) { return {}; }
}  // namespace molra
