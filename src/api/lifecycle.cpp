// Start-up, tear-down, the last-error exports and the setters.
#include <algorithm>
#include <cstring>

#include "account/registry.h"
#include "api/guard.h"
#include "api/kit_state.h"
#include "api/last_error.h"
#include "comm/conn_pool.h"
#include "comm/kel_api.h"
#include "config/ini_file.h"
#include "log/log.h"
#include "query/query_cursor.h"
#include "secmolra.h"

namespace molra {

KitState& Kit() {
  static KitState* state = new KitState();  // never destroyed: transport threads read it
  return *state;
}

namespace {

bool StartTransport() {
  if (!kel::BindTransport()) return false;
  kel::api.Kel_Initialize();
  kel::api.Kel_SetDefaultSystemId(4);
  kel::api.Kel_SetDefaultNodeId(0);
  if (!CreateConnPool()) {
    StageError(-1, "创建连接池失败");
    return false;
  }
  return true;
}

bool InitFailed() {
  // The staged record replaces whatever the binder wrote: its -200 survives in the log only.
  ErrorRecord staged = GetStagedError();
  SetLastError(staged.code, staged.message, "SECMOLRA_Init", nullptr);
  return false;
}

}  // namespace
}  // namespace molra

using namespace molra;

extern "C" {

SECMOLRA_API bool SECMOLRA_Init(void) {
  return Guard(__func__, false, [&]() -> bool {
    KitState& kit = Kit();
    if (kit.initialised) return true;
    SetUpLogging(kit.LogPath());
    if (!kit.config_read) kit.config_read = CommInit();
    if (!kit.transport_loaded) {
      if (!StartTransport()) return InitFailed();
      kit.transport_loaded = true;
    }
    kel::api.Kel_SetLogPath(kit.LogPath().c_str());
    if (!kit.registry_created) {
      CreateCusRegistry();
      kit.registry_created = true;
    }
    kit.initialised = true;
    return true;
  });
}

SECMOLRA_API bool SECMOLRA_Exit(void) {
  return Guard(__func__, false, [&]() -> bool {
    KitState& kit = Kit();
    ShutDownLogging();
    bool result = true;
    query::AbandonCursors();
    if (kit.transport_loaded) {
      result = TearDownConnPool();
      kel::api.Kel_Uninitialize();
      kit.transport_loaded = false;
    }
    kit.registry_created = false;
    return result;
  });
}

SECMOLRA_API int64_t SECMOLRA_GetLastError(char* buf) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    ErrorRecord rec = GetLastErrorRecord();
    // The caller's buffer has no stated size: it must hold any message.
    if (buf != nullptr) std::memcpy(buf, rec.message.c_str(), rec.message.size() + 1);
    return rec.code;
  });
}

SECMOLRA_API int64_t SECMOLRA_GetThreadLastError(char* msg, int32_t cap) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    const ErrorRecord& rec = ThreadLastError();
    if (msg != nullptr && cap > 0) {
      const std::size_t n = std::min(rec.message.size(), static_cast<std::size_t>(cap) - 1);
      std::memcpy(msg, rec.message.data(), n);
      msg[n] = '\0';
    }
    return rec.code;
  });
}

SECMOLRA_API void SECMOLRA_SetLastError(int64_t code, const char* msg, const char* func,
                                        CusLoginInfo* account) {
  Guard(__func__, kNoResult, [&] {
    SetLastError(code, msg ? msg : "", func, account);
  });
}

SECMOLRA_API void SECMOLRA_SetWriteLog(bool enable) {
  Guard(__func__, kNoResult, [&] {
    g_write_log.store(enable);
  });
}

SECMOLRA_API bool SECMOLRA_SetKelWriteLog(bool enable) {
  return Guard(__func__, false, [&]() -> bool {
    // Before the transport is bound there is nothing to switch.
    return kel::api.Kel_WriteLog != nullptr && kel::api.Kel_WriteLog(enable);
  });
}

// A null path leaves the setting as it was: there is no result to report it through.
SECMOLRA_API void SECMOLRA_SetProfilePath(const char* path) {
  Guard(__func__, kNoResult, [&] {
    if (path != nullptr) Kit().SetProfilePath(path);
  });
}

SECMOLRA_API void SECMOLRA_SetLogPath(const char* path) {
  Guard(__func__, kNoResult, [&] {
    if (path != nullptr) Kit().SetLogPath(path);
  });
}

SECMOLRA_API void SECMOLRA_SetMsgCallback(SECMOLRA_MsgCallback cb) {
  Guard(__func__, kNoResult, [&] {
    MOLRA_LOG_INFO("{} effective:{}", "SECMOLRA_SetMsgCallback", reinterpret_cast<void*>(cb));
    Kit().msg_callback.store(cb);
  });
}

SECMOLRA_API void SECMOLRA_SetFuncCallback(SECMOLRA_FuncCallback cb) {
  Guard(__func__, kNoResult, [&] {
    MOLRA_LOG_INFO("{} effective:{}", "SECMOLRA_SetFuncCallback", reinterpret_cast<void*>(cb));
    Kit().func_callback.store(cb);
  });
}

SECMOLRA_API void SECMOLRA_SetConnEventCallback(SECMOLRA_ConnEventCallback cb) {
  Guard(__func__, kNoResult, [&] {
    MOLRA_LOG_INFO("{} effective:{}", "SECMOLRA_SetConnEventCallback", reinterpret_cast<void*>(cb));
    Kit().conn_event_callback.store(cb);
  });
}

SECMOLRA_API bool SECMOLRA_SetNode(const char* node) {
  return Guard(__func__, false, [&]() -> bool {
    MOLRA_LOG_INFO("{} node:{}", "SECMOLRA_SetNode", node ? node : "");
    if (node == nullptr) return false;
    Kit().SetNode(node);
    return true;
  });
}

SECMOLRA_API bool SECMOLRA_SetWTFS(const char* wtfs) {
  return Guard(__func__, false, [&]() -> bool {
    bool ok = kel::api.Kel_SetDefaultInfo != nullptr && kel::api.Kel_SetDefaultInfo("", wtfs, "", "");
    if (ok && wtfs != nullptr) Kit().SetWtfs(wtfs);
    MOLRA_LOG_INFO("{} wtfs:{} bret:{}", "SECMOLRA_SetWTFS", wtfs ? wtfs : "", ok);
    return ok;
  });
}

}  // extern "C"
