// A second process for the tests of the simulated back end's state file: it loads the
// transport from the build directory on the configuration named by KELSIM_CONFIG, logs
// customer 1001 in and runs its arguments in order, printing one line per order:
//   buy:ZQDM:QTY:PRICE, sell:ZQDM:QTY:PRICE   "wth N" (or "refused CODE")
//   price:ZQDM:PRICE                          KelSim_SetPrice
//   advance:MS                                KelSim_Advance
//   hang                                      prints "hanging" and waits to be killed
// It exits 2 when the back end does not start, printing the transport's reason.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "support/sim_api.h"

using namespace molra::test;

namespace {

std::vector<std::string> Parts(const std::string& arg) {
  std::vector<std::string> out;
  std::istringstream in(arg);
  for (std::string p; std::getline(in, p, ':');) out.push_back(p);
  return out;
}

long long Order(SimClient& c, kel::int64 token, const std::vector<std::string>& p) {
  SimBlock b(19001, 137, token, "1001");
  b.Text(55, 3, "SH").Text(69, 9, p.at(1)).Int(78, 1, p[0] == "buy" ? 1 : 2);
  b.Int(79, 4, std::atoll(p.at(2).c_str())).Double(83, std::atof(p.at(3).c_str()));
  std::string ans = c.Run(b);
  long long code = ReadInt(ans, 11, 2);
  return code > 0 ? ReadInt(ans, 443, 8) : code;
}

}  // namespace

int main(int argc, char** argv) {
  const kel::Api& k = SimKel();
  if (!k.Kel_Initialize()) {
    char buf[512];
    kel::int32 len = sizeof buf;
    std::printf("not started: %s\n", k.Kel_GetLastErrMsg(buf, &len));
    return 2;
  }
  SimClient c;
  kel::int64 token = c.Login("1001", "111111");
  for (int i = 1; i < argc; ++i) {
    std::vector<std::string> p = Parts(argv[i]);
    if (p[0] == "buy" || p[0] == "sell") {
      long long wth = Order(c, token, p);
      std::printf(wth > 0 ? "wth %lld\n" : "refused %lld\n", wth);
    } else if (p[0] == "price") {
      SIM_FN(KelSim_SetPrice)("SH", p.at(1).c_str(), std::atof(p.at(2).c_str()));
    } else if (p[0] == "advance") {
      SIM_FN(KelSim_Advance)(std::atoll(p.at(1).c_str()));
    } else if (p[0] == "hang") {
      std::printf("hanging\n");
      std::fflush(stdout);
      std::this_thread::sleep_for(std::chrono::seconds(60));
      return 3;
    }
    std::fflush(stdout);
  }
  k.Kel_Uninitialize();
  return 0;
}
