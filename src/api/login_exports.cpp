// Login, logout, token and node exports, the node-list query and the trade date.
#include <fmt/format.h>

#include <memory>
#include <string>
#include <vector>

#include "account/account_info.h"
#include "account/server_clock.h"
#include "comm/conn_pool.h"
#include "comm/kv_request.h"
#include "config/ini_file.h"
#include "core/context.h"
#include "core/errors.h"
#include "core/guard.h"
#include "core/log.h"
#include "core/messages.h"
#include "core/text.h"
#include "secmolra.h"

namespace molra {
namespace {

constexpr std::int32_t kTradeDateTimeoutSeconds = 2;

// The customer's connection set for a key, after the configuration checks that login and the
// node-list query share (a login first takes the customer back to not logged in). Failures
// name no function: the export's own.
Result<std::shared_ptr<KelComm::KelConn>> OpenCustomerSet(const std::string& key,
                                                          const std::string& khh,
                                                          bool reset_customer) {
  IniFile ini;
  const std::string path = ConfigFilePath();
  if (!ini.Load(path)) {
    return Failure{SECMOLRA_ERR_CONFIG, fmt::format(fmt::runtime(msg::kConfigUnreadable), path)};
  }
  Kit* kit = CurrentKit();
  if (reset_customer && kit != nullptr) kit->customers.Reset(khh);
  if (ini.GetLong(key.c_str(), "SystemType", kSystemType) != kSystemType) {
    return Failure{SECMOLRA_ERR_SYSTEM_TYPE, msg::kUnknownSystemType};
  }
  ConnPool* pool = kit != nullptr ? kit->pool() : nullptr;
  if (pool == nullptr) return Failure{SECMOLRA_ERR_POOL, msg::kPoolNotCreated};
  return pool->GetConnection(khh, key);
}

// The login on the customer's set; once logged in, the server clock is measured (its
// failure is recorded, the login stands). A login that ends with code 0, a token of 0 or a
// refusal of code 0, is -220.
Result<std::int64_t> LogIn(const char* key, const std::string& khh, CusLoginInfo& info) {
  Result<std::shared_ptr<KelComm::KelConn>> set = OpenCustomerSet(key, khh, true);
  if (!set) return set.TakeFailure();
  Kit& kit = *CurrentKit();
  Result<std::int64_t> token = AccountInfo::Login(kit, *set, info);
  if (!token) {
    if (token.failure().code != 0) return token;
    Report(token.failure(), nullptr);  // recorded with its code 0, answered as -220
    return SECMOLRA_ERR_LOGIN_ZERO;
  }
  if (Status clock = MeasureServerTime(&kit); !clock) Report(clock.failure(), nullptr);
  return *token == 0 ? SECMOLRA_ERR_LOGIN_ZERO : *token;
}

Result<std::int64_t> TradeLogin(const char* key, const char* khh, const char* password) {
  if (key == nullptr || khh == nullptr || password == nullptr) return IllegalArgument();
  // An empty password passes here on purpose: the login itself refuses it.
  if (*key == '\0' || *khh == '\0') return IllegalArgument(msg::kLoginArgsEmpty);
  MOLRA_LOG_INFO("{} lpKeyName:{} khh:{}", "SECMOLRA_TradeLogin", key, khh);
  CusLoginInfo info{};
  info.NodeID = -1;
  info.Token = -1;
  CopyField(info.KHH, khh);
  CopyField(info.Password, password);
  return DropAccount(LogIn(key, khh, info), &info);
}

Result<std::int64_t> TradeLoginEx(const char* key, CusLoginInfo* info) {
  if (key == nullptr || info == nullptr) return IllegalArgument();
  const std::string khh = FieldText(info->KHH);
  if (*key == '\0' || khh.empty()) return IllegalArgument(msg::kLoginArgsEmpty);
  MOLRA_LOG_INFO("{} lpKeyName:{} khh:{} tradenodeID:{} nodeinfo:{}", "SECMOLRA_TradeLoginEx", key,
                 khh, info->NodeID, FieldText(info->Node));
  return LogIn(key, khh, *info);
}

Result<std::int64_t> QueryCusNodeinfo(const char* key, const char* khh,
                                      std::vector<CusNodeInfo>& list) {
  if (khh == nullptr) return IllegalArgument();
  // An empty (or null) key reads no section: the customer's existing set is used.
  key = LogText(key);
  MOLRA_LOG_INFO("{} lpKeyName:{} khh:{}", "SECMOLRA_QueryCusNodeinfo", key, khh);
  Result<std::shared_ptr<KelComm::KelConn>> set = OpenCustomerSet(key, khh, false);
  if (!set) return set.TakeFailure();
  return AccountInfo::AcctManage::GetAccountJDBH(khh, **set, list, 1);
}

// Asked on the default customer's management connection, with a two-second time-out.
Result<std::int64_t> TradeDate() {
  constexpr const char* kName = "GetTradeDate";
  Kit* kit = CurrentKit();
  std::shared_ptr<KelComm::KelConn> conn = kit != nullptr ? kit->customers.DefaultConn(0) : nullptr;
  if (!conn) return Failure{kConnectionFailure, msg::kNotConnected, kName};
  Result<KelSession> session = AllocManagementSession(*conn);
  if (!session) return session.TakeFailure().At(kName);
  Result<std::int64_t> date = AskTradeDate(
      std::move(*session), {ReqField::Timeout(kTradeDateTimeoutSeconds)}, kPositiveCode);
  if (!date) return date.TakeFailure().At(kName);
  return date;
}

}  // namespace
}  // namespace molra

using namespace molra;

extern "C" {

SECMOLRA_API int64_t SECMOLRA_TradeLogin(const char* lpKeyName, const char* lpKhh,
                                         const char* password) {
  return Export(__func__, [&] { return TradeLogin(lpKeyName, lpKhh, password); });
}

SECMOLRA_API int64_t SECMOLRA_TradeLoginEx(const char* lpKeyName, CusLoginInfo* info) {
  return Export(__func__, [&] { return TradeLoginEx(lpKeyName, info); });
}

SECMOLRA_API int64_t SECMOLRA_TradeLogout(const char* lpKhh) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    if (lpKhh == nullptr) return Report(IllegalArgument(), "SECMOLRA_TradeLogout");
    if (*lpKhh == '\0') return Report(IllegalArgument(msg::kKhhEmpty), "SECMOLRA_TradeLogout");
    MOLRA_LOG_INFO("{} khh:{} ", "SECMOLRA_TradeLogout", lpKhh);
    if (Kit* kit = CurrentKit()) kit->customers.Reset(lpKhh);
    return 1;
  });
}

// Before SECMOLRA_Init there is no registry to keep them: logged, and true as always.
SECMOLRA_API bool SECMOLRA_SetCusToken(const char* lpKhh, int64_t token) {
  return Guard(__func__, false, [&]() -> bool {
    Kit* kit = CurrentKit();
    if (lpKhh != nullptr && kit != nullptr) kit->customers.tokens.Set(lpKhh, token);
    MOLRA_LOG_INFO("{} lpKhh:{} token:{}", "SECMOLRA_SetCusToken", LogText(lpKhh), token);
    return true;
  });
}

SECMOLRA_API bool SECMOLRA_SetCusNodeID(const char* lpKhh, int32_t nodeId) {
  return Guard(__func__, false, [&]() -> bool {
    Kit* kit = CurrentKit();
    if (lpKhh != nullptr && kit != nullptr) kit->customers.nodes.Set(lpKhh, nodeId);
    MOLRA_LOG_INFO("{} lpKhh:{} nodeid:{}", "SECMOLRA_SetCusNodeID", LogText(lpKhh), nodeId);
    return true;
  });
}

SECMOLRA_API int64_t SECMOLRA_QueryCusNodeinfo(const char* lpKeyName, const char* lpKhh,
                                               std::vector<CusNodeInfo>& list) {
  return Export(__func__, [&] { return QueryCusNodeinfo(lpKeyName, lpKhh, list); });
}

SECMOLRA_API int64_t SECMOLRA_GetTradeDate(void) {
  return Export(__func__, [&] { return TradeDate(); });
}

}  // extern "C"
