// The pushed trade record in its two layouts: the 402-byte confirmation record (body of a
// push session) and the 415-byte structured record (global structured publish handler).
// Both are written from one table of fields.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace sim {

constexpr int kPushRecordSize = 402;
constexpr int kStructPushRecordSize = 415;
constexpr int kPushFields = 38;  // fields of the record's table

// Field values by key ("KHH", "WTH", ...), kept in the slots of the record's table (a server
// writes thousands of records a second). Fields not set are written as zero; so are keys the
// record does not have, and a value of another kind than its field (a text for a number).
class PushValues {
 public:
  void Text(std::string_view k, std::string v);
  void Int(std::string_view k, std::int64_t v);
  void Real(std::string_view k, double v);

  struct Slot {
    std::string text;
    std::int64_t i = 0;
    double d = 0;
    bool has_text = false, has_int = false, has_real = false;
  };
  const Slot& slot(int field) const { return slots_[static_cast<std::size_t>(field)]; }

 private:
  Slot* Find(std::string_view k);
  std::array<Slot, kPushFields> slots_{};
};

// The record in the per-subscription layout (structured = false) or the structured one.
std::string EncodePushRecord(const PushValues& v, bool structured);

}  // namespace sim
