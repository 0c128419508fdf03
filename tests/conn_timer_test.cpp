// The kit's timer thread.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "comm/timer.h"

using molra::TimerService;
using namespace std::chrono_literals;

namespace {

// Waits up to two seconds for cond.
template <typename F>
bool Eventually(F cond) {
  for (int i = 0; i < 200; ++i) {
    if (cond()) return true;
    std::this_thread::sleep_for(10ms);
  }
  return cond();
}

}  // namespace

TEST(ConnTimer, EmptyServiceRunsAndStopsPromptly) {
  EXPECT_EQ(TimerService::LiveThreads(), 0);
  {
    TimerService timer;
    EXPECT_EQ(TimerService::LiveThreads(), 1);
    EXPECT_TRUE(timer.Running());
    std::this_thread::sleep_for(250ms);  // a few empty ticks
    auto t0 = std::chrono::steady_clock::now();
    timer.Stop();
    EXPECT_LT(std::chrono::steady_clock::now() - t0, 1s);
    EXPECT_FALSE(timer.Running());
    EXPECT_EQ(TimerService::LiveThreads(), 0);
    timer.Stop();  // stopping twice is harmless
  }
  EXPECT_EQ(TimerService::LiveThreads(), 0);
}

TEST(ConnTimer, RepeatingEntryFiresEveryTickAndOneShotOnceThenGoes) {
  TimerService timer;
  std::atomic<int> repeats{0}, once{0};
  std::atomic<std::int64_t> seen_id{0};
  std::int64_t rid = timer.Add(0, false, [&](std::int64_t id) {
    seen_id = id;
    ++repeats;
  });
  timer.Add(0, true, [&](std::int64_t) { ++once; });
  EXPECT_TRUE(Eventually([&] { return repeats >= 3; }));
  EXPECT_EQ(once.load(), 1);
  EXPECT_EQ(seen_id.load(), rid);
  EXPECT_EQ(timer.EntryCount(), 1u);
  timer.Remove(rid);
  EXPECT_EQ(timer.EntryCount(), 0u);
}

TEST(ConnTimer, EntryIsNotDueBeforeItsInterval) {
  TimerService timer;
  std::atomic<int> fired{0};
  timer.Add(60'000, true, [&](std::int64_t) { ++fired; });
  std::this_thread::sleep_for(300ms);
  EXPECT_EQ(fired.load(), 0);
  EXPECT_EQ(timer.EntryCount(), 1u);
}

TEST(ConnTimer, CallbacksMayRemoveAndAddEntries) {
  TimerService timer;
  std::atomic<int> victim_runs{0}, added_runs{0};
  std::int64_t victim = timer.Add(0, false, [&](std::int64_t) { ++victim_runs; });
  timer.Add(0, true, [&](std::int64_t) {
    timer.Remove(victim);  // same thread, recursive mutex
    timer.Add(0, true, [&](std::int64_t) { ++added_runs; });
  });
  EXPECT_TRUE(Eventually([&] { return added_runs == 1; }));
  int runs = victim_runs.load();
  std::this_thread::sleep_for(300ms);
  EXPECT_EQ(victim_runs.load(), runs);
  EXPECT_LE(runs, 1);
  EXPECT_EQ(timer.EntryCount(), 0u);
}
