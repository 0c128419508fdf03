// Argument and configuration checks of the login, logout, token, node-list and trade-date
// exports: codes, messages, and that a refused call sends nothing.
#include <cstring>
#include <vector>

#include "core/context.h"
#include "support/login_fixture.h"

using namespace molra::test;

TEST_F(LoginTest, TradeLoginRefusesNullOrEmptyKeyOrCustomerBeforeConnecting) {
  StartDefault();
  const char* const kEmpty = "配置名、客户号、交易密码不能为空";
  const struct {
    const char *key, *khh, *pwd, *message;
  } cases[] = {{nullptr, "1001", "111111", "非法参数"},
               {"T", nullptr, "111111", "非法参数"},
               {"T", "1001", nullptr, "非法参数"},
               {"", "1001", "111111", kEmpty},
               {"T", "", "111111", kEmpty}};
  for (const auto& c : cases) {
    SCOPED_TRACE("case " + std::to_string(&c - cases));
    SECMOLRA_SetLastError(0, "", nullptr, nullptr);
    EXPECT_EQ(SECMOLRA_TradeLogin(c.key, c.khh, c.pwd), -221);
    EXPECT_EQ(LastError(), -221);
    EXPECT_EQ(LastErrorText(), Gbk(c.message));
  }
  EXPECT_EQ(Sim::Get().CallLog(), "");
}

TEST_F(LoginTest, EmptyPasswordPassesTheExportAndIsRefusedByTheLogin) {
  StartDefault();
  EXPECT_EQ(SECMOLRA_TradeLogin("T", "1001", ""), -221);
  EXPECT_EQ(LastErrorText(), Gbk("客户号或密码为空"));
  // It got as far as the connection set, and no request went out.
  std::string calls = Sim::Get().CallLog();
  EXPECT_NE(calls.find("Kel_Connect(127.0.0.1:9101"), std::string::npos);
  EXPECT_EQ(calls.find("Kel_Run"), std::string::npos);
  EXPECT_NE(Log().find(Gbk("AccountInfo::Login：客户号或密码为空")), std::string::npos);
}

TEST_F(LoginTest, MissingConfigurationFileIsReportedWithItsFullPath) {
  StartDefault();
  std::remove((profile_ + "molra.ini").c_str());
  EXPECT_EQ(SECMOLRA_TradeLogin("T", "1001", "111111"), -206);
  EXPECT_EQ(LastErrorText(), Gbk("读取配置文件[") + profile_ + Gbk("molra.ini]失败"));
  std::vector<CusNodeInfo> list;
  EXPECT_EQ(SECMOLRA_QueryCusNodeinfo("T", "1001", list), -206);
  EXPECT_TRUE(list.empty());
  EXPECT_EQ(Sim::Get().CallLog(), "");
}

TEST_F(LoginTest, KeyOfAnotherSystemTypeIsUnknown) {
  StartDefault("", "SystemType=5\n");
  EXPECT_EQ(SECMOLRA_TradeLogin("T", "1001", "111111"), -223);
  EXPECT_EQ(LastErrorText(), Gbk("未知系统类型"));
  std::vector<CusNodeInfo> list;
  EXPECT_EQ(SECMOLRA_QueryCusNodeinfo("T", "1001", list), -223);
  EXPECT_EQ(Sim::Get().CallLog().find("Kel_Connect"), std::string::npos);
}

TEST_F(LoginTest, AbsentKeyReadsTheDefaultSystemTypeAndFailsToConnect) {
  StartDefault();
  // A key without a section has no addresses: the staged connection failure (code 0) is
  // what the caller gets, with its message in the last error.
  EXPECT_EQ(SECMOLRA_TradeLogin("NOSUCHKEY", "1001", "111111"), 0);
  EXPECT_EQ(LastError(), 0);
  EXPECT_EQ(LastErrorText().rfind("connect failed.", 0), 0u) << LastErrorText();
}

TEST_F(LoginTest, ConnectionFailureReturnsTheStagedCodeAndMessage) {
  StartDefault();
  LOGIN_SIM_FN(KelSim_FailConnect)("127.0.0.1:9102", 1);
  SECMOLRA_SetLastError(-1, "before", nullptr, nullptr);
  EXPECT_EQ(SECMOLRA_TradeLogin("T", "1001", "111111"), 0);
  EXPECT_EQ(LastError(), 0);
  std::string m = LastErrorText();
  EXPECT_EQ(m.rfind("connect failed.", 0), 0u) << m;
  EXPECT_NE(m.find("[key:T,addr:127.0.0.1:9102]"), std::string::npos) << m;
  EXPECT_EQ(Customers().DefaultKhh(0), "");
}

TEST_F(LoginTest, TradeLoginExChecksItsRecord) {
  StartDefault();
  CusLoginInfo info{};
  EXPECT_EQ(SECMOLRA_TradeLoginEx(nullptr, &info), -221);
  EXPECT_EQ(LastErrorText(), Gbk("非法参数"));
  EXPECT_EQ(SECMOLRA_TradeLoginEx("T", nullptr), -221);
  EXPECT_EQ(LastErrorText(), Gbk("非法参数"));
  EXPECT_EQ(SECMOLRA_TradeLoginEx("T", &info), -221);
  EXPECT_EQ(LastErrorText(), Gbk("配置名、客户号、交易密码不能为空"));
  std::strcpy(info.KHH, "1001");
  EXPECT_EQ(SECMOLRA_TradeLoginEx("", &info), -221);
  EXPECT_EQ(LastErrorText(), Gbk("配置名、客户号、交易密码不能为空"));
  // KHH given, password empty: refused by the login, and the record gets its own copy.
  EXPECT_EQ(SECMOLRA_TradeLoginEx("T", &info), -221);
  EXPECT_EQ(LastErrorText(), Gbk("客户号或密码为空"));
  EXPECT_EQ(V(info.ErrorCode), -221);
  EXPECT_STREQ(info.ErrorMsg, Gbk("客户号或密码为空").c_str());
}

TEST_F(LoginTest, TradeLoginExReadsAFullWidthUnterminatedCustomerNumber) {
  StartDefault();
  CusLoginInfo info{};
  std::memcpy(info.KHH, "1234567890123456", 16);  // no NUL within the field
  std::memcpy(info.Password, "0123456789012345678901234567890123456789", 40);
  info.NodeID = 1;
  int64_t r = SECMOLRA_TradeLoginEx("T", &info);
  EXPECT_LT(r, 0);
  // Exactly the sixteen characters went out, and the back end refused the customer.
  std::string req = LastRequest("610301");
  EXPECT_EQ(req.rfind("605=1234567890123456|598=", 0), 0u) << req;
  EXPECT_NE(LastErrorText().find("does not exist"), std::string::npos) << LastErrorText();
}

TEST_F(LoginTest, LogoutChecksItsArgumentAndResetsTheCustomer) {
  StartDefault();
  EXPECT_EQ(SECMOLRA_TradeLogout(nullptr), -221);
  EXPECT_EQ(LastErrorText(), Gbk("非法参数"));
  EXPECT_EQ(SECMOLRA_TradeLogout(""), -221);
  EXPECT_EQ(LastErrorText(), Gbk("客户号不能为空"));

  ASSERT_GT(SECMOLRA_TradeLogin("T", "1001", "111111"), 0);
  ASSERT_NE(Customers().Find(4, "1001"), nullptr);
  Sim::Get().ClearCallLog();
  EXPECT_EQ(SECMOLRA_TradeLogout("1001"), 1);
  EXPECT_EQ(Customers().Find(4, "1001"), nullptr);
  EXPECT_EQ(Customers().DefaultKhh(4), "");
  EXPECT_EQ(Customers().DefaultConn(4), nullptr);
  EXPECT_EQ(Customers().nodes.Get("1001"), 0);
  // Nothing goes to the back end, and the connection set stays in the pool.
  EXPECT_EQ(Sim::Get().CallLog(), "");
  EXPECT_NE(Log().find("SECMOLRA_TradeLogout khh:1001 "), std::string::npos);
  // A logout of someone not logged in is harmless.
  EXPECT_EQ(SECMOLRA_TradeLogout("9999"), 1);
}

TEST_F(LoginTest, SetCusTokenAndNodeIdStoreWithoutChecks) {
  StartDefault();
  EXPECT_TRUE(SECMOLRA_SetCusToken("1001", 77));
  EXPECT_EQ(Customers().tokens.Get("1001"), 77);
  EXPECT_TRUE(SECMOLRA_SetCusNodeID("1001", 5));
  EXPECT_EQ(Customers().nodes.Get("1001"), 5);
  EXPECT_TRUE(SECMOLRA_SetCusToken(nullptr, 1));
  EXPECT_TRUE(SECMOLRA_SetCusNodeID(nullptr, 1));
  std::string log = Log();
  EXPECT_NE(log.find("SECMOLRA_SetCusToken lpKhh:1001 token:77"), std::string::npos);
  EXPECT_NE(log.find("SECMOLRA_SetCusNodeID lpKhh:1001 nodeid:5"), std::string::npos);
}

TEST_F(LoginTest, QueryCusNodeinfoAppendsTheTypeFourNodesOnly) {
  StartDefault();
  std::vector<CusNodeInfo> list(1);
  list[0].NodeID = 99;
  EXPECT_EQ(SECMOLRA_QueryCusNodeinfo("T", "1003", list), 1);
  ASSERT_EQ(list.size(), 2u);
  EXPECT_EQ(V(list[0].NodeID), 99);  // appended, not replaced
  EXPECT_STREQ(list[1].KHH, "1003");
  EXPECT_EQ(V(list[1].SystemType), 4);
  EXPECT_EQ(V(list[1].Reserved), 0);
  EXPECT_EQ(V(list[1].NodeID), 3);
  EXPECT_EQ(SECMOLRA_QueryCusNodeinfo("T", "1002", list), 2);
  EXPECT_EQ(list.size(), 4u);
  EXPECT_EQ(list[2].NodeID + list[3].NodeID, 3);
  // The query form does not send the key's exchange short code.
  EXPECT_EQ(LastRequest("D00749"), "605=1002");
  EXPECT_NE(Log().find("AccountInfo::AcctManage::GetAccountJDBH success.[khh:1002 infonum:2]"),
            std::string::npos);
}

// Only a null customer number is refused; an empty (or null) key finds the customer's set.
TEST_F(LoginTest, QueryCusNodeinfoWithoutAKeyUsesTheCustomersExistingSet) {
  StartDefault();
  std::vector<CusNodeInfo> list;
  EXPECT_EQ(SECMOLRA_QueryCusNodeinfo("T", nullptr, list), -221);
  EXPECT_EQ(LastErrorText(), Gbk("非法参数"));
  EXPECT_EQ(Sim::Get().CallLog(), "");
  // No set yet: the connection manager's staged failure, code 0.
  EXPECT_EQ(SECMOLRA_QueryCusNodeinfo("", "1003", list), 0);
  EXPECT_EQ(LastErrorText(), Gbk("客户未连接登录，无法获取连接"));
  ASSERT_GT(SECMOLRA_TradeLogin("T", "1003", "333333"), 0);
  for (const char* key : {"", static_cast<const char*>(nullptr)}) {
    list.clear();
    EXPECT_EQ(SECMOLRA_QueryCusNodeinfo(key, "1003", list), 1) << LastErrorText();
    ASSERT_EQ(list.size(), 1u);
    EXPECT_EQ(V(list[0].NodeID), 3);
  }
}

TEST_F(LoginTest, QueryCusNodeinfoReportsTheBackEndsRefusal) {
  StartDefault();
  std::vector<CusNodeInfo> list;
  EXPECT_EQ(SECMOLRA_QueryCusNodeinfo("T", "4242", list), -102);
  EXPECT_NE(LastErrorText().find("4242"), std::string::npos);
  EXPECT_TRUE(list.empty());
}

TEST_F(LoginTest, TradeDateWithNobodyLoggedInIsNotConnected) {
  StartDefault();
  EXPECT_EQ(SECMOLRA_GetTradeDate(), 0);
  EXPECT_EQ(LastErrorText(), Gbk("客户未连接登录，无法获取连接"));
  EXPECT_NE(Log().find(Gbk("GetTradeDate：客户未连接登录，无法获取连接")), std::string::npos);
}

TEST_F(LoginTest, TradeDateAsksA00066WithATwoSecondTimeOut) {
  StartDefault();
  LOGIN_SIM_FN(KelSim_SetTradeDate)(20261123);
  ASSERT_GT(SECMOLRA_TradeLogin("T", "1001", "111111"), 0);
  Sim::Get().ClearCallLog();
  EXPECT_EQ(SECMOLRA_GetTradeDate(), 20261123);
  std::string calls = Sim::Get().CallLog();
  std::size_t timeout = calls.find(",2)\nKel_CreateHead(");
  ASSERT_NE(timeout, std::string::npos) << calls;
  EXPECT_NE(calls.find("A00066)\nKel_Run("), std::string::npos) << calls;
  EXPECT_EQ(LastRequest("A00066"), "");  // no fields
}

TEST_F(LoginTest, TradeDateFailuresAreRecordedUnderItsName) {
  StartDefault();
  ASSERT_GT(SECMOLRA_TradeLogin("T", "1001", "111111"), 0);
  LOGIN_SIM_FN(KelSim_FailRun)(1);
  EXPECT_EQ(SECMOLRA_GetTradeDate(), -204);
  EXPECT_EQ(LastErrorText(), Gbk("发送请求失败"));
  LOGIN_SIM_FN(KelSim_SetKvAnswer)("A00066", -7, "no date today", "");
  EXPECT_EQ(SECMOLRA_GetTradeDate(), -7);
  EXPECT_EQ(LastErrorText(), "no date today");
  LOGIN_SIM_FN(KelSim_FailAllocSession)(1);
  EXPECT_EQ(SECMOLRA_GetTradeDate(), -202);
  EXPECT_EQ(LastErrorText(), Gbk("发起会话失败"));
  EXPECT_NE(Log().find(Gbk("GetTradeDate：发送请求失败")), std::string::npos);
}
