// Batch entrust against the simulated back end: row checks in order, the packed rows, the
// answer written back into the rows, and the plain-array adapters.
#include <gtest/gtest.h>

#include "support/trade_fixture.h"

using namespace molra::test;

namespace {

BatchOrderRow Row(const char* jys = "SH", const char* zqdm = "600000", int jylb = 1,
                  double price = 10.0, std::int64_t qty = 100, int ddlx = 0) {
  BatchOrderRow r{};
  std::strncpy(r.Jys, jys, sizeof r.Jys);
  std::strncpy(r.Zqdm, zqdm, sizeof r.Zqdm);
  r.Jylb = jylb;
  r.Wtjg = price;
  r.Wtsl = qty;
  r.Ddlx = ddlx;
  return r;
}

class Batch : public TradeTest {
 protected:
  std::int64_t Send(std::vector<BatchOrderRow>& rows) {
    return SECMOLRA_BatchOrderEntrust("1001", rows, 5);
  }
  bool Sent() { return Request("19012") != "(none)"; }
};

}  // namespace

TEST_F(Batch, HundredRowsArePackedFrom64) {
  std::vector<BatchOrderRow> rows(100, Row());
  rows[1] = Row("SZ", "000001", 2, 12.34, 999999999, 999);
  EXPECT_GE(Send(rows), 0) << Message();
  const std::string b = Request("19012");
  ASSERT_EQ(b.size(), 3174u);
  EXPECT_EQ(Num<std::int16_t>(b, 0), 19012);
  EXPECT_EQ(Num<std::int64_t>(b, 30), 5);
  EXPECT_EQ(Text(b, 64, 30), "SH600000100010.000000000100000");
  EXPECT_EQ(Text(b, 94, 30), "SZ000001200012.340999999999999");
  EXPECT_EQ(Text(b, 64 + 99 * 30, 30), "SH600000100010.000000000100000");
  EXPECT_EQ(b.find_first_not_of('\0', 3064), std::string::npos);
}

TEST_F(Batch, FirstBadRowAloneIsReportedAndNothingIsSent) {
  std::vector<BatchOrderRow> rows{Row(), Row(), Row(), Row()};
  rows[2].Wtsl = 1000000000;
  rows[3].Jylb = 3;
  EXPECT_EQ(Send(rows), -221);
  EXPECT_EQ(Message(), Gbk("编号3委托数量[1000000000]不合法，应在(0-999999999]"));
  EXPECT_FALSE(Sent());
  EXPECT_EQ(V(rows[0].Wth), 0);
}

TEST_F(Batch, EachCheckHasItsMessage) {
  BatchOrderRow seven = Row();
  std::memcpy(seven.Zqdm, "6000001", 7);  // 7 characters fill the field
  const struct {
    BatchOrderRow row;
    const char* message;
  } cases[] = {
      {Row("SH", "600000", 1, 100000.0), "编号1委托价格[100000]不合法，应在(0.000-99999.99]"},
      {Row("SH", "600000", 1, 0), "编号1委托价格[0]不合法，应在(0.000-99999.99]"},
      {Row("SH", "60000"), "编号1证券代码[60000]不合法"},
      {seven, "编号1证券代码[6000001]不合法"},
      {Row("S"), "编号1交易所[S]不合法"},
      {Row("SH", "600000", 0), "编号1交易类别[0]不合法，应在[JYLB_BUY、JYLB_SALE]"},
      {Row("SH", "600000", 1, 10.0, 100, 1000), "编号1订单类型[1000]不合法，应在[0-999]"},
      {Row("SH", "600000", 1, 10.0, 100, -1),
       "编号1订单类型[4294967295]不合法，应在[0-999]"},  // unsigned
  };
  for (const auto& c : cases) {
    std::vector<BatchOrderRow> rows{c.row};
    EXPECT_EQ(Send(rows), -221) << c.message;
    EXPECT_EQ(Message(), Gbk(c.message));
  }
  EXPECT_FALSE(Sent());
}

TEST_F(Batch, AnswerIsWrittenBackIntoTheRows) {
  ByteBlock ans = AnswerBlock(7663, 1);
  ans.Num<std::int32_t>(443, 1);  // one row failed
  ans.Num<std::int64_t>(455, 11).Num<std::int64_t>(463, 0).Num<std::int64_t>(471, 13);
  // A note that fills its 64-byte slot runs on into the next one, up to 128 bytes.
  ans.Text(1263, std::string(64, 'a')).Text(1263 + 64, Gbk("资金不足"));
  Answer("19012", ans);
  std::vector<BatchOrderRow> rows{Row(), Row(), Row()};
  EXPECT_EQ(Send(rows), 2);
  EXPECT_EQ(V(rows[0].Wth), 11);
  EXPECT_EQ(V(rows[1].Wth), 0);
  EXPECT_EQ(V(rows[2].Wth), 13);
  EXPECT_EQ(std::string(rows[1].Msg), Gbk("资金不足"));
  EXPECT_EQ(std::string(rows[0].Msg), std::string(64, 'a') + Gbk("资金不足"));
  EXPECT_EQ(std::string(rows[2].Msg), "");
  EXPECT_NE(LogText().find("BatchOrderEntrust success.[Fail:1 Succ:2]"), std::string::npos);
}

// Answers one byte short at both checks: fault_session_test.
TEST_F(Batch, RefusedAnswer) {
  std::vector<BatchOrderRow> rows{Row()};
  Answer("19012", AnswerBlock(500, -3, "batch refused"));
  EXPECT_EQ(Send(rows), -3);
  EXPECT_EQ(Message(), "batch refused");
}

TEST_F(Batch, AsyncIsTaggedWithTheBatchNumber) {
  std::vector<BatchOrderRow> rows{Row()};
  EXPECT_EQ(SECMOLRA_BatchOrderEntrust_ASync("1001", rows, 4711), 4711);
  const std::string log = Sim::Get().CallLog();
  EXPECT_NE(log.find(",4711)"), std::string::npos) << log;
  EXPECT_EQ(Num<std::int64_t>(Request("19012"), 30), 4711);
}

TEST_F(Batch, PlainArrayAdapterCopiesResultsBackOnlyWhenSynchronous) {
  ByteBlock ans = AnswerBlock(7663, 1);
  ans.Num<std::int64_t>(455, 21).Num<std::int64_t>(463, 22);
  Answer("19012", ans);
  BatchOrderRow rows[2] = {Row(), Row()};
  EXPECT_EQ(PYSECMOLRA_BatchOrderEntrust("1001", 8, rows, 2), 2);
  EXPECT_EQ(V(rows[0].Wth), 21);
  EXPECT_EQ(V(rows[1].Wth), 22);

  BatchOrderRow again[1] = {Row()};
  EXPECT_EQ(PYSECMOLRA_BatchOrderEntrust_ASync("1001", 9, again, 1), 9);
  EXPECT_EQ(V(again[0].Wth), 0);
}
