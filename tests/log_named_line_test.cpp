// The named-field log line that replaced fmt's dynamic named arguments: the same text as
// fmt for every kind of value, and refusals where fmt would have thrown.
#include <fmt/args.h>
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "trade/named_line.h"

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

TEST(NamedLine, NullTextIsEmptyAndTheLastValueOfANameCounts) {
  molra::NamedLine line;
  const char* none = nullptr;
  line.Add("step", none);
  line.Add("wth", std::int64_t{1});
  line.Add("wth", std::int64_t{2});
  EXPECT_EQ(Line(line, "[{step}] {wth}"), "[] 2");
}

// Names are told apart by their first eight bytes and size, then by the rest.
TEST(NamedLine, NamesAlikeInTheirFirstBytesAreDistinct) {
  molra::NamedLine line;
  const struct {
    const char* name;
    int value;
  } fields[] = {{"abcdefgh", 1}, {"abcdefghi", 2},       {"abcdefghj", 3},
                {"abcdefg", 4},  {"abcdefgh_long_x", 5}, {"abcdefgh_long_y", 6}};
  for (const auto& f : fields) line.Add(f.name, f.value);
  const molra::LineFormat format(
      "{abcdefgh}{abcdefghi}{abcdefghj}{abcdefg}"
      "{abcdefgh_long_x}{abcdefgh_long_y}");
  for (int pass = 0; pass < 2; ++pass) {  // a format read once serves every line
    fmt::memory_buffer out;
    EXPECT_TRUE(line.Format(format, out));
    EXPECT_EQ(std::string(out.data(), out.size()), "123456");
  }
  bool ok = true;
  Line(line, "{abcdefgh_long_z}", &ok);
  EXPECT_FALSE(ok);
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
  }
}

TEST(NamedLine, FieldsBeyondTheLimitAreDropped) {
  molra::NamedLine line;
  std::vector<std::string> names;
  for (int i = 0; i < molra::NamedLine::kMaxFields + 2; ++i)
    names.push_back("f" + std::to_string(i));
  for (int i = 0; i < molra::NamedLine::kMaxFields + 2; ++i) line.Add(names[i].c_str(), i);
  bool ok = false;
  EXPECT_EQ(Line(line, "{f0}-{f19}", &ok), "0-19");
  EXPECT_TRUE(ok);
  Line(line, "{f20}", &ok);
  EXPECT_FALSE(ok);
}

}  // namespace
