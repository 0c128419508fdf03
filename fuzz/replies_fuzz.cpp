// Every reply handler with an answer of any length and content: structured or not, any
// code and message, any request block (the customer number and batch rows are read from
// it), any answer fields for the key/value businesses. The handler owns the session: it
// must release it exactly once on every path.
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <string>

#include "fuzz_input.h"
#include "secmolra.h"
#include "support/fake_kel.h"
#include "support/reply_handlers.h"
#include "trade/replies.h"
#include "util/field_ids.h"

namespace {

using molra::test::kReplyHandlers;
constexpr std::size_t kHandlerCount = std::size(kReplyHandlers);

std::size_t g_sink = 0;
void OnFunction(const char* time, const char* json, int32_t type) {
  g_sink += std::string(time).size() + std::string(json).size() + static_cast<std::size_t>(type);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  molra::fuzz::Input in(data, size);
  const std::uint8_t which = in.Byte();
  const std::uint8_t flags = in.Byte();
  // Half of the runs without a function callback: an acceptable answer is then dropped.
  SECMOLRA_SetFuncCallback((flags & 1) != 0 ? OnFunction : nullptr);

  molra::test::FakeKel kel;
  molra::test::FakeSession s;
  s.is_struct = (flags & 2) != 0;
  s.code = in.Int32();
  s.message = in.Text(300);
  s.data = in.Int32();
  if ((flags & 4) != 0) {
    const std::size_t req_len = static_cast<std::size_t>(in.Byte()) * 16;
    std::string req;
    for (std::size_t i = 0; i < req_len && in.left() > 0; ++i)
      req.push_back(static_cast<char>(in.Byte()));
    s.request = req;
  }
  if ((flags & 8) != 0) {
    for (int id : {fid::KHH, fid::WTH, fid::WTSJ, fid::DJZJ, fid::SBJG}) {
      s.items[id] = in.Text(40);
    }
  }
  std::vector<char> answer = in.Rest();
  s.answer.assign(answer.begin(), answer.end());

  const std::int64_t h = kel.Add(s);
  kReplyHandlers[which % kHandlerCount](h);
  if (kel.Releases(h) != 1) std::abort();  // leaked or released twice
  return 0;
}
