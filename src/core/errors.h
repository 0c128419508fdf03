// The error records. The process-wide last-error record is what SECMOLRA_GetLastError reads;
// every write of it also writes the writing thread's own record (SECMOLRA_GetThreadLastError),
// logs "{function}：{message}" at error level, and copies code and message into the
// customer's record when one is given. Only the exports and the functions the transport
// calls write them, through Report, when a failure reaches them (core/status.h).
#pragma once

#include <cstdint>
#include <string>

#include "core/status.h"
#include "secmolra.h"

namespace molra {

struct ErrorRecord {
  std::int64_t code = 0;
  std::string message;
};

// Writes every record: process, thread, log line, and the account's own copy when an account
// is given (its 256-byte message field filled by bounded copy).
void SetLastError(std::int64_t code, const std::string& msg, const char* func,
                  CusLoginInfo* account);

// Records a failure under its own function name, or under `caller` when it names none;
// returns its code.
std::int64_t Report(const Failure& f, const char* caller);

// The value, or the code of its failure once reported under `caller`.
inline std::int64_t Reported(const Result<std::int64_t>& r, const char* caller) {
  return r ? *r : Report(r.failure(), caller);
}

ErrorRecord LastErrorRecord();
// The calling thread's last error (0 and "" when none).
const ErrorRecord& ThreadLastError();

}  // namespace molra
