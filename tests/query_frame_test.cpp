// The query frame against the simulated back end: rows shaped by scripted answers, the
// row filter, the fund total, node choice, the logged-in check, request fields in order,
// sessions released on every path, and the reference-table cursor.
#include <cstring>
#include <sstream>
#include <string>
#include <vector>

#include "comm/conn_pool.h"
#include "comm/kel_api.h"
#include "support/login_fixture.h"
#include "support/query_support.h"

using namespace molra::test;

namespace {

class QueryFrame : public LoginTest {
 protected:
  void LogIn(const char* khh = "1001", const char* pwd = "111111") {
    StartDefault();
    ASSERT_GT(SECMOLRA_TradeLogin("T", khh, pwd), 0) << Err();
    Sim::Get().ClearCallLog();
  }
  static std::string Err() { return LastErrorText(); }
  static void Script(const char* func, int32_t code, const char* msg, const char* rows) {
    LOGIN_SIM_FN(KelSim_SetKvAnswer)(func, code, msg, rows);
  }
  static int32_t OpenSessions() { return LOGIN_SIM_FN(KelSim_OpenSessions)(); }
  // Node ids given to Kel_SetNodeId since the call log was cleared, in order.
  static std::vector<std::string> NodeIdCalls() {
    std::vector<std::string> ids;
    std::istringstream in(Sim::Get().CallLog());
    std::string line;
    while (std::getline(in, line)) {
      if (line.rfind("Kel_SetNodeId(", 0) != 0) continue;
      ids.push_back(line.substr(line.find(',') + 1, line.size() - line.find(',') - 2));
    }
    return ids;
  }
  void ExpectError(std::int64_t got, std::int64_t code, const std::string& msg,
                   const std::string& func) {
    ExpectFailure(got, code, msg, func, Log());
  }
};

std::string Text(const char* field, std::size_t width) {
  return std::string(field, strnlen(field, width));
}

}  // namespace

TEST_F(QueryFrame, FundTotalAddsInOrderAndBothFirstAmountsCarryKey709) {
  LogIn();
  // 1e16 + 1 rounds back to 1e16: only (869 + 709) + 647 gives exactly 1e16.
  Script("DQ0003", 0, "",
         "605=1001|716=Z001|511=RMB|1257=T2|709=1|826=3.5|2085=4|619=5|2086=6|869=1e16|"
         "1847=8|647=1");
  std::vector<FundRecord> list;
  ASSERT_EQ(SECMOLRA_QueryFundInfo("1001", list), 1) << Err();
  const FundRecord& r = list[0];
  EXPECT_EQ(Text(r.KHH, 16), "1001");
  EXPECT_EQ(Text(r.ZJZH, 16), "Z001");
  EXPECT_EQ(Text(r.BZ, 4), "RMB");
  EXPECT_EQ(Text(r.Text2, 16), "T2");
  EXPECT_EQ(V(r.Amount1), 1.0);
  EXPECT_EQ(V(r.Amount2), 1.0);
  EXPECT_EQ(V(r.Amount3), 3.5);
  EXPECT_EQ(V(r.Amount6), 6.0);
  EXPECT_EQ(V(r.Total), 1e16);
  EXPECT_EQ(V(r.Amount7), 1e16);
  EXPECT_EQ(V(r.Amount8), 8.0);
  EXPECT_EQ(V(r.Amount9), 1.0);
  EXPECT_EQ(std::string(r.Reserved, sizeof r.Reserved), std::string(sizeof r.Reserved, '\0'));
  EXPECT_EQ(std::string(r.Reserved2, 16), std::string(16, '\0'));
}

TEST_F(QueryFrame, RowWithNegativeStateIsSkippedAndNotCounted) {
  LogIn();
  Script("D00734", 0, "",
         "605=1001|599=SH|571=A1|507=0\n605=1001|599=SZ|571=A2|507=-1\n605=1001|599=BJ|571=A3");
  std::vector<AccountRecord> list(4);
  ASSERT_EQ(SECMOLRA_QueryAccInfo("1001", list), 2) << Err();
  ASSERT_EQ(list.size(), 2u);
  EXPECT_EQ(Text(list[0].GDH, 12), "A1");
  EXPECT_EQ(Text(list[1].GDH, 12), "A3");
  EXPECT_EQ(Text(list[1].JYS, 4), "BJ");
  EXPECT_EQ(OpenSessions(), 0);
}

TEST_F(QueryFrame, AnswerWithoutRowsGivesZeroAndAnEmptyList) {
  LogIn();
  Script("DQ0003", 0, "", "");
  std::vector<FundRecord> list(3);
  EXPECT_EQ(SECMOLRA_QueryFundInfo("1001", list), 0);
  EXPECT_TRUE(list.empty());
}

TEST_F(QueryFrame, ExFormNodeIdAboveZeroWinsOverTheNodeTable) {
  StartDefault();
  CusLoginInfo login{};
  std::strcpy(login.KHH, "1002");
  std::strcpy(login.Password, "222222");
  login.NodeID = 2;
  ASSERT_GT(SECMOLRA_TradeLoginEx("T", &login), 0) << Err();
  Script("DQ0003", 0, "", "605=1002|709=1");
  Sim::Get().ClearCallLog();
  CusLoginInfo q{};
  std::strcpy(q.KHH, "1002");
  std::vector<FundRecord> list;
  for (int node : {0, 5, 1, -1}) {
    q.NodeID = node;
    EXPECT_EQ(SECMOLRA_QueryFundInfoEx(&q, list), 1) << node << ": " << Err();
  }
  EXPECT_EQ(SECMOLRA_QueryFundInfo("1002", list), 1) << Err();
  EXPECT_EQ(NodeIdCalls(), (std::vector<std::string>{"2", "5", "1", "2", "2"}));
}

TEST_F(QueryFrame, RequestFieldsOfEveryQueryInOrder) {
  LogIn();
  for (const char* f :
       {"DQ0003", "D00734", "D00985", "D00751", "D00752", "D00753", "D00754", "910005", "910006"}) {
    Script(f, 0, "", "");
  }
  std::vector<FundRecord> fund;
  std::vector<AccountRecord> acc;
  std::vector<PSQYRecord> psqy;
  std::vector<OrderRecord> orders;
  std::vector<MatchRecord> matchs;
  std::vector<PositionRecord> pos;
  std::vector<ETFShareRecord> etf;
  std::vector<ZJHBCLRecord> ratio;
  std::vector<JDKYZJRecord> nodefunds;
  SECMOLRA_QueryFundInfo("1001", fund);
  SECMOLRA_QueryAccInfo("1001", acc);
  SECMOLRA_QueryPSQY("1001", "SH", "A123", psqy);
  SECMOLRA_QueryOrders("1001", 1, 2, 50, 3, "SH", "600000", 77, orders);
  SECMOLRA_QueryMatchs("1001", 4, 5, 6, 7, nullptr, "", 0, matchs);
  SECMOLRA_QueryPositions("1001", 1, 20, 0, "A123", "SZ", "000001", 9, pos);
  SECMOLRA_QueryETFShare("1001", "510050", etf);
  SECMOLRA_QueryZJHBCL("1001", "Z1", ratio);
  SECMOLRA_QueryJDKYZJ("1001", "", nodefunds);
  EXPECT_EQ(LastRequest("DQ0003"), "605=1001|988=1|533=1");
  EXPECT_EQ(LastRequest("D00734"), "605=1001|618=0|590=30000000");
  EXPECT_EQ(LastRequest("D00985"), "605=1001|571=A123|599=SH");
  EXPECT_EQ(LastRequest("D00751"),
            "605=1001|599=SH|719=600000|681=77|9220=1|9221=2|9222=50|9223=3");
  EXPECT_EQ(LastRequest("D00752"), "605=1001|599=|719=|681=0|9220=4|9221=5|9222=6|9223=7");
  EXPECT_EQ(LastRequest("D00753"),
            "605=1001|571=A123|599=SZ|719=000001|9221=1|9222=20|9223=0|9224=9");
  EXPECT_EQ(LastRequest("D00754"), "605=1001|9225=510050");
  EXPECT_EQ(LastRequest("910005"), "605=1001|511=RMB|716=Z1");
  EXPECT_EQ(LastRequest("910006"), "605=1001|511=RMB|716=");
}

TEST_F(QueryFrame, PositionsExTakesTheShareholderAccountFromTheRecord) {
  LogIn();
  Script("D00753", 0, "", "");
  CusLoginInfo q{};
  std::strcpy(q.KHH, "1001");
  std::memcpy(q.GDH, "A12345678901", 12);  // full width, no terminator
  q.NodeID = 0x7f;                         // the byte after GDH is not part of it
  std::vector<PositionRecord> pos;
  SECMOLRA_QueryPositionsEx(&q, 0, 10, 0, "SH", "", 0, pos);
  EXPECT_EQ(LastRequest("D00753"),
            "605=1001|571=A12345678901|599=SH|719=|9221=0|9222=10|9223=0|9224=0");
}

TEST_F(QueryFrame, OrderRowFillsEveryFieldAtItsOffsetAndCutsLongTexts) {
  LogIn();
  std::string name(40, 'N');  // wider than ZQMC
  std::string row = "605=1001|599=SH|571=A1|719=600000|9206=" + name +
                    "|681=123456789012|595=2|684=300|682=10.25|1013=-4|9201=09:31:02|9202=100|"
                    "9203=10.2|9204=1020|9205=200|753=3|9209=refused|9210=W|9157=424242|"
                    "9216=17|764=3075.5|716=F001|511=HKD";
  Script("D00751", 0, "", row.c_str());
  std::vector<OrderRecord> list;
  ASSERT_EQ(SECMOLRA_QueryOrders("1001", 0, 0, 10, 0, "", "", 0, list), 1) << Err();
  const OrderRecord& r = list[0];
  EXPECT_EQ(std::string(r.ZQMC, 33), name.substr(0, 33));  // no terminator when full
  EXPECT_EQ(Text(r.ZQDM, 9), "600000");
  EXPECT_EQ(V(r.WTH), 123456789012);
  EXPECT_EQ(V(r.JYLB), 2);
  EXPECT_EQ(V(r.WTSL), 300);
  EXPECT_EQ(V(r.WTJG), 10.25);
  EXPECT_EQ(V(r.DDLX), -4);
  EXPECT_EQ(Text(r.WTSJ, 13), "09:31:02");
  EXPECT_EQ(V(r.CJSL), 100);
  EXPECT_EQ(V(r.CJJG), 10.2);
  EXPECT_EQ(V(r.CJJE), 1020.0);
  EXPECT_EQ(V(r.CDSL), 200);
  EXPECT_EQ(V(r.SBJG), 3);
  EXPECT_EQ(Text(r.JGSM, 128), "refused");
  EXPECT_EQ(Text(r.CXBZ, 2), "W");
  EXPECT_EQ(V(r.KFSBDBH), 424242);
  EXPECT_EQ(V(r.WTPCH), 17);
  EXPECT_EQ(V(r.DJZJ), 3075.5);
  EXPECT_EQ(Text(r.ZJZH, 31), "F001");
  EXPECT_EQ(Text(r.BZ, 4), "HKD");
  EXPECT_EQ(std::string(r.Reserved, 100), std::string(100, '\0'));
}

namespace {
int g_code_calls = 0;
int g_fail_at = 0;
kel::int32 (*g_real_get_code)(kel::int64) = nullptr;
// The answer code turns to -7 from the g_fail_at-th call on (counting from 1).
kel::int32 CodeTurningBad(kel::int64 session) {
  kel::int32 real = g_real_get_code(session);
  return ++g_code_calls >= g_fail_at ? -7 : real;
}
}  // namespace

TEST_F(QueryFrame, PSQYStopsWhenTheAnswerCodeTurnsNegativeBeforeARow) {
  LogIn();
  Script("D00985", 0, "PSQY broke", "605=1001|724=1|507=-1\n605=1001|724=2\n605=1001|724=3");
  g_real_get_code = kel::api.Kel_GetCode;
  kel::api.Kel_GetCode = CodeTurningBad;
  g_fail_at = 4;  // the answer check, rows 0 and 1 pass; row 2 sees -7
  std::vector<PSQYRecord> list;
  std::int64_t r = SECMOLRA_QueryPSQY("1001", "SH", "A1", list);
  kel::api.Kel_GetCode = g_real_get_code;
  ExpectError(r, -7, "PSQY broke", "QueryPSQY");
  // Rows appended before the error stay; key 507 filters nothing here.
  ASSERT_EQ(list.size(), 2u);
  EXPECT_EQ(V(list[0].Value1), 1);
  EXPECT_EQ(V(list[1].Value1), 2);
  EXPECT_EQ(g_code_calls, 4);
  EXPECT_EQ(OpenSessions(), 0);
}

TEST_F(QueryFrame, PSQYRereadsTheCodeBeforeEveryRowAndKeepsRowsWithNegativeState) {
  LogIn();
  Script("D00985", 0, "", "605=1001|599=SH|571=A1|724=1|1179=10|507=-1\n605=1001|724=2|1179=20");
  std::vector<PSQYRecord> list;
  ASSERT_EQ(SECMOLRA_QueryPSQY("1001", "SH", "A1", list), 2) << Err();
  EXPECT_EQ(V(list[1].Value2), 20);
  EXPECT_EQ(Text(list[0].GDH, 12), "A1");
  EXPECT_EQ(Text(list[1].GDH, 12), "");  // an absent text is empty, not the previous row's
  std::string log = Sim::Get().CallLog();
  std::size_t n = 0;
  for (std::size_t p = log.find("Kel_GetCode("); p != std::string::npos;
       p = log.find("Kel_GetCode(", p + 1))
    ++n;
  EXPECT_EQ(n, 3u);
  EXPECT_EQ(log.find("Kel_GetLong(" + std::string(",507")), std::string::npos);
}

TEST_F(QueryFrame, TransportAndAnswerFailuresReleaseTheSession) {
  LogIn();
  std::vector<FundRecord> list;
  LOGIN_SIM_FN(KelSim_FailRun)(1);
  ExpectError(SECMOLRA_QueryFundInfo("1001", list), -204, "发送请求失败", "QueryZjxx");
  EXPECT_EQ(OpenSessions(), 0);
  Script("DQ0003", -103, Gbk("资金不足").c_str(), "605=1001|709=1");
  ExpectError(SECMOLRA_QueryFundInfo("1001", list), -103, "资金不足", "QueryZjxx");
  EXPECT_TRUE(list.empty());
  EXPECT_EQ(OpenSessions(), 0);
  LOGIN_SIM_FN(KelSim_FailAllocSession)(1);
  EXPECT_EQ(SECMOLRA_QueryFundInfo("1001", list), -202);
  EXPECT_EQ(Err(), Gbk("发起会话失败"));
  EXPECT_EQ(OpenSessions(), 0);
}

TEST_F(QueryFrame, CursorReadsAnyTableAndReleasesItsSessionAtTheEnd) {
  LogIn();
  Script("ZD0001", 0, "", "1=SH|2=上海证券交易所\n1=SZ|2=深圳证券交易所");
  std::int64_t cur = SECMOLRA_BeginQuery("", "ZD0001", "599=SH|9=x");
  ASSERT_GT(cur, 0) << Err();
  EXPECT_EQ(LastRequest("ZD0001"), "605=1001|599=SH|9=x");
  EXPECT_EQ(OpenSessions(), 1);
  EXPECT_EQ(SECMOLRA_GetQueryCount(cur), 2);
  char buf[64];
  EXPECT_EQ(SECMOLRA_GetQuery(cur, 1, 2, buf, sizeof buf),
            static_cast<int64_t>(std::strlen("深圳证券交易所")));
  EXPECT_STREQ(buf, "深圳证券交易所");
  char small[3];
  EXPECT_EQ(SECMOLRA_GetQuery(cur, 0, 1, small, 2), 2);  // cut to cap-1 and terminated
  EXPECT_STREQ(small, "S");
  EXPECT_EQ(SECMOLRA_GetQuery(cur, 0, 99, buf, sizeof buf), 0);
  EXPECT_STREQ(buf, "");
  EXPECT_EQ(SECMOLRA_GetQuery(cur, 0, 1, nullptr, 0), 2);
  EXPECT_EQ(SECMOLRA_GetQuery(cur, 2, 1, buf, sizeof buf), -221);
  EXPECT_EQ(SECMOLRA_GetQuery(cur, -1, 1, buf, sizeof buf), -221);
  EXPECT_EQ(SECMOLRA_EndQuery(cur), 1);
  EXPECT_EQ(OpenSessions(), 0);
  EXPECT_EQ(SECMOLRA_EndQuery(cur), -221);
  EXPECT_EQ(SECMOLRA_GetQueryCount(cur), -221);
}

// The transport is uninitialised at the exit: an open cursor is dropped without calling it,
// then or later.
TEST_F(QueryFrame, CursorLeftOpenAtExitIsDroppedWithoutCallingTheTransport) {
  LogIn();
  Script("ZD0001", 0, "", "1=SH|2=x");
  const std::int64_t cur = SECMOLRA_BeginQuery("", "ZD0001", "");
  ASSERT_GT(cur, 0) << Err();
  Sim::Get().ClearCallLog();
  ASSERT_TRUE(SECMOLRA_Exit());
  const std::string calls = Sim::Get().CallLog();
  ASSERT_NE(calls.find("Kel_Uninitialize()\n"), std::string::npos) << calls;
  Sim::Get().ClearCallLog();
  char buf[16];
  EXPECT_EQ(SECMOLRA_GetQueryCount(cur), -221);
  EXPECT_EQ(SECMOLRA_GetQuery(cur, 0, 1, buf, sizeof buf), -221);
  EXPECT_EQ(SECMOLRA_EndQuery(cur), -221);
  EXPECT_EQ(Sim::Get().CallLog(), "");
  EXPECT_EQ(OpenSessions(), 1) << "its session was left to the transport";
}

TEST_F(QueryFrame, CursorOnARefusedAnswerIsNoCursor) {
  LogIn();
  Script("ZD0002", -5, Gbk("无此表").c_str(), "");
  ExpectError(SECMOLRA_BeginQuery("1001", "ZD0002", nullptr), -5, "无此表", "SECMOLRA_BeginQuery");
  EXPECT_EQ(OpenSessions(), 0);
  // A customer with no connection set: the staged code 0, never a cursor id.
  EXPECT_EQ(SECMOLRA_BeginQuery("4444", "ZD0002", nullptr), 0);
  EXPECT_EQ(Err(), Gbk("客户未连接登录，无法获取连接"));
}
