// The back end's date and the offset of the local clock to the back end's clock, measured
// by the server-time query "A00001" that every login runs.
#pragma once

#include <cstdint>

namespace molra {

// YYYYMMDD as the back end gave it; 0 until measured.
std::int64_t SystemDate();
// Milliseconds to subtract from the local reading; 0 until measured.
std::int64_t TimeOffsetMs();

// Runs "A00001" on the default customer's management connection and stores date and
// offset; true when measured. A missing session or a failed run is recorded as last error
// under "GetCurTime".
bool GetCurTime();

// The revised time of day now: the local stamp's reading minus the offset.
std::int64_t ReviseTimeMs();

}  // namespace molra
