// The asynchronous entrust beside its floor (the same transport calls with the block the kit
// builds, the reply only released), and the heap allocations per order of the synchronous and
// asynchronous entrusts, the kit's beside the floor's (the floor's are the transport's own).
#include <cstring>

#include "alloc_count.h"
#include "bench_env.h"
#include "bench_paths.h"
#include "comm/kel_api.h"
#include "trade/order_blocks.h"
#include "trade/order_family.h"

namespace molra::bench {

std::int64_t KitEntrust(int customer);
std::int32_t FloorBlockRequest(const CustomerWire& w, const std::string& block, char* answer,
                               std::int32_t cap);

namespace {

constexpr std::int64_t kFirstNumber = 1000;

std::int64_t KitSend(std::int64_t number) {
  const BenchCustomer& c = kCustomers[0];
  return SECMOLRA_OrderEntrust_ASync(c.khh, kOrder.jys, kOrder.zqdm, kOrder.jylb, kOrder.wtsl,
                                     kOrder.wtjg, kOrder.ddlx, c.gdh, number);
}

bool ReleaseReply(kel::int64 session) {
  kel::api.Kel_ReleaseSession(session);
  return true;
}

// The kit's asynchronous entrust block: the synchronous one with the request number written.
std::string SendBlock(const CustomerWire& w, std::int64_t number) {
  std::string block = w.entrust_block;
  const std::string text = std::to_string(number);
  std::memcpy(&block[offsetof(trade::OrderEntrustReq, kfsbdbh)], text.c_str(), text.size() + 1);
  return block;
}

std::int64_t FloorSend(const CustomerWire& w, const std::string& block, std::int64_t number) {
  const kel::int64 s = kel::api.Kel_AllocateSession(w.trade_conn);
  kel::api.Kel_SetNodeId(s, w.node_id);
  kel::api.Kel_SetStructData(s, block.data(), static_cast<kel::int32>(block.size()));
  kel::api.Kel_SetSessData(s, number);
  kel::api.Kel_RegReplyCallFunc(s, &ReleaseReply);
  if (kel::api.Kel_Write(s)) return number;
  kel::api.Kel_ReleaseSession(s);
  return 0;
}

// Sends `send(number)` per iteration; every so often, outside the measured time, waits for
// the replies, so that the transport's queue does not grow without bound.
template <typename F>
void SendLoop(benchmark::State& state, F send) {
  const Env& env = Env::Get();
  env.Ready();
  std::int64_t number = kFirstNumber;
  if (send(number) <= 0) {
    state.SkipWithError("the first send was refused");
    return;
  }
  for (auto _ : state) {
    benchmark::DoNotOptimize(send(++number));
    if (number % 512 == 0) {
      state.PauseTiming();
      env.WaitIdle();
      state.ResumeTiming();
    }
  }
  env.WaitIdle();
}

void Send(benchmark::State& state) { SendLoop(state, KitSend); }

void SendFloor(benchmark::State& state) {
  const CustomerWire& w = Env::Get().Wire(0);
  const std::string block = SendBlock(w, kFirstNumber);
  SendLoop(state, [&](std::int64_t number) { return FloorSend(w, block, number); });
}

// Heap allocations per order on the calling thread, over 10,000 orders after a warm-up.
template <typename F>
void AllocationsPerOrder(benchmark::State& state, F order) {
  const Env& env = Env::Get();
  env.Ready();
  constexpr int kWarm = 1000, kOrders = 10000;
  for (auto _ : state) {
    for (int i = 0; i < kWarm; ++i) order(i);
    env.WaitIdle();
    const std::uint64_t before = ThreadAllocations();
    for (int i = 0; i < kOrders; ++i) benchmark::DoNotOptimize(order(kWarm + i));
    const std::uint64_t after = ThreadAllocations();
    env.WaitIdle();
    state.counters["allocs_per_order"] = static_cast<double>(after - before) / kOrders;
  }
}

void RegisterAllocations() {
  benchmark::RegisterBenchmark(kAllocEntrustKit, [](benchmark::State& s) {
    AllocationsPerOrder(s, [](int) { return KitEntrust(0); });
  })->Iterations(1);
  benchmark::RegisterBenchmark(kAllocEntrustFloor, [](benchmark::State& s) {
    const CustomerWire& w = Env::Get().Wire(0);
    AllocationsPerOrder(s, [&](int) {
      char answer[1024];
      return FloorBlockRequest(w, w.entrust_block, answer, sizeof answer);
    });
  })->Iterations(1);
  benchmark::RegisterBenchmark(kAllocSendKit, [](benchmark::State& s) {
    AllocationsPerOrder(s, [](int i) { return KitSend(kFirstNumber + i); });
  })->Iterations(1);
  benchmark::RegisterBenchmark(kAllocSendFloor, [](benchmark::State& s) {
    const CustomerWire& w = Env::Get().Wire(0);
    const std::string block = SendBlock(w, kFirstNumber);
    AllocationsPerOrder(s, [&](int i) { return FloorSend(w, block, kFirstNumber + i); });
  })->Iterations(1);
}

}  // namespace

void RegisterSendBenchmarks() {
  benchmark::RegisterBenchmark(kSendKit, Send);
  benchmark::RegisterBenchmark(kSendFloor, SendFloor);
  RegisterAllocations();
}

}  // namespace molra::bench
