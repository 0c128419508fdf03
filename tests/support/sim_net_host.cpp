// A trading program for the tests of the back end's server: it drives the kit through its C
// interface on the molra.ini of its first argument (a profile folder) and reads commands from
// its standard input, one a line, answering each with one line:
//   login KEY KHH PWD          "login TOKEN" or "login failed CODE"
//   buy ZQDM QTY PRICE         a synchronous buy on SH: "wth N" or "refused CODE"
//   async N ZQDM QTY PRICE     N asynchronous buys (request numbers from 1 on): "sent N" or
//                              "sent K failed CODE"
//   price ZQDM PRICE           KelSim_SetPrice (on the server): "price set"
//   wait replies|pushes N      waits (at most 60 s) until N different replies or pushes came
//   wait event E N             waits until the connection-event callback saw event E N times
//   wait push TYPE WTH         waits until a push of that type came for that order
//   stats                      (also the answer to every wait)
//   orders                     "orders N" and the order numbers of the day (order query)
//   accepted                   "accepted N" and the order numbers the replies gave
//   quit                       stops the kit: "bye"
// stats: "replies R dup D failed F pushes P dup Q events E,E,...": R different request numbers
// replied to (F with a negative RETCODE), D replies beyond the first per number; P different
// pushes (type, order number, match number), Q beyond the first.
// Options after the folder: --reconnect-ms MS (first reconnection delay), --log DIR.
#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <map>
#include <mutex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "secmolra.h"
#include "support/json_fields.h"
#include "support/sim_api.h"

using namespace molra::test;

namespace {

struct Seen {
  std::mutex m;
  std::condition_variable cv;
  std::map<std::string, int> replies;  // by request number
  std::map<std::string, int> pushes;   // by type, order number and match number
  std::set<long long> accepted;        // order numbers replies gave
  int failed = 0;
  std::vector<int> events;
};
Seen& seen() {
  static Seen s;
  return s;
}

void OnReply(const char*, const char* json, std::int32_t) {
  Seen& s = seen();
  std::lock_guard<std::mutex> lock(s.m);
  if (++s.replies[JsonMember(json, "KFSBDBH")] > 1) return s.cv.notify_all();
  long long wth = JsonNumber(json, "WTH");
  if (JsonNumber(json, "RETCODE") < 0 || wth <= 0)
    ++s.failed;
  else
    s.accepted.insert(wth);
  s.cv.notify_all();
}

void OnPush(const char*, const char* json, std::int32_t type) {
  Seen& s = seen();
  std::lock_guard<std::mutex> lock(s.m);
  ++s.pushes[std::to_string(type) + "/" + JsonMember(json, "WTH") + "/" + JsonMember(json, "CJBH")];
  s.cv.notify_all();
}

void OnConnEvent(const char*, const char*, std::int32_t event, std::int32_t) {
  Seen& s = seen();
  std::lock_guard<std::mutex> lock(s.m);
  s.events.push_back(event);
  s.cv.notify_all();
}

int Extra(const std::map<std::string, int>& m) {
  int n = 0;
  for (const auto& [k, times] : m) n += times - 1;
  return n;
}

std::string Stats() {
  Seen& s = seen();
  std::lock_guard<std::mutex> lock(s.m);
  std::string events;
  for (int e : s.events) events += (events.empty() ? "" : ",") + std::to_string(e);
  std::ostringstream out;
  out << "replies " << s.replies.size() << " dup " << Extra(s.replies) << " failed " << s.failed
      << " pushes " << s.pushes.size() << " dup " << Extra(s.pushes) << " events "
      << (events.empty() ? "-" : events);
  return out.str();
}

template <typename F>
void WaitFor(F done) {
  Seen& s = seen();
  std::unique_lock<std::mutex> lock(s.m);
  s.cv.wait_for(lock, std::chrono::seconds(60), done);
}

std::string Gdh(const std::string& khh) {
  std::string digits = std::string(9 - std::min<std::size_t>(9, khh.size()), '0') + khh;
  return "A" + digits;
}

std::string Orders(const std::string& khh) {
  std::vector<OrderRecord> rows(20000);
  long long n = PYSECMOLRA_QueryOrders(khh.c_str(), 0, 0, 0, 0, "", "", 0, rows.data(),
                                       static_cast<std::int32_t>(rows.size()));
  std::string out = "orders " + std::to_string(n);
  for (long long i = 0; i < std::min<long long>(n, static_cast<long long>(rows.size())); ++i)
    out += " " + std::to_string(rows[static_cast<std::size_t>(i)].WTH);
  return out;
}

std::string Accepted() {
  Seen& s = seen();
  std::lock_guard<std::mutex> lock(s.m);
  std::string out = "accepted " + std::to_string(s.accepted.size());
  for (long long w : s.accepted) out += " " + std::to_string(w);
  return out;
}

struct Host {
  std::string khh;
  long long next_tag = 1;

  std::string Run(std::istringstream& in, const std::string& cmd) {
    if (cmd == "login") {
      std::string key, pwd;
      in >> key >> khh >> pwd;
      long long token = SECMOLRA_TradeLogin(key.c_str(), khh.c_str(), pwd.c_str());
      return token > 0 ? "login " + std::to_string(token) : "login failed " + std::to_string(token);
    }
    if (cmd == "buy") {
      std::string zqdm;
      long long qty = 0;
      double price = 0;
      in >> zqdm >> qty >> price;
      long long wth = SECMOLRA_OrderEntrust(khh.c_str(), "SH", zqdm.c_str(), 1, qty, price, 0,
                                            Gdh(khh).c_str());
      return wth > 0 ? "wth " + std::to_string(wth) : "refused " + std::to_string(wth);
    }
    if (cmd == "async") {
      int n = 0;
      std::string zqdm;
      long long qty = 0;
      double price = 0;
      in >> n >> zqdm >> qty >> price;
      std::string gdh = Gdh(khh);
      for (int i = 0; i < n; ++i) {
        long long r = SECMOLRA_OrderEntrust_ASync(khh.c_str(), "SH", zqdm.c_str(), 1, qty, price, 0,
                                                  gdh.c_str(), next_tag++);
        if (r <= 0) return "sent " + std::to_string(i) + " failed " + std::to_string(r);
      }
      return "sent " + std::to_string(n);
    }
    if (cmd == "price") {
      std::string zqdm;
      double price = 0;
      in >> zqdm >> price;
      SIM_FN(KelSim_SetPrice)("SH", zqdm.c_str(), price);
      return "price set";
    }
    if (cmd == "wait") return Wait(in);
    if (cmd == "orders") return Orders(khh);
    if (cmd == "accepted") return Accepted();
    if (cmd == "stats") return Stats();
    return "unknown command " + cmd;
  }

  std::string Wait(std::istringstream& in) {
    std::string what;
    in >> what;
    Seen& s = seen();
    if (what == "replies" || what == "pushes") {
      std::size_t n = 0;
      in >> n;
      WaitFor([&] { return (what == "replies" ? s.replies.size() : s.pushes.size()) >= n; });
    } else if (what == "event") {
      int event = 0, times = 0;
      in >> event >> times;
      WaitFor([&] { return std::count(s.events.begin(), s.events.end(), event) >= times; });
    } else if (what == "push") {
      std::string type, wth;
      in >> type >> wth;
      WaitFor([&] {
        for (const auto& [key, times] : s.pushes)
          if (key.rfind(type + "/" + wth + "/", 0) == 0) return true;
        return false;
      });
    }
    return Stats();
  }
};

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: sim_net_host PROFILE_DIR/ [--reconnect-ms MS] [--log DIR]\n");
    return 2;
  }
  std::string log;
  int reconnect_ms = 20;
  for (int i = 2; i + 1 < argc; i += 2) {
    std::string opt = argv[i];
    if (opt == "--reconnect-ms") reconnect_ms = std::atoi(argv[i + 1]);
    if (opt == "--log") log = argv[i + 1];
  }
  SIM_FN(KelSim_SetReconnectDelay)(reconnect_ms, reconnect_ms * 10);
  SECMOLRA_SetProfilePath(argv[1]);
  SECMOLRA_SetWriteLog(!log.empty());
  if (!log.empty()) SECMOLRA_SetLogPath(log.c_str());
  if (!SECMOLRA_Init()) {
    std::printf("init failed\n");
    return 2;
  }
  SECMOLRA_SetFuncCallback(&OnReply);
  SECMOLRA_SetMsgCallback(&OnPush);
  SECMOLRA_SetConnEventCallback(&OnConnEvent);
  Host host;
  std::printf("ready\n");
  std::fflush(stdout);
  for (std::string line; std::getline(std::cin, line);) {
    std::istringstream in(line);
    std::string cmd;
    in >> cmd;
    if (cmd == "quit") break;
    std::printf("%s\n", host.Run(in, cmd).c_str());
    std::fflush(stdout);
  }
  SECMOLRA_Exit();
  std::printf("bye\n");
  return 0;
}
