// The synchronous answer checks of every order family: the transport answers the family's
// request with bytes of any length and content (a block, an unstructured answer, or the
// fields of a key/value answer), and the export must return a result or the documented
// failure without reading outside the answer or leaking its session.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "fuzz_input.h"
#include "kit_on_sim.h"
#include "support/order_calls.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  molra::fuzz::StartKitOnSim();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto& calls = molra::test::OrderCalls();
  molra::fuzz::Input in(data, size);
  const molra::test::OrderCall& call = calls[in.Byte() % calls.size()];
  const std::uint8_t form = in.Byte();
  const char* code = molra::trade::Family(call.fam).code;
  const std::int32_t open = FUZZ_SIM(KelSim_OpenSessions)();

  FUZZ_SIM(KelSim_ClearAnswers)();
  if (molra::trade::Family(call.fam).key_value || form % 3 == 1) {
    const std::int32_t rc = in.Int32();
    const std::string msg = in.Text(300);
    if (form % 3 == 1) {
      FUZZ_SIM(KelSim_SetPlainAnswer)(code, rc, msg.c_str());
    } else {
      const std::string rows = in.Text(4096);  // "id=value|...\n..." or anything else
      FUZZ_SIM(KelSim_SetKvAnswer)(code, rc, msg.c_str(), rows.c_str());
    }
  } else {
    std::vector<char> answer = in.Rest();
    FUZZ_SIM(KelSim_SetStructAnswer)(code, answer.data(), static_cast<std::int32_t>(answer.size()));
  }
  call.sync();
  if (FUZZ_SIM(KelSim_OpenSessions)() != open) std::abort();  // a session was not released
  return 0;
}
