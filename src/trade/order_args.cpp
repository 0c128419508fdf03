#include "trade/order_args.h"

#include <fmt/format.h>

#include <atomic>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "core/messages.h"
#include "util/clock.h"

namespace molra::trade {

std::string RequestNumberTimeText(int hour, int minute, int second) {
  char text[16];
  std::snprintf(text, sizeof text, "%02d%02d%02d", hour, minute, second);
  const char* p = text;
  while (*p == '0') ++p;
  return p;
}

std::int64_t GenerateRequestNumber(Kit& kit) {
  long long counter = kit.request_counter.fetch_add(1) + 1LL;
  LocalTime now = NowLocal();
  std::string time_text = RequestNumberTimeText(now.hour, now.minute, now.second);
  char number[32];
  std::snprintf(number, sizeof number, "%s%010lld", time_text.c_str(), counter);
  return std::strtoll(number, nullptr, 10);
}

CusLoginInfo MakeRecord(const char* khh, const char* gdh) {
  CusLoginInfo rec;
  // Built for every plain order: the two 256-byte texts are made empty, not zeroed.
  std::memset(&rec, 0, offsetof(CusLoginInfo, Node));
  rec.Node[0] = '\0';
  rec.Token = -1;
  rec.ErrorCode = 0;
  rec.ErrorMsg[0] = '\0';
  CopyField(rec.KHH, khh);
  CopyField(rec.GDH, gdh);
  rec.NodeID = -1;
  return rec;
}

void ArgCheck::Fail(std::int64_t code, std::string msg) { status_ = Failure{code, std::move(msg)}; }

ArgCheck& ArgCheck::NotNull(std::initializer_list<const void*> ptrs) {
  for (const void* p : ptrs) {
    if (ok() && p == nullptr) Fail(SECMOLRA_ERR_ARGUMENT, msg::kIllegalArgument);
  }
  return *this;
}

ArgCheck& ArgCheck::NotEmpty(std::initializer_list<const char*> strs, const char* msg) {
  for (const char* s : strs) {
    if (ok() && s != nullptr && *s == '\0') Fail(SECMOLRA_ERR_ARGUMENT, msg);
  }
  return *this;
}

ArgCheck& ArgCheck::Require(bool cond, const char* msg) {
  if (ok() && !cond) Fail(SECMOLRA_ERR_ARGUMENT, msg);
  return *this;
}

ArgCheck& ArgCheck::InRange(std::int64_t v, const char* label) {
  if (ok() && static_cast<std::uint64_t>(v) > static_cast<std::uint64_t>(kMaxRequestNumber)) {
    Fail(SECMOLRA_ERR_ARGUMENT,
         fmt::format(msg::kNumberOutOfRange, label, v, 0, kMaxRequestNumber));
  }
  return *this;
}

ArgCheck CheckOrderArgs(const char* khh, const char* jys, const char* zqdm, const char* gdh,
                        bool async, std::int64_t number) {
  ArgCheck c;
  c.NotNull({khh, jys, zqdm, gdh}).NotEmpty({khh, jys, zqdm, gdh}, msg::kEmptyOrderArgs);
  if (async) c.InRange(number, "KFSBDBH");
  return c;
}

ArgCheck CheckOrderArgsEx(const CusLoginInfo* record, const char* jys, const char* zqdm, bool async,
                          std::int64_t number) {
  ArgCheck c;
  c.NotNull({jys, zqdm})
      .NotEmpty({record ? record->KHH : nullptr, jys, zqdm, record ? record->GDH : nullptr},
                msg::kEmptyOrderArgs);
  if (async) c.InRange(number, "KFSBDBH");
  return c;
}

}  // namespace molra::trade
