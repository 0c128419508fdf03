#include "util/time_text.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "util/clock.h"

namespace molra {

namespace {

// Whole numbers at 0, 3, 6 and (longer than 10) 9; `cut` ends the text at 2 and 5 first.
struct ClockFields {
  long h = 0, m = 0, s = 0, ms = 0;
};

bool ReadClockFields(const char* text, bool cut, ClockFields& f) {
  if (text == nullptr) return false;
  std::size_t len = std::strlen(text);
  if (len < 8) return false;
  std::string copy(text, len);
  if (cut) {
    copy[2] = '\0';
    copy[5] = '\0';
  }
  const char* p = copy.c_str();
  f.h = std::atol(p);
  f.m = std::atol(p + 3);
  f.s = std::atol(p + 6);
  f.ms = len > 10 ? std::atol(p + 9) : 0;
  return true;
}

}  // namespace

std::int64_t TextToMs(const char* text) {
  ClockFields f;
  if (!ReadClockFields(text, true, f)) return 0;
  return ((static_cast<std::int64_t>(f.h) * 60 + f.m) * 60 + f.s) * 1000 + f.ms;
}

std::int64_t ServerTimeToMs(const char* text) {
  ClockFields f;
  if (!ReadClockFields(text, false, f)) return 0;
  return ((static_cast<std::int64_t>(f.h) * 60 + f.m) * 60 + f.s) * 1000 + f.ms;
}

std::string FormatReviseTime(std::int64_t ms) {
  std::int64_t h = ms / 3600000;
  std::int64_t rest = ms % 3600000;
  std::int64_t m = rest / 60000;
  rest %= 60000;
  std::int64_t s = rest / 1000;
  rest %= 1000;
  char buf[64];
  std::snprintf(buf, sizeof buf, "%02d:%02d:%02d.%03d", static_cast<int>(h), static_cast<int>(m),
                static_cast<int>(s), static_cast<int>(rest));
  return buf;
}

std::int64_t ReviseTextAsLong(const std::string& text) {
  ClockFields f;
  if (!ReadClockFields(text.c_str(), false, f)) return 0;
  return (((static_cast<std::int64_t>(f.h) * 100 + f.m) * 100 + f.s) * 1000 + f.ms) / 1000;
}

std::string LocalStamp() {
  char buf[16];
  FormatLocalStamp(buf);
  return buf;
}

}  // namespace molra
