// Decoding of pushed confirmation (402-byte) and structured (415-byte) records into the
// message callback's JSON text. Records are filled here at the back end's offsets, and the
// expected texts are written out in full.
#include <gtest/gtest.h>
#include <rapidjson/document.h>

#include <cstring>
#include <limits>
#include <string>

#include "push/push_handlers.h"
#include "support/byte_block.h"

namespace {

using molra::ConfirmType;
using molra::DecodePush;

using Record = molra::test::ByteBlock;

const std::string kGbkAccepted = "\xce\xaf\xcd\xd0\xb3\xc9\xb9\xa6";  // "委托成功" in GBK

// The fields that both layouts share, at the confirmation record's offsets plus `shift`.
void FillShared(Record& r, int shift) {
  r.Text(0 + shift, "1001")
      .Text(13 + shift, "100100001")
      .Num<std::int64_t>(44 + shift, 123456789012)
      .Text(52 + shift, "0001")
      .Text(57 + shift, "SH")
      .Text(60 + shift, "A123456789")
      .Text(71 + shift, "A123456789")
      .Text(82 + shift, "600000")
      .Text(91 + shift, "A0")
      .Text(100 + shift, "SH1")
      .Text(107 + shift, "B")
      .Text(110 + shift, "O")
      .Text(143 + shift, "09:31:05")
      .Text(156 + shift, "RMB")
      .Num<double>(160 + shift, 12.5)
      .Num<std::int64_t>(168 + shift, 1000)
      .Num<double>(184 + shift, 12512.75)
      .Num<double>(232 + shift, -3.25)
      .Num<std::uint8_t>(240 + shift, 200)
      .Num<std::int32_t>(241 + shift, -1)
      .Num<std::int32_t>(245 + shift, 2)
      .Text(249 + shift, kGbkAccepted)
      .Num<std::int64_t>(318 + shift, 987654321)
      .Text(326 + shift, "OP1")
      .Text(335 + shift, "ES")
      .Text(364 + shift, "931050000000042")
      .Text(381 + shift, "M1")
      .Text(389 + shift, "093105123");
}

const std::string kSharedHead =
    "\"KHH\":\"1001\",\"ZJZH\":\"100100001\",\"WTH\":123456789012,\"YYB\":\"0001\",\"JYS\":\"SH\","
    "\"GDH\":\"A123456789\",\"BPGDH\":\"A123456789\",\"ZQDM\":\"600000\",\"ZQLB\":\"A0\","
    "\"JYDY\":\"SH1\",\"YWLB\":\"B\",\"CXBZ\":\"O\",\"CJBH\":\"\",\"CJSJ\":\"09:31:05\","
    "\"BZ\":\"RMB\",\"WTJG\":12.5,\"WTSL\":1000,\"CDSL\":0,\"DJZJ\":12512.75,\"CJSL\":0,"
    "\"CJJG\":0.0,\"CJJE\":0.0,\"ZCJSL\":0,\"ZCJJE\":0.0,\"QSZJ\":-3.25,\"JYLB\":200,"
    "\"DDLX\":-1,\"SBJG\":2,\"JGSM\":\"" +
    kGbkAccepted + "\",\"CXWTH\":0,\"LSH\":987654321,\"WTGY\":\"OP1\",\"QRSJ\":\"093105123\",";

TEST(PushDecode, ConfirmationRecordGivesEveryMemberInOrder) {
  Record r(402);
  FillShared(r, 0);
  r.Text(346, "ABCDEFGHIJKLMNOPQR");  // the full 18 bytes, no NUL before the next field
  EXPECT_EQ(DecodePush(r.data(), false, 8),
            "{\"TYPE\":8,\"SYS_TYPE\":4," + kSharedHead +
                "\"KFSBDBH\":\"931050000000042\",\"JYSCPFL\":\"ES\","
                "\"JYSCPXH\":\"ABCDEFGHIJKLMNOPQR\",\"MSGCODE\":\"M1\",\"PARSE_COST\":0}");
}

TEST(PushDecode, StructuredRecordSkipsItsHeadAndSplitsTheProductSerial) {
  Record r(415);
  r.Text(0, std::string(13, '\xff'));  // not read
  FillShared(r, 13);
  r.Text(359, "ABCDEFGHIJK").Text(370, "KFS1234");  // both full, no NUL
  EXPECT_EQ(DecodePush(r.data(), true, 10),
            "{\"TYPE\":10,\"SYS_TYPE\":4," + kSharedHead +
                "\"KFSDM\":\"KFS1234\",\"KFSBDBH\":\"931050000000042\",\"JYSCPFL\":\"ES\","
                "\"JYSCPXH\":\"ABCDEFGHIJK\",\"MSGCODE\":\"M1\",\"PARSE_COST\":0}");
}

TEST(PushDecode, EmptyRecordGivesEmptyTextsAndZeros) {
  Record r(402);
  EXPECT_EQ(
      DecodePush(r.data(), false, 8),
      "{\"TYPE\":8,\"SYS_TYPE\":4,\"KHH\":\"\",\"ZJZH\":\"\",\"WTH\":0,\"YYB\":\"\",\"JYS\":\"\","
      "\"GDH\":\"\",\"BPGDH\":\"\",\"ZQDM\":\"\",\"ZQLB\":\"\",\"JYDY\":\"\",\"YWLB\":\"\","
      "\"CXBZ\":\"\",\"CJBH\":\"\",\"CJSJ\":\"\",\"BZ\":\"\",\"WTJG\":0.0,\"WTSL\":0,\"CDSL\":0,"
      "\"DJZJ\":0.0,\"CJSL\":0,\"CJJG\":0.0,\"CJJE\":0.0,\"ZCJSL\":0,\"ZCJJE\":0.0,"
      "\"QSZJ\":0.0,\"JYLB\":0,\"DDLX\":0,\"SBJG\":0,\"JGSM\":\"\",\"CXWTH\":0,\"LSH\":0,"
      "\"WTGY\":\"\",\"QRSJ\":\"\",\"KFSBDBH\":\"\",\"JYSCPFL\":\"\",\"JYSCPXH\":\"\","
      "\"MSGCODE\":\"\",\"PARSE_COST\":0}");
}

TEST(PushDecode, NegativeNumbersAndTheUnsignedCategory) {
  Record r(415);
  r.Num<std::int32_t>(254, std::numeric_limits<std::int32_t>::min())
      .Num<std::int32_t>(258, -9)
      .Num<std::uint8_t>(253, 255)
      .Num<std::int64_t>(323, -5)
      .Num<std::int64_t>(57, std::numeric_limits<std::int64_t>::max());
  rapidjson::Document d;
  std::string json = DecodePush(r.data(), true, 11);
  d.Parse(json.c_str());
  ASSERT_FALSE(d.HasParseError());
  EXPECT_EQ(d["DDLX"].GetInt(), std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ(d["SBJG"].GetInt(), -9);
  EXPECT_TRUE(d["JYLB"].IsUint());
  EXPECT_EQ(d["JYLB"].GetUint(), 255u);
  EXPECT_EQ(d["CXWTH"].GetInt64(), -5);
  EXPECT_EQ(d["WTH"].GetInt64(), std::numeric_limits<std::int64_t>::max());
  EXPECT_NE(json.find("\"DDLX\":-2147483648,\"SBJG\":-9,"), std::string::npos);
}

TEST(PushDecode, TextBytesPassThroughWithOnlyJsonEscapes) {
  Record r(402);
  // A GBK character whose second byte is a backslash, a quote and a line feed.
  r.Text(249, std::string("\x95\x5c") + "a\"b\nc");
  std::string json = DecodePush(r.data(), false, 8);
  EXPECT_NE(json.find(std::string("\"JGSM\":\"\x95") + "\\\\a\\\"b\\nc\""), std::string::npos)
      << json;
  rapidjson::Document d;
  d.Parse(json.c_str());
  ASSERT_FALSE(d.HasParseError());
  EXPECT_EQ(std::string(d["JGSM"].GetString()), std::string("\x95\x5c") + "a\"b\nc");
}

TEST(PushDecode, TextsStopAtTheirNulAndNeverRunIntoTheNextField) {
  Record r(402);
  r.Text(0, std::string(13, 'K')).Text(13, "Z");  // KHH full, ZJZH right after
  r.Text(110, "WX");                              // CXBZ full (2 bytes)
  r.Text(112, std::string("AB\0CD", 5));          // CJBH: bytes after the NUL are not text
  std::string json = DecodePush(r.data(), false, 8);
  EXPECT_NE(json.find("\"KHH\":\"KKKKKKKKKKKKK\",\"ZJZH\":\"Z\""), std::string::npos) << json;
  EXPECT_NE(json.find("\"CXBZ\":\"WX\",\"CJBH\":\"AB\","), std::string::npos) << json;
}

TEST(PushDecode, NonFiniteNumbersKeepTheTextValid) {
  Record r(402);
  r.Num<double>(160, std::numeric_limits<double>::quiet_NaN())
      .Num<double>(184, std::numeric_limits<double>::infinity());
  std::string json = DecodePush(r.data(), false, 8);
  rapidjson::Document d;
  d.Parse(json.c_str());
  ASSERT_FALSE(d.HasParseError()) << json;
  EXPECT_TRUE(d["WTJG"].IsNull());
  EXPECT_TRUE(d["DJZJ"].IsNull());
  EXPECT_EQ(d["PARSE_COST"].GetInt(), 0);
}

TEST(PushDecode, ConfirmTypeOfBothLayouts) {
  for (int shift : {0, 13}) {
    const bool structured = shift != 0;
    auto type = [&](const char* cxbz, std::int32_t sbjg) {
      Record r(structured ? 415 : 402);
      r.Text(110 + shift, cxbz).Num<std::int32_t>(245 + shift, sbjg);
      return ConfirmType(r.data(), structured);
    };
    EXPECT_EQ(type("W", 3), 9) << shift;  // a withdrawal wins over a refusal
    EXPECT_EQ(type("W", 0), 9) << shift;
    EXPECT_EQ(type("", 3), 11) << shift;
    EXPECT_EQ(type("O", 9), 11) << shift;
    EXPECT_EQ(type("O", 2), 8) << shift;
    EXPECT_EQ(type("O", -3), 8) << shift;
    EXPECT_EQ(type("WX", 0), 8) << shift;  // only "W" itself marks a withdrawal
    EXPECT_EQ(type("w", 0), 8) << shift;
  }
}

}  // namespace
