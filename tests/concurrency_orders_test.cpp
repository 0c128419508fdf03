// Several host threads place and withdraw orders for several customers while replies,
// confirmations and match reports arrive on the transport's threads and connection events
// come and go. Every reply and every push is delivered exactly once, to the right callback
// and for the right customer, counted by request number (KFSBDBH); the run is bounded in
// time (no deadlock). Run under ThreadSanitizer too (label "concurrency").
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "support/json_fields.h"
#include "support/trade_fixture.h"

using namespace molra::test;

namespace {

struct Customer {
  const char* khh;
  const char* pwd;
  int node;  // 0: the only trade node
  const char* gdh;
};
const Customer kCustomers[] = {{"1001", "111111", 0, "A000001001"},
                               {"1002", "222222", 1, "A000001002"},
                               {"1003", "333333", 0, "A000001003"}};

// What arrived, by request number: replies (function callback, type 14) and pushes
// (message callback) by type, with the customer each named.
struct Seen {
  std::mutex mutex;
  std::map<std::int64_t, int> replies;
  std::map<std::tuple<std::int64_t, int>, int> pushes;  // (KFSBDBH, type)
  std::map<std::int64_t, std::string> push_khh;
  int wrong_callback = 0;
};
Seen* g_seen = nullptr;

void OnFunction(const char*, const char* json, std::int32_t type) {
  std::lock_guard<std::mutex> lock(g_seen->mutex);
  if (type != 14) ++g_seen->wrong_callback;
  ++g_seen->replies[JsonNumber(json, "KFSBDBH")];
}
void OnMessage(const char*, const char* json, std::int32_t type) {
  std::lock_guard<std::mutex> lock(g_seen->mutex);
  if (type < 8 || type > 11) ++g_seen->wrong_callback;
  const std::int64_t n = JsonNumber(json, "KFSBDBH");
  ++g_seen->pushes[{n, type}];
  g_seen->push_khh[n] = JsonMember(json, "KHH");
}

class Concurrency : public TradeTest {
 protected:
  void SetUp() override {
    TradeTest::SetUp();  // 1001 logged in
    for (const Customer& c : kCustomers) {
      CusLoginInfo info{};
      std::strcpy(info.KHH, c.khh);
      std::strcpy(info.Password, c.pwd);
      info.NodeID = c.node;
      ASSERT_GT(SECMOLRA_TradeLoginEx("SIM", &info), 0) << c.khh << " " << Message();
    }
    KELSIM(KelSim_WaitIdle)();
    g_seen = &seen_;
    SECMOLRA_SetFuncCallback(OnFunction);
    SECMOLRA_SetMsgCallback(OnMessage);
  }
  void TearDown() override {
    TradeTest::TearDown();
    g_seen = nullptr;
  }
  Seen seen_;
};

// Per thread: orders that match at once (confirmation and match report), orders that rest
// and are withdrawn by request number (confirmation, then the withdrawal's reply and
// confirmation), and synchronous tradable-quantity calls in between.
struct Plan {
  std::vector<std::int64_t> matched, resting, withdrawals;
  int failures = 0;
};

void Trade(const Customer& c, std::int64_t base, int rounds, Plan& plan) {
  for (int i = 0; i < rounds; ++i) {
    const std::int64_t buy = base + 3 * i + 1, rest = base + 3 * i + 2, wd = base + 3 * i + 3;
    if (SECMOLRA_OrderEntrust_ASync(c.khh, "SH", "600000", 1, 100, 10.0, 0, c.gdh, buy) == buy) {
      plan.matched.push_back(buy);
    } else {
      ++plan.failures;
    }
    if (SECMOLRA_OrderEntrust_ASync(c.khh, "SH", "600000", 1, 100, 9.5, 0, c.gdh, rest) == rest) {
      plan.resting.push_back(rest);
      if (SECMOLRA_OrderWithdrawByKFSBDBH_ASync(c.khh, "SH", rest, wd) == wd)
        plan.withdrawals.push_back(wd);
      else
        ++plan.failures;
    } else {
      ++plan.failures;
    }
    if (SECMOLRA_TradableQty(c.khh, "SH", "600000", 1, 10.0, 0, c.gdh) < 0) ++plan.failures;
  }
}

TEST_F(Concurrency, EveryReplyAndPushExactlyOnceWhileEventsArrive) {
  constexpr int kThreadsPerCustomer = 2, kRounds = 60;
  const auto start = std::chrono::steady_clock::now();
  std::vector<Plan> plans(std::size(kCustomers) * kThreadsPerCustomer);
  std::vector<std::thread> hosts;
  for (std::size_t t = 0; t < plans.size(); ++t) {
    const Customer& c = kCustomers[t % std::size(kCustomers)];
    hosts.emplace_back(Trade, std::cref(c), static_cast<std::int64_t>(t + 1) * 100000, kRounds,
                       std::ref(plans[t]));
  }
  // Connection events on the transport's event thread: a repeated break code and recovery
  // on the query connections, which the traffic above does not use.
  std::atomic<bool> stop{false};
  std::thread events([&] {
    const std::int64_t q = KELSIM(KelSim_ConnectionByAddr)("127.0.0.1:9103", 0);
    while (!stop) {
      KELSIM(KelSim_RaiseConnEvent)(q, 6);
      KELSIM(KelSim_RaiseConnEvent)(q, 0);
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
  });
  for (auto& h : hosts) h.join();
  stop = true;
  events.join();
  KELSIM(KelSim_WaitIdle)();
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(60)) << "bounded run";

  std::lock_guard<std::mutex> lock(seen_.mutex);
  EXPECT_EQ(seen_.wrong_callback, 0);
  std::size_t sent = 0, pushes = 0;
  for (std::size_t t = 0; t < plans.size(); ++t) {
    const Plan& p = plans[t];
    const std::string khh = kCustomers[t % std::size(kCustomers)].khh;
    EXPECT_EQ(p.failures, 0) << "thread " << t;
    for (std::int64_t n : p.matched) {
      EXPECT_EQ(seen_.replies[n], 1) << n;
      EXPECT_EQ((seen_.pushes[{n, 8}]), 1) << n;
      EXPECT_EQ((seen_.pushes[{n, 10}]), 1) << n;
      EXPECT_EQ(seen_.push_khh[n], khh) << n;
      pushes += 2;
    }
    for (std::int64_t n : p.resting) {
      EXPECT_EQ(seen_.replies[n], 1) << n;
      EXPECT_EQ((seen_.pushes[{n, 8}]), 1) << n;
      EXPECT_EQ((seen_.pushes[{n, 10}]), 0) << n;
      ++pushes;
    }
    for (std::int64_t n : p.withdrawals) {
      EXPECT_EQ(seen_.replies[n], 1) << n;
      EXPECT_EQ((seen_.pushes[{n, 9}]), 1) << n;
      EXPECT_EQ(seen_.push_khh[n], khh) << n;
      ++pushes;
    }
    sent += p.matched.size() + p.resting.size() + p.withdrawals.size();
  }
  EXPECT_EQ(sent, plans.size() * kRounds * 3);
  EXPECT_EQ(seen_.replies.size(), sent) << "no reply for a number never sent";
  std::size_t total_pushes = 0;
  for (const auto& [key, n] : seen_.pushes) total_pushes += static_cast<std::size_t>(n);
  EXPECT_EQ(total_pushes, pushes);
  EXPECT_EQ(KELSIM(KelSim_OpenSessions)(), 0);
}

// Logins, logouts and queries of different customers on many threads at once.
TEST_F(Concurrency, LoginsQueriesAndLogoutsInParallel) {
  std::atomic<int> failures{0};
  std::vector<std::thread> hosts;
  for (int t = 0; t < 4; ++t) {
    hosts.emplace_back([&, t] {
      const Customer& c = kCustomers[t % std::size(kCustomers)];
      for (int i = 0; i < 15; ++i) {
        std::vector<FundRecord> funds;
        std::vector<PositionRecord> positions;
        if (SECMOLRA_QueryFundInfo(c.khh, funds) < 1) ++failures;
        if (SECMOLRA_QueryPositions(c.khh, 0, 0, 0, "", "", "", 0, positions) < 0) ++failures;
        if (SECMOLRA_GetTradeDate() <= 0) ++failures;
      }
    });
  }
  for (auto& h : hosts) h.join();
  EXPECT_EQ(failures.load(), 0) << Message();
  EXPECT_EQ(KELSIM(KelSim_OpenSessions)(), 0);
}

}  // namespace
