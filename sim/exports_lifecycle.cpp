// Start and stop of the transport, and its library-wide settings.
#include <atomic>
#include <cstdio>

#include "host.h"
#include "kel_exports.h"
#include "remote.h"

namespace sim {
std::atomic<bool> g_default_info_ok{true};
}

using sim::LogCall;

KEL_EXPORT bool Kel_Initialize(void) {
  LogCall("Kel_Initialize");
  // A back end that cannot start (its configuration or state file is not usable) leaves the
  // reason as the last error and in the standard error; connections are refused meanwhile.
  if (!sim::exchange().running()) {
    std::string why = "the simulated back end is not running: " + sim::exchange().failure();
    std::fprintf(stderr, "kelapi50 (simulated): %s\n", why.c_str());
    std::lock_guard<std::mutex> lock(sim::core().mutex);
    sim::core().last_error = why;
    return false;
  }
  sim::StartThreads();
  sim::StartClock();
  return true;
}

KEL_EXPORT void Kel_Uninitialize(void) {
  LogCall("Kel_Uninitialize");
  // Every queued event, reply and push is delivered, then the threads end; the connections
  // are closed with their subscriptions. Sessions stay until released.
  sim::StopClock();
  sim::remote::Shutdown();  // answers still on their way from a server are delivered below
  sim::StopThreads();
  sim::exchange().Save();
  sim::Core& c = sim::core();
  std::lock_guard<std::mutex> lock(c.mutex);
  c.conns.clear();
  c.subs.clear();
}

KEL_EXPORT bool Kel_SetDefaultInfo(const char* a, const char* wtfs, const char* c, const char* d) {
  LogCall("Kel_SetDefaultInfo", a, wtfs, c, d);
  return sim::g_default_info_ok.load();
}

KEL_EXPORT void Kel_SetDefaultSystemId(kel::int32 id) {
  LogCall("Kel_SetDefaultSystemId", id);
  std::lock_guard<std::mutex> lock(sim::core().mutex);
  sim::core().default_system_id = id;
}

KEL_EXPORT void Kel_SetDefaultNodeId(kel::int32 id) {
  LogCall("Kel_SetDefaultNodeId", id);
  std::lock_guard<std::mutex> lock(sim::core().mutex);
  sim::core().default_node_id = id;
}

KEL_EXPORT kel::int32 Kel_GetDefaultSystemId(void) {
  LogCall("Kel_GetDefaultSystemId");
  std::lock_guard<std::mutex> lock(sim::core().mutex);
  return sim::core().default_system_id;
}

KEL_EXPORT kel::int32 Kel_GetDefaultNodeId(void) {
  LogCall("Kel_GetDefaultNodeId");
  std::lock_guard<std::mutex> lock(sim::core().mutex);
  return sim::core().default_node_id;
}

KEL_EXPORT void Kel_SetLogPath(const char* dir) { LogCall("Kel_SetLogPath", dir); }

KEL_EXPORT bool Kel_WriteLog(bool enable) {
  LogCall("Kel_WriteLog", enable);
  return true;
}

KEL_EXPORT void Kel_SetAppInfo(const char* app, const char* extra) {
  LogCall("Kel_SetAppInfo", app, extra);
}

KEL_EXPORT void Kel_SetCertFile(const char* file, const char* pwd, const char* a, const char* b,
                                kel::int32 flag) {
  LogCall("Kel_SetCertFile", file, pwd, a, b, flag);
}

KEL_EXPORT bool Kel_SetParamEx(const char* name, const char* value) {
  LogCall("Kel_SetParamEx", name, value);
  return name != nullptr;
}
