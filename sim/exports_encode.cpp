// The password encoders (see encode.h for the two forms).
#include <cstring>

#include "backend/encode.h"
#include "kel_exports.h"

using sim::LogCall;

namespace {

bool EncodeInPlace(sim::PwdForm form, const char* khh, char* buf, kel::int32* len) {
  if (buf == nullptr || len == nullptr || *len <= 0) return false;
  std::size_t cap = static_cast<std::size_t>(*len);
  std::string clear(buf, strnlen(buf, cap));
  std::string enc = sim::EncodePassword(form, khh ? khh : "", clear);
  *len = static_cast<kel::int32>(enc.size());
  if (enc.size() + 1 > cap) return false;  // does not fit: *len says how much is needed
  std::memcpy(buf, enc.c_str(), enc.size() + 1);
  return true;
}

}  // namespace

KEL_EXPORT bool Kel_UniEncode(const char* khh, char* buf, kel::int32* len) {
  LogCall("Kel_UniEncode", khh);
  return EncodeInPlace(sim::PwdForm::Uni, khh, buf, len);
}

KEL_EXPORT bool Kel_UniEncode3rd(const char* khh, char* buf, kel::int32* len) {
  LogCall("Kel_UniEncode3rd", khh);
  return EncodeInPlace(sim::PwdForm::Third, khh, buf, len);
}
