// Transport faults under every order family, every query and every account operation:
// no session, Kel_Run failing, Kel_Write failing, and answers one byte short of each length
// the kit checks (and exactly long enough). Each call reports the documented code and
// message and leaves no session open.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "support/host_callbacks.h"
#include "support/order_calls.h"
#include "support/trade_fixture.h"

using namespace molra::test;
using molra::trade::Fam;

namespace {

class Faults : public TradeTest {
 protected:
  static std::int32_t OpenSessions() { return KELSIM(KelSim_OpenSessions)(); }
};

// Queries and account operations, faulted like the order calls.
struct OtherCall {
  const char* name;
  std::int64_t (*call)();
};
const OtherCall kOtherCalls[] = {
    {"QueryFundInfo",
     [] {
       std::vector<FundRecord> l;
       return SECMOLRA_QueryFundInfo("1001", l);
     }},
    {"QueryAccInfo",
     [] {
       std::vector<AccountRecord> l;
       return SECMOLRA_QueryAccInfo("1001", l);
     }},
    {"QueryPSQY",
     [] {
       std::vector<PSQYRecord> l;
       return SECMOLRA_QueryPSQY("1001", "SH", "", l);
     }},
    {"QueryOrders",
     [] {
       std::vector<OrderRecord> l;
       return SECMOLRA_QueryOrders("1001", 0, 0, 0, 0, "", "", 0, l);
     }},
    {"QueryMatchs",
     [] {
       std::vector<MatchRecord> l;
       return SECMOLRA_QueryMatchs("1001", 0, 0, 0, 0, "", "", 0, l);
     }},
    {"QueryPositions",
     [] {
       std::vector<PositionRecord> l;
       return SECMOLRA_QueryPositions("1001", 0, 0, 0, "", "", "", 0, l);
     }},
    {"QueryETFShare",
     [] {
       std::vector<ETFShareRecord> l;
       return SECMOLRA_QueryETFShare("1001", "510050", l);
     }},
    {"QueryZJHBCL",
     [] {
       std::vector<ZJHBCLRecord> l;
       return SECMOLRA_QueryZJHBCL("1001", "", l);
     }},
    {"QueryJDKYZJ",
     [] {
       std::vector<JDKYZJRecord> l;
       return SECMOLRA_QueryJDKYZJ("1001", "", l);
     }},
    {"ModifyPwd", [] { return SECMOLRA_ModifyPwd("1001", "111111", "123456", 1); }},
    {"FundTransIn", [] { return SECMOLRA_FundTransIn("1001", "111111", 1.0, "", "", "", ""); }},
    {"FundTransOut", [] { return SECMOLRA_FundTransOut("1001", "111111", 1.0, "", "", "", ""); }},
};

using NamedCalls = std::vector<std::pair<const char*, std::int64_t (*)()>>;

// Every call named in `calls` under one armed fault: the code, the message, no session
// left open. Returns the number of calls made.
int FaultEach(const NamedCalls& calls, void (*arm)(std::int32_t), std::int64_t code,
              const char* message) {
  for (const auto& c : calls) {
    const std::int32_t open = KELSIM(KelSim_OpenSessions)();
    arm(1);
    EXPECT_EQ(c.second(), code) << c.first;
    EXPECT_EQ(LastErrorText(), Gbk(message)) << c.first;
    KELSIM(KelSim_WaitIdle)();
    EXPECT_EQ(KELSIM(KelSim_OpenSessions)(), open) << c.first;
  }
  return static_cast<int>(calls.size());
}

NamedCalls CallsOf(bool sync, bool async, bool other) {
  NamedCalls out;
  for (const OrderCall& c : OrderCalls()) {
    if (sync) out.emplace_back(c.name, c.sync);
    if (async && c.async != nullptr) out.emplace_back(c.name, c.async);
  }
  if (other)
    for (const OtherCall& c : kOtherCalls) out.emplace_back(c.name, c.call);
  return out;
}

// Without a session: -202 with the connection layer's message, nothing sent.
TEST_F(Faults, NoSessionInEveryCall) {
  EXPECT_EQ(
      FaultEach(CallsOf(true, true, true), KELSIM(KelSim_FailAllocSession), -202, "发起会话失败"),
      56);
  std::vector<std::string> calls = Calls();
  EXPECT_EQ(std::count(calls.begin(), calls.end(), "Kel_AllocateSession"), 56);
  for (const std::string& c : calls)
    EXPECT_TRUE(c == "Kel_AllocateSession" || c == "Kel_IsConnect") << c;
}

TEST_F(Faults, RunFailingInEverySynchronousCall) {
  EXPECT_EQ(FaultEach(CallsOf(true, false, true), KELSIM(KelSim_FailRun), -204, "发送请求失败"),
            38);
}

TEST_F(Faults, WriteFailingInEveryAsynchronousCall) {
  HostCallbacks host;
  EXPECT_EQ(FaultEach(CallsOf(false, true, false), KELSIM(KelSim_FailWrite), -204, "发送请求失败"),
            18);
  EXPECT_TRUE(host.Functions().empty()) << "no reply for a request never sent";
}

// The block families' answer lengths: below 430 the common message, below the family's own
// length its message; the full length is accepted (the order number or quantity read).
struct LengthCheck {
  Fam fam;
  const char* code;
  int full;
  const char* short_msg;
};
const LengthCheck kLengthChecks[] = {
    {Fam::kOrderEntrust, "19001", 472, "应答数据包不正确2"},
    {Fam::kBatchEntrust, "19012", 7663, "应答数据包不正确2"},
    {Fam::kETFSubscribe, "19013", 472, "应答数据包不正确"},
    {Fam::kETFRedeem, "19014", 472, "应答数据包不正确"},
    {Fam::kZQHGEntrust, "19042", 472, "应答数据包不正确2"},
    {Fam::kZQHGCrk, "19043", 472, "应答数据包不正确2"},
    {Fam::kLof, "19025", 472, "应答数据包不正确2"},
    {Fam::kPHDJEntrust, "19131", 472, "应答数据包不正确2"},
    {Fam::kOrderWithdraw, "19002", 516, "应答数据包不正确"},
    {Fam::kETFWithdraw, "19020", 517, "应答数据包不正确"},
    {Fam::kZQHGWithdraw, "19044", 512, "应答数据包不正确"},
    {Fam::kLOFWithdraw, "19026", 516, "应答数据包不正确"},
    {Fam::kPHDJWithdraw, "19002", 516, "应答数据包不正确"},
    {Fam::kBatchWithdraw, "19063", 6459, "应答数据包不正确"},
    {Fam::kTradableQty, "19011", 438, "应答数据包不正确"},
    {Fam::kETFTradableQty, "19024", 434, "应答数据包不正确"},
    {Fam::kZQHGTradableQty, "19045", 438, "应答数据包不正确"},
    {Fam::kLOFTradableQty, "19028", 438, "应答数据包不正确"},
    {Fam::kPHDJTradableQty, "19133", 438, "应答数据包不正确"},
};

const OrderCall& CallOf(Fam fam) {
  for (const OrderCall& c : OrderCalls()) {
    if (c.fam == fam) return c;
  }
  throw std::logic_error("no call for a family");
}

TEST_F(Faults, SynchronousAnswersOneByteShortAtEveryLengthCheck) {
  for (const LengthCheck& l : kLengthChecks) {
    const OrderCall& c = CallOf(l.fam);
    const std::int32_t open = OpenSessions();
    Answer(l.code, AnswerBlock(429, 1));
    EXPECT_EQ(c.sync(), -205) << c.name << " 429";
    EXPECT_EQ(Message(), Gbk("应答数据包不正确1")) << c.name;
    Answer(l.code, AnswerBlock(static_cast<std::size_t>(l.full - 1), 1));
    EXPECT_EQ(c.sync(), -205) << c.name << " " << l.full - 1;
    EXPECT_EQ(Message(), Gbk(l.short_msg)) << c.name;
    ByteBlock full = AnswerBlock(static_cast<std::size_t>(l.full), 1);
    if (l.full >= 451 && l.fam != Fam::kBatchEntrust) full.Num<std::int64_t>(443, 4242);
    if (l.full >= 438 && l.full < 451) full.Num<double>(430, 42.0);
    if (l.fam == Fam::kETFTradableQty) full.Num<std::int32_t>(430, 42);
    Answer(l.code, full);
    const std::int64_t ok = c.sync();
    // The family's result: the order number, the quantity, or the answer's return code.
    EXPECT_TRUE(ok == 4242 || ok == 42 || (l.fam == Fam::kBatchWithdraw && ok == 1) ||
                (l.fam == Fam::kBatchEntrust && ok == 1))
        << c.name << " " << ok << " " << Message();
    EXPECT_EQ(OpenSessions(), open) << c.name;
    KELSIM(KelSim_ClearAnswers)();
  }
}

}  // namespace
