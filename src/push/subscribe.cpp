#include "push/subscribe.h"

#include <fmt/format.h>

#include <atomic>
#include <mutex>

#include "account/registry.h"
#include "comm/conn_pool.h"
#include "comm/kel_api.h"
#include "config/ini_file.h"
#include "log/log.h"
#include "push/push_handlers.h"
#include "util/field_ids.h"

namespace molra {

namespace {

constexpr const char* kFunc = "SubscribeTradeMsg";
constexpr int kConfirmSlot = KelComm::KelConn::kConfirmSlot;
constexpr int kMatchSlot = KelComm::KelConn::kReportSlot;

// One of the two subscriptions: the confirmations ("qr") or the match reports ("cj").
struct Subscription {
  const char* tag;
  const std::string& func_code;
  std::atomic<kel::int64>& slot;
  kel::SubscribeFn handler;  // null: pushes go to the global structured handler
};

void Subscribe(KelComm::KelConn& conn, const std::string& khh, const std::string& condition,
               const Subscription& sub) {
  KelSession session = AllocSubscribeSession(conn);
  bool ok = false;
  if (session) {
    kel::api.Kel_SetNodeId(session.handle(), CustomerNodeId(khh));
    // Pushes name the back end's system type 4; other types have no trade messages.
    if (conn.system_type == 4) {
      CreateHead(session, sub.func_code.c_str());
      kel::api.Kel_SetSubsCondi(session.handle(), condition.c_str());
      // The transport stores the id in the slot it is given; the slot is published once.
      kel::int64 id = sub.slot.load();
      ok = kel::api.Kel_Subscribe(session.handle(), &id, sub.handler, nullptr);
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

void SubscribeTradeMsg(const std::string& khh, std::shared_ptr<KelComm::KelConn> conn) {
  const GlobalConfig& global = Global();
  const bool structured = global.struct_push_msg;
  if (structured) kel::api.Kel_RegGlobalStructPublishFunc(&ScStructMsgProc, nullptr);
  if (khh.empty() || !conn) return;
  // A second login of the customer at the same moment waits here, then finds it subscribed.
  std::lock_guard<std::mutex> lock(conn->subscribe_mutex);
  std::atomic<kel::int64>* slots = conn->ActiveSlots();
  if (slots[kConfirmSlot] >= 1) {
    MOLRA_LOG_INFO("{} qr already subscribe", kFunc);
    return;
  }
  if (slots[kMatchSlot] >= 1) {
    MOLRA_LOG_INFO("{} cj already subscribe", kFunc);
    return;
  }
  const std::string condition = fmt::format("getstring({})=='{}'", fid::KHH, khh);
  Subscribe(*conn, khh, condition,
            {"qr", global.confirm_msg_func, slots[kConfirmSlot],
             structured ? nullptr : &ScOrderMsgProcess});
  // With structured pushes the match subscription shares the confirmation slot, so the
  // match slot stays 0 and a repeated login stops at "qr already subscribe". The
  // confirmation id is kept apart for the cancellation.
  if (structured) conn->displaced_confirm[conn->ActiveGroup()].store(slots[kConfirmSlot].load());
  Subscribe(*conn, khh, condition,
            {"cj", global.report_msg_func, slots[structured ? kConfirmSlot : kMatchSlot],
             structured ? nullptr : &ScReportMsgProcess});
}

}  // namespace molra
