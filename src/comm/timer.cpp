#include "comm/timer.h"

#include <chrono>

namespace molra {

namespace {
constexpr std::chrono::milliseconds kTick{100};
}  // namespace

TimerService::TimerService() : thread_([this] { Loop(); }) {}

TimerService::~TimerService() { Stop(); }

void TimerService::Stop() {
  {
    std::lock_guard<std::mutex> lock(sleep_mutex_);
    running_.store(false);
  }
  wake_.notify_all();
  if (thread_.joinable()) thread_.join();
}

void TimerService::Loop() {
  std::unique_lock<std::mutex> lock(sleep_mutex_);
  while (running_.load()) {
    wake_.wait_for(lock, kTick, [this] { return !running_.load(); });
  }
}

}  // namespace molra
