// The kit's timer thread: a 100 ms tick over repeating and one-shot entries.
//
// The kit itself registers no entries: the transport reconnects by itself and reports
// through connection events, so there is nothing to poll. The service stays as the place
// for periodic work and must run correctly with an empty list.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace molra {

class TimerService {
 public:
  using Callback = std::function<void(std::int64_t id)>;

  TimerService();   // starts the thread
  ~TimerService();  // stops and joins it

  // Adds an entry due `interval_ms` from now; returns its id. Callbacks run on the timer
  // thread with the service's recursive mutex held, so they may add or remove entries.
  std::int64_t Add(std::int64_t interval_ms, bool one_shot, Callback cb);
  void Remove(std::int64_t id);
  // Clears the running flag and joins the thread (not from the timer thread itself).
  void Stop();
  bool Running() const { return running_.load(); }
  std::size_t EntryCount() const;

  // Timer threads currently running in the process.
  static int LiveThreads();

 private:
  struct Entry {
    std::int64_t id;
    std::int64_t interval_ms;
    bool one_shot;
    std::int64_t due_ns;
    Callback cb;
  };
  void Loop();
  void RunDue(std::int64_t now_ns);
  void SleepOneTick();

  mutable std::recursive_mutex mutex_;
  std::vector<Entry> entries_;
  std::int64_t next_id_ = 1;
  std::atomic<bool> running_{true};
  // Wakes the sleeping thread when Stop() is called.
  std::mutex sleep_mutex_;
  std::condition_variable wake_;
  std::thread thread_;
};

}  // namespace molra
