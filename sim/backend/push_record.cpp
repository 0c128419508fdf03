#include "push_record.h"

#include <unordered_map>

#include "block.h"

namespace sim {
namespace {

enum class T { Text, I64, I32, F64, U8 };

struct FieldDef {
  const char* key;
  T type;
  int off402;  // -1: not in the 402-byte record
  int off415;
  int width402;
  int width415;
};

// The record layout. The structured record starts with 13 bytes of its own (left zero) and
// splits the product serial into an 11-byte serial and a 7-byte developer code.
constexpr FieldDef kFields[] = {
    {"KHH", T::Text, 0, 13, 13, 13},        {"ZJZH", T::Text, 13, 26, 31, 31},
    {"WTH", T::I64, 44, 57, 8, 8},          {"YYB", T::Text, 52, 65, 5, 5},
    {"JYS", T::Text, 57, 70, 3, 3},         {"GDH", T::Text, 60, 73, 11, 11},
    {"BPGDH", T::Text, 71, 84, 11, 11},     {"ZQDM", T::Text, 82, 95, 9, 9},
    {"ZQLB", T::Text, 91, 104, 9, 9},       {"JYDY", T::Text, 100, 113, 7, 7},
    {"YWLB", T::Text, 107, 120, 3, 3},      {"CXBZ", T::Text, 110, 123, 2, 2},
    {"CJBH", T::Text, 112, 125, 31, 31},    {"CJSJ", T::Text, 143, 156, 13, 13},
    {"BZ", T::Text, 156, 169, 4, 4},        {"WTJG", T::F64, 160, 173, 8, 8},
    {"WTSL", T::I64, 168, 181, 8, 8},       {"CDSL", T::I64, 176, 189, 8, 8},
    {"DJZJ", T::F64, 184, 197, 8, 8},       {"CJSL", T::I64, 192, 205, 8, 8},
    {"CJJG", T::F64, 200, 213, 8, 8},       {"CJJE", T::F64, 208, 221, 8, 8},
    {"ZCJSL", T::I64, 216, 229, 8, 8},      {"ZCJJE", T::F64, 224, 237, 8, 8},
    {"QSZJ", T::F64, 232, 245, 8, 8},       {"JYLB", T::U8, 240, 253, 1, 1},
    {"DDLX", T::I32, 241, 254, 4, 4},       {"SBJG", T::I32, 245, 258, 4, 4},
    {"JGSM", T::Text, 249, 262, 61, 61},    {"CXWTH", T::I64, 310, 323, 8, 8},
    {"LSH", T::I64, 318, 331, 8, 8},        {"WTGY", T::Text, 326, 339, 9, 9},
    {"JYSCPFL", T::Text, 335, 348, 11, 11}, {"JYSCPXH", T::Text, 346, 359, 18, 11},
    {"KFSDM", T::Text, -1, 370, 0, 7},      {"KFSBDBH", T::Text, 364, 377, 17, 17},
    {"MSGCODE", T::Text, 381, 394, 8, 8},   {"QRSJ", T::Text, 389, 402, 13, 13},
};

static_assert(sizeof kFields / sizeof kFields[0] == kPushFields, "kPushFields counts the table");

}  // namespace

PushValues::Slot* PushValues::Find(std::string_view k) {
  static const auto* index = [] {
    auto* m = new std::unordered_map<std::string_view, int>;
    for (int i = 0; i < kPushFields; ++i) (*m)[kFields[i].key] = i;
    return m;
  }();
  auto it = index->find(k);
  return it == index->end() ? nullptr : &slots_[static_cast<std::size_t>(it->second)];
}

void PushValues::Text(std::string_view k, std::string v) {
  if (Slot* s = Find(k)) {
    s->text = std::move(v);
    s->has_text = true;
  }
}

void PushValues::Int(std::string_view k, std::int64_t v) {
  if (Slot* s = Find(k)) {
    s->i = v;
    s->has_int = true;
  }
}

void PushValues::Real(std::string_view k, double v) {
  if (Slot* s = Find(k)) {
    s->d = v;
    s->has_real = true;
  }
}

std::string EncodePushRecord(const PushValues& v, bool structured) {
  Block b(structured ? kStructPushRecordSize : kPushRecordSize);
  for (int i = 0; i < kPushFields; ++i) {
    const FieldDef& f = kFields[i];
    const PushValues::Slot& s = v.slot(i);
    int off = structured ? f.off415 : f.off402;
    int width = structured ? f.width415 : f.width402;
    if (off < 0) continue;
    if (f.type == T::Text && s.has_text)
      b.PutText(off, width - 1, s.text);  // NUL-terminated within the width
    if (f.type == T::F64 && s.has_real) b.PutF64(off, s.d);
    if (f.type != T::Text && f.type != T::F64 && s.has_int) b.PutInt(off, width, s.i);
  }
  return b.bytes();
}

}  // namespace sim
