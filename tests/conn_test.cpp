// The connection manager on the simulated transport: opening a set (the calls, in order, and
// the binding rules), the checks a set found in the pool must pass, break and recovery events
// (what the host hears, rebinding, the subscribe connection), and the tear-down at exit.
#include <gtest/gtest.h>

#include <filesystem>
#include <mutex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "comm/conn_pool.h"
#include "comm/kel_api.h"
#include "secmolra.h"
#include "support/sim_api.h"
#include "support/test_support.h"

using namespace molra::test;
using KelComm::KelConn;

namespace {

const char kAddrs[] =
    "[K]\nName=Main\nAuthname=u\nAuthpwd=pw\naddr=127.0.0.1:9101\ntradeaddr=127.0.0.1:9102\n"
    "queryaddr=127.0.0.1:9103\nsubscribeaddr=127.0.0.1:9104\n";

struct Event {
  std::string khh, name;
  int event, reserved;
};
std::mutex g_mutex;
std::vector<Event> g_events;
void OnEvent(const char* khh, const char* name, int32_t event, int32_t reserved) {
  std::lock_guard<std::mutex> lock(g_mutex);
  g_events.push_back({khh, name, event, reserved});
}

class Conn : public ::testing::Test {
 protected:
  void Start(const std::string& ini) {
    Sim::Get().Reset();
    std::string dir = MakeTempDir();
    WriteFile(dir + "/molra.ini", ini);
    SECMOLRA_SetProfilePath((dir + "/").c_str());
    logdir_ = MakeTempDir();
    SECMOLRA_SetLogPath(logdir_.c_str());
    ASSERT_TRUE(SECMOLRA_Init());
    SECMOLRA_SetConnEventCallback(&OnEvent);
    std::lock_guard<std::mutex> lock(g_mutex);
    g_events.clear();
    Sim::Get().ClearCallLog();
  }
  void TearDown() override {
    SECMOLRA_SetConnEventCallback(nullptr);
    SECMOLRA_Exit();
  }

  // The customer's set; the first one found names its four connections for Calls.
  molra::Result<std::shared_ptr<KelConn>> Get(const char* khh = "1001", const char* key = "K") {
    molra::Result<std::shared_ptr<KelConn>> set = KitPool()->GetConnection(khh, key);
    if (set && names_.empty()) {
      const KelConn& c = **set;
      names_ = {{c.mgmt_handle, "m"},
                {c.trade_handle, "t"},
                {c.query_handle, "q"},
                {c.subscribe_handle, "s"}};
    }
    return set;
  }
  // The calls since the last clear whose names are listed, with the handles of the set's
  // connections shown as m, t, q and s.
  std::string Calls(std::initializer_list<const char*> names) const {
    std::istringstream in(Sim::Get().CallLog());
    std::string out;
    for (std::string line; std::getline(in, line);) {
      for (const char* n : names) {
        if (line.rfind(std::string(n) + "(", 0) != 0) continue;
        for (const auto& [handle, name] : names_) {
          for (const char end : {',', ')'}) {
            const std::string arg = "(" + std::to_string(handle) + end;
            if (line.find(arg) != std::string::npos)
              line.replace(line.find(arg), arg.size(), "(" + name + end);
          }
        }
        out += line + "\n";
      }
    }
    return out;
  }
  static std::vector<Event> Events() {
    SIM_FN(KelSim_WaitIdle)();
    std::lock_guard<std::mutex> lock(g_mutex);
    return g_events;
  }
  std::string Log() const { return KitLog(logdir_); }

  std::string logdir_;
  std::vector<std::pair<std::int64_t, std::string>> names_;
};

}  // namespace

TEST_F(Conn, ConnectRunsTheSetUpAndFourConnectionsInOrderWithBinding) {
  Start(std::string(kAddrs) + "CertFile=c.pem\nCertPwd=cp\n");
  auto set = Get();
  ASSERT_TRUE(set) << set.failure().message;
  EXPECT_EQ(Calls({"Kel_SetDefaultSystemId", "Kel_SetParamEx", "Kel_SetAppInfo", "Kel_SetCertFile",
                   "Kel_Connect", "Kel_SetCustomerForBindThread", "Kel_SetConnEvent"}),
            "Kel_SetDefaultSystemId(4)\n"
            "Kel_SetParamEx(kelapi-nozip,on)\nKel_SetParamEx(kelapi-nocrypt,on)\n"
            "Kel_SetAppInfo(molra,)\nKel_SetCertFile(c.pem,cp,,,1)\n"
            "Kel_Connect(127.0.0.1:9101,u,pw,10)\n"
            "Kel_Connect(127.0.0.1:9102,u,pw,10)\nKel_SetCustomerForBindThread(t,1001)\n"
            "Kel_Connect(127.0.0.1:9103,u,pw,10)\nKel_SetCustomerForBindThread(q,1001)\n"
            "Kel_Connect(127.0.0.1:9104,u,pw,10)\nKel_SetCustomerForBindThread(s,1001)\n"
            "Kel_SetConnEvent(m,fn)\nKel_SetConnEvent(s,fn)\n"
            "Kel_SetConnEvent(q,fn)\nKel_SetConnEvent(t,fn)\n");
  // Found again for the same customer, whatever the key, without connecting.
  Sim::Get().ClearCallLog();
  EXPECT_EQ(*Get("1001", ""), *set);
  EXPECT_EQ(*Get("1001", "OTHER"), *set);
  EXPECT_EQ(Calls({"Kel_Connect"}), "");
}

// Each case in a process of its own: a kit starts once per process.
struct Binding {
  const char* ini;
  bool binds;
};
class Bindings : public Conn, public ::testing::WithParamInterface<Binding> {};

TEST_P(Bindings, TheCustomerIsBoundUnlessTheTradeAddressIsDefaultedOrInTradersMode) {
  Start(GetParam().ini);
  ASSERT_TRUE(Get());
  EXPECT_EQ(Calls({"Kel_SetCustomerForBindThread"}).empty(), !GetParam().binds);
  // A recovery binds again on the same rule.
  Sim::Get().ClearCallLog();
  SIM_FN(KelSim_RaiseConnEvent)((*Get())->trade_handle, 0);
  Events();
  EXPECT_EQ(Calls({"Kel_SetCustomerForBindThread"}).empty(), !GetParam().binds);
}
INSTANTIATE_TEST_SUITE_P(
    Profiles, Bindings,
    ::testing::Values(Binding{kAddrs, true}, Binding{"[K]\naddr=127.0.0.1:9101\n", false},
                      Binding{"[K]\naddr=127.0.0.1:9101\ntradeaddr=127.0.0.1:9102\nusetraders=1\n",
                              false}));

TEST_F(Conn, ABackupOfAnotherSystemTypeFailsEveryConnectBeforeAnyTransportCall) {
  Start("[K]\naddr=127.0.0.1:9101\nbackup=B\n[B]\naddr=127.0.0.1:9102\nSystemType=5\n");
  for (int i = 0; i < 2; ++i) {
    auto set = Get();
    ASSERT_FALSE(set);
    EXPECT_EQ(set.failure().code, 0);
    EXPECT_EQ(set.failure().message, Gbk("主备连接系统类型不一致"));
  }
  // Each section's positive system type became the transport's default, nothing more.
  EXPECT_EQ(Sim::Get().CallLog(),
            "Kel_SetDefaultSystemId(4)\nKel_SetDefaultSystemId(5)\n"
            "Kel_SetDefaultSystemId(4)\nKel_SetDefaultSystemId(5)\n");
}

TEST_F(Conn, AFoundSetServesWhileManagementTradeAndSubscribeAreUp) {
  Start(kAddrs);
  auto set = *Get();
  const struct {
    std::int64_t conn;
    const char* message;  // null: the set still serves
  } cases[] = {{set->query_handle, nullptr},
               {set->subscribe_handle, "交易、订阅连接已失效"},
               {set->trade_handle, "交易、订阅连接已失效"},
               {set->mgmt_handle, "认证管理连接已失效"}};
  for (const auto& c : cases) {
    SIM_FN(KelSim_BreakConnection)(c.conn, 3);
    auto found = Get("1001", "");
    if (c.message == nullptr) {
      EXPECT_TRUE(found);
    } else {
      ASSERT_FALSE(found);
      EXPECT_EQ(found.failure().code, 0);
      EXPECT_EQ(found.failure().message, Gbk(c.message));
    }
    SIM_FN(KelSim_RestoreConnection)(c.conn);
  }
  EXPECT_EQ(*Get("1001", ""), set) << "the set stayed in the pool and serves again";
  auto unknown = Get("1002", "");
  ASSERT_FALSE(unknown);
  EXPECT_EQ(unknown.failure().message, Gbk("客户未连接登录，无法获取连接"));
}

TEST_F(Conn, TheHostHearsTheFirstBreakAndTheLastRecoveryOfAnOutage) {
  Start(kAddrs);
  auto set = *Get();
  SIM_FN(KelSim_BreakConnection)(set->trade_handle, 7);
  SIM_FN(KelSim_BreakConnection)(set->query_handle, 9);
  SIM_FN(KelSim_RestoreConnection)(set->query_handle);
  SIM_FN(KelSim_RestoreConnection)(set->trade_handle);
  std::vector<Event> events = Events();
  ASSERT_EQ(events.size(), 2u);
  EXPECT_EQ(events[0].khh + "," + events[0].name, "1001,Main");
  EXPECT_EQ(events[0].event, 7);
  EXPECT_EQ(events[1].event, 0);
  EXPECT_EQ(events[1].reserved, 0);
  const std::string log = Log();
  EXPECT_NE(log.find(Gbk("[info] K 交易服务连接中断")), std::string::npos);
  EXPECT_NE(log.find(Gbk("[info] K 查询服务连接中断")), std::string::npos);
  EXPECT_NE(log.find(Gbk("[info] 查询服务重新连接成功[KEY:K KHH:1001]")), std::string::npos);
  EXPECT_NE(log.find(Gbk("[info] 连接重新绑定客户号成功[KEY:K KHH:1001]")), std::string::npos);

  // A break repeated with its code is not counted again, but reaches the host while only
  // one connection is down; a recovery of a connection that was up counts down silently.
  SIM_FN(KelSim_RaiseConnEvent)(set->mgmt_handle, 3);
  SIM_FN(KelSim_RaiseConnEvent)(set->mgmt_handle, 3);
  SIM_FN(KelSim_RaiseConnEvent)(set->mgmt_handle, 0);
  SIM_FN(KelSim_RaiseConnEvent)(set->trade_handle, 0);
  SIM_FN(KelSim_RaiseConnEvent)(set->query_handle, 5);
  events = Events();
  ASSERT_EQ(events.size(), 5u);
  EXPECT_EQ(events[2].event, 3);
  EXPECT_EQ(events[3].event, 3);
  EXPECT_EQ(events[4].event, 0);
  EXPECT_EQ(set->broken_count.load(), 0);
}

TEST_F(Conn, AFailedRebindIsAWarningAndTheManagementConnectionIsNeverBound) {
  Start(kAddrs);
  auto set = *Get();
  Sim::Get().ClearCallLog();
  SIM_FN(KelSim_FailBind)(1);
  for (std::int64_t h : {set->mgmt_handle.load(), set->trade_handle.load()}) {
    SIM_FN(KelSim_RaiseConnEvent)(h, 1);
    SIM_FN(KelSim_RaiseConnEvent)(h, 0);
  }
  Events();
  EXPECT_EQ(Calls({"Kel_SetCustomerForBindThread"}), "Kel_SetCustomerForBindThread(t,1001)\n");
  EXPECT_NE(Log().find(Gbk("[warning] 重新连接到服务时绑定客户号失败[KEY:K KHH:1001]")),
            std::string::npos);
}

class SubscribeRecovery : public Conn, public ::testing::WithParamInterface<bool> {};

TEST_P(SubscribeRecovery, CancelsOnlyWhenAskedAndAlwaysLogsTheCrash) {
  const bool cancel = GetParam();
  Start(std::string(kAddrs) + (cancel ? "cancelkelresub=1\n" : ""));
  auto set = *Get();
  set->subscriptions.confirm = 11;
  set->subscriptions.match = 13;
  Sim::Get().ClearCallLog();
  SIM_FN(KelSim_RaiseConnEvent)(set->subscribe_handle, 0);
  Events();
  EXPECT_EQ(Calls({"Kel_Unsubscribe"}).empty(), !cancel);
  EXPECT_EQ(set->subscriptions.confirm == 0, cancel) << "cancelled ids are cleared";
  EXPECT_NE(Log().find(Gbk("[info] KelComm::KelConn::on_conn_event subscribe crash: 订阅句柄置0")),
            std::string::npos);
  EXPECT_EQ(SIM_FN(KelSim_OpenSessions)(), 0);
}
INSTANTIATE_TEST_SUITE_P(CancelKelResub, SubscribeRecovery, ::testing::Bool());

TEST_F(Conn, LongAnswerTextsAreReadWhole) {
  Start(kAddrs);
  auto set = *Get();
  const std::string value(700, 'v'), message(5000, 'm');
  SIM_FN(KelSim_SetKvAnswer)("ZZ0009", 1, message.c_str(), ("605=1001|9206=" + value).c_str());
  auto s = molra::AllocTradeSession(*set);
  ASSERT_TRUE(s);
  ASSERT_TRUE(molra::CreateHead(*s, "ZZ0009"));
  ASSERT_TRUE(kel::api.Kel_Run(s->handle()));
  EXPECT_EQ(molra::GetItemString(s->handle(), 9206, 0), value);
  EXPECT_EQ(molra::GetItemString(s->handle(), 605, -1), "1001");
  EXPECT_EQ(molra::GetItemString(s->handle(), 4211, 0), "");
  EXPECT_EQ(molra::GetErrorString(s->handle()), message);
}

TEST_F(Conn, ExitDeregistersClosesAndCancelsInOrderAndLeavesNoTimerThread) {
  Start(kAddrs);
  auto set = *Get();
  set->subscriptions.confirm = 51;
  set->subscriptions.match = 53;
  Sim::Get().ClearCallLog();
  EXPECT_TRUE(SECMOLRA_Exit());
  std::string calls = Calls({"Kel_SetConnEvent", "Kel_Close", "Kel_AllocateSession",
                             "Kel_Unsubscribe", "Kel_Uninitialize"});
  // Session numbers of the two cancellations vary: shown as S.
  for (std::size_t at = calls.find("Kel_Unsubscribe("); at != std::string::npos;
       at = calls.find("Kel_Unsubscribe(", at + 1)) {
    const std::size_t start = at + 16;
    calls.replace(start, calls.find(',', start) - start, "S");
  }
  EXPECT_EQ(calls,
            "Kel_SetConnEvent(m,(null))\nKel_SetConnEvent(s,(null))\n"
            "Kel_SetConnEvent(q,(null))\nKel_SetConnEvent(t,(null))\n"
            "Kel_Close(m)\nKel_Close(t)\nKel_Close(q)\n"
            "Kel_AllocateSession(s)\nKel_Unsubscribe(S,51)\n"
            "Kel_AllocateSession(s)\nKel_Unsubscribe(S,53)\n"
            "Kel_Close(s)\nKel_Uninitialize()\n");
  EXPECT_EQ(KitPool(), nullptr);
  EXPECT_EQ(SIM_FN(KelSim_ConnectionCount)(), 0);
  EXPECT_EQ(SIM_FN(KelSim_OpenSessions)(), 0);
}

#if defined(__linux__)
TEST_F(Conn, ExitLeavesNoThreadOfTheKitBehind) {
  auto threads = [] {
    int n = 0;
    for (auto& e : std::filesystem::directory_iterator("/proc/self/task")) n += e.is_directory();
    return n;
  };
  std::thread([] {}).join();  // runtimes that start a helper with the first thread do so now
  Sim::Get().Reset();         // so does loading the transport
  const int before = threads();
  Start(kAddrs);
  ASSERT_TRUE(Get());
  EXPECT_GT(threads(), before);
  SECMOLRA_Exit();
  EXPECT_EQ(threads(), before);
}
#endif
