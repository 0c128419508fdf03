#include "remote.h"

#include <algorithm>
#include <asio.hpp>
#if !defined(_WIN32)
#include <poll.h>
#include <sys/socket.h>

#include <cerrno>
#endif
#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <thread>
#include <vector>

#include "push.h"
#include "sim_core.h"

namespace sim::remote {
namespace {

using asio::ip::tcp;
using Ms = std::chrono::milliseconds;
constexpr std::size_t kReadChunk = 64 * 1024;
constexpr std::int32_t kCallSeconds = 30;
constexpr std::int32_t kConnectSeconds = 10;
constexpr auto kCloseGrace = std::chrono::seconds(2);

std::atomic<std::int32_t> g_first_ms{100};
std::atomic<std::int32_t> g_max_ms{2000};

// What waits for the frame of a number: it gets the body, or null when the frame was lost.
using Done = std::function<void(std::string* body)>;

// The network thread: it runs while an Open has started it, until Shutdown.
class Net {
 public:
  asio::io_context& io() { return io_; }
  void Start() {
    std::lock_guard<std::mutex> lock(m_);
    if (thread_.joinable()) return;
    io_.restart();
    guard_.emplace(io_.get_executor());
    thread_ = std::thread([this] { io_.run(); });
  }
  // Ends the thread once the work under way is done.
  void Stop() {
    std::thread t;
    {
      std::lock_guard<std::mutex> lock(m_);
      guard_.reset();
      t = std::move(thread_);
    }
    if (t.joinable()) t.join();
  }

 private:
  std::mutex m_;
  asio::io_context io_;
  std::optional<asio::executor_work_guard<asio::io_context::executor_type>> guard_;
  std::thread thread_;
};

Net& net() {
  static Net* n = new Net;  // lives until the process ends, like the transport's other threads
  return *n;
}

// The customers whose pushes a connection's subscriptions want ("" for every customer).
std::vector<std::string> InterestOf(std::int64_t conn) {
  std::set<std::string> khh;
  std::lock_guard<std::mutex> lock(core().mutex);
  for (const auto& [id, s] : core().subs)
    if (s.conn == conn) khh.insert(s.khh);
  return {khh.begin(), khh.end()};
}

bool AutoReconnect(std::int64_t conn) {
  std::lock_guard<std::mutex> lock(core().mutex);
  const Connection* k = core().FindConnLocked(conn);
  return k != nullptr && k->auto_reconnect;
}

// The connection's state in the core; `event` >= 0 goes to its handler.
void SetCoreUp(std::int64_t conn, bool up, std::int32_t event) {
  {
    std::lock_guard<std::mutex> lock(core().mutex);
    Connection* k = core().FindConnLocked(conn);
    if (k == nullptr) return;
    k->up = up;
    k->last_recv_ms = NowMs();
  }
  if (event >= 0) PostConnEvent(conn, event);
}

// Writes all of `data` on a socket that may be non-blocking, within `seconds`; false when the
// connection broke or the time ran out. Callers write from their own threads (a request goes
// out without waking the network thread, which only reads).
bool SendAll(tcp::socket::native_handle_type fd, const std::string& data, int seconds) {
  auto until = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
  for (std::size_t at = 0; at < data.size();) {
#if defined(_WIN32)
    int n = ::send(fd, data.data() + at, static_cast<int>(data.size() - at), 0);
    bool again = n == SOCKET_ERROR && WSAGetLastError() == WSAEWOULDBLOCK;
#else
    ssize_t n = ::send(fd, data.data() + at, data.size() - at, MSG_NOSIGNAL);
    bool again = n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR);
#endif
    if (n > 0) {
      at += static_cast<std::size_t>(n);
      continue;
    }
    if (!again || std::chrono::steady_clock::now() > until) return false;
#if defined(_WIN32)
    WSAPOLLFD p{fd, POLLWRNORM, 0};
    WSAPoll(&p, 1, 100);
#else
    pollfd p{fd, POLLOUT, 0};
    poll(&p, 1, 100);
#endif
  }
  return true;
}

// One transport connection's TCP connection to the server. Members marked "net" are used on
// the network thread only; the others are guarded by m_, or by write_m_ where they say so.
class Link : public std::enable_shared_from_this<Link> {
 public:
  Link(std::int64_t conn, std::string host, std::uint16_t port)
      : conn_(conn),
        host_(std::move(host)),
        port_(port),
        sock_(net().io()),
        timer_(net().io()),
        backoff_(g_first_ms.load()) {}

  // ---- caller threads ----

  std::uint64_t NextId() { return next_id_++; }

  // Sends a frame whose answer goes to `done`; false when the connection is not up or the
  // frame could not be sent (done is then never called).
  bool Submit(const std::string& frame, std::uint64_t id, Done done) {
    std::lock_guard<std::mutex> w(write_m_);
    {
      std::lock_guard<std::mutex> lock(m_);
      if (!up_) return false;
      pending_[id] = std::move(done);
    }
    if (SendAll(sock_.native_handle(), frame, kCallSeconds)) return true;
    // The connection broke under the send: it is dropped, failing what waits on it.
    asio::post(net().io(), [self = shared_from_this(), gen = write_gen_] {
      if (gen == self->write_gen_) self->Drop("broken");
    });
    return !Forget(id);  // when a drop took it first, its done has the outcome
  }

  // A caller that stopped waiting; whether it was still waiting.
  bool Forget(std::uint64_t id) {
    std::lock_guard<std::mutex> lock(m_);
    return pending_.erase(id) > 0;
  }

  // Waits for the first connection's outcome.
  bool WaitOpen(std::string* why) {
    std::unique_lock<std::mutex> lock(m_);
    open_cv_.wait(lock, [this] { return open_result_.has_value(); });
    *why = open_why_;
    return *open_result_;
  }

  void Hold(bool held) {
    {
      std::lock_guard<std::mutex> lock(m_);
      held_ = held;
    }
    asio::post(net().io(),
               [self = shared_from_this(), held] { held ? self->BreakNow() : self->RestoreNow(); });
  }

  void Close() {
    {
      std::lock_guard<std::mutex> lock(m_);
      closing_ = true;
    }
    asio::post(net().io(), [self = shared_from_this()] { self->CloseNow(); });
  }

  // ---- net ----

  void Connect(std::int32_t timeout_s, bool first) {
    first_ = first;
    state_ = State::Connecting;
    ++gen_;
    asio::error_code ec;
    {
      std::lock_guard<std::mutex> w(write_m_);
      sock_ = tcp::socket(net().io());
    }
    in_ = wire::FrameSplitter();
    tcp::resolver resolver(net().io());
    auto found = resolver.resolve(host_, std::to_string(port_), tcp::resolver::numeric_service, ec);
    if (ec || found.empty()) return Drop("failed: cannot resolve " + host_);
    timer_.expires_after(std::chrono::seconds(timeout_s > 0 ? timeout_s : kConnectSeconds));
    timer_.async_wait([self = shared_from_this(), gen = gen_](const asio::error_code& e) {
      if (!e && gen == self->gen_) self->Drop("timed out");
    });
    asio::async_connect(
        sock_, found,
        [self = shared_from_this(), gen = gen_](const asio::error_code& e, const tcp::endpoint&) {
          if (gen != self->gen_) return;
          if (e) return self->Drop("refused");
          self->Handshake();
        });
  }

 private:
  enum class State { Connecting, Handshake, Up, Down, Closed };

  // Hello and the pushes wanted go out together; the connection is up once the server has
  // acknowledged the second, so that no push of a customer is missed after event 0.
  void Handshake() {
    state_ = State::Handshake;
    asio::error_code ec;
    sock_.set_option(tcp::no_delay(true), ec);
    handshake_id_ = NextId();
    bool sent;
    {
      std::lock_guard<std::mutex> w(write_m_);
      sent = SendAll(sock_.native_handle(),
                     wire::Encode(wire::Hello{}) +
                         wire::Encode(wire::Interest{handshake_id_, InterestOf(conn_)}),
                     kConnectSeconds);
    }
    if (!sent) return Drop("refused");
    Read();
  }

  void Read() {
    sock_.async_read_some(asio::buffer(chunk_), [self = shared_from_this(), gen = gen_](
                                                    const asio::error_code& e, std::size_t n) {
      if (gen != self->gen_) return;
      if (e) return self->Drop("closed by the server");
      self->in_.Add(self->chunk_.data(), n);
      DeliveryBatch batch;  // the replies and pushes of this read go to their threads together
      std::string body;
      for (;;) {
        auto st = self->in_.Next(&body);
        if (st == wire::FrameSplitter::Status::Partial) break;
        if (st == wire::FrameSplitter::Status::Bad) return self->Drop("sent an oversized frame");
        self->Handle(body);
        if (gen != self->gen_ || self->state_ == State::Closed) return;
      }
      self->Read();
    });
  }

  void Handle(std::string& body) {
    wire::Type type;
    std::uint64_t id = 0;
    if (wire::PeekId(body, &type, &id)) {
      if (state_ == State::Handshake && id == handshake_id_ && type == wire::Type::Answer)
        return Established();
      return Answered(id, body);
    }
    if (!wire::TypeOf(body, &type)) return Drop("sent a malformed frame");
    if (type == wire::Type::Push && state_ == State::Up) {
      wire::PushMsg p;
      if (!wire::Decode(body, &p)) return Drop("sent a malformed push");
      return QueueServerPush(conn_, p.khh, p.kind, std::move(p.plain), std::move(p.structured));
    }
    if (type == wire::Type::Welcome && state_ == State::Handshake) {
      wire::Welcome w;
      if (!wire::Decode(body, &w) || w.version != wire::kVersion)
        return Drop("refused: the server speaks another protocol");
      confirm_func_ = w.confirm_func;
      report_func_ = w.report_func;
      return;
    }
    std::string why;
    if (type == wire::Type::Refuse && wire::DecodeRefuse(body, &why))
      return Drop("refused: " + why);
    Drop("sent an unexpected frame");
  }

  void Answered(std::uint64_t id, std::string& body) {
    Done done;
    bool drained;
    {
      std::lock_guard<std::mutex> lock(m_);
      auto it = pending_.find(id);
      if (it != pending_.end()) {
        done = std::move(it->second);
        pending_.erase(it);
      }
      drained = closing_ && pending_.empty();
    }
    if (done) done(&body);
    if (drained) Finish();
  }

  void Established() {
    timer_.cancel();
    backoff_ = Ms(g_first_ms.load());
    bool held;
    {
      std::lock_guard<std::mutex> lock(m_);
      held = held_ || closing_;
      up_ = !held;
    }
    if (held) return Drop("held");
    state_ = State::Up;
    if (!first_) return SetCoreUp(conn_, true, 0);
    first_ = false;
    {
      std::lock_guard<std::mutex> lock(core().mutex);
      if (Connection* k = core().FindConnLocked(conn_)) {
        k->up = true;
        k->confirm_func = confirm_func_;
        k->report_func = report_func_;
      }
    }
    Opened(true, std::string());
  }

  void Opened(bool ok, std::string why) {
    std::lock_guard<std::mutex> lock(m_);
    open_result_ = ok;
    open_why_ = std::move(why);
    open_cv_.notify_all();
  }

  // Closes the socket; the requests waiting for answers fail.
  void CloseSocket() {
    ++gen_;
    asio::error_code ec;
    timer_.cancel();
    sock_.shutdown(tcp::socket::shutdown_both, ec);  // a send under way fails at once
    {
      std::lock_guard<std::mutex> w(write_m_);
      sock_.close(ec);
      ++write_gen_;
    }
    std::map<std::uint64_t, Done> lost;
    {
      std::lock_guard<std::mutex> lock(m_);
      up_ = false;
      lost.swap(pending_);
    }
    for (auto& [id, done] : lost) done(nullptr);
  }

  // The connection failed or dropped: `why` completes "connect to <addr> ...".
  void Drop(const std::string& why) {
    State was = state_;
    if (was == State::Closed) return;
    CloseSocket();
    if (was == State::Up) {
      bool quiet;
      {
        std::lock_guard<std::mutex> lock(m_);
        quiet = held_ || closing_;  // the break was asked for: its event is given by the asker
      }
      if (!quiet) SetCoreUp(conn_, false, kDropEvent);
    }
    if (first_ && (was == State::Connecting || was == State::Handshake)) {
      state_ = State::Closed;
      return Opened(false, why);
    }
    state_ = State::Down;
    Retry();
  }

  void Retry() {
    {
      std::lock_guard<std::mutex> lock(m_);
      if (held_ || closing_) return;
    }
    if (!AutoReconnect(conn_)) return;
    timer_.expires_after(backoff_);
    backoff_ = std::min(backoff_ * 2, Ms(std::max(g_first_ms.load(), g_max_ms.load())));
    timer_.async_wait([self = shared_from_this(), gen = gen_](const asio::error_code& e) {
      if (!e && gen == self->gen_ && self->state_ == State::Down)
        self->Connect(kConnectSeconds, false);
    });
  }

  void BreakNow() {
    if (state_ == State::Closed || state_ == State::Down) return;
    CloseSocket();
    state_ = State::Down;
  }

  void RestoreNow() {
    if (state_ == State::Down) Connect(kConnectSeconds, false);
  }

  void CloseNow() {
    bool drained;
    {
      std::lock_guard<std::mutex> lock(m_);
      drained = pending_.empty();
    }
    if (drained || state_ != State::Up) return Finish();
    timer_.expires_after(kCloseGrace);
    timer_.async_wait([self = shared_from_this()](const asio::error_code& e) {
      if (!e) self->Finish();
    });
  }

  void Finish() {
    if (state_ == State::Closed) return;
    CloseSocket();
    state_ = State::Closed;
  }

  const std::int64_t conn_;
  const std::string host_;
  const std::uint16_t port_;
  std::atomic<std::uint64_t> next_id_{1};

  std::mutex m_;
  bool up_ = false;
  bool held_ = false;
  bool closing_ = false;
  std::map<std::uint64_t, Done> pending_;
  std::condition_variable open_cv_;
  std::optional<bool> open_result_;
  std::string open_why_;

  // The socket is replaced and closed by the network thread, and written by callers, under
  // write_m_; write_gen_ counts the sockets closed.
  std::mutex write_m_;
  std::uint64_t write_gen_ = 0;

  // net
  tcp::socket sock_;
  asio::steady_timer timer_;
  State state_ = State::Connecting;
  std::uint64_t gen_ = 0;
  bool first_ = true;
  Ms backoff_;
  std::uint64_t handshake_id_ = 0;
  std::string confirm_func_, report_func_;
  wire::FrameSplitter in_;
  std::array<char, kReadChunk> chunk_{};
};

std::mutex g_links_mutex;
std::map<std::int64_t, std::shared_ptr<Link>>& links() {
  static auto* m = new std::map<std::int64_t, std::shared_ptr<Link>>;
  return *m;
}

std::shared_ptr<Link> FindLink(std::int64_t conn) {
  std::lock_guard<std::mutex> lock(g_links_mutex);
  auto it = links().find(conn);
  return it == links().end() ? nullptr : it->second;
}

// Sends the frame built for a fresh number and waits for the body of its answer.
template <typename Build>
bool RoundTrip(std::int64_t conn, Build build, std::int32_t timeout_s, std::string* body) {
  std::shared_ptr<Link> link = FindLink(conn);
  if (!link) return false;
  struct Waiter {
    std::mutex m;
    std::condition_variable cv;
    std::atomic<bool> done{false};
    bool ok = false;
    std::string body;
  };
  auto w = std::make_shared<Waiter>();
  std::uint64_t id = link->NextId();
  std::string frame = build(id);
  if (frame.size() - wire::kHeaderSize > wire::kMaxFrame) return false;
  bool sent = link->Submit(frame, id, [w](std::string* b) {
    std::lock_guard<std::mutex> lock(w->m);
    if (b != nullptr) {
      w->ok = true;
      w->body = std::move(*b);
    }
    w->done = true;
    w->cv.notify_one();
  });
  if (!sent) return false;
  std::unique_lock<std::mutex> lock(w->m);
  if (!w->cv.wait_for(lock, std::chrono::seconds(timeout_s > 0 ? timeout_s : kCallSeconds),
                      [&] { return w->done.load(); })) {
    lock.unlock();
    link->Forget(id);
    return false;
  }
  *body = std::move(w->body);
  return w->ok;
}

}  // namespace

bool IsServerAddress(const std::string& addr) {
  std::string host;
  std::uint16_t port = 0;
  if (!wire::SplitHostPort(addr, &host, &port)) return false;
  std::lock_guard<std::mutex> lock(core().mutex);
  const auto& builtin = core().addresses;
  return std::find(builtin.begin(), builtin.end(), addr) == builtin.end();
}

bool Open(std::int64_t conn, const std::string& addr, std::int32_t timeout_s, std::string* error) {
  std::string host;
  std::uint16_t port = 0;
  wire::SplitHostPort(addr, &host, &port);
  auto link = std::make_shared<Link>(conn, host, port);
  {
    std::lock_guard<std::mutex> lock(g_links_mutex);
    links()[conn] = link;
  }
  net().Start();
  asio::post(net().io(), [link, timeout_s] { link->Connect(timeout_s, true); });
  std::string why;
  if (link->WaitOpen(&why)) return true;
  {
    std::lock_guard<std::mutex> lock(g_links_mutex);
    links().erase(conn);
  }
  *error = "connect to " + addr + " " + why;
  return false;
}

void Close(std::int64_t conn) {
  std::shared_ptr<Link> link;
  {
    std::lock_guard<std::mutex> lock(g_links_mutex);
    auto it = links().find(conn);
    if (it == links().end()) return;
    link = std::move(it->second);
    links().erase(it);
  }
  link->Close();
}

void Break(std::int64_t conn) {
  if (auto link = FindLink(conn)) link->Hold(true);
}

void Restore(std::int64_t conn) {
  if (auto link = FindLink(conn)) link->Hold(false);
}

bool Call(std::int64_t conn, const Request& req, std::int32_t node_id, std::int32_t timeout_s,
          Answer* ans) {
  std::string body;
  auto build = [&](std::uint64_t id) { return wire::Encode(wire::RequestMsg{id, node_id, req}); };
  wire::AnswerMsg a;
  if (!RoundTrip(conn, build, timeout_s, &body) || !wire::Decode(body, &a)) return false;
  *ans = std::move(a.ans);
  return true;
}

bool Send(std::int64_t conn, const Request& req, std::int32_t node_id,
          std::function<void(bool, Answer)> done) {
  std::shared_ptr<Link> link = FindLink(conn);
  if (!link) return false;
  std::uint64_t id = link->NextId();
  std::string frame = wire::Encode(wire::RequestMsg{id, node_id, req});
  if (frame.size() - wire::kHeaderSize > wire::kMaxFrame) return false;
  return link->Submit(frame, id, [done = std::move(done)](std::string* body) {
    wire::AnswerMsg a;
    if (body != nullptr && wire::Decode(*body, &a)) return done(true, std::move(a.ans));
    Answer lost;
    lost.Fail(-1,
              "the connection to the simulated back end's server was lost before the answer came");
    done(false, std::move(lost));
  });
}

bool UpdateInterest(std::int64_t conn) {
  std::string body;
  auto build = [&](std::uint64_t id) { return wire::Encode(wire::Interest{id, InterestOf(conn)}); };
  return RoundTrip(conn, build, kConnectSeconds, &body);
}

bool Control(const wire::ControlMsg& msg, wire::ControlAnswer* answer) {
  std::int64_t conn = 0;
  {
    std::lock_guard<std::mutex> lock(core().mutex);
    for (const auto& [id, k] : core().conns) {
      if (k.remote) {
        conn = id;
        break;
      }
    }
  }
  if (conn == 0) return false;
  std::string body;
  auto build = [&](std::uint64_t id) {
    wire::ControlMsg m = msg;
    m.id = id;
    return wire::Encode(m);
  };
  *answer = wire::ControlAnswer();
  if (!RoundTrip(conn, build, kCallSeconds, &body) || !wire::Decode(body, answer))
    answer->ok = false;
  return true;
}

void SetReconnectDelay(std::int32_t first_ms, std::int32_t max_ms) {
  g_first_ms = std::max(1, first_ms);
  g_max_ms = std::max(g_first_ms.load(), max_ms);
}

void Shutdown() {
  std::map<std::int64_t, std::shared_ptr<Link>> all;
  {
    std::lock_guard<std::mutex> lock(g_links_mutex);
    all.swap(links());
  }
  for (auto& [conn, link] : all) link->Close();
  net().Stop();
}

}  // namespace sim::remote
