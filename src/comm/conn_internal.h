// Shared by the connection set's own files: the four connections as data (which handle,
// state and address each uses, and its log lines), the orders in which the set walks them,
// and small helpers.
#pragma once

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "comm/conn_pool.h"
#include "core/messages.h"
#include "core/text.h"

namespace KelComm {
// The kit's texts and fields, for the connection set's files.
namespace msg = molra::msg;
using molra::FieldText;
}  // namespace KelComm

namespace KelComm::roles {

enum Role { kMgmt, kTrade, kQuery, kSubscribe };

struct RoleInfo {
  std::atomic<kel::int64> KelConn::*handle;
  std::atomic<std::int32_t> KelConn::*state;
  char (molra::ConnProfile::*addr)[512];
  bool bind_customer;     // bound after connecting and again after a reconnect
  const char* connected;  // info, with key and address
  const char* broken;     // info, with key
  const char* restored;   // info, with key and customer
};

inline constexpr RoleInfo kRoles[] = {
    {&KelConn::mgmt_handle, &KelConn::mgmt_state, &molra::ConnProfile::addr, false,
     "connect success key:{} szAddr:{}", msg::kMgmtBroken, msg::kMgmtRestored},
    {&KelConn::trade_handle, &KelConn::trade_state, &molra::ConnProfile::trade_addr, true,
     "connect success key:{} szTradeAddr:{}", msg::kTradeBroken, msg::kTradeRestored},
    {&KelConn::query_handle, &KelConn::query_state, &molra::ConnProfile::query_addr, true,
     "connect success key:{} szQueryAddr:{}", msg::kQueryBroken, msg::kQueryRestored},
    {&KelConn::subscribe_handle, &KelConn::subscribe_state, &molra::ConnProfile::subscribe_addr,
     true, "connect success key:{} szSubscribeAddr:{}", msg::kSubscribeBroken,
     msg::kSubscribeRestored},
};

// Closing stale handles before a connect.
inline constexpr Role kStaleCloseOrder[] = {kMgmt, kTrade, kSubscribe, kQuery};
// Opening.
inline constexpr Role kOpenOrder[] = {kMgmt, kTrade, kQuery, kSubscribe};
// Registering and deregistering the event handler.
inline constexpr Role kEventOrder[] = {kMgmt, kSubscribe, kQuery, kTrade};
// Finding the connection an event is about.
inline constexpr Role kLookupOrder[] = {kMgmt, kQuery, kTrade, kSubscribe};

// The customer is bound to the trade, query and subscribe connections unless the trade
// address was defaulted to the management address or the profile is in traders mode.
inline bool BindsCustomer(const molra::ConnProfile& p) {
  return !p.trade_addr_defaulted && !p.use_traders;
}

// Sets whose event handler may run. An event finds its set here and holds it for the
// duration of the handler, so a set closed or destroyed meanwhile is never touched.
void AdmitEvents(KelConn& set);
void StopEvents(const KelConn& set);
std::shared_ptr<KelConn> SetForEvent(void* ctx);

// Opens one session on `conn`, cancels each subscription id on it and releases it. Nothing
// is staged: this also runs on transport threads.
void Unsubscribe(kel::int64 conn, const std::vector<kel::int64>& ids);

}  // namespace KelComm::roles
