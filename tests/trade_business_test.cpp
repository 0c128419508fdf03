// ETF and other business entrusts against the simulated back end: their blocks, where the
// request number goes, the function code chosen by category, the key/value field order.
#include <gtest/gtest.h>

#include "support/trade_fixture.h"

using namespace molra::test;

using Business = TradeTest;

TEST_F(Business, EtfCategoryOneTouchesNoTransport) {
  EXPECT_EQ(SECMOLRA_ETFEntrust("1001", "SH", "510050", 1, 1, kGdhSH, nullptr), -222);
  EXPECT_EQ(Message(), Gbk("仅支持[JYLB_ETFG,JYLB_ETFSH]"));
  EXPECT_EQ(Sim::Get().CallLog(), "");
}

TEST_F(Business, EtfBlockPutsTheAccountBeforeTheExchange) {
  Answer("19013", AnswerBlock(472, 1).Num<std::int64_t>(443, 3));
  EXPECT_EQ(SECMOLRA_ETFEntrust("1001", "SH", "510050", 29, 2, kGdhSH, nullptr), 3);
  const std::string b = Request("19013");
  ASSERT_EQ(b.size(), 163u);
  EXPECT_EQ(Num<std::int16_t>(b, 0), 19013);
  EXPECT_EQ(Text(b, 55, 11), std::string(kGdhSH) + '\0');
  EXPECT_EQ(Text(b, 66, 3), std::string("SH\0", 3));
  EXPECT_EQ(Text(b, 69, 9), std::string("510050\0\0\0", 9));
  EXPECT_EQ(Num<std::int32_t>(b, 87), 2);
  EXPECT_EQ(Num<std::uint8_t>(b, 91), 29);
  EXPECT_EQ(Text(b, 142, 21), std::string(21, '\0'));  // no step given
}

TEST_F(Business, EtfRedemptionStepAndRequestNumber) {
  const std::string step(21, 's');
  EXPECT_EQ(SECMOLRA_ETFEntrust_ASync("1001", "SH", "510050", 30, 1, kGdhSH, step.c_str(), 66), 66);
  const std::string b = Request("19014");
  EXPECT_EQ(Num<std::int16_t>(b, 0), 19014);
  EXPECT_EQ(CText(b, 125), "66");
  EXPECT_EQ(Text(b, 142, 21), step);  // full field, no NUL
}

TEST_F(Business, BlockBusinessesShareTheEntrustHeadWithTheirOwnLengths) {
  struct Case {
    const char* func;
    std::size_t len;
    std::size_t number_at;
    std::uint8_t byte91;
  };
  EXPECT_GT(SECMOLRA_ZQHGEntrust_ASync("1001", "SH", "204001", 4, 10, 2.5, 7, kGdhSH, 101), 0);
  EXPECT_GT(SECMOLRA_ZQHGCrk_ASync("1001", "SH", "204001", 37, 10, kGdhSH, 102), 0);
  EXPECT_GT(SECMOLRA_Lof_ASync("1001", "SH", "501000", 41, 10, 1.5, 'B', kGdhSH, 103), 0);
  EXPECT_GT(SECMOLRA_PHDJEntrust_ASync("1001", "SH", "600000", 1, 10, 10.0, 9, kGdhSH, 104), 0);
  const Case cases[] = {{"19042", 654, 124, 7},
                        {"19043", 182, 144, 0},
                        {"19025", 143, 126, 'B'},
                        {"19131", 137, 120, 9}};
  std::int64_t number = 101;
  for (const Case& c : cases) {
    const std::string b = Request(c.func);
    ASSERT_EQ(b.size(), c.len) << c.func;
    EXPECT_EQ(Num<std::int16_t>(b, 0), std::atoi(c.func));
    EXPECT_EQ(Text(b, 55, 3), std::string("SH\0", 3));
    EXPECT_EQ(Num<std::int32_t>(b, 79), 10) << c.func;
    EXPECT_EQ(Num<std::uint8_t>(b, 91), c.byte91) << c.func;
    EXPECT_EQ(CText(b, c.number_at), std::to_string(number++)) << c.func;
  }
}

TEST_F(Business, NonTradingCodeFollowsTheCategory) {
  KELSIM(KelSim_SetKvAnswer)("19092", 1, "ok", "681=1");
  KELSIM(KelSim_SetKvAnswer)("19091", 1, "ok", "681=2");
  KELSIM(KelSim_SetKvAnswer)("19090", 1, "ok", "681=3");
  EXPECT_EQ(SECMOLRA_FJY("1001", "SH", "600000", 76, 10, 1.0, 0, kGdhSH), 1);
  EXPECT_EQ(SECMOLRA_FJY("1001", "SH", "600000", 12, 10, 1.0, 0, kGdhSH), 2);
  EXPECT_EQ(SECMOLRA_FJY("1001", "SH", "600000", 212, 10, 1.0, 0, kGdhSH), 3);
  EXPECT_EQ(SECMOLRA_FJY("1001", "SH", "600000", 13, 10, 1.0, 0, kGdhSH), -222);
}

TEST_F(Business, IssuanceFieldsInOrderWithTheRequestNumberLast) {
  EXPECT_EQ(SECMOLRA_FXYW_ASync("1001", "SH", "600000", 3, 500, 8.88, 2, kGdhSH, 55), 55);
  const std::string req = Request("19049");
  const std::string expected_prefix =
      std::string("719=600000|571=") + kGdhSH + "|605=1001|599=SH|595=3|684=500|682=";
  EXPECT_EQ(req.substr(0, expected_prefix.size()), expected_prefix) << req;
  const std::string expected_tail = "|1013=2|1600=" + std::to_string(token_) + "|9157=55";
  ASSERT_GE(req.size(), expected_tail.size());
  EXPECT_EQ(req.substr(req.size() - expected_tail.size()), expected_tail) << req;
}

TEST_F(Business, BlockTradingSetsItsOwnFieldsBeforeTheToken) {
  KELSIM(KelSim_SetKvAnswer)("19081", 1, "ok", "681=808");
  EXPECT_EQ(SECMOLRA_DZJY("1001", "SH", "600000", 55, 100, 9.9, 1, kGdhSH, "seat", "who", "tel",
                          "agr", "B1", 4, 5),
            808);
  const std::string req = Request("19081");
  const std::string tail =
      "|1013=1|1935=seat|9076=who|532=tel|4176=agr|1936=B1|4279=4|9134=5|1600=" +
      std::to_string(token_);
  ASSERT_GE(req.size(), tail.size());
  EXPECT_EQ(req.substr(req.size() - tail.size()), tail) << req;

  KELSIM(KelSim_SetKvAnswer)("19081", -31, "refused", "");
  EXPECT_EQ(
      SECMOLRA_DZJY("1001", "SH", "600000", 79, 100, 9.9, 1, kGdhSH, "", "", "", "", "", 0, 0),
      -31);
  EXPECT_EQ(Message(), "refused");
}
