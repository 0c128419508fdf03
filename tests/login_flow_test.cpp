// AccountInfo::Login against the simulated back end: the two login forms and their exact
// requests, node resolution, tokens, the registry entries and every failure path.
#include <cstring>
#include <memory>
#include <sstream>
#include <vector>

#include "account/account_info.h"
#include "comm/conn_pool.h"
#include "core/context.h"
#include "support/login_fixture.h"

using namespace molra::test;

namespace {

// The calls from the password encoding to the run of the login, with each call's session
// argument dropped ("Kel_SetNode(4101,N1)" reads "Kel_SetNode(N1)").
std::vector<std::string> LoginCalls(const std::string& log) {
  std::vector<std::string> out;
  std::istringstream in(log);
  std::string line;
  bool on = false;
  while (std::getline(in, line)) {
    if (line.rfind("Kel_UniEncode", 0) == 0) on = true;
    if (!on) continue;
    if (line.rfind("Kel_UniEncode", 0) != 0) {
      std::size_t open = line.find('(');
      std::size_t end = line.find_first_of(",)", open);
      line.erase(open + 1, end - open - (line[end] == ',' ? 0 : 1));
      if (line[open + 1] == ',') line.erase(open + 1, 1);
    }
    out.push_back(line);
    if (line.rfind("Kel_Run(", 0) == 0) break;
  }
  return out;
}

const std::vector<std::string> kSysInfoCalls = {"Kel_SetSysInfo(0,2075)", "Kel_SetSysInfo(1,2076)",
                                                "Kel_SetSysInfo(4,3800)", "Kel_SetSysInfo(5,3085)",
                                                "Kel_SetSysInfo(6,3086)", "Kel_Run()"};

std::vector<std::string> Join(std::vector<std::string> a, const std::vector<std::string>& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

int64_t ConnOf(const char* addr) { return LOGIN_SIM_FN(KelSim_ConnectionByAddr)(addr, 0); }

bool Contains(const std::string& s, const std::string& what) {
  return s.find(what) != std::string::npos;
}

// The encoded password of a login request "605=1001|598=<encoded>|781=...".
std::string EncodedPassword(const std::string& req) {
  const std::size_t start = std::strlen("605=1001|598="), end = req.find("|781=");
  EXPECT_NE(end, std::string::npos) << req;
  return end == std::string::npos ? "" : req.substr(start, end - start);
}

CusLoginInfo Record(const char* khh, const char* pwd, int32_t node) {
  CusLoginInfo info{};
  std::strcpy(info.KHH, khh);
  std::strcpy(info.Password, pwd);
  info.NodeID = node;
  return info;
}

}  // namespace

TEST_F(LoginTest, DirectFormSendsSettingsAndFieldsInOrderAndRegistersTheCustomerAsDefault) {
  StartDefault();
  ASSERT_TRUE(SECMOLRA_SetWTFS("7"));
  ASSERT_TRUE(SECMOLRA_SetNode("N1"));
  Sim::Get().ClearCallLog();
  int64_t token = SECMOLRA_TradeLogin("T", "1001", "111111");
  ASSERT_GT(token, 0) << LastErrorText();
  std::string calls = Sim::Get().CallLog();
  std::string req = LastRequest("610301");
  std::string encoded = EncodedPassword(req);
  EXPECT_NE(encoded, "111111");  // the password went out encoded
  EXPECT_EQ(LoginCalls(calls), Join({"Kel_UniEncode3rd(1001)", "Kel_SetWTFS(7)", "Kel_SetNode(N1)",
                                     "Kel_SetNodeId(1)", "Kel_CreateHead(610301)",
                                     "Kel_SetItem(605,1001)", "Kel_SetItem(598," + encoded + ")",
                                     "Kel_SetInt(781,6)", "Kel_SetItem(1264,molra-test)"},
                                    kSysInfoCalls));
  EXPECT_EQ(req, "605=1001|598=" + encoded + "|781=6|1264=molra-test");
  // The node list went first, with the key's exchange short code.
  EXPECT_EQ(LastRequest("D00749"), "605=1001|599=SHA");
  EXPECT_LT(calls.find("D00749"), calls.find("610301"));
  EXPECT_TRUE(
      Contains(calls, "Kel_AllocateSession(" + std::to_string(ConnOf("127.0.0.1:9102")) + ")"));
  EXPECT_EQ(LOGIN_SIM_FN(KelSim_OpenSessions)(), 0);
  EXPECT_TRUE(Contains(Log(), "AccountInfo::Login success. [khh:1001 systype:4 token:" +
                                  std::to_string(token) + "]"));
  auto rec = Customers().Find(4, "1001");
  ASSERT_NE(rec, nullptr);
  EXPECT_EQ(rec->token, token);
  EXPECT_EQ(rec->wtfs, "7");
  EXPECT_EQ(Customers().nodes.Get("1001"), 1);
  EXPECT_EQ(Customers().DefaultKhh(0), "1001");
  EXPECT_EQ(Customers().DefaultKhh(4), "1001");
  auto conn = *KitPool()->GetConnection("1001", "");
  ASSERT_NE(conn, nullptr);
  EXPECT_EQ(Customers().DefaultConn(4), conn);
  EXPECT_EQ(Customers().DefaultConn(0), conn);
}

TEST_F(LoginTest, AuthenticationFormSendsOperatorCodeSystemTypeAndAppFields) {
  StartDefault("", "use3rd=0\n");
  int64_t token = SECMOLRA_TradeLogin("T", "1001", "111111");
  ASSERT_GT(token, 0) << LastErrorText();
  std::string calls = Sim::Get().CallLog();
  std::string req = LastRequest("A00401");
  std::string encoded = EncodedPassword(req);
  EXPECT_EQ(LoginCalls(calls),
            Join({"Kel_UniEncode(1001)", "Kel_SetWTFS()", "Kel_SetGYDM(GY01)", "Kel_SetNode()",
                  "Kel_SetNodeId(1)", "Kel_CreateHead(A00401)", "Kel_SetItem(605,1001)",
                  "Kel_SetItem(598," + encoded + ")", "Kel_SetInt(781,5)", "Kel_SetInt(1923,4)",
                  "Kel_SetItem(3071,molra)", "Kel_SetItem(3072,)", "Kel_SetItem(1264,molra-test)"},
                 kSysInfoCalls));
  EXPECT_EQ(req, "605=1001|598=" + encoded + "|781=5|1923=4|3071=molra|3072=|1264=molra-test");
  // The authentication form's node list carries no exchange code; both run on the
  // management connection.
  EXPECT_EQ(LastRequest("A00210"), "605=1001");
  EXPECT_EQ(LastRequest("D00749"), "<none>");
  EXPECT_EQ(LastRequest("610301"), "<none>");
  std::string mgmt = "Kel_AllocateSession(" + std::to_string(ConnOf("127.0.0.1:9101")) + ")";
  EXPECT_EQ(Count(calls, mgmt), 3u);  // node list, login, server time
}

TEST_F(LoginTest, AuthenticationTokenWithLettersIsTheCustomerNumber) {
  StartDefault("", "use3rd=0\n");
  LOGIN_SIM_FN(KelSim_SetKvAnswer)("A00401", 1, "ok", "605=1001|1600=abc");
  EXPECT_EQ(SECMOLRA_TradeLogin("T", "1001", "111111"), 1001);
  EXPECT_EQ(V(Customers().Find(4, "1001")->token), 1001);
  // A numeric text is taken as it stands.
  LOGIN_SIM_FN(KelSim_SetKvAnswer)("A00401", 1, "ok", "605=1001|1600=4711");
  EXPECT_EQ(SECMOLRA_TradeLogin("T", "1001", "111111"), 4711);
}

TEST_F(LoginTest, DirectTokenWithLettersReadsAsZeroAndIsReportedAs220) {
  StartDefault();
  LOGIN_SIM_FN(KelSim_SetKvAnswer)("610301", 1, "ok", "605=1001|1600=abc");
  SECMOLRA_SetLastError(-5, "left alone", nullptr, nullptr);
  EXPECT_EQ(SECMOLRA_TradeLogin("T", "1001", "111111"), -220);
  // -220 is not recorded: the last error is what the login left.
  EXPECT_EQ(LastError(), -5);
  EXPECT_EQ(LastErrorText(), "left alone");
}

TEST_F(LoginTest, AnswerCodeZeroIsReportedAs220WithTheAnswersMessage) {
  StartDefault();
  LOGIN_SIM_FN(KelSim_SetKvAnswer)("610301", 0, "nothing to say", "");
  EXPECT_EQ(SECMOLRA_TradeLogin("T", "1001", "111111"), -220);
  EXPECT_EQ(LastError(), 0);
  EXPECT_EQ(LastErrorText(), "nothing to say");
  EXPECT_EQ(Customers().Find(4, "1001"), nullptr);
  EXPECT_EQ(LOGIN_SIM_FN(KelSim_SubscriptionCount)("1001"), 0);
  CusLoginInfo info = Record("1001", "111111", 1);
  EXPECT_EQ(SECMOLRA_TradeLoginEx("T", &info), -220);
}

TEST_F(LoginTest, RefusedLoginReturnsTheBackEndsCodeAndKeepsTheNodeWriteBack) {
  StartDefault();
  EXPECT_EQ(SECMOLRA_TradeLogin("T", "1001", "wrong"), -108);
  EXPECT_EQ(LastError(), -108);
  EXPECT_EQ(LastErrorText(), "wrong trade password");
  EXPECT_TRUE(Contains(Log(), Gbk("AccountInfo::Login：wrong trade password")));
  EXPECT_EQ(Customers().Find(4, "1001"), nullptr);
  EXPECT_EQ(Customers().DefaultKhh(0), "");
  EXPECT_EQ(Customers().nodes.Get("1001"), 1);
  EXPECT_EQ(LOGIN_SIM_FN(KelSim_OpenSessions)(), 0);
}

TEST_F(LoginTest, TwoTypeFourNodesWithoutAChoiceAre226) {
  StartDefault();
  EXPECT_EQ(SECMOLRA_TradeLogin("T", "1002", "222222"), -226);
  EXPECT_EQ(LastErrorText(), Gbk("客户存在多个节点，未指定交易节点"));
  EXPECT_EQ(LastRequest("610301"), "<none>");
  EXPECT_EQ(Customers().Find(4, "1002"), nullptr);
}

TEST_F(LoginTest, TypeFiveNodeIsIgnoredAndTheTypeFourNodeIsUsed) {
  StartDefault();
  ASSERT_GT(SECMOLRA_TradeLogin("T", "1003", "333333"), 0) << LastErrorText();
  EXPECT_EQ(Customers().nodes.Get("1003"), 3);
  EXPECT_TRUE(Contains(LoginCalls(Sim::Get().CallLog())[3], "Kel_SetNodeId(3)"));
}

TEST_F(LoginTest, NoTypeFourNodeIs227) {
  StartDefault();
  EXPECT_EQ(SECMOLRA_TradeLogin("T", "1004", "444444"), -227);
  EXPECT_EQ(LastErrorText(), Gbk("客户未开通WOQ交易"));
}

TEST_F(LoginTest, SetCusNodeIdIsResetByLoginWhileLoginExWithANodeSkipsTheNodeList) {
  StartDefault();
  ASSERT_TRUE(SECMOLRA_SetCusNodeID("1002", 2));
  EXPECT_EQ(SECMOLRA_TradeLogin("T", "1002", "222222"), -226);
  EXPECT_NE(LastRequest("D00749"), "<none>");

  Sim::Get().ClearCallLog();
  LOGIN_SIM_FN(KelSim_Reset)();
  CusLoginInfo info = Record("1002", "222222", 2);
  info.Token = -1;
  int64_t token = SECMOLRA_TradeLoginEx("T", &info);
  ASSERT_GT(token, 0) << LastErrorText();
  EXPECT_EQ(V(info.Token), token);
  EXPECT_EQ(V(info.NodeID), 2);
  EXPECT_EQ(LastRequest("D00749"), "<none>");
  EXPECT_TRUE(Contains(Sim::Get().CallLog(), "Kel_CreateHead"));
  EXPECT_EQ(Customers().nodes.Get("1002"), 2);
  EXPECT_TRUE(
      Contains(Log(), "SECMOLRA_TradeLoginEx lpKeyName:T khh:1002 tradenodeID:2 nodeinfo:"));
}

TEST_F(LoginTest, LoginExWithoutANodeWritesTheResolvedNodeBack) {
  StartDefault();
  CusLoginInfo info = Record("1003", "333333", 0);
  std::strcpy(info.Node, "NODE-X");
  std::strcpy(info.WTFS, "32");
  ASSERT_GT(SECMOLRA_TradeLoginEx("T", &info), 0) << LastErrorText();
  EXPECT_EQ(V(info.NodeID), 3);
  std::vector<std::string> calls = LoginCalls(Sim::Get().CallLog());
  ASSERT_GE(calls.size(), 4u);
  EXPECT_EQ(calls[1], "Kel_SetWTFS(32)");
  EXPECT_EQ(calls[2], "Kel_SetNode(NODE-X)");
  EXPECT_EQ(Customers().Find(4, "1003")->wtfs, "32");
}

TEST_F(LoginTest, FailedRunOfTheLoginIs204AndReleasesTheSession) {
  StartDefault();
  CusLoginInfo info = Record("1001", "111111", 1);
  LOGIN_SIM_FN(KelSim_FailRun)(1);
  EXPECT_EQ(SECMOLRA_TradeLoginEx("T", &info), -204);
  EXPECT_EQ(LastErrorText(), Gbk("发送请求失败"));
  EXPECT_EQ(V(info.ErrorCode), -204);
  EXPECT_TRUE(Contains(Log(), Gbk("AccountInfo::Login：发送请求失败")));
  EXPECT_EQ(LOGIN_SIM_FN(KelSim_OpenSessions)(), 0);
}

TEST_F(LoginTest, FailedRunOfTheNodeListIs204UnderItsOwnName) {
  StartDefault();
  LOGIN_SIM_FN(KelSim_FailRun)(1);
  EXPECT_EQ(SECMOLRA_TradeLogin("T", "1001", "111111"), -204);
  EXPECT_TRUE(Contains(Log(), Gbk("AccountInfo::AcctManage::GetAccountJDBH：发送请求失败")));
  EXPECT_EQ(LOGIN_SIM_FN(KelSim_OpenSessions)(), 0);
}

TEST_F(LoginTest, NoSessionIs202WithTheStagedMessage) {
  StartDefault();
  CusLoginInfo info = Record("1001", "111111", 1);
  LOGIN_SIM_FN(KelSim_FailAllocSession)(1);
  EXPECT_EQ(SECMOLRA_TradeLoginEx("T", &info), -202);
  EXPECT_EQ(LastErrorText(), Gbk("发起会话失败"));
  LOGIN_SIM_FN(KelSim_FailAllocSession)(1);
  EXPECT_EQ(SECMOLRA_TradeLogin("T", "1001", "111111"), -202);
  EXPECT_TRUE(Contains(Log(), Gbk("AccountInfo::AcctManage::GetAccountJDBH：发起会话失败")));
}

TEST_F(LoginTest, AuthenticationFormNeedsTheCustomersSetInThePool) {
  StartDefault("", "use3rd=0\n");
  // A set built from the key but never registered in the pool for this customer.
  auto loose = std::make_shared<KelComm::KelConn>("T");
  ASSERT_TRUE(loose->Connect("1001"));
  CusLoginInfo info = Record("1001", "111111", 1);
  molra::Result<std::int64_t> token = molra::AccountInfo::Login(*molra::CurrentKit(), loose, info);
  ASSERT_FALSE(token);
  EXPECT_EQ(token.failure().code, -224);
  EXPECT_EQ(token.failure().message, Gbk("获取不到连接配置信息"));
  loose->Close();
}

TEST_F(LoginTest, NodeListOfAnotherSystemTypeIsInvalid) {
  StartDefault();
  auto conn = std::make_shared<KelComm::KelConn>("T");
  ASSERT_TRUE(conn->Connect("1001"));
  conn->system_type = 6;
  std::vector<CusNodeInfo> list;
  molra::Result<std::int64_t> n =
      molra::AccountInfo::AcctManage::GetAccountJDBH("1001", *conn, list, 0);
  ASSERT_FALSE(n);
  EXPECT_EQ(n.failure().code, -223);
  EXPECT_EQ(n.failure().message, Gbk("无效系统类型6"));
  EXPECT_EQ(LOGIN_SIM_FN(KelSim_OpenSessions)(), 0);
  conn->Close();
}
