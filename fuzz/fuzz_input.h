// Splits a fuzzer's input into the values a target needs: a few leading control bytes, then
// the rest as the record or answer under test. Reading past the end gives zeros / empty.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace molra::fuzz {

class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size) : p_(data), n_(size) {}
  std::uint8_t Byte() { return n_ > 0 ? (--n_, *p_++) : 0; }
  std::int32_t Int32() {
    std::uint32_t v = 0;
    for (int i = 0; i < 4; ++i) v |= static_cast<std::uint32_t>(Byte()) << (8 * i);
    return static_cast<std::int32_t>(v);
  }
  // A text of up to `max` bytes, ended early by a zero byte (which is consumed).
  std::string Text(std::size_t max) {
    std::string s;
    while (n_ > 0 && s.size() < max) {
      char c = static_cast<char>(Byte());
      if (c == '\0') break;
      s.push_back(c);
    }
    return s;
  }
  // The rest as an exactly sized heap buffer, so that a read past its end is reported.
  std::vector<char> Rest() {
    std::vector<char> v(p_, p_ + n_);
    p_ += n_;
    n_ = 0;
    return v;
  }
  std::size_t left() const { return n_; }

 private:
  const std::uint8_t* p_;
  std::size_t n_;
};

}  // namespace molra::fuzz
