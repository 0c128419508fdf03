// The kit's timer thread: started with the pool, it wakes every 100 ms until stopped.
//
// The kit schedules no periodic work on it: the transport reconnects by itself and reports
// through connection events, so there is nothing to poll. The thread is the place such work
// would run, and hosts see it (one thread while the kit runs, none after SECMOLRA_Exit).
#pragma once

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace molra {

class TimerService {
 public:
  TimerService();   // starts the thread
  ~TimerService();  // stops and joins it
  TimerService(const TimerService&) = delete;
  TimerService& operator=(const TimerService&) = delete;

  // Clears the running flag, wakes the thread and joins it.
  void Stop();

 private:
  void Loop();

  std::atomic<bool> running_{true};
  std::mutex sleep_mutex_;
  std::condition_variable wake_;
  std::thread thread_;
};

}  // namespace molra
