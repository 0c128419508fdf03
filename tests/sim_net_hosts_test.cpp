// Trading programs in processes of their own (tests/sim_net_host: the kit driven through its
// C interface, its molra.ini pointing at the server) sharing one molra-simd on a loopback port
// (Linux): one host's orders are in the other's queries and the pushes reach both; a server
// killed mid-traffic and started again is a break and a recovery for both hosts' callbacks,
// with nothing it had answered lost and trading going on; a client sending garbage changes
// nothing for them; and four hosts of 2,000 asynchronous orders each get every reply and push
// exactly once.
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "support/child_process.h"
#include "support/test_support.h"

using namespace molra::test;

namespace {

// The numbers of a host's "stats" line: replies, their extra copies, failed replies, pushes,
// their extra copies, and the connection events in order.
struct Stats {
  long replies = -1, dup_replies = -1, failed = -1, pushes = -1, dup_pushes = -1;
  std::vector<int> events;
};

Stats Parse(const std::string& line) {
  Stats s;
  std::istringstream in(line);
  std::string word, events;
  in >> word >> s.replies >> word >> s.dup_replies >> word >> s.failed >> word >> s.pushes >>
      word >> s.dup_pushes >> word >> events;
  std::istringstream ev(events);
  for (std::string e; std::getline(ev, e, ',');)
    if (e != "-") s.events.push_back(std::stoi(e));
  return s;
}

// The numbers after the first word of a line ("orders 3 7 8 9": 3, 7, 8, 9).
std::vector<long long> Numbers(const std::string& line) {
  std::istringstream in(line);
  std::string word;
  in >> word;
  std::vector<long long> out;
  for (long long n; in >> n;) out.push_back(n);
  return out;
}

class SimNetHosts : public ::testing::Test {
 protected:
  void SetUp() override { dir_ = MakeTempDir(); }

  // molra-simd on `listen` with more arguments; its address from its first line. A port given
  // again is tried a few times: a client's reconnection attempt can meet itself on a free
  // loopback port and hold it for a moment.
  std::unique_ptr<ChildProcess> StartServer(const std::string& listen,
                                            std::vector<std::string> args = {}) {
    args.insert(args.begin(), {BuildDir() + "/molra-simd", "--listen", listen});
    for (int attempt = 1;; ++attempt) {
      auto server = std::make_unique<ChildProcess>(args);
      std::string line = server->Line("listening on ", 30);
      if (line.empty() && attempt < 5 && listen.substr(listen.rfind(':')) != ":0") {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        continue;
      }
      EXPECT_FALSE(line.empty()) << server->output();
      address_ = line.empty() ? std::string() : line.substr(13);
      return server;
    }
  }
  std::uint16_t port() const {
    return static_cast<std::uint16_t>(std::stoi(address_.substr(address_.rfind(':') + 1)));
  }

  // A host whose connection key "S" has its four connections to the server, logged in as khh;
  // its kit logs into log_dir when one is given.
  std::unique_ptr<ChildProcess> StartHost(const std::string& khh,
                                          const std::string& log_dir = std::string()) {
    std::string profile = MakeTempDir();
    WriteFile(profile + "/molra.ini", "[GLOBAL]\n[S]\nName=S\nSystemType=4\naddr=" + address_ +
                                          "\ntradeaddr=" + address_ + "\nqueryaddr=" + address_ +
                                          "\nsubscribeaddr=" + address_ + "\n");
    std::vector<std::string> args = {BuildDir() + "/tests/sim_net_host", profile + "/"};
    if (!log_dir.empty()) args.insert(args.end(), {"--log", log_dir});
    auto host = std::make_unique<ChildProcess>(args);
    EXPECT_EQ(host->Line("ready", 30), "ready") << host->output();
    std::string login = host->Ask("login S " + khh + " 111111", "login");
    EXPECT_TRUE(login.rfind("login failed", 0) != 0 && !login.empty()) << login;
    return host;
  }

  static long long Wth(ChildProcess& host, const std::string& order) {
    std::string line = host.Ask(order, "");
    EXPECT_EQ(line.rfind("wth ", 0), 0u) << order << ": " << line;
    return line.rfind("wth ", 0) == 0 ? std::stoll(line.substr(4)) : -1;
  }

  std::string dir_;
  std::string address_;
};

// Bytes that are not the protocol, sent to the server on a connection of their own.
void SendGarbage(std::uint16_t port) {
  int fd = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in a{};
  a.sin_family = AF_INET;
  a.sin_port = htons(port);
  a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  timeval bound{30, 0};  // the answer is the close; a server that keeps it open fails the test
  setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &bound, sizeof bound);
  bool connected = connect(fd, reinterpret_cast<sockaddr*>(&a), sizeof a) == 0;
  EXPECT_TRUE(connected);
  if (connected) {
    const char junk[] = "GET / HTTP/1.1\r\nHost: molra\r\n\r\n";
    ssize_t sent = send(fd, junk, sizeof junk - 1, MSG_NOSIGNAL);
    EXPECT_GT(sent, 0);
    char buf[64];
    ssize_t got = recv(fd, buf, sizeof buf, 0);
    EXPECT_TRUE(got == 0 || (got < 0 && errno == ECONNRESET))
        << "not closed by the server: " << got;
  }
  close(fd);
}

TEST_F(SimNetHosts, TwoHostsShareOneExchange) {
  auto server = StartServer("127.0.0.1:0");
  auto a = StartHost("1001"), b = StartHost("1001");

  long long resting = Wth(*a, "buy 600000 100 9.00");
  std::vector<long long> orders = Numbers(b->Ask("orders", "orders"));
  EXPECT_EQ(orders, (std::vector<long long>{1, resting}));
  // Its confirmation reached both; then b's order matches, and both see that too.
  EXPECT_EQ(Parse(a->Ask("wait pushes 1", "replies")).pushes, 1);
  EXPECT_EQ(Parse(b->Ask("wait pushes 1", "replies")).pushes, 1);
  Wth(*b, "buy 600000 100 10.00");
  for (ChildProcess* h : {a.get(), b.get()}) {
    Stats s = Parse(h->Ask("wait pushes 3", "replies"));
    EXPECT_EQ(s.pushes, 3);
    EXPECT_EQ(s.dup_pushes, 0);
  }
  // Replies go to the host that asked; the pushes of its orders to both.
  EXPECT_EQ(a->Ask("async 5 600000 100 9.00", "sent"), "sent 5");
  Stats sa = Parse(a->Ask("wait replies 5", "replies"));
  EXPECT_EQ(sa.replies, 5);
  EXPECT_EQ(sa.failed, 0);
  Stats sb = Parse(b->Ask("wait pushes 8", "replies"));
  EXPECT_EQ(sb.replies, 0);
  EXPECT_EQ(sb.pushes, 8);
  // A client that is not speaking the protocol is closed; the hosts trade on.
  SendGarbage(port());
  EXPECT_GT(Wth(*b, "buy 600000 100 9.00"), 0);
  EXPECT_EQ(server->Signal(SIGTERM), 0) << server->output();
}

TEST_F(SimNetHosts, AServerKilledMidTrafficIsABreakAndARecoveryAndLosesNothingItAnswered) {
  std::string state = dir_ + "/state.db";
  auto server = StartServer("127.0.0.1:0", {"--state", state});
  std::string listen = address_;
  std::string log = MakeTempDir();
  auto a = StartHost("1001", log), b = StartHost("1001");
  long long resting = Wth(*a, "buy 600000 100 9.00");
  ASSERT_EQ(a->Ask("async 300 600000 100 9.00", "sent"), "sent 300");
  a->Ask("wait replies 20", "replies");  // killed with answers on their way
  EXPECT_EQ(server->Signal(SIGKILL), 128 + SIGKILL);

  // Both hosts hear of the break; requests fail meanwhile.
  for (ChildProcess* h : {a.get(), b.get()}) {
    Stats s = Parse(h->Ask("wait event 1 1", "replies"));
    ASSERT_EQ(s.events, std::vector<int>{1}) << h->output();
  }
  EXPECT_EQ(b->Ask("buy 600000 100 9.00", "").rfind("refused", 0), 0u);

  server = StartServer(listen, {"--state", state});
  for (ChildProcess* h : {a.get(), b.get()}) {
    Stats s = Parse(h->Ask("wait event 0 1", "replies"));
    EXPECT_EQ(s.events, (std::vector<int>{1, 0})) << h->output();
  }
  // Every request got exactly one reply: its answer, or a failure when the answer was lost.
  Stats sa = Parse(a->Ask("wait replies 300", "replies"));
  EXPECT_EQ(sa.replies, 300);
  EXPECT_EQ(sa.dup_replies, 0);
  // Every order that was answered is in the restarted server's state.
  std::vector<long long> day = Numbers(a->Ask("orders", "orders"));
  std::set<long long> kept(day.begin() + 1, day.end());
  EXPECT_EQ(kept.count(resting), 1u);
  std::vector<long long> accepted = Numbers(a->Ask("accepted", "accepted"));
  ASSERT_FALSE(accepted.empty());
  EXPECT_GE(accepted[0], 20);
  EXPECT_EQ(accepted[0] + sa.failed, 300);
  for (std::size_t i = 1; i < accepted.size(); ++i)
    EXPECT_EQ(kept.count(accepted[i]), 1u) << accepted[i];
  // The resting order's later match reaches both hosts, and trading goes on.
  EXPECT_EQ(b->Ask("price 600000 8.99", "price"), "price set");
  for (ChildProcess* h : {a.get(), b.get()})
    EXPECT_NE(h->Ask("wait push 10 " + std::to_string(resting), "replies"), "");
  for (ChildProcess* h : {a.get(), b.get()}) {
    std::string pushes = h->Ask("stats", "replies");
    EXPECT_EQ(Parse(pushes).dup_pushes, 0);
  }
  EXPECT_GT(Wth(*b, "buy 600000 100 10.00"), resting);
  // The kit bound the customer again to its trade, query and subscribe connections.
  EXPECT_EQ(a->Ask("quit", "bye"), "bye");
  std::string text = ReadFile(log + "/molra_" + Today() + ".log");
  const std::string line = Gbk("连接重新绑定客户号成功");  // the log is GBK
  std::size_t rebound = 0;
  for (std::size_t at = text.find(line); at != std::string::npos; at = text.find(line, at + 1))
    ++rebound;
  EXPECT_EQ(rebound, 3u);
  EXPECT_EQ(server->Signal(SIGTERM), 0) << server->output();
}

TEST_F(SimNetHosts, FourHostsOfTwoThousandAsynchronousOrdersGetEveryReplyAndPushOnce) {
  constexpr int kOrders = 2000;
  std::string ini = "[backend]\ninclude_defaults = true\n";
  for (const char* khh : {"2001", "2002", "2003", "2004"})
    ini += std::string("[customer.") + khh + "]\npassword = 111111\nfunds = 100000000\n";
  WriteFile(dir_ + "/sim.ini", ini);
  auto server = StartServer("127.0.0.1:0", {"--config", dir_ + "/sim.ini"});
  std::vector<std::unique_ptr<ChildProcess>> hosts;
  for (const char* khh : {"2001", "2002", "2003", "2004"}) hosts.push_back(StartHost(khh));
  // All four send at once; every order matches at once: a confirmation and a match each.
  for (auto& h : hosts) h->Send("async " + std::to_string(kOrders) + " 600000 100 10.00");
  for (auto& h : hosts) EXPECT_EQ(h->Line("sent"), "sent " + std::to_string(kOrders));
  for (auto& h : hosts) {
    h->Ask("wait replies " + std::to_string(kOrders), "replies");
    h->Ask("wait pushes " + std::to_string(2 * kOrders), "replies");
  }
  std::this_thread::sleep_for(std::chrono::milliseconds(200));  // room for a copy too many
  for (auto& h : hosts) {
    Stats s = Parse(h->Ask("stats", "replies"));
    EXPECT_EQ(s.replies, kOrders);
    EXPECT_EQ(s.dup_replies, 0);
    EXPECT_EQ(s.failed, 0);
    EXPECT_EQ(s.pushes, 2 * kOrders);
    EXPECT_EQ(s.dup_pushes, 0);
    EXPECT_TRUE(s.events.empty());
  }
  EXPECT_EQ(server->Signal(SIGTERM), 0) << server->output();
}

}  // namespace
