// The protocol of the back end's server (sim/net/wire.h) and the server's defence against
// clients that break it: every message survives encoding and decoding, and a body cut short,
// lengthened or of another type is refused; a client that sends a malformed, oversized or
// unexpected frame, stalls half-way or does not read its output loses its own connection while
// the server goes on serving the others.
#include <asio.hpp>
#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "support/net_server.h"
#include "wire.h"

using namespace molra::test;
namespace wire = sim::wire;

namespace {

// How long a test waits for the server: long enough for a loaded machine, reached only when
// something is wrong.
constexpr int kBoundMs = 10000;

std::string Body(const std::string& frame) { return frame.substr(wire::kHeaderSize); }

// A frame of any body, and a header announcing any length.
std::string Header(std::uint32_t n) {
  std::string h;
  for (int i = 0; i < 4; ++i) h.push_back(static_cast<char>((n >> (8 * i)) & 0xff));
  return h;
}
std::string Frame(const std::string& body) {
  return Header(static_cast<std::uint32_t>(body.size())) + body;
}

// Decodes a body and encodes what it got again.
using Codec = std::function<bool(const std::string& body, std::string* again)>;
template <typename M>
Codec CodecOf() {
  return [](const std::string& body, std::string* again) {
    M m;
    if (!wire::Decode(body, &m)) return false;
    *again = wire::Encode(m);
    return true;
  };
}

sim::Quote SampleQuote() {
  sim::Quote q;
  q.jys = "SH";
  q.zqdm = "600000";
  q.date = 20240603;
  q.time_ms = 34200000;
  q.last = 10.01;
  q.prev_close = 9.99;
  q.upper_limit = 10.99;
  q.lower_limit = 8.99;
  q.tick = 0.01;
  q.volume = 123456;
  q.turnover = 1234567.5;
  q.bids[0] = {10.00, 500};
  q.asks[4] = {10.05, -1};
  return q;
}

TEST(SimNetWire, EveryMessageSurvivesAndABodyCutLengthenedOrRetypedIsRefused) {
  sim::Request req;
  req.func = req.raw_func = "19001";
  req.is_block = true;
  req.block = std::string("\x51\x4a\0\x01", 4);
  req.fields = {{605, "1001"}, {1600, ""}};
  sim::Answer ans;
  ans.Fail(-3, "no");
  ans.rows = {{{605, "1001"}, {709, "1.50"}}, {}};
  ans.blocks = {"a", std::string("\0b", 2)};
  wire::PushMsg push{"1001", 1, std::string(402, '\1'), std::string("\0\2", 2)};
  wire::ControlMsg control;
  control.id = 77;
  control.op = wire::ControlOp::SetQuote;
  control.jys = "SZ";
  control.price = -1.25;
  control.n = -3;
  control.quote = SampleQuote();
  wire::ControlAnswer control_answer;
  control_answer.id = 78;
  control_answer.ok = true;
  control_answer.date = 20240603;
  control_answer.quote = SampleQuote();

  struct Case {
    const char* name;
    std::string frame;
    Codec codec;
  };
  const std::vector<Case> cases = {
      {"hello", wire::Encode(wire::Hello{}), CodecOf<wire::Hello>()},
      {"welcome", wire::Encode(wire::Welcome{1, "DM0003", "X"}), CodecOf<wire::Welcome>()},
      {"refuse", wire::EncodeRefuse("why"),
       [](const std::string& body, std::string* again) {
         std::string why;
         if (!wire::DecodeRefuse(body, &why)) return false;
         *again = wire::EncodeRefuse(why);
         return true;
       }},
      {"request", wire::Encode(wire::RequestMsg{1ULL << 40, -2, req}), CodecOf<wire::RequestMsg>()},
      {"answer", wire::Encode(wire::AnswerMsg{5, ans}), CodecOf<wire::AnswerMsg>()},
      {"interest", wire::Encode(wire::Interest{6, {"", "1001"}}), CodecOf<wire::Interest>()},
      {"push", wire::Encode(push), CodecOf<wire::PushMsg>()},
      {"control", wire::Encode(control), CodecOf<wire::ControlMsg>()},
      {"control answer", wire::Encode(control_answer), CodecOf<wire::ControlAnswer>()},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    ASSERT_EQ(Header(static_cast<std::uint32_t>(c.frame.size() - wire::kHeaderSize)),
              c.frame.substr(0, 4));
    std::string body = Body(c.frame), again;
    ASSERT_TRUE(c.codec(body, &again));
    EXPECT_EQ(again, c.frame);
    for (std::size_t n = 0; n < body.size(); ++n)
      EXPECT_FALSE(c.codec(body.substr(0, n), &again)) << "cut to " << n;
    EXPECT_FALSE(c.codec(body + '\0', &again));
    for (const Case& other : cases) {
      if (&other == &c) continue;
      std::string retyped = body;
      retyped[0] = Body(other.frame)[0];
      EXPECT_FALSE(c.codec(retyped, &again)) << "as " << other.name;
    }
  }
  // Counts that the bytes left cannot hold are refused before anything is reserved.
  std::string forged = Body(wire::Encode(wire::Interest{1, {}}));
  forged.replace(9, 4, "\xff\xff\xff\x7f");
  wire::Interest interest;
  EXPECT_FALSE(wire::Decode(forged, &interest));
}

TEST(SimNetWire, FramesAreSplitWhereverTheBytesBreak) {
  std::string stream = wire::Encode(wire::Hello{}) + wire::Encode(wire::Interest{2, {"1001"}}) +
                       wire::EncodeRefuse("");
  for (std::size_t piece : {std::size_t{1}, std::size_t{3}, std::size_t{7}, stream.size()}) {
    wire::FrameSplitter in;
    std::vector<std::string> bodies;
    std::string body;
    for (std::size_t at = 0; at < stream.size(); at += piece) {
      in.Add(stream.data() + at, std::min(piece, stream.size() - at));
      while (in.Next(&body) == wire::FrameSplitter::Status::Frame) bodies.push_back(body);
    }
    ASSERT_EQ(bodies.size(), 3u) << piece;
    EXPECT_EQ(bodies[1], Body(wire::Encode(wire::Interest{2, {"1001"}})));
    EXPECT_FALSE(in.holding());
  }
  for (std::uint32_t bad : {0u, wire::kMaxFrame + 1}) {
    wire::FrameSplitter in;
    std::string header = Header(bad);
    in.Add(header.data(), header.size());
    std::string body;
    EXPECT_EQ(in.Next(&body), wire::FrameSplitter::Status::Bad) << bad;
  }
}

// A client of the server speaking raw bytes.
class RawClient {
 public:
  explicit RawClient(std::uint16_t port) : sock_(io_) {
    sock_.connect({asio::ip::make_address("127.0.0.1"), port});
  }
  bool Send(const std::string& bytes) {
    asio::error_code ec;
    asio::write(sock_, asio::buffer(bytes), ec);
    return !ec;
  }
  // Reads until `enough` holds for what came, the server closes the connection, or `ms` have
  // passed; whether the server closed it.
  bool Read(int ms, const std::function<bool()>& enough) {
    bool closed = false, done = false;
    std::function<void()> read = [&] {
      sock_.async_read_some(asio::buffer(chunk_), [&](const asio::error_code& ec, std::size_t n) {
        if (ec) {
          closed = ec != asio::error::operation_aborted;  // aborted: the wait ended first
          return;
        }
        got_.append(chunk_, n);
        if (!(done = enough())) read();
      });
    };
    read();
    io_.run_for(std::chrono::milliseconds(ms));
    if (!closed && !done) {
      sock_.cancel();
      io_.restart();
      io_.run();
    }
    io_.restart();
    return closed;
  }
  // Reads for at most `ms`; whether the server closed the connection meanwhile.
  bool Closed(int ms) {
    return Read(ms, [] { return false; });
  }
  // The bodies received so far.
  std::vector<std::string> Bodies() {
    wire::FrameSplitter in;
    in.Add(got_.data(), got_.size());
    std::vector<std::string> out;
    std::string body;
    while (in.Next(&body) == wire::FrameSplitter::Status::Frame) out.push_back(body);
    return out;
  }
  // Sends a frame one byte at a time.
  void Trickle(const std::string& frame) {
    for (char ch : frame) Send(std::string(1, ch));
  }

 private:
  asio::io_context io_;
  asio::ip::tcp::socket sock_;
  char chunk_[65536];
  std::string got_;
};

wire::RequestMsg FundQuery(std::uint64_t id) {
  wire::RequestMsg m;
  m.id = id;
  m.req.func = m.req.raw_func = "DQ0003";
  m.req.fields = {{605, "1001"}};
  return m;
}

// The good client is still answered, whatever another did (within a bound a loaded machine
// keeps).
void ExpectServed(RawClient& good, std::uint64_t id) {
  good.Trickle(wire::Encode(FundQuery(id)));
  wire::AnswerMsg a;
  auto answered = [&] {
    std::vector<std::string> bodies = good.Bodies();
    return !bodies.empty() && wire::Decode(bodies.back(), &a) && a.id == id;
  };
  EXPECT_FALSE(good.Read(kBoundMs, answered));
  ASSERT_TRUE(answered());
  EXPECT_EQ(a.ans.rows.size(), 1u);
}

TEST(SimNetServer, AClientThatBreaksTheProtocolLosesItsOwnConnectionOnly) {
  sim::ServerOptions opt;
  opt.stall_ms = 500;
  NetServer server(std::string(), 0, opt);
  ASSERT_TRUE(server.listening());
  RawClient good(server.port());
  good.Send(wire::Encode(wire::Hello{}));

  const std::string hello = wire::Encode(wire::Hello{});
  std::string bad_magic = Body(hello), cut = Body(wire::Encode(FundQuery(1))),
              unknown_type = Body(hello);
  bad_magic[1] = 'X';
  cut.pop_back();
  unknown_type[0] = 99;
  struct Case {
    const char* what;
    std::string bytes;
  };
  const std::vector<Case> cases = {
      {"a request before the hello", wire::Encode(FundQuery(1))},
      {"a hello with another magic", Frame(bad_magic)},
      {"an unknown frame type", hello + Frame(unknown_type)},
      {"an empty frame", hello + Header(0)},
      {"an oversized length", hello + Header(wire::kMaxFrame + 1)},
      {"a request cut short", hello + Frame(cut)},
      {"a frame only the server sends", hello + wire::Encode(wire::Welcome{})},
      {"text instead of frames", "GET / HTTP/1.1\r\nHost: x\r\n\r\n"},
      {"half a frame, then nothing", hello + wire::Encode(FundQuery(1)).substr(0, 9)},
      {"no hello at all", ""},
  };
  std::uint64_t id = 100;
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    RawClient bad(server.port());
    bad.Send(c.bytes);
    EXPECT_TRUE(bad.Closed(kBoundMs));  // the stall cases by the server's sweep
    ExpectServed(good, ++id);
  }
}

TEST(SimNetServer, AnotherProtocolVersionIsRefusedWithTheReason) {
  NetServer server;
  RawClient old(server.port());
  old.Send(wire::Encode(wire::Hello{2}));
  EXPECT_TRUE(old.Closed(kBoundMs));
  std::vector<std::string> bodies = old.Bodies();
  ASSERT_EQ(bodies.size(), 1u);
  std::string why;
  ASSERT_TRUE(wire::DecodeRefuse(bodies[0], &why));
  EXPECT_EQ(why, "protocol version 2 is not served (this server speaks 1)");
}

TEST(SimNetServer, AClientThatDoesNotReadItsAnswersIsClosed) {
  sim::ServerOptions opt;
  opt.max_output = 256 << 10;
  NetServer server(std::string(), 0, opt);
  RawClient good(server.port()), greedy(server.port());
  good.Send(wire::Encode(wire::Hello{}));
  greedy.Send(wire::Encode(wire::Hello{}));
  std::string frames;
  for (std::uint64_t i = 0; i < 100; ++i) {
    wire::RequestMsg q = FundQuery(i);
    q.req.func = q.req.raw_func = "D00753";  // five positions: answers of some 600 bytes
    frames += wire::Encode(q);
  }
  // It asks and never reads: the socket buffers fill, then the server's queue; the server
  // closes the connection, and the client's writes fail from then on.
  int rounds = 0;
  while (rounds < 5000 && greedy.Send(frames)) ++rounds;
  EXPECT_LT(rounds, 5000);
  ExpectServed(good, 7);
}

}  // namespace
