// A minimal trading host: logs a customer in, places a synchronous and an asynchronous
// order and prints the replies and pushes. Run it in the folder that holds kelapi50.dll:
//   molra_trade PROFILE_DIR/ KEY [KHH PASSWORD]
// PROFILE_DIR/ holds molra.ini (give the trailing '/'), KEY names its connection section.
// Against the simulated back end: molra_trade ./ SIM 1001 111111
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <thread>

#include "host_support.h"
#include "secmolra.h"

static std::atomic<int> g_replies{0};

// Callbacks run on the transport's threads, possibly at once: print whole lines only.
static void OnPush(const char* time, const char* json, int32_t type) {
  std::printf("[%s] push %d %s\n", time, type, host::ForTerminal(json).c_str());
}
static void OnReply(const char* time, const char* json, int32_t type) {
  std::printf("[%s] reply %d %s\n", time, type, host::ForTerminal(json).c_str());
  ++g_replies;
}

static int Fail(const char* step) {
  host::PrintLastError(step);
  SECMOLRA_Exit();
  return 1;
}

int main(int argc, char** argv) {
  if (argc < 3) {
    std::printf("usage: %s PROFILE_DIR/ KEY [KHH PASSWORD]\n", argv[0]);
    return 2;
  }
  const char* khh = argc > 3 ? argv[3] : "1001";
  const char* pwd = argc > 4 ? argv[4] : "111111";
  if (!host::CheckRunFolder(argv[1])) return 2;
  SECMOLRA_SetProfilePath(argv[1]);
  SECMOLRA_SetMsgCallback(OnPush);
  SECMOLRA_SetFuncCallback(OnReply);
  if (!SECMOLRA_Init()) return Fail("SECMOLRA_Init");
  if (SECMOLRA_TradeLogin(argv[2], khh, pwd) <= 0) return Fail("SECMOLRA_TradeLogin");

  AccountRecord accounts[8];
  if (PYSECMOLRA_QueryAccInfo(khh, accounts, 8) < 1) return Fail("PYSECMOLRA_QueryAccInfo");
  char jys[5] = {0}, gdh[13] = {0};  // record texts are not terminated when full
  std::memcpy(jys, accounts[0].JYS, sizeof accounts[0].JYS);
  std::memcpy(gdh, accounts[0].GDH, sizeof accounts[0].GDH);
  std::printf("account %s %s\n", jys, gdh);

  int64_t wth = SECMOLRA_OrderEntrust(khh, jys, "600000", 1, 100, 10.0, 0, gdh);
  if (wth <= 0) return Fail("SECMOLRA_OrderEntrust");
  std::printf("order number %lld\n", static_cast<long long>(wth));

  int64_t n = SECMOLRA_OrderEntrust_ASync(khh, jys, "600000", 1, 200, 10.0, 0, gdh, 0);
  if (n <= 0) return Fail("SECMOLRA_OrderEntrust_ASync");
  std::printf("request number %lld\n", static_cast<long long>(n));
  for (int i = 0; i < 100 && g_replies == 0; ++i)
    std::this_thread::sleep_for(std::chrono::milliseconds(50));

  SECMOLRA_TradeLogout(khh);
  SECMOLRA_Exit();
  std::printf("replies received: %d\n", g_replies.load());
  return g_replies > 0 ? 0 : 1;
}
