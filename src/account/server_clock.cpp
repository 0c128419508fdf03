#include "account/server_clock.h"

#include <string>

#include "comm/kel_api.h"
#include "core/messages.h"
#include "util/field_ids.h"
#include "util/time_text.h"

namespace molra {

namespace {

constexpr const char* kServerTimeCode = "A00001";
constexpr const char* kTradeDateCode = "A00066";
constexpr const char* kMeasureName = "GetCurTime";
constexpr int kServerTextCap = 128;

std::string ServerTimeText(kel::int64 session) {
  char buf[kServerTextCap] = {};
  kel::int32 len = kServerTextCap;
  kel::api.Kel_GetItem(session, fid::SERVER_TIME, buf, &len, -1);
  buf[kServerTextCap - 1] = '\0';
  return buf;
}

}  // namespace

Status MeasureServerTime(Kit* kit) {
  std::shared_ptr<KelComm::KelConn> conn = kit != nullptr ? kit->customers.DefaultConn(0) : nullptr;
  if (!conn) return Failure{SECMOLRA_ERR_SESSION, msg::kNotConnected, kMeasureName};
  Result<KelSession> session = AllocManagementSession(*conn);
  if (!session) return session.TakeFailure().At(kMeasureName);
  const std::string t0 = LocalStamp();
  Result<KvAnswer> answer = RunRequest(std::move(*session), {{}, kServerTimeCode, {}}, kAnyCode);
  if (!answer) return answer.TakeFailure().At(kMeasureName);
  if (answer->value <= 0) return Ok();
  const std::string t1 = LocalStamp();
  const kel::int64 h = answer->session.handle();
  kit->clock.system_date.store(kel::api.Kel_GetLong(h, fid::SYS_DATE, -1));
  kel::api.Kel_GetLong(h, fid::TIME_UNUSED, -1);
  const std::int64_t correction = kel::api.Kel_GetLong(h, fid::TIME_CORRECTION, -1);
  const std::int64_t server_ms = ServerTimeToMs(ServerTimeText(h).c_str());
  const std::int64_t ms0 = TextToMs(t0.c_str());
  const std::int64_t ms1 = TextToMs(t1.c_str());
  kit->clock.offset_ms.store(ms1 - (ms1 - ms0) / 2 - server_ms - correction);
  return Ok();
}

std::int64_t SystemDate() {
  const Kit* kit = CurrentKit();
  return kit != nullptr ? kit->clock.system_date.load(std::memory_order_relaxed) : 0;
}

std::int64_t ReviseTimeMs() {
  const Kit* kit = CurrentKit();
  const std::int64_t offset =
      kit != nullptr ? kit->clock.offset_ms.load(std::memory_order_relaxed) : 0;
  return TextToMs(LocalStamp().c_str()) - offset;
}

Result<std::int64_t> AskTradeDate(KelSession session, ReqFields settings, const AnswerRule& rule) {
  Result<KvAnswer> answer =
      RunRequest(std::move(session), {std::move(settings), kTradeDateCode, {}}, rule);
  if (!answer) return answer.TakeFailure();
  return kel::api.Kel_GetLong(answer->session.handle(), fid::TRADE_DATE, -1);
}

}  // namespace molra
