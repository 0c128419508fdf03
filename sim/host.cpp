#include "host.h"

#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <thread>

#include "push.h"
#include "sim_core.h"

namespace sim {
namespace {

constexpr int kClockTickMs = 10;

struct QuoteTarget {
  std::mutex m;
  KelSimQuoteFn fn = nullptr;
  void* ctx = nullptr;
  std::atomic<bool> on{false};
};
QuoteTarget& quote_target() {
  static QuoteTarget* t = new QuoteTarget;
  return *t;
}

}  // namespace

KelSimQuote ToRecord(const Quote& q) {
  KelSimQuote r{};
  std::strncpy(r.jys, q.jys.c_str(), sizeof r.jys - 1);
  std::strncpy(r.zqdm, q.zqdm.c_str(), sizeof r.zqdm - 1);
  r.date = static_cast<int32_t>(q.date);
  r.time_ms = static_cast<int32_t>(q.time_ms);
  r.last = q.last;
  r.prev_close = q.prev_close;
  r.upper_limit = q.upper_limit;
  r.lower_limit = q.lower_limit;
  r.tick = q.tick;
  r.volume = q.volume;
  r.turnover = q.turnover;
  for (int i = 0; i < kLevels; ++i) {
    r.bid[i] = {q.bids[i].price, q.bids[i].volume};
    r.ask[i] = {q.asks[i].price, q.asks[i].volume};
  }
  return r;
}

namespace {

// Pushes go to the subscriptions, quotes to the quote callback, both on the push thread.
class TransportListener : public ExchangeListener {
 public:
  void OnPush(PendingPush&& push) override { QueueBackendPush(std::move(push)); }
  bool WantsQuotes() const override { return quote_target().on.load(std::memory_order_relaxed); }
  void OnQuote(const Quote& quote) override {
    KelSimQuote record = ToRecord(quote);
    PostPush([record] {
      QuoteTarget& t = quote_target();
      KelSimQuoteFn fn;
      void* ctx;
      {
        std::lock_guard<std::mutex> lock(t.m);
        fn = t.fn;  // as it is at delivery: a callback removed meanwhile receives nothing
        ctx = t.ctx;
      }
      if (fn != nullptr) fn(&record, ctx);
    });
  }
};

class ClockThread {
 public:
  void Start() {
    std::lock_guard<std::mutex> lock(m_);
    if (thread_.joinable()) return;
    stop_ = false;
    thread_ = std::thread([this] { Loop(); });
  }
  void Stop() {
    std::thread t;
    {
      std::lock_guard<std::mutex> lock(m_);
      stop_ = true;
      cv_.notify_all();
      t = std::move(thread_);
    }
    if (t.joinable()) t.join();
  }
  bool started() {
    std::lock_guard<std::mutex> lock(m_);
    return thread_.joinable();
  }

 private:
  void Loop() {
    std::unique_lock<std::mutex> lock(m_);
    while (!stop_) {
      cv_.wait_for(lock, std::chrono::milliseconds(kClockTickMs), [this] { return stop_; });
      if (stop_) break;
      lock.unlock();
      exchange().RunClock();
      lock.lock();
    }
  }
  std::mutex m_;
  std::condition_variable cv_;
  std::thread thread_;
  bool stop_ = false;
};

ClockThread& clock_thread() {
  static ClockThread* t = new ClockThread;  // lives until the process ends, like the workers
  return *t;
}

std::atomic<bool> g_initialized{false};
std::atomic<bool> g_started{false};

Exchange& TheExchange() {
  static Exchange* ex = [] {
    auto* e = new Exchange;  // lives until the process ends: the threads may still use it then
    e->SetListener(new TransportListener);
    return e;
  }();
  return *ex;
}

}  // namespace

Exchange& exchange() {
  static std::once_flag once;
  std::call_once(once, [] {
    if (!g_started) StartFromStartConfig();
  });
  return TheExchange();
}

bool StartConfig(Config* cfg, std::string* error) {
  const char* path = std::getenv("KELSIM_CONFIG");
  if (path == nullptr || *path == '\0') {
    *cfg = DefaultConfig();
    return true;
  }
  return LoadConfigFile(path, *cfg, error);
}

bool StartExchange(const Config& cfg, std::string* error) {
  {
    std::lock_guard<std::mutex> lock(core().mutex);
    core().addresses = cfg.addresses;
    core().confirm_func = cfg.confirm_func;
    core().report_func = cfg.report_func;
  }
  g_started = true;
  bool ok = TheExchange().Start(cfg, error);
  if (!ok || !TheExchange().ClockNeedsRunning())
    clock_thread().Stop();
  else if (g_initialized)
    clock_thread().Start();
  return ok;
}

void StartFromStartConfig() {
  Config cfg;
  std::string why;
  if (StartConfig(&cfg, &why) && StartExchange(cfg, &why)) return;
  std::fprintf(stderr, "kelapi50 (simulated): the back end does not start: %s\n", why.c_str());
  g_started = true;
  clock_thread().Stop();
  TheExchange().Stop(why);
}

void StartClock() {
  g_initialized = true;
  if (exchange().ClockNeedsRunning()) clock_thread().Start();
}

void StopClock() {
  g_initialized = false;
  clock_thread().Stop();
}

void SetQuoteCallback(KelSimQuoteFn fn, void* ctx) {
  QuoteTarget& t = quote_target();
  std::lock_guard<std::mutex> lock(t.m);
  t.fn = fn;
  t.ctx = fn ? ctx : nullptr;
  t.on = fn != nullptr;
}

}  // namespace sim
