#include "comm/timer.h"

#include <algorithm>
#include <chrono>

namespace molra {

namespace {

using Clock = std::chrono::steady_clock;

std::int64_t NowNs() {
  return std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now().time_since_epoch())
      .count();
}

constexpr std::int64_t kTickNs = 100'000'000;
constexpr std::int64_t kMaxSleepNs = 10LL * 24 * 3600 * 1'000'000'000LL;
constexpr std::int64_t kNsPerMs = 1'000'000;

std::atomic<int> g_live_threads{0};

}  // namespace

TimerService::TimerService() {
  // Counted from here, so a caller that sees the service built also sees its thread.
  ++g_live_threads;
  try {
    thread_ = std::thread([this] {
      Loop();
      --g_live_threads;
    });
  } catch (...) {
    --g_live_threads;
    throw;
  }
}

TimerService::~TimerService() {
  Stop();
  // Destroyed from one of its own callbacks: the thread cannot join itself.
  if (thread_.joinable()) thread_.detach();
}

int TimerService::LiveThreads() { return g_live_threads.load(); }

std::int64_t TimerService::Add(std::int64_t interval_ms, bool one_shot, Callback cb) {
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  std::int64_t id = next_id_++;
  entries_.push_back({id, interval_ms, one_shot, NowNs() + interval_ms * kNsPerMs, std::move(cb)});
  return id;
}

void TimerService::Remove(std::int64_t id) {
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  entries_.erase(std::remove_if(entries_.begin(), entries_.end(),
                                [id](const Entry& e) { return e.id == id; }),
                 entries_.end());
}

std::size_t TimerService::EntryCount() const {
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  return entries_.size();
}

void TimerService::Stop() {
  {
    std::lock_guard<std::mutex> lock(sleep_mutex_);
    running_.store(false);
  }
  wake_.notify_all();
  if (thread_.joinable() && thread_.get_id() != std::this_thread::get_id()) thread_.join();
}

void TimerService::Loop() {
  while (running_.load()) {
    RunDue(NowNs());
    SleepOneTick();
  }
}

void TimerService::RunDue(std::int64_t now_ns) {
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  // Ids first: a callback may add or remove entries, which moves the others.
  std::vector<std::int64_t> due;
  for (const Entry& e : entries_) {
    if (e.due_ns <= now_ns) due.push_back(e.id);
  }
  std::vector<std::int64_t> finished;
  for (std::int64_t id : due) {
    auto it = std::find_if(entries_.begin(), entries_.end(),
                           [id](const Entry& e) { return e.id == id; });
    if (it == entries_.end()) continue;  // removed by an earlier callback
    if (it->one_shot) {
      finished.push_back(id);
    } else {
      it->due_ns = now_ns + it->interval_ms * kNsPerMs;
    }
    Callback cb = it->cb;  // the entry may go away while it runs
    cb(id);
  }
  for (std::int64_t id : finished) Remove(id);
}

void TimerService::SleepOneTick() {
  const std::int64_t sleep_ns = std::min(kTickNs, kMaxSleepNs);
  const auto until = Clock::time_point(std::chrono::nanoseconds(NowNs() + sleep_ns));
  std::unique_lock<std::mutex> lock(sleep_mutex_);
  wake_.wait_until(lock, until, [this] { return !running_.load(); });
}

}  // namespace molra
