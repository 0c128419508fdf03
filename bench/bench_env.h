// The benchmarks' world: the kit started on the simulated transport in benchmark mode, two
// customers logged in, and what the floors need to make the kit's transport calls
// themselves (the connection handles, node ids and the request blocks the kit built).
#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>
#include <ctime>
#include <string>
#include <vector>

#include "comm/kel_abi.h"
#include "secmolra.h"

namespace molra::bench {

struct BenchCustomer {
  const char* khh;
  const char* password;
  const char* gdh;  // on SH
};
// Two customers with one trade node each; benchmarks with several threads give thread i
// customer i.
constexpr int kCustomerCount = 2;
extern const BenchCustomer kCustomers[kCustomerCount];

// The order of every entrust benchmark: a limit buy below the reference price (10.00), so
// that the back end keeps it resting and a withdrawal of it is accepted.
struct OrderArgs {
  const char* jys = "SH";
  const char* zqdm = "600000";
  std::int32_t jylb = 1;
  std::int64_t wtsl = 100;
  double wtjg = 9.5;
  std::int64_t ddlx = 0;
};
constexpr OrderArgs kOrder{};

// What a floor needs to run one customer's request on its own.
struct CustomerWire {
  kel::int64 mgmt_conn = 0;
  kel::int64 trade_conn = 0;
  kel::int64 subscribe_conn = 0;
  std::int32_t node_id = 0;
  std::string entrust_block;   // the kit's 19001 request
  std::string withdraw_block;  // the kit's 19002 request
  std::string batch_block;     // the kit's 19012 request of kBatchRows rows
};

constexpr int kBatchRows = 100;
constexpr std::int64_t kBatchTag = 7;
// kBatchRows rows of kOrder.
std::vector<BatchOrderRow> BatchRows();

class Env {
 public:
  // Started on first use: the kit initialised in the current directory (which must hold
  // kelapi50.dll), customers logged in, requests captured, benchmark mode on.
  static Env& Get();

  // A function of the simulated transport's control interface.
  template <typename F>
  F Sim(const char* name) const {
    return reinterpret_cast<F>(SimSymbol(name));
  }
  void SetWriteLog(bool on) const;
  // Benchmark mode answers every request of a code as it answered the first one since the
  // last scripting call. Ready() makes sure that the entrust, withdrawal and batch answers
  // were prepared by accepted requests; ReadyWithFundRows() also scripts the fund query
  // (DQ0003) to answer `rows` rows (0: the back end's own answer).
  void Ready() const { ReadyWithFundRows(fund_rows_); }
  void ReadyWithFundRows(int rows) const;
  // Returns when the transport has delivered everything queued.
  void WaitIdle() const;

  const CustomerWire& Wire(int customer) const { return wire_[customer]; }
  // The resting order whose withdrawal is prepared.
  std::int64_t OrderToWithdraw() const { return withdraw_wth_; }
  const std::string& LogDir() const { return log_dir_; }

  // With call logging on (off in benchmark mode), runs f and returns the transport calls it
  // made: how the floors were matched to the kit.
  template <typename F>
  std::string CallsOf(F f) const {
    BeginCallCapture();
    f();
    return EndCallCapture();
  }

 private:
  Env();
  void* SimSymbol(const char* name) const;
  void Login();
  void Capture(int customer);
  void BeginCallCapture() const;
  std::string EndCallCapture() const;

  void* sim_ = nullptr;
  std::string profile_dir_;
  std::string log_dir_;
  CustomerWire wire_[kCustomerCount];
  mutable std::int64_t withdraw_wth_ = 0;
  mutable int fund_rows_ = 0;
  mutable bool primed_ = false;
};

// Monotonic nanoseconds (the clock the manual-time benchmarks use).
inline std::int64_t NowNs() {
  timespec ts;
  clock_gettime(CLOCK_MONOTONIC, &ts);
  return static_cast<std::int64_t>(ts.tv_sec) * 1000000000 + ts.tv_nsec;
}

// Per-iteration times of a manual-time benchmark. Their median goes to the counter "p50_ns":
// an iteration that the scheduler interrupts moves the mean a long way, the median not.
class IterationTimes {
 public:
  void Add(benchmark::State& state, std::int64_t ns) {
    state.SetIterationTime(static_cast<double>(ns) * 1e-9);
    ns_.push_back(ns);
  }
  void Report(benchmark::State& state);

 private:
  std::vector<std::int64_t> ns_;
};

// The host's callbacks: they note when they were called, on the calling thread.
void OnMessage(const char* time, const char* json, std::int32_t type);
void OnFunction(const char* time, const char* json, std::int32_t type);
// NowNs() at the last callback on this thread.
std::int64_t LastCallbackNs();

// The process's memory from /proc/self/status, in KiB.
struct Memory {
  long hwm_kib = 0;  // VmHWM: peak resident set
  long rss_kib = 0;  // VmRSS: resident set now
};
Memory ReadMemory();

}  // namespace molra::bench
