#include "util/clock.h"

#include <cstdio>

#if defined(_WIN32)
#include <windows.h>
#else
#include <sys/time.h>
#include <time.h>
#endif

namespace molra {

#if defined(_WIN32)
std::uint64_t TickCountMs() { return GetTickCount64(); }
LocalTime NowLocal() {
  SYSTEMTIME st;
  GetLocalTime(&st);
  return {st.wYear, st.wMonth, st.wDay, st.wHour, st.wMinute, st.wSecond, st.wMilliseconds};
}
#else
std::uint64_t TickCountMs() {
  timespec ts;
  clock_gettime(CLOCK_MONOTONIC, &ts);
  return static_cast<std::uint64_t>(ts.tv_sec) * 1000u + static_cast<std::uint64_t>(ts.tv_nsec) / 1000000u;
}
LocalTime NowLocal() {
  timeval tv;
  gettimeofday(&tv, nullptr);
  tm t;
  time_t secs = tv.tv_sec;
  localtime_r(&secs, &t);
  return {t.tm_year + 1900, t.tm_mon + 1, t.tm_mday, t.tm_hour, t.tm_min, t.tm_sec,
          static_cast<int>(tv.tv_usec / 1000)};
}
#endif

void FormatLocalStamp(char* buf) {
  LocalTime t = NowLocal();
  std::snprintf(buf, 16, "%02d%02d%02d.%03d", t.hour, t.minute, t.second, t.millisecond);
}

}  // namespace molra
