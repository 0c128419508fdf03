// The simulated back end's files, read directly: CSV records, replay files and the
// configuration's market, fee and security keys, each refusal with the reason a user can act
// on.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "config.h"
#include "csv.h"
#include "replay.h"
#include "support/test_support.h"

using namespace molra::test;

namespace {

using Records = std::vector<std::vector<std::string>>;

// The records of a text, or "error: ..." as the only field.
Records ReadAll(const std::string& text) {
  sim::CsvReader csv(text);
  Records out;
  std::vector<std::string> fields;
  while (csv.Next(&fields)) out.push_back(fields);
  if (!csv.error().empty()) out.push_back({"error: " + csv.error()});
  return out;
}

TEST(SimCsv, RecordsFieldsQuotesAndLineEnds) {
  const struct {
    const char* text;
    Records records;
  } cases[] = {
      {"a,b\n1,2\n", {{"a", "b"}, {"1", "2"}}},
      {"a,b\r\n1,2", {{"a", "b"}, {"1", "2"}}},
      {",,\n", {{"", "", ""}}},
      {"\"x,y\",\"say \"\"hi\"\"\",\"two\nlines\"\n", {{"x,y", "say \"hi\"", "two\nlines"}}},
      {"\xEF\xBB\xBF"
       "a\n\n\r\nb\n",
       {{"a"}, {"b"}}},
      {"a\"b,c\n", {{"a\"b", "c"}}},  // a quote inside a field is a character
      {"a\n\"open,\n", {{"a"}, {"error: line 2: a quoted field is not closed"}}},
      {"\"a\"b,c\n", {{"error: line 1: text after the closing quote of a field"}}},
  };
  for (const auto& t : cases) EXPECT_EQ(ReadAll(t.text), t.records) << t.text;
}

TEST(SimCsv, AFieldWrittenForCsvReadsBackAsItself) {
  for (std::string v : {"", "plain", "a,b", "q\"uote", "line\nend", "\"", "cr\r"}) {
    std::string line = sim::CsvField(v) + "," + sim::CsvField(v) + "\n";
    sim::CsvReader csv(line);
    std::vector<std::string> fields;
    ASSERT_TRUE(csv.Next(&fields)) << v;
    EXPECT_EQ(fields, (std::vector<std::string>{v, v}));
  }
}

constexpr const char* kHeader =
    "time,exchange,code,last,volume,bid1,bid1_volume,ask1,ask1_volume\n";

std::string ReplayError(const std::string& text) {
  sim::Replay r;
  std::string error;
  return sim::ReadReplay(text, &r, &error) ? "(read)" : error;
}

TEST(SimReplayFile, IsReadInTimeOrderWithItsLevels) {
  sim::Replay r;
  std::string error;
  ASSERT_TRUE(sim::ReadReplay(std::string(kHeader) +
                                  "09:31:00,SH,600000,10.01,300,10.00,100,10.02,200\n"
                                  "09:30:00.5,SZ,000001,12.00,100,,,12.01,700\n"
                                  "09:31:00,SH,600036,35.00,0,,,,\n",
                              &r, &error))
      << error;
  ASSERT_EQ(r.rows.size(), 3u);
  EXPECT_EQ(r.rows[0].time_ms, (9 * 3600 + 30 * 60) * 1000LL + 500);
  EXPECT_EQ(r.securities[r.rows[0].security].zqdm, "000001");
  EXPECT_EQ(r.rows[0].bids[0].price, 0.0);  // an empty level is none
  EXPECT_EQ(r.rows[0].asks[0].volume, 700);
  EXPECT_EQ(r.securities[r.rows[1].security].zqdm, "600000");  // same time: file order
  EXPECT_EQ(r.securities[r.rows[2].security].zqdm, "600036");
  EXPECT_EQ(r.rows[1].turnover, -1);  // not given
  EXPECT_EQ(r.securities[r.rows[1].security].first_last, 10.01);
}

TEST(SimReplayFile, RefusalsNameTheLineAndTheFault) {
  const struct {
    std::string text;
    const char* error;
  } cases[] = {
      {"", "no header line"},
      {"time,exchange,code,last\n", "line 1: no column \"volume\""},
      {"time,exchange,code,last,volume,bid6\n", "line 1: unknown column \"bid6\""},
      {"time,exchange,code,last,volume,volume\n", "line 1: column \"volume\" given twice"},
      {"time,exchange,code,last,volume,bid2\n",
       "line 1: \"bid2\" and \"bid2_volume\" come in pairs"},
      {std::string(kHeader) + "9:30:00,SH,600000,10,1,,,,\n",
       "line 2: time \"9:30:00\" is not HH:MM:SS[.mmm]"},
      {std::string(kHeader) + "09:30:60,SH,600000,10,1,,,,\n", "line 2: time \"09:30:60\""},
      {std::string(kHeader) + "09:30:00,SH,600000,10,1\n",
       "line 2: 5 fields where the header names 9"},
      {std::string(kHeader) + "09:30:00,SH,600000,0,1,,,,\n", "line 2: last must be above 0"},
      {std::string(kHeader) + "09:30:00,SH,600000,ten,1,,,,\n",
       "line 2: last \"ten\" is not a price"},
      {std::string(kHeader) + "09:30:00,SH,600000,10,-5,,,,\n",
       "line 2: volume \"-5\" is not a quantity"},
      {std::string(kHeader) + "09:30:00,SH,600000,10,1,9.99,,,\n",
       "line 2: bid1 and bid1_volume are given together"},
      {std::string(kHeader) + "09:30:00,,600000,10,1,,,,\n",
       "line 2: exchange and code must be given"},
      {std::string(kHeader) + "\n\n09:30:00,SH,\"600000,10,1,,,,\n",
       "line 4: a quoted field is not closed"},
  };
  for (const auto& t : cases)
    EXPECT_NE(ReplayError(t.text).find(t.error), std::string::npos) << ReplayError(t.text);
}

// ---- configuration keys ----

std::string ConfigError(const std::string& text) {
  std::string dir = MakeTempDir();
  WriteFile(dir + "/sim.ini", text);
  sim::Config c;
  std::string error;
  return sim::LoadConfigFile(dir + "/sim.ini", c, &error) ? "(loaded)"
                                                          : error.substr(error.find(": ") + 2);
}

TEST(SimConfigKeys, BadValuesAndUnknownKeysAreRefused) {
  const struct {
    const char* text;
    const char* error;
  } cases[] = {
      {"[fees]\ncommission_rate = abc\n",
       "[fees] commission_rate = abc: expected a number from 0 to 0.1"},
      {"[fees]\ncomission_rate = 0.0003\n", "[fees] has no key comission_rate"},
      {"[fees]\nstamp_duty_rate = 0.2\n",
       "[fees] stamp_duty_rate = 0.2: expected a number from 0 to 0.1"},
      {"[market]\nclock = fast\n", "[market] clock = fast: expected a number from 0.001 to 1e+06"},
      {"[market]\nstart = 25:00:00\n", "[market] start = 25:00:00: expected HH:MM:SS[.mmm]"},
      {"[market]\nstep_ms = 0\n",
       "[market] step_ms = 0: expected a whole number from 1 to 86400000"},
      {"[security.SH.600000]\nkind = bond\n",
       "[security.SH.600000] kind = bond: expected stock or fund"},
      {"[security.SH.600000]\ntick = 0\n",
       "[security.SH.600000] tick = 0: expected a number from 0.001 to 1000"},
      {"[security.SH.600000]\nlot = 0\n",
       "[security.SH.600000] lot = 0: expected a whole number from 1 to 1000000"},
      {"[security.SH.600000]\nprise = 10\n", "[security.SH.600000] has no key prise"},
  };
  for (const auto& t : cases) EXPECT_EQ(ConfigError(t.text), t.error) << t.text;
}

TEST(SimConfigKeys, MarketFeesAndSecuritiesAreRead) {
  std::string dir = MakeTempDir();
  WriteFile(dir + "/sim.ini",
            "[backend]\nstate = run/state.db\n"
            "[market]\nreplay = day.csv   ; relative to this file\nclock = 120\nstart = "
            "09:15:00.250\nseed = 7\n"
            "[fees]\ncommission_rate = 0.0003\ncommission_min = 5\n"
            "[security.SZ.159901]\nprice = 3.2\nprev_close = 3.1\nlimit = 0.2\n"
            "[security.SH.600000]\nkind = fund\nlot = 1\n");
  sim::Config c;
  std::string error;
  ASSERT_TRUE(sim::LoadConfigFile(dir + "/sim.ini", c, &error)) << error;
  EXPECT_EQ(c.state, dir + "/run/state.db");
  EXPECT_EQ(c.market.replay, dir + "/day.csv");
  EXPECT_FALSE(c.market.random_walk);  // a replay wins over the seed
  EXPECT_EQ(c.market.clock, sim::ClockMode::Speed);
  EXPECT_EQ(c.market.speed, 120);
  EXPECT_EQ(c.market.start_ms, (9 * 3600 + 15 * 60) * 1000LL + 250);
  EXPECT_EQ(c.fees.commission_rate, 0.0003);
  EXPECT_EQ(c.fees.commission_min, 5);
  ASSERT_EQ(c.securities.size(), 2u);
  EXPECT_EQ(c.securities[0].kind, sim::SecurityKind::Fund);  // by its code
  EXPECT_EQ(c.securities[0].tick, 0.001);
  EXPECT_EQ(c.securities[0].prev_close, 3.1);
  EXPECT_EQ(c.securities[0].limit, 0.2);
  EXPECT_EQ(c.securities[1].kind, sim::SecurityKind::Fund);  // as configured
  EXPECT_EQ(c.securities[1].tick, 0.001);
  EXPECT_EQ(c.securities[1].lot, 1);
}

}  // namespace
