// The simulated back end as a server: one Exchange shared by every simulated transport that
// connects over TCP (sim/net/wire.h is the protocol). Each client connection is served on its
// own: a malformed or oversized frame, a frame that stalls half-way, or output the client does
// not take closes that connection only. Requests are answered in the order they came on a
// connection; pushes go to every connection that asked for the customer's pushes. All the
// networking runs on the thread that calls Run, with the exchange's clock.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace sim {

class Exchange;

struct ServerOptions {
  std::string confirm_func = "DM0003";  // told to clients in the welcome
  std::string report_func = "DM0004";
  std::int64_t stall_ms = 10000;       // a hello, a frame begun, or a write, for longer closes
  std::size_t max_output = 64u << 20;  // bytes queued for a client that does not read
};

class Server {
 public:
  Server(Exchange& exchange, ServerOptions options);
  ~Server();
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  // Listens on host:port (port 0: any free port); false with the reason.
  bool Listen(const std::string& host, std::uint16_t port, std::string* error);
  // The address it listens on, "host:port" with the port chosen.
  std::string address() const;
  // Ends Run on SIGINT or SIGTERM.
  void StopOnSignals();
  // Serves until Stop; the connections are closed when it returns.
  void Run();
  // From any thread.
  void Stop();

 private:
  class Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace sim
