#include "call_log.h"

#include <atomic>
#include <cstdio>
#include <mutex>

#include "bench.h"

namespace sim {
namespace {
std::mutex g_log_mutex;
std::string g_log;
std::atomic<bool> g_on{true};
// A long-running host that never clears the log keeps its most recent part.
constexpr std::size_t kMaxLog = 8u << 20;
}  // namespace

bool CallLogOn() { return g_on.load(std::memory_order_relaxed) && !BenchMode(); }
void SetCallLog(bool on) { g_on = on; }

void Trace(const std::string& line) {
  std::lock_guard<std::mutex> lock(g_log_mutex);
  if (g_log.size() + line.size() > kMaxLog) {
    std::size_t cut = g_log.find('\n', g_log.size() / 2);
    g_log.erase(0, cut == std::string::npos ? g_log.size() : cut + 1);
  }
  g_log += line;
  g_log += '\n';
}

std::string CallLogText() {
  std::lock_guard<std::mutex> lock(g_log_mutex);
  return g_log;
}

void ClearCallLog() {
  std::lock_guard<std::mutex> lock(g_log_mutex);
  g_log.clear();
}

std::string LogArg(double d) {
  char buf[64];
  std::snprintf(buf, sizeof buf, "%g", d);
  return buf;
}

}  // namespace sim
