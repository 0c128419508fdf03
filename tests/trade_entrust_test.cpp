// The request frame through the ordinary entrust, against the simulated back end: the block
// as it leaves the kit, the answer checks, the asynchronous send and the session's release.
// No session, failing runs and writes and short answers of every family: fault_session_test.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <vector>

#include "support/trade_fixture.h"

using namespace molra::test;

namespace {

class Entrust : public TradeTest {
 protected:
  std::int64_t Buy(std::int64_t qty = 100, std::int64_t ddlx = 0, const char* zqdm = "600000") {
    return SECMOLRA_OrderEntrust("1001", "SH", zqdm, 1, qty, 10.5, ddlx, kGdhSH);
  }
  std::int32_t OpenSessions() { return KELSIM(KelSim_OpenSessions)(); }
};

CusLoginInfo Account(const char* khh, const char* gdh) {
  CusLoginInfo rec{};
  std::strcpy(rec.KHH, khh);
  std::strcpy(rec.GDH, gdh);
  return rec;
}

}  // namespace

TEST_F(Entrust, BlockCarriesHeadAndFieldsAtTheirOffsets) {
  ASSERT_GT(Buy(300, 3), 0) << Message();
  const std::string b = Request("19001");
  ASSERT_EQ(b.size(), 137u);
  EXPECT_EQ(Num<std::int16_t>(b, 0), 19001);
  EXPECT_EQ(Num<std::uint8_t>(b, 2), 1);
  EXPECT_EQ(Num<std::int64_t>(b, 3), token_);
  EXPECT_EQ(Num<std::int16_t>(b, 11), 0);
  EXPECT_EQ(Text(b, 13, 13), std::string("1001") + std::string(9, '\0'));
  EXPECT_EQ(Num<std::int32_t>(b, 26), 20200728);
  EXPECT_EQ(Text(b, 30, 25), std::string(25, '\0'));
  EXPECT_EQ(Text(b, 55, 3), std::string("SH\0", 3));
  EXPECT_EQ(Text(b, 58, 11), std::string(kGdhSH) + '\0');
  EXPECT_EQ(Text(b, 69, 9), std::string("600000\0\0\0", 9));
  EXPECT_EQ(Num<std::uint8_t>(b, 78), 1);
  EXPECT_EQ(Num<std::int32_t>(b, 79), 300);
  EXPECT_EQ(Num<double>(b, 83), 10.5);
  EXPECT_EQ(Num<std::uint8_t>(b, 91), 3);
  EXPECT_EQ(Text(b, 92, 45), std::string(45, '\0'));  // synchronous: no request number
}

TEST_F(Entrust, WideValuesAreCutToTheBlocksWidths) {
  Answer("19001", AnswerBlock(472, 1).Num<std::int64_t>(443, 5));
  CusLoginInfo rec = Account("1001", "");
  std::memcpy(rec.GDH, "A0000010019X", 12);  // 12 characters, no NUL
  EXPECT_EQ(SECMOLRA_OrderEntrustEx(&rec, "SH", "600000123", 1, 4294967296LL, 1.0, 256), 5);
  const std::string b = Request("19001");
  EXPECT_EQ(Text(b, 58, 11), "A0000010019");  // the 12th character is dropped
  EXPECT_EQ(Text(b, 69, 9), "600000123");     // full field, no NUL
  EXPECT_EQ(Num<std::uint8_t>(b, 78), 1);     // and the next field intact
  EXPECT_EQ(Num<std::int32_t>(b, 79), 0);     // 4294967296 travels as 0
  EXPECT_EQ(Num<std::uint8_t>(b, 91), 0);     // order type 256 as 0
}

TEST_F(Entrust, ExRecordSuppliesTokenAndNodeWhenSet) {
  Answer("19001", AnswerBlock(472, 1).Num<std::int64_t>(443, 9));
  CusLoginInfo rec = Account("1001", kGdhSH);
  rec.Token = 777;
  rec.NodeID = 1;
  EXPECT_EQ(SECMOLRA_OrderEntrustEx(&rec, "SH", "600000", 1, 100, 10.0, 0), 9);
  EXPECT_EQ(Num<std::int64_t>(Request("19001"), 3), 777);
  EXPECT_NE(Sim::Get().CallLog().find("Kel_SetNodeId"), std::string::npos);
}

TEST_F(Entrust, RefusalCodeIsReturnedWithTheAnswersMessage) {
  Answer("19001", AnswerBlock(450, -150, Gbk("可用资金不足")));
  EXPECT_EQ(Buy(), -150);
  EXPECT_EQ(Message(), Gbk("可用资金不足"));
  // Code 0 is a failure as well, returned as it stands.
  Answer("19001", AnswerBlock(472, 0, "zero"));
  EXPECT_EQ(Buy(), 0);
  EXPECT_EQ(Message(), "zero");
}

TEST_F(Entrust, UnstructuredAnswerNegatesAPositiveTransportCode) {
  KELSIM(KelSim_SetPlainAnswer)("19001", 7, "busy");
  EXPECT_EQ(Buy(), -7);
  EXPECT_EQ(Message(), "busy");
  KELSIM(KelSim_SetPlainAnswer)("19001", -9, "down");
  EXPECT_EQ(Buy(), -9);
  EXPECT_EQ(Message(), "down");
}

TEST_F(Entrust, CustomerNotLoggedInIsRecordedInTheAccountToo) {
  CusLoginInfo rec = Account("1003", "A1");
  const std::int64_t r = SECMOLRA_OrderEntrustEx(&rec, "SH", "600000", 1, 100, 10.0, 0);
  EXPECT_LE(r, 0);
  std::string msg;
  EXPECT_EQ(LastError(&msg), r);
  EXPECT_EQ(V(rec.ErrorCode), r);
  EXPECT_EQ(std::string(rec.ErrorMsg), msg);
  EXPECT_NE(LogText().find(Gbk("OrderEntrust：") + msg), std::string::npos);
}

TEST_F(Entrust, AsyncWritesTheCallersNumberAndHandsTheSessionOver) {
  const std::int64_t n = SECMOLRA_OrderEntrust_ASync("1001", "SH", "600000", 1, 100, 10.5, 0,
                                                     kGdhSH, 9999999999999999LL);
  EXPECT_EQ(n, 9999999999999999LL) << Message();
  const std::string b = Request("19001");
  EXPECT_EQ(Text(b, 120, 17), std::string("9999999999999999") + '\0');
  const std::string log = Sim::Get().CallLog();
  EXPECT_NE(log.find("Kel_SetSessData"), std::string::npos);
  EXPECT_NE(log.find(",9999999999999999)"), std::string::npos) << log;
  EXPECT_NE(log.find("Kel_RegReplyCallFunc"), std::string::npos);
  EXPECT_NE(log.find("Kel_Write"), std::string::npos);
  EXPECT_EQ(log.find("Kel_Run("), std::string::npos);
}

TEST_F(Entrust, AsyncZeroGeneratesTheNumberItWrites) {
  const std::int64_t n =
      SECMOLRA_OrderEntrust_ASync("1001", "SH", "600000", 1, 100, 10.5, 0, kGdhSH, 0);
  ASSERT_GT(n, 0) << Message();
  EXPECT_EQ(n % 10000000000LL, 1);
  const std::string b = Request("19001");
  EXPECT_EQ(CText(b, 120), std::to_string(n));
}

TEST_F(Entrust, LogLineNamesTheCallAndItsCost) {
  ASSERT_GT(Buy(200, 0), 0);
  const std::string log = LogText();
  EXPECT_NE(log.find("OrderEntrust lpKhh:1001 lpJys:SH lpZqdm:600000 nJylb:1 lWtsl:200 "
                     "lfWtjg:10.5 lDdlx:0 lpGdh:A000001001 lsh:0 cost:"),
            std::string::npos)
      << log;
}

// Requests read the customer once per thread until the customer changes: each change made
// after an order reaches the next order on the same thread.
TEST_F(Entrust, ChangesOfTheCustomerReachTheNextOrder) {
  struct Step {
    const char* change;
    std::function<void()> apply;
    std::function<void(std::int64_t result)> check;
  };
  const std::vector<Step> steps = {
      {"host token", [] { ASSERT_TRUE(SECMOLRA_SetCusToken("1001", 4242)); },
       [&](std::int64_t) { EXPECT_EQ(Num<std::int64_t>(Request("19001"), 3), 4242); }},
      {"node", [] { ASSERT_TRUE(SECMOLRA_SetCusNodeID("1001", 7)); },
       [](std::int64_t) {
         const std::string calls = Sim::Get().CallLog();  // "Kel_SetNodeId(<session>,7)"
         const std::size_t at = calls.find("Kel_SetNodeId(");
         ASSERT_NE(at, std::string::npos);
         EXPECT_EQ(calls.substr(calls.find(',', at), 3), ",7)");
       }},
      {"logout", [] { ASSERT_GT(SECMOLRA_TradeLogout("1001"), 0); },
       [](std::int64_t result) { EXPECT_EQ(result, SECMOLRA_ERR_NOT_LOGGED_IN); }},
  };
  ASSERT_GT(Buy(), 0) << Message();
  for (const Step& s : steps) {
    SCOPED_TRACE(s.change);
    s.apply();
    Sim::Get().ClearCallLog();
    s.check(Buy());
  }
}
