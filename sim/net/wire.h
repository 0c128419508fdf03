// The protocol between the simulated transport and the simulated back end's server
// (molra-simd): frames of a 4-byte little-endian length followed by that many bytes, the first
// of which is the message type. Requests and answers carry the back end's own messages
// (backend/message.h) field for field, and pushes the records the transport hands out
// (push_record.h), so that what a host reads through the transport is the same as with the
// back end in its own process. Nothing here knows of
// sockets: the server and the transport put frames on their connections themselves.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "message.h"
#include "quote.h"

namespace sim::wire {

constexpr std::uint16_t kVersion = 1;
constexpr char kMagic[8] = {'m', 'o', 'l', 'r', 'a', 's', 'i', 'm'};
constexpr std::size_t kHeaderSize = 4;
// The largest frame body either side accepts; a longer one closes the connection.
constexpr std::uint32_t kMaxFrame = 16u << 20;

enum class Type : std::uint8_t {
  Hello = 1,          // client: magic and version
  Welcome = 2,        // server: version and its subscription codes
  Refuse = 3,         // server: why the hello was refused; the server then closes
  Request = 4,        // client: a request with its number and node
  Answer = 5,         // server: the answer to a request number
  Interest = 6,       // client: the customers whose pushes this connection wants
  Push = 7,           // server: a push for a customer
  Control = 8,        // client: a control call on the market or the clock
  ControlAnswer = 9,  // server: its result
};

struct Hello {  // decoding wants the magic
  std::uint16_t version = kVersion;
};

struct Welcome {
  std::uint16_t version = kVersion;
  std::string confirm_func, report_func;
};

struct RequestMsg {
  std::uint64_t id = 0;
  std::int32_t node_id = 0;
  Request req;
};

struct AnswerMsg {
  std::uint64_t id = 0;
  Answer ans;
};

// The customers whose pushes a connection wants; "" stands for every customer. Each message
// replaces the previous set; the server acknowledges it with an empty answer of its number.
struct Interest {
  std::uint64_t id = 0;
  std::vector<std::string> khh;
};

// A push of the back end for a customer, with its record in both layouts: the 402-byte one
// of subscriptions with a handler, the 415-byte one of the global structured handler.
struct PushMsg {
  std::string khh;
  int kind = 0;  // 0 confirmation, 1 match
  std::string plain, structured;
};

enum class ControlOp : std::uint8_t {
  SetPrice = 1,
  SetLiquidity,
  SetMatchVolume,
  SetTimeOffset,
  SetTradeDate,
  GetQuote,
  SetQuote,
  Advance,
  NewDay,
  Clock,
  Last = Clock,
};

struct ControlMsg {
  std::uint64_t id = 0;
  ControlOp op = ControlOp::Clock;
  std::string jys, zqdm;
  double price = 0;
  std::int64_t n = 0;
  Quote quote;  // SetQuote
};

struct ControlAnswer {
  std::uint64_t id = 0;
  bool ok = false;
  std::int64_t date = 0, ms = 0;  // Clock
  Quote quote;                    // GetQuote
};

// A whole frame (header and body) for each message.
std::string Encode(const Hello& m);
std::string Encode(const Welcome& m);
std::string EncodeRefuse(const std::string& why);
std::string Encode(const RequestMsg& m);
std::string Encode(const AnswerMsg& m);
std::string Encode(const Interest& m);
std::string Encode(const PushMsg& m);
std::string Encode(const ControlMsg& m);
std::string Encode(const ControlAnswer& m);

// Splits a byte stream into frame bodies.
class FrameSplitter {
 public:
  enum class Status { Frame, Partial, Bad };
  void Add(const char* data, std::size_t n) { buf_.append(data, n); }
  // The next complete body; Partial when none is complete yet, Bad for a length of 0 or
  // above kMaxFrame (the stream cannot be read further).
  Status Next(std::string* body);
  // Whether bytes of a frame not yet complete are held.
  bool holding() const { return at_ < buf_.size(); }

 private:
  std::string buf_;
  std::size_t at_ = 0;
};

// The number an Answer or a ControlAnswer answers; false for other bodies.
bool PeekId(const std::string& body, Type* type, std::uint64_t* id);

// Decoding a frame body (type byte first). False when the body is not exactly one message of
// that type (cut short, bytes left over, a value out of range).
bool TypeOf(const std::string& body, Type* type);
bool Decode(const std::string& body, Hello* m);
bool Decode(const std::string& body, Welcome* m);
bool DecodeRefuse(const std::string& body, std::string* why);
bool Decode(const std::string& body, RequestMsg* m);
bool Decode(const std::string& body, AnswerMsg* m);
bool Decode(const std::string& body, Interest* m);
bool Decode(const std::string& body, PushMsg* m);
bool Decode(const std::string& body, ControlMsg* m);
bool Decode(const std::string& body, ControlAnswer* m);

// Splits "host:port" (port 1..65535, or 0 too when `any_port`; the host not empty); false
// otherwise.
bool SplitHostPort(const std::string& addr, std::string* host, std::uint16_t* port,
                   bool any_port = false);

}  // namespace sim::wire
