#include "sim_core.h"

#include <atomic>
#include <chrono>

namespace sim {
namespace {
std::atomic<std::uint64_t> g_posted{0};
thread_local DeliveryBatch* t_batch = nullptr;

// One task that runs the tasks of a batch in order.
std::function<void()> Together(std::vector<std::function<void()>> tasks) {
  if (tasks.size() == 1) return std::move(tasks[0]);
  auto shared = std::make_shared<std::vector<std::function<void()>>>(std::move(tasks));
  return [shared] {
    for (auto& t : *shared) t();
  };
}
}  // namespace

DeliveryBatch::DeliveryBatch() : outer_(t_batch) { t_batch = this; }

DeliveryBatch::~DeliveryBatch() {
  t_batch = outer_;
  if (!replies_.empty()) PostReply(Together(std::move(replies_)));
  if (!pushes_.empty()) PostPush(Together(std::move(pushes_)));
}

Core& core() {
  static Core* c = new Core;  // lives until the process ends: threads may still use it then
  return *c;
}

SessionPtr Core::FindSession(std::int64_t id) {
  std::lock_guard<std::mutex> lock(mutex);
  auto it = sessions.find(id);
  return it == sessions.end() ? nullptr : it->second;
}

Connection* Core::FindConnLocked(std::int64_t id) {
  auto it = conns.find(id);
  return it == conns.end() ? nullptr : &it->second;
}

void PostEvent(std::function<void()> task) {
  ++g_posted;
  core().events.Post(std::move(task));
}
void PostReply(std::function<void()> task) {
  if (t_batch != nullptr) return t_batch->replies_.push_back(std::move(task));
  ++g_posted;
  core().replies.Post(std::move(task));
}
void PostPush(std::function<void()> task) {
  if (t_batch != nullptr) return t_batch->pushes_.push_back(std::move(task));
  ++g_posted;
  core().pushes.Post(std::move(task));
}

void PostConnEvent(std::int64_t conn, std::int32_t event) {
  PostEvent([conn, event] {
    kel::ConnEventFn fn = nullptr;
    void* ctx = nullptr;
    {
      std::lock_guard<std::mutex> lock(core().mutex);
      // The handler as it is at delivery: a handler removed meanwhile receives nothing.
      if (const Connection* k = core().FindConnLocked(conn)) {
        fn = k->event_fn;
        ctx = k->event_ctx;
      }
    }
    if (fn != nullptr) fn(conn, event, ctx);
  });
}

void WaitIdle() {
  // A reply may cause a push and a push handler may cause an event: wait until one whole
  // pass sees nothing new.
  for (;;) {
    std::uint64_t before = g_posted.load();
    core().replies.WaitIdle();
    core().pushes.WaitIdle();
    core().events.WaitIdle();
    if (g_posted.load() == before) return;
  }
}

void StartThreads() {
  core().events.Start();
  core().replies.Start();
  core().pushes.Start();
}

void StopThreads() {
  core().replies.Stop();
  core().pushes.Stop();
  core().events.Stop();
}

std::int64_t NowMs() {
  return std::chrono::duration_cast<std::chrono::milliseconds>(
             std::chrono::system_clock::now().time_since_epoch())
      .count();
}

}  // namespace sim
