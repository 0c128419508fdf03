// Replies and pushes that arrive after SECMOLRA_Exit has begun: requests still in flight
// when the host exits, a host callback still running while another thread exits, pushes
// sent after the exit. (Host threads must have finished their own calls before one of them
// calls SECMOLRA_Exit: see "Caller obligations" in README.md.) Nothing crashes, nothing is delivered twice, every session is
// released, and calls after the exit fail with the documented code.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "support/json_fields.h"
#include "support/trade_fixture.h"

using namespace molra::test;

namespace {

std::mutex g_mutex;
std::map<std::int64_t, int> g_replies;  // KFSBDBH -> deliveries
std::atomic<int> g_pushes{0};
std::atomic<int> g_callback_sleep_ms{0};
std::atomic<bool> g_in_callback{false};

void OnFunction(const char*, const char* json, std::int32_t) {
  g_in_callback = true;
  if (int ms = g_callback_sleep_ms.exchange(0); ms > 0) std::this_thread::sleep_for(std::chrono::milliseconds(ms));
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
  void TearDown() override {
    SECMOLRA_SetFuncCallback(nullptr);
    SECMOLRA_SetMsgCallback(nullptr);
    TradeTest::TearDown();
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
  EXPECT_EQ(Message(), "客户未登录");
  EXPECT_EQ(SendOrder(9), -203);
  EXPECT_EQ(KELSIM(KelSim_OpenSessions)(), 0);
  EXPECT_TRUE(SECMOLRA_Exit()) << "a second exit does nothing";
}

}  // namespace
