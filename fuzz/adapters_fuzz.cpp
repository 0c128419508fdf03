// The scripting adapters' copying: each list query answered with key/value rows of any
// content, its records copied into a caller array of exactly `cap` records (any cap,
// negative too); the batch adapter with rows of any bytes (texts without terminators) and
// any count not beyond the array.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "fuzz_input.h"
#include "kit_on_sim.h"
#include "secmolra.h"

namespace {

// Calls one adapter with an array of exactly `cap` records (none when cap < 1).
template <typename R, typename Call>
void CopyInto(std::int32_t cap, Call call) {
  std::unique_ptr<R[]> out(cap > 0 ? new R[static_cast<std::size_t>(cap)] : nullptr);
  call(out.get(), cap);
}

struct Query {
  const char* codes[2];  // the function codes the query sends (either may be used)
  void (*run)(std::int32_t cap);
};

const Query kQueries[] = {
    {{"DQ0003", nullptr},
     [](std::int32_t cap) {
       CopyInto<FundRecord>(
           cap, [](FundRecord* r, std::int32_t c) { PYSECMOLRA_QueryFundInfo("1001", r, c); });
     }},
    {{"D00734", nullptr},
     [](std::int32_t cap) {
       CopyInto<AccountRecord>(
           cap, [](AccountRecord* r, std::int32_t c) { PYSECMOLRA_QueryAccInfo("1001", r, c); });
     }},
    {{"D00751", nullptr},
     [](std::int32_t cap) {
       CopyInto<OrderRecord>(cap, [](OrderRecord* r, std::int32_t c) {
         PYSECMOLRA_QueryOrders("1001", 0, 0, 0, 0, "", "", 0, r, c);
       });
     }},
    {{"D00752", nullptr},
     [](std::int32_t cap) {
       CopyInto<MatchRecord>(cap, [](MatchRecord* r, std::int32_t c) {
         PYSECMOLRA_QueryMatchs("1001", 0, 0, 0, 0, "", "", 0, r, c);
       });
     }},
    {{"D00753", nullptr},
     [](std::int32_t cap) {
       CopyInto<PositionRecord>(cap, [](PositionRecord* r, std::int32_t c) {
         PYSECMOLRA_QueryPositions("1001", 0, 0, 0, "", "", "", 0, r, c);
       });
     }},
    {{"D00985", nullptr},
     [](std::int32_t cap) {
       CopyInto<PSQYRecord>(cap, [](PSQYRecord* r, std::int32_t c) {
         PYSECMOLRA_QueryPSQY("1001", "SH", "", r, c);
       });
     }},
    {{"D00754", nullptr},
     [](std::int32_t cap) {
       CopyInto<ETFShareRecord>(cap, [](ETFShareRecord* r, std::int32_t c) {
         PYSECMOLRA_QueryETFShare("1001", "510050", r, c);
       });
     }},
    {{"D00749", "A00210"},
     [](std::int32_t cap) {
       CopyInto<CusNodeInfo>(cap, [](CusNodeInfo* r, std::int32_t c) {
         PYSECMOLRA_QueryCusNodeinfo("SIM", "1001", r, c);
       });
     }},
};
constexpr std::size_t kQueryCount = sizeof kQueries / sizeof kQueries[0];

void Batch(molra::fuzz::Input& in) {
  const std::int32_t count = in.Byte() % 8;
  std::unique_ptr<BatchOrderRow[]> rows(
      count > 0 ? new BatchOrderRow[static_cast<std::size_t>(count)] : nullptr);
  for (std::int32_t i = 0; i < count; ++i) {
    auto* bytes = reinterpret_cast<unsigned char*>(&rows[static_cast<std::size_t>(i)]);
    for (std::size_t b = 0; b < sizeof(BatchOrderRow); ++b) bytes[b] = in.Byte();
  }
  std::vector<char> answer = in.Rest();
  FUZZ_SIM(KelSim_SetStructAnswer)
  ("19012", answer.data(), static_cast<std::int32_t>(answer.size()));
  PYSECMOLRA_BatchOrderEntrust("1001", 9, rows.get(), count);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  molra::fuzz::StartKitOnSim();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  molra::fuzz::Input in(data, size);
  const std::uint8_t which = in.Byte();
  const std::int32_t open = FUZZ_SIM(KelSim_OpenSessions)();
  FUZZ_SIM(KelSim_ClearAnswers)();
  if (which % (kQueryCount + 1) == kQueryCount) {
    Batch(in);
  } else {
    const Query& q = kQueries[which % (kQueryCount + 1)];
    const std::int32_t cap = static_cast<std::int8_t>(in.Byte());  // -128 .. 127
    const std::int32_t rc = static_cast<std::int8_t>(in.Byte());
    const std::string msg = in.Text(200);
    const std::string rows = in.Text(1 << 16);
    for (const char* code : q.codes) {
      if (code != nullptr) FUZZ_SIM(KelSim_SetKvAnswer)(code, rc, msg.c_str(), rows.c_str());
    }
    q.run(cap);
  }
  if (FUZZ_SIM(KelSim_OpenSessions)() != open) std::abort();  // a session was not released
  return 0;
}
