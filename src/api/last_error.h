// The error records. The process-wide last-error record is what SECMOLRA_GetLastError reads;
// every write of it also writes the writing thread's own record (SECMOLRA_GetThreadLastError).
// The staged record is a hand-over slot that the connection layer writes without knowing
// which exported operation it serves; it is kept per thread, so a failure staged on one
// thread is reported by the operation on that thread only.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>

#include "secmolra.h"

namespace molra {

struct ErrorRecord {
  std::int64_t code = 0;
  std::string message;
};

// Stores code and message, logs "{func}：{msg}" at error level, and copies both into the
// account's own fields when an account is given.
void SetLastError(std::int64_t code, const std::string& msg, const char* func,
                  CusLoginInfo* account);
ErrorRecord GetLastErrorRecord();
// The calling thread's last error (0 and "" when none).
const ErrorRecord& ThreadLastError();

// SetLastError, then the code: `return Fail(...)` ends a failing step.
inline std::int64_t Fail(std::int64_t code, const std::string& msg, const char* func,
                         CusLoginInfo* account = nullptr) {
  SetLastError(code, msg, func, account);
  return code;
}

void StageError(std::int32_t code, const std::string& msg);
ErrorRecord GetStagedError();

// Bounded copy into a fixed-width field: at most `width` bytes, the rest zero-filled, no
// terminating NUL when the source is as long as the field or longer.
// Inline: the order path fills half a dozen short fields per request.
inline void CopyField(char* dst, std::size_t width, const char* src) {
  std::size_t n = 0;
  if (src != nullptr) {
    while (n < width && src[n] != '\0') ++n;
    std::memcpy(dst, src, n);
  }
  std::memset(dst + n, 0, width - n);
}
template <std::size_t N>
void CopyField(char (&dst)[N], const char* src) {
  CopyField(dst, N, src);
}
// The text of a fixed-width field that may fill its width without a terminating NUL.
template <std::size_t N>
std::string FieldText(const char (&field)[N]) {
  std::size_t n = 0;
  while (n < N && field[n] != '\0') ++n;
  return std::string(field, n);
}

}  // namespace molra
