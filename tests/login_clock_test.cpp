// The time texts, the server-time measurement that login runs, and the clock exports.
#include <cstring>

#include "account/server_clock.h"
#include "core/context.h"
#include "support/login_fixture.h"
#include "util/dynlib.h"
#include "util/time_text.h"

using namespace molra::test;
using molra::FormatReviseTime;
using molra::ReviseTextAsLong;
using molra::ServerTimeToMs;
using molra::TextToMs;

namespace {

int64_t LocalReading() { return TextToMs(molra::LocalStamp().c_str()); }

}  // namespace

TEST(LoginClock, SeparatedTextsReadAsTheirTimeOfDay) {
  EXPECT_EQ(TextToMs("09:30:15"), 34215000);
  EXPECT_EQ(TextToMs("09:30:15.250"), 34215250);
  EXPECT_EQ(TextToMs("23:59:59.999"), 86399999);
  // Milliseconds count only when the text is longer than 10 characters.
  EXPECT_EQ(TextToMs("09:30:15.2"), 34215000);
  EXPECT_EQ(TextToMs("09:30:15.25"), 34215025);
}

TEST(LoginClock, LocalStampReadsWithTheSeparatorReading) {
  // 093015.250: hours 09, minutes from "01" (the second minute digit and the first second
  // digit), seconds from ".250" (0), and no milliseconds: 32,460,000.
  EXPECT_EQ(TextToMs("093015.250"), 32460000);
  EXPECT_EQ(TextToMs("235959.999"), (23 * 60 + 95) * 60000);
  EXPECT_EQ(TextToMs("000000.000"), 0);
}

TEST(LoginClock, ShortMissingOrEmptyTextsAreZero) {
  EXPECT_EQ(TextToMs(nullptr), 0);
  EXPECT_EQ(TextToMs(""), 0);
  EXPECT_EQ(TextToMs("09:30:1"), 0);
  EXPECT_EQ(ServerTimeToMs(nullptr), 0);
  EXPECT_EQ(ServerTimeToMs("09:30"), 0);
  EXPECT_EQ(ReviseTextAsLong("09:30:1"), 0);
}

TEST(LoginClock, ServerTimeReadsWhereTheSeparatorsStand) {
  EXPECT_EQ(ServerTimeToMs("10:00:00"), 36000000);
  EXPECT_EQ(ServerTimeToMs("10:00:00.125"), 36000125);
  // Not cut at 2 and 5: three-digit hours read whole, unlike the local-stamp reading.
  EXPECT_EQ(ServerTimeToMs("100:0:00.000"), TextToMs("100:0:00.000") + 90 * 3600000);
}

TEST(LoginClock, RevisedTimeTextAndNumberOfTheWorkedExample) {
  // Offset 0 and the local clock at 09:30:15.250, which reads as 32,460,000.
  EXPECT_EQ(FormatReviseTime(TextToMs("093015.250")), "09:01:00.000");
  EXPECT_EQ(ReviseTextAsLong("09:01:00.000"), 90100);
  EXPECT_EQ(FormatReviseTime(34215250), "09:30:15.250");
  EXPECT_EQ(ReviseTextAsLong("09:30:15.250"), 93015);
  EXPECT_EQ(ReviseTextAsLong("23:59:59.999"), 235959);
}

TEST(LoginClock, NegativeAndOverlongRevisedTimesGiveLongerTexts) {
  EXPECT_EQ(FormatReviseTime(-1500), "00:00:-1.-500");
  EXPECT_EQ(FormatReviseTime(25LL * 3600000 + 61000), "25:01:01.000");
  EXPECT_EQ(FormatReviseTime(100LL * 3600000), "100:00:00.000");
}

TEST(LoginClock, TickCountsAgreeAndQuotesAreInert) {
  uint64_t a = SECMOLRA_GetTickCount();
  uint64_t b = SECMOLRA_GetDoubleTickCount();
  uint64_t c = SECMOLRA_GetTickCount();
  EXPECT_LE(a, b);
  EXPECT_LE(b, c);
  EXPECT_FALSE(SECMOLRA_OpenQuoteLink());
  int32_t count = 55;
  EXPECT_EQ(SECMOLRA_GetQuote("600000", nullptr, &count), 0);
  EXPECT_EQ(count, 0);
  EXPECT_EQ(SECMOLRA_GetQuote(nullptr, nullptr, nullptr), 0);
  SECMOLRA_GetReviseTime(nullptr);  // no buffer: nothing written, no crash
}

// One function exported under both names: the library's two symbols have one address.
TEST(LoginClock, DoubleTickCountIsTheTickCountsEntryPoint) {
#if defined(_WIN32)
  const std::string library = BuildDir() + "/src/secmolra.dll";
#else
  const std::string library = BuildDir() + "/src/libsecmolra.so";
#endif
  void* kit = molra::LoadDynamicLibrary(library.c_str());
  ASSERT_NE(kit, nullptr) << library;
  void* tick = molra::FindSymbol(kit, "SECMOLRA_GetTickCount");
  ASSERT_NE(tick, nullptr);
  EXPECT_EQ(molra::FindSymbol(kit, "SECMOLRA_GetDoubleTickCount"), tick);
  EXPECT_EQ(reinterpret_cast<void*>(&SECMOLRA_GetDoubleTickCount),
            reinterpret_cast<void*>(&SECMOLRA_GetTickCount));
}

TEST(LoginClock, RevisedTimeBeforeAnyMeasurementIsTheLocalReading) {
  char buf[64];
  for (int attempt = 0; attempt < 3; ++attempt) {
    int64_t before = LocalReading();
    SECMOLRA_GetReviseTime(buf);
    int64_t as_long = SECMOLRA_GetReviseTimeAsLong();
    if (LocalReading() != before) continue;  // crossed a ten-second step
    EXPECT_EQ(std::string(buf), FormatReviseTime(before));
    EXPECT_EQ(as_long, ReviseTextAsLong(FormatReviseTime(before)));
    return;
  }
  FAIL() << "local reading never stable";
}

TEST_F(LoginTest, SystemDateWithNobodyLoggedInIs202AndTriesAgain) {
  StartDefault();
  EXPECT_EQ(SECMOLRA_GetSystemDate(), 0);
  EXPECT_EQ(LastError(), -202);
  SECMOLRA_SetLastError(0, "", nullptr, nullptr);
  EXPECT_EQ(SECMOLRA_GetSystemDate(), 0);
  EXPECT_EQ(LastError(), -202);
  EXPECT_EQ(Count(Log(), Gbk("[error] GetCurTime：")), 2u);
  EXPECT_EQ(Sim::Get().CallLog(), "");
}

TEST_F(LoginTest, LoginMeasuresDateAndOffsetOnTheManagementConnection) {
  StartDefault();
  LOGIN_SIM_FN(KelSim_SetKvAnswer)("A00001", 1, "", "578=20261121|2051=7|2052=250|1219=09:30:15");
  char buf[64] = {};
  int64_t as_long = 0;
  bool stable = false;
  for (int attempt = 0; attempt < 3 && !stable; ++attempt) {
    int64_t before = LocalReading();
    ASSERT_GT(SECMOLRA_TradeLogin("T", "1001", "111111"), 0) << LastErrorText();
    SECMOLRA_GetReviseTime(buf);
    as_long = SECMOLRA_GetReviseTimeAsLong();
    stable = LocalReading() == before;
    if (stable) {
      EXPECT_EQ(molra::CurrentKit()->clock.offset_ms.load(), before - 34215000 - 250);
    }
  }
  ASSERT_TRUE(stable);
  // Revised = local reading - (local reading - server time - correction).
  EXPECT_STREQ(buf, "09:30:15.250");
  EXPECT_EQ(as_long, 93015);
  EXPECT_EQ(molra::SystemDate(), 20261121);
  Sim::Get().ClearCallLog();
  EXPECT_EQ(SECMOLRA_GetSystemDate(), 20261121);
  EXPECT_EQ(Sim::Get().CallLog(), "");  // known: no new query
}

TEST_F(LoginTest, ServerTimeQueryReadsItsAnswerInOrder) {
  StartDefault();
  ASSERT_GT(SECMOLRA_TradeLogin("T", "1001", "111111"), 0) << LastErrorText();
  std::string calls = Sim::Get().CallLog();
  std::size_t head = calls.find("A00001)\n");
  ASSERT_NE(head, std::string::npos);
  std::string tail = calls.substr(head);
  std::size_t run = tail.find("Kel_Run(");
  std::size_t date = tail.find(",578,-1)");
  std::size_t unused = tail.find(",2051,-1)");
  std::size_t corr = tail.find(",2052,-1)");
  std::size_t text = tail.find("Kel_GetItem(");
  ASSERT_NE(text, std::string::npos);
  EXPECT_LT(run, date);
  EXPECT_LT(date, unused);
  EXPECT_LT(unused, corr);
  EXPECT_LT(corr, text);
  EXPECT_NE(tail.find(",1219,-1)", text), std::string::npos);
  std::string mgmt = std::to_string(LOGIN_SIM_FN(KelSim_ConnectionByAddr)("127.0.0.1:9101", 0));
  EXPECT_NE(calls.find("Kel_AllocateSession(" + mgmt + ")\nKel_CreateHead("), std::string::npos);
  EXPECT_GT(molra::SystemDate(), 20000000);
}

TEST_F(LoginTest, SystemDateNotPositiveInTheAnswerIsAskedAgain) {
  StartDefault();
  LOGIN_SIM_FN(KelSim_SetKvAnswer)("A00001", 1, "", "578=0|1219=10:00:00");
  ASSERT_GT(SECMOLRA_TradeLogin("T", "1001", "111111"), 0) << LastErrorText();
  Sim::Get().ClearCallLog();
  EXPECT_EQ(SECMOLRA_GetSystemDate(), 0);
  EXPECT_NE(Sim::Get().CallLog().find("A00001"), std::string::npos);
  LOGIN_SIM_FN(KelSim_ClearAnswers)();
  EXPECT_GT(SECMOLRA_GetSystemDate(), 20000000);
}

TEST_F(LoginTest, ServerTimeFailuresNameGetCurTime) {
  StartDefault();
  ASSERT_GT(SECMOLRA_TradeLogin("T", "1001", "111111"), 0) << LastErrorText();
  int64_t offset = molra::CurrentKit()->clock.offset_ms.load();
  const struct {
    void (*arm)(std::int32_t);
    std::int64_t code;
    const char* message;
  } faults[] = {{LOGIN_SIM_FN(KelSim_FailRun), -204, "发送请求失败"},
                {LOGIN_SIM_FN(KelSim_FailAllocSession), -202, "发起会话失败"}};
  for (const auto& f : faults) {
    f.arm(1);
    molra::Status measured = molra::MeasureServerTime(molra::CurrentKit());
    ASSERT_FALSE(measured);
    EXPECT_EQ(measured.failure().code, f.code);
    EXPECT_EQ(measured.failure().message, Gbk(f.message));
    EXPECT_STREQ(measured.failure().where, "GetCurTime");
  }
  // A refused query changes nothing and is no failure.
  LOGIN_SIM_FN(KelSim_SetKvAnswer)("A00001", -3, "busy", "578=1|1219=01:00:00");
  EXPECT_TRUE(molra::MeasureServerTime(molra::CurrentKit()));
  EXPECT_EQ(molra::CurrentKit()->clock.offset_ms.load(), offset);
  EXPECT_EQ(LOGIN_SIM_FN(KelSim_OpenSessions)(), 0);
}
