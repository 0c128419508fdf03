// A server of the simulated back end (sim/server/server.h) run on a thread of the test's own
// process, listening on a loopback port, for the tests of the transport's server connections.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>

#include "config.h"
#include "exchange.h"
#include "server.h"

namespace molra::test {

class NetServer {
 public:
  // The back end of the configuration file `ini` (empty: the built-in one) on `port` (0: a
  // free one).
  explicit NetServer(const std::string& ini = std::string(), std::uint16_t port = 0,
                     sim::ServerOptions opt = sim::ServerOptions()) {
    sim::Config cfg = sim::DefaultConfig();
    std::string why;
    if (!ini.empty() && !sim::LoadConfigFile(ini, cfg, &why)) {
      ADD_FAILURE() << why;
      return;
    }
    if (!exchange_.Start(cfg, &why)) {
      ADD_FAILURE() << why;
      return;
    }
    server_ = std::make_unique<sim::Server>(exchange_, opt);
    if (!server_->Listen("127.0.0.1", port, &why)) {
      ADD_FAILURE() << why;
      server_.reset();
      return;
    }
    thread_ = std::thread([this] { server_->Run(); });
  }
  ~NetServer() { Stop(); }
  NetServer(const NetServer&) = delete;
  NetServer& operator=(const NetServer&) = delete;

  // Closes every connection and stops listening.
  void Stop() {
    if (!thread_.joinable()) return;
    server_->Stop();
    thread_.join();
  }
  bool listening() const { return server_ != nullptr; }
  std::string address() const { return server_ ? server_->address() : std::string("127.0.0.1:1"); }
  std::uint16_t port() const {
    return static_cast<std::uint16_t>(std::stoi(address().substr(address().rfind(':') + 1)));
  }
  sim::Exchange& exchange() { return exchange_; }

 private:
  sim::Exchange exchange_;
  std::unique_ptr<sim::Server> server_;
  std::thread thread_;
};

}  // namespace molra::test
