// Delivery of pushes to subscriptions, on the push thread. A subscription receives the pushes
// of its customer (the customer number in its condition) whose kind matches its function
// code: the confirmation code (default "DM0003") receives confirmations, the match code
// (default "DM0004") match reports. Subscriptions on a connection that is down receive
// nothing (those pushes are lost, as with a real link).
#pragma once

#include <cstdint>
#include <string>

#include "backend/backend.h"

namespace sim {

// A push of the in-process back end, for the subscriptions of connections to it.
void QueueBackendPush(PendingPush p);
// A push a server sent on a connection, for that connection's subscriptions: its record in
// the layout of subscriptions with a handler and in the structured one.
void QueueServerPush(std::int64_t conn, const std::string& khh, int kind, std::string plain,
                     std::string structured);
// A record given by the control interface, delivered as it is in both paths, to every
// connection's subscriptions.
void QueueRawPush(const std::string& khh, int kind, std::string record);
// Function number passed to the structured handler: the value of the code's leading digits.
int FuncNumber(const std::string& code);

}  // namespace sim
