// The compact JSON texts of pushes and replies: one writer per message, written in one pass
// straight from the binary record, with no copies of text fields.
#pragma once

#include <rapidjson/allocators.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "core/text.h"

namespace molra {

using JsonPool = rapidjson::MemoryPoolAllocator<>;
using JsonBuffer = rapidjson::GenericStringBuffer<rapidjson::UTF8<>, JsonPool>;
using JsonWriter = rapidjson::Writer<JsonBuffer, rapidjson::UTF8<>, rapidjson::UTF8<>, JsonPool>;

}  // namespace molra

// Numbers are written straight into the text buffer, as RapidJSON does for its own default
// buffer only; through the generic path every digit is copied once more, which makes a push
// text about a fifth slower.
namespace rapidjson {
#define MOLRA_DIRECT_NUMBER(Fn, T, room, conv)                                          \
  template <>                                                                           \
  inline bool Writer<::molra::JsonBuffer, UTF8<>, UTF8<>, ::molra::JsonPool>::Fn(T v) { \
    char* p = os_->Push(room);                                                          \
    const char* end = internal::conv(v, p);                                             \
    os_->Pop(static_cast<size_t>(room - (end - p)));                                    \
    return true;                                                                        \
  }
MOLRA_DIRECT_NUMBER(WriteInt, int, 11, i32toa)
MOLRA_DIRECT_NUMBER(WriteUint, unsigned, 10, u32toa)
MOLRA_DIRECT_NUMBER(WriteInt64, int64_t, 21, i64toa)
MOLRA_DIRECT_NUMBER(WriteUint64, uint64_t, 20, u64toa)
#undef MOLRA_DIRECT_NUMBER

template <>
inline bool Writer<::molra::JsonBuffer, UTF8<>, UTF8<>, ::molra::JsonPool>::WriteDouble(double d) {
  if (internal::Double(d).IsNanOrInf()) return false;  // see molra::WriteDouble
  char* p = os_->Push(25);
  const char* end = internal::dtoa(d, p, maxDecimalPlaces_);
  os_->Pop(static_cast<size_t>(25 - (end - p)));
  return true;
}
}  // namespace rapidjson

namespace molra {

// One message under construction. The pool hands out 65536-byte chunks, the first of them
// on the stack, so a message of ordinary size costs no heap allocation; the text buffer
// starts at 256 bytes and grows in place inside the chunk.
class JsonText {
 public:
  static constexpr std::size_t kChunkSize = 65536;
  static constexpr std::size_t kInitialText = 256;

  JsonText()
      : pool_(first_chunk_, sizeof first_chunk_, kChunkSize),
        text_(&pool_, kInitialText),
        writer_(text_, &pool_, kNestingDepth) {}
  JsonText(const JsonText&) = delete;
  JsonText& operator=(const JsonText&) = delete;

  JsonWriter& writer() { return writer_; }
  // The finished text, NUL-terminated, valid while this object lives.
  const char* c_str() const { return text_.GetString(); }
  std::size_t size() const { return text_.GetSize(); }

 private:
  static constexpr std::size_t kNestingDepth = 4;  // reply, "orders", one row
  alignas(16) char first_chunk_[3072];
  JsonPool pool_;
  JsonBuffer text_;
  JsonWriter writer_;
};

// A member name given as a literal: its length is known at compile time.
template <std::size_t N>
inline void Key(JsonWriter& w, const char (&key)[N]) {
  w.Key(key, static_cast<rapidjson::SizeType>(N - 1));
}

// A text field as a JSON string: its bytes passed through unconverted (GBK stays GBK).
inline void WriteText(JsonWriter& w, const char* p, std::size_t width) {
  w.String(p, static_cast<rapidjson::SizeType>(FieldLength(p, width)));
}

// A number that no record should hold (NaN, infinity) would end the writer's output in
// the middle of a member; it is written as null so that the text stays valid JSON.
inline void WriteDouble(JsonWriter& w, double d) {
  if (std::isfinite(d)) {
    w.Double(d);
  } else {
    w.Null();
  }
}

// A little-endian value at any offset of a record.
template <typename T>
inline T LoadAt(const char* p) {
  T v;
  std::memcpy(&v, p, sizeof v);
  return v;
}

// Calls a host callback with the local time stamp "%02d%02d%02d.%03d".
using HostCallback = void (*)(const char* time, const char* json, std::int32_t type);
void CallHost(HostCallback cb, const char* json, std::int32_t type);

}  // namespace molra
