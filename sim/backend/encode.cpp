#include "encode.h"

#include <cctype>

namespace sim {
namespace {

unsigned char Salt(const std::string& khh, std::size_t i) {
  return khh.empty() ? 0x5A : static_cast<unsigned char>(khh[i % khh.size()]);
}

int Hex(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

}  // namespace

std::string EncodePassword(PwdForm form, const std::string& khh, const std::string& clear) {
  static const char kDigits[] = "0123456789ABCDEF";
  std::string out(1, form == PwdForm::Uni ? 'U' : '3');
  for (std::size_t i = 0; i < clear.size(); ++i) {
    unsigned char b = static_cast<unsigned char>(clear[i]);
    unsigned char e = form == PwdForm::Uni ? static_cast<unsigned char>(b ^ Salt(khh, i))
                                           : static_cast<unsigned char>(b + Salt(khh, i));
    out += kDigits[e >> 4];
    out += kDigits[e & 15];
  }
  return out;
}

bool DecodePassword(PwdForm form, const std::string& khh, const std::string& encoded,
                    std::string* clear) {
  if (encoded.empty() || encoded[0] != (form == PwdForm::Uni ? 'U' : '3') ||
      encoded.size() % 2 != 1)
    return false;
  std::string out;
  for (std::size_t i = 1, n = 0; i < encoded.size(); i += 2, ++n) {
    int hi = Hex(encoded[i]), lo = Hex(encoded[i + 1]);
    if (hi < 0 || lo < 0) return false;
    unsigned char e = static_cast<unsigned char>(hi * 16 + lo);
    out += static_cast<char>(form == PwdForm::Uni ? e ^ Salt(khh, n) : e - Salt(khh, n));
  }
  *clear = out;
  return true;
}

}  // namespace sim
