#include "faults.h"

#include <cstring>

namespace sim {

Faults& faults() {
  static Faults* f = new Faults;
  return *f;
}

const char* CopyText(const std::string& s, char* buf, std::int32_t* len) {
  std::int32_t cap = len ? *len : 0;
  if (len) *len = static_cast<std::int32_t>(s.size());
  if (buf == nullptr || cap <= 0) return nullptr;
  std::size_t n = std::min(s.size(), static_cast<std::size_t>(cap - 1));
  std::memcpy(buf, s.data(), n);
  buf[n] = '\0';
  return buf;
}

bool CopyBinary(const std::string& s, char* buf, std::int32_t* len) {
  std::int32_t cap = len ? *len : 0;
  std::size_t n = std::min(s.size(), static_cast<std::size_t>(cap > 0 ? cap : 0));
  if (buf != nullptr && n > 0) std::memcpy(buf, s.data(), n);
  if (len) *len = static_cast<std::int32_t>(buf ? n : 0);
  return true;
}

}  // namespace sim
