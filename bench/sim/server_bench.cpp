// The back end's server (molra-simd) under the kit, on loopback: the round trip of a
// synchronous order (SECMOLRA_OrderEntrust, and Kel_Run of the same block straight through
// the transport), and the throughput of four host processes sending asynchronous orders at
// once (every reply and both pushes of each order received). Run from the build folder (the
// kit loads ./kelapi50.dll; molra-simd is beside it):
//   bench/molra_server_bench [--state] [--orders N]
// --state gives the server a state file (every order committed to SQLite before its answer).
// The host processes are this program again: --host PROFILE/ KHH N.
#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "comm/kel_api.h"
#include "secmolra.h"
#include "util/dynlib.h"

extern char** environ;

namespace {

constexpr const char* kCustomers[] = {"3001", "3002", "3003", "3004"};
constexpr int kRoundTrips = 20000;
constexpr int kWarmUp = 2000;

std::int64_t NowNs() {
  timespec ts;
  clock_gettime(CLOCK_MONOTONIC, &ts);
  return static_cast<std::int64_t>(ts.tv_sec) * 1000000000 + ts.tv_nsec;
}

void Require(bool ok, const std::string& what) {
  if (ok) return;
  char msg[4096] = {};
  std::int64_t code = SECMOLRA_GetLastError(msg);
  throw std::runtime_error(what + " failed: " + std::to_string(code) + " " + msg);
}

// The folders made for a run, removed when it ends (the state file of a run is tens of MB).
std::vector<std::string>& Made() {
  static std::vector<std::string> dirs;
  return dirs;
}
struct RemoveMade {
  ~RemoveMade() {
    std::error_code ec;
    for (const std::string& d : Made()) std::filesystem::remove_all(d, ec);
  }
};

std::string TempDir() {
  char pattern[] = "/tmp/molra-server-bench-XXXXXX";
  if (mkdtemp(pattern) == nullptr) throw std::runtime_error("mkdtemp");
  Made().push_back(pattern);
  return pattern;
}

void Write(const std::string& path, const std::string& text) { std::ofstream(path) << text; }

std::string Gdh(const char* khh) { return std::string("A00000") + khh; }

// A child process with pipes on its standard input and output (`quiet`: its standard error
// goes to /dev/null).
struct Child {
  pid_t pid = -1;
  FILE* in = nullptr;
  FILE* out = nullptr;
  explicit Child(std::vector<std::string> argv, bool quiet = false) {
    int to[2], from[2];
    if (pipe(to) != 0 || pipe(from) != 0) throw std::runtime_error("pipe");
    std::vector<char*> a;
    for (auto& s : argv) a.push_back(s.data());
    a.push_back(nullptr);
    posix_spawn_file_actions_t fa;
    posix_spawn_file_actions_init(&fa);
    posix_spawn_file_actions_adddup2(&fa, to[0], 0);
    posix_spawn_file_actions_adddup2(&fa, from[1], 1);
    posix_spawn_file_actions_addclose(&fa, to[1]);
    posix_spawn_file_actions_addclose(&fa, from[0]);
    if (quiet) posix_spawn_file_actions_addopen(&fa, 2, "/dev/null", O_WRONLY, 0);
    if (posix_spawn(&pid, a[0], &fa, nullptr, a.data(), environ) != 0)
      throw std::runtime_error("spawn " + argv[0]);
    posix_spawn_file_actions_destroy(&fa);
    close(to[0]);
    close(from[1]);
    in = fdopen(to[1], "w");
    out = fdopen(from[0], "r");
  }
  std::string Line() {
    char buf[512];
    if (std::fgets(buf, sizeof buf, out) == nullptr) return std::string();
    std::string s = buf;
    if (!s.empty() && s.back() == '\n') s.pop_back();
    return s;
  }
  void Say(const std::string& line) {
    std::fprintf(in, "%s\n", line.c_str());
    std::fflush(in);
  }
  int Stop(int sig) {
    if (pid <= 0) return -1;
    kill(pid, sig);
    int status = 0;
    waitpid(pid, &status, 0);
    pid = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  }
  // A benchmark that failed half-way leaves no process behind.
  ~Child() {
    Stop(SIGKILL);
    if (in != nullptr) std::fclose(in);
    if (out != nullptr) std::fclose(out);
  }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;
};

// A profile folder whose key "S" has its four connections to the server.
std::string Profile(const std::string& addr) {
  std::string dir = TempDir();
  Write(dir + "/molra.ini", "[GLOBAL]\n[S]\nName=S\nSystemType=4\naddr=" + addr + "\ntradeaddr=" +
                                addr + "\nqueryaddr=" + addr + "\nsubscribeaddr=" + addr + "\n");
  return dir + "/";
}

// The kit started and the customer logged in; the token.
std::int64_t StartKit(const std::string& profile, const char* khh) {
  SECMOLRA_SetProfilePath(profile.c_str());
  SECMOLRA_SetWriteLog(false);
  Require(SECMOLRA_Init(), "SECMOLRA_Init");
  std::int64_t token = SECMOLRA_TradeLogin("S", khh, "111111");
  Require(token > 0, std::string("login of ") + khh);
  return token;
}

// ---- one host process of the throughput figure ----

std::atomic<long> g_replies{0}, g_pushes{0};
void OnReply(const char*, const char*, std::int32_t) { ++g_replies; }
void OnPush(const char*, const char*, std::int32_t) { ++g_pushes; }

int Host(const std::string& profile, const char* khh, long n) {
  StartKit(profile, khh);
  SECMOLRA_SetFuncCallback(&OnReply);
  SECMOLRA_SetMsgCallback(&OnPush);
  std::string gdh = Gdh(khh);
  std::printf("ready\n");
  std::fflush(stdout);
  char go[16];
  if (std::fgets(go, sizeof go, stdin) == nullptr) return 1;
  std::int64_t start = NowNs();
  for (long i = 1; i <= n; ++i)
    if (SECMOLRA_OrderEntrust_ASync(khh, "SH", "600000", 1, 100, 10.00, 0, gdh.c_str(), i) <= 0)
      return 1;
  std::int64_t sent = NowNs();
  while (g_replies < n || g_pushes < 2 * n) {
    if (NowNs() - start > 120LL * 1000000000) return 1;
    usleep(200);
  }
  std::int64_t end = NowNs();
  std::printf("done %lld %lld %lld %ld %ld\n", static_cast<long long>(start),
              static_cast<long long>(sent), static_cast<long long>(end), g_replies.load(),
              g_pushes.load());
  std::fflush(stdout);
  SECMOLRA_Exit();
  return 0;
}

// ---- the figures ----

struct Percentiles {
  double p50, p90, p99;
};
Percentiles Of(std::vector<std::int64_t> ns) {
  std::sort(ns.begin(), ns.end());
  auto at = [&](double q) {
    return static_cast<double>(ns[static_cast<std::size_t>(q * (ns.size() - 1))]) / 1000.0;
  };
  return {at(0.5), at(0.9), at(0.99)};
}

// The machine's own loopback round trip: 150 bytes to a thread that sends them back, over TCP
// with no delay, as small as a round trip through any server can be.
Percentiles LoopbackFloor() {
  int listener = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in a{};
  a.sin_family = AF_INET;
  a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t len = sizeof a;
  if (bind(listener, reinterpret_cast<sockaddr*>(&a), sizeof a) != 0 || listen(listener, 1) != 0 ||
      getsockname(listener, reinterpret_cast<sockaddr*>(&a), &len) != 0)
    throw std::runtime_error("loopback listener");
  constexpr int kBytes = 150;
  std::thread echo([listener] {
    int c = accept(listener, nullptr, nullptr);
    int one = 1;
    setsockopt(c, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
    char buf[kBytes];
    for (ssize_t n; (n = recv(c, buf, sizeof buf, 0)) > 0;)
      send(c, buf, static_cast<std::size_t>(n), MSG_NOSIGNAL);
    close(c);
  });
  int c = socket(AF_INET, SOCK_STREAM, 0);
  int one = 1;
  setsockopt(c, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
  if (connect(c, reinterpret_cast<sockaddr*>(&a), sizeof a) != 0)
    throw std::runtime_error("loopback connect");
  std::vector<std::int64_t> ns;
  char buf[kBytes] = {};
  for (int i = 0; i < kWarmUp + kRoundTrips; ++i) {
    std::int64_t t = NowNs();
    send(c, buf, sizeof buf, MSG_NOSIGNAL);
    for (ssize_t got = 0; got < kBytes;)
      got += recv(c, buf + got, sizeof buf - static_cast<std::size_t>(got), 0);
    if (i >= kWarmUp) ns.push_back(NowNs() - t);
  }
  close(c);
  echo.join();
  close(listener);
  return Of(ns);
}

// SECMOLRA_OrderEntrust, one at a time.
Percentiles KitRoundTrip() {
  std::vector<std::int64_t> ns;
  std::string gdh = Gdh(kCustomers[0]);
  for (int i = 0; i < kWarmUp + kRoundTrips; ++i) {
    std::int64_t t = NowNs();
    std::int64_t wth =
        SECMOLRA_OrderEntrust(kCustomers[0], "SH", "600000", 1, 100, 10.00, 0, gdh.c_str());
    std::int64_t d = NowNs() - t;
    Require(wth > 0, "SECMOLRA_OrderEntrust");
    if (i >= kWarmUp) ns.push_back(d);
  }
  return Of(ns);
}

const kel::Api& Transport() {
  static const kel::Api api = [] {
    void* module = molra::LoadDynamicLibrary("./kelapi50.dll");
    kel::Api k;
    void** slots = reinterpret_cast<void**>(&k);
    for (int i = 0; i < kel::kEntryPointCount; ++i)
      slots[i] = molra::FindSymbol(module, kel::kEntryPointNames[i]);
    return k;
  }();
  return api;
}

// Times `run` (one request on a session of conn) kWarmUp + kRoundTrips times.
template <typename Run>
Percentiles Time(kel::int64 conn, Run run) {
  const kel::Api& k = Transport();
  std::vector<std::int64_t> ns;
  for (int i = 0; i < kWarmUp + kRoundTrips; ++i) {
    std::int64_t t = NowNs();
    kel::int64 s = k.Kel_AllocateSession(conn);
    bool ok = run(s);
    k.Kel_ReleaseSession(s);
    std::int64_t d = NowNs() - t;
    Require(ok, "Kel_Run");
    if (i >= kWarmUp) ns.push_back(d);
  }
  return Of(ns);
}

// Logs a customer in through the transport (the in-process back end's own token); the token.
std::int64_t Login(kel::int64 conn, const char* khh) {
  const kel::Api& k = Transport();
  char pwd[64] = "111111";
  kel::int32 len = sizeof pwd;
  k.Kel_UniEncode3rd(khh, pwd, &len);
  kel::int64 s = k.Kel_AllocateSession(conn);
  k.Kel_CreateHead(s, "610301");
  k.Kel_SetItem(s, 605, khh);
  k.Kel_SetItem(s, 598, pwd);
  k.Kel_SetItem(s, 781, "6");
  bool ok = k.Kel_Run(s) && k.Kel_GetCode(s) > 0;
  std::int64_t token = k.Kel_GetLong(s, 1600, 0);
  k.Kel_ReleaseSession(s);
  Require(ok && token > 0, "login on the in-process back end");
  return token;
}

// The fund query (no business, no push): the network's part of a round trip.
Percentiles QueryRoundTrip(kel::int64 conn) {
  const kel::Api& k = Transport();
  return Time(conn, [&](kel::int64 s) {
    k.Kel_CreateHead(s, "DQ0003");
    k.Kel_SetItem(s, 605, kCustomers[0]);
    return k.Kel_Run(s) && k.Kel_GetCount(s) == 1;
  });
}

// The kit's request block run straight through the transport on a connection of its own.
Percentiles TransportRoundTrip(kel::int64 conn, std::int64_t token) {
  const kel::Api& k = Transport();
  std::string block(137, '\0');
  auto put = [&](std::size_t at, int width, long long v) {
    for (int i = 0; i < width; ++i)
      block[at + i] = static_cast<char>((static_cast<unsigned long long>(v) >> (8 * i)) & 0xff);
  };
  put(0, 2, 19001);
  put(2, 1, 1);
  put(3, 8, token);
  std::memcpy(&block[13], kCustomers[0], 4);
  std::memcpy(&block[55], "SH", 2);
  std::memcpy(&block[58], Gdh(kCustomers[0]).c_str(), 10);
  std::memcpy(&block[69], "600000", 6);
  put(78, 1, 1);
  put(79, 4, 100);
  double price = 10.00;
  long long bits;
  std::memcpy(&bits, &price, 8);
  put(83, 8, bits);
  return Time(conn, [&](kel::int64 s) {
    k.Kel_SetStructData(s, block.data(), static_cast<kel::int32>(block.size()));
    char ans[512];
    kel::int32 len = sizeof ans;
    return k.Kel_Run(s) && k.Kel_GetStructData(s, ans, &len, 0);
  });
}

// Four hosts at once: orders a second from the first send to the last reply and push.
double Throughput(const std::string& self, const std::string& profile, long n) {
  std::vector<std::unique_ptr<Child>> hosts;
  for (const char* khh : kCustomers)
    hosts.push_back(std::make_unique<Child>(
        std::vector<std::string>{self, "--host", profile, khh, std::to_string(n)}));
  for (auto& h : hosts)
    if (h->Line() != "ready") throw std::runtime_error("a host did not start");
  for (auto& h : hosts) h->Say("go");
  std::int64_t first = INT64_MAX, last = 0;
  for (auto& h : hosts) {
    long long start = 0, sent = 0, end = 0;
    long replies = 0, pushes = 0;
    std::string line = h->Line();
    if (std::sscanf(line.c_str(), "done %lld %lld %lld %ld %ld", &start, &sent, &end, &replies,
                    &pushes) != 5)
      throw std::runtime_error("a host failed: " + line);
    first = std::min<std::int64_t>(first, start);
    last = std::max<std::int64_t>(last, end);
    h->Stop(SIGTERM);
  }
  return 4.0 * static_cast<double>(n) / (static_cast<double>(last - first) / 1e9);
}

std::string LoadAverage() {
  std::ifstream in("/proc/loadavg");
  std::string a, b, c;
  in >> a >> b >> c;
  return a + " " + b + " " + c;
}

int Run(const std::string& self, bool state, long orders) {
  std::string dir = TempDir();
  std::string ini = "[backend]\ninclude_defaults = true\n";
  for (const char* khh : kCustomers)
    ini += std::string("[customer.") + khh + "]\npassword = 111111\nfunds = 1000000000000\n";
  Write(dir + "/sim.ini", ini);
  setenv("KELSIM_CONFIG", (dir + "/sim.ini").c_str(), 1);  // the in-process back end too
  std::vector<std::string> args = {"./molra-simd", "--listen", "127.0.0.1:0", "--config",
                                   dir + "/sim.ini"};
  if (state) args.insert(args.end(), {"--state", dir + "/state.db"});
  Child server(args, true);
  std::string line = server.Line();
  if (line.rfind("listening on ", 0) != 0) throw std::runtime_error("molra-simd did not start");
  std::string addr = line.substr(13);
  std::string profile = Profile(addr);
  std::string load_before = LoadAverage();
  Percentiles floor = LoopbackFloor();

  std::int64_t token = StartKit(profile, kCustomers[0]);
  Percentiles kit = KitRoundTrip();
  kel::int64 conn = Transport().Kel_Connect(addr.c_str(), "", "", 10);
  Require(conn != 0, "Kel_Connect");
  Percentiles transport = TransportRoundTrip(conn, token);
  Percentiles query = QueryRoundTrip(conn);
  Transport().Kel_Close(conn);
  // The same order on the in-process back end: what the exchange itself takes.
  kel::int64 local = Transport().Kel_Connect("127.0.0.1:9102", "", "", 10);
  Require(local != 0, "Kel_Connect");
  Percentiles in_process = TransportRoundTrip(local, Login(local, kCustomers[0]));
  Transport().Kel_Close(local);
  SECMOLRA_Exit();
  double rate = Throughput(self, profile, orders);
  std::string load_after = LoadAverage();
  server.Stop(SIGTERM);

  std::printf(
      "server %s; load average before %s, after %s; %d cores\n",
      state ? "with a state file (SQLite, committed before each answer)" : "with state in memory",
      load_before.c_str(), load_after.c_str(), static_cast<int>(sysconf(_SC_NPROCESSORS_ONLN)));
  std::printf(
      "  loopback TCP round trip of 150 bytes between two threads (the floor): median %.1f us, p90 "
      "%.1f us\n",
      floor.p50, floor.p90);
  std::printf(
      "  synchronous order round trip, kit (SECMOLRA_OrderEntrust): median %.1f us, p90 %.1f us, "
      "p99 %.1f us "
      "(goal median < 50 us: %s)\n",
      kit.p50, kit.p90, kit.p99, kit.p50 < 50 ? "met" : "NOT met");
  std::printf(
      "  synchronous order round trip, transport alone (Kel_Run): median %.1f us, p90 %.1f us, p99 "
      "%.1f us\n",
      transport.p50, transport.p90, transport.p99);
  std::printf(
      "  the same order on the in-process back end (Kel_Run, no network): median %.1f us, p90 %.1f "
      "us\n",
      in_process.p50, in_process.p90);
  std::printf(
      "  fund query round trip, transport alone (Kel_Run): median %.1f us, p90 %.1f us, p99 %.1f "
      "us\n",
      query.p50, query.p90, query.p99);
  std::printf(
      "  throughput, 4 hosts x %ld asynchronous orders (reply and 2 pushes each): %.0f orders/s "
      "(goal >= 50,000: %s)\n",
      orders, rate, rate >= 50000 ? "met" : "NOT met");
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  RemoveMade remove_made;
  try {
    if (argc == 5 && std::string(argv[1]) == "--host")
      return Host(argv[2], argv[3], std::atol(argv[4]));
    bool state = false;
    long orders = 20000;
    for (int i = 1; i < argc; ++i) {
      std::string a = argv[i];
      if (a == "--state") state = true;
      if (a == "--orders" && i + 1 < argc) orders = std::atol(argv[++i]);
    }
    return Run(argv[0], state, orders);
  } catch (const std::exception& e) {
    std::fprintf(stderr, "molra_server_bench: %s\n", e.what());
    return 1;
  }
}
