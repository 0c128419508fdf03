// The simulated back end's configuration file and the benchmark mode.
#include <gtest/gtest.h>

#include <cstdlib>

#include "support/sim_api.h"
#include "util/field_ids.h"

using namespace molra::test;

namespace {

const char* kIni =
    "[backend]\n"
    "addresses = 10.1.1.1:7001, 10.1.1.2:7002\n"
    "trade_date = 20240315\n"
    "[customer.2001]\n"
    "password = pw2001\n"
    "nodes = 7:4, 8:5\n"
    "funds = 500.25\n"
    "position.1 = SH,688001,300,200,40.5\n"
    "[security.SH.688001]\n"
    "price = 50\n";

void SetEnv(const char* name, const std::string& value) {
#if defined(_WIN32)
  _putenv_s(name, value.c_str());
#else
  if (value.empty())
    unsetenv(name);
  else
    setenv(name, value.c_str(), 1);
#endif
}

class SimConfig : public ::testing::Test {
 protected:
  void SetUp() override {
    Sim::Get().Reset();
    ASSERT_TRUE(k.Kel_Initialize());
    dir = MakeTempDir();
  }
  void TearDown() override { k.Kel_Uninitialize(); }
  const kel::Api& k = SimKel();
  std::string dir;
};

}  // namespace

TEST_F(SimConfig, FileReplacesTheBackEnd) {
  WriteFile(dir + "/sim.ini", kIni);
  ASSERT_TRUE(SIM_FN(KelSim_LoadConfig)((dir + "/sim.ini").c_str()));
  EXPECT_EQ(k.Kel_Connect("127.0.0.1:9102", "", "", 10), 0);
  SimClient c("10.1.1.2:7002");
  ASSERT_NE(c.conn, 0);
  EXPECT_EQ(c.Login("1001", "111111"), -102);  // the built-in customers are gone
  EXPECT_GT(c.Login("2001", "pw2001", 7), 0);
  ASSERT_TRUE(c.Kv("DQ0003", {{fid::KHH, "2001"}}));
  EXPECT_DOUBLE_EQ(c.Double(fid::FUND_AMOUNT1), 500.25);
  EXPECT_DOUBLE_EQ(c.Double(fid::FUND_AMOUNT7), 300 * 50.0);  // market value at the price
  ASSERT_TRUE(c.Kv("D00753", {{fid::KHH, "2001"}}));
  EXPECT_EQ(c.Long(fid::KMSL), 200);
  ASSERT_TRUE(c.Kv("A00066", {}));
  EXPECT_EQ(c.Long(fid::TRADE_DATE), 20240315);
}

TEST_F(SimConfig, UnreadableOrMalformedFilesAreRefusedAndChangeNothing) {
  EXPECT_FALSE(SIM_FN(KelSim_LoadConfig)((dir + "/missing.ini").c_str()));
  WriteFile(dir + "/bad.ini", "[customers.1]\npassword=x\n");
  EXPECT_FALSE(SIM_FN(KelSim_LoadConfig)((dir + "/bad.ini").c_str()));
  WriteFile(dir + "/bad2.ini", "[customer.1]\nposition.1 = SH\n");
  EXPECT_FALSE(SIM_FN(KelSim_LoadConfig)((dir + "/bad2.ini").c_str()));
  SimClient c;
  EXPECT_GT(c.Login("1001", "111111"), 0);
}

TEST_F(SimConfig, ResetStartsFromTheFileNamedByTheEnvironment) {
  WriteFile(dir + "/env.ini", kIni);
  SetEnv("KELSIM_CONFIG", dir + "/env.ini");
  Sim::Get().Reset();
  SimClient c("10.1.1.1:7001");
  EXPECT_GT(c.Login("2001", "pw2001"), 0);
  // A file that cannot be used stops the back end, with the reason, until a good start.
  SetEnv("KELSIM_CONFIG", dir + "/missing.ini");
  Sim::Get().Reset();
  EXPECT_EQ(k.Kel_Connect("10.1.1.1:7001", "", "", 5), 0);
  char buf[512];
  kel::int32 len = sizeof buf;
  EXPECT_NE(std::string(k.Kel_GetLastErrMsg(buf, &len)).find("cannot read " + dir + "/missing.ini"),
            std::string::npos);
  SetEnv("KELSIM_CONFIG", "");
  Sim::Get().Reset();
  EXPECT_NE(k.Kel_Connect("127.0.0.1:9101", "", "", 5), 0);
}

TEST_F(SimConfig, BenchModeAnswersFromThePreparedAnswerWithoutLogging) {
  SimClient c;
  SIM_FN(KelSim_SetTradeDate)(20240101);
  SIM_FN(KelSim_SetBenchMode)(true);
  Sim::Get().ClearCallLog();
  ASSERT_TRUE(c.Kv("A00066", {}));
  EXPECT_EQ(c.Long(fid::TRADE_DATE), 20240101);
  SIM_FN(KelSim_SetTradeDate)(20250101);
  ASSERT_TRUE(c.Kv("A00066", {}));
  EXPECT_EQ(c.Long(fid::TRADE_DATE), 20240101);  // no back-end work: the prepared answer
  EXPECT_EQ(Sim::Get().CallLog(), "");
  SIM_FN(KelSim_SetKvAnswer)("A00066", 1, "", "4211=20260101");
  ASSERT_TRUE(c.Kv("A00066", {}));
  EXPECT_EQ(c.Long(fid::TRADE_DATE), 20260101);  // a scripted answer replaces it
  SIM_FN(KelSim_SetBenchMode)(false);
  SIM_FN(KelSim_ClearAnswers)();
  ASSERT_TRUE(c.Kv("A00066", {}));
  EXPECT_EQ(c.Long(fid::TRADE_DATE), 20250101);
}
