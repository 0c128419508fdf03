// molra-simd: the simulated back end as a server for the simulated transports of several
// processes. Prints "listening on <host>:<port>" as its first line of standard output, serves
// until SIGINT or SIGTERM, then saves the state and exits 0. Exits 2 when the configuration,
// the state file or the address cannot be used, with the reason on the standard error.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <string>

#include "config.h"
#include "exchange.h"
#include "server.h"
#include "wire.h"

namespace {

int Fail(const std::string& why) {
  std::fprintf(stderr, "molra-simd: %s\n", why.c_str());
  return 2;
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app{
      "The simulated broker back end and exchange, served over TCP to simulated transports."};
  std::string listen = "127.0.0.1:9301";
  std::string config_path, state_path;
  sim::ServerOptions opt;
  app.add_option("--listen", listen, "host:port to listen on; port 0 takes a free port")
      ->capture_default_str();
  app.add_option("--config", config_path,
                 "back-end configuration (INI); default: the built-in back end")
      ->check(CLI::ExistingFile);
  app.add_option("--state", state_path,
                 "state file (replaces [backend] state); empty: the configuration's");
  app.add_option("--stall-ms", opt.stall_ms,
                 "a client whose hello, frame or output waits this long is closed")
      ->check(CLI::Range(std::int64_t{10}, std::int64_t{86400000}))
      ->capture_default_str();
  CLI11_PARSE(app, argc, argv);

  std::string host, why;
  std::uint16_t port = 0;
  if (!sim::wire::SplitHostPort(listen, &host, &port, true))
    return Fail("--listen wants host:port, not " + listen);

  sim::Config cfg = sim::DefaultConfig();
  if (!config_path.empty() && !sim::LoadConfigFile(config_path, cfg, &why)) return Fail(why);
  if (!state_path.empty()) cfg.state = state_path;
  opt.confirm_func = cfg.confirm_func;
  opt.report_func = cfg.report_func;

  sim::Exchange exchange;
  if (!exchange.Start(cfg, &why)) return Fail("the back end does not start: " + why);
  sim::Server server(exchange, opt);
  if (!server.Listen(host, port, &why)) return Fail(why);
  server.StopOnSignals();
  std::printf("listening on %s\n", server.address().c_str());
  std::fflush(stdout);
  server.Run();
  exchange.Save();
  std::fprintf(stderr, "molra-simd: stopped, state saved\n");
  return 0;
}
