// Argument checks of the order exports, request numbers, and the customer record built
// from bare arguments.
#pragma once

#include <cstdint>
#include <string>

#include "core/context.h"
#include "core/messages.h"
#include "core/status.h"
#include "core/text.h"
#include "secmolra.h"

namespace molra::trade {

constexpr std::int64_t kMaxRequestNumber = 9999999999999999LL;

// The next generated request number: the local time "%02d%02d%02d" with its leading zeros
// removed, followed by the kit's request counter as "%010lld" (09:31:05, counter 42 ->
// 931050000000042). The counter is shared by every order call.
std::int64_t GenerateRequestNumber(Kit& kit);
// The time part of a generated number for a given time of day ("7" for 00:00:07).
std::string RequestNumberTimeText(int hour, int minute, int second);

// A record built from bare arguments: khh (16) and gdh (12) bounded, node id and token -1
// so that the registry supplies both, every text empty (Node and ErrorMsg only up to their
// terminating NUL: read them as texts).
CusLoginInfo MakeRecord(const char* khh, const char* gdh);

// Checks of one export, in the order they are called; the first failure is kept (to be
// recorded under the export's name) and turns every later check into a no-op.
class ArgCheck {
 public:
  // -221 "非法参数" when one of the pointers is null.
  ArgCheck& NotNull(std::initializer_list<const void*> ptrs);
  // -221 `msg` when one of the strings is empty; a null string is not checked here.
  ArgCheck& NotEmpty(std::initializer_list<const char*> strs, const char* msg);
  // -221 `msg` unless `ok`.
  ArgCheck& Require(bool ok, const char* msg = msg::kIllegalArgument);
  // -221 "{label}[{v}]非法，范围0~9999999999999999" when v, taken as unsigned, is above the
  // largest request number (so every negative value too).
  ArgCheck& InRange(std::int64_t v, const char* label);

  bool ok() const { return status_.ok(); }
  Status status() const { return status_; }

 private:
  void Fail(std::int64_t code, std::string msg);
  Status status_ = Ok();
};

// The checks shared by the entrust exports: the customer as strings (khh and gdh), or as a
// record (whose pointer is left to the frame), and the request number of _ASync forms.
ArgCheck CheckOrderArgs(const char* khh, const char* jys, const char* zqdm, const char* gdh,
                        bool async, std::int64_t number);
ArgCheck CheckOrderArgsEx(const CusLoginInfo* record, const char* jys, const char* zqdm, bool async,
                          std::int64_t number);

}  // namespace molra::trade
