// A customer's connection set: reading its profiles, connecting, closing.
#include <fmt/format.h>

#include "api/last_error.h"
#include "comm/conn_internal.h"
#include "comm/conn_messages.h"
#include "comm/kel_api.h"
#include "config/conn_profile.h"
#include "log/log.h"

namespace KelComm {

using namespace roles;
namespace msg = molra::connmsg;

namespace {
constexpr kel::int32 kConnectTimeoutSeconds = 10;
}  // namespace

KelConn::KelConn(std::string k, std::uint32_t kd) : key(std::move(k)), kind(kd) {
  if (key.empty()) return;
  has_profile = true;
  ReadSection(key.c_str(), primary, true);
  std::string backup_key = FieldText(primary.backup);
  if (!backup_key.empty()) ReadSection(backup_key.c_str(), backup, false);
}

void KelConn::ReadSection(const char* section, molra::ConnProfile& profile, bool first) {
  molra::ConnSectionInfo info = molra::ReadConnSection(section, profile);
  auto type = static_cast<std::int32_t>(info.system_type);
  if (!first && type != system_type) profiles_consistent = -1;
  system_type = type;
  if (type > 0) kel::api.Kel_SetDefaultSystemId(type);
  connect_with_ua = connect_with_ua || info.connect_with_ua;
}

KelConn::~KelConn() {
  StopEvents(*this);
  // A set dropped while connections are open (a failed connect, a released customer)
  // closes them: nobody else could.
  if (kel::api.Kel_Close == nullptr) return;
  for (Role r : kEventOrder) {
    kel::int64 handle = this->*kRoles[r].handle;
    if (handle != 0) kel::api.Kel_SetConnEvent(handle, nullptr, nullptr);
  }
  for (Role r : kOpenOrder) {
    std::atomic<kel::int64>& handle = this->*kRoles[r].handle;
    if (handle != 0) kel::api.Kel_Close(handle);
    handle = 0;
  }
}

const molra::ConnProfile* KelConn::ActiveProfile() const {
  return has_profile ? &Active() : nullptr;
}

bool KelConn::Connect(const char* khh) {
  if (khh != nullptr) customer = khh;
  if (profiles_consistent == -1) {
    molra::StageError(0, msg::kInconsistentSystemTypes);
    return false;
  }
  const molra::ConnProfile& p = Active();
  for (Role r : kStaleCloseOrder) {
    std::atomic<kel::int64>& handle = this->*kRoles[r].handle;
    if (handle != 0 && kel::api.Kel_IsConnect(handle)) {
      kel::api.Kel_Close(handle);
      handle = 0;
    }
  }
  // Compression and encryption of the transport are always off.
  kel::api.Kel_SetParamEx("kelapi-nozip", "on");
  kel::api.Kel_SetParamEx("kelapi-nocrypt", "on");
  kel::api.Kel_SetAppInfo("molra", "");
  std::string cert = FieldText(p.cert_file);
  if (!cert.empty()) kel::api.Kel_SetCertFile(cert.c_str(), FieldText(p.cert_pwd).c_str(), "", "", 1);

  const std::string user = FieldText(p.auth_name);
  const std::string pwd = FieldText(p.auth_pwd);
  for (Role r : kOpenOrder) {
    const RoleInfo& role = kRoles[r];
    const std::string addr = FieldText(p.*role.addr);
    kel::int64 handle = kel::api.Kel_Connect(addr.c_str(), user.c_str(), pwd.c_str(),
                                             kConnectTimeoutSeconds);
    if (handle == 0) {
      char text[128] = {};
      kel::int32 len = sizeof text;
      kel::api.Kel_GetLastErrMsg(text, &len);
      molra::StageError(0, fmt::format(msg::kConnectFailed, FieldText(text), key, addr));
      return false;
    }
    this->*role.handle = handle;
    MOLRA_LOG_INFO(fmt::runtime(role.connected), key, addr);
    if (role.bind_customer && BindsCustomer(p) &&
        !kel::api.Kel_SetCustomerForBindThread(handle, customer.c_str())) {
      molra::StageError(0, fmt::format(msg::kBindFailed, key, addr, customer));
      return false;
    }
  }
  AdmitEvents(*this);
  for (Role r : kEventOrder) {
    kel::api.Kel_SetConnEvent(this->*kRoles[r].handle, &KelConn::on_conn_event, this);
  }
  return true;
}

void KelConn::Close() {
  for (Role r : kEventOrder) kel::api.Kel_SetConnEvent(this->*kRoles[r].handle, nullptr, nullptr);
  StopEvents(*this);  // an event already on its way finds the set closed
  for (Role r : {kMgmt, kTrade, kQuery}) {
    kel::api.Kel_Close(this->*kRoles[r].handle);
    this->*kRoles[r].handle = 0;
  }
  if (subscribe_handle != 0) {
    for (kel::int64 id : TakeSubscriptions(ActiveGroup())) Unsubscribe(subscribe_handle, {id});
  }
  kel::api.Kel_Close(subscribe_handle);
  subscribe_handle = 0;
}

std::vector<kel::int64> KelConn::TakeSubscriptions(int group) {
  std::vector<kel::int64> ids{slots[group][kConfirmSlot].exchange(0),
                              slots[group][kReportSlot].exchange(0)};
  const kel::int64 displaced = displaced_confirm[group].exchange(0);
  if (displaced != 0 && displaced != ids.front()) ids.push_back(displaced);
  return ids;
}

namespace roles {

void Unsubscribe(kel::int64 conn, const std::vector<kel::int64>& ids) {
  molra::KelSession session(kel::api.Kel_AllocateSession(conn), false);
  if (!session) return;
  for (kel::int64 id : ids) kel::api.Kel_Unsubscribe(session.handle(), id);
}

}  // namespace roles

}  // namespace KelComm
