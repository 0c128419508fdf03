// ETF basket entrust against the simulated back end's ETFs: 510050 (up to date, three
// constituents), 510300 (information of 20200101), 159919 on SZ (no subscription).
#include <gtest/gtest.h>

#include <algorithm>

#include "support/trade_fixture.h"

using namespace molra::test;

namespace {

class Basket : public TradeTest {
 protected:
  static long Count(const char* call) {
    const std::vector<std::string> calls = Calls();
    return std::count(calls.begin(), calls.end(), call);
  }
};

}  // namespace

TEST_F(Basket, OneBuyOrderPerConstituentForTheUnits) {
  EXPECT_EQ(SECMOLRA_ETFBasketEntrust("1001", "SH", "510050", kGdhSH, 2, 60.0, 0), 3) << Message();
  EXPECT_EQ(Count("Kel_SetStructData"), 3);
  const std::string last = Request("19001");  // 601318: 100 per unit
  EXPECT_EQ(Text(last, 69, 9), std::string("601318\0\0\0", 9));
  EXPECT_EQ(Num<std::uint8_t>(last, 78), 1);
  EXPECT_EQ(Num<std::int32_t>(last, 79), 200);
  EXPECT_EQ(Num<double>(last, 83), 60.0);
  EXPECT_NE(Request("D00088").find("719=510050"), std::string::npos);
}

TEST_F(Basket, StaleInformationIsRefusedWithBothDates) {
  KELSIM(KelSim_SetTradeDate)(20240105);
  EXPECT_EQ(SECMOLRA_ETFBasketEntrust("1001", "SH", "510300", kGdhSH, 1, 5.0, 0), -222);
  EXPECT_EQ(Message(), Gbk("510300基本信息未更新[cur:20240105 etf:20200101]，禁止交易"));
  EXPECT_EQ(Request("D00088"), "(none)");  // the constituents are not asked for
  EXPECT_EQ(Count("Kel_SetStructData"), 0);
}

TEST_F(Basket, NoSubscriptionRightIsRefusedBeforeTheDateCheck) {
  EXPECT_EQ(SECMOLRA_ETFBasketEntrust("1001", "SZ", "159919", "0000001001", 1, 5.0, 0), -222);
  EXPECT_EQ(Message(), Gbk("无159919申购资格，禁止交易"));
  EXPECT_NE(Request("A00066"), "(none)");  // the trade date was fetched first
}

TEST_F(Basket, UnknownEtfReportsTheBasicInformationQuery) {
  EXPECT_EQ(SECMOLRA_ETFBasketEntrust("1001", "SH", "519999", kGdhSH, 1, 5.0, 0), -112);
  EXPECT_EQ(Message().rfind(Gbk("查询ETF_JBXX失败: "), 0), 0u) << Message();
}

TEST_F(Basket, ConstituentQueryFailureNamesTheEtf) {
  KELSIM(KelSim_SetKvAnswer)("D00088", -5, "db down", "");
  EXPECT_EQ(SECMOLRA_ETFBasketEntrust("1001", "SH", "510050", kGdhSH, 1, 60.0, 0), -5);
  EXPECT_EQ(Message(), Gbk("查询510050成分股信息失败:db down"));
}

TEST_F(Basket, ArgumentsAreChecked) {
  EXPECT_EQ(SECMOLRA_ETFBasketEntrust("1001", "SH", "510050", kGdhSH, 0, 60.0, 0), -221);
  EXPECT_EQ(Message(), Gbk("非法参数"));
  EXPECT_EQ(SECMOLRA_ETFBasketEntrust("1001", "SH", "", kGdhSH, 1, 60.0, 0), -221);
  EXPECT_EQ(Message(), Gbk("客户号、交易所、证券代码、股东号不能为空"));
  EXPECT_EQ(Sim::Get().CallLog(), "");
}
