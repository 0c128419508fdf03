// Break and reconnect events of a connection set: counting, the host's callback, rebinding,
// cancelling subscriptions, and their log lines.
#include <gtest/gtest.h>

#include <mutex>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "api/kit_state.h"
#include "comm/conn_pool.h"
#include "conn_fake_kel.h"
#include "conn_host_events.h"
#include "log/log.h"
#include "support/test_support.h"

using namespace molra::test;
using KelComm::KelConn;

namespace {

using hostevents::Event;
std::vector<Event> Events() { return hostevents::Recorded(); }

class ConnEventsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    fake::Install();
    logdir_ = MakeTempDir();
    molra::SetUpLogging(logdir_);
    molra::Kit().conn_event_callback.store(&hostevents::Record);
  }
  void TearDown() override { molra::TearDownConnPool(); }

  // A connected set from a section with four addresses plus `extra` keys.
  std::shared_ptr<KelConn> Connect(const std::string& extra = "") {
    fake::UseIni("[K]\nName=Primary\naddr=m\ntradeaddr=t\nqueryaddr=q\nsubscribeaddr=s\n" + extra);
    if (molra::Pool() == nullptr) molra::CreateConnPool();
    auto set = molra::Pool()->GetConnection("1001", "K");
    EXPECT_NE(set, nullptr);
    fake::ClearCalls();
    return set;
  }

  std::string Log() { return KitLog(logdir_); }

  std::string logdir_;
};

}  // namespace

TEST_F(ConnEventsTest, TwoBreaksAndTwoRecoveriesGiveOneBreakAndOneRecoveryToTheHost) {
  auto set = Connect();
  fake::Raise(set->trade_handle, 7);
  fake::Raise(set->query_handle, 9);
  EXPECT_EQ(set->broken_count.load(), 2);
  fake::Raise(set->query_handle, 0);
  fake::Raise(set->trade_handle, 0);
  EXPECT_EQ(set->broken_count.load(), 0);
  EXPECT_EQ(Events(), (std::vector<Event>{{"1001", "Primary", 7, 0}, {"1001", "Primary", 0, 0}}));
  std::string log = Log();
  EXPECT_NE(log.find("[info] K 交易服务连接中断"), std::string::npos);
  EXPECT_NE(log.find("[info] K 查询服务连接中断"), std::string::npos);
  EXPECT_NE(log.find("[info] 查询服务重新连接成功[KEY:K KHH:1001]"), std::string::npos);
  EXPECT_NE(log.find("[info] 交易服务重新连接成功[KEY:K KHH:1001]"), std::string::npos);
  molra::Kit().conn_event_callback.store(nullptr);  // no callback set is fine
  fake::Raise(set->trade_handle, 2);
  fake::Raise(set->trade_handle, 0);
  EXPECT_EQ(set->broken_count.load(), 0);
  EXPECT_EQ(Events().size(), 2u);
}

TEST_F(ConnEventsTest, RecoveryWithoutBreakDrivesTheCountNegativeAndStaysSilent) {
  auto set = Connect();
  fake::Raise(set->trade_handle, 0);
  EXPECT_EQ(set->broken_count.load(), -1);
  EXPECT_TRUE(Events().empty());
  fake::Raise(set->query_handle, 5);
  EXPECT_EQ(set->broken_count.load(), 0);
  EXPECT_TRUE(Events().empty());
}

TEST_F(ConnEventsTest, RepeatedBreakIsNotCountedButReachesTheHostWhileOnlyOneIsDown) {
  auto set = Connect();
  fake::Raise(set->mgmt_handle, 3);
  fake::Raise(set->mgmt_handle, 3);
  EXPECT_EQ(set->broken_count.load(), 1);
  EXPECT_EQ(Events().size(), 2u);
  fake::Raise(set->mgmt_handle, 4);  // another code on the same connection counts again
  EXPECT_EQ(set->broken_count.load(), 2);
  fake::Raise(set->mgmt_handle, 4);  // repeated while two are counted: silent
  EXPECT_EQ(Events(), (std::vector<Event>{{"1001", "Primary", 3, 0}, {"1001", "Primary", 3, 0}}));
  EXPECT_EQ(set->mgmt_state.load(), 4);
}

TEST_F(ConnEventsTest, NullSetAndUnknownHandleChangeNothing) {
  auto set = Connect();
  KelConn::on_conn_event(set->trade_handle, 5, nullptr);
  KelConn::on_conn_event(424242, 5, set.get());
  EXPECT_EQ(set->broken_count.load(), 0);
  EXPECT_EQ(set->trade_state.load(), 0);
  EXPECT_EQ(fake::Calls(), "");
  EXPECT_TRUE(Events().empty());
}

TEST_F(ConnEventsTest, RecoveryRebindsTheCustomerExceptOnTheManagementConnection) {
  auto set = Connect();
  fake::S().fail_bind = 1;  // the first rebind (trade) fails: a warning
  for (kel::int64 h : {set->mgmt_handle.load(), set->trade_handle.load(), set->query_handle.load(),
                        set->subscribe_handle.load()}) {
    fake::Raise(h, 1);
    fake::Raise(h, 0);
  }
  EXPECT_EQ(fake::Calls("Kel_SetCustomerForBindThread"),
            "Kel_SetCustomerForBindThread(t,1001)\nKel_SetCustomerForBindThread(q,1001)\n"
            "Kel_SetCustomerForBindThread(s,1001)\n");
  EXPECT_NE(Log().find("[info] 连接重新绑定客户号成功[KEY:K KHH:1001]"), std::string::npos);
  EXPECT_NE(Log().find("[warning] 重新连接到服务时绑定客户号失败[KEY:K KHH:1001]"), std::string::npos);
}

TEST_F(ConnEventsTest, NoRebindInTradersModeOrWithDefaultedTradeAddress) {
  auto set = Connect("usetraders=1\n");
  fake::Raise(set->trade_handle, 0);
  EXPECT_EQ(fake::Calls("Kel_SetCustomerForBindThread"), "");
  molra::TearDownConnPool();

  fake::UseIni("[K]\naddr=m\n");
  molra::CreateConnPool();
  auto plain = molra::Pool()->GetConnection("1002", "K");
  ASSERT_NE(plain, nullptr);
  fake::ClearCalls();
  fake::Raise(plain->query_handle, 0);
  EXPECT_EQ(fake::Calls("Kel_SetCustomerForBindThread"), "");
}

TEST_F(ConnEventsTest, SubscribeRecoveryCancelsPrimarySubscriptionsOnlyWhenAsked) {
  auto set = Connect("cancelkelresub=1\n");
  set->slots[0][KelConn::kConfirmSlot] = 11;
  set->slots[0][KelConn::kReportSlot] = 13;
  set->slots[1][KelConn::kConfirmSlot] = 21;
  fake::Raise(set->subscribe_handle, 0);
  EXPECT_EQ(fake::Calls(),
            "Kel_SetCustomerForBindThread(s,1001)\n"
            "Kel_AllocateSession(s)\nKel_Unsubscribe(1001,11)\nKel_Unsubscribe(1001,13)\n"
            "Kel_ReleaseSession(1001)\n");
  EXPECT_EQ(fake::OpenSessions(), 0);
  EXPECT_NE(Log().find("[info] KelComm::KelConn::on_conn_event subscribe crash: 订阅句柄置0"),
            std::string::npos);
  // The cancelled handles are cleared: the next login subscribes again.
  EXPECT_EQ(set->slots[0][KelConn::kConfirmSlot], 0);
  EXPECT_EQ(set->slots[0][KelConn::kReportSlot], 0);
  EXPECT_EQ(set->slots[1][KelConn::kConfirmSlot], 21);
}

TEST_F(ConnEventsTest, SubscribeRecoveryWithoutCancelStillLogsTheCrash) {
  auto set = Connect();
  set->slots[0][KelConn::kConfirmSlot] = 11;
  fake::Raise(set->subscribe_handle, 0);
  EXPECT_EQ(fake::Calls("Kel_Unsubscribe"), "");
  EXPECT_EQ(fake::Calls("Kel_AllocateSession"), "");
  EXPECT_EQ(set->slots[0][KelConn::kConfirmSlot], 11);
  EXPECT_NE(Log().find("subscribe crash: 订阅句柄置0"), std::string::npos);
  EXPECT_NE(Log().find("订阅服务重新连接成功[KEY:K KHH:1001]"), std::string::npos);
}

TEST_F(ConnEventsTest, EventsOnTransportThreadsWhileRequestsRun) {
  auto set = Connect();
  const kel::int64 handles[] = {set->mgmt_handle.load(), set->trade_handle.load(),
                                set->query_handle.load(), set->subscribe_handle.load()};
  std::vector<std::thread> threads;
  for (kel::int64 h : handles) {
    threads.emplace_back([h] {
      for (int i = 0; i < 200; ++i) {
        fake::Raise(h, 1 + i % 3);
        fake::Raise(h, 0);
      }
    });
  }
  threads.emplace_back([] {
    for (int i = 0; i < 200; ++i) {
      auto s = molra::Pool()->GetConnection("1001", "");
      if (s) molra::KelSession session = molra::AllocQuerySession(*s);
    }
  });
  for (auto& t : threads) t.join();
  EXPECT_EQ(set->broken_count.load(), 0);
  EXPECT_EQ(fake::OpenSessions(), 0);
  for (const Event& e : Events()) EXPECT_EQ(e.khh, "1001");
}

TEST_F(ConnEventsTest, EventsForAClosedOrDestroyedSetAreIgnored) {
  auto set = Connect();
  const kel::int64 trade = set->trade_handle;
  set->Close();
  KelConn::on_conn_event(trade, 5, set.get());
  EXPECT_EQ(set->broken_count.load(), 0);
  EXPECT_EQ(set->trade_state.load(), 0);

  molra::CreateConnPool();
  auto second = molra::Pool()->GetConnection("1002", "K");
  ASSERT_NE(second, nullptr);
  void* gone = second.get();
  const kel::int64 query = second->query_handle;
  ASSERT_TRUE(molra::Pool()->ReleaseConnection("1002"));
  second.reset();  // destroyed: an event still on its way must not reach it
  KelConn::on_conn_event(query, 5, gone);
  KelConn::on_conn_event(query, 0, gone);
  EXPECT_TRUE(Events().empty());
}
