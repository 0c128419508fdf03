// Replies to asynchronous requests: answers served by the in-process fake transport, the
// texts that reach the function callback, the refusals with their last error, and the
// release of the session on every path.
#include <gtest/gtest.h>
#include <rapidjson/document.h>

#include <algorithm>
#include <iterator>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include "support/byte_block.h"
#include "support/fake_kel.h"
#include "support/host_callbacks.h"
#include "support/reply_handlers.h"
#include "support/test_support.h"
#include "trade/replies.h"

using namespace molra::test;

namespace {

using Handler = bool (*)(kel::int64);

const std::string kGbkOk = "\xce\xaf\xcd\xd0\xb3\xc9\xb9\xa6";  // "委托成功"
const std::string kShort1 = Gbk("应答数据包不正确1");
const std::string kShort = Gbk("应答数据包不正确");

ByteBlock Request(std::size_t len = 137) {
  ByteBlock r(len);
  r.Num<std::int16_t>(0, 19001).Text(13, "1001");
  return r;
}

// A structured answer: return code at 11, note at 302, entrust time at 451.
ByteBlock Answer(std::size_t len, std::int16_t code, const std::string& note = "ok") {
  ByteBlock a(len);
  a.Num<std::int16_t>(11, code).Text(302, note);
  if (len >= 464) a.Text(451, "09:31:05.123");
  return a;
}

FakeSession Structured(const ByteBlock& answer, std::int64_t tag = 77) {
  FakeSession s;
  s.is_struct = true;
  s.answer = answer;
  s.request = Request().str();
  s.data = tag;
  return s;
}

std::string Head(int jylx, std::int64_t tag = 77) {
  return "{\"TYPE\":14,\"SYS_TYPE\":4,\"JYLX\":" + std::to_string(jylx) +
         ",\"KFSBDBH\":" + std::to_string(tag) + ",\"KHH\":\"1001\",";
}

// Runs the handler on one prepared session; checks the one release and the type 14.
struct Outcome {
  bool result;
  std::vector<Delivery> replies;
};
Outcome Handle(Handler h, const FakeSession& s) {
  FakeKel kel;
  HostCallbacks host;
  auto id = kel.Add(s);
  Outcome o{h(id), host.Functions()};
  EXPECT_EQ(kel.Releases(id), 1);
  EXPECT_EQ(kel.TotalReleases(), 1);
  EXPECT_TRUE(host.Messages().empty());
  for (const auto& d : o.replies) EXPECT_EQ(d.type, 14);
  return o;
}
std::string OnlyText(const Outcome& o) {
  EXPECT_TRUE(o.result);
  EXPECT_EQ(o.replies.size(), 1u);
  return o.replies.empty() ? std::string() : o.replies[0].json;
}
void ExpectRefused(const Outcome& o, const std::string& msg) {
  EXPECT_FALSE(o.result);
  EXPECT_TRUE(o.replies.empty());
  std::string got;
  EXPECT_EQ(LastError(&got), -205);
  EXPECT_EQ(got, msg);
}

TEST(ReplyOrder, AcceptedAnswerGivesTheSuccessMembersInOrder) {
  ScratchLog log;
  ByteBlock a = Answer(472, 1, kGbkOk);
  a.Num<std::int64_t>(443, 8589934590).Num<double>(464, 1250.5);
  Outcome o = Handle(molra::Sc_Order_AsyncFuncProcess, Structured(a, 931050000000042));
  const std::string text = OnlyText(o);
  EXPECT_EQ(text, Head(30, 931050000000042) +
                      "\"WTH\":8589934590,\"WTSJ\":\"09:31:05.123\",\"DJZJ\":1250.5,"
                      "\"RETCODE\":1,\"RETNOTE\":\"" +
                      kGbkOk + "\",\"PARSE_COST\":0}");
  EXPECT_TRUE(std::regex_match(o.replies[0].time, std::regex("[0-9]{6}\\.[0-9]{3}")));
  EXPECT_NE(log.Text().find("Sc_Order_AsyncFuncProcess push orderNo " + text), std::string::npos);
}

// Shorter than the common head, no answer block, no request block: variant 1, logged.
TEST(ReplyOrder, AnswerOrRequestMissingOrShortOfTheHeadIsRefusedWithVariant1) {
  FakeSession no_answer = Structured(Answer(472, 1)), no_request = no_answer;
  no_answer.answer.clear();
  no_request.request.reset();
  const std::pair<const char*, FakeSession> cases[] = {{"429 bytes", Structured(Answer(429, 1))},
                                                       {"no answer", no_answer},
                                                       {"no request", no_request}};
  for (const auto& [what, s] : cases) {
    SCOPED_TRACE(what);
    ScratchLog log;
    ExpectRefused(Handle(molra::Sc_Order_AsyncFuncProcess, s), kShort1);
    EXPECT_NE(log.Text().find(Gbk("Sc_Order_AsyncFuncProcess：") + kShort1), std::string::npos);
  }
}

TEST(ReplyOrder, CustomerNumberIsBoundedByItsFieldInTheRequest) {
  FakeSession s = Structured(Answer(430, -1, "x"));
  s.request = Request().Text(13, "1234567890123").Text(26, "XYZ").str();  // 13 bytes, no NUL
  EXPECT_NE(
      OnlyText(Handle(molra::Sc_Order_AsyncFuncProcess, s)).find("\"KHH\":\"1234567890123\","),
      std::string::npos);
}

TEST(ReplyOrder, ARequestTooShortForItsCustomerNumberGivesAnEmptyOne) {
  FakeSession s = Structured(Answer(430, -1, "x"));
  s.request = std::string(20, '7');  // ends inside the customer number
  EXPECT_NE(OnlyText(Handle(molra::Sc_Order_AsyncFuncProcess, s)).find("\"KHH\":\"7777777\","),
            std::string::npos);
  s.request = std::string(5, '7');
  EXPECT_NE(OnlyText(Handle(molra::Sc_Order_AsyncFuncProcess, s)).find("\"KHH\":\"\","),
            std::string::npos);
}

TEST(ReplyOrder, NotesAndTimesAreBoundedByTheirFields) {
  ByteBlock a = Answer(472, 1, std::string(128, 'N'));
  a.Text(430, "SPILL").Text(451, std::string(13, 'T')).Num<double>(464, 0.0);
  rapidjson::Document d;
  std::string text = OnlyText(Handle(molra::Sc_Order_AsyncFuncProcess, Structured(a)));
  d.Parse(text.c_str());
  ASSERT_FALSE(d.HasParseError());
  EXPECT_EQ(std::string(d["RETNOTE"].GetString()), std::string(128, 'N'));
  EXPECT_EQ(std::string(d["WTSJ"].GetString()), std::string(13, 'T'));
  EXPECT_NE(text.find("\"DJZJ\":0.0,"), std::string::npos);
}

// Every single-order handler with a structured answer: name, business code, minimum length,
// width of the order number and its third value.
struct SingleCase {
  Handler fn;
  const char* name;
  int jylx;
  std::size_t min_len;
  bool wide_wth;
  const char* third;  // "DJZJ" or "SBJG"
  std::size_t third_at;
  int third_kind;            // 0 double, 1 int32, 2 double truncated to an integer
  const char* third_at_min;  // the value written at the minimum length
};
const SingleCase kSingles[] = {
    {molra::Sc_Order_AsyncFuncProcess, "Sc_Order_AsyncFuncProcess", 30, 472, true, "DJZJ", 464, 0,
     "-7.25"},
    {molra::Sc_ETFSG_AsyncFuncProcess, "Sc_ETFSG_AsyncFuncProcess", 31, 472, true, "DJZJ", 464, 0,
     "-7.25"},
    {molra::Sc_ETFSH_AsyncFuncProcess, "Sc_ETFSH_AsyncFuncProcess", 32, 472, true, "DJZJ", 464, 0,
     "-7.25"},
    {molra::Sc_ZQHG_AsyncFuncProcess, "Sc_ZQHG_AsyncFuncProcess", 33, 472, false, "DJZJ", 464, 0,
     "-7.25"},
    {molra::Sc_ZQCRK_AsyncFuncProcess, "Sc_ZQCRK_AsyncFuncProcess", 34, 472, false, "DJZJ", 464, 0,
     "-7.25"},
    {molra::Sc_LOF_AsyncFuncProcess, "Sc_LOF_AsyncFuncProcess", 35, 475, false, "DJZJ", 467, 0,
     "-7.25"},
    {molra::Sc_PHDJ_AsyncFuncProcess, "Sc_PHDJ_AsyncFuncProcess", 36, 472, true, "DJZJ", 464, 0,
     "-7.25"},
    {molra::Sc_OrderWithDraw_AsyncFuncProcess, "Sc_OrderWithDraw_AsyncFuncProcess", 40, 516, false,
     "SBJG", 467, 1, "-7"},
    {molra::Sc_ETFWithDraw_AsyncFuncProcess, "Sc_ETFWithDraw_AsyncFuncProcess", 42, 517, false,
     "SBJG", 464, 2, "-7"},
    {molra::Sc_ZQHGWithDraw_AsyncFuncProcess, "Sc_ZQHGWithDraw_AsyncFuncProcess", 43, 512, false,
     "SBJG", 512, 1, "0"},
    {molra::Sc_LOFWithDraw_AsyncFuncProcess, "Sc_LOFWithDraw_AsyncFuncProcess", 44, 516, false,
     "SBJG", 467, 1, "-7"},
    {molra::Sc_PHDJWithDraw_AsyncFuncProcess, "Sc_PHDJWithDraw_AsyncFuncProcess", 45, 516, false,
     "SBJG", 467, 1, "-7"},
};

ByteBlock SingleAnswer(const SingleCase& c, std::size_t len) {
  ByteBlock a = Answer(len, 2);
  a.Num<std::int64_t>(443, 8589934590);  // as int32: 0xFFFFFFFE, i.e. -2
  if (c.third_at + 8 > len) return a;    // the third value lies past the record
  if (c.third_kind == 1)
    a.Num<std::int32_t>(c.third_at, -7);
  else if (c.third_kind == 2)
    a.Num<double>(c.third_at, -7.9);
  else
    a.Num<double>(c.third_at, -7.25);
  return a;
}

TEST(ReplySingles, AtTheMinimumLengthEachReportsItsCodeOrderNumberAndThirdValue) {
  for (const SingleCase& c : kSingles) {
    SCOPED_TRACE(c.name);
    std::string wth = c.wide_wth ? "8589934590" : "-2";
    EXPECT_EQ(OnlyText(Handle(c.fn, Structured(SingleAnswer(c, c.min_len)))),
              Head(c.jylx) + "\"WTH\":" + wth + ",\"WTSJ\":\"09:31:05.123\",\"" + c.third +
                  "\":" + c.third_at_min + ",\"RETCODE\":2,\"RETNOTE\":\"ok\",\"PARSE_COST\":0}");
  }
}

TEST(ReplySingles, OneByteShortOfTheMinimumIsRefusedUnderTheHandlersName) {
  for (const SingleCase& c : kSingles) {
    SCOPED_TRACE(c.name);
    ScratchLog log;
    ExpectRefused(Handle(c.fn, Structured(SingleAnswer(c, c.min_len - 1))), kShort);
    EXPECT_NE(log.Text().find(std::string(c.name) + Gbk("：") + kShort + "\r\n"),
              std::string::npos);
  }
}

TEST(ReplySingles, RefusalsNeedOnly430BytesAndLeaveOutTimeAndThirdValue) {
  for (const SingleCase& c : kSingles) {
    SCOPED_TRACE(c.name);
    for (std::int16_t code : {0, -3}) {  // a code below 1 is a refusal
      EXPECT_EQ(OnlyText(Handle(c.fn, Structured(Answer(430, code, "no")))),
                Head(c.jylx) + "\"WTH\":0,\"RETCODE\":" + std::to_string(code) +
                    ",\"RETNOTE\":\"no\",\"PARSE_COST\":0}");
    }
    ExpectRefused(Handle(c.fn, Structured(Answer(429, -3))), kShort1);
  }
}

TEST(ReplySingles, RepurchaseWithdrawalReadsItsResultOnlyWhenTheAnswerHoldsIt) {
  ByteBlock a = Answer(516, 1);
  a.Num<std::int32_t>(443, 61).Num<std::int32_t>(512, 9);
  EXPECT_NE(OnlyText(Handle(molra::Sc_ZQHGWithDraw_AsyncFuncProcess, Structured(a)))
                .find("\"WTH\":61,\"WTSJ\":\"09:31:05.123\",\"SBJG\":9,"),
            std::string::npos);
  ByteBlock b = Answer(515, 1);
  b.Text(512, "\x09\x00\x00");  // three of the four bytes: not read
  EXPECT_NE(
      OnlyText(Handle(molra::Sc_ZQHGWithDraw_AsyncFuncProcess, Structured(b))).find("\"SBJG\":0,"),
      std::string::npos);
}

TEST(ReplySingles, EtfWithdrawalTruncatesItsResultTowardZero) {
  for (double v : {3.99, -3.99}) {
    ByteBlock a = Answer(517, 1);
    a.Num<double>(464, v);
    std::string text = OnlyText(Handle(molra::Sc_ETFWithDraw_AsyncFuncProcess, Structured(a)));
    EXPECT_NE(text.find(v > 0 ? "\"SBJG\":3," : "\"SBJG\":-3,"), std::string::npos) << text;
  }
}

TEST(ReplyUnstructured, ShortFormCarriesTheTransportsCodeAndText) {
  FakeSession s;
  s.request = Request().str();
  s.data = 7;
  s.code = -130;
  s.message = "\xb7\xcf\xb5\xa5";  // "废单"
  EXPECT_EQ(OnlyText(Handle(molra::Sc_OrderWithDraw_AsyncFuncProcess, s)),
            Head(40, 7) +
                "\"WTH\":0,\"RETCODE\":-130,\"RETNOTE\":\"\xb7\xcf\xb5\xa5\",\"PARSE_COST\":0}");
}

TEST(ReplyUnstructured, WithoutTheRequestNothingIsDelivered) {
  FakeSession s;
  s.code = -1;
  ScratchLog log;
  ExpectRefused(Handle(molra::Sc_LOF_AsyncFuncProcess, s), kShort1);
  EXPECT_NE(log.Text().find(Gbk("Sc_LOF_AsyncFuncProcess：") + kShort1), std::string::npos);
}

// The issuance and non-trading replies read answer fields, not a structured record.
FakeSession KeyValue(std::int32_t code) {
  FakeSession s;
  s.data = 88;
  s.code = code;
  s.message = code >= 0 ? "ok" : "no";
  s.items = {{605, "1001"}, {681, "778"}, {764, "99.5"}, {753, "-2"}, {9201, "10:00:00"}};
  s.is_struct = true;  // even so: these businesses answer with fields
  s.answer = Answer(472, 1).str();
  return s;
}

TEST(ReplyKeyValue, IssuanceAndNonTradingTakeOrderNumberAndFundsFromFields) {
  const struct {
    Handler fn;
    int jylx;
  } cases[] = {{molra::Sc_FXYW_AsyncFuncProcess, 37}, {molra::Sc_FJY_AsyncFuncProcess, 38}};
  for (const auto& c : cases) {
    EXPECT_EQ(OnlyText(Handle(c.fn, KeyValue(0))),
              Head(c.jylx, 88) +
                  "\"WTH\":778,\"WTSJ\":\"10:00:00\",\"DJZJ\":99.5,\"RETCODE\":0,"
                  "\"RETNOTE\":\"ok\",\"PARSE_COST\":0}");
  }
}

TEST(ReplyKeyValue, WithdrawalReportsItsDeclarationResultFromField753) {
  EXPECT_EQ(OnlyText(Handle(molra::Sc_FXYWWithDraw_AsyncFuncProcess, KeyValue(1))),
            Head(46, 88) +
                "\"WTH\":778,\"WTSJ\":\"10:00:00\",\"SBJG\":-2,\"RETCODE\":1,"
                "\"RETNOTE\":\"ok\",\"PARSE_COST\":0}");
}

TEST(ReplyKeyValue, NegativeCodeIsARefusal) {
  EXPECT_EQ(OnlyText(Handle(molra::Sc_FXYW_AsyncFuncProcess, KeyValue(-55))),
            Head(37, 88) + "\"WTH\":0,\"RETCODE\":-55,\"RETNOTE\":\"no\",\"PARSE_COST\":0}");
}

// Batch entrust: three packed rows in the request, their answers, and a fourth answer slot
// that belongs to no row.
FakeSession Batch(std::size_t answer_len, std::int16_t code) {
  ByteBlock req = Request(3174);
  req.Num<std::int64_t>(30, 55)
      .Text(64, "SH600000100012.340000001000000")
      .Text(94, "SZ000001200001.000000000100001")
      .Text(124, "SH600001100099.990000000300002");
  ByteBlock a = Answer(answer_len, code);
  if (answer_len >= 7663) {
    a.Num<std::int32_t>(443, 2).Num<double>(447, 2468.5);
    a.Num<std::int64_t>(455, 9001).Num<std::int64_t>(463, 0).Num<std::int64_t>(471, 9003);
    a.Num<std::int64_t>(479, 9999).Text(1263 + 64 * 3, "not a row");
    a.Text(1263, "ok1").Text(1263 + 64, kGbkOk).Text(1263 + 128, "ok3");
  }
  FakeSession s;
  s.is_struct = true;
  s.answer = a;
  s.request = req.str();
  s.data = 55;  // the batch number
  return s;
}

const char kBatchHead[] =
    "{\"TYPE\":14,\"SYS_TYPE\":4,\"JYLX\":30,\"WTPCH\":55,\"KFSBDBH\":0,\"KHH\":\"1001\",";

TEST(ReplyBatch, AcceptedBatchListsOneOrderPerRequestRow) {
  EXPECT_EQ(OnlyText(Handle(molra::Sc_BatchOrder_AsyncFuncProcess, Batch(7663, 1))),
            kBatchHead +
                std::string("\"RETCODE\":1,\"RETNOTE\":\"ok\",\"Success\":2,\"DJZJ\":2468.5,"
                            "\"orders\":{\"1\":{\"WTH\":9001,\"NOTE\":\"ok1\"},"
                            "\"2\":{\"WTH\":0,\"NOTE\":\"") +
                kGbkOk + "\"},\"3\":{\"WTH\":9003,\"NOTE\":\"ok3\"}},\"PARSE_COST\":0}");
}

TEST(ReplyBatch, RefusalHasNoCountFundsOrOrders) {
  EXPECT_EQ(OnlyText(Handle(molra::Sc_BatchOrder_AsyncFuncProcess, Batch(430, -5))),
            kBatchHead + std::string("\"RETCODE\":-5,\"RETNOTE\":\"ok\",\"PARSE_COST\":0}"));
}

TEST(ReplyBatch, AcceptedAnswerShorterThanTheFullBlockIsRefused) {
  ScratchLog log;
  ExpectRefused(Handle(molra::Sc_BatchOrder_AsyncFuncProcess, Batch(7662, 1)), kShort);
  EXPECT_NE(log.Text().find(Gbk("Sc_BatchOrder_AsyncFuncProcess：") + kShort + "\r\n"),
            std::string::npos);
  ExpectRefused(Handle(molra::Sc_BatchOrder_AsyncFuncProcess, Batch(429, -5)), kShort1);
}

TEST(ReplyBatch, AHundredRowsWithFullNotes) {
  ByteBlock req = Request(3174);
  ByteBlock a = Answer(7663, 1);
  for (int i = 0; i < 100; ++i) {
    req.Text(64 + 30 * i, "SH600000100012.340000001000000");
    a.Num<std::int64_t>(455 + 8 * i, 100 + i).Text(1263 + 64 * i, std::string(64, 'a' + i % 26));
  }
  FakeSession s = Batch(7663, 1);
  s.request = req.str();
  s.answer = a.str();
  rapidjson::Document d;
  std::string text = OnlyText(Handle(molra::Sc_BatchOrder_AsyncFuncProcess, s));
  d.Parse(text.c_str());
  ASSERT_FALSE(d.HasParseError());
  ASSERT_EQ(d["orders"].MemberCount(), 100u);
  EXPECT_EQ(d["orders"]["1"]["WTH"].GetInt64(), 100);
  EXPECT_EQ(d["orders"]["100"]["WTH"].GetInt64(), 199);
  EXPECT_EQ(std::string(d["orders"]["100"]["NOTE"].GetString()), std::string(64, 'a' + 99 % 26));
}

TEST(ReplyBatch, UnstructuredFormIsTaggedWithTheBatchNumber) {
  FakeSession s = Batch(7663, 1);
  s.is_struct = false;
  s.code = -9;
  s.message = "down";
  EXPECT_EQ(OnlyText(Handle(molra::Sc_BatchOrder_AsyncFuncProcess, s)),
            kBatchHead + std::string("\"RETCODE\":-9,\"RETNOTE\":\"down\",\"PARSE_COST\":0}"));
}

TEST(ReplyBatchWithdraw, ReportsTimeButNoOrderNumber) {
  ByteBlock a = Answer(6459, 1);
  a.Num<std::int64_t>(443, 12345);
  EXPECT_EQ(OnlyText(Handle(molra::Sc_BatchOrderWithDraw_AsyncFuncProcess, Structured(a, 66))),
            Head(41, 66) +
                "\"WTSJ\":\"09:31:05.123\",\"RETCODE\":1,\"RETNOTE\":\"ok\","
                "\"PARSE_COST\":0}");
  EXPECT_EQ(OnlyText(Handle(molra::Sc_BatchOrderWithDraw_AsyncFuncProcess,
                            Structured(Answer(430, -1, "no"), 66))),
            Head(41, 66) + "\"RETCODE\":-1,\"RETNOTE\":\"no\",\"PARSE_COST\":0}");
  ExpectRefused(Handle(molra::Sc_BatchOrderWithDraw_AsyncFuncProcess, Structured(Answer(6458, 1))),
                kShort);
}

TEST(ReplyFrame, EveryHandlerReleasesItsSessionOnEveryPath) {
  FakeSession no_request;
  no_request.is_struct = true;
  no_request.answer = Answer(8000, 1).str();
  FakeSession unstructured;
  unstructured.request = Request().str();
  const std::vector<FakeSession> paths = {
      Structured(Answer(8000, 1)),  // accepted
      Structured(Answer(430, -1)),  // refused by the back end
      Structured(Answer(429, 1)),   // too short
      Structured(Answer(471, 1)),   // accepted but short of every minimum
      no_request,
      unstructured,
      FakeSession{}};
  for (bool with_callback : {true, false}) {
    FakeKel kel;
    HostCallbacks host(false, with_callback);
    int n = 0;
    for (std::size_t h = 0; h < std::size(kReplyHandlers); ++h) {
      for (std::size_t p = 0; p < paths.size(); ++p) {
        auto id = kel.Add(paths[p]);
        kReplyHandlers[h](id);
        ++n;
        EXPECT_EQ(kel.Releases(id), 1) << "handler " << h << " path " << p;
      }
    }
    EXPECT_EQ(kel.TotalReleases(), n);
  }
}

TEST(ReplyFrame, NoCallbackBuildsAndLogsNothingButStillChecksTheAnswer) {
  ScratchLog log;
  FakeKel kel;
  HostCallbacks host(true, false);
  auto ok = kel.Add(Structured(Answer(472, 1)));
  EXPECT_TRUE(molra::Sc_Order_AsyncFuncProcess(ok));
  EXPECT_TRUE(molra::Sc_FXYW_AsyncFuncProcess(kel.Add(KeyValue(0))));
  auto bad = kel.Add(Structured(Answer(429, 1)));
  EXPECT_FALSE(molra::Sc_Order_AsyncFuncProcess(bad));
  EXPECT_EQ(LastError(), -205);
  EXPECT_TRUE(host.Functions().empty());
  EXPECT_TRUE(host.Messages().empty());
  EXPECT_EQ(log.Text().find("push orderNo"), std::string::npos);
  EXPECT_EQ(kel.TotalReleases(), 3);
}

}  // namespace
