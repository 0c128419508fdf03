// molra_sim_bench: the simulated exchange replaying a day of quotes on one core, with 100 of
// its own orders resting in the book (none of them reached, so each quote is checked against
// both sides of the book and nothing else happens). The exchange is driven directly, as any
// host drives it; reading the file and placing the orders are outside the measured time.
// Reports quote updates a second (items_per_second).
#include <benchmark/benchmark.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "backend.h"
#include "block.h"
#include "exchange.h"

namespace {

constexpr int kQuotes = 300000;      // one every 50 ms from 09:30
constexpr int kRestingOrders = 100;  // half buys below the day's range, half sells above it

// A day of quotes with five levels a side, the price wandering between 9.80 and 10.20.
std::string WriteDay(const std::string& path) {
  std::ofstream out(path, std::ios::binary);
  out << "time,exchange,code,last,volume";
  for (int n = 1; n <= 5; ++n)
    out << ",bid" << n << ",bid" << n << "_volume,ask" << n << ",ask" << n << "_volume";
  out << "\n";
  unsigned long long seed = 12345;
  long long mid = 1000, volume = 0;  // in cents
  char line[512];
  for (int i = 0; i < kQuotes; ++i) {
    seed = seed * 6364136223846793005ULL + 1442695040888963407ULL;
    mid += static_cast<long long>(seed >> 62) - 1;
    mid = mid < 981 ? 981 : (mid > 1014 ? 1014 : mid);
    volume += 100 * static_cast<long long>((seed >> 40) % 20);
    long long ms = (9 * 3600 + 30 * 60) * 1000LL + i * 50LL;
    int n = std::snprintf(line, sizeof line, "%02lld:%02lld:%02lld.%03lld,SH,600000,%.2f,%lld",
                          ms / 3600000, ms / 60000 % 60, ms / 1000 % 60, ms % 1000, mid / 100.0,
                          volume);
    for (int k = 0; k < 5; ++k)
      n += std::snprintf(line + n, sizeof line - n, ",%.2f,%d,%.2f,%d", (mid - k) / 100.0,
                         100 * (k + 1), (mid + 1 + k) / 100.0, 200 * (k + 1));
    out << line << "\n";
  }
  return path;
}

std::string Config(const std::string& dir) {
  static const std::string day = WriteDay(dir + "/day.csv");
  std::string path = dir + "/sim.ini";
  std::ofstream(path) << "[backend]\ninclude_defaults = true\ncheck_token = false\n"
                      << "[market]\nreplay = " << day << "\nclock = manual\nstart = 09:30:00\n";
  return path;
}

void Place(sim::Exchange& ex, int jylb, double price) {
  sim::Block b(137);
  b.PutI16(0, 19001);
  b.PutU8(2, 1);
  b.PutText(13, 13, "1001");
  b.PutText(55, 3, "SH");
  b.PutText(69, 9, "600000");
  b.PutU8(78, jylb);
  b.PutI32(79, 100);
  b.PutF64(83, price);
  sim::Request req;
  req.func = "19001";
  req.block = b.bytes();
  req.is_block = true;
  sim::Answer ans;
  ex.Handle(req, sim::Caller{}, &ans);
  if (ans.code != 1) std::fprintf(stderr, "order refused: %s\n", ans.msg.c_str());
}

// Counts the exchange's pushes: the orders' confirmations only, as long as nothing matches.
struct Counter : sim::ExchangeListener {
  void OnPush(sim::PendingPush&&) override { ++pushes; }
  bool WantsQuotes() const override { return false; }
  void OnQuote(const sim::Quote&) override {}
  long long pushes = 0;
};

void ReplayADay(benchmark::State& state) {
  std::string dir = (std::filesystem::temp_directory_path() / "molra-sim-bench").string();
  std::filesystem::create_directories(dir);
  sim::Config cfg;
  std::string error;
  if (!sim::LoadConfigFile(Config(dir), cfg, &error)) return state.SkipWithError(error.c_str());
  long long quotes = 0;
  for (auto _ : state) {
    state.PauseTiming();
    sim::Exchange ex;
    Counter counter;
    ex.SetListener(&counter);
    if (!ex.Start(cfg, &error)) return state.SkipWithError(error.c_str());
    for (int i = 0; i < kRestingOrders / 2; ++i) {
      Place(ex, 1, 9.30 + 0.01 * i);   // buys 9.30 - 9.79: the asks stay at 9.82 and above
      Place(ex, 2, 10.30 + 0.01 * i);  // sells 10.30 - 10.79: the bids stay at 10.14 and below
    }
    state.ResumeTiming();
    ex.Advance(6 * 3600 * 1000LL);  // the whole day
    state.PauseTiming();
    if (counter.pushes != kRestingOrders) return state.SkipWithError("a resting order was reached");
    quotes += kQuotes - 1;  // the first quote was given when the day started
    state.ResumeTiming();
  }
  state.SetItemsProcessed(quotes);
}

}  // namespace

BENCHMARK(ReplayADay)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(5);
BENCHMARK_MAIN();
