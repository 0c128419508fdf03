#include "dispatch.h"

#include <atomic>
#include <mutex>
#include <unordered_map>

#include "backend.h"
#include "bench.h"
#include "handlers.h"
#include "push.h"
#include "scripted.h"
#include "sim_core.h"

namespace sim {
namespace {
std::atomic<bool> g_bench{false};
std::mutex g_prepared_mutex;
std::unordered_map<std::string, Answer> g_prepared;
}  // namespace

bool BenchMode() { return g_bench.load(std::memory_order_relaxed); }
void SetBenchMode(bool on) {
  ClearPrepared();
  g_bench = on;
}

void ClearPrepared() {
  std::lock_guard<std::mutex> lock(g_prepared_mutex);
  g_prepared.clear();
}

void FlushBackendPushes() {
  std::vector<PendingPush> pushes;
  {
    Backend& be = Backend::Get();
    std::lock_guard<std::mutex> lock(be.mutex());
    pushes = be.TakePushes();
  }
  for (auto& p : pushes) QueueBackendPush(std::move(p));
}

static void Compute(const Request& req, const Settings& set, Answer* ans) {
  *ans = Answer();
  if (FindScripted(req.func, ans)) return;
  Handler h = FindHandler(req.func);
  if (h == nullptr) {
    ans->Fail(-1, "function " + req.func + " is not supported by the simulated back end");
    return;
  }
  {
    Backend& be = Backend::Get();
    std::lock_guard<std::mutex> lock(be.mutex());
    if (req.is_block && req.block.size() < 30) {
      ans->Fail(err::kBadRequest, "request block too short");
    } else {
      HandlerCtx ctx{be, req, set, *ans};
      h(ctx);
    }
  }
  ApplyLength(req.func, ans);
  FlushBackendPushes();
}

void Dispatch(const Request& req, const Settings& set, Answer* ans) {
  if (BenchMode()) {
    {
      std::lock_guard<std::mutex> lock(g_prepared_mutex);
      auto it = g_prepared.find(req.func);
      if (it != g_prepared.end()) {
        *ans = it->second;
        return;
      }
    }
    Compute(req, set, ans);
    std::lock_guard<std::mutex> lock(g_prepared_mutex);
    g_prepared.emplace(req.func, *ans);
    return;
  }
  RecordRequest(req.func, req.Describe());
  Compute(req, set, ans);
}

}  // namespace sim
