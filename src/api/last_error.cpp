#include "api/last_error.h"

#include <cstring>
#include <mutex>

#include "log/log.h"

namespace molra {

namespace {
std::mutex g_last_mutex;
ErrorRecord g_last;
std::mutex g_staged_mutex;
ErrorRecord g_staged;
}  // namespace

void SetLastError(std::int64_t code, const std::string& msg, const char* func,
                  CusLoginInfo* account) {
  {
    std::lock_guard<std::mutex> lock(g_last_mutex);
    g_last.code = code;
    g_last.message = msg;
  }
  MOLRA_LOG_ERROR("{0}：{1}", func ? func : "", msg);
  if (account != nullptr) {
    account->ErrorCode = code;
    CopyField(account->ErrorMsg, msg.c_str());
  }
}

ErrorRecord GetLastErrorRecord() {
  std::lock_guard<std::mutex> lock(g_last_mutex);
  return g_last;
}

void StageError(std::int32_t code, const std::string& msg) {
  std::lock_guard<std::mutex> lock(g_staged_mutex);
  g_staged.code = code;
  g_staged.message = msg;
}

ErrorRecord GetStagedError() {
  std::lock_guard<std::mutex> lock(g_staged_mutex);
  return g_staged;
}

}  // namespace molra
