// Reading and writing the kit's time-of-day texts: "HH:MM:SS[.mmm]" from the back end, the
// local stamp "HHMMSS.mmm", and the revised time "HH:MM:SS.mmm".
#pragma once

#include <cstdint>
#include <string>

namespace molra {

// Milliseconds of a time text: positions 0, 2 and 5 are cut off, whole numbers are read at 0
// (hours), 3 (minutes) and 6 (seconds), and the number at 9 is added when the text is
// longer than 10 characters. Texts shorter than 8 characters give 0.
//
// The same reading is applied to the local stamp "HHMMSS.mmm", which has no separators:
// there the minutes come out as the second minute digit and the first second digit read
// together, the seconds as 0, and no milliseconds are added. The time offset is measured and
// applied with this very reading, so hosts see consistent values; keep it.
std::int64_t TextToMs(const char* text);

// Milliseconds of the server's "HH:MM:SS" or "HH:MM:SS.mmm": numbers at 0, 3, 6 (and 9 when
// longer than 10 characters), read as they stand. Shorter than 8 characters: 0.
std::int64_t ServerTimeToMs(const char* text);

// "%02d:%02d:%02d.%03d" of a millisecond count, split with truncating division (negative
// counts and counts beyond a day give longer texts).
std::string FormatReviseTime(std::int64_t ms);

// HHMMSS as a number from a revised-time text: numbers at 0, 3, 6 (and 9 when longer than
// 10 characters) read as hours, minutes, seconds, milliseconds. Shorter than 8: 0.
std::int64_t ReviseTextAsLong(const std::string& text);

// The local stamp "HHMMSS.mmm" now.
std::string LocalStamp();

}  // namespace molra
