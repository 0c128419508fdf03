#include "core/errors.h"

#include <mutex>

#include "core/log.h"
#include "core/messages.h"
#include "core/text.h"

namespace molra {

namespace {

// The process-wide record. Never destroyed: a transport thread may record a refused reply
// while the process ends.
struct ProcessRecord {
  std::mutex mutex;
  ErrorRecord last;
};
ProcessRecord& Process() {
  static auto* record = new ProcessRecord();
  return *record;
}

thread_local ErrorRecord t_last;

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
  MOLRA_LOG_ERROR(msg::kErrorLine, LogText(func), msg);
  if (account != nullptr) {
    account->ErrorCode = code;
    CopyField(account->ErrorMsg, msg.c_str());
  }
}

std::int64_t Report(const Failure& f, const char* caller) {
  SetLastError(f.code, f.message, f.where != nullptr ? f.where : caller, f.account);
  return f.code;
}

ErrorRecord LastErrorRecord() {
  ProcessRecord& p = Process();
  std::lock_guard<std::mutex> lock(p.mutex);
  return p.last;
}

const ErrorRecord& ThreadLastError() { return t_last; }

}  // namespace molra
