// Subscription of a logged-in customer to its order confirmations and match reports.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace KelComm {
class KelConn;
}

namespace molra {

// Subscribes `khh` on the set's subscribe connection (per-subscription handlers, or the
// global structured handler when StructPushMsg is on), on the customer's node. The outcome
// is only logged.
void SubscribeTradeMsg(const std::string& khh, std::int32_t node_id,
                       std::shared_ptr<KelComm::KelConn> conn);

}  // namespace molra
