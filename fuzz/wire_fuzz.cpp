// The protocol of the back end's server (sim/net/wire.h): bytes of any content, cut in pieces
// of the first byte's size, split into frames; every body is decoded as its type, and what
// decodes must encode again to the very frame it came from (nothing dropped or invented).
#include <cstdint>
#include <cstdlib>
#include <string>

#include "wire.h"

namespace {

namespace wire = sim::wire;

template <typename M>
void RoundTrip(const std::string& body, const std::string& frame) {
  M m;
  if (wire::Decode(body, &m) && wire::Encode(m) != frame) std::abort();
}

void Check(const std::string& body) {
  std::string frame = body;
  std::uint32_t n = static_cast<std::uint32_t>(body.size());
  frame.insert(0, std::string{static_cast<char>(n & 0xff), static_cast<char>((n >> 8) & 0xff),
                              static_cast<char>((n >> 16) & 0xff), static_cast<char>(n >> 24)});
  wire::Type type;
  if (!wire::TypeOf(body, &type)) return;
  std::uint64_t id = 0;
  wire::PeekId(body, &type, &id);
  switch (type) {
    case wire::Type::Hello:
      return RoundTrip<wire::Hello>(body, frame);
    case wire::Type::Welcome:
      return RoundTrip<wire::Welcome>(body, frame);
    case wire::Type::Request:
      return RoundTrip<wire::RequestMsg>(body, frame);
    case wire::Type::Answer:
      return RoundTrip<wire::AnswerMsg>(body, frame);
    case wire::Type::Interest:
      return RoundTrip<wire::Interest>(body, frame);
    case wire::Type::Push:
      return RoundTrip<wire::PushMsg>(body, frame);
    case wire::Type::Control:
      return RoundTrip<wire::ControlMsg>(body, frame);
    case wire::Type::ControlAnswer:
      return RoundTrip<wire::ControlAnswer>(body, frame);
    case wire::Type::Refuse: {
      std::string why;
      if (wire::DecodeRefuse(body, &why) && wire::EncodeRefuse(why) != frame) std::abort();
      return;
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  std::size_t piece = data[0] % 16 + 1;
  wire::FrameSplitter in;
  std::string body;
  for (std::size_t at = 1; at < size; at += piece) {
    in.Add(reinterpret_cast<const char*>(data) + at, std::min(piece, size - at));
    for (;;) {
      auto st = in.Next(&body);
      if (st == wire::FrameSplitter::Status::Bad) return 0;  // the stream ends there
      if (st == wire::FrameSplitter::Status::Partial) break;
      Check(body);
    }
  }
  return 0;
}
