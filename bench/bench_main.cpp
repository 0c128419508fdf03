// molra_bench: the kit's own cost beside its floors. Run it from the build directory (the
// kit loads ./kelapi50.dll). `molra_bench --calls` prints, instead of measuring, the transport
// calls each kit path makes, which the floors repeat.
#include <cstdio>
#include <cstring>
#include <exception>
#include <vector>

#include "bench_env.h"
#include "bench_paths.h"
#include "secmolra.h"

namespace molra::bench {
std::int64_t KitEntrust(int customer);
std::int64_t KitWithdraw(int customer, std::int64_t wth);

namespace {

void PrintCalls() {
  const Env& env = Env::Get();
  auto show = [](const char* path, const std::string& calls) {
    std::printf("== %s\n%s\n", path, calls.c_str());
  };
  show("entrust", env.CallsOf([] { KitEntrust(0); }));
  show("withdraw", env.CallsOf([&] { KitWithdraw(0, env.OrderToWithdraw()); }));
  show("fund query", env.CallsOf([] {
    std::vector<FundRecord> list;
    SECMOLRA_QueryFundInfo(kCustomers[0].khh, list);
  }));
  show("batch", env.CallsOf([] {
    std::vector<BatchOrderRow> rows = BatchRows();
    SECMOLRA_BatchOrderEntrust(kCustomers[0].khh, rows, kBatchTag);
  }));
}

}  // namespace
}  // namespace molra::bench

int main(int argc, char** argv) {
  using namespace molra::bench;
  try {
    if (argc > 1 && std::strcmp(argv[1], "--calls") == 0) {
      PrintCalls();
    } else {
      benchmark::Initialize(&argc, argv);
      if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
      RegisterOrderBenchmarks();
      RegisterQueryBenchmarks();
      RegisterPushBenchmarks();
      Env::Get();  // started before the first measurement
      benchmark::RunSpecifiedBenchmarks();
      benchmark::Shutdown();
    }
  } catch (const std::exception& e) {
    std::fprintf(stderr, "molra_bench: %s\n", e.what());
    SECMOLRA_Exit();
    return 1;
  }
  SECMOLRA_Exit();
  return 0;
}
