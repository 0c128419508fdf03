// Reading connection sections into profiles.
#include "config/conn_profile.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "secmolra.h"
#include "support/test_support.h"

using namespace molra::test;

namespace {

// molra.ini with `text` in a fresh profile path.
void UseIni(const std::string& text) {
  const std::string dir = MakeTempDir() + "/";
  WriteFile(dir + "molra.ini", text);
  SECMOLRA_SetProfilePath(dir.c_str());
}

molra::ConnProfile Read(const char* section, molra::ConnSectionInfo* info = nullptr) {
  molra::ConnProfile p;
  std::memset(&p, 0x5A, sizeof p);  // filler must not survive: the profile is zeroed first
  molra::ConnSectionInfo i = molra::ReadConnSection(section, p);
  if (info) *info = i;
  return p;
}

std::string Field(const char* f, std::size_t n) { return std::string(f, strnlen(f, n)); }
#define FIELD(p, m) Field((p).m, sizeof((p).m))

}  // namespace

TEST(ConnProfile, SectionWithOnlyAddrTakesEveryDefault) {
  UseIni("[K]\naddr=1.2.3.4:1\n");
  molra::ConnSectionInfo info;
  molra::ConnProfile p = Read("K", &info);
  for (auto s :
       {FIELD(p, addr), FIELD(p, trade_addr), FIELD(p, subscribe_addr), FIELD(p, query_addr)}) {
    EXPECT_EQ(s, "1.2.3.4:1");
  }
  EXPECT_TRUE(p.trade_addr_defaulted);
  EXPECT_TRUE(p.use3rd);
  EXPECT_FALSE(p.use_traders);
  EXPECT_FALSE(p.cancel_resub);
  for (auto s :
       {FIELD(p, name), FIELD(p, auth_name), FIELD(p, auth_pwd), FIELD(p, app_name), FIELD(p, wtgy),
        FIELD(p, backup), FIELD(p, exchange), FIELD(p, cert_file), FIELD(p, cert_pwd)}) {
    EXPECT_EQ(s, "");
  }
  EXPECT_EQ(info.system_type, 4);
  EXPECT_FALSE(info.connect_with_ua);
}

TEST(ConnProfile, SubscribeAndQueryDefaultToTheTradeAddressNotTheManagementOne) {
  UseIni("[K]\naddr=m:1\ntradeaddr=t:2\nqueryaddr=q:3\n[T]\naddr=m:1\ntradeaddr=t:2\n");
  molra::ConnProfile p = Read("K");
  EXPECT_FALSE(p.trade_addr_defaulted);
  EXPECT_EQ(FIELD(p, trade_addr), "t:2");
  EXPECT_EQ(FIELD(p, subscribe_addr), "t:2");
  EXPECT_EQ(FIELD(p, query_addr), "q:3");
  p = Read("T");
  EXPECT_FALSE(p.trade_addr_defaulted);
  EXPECT_EQ(FIELD(p, subscribe_addr), "t:2");
  EXPECT_EQ(FIELD(p, query_addr), "t:2");
}

TEST(ConnProfile, EveryKeyLandsInItsField) {
  UseIni(
      "[k]\nname=N\nauthname=U\nAUTHPWD=P\naddr=a\nsubscribeaddr=s\nAppName=APP\n"
      "wtgy=G\nbackup=B\nCertFile=c.pem\nCertPwd=cp\nexchange=SH\nSystemType=0x1A\n");
  molra::ConnSectionInfo info;
  molra::ConnProfile p = Read("K", &info);  // sections and keys ignore case
  const std::pair<std::string, const char*> fields[] = {
      {FIELD(p, name), "N"},           {FIELD(p, auth_name), "U"},  {FIELD(p, auth_pwd), "P"},
      {FIELD(p, subscribe_addr), "s"}, {FIELD(p, query_addr), "a"}, {FIELD(p, app_name), "APP"},
      {FIELD(p, wtgy), "G"},           {FIELD(p, backup), "B"},     {FIELD(p, cert_file), "c.pem"},
      {FIELD(p, cert_pwd), "cp"},      {FIELD(p, exchange), "SH"}};
  for (const auto& [got, want] : fields) EXPECT_EQ(got, want) << "field expected " << want;
  EXPECT_EQ(info.system_type, 26);
}

TEST(ConnProfile, ValuesAreCutToTheFieldWidthWithoutTerminator) {
  std::string name33(33, 'n'), backup25(25, 'b');
  UseIni("[K]\nName=" + name33 + "\nAuthname=U\nbackup=" + backup25 + "\nexchange=SHAX\n");
  molra::ConnProfile p = Read("K");
  EXPECT_EQ(std::string(p.name, 33), name33);  // full: no NUL inside the field
  EXPECT_EQ(std::string(p.backup, 20), std::string(20, 'b'));
  EXPECT_EQ(std::string(p.exchange, 3), "SHA");
  EXPECT_EQ(p.use3rd, true);  // the field after exchange is untouched by the cut
}

TEST(ConnProfile, BooleansFollowTheIniRulesWithTheirOwnDefaults) {
  UseIni(
      "[A]\nuse3rd=off\nusetraders=1\ncancelkelresub=Yes\n"
      "[B]\nuse3rd=of\nusetraders=x\ncancelkelresub=on\n"
      "[C]\nuse3rd=x\nusetraders=ON\ncancelkelresub=0\n");
  // Unrecognised values take the default: true for use3rd (C), false for usetraders (B).
  struct Row {
    const char* section;
    bool use3rd, use_traders, cancel_resub;
  };
  for (const Row& r :
       {Row{"A", false, true, true}, Row{"B", false, false, true}, Row{"C", true, true, false}}) {
    molra::ConnProfile p = Read(r.section);
    EXPECT_EQ(p.use3rd, r.use3rd) << r.section;
    EXPECT_EQ(p.use_traders, r.use_traders) << r.section;
    EXPECT_EQ(p.cancel_resub, r.cancel_resub) << r.section;
  }
}

TEST(ConnProfile, ConnWithUaIsOnlyTheWordTrue) {
  UseIni(
      "[T1]\nConnWithUA=TRUE\n[T2]\nConnWithUA=true\n[F1]\nConnWithUA=yes\n[F2]\nConnWithUA=1\n"
      "[F3]\nConnWithUA=on\n[F4]\nConnWithUA=truee\n[F5]\nConnWithUA=\n");
  for (const char* s : {"T1", "T2", "F1", "F2", "F3", "F4", "F5", "missing"}) {
    molra::ConnSectionInfo info;
    Read(s, &info);
    EXPECT_EQ(info.connect_with_ua, s[0] == 'T') << s;
  }
}

TEST(ConnProfile, SystemTypeBadNumbersGiveFour) {
  UseIni("[A]\nSystemType=0x\n[B]\nSystemType=12abc\n[C]\nSystemType=7\n");
  for (auto [section, type] : {std::pair{"A", 4}, std::pair{"B", 4}, std::pair{"C", 7}}) {
    molra::ConnSectionInfo info;
    Read(section, &info);
    EXPECT_EQ(info.system_type, type) << section;
  }
}

TEST(ConnProfile, MissingFileGivesDefaults) {
  SECMOLRA_SetProfilePath((MakeTempDir() + "/").c_str());
  molra::ConnSectionInfo info;
  molra::ConnProfile p = Read("K", &info);
  EXPECT_EQ(FIELD(p, addr), "");
  EXPECT_TRUE(p.use3rd);
  EXPECT_TRUE(p.trade_addr_defaulted);
  EXPECT_EQ(info.system_type, 4);
}
