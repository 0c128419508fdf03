// One thread of the simulated transport with its queue of tasks (events, replies, pushes).
#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

namespace sim {

class Worker {
 public:
  Worker() = default;
  ~Worker();
  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;

  // Queues a task; the thread is started when it is not running.
  void Post(std::function<void()> task);
  // Starts the thread (nothing when it runs).
  void Start();
  // Runs every queued task (also those posted while it stops), then ends and joins the
  // thread. A task posted afterwards starts a new one.
  void Stop();
  // Returns when the queue is empty and no task runs (at once on the worker's own thread).
  void WaitIdle();
  bool OnThisThread() const;

 private:
  void StartLocked();
  void Loop();

  mutable std::mutex m_;
  std::condition_variable work_cv_;
  std::condition_variable idle_cv_;
  std::deque<std::function<void()>> queue_;
  bool busy_ = false;
  bool stopping_ = false;
  std::thread thread_;
  std::thread::id id_;
};

}  // namespace sim
