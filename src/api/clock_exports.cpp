// Clock and date exports, and the two inert quote exports.
#include <cstring>
#include <string>

#include "account/server_clock.h"
#include "core/context.h"
#include "core/errors.h"
#include "core/guard.h"
#include "secmolra.h"
#include "util/clock.h"
#include "util/time_text.h"

using namespace molra;

extern "C" {

SECMOLRA_API uint64_t SECMOLRA_GetTickCount(void) {
  return Guard(__func__, uint64_t{0}, [&]() -> uint64_t { return TickCountMs(); });
}

// The same entry point under a second name: one function, one address. GCC wants the alias
// to repeat its target's nothrow (the guard catches everything); clang takes that for a
// noexcept declaration that the header lacks.
#if defined(__clang__)
#define MOLRA_SECOND_NAME_OF(target) __attribute__((alias(target)))
#else
#define MOLRA_SECOND_NAME_OF(target) __attribute__((nothrow, alias(target)))
#endif
SECMOLRA_API uint64_t SECMOLRA_GetDoubleTickCount(void)
    MOLRA_SECOND_NAME_OF("SECMOLRA_GetTickCount");
#undef MOLRA_SECOND_NAME_OF

SECMOLRA_API int64_t SECMOLRA_GetSystemDate(void) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    if (SystemDate() <= 0) {
      if (Status clock = MeasureServerTime(CurrentKit()); !clock) Report(clock.failure(), nullptr);
    }
    return SystemDate();
  });
}

SECMOLRA_API void SECMOLRA_GetReviseTime(char* buf) {
  Guard(__func__, kNoResult, [&] {
    if (buf == nullptr) return;
    std::string text = FormatReviseTime(ReviseTimeMs());
    std::memcpy(buf, text.c_str(), text.size() + 1);
  });
}

SECMOLRA_API int64_t SECMOLRA_GetReviseTimeAsLong(void) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL,
               [&]() -> int64_t { return ReviseTextAsLong(FormatReviseTime(ReviseTimeMs())); });
}

SECMOLRA_API bool SECMOLRA_OpenQuoteLink(void) {
  return Guard(__func__, false, [&]() -> bool { return false; });
}

SECMOLRA_API int64_t SECMOLRA_GetQuote(const char*, void*, int32_t* count) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    if (count != nullptr) *count = 0;
    return 0;
  });
}

}  // extern "C"
