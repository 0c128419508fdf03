// Connections of the simulated transport to a server of the simulated back end (molra-simd):
// one TCP connection per transport connection, all on one network thread of the transport
// (Asio). A connection that drops is reported down with a break event and reconnected with a
// back-off; once the server has it again (its pushes asked for anew) it is reported up with
// event 0. Requests whose answers a drop lost fail: Kel_Run answers false, a Kel_Write's
// reply handler gets code -1.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "backend/message.h"
#include "net/wire.h"

namespace sim::remote {

// The break event of a connection that dropped.
constexpr std::int32_t kDropEvent = 1;

// Whether an address names a server: "host:port" that is not an address of the in-process
// back end.
bool IsServerAddress(const std::string& addr);

// Connects transport connection `conn` (registered in the core as down) to the server at
// `addr`, waiting at most timeout_s seconds for the server's welcome; false with the reason.
// On success the connection is up in the core and carries the server's push codes.
bool Open(std::int64_t conn, const std::string& addr, std::int32_t timeout_s, std::string* error);
// Closes it once the answers still on their way have come (at most a couple of seconds).
void Close(std::int64_t conn);
// KelSim_BreakConnection: closes the socket and keeps the connection down until Restore.
void Break(std::int64_t conn);
// KelSim_RestoreConnection: connects again (event 0 once it is up).
void Restore(std::int64_t conn);

// Sends a request and waits for its answer (at most timeout_s; 0: 30 s); false when it could
// not be sent or no answer came.
bool Call(std::int64_t conn, const Request& req, std::int32_t node_id, std::int32_t timeout_s,
          Answer* ans);
// Sends a request; `done` gets the answer, or false and a failure answer when it was lost, on
// the network thread. False when it cannot be sent (done is then never called).
bool Send(std::int64_t conn, const Request& req, std::int32_t node_id,
          std::function<void(bool, Answer)> done);
// Tells the server which customers' pushes the connection wants now (its subscriptions'),
// and waits for it to take note; false when the connection is down.
bool UpdateInterest(std::int64_t conn);

// A control call on the exchange of the server that the process's first server connection
// reaches. False when the process has no server connection; otherwise *answer holds the
// result (ok false when the call failed or the connection is down).
bool Control(const wire::ControlMsg& msg, wire::ControlAnswer* answer);

// The back-off of reconnection: the first attempt after first_ms, then twice as long each
// time up to max_ms.
void SetReconnectDelay(std::int32_t first_ms, std::int32_t max_ms);
// Closes every server connection (waiting a little for answers on their way) and ends the
// network thread; it starts again with the next Open.
void Shutdown();

}  // namespace sim::remote
