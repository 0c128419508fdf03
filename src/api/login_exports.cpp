// Login, logout, token and node exports, the node-list query and the trade date.
#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "account/account_info.h"
#include "account/login_texts.h"
#include "account/registry.h"
#include "api/guard.h"
#include "api/last_error.h"
#include "comm/conn_pool.h"
#include "comm/kel_api.h"
#include "config/ini_file.h"
#include "log/log.h"
#include "secmolra.h"
#include "util/field_ids.h"

namespace molra {
namespace {

namespace text = login_text;

constexpr const char* kTradeDateCode = "A00066";
constexpr kel::int32 kTradeDateTimeoutSeconds = 2;

// The customer's connection set for a key, after the configuration checks that login and
// the node-list query share. On failure the last error is set and `code` holds the result.
struct SetResult {
  std::shared_ptr<KelComm::KelConn> conn;
  std::int64_t code = 0;
};

SetResult OpenCustomerSet(const char* func, const std::string& key, const std::string& khh,
                          bool reset_customer) {
  SetResult r;
  IniFile ini;
  std::string path = ConfigFilePath();
  if (!ini.Load(path)) {
    r.code = Fail(-206, fmt::format(fmt::runtime(text::kConfigUnreadable), path), func);
    return r;
  }
  if (reset_customer) ResetCustomer(khh);
  if (ini.GetLong(key.c_str(), "SystemType", 4) != 4) {
    r.code = Fail(-223, text::kUnknownSystemType, func);
    return r;
  }
  ConnPool* pool = Pool();
  if (pool == nullptr) {
    r.code = Fail(-1, text::kNoPool, func);
    return r;
  }
  r.conn = pool->GetConnection(khh, key);
  if (!r.conn) {
    // Connection failures are staged with code 0; that code is what the caller gets.
    ErrorRecord staged = GetStagedError();
    r.code = Fail(staged.code, staged.message, func);
  }
  return r;
}

std::int64_t LoginResult(std::int64_t token) { return token == 0 ? -220 : token; }

std::int64_t TradeDate() {
  constexpr const char* kFunc = "GetTradeDate";
  std::shared_ptr<KelComm::KelConn> conn = Registry().DefaultConn(0);
  if (!conn) {
    ErrorRecord staged = GetStagedError();
    return Fail(staged.code, staged.message, kFunc);
  }
  KelSession session = AllocManagementSession(*conn);
  if (!session) return Fail(-202, GetStagedError().message, kFunc);
  kel::int64 h = session.handle();
  kel::api.Kel_SetTimeOut(h, kTradeDateTimeoutSeconds);
  CreateHead(session, kTradeDateCode);
  if (!kel::api.Kel_Run(h)) return Fail(-204, text::kSendFailed, kFunc);
  std::int32_t code = kel::api.Kel_GetCode(h);
  if (code < 1) return Fail(code, GetErrorString(h), kFunc);
  return kel::api.Kel_GetLong(h, fid::TRADE_DATE, -1);
}

}  // namespace
}  // namespace molra

using namespace molra;

extern "C" {

SECMOLRA_API int64_t SECMOLRA_TradeLogin(const char* lpKeyName, const char* lpKhh,
                                         const char* password) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    constexpr const char* kFunc = "SECMOLRA_TradeLogin";
    if (lpKeyName == nullptr || lpKhh == nullptr || password == nullptr) {
      return Fail(-221, login_text::kIllegalArgument, kFunc);
    }
    // An empty password passes here on purpose: the login itself refuses it.
    if (*lpKeyName == '\0' || *lpKhh == '\0') return Fail(-221, login_text::kLoginArgsEmpty, kFunc);
    MOLRA_LOG_INFO("{} lpKeyName:{} khh:{}", kFunc, lpKeyName, lpKhh);
    SetResult set = OpenCustomerSet(kFunc, lpKeyName, lpKhh, true);
    if (!set.conn) return set.code;
    CusLoginInfo info{};
    info.NodeID = -1;
    info.Token = -1;
    CopyField(info.KHH, lpKhh);
    CopyField(info.Password, password);
    return LoginResult(AccountInfo::Login(set.conn, info, nullptr));
  });
}

SECMOLRA_API int64_t SECMOLRA_TradeLoginEx(const char* lpKeyName, CusLoginInfo* info) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    constexpr const char* kFunc = "SECMOLRA_TradeLoginEx";
    if (lpKeyName == nullptr || info == nullptr) {
      return Fail(-221, login_text::kIllegalArgument, kFunc);
    }
    std::string khh = FieldText(info->KHH);
    if (*lpKeyName == '\0' || khh.empty()) return Fail(-221, login_text::kLoginArgsEmpty, kFunc);
    MOLRA_LOG_INFO("{} lpKeyName:{} khh:{} tradenodeID:{} nodeinfo:{}", kFunc, lpKeyName, khh,
                   info->NodeID, FieldText(info->Node));
    SetResult set = OpenCustomerSet(kFunc, lpKeyName, khh, true);
    if (!set.conn) return set.code;
    return LoginResult(AccountInfo::Login(set.conn, *info, nullptr));
  });
}

SECMOLRA_API int64_t SECMOLRA_TradeLogout(const char* lpKhh) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    constexpr const char* kFunc = "SECMOLRA_TradeLogout";
    if (lpKhh == nullptr) return Fail(-221, login_text::kIllegalArgument, kFunc);
    if (*lpKhh == '\0') return Fail(-221, login_text::kKhhEmpty, kFunc);
    MOLRA_LOG_INFO("{} khh:{} ", kFunc, lpKhh);
    return ResetCustomer(lpKhh);
  });
}

SECMOLRA_API bool SECMOLRA_SetCusToken(const char* lpKhh, int64_t token) {
  return Guard(__func__, false, [&]() -> bool {
    if (lpKhh != nullptr) TokenTable().Set(lpKhh, token);
    MOLRA_LOG_INFO("{} lpKhh:{} token:{}", "SECMOLRA_SetCusToken", lpKhh ? lpKhh : "", token);
    return true;
  });
}

SECMOLRA_API bool SECMOLRA_SetCusNodeID(const char* lpKhh, int32_t nodeId) {
  return Guard(__func__, false, [&]() -> bool {
    if (lpKhh != nullptr) NodeTable().Set(lpKhh, nodeId);
    MOLRA_LOG_INFO("{} lpKhh:{} nodeid:{}", "SECMOLRA_SetCusNodeID", lpKhh ? lpKhh : "", nodeId);
    return true;
  });
}

SECMOLRA_API int64_t SECMOLRA_QueryCusNodeinfo(const char* lpKeyName, const char* lpKhh,
                                               std::vector<CusNodeInfo>& list) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    constexpr const char* kFunc = "SECMOLRA_QueryCusNodeinfo";
    if (lpKhh == nullptr) return Fail(-221, login_text::kIllegalArgument, kFunc);
    // An empty (or null) key reads no section: the customer's existing set is used.
    const char* key = lpKeyName != nullptr ? lpKeyName : "";
    MOLRA_LOG_INFO("{} lpKeyName:{} khh:{}", kFunc, key, lpKhh);
    SetResult set = OpenCustomerSet(kFunc, key, lpKhh, false);
    if (!set.conn) return set.code;
    return AccountInfo::AcctManage::GetAccountJDBH(lpKhh, *set.conn, list, 1);
  });
}

SECMOLRA_API int64_t SECMOLRA_GetTradeDate(void) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return TradeDate();
  });
}

}  // extern "C"
