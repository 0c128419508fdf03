// The plain-array adapters: what is copied for each capacity, the full count returned, and
// the caller's array left alone on an error.
#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "support/login_fixture.h"

using namespace molra::test;

namespace {

class Adapter : public LoginTest {
 protected:
  void SetUp() override {
    StartDefault();
    ASSERT_GT(SECMOLRA_TradeLogin("T", "1001", "111111"), 0);
  }
  template <typename R, std::size_t N>
  static void Fill(R (&recs)[N]) {
    std::memset(recs, 0x5a, sizeof recs);
  }
  template <typename R>
  static bool Untouched(const R& r) {
    const unsigned char* p = reinterpret_cast<const unsigned char*>(&r);
    for (std::size_t i = 0; i < sizeof r; ++i)
      if (p[i] != 0x5a) return false;
    return true;
  }
};

const char* kFiveAccounts =
    "605=1001|571=A0\n605=1001|571=A1\n605=1001|571=A2\n605=1001|571=A3\n605=1001|571=A4";

}  // namespace

// Records 0 .. min(cap, count) - 1 are copied, the rest of the array is left alone, and the
// full count is returned whatever the capacity.
TEST_F(Adapter, EachCapacityCopiesWhatFitsAndReturnsTheFullCount) {
  LOGIN_SIM_FN(KelSim_SetKvAnswer)("D00734", 0, "", kFiveAccounts);
  std::vector<AccountRecord> list;
  ASSERT_EQ(SECMOLRA_QueryAccInfo("1001", list), 5);
  for (const std::int32_t cap : {2, 0, -3, 8}) {
    SCOPED_TRACE(cap);
    AccountRecord recs[8];
    Fill(recs);
    EXPECT_EQ(PYSECMOLRA_QueryAccInfo("1001", recs, cap), 5);
    const int copied = cap < 0 ? 0 : std::min(cap, 5);
    for (int i = 0; i < copied; ++i) EXPECT_EQ(std::memcmp(&recs[i], &list[i], sizeof recs[i]), 0);
    for (int i = copied; i < 8; ++i) EXPECT_TRUE(Untouched(recs[i])) << i;
  }
  EXPECT_EQ(PYSECMOLRA_QueryAccInfo("1001", nullptr, 4), 5);
}

TEST_F(Adapter, FailingQueryLeavesTheArrayAsItWas) {
  ASSERT_EQ(SECMOLRA_TradeLogout("1001"), 1);
  OrderRecord orders[2];
  Fill(orders);
  EXPECT_EQ(PYSECMOLRA_QueryOrders("1001", 0, 0, 10, 0, "", "", 0, orders, 2), -203);
  EXPECT_TRUE(Untouched(orders[0]));
  MatchRecord matchs[2];
  Fill(matchs);
  EXPECT_EQ(PYSECMOLRA_QueryMatchs("", 0, 0, 10, 0, "", "", 0, matchs, 2), -221);
  EXPECT_TRUE(Untouched(matchs[0]));
  PSQYRecord psqy[2];
  Fill(psqy);
  EXPECT_EQ(PYSECMOLRA_QueryPSQY("1001", "SH", "", psqy, 2), -203);
  EXPECT_TRUE(Untouched(psqy[1]));
}

TEST_F(Adapter, ETFShareAdapterRunsTheWorkerAfterItsOwnCheck) {
  LOGIN_SIM_FN(KelSim_SetKvAnswer)
  ("D00754", 0, "", "9225=510050|9218=1\n9225=510050|9218=2\n9225=510050|9218=3");
  ETFShareRecord recs[2];
  Fill(recs);
  Sim::Get().ClearCallLog();
  EXPECT_EQ(PYSECMOLRA_QueryETFShare("1001", "510050", recs, 2), 3);
  EXPECT_EQ(V(recs[1].FESL), 2);
  EXPECT_EQ(LastRequest("D00754"), "605=1001|9225=510050");
  // Its own check runs before any request.
  Sim::Get().ClearCallLog();
  EXPECT_EQ(PYSECMOLRA_QueryETFShare("1001", "", recs, 2), -221);
  EXPECT_EQ(Sim::Get().CallLog().find("Kel_AllocateSession("), std::string::npos);
}

TEST_F(Adapter, FundAndNodeListAdapters) {
  FundRecord fund[1];
  Fill(fund);
  EXPECT_EQ(PYSECMOLRA_QueryFundInfo("1001", fund, 1), 1);
  EXPECT_STREQ(fund[0].KHH, "1001");
  EXPECT_EQ(V(fund[0].Amount1), V(fund[0].Amount2));
  CusNodeInfo nodes[1];
  Fill(nodes);
  EXPECT_EQ(PYSECMOLRA_QueryCusNodeinfo("T", "1002", nodes, 1), 2);
  EXPECT_EQ(V(nodes[0].SystemType), 4);
  EXPECT_EQ(V(nodes[0].NodeID), 1);
  Fill(nodes);
  EXPECT_EQ(PYSECMOLRA_QueryCusNodeinfo("T", nullptr, nodes, 1), -221);
  EXPECT_TRUE(Untouched(nodes[0]));
}
