// The simulated transport's own mechanics: connections and their events, sessions, buffer
// rules, synchronous and asynchronous runs, faults and scripted answers.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <mutex>
#include <thread>
#include <vector>

#include "support/sim_api.h"
#include "util/field_ids.h"

using namespace molra::test;

namespace {

const char* kTrade = "127.0.0.1:9102";

class SimTransport : public ::testing::Test {
 protected:
  void SetUp() override {
    Sim::Get().Reset();
    ASSERT_TRUE(k.Kel_Initialize());
  }
  void TearDown() override { k.Kel_Uninitialize(); }

  kel::int64 Connect(const char* addr = kTrade) { return k.Kel_Connect(addr, "", "", 10); }
  std::string LastErr() {
    char buf[256];
    kel::int32 len = sizeof buf;
    const char* p = k.Kel_GetLastErrMsg(buf, &len);
    return p ? p : "";
  }

  const kel::Api& k = SimKel();
};

struct EventLog {
  std::mutex m;
  std::vector<std::pair<kel::int64, kel::int32>> events;
  std::thread::id thread;
  static void Fn(kel::int64 conn, kel::int32 event, void* ctx) {
    auto* self = static_cast<EventLog*>(ctx);
    std::lock_guard<std::mutex> lock(self->m);
    self->events.emplace_back(conn, event);
    self->thread = std::this_thread::get_id();
  }
};

}  // namespace

TEST_F(SimTransport, ConnectsOnlyToKnownAddressesAndExplainsARefusal) {
  EXPECT_EQ(Connect("10.0.0.1"), 0);  // "host:port" names a server (sim_net_test)
  EXPECT_EQ(LastErr(), "connect to 10.0.0.1 refused");
  kel::int64 a = Connect("127.0.0.1:9101");
  kel::int64 b = Connect("127.0.0.1:9204");
  ASSERT_NE(a, 0);
  ASSERT_NE(b, 0);
  EXPECT_NE(a, b);
  EXPECT_TRUE(k.Kel_IsConnect(a));
  EXPECT_EQ(SIM_FN(KelSim_ConnectionCount)(), 2);
  EXPECT_EQ(SIM_FN(KelSim_ConnectionByAddr)("127.0.0.1:9204", 0), b);
  EXPECT_EQ(SIM_FN(KelSim_ConnectionByAddr)("127.0.0.1:9204", 1), 0);
  k.Kel_Close(a);
  EXPECT_FALSE(k.Kel_IsConnect(a));
  EXPECT_EQ(k.Kel_AllocateSession(a), 0);
  EXPECT_EQ(SIM_FN(KelSim_ConnectionCount)(), 1);
}

TEST_F(SimTransport, CountedConnectFaultFailsExactlyThatManyCallsOfItsAddress) {
  SIM_FN(KelSim_FailConnect)(kTrade, 2);
  EXPECT_EQ(Connect(), 0);
  EXPECT_NE(Connect("127.0.0.1:9101"), 0);  // another address is not concerned
  EXPECT_EQ(Connect(), 0);
  EXPECT_NE(Connect(), 0);
  SIM_FN(KelSim_FailConnect)(nullptr, -1);
  EXPECT_EQ(Connect("127.0.0.1:9103"), 0);
  EXPECT_EQ(Connect("127.0.0.1:9103"), 0);
  SIM_FN(KelSim_FailConnect)(nullptr, 0);
  EXPECT_NE(Connect("127.0.0.1:9103"), 0);
}

TEST_F(SimTransport, BreakAndRestoreReachTheHandlerOnTheSimulatorsThread) {
  kel::int64 c = Connect();
  EventLog log;
  k.Kel_SetConnEvent(c, &EventLog::Fn, &log);
  SIM_FN(KelSim_BreakConnection)(c, 7);
  EXPECT_FALSE(k.Kel_IsConnect(c));
  kel::int64 s = k.Kel_AllocateSession(c);
  ASSERT_TRUE(k.Kel_CreateHead(s, "A00066"));
  EXPECT_FALSE(k.Kel_Run(s));  // down: nothing is sent
  SIM_FN(KelSim_RestoreConnection)(c);
  EXPECT_TRUE(k.Kel_Run(s));
  SIM_FN(KelSim_RaiseConnEvent)(c, 9);
  SIM_FN(KelSim_WaitIdle)();
  {
    std::lock_guard<std::mutex> lock(log.m);
    ASSERT_EQ(log.events.size(), 3u);
    EXPECT_EQ(log.events[0], std::make_pair(c, 7));
    EXPECT_EQ(log.events[1], std::make_pair(c, 0));
    EXPECT_EQ(log.events[2], std::make_pair(c, 9));
    EXPECT_NE(log.thread, std::this_thread::get_id());
  }
  EXPECT_TRUE(k.Kel_IsConnect(c));  // a raised event changes nothing
  k.Kel_SetConnEvent(c, nullptr, nullptr);
  SIM_FN(KelSim_BreakConnection)(c, 7);
  SIM_FN(KelSim_WaitIdle)();
  std::lock_guard<std::mutex> lock(log.m);
  EXPECT_EQ(log.events.size(), 3u);
  k.Kel_ReleaseSession(s);
}

TEST_F(SimTransport, TextAndBinaryBufferRules) {
  kel::int64 c = Connect();
  kel::int64 s = k.Kel_AllocateSession(c);
  SIM_FN(KelSim_SetKvAnswer)
  ("ZZ0001", 3, "a message", "605=1001|9206=ABCDEFGHIJ\n605=1002|9206=xy");
  ASSERT_TRUE(k.Kel_CreateHead(s, "ZZ0001"));
  ASSERT_TRUE(k.Kel_Run(s));
  EXPECT_EQ(k.Kel_GetCode(s), 3);
  EXPECT_EQ(k.Kel_GetCount(s), 2);

  char buf[8];
  std::memset(buf, 'z', sizeof buf);
  kel::int32 len = 5;
  EXPECT_EQ(k.Kel_GetItem(s, fid::ZQMC, buf, &len, -1), buf);  // row -1 is row 0
  EXPECT_STREQ(buf, "ABCD");                                   // cap - 1 bytes and a NUL
  EXPECT_EQ(len, 10);                                          // the full length
  EXPECT_EQ(buf[5], 'z');
  len = sizeof buf;
  EXPECT_STREQ(k.Kel_GetItem(s, fid::ZQMC, buf, &len, 1), "xy");
  EXPECT_EQ(len, 2);
  len = sizeof buf;
  EXPECT_EQ(k.Kel_GetItem(s, fid::WTH, buf, &len, 0), nullptr);  // absent
  EXPECT_EQ(k.Kel_GetItem(s, fid::KHH, buf, &len, 2), nullptr);  // no such row
  EXPECT_EQ(k.Kel_GetLong(s, fid::KHH, 1), 1002);
  EXPECT_EQ(k.Kel_GetLong(s, fid::ZQMC, 0), 0);  // not a number

  len = 4;
  EXPECT_STREQ(k.Kel_GetErrMsg(s, buf, &len), "a m");
  EXPECT_EQ(len, 9);
  len = 3;  // binary: at most cap bytes, no NUL, out = bytes copied
  std::memset(buf, 'z', sizeof buf);
  EXPECT_TRUE(k.Kel_GetItemBuf(s, fid::ZQMC, buf, &len, 0));
  EXPECT_EQ(len, 3);
  EXPECT_EQ(std::string(buf, 4), "ABCz");
  EXPECT_FALSE(k.Kel_IsStruct(s, 0));
  k.Kel_ReleaseSession(s);
  EXPECT_EQ(SIM_FN(KelSim_OpenSessions)(), 0);
}

TEST_F(SimTransport, BlockRequestsAnswerBlocksAndKeepTheRequest) {
  kel::int64 s = k.Kel_AllocateSession(Connect());
  std::string answer(472, '\0');
  answer[11] = 5;
  std::memcpy(&answer[302], "fine", 4);
  SIM_FN(KelSim_SetStructAnswer)("19001", answer.data(), 472);
  char req[137] = {};
  req[0] = static_cast<char>(19001 & 0xff);
  req[1] = static_cast<char>(19001 >> 8);
  req[50] = 'q';
  ASSERT_TRUE(k.Kel_SetStructData(s, req, sizeof req));
  ASSERT_TRUE(k.Kel_Run(s));
  EXPECT_TRUE(k.Kel_IsStruct(s, -1));
  EXPECT_TRUE(k.Kel_IsStruct(s, 0));
  EXPECT_FALSE(k.Kel_IsStruct(s, 1));
  EXPECT_EQ(k.Kel_GetCode(s), 5);
  std::vector<char> got(600, 'z');
  kel::int32 len = 600;
  ASSERT_TRUE(k.Kel_GetStructData(s, got.data(), &len, -1));
  EXPECT_EQ(len, 472);
  len = 100;
  ASSERT_TRUE(k.Kel_GetStructData(s, got.data(), &len, 0));
  EXPECT_EQ(len, 100);
  kel::int32 n = 0;
  const char* whole = k.Kel_GetStructDataEx(s, &n, -1);
  ASSERT_NE(whole, nullptr);
  EXPECT_EQ(n, 472);
  EXPECT_STREQ(whole + 302, "fine");
  const char* sent = k.Kel_GetReqStructData(s, &n);
  ASSERT_NE(sent, nullptr);
  EXPECT_EQ(n, 137);
  EXPECT_EQ(sent[50], 'q');
  char last[200];
  EXPECT_EQ(SIM_FN(KelSim_LastRequest)("19001", last, sizeof last), 137);
  EXPECT_EQ(last[50], 'q');
  EXPECT_EQ(SIM_FN(KelSim_LastRequest)("19002", last, sizeof last), -1);

  SIM_FN(KelSim_ClearAnswers)();
  SIM_FN(KelSim_SetAnswerLength)("19001", 429);  // cuts or extends the back end's block
  ASSERT_TRUE(k.Kel_Run(s));
  ASSERT_NE(k.Kel_GetStructDataEx(s, &n, 0), nullptr);
  EXPECT_EQ(n, 429);
  SIM_FN(KelSim_SetPlainAnswer)("19001", -9, "no block");
  ASSERT_TRUE(k.Kel_Run(s));
  EXPECT_FALSE(k.Kel_IsStruct(s, 0));
  EXPECT_EQ(k.Kel_GetCode(s), -9);
  ASSERT_TRUE(k.Kel_CreateHead(s, "DQ0003"));
  EXPECT_EQ(k.Kel_GetReqStructData(s, &n), nullptr);  // no longer a block request
  k.Kel_ReleaseSession(s);
}

TEST_F(SimTransport, KeyValueRequestIsRecordedInTheOrderSet) {
  kel::int64 s = k.Kel_AllocateSession(Connect());
  ASSERT_TRUE(k.Kel_CreateHead(s, "HDQ0003"));  // the gateway's "H" prefix is not part of the code
  k.Kel_SetItem(s, fid::KHH, "1001");
  k.Kel_SetInt(s, 988, 1);
  k.Kel_SetLong(s, 681, 1234567890123LL);
  k.Kel_SetDouble(s, 808, 12.5, 3);
  ASSERT_TRUE(k.Kel_Run(s));
  char buf[128];
  kel::int32 n = SIM_FN(KelSim_LastRequest)("DQ0003", buf, sizeof buf);
  EXPECT_EQ(std::string(buf, static_cast<std::size_t>(n)),
            "605=1001|988=1|681=1234567890123|808=12.500");
  k.Kel_ReleaseSession(s);
}

TEST_F(SimTransport, RunAndWriteFaultsAreCounted) {
  kel::int64 s = k.Kel_AllocateSession(Connect());
  ASSERT_TRUE(k.Kel_CreateHead(s, "A00066"));
  SIM_FN(KelSim_FailRun)(1);
  EXPECT_FALSE(k.Kel_Run(s));
  EXPECT_TRUE(k.Kel_Run(s));
  EXPECT_GT(k.Kel_GetLong(s, fid::TRADE_DATE, -1), 20000000);
  SIM_FN(KelSim_FailWrite)(-1);
  EXPECT_FALSE(k.Kel_Write(s));
  EXPECT_FALSE(k.Kel_Write(s));
  SIM_FN(KelSim_FailAllocSession)(1);
  EXPECT_EQ(k.Kel_AllocateSession(SIM_FN(KelSim_ConnectionByAddr)(kTrade, 0)), 0);
  k.Kel_ReleaseSession(s);
  EXPECT_EQ(SIM_FN(KelSim_OpenSessions)(), 0);
}

namespace {
std::atomic<int> g_replies{0};
std::atomic<bool> g_other_thread{false};
std::thread::id g_test_thread;
kel::int64 g_code = 0;
bool OnReply(kel::int64 session) {
  const kel::Api& k = SimKel();
  g_other_thread = std::this_thread::get_id() != g_test_thread;
  g_code = k.Kel_GetLong(session, fid::TRADE_DATE, -1) + k.Kel_GetSessData(session);
  k.Kel_ReleaseSession(session);  // the handler owns it
  ++g_replies;
  return true;
}
}  // namespace

TEST_F(SimTransport, WriteAnswersOnTheReplyThreadAndHandsTheSessionOver) {
  g_test_thread = std::this_thread::get_id();
  SIM_FN(KelSim_SetTradeDate)(20240102);
  kel::int64 s = k.Kel_AllocateSession(Connect());
  ASSERT_TRUE(k.Kel_CreateHead(s, "A00066"));
  k.Kel_SetSessData(s, 5);
  ASSERT_TRUE(k.Kel_RegReplyCallFunc(s, &OnReply));
  ASSERT_TRUE(k.Kel_Write(s));
  SIM_FN(KelSim_WaitIdle)();
  EXPECT_EQ(g_replies.load(), 1);
  EXPECT_TRUE(g_other_thread.load());
  EXPECT_EQ(g_code, 20240107);
  EXPECT_EQ(SIM_FN(KelSim_OpenSessions)(), 0);
}

TEST_F(SimTransport, UninitializeDeliversWhatIsQueuedAndInitializeStartsAgain) {
  g_test_thread = std::this_thread::get_id();
  g_replies = 0;
  kel::int64 c = Connect();
  for (int i = 0; i < 20; ++i) {
    kel::int64 s = k.Kel_AllocateSession(c);
    ASSERT_TRUE(k.Kel_CreateHead(s, "A00066"));
    k.Kel_RegReplyCallFunc(s, &OnReply);
    ASSERT_TRUE(k.Kel_Write(s));
  }
  k.Kel_Uninitialize();
  EXPECT_EQ(g_replies.load(), 20);
  EXPECT_EQ(SIM_FN(KelSim_OpenSessions)(), 0);
  EXPECT_EQ(SIM_FN(KelSim_ConnectionCount)(), 0);
  ASSERT_TRUE(k.Kel_Initialize());
  kel::int64 s = k.Kel_AllocateSession(Connect());
  ASSERT_TRUE(k.Kel_CreateHead(s, "A00066"));
  k.Kel_RegReplyCallFunc(s, &OnReply);
  ASSERT_TRUE(k.Kel_Write(s));
  SIM_FN(KelSim_WaitIdle)();
  EXPECT_EQ(g_replies.load(), 21);
}

TEST_F(SimTransport, PasswordEncodingsDifferAndWorkInPlace) {
  char a[64] = "111111";
  char b[64] = "111111";
  kel::int32 la = sizeof a, lb = sizeof b;
  ASSERT_TRUE(k.Kel_UniEncode("1001", a, &la));
  ASSERT_TRUE(k.Kel_UniEncode3rd("1001", b, &lb));
  EXPECT_EQ(la, 13);
  EXPECT_EQ(static_cast<std::size_t>(lb), std::strlen(b));
  EXPECT_STRNE(a, b);
  EXPECT_STRNE(a, "111111");
  char small[8] = "111111";
  kel::int32 ls = sizeof small;
  EXPECT_FALSE(k.Kel_UniEncode("1001", small, &ls));  // the result does not fit
  EXPECT_EQ(ls, 13);
}
