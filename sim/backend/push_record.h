// The pushed trade record in its two layouts: the 402-byte confirmation record (body of a
// push session) and the 415-byte structured record (global structured publish handler).
// Both are written from one table of fields.
#pragma once

#include <cstdint>
#include <map>
#include <string>

namespace sim {

constexpr int kPushRecordSize = 402;
constexpr int kStructPushRecordSize = 415;

// Field values by key ("KHH", "WTH", ...); keys not set are written as zero.
struct PushValues {
  std::map<std::string, std::string> text;
  std::map<std::string, std::int64_t> ints;
  std::map<std::string, double> reals;
  void Text(const std::string& k, const std::string& v) { text[k] = v; }
  void Int(const std::string& k, std::int64_t v) { ints[k] = v; }
  void Real(const std::string& k, double v) { reals[k] = v; }
};

// The record in the per-subscription layout (structured = false) or the structured one.
std::string EncodePushRecord(const PushValues& v, bool structured);

}  // namespace sim
