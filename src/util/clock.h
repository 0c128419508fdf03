// The platform's clocks, behind one small module.
#pragma once

#include <cstdint>

namespace molra {

struct LocalTime {
  int year, month, day, hour, minute, second, millisecond;
};

std::uint64_t TickCountMs();  // GetTickCount64 / CLOCK_MONOTONIC in milliseconds
LocalTime NowLocal();         // GetLocalTime / localtime_r with milliseconds

// "%02d%02d%02d.%03d" of the local wall clock: the stamp carried by callbacks. buf >= 16.
void FormatLocalStamp(char* buf);

}  // namespace molra
