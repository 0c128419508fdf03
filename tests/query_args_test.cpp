// Argument checks of the query, cursor and account exports, and what a customer without a
// connection set gets: exact codes, messages and the function names in the log.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "secmolra.h"
#include "support/query_support.h"
#include "support/test_support.h"

using namespace molra::test;

namespace {

class QueryArgs : public ::testing::Test {
 protected:
  void SetUp() override {
    logdir_ = MakeTempDir();
    SECMOLRA_SetLogPath(logdir_.c_str());
    ASSERT_TRUE(SECMOLRA_Init());
  }
  void TearDown() override { SECMOLRA_Exit(); }
  std::string Log() { return KitLog(logdir_); }
  bool Logged(const std::string& text) { return Log().find(text) != std::string::npos; }
  void ExpectError(std::int64_t got, std::int64_t code, const std::string& msg,
                   const std::string& func) {
    ExpectFailure(got, code, msg, func, Log());
  }
  std::string logdir_;
};

// One customer query export, called with a given KHH, on a list that held a record before.
struct QueryCase {
  const char* name;
  std::function<std::int64_t(const char* khh, std::size_t& left)> call;
};

template <typename R, typename F>
std::function<std::int64_t(const char*, std::size_t&)> Plain(F f) {
  return [f](const char* khh, std::size_t& left) {
    std::vector<R> list(1);
    std::int64_t r = f(khh, list);
    left = list.size();
    return r;
  };
}

// The Ex form with a record whose KHH is `khh`; a null khh passes a null record.
template <typename R, typename F>
std::function<std::int64_t(const char*, std::size_t&)> Ex(F f) {
  return [f](const char* khh, std::size_t& left) {
    std::vector<R> list(1);
    CusLoginInfo info{};
    if (khh) std::strncpy(info.KHH, khh, sizeof info.KHH);
    std::int64_t r = f(khh ? &info : nullptr, list);
    left = list.size();
    return r;
  };
}

std::vector<QueryCase> Cases() {
  return {
      {"SECMOLRA_QueryFundInfo", Plain<FundRecord>([](const char* k, std::vector<FundRecord>& l) {
         return SECMOLRA_QueryFundInfo(k, l);
       })},
      {"SECMOLRA_QueryFundInfoEx", Ex<FundRecord>([](CusLoginInfo* i, std::vector<FundRecord>& l) {
         return SECMOLRA_QueryFundInfoEx(i, l);
       })},
      {"SECMOLRA_QueryAccInfo", Plain<AccountRecord>([](const char* k, std::vector<AccountRecord>& l) {
         return SECMOLRA_QueryAccInfo(k, l);
       })},
      {"SECMOLRA_QueryAccInfoEx",
       Ex<AccountRecord>([](CusLoginInfo* i, std::vector<AccountRecord>& l) {
         return SECMOLRA_QueryAccInfoEx(i, l);
       })},
      {"SECMOLRA_QueryPSQY", Plain<PSQYRecord>([](const char* k, std::vector<PSQYRecord>& l) {
         return SECMOLRA_QueryPSQY(k, "SH", "A1", l);
       })},
      {"SECMOLRA_QueryPSQYEx", Ex<PSQYRecord>([](CusLoginInfo* i, std::vector<PSQYRecord>& l) {
         return SECMOLRA_QueryPSQYEx(i, nullptr, nullptr, l);
       })},
      {"SECMOLRA_QueryOrders", Plain<OrderRecord>([](const char* k, std::vector<OrderRecord>& l) {
         return SECMOLRA_QueryOrders(k, 0, 0, 100, 0, nullptr, nullptr, 0, l);
       })},
      {"SECMOLRA_QueryOrdersEx", Ex<OrderRecord>([](CusLoginInfo* i, std::vector<OrderRecord>& l) {
         return SECMOLRA_QueryOrdersEx(i, 0, 0, 100, 0, "SH", "600000", 5, l);
       })},
      {"SECMOLRA_QueryMatchs", Plain<MatchRecord>([](const char* k, std::vector<MatchRecord>& l) {
         return SECMOLRA_QueryMatchs(k, 0, 0, 100, 0, nullptr, nullptr, 0, l);
       })},
      {"SECMOLRA_QueryMatchsEx", Ex<MatchRecord>([](CusLoginInfo* i, std::vector<MatchRecord>& l) {
         return SECMOLRA_QueryMatchsEx(i, 0, 0, 100, 0, nullptr, nullptr, 0, l);
       })},
      {"SECMOLRA_QueryPositions",
       Plain<PositionRecord>([](const char* k, std::vector<PositionRecord>& l) {
         return SECMOLRA_QueryPositions(k, 0, 100, 0, nullptr, nullptr, nullptr, 0, l);
       })},
      {"SECMOLRA_QueryPositionsEx",
       Ex<PositionRecord>([](CusLoginInfo* i, std::vector<PositionRecord>& l) {
         return SECMOLRA_QueryPositionsEx(i, 0, 100, 0, nullptr, nullptr, 0, l);
       })},
      {"SECMOLRA_QueryETFShare",
       Plain<ETFShareRecord>([](const char* k, std::vector<ETFShareRecord>& l) {
         return SECMOLRA_QueryETFShare(k, "510050", l);
       })},
      {"SECMOLRA_QueryETFShareEx",
       Ex<ETFShareRecord>([](CusLoginInfo* i, std::vector<ETFShareRecord>& l) {
         return SECMOLRA_QueryETFShareEx(i, "510050", l);
       })},
  };
}

}  // namespace

TEST_F(QueryArgs, NullCustomerIsIllegalAndEmptiesTheList) {
  for (const QueryCase& c : Cases()) {
    std::size_t left = 9;
    ExpectError(c.call(nullptr, left), -221, "非法参数", c.name);
    EXPECT_EQ(left, 0u) << c.name;
  }
}

TEST_F(QueryArgs, EmptyCustomerNumberIsRefusedUnderTheExportName) {
  for (const QueryCase& c : Cases()) {
    std::size_t left = 9;
    ExpectError(c.call("", left), -221, "客户号不能为空", c.name);
    EXPECT_EQ(left, 0u) << c.name;
  }
}

TEST_F(QueryArgs, CustomerWithoutConnectionSetGetsTheStagedCodeZeroUnderTheWorkerName) {
  const char* workers[] = {"QueryZjxx", "QueryZjxx", "QueryGDH", "QueryGDH", "QueryPSQY",
                           "QueryPSQY", "QueryWtxx", "QueryWtxx", "QueryCjxx", "QueryCjxx",
                           "QueryCcxx", "QueryCcxx", "QueryETFShare", "QueryETFShare"};
  std::vector<QueryCase> cases = Cases();
  ASSERT_EQ(cases.size(), sizeof workers / sizeof workers[0]);
  for (std::size_t i = 0; i < cases.size(); ++i) {
    SECMOLRA_SetLastError(-1, "before", "", nullptr);
    std::size_t left = 9;
    ExpectError(cases[i].call("9999", left), 0, "客户未连接登录，无法获取连接", workers[i]);
    EXPECT_EQ(left, 0u) << cases[i].name;
  }
}

TEST_F(QueryArgs, ExFormCopiesTheWorkerErrorIntoTheCallersRecord) {
  CusLoginInfo info{};
  std::strcpy(info.KHH, "9999");
  std::vector<FundRecord> list;
  EXPECT_EQ(SECMOLRA_QueryFundInfoEx(&info, list), 0);
  EXPECT_STREQ(info.ErrorMsg, "客户未连接登录，无法获取连接");
  info.ErrorCode = -5;
  std::strcpy(info.KHH, "");
  EXPECT_EQ(SECMOLRA_QueryFundInfoEx(&info, list), -221);
  EXPECT_EQ(V(info.ErrorCode), -5);  // the export's own checks leave the record alone
}

TEST_F(QueryArgs, SixteenByteCustomerNumberIsReadWithoutItsTerminator) {
  CusLoginInfo info{};
  std::memcpy(info.KHH, "1234567890123456", 16);
  std::memcpy(info.GDH, "GDHGDH", 6);
  std::vector<AccountRecord> list;
  SECMOLRA_QueryAccInfoEx(&info, list);
  EXPECT_TRUE(Logged("SECMOLRA_QueryAccInfoEx lpKhh:1234567890123456\n") ||
              Logged("SECMOLRA_QueryAccInfoEx lpKhh:1234567890123456\r\n"));
}

TEST_F(QueryArgs, ETFShareFundCodeIsChecked) {
  std::vector<ETFShareRecord> list(2);
  ExpectError(SECMOLRA_QueryETFShare("1001", nullptr, list), -221, "非法参数",
              "SECMOLRA_QueryETFShare");
  EXPECT_TRUE(list.empty());
  ExpectError(SECMOLRA_QueryETFShare("1001", "", list), -221, "基金代码不能为空",
              "SECMOLRA_QueryETFShare");
  CusLoginInfo info{};
  std::strcpy(info.KHH, "1001");
  ExpectError(SECMOLRA_QueryETFShareEx(&info, "", list), -221, "基金代码不能为空",
              "SECMOLRA_QueryETFShare");
}

TEST_F(QueryArgs, NodeFundQueriesRefuseMissingArguments) {
  std::vector<ZJHBCLRecord> ratios(1);
  std::vector<JDKYZJRecord> funds(1);
  ExpectError(SECMOLRA_QueryZJHBCL(nullptr, "", ratios), -221, "非法参数", "SECMOLRA_QueryZJHBCL");
  EXPECT_TRUE(ratios.empty());
  ExpectError(SECMOLRA_QueryZJHBCL("", "", ratios), -221, "非法参数", "SECMOLRA_QueryZJHBCL");
  ExpectError(SECMOLRA_QueryJDKYZJ("1001", nullptr, funds), -221, "非法参数",
              "SECMOLRA_QueryJDKYZJ");
  EXPECT_TRUE(funds.empty());
}

TEST_F(QueryArgs, CursorExportsRefuseBadArgumentsAndUnknownCursors) {
  ExpectError(SECMOLRA_BeginQuery(nullptr, "910007", ""), -221, "非法参数", "SECMOLRA_BeginQuery");
  ExpectError(SECMOLRA_BeginQuery("1001", nullptr, ""), -221, "非法参数", "SECMOLRA_BeginQuery");
  ExpectError(SECMOLRA_BeginQuery("1001", "", ""), -221, "非法参数", "SECMOLRA_BeginQuery");
  ExpectError(SECMOLRA_BeginQuery("1001", "910007", "605"), -221, "非法参数",
              "SECMOLRA_BeginQuery");
  // Nobody logged in: no default customer.
  ExpectError(SECMOLRA_BeginQuery("", "910007", nullptr), -203, "客户未登录",
              "SECMOLRA_BeginQuery");
  char buf[8] = "keep";
  ExpectError(SECMOLRA_GetQuery(1, 0, 605, buf, sizeof buf), -221, "非法参数", "SECMOLRA_GetQuery");
  EXPECT_STREQ(buf, "keep");
  ExpectError(SECMOLRA_GetQueryCount(1), -221, "非法参数", "SECMOLRA_GetQueryCount");
  ExpectError(SECMOLRA_EndQuery(0), -221, "非法参数", "SECMOLRA_EndQuery");
}

TEST_F(QueryArgs, PasswordChangeTellsNullFromEmpty) {
  ExpectError(SECMOLRA_ModifyPwd("1001", "111111", nullptr, 0), -221, "非法参数",
              "SECMOLRA_ModifyPwd");
  ExpectError(SECMOLRA_ModifyPwd("1001", "111111", "", 0), -221, "客户号、新旧密码不能为空",
              "SECMOLRA_ModifyPwd");
  ExpectError(SECMOLRA_ModifyPwd(nullptr, "", "", 1), -221, "非法参数", "SECMOLRA_ModifyPwd");
  ExpectError(SECMOLRA_ModifyPwd("", "1", "2", 1), -221, "客户号、新旧密码不能为空",
              "SECMOLRA_ModifyPwd");
  ExpectError(SECMOLRA_ModifyPwd("1001", nullptr, "2", 1), -221, "非法参数", "SECMOLRA_ModifyPwd");
}

TEST_F(QueryArgs, FundTransferNeedsAPositiveAmount) {
  using Transfer = int64_t (*)(const char*, const char*, double, const char*, const char*,
                               const char*, const char*);
  const std::pair<Transfer, const char*> exports[] = {
      {SECMOLRA_FundTransIn, "SECMOLRA_FundTransIn"}, {SECMOLRA_FundTransOut, "SECMOLRA_FundTransOut"}};
  for (auto [fn, name] : exports) {
    for (double amount : {0.0, -0.0, -1.0, std::nan("")}) {
      ExpectError(fn("1001", "111111", amount, "", "", "", ""), -221, "非法参数", name);
    }
    ExpectError(fn(nullptr, "111111", 10, "", "", "", ""), -221, "非法参数", name);
    ExpectError(fn("1001", nullptr, 10, "", "", "", ""), -221, "非法参数", name);
    // Null texts after the password pass the check; the lookup then fails under the export.
    ExpectError(fn("1001", "111111", 0.01, nullptr, nullptr, nullptr, nullptr), 0,
                "客户未连接登录，无法获取连接", name);
  }
}

TEST_F(QueryArgs, NodeOperationsRefuseBadArguments) {
  const char* tn = "SECMOLRA_FundTransBetweenNodes";
  ExpectError(SECMOLRA_FundTransBetweenNodes(5, "1002", "", 10, 1, 2, ""), -221, "非法参数", tn);
  ExpectError(SECMOLRA_FundTransBetweenNodes(4, "", "", 10, 1, 2, ""), -221, "非法参数", tn);
  ExpectError(SECMOLRA_FundTransBetweenNodes(4, nullptr, "", 10, 1, 2, ""), -221, "非法参数", tn);
  ExpectError(SECMOLRA_FundTransBetweenNodes(4, "1002", "", 0, 1, 2, ""), -221, "非法参数", tn);
  ExpectError(SECMOLRA_FundTransBetweenNodes(4, "1002", "", 10, 1, 1, ""), -221, "非法参数", tn);
  ExpectError(SECMOLRA_FundTransBetweenNodes(4, "1002", "", 10, 0, 2, ""), -221, "非法参数", tn);
  EXPECT_TRUE(Logged(std::string(tn) +
                     " systemtype:5,lpKhh:1002,sZjzh:,dFsje:10,nNode1:1,nNode2:2,sZy: "));
  const char* zn = "SECMOLRA_ModifyZJHBCL";
  ExpectError(SECMOLRA_ModifyZJHBCL(4, "1002", "", 1, 2, -0.5, 0.5, ""), -221, "非法参数", zn);
  ExpectError(SECMOLRA_ModifyZJHBCL(4, "1002", "", 2, 2, 0.5, 0.5, ""), -221, "非法参数", zn);
  ExpectError(SECMOLRA_ModifyZJHBCL(3, "1002", "", 1, 2, 0.5, 0.5, ""), -221, "非法参数", zn);
  ExpectError(SECMOLRA_ModifyZJHBCL(4, "1002", nullptr, 1, 2, 0.5, 0.5, nullptr), 0,
              "客户未连接登录，无法获取连接", zn);
}

TEST_F(QueryArgs, AdapterLeavesTheArrayUntouchedOnAnError) {
  FundRecord recs[3];
  std::memset(recs, 0x5a, sizeof recs);
  FundRecord before[3];
  std::memcpy(before, recs, sizeof recs);
  EXPECT_EQ(PYSECMOLRA_QueryFundInfo(nullptr, recs, 3), -221);
  EXPECT_EQ(std::memcmp(recs, before, sizeof recs), 0);
  ETFShareRecord etf[2];
  std::memset(etf, 0x5a, sizeof etf);
  ETFShareRecord etf_before[2];
  std::memcpy(etf_before, etf, sizeof etf);
  ExpectError(PYSECMOLRA_QueryETFShare("1001", "", etf, 2), -221, "基金代码不能为空",
              "SECMOLRA_QueryETFShare");
  ExpectError(PYSECMOLRA_QueryETFShare("1001", nullptr, etf, 2), -221, "非法参数",
              "SECMOLRA_QueryETFShare");
  EXPECT_EQ(std::memcmp(etf, etf_before, sizeof etf), 0);
  // Null arrays are never written, whatever the capacity.
  EXPECT_EQ(PYSECMOLRA_QueryAccInfo("", nullptr, 5), -221);
}
