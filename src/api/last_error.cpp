#include "api/last_error.h"

#include <cstring>
#include <mutex>

#include "log/log.h"

namespace molra {

namespace {

// The process-wide record. Never destroyed: a transport thread may record a refused reply
// while the process ends.
struct ProcessRecord {
  std::mutex mutex;
  ErrorRecord last;
};
ProcessRecord& Process() {
  static ProcessRecord* record = new ProcessRecord();
  return *record;
}

// The calling thread's copy of its last error, and its staged hand-over: the connection
// layer stages a failure and the operation on the same thread reports it, so two threads
// failing at once never see each other's.
thread_local ErrorRecord t_last;
thread_local ErrorRecord t_staged;

}  // namespace

void SetLastError(std::int64_t code, const std::string& msg, const char* func,
                  CusLoginInfo* account) {
  t_last.code = code;
  t_last.message = msg;
  {
    ProcessRecord& p = Process();
    std::lock_guard<std::mutex> lock(p.mutex);
    p.last.code = code;
    p.last.message = msg;
  }
  MOLRA_LOG_ERROR("{0}：{1}", func ? func : "", msg);
  if (account != nullptr) {
    account->ErrorCode = code;
    CopyField(account->ErrorMsg, msg.c_str());
  }
}

ErrorRecord GetLastErrorRecord() {
  ProcessRecord& p = Process();
  std::lock_guard<std::mutex> lock(p.mutex);
  return p.last;
}

const ErrorRecord& ThreadLastError() { return t_last; }

void StageError(std::int32_t code, const std::string& msg) {
  t_staged.code = code;
  t_staged.message = msg;
}

ErrorRecord GetStagedError() { return t_staged; }

}  // namespace molra
