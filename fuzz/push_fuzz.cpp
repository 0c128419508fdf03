// Push decoding: records of any length and content through the three push handlers (the
// global structured handler with the 415-byte layout, the two subscription handlers with
// the 402-byte one) and, for records of full length, the decoder itself.
#include <cstdint>
#include <string>
#include <vector>

#include "core/context.h"
#include "fuzz_input.h"
#include "push/push_decode.h"
#include "push/push_handlers.h"
#include "secmolra.h"
#include "support/fake_kel.h"

namespace {

// The push settings of a kit without a GLOBAL section ("DM0003" and "DM0004").
molra::PushSettings kDefaultPush;

std::size_t g_sink = 0;
void OnMessage(const char* time, const char* json, int32_t type) {
  g_sink += std::string(time).size() + std::string(json).size() + static_cast<std::size_t>(type);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  SECMOLRA_SetMsgCallback(OnMessage);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  molra::fuzz::Input in(data, size);
  const std::uint8_t mode = in.Byte();
  std::vector<char> record = in.Rest();
  const char* p = record.empty() ? nullptr : record.data();
  const auto len = static_cast<kel::int32>(record.size());
  switch (mode % 4) {
    case 0:  // the global handler: function 0 is the default confirmation code's number
      molra::ScStructMsgProc(&kDefaultPush, (mode >> 2) % 3 == 0 ? 0 : mode, len, p);
      break;
    case 1:
    case 2: {  // a subscription's session whose binary body is the record
      molra::test::FakeKel kel;
      molra::test::FakeSession s;
      s.body.assign(record.begin(), record.end());
      const std::int64_t h = kel.Add(s);
      if (mode % 4 == 1)
        molra::ScOrderMsgProcess(nullptr, h);
      else
        molra::ScReportMsgProcess(nullptr, h);
      break;
    }
    default: {  // the decoder on a record of its layout's full length
      const bool structured = (mode >> 2) & 1;
      record.resize(structured ? molra::kStructPushRecordLen : molra::kConfirmRecordLen);
      g_sink += molra::DecodePush(record.data(), structured, mode >> 3).size();
      g_sink += static_cast<std::size_t>(molra::ConfirmType(record.data(), structured));
    }
  }
  return 0;
}
