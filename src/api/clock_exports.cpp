// Clock and date exports, and the two inert quote exports.
#include <cstring>
#include <string>

#include "secmolra.h"
#include "util/clock.h"
#include "util/server_time.h"
#include "util/time_text.h"

using namespace molra;

extern "C" {

SECMOLRA_API uint64_t SECMOLRA_GetTickCount(void) { return TickCountMs(); }

SECMOLRA_API uint64_t SECMOLRA_GetDoubleTickCount(void) { return TickCountMs(); }

SECMOLRA_API int64_t SECMOLRA_GetSystemDate(void) {
  if (SystemDate() <= 0) GetCurTime();
  return SystemDate();
}

SECMOLRA_API void SECMOLRA_GetReviseTime(char* buf) {
  if (buf == nullptr) return;
  std::string text = FormatReviseTime(ReviseTimeMs());
  std::memcpy(buf, text.c_str(), text.size() + 1);
}

SECMOLRA_API int64_t SECMOLRA_GetReviseTimeAsLong(void) {
  return ReviseTextAsLong(FormatReviseTime(ReviseTimeMs()));
}

SECMOLRA_API bool SECMOLRA_OpenQuoteLink(void) { return false; }

SECMOLRA_API int64_t SECMOLRA_GetQuote(const char*, void*, int32_t* count) {
  if (count != nullptr) *count = 0;
  return 0;
}

}  // extern "C"
