// Subscription of a logged-in customer to its order confirmations and match reports.
#pragma once

#include <memory>
#include <string>

namespace KelComm {
class KelConn;
}

namespace molra {

// Subscribes `khh` on the set's subscribe connection (per-subscription handlers, or the
// global structured handler when StructPushMsg is on). The outcome is only logged.
void SubscribeTradeMsg(const std::string& khh, std::shared_ptr<KelComm::KelConn> conn);

}  // namespace molra
