// Account management against the simulated back end: function codes by password kind, the
// result of the password change, request fields in order, session settings, function names
// of every failure, and sessions released.
#include <cstring>
#include <string>

#include "comm/conn_pool.h"
#include "core/context.h"
#include "support/login_fixture.h"
#include "support/query_support.h"
#include "support/sim_api.h"

using namespace molra::test;

namespace {

class Account : public LoginTest {
 protected:
  void LogIn(const char* khh, const char* pwd, int32_t node = 0) {
    StartDefault();
    CusLoginInfo info{};
    std::strcpy(info.KHH, khh);
    std::strcpy(info.Password, pwd);
    info.NodeID = node;
    ASSERT_GT(SECMOLRA_TradeLoginEx("T", &info), 0) << Err();
    Sim::Get().ClearCallLog();
  }
  static std::string Err() { return LastErrorText(); }
  static std::string Encoded(const char* khh, const char* pwd) {
    char buf[1024] = {};
    std::strcpy(buf, pwd);
    kel::int32 len = sizeof buf;
    SimKel().Kel_UniEncode3rd(khh, buf, &len);
    return buf;
  }
  static bool Sent(const char* func) {
    return LOGIN_SIM_FN(KelSim_LastRequest)(func, nullptr, 0) >= 0;
  }
  static int32_t OpenSessions() { return LOGIN_SIM_FN(KelSim_OpenSessions)(); }
  void ExpectError(std::int64_t got, std::int64_t code, const std::string& msg,
                   const std::string& func) {
    ExpectFailure(got, code, msg, func, Log());
  }
};

}  // namespace

TEST_F(Account, PasswordKindZeroSends610303AndEveryOtherKind610304) {
  LogIn("1001", "111111");
  EXPECT_EQ(SECMOLRA_ModifyPwd("1001", "111111", "123456", 0), 1) << Err();
  EXPECT_TRUE(Sent("610303"));
  EXPECT_FALSE(Sent("610304"));
  EXPECT_EQ(LastRequest("610303"), "605=1001|781=6|631=" + Encoded("1001", "111111") +
                                       "|640=" + Encoded("1001", "123456"));
  // The back end accepts the encoded passwords as they are: the log carries neither.
  const std::string log = Log();
  EXPECT_NE(log.find("AccountInfo::ScModifyPwd Req 610303 modify pwd. Param[khh:1001 oldpwd:*** "
                     "newpwd:***]"),
            std::string::npos);
  for (const char* pwd : {"111111", "123456"}) {
    EXPECT_EQ(log.find(Encoded("1001", pwd)), std::string::npos) << pwd;
  }
  for (int kind : {-1, 2}) {
    LOGIN_SIM_FN(KelSim_Reset)();
    EXPECT_EQ(SECMOLRA_ModifyPwd("1001", "111111", "2", kind), 1) << kind << ": " << Err();
    EXPECT_TRUE(Sent("610304")) << kind;
    EXPECT_FALSE(Sent("610303")) << kind;
  }
  EXPECT_NE(Log().find("AccountInfo::ScModifyPwd success."), std::string::npos);
}

TEST_F(Account, PasswordChangeResultIsKey507NotTheAnswerCode) {
  LogIn("1001", "111111");
  // The back end refuses a wrong old password with -108 and row state -108.
  ExpectError(SECMOLRA_ModifyPwd("1001", "999999", "123456", 0), -108, "wrong old password",
              "AccountInfo::ScModifyPwd");
  EXPECT_NE(Log().find("AccountInfo::ScModifyPwd failed."), std::string::npos);
  // A negative answer code with a row state of 0 is a success for the password change.
  LOGIN_SIM_FN(KelSim_SetKvAnswer)("610303", -1, "ignored", "507=0");
  EXPECT_EQ(SECMOLRA_ModifyPwd("1001", "111111", "123456", 0), 0);
  EXPECT_EQ(OpenSessions(), 0);
}

TEST_F(Account, PasswordChangeOnAnotherSystemTypeIsNotImplemented) {
  LogIn("1001", "111111");
  auto conn = *KitPool()->GetConnection("1001", "");
  ASSERT_NE(conn, nullptr);
  Customers().Register(5, "1001", Customers().Find(4, "1001"));
  conn->system_type = 5;
  ExpectError(SECMOLRA_ModifyPwd("1001", "111111", "1", 0), -222, "功能未实现",
              "AccountInfo::ModifyPwd");
  ExpectError(SECMOLRA_FundTransIn("1001", "111111", 1, "", "", "", ""), -222, "功能未实现",
              "AccountInfo::FunMDBFundsTransfer");
  conn->system_type = 4;
  EXPECT_EQ(Sim::Get().CallLog().find("Kel_AllocateSession("), std::string::npos);
}

TEST_F(Account, FundTransferSendsSettingsThenFieldsInOrder) {
  StartDefault();
  ASSERT_TRUE(SECMOLRA_SetWTFS("7"));
  ASSERT_TRUE(SECMOLRA_SetNode("N1"));
  ASSERT_GT(SECMOLRA_TradeLogin("T", "1001", "111111"), 0) << Err();
  Sim::Get().ClearCallLog();
  EXPECT_EQ(SECMOLRA_FundTransIn("1001", "111111", 100.5, "", nullptr, "t6", nullptr), 1) << Err();
  EXPECT_EQ(LastRequest("610403"), "605=1001|808=100.500000|598=" + Encoded("1001", "111111") +
                                       "|781=6|716=|793=|765=t6|730=");
  std::string log = Sim::Get().CallLog();
  std::size_t wtfs = log.find("Kel_SetWTFS(");
  std::size_t node = log.find("Kel_SetNode(");
  std::size_t head = log.find("Kel_CreateHead(");
  ASSERT_NE(wtfs, std::string::npos);
  EXPECT_NE(log.find(",7)", wtfs), std::string::npos);
  EXPECT_EQ(log.substr(node, log.find('\n', node) - node).substr(log.find(',', node) - node),
            ",N1)");
  EXPECT_LT(wtfs, node);
  EXPECT_LT(node, head);
  EXPECT_NE(log.find("610403", head), std::string::npos);
  EXPECT_EQ(SECMOLRA_FundTransOut("1001", "111111", 0.5, "", "", "", "memo"), 1) << Err();
  EXPECT_EQ(LastRequest("610404"), "605=1001|808=0.500000|598=" + Encoded("1001", "111111") +
                                       "|781=6|716=|793=|765=|730=memo");
  EXPECT_NE(Log().find("AccountInfo::FunMDBFundsTransfer success."), std::string::npos);
  EXPECT_EQ(OpenSessions(), 0);
}

TEST_F(Account, RefusedTransferCarriesTheAnswersCodeAndText) {
  LogIn("1001", "111111");
  LOGIN_SIM_FN(KelSim_SetKvAnswer)("610404", -103, Gbk("可用资金不足").c_str(), "507=0");
  ExpectError(SECMOLRA_FundTransOut("1001", "111111", 1e12, "", "", "", ""), -103, "可用资金不足",
              "AccountInfo::FunMDBFundsTransfer");
  EXPECT_NE(Log().find("AccountInfo::FunMDBFundsTransfer failed."), std::string::npos);
  EXPECT_EQ(OpenSessions(), 0);
}

TEST_F(Account, NodeOperationsSendTheirFieldsAndTheRatioReadsBack) {
  LogIn("1002", "222222", 1);
  LOGIN_SIM_FN(KelSim_SetKvAnswer)("910001", 0, "", "");
  EXPECT_EQ(SECMOLRA_FundTransBetweenNodes(4, "1002", nullptr, 10, 1, 2, "r"), 0) << Err();
  EXPECT_EQ(LastRequest("910001"), "605=1002|511=RMB|716=|808=10.000000|935=1|936=2|730=r");
  EXPECT_EQ(SECMOLRA_ModifyZJHBCL(4, "1002", "", 1, 2, 0.3, 0.7, nullptr), 1) << Err();
  EXPECT_EQ(LastRequest("910004"),
            "605=1002|511=RMB|716=|935=1|936=2|940=0.300000|941=0.700000|730=");
  std::vector<ZJHBCLRecord> ratios;
  ASSERT_EQ(SECMOLRA_QueryZJHBCL("1002", "", ratios), 1) << Err();
  EXPECT_EQ(V(ratios[0].Node1), 1);
  EXPECT_EQ(V(ratios[0].Node2), 2);
  EXPECT_DOUBLE_EQ(V(ratios[0].Ratio1), 0.3);
  EXPECT_DOUBLE_EQ(V(ratios[0].Ratio2), 0.7);
  // Nodes the customer does not have: the back end refuses under the method's name.
  ExpectError(SECMOLRA_ModifyZJHBCL(4, "1002", "", 1, 3, 0.5, 0.5, ""), -109,
              "nodes 1 and 3 are not two trading nodes of the customer",
              "AccountInfo::ModifyZJHBCL");
}

TEST_F(Account, FailuresAfterTheLookupNameTheMethodAndReleaseTheSession) {
  LogIn("1001", "111111");
  LOGIN_SIM_FN(KelSim_FailRun)(1);
  ExpectError(SECMOLRA_FundTransIn("1001", "111111", 1, "", "", "", ""), -204, "发送请求失败",
              "AccountInfo::FunMDBFundsTransfer");
  EXPECT_EQ(OpenSessions(), 0);
  LOGIN_SIM_FN(KelSim_FailAllocSession)(1);
  ExpectError(SECMOLRA_ModifyPwd("1001", "111111", "1", 0), -202, "发起会话失败",
              "AccountInfo::ScModifyPwd");
  LOGIN_SIM_FN(KelSim_FailRun)(1);
  ExpectError(SECMOLRA_FundTransBetweenNodes(4, "1001", "", 1, 1, 2, ""), -204, "发送请求失败",
              "AccountInfo::FundTransBetweenNodes");
  EXPECT_EQ(OpenSessions(), 0);
}

TEST_F(Account, LoggedOutCustomerIsRefusedUnderTheExportName) {
  LogIn("1001", "111111");
  ASSERT_EQ(SECMOLRA_TradeLogout("1001"), 1);
  ExpectError(SECMOLRA_FundTransIn("1001", "111111", 1, "", "", "", ""), -203, "客户未登录",
              "SECMOLRA_FundTransIn");
  ExpectError(SECMOLRA_ModifyPwd("1001", "111111", "1", 0), -203, "客户未登录",
              "SECMOLRA_ModifyPwd");
  ExpectError(SECMOLRA_ModifyZJHBCL(4, "1001", "", 1, 2, 0, 0, ""), -203, "客户未登录",
              "SECMOLRA_ModifyZJHBCL");
  EXPECT_EQ(Sim::Get().CallLog().find("Kel_AllocateSession("), std::string::npos);
}
