#include "wire.h"

#include <cstring>
#include <limits>

namespace sim::wire {
namespace {

// Little-endian fixed-width integers, doubles as their IEEE bits, strings as a 4-byte length
// and the bytes.
constexpr std::size_t kUsualFrame = 256;

class Writer {
 public:
  // Room for a usual message from the start: most frames then need no second allocation.
  explicit Writer(Type t) : s_(kHeaderSize, '\0') {
    s_.reserve(kUsualFrame);
    U(static_cast<std::uint8_t>(t), 1);
  }
  Writer& U(std::uint64_t v, int width) {
    for (int i = 0; i < width; ++i) s_.push_back(static_cast<char>((v >> (8 * i)) & 0xff));
    return *this;
  }
  Writer& I(std::int64_t v, int width) { return U(static_cast<std::uint64_t>(v), width); }
  Writer& D(double d) {
    std::uint64_t v;
    std::memcpy(&v, &d, 8);
    return U(v, 8);
  }
  Writer& S(const std::string& v) {
    U(v.size(), 4);
    s_ += v;
    return *this;
  }
  void Reserve(std::size_t n) { s_.reserve(s_.size() + n); }
  Writer& Bytes(const char* p, std::size_t n) {
    s_.append(p, n);
    return *this;
  }
  std::string Frame() {
    std::uint64_t n = s_.size() - kHeaderSize;
    for (std::size_t i = 0; i < kHeaderSize; ++i) s_[i] = static_cast<char>((n >> (8 * i)) & 0xff);
    return std::move(s_);
  }

 private:
  std::string s_;
};

// Reads a body; any read past its end marks it bad, and Done() wants every byte used.
class Reader {
 public:
  Reader(const std::string& body, Type expected) : b_(body) {
    if (U(1) != static_cast<std::uint8_t>(expected)) bad_ = true;
  }
  std::uint64_t U(int width) {
    if (!Have(static_cast<std::size_t>(width))) return 0;
    std::uint64_t v = 0;
    for (int i = 0; i < width; ++i)
      v |= std::uint64_t{static_cast<unsigned char>(b_[at_ + i])} << (8 * i);
    at_ += static_cast<std::size_t>(width);
    return v;
  }
  std::int64_t I(int width) {
    std::uint64_t v = U(width);
    if (width < 8 && ((v >> (8 * width - 1)) & 1)) v |= ~0ULL << (8 * width);
    return static_cast<std::int64_t>(v);
  }
  std::int32_t I32() { return static_cast<std::int32_t>(I(4)); }
  double D() {
    std::uint64_t v = U(8);
    double d;
    std::memcpy(&d, &v, 8);
    return d;
  }
  std::string S() {
    std::size_t n = static_cast<std::size_t>(U(4));
    if (!Have(n)) return std::string();
    std::string v = b_.substr(at_, n);
    at_ += n;
    return v;
  }
  bool Raw(char* out, std::size_t n) {
    if (!Have(n)) return false;
    std::memcpy(out, b_.data() + at_, n);
    at_ += n;
    return true;
  }
  // A count of items of at least `min_size` bytes each: never more than the bytes left allow,
  // so a forged count cannot make the reader reserve memory the frame does not hold.
  std::size_t Count(std::size_t min_size) {
    std::size_t n = static_cast<std::size_t>(U(4));
    if (n > (b_.size() - at_) / min_size) bad_ = true;
    return bad_ ? 0 : n;
  }
  bool Fail() {
    bad_ = true;
    return false;
  }
  bool Done() const { return !bad_ && at_ == b_.size(); }

 private:
  bool Have(std::size_t n) {
    if (bad_ || b_.size() - at_ < n) {
      bad_ = true;
      return false;
    }
    return true;
  }
  const std::string& b_;
  std::size_t at_ = 0;
  bool bad_ = false;
};

void PutFields(Writer& w, const std::vector<Field>& fields) {
  w.U(fields.size(), 4);
  for (const Field& f : fields) w.I(f.id, 4).S(f.value);
}

std::vector<Field> GetFields(Reader& r) {
  std::vector<Field> fields(r.Count(8));
  for (Field& f : fields) {
    f.id = r.I32();
    f.value = r.S();
  }
  return fields;
}

void PutLevels(Writer& w, const Levels& side) {
  for (const Level& lv : side) w.D(lv.price).I(lv.volume, 8);
}

void GetLevels(Reader& r, Levels& side) {
  for (Level& lv : side) {
    lv.price = r.D();
    lv.volume = r.I(8);
  }
}

void PutQuote(Writer& w, const Quote& q) {
  w.S(q.jys).S(q.zqdm).I(q.date, 8).I(q.time_ms, 8);
  w.D(q.last)
      .D(q.prev_close)
      .D(q.upper_limit)
      .D(q.lower_limit)
      .D(q.tick)
      .I(q.volume, 8)
      .D(q.turnover);
  PutLevels(w, q.bids);
  PutLevels(w, q.asks);
}

void GetQuote(Reader& r, Quote& q) {
  q.jys = r.S();
  q.zqdm = r.S();
  q.date = r.I(8);
  q.time_ms = r.I(8);
  q.last = r.D();
  q.prev_close = r.D();
  q.upper_limit = r.D();
  q.lower_limit = r.D();
  q.tick = r.D();
  q.volume = r.I(8);
  q.turnover = r.D();
  GetLevels(r, q.bids);
  GetLevels(r, q.asks);
}

}  // namespace

std::string Encode(const Hello& m) {
  return Writer(Type::Hello).Bytes(kMagic, sizeof kMagic).U(m.version, 2).Frame();
}

std::string Encode(const Welcome& m) {
  return Writer(Type::Welcome).U(m.version, 2).S(m.confirm_func).S(m.report_func).Frame();
}

std::string EncodeRefuse(const std::string& why) { return Writer(Type::Refuse).S(why).Frame(); }

std::string Encode(const RequestMsg& m) {
  Writer w(Type::Request);
  w.U(m.id, 8).I(m.node_id, 4).U(m.req.is_block ? 1 : 0, 1).S(m.req.func).S(m.req.raw_func);
  PutFields(w, m.req.fields);
  return w.S(m.req.block).Frame();
}

std::string Encode(const AnswerMsg& m) {
  Writer w(Type::Answer);
  w.U(m.id, 8).I(m.ans.code, 4).S(m.ans.msg).U(m.ans.rows.size(), 4);
  for (const Row& row : m.ans.rows) PutFields(w, row);
  w.U(m.ans.blocks.size(), 4);
  for (const std::string& b : m.ans.blocks) w.S(b);
  return w.Frame();
}

std::string Encode(const Interest& m) {
  Writer w(Type::Interest);
  w.U(m.id, 8).U(m.khh.size(), 4);
  for (const std::string& k : m.khh) w.S(k);
  return w.Frame();
}

std::string Encode(const PushMsg& m) {
  Writer w(Type::Push);
  w.Reserve(m.khh.size() + m.plain.size() + m.structured.size() + 16);
  return w.S(m.khh).U(static_cast<std::uint8_t>(m.kind), 1).S(m.plain).S(m.structured).Frame();
}

std::string Encode(const ControlMsg& m) {
  Writer w(Type::Control);
  w.U(m.id, 8).U(static_cast<std::uint8_t>(m.op), 1).S(m.jys).S(m.zqdm).D(m.price).I(m.n, 8);
  PutQuote(w, m.quote);
  return w.Frame();
}

std::string Encode(const ControlAnswer& m) {
  Writer w(Type::ControlAnswer);
  w.U(m.id, 8).U(m.ok ? 1 : 0, 1).I(m.date, 8).I(m.ms, 8);
  PutQuote(w, m.quote);
  return w.Frame();
}

FrameSplitter::Status FrameSplitter::Next(std::string* body) {
  if (buf_.size() - at_ < kHeaderSize) {
    buf_.erase(0, at_);
    at_ = 0;
    return Status::Partial;
  }
  std::uint32_t n = 0;
  for (std::size_t i = 0; i < kHeaderSize; ++i)
    n |= std::uint32_t{static_cast<unsigned char>(buf_[at_ + i])} << (8 * i);
  if (n == 0 || n > kMaxFrame) return Status::Bad;
  if (buf_.size() - at_ - kHeaderSize < n) {
    buf_.erase(0, at_);
    at_ = 0;
    return Status::Partial;
  }
  body->assign(buf_, at_ + kHeaderSize, n);
  at_ += kHeaderSize + n;
  return Status::Frame;
}

bool PeekId(const std::string& body, Type* type, std::uint64_t* id) {
  if (!TypeOf(body, type) || (*type != Type::Answer && *type != Type::ControlAnswer) ||
      body.size() < 9)
    return false;
  *id = 0;
  for (int i = 0; i < 8; ++i)
    *id |= std::uint64_t{static_cast<unsigned char>(body[1 + i])} << (8 * i);
  return true;
}

bool TypeOf(const std::string& body, Type* type) {
  if (body.empty()) return false;
  auto t = static_cast<std::uint8_t>(body[0]);
  if (t < static_cast<std::uint8_t>(Type::Hello) ||
      t > static_cast<std::uint8_t>(Type::ControlAnswer))
    return false;
  *type = static_cast<Type>(t);
  return true;
}

bool Decode(const std::string& body, Hello* m) {
  Reader r(body, Type::Hello);
  char magic[sizeof kMagic];
  if (!r.Raw(magic, sizeof magic) || std::memcmp(magic, kMagic, sizeof magic) != 0) return r.Fail();
  m->version = static_cast<std::uint16_t>(r.U(2));
  return r.Done();
}

bool Decode(const std::string& body, Welcome* m) {
  Reader r(body, Type::Welcome);
  m->version = static_cast<std::uint16_t>(r.U(2));
  m->confirm_func = r.S();
  m->report_func = r.S();
  return r.Done();
}

bool DecodeRefuse(const std::string& body, std::string* why) {
  Reader r(body, Type::Refuse);
  *why = r.S();
  return r.Done();
}

bool Decode(const std::string& body, RequestMsg* m) {
  Reader r(body, Type::Request);
  m->id = r.U(8);
  m->node_id = r.I32();
  std::uint64_t is_block = r.U(1);
  if (is_block > 1) return r.Fail();
  m->req.is_block = is_block == 1;
  m->req.func = r.S();
  m->req.raw_func = r.S();
  m->req.fields = GetFields(r);
  m->req.block = r.S();
  return r.Done();
}

bool Decode(const std::string& body, AnswerMsg* m) {
  Reader r(body, Type::Answer);
  m->id = r.U(8);
  m->ans.code = r.I32();
  m->ans.msg = r.S();
  m->ans.rows.resize(r.Count(4));
  for (Row& row : m->ans.rows) row = GetFields(r);
  m->ans.blocks.resize(r.Count(4));
  for (std::string& b : m->ans.blocks) b = r.S();
  return r.Done();
}

bool Decode(const std::string& body, Interest* m) {
  Reader r(body, Type::Interest);
  m->id = r.U(8);
  m->khh.resize(r.Count(4));
  for (std::string& k : m->khh) k = r.S();
  return r.Done();
}

bool Decode(const std::string& body, PushMsg* m) {
  Reader r(body, Type::Push);
  m->khh = r.S();
  std::uint64_t kind = r.U(1);
  if (kind > 1) return r.Fail();
  m->kind = static_cast<int>(kind);
  m->plain = r.S();
  m->structured = r.S();
  return r.Done();
}

bool Decode(const std::string& body, ControlMsg* m) {
  Reader r(body, Type::Control);
  m->id = r.U(8);
  std::uint64_t op = r.U(1);
  if (op < 1 || op > static_cast<std::uint64_t>(ControlOp::Last)) return r.Fail();
  m->op = static_cast<ControlOp>(op);
  m->jys = r.S();
  m->zqdm = r.S();
  m->price = r.D();
  m->n = r.I(8);
  GetQuote(r, m->quote);
  return r.Done();
}

bool Decode(const std::string& body, ControlAnswer* m) {
  Reader r(body, Type::ControlAnswer);
  m->id = r.U(8);
  std::uint64_t ok = r.U(1);
  if (ok > 1) return r.Fail();
  m->ok = ok == 1;
  m->date = r.I(8);
  m->ms = r.I(8);
  GetQuote(r, m->quote);
  return r.Done();
}

bool SplitHostPort(const std::string& addr, std::string* host, std::uint16_t* port, bool any_port) {
  std::size_t colon = addr.rfind(':');
  if (colon == std::string::npos || colon == 0 || colon + 1 == addr.size() ||
      addr.size() - colon > 6)
    return false;
  unsigned long p = 0;
  for (std::size_t i = colon + 1; i < addr.size(); ++i) {
    if (addr[i] < '0' || addr[i] > '9') return false;
    p = p * 10 + static_cast<unsigned long>(addr[i] - '0');
  }
  if ((p < 1 && !any_port) || p > std::numeric_limits<std::uint16_t>::max()) return false;
  *host = addr.substr(0, colon);
  *port = static_cast<std::uint16_t>(p);
  return true;
}

}  // namespace sim::wire
