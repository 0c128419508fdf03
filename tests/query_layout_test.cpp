// Record layouts of the queries and the query table: sizes, offsets, and that every table
// entry lies inside its record without overlapping another.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "comm/kv_request.h"
#include "query/query_table.h"
#include "secmolra.h"
#include "util/field_ids.h"

using molra::query::FieldType;
using molra::query::QueryKind;
using molra::query::Spec;

static_assert(offsetof(FundRecord, ZJZH) == 16 && offsetof(FundRecord, BZ) == 32, "fund texts");
static_assert(offsetof(FundRecord, Text2) == 36 && offsetof(FundRecord, Amount1) == 52, "fund");
static_assert(offsetof(FundRecord, Total) == 100 && offsetof(FundRecord, Amount7) == 108, "total");
static_assert(offsetof(FundRecord, Amount8) == 116 && offsetof(FundRecord, Reserved) == 124, "");
static_assert(offsetof(FundRecord, Amount9) == 212 && offsetof(FundRecord, Reserved2) == 220, "");
static_assert(offsetof(AccountRecord, JYS) == 16 && offsetof(AccountRecord, GDH) == 20, "acc");
static_assert(offsetof(AccountRecord, Text4) == 64 && offsetof(AccountRecord, BZ) == 72, "acc");
static_assert(offsetof(AccountRecord, Text5) == 76 && offsetof(AccountRecord, Value) == 92, "acc");
static_assert(offsetof(PSQYRecord, Value1) == 32 && offsetof(PSQYRecord, Value2) == 40, "psqy");
static_assert(offsetof(OrderRecord, WTH) == 74 && offsetof(OrderRecord, WTSJ) == 106, "order");
static_assert(offsetof(OrderRecord, JGSM) == 155 && offsetof(OrderRecord, KFSBDBH) == 285, "");
static_assert(offsetof(OrderRecord, ZJZH) == 309 && offsetof(OrderRecord, Reserved) == 344, "");
static_assert(offsetof(MatchRecord, CJBH) == 110 && offsetof(MatchRecord, KFSBDBH) == 154, "");
static_assert(offsetof(PositionRecord, GFYE) == 74 && offsetof(PositionRecord, BZ) == 122, "");
static_assert(offsetof(ETFShareRecord, JJDM) == 32 && offsetof(ETFShareRecord, FESL) == 50, "");

namespace {

struct Expected {
  QueryKind kind;
  const char* worker;
  const char* code;
  std::size_t size;
  std::vector<int> keys;  // answer keys in table order (0 for a sum)
};

const Expected kExpected[] = {
    {QueryKind::kFund, "QueryZjxx", "DQ0003", 236,
     {605, 716, 511, 1257, 709, 709, 826, 2085, 619, 2086, 0, 869, 1847, 647}},
    {QueryKind::kAccount, "QueryGDH", "D00734", 100, {605, 599, 571, 575, 795, 1027, 511, 1532, 572}},
    {QueryKind::kPSQY, "QueryPSQY", "D00985", 48, {605, 599, 571, 724, 1179}},
    {QueryKind::kOrders, "QueryWtxx", "D00751", 444,
     {605, 599, 571, 719, 9206, 681, 595, 684, 682, 1013, 9201, 9202, 9203, 9204, 9205, 753, 9209,
      9210, 9157, 9216, 764, 716, 511}},
    {QueryKind::kMatchs, "QueryCjxx", "D00752", 185,
     {605, 599, 571, 719, 9206, 681, 595, 9202, 9203, 9204, 9207, 9208, 9157}},
    {QueryKind::kPositions, "QueryCcxx", "D00753", 384,
     {605, 599, 571, 719, 9206, 9211, 9212, 9213, 9219, 9214, 9215, 511}},
    {QueryKind::kETFShare, "QueryETFShare", "D00754", 72, {605, 599, 571, 9225, 719, 9218}},
    {QueryKind::kZJHBCL, "QueryZJHBCL", "910005", 32, {935, 936, 940, 941}},
    {QueryKind::kJDKYZJ, "QueryJDKYZJ", "910006", 16, {2071, 709}},
};

}  // namespace

TEST(QueryTable, EachQueryHasItsCodeWorkerSizeAndAnswerKeysInOrder) {
  for (const Expected& e : kExpected) {
    const auto& spec = Spec(e.kind);
    EXPECT_STREQ(spec.worker, e.worker);
    EXPECT_STREQ(spec.func_code, e.code) << e.worker;
    EXPECT_EQ(spec.layout.size, e.size) << e.worker;
    std::vector<int> keys;
    for (std::size_t i = 0; i < spec.layout.count; ++i) keys.push_back(spec.layout.fields[i].key);
    EXPECT_EQ(keys, e.keys) << e.worker;
  }
}

TEST(QueryTable, FieldsLieInsideTheirRecordAndNeverOverlap) {
  for (const Expected& e : kExpected) {
    const auto& layout = Spec(e.kind).layout;
    std::vector<int> owner(layout.size, -1);
    for (std::size_t i = 0; i < layout.count; ++i) {
      const auto& f = layout.fields[i];
      ASSERT_LE(f.offset + f.width, layout.size) << e.worker << " field " << i;
      if (f.type != FieldType::kText) {
        EXPECT_EQ(f.width, f.type == FieldType::kInt32 ? 4u : 8u) << e.worker << " field " << i;
      }
      for (std::size_t b = f.offset; b < f.offset + f.width; ++b) {
        EXPECT_EQ(owner[b], -1) << e.worker << " byte " << b;
        owner[b] = static_cast<int>(i);
      }
    }
  }
}

TEST(QueryTable, OnlyThePSQYQueryRechecksTheAnswerCodePerRow) {
  for (const Expected& e : kExpected) {
    bool recheck = Spec(e.kind).rows == molra::query::RowMode::kRecheckAnswerCode;
    EXPECT_EQ(recheck, e.kind == QueryKind::kPSQY) << e.worker;
  }
}

TEST(RequestText, ParsesFieldsInOrderWithEmptyValues) {
  molra::ReqFields f;
  ASSERT_TRUE(molra::ParseRequestText("605=1001|599=|719=600000", f));
  ASSERT_EQ(f.size(), 3u);
  EXPECT_EQ(f[0].id, 605);
  EXPECT_EQ(f[0].text, "1001");
  EXPECT_EQ(f[1].id, 599);
  EXPECT_EQ(f[1].text, "");
  EXPECT_EQ(f[2].text, "600000");
  ASSERT_TRUE(molra::ParseRequestText("", f));
  EXPECT_TRUE(f.empty());
  ASSERT_TRUE(molra::ParseRequestText(nullptr, f));
  EXPECT_TRUE(f.empty());
  ASSERT_TRUE(molra::ParseRequestText("730=a=b", f));
  EXPECT_EQ(f[0].text, "a=b");
}

TEST(RequestText, RefusesMalformedText) {
  molra::ReqFields f;
  for (const char* bad : {"605", "=1", "x=1", "605=1|", "605=1||599=2", "0=1", "-5=1",
                          "99999999999=1", "605=1|abc"}) {
    EXPECT_FALSE(molra::ParseRequestText(bad, f)) << bad;
  }
}
