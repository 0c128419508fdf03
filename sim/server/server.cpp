#include "server.h"

#include <array>
#include <asio.hpp>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <deque>
#include <mutex>
#include <set>
#include <vector>

#include "backend.h"
#include "exchange.h"
#include "wire.h"

namespace sim {
namespace {

using asio::ip::tcp;
using SteadyClock = std::chrono::steady_clock;
constexpr std::size_t kReadChunk = 64 * 1024;
constexpr std::chrono::milliseconds kClockTick{10};

// The pushes the exchange gives while it is called; the server sends them afterwards (the
// exchange calls this with its lock held).
class PushQueue : public ExchangeListener {
 public:
  void OnPush(PendingPush&& push) override {
    std::lock_guard<std::mutex> lock(m_);
    pushes_.push_back(std::move(push));
  }
  bool WantsQuotes() const override { return false; }
  void OnQuote(const Quote&) override {}
  // Swaps the pushes given into `out` (emptied first): the two vectors keep their room, and
  // a record is some 2 KiB to move when one grows.
  void Take(std::vector<PendingPush>* out) {
    out->clear();
    std::lock_guard<std::mutex> lock(m_);
    pushes_.swap(*out);
  }

 private:
  std::mutex m_;
  std::vector<PendingPush> pushes_;
};

// The result of a control call on the exchange.
wire::ControlAnswer Execute(Exchange& ex, const wire::ControlMsg& m) {
  using Op = wire::ControlOp;
  wire::ControlAnswer a;
  a.id = m.id;
  a.ok = true;
  switch (m.op) {
    case Op::SetPrice:
      a.ok = ex.SetPrice(m.jys, m.zqdm, m.price);
      break;
    case Op::SetLiquidity:
      a.ok = ex.SetLiquidity(m.jys, m.zqdm, m.n);
      break;
    case Op::SetMatchVolume:
      ex.SetMatchVolume(m.n);
      break;
    case Op::SetTimeOffset:
      ex.SetTimeOffset(m.n);
      break;
    case Op::SetTradeDate:
      ex.SetTradeDate(m.n);
      break;
    case Op::GetQuote:
      a.ok = ex.GetQuote(m.jys, m.zqdm, &a.quote);
      break;
    case Op::SetQuote:
      a.ok = ex.SetQuote(m.quote);
      break;
    case Op::Advance:
      a.ok = ex.Advance(m.n);
      break;
    case Op::NewDay:
      ex.NewDay();
      break;
    case Op::Clock:
      ex.ClockTime(&a.date, &a.ms);
      break;
  }
  return a;
}

}  // namespace

class Server::Impl {
 public:
  class Peer;

  Impl(Exchange& ex, ServerOptions opt)
      : ex_(ex), opt_(std::move(opt)), acceptor_(io_), sweep_(io_), clock_(io_) {
    ex_.SetListener(&pushes_);
  }
  ~Impl() { ex_.SetListener(nullptr); }

  bool Listen(const std::string& host, std::uint16_t port, std::string* error);
  std::string address() const { return address_; }
  void StopOnSignals();
  void Run();
  void Stop() {
    asio::post(io_, [this] { StopNow(); });
  }

  // Called by the peers, on the server's thread.
  Exchange& exchange() { return ex_; }
  const ServerOptions& options() const { return opt_; }
  // Sends the pushes given so far once the reads already in are served: the pushes of
  // several reads then leave a connection in one write.
  void SchedulePushes() {
    if (pushes_posted_) return;
    pushes_posted_ = true;
    asio::post(io_, [this] {
      pushes_posted_ = false;
      SendPushes();
    });
  }
  void SendPushes();
  void Remove(const std::shared_ptr<Peer>& p) { peers_.erase(p); }

 private:
  void Accept();
  void Sweep();
  void Tick();
  void StopNow();

  Exchange& ex_;
  ServerOptions opt_;
  PushQueue pushes_;
  std::vector<PendingPush> taken_;  // the pushes SendPushes is sending
  asio::io_context io_;
  tcp::acceptor acceptor_;
  asio::steady_timer sweep_, clock_;
  std::unique_ptr<asio::signal_set> signals_;
  std::set<std::shared_ptr<Peer>> peers_;
  std::string address_;
  bool stopped_ = false;
  bool pushes_posted_ = false;
};

// One client connection.
class Server::Impl::Peer : public std::enable_shared_from_this<Peer> {
 public:
  Peer(Impl& server, tcp::socket sock)
      : server_(server), sock_(std::move(sock)), since_(SteadyClock::now()) {
    asio::error_code ec;
    sock_.set_option(tcp::no_delay(true), ec);
    auto ep = sock_.remote_endpoint(ec);
    name_ =
        ec ? std::string("a client") : ep.address().to_string() + ":" + std::to_string(ep.port());
  }

  void Start() { Read(); }

  void Send(std::string frame) {
    if (closed_) return;
    queued_bytes_ += frame.size();
    if (queued_bytes_ > server_.options().max_output) return Close("does not take its output");
    queue_.push_back(std::move(frame));
    if (writing_.empty() && !holding_) Write();
  }

  // Whether a push for the customer goes to this connection.
  bool Wants(const std::string& khh) const {
    return welcomed_ && (interest_.count("") > 0 || interest_.count(khh) > 0);
  }

  // A hello, a frame or a write that has been waiting longer than the stall limit.
  bool Stalled(SteadyClock::time_point now) const {
    auto limit = std::chrono::milliseconds(server_.options().stall_ms);
    bool reading = !welcomed_ || in_.holding();
    return (reading && now - since_ > limit) || (!writing_.empty() && now - write_since_ > limit);
  }

  void Close(const char* why) {
    if (closed_) return;
    closed_ = true;
    if (why != nullptr) std::fprintf(stderr, "molra-simd: closed %s: %s\n", name_.c_str(), why);
    asio::error_code ec;
    sock_.shutdown(tcp::socket::shutdown_both, ec);
    sock_.close(ec);
    server_.Remove(shared_from_this());
  }

 private:
  void Read() {
    auto self = shared_from_this();
    sock_.async_read_some(asio::buffer(chunk_),
                          [this, self](const asio::error_code& ec, std::size_t n) {
                            if (ec) return Close(nullptr);
                            bool was_holding = in_.holding();
                            in_.Add(chunk_.data(), n);
                            bool served = false;
                            // The requests of one read are saved together; their answers leave
                            // after that.
                            server_.exchange().BeginBatch();
                            holding_ = true;
                            bool open = Parse(&served);
                            holding_ = false;
                            server_.exchange().EndBatch();
                            server_.SchedulePushes();
                            if (!open) return;
                            if (writing_.empty() && !queue_.empty()) Write();
                            // A frame that is not complete must be within the stall limit from its
                            // first byte.
                            if (!was_holding || served) since_ = SteadyClock::now();
                            Read();
                          });
  }

  // Handles every complete frame of the input; false when the connection was closed.
  bool Parse(bool* served) {
    std::string body;
    for (;;) {
      switch (in_.Next(&body)) {
        case wire::FrameSplitter::Status::Partial:
          return !closed_;
        case wire::FrameSplitter::Status::Bad:
          Close("empty or oversized frame");
          return false;
        case wire::FrameSplitter::Status::Frame:
          *served = true;
          if (const char* why = Handle(body)) {
            Close(why);
            return false;
          }
          if (closed_) return false;
      }
    }
  }

  // Null when the frame was served, else why the connection must close.
  const char* Handle(const std::string& body) {
    wire::Type type;
    if (!wire::TypeOf(body, &type)) return "unknown frame type";
    if (!welcomed_) return type == wire::Type::Hello ? Greet(body) : "no hello first";
    switch (type) {
      case wire::Type::Request: {
        wire::RequestMsg m;
        if (!wire::Decode(body, &m)) return "malformed request";
        wire::AnswerMsg a;
        a.id = m.id;
        server_.exchange().Handle(m.req, Caller{m.node_id}, &a.ans);
        std::string frame = wire::Encode(a);
        if (frame.size() - wire::kHeaderSize > wire::kMaxFrame) {
          a.ans = Answer();
          a.ans.Fail(-1, "the answer is larger than a frame may be");
          frame = wire::Encode(a);
        }
        Send(std::move(frame));
        return nullptr;
      }
      case wire::Type::Interest: {
        wire::Interest m;
        if (!wire::Decode(body, &m)) return "malformed interest";
        interest_ = std::set<std::string>(m.khh.begin(), m.khh.end());
        wire::AnswerMsg ack;
        ack.id = m.id;
        Send(wire::Encode(ack));
        return nullptr;
      }
      case wire::Type::Control: {
        wire::ControlMsg m;
        if (!wire::Decode(body, &m)) return "malformed control";
        Send(wire::Encode(Execute(server_.exchange(), m)));
        return nullptr;
      }
      default:
        return "unexpected frame type";
    }
  }

  const char* Greet(const std::string& body) {
    wire::Hello h;
    if (!wire::Decode(body, &h)) return "malformed hello";
    if (h.version != wire::kVersion) {
      Send(wire::EncodeRefuse("protocol version " + std::to_string(h.version) +
                              " is not served (this server speaks " +
                              std::to_string(wire::kVersion) + ")"));
      close_after_write_ = true;
      return nullptr;
    }
    welcomed_ = true;
    Send(wire::Encode(wire::Welcome{wire::kVersion, server_.options().confirm_func,
                                    server_.options().report_func}));
    return nullptr;
  }

  void Write() {
    writing_.swap(queue_);
    std::vector<asio::const_buffer> bufs;
    bufs.reserve(writing_.size());
    for (const std::string& f : writing_) bufs.push_back(asio::buffer(f));
    write_since_ = SteadyClock::now();
    auto self = shared_from_this();
    asio::async_write(sock_, bufs, [this, self](const asio::error_code& ec, std::size_t n) {
      queued_bytes_ -= n;
      writing_.clear();
      if (ec) return Close(nullptr);
      if (!queue_.empty()) return Write();
      if (close_after_write_) Close(nullptr);
    });
  }

  Impl& server_;
  tcp::socket sock_;
  std::string name_;
  std::array<char, kReadChunk> chunk_;
  wire::FrameSplitter in_;
  SteadyClock::time_point since_, write_since_;
  std::vector<std::string> queue_, writing_;
  std::size_t queued_bytes_ = 0;
  std::set<std::string> interest_;
  bool welcomed_ = false;
  bool holding_ = false;  // answers wait for the batch to be saved
  bool close_after_write_ = false;
  bool closed_ = false;
};

bool Server::Impl::Listen(const std::string& host, std::uint16_t port, std::string* error) {
  asio::error_code ec;
  tcp::resolver resolver(io_);
  auto found = resolver.resolve(host, std::to_string(port),
                                tcp::resolver::passive | tcp::resolver::numeric_service, ec);
  if (ec || found.empty()) {
    *error = "cannot resolve " + host + ": " + ec.message();
    return false;
  }
  tcp::endpoint ep = found.begin()->endpoint();
  acceptor_.open(ep.protocol(), ec);
#if !defined(_WIN32)
  // A restarted server takes its port back at once (Windows would let two servers share it).
  if (!ec) acceptor_.set_option(tcp::acceptor::reuse_address(true), ec);
#endif
  if (!ec) acceptor_.bind(ep, ec);
  if (!ec) acceptor_.listen(asio::socket_base::max_listen_connections, ec);
  if (ec) {
    *error = "cannot listen on " + host + ":" + std::to_string(port) + ": " + ec.message();
    acceptor_.close(ec);
    return false;
  }
  tcp::endpoint bound = acceptor_.local_endpoint(ec);
  address_ = bound.address().to_string() + ":" + std::to_string(bound.port());
  return true;
}

void Server::Impl::StopOnSignals() {
  signals_ = std::make_unique<asio::signal_set>(io_, SIGINT, SIGTERM);
  signals_->async_wait([this](const asio::error_code& ec, int) {
    if (!ec) StopNow();
  });
}

void Server::Impl::Run() {
  Accept();
  Sweep();
  Tick();
  io_.run();
}

void Server::Impl::Accept() {
  acceptor_.async_accept([this](const asio::error_code& ec, tcp::socket sock) {
    if (stopped_) return;
    if (!ec) {
      auto p = std::make_shared<Peer>(*this, std::move(sock));
      peers_.insert(p);
      p->Start();
    }
    Accept();
  });
}

// Closes the connections that stall; every quarter of the stall limit.
void Server::Impl::Sweep() {
  if (stopped_) return;
  std::vector<std::shared_ptr<Peer>> stalled;
  auto now = SteadyClock::now();
  for (const auto& p : peers_)
    if (p->Stalled(now)) stalled.push_back(p);
  for (const auto& p : stalled) p->Close("stalled");
  sweep_.expires_after(std::chrono::milliseconds(std::max<std::int64_t>(10, opt_.stall_ms / 4)));
  sweep_.async_wait([this](const asio::error_code& ec) {
    if (!ec) Sweep();
  });
}

// Runs a clock that moves the market by itself.
void Server::Impl::Tick() {
  if (stopped_) return;
  if (ex_.ClockNeedsRunning()) {
    ex_.RunClock();
    SendPushes();
  }
  clock_.expires_after(kClockTick);
  clock_.async_wait([this](const asio::error_code& ec) {
    if (!ec) Tick();
  });
}

void Server::Impl::SendPushes() {
  std::vector<PendingPush>& pushes = taken_;
  pushes_.Take(&pushes);
  if (pushes.empty()) return;
  // A peer that cannot take more output closes, leaving the set: go through a copy.
  std::vector<std::shared_ptr<Peer>> peers(peers_.begin(), peers_.end());
  std::vector<Peer*> wanting;
  for (const PendingPush& p : pushes) {
    wanting.clear();
    for (const auto& peer : peers)
      if (peer->Wants(p.khh)) wanting.push_back(peer.get());
    if (wanting.empty()) continue;
    std::string frame = wire::Encode(wire::PushMsg{p.khh, p.kind, EncodePushRecord(p.values, false),
                                                   EncodePushRecord(p.values, true)});
    // Copies for all but the last, which takes the frame itself.
    for (std::size_t i = 0; i + 1 < wanting.size(); ++i) wanting[i]->Send(frame);
    wanting.back()->Send(std::move(frame));
  }
}

void Server::Impl::StopNow() {
  if (stopped_) return;
  stopped_ = true;
  asio::error_code ec;
  acceptor_.close(ec);
  sweep_.cancel();
  clock_.cancel();
  if (signals_) signals_->cancel(ec);
  std::vector<std::shared_ptr<Peer>> all(peers_.begin(), peers_.end());
  for (const auto& p : all) p->Close(nullptr);
}

Server::Server(Exchange& exchange, ServerOptions options)
    : impl_(std::make_unique<Impl>(exchange, std::move(options))) {}
Server::~Server() = default;
bool Server::Listen(const std::string& host, std::uint16_t port, std::string* error) {
  return impl_->Listen(host, port, error);
}
std::string Server::address() const { return impl_->address(); }
void Server::StopOnSignals() { impl_->StopOnSignals(); }
void Server::Run() { impl_->Run(); }
void Server::Stop() { impl_->Stop(); }

}  // namespace sim
