// The trade-message subscription that login starts: both delivery paths, the slot groups,
// the "already subscribe" stops, the condition, and pushes reaching the message callback.
#include <cstring>
#include <mutex>
#include <set>
#include <sstream>
#include <vector>

#include "comm/conn_pool.h"
#include "core/context.h"
#include "push/subscribe.h"
#include "support/login_fixture.h"

using namespace molra::test;

namespace {

struct Delivered {
  std::string json;
  int32_t type;
};
std::mutex g_mutex;
std::vector<Delivered> g_delivered;

void OnMsg(const char*, const char* json, int32_t type) {
  std::lock_guard<std::mutex> lock(g_mutex);
  g_delivered.push_back({json ? json : "", type});
}

std::shared_ptr<KelComm::KelConn> SetOf(const char* khh) {
  return *KitPool()->GetConnection(khh, "");
}

std::string SubscribeConn() {
  return std::to_string(LOGIN_SIM_FN(KelSim_ConnectionByAddr)("127.0.0.1:9104", 0));
}

// The calls of one subscription on the subscribe connection, with session numbers removed.
std::string SubscriptionCalls(const std::string& code, const char* handler) {
  return "Kel_SetNodeId(S,1)\nKel_CreateHead(S," + code +
         ")\nKel_SetSubsCondi(S,getstring(605)=='1001')\nKel_Subscribe(S," + handler +
         ")\nKel_ReleaseSession(S)\n";
}

// Replaces the first argument of each call, a session number, with "S" (except `keep`).
std::string MaskSessions(const std::string& log, const std::string& keep) {
  std::string out;
  std::size_t i = 0;
  while (i < log.size()) {
    std::size_t eol = log.find('\n', i);
    std::string line = log.substr(i, eol == std::string::npos ? std::string::npos : eol - i);
    i = eol == std::string::npos ? log.size() : eol + 1;
    std::size_t open = line.find('(');
    std::size_t end =
        open == std::string::npos ? open : line.find_first_not_of("0123456789", open + 1);
    if (end != std::string::npos && end > open + 1 &&
        line.substr(open + 1, end - open - 1) != keep) {
      line.replace(open + 1, end - open - 1, "S");
    }
    out += line + "\n";
  }
  return out;
}

}  // namespace

TEST_F(LoginTest, PerSubscriptionPathSubscribesBothKindsWithTheirHandlers) {
  StartDefault();
  ASSERT_GT(SECMOLRA_TradeLogin("T", "1001", "111111"), 0);
  std::string sub = SubscribeConn();
  std::string calls = MaskSessions(Sim::Get().CallLog(), sub);
  std::string expected = "Kel_IsConnect(" + sub + ")\nKel_AllocateSession(" + sub + ")\n" +
                         SubscriptionCalls("DM0003", "fn") + "Kel_IsConnect(" + sub +
                         ")\nKel_AllocateSession(" + sub + ")\n" +
                         SubscriptionCalls("DM0004", "fn");
  EXPECT_NE(calls.find(expected), std::string::npos) << calls;
  EXPECT_EQ(calls.find("Kel_RegGlobalStructPublishFunc"), std::string::npos);
  EXPECT_EQ(LOGIN_SIM_FN(KelSim_SubscriptionCount)("1001"), 2);
  std::string log = Log();
  EXPECT_NE(log.find("SubscribeTradeMsg qr subscribe success"), std::string::npos);
  EXPECT_NE(log.find("SubscribeTradeMsg cj subscribe success"), std::string::npos);
}

TEST_F(LoginTest, SecondLoginWithPerSubscriptionPushesIsAlreadySubscribed) {
  StartDefault();
  ASSERT_GT(SECMOLRA_TradeLogin("T", "1001", "111111"), 0);
  ASSERT_GT(SECMOLRA_TradeLogin("T", "1001", "111111"), 0);
  EXPECT_EQ(Count(Sim::Get().CallLog(), "Kel_Subscribe("), 2u);
  EXPECT_EQ(LOGIN_SIM_FN(KelSim_SubscriptionCount)("1001"), 2);
  std::string log = Log();
  EXPECT_EQ(Count(log, "SubscribeTradeMsg qr already subscribe"), 1u);
  EXPECT_EQ(Count(log, "cj already subscribe"), 0u);
}

TEST_F(LoginTest, StructuredPathRegistersTheGlobalHandlerAndSubscribesOnce) {
  StartDefault("StructPushMsg=1\n");
  ASSERT_GT(SECMOLRA_TradeLogin("T", "1001", "111111"), 0);
  std::string sub = SubscribeConn();
  std::string calls = MaskSessions(Sim::Get().CallLog(), sub);
  std::size_t reg = calls.find("Kel_RegGlobalStructPublishFunc(fn)\nKel_IsConnect(" + sub + ")");
  ASSERT_NE(reg, std::string::npos) << calls;
  EXPECT_NE(calls.find(SubscriptionCalls("DM0003", "(null)"), reg), std::string::npos) << calls;
  EXPECT_NE(calls.find(SubscriptionCalls("DM0004", "(null)"), reg), std::string::npos) << calls;

  Sim::Get().ClearCallLog();
  ASSERT_GT(SECMOLRA_TradeLogin("T", "1001", "111111"), 0);
  calls = Sim::Get().CallLog();
  EXPECT_EQ(Count(calls, "Kel_RegGlobalStructPublishFunc(fn)"), 1u);  // before any check
  EXPECT_EQ(Count(calls, "Kel_Subscribe("), 0u);
  EXPECT_EQ(Count(Log(), "SubscribeTradeMsg qr already subscribe"), 1u);
}

TEST_F(LoginTest, ConfiguredPushCodesAreSubscribed) {
  StartDefault("ConfirmMsgFunc=QR0101\nReportMsgFunc=CJ0202\n");
  ASSERT_GT(SECMOLRA_TradeLogin("T", "1001", "111111"), 0);
  std::string calls = MaskSessions(Sim::Get().CallLog(), "");
  EXPECT_NE(calls.find(SubscriptionCalls("QR0101", "fn")), std::string::npos) << calls;
  EXPECT_NE(calls.find(SubscriptionCalls("CJ0202", "fn")), std::string::npos) << calls;
}

TEST_F(LoginTest, FailedSessionLogsTheFailureAndTheOtherKindStillSubscribes) {
  StartDefault();
  ASSERT_GT(SECMOLRA_TradeLogin("T", "1001", "111111"), 0);
  auto conn = SetOf("1001");
  conn->subscriptions.confirm = 0;  // as after a cancelling recovery
  conn->subscriptions.match = 0;
  SECMOLRA_SetLastError(0, "", nullptr, nullptr);
  LOGIN_SIM_FN(KelSim_FailAllocSession)(1);
  molra::SubscribeTradeMsg(molra::CurrentKit()->push, "1001", 1, conn);
  EXPECT_EQ(conn->subscriptions.confirm, 0);
  EXPECT_GE(conn->subscriptions.match, 1);
  std::string log = Log();
  EXPECT_EQ(Count(log, "SubscribeTradeMsg qr subscribe failed"), 1u);
  EXPECT_EQ(Count(log, "SubscribeTradeMsg cj subscribe success"), 2u);
  EXPECT_EQ(LastError(), 0);  // only logged
  EXPECT_EQ(LOGIN_SIM_FN(KelSim_OpenSessions)(), 0);
}

TEST_F(LoginTest, SubscriptionWithoutACustomerDoesNothing) {
  StartDefault("StructPushMsg=1\n");
  ASSERT_GT(SECMOLRA_TradeLogin("T", "1001", "111111"), 0);
  auto conn = SetOf("1001");
  Sim::Get().ClearCallLog();
  molra::SubscribeTradeMsg(molra::CurrentKit()->push, "", 0, conn);
  molra::SubscribeTradeMsg(molra::CurrentKit()->push, "1001", 0, nullptr);
  EXPECT_EQ(Sim::Get().CallLog(),
            "Kel_RegGlobalStructPublishFunc(fn)\nKel_RegGlobalStructPublishFunc(fn)\n");
}

namespace {

// Kel_Unsubscribe calls of the call log with a subscription id above 0, by id.
std::set<std::string> CancelledIds(const std::string& log) {
  std::set<std::string> ids;
  std::istringstream in(log);
  for (std::string line; std::getline(in, line);) {
    if (line.rfind("Kel_Unsubscribe(", 0) != 0) continue;
    std::string id = line.substr(line.find(',') + 1, line.size() - line.find(',') - 2);
    if (id != "0") ids.insert(id);
  }
  return ids;
}

// The subscribe connection breaks and comes back with cancelkelresub set: both
// subscriptions are cancelled and their handles cleared, so the next login subscribes again
// and the customer's pushes (only its own) reach the message callback again. `size` is the
// pushed record's layout, `khh_at` its KHH's offset.
class Resubscription : public LoginTest {
 protected:
  void ExpectAfterACancellingRecovery(int size, int khh_at);
};

void Resubscription::ExpectAfterACancellingRecovery(int size, int khh_at) {
  SECMOLRA_SetMsgCallback(&OnMsg);
  ASSERT_GT(SECMOLRA_TradeLogin("T", "1001", "111111"), 0);
  ASSERT_EQ(LOGIN_SIM_FN(KelSim_SubscriptionCount)("1001"), 2);
  const std::int64_t sub = LOGIN_SIM_FN(KelSim_ConnectionByAddr)("127.0.0.1:9104", 0);
  LOGIN_SIM_FN(KelSim_BreakConnection)(sub, 3);
  LOGIN_SIM_FN(KelSim_RestoreConnection)(sub);
  LOGIN_SIM_FN(KelSim_WaitIdle)();
  EXPECT_EQ(LOGIN_SIM_FN(KelSim_SubscriptionCount)("1001"), 0) << "both cancelled";

  ASSERT_GT(SECMOLRA_TradeLogin("T", "1001", "111111"), 0);
  EXPECT_EQ(LOGIN_SIM_FN(KelSim_SubscriptionCount)("1001"), 2);
  const std::string log = Log();
  EXPECT_EQ(Count(log, "already subscribe"), 0u);
  EXPECT_EQ(Count(log, "SubscribeTradeMsg qr subscribe success"), 2u);
  std::string record(static_cast<std::size_t>(size), '\0');
  record.replace(static_cast<std::size_t>(khh_at), 4, "1001");
  LOGIN_SIM_FN(KelSim_PushRecord)("1001", 0, record.data(), size);
  LOGIN_SIM_FN(KelSim_PushRecord)("1002", 1, record.data(), size);  // someone else's
  LOGIN_SIM_FN(KelSim_WaitIdle)();
  std::lock_guard<std::mutex> lock(g_mutex);
  ASSERT_EQ(g_delivered.size(), 1u);
  EXPECT_EQ(g_delivered[0].type, 8);
}

}  // namespace

TEST_F(Resubscription, CancellingRecoveryLetsTheNextLoginSubscribeAgain) {
  StartDefault("", "cancelkelresub=1\n");
  ExpectAfterACancellingRecovery(402, 0);
}

TEST_F(Resubscription, CancellingRecoveryWithStructuredPushesCancelsBothAndSubscribesAgain) {
  StartDefault("StructPushMsg=1\n", "cancelkelresub=1\n");
  ExpectAfterACancellingRecovery(415, 13);
}

// With structured pushes the match subscription takes the confirmation slot; the exit still
// cancels both subscriptions.
TEST_F(LoginTest, ExitCancelsBothStructuredSubscriptions) {
  StartDefault("StructPushMsg=1\n");
  ASSERT_GT(SECMOLRA_TradeLogin("T", "1001", "111111"), 0);
  Sim::Get().ClearCallLog();
  ASSERT_TRUE(SECMOLRA_Exit());
  EXPECT_EQ(CancelledIds(Sim::Get().CallLog()).size(), 2u) << Sim::Get().CallLog();
}
