// Withdrawals against the simulated back end: the 139-byte block of each family, where the
// request numbers go, the key/value withdrawals and the batch withdrawal (the answer
// lengths of every family: fault_session_test).
#include <gtest/gtest.h>

#include "support/trade_fixture.h"

using namespace molra::test;

using Withdraw = TradeTest;

TEST_F(Withdraw, ByOrderNumberFillsExchangeAndOrderNumber) {
  Answer("19002", AnswerBlock(516, 1).Num<std::int64_t>(443, 4242));
  EXPECT_EQ(SECMOLRA_OrderWithdraw("1001", "SZ", 31337), 4242) << Message();
  const std::string b = Request("19002");
  ASSERT_EQ(b.size(), 139u);
  EXPECT_EQ(Num<std::int16_t>(b, 0), 19002);
  EXPECT_EQ(Num<std::int64_t>(b, 3), token_);
  EXPECT_EQ(Text(b, 55, 3), std::string("SZ\0", 3));
  EXPECT_EQ(Num<std::int64_t>(b, 69), 31337);
  EXPECT_EQ(Text(b, 105, 34), std::string(34, '\0'));
}

TEST_F(Withdraw, ByRequestNumberAsyncPutsBothNumbersInTheirPlaces) {
  EXPECT_EQ(SECMOLRA_OrderWithdrawByKFSBDBH_ASync("1001", "SH", 123, 456), 456);
  const std::string b = Request("19002");
  EXPECT_EQ(Num<std::int64_t>(b, 69), 0);
  EXPECT_EQ(CText(b, 105), "456");
  EXPECT_EQ(CText(b, 122), "123");
}

TEST_F(Withdraw, AfterHoursWritesItsOwnNumberWhereTheOthersCarryTheOrders) {
  EXPECT_EQ(SECMOLRA_PHDJWithdraw_ASync("1001", "SH", 88, 654321), 654321);
  const std::string b = Request("19002");
  EXPECT_EQ(Num<std::int16_t>(b, 0), 19002);
  EXPECT_EQ(Num<std::int64_t>(b, 69), 88);
  EXPECT_EQ(Text(b, 105, 17), std::string(17, '\0'));
  EXPECT_EQ(CText(b, 122), "654321");
}

TEST_F(Withdraw, KeyValueFamiliesSendTheirFieldsInOrder) {
  KELSIM(KelSim_SetKvAnswer)("19052", 1, "ok", "681=9001");
  EXPECT_EQ(SECMOLRA_FXYWWithdraw("1001", "SH", 77), 9001) << Message();
  EXPECT_EQ(Request("19052"), "605=1001|599=SH|681=77|1600=" + std::to_string(token_));

  EXPECT_EQ(SECMOLRA_FJYWithdraw_ASync("1001", "SZ", 78, 31), 31);
  EXPECT_EQ(Request("19096"), "605=1001|599=SZ|681=78|1600=" + std::to_string(token_) + "|9157=31");

  KELSIM(KelSim_SetKvAnswer)("19052", -17, "no such order", "");
  EXPECT_EQ(SECMOLRA_FXYWWithdraw("1001", "SH", 77), -17);
  EXPECT_EQ(Message(), "no such order");
}

TEST_F(Withdraw, BatchWithdrawalBlockAndAnswer) {
  Answer("19063", AnswerBlock(6459, 3));
  EXPECT_EQ(SECMOLRA_BatchOrderWithdraw("1001", 0x0102030405LL), 3);
  const std::string b = Request("19063");
  ASSERT_EQ(b.size(), 6098u);
  EXPECT_EQ(Num<std::int16_t>(b, 0), 19063);
  EXPECT_EQ(Num<std::int64_t>(b, 30), 0x0102030405LL);
  EXPECT_EQ(b.find_first_not_of('\0', 38), std::string::npos);

  Answer("19063", AnswerBlock(6459, 0, "nothing"));
  EXPECT_EQ(SECMOLRA_BatchOrderWithdraw("1001", 1), 0);
  EXPECT_EQ(Message(), "nothing");

  // Asynchronous: the serial number tags the session and is the result.
  EXPECT_EQ(SECMOLRA_BatchOrderWithdraw_ASync("1001", 12), 12);
  EXPECT_NE(Sim::Get().CallLog().find("Kel_SetSessData"), std::string::npos);
}
