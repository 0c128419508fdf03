// Start-up, tear-down, the last-error exports and the setters.
#include <cstring>
#include <utility>

#include "comm/conn_pool.h"
#include "comm/kel_api.h"
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

// Binds the transport and starts it; the pool starts the timer thread.
Result<ConnPool*> StartTransport() {
  if (Status bound = kel::BindTransport(); !bound) return bound.TakeFailure();
  kel::api.Kel_Initialize();
  kel::api.Kel_SetDefaultSystemId(kSystemType);
  kel::api.Kel_SetDefaultNodeId(0);
  try {
    return new ConnPool();
  } catch (...) {
    return Failure{SECMOLRA_ERR_POOL, msg::kPoolNotCreated};  // out of memory or no thread
  }
}

bool Init() {
  if (CurrentKit() != nullptr) return true;
  SetUpLogging(Host().LogPath());
  PushSettings push = CommInit();
  Result<ConnPool*> pool = StartTransport();
  if (!pool) {
    // The binder's own failure survives in the log only: the record ends with SECMOLRA_Init's,
    // code 0 and no message unless the pool could not be created.
    Failure f = pool.TakeFailure();
    if (f.code == SECMOLRA_ERR_LOAD) {
      Report(f, nullptr);
      f = Failure{kConnectionFailure, ""};
    }
    Report(f, "SECMOLRA_Init");
    return false;
  }
  kel::api.Kel_SetLogPath(Host().LogPath().c_str());
  PublishKit(new Kit(std::move(push), *pool));
  return true;
}

// The pool leaves the kit first, so calls from here on fail as without one; its sets are
// closed and its timer stopped, but it is not freed (core/context.h).
bool Exit() {
  ShutDownLogging();
  Kit* kit = CurrentKit();
  if (kit == nullptr) return true;
  kit->cursors.Abandon();
  if (ConnPool* pool = kit->WithdrawPool()) {
    pool->TearDown();
    kel::api.Kel_Uninitialize();
  }
  return true;
}

}  // namespace
}  // namespace molra

using namespace molra;

extern "C" {

SECMOLRA_API bool SECMOLRA_Init(void) {
  return Guard(__func__, false, [&] { return Init(); });
}

SECMOLRA_API bool SECMOLRA_Exit(void) {
  return Guard(__func__, false, [&] { return Exit(); });
}

SECMOLRA_API int64_t SECMOLRA_GetLastError(char* buf) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    ErrorRecord rec = LastErrorRecord();
    // The caller's buffer has no stated size: it must hold any message.
    if (buf != nullptr) std::memcpy(buf, rec.message.c_str(), rec.message.size() + 1);
    return rec.code;
  });
}

SECMOLRA_API int64_t SECMOLRA_GetThreadLastError(char* msg, int32_t cap) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    const ErrorRecord& rec = ThreadLastError();
    if (cap > 0) CopyOut(msg, static_cast<std::size_t>(cap), rec.message);
    return rec.code;
  });
}

SECMOLRA_API void SECMOLRA_SetLastError(int64_t code, const char* msg, const char* func,
                                        CusLoginInfo* account) {
  Guard(__func__, kNoResult, [&] { SetLastError(code, LogText(msg), func, account); });
}

SECMOLRA_API void SECMOLRA_SetWriteLog(bool enable) {
  Guard(__func__, kNoResult, [&] { g_write_log.store(enable); });
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
    if (path != nullptr) Host().SetProfilePath(path);
  });
}

SECMOLRA_API void SECMOLRA_SetLogPath(const char* path) {
  Guard(__func__, kNoResult, [&] {
    if (path != nullptr) Host().SetLogPath(path);
  });
}

SECMOLRA_API void SECMOLRA_SetMsgCallback(SECMOLRA_MsgCallback cb) {
  Guard(__func__, kNoResult, [&] {
    MOLRA_LOG_INFO("{} effective:{}", "SECMOLRA_SetMsgCallback", reinterpret_cast<void*>(cb));
    Host().msg_callback.store(cb);
  });
}

SECMOLRA_API void SECMOLRA_SetFuncCallback(SECMOLRA_FuncCallback cb) {
  Guard(__func__, kNoResult, [&] {
    MOLRA_LOG_INFO("{} effective:{}", "SECMOLRA_SetFuncCallback", reinterpret_cast<void*>(cb));
    Host().func_callback.store(cb);
  });
}

SECMOLRA_API void SECMOLRA_SetConnEventCallback(SECMOLRA_ConnEventCallback cb) {
  Guard(__func__, kNoResult, [&] {
    MOLRA_LOG_INFO("{} effective:{}", "SECMOLRA_SetConnEventCallback", reinterpret_cast<void*>(cb));
    Host().conn_event_callback.store(cb);
  });
}

SECMOLRA_API bool SECMOLRA_SetNode(const char* node) {
  return Guard(__func__, false, [&]() -> bool {
    MOLRA_LOG_INFO("{} node:{}", "SECMOLRA_SetNode", node ? node : "");
    if (node == nullptr) return false;
    Host().SetNode(node);
    return true;
  });
}

SECMOLRA_API bool SECMOLRA_SetWTFS(const char* wtfs) {
  return Guard(__func__, false, [&]() -> bool {
    bool ok =
        kel::api.Kel_SetDefaultInfo != nullptr && kel::api.Kel_SetDefaultInfo("", wtfs, "", "");
    if (ok && wtfs != nullptr) Host().SetWtfs(wtfs);
    MOLRA_LOG_INFO("{} wtfs:{} bret:{}", "SECMOLRA_SetWTFS", wtfs ? wtfs : "", ok);
    return ok;
  });
}

}  // extern "C"
