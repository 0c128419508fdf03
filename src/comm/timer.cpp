#include "comm/timer.h"

#include <algorithm>
#include <chrono>

namespace molra {

namespace {
std::int64_t NowNs() {
  return std::chrono::duration_cast<std::chrono::nanoseconds>(
             std::chrono::steady_clock::now().time_since_epoch())
      .count();
}
constexpr std::int64_t kTickNs = 100'000'000;
constexpr std::int64_t kMaxSleepNs = 10LL * 24 * 3600 * 1'000'000'000LL;
}  // namespace

TimerService::TimerService() : thread_([this] { Loop(); }) {}

TimerService::~TimerService() { Stop(); }

std::int64_t TimerService::Add(std::int64_t interval_ms, bool one_shot, Callback cb) {
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  std::int64_t id = next_id_++;
  entries_.push_back({id, interval_ms, one_shot, NowNs() + interval_ms * 1'000'000, std::move(cb)});
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
  running_.store(false);
  if (thread_.joinable() && thread_.get_id() != std::this_thread::get_id()) thread_.join();
}

void TimerService::Loop() {
  while (running_.load()) {
    std::int64_t now = NowNs();
    {
      std::lock_guard<std::recursive_mutex> lock(mutex_);
      std::vector<std::int64_t> done;
      // Index loop: a callback may add entries (the mutex is recursive).
      for (std::size_t i = 0; i < entries_.size(); ++i) {
        if (entries_[i].due_ns > now) continue;
        Callback cb = entries_[i].cb;
        std::int64_t id = entries_[i].id;
        if (entries_[i].one_shot) {
          done.push_back(id);
        } else {
          entries_[i].due_ns = now + entries_[i].interval_ms * 1'000'000;
        }
        cb(id);
      }
      for (std::int64_t id : done) Remove(id);
    }
    std::int64_t sleep_ns = std::min(kTickNs, kMaxSleepNs);
    auto until = std::chrono::steady_clock::time_point(std::chrono::nanoseconds(NowNs() + sleep_ns));
    // Sleep in short steps so Stop() is answered within one tick.
    std::this_thread::sleep_until(until);
  }
}

}  // namespace molra
