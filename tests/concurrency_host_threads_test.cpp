// Host threads that fail and log in at the same time: each thread reads its own error, and
// a customer logged in by two threads at once is subscribed once.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "comm/kel_api.h"
#include "core/errors.h"
#include "core/text.h"
#include "support/host_callbacks.h"
#include "support/login_fixture.h"
#include "support/trade_fixture.h"

using namespace molra::test;

namespace {

// Starts every thread of `bodies` at the same moment and joins them.
void RunTogether(const std::vector<std::function<void()>>& bodies) {
  std::atomic<std::size_t> ready{0};
  std::vector<std::thread> threads;
  for (const auto& body : bodies) {
    threads.emplace_back([&ready, &bodies, &body] {
      ++ready;
      while (ready.load() < bodies.size()) std::this_thread::yield();
      body();
    });
  }
  for (std::thread& t : threads) t.join();
}

}  // namespace

// Two threads meet here, once per round.
class Rendezvous {
 public:
  void Wait() {
    const int round = round_.load();
    if (arrived_.fetch_add(1) == 1) {
      arrived_ = 0;
      ++round_;
      return;
    }
    while (round_.load() == round) std::this_thread::yield();
  }

 private:
  std::atomic<int> arrived_{0};
  std::atomic<int> round_{0};
};

// One thread fails through a staged connection failure (a customer without a connection
// set), the other through a failed session; their codes and messages differ. In each of
// 1,000 rounds both fail at once, and both read once both have failed.
TEST_F(TradeTest, ThreadsFailingAtOnceEachReadTheirOwnError) {
  KELSIM(KelSim_FailAllocSession)(-1);
  struct Failure {
    const char* khh;
    std::int64_t code;
    std::string message;
  };
  const Failure kFailures[] = {{"1001", -202, Gbk("发起会话失败")},
                               {"7777", 0, Gbk("客户未连接登录，无法获取连接")}};
  constexpr int kRounds = 1000;
  std::atomic<int> foreign{0};
  Rendezvous rendezvous;
  std::vector<std::thread> threads;
  for (const Failure& f : kFailures) {
    threads.emplace_back([&f, &foreign, &rendezvous] {
      FundRecord rows[2];
      char msg[256];
      for (int i = 0; i < kRounds; ++i) {
        rendezvous.Wait();
        PYSECMOLRA_QueryFundInfo(f.khh, rows, 2);
        rendezvous.Wait();
        const std::int64_t code = SECMOLRA_GetThreadLastError(msg, sizeof msg);
        if (code != f.code || f.message != msg) ++foreign;
      }
    });
  }
  for (std::thread& t : threads) t.join();
  KELSIM(KelSim_FailAllocSession)(0);
  EXPECT_EQ(foreign.load(), 0) << "reads of another thread's error";
  // The process-wide record holds whichever failure came last.
  std::string msg;
  const std::int64_t code = LastError(&msg);
  EXPECT_TRUE((code == -202 && msg == Gbk("发起会话失败")) ||
              (code == 0 && msg == kFailures[1].message))
      << code << " " << msg;
}

// The first subscription request of a login waits there (at most 200 ms) for the other
// login's: two logins that both passed the "already subscribed" check then both subscribe.
std::atomic<int> g_subscription_requests{0};
decltype(kel::api.Kel_SetSubsCondi) g_set_subs_condi = nullptr;

bool MeetingSetSubsCondi(kel::int64 session, const char* condition) {
  if (++g_subscription_requests <= 2) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(200);
    while (g_subscription_requests.load() < 2 && std::chrono::steady_clock::now() < deadline) {
      std::this_thread::yield();
    }
  }
  return g_set_subs_condi(session, condition);
}

constexpr std::int64_t kPushedWth = 987654321;

// While two threads log the customer in, a third places orders for it (reading its login).
TEST_F(LoginTest, TwoThreadsLoggingOneCustomerInAtOnceSubscribeItOnce) {
  StartDefault();
  HostCallbacks host;
  g_set_subs_condi = kel::api.Kel_SetSubsCondi;
  kel::api.Kel_SetSubsCondi = MeetingSetSubsCondi;
  struct Customer {
    const char* khh;
    const char* password;
    std::int32_t node;  // 1002 has two nodes: it names one
  };
  const Customer kCustomers[] = {
      {"1001", "111111", -1}, {"1002", "222222", 1}, {"1003", "333333", -1}};
  for (const Customer& c : kCustomers) {
    g_subscription_requests = 0;
    std::atomic<int> logged_in{0};
    auto login = [&c, &logged_in] {
      CusLoginInfo info{};
      molra::CopyField(info.KHH, c.khh);
      molra::CopyField(info.Password, c.password);
      info.NodeID = c.node;
      if (SECMOLRA_TradeLoginEx("T", &info) > 0) ++logged_in;
    };
    std::atomic<bool> stop{false};
    std::thread orders([&c, &stop] {
      while (!stop) {
        SECMOLRA_OrderEntrust(c.khh, "SH", "600000", 1, 100, 10.0, 0, "A000001001");
        std::this_thread::yield();
      }
    });
    RunTogether({login, login});
    stop = true;
    orders.join();
    EXPECT_EQ(logged_in.load(), 2) << c.khh;
    LOGIN_SIM_FN(KelSim_WaitIdle)();
    EXPECT_EQ(LOGIN_SIM_FN(KelSim_SubscriptionCount)(c.khh), 2) << c.khh;
    char record[402] = {};
    std::memcpy(record, c.khh, 4);
    const std::int64_t wth = kPushedWth;  // unlike the orders' numbers
    std::memcpy(record + 44, &wth, sizeof wth);
    LOGIN_SIM_FN(KelSim_PushRecord)(c.khh, 0, record, sizeof record);
    LOGIN_SIM_FN(KelSim_WaitIdle)();
  }
  kel::api.Kel_SetSubsCondi = g_set_subs_condi;
  std::size_t delivered = 0;
  for (const Delivery& d : host.Messages()) {
    delivered += d.json.find("\"WTH\":" + std::to_string(kPushedWth) + ",") != std::string::npos;
  }
  EXPECT_EQ(delivered, 3u) << "one confirmation each";
  EXPECT_EQ(Count(Log(), "SubscribeTradeMsg qr subscribe success"), 3u);
}
