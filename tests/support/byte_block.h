// A zero-filled byte block that tests fill at set offsets: packed records, answer blocks,
// request blocks. Numbers are stored in the machine's (little-endian) order, unaligned.
#pragma once

#include <cstring>
#include <string>

namespace molra::test {

class ByteBlock {
 public:
  explicit ByteBlock(std::size_t len) : bytes_(len, '\0') {}
  // Copies the bytes of `v` (no terminating NUL) to `off`.
  ByteBlock& Text(std::size_t off, const std::string& v) {
    std::memcpy(&bytes_.at(off), v.data(), v.size());
    return *this;
  }
  template <typename T>
  ByteBlock& Num(std::size_t off, T v) {
    std::memcpy(&bytes_.at(off), &v, sizeof v);
    return *this;
  }
  const char* data() const { return bytes_.data(); }
  std::size_t size() const { return bytes_.size(); }
  const std::string& str() const { return bytes_; }
  operator const std::string&() const { return bytes_; }

 private:
  std::string bytes_;
};

}  // namespace molra::test
