#include "push/subscribe.h"

#include <fmt/format.h>

#include <atomic>
#include <mutex>

#include "comm/conn_pool.h"
#include "comm/kel_api.h"
#include "core/context.h"
#include "core/log.h"
#include "push/push_handlers.h"
#include "util/field_ids.h"

namespace molra {

namespace {

constexpr const char* kFunc = "SubscribeTradeMsg";

// One of the two subscriptions: the confirmations ("qr") or the match reports ("cj").
struct Subscription {
  const char* tag;
  const std::string& func_code;
  std::atomic<kel::int64>& slot;
  kel::SubscribeFn handler;  // null: pushes go to the global structured handler
};

void Subscribe(KelComm::KelConn& conn, std::int32_t node_id, const std::string& condition,
               const Subscription& sub) {
  Result<KelSession> session = AllocSubscribeSession(conn);
  bool ok = false;
  if (session) {
    const kel::int64 h = session->handle();
    kel::api.Kel_SetNodeId(h, node_id);
    // Pushes name the back end's system type 4; other types have no trade messages.
    if (conn.system_type == kSystemType) {
      CreateHead(*session, sub.func_code.c_str());
      kel::api.Kel_SetSubsCondi(h, condition.c_str());
      // The transport stores the id in the slot it is given; the slot is published once.
      kel::int64 id = sub.slot.load();
      ok = kel::api.Kel_Subscribe(h, &id, sub.handler, nullptr);
      sub.slot.store(id);
    }
  }
  if (ok) {
    MOLRA_LOG_INFO("{} {} subscribe success", kFunc, sub.tag);
  } else {
    MOLRA_LOG_INFO("{} {} subscribe failed", kFunc, sub.tag);
  }
}

}  // namespace

void SubscribeTradeMsg(const PushSettings& push, const std::string& khh, std::int32_t node_id,
                       const std::shared_ptr<KelComm::KelConn>& conn) {
  const bool structured = push.struct_push_msg;
  if (structured) {
    kel::api.Kel_RegGlobalStructPublishFunc(&ScStructMsgProc, const_cast<PushSettings*>(&push));
  }
  if (khh.empty() || !conn) return;
  KelComm::KelConn::Subscriptions& ids = conn->subscriptions;
  // A second login of the customer at the same moment waits here, then finds it subscribed.
  std::lock_guard<std::mutex> lock(ids.mutex);
  if (ids.confirm >= 1) {
    MOLRA_LOG_INFO("{} qr already subscribe", kFunc);
    return;
  }
  if (ids.match >= 1) {
    MOLRA_LOG_INFO("{} cj already subscribe", kFunc);
    return;
  }
  const std::string condition = fmt::format("getstring({})=='{}'", fid::KHH, khh);
  Subscribe(*conn, node_id, condition,
            {"qr", push.confirm_msg_func, ids.confirm, structured ? nullptr : &ScOrderMsgProcess});
  // With structured pushes the match subscription takes the confirmation id's place, so the
  // match id stays 0 and a repeated login stops at "qr already subscribe". The confirmation
  // id is kept apart for the cancellation.
  if (structured) ids.displaced_confirm.store(ids.confirm.load());
  Subscribe(*conn, node_id, condition,
            {"cj", push.report_msg_func, structured ? ids.confirm : ids.match,
             structured ? nullptr : &ScReportMsgProcess});
}

}  // namespace molra
