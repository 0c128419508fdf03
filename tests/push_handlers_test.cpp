// The three push handlers: which function numbers and lengths they take, the type they
// choose, what reaches the message callback and the log, and what is dropped.
#include <gtest/gtest.h>

#include <cstring>
#include <regex>
#include <string>

#include "api/kit_state.h"
#include "config/ini_file.h"
#include "push/push_handlers.h"
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

void UseCodes(const char* confirm, const char* report) {
  std::string dir = MakeTempDir();
  WriteFile(dir + "/molra.ini", std::string("[GLOBAL]\nConfirmMsgFunc=") + confirm +
                                    "\nReportMsgFunc=" + report + "\n");
  molra::Kit().SetProfilePath(dir + "/");
  molra::CommInit();
}

bool IsStamp(const std::string& s) { return std::regex_match(s, std::regex("[0-9]{6}\\.[0-9]{3}")); }

TEST(PushStruct, DefaultCodesCountAsZeroAndTake415BytesAsAConfirmation) {
  ScratchLog log;
  HostCallbacks host;
  std::string rec = MakeRecord(415, "O", 0);
  molra::ScStructMsgProc(nullptr, 0, 415, rec.data());
  auto got = host.Messages();
  ASSERT_EQ(got.size(), 1u);
  EXPECT_EQ(got[0].type, 8);
  EXPECT_EQ(got[0].json, molra::DecodePush(rec.data(), true, 8));
  EXPECT_TRUE(IsStamp(got[0].time)) << got[0].time;
  EXPECT_NE(log.Text().find("ScStructMsgProc push message " + got[0].json), std::string::npos);
}

TEST(PushStruct, ShortOrMissingDataIsLoggedAsUnknownAndDropped) {
  ScratchLog log;
  HostCallbacks host;
  std::string rec = MakeRecord(415, "O", 0);
  molra::ScStructMsgProc(nullptr, 0, 414, rec.data());
  molra::ScStructMsgProc(nullptr, 0, 415, nullptr);
  EXPECT_TRUE(host.Messages().empty());
  for (const char* len : {"414", "415"}) {
    // Written at info level: warning is for a failed rebind only.
    EXPECT_NE(log.Text().find(std::string("[info] ScStructMsgProc received unknow message. func:0 datalen:") + len),
              std::string::npos) << len;
  }
}

TEST(PushStruct, FunctionNumbersAreTheLeadingDigitsOfTheConfiguredCodes) {
  UseCodes("620001", "620002xyz");
  ScratchLog log;
  HostCallbacks host;
  std::string rec = MakeRecord(500, "W", 3);  // longer records are taken too
  molra::ScStructMsgProc(nullptr, 620001, 500, rec.data());
  molra::ScStructMsgProc(nullptr, 620002, 500, rec.data());
  molra::ScStructMsgProc(nullptr, 0, 500, rec.data());  // no longer either code
  auto got = host.Messages();
  ASSERT_EQ(got.size(), 2u);
  EXPECT_EQ(got[0].type, 9);   // confirmation of a withdrawal
  EXPECT_EQ(got[1].type, 10);  // match report, whatever its CXBZ
  EXPECT_EQ(got[1].json, molra::DecodePush(rec.data(), true, 10));
  EXPECT_NE(log.Text().find("ScStructMsgProc received unknow message. func:0 datalen:500"),
            std::string::npos);
  UseCodes("DM0003", "DM0004");
}

TEST(PushStruct, NoCallbackMeansNothingLoggedOrBuilt) {
  ScratchLog log;
  HostCallbacks host(false, true);
  std::string rec = MakeRecord(415, "O", 0);
  molra::ScStructMsgProc(nullptr, 0, 415, rec.data());
  EXPECT_TRUE(host.Messages().empty());
  EXPECT_TRUE(host.Functions().empty());
  EXPECT_EQ(log.Text().find("push message"), std::string::npos);
}

TEST(PushSubscription, ConfirmationIsTheSessionBodyReadAsA402ByteRecord) {
  FakeKel kel;
  ScratchLog log;
  HostCallbacks host;
  FakeSession s;
  s.body = MakeRecord(402, "", 9);
  auto h = kel.Add(s);
  EXPECT_TRUE(molra::ScOrderMsgProcess(nullptr, h));
  auto got = host.Messages();
  ASSERT_EQ(got.size(), 1u);
  EXPECT_EQ(got[0].type, 11);
  EXPECT_EQ(got[0].json, molra::DecodePush(s.body.data(), false, 11));
  EXPECT_NE(got[0].json.find("\"KHH\":\"1001\""), std::string::npos);
  EXPECT_NE(log.Text().find("ScOrderMsgProcess push message " + got[0].json), std::string::npos);
  EXPECT_EQ(kel.Releases(h), 0);  // the transport's session, not the handler's
  s.body = MakeRecord(402, "O", 0) + std::string(13, 'X');  // a longer body: its first 402 bytes
  EXPECT_TRUE(molra::ScOrderMsgProcess(nullptr, kel.Add(s)));
  got = host.Messages();
  ASSERT_EQ(got.size(), 2u);
  EXPECT_EQ(got[1].json, molra::DecodePush(s.body.data(), false, 8));
}

TEST(PushSubscription, MatchReportIsType10WhateverItsFlags) {
  FakeKel kel;
  HostCallbacks host;
  FakeSession s;
  s.body = MakeRecord(402, "W", 3);
  EXPECT_TRUE(molra::ScReportMsgProcess(nullptr, kel.Add(s)));
  auto got = host.Messages();
  ASSERT_EQ(got.size(), 1u);
  EXPECT_EQ(got[0].type, 10);
  EXPECT_EQ(got[0].json.rfind("{\"TYPE\":10,\"SYS_TYPE\":4,\"KHH\":\"1001\",", 0), 0u);
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
  std::string text = log.Text();
  EXPECT_NE(text.find("[info] ScOrderMsgProcess received incorrect length message"), std::string::npos);
  EXPECT_NE(text.find("[info] ScReportMsgProcess received incorrect length message"), std::string::npos);
}

TEST(PushSubscription, TheRecordIsFetchedAsFieldZeroOfTheSession) {
  FakeKel kel;
  HostCallbacks host;
  FakeSession s;
  s.items[1] = MakeRecord(402, "O", 0);  // another field holds a record: not the push
  EXPECT_FALSE(molra::ScOrderMsgProcess(nullptr, kel.Add(s)));
  EXPECT_EQ(kel.Calls(), std::vector<std::string>{"GetItemBuf"});
}

TEST(PushSubscription, NoCallbackDropsAcceptedPushesSilently) {
  FakeKel kel;
  ScratchLog log;
  HostCallbacks host(false, false);
  FakeSession s;
  s.body = MakeRecord(402, "O", 0);
  EXPECT_TRUE(molra::ScOrderMsgProcess(nullptr, kel.Add(s)));
  EXPECT_TRUE(host.Messages().empty());
  EXPECT_EQ(log.Text().find("push message"), std::string::npos);
}

}  // namespace
