// Decoding of pushed confirmation and match records into JSON texts. One table describes
// every field of both layouts; decoding walks it once, in member order.
#include "push/push_decode.h"

#include <string>

#include "core/json_text.h"
#include "push/push_handlers.h"

namespace molra {
namespace {

enum class Kind : std::uint8_t { kText, kInt64, kInt32, kUint8, kDouble };

constexpr int kConfirm = 0;     // the 402-byte confirmation record
constexpr int kStructured = 1;  // the 415-byte structured push record
constexpr int kAbsent = -1;

struct PushField {
  const char* key;
  std::uint8_t key_len;
  Kind kind;
  std::int16_t offset[2];  // per layout; kAbsent when the layout lacks the field
  std::uint8_t width[2];
};

constexpr PushField F(const char* key, Kind kind, int off402, int off415, int width,
                      int width415 = -1) {
  return {key,
          static_cast<std::uint8_t>(std::char_traits<char>::length(key)),
          kind,
          {static_cast<std::int16_t>(off402), static_cast<std::int16_t>(off415)},
          {static_cast<std::uint8_t>(width),
           static_cast<std::uint8_t>(width415 < 0 ? width : width415)}};
}

constexpr Kind T = Kind::kText, I64 = Kind::kInt64, I32 = Kind::kInt32, U8 = Kind::kUint8,
               D = Kind::kDouble;

// In the order of the JSON members, which is not quite the order of the record: the
// confirmation time comes before the developer code, client serial and product fields.
constexpr PushField kPushFields[] = {
    F("KHH", T, 0, 13, 13),
    F("ZJZH", T, 13, 26, 31),
    F("WTH", I64, 44, 57, 8),
    F("YYB", T, 52, 65, 5),
    F("JYS", T, 57, 70, 3),
    F("GDH", T, 60, 73, 11),
    F("BPGDH", T, 71, 84, 11),
    F("ZQDM", T, 82, 95, 9),
    F("ZQLB", T, 91, 104, 9),
    F("JYDY", T, 100, 113, 7),
    F("YWLB", T, 107, 120, 3),
    F("CXBZ", T, 110, 123, 2),
    F("CJBH", T, 112, 125, 31),
    F("CJSJ", T, 143, 156, 13),
    F("BZ", T, 156, 169, 4),
    F("WTJG", D, 160, 173, 8),
    F("WTSL", I64, 168, 181, 8),
    F("CDSL", I64, 176, 189, 8),
    F("DJZJ", D, 184, 197, 8),
    F("CJSL", I64, 192, 205, 8),
    F("CJJG", D, 200, 213, 8),
    F("CJJE", D, 208, 221, 8),
    F("ZCJSL", I64, 216, 229, 8),
    F("ZCJJE", D, 224, 237, 8),
    F("QSZJ", D, 232, 245, 8),
    F("JYLB", U8, 240, 253, 1),
    F("DDLX", I32, 241, 254, 4),
    F("SBJG", I32, 245, 258, 4),
    F("JGSM", T, 249, 262, 61),
    F("CXWTH", I64, 310, 323, 8),
    F("LSH", I64, 318, 331, 8),
    F("WTGY", T, 326, 339, 9),
    F("QRSJ", T, 389, 402, 13),
    F("KFSDM", T, kAbsent, 370, 7),
    F("KFSBDBH", T, 364, 377, 17),
    F("JYSCPFL", T, 335, 348, 11),
    F("JYSCPXH", T, 346, 359, 18, 11),
    F("MSGCODE", T, 381, 394, 8),
};

constexpr int kRecordLen[2] = {kConfirmRecordLen, kStructPushRecordLen};
constexpr int kFirstByte[2] = {0, 13};  // the structured record's first 13 bytes are not read

constexpr int KindWidth(Kind k) {
  return k == Kind::kText ? 0 : k == Kind::kUint8 ? 1 : k == Kind::kInt32 ? 4 : 8;
}

// Every byte of a layout after its unread head belongs to exactly one field, and every
// number has its type's width.
constexpr bool LayoutIsExact(int layout) {
  int covered = 0;
  for (const PushField& a : kPushFields) {
    int off = a.offset[layout], w = a.width[layout];
    if (off == kAbsent) continue;
    if (off < kFirstByte[layout] || off + w > kRecordLen[layout]) return false;
    if (a.kind != Kind::kText && KindWidth(a.kind) != w) return false;
    for (const PushField& b : kPushFields) {
      int boff = b.offset[layout];
      if (&a != &b && boff != kAbsent && boff < off + w && off < boff + b.width[layout]) {
        return false;
      }
    }
    covered += w;
  }
  return covered == kRecordLen[layout] - kFirstByte[layout];
}
static_assert(LayoutIsExact(kConfirm), "confirmation record layout");
static_assert(LayoutIsExact(kStructured), "structured push record layout");

constexpr int MemberCount(int layout) {
  int n = 0;
  for (const PushField& f : kPushFields) n += f.offset[layout] != kAbsent ? 1 : 0;
  return n;
}
static_assert(MemberCount(kConfirm) == kConfirmMembers, "37 members");
static_assert(MemberCount(kStructured) == kStructPushMembers, "38 members");

constexpr bool SameKey(const char* a, const char* b) {
  while (*a != 0 && *a == *b) ++a, ++b;
  return *a == *b;
}
constexpr const PushField& FieldOf(const char* key) {
  for (const PushField& f : kPushFields) {
    if (SameKey(f.key, key)) return f;
  }
  return kPushFields[0];
}
constexpr const PushField& kCxbz = FieldOf("CXBZ");
constexpr const PushField& kSbjg = FieldOf("SBJG");
static_assert(kCxbz.offset[kConfirm] == 110 && kSbjg.offset[kConfirm] == 245, "type fields");

inline void WriteField(JsonWriter& w, const PushField& f, const char* p, int width) {
  w.Key(f.key, f.key_len);
  switch (f.kind) {
    case Kind::kText:
      WriteText(w, p, static_cast<std::size_t>(width));
      break;
    case Kind::kInt64:
      w.Int64(LoadAt<std::int64_t>(p));
      break;
    case Kind::kInt32:
      w.Int(LoadAt<std::int32_t>(p));
      break;
    case Kind::kUint8:
      w.Uint(static_cast<unsigned char>(*p));
      break;
    case Kind::kDouble:
      WriteDouble(w, LoadAt<double>(p));
      break;
  }
}

}  // namespace

void WritePushMembers(JsonWriter& w, const char* record, bool structured) {
  const int layout = structured ? kStructured : kConfirm;
  for (const PushField& f : kPushFields) {
    const int off = f.offset[layout];
    if (off != kAbsent) WriteField(w, f, record + off, f.width[layout]);
  }
}

void WritePush(JsonWriter& w, const char* record, bool structured, int type) {
  w.StartObject();
  Key(w, "TYPE");
  w.Int(type);
  Key(w, "SYS_TYPE");
  w.Int(4);
  WritePushMembers(w, record, structured);
  Key(w, "PARSE_COST");
  w.Int(0);
  w.EndObject();
}

std::string DecodePush(const char* record, bool structured, int type) {
  JsonText text;
  WritePush(text.writer(), record, structured, type);
  return std::string(text.c_str(), text.size());
}

int ConfirmType(const char* record, bool structured) {
  const int layout = structured ? kStructured : kConfirm;
  const char* cxbz = record + kCxbz.offset[layout];
  if (cxbz[0] == 'W' && cxbz[1] == 0) return kPushWithdrawal;
  const std::int32_t sbjg = LoadAt<std::int32_t>(record + kSbjg.offset[layout]);
  return sbjg == 3 || sbjg == 9 ? kPushRefused : kPushConfirm;
}

}  // namespace molra
