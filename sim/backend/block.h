// Little-endian access to the packed request and answer blocks.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>

namespace sim {

// A packed block: reads beyond the end give zero, writes beyond the end are dropped.
class Block {
 public:
  Block() = default;
  explicit Block(std::size_t size) : b_(size, '\0') {}
  explicit Block(std::string bytes) : b_(std::move(bytes)) {}

  std::size_t size() const { return b_.size(); }
  const std::string& bytes() const { return b_; }
  std::string& bytes() { return b_; }

  std::int64_t Int(std::size_t off, int width) const {
    std::uint64_t v = 0;
    for (int i = 0; i < width; ++i) {
      std::uint64_t byte = off + i < b_.size() ? static_cast<unsigned char>(b_[off + i]) : 0;
      v |= byte << (8 * i);
    }
    if (width < 8 && (v >> (8 * width - 1)) & 1) v |= ~std::uint64_t{0} << (8 * width);  // sign
    return static_cast<std::int64_t>(v);
  }
  std::int16_t I16(std::size_t off) const { return static_cast<std::int16_t>(Int(off, 2)); }
  std::int32_t I32(std::size_t off) const { return static_cast<std::int32_t>(Int(off, 4)); }
  std::int64_t I64(std::size_t off) const { return Int(off, 8); }
  std::uint8_t U8(std::size_t off) const { return static_cast<std::uint8_t>(Int(off, 1)); }
  double F64(std::size_t off) const {
    std::uint64_t v = static_cast<std::uint64_t>(Int(off, 8));
    double d;
    std::memcpy(&d, &v, sizeof d);
    return d;
  }
  // Text of at most `width` bytes, up to the first NUL.
  std::string Text(std::size_t off, std::size_t width) const {
    std::string s;
    for (std::size_t i = 0; i < width && off + i < b_.size() && b_[off + i] != '\0'; ++i)
      s += b_[off + i];
    return s;
  }

  void PutInt(std::size_t off, int width, std::int64_t value) {
    std::uint64_t v = static_cast<std::uint64_t>(value);
    for (int i = 0; i < width; ++i)
      if (off + i < b_.size()) b_[off + i] = static_cast<char>((v >> (8 * i)) & 0xff);
  }
  void PutI16(std::size_t off, std::int64_t v) { PutInt(off, 2, v); }
  void PutI32(std::size_t off, std::int64_t v) { PutInt(off, 4, v); }
  void PutI64(std::size_t off, std::int64_t v) { PutInt(off, 8, v); }
  void PutU8(std::size_t off, std::int64_t v) { PutInt(off, 1, v); }
  void PutF64(std::size_t off, double d) {
    std::uint64_t v;
    std::memcpy(&v, &d, sizeof v);
    PutInt(off, 8, static_cast<std::int64_t>(v));
  }
  // Bounded copy: at most `width` bytes, the rest of the field zero; no NUL when full.
  void PutText(std::size_t off, std::size_t width, const std::string& s) {
    for (std::size_t i = 0; i < width && off + i < b_.size(); ++i)
      b_[off + i] = i < s.size() ? s[i] : '\0';
  }

 private:
  std::string b_;
};

}  // namespace sim
