// The three push handlers: the global structured publish handler and the two
// per-subscription handlers. They run on transport threads and keep no state.
#include "push/push_handlers.h"

#include "comm/kel_api.h"
#include "core/context.h"
#include "core/guard.h"
#include "core/log.h"
#include "push/push_decode.h"

namespace molra {
namespace {

// The function number of a configured code: the decimal value of its leading digits, so
// that a code beginning with a letter ("DM0003") counts as 0.
std::int64_t FunctionNumber(const std::string& code) {
  std::int64_t n = 0;
  for (char c : code) {
    if (c < '0' || c > '9' || n > (std::int64_t{1} << 40)) break;
    n = n * 10 + (c - '0');
  }
  return n;
}

// Nothing is built or logged unless a message callback is set.
void DeliverPush(const char* name, const char* record, bool structured, int type) {
  const HostCallback cb = Host().msg_callback.load(std::memory_order_acquire);
  if (cb == nullptr) return;
  JsonText text;
  WritePush(text.writer(), record, structured, type);
  MOLRA_LOG_INFO("{} push message {}", name, text.c_str());
  CallHost(cb, text.c_str(), type);
}

// The pushed record is the session's whole binary body (field 0).
bool SubscriptionPush(const char* name, kel::int64 session, bool confirmation) {
  char record[kConfirmRecordLen] = {};
  kel::int32 len = kConfirmRecordLen;
  if (!kel::api.Kel_GetItemBuf(session, 0, record, &len, -1) || len < kConfirmRecordLen) {
    MOLRA_LOG_INFO("{} received incorrect length message", name);
    return false;
  }
  DeliverPush(name, record, false, confirmation ? ConfirmType(record, false) : kPushMatch);
  return true;
}

}  // namespace

void ScStructMsgProc(void* ctx, kel::int32 func, kel::int32 len, const char* data) {
  static const char kName[] = "ScStructMsgProc";
  Guard(
      kName, kNoResult,
      [&] {
        const auto* push = static_cast<const PushSettings*>(ctx);
        if (push != nullptr && data != nullptr && len >= kStructPushRecordLen) {
          if (func == FunctionNumber(push->confirm_msg_func)) {
            DeliverPush(kName, data, true, ConfirmType(data, true));
            return;
          }
          if (func == FunctionNumber(push->report_msg_func)) {
            DeliverPush(kName, data, true, kPushMatch);
            return;
          }
        }
        MOLRA_LOG_INFO("{} received unknow message. func:{} datalen:{}", kName, func, len);
      },
      Boundary::kEvent);
}

bool ScOrderMsgProcess(void*, kel::int64 session) {
  return Guard(
      "ScOrderMsgProcess", false,
      [&] { return SubscriptionPush("ScOrderMsgProcess", session, true); }, Boundary::kEvent);
}

bool ScReportMsgProcess(void*, kel::int64 session) {
  return Guard(
      "ScReportMsgProcess", false,
      [&] { return SubscriptionPush("ScReportMsgProcess", session, false); }, Boundary::kEvent);
}

}  // namespace molra
