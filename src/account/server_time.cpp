#include "account/server_time.h"

#include <atomic>

#include "account/registry.h"
#include "core/errors.h"
#include "comm/conn_pool.h"
#include "comm/kel_api.h"
#include "core/messages.h"
#include "util/field_ids.h"
#include "util/time_text.h"

namespace molra {

namespace {
// Written by each measurement without a lock; readers see the value before or after.
std::atomic<std::int64_t> g_system_date{0};
std::atomic<std::int64_t> g_offset_ms{0};

constexpr const char* kServerTimeCode = "A00001";
constexpr const char* kCurTimeFunc = "GetCurTime";
constexpr int kServerTextCap = 128;

std::string ServerTimeText(kel::int64 session) {
  char buf[kServerTextCap] = {};
  kel::int32 len = kServerTextCap;
  kel::api.Kel_GetItem(session, fid::SERVER_TIME, buf, &len, -1);
  buf[kServerTextCap - 1] = '\0';
  return buf;
}
}  // namespace

std::int64_t SystemDate() { return g_system_date.load(std::memory_order_relaxed); }
std::int64_t TimeOffsetMs() { return g_offset_ms.load(std::memory_order_relaxed); }

bool GetCurTime() {
  std::shared_ptr<KelComm::KelConn> conn = Registry().DefaultConn(0);
  KelSession session = conn ? AllocManagementSession(*conn) : KelSession();
  if (!session) {
    SetLastError(-202, GetStagedError().message, kCurTimeFunc, nullptr);
    return false;
  }
  std::string t0 = LocalStamp();
  CreateHead(session, kServerTimeCode);
  if (!kel::api.Kel_Run(session.handle())) {
    SetLastError(-204, msg::kSendFailed, kCurTimeFunc, nullptr);
    return false;
  }
  if (kel::api.Kel_GetCode(session.handle()) <= 0) return false;
  std::string t1 = LocalStamp();
  g_system_date.store(kel::api.Kel_GetLong(session.handle(), fid::SYS_DATE, -1));
  kel::api.Kel_GetLong(session.handle(), fid::TIME_UNUSED, -1);
  std::int64_t correction = kel::api.Kel_GetLong(session.handle(), fid::TIME_CORRECTION, -1);
  std::int64_t server_ms = ServerTimeToMs(ServerTimeText(session.handle()).c_str());
  std::int64_t ms0 = TextToMs(t0.c_str());
  std::int64_t ms1 = TextToMs(t1.c_str());
  g_offset_ms.store(ms1 - (ms1 - ms0) / 2 - server_ms - correction);
  return true;
}

std::int64_t ReviseTimeMs() { return TextToMs(LocalStamp().c_str()) - TimeOffsetMs(); }

}  // namespace molra
