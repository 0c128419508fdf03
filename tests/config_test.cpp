// "molra.ini": location, value rules, the GLOBAL section and connection sections.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "api/kit_state.h"
#include "config/conn_profile.h"
#include "config/ini_file.h"
#include "secmolra.h"
#include "support/test_support.h"

using namespace molra;
using namespace molra::test;

TEST(IniValues, BooleanRules) {
  struct Case { const char* value; bool dflt; bool expected; };
  const Case cases[] = {
      {"1", false, true},   {"t", false, true},    {"True", false, true}, {"y", false, true},
      {"Yes", false, true}, {"on", false, true},   {"ON", false, true},   {"0", true, false},
      {"f", true, false},   {"No", true, false},   {"off", true, false},  {"of", true, false},
      {"OF", true, false},  {"x", true, true},     {"x", false, false},   {"", true, true},
      {"o", true, true},    {"ox", false, false},  {" 1", false, false},
  };
  for (const Case& c : cases) EXPECT_EQ(ParseIniBool(c.value, c.dflt), c.expected) << c.value;
  EXPECT_TRUE(ParseIniBool(nullptr, true));
}

TEST(IniValues, IntegerRules) {
  EXPECT_EQ(ParseIniLong("12", 4), 12);
  EXPECT_EQ(ParseIniLong("-3", 4), -3);
  EXPECT_EQ(ParseIniLong("0x1A", 4), 26);
  EXPECT_EQ(ParseIniLong("0X1a", 4), 26);
  EXPECT_EQ(ParseIniLong("0x", 4), 4);
  EXPECT_EQ(ParseIniLong("12abc", 4), 4);
  EXPECT_EQ(ParseIniLong("", 4), 4);
  EXPECT_EQ(ParseIniLong(nullptr, 4), 4);
  EXPECT_EQ(ParseIniLong(std::string(63, '1').substr(0, 2).c_str(), 4), 11);
  std::string long_value = "0000000000000000000000000000000000000000000000000000000000000007";
  ASSERT_EQ(long_value.size(), 64u);
  EXPECT_EQ(ParseIniLong(long_value.c_str(), 4), 4);  // longer than 63 characters
  EXPECT_EQ(ParseIniLong(long_value.substr(1).c_str(), 4), 7);
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
  EXPECT_TRUE(CommInit());
  EXPECT_FALSE(Global().struct_push_msg);
  EXPECT_EQ(Global().confirm_msg_func, "DM0003");
  EXPECT_EQ(Global().report_msg_func, "DM0004");
}

TEST(GlobalSection, SectionsAndKeysIgnoreCaseAndTheFileIsReadAfresh) {
  std::string dir = WriteIni("[global]\nstructpushmsg=Yes\nconfirmmsgfunc=1234\n");
  EXPECT_TRUE(CommInit());
  EXPECT_TRUE(Global().struct_push_msg);
  EXPECT_EQ(Global().confirm_msg_func, "1234");
  EXPECT_EQ(Global().report_msg_func, "DM0004");
  WriteFile(dir + "molra.ini", "[GLOBAL]\nStructPushMsg=of\n");
  EXPECT_TRUE(CommInit());
  EXPECT_FALSE(Global().struct_push_msg);
  EXPECT_EQ(Global().confirm_msg_func, "DM0003");
}

TEST(ConnSection, DefaultsOfAnEmptySection) {
  WriteIni("[K]\n");
  IniFile ini;
  ASSERT_TRUE(ini.Load(ConfigFilePath()));
  ConnProfile p;
  std::memset(&p, 0x7f, sizeof p);
  ConnSectionInfo info = ReadConnProfile(ini, "K", p);
  EXPECT_EQ(info.system_type, 4);
  EXPECT_FALSE(info.connect_with_ua);
  EXPECT_STREQ(p.yybbh, "0");
  EXPECT_STREQ(p.addr, "");
  EXPECT_STREQ(p.name, "");
  EXPECT_TRUE(p.use3rd);
  EXPECT_FALSE(p.use_traders);
  EXPECT_FALSE(p.cancel_resub);
  EXPECT_TRUE(p.trade_addr_defaulted);
  EXPECT_EQ(p.reserved, 0);
}

TEST(ConnSection, AddressesDefaultInChain) {
  WriteIni("[A]\naddr=m:1\n[B]\naddr=m:1\ntradeaddr=t:2\n[C]\naddr=m:1\ntradeaddr=t:2\nqueryaddr=q:3\n");
  IniFile ini;
  ASSERT_TRUE(ini.Load(ConfigFilePath()));
  ConnProfile p;
  ReadConnProfile(ini, "A", p);
  EXPECT_STREQ(p.trade_addr, "m:1");
  EXPECT_STREQ(p.subscribe_addr, "m:1");
  EXPECT_STREQ(p.query_addr, "m:1");
  EXPECT_TRUE(p.trade_addr_defaulted);
  ReadConnProfile(ini, "B", p);
  EXPECT_STREQ(p.trade_addr, "t:2");
  EXPECT_STREQ(p.subscribe_addr, "t:2");
  EXPECT_STREQ(p.query_addr, "t:2");
  EXPECT_FALSE(p.trade_addr_defaulted);
  ReadConnProfile(ini, "C", p);
  EXPECT_STREQ(p.query_addr, "q:3");
  EXPECT_STREQ(p.subscribe_addr, "t:2");
}

TEST(ConnSection, ValuesAndBooleansWithTheirOwnDefaults) {
  WriteIni(
      "[k]\nsystemtype=0x1A\nName=0123456789012345678901234567890123\nexchange=SHSE\n"
      "use3rd=of\nusetraders=1\ncancelkelresub=on\nConnWithUA=TRUE\nyybbh=8\n"
      "[u1]\nuse3rd=x\nConnWithUA=yes\nSystemType=12abc\n[u2]\nConnWithUA=1\nSystemType=0x\n"
      "[u3]\nConnWithUA=on\nuse3rd=off\n");
  IniFile ini;
  ASSERT_TRUE(ini.Load(ConfigFilePath()));
  ConnProfile p;
  ConnSectionInfo info = ReadConnProfile(ini, "K", p);
  EXPECT_EQ(info.system_type, 26);
  EXPECT_TRUE(info.connect_with_ua);
  EXPECT_EQ(std::string(p.name, sizeof p.name), "012345678901234567890123456789012");  // 33, no NUL
  EXPECT_EQ(std::string(p.exchange, 3), "SHS");
  EXPECT_FALSE(p.use3rd);
  EXPECT_TRUE(p.use_traders);
  EXPECT_TRUE(p.cancel_resub);
  EXPECT_STREQ(p.yybbh, "8");
  info = ReadConnProfile(ini, "u1", p);
  EXPECT_TRUE(p.use3rd);
  EXPECT_FALSE(info.connect_with_ua);
  EXPECT_EQ(info.system_type, 4);
  info = ReadConnProfile(ini, "u2", p);
  EXPECT_FALSE(info.connect_with_ua);
  EXPECT_EQ(info.system_type, 4);
  info = ReadConnProfile(ini, "u3", p);
  EXPECT_FALSE(info.connect_with_ua);
  EXPECT_FALSE(p.use3rd);
}

TEST(ConnSection, UnreadableFileLeavesEveryKeyAtItsDefault) {
  SECMOLRA_SetProfilePath((MakeTempDir() + "/").c_str());
  IniFile ini;
  EXPECT_FALSE(ini.Load(ConfigFilePath()));
  ConnProfile p;
  ConnSectionInfo info = ReadConnProfile(ini, "K", p);
  EXPECT_EQ(info.system_type, 4);
  EXPECT_TRUE(p.use3rd);
}
