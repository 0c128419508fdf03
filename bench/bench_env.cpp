#include "bench_env.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <vector>

#include "comm/conn_pool.h"
#include "comm/customer.h"
#include "kelsim.h"
#include "secmolra.h"
#include "util/dynlib.h"

namespace molra::bench {

const BenchCustomer kCustomers[kCustomerCount] = {
    {"1001", "111111", "A000001001"},
    {"1003", "333333", "A000001003"},
};

namespace {

thread_local std::int64_t t_callback_ns = 0;

std::string MakeTempDir(const char* tag) {
  std::string pattern = std::string("/tmp/molra-bench-") + tag + "-XXXXXX";
  std::vector<char> buf(pattern.begin(), pattern.end());
  buf.push_back('\0');
  if (mkdtemp(buf.data()) == nullptr) throw std::runtime_error("cannot create " + pattern);
  return buf.data();
}

void Require(bool ok, const std::string& what) {
  if (!ok) {
    char msg[4096] = {};
    std::int64_t code = SECMOLRA_GetLastError(msg);
    throw std::runtime_error(what + " failed: " + std::to_string(code) + " " + msg);
  }
}

// The connection section "B" on the back end's four addresses.
constexpr const char* kIni =
    "[GLOBAL]\n"
    "[B]\naddr=127.0.0.1:9101\ntradeaddr=127.0.0.1:9102\nqueryaddr=127.0.0.1:9103\n"
    "subscribeaddr=127.0.0.1:9104\nName=bench\nAppName=molra-bench\nwtgy=GY01\n";

std::int64_t PlaceOrder(int customer) {
  const BenchCustomer& c = kCustomers[customer];
  return SECMOLRA_OrderEntrust(c.khh, kOrder.jys, kOrder.zqdm, kOrder.jylb, kOrder.wtsl,
                               kOrder.wtjg, kOrder.ddlx, c.gdh);
}

}  // namespace

std::vector<BatchOrderRow> BatchRows() {
  BatchOrderRow row{};
  std::snprintf(row.Jys, sizeof row.Jys, "%s", kOrder.jys);
  std::snprintf(row.Zqdm, sizeof row.Zqdm, "%s", kOrder.zqdm);
  row.Jylb = kOrder.jylb;
  row.Wtjg = kOrder.wtjg;
  row.Wtsl = kOrder.wtsl;
  row.Ddlx = static_cast<std::int32_t>(kOrder.ddlx);
  return std::vector<BatchOrderRow>(kBatchRows, row);
}

void OnMessage(const char*, const char* json, std::int32_t) {
  t_callback_ns = NowNs();
  benchmark::DoNotOptimize(json);
}

void OnFunction(const char*, const char* json, std::int32_t) {
  t_callback_ns = NowNs();
  benchmark::DoNotOptimize(json);
}

std::int64_t LastCallbackNs() { return t_callback_ns; }

Env& Env::Get() {
  static Env env;
  return env;
}

Env::Env() {
  sim_ = LoadDynamicLibrary("./kelapi50.dll");
  if (sim_ == nullptr) throw std::runtime_error("run from the build directory: no ./kelapi50.dll");
  profile_dir_ = MakeTempDir("profile") + "/";
  log_dir_ = MakeTempDir("log");
  std::ofstream(profile_dir_ + "molra.ini", std::ios::binary) << kIni;

  Sim<void (*)()>("KelSim_Reset")();
  SECMOLRA_SetProfilePath(profile_dir_.c_str());
  SECMOLRA_SetLogPath(log_dir_.c_str());
  SECMOLRA_SetWriteLog(false);
  Require(SECMOLRA_Init(), "SECMOLRA_Init");
  SECMOLRA_SetMsgCallback(&OnMessage);
  SECMOLRA_SetFuncCallback(&OnFunction);
  Login();
  for (int c = 0; c < kCustomerCount; ++c) Capture(c);

  Sim<void (*)(bool)>("KelSim_SetCallLog")(false);
  Sim<void (*)(bool)>("KelSim_SetBenchMode")(true);
  Ready();
}

void* Env::SimSymbol(const char* name) const {
  void* p = FindSymbol(sim_, name);
  if (p == nullptr) throw std::runtime_error(std::string("the transport lacks ") + name);
  return p;
}

void Env::Login() {
  for (int c = 0; c < kCustomerCount; ++c) {
    const BenchCustomer& cus = kCustomers[c];
    Require(SECMOLRA_TradeLogin("B", cus.khh, cus.password) > 0,
            std::string("login of ") + cus.khh);
    Result<CustomerRef> found = FindCustomer(cus.khh);
    Require(found.ok(), std::string("the set of ") + cus.khh);
    const KelComm::KelConn& set = *(*found)->conn;
    wire_[c].mgmt_conn = set.mgmt_handle;
    wire_[c].trade_conn = set.trade_handle;
    wire_[c].subscribe_conn = set.subscribe_handle;
    wire_[c].node_id = (*found)->node_id;
  }
}

// The blocks the kit sends, read back from the transport's record of the last request.
void Env::Capture(int customer) {
  auto last = Sim<decltype(&KelSim_LastRequest)>("KelSim_LastRequest");
  auto read = [&](const char* func) {
    std::string block(16384, '\0');
    std::int32_t n = last(func, block.data(), static_cast<std::int32_t>(block.size()));
    Require(n > 0, std::string("capture of ") + func);
    block.resize(static_cast<std::size_t>(n));
    return block;
  };
  const BenchCustomer& c = kCustomers[customer];
  const std::int64_t wth = PlaceOrder(customer);
  Require(wth > 0, "entrust");
  wire_[customer].entrust_block = read("19001");
  Require(SECMOLRA_OrderWithdraw(c.khh, kOrder.jys, wth) > 0, "withdrawal");
  wire_[customer].withdraw_block = read("19002");
  std::vector<BatchOrderRow> rows = BatchRows();
  Require(SECMOLRA_BatchOrderEntrust(c.khh, rows, kBatchTag) == kBatchRows, "batch entrust");
  wire_[customer].batch_block = read("19012");
  Require(SECMOLRA_BatchOrderWithdraw(c.khh, kBatchTag) > 0, "batch withdrawal");
}

void Env::SetWriteLog(bool on) const { SECMOLRA_SetWriteLog(on); }

void Env::ReadyWithFundRows(int rows) const {
  if (primed_ && rows == fund_rows_) return;
  Sim<void (*)()>("KelSim_ClearAnswers")();
  if (rows > 0) {
    std::string text;
    for (int i = 0; i < rows; ++i) {
      if (i > 0) text += '\n';
      text +=
          "605=1001|716=000000001001|511=RMB|1257=0001|709=1000000.00|826=1000000.00|"
          "2085=1000000.00|619=0|2086=0|869=12345.67|1847=1000000.00|647=950.00|507=0";
    }
    Sim<decltype(&KelSim_SetKvAnswer)>("KelSim_SetKvAnswer")("DQ0003", 1, "", text.c_str());
  }
  // The first request of each code reaches the back end: a real resting order and its
  // accepted withdrawal; a real batch, withdrawn again so that the funds it froze return.
  const BenchCustomer& c = kCustomers[0];
  const std::int64_t wth = PlaceOrder(0);
  Require(wth > 0, "priming entrust");
  Require(SECMOLRA_OrderWithdraw(c.khh, kOrder.jys, wth) > 0, "priming withdrawal");
  std::vector<BatchOrderRow> batch = BatchRows();
  Require(SECMOLRA_BatchOrderEntrust(c.khh, batch, kBatchTag) == kBatchRows, "priming batch");
  Require(SECMOLRA_BatchOrderWithdraw(c.khh, kBatchTag) > 0, "priming batch withdrawal");
  withdraw_wth_ = wth;
  fund_rows_ = rows;
  primed_ = true;
  WaitIdle();
}

void Env::WaitIdle() const { Sim<void (*)()>("KelSim_WaitIdle")(); }

void Env::BeginCallCapture() const {
  Sim<void (*)(bool)>("KelSim_SetBenchMode")(false);
  Sim<void (*)(bool)>("KelSim_SetCallLog")(true);
  Sim<void (*)()>("KelSim_ClearCallLog")();
}

std::string Env::EndCallCapture() const {
  WaitIdle();
  auto log = Sim<decltype(&KelSim_CallLog)>("KelSim_CallLog");
  std::string text(1 << 20, '\0');
  std::int32_t n = log(text.data(), static_cast<std::int32_t>(text.size()));
  text.resize(static_cast<std::size_t>(std::clamp<std::int32_t>(n, 0, (1 << 20) - 1)));
  Sim<void (*)(bool)>("KelSim_SetCallLog")(false);
  Sim<void (*)(bool)>("KelSim_SetBenchMode")(true);
  primed_ = false;
  Ready();
  return text;
}

void IterationTimes::Report(benchmark::State& state) {
  if (ns_.empty()) return;
  auto mid = ns_.begin() + static_cast<std::ptrdiff_t>(ns_.size() / 2);
  std::nth_element(ns_.begin(), mid, ns_.end());
  state.counters["p50_ns"] = static_cast<double>(*mid);
}

Memory ReadMemory() {
  Memory m;
  std::ifstream in("/proc/self/status");
  std::string key;
  long value = 0;
  std::string unit;
  while (in >> key) {
    if (key == "VmHWM:" && in >> value >> unit)
      m.hwm_kib = value;
    else if (key == "VmRSS:" && in >> value >> unit)
      m.rss_kib = value;
  }
  return m;
}

}  // namespace molra::bench
