// The simulated transport's worker thread: stopping drains the queue, also of tasks posted
// while the stop waits, and a task posted after the stop starts a new thread.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <thread>

#include "worker.h"

namespace {

using namespace std::chrono_literals;

TEST(SimWorker, TaskPostedWhileStoppingRunsAndTheStopEnds) {
  sim::Worker w;
  std::promise<void> first_running;
  std::atomic<bool> release{false};
  std::atomic<int> ran{0};
  w.Post([&] {
    first_running.set_value();
    while (!release) std::this_thread::sleep_for(1ms);
    ++ran;
  });
  first_running.get_future().wait();
  auto stop = std::async(std::launch::async, [&] { w.Stop(); });
  std::this_thread::sleep_for(20ms);  // the stop now waits for the first task
  w.Post([&] { ++ran; });
  release = true;
  ASSERT_EQ(stop.wait_for(10s), std::future_status::ready) << "the stop ends";
  EXPECT_EQ(ran.load(), 2) << "the task posted while stopping ran";
  // A task posted after the stop runs on a new thread.
  std::promise<void> later;
  w.Post([&] { later.set_value(); });
  EXPECT_EQ(later.get_future().wait_for(10s), std::future_status::ready);
  w.Stop();
}

TEST(SimWorker, StopFromItsOwnTaskEndsAfterItAndTheNextPostStartsAgain) {
  sim::Worker w;
  std::promise<void> stopped;
  w.Post([&] {
    w.Stop();
    stopped.set_value();
  });
  ASSERT_EQ(stopped.get_future().wait_for(10s), std::future_status::ready);
  std::promise<void> again;
  w.Post([&] { again.set_value(); });
  EXPECT_EQ(again.get_future().wait_for(10s), std::future_status::ready);
  w.WaitIdle();
  w.Stop();
}

}  // namespace
