// Connecting and closing a set, the pool's find-or-create and its staged failures, sessions
// and the answer-text helpers, against a transport double.
#include <gtest/gtest.h>

#include <string>

#include "core/context.h"
#include "core/errors.h"
#include "comm/conn_pool.h"
#include "comm/timer.h"
#include "conn_fake_kel.h"
#include "support/test_support.h"

using namespace molra::test;

namespace {

using fake::UseIni;

const std::string kFourAddrs =
    "[K]\nAuthname=u\nAuthpwd=pw\naddr=m\ntradeaddr=t\nqueryaddr=q\nsubscribeaddr=s\n";

std::string Staged() { return molra::GetStagedError().message; }

class ConnPoolTest : public ::testing::Test {
 protected:
  void SetUp() override {
    fake::Install();
    molra::StageError(0, "");
    ASSERT_TRUE(molra::CreateConnPool());
  }
  void TearDown() override { molra::TearDownConnPool(); }
  molra::ConnPool& pool() { return *molra::Pool(); }
  // A set for customer 1001 from the four-address section plus `extra` keys.
  std::shared_ptr<KelComm::KelConn> Connect(const std::string& extra = "") {
    UseIni(kFourAddrs + extra);
    auto set = pool().GetConnection("1001", "K");
    EXPECT_NE(set, nullptr);
    return set;
  }
};

}  // namespace

TEST_F(ConnPoolTest, ConnectRunsTheSetUpAndFourConnectionsInOrderWithBinding) {
  UseIni(kFourAddrs + "CertFile=c.pem\nCertPwd=cp\n");
  fake::ClearCalls();
  auto set = pool().GetConnection("1001", "K");
  ASSERT_NE(set, nullptr);
  EXPECT_EQ(fake::Calls(),
            "Kel_SetDefaultSystemId(4)\n"
            "Kel_SetParamEx(kelapi-nozip,on)\n"
            "Kel_SetParamEx(kelapi-nocrypt,on)\n"
            "Kel_SetAppInfo(molra,)\n"
            "Kel_SetCertFile(c.pem,cp,,,1)\n"
            "Kel_Connect(m,u,pw,10)\n"
            "Kel_Connect(t,u,pw,10)\n"
            "Kel_SetCustomerForBindThread(t,1001)\n"
            "Kel_Connect(q,u,pw,10)\n"
            "Kel_SetCustomerForBindThread(q,1001)\n"
            "Kel_Connect(s,u,pw,10)\n"
            "Kel_SetCustomerForBindThread(s,1001)\n"
            "Kel_SetConnEvent(m,fn)\n"
            "Kel_SetConnEvent(s,fn)\n"
            "Kel_SetConnEvent(q,fn)\n"
            "Kel_SetConnEvent(t,fn)\n");
  EXPECT_EQ(set->customer, "1001");
  EXPECT_EQ(set->mgmt_handle, fake::HandleOf("m"));
  EXPECT_EQ(set->trade_handle, fake::HandleOf("t"));
  EXPECT_EQ(set->query_handle, fake::HandleOf("q"));
  EXPECT_EQ(set->subscribe_handle, fake::HandleOf("s"));
}

TEST_F(ConnPoolTest, OnlyAddrConnectsAllFourToItAndBindsNobody) {
  UseIni("[K]\naddr=a\n");
  auto set = pool().GetConnection("1001", "K");
  ASSERT_NE(set, nullptr);
  EXPECT_EQ(fake::Calls("Kel_Connect"),
            "Kel_Connect(a,,,10)\nKel_Connect(a,,,10)\nKel_Connect(a,,,10)\nKel_Connect(a,,,10)\n");
  EXPECT_EQ(fake::Calls("Kel_SetCustomerForBindThread"), "");
  EXPECT_EQ(fake::Calls("Kel_SetCertFile"), "");
  EXPECT_NE(set->trade_handle, set->mgmt_handle);
}

TEST_F(ConnPoolTest, TradersModeSuppressesBindingEvenWithATradeAddress) {
  Connect("usetraders=1\n");
  EXPECT_EQ(fake::Calls("Kel_SetCustomerForBindThread"), "");
}

TEST_F(ConnPoolTest, InconsistentSystemTypesFailEveryConnectBeforeAnyTransportCall) {
  UseIni("[K]\naddr=a\nbackup=B\n[B]\naddr=b\nSystemType=5\n");
  for (int i = 0; i < 2; ++i) {
    fake::ClearCalls();
    EXPECT_EQ(pool().GetConnection("1001", "K"), nullptr);
    EXPECT_EQ(Staged(), Gbk("主备连接系统类型不一致"));
    EXPECT_EQ(molra::GetStagedError().code, 0);
    EXPECT_EQ(fake::Calls("Kel_Connect"), "");
    EXPECT_EQ(fake::Calls("Kel_SetParamEx"), "");
  }
}

TEST_F(ConnPoolTest, ConnectFailureStagesTransportTextCutTo127BytesKeyAndAddress) {
  UseIni(kFourAddrs);
  struct Row { const char* addr; std::string err, shown; };
  for (const Row& r : {Row{"q", "connection refused", "connection refused"},
                       Row{"m", std::string(300, 'e'), std::string(127, 'e')}}) {
    SCOPED_TRACE(r.addr);
    fake::ClearCalls();
    fake::S().failing_addrs = {r.addr};
    fake::S().last_err = r.err;
    EXPECT_EQ(pool().GetConnection("1001", "K"), nullptr);
    EXPECT_EQ(Staged(), "connect failed." + r.shown + "[key:K,addr:" + r.addr + "]\n");
    EXPECT_EQ(molra::GetStagedError().code, 0);
    EXPECT_EQ(fake::S().caps.back(), 128);  // the transport's text is read into 128 bytes
    EXPECT_EQ(fake::Calls("Kel_Connect(s"), "");  // nothing after the failure
    EXPECT_EQ(fake::Calls("Kel_SetConnEvent").find(",fn)"), std::string::npos);
    EXPECT_EQ(pool().FindConnection("1001"), nullptr);
  }
}

TEST_F(ConnPoolTest, FailedSetIsNotKeptAndTheNextRequestRetriesInFull) {
  UseIni(kFourAddrs);
  fake::S().failing_addrs = {"s"};
  EXPECT_EQ(pool().GetConnection("1001", "K"), nullptr);
  // The dropped set closes what it had opened.
  EXPECT_EQ(fake::Calls("Kel_Close"), "Kel_Close(m)\nKel_Close(t)\nKel_Close(q)\n");
  fake::S().failing_addrs.clear();
  fake::ClearCalls();
  auto set = pool().GetConnection("1001", "K");
  ASSERT_NE(set, nullptr);
  EXPECT_EQ(fake::Calls("Kel_Connect"),
            "Kel_Connect(m,u,pw,10)\nKel_Connect(t,u,pw,10)\nKel_Connect(q,u,pw,10)\n"
            "Kel_Connect(s,u,pw,10)\n");
  EXPECT_EQ(pool().FindConnection("1001"), set);
}

TEST_F(ConnPoolTest, BindFailureStagesKeyAddressAndCustomer) {
  UseIni(kFourAddrs);
  fake::S().fail_bind = 1;
  EXPECT_EQ(pool().GetConnection("1001", "K"), nullptr);
  EXPECT_EQ(Staged(), "conn bind customer failed[key:K,addr:t,khh:1001]\n");
  EXPECT_EQ(fake::Calls("Kel_Connect(q"), "");
}

TEST_F(ConnPoolTest, FoundSetIsSharedWithoutConnectingAgainWhateverTheKey) {
  auto a = Connect();
  fake::ClearCalls();
  auto b = pool().GetConnection("1001", "");
  auto c = pool().GetConnection("1001", "OTHER");
  EXPECT_EQ(a, b);
  EXPECT_EQ(a, c);
  EXPECT_EQ(fake::Calls("Kel_Connect"), "");
  EXPECT_NE(pool().GetConnection("1002", "K"), a);
}

TEST_F(ConnPoolTest, UnknownCustomerWithoutKeyIsNotConnected) {
  EXPECT_EQ(pool().GetConnection("1001", ""), nullptr);
  EXPECT_EQ(Staged(), Gbk("客户未连接登录，无法获取连接"));
}

TEST_F(ConnPoolTest, UsabilityChecksManagementThenTradeAndSubscribeButNotQuery) {
  auto set = Connect();
  fake::SetUp(set->query_handle, false);
  EXPECT_EQ(pool().GetConnection("1001", ""), set);

  fake::SetUp(set->subscribe_handle, false);
  EXPECT_EQ(pool().GetConnection("1001", ""), nullptr);
  EXPECT_EQ(Staged(), Gbk("交易、订阅连接已失效"));
  fake::SetUp(set->subscribe_handle, true);
  fake::SetUp(set->trade_handle, false);
  EXPECT_EQ(pool().GetConnection("1001", "K"), nullptr);
  EXPECT_EQ(Staged(), Gbk("交易、订阅连接已失效"));

  fake::SetUp(set->mgmt_handle, false);
  EXPECT_EQ(pool().GetConnection("1001", "K"), nullptr);
  EXPECT_EQ(Staged(), Gbk("认证管理连接已失效"));
  // Left in the map: when the transport brings it back it serves again.
  EXPECT_EQ(pool().FindConnection("1001"), set);
  fake::SetUp(set->mgmt_handle, true);
  fake::SetUp(set->trade_handle, true);
  EXPECT_EQ(pool().GetConnection("1001", ""), set);
}

TEST_F(ConnPoolTest, ReleaseConnectionDropsTheEntryAndTheLastReferenceClosesTheSet) {
  auto set = Connect();
  EXPECT_TRUE(pool().ReleaseConnection("1001"));
  EXPECT_FALSE(pool().ReleaseConnection("1001"));
  EXPECT_EQ(pool().FindConnection("1001"), nullptr);
  fake::ClearCalls();
  set.reset();
  EXPECT_EQ(fake::Calls("Kel_SetConnEvent"),
            "Kel_SetConnEvent(m,null)\nKel_SetConnEvent(s,null)\nKel_SetConnEvent(q,null)\n"
            "Kel_SetConnEvent(t,null)\n");
  EXPECT_EQ(fake::Calls("Kel_Close"), "Kel_Close(m)\nKel_Close(t)\nKel_Close(q)\nKel_Close(s)\n");
}

TEST_F(ConnPoolTest, CloseDeregistersClosesAndCancelsTheActiveSubscriptionsInOrder) {
  auto set = Connect();
  set->ActiveSlots()[KelComm::KelConn::kConfirmSlot] = 71;
  set->ActiveSlots()[KelComm::KelConn::kReportSlot] = 73;
  set->slots[1][1] = 99;  // the other group is not touched
  fake::ClearCalls();
  set->Close();
  EXPECT_EQ(fake::Calls(),
            "Kel_SetConnEvent(m,null)\nKel_SetConnEvent(s,null)\nKel_SetConnEvent(q,null)\n"
            "Kel_SetConnEvent(t,null)\n"
            "Kel_Close(m)\nKel_Close(t)\nKel_Close(q)\n"
            "Kel_AllocateSession(s)\nKel_Unsubscribe(1001,71)\nKel_ReleaseSession(1001)\n"
            "Kel_AllocateSession(s)\nKel_Unsubscribe(1002,73)\nKel_ReleaseSession(1002)\n"
            "Kel_Close(s)\n");
  EXPECT_EQ(set->mgmt_handle, 0);
  EXPECT_EQ(set->trade_handle, 0);
  EXPECT_EQ(set->query_handle, 0);
  EXPECT_EQ(set->subscribe_handle, 0);
  EXPECT_EQ(fake::OpenSessions(), 0);
}

TEST_F(ConnPoolTest, TearDownClosesEverySetStopsTheTimerAndWithdrawsThePool) {
  auto a = Connect();
  auto b = pool().GetConnection("1002", "K");
  molra::ConnPool* held = molra::Pool();  // as by a host thread inside a call
  EXPECT_EQ(molra::TimerService::LiveThreads(), 1);
  EXPECT_TRUE(molra::TearDownConnPool());
  EXPECT_EQ(molra::Pool(), nullptr);
  // The withdrawn pool is empty but still there for a call that held it.
  EXPECT_EQ(held->FindConnection("1001"), nullptr);
  EXPECT_EQ(held->GetConnection("1002", ""), nullptr);
  EXPECT_EQ(molra::TimerService::LiveThreads(), 0);
  EXPECT_EQ(a->mgmt_handle, 0);
  EXPECT_EQ(b->subscribe_handle, 0);
  EXPECT_EQ(a.use_count(), 1);  // the map no longer holds them
  fake::ClearCalls();
  a.reset();  // already closed: nothing more reaches the transport
  EXPECT_EQ(fake::Calls(), "");
  EXPECT_TRUE(molra::TearDownConnPool());  // a second tear-down does nothing
}

TEST_F(ConnPoolTest, EachRoleOpensItsSessionOnItsOwnConnection) {
  auto set = Connect();
  fake::ClearCalls();
  {
    molra::KelSession m = molra::AllocManagementSession(*set);
    molra::KelSession t = molra::AllocTradeSession(*set);
    molra::KelSession q = molra::AllocQuerySession(*set);
    molra::KelSession s = molra::AllocSubscribeSession(*set);
    EXPECT_TRUE(m && t && q && s);
    EXPECT_EQ(fake::OpenSessions(), 4);
  }
  EXPECT_EQ(fake::Calls("Kel_AllocateSession"),
            "Kel_AllocateSession(m)\nKel_AllocateSession(t)\nKel_AllocateSession(q)\n"
            "Kel_AllocateSession(s)\n");
  EXPECT_EQ(fake::OpenSessions(), 0);
}

TEST_F(ConnPoolTest, SessionFailuresAreStaged) {
  auto set = Connect();
  fake::SetUp(set->trade_handle, false);
  EXPECT_FALSE(molra::AllocTradeSession(*set));
  EXPECT_EQ(Staged(), Gbk("未连接，无法发起会话"));
  molra::StageError(0, "");
  KelComm::KelConn unconnected("", 0);
  EXPECT_FALSE(molra::AllocQuerySession(unconnected));
  EXPECT_EQ(Staged(), Gbk("未连接，无法发起会话"));
  fake::S().fail_alloc = true;
  EXPECT_FALSE(molra::AllocManagementSession(*set));
  EXPECT_EQ(Staged(), Gbk("发起会话失败"));
  EXPECT_EQ(molra::GetStagedError().code, 0);
}

TEST_F(ConnPoolTest, SessionIsReleasedOnceUnlessDetachedOrBorrowed) {
  auto set = Connect();
  kel::int64 detached;
  {
    molra::KelSession a = molra::AllocTradeSession(*set);
    molra::KelSession b = std::move(a);
    EXPECT_FALSE(a);
    molra::KelSession c = molra::AllocTradeSession(*set);
    c = std::move(b);  // c's own session is released here
    EXPECT_EQ(fake::OpenSessions(), 1);
    molra::KelSession d = molra::AllocTradeSession(*set);
    detached = d.Detach();
    molra::KelSession borrowed = molra::KelSession::Borrowed(detached, false);
    c.Release();
    c.Release();
  }
  EXPECT_EQ(fake::OpenSessions(), 1);  // only the detached one
  EXPECT_EQ(fake::Calls("Kel_ReleaseSession"), "Kel_ReleaseSession(1002)\nKel_ReleaseSession(1001)\n");
  kel::api.Kel_ReleaseSession(detached);
}

TEST_F(ConnPoolTest, SixCharacterCodesGetTheHPrefixOnlyWhenConnectingWithUa) {
  auto set = Connect("ConnWithUA=True\n");
  molra::KelSession s = molra::AllocTradeSession(*set);
  ASSERT_TRUE(s.connect_with_ua());
  fake::ClearCalls();
  EXPECT_TRUE(molra::CreateHead(s, "610301"));
  EXPECT_TRUE(molra::CreateHead(s, "6103011"));
  EXPECT_TRUE(molra::CreateHead(s, "61030"));
  EXPECT_FALSE(molra::CreateHead(s, nullptr));
  EXPECT_EQ(fake::Calls("Kel_CreateHead"),
            "Kel_CreateHead(1001,H610301)\nKel_CreateHead(1001,6103011)\n"
            "Kel_CreateHead(1001,61030)\n");
  UseIni(kFourAddrs + "ConnWithUA=yes\n");  // read afresh for the next customer's set
  auto plain = pool().GetConnection("1002", "K");
  molra::KelSession p = molra::AllocTradeSession(*plain);
  ASSERT_FALSE(p.connect_with_ua());
  fake::ClearCalls();
  EXPECT_TRUE(molra::CreateHead(p, "610301"));
  EXPECT_EQ(fake::Calls("Kel_CreateHead"), "Kel_CreateHead(" + std::to_string(p.handle()) + ",610301)\n");
}


TEST(ConnAnswerText, ItemTextGrowsPastTheFirstBuffer) {
  fake::Install();
  struct Case {
    std::size_t len;
    std::vector<kel::int32> caps;
  };
  for (const Case& c : {Case{0, {256}}, Case{255, {256}}, Case{256, {256, 257}},
                        Case{5000, {256, 5001}}}) {
    fake::S().caps.clear();
    fake::S().item = std::string(c.len, 'x');
    EXPECT_EQ(molra::GetItemString(1, 605, -1), fake::S().item) << c.len;
    EXPECT_EQ(fake::S().caps, c.caps) << c.len;
  }
  fake::S().item_absent = true;
  EXPECT_EQ(molra::GetItemString(1, 605, 0), "");
}

TEST(ConnAnswerText, ErrorTextUsesTwoKilobytesThenOneMegabyte) {
  fake::Install();
  for (auto [len, caps] : {std::pair{2047, std::vector<kel::int32>{2048}},
                           std::pair{3000, std::vector<kel::int32>{2048, 1048577}}}) {
    fake::S().caps.clear();
    fake::S().errmsg = std::string(len, 'e');
    EXPECT_EQ(molra::GetErrorString(1), fake::S().errmsg) << len;
    EXPECT_EQ(fake::S().caps, caps) << len;
  }
}
