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
  const char* worker;  // the name its lookup failure is logged under
  std::function<std::int64_t(const char* khh, std::size_t& left)> call;
};

// The plain form with `khh`, or the Ex form with a record whose KHH is `khh` (a null khh
// passes a null record).
template <typename R, bool kEx, typename F>
std::function<std::int64_t(const char*, std::size_t&)> Make(F f) {
  return [f](const char* khh, std::size_t& left) {
    std::vector<R> list(1);
    CusLoginInfo info{};
    if (khh) std::strncpy(info.KHH, khh, sizeof info.KHH);
    std::int64_t r;
    if constexpr (kEx)
      r = f(khh ? &info : nullptr, list);
    else
      r = f(khh, list);
    left = list.size();
    return r;
  };
}

#define PLAIN(R, fn, w, ...)                                                           \
  {                                                                                    \
#fn, w, Make < R,                                                                  \
        false>([](const char* k, std::vector <R>& l) { return fn(k, __VA_ARGS__ l); }) \
  }
#define EX(R, fn, w, ...)                                                               \
  {                                                                                     \
#fn, w, Make < R,                                                                   \
        true>([](CusLoginInfo* i, std::vector <R>& l) { return fn(i, __VA_ARGS__ l); }) \
  }

std::vector<QueryCase> Cases() {
  return {
      PLAIN(FundRecord, SECMOLRA_QueryFundInfo, "QueryZjxx", ),
      EX(FundRecord, SECMOLRA_QueryFundInfoEx, "QueryZjxx", ),
      PLAIN(AccountRecord, SECMOLRA_QueryAccInfo, "QueryGDH", ),
      EX(AccountRecord, SECMOLRA_QueryAccInfoEx, "QueryGDH", ),
      PLAIN(PSQYRecord, SECMOLRA_QueryPSQY, "QueryPSQY", "SH", "A1", ),
      EX(PSQYRecord, SECMOLRA_QueryPSQYEx, "QueryPSQY", nullptr, nullptr, ),
      PLAIN(OrderRecord, SECMOLRA_QueryOrders, "QueryWtxx", 0, 0, 100, 0, nullptr, nullptr, 0, ),
      EX(OrderRecord, SECMOLRA_QueryOrdersEx, "QueryWtxx", 0, 0, 100, 0, "SH", "600000", 5, ),
      PLAIN(MatchRecord, SECMOLRA_QueryMatchs, "QueryCjxx", 0, 0, 100, 0, nullptr, nullptr, 0, ),
      EX(MatchRecord, SECMOLRA_QueryMatchsEx, "QueryCjxx", 0, 0, 100, 0, nullptr, nullptr, 0, ),
      PLAIN(PositionRecord, SECMOLRA_QueryPositions, "QueryCcxx", 0, 100, 0, nullptr, nullptr,
            nullptr, 0, ),
      EX(PositionRecord, SECMOLRA_QueryPositionsEx, "QueryCcxx", 0, 100, 0, nullptr, nullptr, 0, ),
      PLAIN(ETFShareRecord, SECMOLRA_QueryETFShare, "QueryETFShare", "510050", ),
      EX(ETFShareRecord, SECMOLRA_QueryETFShareEx, "QueryETFShare", "510050", ),
  };
}
#undef PLAIN
#undef EX

}  // namespace

TEST_F(QueryArgs, NullOrEmptyCustomerIsRefusedUnderTheExportNameAndEmptiesTheList) {
  const std::pair<const char*, const char*> rows[] = {{nullptr, "非法参数"},
                                                      {"", "客户号不能为空"}};
  for (auto [khh, msg] : rows) {
    for (const QueryCase& c : Cases()) {
      std::size_t left = 9;
      ExpectError(c.call(khh, left), -221, msg, c.name);
      EXPECT_EQ(left, 0u) << c.name << " " << msg;
    }
  }
}

TEST_F(QueryArgs, CustomerWithoutConnectionSetGetsTheStagedCodeZeroUnderTheWorkerName) {
  for (const QueryCase& c : Cases()) {
    SECMOLRA_SetLastError(-1, "before", "", nullptr);
    std::size_t left = 9;
    ExpectError(c.call("9999", left), 0, "客户未连接登录，无法获取连接", c.worker);
    EXPECT_EQ(left, 0u) << c.name;
  }
}

TEST_F(QueryArgs, ExFormCopiesTheWorkerErrorIntoTheCallersRecord) {
  CusLoginInfo info{};
  std::strcpy(info.KHH, "9999");
  std::vector<FundRecord> list;
  EXPECT_EQ(SECMOLRA_QueryFundInfoEx(&info, list), 0);
  EXPECT_STREQ(info.ErrorMsg, Gbk("客户未连接登录，无法获取连接").c_str());
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

TEST_F(QueryArgs, FundTransferNeedsAPositiveAmount) {
  using Transfer = int64_t (*)(const char*, const char*, double, const char*, const char*,
                               const char*, const char*);
  const std::pair<Transfer, const char*> exports[] = {
      {SECMOLRA_FundTransIn, "SECMOLRA_FundTransIn"},
      {SECMOLRA_FundTransOut, "SECMOLRA_FundTransOut"}};
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
  EXPECT_TRUE(
      Logged(std::string(tn) + " systemtype:5,lpKhh:1002,sZjzh:,dFsje:10,nNode1:1,nNode2:2,sZy: "));
  const char* zn = "SECMOLRA_ModifyZJHBCL";
  ExpectError(SECMOLRA_ModifyZJHBCL(4, "1002", "", 1, 2, -0.5, 0.5, ""), -221, "非法参数", zn);
  ExpectError(SECMOLRA_ModifyZJHBCL(4, "1002", "", 2, 2, 0.5, 0.5, ""), -221, "非法参数", zn);
  ExpectError(SECMOLRA_ModifyZJHBCL(3, "1002", "", 1, 2, 0.5, 0.5, ""), -221, "非法参数", zn);
  ExpectError(SECMOLRA_ModifyZJHBCL(4, "1002", nullptr, 1, 2, 0.5, 0.5, nullptr), 0,
              "客户未连接登录，无法获取连接", zn);
}
