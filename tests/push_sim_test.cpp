// Pushes and replies end to end through the simulated transport: the kit's handlers are
// registered with it directly, the back end produces the records and answers.
#include <gtest/gtest.h>
#include <rapidjson/document.h>

#include <string>

#include "core/context.h"
#include "push/push_handlers.h"
#include "support/host_callbacks.h"
#include "support/sim_api.h"
#include "trade/replies.h"

using namespace molra::test;

namespace {

class PushSim : public ::testing::Test {
 protected:
  void SetUp() override {
    Sim::Get().Reset();
    saved_ = kel::api;
    kel::api = SimKel();
    ASSERT_TRUE(k.Kel_Initialize());
    trade = k.Kel_Connect("127.0.0.1:9102", "", "", 10);
    sub = k.Kel_Connect("127.0.0.1:9104", "", "", 10);
    token = client.Login("1001", "111111");
    ASSERT_GT(token, 0);
  }
  void TearDown() override {
    k.Kel_Uninitialize();
    kel::api = saved_;
  }

  void Subscribe(const char* code, kel::SubscribeFn fn) {
    kel::int64 s = k.Kel_AllocateSession(sub);
    k.Kel_CreateHead(s, code);
    k.Kel_SetSubsCondi(s, "getstring(605)=='1001'");
    kel::int64 id = 0;
    EXPECT_TRUE(k.Kel_Subscribe(s, &id, fn, nullptr));
    k.Kel_ReleaseSession(s);
  }

  // Sends a block asynchronously with the reply handler, as the order code does.
  void Send(const SimBlock& b, kel::int64 tag, kel::ReplyFn handler) {
    kel::int64 s = k.Kel_AllocateSession(trade);
    k.Kel_SetStructData(s, b.bytes().data(), static_cast<kel::int32>(b.bytes().size()));
    k.Kel_SetSessData(s, tag);
    k.Kel_RegReplyCallFunc(s, handler);
    ASSERT_TRUE(k.Kel_Write(s));
    SIM_FN(KelSim_WaitIdle)();
  }

  SimBlock Order(kel::int64 tok, int qty, double price) {
    SimBlock b(19001, 137, tok, "1001");
    b.Text(55, 3, "SH").Text(58, 11, "A000001001").Text(69, 9, "600000").Int(78, 1, 1);
    b.Int(79, 4, qty).Double(83, price).Text(120, 17, "4242");
    return b;
  }

  const kel::Api& k = SimKel();
  kel::int64 trade = 0, sub = 0, token = 0;
  SimClient client;

 private:
  kel::Api saved_;
};

rapidjson::Document Parse(const std::string& json) {
  rapidjson::Document d;
  d.Parse(json.c_str());
  EXPECT_FALSE(d.HasParseError()) << json;
  return d;
}

TEST_F(PushSim, AsyncOrderReplyReachesTheFunctionCallbackAndFreesItsSession) {
  HostCallbacks host;
  Send(Order(token, 100, 10.0), 4242, molra::Sc_Order_AsyncFuncProcess);
  auto got = host.Functions();
  ASSERT_EQ(got.size(), 1u);
  EXPECT_EQ(got[0].type, 14);
  rapidjson::Document d = Parse(got[0].json);
  EXPECT_EQ(d["JYLX"].GetInt(), 30);
  EXPECT_EQ(d["KFSBDBH"].GetInt64(), 4242);
  EXPECT_STREQ(d["KHH"].GetString(), "1001");
  EXPECT_GT(d["WTH"].GetInt64(), 0);
  EXPECT_GT(std::strlen(d["WTSJ"].GetString()), 0u);
  EXPECT_DOUBLE_EQ(d["DJZJ"].GetDouble(), 1000.0);
  EXPECT_GT(d["RETCODE"].GetInt(), 0);
  EXPECT_EQ(SIM_FN(KelSim_OpenSessions)(), 1);  // only the client's own session
}

TEST_F(PushSim, RefusedAsyncOrderGivesTheRefusalForm) {
  HostCallbacks host;
  Send(Order(token + 1, 100, 10.0), 7, molra::Sc_Order_AsyncFuncProcess);  // a wrong token
  auto got = host.Functions();
  ASSERT_EQ(got.size(), 1u);
  rapidjson::Document d = Parse(got[0].json);
  EXPECT_EQ(d["WTH"].GetInt64(), 0);
  EXPECT_LT(d["RETCODE"].GetInt(), 1);
  EXPECT_FALSE(d.HasMember("WTSJ"));
  EXPECT_FALSE(d.HasMember("DJZJ"));
  EXPECT_EQ(SIM_FN(KelSim_OpenSessions)(), 1);
}

TEST_F(PushSim, ConfirmationAndMatchArriveThroughThePerSubscriptionHandlers) {
  HostCallbacks host;
  Subscribe("DM0003", &molra::ScOrderMsgProcess);
  Subscribe("DM0004", &molra::ScReportMsgProcess);
  std::string ans = client.Run(Order(token, 200, 10.0));
  const long long wth = ReadInt(ans, 443, 8);
  ASSERT_GT(wth, 0);
  SIM_FN(KelSim_WaitIdle)();
  auto got = host.Messages();
  ASSERT_EQ(got.size(), 2u);
  EXPECT_EQ(got[0].type, 8);
  EXPECT_EQ(got[1].type, 10);
  for (const Delivery& m : got) {
    rapidjson::Document d = Parse(m.json);
    EXPECT_EQ(d.MemberCount(), 40u);  // 37 record members and TYPE, SYS_TYPE, PARSE_COST
    EXPECT_EQ(d["TYPE"].GetInt(), m.type);
    EXPECT_STREQ(d["KHH"].GetString(), "1001");
    EXPECT_EQ(d["WTH"].GetInt64(), wth);
    EXPECT_STREQ(d["KFSBDBH"].GetString(), "4242");
  }
  EXPECT_EQ(Parse(got[1].json)["CJSL"].GetInt64(), 200);
}

TEST_F(PushSim, StructuredPushesOfAWithdrawalAndARefusal) {
  HostCallbacks host;
  molra::PushSettings push;  // the default codes
  k.Kel_RegGlobalStructPublishFunc(&molra::ScStructMsgProc, &push);
  Subscribe("DM0003", nullptr);
  // 20% above the price: accepted by the back end, refused by the exchange.
  client.Run(Order(token, 100, 12.0));
  // Below the price: rests, then is withdrawn.
  std::string ans = client.Run(Order(token, 100, 9.5));
  SimBlock w(19002, 139, token, "1001");
  w.Text(55, 3, "SH").Int(69, 8, ReadInt(ans, 443, 8));
  client.Run(w);
  SIM_FN(KelSim_WaitIdle)();
  auto got = host.Messages();
  ASSERT_EQ(got.size(), 3u);
  EXPECT_EQ(got[0].type, 11);
  EXPECT_EQ(got[1].type, 8);
  EXPECT_EQ(got[2].type, 9);
  rapidjson::Document d = Parse(got[2].json);
  EXPECT_EQ(d.MemberCount(), 41u);  // the structured record adds KFSDM
  EXPECT_TRUE(d.HasMember("KFSDM"));
  EXPECT_STREQ(d["CXBZ"].GetString(), "W");
  EXPECT_EQ(d["CXWTH"].GetInt64(), ReadInt(ans, 443, 8));
}

TEST_F(PushSim, IssuanceReplyReadsTheAnswerFields) {
  HostCallbacks host;
  kel::int64 s = k.Kel_AllocateSession(trade);
  k.Kel_CreateHead(s, "19059");
  const std::pair<int, std::string> fields[] = {
      {719, "600000"}, {571, "A000001001"}, {605, "1001"},
      {599, "SH"},     {595, "1"},          {684, "1000"},
      {682, "1.00"},   {1013, "0"},         {1600, std::to_string(token)},
      {9157, "99"}};
  for (const auto& f : fields) k.Kel_SetItem(s, f.first, f.second.c_str());
  k.Kel_SetSessData(s, 99);
  k.Kel_RegReplyCallFunc(s, molra::Sc_FXYW_AsyncFuncProcess);
  ASSERT_TRUE(k.Kel_Write(s));
  SIM_FN(KelSim_WaitIdle)();
  auto got = host.Functions();
  ASSERT_EQ(got.size(), 1u);
  rapidjson::Document d = Parse(got[0].json);
  EXPECT_EQ(d["JYLX"].GetInt(), 37);
  EXPECT_EQ(d["KFSBDBH"].GetInt64(), 99);
  EXPECT_STREQ(d["KHH"].GetString(), "1001");
  EXPECT_GT(d["WTH"].GetInt64(), 0);
  EXPECT_TRUE(d.HasMember("DJZJ"));
  EXPECT_EQ(d["RETCODE"].GetInt(), 1);
  EXPECT_EQ(SIM_FN(KelSim_OpenSessions)(), 1);
}

}  // namespace
