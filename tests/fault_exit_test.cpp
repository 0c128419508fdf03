// Replies and pushes that arrive after SECMOLRA_Exit has begun: requests still in flight
// when the host exits, a host callback still running while another thread exits, pushes
// sent after the exit, and host threads still calling while another one exits. Nothing
// crashes, nothing is delivered twice, every session is released, and calls after the exit
// fail with the documented code.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "comm/kel_api.h"
#include "core/log.h"
#include "push/push_handlers.h"
#include "support/json_fields.h"
#include "support/trade_fixture.h"
#include "trade/replies.h"

using namespace molra::test;

namespace {

std::mutex g_mutex;
std::map<std::int64_t, int> g_replies;  // KFSBDBH -> deliveries
std::atomic<int> g_pushes{0};
std::atomic<int> g_callback_sleep_ms{0};
std::atomic<bool> g_in_callback{false};

void OnFunction(const char*, const char* json, std::int32_t) {
  g_in_callback = true;
  if (int ms = g_callback_sleep_ms.exchange(0); ms > 0)
    std::this_thread::sleep_for(std::chrono::milliseconds(ms));
  std::lock_guard<std::mutex> lock(g_mutex);
  ++g_replies[JsonNumber(json, "KFSBDBH")];
}
void OnMessage(const char*, const char*, std::int32_t) { ++g_pushes; }

class ExitFaults : public TradeTest {
 protected:
  void SetUp() override {
    TradeTest::SetUp();
    g_replies.clear();
    g_pushes = 0;
    SECMOLRA_SetFuncCallback(OnFunction);
    SECMOLRA_SetMsgCallback(OnMessage);
  }
  static std::int64_t SendOrder(std::int64_t number) {
    return SECMOLRA_OrderEntrust_ASync("1001", "SH", "600000", 1, 100, 10.0, 0, kGdhSH, number);
  }
};

TEST_F(ExitFaults, RepliesInFlightAtExitAreDeliveredAtMostOnceAndReleased) {
  constexpr int kOrders = 60;
  for (int i = 1; i <= kOrders; ++i) ASSERT_EQ(SendOrder(i), i) << Message();
  EXPECT_TRUE(SECMOLRA_Exit());
  KELSIM(KelSim_WaitIdle)();
  EXPECT_EQ(KELSIM(KelSim_OpenSessions)(), 0) << "every reply session is released";
  std::lock_guard<std::mutex> lock(g_mutex);
  for (const auto& [n, count] : g_replies) {
    EXPECT_GE(n, 1);
    EXPECT_LE(n, kOrders);
    EXPECT_EQ(count, 1) << n;
  }
}

TEST_F(ExitFaults, HostCallbackStillRunningWhileAnotherThreadExits) {
  g_callback_sleep_ms = 300;
  g_in_callback = false;
  ASSERT_EQ(SendOrder(7), 7);
  ASSERT_EQ(SendOrder(8), 8);
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (!g_in_callback && std::chrono::steady_clock::now() < deadline) std::this_thread::yield();
  ASSERT_TRUE(g_in_callback.load());
  const auto start = std::chrono::steady_clock::now();
  EXPECT_TRUE(SECMOLRA_Exit());  // the first reply's callback is still sleeping
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10)) << "no hang";
  KELSIM(KelSim_WaitIdle)();
  EXPECT_EQ(KELSIM(KelSim_OpenSessions)(), 0);
  std::lock_guard<std::mutex> lock(g_mutex);
  EXPECT_EQ(g_replies[7], 1);
  EXPECT_LE(g_replies[8], 1);
}

TEST_F(ExitFaults, PushesAndCallsAfterExit) {
  std::string record(402, '\0');
  EXPECT_TRUE(SECMOLRA_Exit());
  KELSIM(KelSim_PushRecord)("1001", 0, record.data(), 402);
  KELSIM(KelSim_PushRecord)("1001", 1, record.data(), 402);
  KELSIM(KelSim_WaitIdle)();
  EXPECT_EQ(g_pushes.load(), 0) << "the subscriptions went with the connections";
  EXPECT_EQ(KELSIM(KelSim_SubscriptionCount)("1001"), 0);
  EXPECT_EQ(SECMOLRA_OrderEntrust("1001", "SH", "600000", 1, 100, 10.0, 0, kGdhSH), -203);
  EXPECT_EQ(Message(), Gbk("客户未登录"));
  EXPECT_EQ(SendOrder(9), -203);
  EXPECT_EQ(KELSIM(KelSim_OpenSessions)(), 0);
  EXPECT_TRUE(SECMOLRA_Exit()) << "a second exit does nothing";
}

// A host that lets its threads call on while another thread exits: every call, before,
// during and after the exit, succeeds or fails with one of these codes and messages. (The
// last error is process-wide: with several threads failing at once, a thread may read
// another's message, so codes and messages are checked each against its own list.)
const std::set<std::int64_t> kCodesAroundExit = {-203, -202, -204, 0};
const std::set<std::string> kMessagesAroundExit = {
    Gbk("客户未登录"),           Gbk("客户未连接登录，无法获取连接"),
    Gbk("未连接，无法发起会话"), Gbk("发起会话失败"),
    Gbk("发送请求失败"),         Gbk("认证管理连接已失效"),
    Gbk("交易、订阅连接已失效"),
};

TEST_F(ExitFaults, CallsOnOtherThreadsWhileOneExitsFailCleanly) {
  std::atomic<bool> stop{false};
  std::mutex mutex;
  int successes = 0;
  std::map<std::int64_t, int> codes;
  std::map<std::string, int> messages;
  std::vector<std::int64_t> sent;
  // Two threads query as fast as they can; a third places orders, paced so that its buys
  // stay within the customer's funds however fast the build.
  auto caller = [&](bool orders) {
    for (int i = 0; !stop.load(); ++i) {
      std::vector<FundRecord> funds;
      std::int64_t r = 0;
      switch ((orders ? 0 : 2) + i % 2) {
        case 0:
          r = SECMOLRA_OrderEntrust("1001", "SH", "600000", 1, 100, 10.0, 0, kGdhSH);
          break;
        case 1:
          r = SendOrder(1000 + i);
          break;
        case 2:
          r = SECMOLRA_TradableQty("1001", "SH", "600000", 2, 10.0, 0, kGdhSH);
          break;
        default:
          r = SECMOLRA_QueryFundInfo("1001", funds);
          break;
      }
      std::string msg;
      if (r <= 0) LastError(&msg);
      {
        std::lock_guard<std::mutex> lock(mutex);
        if (r > 0) {
          ++successes;
          if (orders && i % 2 == 1) sent.push_back(r);
        } else {
          ++codes[r];
          ++messages[msg];
        }
      }
      if (orders) std::this_thread::sleep_for(std::chrono::microseconds(300));
    }
  };
  std::vector<std::thread> threads;
  for (bool orders : {false, false, true}) threads.emplace_back(caller, orders);
  std::this_thread::sleep_for(std::chrono::milliseconds(30));
  EXPECT_TRUE(SECMOLRA_Exit());
  std::this_thread::sleep_for(std::chrono::milliseconds(30));
  stop = true;
  for (auto& t : threads) t.join();
  KELSIM(KelSim_WaitIdle)();

  for (const auto& [code, n] : codes)
    EXPECT_TRUE(kCodesAroundExit.count(code)) << code << " x" << n;
  for (const auto& [msg, n] : messages)
    EXPECT_TRUE(kMessagesAroundExit.count(msg)) << msg << " x" << n;
  EXPECT_GT(successes, 0) << "calls went through before the exit";
  EXPECT_GT(codes[-203], 0) << "and were refused after it";
  EXPECT_EQ(KELSIM(KelSim_OpenSessions)(), 0) << "every session is released";
  std::lock_guard<std::mutex> lock(g_mutex);
  for (const auto& [n, count] : g_replies) EXPECT_EQ(count, 1) << n;
  for (std::int64_t n : sent) EXPECT_LE(g_replies[n], 1) << n;
}

}  // namespace

// A transport thread that still runs while the process ends. This object is built before
// every other static object of the program (lowest init priority), so it is destroyed after
// all of them, the kit's included. Armed by the test below, its destructor plays such a
// thread: a reply the kit refuses and a push it does not know, as the transport delivers
// them then. The process fails (exit code 3) unless both reached the kit's log and the
// last-error record.
namespace {

char g_late_log[512];  // the armed test's log file; plain storage, never destroyed

bool LateIsStruct(kel::int64, kel::int32) { return true; }
const char* LateNoAnswer(kel::int64, kel::int32* len, kel::int32) {
  *len = 0;
  return nullptr;
}
void LateRelease(kel::int64) {}

bool FileHolds(const char* path, const char* text) {
  std::FILE* f = std::fopen(path, "rb");
  if (f == nullptr) return false;
  static char content[1 << 16];
  const std::size_t n = std::fread(content, 1, sizeof content - 1, f);
  std::fclose(f);
  content[n] = '\0';
  return std::strstr(content, text) != nullptr;
}

struct LateTransportThread {
  ~LateTransportThread() {
    if (g_late_log[0] == '\0') return;
    kel::api.Kel_IsStruct = LateIsStruct;  // the transport itself is gone by now
    kel::api.Kel_GetStructDataEx = LateNoAnswer;
    kel::api.Kel_ReleaseSession = LateRelease;
    std::thread([] {
      molra::Sc_Order_AsyncFuncProcess(1);
      molra::ScStructMsgProc(nullptr, 77, 3, nullptr);
    }).join();
    if (spdlog::logger* l = molra::g_logger.load()) l->flush();
    const bool ok =
        SECMOLRA_GetLastError(nullptr) == -205 &&
        FileHolds(g_late_log, Gbk("Sc_Order_AsyncFuncProcess：应答数据包不正确1").c_str()) &&
        FileHolds(g_late_log, "ScStructMsgProc received unknow message. func:77 datalen:3");
    if (!ok) {
      std::fprintf(stderr,
                   "a transport thread at process end found the kit's log or error record gone\n");
      std::_Exit(3);
    }
  }
};
__attribute__((init_priority(101))) LateTransportThread g_late_transport_thread;

}  // namespace

TEST(ProcessEnd, ATransportThreadStillLogsAfterTheKitsStaticObjectsAreGone) {
#if defined(_WIN32)
  // No thread starts while a Windows process ends, and the transport's threads are stopped
  // before a library's objects are destroyed.
  GTEST_SKIP() << "no thread runs at process end on Windows";
#endif
  const std::string dir = MakeTempDir();
  molra::SetUpLogging(dir);
  MOLRA_LOG_INFO("{} armed", "ProcessEnd");
  const std::string log = dir + "/molra_" + Today() + ".log";
  ASSERT_LT(log.size(), sizeof g_late_log);
  ASSERT_NE(KitLog(dir).find("ProcessEnd armed"), std::string::npos);
  std::snprintf(g_late_log, sizeof g_late_log, "%s", log.c_str());  // checked when the process ends
}
