// The push handlers on their own: which pushes the structured handler takes for which
// configured codes, and what both kinds of handler do with a record too short or no
// callback. Pushes through the simulated transport: login_subscribe_test, trade_roundtrip_test.
#include "push/push_handlers.h"

#include <gtest/gtest.h>

#include <cstring>
#include <regex>
#include <string>

#include "config/ini_file.h"
#include "core/context.h"
#include "support/fake_kel.h"
#include "support/host_callbacks.h"
#include "support/test_support.h"

using namespace molra::test;

namespace {

// A record of the layout's length with the fields that choose the type and a customer.
std::string MakeRecord(std::size_t len, const char* cxbz, std::int32_t sbjg) {
  const int shift = len >= 415 ? 13 : 0;
  std::string r(len, '\0');
  std::memcpy(&r[shift], "1001", 4);
  std::memcpy(&r[110 + shift], cxbz, std::strlen(cxbz));
  std::memcpy(&r[245 + shift], &sbjg, 4);
  return r;
}

// The push settings of GLOBAL with these codes.
molra::PushSettings Codes(const char* confirm, const char* report) {
  std::string dir = MakeTempDir();
  WriteFile(dir + "/molra.ini", std::string("[GLOBAL]\nConfirmMsgFunc=") + confirm +
                                    "\nReportMsgFunc=" + report + "\n");
  molra::Host().SetProfilePath(dir + "/");
  return molra::CommInit();
}

}  // namespace

// A configured code counts by its leading digits ("DM0003" is 0, "620002xyz" is 620002); the
// confirmation code is tried first; a record shorter than 415 bytes, a missing record or an
// unknown function is logged and dropped.
TEST(PushStruct, TheConfiguredCodesChooseTheKindOfA415ByteRecord) {
  const struct {
    const char *confirm, *report;
    int func, len;
    bool data;
    int type;  // 0: dropped as unknown
  } cases[] = {
      {"DM0003", "DM0004", 0, 415, true, 8},          {"DM0003", "DM0004", 0, 414, true, 0},
      {"DM0003", "DM0004", 0, 415, false, 0},         {"620001", "620002xyz", 620001, 500, true, 8},
      {"620001", "620002xyz", 620002, 500, true, 10}, {"620001", "620002xyz", 0, 500, true, 0}};
  const std::string rec = MakeRecord(500, "O", 0);
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.confirm) + " func " + std::to_string(c.func));
    ScratchLog log;
    HostCallbacks host;
    molra::PushSettings push = Codes(c.confirm, c.report);
    molra::ScStructMsgProc(&push, c.func, c.len, c.data ? rec.data() : nullptr);
    const auto got = host.Messages();
    if (c.type == 0) {
      EXPECT_TRUE(got.empty());
      EXPECT_NE(log.Text().find("[info] ScStructMsgProc received unknow message. func:" +
                                std::to_string(c.func) + " datalen:" + std::to_string(c.len)),
                std::string::npos);
      continue;
    }
    ASSERT_EQ(got.size(), 1u);
    EXPECT_EQ(got[0].type, c.type);
    EXPECT_EQ(got[0].json, molra::DecodePush(rec.data(), true, c.type));
    EXPECT_TRUE(std::regex_match(got[0].time, std::regex("[0-9]{6}\\.[0-9]{3}")));
    EXPECT_NE(log.Text().find("ScStructMsgProc push message " + got[0].json), std::string::npos);
  }
}

TEST(PushSubscription, ShortBodyIsRefusedAndLoggedWithTheHandlersName) {
  FakeKel kel;
  ScratchLog log;
  HostCallbacks host;
  FakeSession s;
  s.body = MakeRecord(401, "O", 0);
  EXPECT_FALSE(molra::ScOrderMsgProcess(nullptr, kel.Add(s)));
  EXPECT_FALSE(molra::ScReportMsgProcess(nullptr, kel.Add(FakeSession{})));  // no body at all
  EXPECT_TRUE(host.Messages().empty());
  const std::string text = log.Text();
  for (const char* name : {"ScOrderMsgProcess", "ScReportMsgProcess"}) {
    EXPECT_NE(text.find(std::string("[info] ") + name + " received incorrect length message"),
              std::string::npos);
  }
  EXPECT_EQ(kel.TotalReleases(), 0);  // the transport's sessions, not the handler's
}

TEST(PushHandlers, WithoutAMessageCallbackNothingIsBuiltOrLogged) {
  FakeKel kel;
  ScratchLog log;
  HostCallbacks host(false, true);
  molra::PushSettings push;
  const std::string rec = MakeRecord(415, "O", 0);
  molra::ScStructMsgProc(&push, 0, 415, rec.data());
  FakeSession s;
  s.body = MakeRecord(402, "O", 0);
  EXPECT_TRUE(molra::ScOrderMsgProcess(nullptr, kel.Add(s)));
  EXPECT_TRUE(host.Functions().empty());
  EXPECT_EQ(log.Text().find("push message"), std::string::npos);
}
