// Bounded texts: the fixed-width character fields of records and blocks, which hold no
// terminating NUL when full, and caller buffers of a given capacity. Every copy in the kit
// goes through these, so none reads or writes past its field.
#pragma once

#include <cstddef>
#include <cstring>
#include <string>

namespace molra {

// Length of the text of a field of `width` bytes: up to its first NUL, at most `width`.
inline std::size_t FieldLength(const char* field, std::size_t width) {
  const void* nul = std::memchr(field, '\0', width);
  return nul != nullptr ? static_cast<std::size_t>(static_cast<const char*>(nul) - field) : width;
}

// Bounded copy into a fixed-width field: at most `width` bytes of `src` up to its NUL, the
// rest zero-filled, no terminating NUL when the source is as long as the field or longer.
// A null source empties the field. Inline: the order path fills half a dozen short fields
// per request.
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

// The text of a fixed-width field.
template <std::size_t N>
std::string FieldText(const char (&field)[N]) {
  return std::string(field, FieldLength(field, N));
}

// Copies `text` into a caller's buffer of `cap` bytes: at most cap - 1 bytes and a NUL.
// Nothing is written when the buffer is null or has no room.
inline void CopyOut(char* buf, std::size_t cap, const std::string& text) {
  if (buf == nullptr || cap == 0) return;
  const std::size_t n = text.size() < cap - 1 ? text.size() : cap - 1;
  std::memcpy(buf, text.data(), n);
  buf[n] = '\0';
}

// A possibly null text as log lines show it.
inline const char* LogText(const char* s) { return s != nullptr ? s : ""; }

}  // namespace molra
