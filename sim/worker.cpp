#include "worker.h"

namespace sim {

Worker::~Worker() {
#if defined(_WIN32)
  // At process exit Windows has already ended the thread; joining it under the loader lock
  // could hang.
  if (thread_.joinable()) thread_.detach();
#else
  Stop();
#endif
}

void Worker::StartLocked() {
  // While a stopping thread drains the queue it also runs what is posted meanwhile; the
  // next thread starts once it has ended.
  if (thread_.joinable() || stopping_) return;
  thread_ = std::thread([this] { Loop(); });
  id_ = thread_.get_id();
}

void Worker::Start() {
  std::lock_guard<std::mutex> lock(m_);
  StartLocked();
}

void Worker::Post(std::function<void()> task) {
  std::lock_guard<std::mutex> lock(m_);
  queue_.push_back(std::move(task));
  StartLocked();
  work_cv_.notify_one();
}

void Worker::Stop() {
  std::thread t;
  {
    std::lock_guard<std::mutex> lock(m_);
    if (!thread_.joinable()) return;
    stopping_ = true;
    work_cv_.notify_one();
    if (std::this_thread::get_id() == id_) {
      // Stopped from one of its own tasks: it ends after that task.
      thread_.detach();
      return;
    }
    t = std::move(thread_);
  }
  t.join();
  std::lock_guard<std::mutex> lock(m_);
  if (!queue_.empty()) StartLocked();  // posted after the old thread's last look
}

void Worker::WaitIdle() {
  std::unique_lock<std::mutex> lock(m_);
  if (std::this_thread::get_id() == id_) return;
  idle_cv_.wait(lock, [this] { return queue_.empty() && !busy_; });
}

bool Worker::OnThisThread() const {
  std::lock_guard<std::mutex> lock(m_);
  return std::this_thread::get_id() == id_;
}

void Worker::Loop() {
  std::unique_lock<std::mutex> lock(m_);
  for (;;) {
    work_cv_.wait(lock, [this] { return stopping_ || !queue_.empty(); });
    if (queue_.empty()) break;  // stopping and drained: in the same locked step as below
    std::function<void()> task = std::move(queue_.front());
    queue_.pop_front();
    busy_ = true;
    lock.unlock();
    task();
    task = nullptr;
    lock.lock();
    busy_ = false;
    if (queue_.empty()) idle_cv_.notify_all();
  }
  busy_ = false;
  stopping_ = false;  // a task posted from now on starts a new thread
  idle_cv_.notify_all();
}

}  // namespace sim
