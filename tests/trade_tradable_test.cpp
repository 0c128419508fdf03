// Tradable quantity against the simulated back end: the five block layouts, the quantity's
// truncation, the minimum answer lengths and the key/value families.
#include <gtest/gtest.h>

#include "support/trade_fixture.h"

using namespace molra::test;

using Tradable = TradeTest;

TEST_F(Tradable, QuantityIsTruncatedTowardZero) {
  Answer("19011", AnswerBlock(438, 1).Num<double>(430, 1234.9));
  EXPECT_EQ(SECMOLRA_TradableQty("1001", "SH", "600000", 1, 10.0, 0, kGdhSH), 1234);
}

// Answers short of each family's length: fault_session_test.
TEST_F(Tradable, RefusalReturnsTheCodeWithTheAnswersMessage) {
  Answer("19011", AnswerBlock(438, -4, Gbk("停牌")));
  EXPECT_EQ(SECMOLRA_TradableQty("1001", "SH", "600000", 1, 10.0, 0, kGdhSH), -4);
  EXPECT_EQ(Message(), Gbk("停牌"));
}

TEST_F(Tradable, OrdinaryBlockCarriesTwelveCharacterCode) {
  SECMOLRA_TradableQty("1001", "SH", "600000123456", 2, 10.25, 7, kGdhSH);
  const std::string b = Request("19011");
  ASSERT_EQ(b.size(), 105u);
  EXPECT_EQ(Text(b, 55, 3), std::string("SH\0", 3));
  EXPECT_EQ(Text(b, 58, 11), std::string(kGdhSH) + '\0');
  EXPECT_EQ(Text(b, 69, 12), "600000123456");
  EXPECT_EQ(Num<std::uint8_t>(b, 81), 2);
  EXPECT_EQ(Num<std::int32_t>(b, 82), 7);
  EXPECT_EQ(Num<double>(b, 86), 10.25);
}

TEST_F(Tradable, FamilyLayouts) {
  SECMOLRA_ETFTradableQty("1001", "SH", "510050", 29, kGdhSH);
  SECMOLRA_ZQHGTradableQty("1001", "SH", "204001", 4, kGdhSH);
  SECMOLRA_LOFTradableQty("1001", "SH", "501000", 41, 1.25, 3, kGdhSH);
  SECMOLRA_PHDJTradableQty("1001", "SH", "600000", 1, 9.5, 6, kGdhSH);
  const std::string etf = Request("19024"), repo = Request("19045"), lof = Request("19028"),
                    phdj = Request("19133");
  EXPECT_EQ(etf.size(), 88u);
  EXPECT_EQ(repo.size(), 86u);
  EXPECT_EQ(lof.size(), 91u);
  EXPECT_EQ(phdj.size(), 95u);
  for (const std::string* b : {&etf, &repo, &lof, &phdj}) {
    EXPECT_EQ(Text(*b, 55, 3), std::string("SH\0", 3));
    EXPECT_EQ(Text(*b, 58, 11), std::string(kGdhSH) + '\0');
  }
  EXPECT_EQ(Num<std::uint8_t>(etf, 81), 29);
  EXPECT_EQ(etf.find_first_not_of('\0', 82), std::string::npos);
  EXPECT_EQ(Num<std::uint8_t>(repo, 81), 4);
  EXPECT_EQ(Num<double>(lof, 82), 1.25);
  EXPECT_EQ(Num<std::uint8_t>(lof, 90), 3);
  EXPECT_EQ(Num<std::int32_t>(phdj, 82), 6);
  EXPECT_EQ(Num<double>(phdj, 86), 9.5);
}

TEST_F(Tradable, KeyValueFamiliesReadField684) {
  KELSIM(KelSim_SetKvAnswer)("19058", 1, "ok", "684=321");
  EXPECT_EQ(SECMOLRA_FXYWTradableQty("1001", "SH", "600000", 1, 8.0, 0, kGdhSH), 321);
  const std::string req = Request("19058");
  const std::string prefix =
      std::string("719=600000|571=") + kGdhSH + "|605=1001|599=SH|595=1|1013=0|682=";
  EXPECT_EQ(req.substr(0, prefix.size()), prefix) << req;
  EXPECT_NE(req.find("|1600=" + std::to_string(token_)), std::string::npos);

  KELSIM(KelSim_SetKvAnswer)("19105", -2, "not allowed", "");
  EXPECT_EQ(SECMOLRA_FJYTradableQty("1001", "SH", "600000", 11, 8.0, 0, kGdhSH), -2);
  EXPECT_EQ(Message(), "not allowed");
}
