// The named-field log line that replaced fmt's dynamic named arguments: the same text as
// fmt for every kind of value, and refusals where fmt would have thrown.
#include <gtest/gtest.h>

#include <fmt/args.h>
#include <fmt/format.h>

#include <cstdint>
#include <string>

#include "log/named_line.h"

namespace {

std::string Line(const molra::NamedLine& line, const char* format, bool* ok = nullptr) {
  fmt::memory_buffer out;
  const bool done = line.Format(format, out);
  if (ok != nullptr) *ok = done;
  return std::string(out.data(), out.size());
}

TEST(NamedLine, WritesEveryKindAsFmtWouldWithNamedArguments) {
  const char* format = "{fn} i:{i} n:{n} u:{u} d:{d} tiny:{tiny} big:{big} t:{t} b:{b} z:{z}";
  const std::int32_t i = -42;
  const std::int64_t n = INT64_MIN;
  const std::uint64_t u = UINT64_MAX;
  const double d = 0.1 + 0.2, tiny = 1e-300, big = 1e21;
  const std::string t = "北京 {x}";
  molra::NamedLine line;
  line.Add("fn", "OrderEntrust");
  line.Add("i", i);
  line.Add("n", n);
  line.Add("u", u);
  line.Add("d", d);
  line.Add("tiny", tiny);
  line.Add("big", big);
  line.Add("t", t);
  line.Add("b", true);
  line.Add("z", 0);

  fmt::dynamic_format_arg_store<fmt::format_context> args;
  args.push_back(fmt::arg("fn", "OrderEntrust"));
  args.push_back(fmt::arg("i", i));
  args.push_back(fmt::arg("n", n));
  args.push_back(fmt::arg("u", u));
  args.push_back(fmt::arg("d", d));
  args.push_back(fmt::arg("tiny", tiny));
  args.push_back(fmt::arg("big", big));
  args.push_back(fmt::arg("t", t));
  args.push_back(fmt::arg("b", true));
  args.push_back(fmt::arg("z", 0));
  bool ok = false;
  EXPECT_EQ(Line(line, format, &ok), fmt::vformat(format, args));
  EXPECT_TRUE(ok);
}

TEST(NamedLine, TheEntrustLineOfTheOrderLayer) {
  molra::NamedLine line;
  line.Add("khh", std::string("1001"));
  line.Add("jys", "SH");
  line.Add("zqdm", "600000");
  line.Add("jylb", std::int32_t{1});
  line.Add("wtsl", std::int64_t{200});
  line.Add("wtjg", 10.5);
  line.Add("ddlx", std::int64_t{0});
  line.Add("gdh", std::string("A000001001"));
  line.Add("fn", "OrderEntrust");
  line.Add("lsh", std::int64_t{931050000000042});
  line.Add("cost", 3LL);
  EXPECT_EQ(Line(line, "{fn} lpKhh:{khh} lpJys:{jys} lpZqdm:{zqdm} nJylb:{jylb} lWtsl:{wtsl} "
                       "lfWtjg:{wtjg} lDdlx:{ddlx} lpGdh:{gdh} lsh:{lsh} cost:{cost}"),
            "OrderEntrust lpKhh:1001 lpJys:SH lpZqdm:600000 nJylb:1 lWtsl:200 lfWtjg:10.5 "
            "lDdlx:0 lpGdh:A000001001 lsh:931050000000042 cost:3");
}

TEST(NamedLine, NullTextIsEmptyAndTheLastValueOfANameCounts) {
  molra::NamedLine line;
  const char* none = nullptr;
  line.Add("step", none);
  line.Add("wth", std::int64_t{1});
  line.Add("wth", std::int64_t{2});
  EXPECT_EQ(Line(line, "[{step}] {wth}"), "[] 2");
}

TEST(NamedLine, BracesDoubledAreLiteral) {
  molra::NamedLine line;
  line.Add("a", 7);
  EXPECT_EQ(Line(line, "{{a}} {{{a}}} }}"), "{a} {7} }");
}

TEST(NamedLine, RefusesWhatFmtWouldRefuse) {
  molra::NamedLine line;
  line.Add("a", 1);
  for (const char* bad : {"{b}", "{a:>4}", "{a", "x}", "{}", "{ a}"}) {
    bool ok = true;
    Line(line, bad, &ok);
    EXPECT_FALSE(ok) << bad;
    fmt::dynamic_format_arg_store<fmt::format_context> args;
    args.push_back(fmt::arg("a", 1));
    // fmt takes specs, and "{}" as the first argument by position.
    if (std::string(bad) != "{a:>4}" && std::string(bad) != "{}") {
      EXPECT_THROW(static_cast<void>(fmt::vformat(bad, args)), fmt::format_error) << bad;
    }
  }
}

TEST(NamedLine, FieldsBeyondTheLimitAreDropped) {
  molra::NamedLine line;
  const char* names[] = {"f0",  "f1",  "f2",  "f3",  "f4",  "f5",  "f6",  "f7",
                         "f8",  "f9",  "f10", "f11", "f12", "f13", "f14", "f15",
                         "f16", "f17", "f18", "f19", "f20", "f21"};
  static_assert(sizeof names / sizeof names[0] == molra::NamedLine::kMaxFields + 2);
  for (int i = 0; i < molra::NamedLine::kMaxFields + 2; ++i) line.Add(names[i], i);
  bool ok = false;
  EXPECT_EQ(Line(line, "{f0}-{f19}", &ok), "0-19");
  EXPECT_TRUE(ok);
  Line(line, "{f20}", &ok);
  EXPECT_FALSE(ok);
}

}  // namespace
