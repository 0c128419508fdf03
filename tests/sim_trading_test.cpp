// The simulated back end: login, clock, orders against the market, withdrawals, batch, ETF,
// queries, tradable quantity and account management.
#include "support/sim_trading.h"

#include <gtest/gtest.h>

#include <cmath>
#include <ctime>
#include <vector>

using namespace molra::test;

namespace {

class SimTrading : public SimTradingTest {
 protected:
  // A password in the uni (authentication) or the 3rd (direct) encoding.
  std::string Enc(const char* khh, const char* pwd, bool third = true) {
    char buf[64];
    std::snprintf(buf, sizeof buf, "%s", pwd);
    kel::int32 n = sizeof buf;
    EXPECT_TRUE(third ? k.Kel_UniEncode3rd(khh, buf, &n) : k.Kel_UniEncode(khh, buf, &n));
    return buf;
  }
};

}  // namespace

TEST_F(SimTrading, LoginChecksPasswordFormNodeAndCustomer) {
  SimClient m("127.0.0.1:9101");
  EXPECT_EQ(m.Login("1001", "111111"), token);  // the same token for a second login
  EXPECT_EQ(m.Login("1001", "wrong"), -108);
  EXPECT_EQ(m.Login("9999", "111111"), -102);
  EXPECT_EQ(m.Login("1001", "111111", 2), -109);  // not one of its nodes
  EXPECT_GT(m.Login("1002", "222222", 2), 0);
  // The authentication form expects the uni encoding: the 3rd form is refused there.
  ASSERT_TRUE(m.Kv("A00401", {{605, "1001"}, {598, Enc("1001", "111111")}, {781, "5"}}));
  EXPECT_EQ(m.Code(), -108);
  ASSERT_TRUE(m.Kv("A00401", {{605, "1001"}, {598, Enc("1001", "111111", false)}, {781, "5"}}));
  EXPECT_EQ(m.Code(), 1);
  EXPECT_EQ(m.Long(fid::TOKEN), token);
  // The configured customer whose token is a text with letters.
  ASSERT_TRUE(m.Kv("A00401", {{605, "1005"}, {598, Enc("1005", "555555", false)}, {781, "5"}}));
  EXPECT_EQ(m.Text(fid::TOKEN), "abc");
}

TEST_F(SimTrading, NodeListsTellTradingNodesBySystemType) {
  SimClient m("127.0.0.1:9101");
  auto types = [&](const char* khh) {
    EXPECT_TRUE(m.Kv("D00749", {{fid::KHH, khh}}));
    std::string s;
    for (int r = 0; r < m.Count(); ++r)
      s += std::to_string(m.Long(fid::NODE_ID, r)) + ":" +
           std::to_string(m.Long(fid::SYSTEM_TYPE, r)) + " ";
    return s;
  };
  EXPECT_EQ(types("1001"), "1:4 ");
  EXPECT_EQ(types("1002"), "1:4 2:4 ");
  EXPECT_EQ(types("1003"), "3:4 4:5 ");
  EXPECT_EQ(types("1004"), "4:5 ");
}

TEST_F(SimTrading, ServerTimeIsShiftedByTheConfiguredOffset) {
  SIM_FN(KelSim_SetServerTimeOffsetMs)(-2 * 3600 * 1000);
  ASSERT_TRUE(c.Kv("A00001", {}));
  std::string t = c.Text(fid::SERVER_TIME);
  ASSERT_EQ(t.size(), 12u);
  long long server = ((std::stoll(t.substr(0, 2)) * 60 + std::stoll(t.substr(3, 2))) * 60 +
                      std::stoll(t.substr(6, 2))) *
                         1000 +
                     std::stoll(t.substr(9));
  std::time_t now = std::time(nullptr);
  std::tm tm = *std::localtime(&now);
  long long local = ((tm.tm_hour * 60LL + tm.tm_min) * 60 + tm.tm_sec) * 1000;
  long long diff = ((local - server) % 86400000 + 86400000) % 86400000;
  EXPECT_NEAR(static_cast<double>(diff), 7200000.0, 3000.0);
  EXPECT_GT(c.Long(fid::SYS_DATE), 20200101);
}

TEST_F(SimTrading, MarketableBuyMatchesInReportsOfTheMatchVolume) {
  SIM_FN(KelSim_SetMatchVolume)(300);
  double before = Available();
  std::string ans = Entrust("600000", 1, 1000, 10.00, "41");
  ASSERT_GT(Code(ans), 0) << ReadText(ans, 302);
  EXPECT_DOUBLE_EQ(ReadDouble(ans, 464), 10000.0);
  EXPECT_EQ(ReadText(ans, 451).size(), 6u);
  auto pushes = Pushes();
  ASSERT_EQ(pushes.size(), 5u);
  EXPECT_EQ(pushes[0].Cjsl(), 0);  // the confirmation
  std::vector<long long> parts;
  for (std::size_t i = 1; i < pushes.size(); ++i) parts.push_back(pushes[i].Cjsl());
  EXPECT_EQ(parts, (std::vector<long long>{300, 300, 300, 100}));
  EXPECT_EQ(pushes.back().Zcjsl(), 1000);  // total matched
  EXPECT_NEAR(Available(), before - 10000.0, 1e-6);
  EXPECT_EQ(Position("600000", fid::GFYE), 11000);
  EXPECT_EQ(Position("600000", fid::KMSL), 10000);  // bought today: not sellable yet
}

TEST_F(SimTrading, LimitAwayFromThePriceRestsUntilThePriceMovesOrItIsWithdrawn) {
  double before = Available();
  std::string a1 = Entrust("600000", 1, 100, 9.50, "51");
  std::string a2 = Entrust("600000", 1, 200, 9.20, "52");
  ASSERT_GT(Code(a1), 0);
  ASSERT_GT(Code(a2), 0);
  EXPECT_NEAR(Available(), before - 950.0 - 1840.0, 1e-6);
  SIM_FN(KelSim_SetPrice)("SH", "600000", 9.40);  // reaches the first order only
  EXPECT_NEAR(Available(), before - 950.0 - 1840.0,
              1e-6);                  // a resting order matches at its own price
  std::string w = Withdraw(0, "52");  // by request number
  ASSERT_GT(Code(w), 0) << ReadText(w, 302);
  EXPECT_NE(Wth(w), Wth(a2));
  EXPECT_EQ(ReadInt(w, 467, 4), 2);
  EXPECT_NEAR(Available(), before - 950.0, 1e-6);
  EXPECT_EQ(Code(Withdraw(Wth(a2))), -107);  // already withdrawn
  EXPECT_EQ(Code(Withdraw(Wth(a1))), -107);  // already matched
  auto pushes = Pushes();
  ASSERT_FALSE(pushes.empty());
  const PushRec& last = pushes.back();
  EXPECT_EQ(last.Cxbz(), "W");
  EXPECT_EQ(last.Cxwth(), Wth(a2));
  EXPECT_EQ(last.Cdsl(), 200);
}

TEST_F(SimTrading, SellsTakeSellableSharesAndLimitedLiquidityLeavesARest) {
  SIM_FN(KelSim_SetLiquidity)("SH", "600036", 500);
  std::string a = Entrust("600036", 2, 1500, 34.00);
  ASSERT_GT(Code(a), 0);
  EXPECT_EQ(Position("600036", fid::KMSL), 500);
  EXPECT_EQ(Position("600036", fid::GFYE), 1500);  // 500 sold
  EXPECT_EQ(Code(Entrust("600036", 2, 501, 34.00)), -104);
  SIM_FN(KelSim_SetLiquidity)("SH", "600036", -1);  // the rest matches now
  EXPECT_EQ(Position("600036", fid::GFYE), 500);
  EXPECT_EQ(Code(Withdraw(Wth(a))), -107);  // nothing left
}

TEST_F(SimTrading, BackEndAndExchangeRefusals) {
  EXPECT_EQ(Code(Entrust("999999", 1, 100, 1.0)), -105);
  EXPECT_EQ(Code(Entrust("600000", 1, 0, 10.0)), -106);
  EXPECT_EQ(Code(Entrust("600000", 1, 100000000, 10.0)), -103);
  EXPECT_EQ(Code(Entrust("000001", 1, 100, 12.0, "", "SZ")), 1);
  token += 1;
  EXPECT_EQ(Code(Entrust("600000", 1, 100, 10.0)), -101);
  token -= 1;
  EXPECT_EQ(Pushes().size(), 2u);  // refused by the back end: nothing pushed
  double before = Available();
  std::string a = Entrust("600000", 1, 100, 11.50);  // beyond +10%
  ASSERT_GT(Code(a), 0);
  EXPECT_NEAR(Available(), before, 1e-6);
  auto pushes = Pushes();
  EXPECT_EQ(pushes.back().Sbjg(), 3);
  EXPECT_EQ(Code(Withdraw(Wth(a))), -107);
}

TEST_F(SimTrading, BatchRefusesBadRowsOneByOne) {
  SimBlock b(19012, 3174, token, "1001");
  b.Int(30, 8, 88);
  std::string rows = std::string("SH600000100009.000000000100000") +
                     "SH999999100001.000000000100000" + "SH600036200034.000000000100000";
  b.Text(64, rows.size(), rows);
  std::string ans = c.Run(b);
  ASSERT_EQ(ans.size(), 7663u);
  EXPECT_GE(Code(ans), 0);
  EXPECT_EQ(ReadInt(ans, 443, 4), 1);  // refused rows
  EXPECT_GT(ReadInt(ans, 455, 8), 0);
  EXPECT_EQ(ReadInt(ans, 463, 8), 0);
  EXPECT_GT(ReadInt(ans, 471, 8), 0);
  EXPECT_NE(ReadText(ans, 1263 + 64).find("does not exist"), std::string::npos);
  SimBlock w(19063, 6098, token, "1001");
  w.Int(30, 8, 88);
  EXPECT_GT(Code(c.Run(w)), 0);  // the rest of the buy withdrawn
  EXPECT_EQ(Code(c.Run(w)), -107);
}

TEST_F(SimTrading, EtfCreationTakesTheBasketAndRedemptionGivesItBack) {
  auto etf = [&](int func, int jylb, const char* zqdm, long long qty) {
    SimBlock b(func, 163, token, "1001");
    b.Text(66, 3, "SH").Text(69, 9, zqdm).Int(87, 4, qty).Int(91, 1, jylb);
    return c.Run(b);
  };
  ASSERT_TRUE(c.Kv("D00084", {{fid::ZQDM, "510050"}, {fid::JYS, "SH"}}));
  EXPECT_EQ(c.Long(fid::ETF_CREATION_OK), 1);
  EXPECT_EQ(c.Long(fid::ETF_UNIT), 10000);
  ASSERT_TRUE(c.Kv("D00088", {{fid::ZQDM, "510050"}}));
  EXPECT_EQ(c.Count(), 3);
  long long etf_before = Position("510050", fid::GFYE);
  std::string a =
      etf(19013, 29, "510050", 110000);  // 11 units: 601318 short by 100, not substitutable
  EXPECT_EQ(Code(a), -104);
  a = etf(19013, 29, "510050", 10000);
  ASSERT_GT(Code(a), 0) << ReadText(a, 302);
  EXPECT_EQ(Position("510050", fid::GFYE), etf_before + 10000);
  EXPECT_EQ(Position("600000", fid::GFYE), 9000);
  EXPECT_EQ(Code(etf(19014, 30, "510050", 10000)), 1);
  EXPECT_EQ(Position("600000", fid::GFYE), 10000);
  EXPECT_EQ(Code(etf(19013, 29, "510050", 5000)), -106);  // not a whole unit
  ASSERT_TRUE(c.Kv("D00084", {{fid::ZQDM, "510300"}}));
  EXPECT_EQ(c.Long(fid::SYS_DATE), 20200101);  // stale information
}

TEST_F(SimTrading, TradableQuantityFollowsFundsAndShares) {
  auto qty = [&](int jylb, double price) {
    SimBlock b(19011, 105, token, "1001");
    b.Text(55, 3, "SH").Text(69, 12, "600000").Int(81, 1, jylb).Double(86, price);
    std::string ans = c.Run(b);
    EXPECT_EQ(ans.size(), 438u);
    return ReadDouble(ans, 430);
  };
  double avail = Available();
  EXPECT_DOUBLE_EQ(qty(1, 7.0), std::floor(avail / 7.0 / 100) * 100);
  EXPECT_DOUBLE_EQ(qty(2, 10.0), 10000.0);
}

TEST_F(SimTrading, PasswordChangeTakesEffectAtTheNextLogin) {
  auto enc = [&](const char* pwd) { return Enc("1001", pwd); };
  ASSERT_TRUE(c.Kv("610303", {{605, "1001"}, {781, "6"}, {631, enc("bad")}, {640, enc("654321")}}));
  EXPECT_LT(c.Long(fid::ROW_STATE), 0);
  ASSERT_TRUE(
      c.Kv("610303", {{605, "1001"}, {781, "6"}, {631, enc("111111")}, {640, enc("654321")}}));
  EXPECT_EQ(c.Long(fid::ROW_STATE), 1);
  EXPECT_EQ(c.Login("1001", "111111"), -108);
  EXPECT_GT(c.Login("1001", "654321"), 0);
}

TEST_F(SimTrading, TransfersMoveFundsAndRespectTheAvailableAmount) {
  const std::string pwd = Enc("1001", "111111");
  double before = Available();
  ASSERT_TRUE(c.Kv("610404", {{605, "1001"}, {808, "2000000"}, {598, pwd}, {781, "6"}}));
  EXPECT_EQ(c.Code(), -103);
  ASSERT_TRUE(c.Kv("610404", {{605, "1001"}, {808, "1000.5"}, {598, pwd}, {781, "6"}}));
  EXPECT_EQ(c.Code(), 1);
  ASSERT_TRUE(c.Kv("610403", {{605, "1001"}, {808, "10"}, {598, pwd}, {781, "6"}}));
  EXPECT_NEAR(Available(), before - 990.5, 1e-6);
}

TEST_F(SimTrading, FundQueryCanCarryARowToBeSkipped) {
  ASSERT_TRUE(c.Kv("DQ0003", {{fid::KHH, "1005"}}));
  ASSERT_EQ(c.Count(), 2);
  EXPECT_EQ(c.Long(fid::ROW_STATE, 0), 0);
  EXPECT_EQ(c.Long(fid::ROW_STATE, 1), -1);
}
