// A customer's connection set: reading its profiles, connecting, closing.
#include <fmt/format.h>

#include "comm/conn_internal.h"
#include "comm/kel_api.h"
#include "config/conn_profile.h"
#include "core/log.h"
#include "core/messages.h"

namespace KelComm {

using namespace roles;

namespace {
constexpr kel::int32 kConnectTimeoutSeconds = 10;
}  // namespace

KelConn::KelConn(std::string k) : key(std::move(k)) {
  ReadSection(key.c_str(), profile);
  const std::string backup_key = FieldText(profile.backup);
  if (backup_key.empty()) return;
  // The backup section counts for its system type and ConnWithUA only: the set always
  // connects with the key's own profile.
  molra::ConnProfile backup;
  const std::int32_t primary_type = system_type;
  ReadSection(backup_key.c_str(), backup);
  profiles_consistent_ = system_type == primary_type;
}

void KelConn::ReadSection(const char* section, molra::ConnProfile& into) {
  molra::ConnSectionInfo info = molra::ReadConnSection(section, into);
  system_type = static_cast<std::int32_t>(info.system_type);
  if (system_type > 0) kel::api.Kel_SetDefaultSystemId(system_type);
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

molra::Status KelConn::Connect(const char* khh) {
  if (khh != nullptr) customer = khh;
  if (!profiles_consistent_) {
    return molra::Failure{molra::kConnectionFailure, msg::kInconsistentSystemTypes};
  }
  const molra::ConnProfile& p = profile;
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
  if (!cert.empty())
    kel::api.Kel_SetCertFile(cert.c_str(), FieldText(p.cert_pwd).c_str(), "", "", 1);

  const std::string user = FieldText(p.auth_name);
  const std::string pwd = FieldText(p.auth_pwd);
  for (Role r : kOpenOrder) {
    const RoleInfo& role = kRoles[r];
    const std::string addr = FieldText(p.*role.addr);
    kel::int64 handle =
        kel::api.Kel_Connect(addr.c_str(), user.c_str(), pwd.c_str(), kConnectTimeoutSeconds);
    if (handle == 0) {
      char text[128] = {};
      kel::int32 len = sizeof text;
      kel::api.Kel_GetLastErrMsg(text, &len);
      return molra::Failure{molra::kConnectionFailure,
                            fmt::format(msg::kConnectFailed, FieldText(text), key, addr)};
    }
    this->*role.handle = handle;
    MOLRA_LOG_INFO(fmt::runtime(role.connected), key, addr);
    if (role.bind_customer && BindsCustomer(p) &&
        !kel::api.Kel_SetCustomerForBindThread(handle, customer.c_str())) {
      return molra::Failure{molra::kConnectionFailure,
                            fmt::format(msg::kBindFailed, key, addr, customer)};
    }
  }
  AdmitEvents(*this);
  for (Role r : kEventOrder) {
    kel::api.Kel_SetConnEvent(this->*kRoles[r].handle, &KelConn::on_conn_event, this);
  }
  return molra::Ok();
}

void KelConn::Close() {
  for (Role r : kEventOrder) kel::api.Kel_SetConnEvent(this->*kRoles[r].handle, nullptr, nullptr);
  StopEvents(*this);  // an event already on its way finds the set closed
  for (Role r : {kMgmt, kTrade, kQuery}) {
    kel::api.Kel_Close(this->*kRoles[r].handle);
    this->*kRoles[r].handle = 0;
  }
  if (subscribe_handle != 0) {
    for (kel::int64 id : TakeSubscriptions()) Unsubscribe(subscribe_handle, {id});
  }
  kel::api.Kel_Close(subscribe_handle);
  subscribe_handle = 0;
}

std::vector<kel::int64> KelConn::TakeSubscriptions() {
  std::vector<kel::int64> ids{subscriptions.confirm.exchange(0), subscriptions.match.exchange(0)};
  const kel::int64 displaced = subscriptions.displaced_confirm.exchange(0);
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
