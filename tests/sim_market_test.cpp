// The simulated exchange's market: orders against a book of five levels, resting orders
// reached by later quotes in price-time priority, the exchange's refusals (limits from the
// previous close, lots, ticks), fees to the cent, and the trading day.
#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "support/sim_trading.h"

using namespace molra::test;

namespace {

using Fills = std::vector<std::pair<long long, double>>;  // (quantity, price) per match report

Fills FillsOf(const std::vector<PushRec>& matches) {
  Fills out;
  for (const PushRec& m : matches) out.emplace_back(m.Cjsl(), m.Cjjg());
  return out;
}

// ---- an incoming order against the book ----

struct BookCase {
  const char* name;
  int jylb;
  long long qty;
  double price;
  int ddlx;
  long long match_volume;
  std::vector<KelSimLevel> levels;  // the side the order takes
  Fills fills;
  long long resting;    // left in the book
  long long withdrawn;  // the rest of a market order
};
void PrintTo(const BookCase& c, std::ostream* os) { *os << c.name; }

class IncomingOrder : public SimTradingTest, public ::testing::WithParamInterface<BookCase> {};

TEST_P(IncomingOrder, TakesTheBookLevelByLevel) {
  const BookCase& t = GetParam();
  bool buy = t.jylb == 1;
  Book("600000", 10.00, buy ? std::vector<KelSimLevel>{{9.99, 100}} : t.levels,
       buy ? t.levels : std::vector<KelSimLevel>{{10.01, 100}});
  SIM_FN(KelSim_SetMatchVolume)(t.match_volume);
  ForgetPushes();
  std::string ans = Entrust("600000", t.jylb, t.qty, t.price, "", "SH", t.ddlx);
  ASSERT_EQ(Code(ans), 1) << Note(ans);
  EXPECT_EQ(FillsOf(Matches()), t.fills);
  long long matched = 0;
  for (const auto& f : t.fills) matched += f.first;
  // What it took is gone from the book.
  KelSimQuote q = Quote("600000");
  const KelSimLevel* side = buy ? q.ask : q.bid;
  for (std::size_t i = 0; i < t.levels.size(); ++i) {
    long long taken = 0;
    for (const auto& f : t.fills)
      if (f.second == t.levels[i].price) taken += f.first;
    EXPECT_EQ(side[i].volume, t.levels[i].volume - taken) << "level " << i;
  }
  long long withdrawn = 0;
  for (const PushRec& p : Pushes())
    if (p.Cxbz() == "W") withdrawn += p.Cdsl();
  EXPECT_EQ(withdrawn, t.withdrawn);
  EXPECT_EQ(std::stoll(Orders(fid::CJSL).at(0)), matched);
  EXPECT_EQ(t.qty - matched - withdrawn, t.resting);
  EXPECT_EQ(Code(Withdraw(Wth(ans))), t.resting > 0 ? 1 : -107);
}

INSTANTIATE_TEST_SUITE_P(
    Book, IncomingOrder,
    ::testing::Values(
        BookCase{"BuyOverTwoLevelsRestsTheRest",
                 1,
                 1000,
                 10.01,
                 0,
                 0,
                 {{10.00, 300}, {10.01, 500}, {10.02, 900}},
                 {{300, 10.00}, {500, 10.01}},
                 200,
                 0},
        BookCase{"SellOverTwoLevels",
                 2,
                 1500,
                 9.98,
                 0,
                 0,
                 {{9.99, 1000}, {9.98, 1000}, {9.97, 1000}},
                 {{1000, 9.99}, {500, 9.98}},
                 0,
                 0},
        BookCase{"LimitBelowTheBestAskRestsWhole", 1, 500, 9.99, 0, 0, {{10.00, 300}}, {}, 500, 0},
        BookCase{"MatchVolumeSplitsALevel",
                 1,
                 500,
                 10.00,
                 0,
                 200,
                 {{10.00, 400}},
                 {{200, 10.00}, {200, 10.00}},
                 100,
                 0},
        BookCase{"MarketBuyTakesTheBookAndTheRestIsWithdrawn",
                 1,
                 1000,
                 0,
                 1,
                 0,
                 {{10.00, 300}, {10.05, 200}},
                 {{300, 10.00}, {200, 10.05}},
                 0,
                 500}),
    [](const ::testing::TestParamInfo<BookCase>& p) { return std::string(p.param.name); });

// ---- resting orders reached by later quotes ----

using SimRest = SimTradingTest;

TEST_F(SimRest, RestingOrdersMatchAtTheirOwnPriceByPriceThenTime) {
  Book("600000", 10.00, {{9.99, 100}}, {{10.00, 100}});
  long long a = Wth(Entrust("600000", 1, 300, 9.90));  // lowest price
  long long b = Wth(Entrust("600000", 1, 300, 9.95));
  long long c2 = Wth(Entrust("600000", 1, 300, 9.95));  // same price, later
  ForgetPushes();
  Book("600000", 9.90, {{9.84, 100}}, {{9.85, 400}, {9.93, 100}});
  Fills by_order;
  std::vector<long long> who;
  for (const PushRec& m : Matches())
    who.push_back(m.Wth()), by_order.emplace_back(m.Cjsl(), m.Cjjg());
  EXPECT_EQ(who, (std::vector<long long>{b, c2}));
  EXPECT_EQ(by_order, (Fills{{300, 9.95}, {200, 9.95}}));  // 9.93 is out of a's reach
  ForgetPushes();
  Book("600000", 9.80, {{9.79, 100}}, {{9.80, 1000}});
  who.clear();
  for (const PushRec& m : Matches()) who.push_back(m.Wth());
  EXPECT_EQ(who, (std::vector<long long>{c2, a}));
  EXPECT_EQ(FillsOf(Matches()), (Fills{{100, 9.95}, {300, 9.90}}));
  // A resting sell is reached by the bids the same way.
  long long s = Wth(Entrust("600000", 2, 1000, 10.20));
  ForgetPushes();
  Book("600000", 10.25, {{10.25, 400}, {10.20, 100}, {10.15, 5000}}, {{10.26, 100}});
  EXPECT_EQ(FillsOf(Matches()), (Fills{{500, 10.20}}));
  EXPECT_EQ(Matches().at(0).Wth(), s);
}

// ---- the exchange's refusals ----

struct RefusalCase {
  const char* name;
  const char* zqdm;
  int jylb;
  long long qty;
  double price;
  int code;  // of the answer
  int sbjg;  // of the confirmation when accepted
};
void PrintTo(const RefusalCase& c, std::ostream* os) { *os << c.name; }

class Refusal : public SimTradingTest, public ::testing::WithParamInterface<RefusalCase> {
 protected:
  std::string Config() override {
    return "[backend]\ninclude_defaults = true\n"
           "[security.SH.600000]\nprice = 10.80\nprev_close = 10.00\n"
           "[customer.1001]\npassword = 111111\nposition.1 = SH,600000,10000\nposition.2 = "
           "SH,601318,1050\n"
           "position.3 = SH,510050,5000\n";
  }
};

TEST_P(Refusal, AsTheExchangeWould) {
  const RefusalCase& t = GetParam();
  std::string ans = Entrust(t.zqdm, t.jylb, t.qty, t.price);
  ASSERT_EQ(Code(ans), t.code) << Note(ans);
  if (t.code == 1) {
    EXPECT_EQ(Pushes().at(0).Sbjg(), t.sbjg);
  } else if (t.code < 0) {
    EXPECT_TRUE(Pushes().empty());
  }
}

INSTANTIATE_TEST_SUITE_P(
    Orders, Refusal,
    ::testing::Values(
        // Limits from the previous close (10.00), not from the last price (10.80).
        RefusalCase{"BuyAtTheUpperLimit", "600000", 1, 100, 11.00, 1, 2},
        RefusalCase{"BuyAboveTheUpperLimit", "600000", 1, 100, 11.01, 1, 3},
        RefusalCase{"SellAtTheLowerLimit", "600000", 2, 100, 9.00, 1, 2},
        RefusalCase{"SellBelowTheLowerLimit", "600000", 2, 100, 8.99, 1, 3},
        RefusalCase{"BuyOfAnOddLot", "600000", 1, 150, 10.00, -106, 0},
        RefusalCase{"PriceOffTheTick", "600000", 1, 100, 10.005, -106, 0},
        RefusalCase{"FundPriceOnItsFinerTick", "510050", 1, 100, 2.501, 1, 2},
        RefusalCase{"FundPriceOffItsTick", "510050", 1, 100, 2.5005, -106, 0},
        RefusalCase{"SellOfAnOddLotWithoutOne", "600000", 2, 50, 10.00, -106, 0},
        RefusalCase{"SellOfTheWholeOddLot", "601318", 2, 50, 50.00, 1, 2},
        RefusalCase{"SellOfLotsAndTheWholeOddLot", "601318", 2, 150, 50.00, 1, 2},
        RefusalCase{"SellOfPartOfTheOddLot", "601318", 2, 30, 50.00, -106, 0},
        RefusalCase{"SellOfMoreThanIsSellable", "601318", 2, 1100, 50.00, -104, 0}),
    [](const ::testing::TestParamInfo<RefusalCase>& p) { return std::string(p.param.name); });

TEST_F(Refusal, LimitsFollowThePreviousCloseOfEachDay) {
  KelSimQuote q = Quote("600000");
  EXPECT_EQ(std::make_pair(q.lower_limit, q.upper_limit), std::make_pair(9.00, 11.00));
  SIM_FN(KelSim_NewDay)();  // the last price, 10.80, is the new previous close
  q = Quote("600000");
  EXPECT_EQ(q.prev_close, 10.80);
  EXPECT_EQ(std::make_pair(q.lower_limit, q.upper_limit), std::make_pair(9.72, 11.88));
  EXPECT_EQ(Code(Entrust("600000", 1, 100, 11.88)), 1);
  EXPECT_EQ(Code(Entrust("600000", 1, 100, 11.89)), 1);
  std::vector<PushRec> pushes = Pushes();
  ASSERT_GE(pushes.size(), 2u);
  EXPECT_EQ(pushes[pushes.size() - 2].Sbjg(), 2);
  EXPECT_EQ(pushes.back().Sbjg(), 3);
}

// ---- fees ----

struct FeeCase {
  const char* name;
  int jylb;
  long long qty;
  double price;
  std::vector<KelSimLevel> levels;
  std::vector<double> qszj;  // settlement of each match report
  const char* balance;       // the fund query's balance afterwards
  double djzj;               // funds frozen by the answer (buys)
};
void PrintTo(const FeeCase& c, std::ostream* os) { *os << c.name; }

class Fees : public SimTradingTest, public ::testing::WithParamInterface<FeeCase> {
 protected:
  std::string Config() override {
    return "[backend]\ninclude_defaults = true\n"
           "[fees]\ncommission_rate = 0.00025\ncommission_min = 5\nstamp_duty_rate = 0.0005\n"
           "transfer_fee_rate = 0.00001\n";
  }
};

TEST_P(Fees, AreChargedAtEachMatchToTheCent) {
  const FeeCase& t = GetParam();
  bool buy = t.jylb == 1;
  Book("600000", t.price, buy ? std::vector<KelSimLevel>{} : t.levels,
       buy ? t.levels : std::vector<KelSimLevel>{});
  std::string ans = Entrust("600000", t.jylb, t.qty, t.price);
  ASSERT_EQ(Code(ans), 1) << Note(ans);
  EXPECT_DOUBLE_EQ(ReadDouble(ans, 464), t.djzj);
  std::vector<double> qszj;
  for (const PushRec& m : Matches()) qszj.push_back(m.Qszj());
  EXPECT_EQ(qszj, t.qszj);
  EXPECT_EQ(Fund(fid::FUND_AMOUNT3), t.balance);
  EXPECT_EQ(Fund(fid::FUND_AMOUNT9), "0.00");  // nothing stays frozen
}

// Commission 0.025% (at least 5.00 an order), stamp duty 0.05% on sells, transfer fee
// 0.001%; each rounded half up to the cent; the funds were 1,000,000.00.
INSTANTIATE_TEST_SUITE_P(
    Orders, Fees,
    ::testing::Values(
        // 10,000.00: commission 2.50 raised to 5.00, transfer 0.10.
        FeeCase{"BuyPaysTheMinimumCommission",
                1,
                1000,
                10.00,
                {{10.00, 1000}},
                {-10005.10},
                "989994.90",
                10005.10},
        // 10,340.00: commission 2.585 raised to 5.00, stamp 5.17, transfer 0.1034 -> 0.10.
        FeeCase{"SellPaysStampDuty", 2, 1000, 10.34, {{10.34, 1000}}, {10329.73}, "1010329.73", 0},
        // 1,010.00: stamp 0.505 -> 0.51 (half up), transfer 0.0101 -> 0.01, commission 5.00.
        FeeCase{"HalfACentRoundsUp", 2, 100, 10.10, {{10.10, 100}}, {1004.48}, "1001004.48", 0},
        // 100,000.00 then 300,300.00: commission 25.00, then 100.075 -> 100.08 on the order's
        // 400,300.00 less the 25.00 paid; transfer 1.00 and 3.003 -> 3.00.
        FeeCase{"CommissionIsOwedOnTheOrdersWholeAmount",
                1,
                40000,
                10.01,
                {{10.00, 10000}, {10.01, 30000}},
                {-100026.00, -300378.08},
                "599595.92",
                400504.10}),
    [](const ::testing::TestParamInfo<FeeCase>& p) { return std::string(p.param.name); });

// ---- the trading day ----

using SimDay = SimTradingTest;

TEST_F(SimDay, BoughtSharesBecomeSellableOnTheNextDayAndOpenOrdersExpire) {
  ASSERT_EQ(Code(Entrust("600000", 1, 1000, 10.00)), 1);  // matches at once
  EXPECT_EQ(Position("600000", fid::GFYE), 11000);
  EXPECT_EQ(Position("600000", fid::KMSL), 10000);
  EXPECT_EQ(Code(Entrust("600000", 2, 10100, 10.00)), -104);  // today's 1000 are not sellable
  long long buy = Wth(Entrust("600000", 1, 100, 9.00));
  long long sell = Wth(Entrust("600000", 2, 500, 11.00));
  EXPECT_EQ(Position("600000", fid::KMSL), 9500);
  EXPECT_EQ(Fund(fid::FUND_AMOUNT9), "900.00");
  SIM_FN(KelSim_SetPrice)("SH", "600000", 10.50);
  kel::int64 date = 0, next = 0;
  SIM_FN(KelSim_Clock)(&date, nullptr);
  ForgetPushes();

  SIM_FN(KelSim_NewDay)();
  std::vector<PushRec> pushes = Pushes();  // a withdrawal for each open order
  ASSERT_EQ(pushes.size(), 2u);
  EXPECT_EQ((std::vector<long long>{pushes[0].Cxwth(), pushes[1].Cxwth()}),
            (std::vector<long long>{buy, sell}));
  EXPECT_EQ((std::vector<long long>{pushes[0].Cdsl(), pushes[1].Cdsl()}),
            (std::vector<long long>{100, 500}));
  EXPECT_EQ(Position("600000", fid::KMSL), 11000);
  EXPECT_EQ(Fund(fid::FUND_AMOUNT9), "0.00");
  EXPECT_EQ(Fund(fid::FUND_AMOUNT8), Fund(fid::FUND_AMOUNT3));  // the day starts with the balance
  EXPECT_TRUE(Orders(fid::WTH).empty());
  SIM_FN(KelSim_Clock)(&next, nullptr);
  EXPECT_GT(next, date);
  EXPECT_EQ(Quote("600000").prev_close, 10.50);
  std::string ans = Entrust("600000", 2, 11000, 10.50);
  ASSERT_EQ(Code(ans), 1);
  EXPECT_GT(Wth(ans), sell + 2);  // order numbers continue past the two withdrawals
  EXPECT_EQ(Position("600000", fid::GFYE), 0);
}

TEST_F(SimDay, ALaterTradeDateStartsANewDay) {
  long long buy = Wth(Entrust("600000", 1, 100, 9.00));
  ForgetPushes();
  SIM_FN(KelSim_SetTradeDate)(20240105);  // earlier than today: only the date
  EXPECT_TRUE(Pushes().empty());
  SIM_FN(KelSim_SetTradeDate)(20240108);
  std::vector<PushRec> pushes = Pushes();
  ASSERT_EQ(pushes.size(), 1u);
  EXPECT_EQ(pushes[0].Cxwth(), buy);
  ASSERT_TRUE(c.Kv("A00066", {}));
  EXPECT_EQ(c.Long(fid::TRADE_DATE), 20240108);
}

}  // namespace
