// The daily log: its file, its line format and the write-log switch.
#include "core/log.h"

#include <gtest/gtest.h>
#include <spdlog/pattern_formatter.h>

#include <chrono>
#include <regex>
#include <string>

#include "secmolra.h"
#include "support/test_support.h"

using namespace molra::test;

namespace {
void Flush() {
  if (auto* l = molra::g_logger.load()) l->flush();
}
std::string TodayLog(const std::string& dir) {
  Flush();
  return ReadFile(dir + "/molra_" + Today() + ".log");
}
}  // namespace

TEST(Log, DefaultDirectoryIsLogBesideTheProcess) {
  ChangeDir(MakeTempDir());
  molra::SetUpLogging("");
  MOLRA_LOG_INFO("{} hello", "x");
  Flush();
  EXPECT_TRUE(FileExists("log/molra_" + Today() + ".log"));
  EXPECT_EQ(molra::LogBaseName(""), "log/molra.log");
  EXPECT_EQ(molra::LogBaseName("/var/x"), "/var/x/molra.log");
}

TEST(Log, NestedDirectoryIsCreatedAndLinesFollowThePattern) {
  std::string dir = MakeTempDir() + "/a/b";
  SECMOLRA_SetLogPath(dir.c_str());
  ASSERT_TRUE(SECMOLRA_Init());
  SECMOLRA_SetLastError(-9, Gbk("坏了").c_str(), "Fn", nullptr);
  std::string text = TodayLog(dir);
  // Local time with microseconds, logger name, level, message; every line ends in CR LF.
  std::regex line(R"(\[\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{6}\] \[MOLRA\] \[error\] Fn)" +
                  Gbk("：坏了") + R"(\r\n)");
  EXPECT_TRUE(std::regex_search(text, line)) << text;
  EXPECT_NE(text.find("[info] CommInit success. StructPushMsg:false ConfirmMsgFunc:DM0003 "
                      "ReportMsgFunc:DM0004\r\n"),
            std::string::npos)
      << text;
  SECMOLRA_Exit();
}

// Made with the platform's directory call: names that a command interpreter would split or
// run are made as they stand, and nothing else happens.
TEST(Log, DirectoryNamesAreTakenAsTheyStand) {
  const std::string base = MakeTempDir();
  ChangeDir(base);
  for (const char* name : {"log files/of today", "a & md injected", "b (1)/c"}) {
    const std::string dir = base + "/" + name;
    molra::SetUpLogging(dir);
    MOLRA_LOG_INFO("{} here", name);
    EXPECT_NE(TodayLog(dir).find(std::string(name) + " here"), std::string::npos) << name;
  }
  EXPECT_FALSE(FileExists(base + "/injected"));
}

TEST(Log, SwitchedOffBeforeInitCreatesTheFileButWritesNothing) {
  std::string dir = MakeTempDir() + "/quiet";
  SECMOLRA_SetLogPath(dir.c_str());
  SECMOLRA_SetWriteLog(false);
  ASSERT_TRUE(SECMOLRA_Init());
  SECMOLRA_SetLastError(-9, "silent", "Fn", nullptr);
  Flush();
  EXPECT_TRUE(FileExists(dir + "/molra_" + Today() + ".log"));
  EXPECT_EQ(TodayLog(dir), "");
  // The record itself is still kept.
  std::string msg;
  EXPECT_EQ(LastError(&msg), -9);
  EXPECT_EQ(msg, "silent");
  SECMOLRA_SetWriteLog(true);
  SECMOLRA_SetNode("n1");
  EXPECT_NE(TodayLog(dir).find("SECMOLRA_SetNode node:n1"), std::string::npos);
  SECMOLRA_Exit();
}

TEST(Log, LinesAfterExitStillReachTheFile) {
  std::string dir = MakeTempDir();
  SECMOLRA_SetLogPath(dir.c_str());
  ASSERT_TRUE(SECMOLRA_Init());
  SECMOLRA_Exit();
  SECMOLRA_SetLastError(-1, "after exit", "Fn", nullptr);
  EXPECT_NE(TodayLog(dir).find(Gbk("Fn：after exit")), std::string::npos);
}

TEST(Log, CallbackSettersEchoThePointer) {
  std::string dir = MakeTempDir();
  SECMOLRA_SetLogPath(dir.c_str());
  ASSERT_TRUE(SECMOLRA_Init());
  SECMOLRA_SetMsgCallback(nullptr);
  SECMOLRA_SetConnEventCallback(nullptr);
  std::string text = TodayLog(dir);
  EXPECT_NE(text.find("SECMOLRA_SetMsgCallback effective:0x0"), std::string::npos) << text;
  EXPECT_NE(text.find("SECMOLRA_SetConnEventCallback effective:0x0"), std::string::npos);
  SECMOLRA_Exit();
}

// The kit's formatter against spdlog's own with the same pattern: the same bytes for every
// level, within a second, across seconds, days and years, and at the edges of the fraction.
TEST(Log, LineFormatterWritesWhatThePatternWrites) {
  using Clock = spdlog::log_clock;
  const Clock::time_point base = Clock::from_time_t(1767225599);  // 2025-12-31 23:59:59 UTC
  const struct {
    Clock::duration after;
    spdlog::level::level_enum level;
    const char* text;
  } cases[] = {
      {std::chrono::microseconds(0), spdlog::level::info, "OrderEntrust lpKhh:1001"},
      {std::chrono::microseconds(999999), spdlog::level::warn, ""},
      {std::chrono::microseconds(1000000), spdlog::level::err, "北京 {x}"},
      {std::chrono::microseconds(1000001), spdlog::level::critical, "next second"},
      {std::chrono::microseconds(1000001), spdlog::level::info, "same second again"},
      {std::chrono::hours(24 * 40) + std::chrono::nanoseconds(1500), spdlog::level::debug, "x"},
      {-std::chrono::hours(24 * 400), spdlog::level::trace, "a year back"},
  };
  auto kit = molra::MakeLineFormatter();
  spdlog::pattern_formatter spd(molra::kLinePattern, spdlog::pattern_time_type::local, "\r\n");
  for (const auto& c : cases) {
    spdlog::details::log_msg msg(Clock::time_point(base + c.after), spdlog::source_loc{}, "MOLRA",
                                 c.level, c.text);
    spdlog::memory_buf_t want, got;
    spd.format(msg, want);
    kit->format(msg, got);
    EXPECT_EQ(std::string(got.data(), got.size()), std::string(want.data(), want.size())) << c.text;
  }
}
