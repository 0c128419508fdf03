// Breaks and recoveries of each of the four connections of a customer's set, in many
// orders and repeated, while a host thread keeps trading. Every call either succeeds or
// fails with one of the connection layer's documented codes and messages; the host hears
// one break per outage and one recovery when the last connection is back; every request
// written gets exactly one reply; no session is left open; trading works afterwards.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <map>
#include <mutex>
#include <random>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "support/host_callbacks.h"
#include "support/json_fields.h"
#include "support/trade_fixture.h"

using namespace molra::test;

namespace {

const char* const kAddrs[4] = {"127.0.0.1:9101", "127.0.0.1:9102", "127.0.0.1:9103",
                               "127.0.0.1:9104"};

// The trader's buys use up the customer's funds at a rate set by the build's speed, so the
// quantity asked for is a sell of the position, which buys leave alone.
constexpr std::int32_t kSell = 2;
constexpr std::int64_t kHeld = 10000;

struct HostEvent {
  std::string khh;
  int event;
};
std::mutex g_events_mutex;
std::vector<HostEvent> g_events;
void OnConnEvent(const char* khh, const char*, std::int32_t event, std::int32_t) {
  std::lock_guard<std::mutex> lock(g_events_mutex);
  g_events.push_back({khh ? khh : "(null)", event});
}

// One step: connection index and whether it breaks (else it recovers).
struct Step {
  int conn;
  bool down;
};
using Sequence = std::vector<Step>;

// Every connection broken and restored in a shuffled order, `rounds` times over; a break
// of a broken connection and a recovery of an up one never occur.
Sequence Shuffled(std::mt19937& rng, int rounds) {
  Sequence s;
  for (int r = 0; r < rounds; ++r) {
    std::vector<Step> todo;
    for (int c = 0; c < 4; ++c) todo.push_back({c, true});
    std::vector<int> down;
    while (!todo.empty() || !down.empty()) {
      const bool restore = !down.empty() && (todo.empty() || rng() % 2 == 0);
      if (restore) {
        const std::size_t i = rng() % down.size();
        s.push_back({down[i], false});
        down.erase(down.begin() + static_cast<long>(i));
      } else {
        const std::size_t i = rng() % todo.size();
        s.push_back(todo[i]);
        down.push_back(todo[i].conn);
        todo.erase(todo.begin() + static_cast<long>(i));
      }
    }
  }
  return s;
}

// The host events a sequence must produce: a break when the first connection goes down,
// 0 when the last comes back.
std::vector<int> ExpectedEvents(const Sequence& s) {
  std::vector<int> events;
  int broken = 0;
  for (const Step& st : s) {
    if (st.down && ++broken == 1) events.push_back(10 + st.conn);
    if (!st.down && --broken == 0) events.push_back(0);
  }
  return events;
}

class Breaks : public TradeTest {
 protected:
  void SetUp() override {
    TradeTest::SetUp();
    {
      std::lock_guard<std::mutex> lock(g_events_mutex);
      g_events.clear();
    }
    SECMOLRA_SetConnEventCallback(OnConnEvent);
    for (int i = 0; i < 4; ++i) conns_[i] = KELSIM(KelSim_ConnectionByAddr)(kAddrs[i], 0);
    for (auto c : conns_) ASSERT_NE(c, 0);
  }

  // Runs the sequence while a host thread trades; returns the outcomes seen.
  std::map<std::pair<std::int64_t, std::string>, int> RunDuringTraffic(const Sequence& seq) {
    std::atomic<bool> stop{false};
    std::map<std::pair<std::int64_t, std::string>, int> outcomes;
    std::set<std::int64_t>& sent = sent_;
    std::thread trader([&] {
      for (int i = 0; !stop.load() || i < 20; ++i) {
        std::int64_t r =
            i % 2 == 0
                ? SECMOLRA_TradableQty("1001", "SH", "600000", kSell, 10.0, 0, kGdhSH)
                : SECMOLRA_OrderEntrust_ASync("1001", "SH", "600000", 1, 100, 9.0, 0, kGdhSH, 0);
        std::string msg;
        if (r > 0) {
          if (i % 2 == 1) sent.insert(r);
          ++outcomes[{1, ""}];
        } else {
          LastError(&msg);
          ++outcomes[{r, msg}];
        }
      }
    });
    for (const Step& st : seq) {
      if (st.down)
        KELSIM(KelSim_BreakConnection)(conns_[st.conn], 10 + st.conn);
      else
        KELSIM(KelSim_RestoreConnection)(conns_[st.conn]);
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    stop = true;
    trader.join();
    KELSIM(KelSim_WaitIdle)();
    return outcomes;
  }

  std::vector<int> HostEvents() {
    std::lock_guard<std::mutex> lock(g_events_mutex);
    std::vector<int> e;
    for (const HostEvent& h : g_events) {
      EXPECT_EQ(h.khh, "1001");
      e.push_back(h.event);
    }
    g_events.clear();
    return e;
  }

  std::int64_t conns_[4] = {};
  std::set<std::int64_t> sent_;
};

// Failures a call may meet while connections come and go.
const std::set<std::pair<std::int64_t, std::string>> kAllowed = {
    {1, ""},
    {-202, Gbk("未连接，无法发起会话")},
    {-204, Gbk("发送请求失败")},
    {0, Gbk("认证管理连接已失效")},
    {0, Gbk("交易、订阅连接已失效")},
};

TEST_F(Breaks, EveryOrderOfBreaksAndRecoveriesDuringTraffic) {
  HostCallbacks host;
  std::mt19937 rng(20240601);
  std::vector<Sequence> sequences = {
      {{0, true}, {0, false}},
      {{1, true}, {1, false}, {1, true}, {1, false}, {1, true}, {1, false}},
      {{2, true}, {3, true}, {2, false}, {3, false}},
      {{3, true}, {0, true}, {1, true}, {2, true}, {2, false}, {1, false}, {0, false}, {3, false}},
  };
  for (int i = 0; i < 12; ++i) sequences.push_back(Shuffled(rng, 1 + i % 3));
  int steps = 0;
  for (const Sequence& seq : sequences) {
    steps += static_cast<int>(seq.size());
    for (const auto& [outcome, n] : RunDuringTraffic(seq)) {
      EXPECT_TRUE(kAllowed.count(outcome)) << outcome.first << " " << outcome.second << " x" << n;
    }
    EXPECT_EQ(HostEvents(), ExpectedEvents(seq));
    EXPECT_EQ(SECMOLRA_TradableQty("1001", "SH", "600000", kSell, 10.0, 0, kGdhSH), kHeld)
        << Message();
  }
  EXPECT_GT(steps, 100);
  // Every request written was answered once, to the function callback, with its number.
  std::map<std::int64_t, int> replies;
  for (const Delivery& d : host.Functions()) ++replies[JsonNumber(d.json, "KFSBDBH")];
  EXPECT_EQ(replies.size(), sent_.size());
  for (std::int64_t n : sent_) EXPECT_EQ(replies[n], 1) << n;
  // The customer is bound again to every connection that recovered.
  for (int i = 1; i < 4; ++i) {
    char bound[32] = {};
    KELSIM(KelSim_BoundCustomer)(conns_[i], bound, sizeof bound);
    EXPECT_STREQ(bound, "1001") << kAddrs[i];
  }
}

TEST_F(Breaks, ManagementDownRefusesEveryCallUntilItRecovers) {
  KELSIM(KelSim_BreakConnection)(conns_[0], 10);
  KELSIM(KelSim_WaitIdle)();
  const std::int32_t open = KELSIM(KelSim_OpenSessions)();
  EXPECT_EQ(SECMOLRA_OrderEntrust("1001", "SH", "600000", 1, 100, 10.0, 0, kGdhSH), 0);
  EXPECT_EQ(Message(), Gbk("认证管理连接已失效"));
  std::vector<FundRecord> funds;
  EXPECT_EQ(SECMOLRA_QueryFundInfo("1001", funds), 0);
  EXPECT_EQ(Message(), Gbk("认证管理连接已失效"));
  EXPECT_EQ(KELSIM(KelSim_OpenSessions)(), open);
  KELSIM(KelSim_RestoreConnection)(conns_[0]);
  KELSIM(KelSim_WaitIdle)();
  EXPECT_GT(SECMOLRA_OrderEntrust("1001", "SH", "600000", 1, 100, 10.0, 0, kGdhSH), 0) << Message();
  EXPECT_EQ(HostEvents(), (std::vector<int>{10, 0}));
}

}  // namespace
