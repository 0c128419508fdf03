// A log line whose format names its fields, "{fn} lpKhh:{khh} lsh:{lsh}": the values are
// kept as given (texts copied into one buffer on the stack, which grows on the heap only for
// texts longer than a line) and written into the line in one pass. fmt's dynamic named arguments
// copy every name to the heap and search the names with string compares for every placeholder,
// which made a logged order several times dearer than the order itself.
#pragma once

#include <fmt/format.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <vector>

namespace molra {

namespace line_detail {
// A field's name with its first eight bytes as one number: most names are that short, and
// two names are compared with one comparison of numbers and sizes.
struct Name {
  fmt::string_view text;
  std::uint64_t head = 0;

  static Name Of(fmt::string_view text) {
    Name n{text, 0};
    std::memcpy(&n.head, text.data(), text.size() < 8 ? text.size() : 8);
    return n;
  }
  bool operator==(const Name& o) const {
    return head == o.head && text.size() == o.text.size() &&
           (text.size() <= 8 ||
            std::memcmp(text.data() + 8, o.text.data() + 8, text.size() - 8) == 0);
  }
};
}  // namespace line_detail

// A line's format read once: its literal pieces and the names between them, so that a line
// written many times does not scan its format again. An unusable format ("{x:d}", an
// unmatched brace) keeps the pieces before the fault and is refused when written.
class LineFormat {
 public:
  explicit LineFormat(const char* format);

 private:
  friend class NamedLine;
  struct Piece {
    fmt::string_view literal;
    bool named;  // false: a literal only
    line_detail::Name name;
  };
  std::vector<Piece> pieces_;
  bool usable_ = true;
};

class NamedLine {
 public:
  static constexpr int kMaxFields = 20;

  // Names are literals: only the pointer is kept. A name given twice is written with its
  // last value. Fields beyond kMaxFields are dropped.
  template <typename T>
  void Add(const char* name, const T& value) {
    if constexpr (std::is_same_v<T, bool>) {
      AddText(name, value ? "true" : "false");
    } else if constexpr (std::is_integral_v<T> && std::is_signed_v<T>) {
      AddNumber(name, Kind::kInt).i = static_cast<long long>(value);
    } else if constexpr (std::is_integral_v<T>) {
      AddNumber(name, Kind::kUint).u = static_cast<unsigned long long>(value);
    } else if constexpr (std::is_floating_point_v<T>) {
      AddNumber(name, Kind::kDouble).d = static_cast<double>(value);
    } else if constexpr (std::is_array_v<T>) {
      AddText(name, fmt::string_view(value));
    } else if constexpr (std::is_pointer_v<T>) {
      AddText(name, value != nullptr ? fmt::string_view(value) : fmt::string_view());
    } else {
      AddText(name, value);
    }
  }

  // Appends the line to `out`: "{name}" is replaced by the value's text as "{}" would
  // write it, "{{" and "}}" are single braces. False, with `out` incomplete, when the
  // format names a field that was not added, or has a placeholder with a format spec or
  // an unmatched brace.
  bool Format(const char* format, fmt::memory_buffer& out) const;
  bool Format(const LineFormat& format, fmt::memory_buffer& out) const;

 private:
  enum class Kind : unsigned char { kInt, kUint, kDouble, kText };
  struct Text {  // a place in texts_
    std::size_t at;
    std::size_t size;
  };
  struct Field {
    line_detail::Name name;
    Kind kind;
    union {
      long long i;
      unsigned long long u;
      double d;
      Text text;
    };
  };

  Field& Next(const char* name, Kind kind);
  Field& AddNumber(const char* name, Kind kind) { return Next(name, kind); }
  void AddText(const char* name, fmt::string_view text);
  const Field* Find(const line_detail::Name& name) const;
  void Write(const Field& f, fmt::memory_buffer& out) const;

  Field fields_[kMaxFields];
  int count_ = 0;
  Field spare_;  // where fields beyond kMaxFields go
  fmt::basic_memory_buffer<char, 512> texts_;
};

}  // namespace molra
