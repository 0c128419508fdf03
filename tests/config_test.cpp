// "molra.ini": location, value rules and the GLOBAL section (sections: conn_profile_test).
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "config/ini_file.h"
#include "core/context.h"
#include "secmolra.h"
#include "support/test_support.h"

using namespace molra;
using namespace molra::test;

TEST(IniValues, BooleanRules) {
  struct Case {
    const char* value;
    bool dflt;
    bool expected;
  };
  const Case cases[] = {
      {"1", false, true},   {"t", false, true},   {"True", false, true}, {"y", false, true},
      {"Yes", false, true}, {"on", false, true},  {"ON", false, true},   {"0", true, false},
      {"f", true, false},   {"No", true, false},  {"off", true, false},  {"of", true, false},
      {"OF", true, false},  {"x", true, true},    {"x", false, false},   {"", true, true},
      {"o", true, true},    {"ox", false, false}, {" 1", false, false},
  };
  for (const Case& c : cases) EXPECT_EQ(ParseIniBool(c.value, c.dflt), c.expected) << c.value;
  EXPECT_TRUE(ParseIniBool(nullptr, true));
}

TEST(IniValues, IntegerRules) {
  const std::string zeros63(63, '0');  // values longer than 63 characters give the default
  const std::pair<std::string, long> cases[] = {
      {"12", 12},   {"-3", -3}, {"0x1A", 26}, {"0X1a", 26},       {"0x", 4},
      {"12abc", 4}, {"", 4},    {"11", 11},   {zeros63 + "7", 4}, {zeros63.substr(1) + "7", 7}};
  for (const auto& [value, expected] : cases) {
    EXPECT_EQ(ParseIniLong(value.c_str(), 4), expected) << value;
  }
  EXPECT_EQ(ParseIniLong(nullptr, 4), 4);
}

namespace {
std::string WriteIni(const std::string& text) {
  std::string dir = MakeTempDir() + "/";
  WriteFile(dir + "molra.ini", text);
  SECMOLRA_SetProfilePath(dir.c_str());
  return dir;
}
}  // namespace

TEST(IniFileLocation, ProfilePathIsJoinedWithoutSeparator) {
  SECMOLRA_SetProfilePath("/some/dir");
  EXPECT_EQ(ConfigFilePath(), "/some/dirmolra.ini");
  SECMOLRA_SetProfilePath("./");
  EXPECT_EQ(ConfigFilePath(), "./molra.ini");
}

TEST(GlobalSection, MissingFileGivesDefaults) {
  SECMOLRA_SetProfilePath((MakeTempDir() + "/").c_str());
  const PushSettings push = CommInit();
  EXPECT_FALSE(push.struct_push_msg);
  EXPECT_EQ(push.confirm_msg_func, "DM0003");
  EXPECT_EQ(push.report_msg_func, "DM0004");
}

TEST(GlobalSection, SectionsAndKeysIgnoreCaseAndTheFileIsReadAfresh) {
  std::string dir = WriteIni("[global]\nstructpushmsg=Yes\nconfirmmsgfunc=1234\n");
  PushSettings push = CommInit();
  EXPECT_TRUE(push.struct_push_msg);
  EXPECT_EQ(push.confirm_msg_func, "1234");
  EXPECT_EQ(push.report_msg_func, "DM0004");
  WriteFile(dir + "molra.ini", "[GLOBAL]\nStructPushMsg=of\n");
  push = CommInit();
  EXPECT_FALSE(push.struct_push_msg);
  EXPECT_EQ(push.confirm_msg_func, "DM0003");
}
