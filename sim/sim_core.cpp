#include "sim_core.h"

#include <atomic>
#include <cstring>
#include <mutex>

#include "kelsim.h"

namespace sim {
namespace {
std::mutex g_log_mutex;
std::string g_log;
std::atomic<bool> g_default_info_ok{true};
}  // namespace

void Trace(const std::string& line) {
  std::lock_guard<std::mutex> lock(g_log_mutex);
  g_log += line;
  g_log += '\n';
}

}  // namespace sim

using sim::Trace;

static std::string S(const char* s) { return s ? s : "(null)"; }

KEL_EXPORT bool Kel_Initialize(void) {
  Trace("Kel_Initialize()");
  return true;
}
KEL_EXPORT void Kel_Uninitialize(void) { Trace("Kel_Uninitialize()"); }
KEL_EXPORT bool Kel_SetDefaultInfo(const char* a, const char* wtfs, const char* c, const char* d) {
  Trace("Kel_SetDefaultInfo(" + S(a) + "," + S(wtfs) + "," + S(c) + "," + S(d) + ")");
  return sim::g_default_info_ok.load();
}
KEL_EXPORT void Kel_SetDefaultSystemId(kel::int32 id) { Trace("Kel_SetDefaultSystemId(" + std::to_string(id) + ")"); }
KEL_EXPORT void Kel_SetDefaultNodeId(kel::int32 id) { Trace("Kel_SetDefaultNodeId(" + std::to_string(id) + ")"); }
KEL_EXPORT void Kel_SetLogPath(const char* dir) { Trace("Kel_SetLogPath(" + S(dir) + ")"); }
KEL_EXPORT bool Kel_WriteLog(bool enable) {
  Trace(std::string("Kel_WriteLog(") + (enable ? "1" : "0") + ")");
  return true;
}

KELSIM_EXPORT void KelSim_Reset(void) {
  KelSim_ClearCallLog();
  sim::g_default_info_ok = true;
}

KELSIM_EXPORT int32_t KelSim_CallLog(char* buf, int32_t cap) {
  std::lock_guard<std::mutex> lock(sim::g_log_mutex);
  if (buf != nullptr && cap > 0) {
    std::size_t n = std::min<std::size_t>(sim::g_log.size(), static_cast<std::size_t>(cap - 1));
    std::memcpy(buf, sim::g_log.data(), n);
    buf[n] = '\0';
  }
  return static_cast<int32_t>(sim::g_log.size());
}

KELSIM_EXPORT void KelSim_ClearCallLog(void) {
  std::lock_guard<std::mutex> lock(sim::g_log_mutex);
  sim::g_log.clear();
}

KELSIM_EXPORT void KelSim_SetDefaultInfoResult(bool ok) { sim::g_default_info_ok = ok; }
