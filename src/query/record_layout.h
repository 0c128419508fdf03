// A query record's layout as data: one entry per field (offset, answer key, type, width).
// FillRecord reads one answer row into a record through such a table, so no query has a
// filler of its own.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>

#include "comm/kel_abi.h"

namespace molra::query {

enum class FieldType : std::uint8_t {
  kText,       // NUL-padded text of `width` bytes (Kel_GetItem), not terminated when full
  kInt32,      // Kel_GetLong narrowed to 32 bits
  kInt64,      // Kel_GetLong
  kDouble,     // Kel_GetDouble
  kDoubleSum,  // the sum of the doubles of `sum_keys`, added left to right
};

struct FieldSpec {
  std::size_t offset;
  std::int32_t key;  // 0 for a sum
  FieldType type;
  std::size_t width;
  std::int32_t sum_keys[3];
};

struct RecordLayout {
  const FieldSpec* fields;
  std::size_t count;
  std::size_t size;  // bytes of the record
};

template <typename T>
struct FieldTypeOf;
template <std::size_t N>
struct FieldTypeOf<char[N]> {
  static constexpr FieldType value = FieldType::kText;
};
template <>
struct FieldTypeOf<std::int32_t> {
  static constexpr FieldType value = FieldType::kInt32;
};
template <>
struct FieldTypeOf<std::int64_t> {
  static constexpr FieldType value = FieldType::kInt64;
};
template <>
struct FieldTypeOf<double> {
  static constexpr FieldType value = FieldType::kDouble;
};

// Writes the row's fields into `record` (layout.size bytes). Bytes not named by the layout
// are left as they are: the caller zeroes the record when the query wants that.
void FillRecord(kel::int64 session, kel::int32 row, const RecordLayout& layout, char* record);

}  // namespace molra::query

// One field of record type Rec filled from answer key `key`; type and width follow the member.
#define MOLRA_FIELD(Rec, member, key)                                                        \
  ::molra::query::FieldSpec {                                                                \
    offsetof(Rec, member), (key), ::molra::query::FieldTypeOf<decltype(Rec::member)>::value, \
        sizeof(Rec::member), {}                                                              \
  }
// A double member holding the sum of up to three answer keys.
#define MOLRA_SUM_FIELD(Rec, member, k1, k2, k3)                                            \
  ::molra::query::FieldSpec {                                                               \
    offsetof(Rec, member), 0, ::molra::query::FieldType::kDoubleSum, sizeof(Rec::member), { \
      (k1), (k2), (k3)                                                                      \
    }                                                                                       \
  }
