// The simulated exchange's market in time: a replay file on the manual clock, the quote
// callback, a new day replaying the file, the seeded random walk, and clocks that refuse to
// be moved by hand.
#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <condition_variable>
#include <mutex>
#include <string>
#include <vector>

#include "support/sim_trading.h"

using namespace molra::test;

namespace {

// Out of time order on purpose (the SZ line): the file is replayed in time order.
constexpr const char* kDay =
    "time,exchange,code,last,volume,bid1,bid1_volume,ask1,ask1_volume,bid2,bid2_volume,ask2,ask2_"
    "volume\n"
    "09:30:00,SH,600000,10.00,1000,9.99,500,10.01,800,9.98,300,10.02,600\n"
    "09:30:03.500,SH,600000,10.02,1600,10.01,200,10.03,400,,,,\n"
    "09:31:00,SH,600000,9.95,2500,9.94,100,9.95,700,9.93,100,9.96,100\n"
    "09:30:03.500,SZ,000009,8.00,300,7.99,100,8.01,100,,,,\n";

std::mutex g_m;
std::condition_variable g_cv;
std::vector<KelSimQuote> g_quotes;
void OnQuote(const KelSimQuote* q, void*) {
  std::lock_guard<std::mutex> lock(g_m);
  g_quotes.push_back(*q);
  g_cv.notify_all();
}
std::vector<KelSimQuote> Quotes() {
  SIM_FN(KelSim_WaitIdle)();
  std::lock_guard<std::mutex> lock(g_m);
  return g_quotes;
}

class Replay : public SimTradingTest {
 protected:
  std::string Config() override {
    WriteFile(dir_ + "/day.csv", kDay);
    return "[backend]\ninclude_defaults = true\n[market]\nreplay = day.csv\nclock = manual\nstart "
           "= 09:30:00\n";
  }
  void TearDown() override {
    SIM_FN(KelSim_SetQuoteCallback)(nullptr, nullptr);
    SimTradingTest::TearDown();
  }
  static long long ClockMs() {
    kel::int64 ms = 0;
    SIM_FN(KelSim_Clock)(nullptr, &ms);
    return ms;
  }
  static constexpr long long k0930 = 9 * 3600000LL + 30 * 60000;
};

TEST_F(Replay, QuotesFollowTheManualClock) {
  SIM_FN(KelSim_SetQuoteCallback)(&OnQuote, nullptr);
  KelSimQuote q = Quote("600000");  // the day starts with the quotes of its start time
  EXPECT_EQ(ClockMs(), k0930);
  EXPECT_EQ(q.last, 10.00);
  EXPECT_EQ(q.volume, 1000);
  EXPECT_EQ(q.bid[1].price, 9.98);
  EXPECT_EQ(q.ask[1].volume, 600);
  EXPECT_EQ(q.prev_close, 10.00);              // the configured security keeps its previous close
  EXPECT_EQ(Quote("000009", "SZ").volume, 0);  // known from the file, not quoted yet

  ASSERT_TRUE(SIM_FN(KelSim_Advance)(3000));  // 09:30:03: nothing new yet
  EXPECT_TRUE(Quotes().empty());
  ASSERT_TRUE(SIM_FN(KelSim_Advance)(500));
  std::vector<KelSimQuote> seen = Quotes();
  ASSERT_EQ(seen.size(), 2u);
  EXPECT_EQ(std::string(seen[0].zqdm), "600000");
  EXPECT_EQ(std::string(seen[1].zqdm), "000009");  // of the same time, in the file's order
  EXPECT_EQ(seen[0].time_ms, k0930 + 3500);
  EXPECT_EQ(seen[0].last, 10.02);
  EXPECT_EQ(seen[0].bid[1].price, 0.0);  // an empty level is no level
  q = Quote("000009", "SZ");             // a security only the file knows
  EXPECT_EQ(q.last, 8.00);
  EXPECT_EQ(q.prev_close, 8.00);
  EXPECT_EQ(q.tick, 0.01);
  EXPECT_EQ(ClockMs(), k0930 + 3500);
  EXPECT_FALSE(SIM_FN(KelSim_Advance)(-1));
}

TEST_F(Replay, ALaterQuoteFillsARestingOrderAtItsTime) {
  std::string ans = Entrust("600000", 1, 500, 9.96);
  ASSERT_EQ(Code(ans), 1);
  EXPECT_EQ(ReadText(ans, 451), "093000");
  EXPECT_TRUE(Matches().empty());
  ASSERT_TRUE(SIM_FN(KelSim_Advance)(60000));  // 09:31:00: ask 9.95 x 700
  std::vector<PushRec> m = Matches();
  ASSERT_EQ(m.size(), 1u);
  EXPECT_EQ(m[0].Cjsl(), 500);
  EXPECT_EQ(m[0].Cjjg(), 9.96);
  EXPECT_EQ(ReadText(m[0].b, 143), "093100");  // CJSJ
  EXPECT_EQ(Quote("600000").ask[0].volume, 200);
}

TEST_F(Replay, PastMidnightANewDayReplaysTheFileAgain) {
  long long wth = Wth(Entrust("600000", 1, 100, 9.00));
  ASSERT_TRUE(SIM_FN(KelSim_Advance)(3600000));
  EXPECT_EQ(Quote("600000").last, 9.95);
  kel::int64 date = 0, next = 0;
  SIM_FN(KelSim_Clock)(&date, nullptr);
  ForgetPushes();
  ASSERT_TRUE(SIM_FN(KelSim_Advance)(14 * 3600000LL + 1800000));  // 13.5 h to midnight, then one
  SIM_FN(KelSim_Clock)(&next, nullptr);
  EXPECT_GT(next, date);
  std::vector<PushRec> pushes = Pushes();
  ASSERT_EQ(pushes.size(), 1u);  // the resting buy expired
  EXPECT_EQ(pushes[0].Cxwth(), wth);
  EXPECT_EQ(ClockMs(), k0930 + 3600000);
  KelSimQuote q = Quote("600000");
  EXPECT_EQ(q.prev_close, 9.95);
  EXPECT_EQ(q.last, 9.95);  // the whole file again, up to its last quote
  EXPECT_EQ(q.volume, 2500);
}

class RandomWalk : public SimTradingTest {
 protected:
  std::string Config() override {
    return "[backend]\ninclude_defaults = true\n[market]\nseed = 42\nclock = manual\nstep_ms = "
           "3000\n"
           "volatility = 0.5\n[security.SH.600000]\nprice = 10\n[security.SH.600036]\nprice = "
           "35\nvolatility = 0\n";
  }
  std::vector<double> Walk(int steps) {
    std::vector<double> out;
    for (int i = 0; i < steps; ++i) {
      SIM_FN(KelSim_Advance)(3000);
      out.push_back(Quote("600000").last);
    }
    return out;
  }
};

TEST_F(RandomWalk, MovesOnTheTickWithinTheLimitsAndRepeatsForTheSameSeed) {
  std::vector<double> first = Walk(200);
  KelSimQuote q = Quote("600000");
  EXPECT_EQ(q.bid[0].price, q.last);
  EXPECT_NEAR(q.ask[0].price - q.bid[0].price, 0.01, 1e-9);
  EXPECT_NEAR(q.ask[4].price - q.ask[0].price, 0.04, 1e-9);
  int moves = 0;
  for (std::size_t i = 0; i < first.size(); ++i) {
    EXPECT_NEAR(first[i] * 100, std::round(first[i] * 100), 1e-6) << i;
    EXPECT_GE(first[i], 9.00);
    EXPECT_LE(first[i], 11.00);
    if (i > 0 && first[i] != first[i - 1]) ++moves;
  }
  EXPECT_GT(moves, 100);
  EXPECT_EQ(Quote("600036").last, 35.0);  // volatility 0: it stays
  ASSERT_TRUE(SIM_FN(KelSim_LoadConfig)((dir_ + "/sim.ini").c_str()));
  EXPECT_EQ(Walk(200), first);
}

class SpeedClock : public Replay {
 protected:
  std::string Config() override {
    WriteFile(dir_ + "/day.csv", kDay);
    return "[backend]\ninclude_defaults = true\n[market]\nreplay = day.csv\nclock = 60\nstart = "
           "09:30:00\n";
  }
};

TEST_F(SpeedClock, ReplaysTheDayOnTheTransportsOwnThread) {
  SIM_FN(KelSim_SetQuoteCallback)(&OnQuote, nullptr);
  ASSERT_EQ(Code(Entrust("600000", 1, 500, 9.96)), 1);
  {
    // A minute of the day passes in a second of the wall clock.
    std::unique_lock<std::mutex> lock(g_m);
    ASSERT_TRUE(g_cv.wait_for(lock, std::chrono::seconds(10), [] {
      return !g_quotes.empty() && g_quotes.back().time_ms == k0930 + 60000;
    }));
  }
  std::vector<KelSimQuote> seen = Quotes();
  ASSERT_GE(seen.size(), 3u);
  for (std::size_t i = 1; i < seen.size(); ++i) EXPECT_LE(seen[i - 1].time_ms, seen[i].time_ms);
  std::vector<PushRec> m = Matches();  // the 09:31:00 quote reached the resting buy
  ASSERT_EQ(m.size(), 1u);
  EXPECT_EQ(m[0].Cjjg(), 9.96);
  EXPECT_FALSE(SIM_FN(KelSim_Advance)(1000));
}

using Clocks = SimTradingTest;

TEST_F(Clocks, OnlyAManualClockIsMovedByHand) {
  EXPECT_FALSE(SIM_FN(KelSim_Advance)(1000));  // the built-in back end's clock is realtime
  std::string ini = dir_ + "/speed.ini";
  WriteFile(ini, "[backend]\ninclude_defaults = true\n[market]\nclock = 60\n");
  ASSERT_TRUE(SIM_FN(KelSim_LoadConfig)(ini.c_str()));
  EXPECT_FALSE(SIM_FN(KelSim_Advance)(1000));
}

}  // namespace
