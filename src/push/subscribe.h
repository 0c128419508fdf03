// Subscription of a logged-in customer to its order confirmations and match reports.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace KelComm {
class KelConn;
}

namespace molra {

struct PushSettings;  // core/context.h

// Subscribes `khh` on the set's subscribe connection (per-subscription handlers, or the
// global structured handler when StructPushMsg is on), on the customer's node. The outcome
// is only logged. `push` is the kit's: the structured handler keeps it.
void SubscribeTradeMsg(const PushSettings& push, const std::string& khh, std::int32_t node_id,
                       const std::shared_ptr<KelComm::KelConn>& conn);

}  // namespace molra
