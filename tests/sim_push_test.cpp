// Subscriptions and pushes of the simulated transport, in both delivery paths.
#include <gtest/gtest.h>

#include <mutex>
#include <thread>
#include <vector>

#include "support/sim_api.h"

using namespace molra::test;

namespace {

struct Received {
  std::mutex m;
  std::vector<std::string> records;
  std::vector<int> funcs;
  bool on_test_thread = false;
  std::thread::id test_thread = std::this_thread::get_id();
};

bool OnPush(void* ctx, kel::int64 session) {
  auto* rx = static_cast<Received*>(ctx);
  char buf[1024];
  kel::int32 len = sizeof buf;
  bool ok = SimKel().Kel_GetItemBuf(session, 0, buf, &len, -1);
  SimKel().Kel_ReleaseSession(session);  // ignored: the transport frees push sessions
  std::lock_guard<std::mutex> lock(rx->m);
  if (ok) rx->records.emplace_back(buf, static_cast<std::size_t>(len));
  rx->on_test_thread = rx->on_test_thread || std::this_thread::get_id() == rx->test_thread;
  return true;
}

void OnStruct(void* ctx, kel::int32 func, kel::int32 len, const char* data) {
  auto* rx = static_cast<Received*>(ctx);
  std::lock_guard<std::mutex> lock(rx->m);
  rx->records.emplace_back(data, static_cast<std::size_t>(len));
  rx->funcs.push_back(func);
}

class SimPush : public ::testing::Test {
 protected:
  void SetUp() override {
    Sim::Get().Reset();
    ASSERT_TRUE(k.Kel_Initialize());
    sub = k.Kel_Connect("127.0.0.1:9104", "", "", 10);
  }
  void TearDown() override { k.Kel_Uninitialize(); }

  kel::int64 Subscribe(const char* code, const char* khh, kel::SubscribeFn fn, void* ctx) {
    kel::int64 s = k.Kel_AllocateSession(sub);
    EXPECT_TRUE(k.Kel_CreateHead(s, code));
    EXPECT_TRUE(k.Kel_SetSubsCondi(s, (std::string("getstring(605)=='") + khh + "'").c_str()));
    kel::int64 id = 0;
    EXPECT_TRUE(k.Kel_Subscribe(s, &id, fn, ctx));
    k.Kel_ReleaseSession(s);  // the subscription outlives its session
    return id;
  }
  void Push(const char* khh, int kind, const std::string& rec) {
    SIM_FN(KelSim_PushRecord)(khh, kind, rec.data(), static_cast<int32_t>(rec.size()));
    SIM_FN(KelSim_WaitIdle)();
  }

  const kel::Api& k = SimKel();
  kel::int64 sub = 0;
  Received rx;
};

}  // namespace

TEST_F(SimPush, SubscriberReceivesItsCustomersConfirmationsInATransportSession) {
  kel::int64 id = Subscribe("DM0003", "1001", &OnPush, &rx);
  EXPECT_GE(id, 1);
  EXPECT_EQ(SIM_FN(KelSim_SubscriptionCount)("1001"), 1);
  std::string rec(402, 'r');
  Push("1001", 0, rec);
  Push("1002", 0, rec);      // another customer
  Push("1001", 1, "match");  // a match report: not this subscription's kind
  std::lock_guard<std::mutex> lock(rx.m);
  ASSERT_EQ(rx.records.size(), 1u);
  EXPECT_EQ(rx.records[0], rec);
  EXPECT_FALSE(rx.on_test_thread);
  EXPECT_EQ(SIM_FN(KelSim_OpenSessions)(), 0);  // the push session is gone
}

TEST_F(SimPush, StructuredPathPassesTheRecordWithTheCodesFunctionNumber) {
  k.Kel_RegGlobalStructPublishFunc(&OnStruct, &rx);
  Subscribe("HDM0003", "1001", nullptr, nullptr);  // sent through the gateway with its "H"
  Push("1001", 0, "c");                            // default codes give function number 0
  Subscribe("DM0004", "1001", nullptr, nullptr);
  SIM_FN(KelSim_SetPushCodes)("610001", "620002");
  Subscribe("620002", "1001", nullptr, nullptr);
  Push("1001", 1, std::string(415, 'm'));
  std::lock_guard<std::mutex> lock(rx.m);
  // Only the subscription of the current match code receives it, numbered by its digits.
  EXPECT_EQ(rx.funcs, (std::vector<int>{0, 620002}));
  ASSERT_EQ(rx.records.size(), 2u);
  EXPECT_EQ(rx.records[1].size(), 415u);
}

TEST_F(SimPush, UnsubscribeCloseAndBrokenLinkStopDelivery) {
  kel::int64 id = Subscribe("DM0003", "1001", &OnPush, &rx);
  kel::int64 s = k.Kel_AllocateSession(sub);
  EXPECT_TRUE(k.Kel_Unsubscribe(s, id));
  EXPECT_FALSE(k.Kel_Unsubscribe(s, id));
  k.Kel_ReleaseSession(s);
  Push("1001", 0, "a");
  Subscribe("DM0003", "1001", &OnPush, &rx);
  SIM_FN(KelSim_BreakConnection)(sub, 1);
  Push("1001", 0, "b");  // lost while the link is down
  SIM_FN(KelSim_RestoreConnection)(sub);
  Push("1001", 0, "c");
  k.Kel_Close(sub);
  EXPECT_EQ(SIM_FN(KelSim_SubscriptionCount)(nullptr), 0);
  Push("1001", 0, "d");
  std::lock_guard<std::mutex> lock(rx.m);
  ASSERT_EQ(rx.records.size(), 1u);
  EXPECT_EQ(rx.records[0], "c");
}

TEST_F(SimPush, BackEndRecordsFollowBothLayouts) {
  k.Kel_RegGlobalStructPublishFunc(&OnStruct, &rx);
  Subscribe("DM0003", "1001", &OnPush, &rx);      // confirmations as 402-byte bodies
  Subscribe("DM0004", "1001", nullptr, nullptr);  // matches as 415-byte structured records
  SimClient c;
  kel::int64 token = c.Login("1001", "111111");
  SimBlock b(19001, 137, token, "1001");
  b.Text(55, 3, "SH")
      .Text(69, 9, "600000")
      .Int(78, 1, 1)
      .Int(79, 4, 200)
      .Double(83, 10.0)
      .Text(120, 17, "77");
  std::string ans = c.Run(b);
  long long wth = ReadInt(ans, 443, 8);
  ASSERT_GT(wth, 0);
  SIM_FN(KelSim_WaitIdle)();
  std::lock_guard<std::mutex> lock(rx.m);
  ASSERT_EQ(rx.records.size(), 2u);
  std::string qr, cj;
  for (const auto& r : rx.records) (r.size() == 402 ? qr : cj) = r;
  ASSERT_EQ(qr.size(), 402u);
  ASSERT_EQ(cj.size(), 415u);
  EXPECT_EQ(ReadText(qr, 0), "1001");
  EXPECT_EQ(ReadInt(qr, 44, 8), wth);
  EXPECT_EQ(ReadText(qr, 57), "SH");
  EXPECT_EQ(ReadText(qr, 82), "600000");
  EXPECT_EQ(ReadText(qr, 364), "77");
  EXPECT_EQ(ReadInt(qr, 168, 8), 200);
  EXPECT_EQ(ReadText(cj, 13), "1001");
  EXPECT_EQ(ReadInt(cj, 57, 8), wth);
  EXPECT_EQ(ReadInt(cj, 205, 8), 200);          // matched quantity
  EXPECT_DOUBLE_EQ(ReadDouble(cj, 213), 10.0);  // match price
  EXPECT_EQ(ReadText(cj, 377), "77");
  EXPECT_EQ(ReadInt(cj, 253, 1), 1);  // category
}
