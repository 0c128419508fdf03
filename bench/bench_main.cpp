// molra_bench: the kit's own cost beside its floors. Run it from the build directory (the
// kit loads ./kelapi50.dll). `molra_bench --calls` prints, instead of measuring, the transport
// calls each kit path makes, which the floors repeat.
#include <cstdio>
#include <cstring>
#include <exception>
#include <string>
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
  // Pushes the back end sends meanwhile reach the kit's subscription handlers on the
  // transport's push thread (Kel_GetItemBuf); they are not part of the call.
  auto show = [](const char* path, const std::string& calls) {
    std::printf("== %s\n", path);
    std::size_t at = 0;
    while (at < calls.size()) {
      std::size_t end = calls.find('\n', at);
      if (end == std::string::npos) end = calls.size();
      const std::string line = calls.substr(at, end - at);
      if (line.rfind("Kel_GetItemBuf(", 0) != 0 && !line.empty()) std::printf("%s\n", line.c_str());
      at = end + 1;
    }
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
      RegisterSendBenchmarks();
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
