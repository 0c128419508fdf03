#include "util/clock.h"

#include <cstring>

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
  return static_cast<std::uint64_t>(ts.tv_sec) * 1000u +
         static_cast<std::uint64_t>(ts.tv_nsec) / 1000000u;
}
LocalTime NowLocal() {
  timeval tv;
  gettimeofday(&tv, nullptr);
  tm t;
  time_t secs = tv.tv_sec;
  localtime_r(&secs, &t);
  return {t.tm_year + 1900,
          t.tm_mon + 1,
          t.tm_mday,
          t.tm_hour,
          t.tm_min,
          t.tm_sec,
          static_cast<int>(tv.tv_usec / 1000)};
}
#endif

namespace {

void PutDigits(char* p, int value, int count) {
  for (int i = count - 1; i >= 0; --i) {
    p[i] = static_cast<char>('0' + value % 10);
    value /= 10;
  }
}

}  // namespace

// Every push and reply carries a stamp: the local time of day is worked out once per
// second and thread (localtime_r takes a process-wide lock and reads the zone rules), the
// milliseconds each time. A change of zone offset falls on a whole second.
void FormatLocalStamp(char* buf) {
#if defined(_WIN32)
  LocalTime t = NowLocal();
  const long long second = t.hour * 3600LL + t.minute * 60 + t.second;
  const int millisecond = t.millisecond;
#else
  timeval tv;
  gettimeofday(&tv, nullptr);
  const long long second = tv.tv_sec;
  const int millisecond = static_cast<int>(tv.tv_usec / 1000);
#endif
  thread_local long long cached_second = -1;
  thread_local char hhmmss[6];
  if (second != cached_second) {
#if defined(_WIN32)
    const int hour = t.hour, minute = t.minute, sec = t.second;
#else
    tm local;
    time_t secs = tv.tv_sec;
    localtime_r(&secs, &local);
    const int hour = local.tm_hour, minute = local.tm_min, sec = local.tm_sec;
#endif
    PutDigits(hhmmss, hour, 2);
    PutDigits(hhmmss + 2, minute, 2);
    PutDigits(hhmmss + 4, sec, 2);
    cached_second = second;
  }
  std::memcpy(buf, hhmmss, 6);
  buf[6] = '.';
  PutDigits(buf + 7, millisecond, 3);
  buf[10] = '\0';
}

}  // namespace molra
