// Synchronous orders: the entrust, the withdrawal and the batch of 100 rows through the kit,
// each beside its floor, the transport calls the kit makes for it made directly with the
// block the kit built. Also the entrust from one and two threads, and the memory after a
// million entrusts.
#include <cstring>

#include "bench_env.h"
#include "bench_paths.h"
#include "comm/kel_api.h"
#include "core/log.h"
#include "trade/order_blocks.h"
#include "trade/order_family.h"

namespace molra::bench {

std::int64_t KitEntrust(int customer) {
  const BenchCustomer& c = kCustomers[customer];
  return SECMOLRA_OrderEntrust(c.khh, kOrder.jys, kOrder.zqdm, kOrder.jylb, kOrder.wtsl,
                               kOrder.wtjg, kOrder.ddlx, c.gdh);
}

std::int64_t KitWithdraw(int customer, std::int64_t wth) {
  return SECMOLRA_OrderWithdraw(kCustomers[customer].khh, kOrder.jys, wth);
}

// Session, node, block, run, answer block, release: the least a synchronous block request
// needs. The answer lands in `answer` (at most `cap` bytes); returns its length, 0 when the
// request failed.
std::int32_t FloorBlockRequest(const CustomerWire& w, const std::string& block, char* answer,
                               std::int32_t cap) {
  const kel::int64 s = kel::api.Kel_AllocateSession(w.trade_conn);
  kel::api.Kel_SetNodeId(s, w.node_id);
  kel::api.Kel_SetStructData(s, block.data(), static_cast<kel::int32>(block.size()));
  kel::int32 len = 0;
  if (kel::api.Kel_Run(s) && kel::api.Kel_IsStruct(s, 0)) {
    len = cap;
    if (!kel::api.Kel_GetStructData(s, answer, &len, -1)) len = 0;
  }
  kel::api.Kel_ReleaseSession(s);
  return len;
}

namespace {

using trade::Fam;
using trade::Family;

std::int64_t OrderNumberOf(const char* answer, std::int32_t len) {
  std::int64_t wth = 0;
  if (len >= static_cast<std::int32_t>(offsetof(trade::OrderEntrustAns, wth) + sizeof wth)) {
    std::memcpy(&wth, answer + offsetof(trade::OrderEntrustAns, wth), sizeof wth);
  }
  return wth;
}

std::int64_t FloorOrder(const CustomerWire& w, const std::string& block, Fam fam) {
  char answer[1024];
  const std::int32_t cap = Family(fam).answer_len;
  return OrderNumberOf(answer, FloorBlockRequest(w, block, answer, cap));
}

// Fails the benchmark unless the first call is accepted (a refused request is not the path
// being measured).
template <typename F>
bool Accepted(benchmark::State& state, F call) {
  if (call() > 0) return true;
  char msg[2048] = {};
  SECMOLRA_GetLastError(msg);
  state.SkipWithError(msg);
  return false;
}

void Entrust(benchmark::State& state, bool log) {
  Env& env = Env::Get();
  env.Ready();
  env.SetWriteLog(log);
  if (Accepted(state, [] { return KitEntrust(0); })) {
    for (auto _ : state) benchmark::DoNotOptimize(KitEntrust(0));
  }
  env.SetWriteLog(false);
}

void EntrustFloor(benchmark::State& state) {
  const Env& env = Env::Get();
  env.Ready();
  const CustomerWire& w = env.Wire(0);
  if (!Accepted(state, [&] { return FloorOrder(w, w.entrust_block, Fam::kOrderEntrust); })) return;
  for (auto _ : state) benchmark::DoNotOptimize(FloorOrder(w, w.entrust_block, Fam::kOrderEntrust));
}

// The floor with the connection checks the connection manager makes on every request: the
// set's management, trade and subscribe connections, then the trade connection again when
// the session is opened. Their cost is the transport's, spent at the kit's request.
std::int64_t FloorOrderChecked(const CustomerWire& w, const std::string& block, Fam fam) {
  for (kel::int64 conn : {w.mgmt_conn, w.trade_conn, w.subscribe_conn, w.trade_conn}) {
    if (!kel::api.Kel_IsConnect(conn)) return 0;
  }
  return FloorOrder(w, block, fam);
}

void EntrustFloorChecked(benchmark::State& state) {
  const Env& env = Env::Get();
  env.Ready();
  const CustomerWire& w = env.Wire(0);
  auto run = [&] { return FloorOrderChecked(w, w.entrust_block, Fam::kOrderEntrust); };
  if (!Accepted(state, run)) return;
  for (auto _ : state) benchmark::DoNotOptimize(run());
}

void Withdraw(benchmark::State& state, bool log) {
  Env& env = Env::Get();
  env.Ready();
  env.SetWriteLog(log);
  const std::int64_t wth = env.OrderToWithdraw();
  if (Accepted(state, [&] { return KitWithdraw(0, wth); })) {
    for (auto _ : state) benchmark::DoNotOptimize(KitWithdraw(0, wth));
  }
  env.SetWriteLog(false);
}

void WithdrawFloor(benchmark::State& state) {
  const Env& env = Env::Get();
  env.Ready();
  const CustomerWire& w = env.Wire(0);
  if (!Accepted(state, [&] { return FloorOrder(w, w.withdraw_block, Fam::kOrderWithdraw); }))
    return;
  for (auto _ : state) {
    benchmark::DoNotOptimize(FloorOrder(w, w.withdraw_block, Fam::kOrderWithdraw));
  }
}

void Batch(benchmark::State& state) {
  const Env& env = Env::Get();
  env.Ready();
  std::vector<BatchOrderRow> rows = BatchRows();
  auto run = [&] { return SECMOLRA_BatchOrderEntrust(kCustomers[0].khh, rows, kBatchTag); };
  if (!Accepted(state, run)) return;
  for (auto _ : state) benchmark::DoNotOptimize(run());
  state.SetItemsProcessed(state.iterations() * kBatchRows);
}

// The rows' order numbers and notes copied back, as the kit does.
std::int64_t FloorBatch(const CustomerWire& w, std::vector<BatchOrderRow>& rows) {
  static thread_local trade::BatchOrderAns answer;
  char* raw = reinterpret_cast<char*>(&answer);
  const std::int32_t len = FloorBlockRequest(w, w.batch_block, raw, sizeof answer);
  if (len < static_cast<std::int32_t>(sizeof answer)) return 0;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    rows[i].Wth = answer.wth[i];
    std::memcpy(rows[i].Msg, answer.notes[i], sizeof answer.notes[i]);
    std::memset(rows[i].Msg + sizeof answer.notes[i], 0,
                sizeof rows[i].Msg - sizeof answer.notes[i]);
  }
  return static_cast<std::int64_t>(rows.size()) - answer.count;
}

void BatchFloor(benchmark::State& state) {
  const Env& env = Env::Get();
  env.Ready();
  std::vector<BatchOrderRow> rows = BatchRows();
  if (!Accepted(state, [&] { return FloorBatch(env.Wire(0), rows); })) return;
  for (auto _ : state) benchmark::DoNotOptimize(FloorBatch(env.Wire(0), rows));
  state.SetItemsProcessed(state.iterations() * kBatchRows);
}

// The logger alone writing a line as long as the entrust's: the part of the logged entrust
// that is the file sink's.
void LoggerLine(benchmark::State& state) {
  Env& env = Env::Get();
  env.SetWriteLog(true);
  spdlog::logger* logger = ActiveLogger();
  const fmt::string_view line =
      "OrderEntrust lpKhh:1001 lpJys:SH lpZqdm:600000 nJylb:1 lWtsl:100 lfWtjg:9.5 lDdlx:0 "
      "lpGdh:A000001001 lsh:0 cost:0";
  if (logger == nullptr) state.SkipWithError("no logger");
  for (auto _ : state) logger->info(line);
  env.SetWriteLog(false);
}

// Thread i places customer i's orders.
void ReadyOnce(const benchmark::State&) { Env::Get().Ready(); }

void EntrustThreads(benchmark::State& state) {
  const int c = state.thread_index();
  for (auto _ : state) benchmark::DoNotOptimize(KitEntrust(c));
  state.SetItemsProcessed(state.iterations());
}

void EntrustThreadsFloor(benchmark::State& state) {
  const int c = state.thread_index();
  const CustomerWire& w = Env::Get().Wire(c);
  for (auto _ : state) benchmark::DoNotOptimize(FloorOrder(w, w.entrust_block, Fam::kOrderEntrust));
  state.SetItemsProcessed(state.iterations());
}

// Memory after 100,000 and after 1,000,000 orders, in a process of its own (the script runs
// these alone): a kit that kept anything per order would show it here.
template <typename F>
void MemoryAfterOrders(benchmark::State& state, F order) {
  Env::Get().Ready();
  constexpr int kFirst = 100000, kTotal = 1000000;
  for (auto _ : state) {
    for (int i = 0; i < kFirst; ++i) benchmark::DoNotOptimize(order());
    const Memory first = ReadMemory();
    for (int i = kFirst; i < kTotal; ++i) benchmark::DoNotOptimize(order());
    const Memory total = ReadMemory();
    state.counters["hwm_100k_kib"] = static_cast<double>(first.hwm_kib);
    state.counters["rss_100k_kib"] = static_cast<double>(first.rss_kib);
    state.counters["hwm_1m_kib"] = static_cast<double>(total.hwm_kib);
    state.counters["rss_1m_kib"] = static_cast<double>(total.rss_kib);
  }
  state.SetItemsProcessed(state.iterations() * kTotal);
}

void MemoryKit(benchmark::State& state) {
  MemoryAfterOrders(state, [] { return KitEntrust(0); });
}

void MemoryFloor(benchmark::State& state) {
  const CustomerWire& w = Env::Get().Wire(0);
  MemoryAfterOrders(state, [&] { return FloorOrder(w, w.entrust_block, Fam::kOrderEntrust); });
}

}  // namespace

void RegisterOrderBenchmarks() {
  benchmark::RegisterBenchmark(kEntrustLogOff, [](benchmark::State& s) { Entrust(s, false); });
  benchmark::RegisterBenchmark(kEntrustLogOn, [](benchmark::State& s) { Entrust(s, true); });
  benchmark::RegisterBenchmark(kEntrustFloor, EntrustFloor);
  benchmark::RegisterBenchmark(kEntrustFloorChecked, EntrustFloorChecked);
  benchmark::RegisterBenchmark(kWithdrawLogOff, [](benchmark::State& s) { Withdraw(s, false); });
  benchmark::RegisterBenchmark(kWithdrawLogOn, [](benchmark::State& s) { Withdraw(s, true); });
  benchmark::RegisterBenchmark(kWithdrawFloor, WithdrawFloor);
  benchmark::RegisterBenchmark(kLoggerLine, LoggerLine);
  benchmark::RegisterBenchmark(kBatchKit, Batch);
  benchmark::RegisterBenchmark(kBatchFloor, BatchFloor);
  benchmark::RegisterBenchmark(kThreadsKit, EntrustThreads)
      ->Setup(ReadyOnce)
      ->Threads(1)
      ->Threads(2)
      ->UseRealTime();
  benchmark::RegisterBenchmark(kThreadsFloor, EntrustThreadsFloor)
      ->Setup(ReadyOnce)
      ->Threads(1)
      ->Threads(2)
      ->UseRealTime();
  benchmark::RegisterBenchmark(kMemoryKit, MemoryKit)->Iterations(1)->Repetitions(1);
  benchmark::RegisterBenchmark(kMemoryFloor, MemoryFloor)->Iterations(1)->Repetitions(1);
}

}  // namespace molra::bench
