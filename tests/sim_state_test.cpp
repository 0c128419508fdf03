// The simulated back end's state file (Linux: the Windows build keeps state in memory): a
// second process continues where a first one stopped, nothing accepted is lost when a process
// is killed between two orders, and a file that is not such a state file, or one in use, is
// refused and left as it is. The other processes are tests/sim_state_helper.
#include <signal.h>
#include <sqlite3.h>

#include <string>
#include <vector>

#include "support/child_process.h"
#include "support/sim_trading.h"

using namespace molra::test;

namespace {

constexpr int kHelperSeconds = 30;

// The helper process on the back end of `config`, its output read until a line or its end,
// within kHelperSeconds.
class Helper : public ChildProcess {
 public:
  Helper(const std::string& config, const std::vector<std::string>& args)
      : ChildProcess(Argv(args), {"KELSIM_CONFIG=" + config}) {}
  // Reads until `line` has been printed (empty: until the output ends); false on time-out.
  bool Read(const std::string& line = std::string()) {
    return line.empty() ? ReadToEnd(kHelperSeconds) : Line(line, kHelperSeconds) == line;
  }
  int Kill() { return Signal(SIGKILL); }

 private:
  static std::vector<std::string> Argv(const std::vector<std::string>& args) {
    std::vector<std::string> argv = {BuildDir() + "/tests/sim_state_helper"};
    argv.insert(argv.end(), args.begin(), args.end());
    return argv;
  }
};

// The order numbers a helper printed.
std::vector<std::string> Numbers(const std::string& out) {
  std::vector<std::string> wth;
  for (std::size_t at = out.find("wth "); at != std::string::npos; at = out.find("wth ", at + 1))
    wth.push_back(out.substr(at + 4, out.find('\n', at) - at - 4));
  return wth;
}

class SimState : public SimTradingTest {
 protected:
  std::string Config() override {
    return "[backend]\ninclude_defaults = true\nstate = state.db\n[market]\nclock = manual\nstart "
           "= 09:30:00\n";
  }
  std::string config() const { return dir_ + "/sim.ini"; }
};

class SecondProcess : public SimState {
 protected:
  // The first process: a buy that matches, a resting buy and a resting sell, a minute, a
  // new price of another security; then it stops.
  void BeforeLoad() override {
    Helper first(config(), {"buy:600000:1000:10.00", "buy:600000:100:9.00", "sell:600000:500:11.00",
                            "advance:60000", "price:600036:36.00"});
    ASSERT_TRUE(first.Read()) << first.output();
    ASSERT_EQ(first.Wait(), 0) << first.output();
    ASSERT_EQ(Numbers(first.output()), (std::vector<std::string>{"1", "2", "3"})) << first.output();
  }
};

TEST_F(SecondProcess, ContinuesWhereTheFirstStopped) {
  EXPECT_EQ(Orders(fid::WTH), (std::vector<std::string>{"1", "2", "3"}));
  EXPECT_EQ(Orders(fid::CJSL), (std::vector<std::string>{"1000", "0", "0"}));
  EXPECT_EQ(Position("600000", fid::GFYE), 11000);
  EXPECT_EQ(Position("600000", fid::KMSL), 9500);
  EXPECT_EQ(Fund(fid::FUND_AMOUNT3), "990000.00");
  EXPECT_EQ(Fund(fid::FUND_AMOUNT9), "900.00");
  ASSERT_TRUE(c.Kv("D00752", {{fid::KHH, "1001"}}));
  EXPECT_EQ(c.Count(), 1);
  EXPECT_EQ(Quote("600036").last, 36.00);
  kel::int64 ms = 0;
  SIM_FN(KelSim_Clock)(nullptr, &ms);
  EXPECT_EQ(ms, (9 * 60 + 31) * 60000LL);
  // The resting orders are back in the book, and the order numbers go on.
  SIM_FN(KelSim_SetPrice)("SH", "600000", 8.95);
  ASSERT_EQ(Matches().size(), 1u);
  EXPECT_EQ(Matches()[0].Wth(), 2);
  EXPECT_EQ(Matches()[0].Cjjg(), 9.00);
  EXPECT_EQ(Wth(Entrust("600000", 1, 100, 9.00)), 4);
}

class KilledProcess : public SimState {
 protected:
  // Killed after the answer to its second order: a buy that matched and one that rests.
  void BeforeLoad() override {
    Helper first(config(), {"buy:600000:1000:10.00", "buy:600000:100:9.00", "hang"});
    ASSERT_TRUE(first.Read("hanging")) << first.output();
    EXPECT_EQ(first.Kill(), 128 + SIGKILL);
    ASSERT_EQ(Numbers(first.output()), (std::vector<std::string>{"1", "2"})) << first.output();
  }
};

TEST_F(KilledProcess, LosesNothingItHadAccepted) {
  EXPECT_EQ(Orders(fid::WTH), (std::vector<std::string>{"1", "2"}));
  EXPECT_EQ(Position("600000", fid::GFYE), 11000);
  EXPECT_EQ(Fund(fid::FUND_AMOUNT9), "900.00");
  ASSERT_TRUE(c.Kv("D00752", {{fid::KHH, "1001"}}));
  EXPECT_EQ(c.Count(), 1);
  EXPECT_EQ(Wth(Entrust("600000", 1, 100, 9.01)), 3);
  EXPECT_EQ(Fund(fid::FUND_AMOUNT9), "1801.00");
}

// ---- files that are not state files ----

std::string ForeignDatabase(const std::string& path) {
  sqlite3* db = nullptr;
  sqlite3_open(path.c_str(), &db);
  sqlite3_exec(db, "CREATE TABLE notes(text); INSERT INTO notes VALUES ('mine');", nullptr, nullptr,
               nullptr);
  sqlite3_close(db);
  return ReadFile(path);
}

std::string ConnectError() {
  char buf[1024];
  kel::int32 len = sizeof buf;
  EXPECT_EQ(SimKel().Kel_Connect("127.0.0.1:9102", "", "", 5), 0);
  return SimKel().Kel_GetLastErrMsg(buf, &len);
}

TEST(SimStateFile, ThatIsNotOneIsRefusedAtStartAndLeftAsItIs) {
  Sim::Get().Reset();
  std::string dir = MakeTempDir();
  WriteFile(dir + "/text.db", "not a database, and it must stay as it is\n");
  struct Case {
    const char* file;
    std::string bytes;
    const char* reason;
  } cases[] = {{"text.db", ReadFile(dir + "/text.db"), "is not a state file"},
               {"other.db", ForeignDatabase(dir + "/other.db"), "but not a state file"}};
  for (const Case& t : cases) {
    SCOPED_TRACE(t.file);
    std::string ini = dir + "/sim.ini";
    WriteFile(ini, std::string("[backend]\nstate = ") + t.file + "\n");
    EXPECT_FALSE(SIM_FN(KelSim_LoadConfig)(ini.c_str()));
    EXPECT_NE(ConnectError().find(t.reason), std::string::npos);
    setenv("KELSIM_CONFIG", ini.c_str(), 1);
    Sim::Get().Reset();
    EXPECT_FALSE(SimKel().Kel_Initialize());
    char buf[1024];
    kel::int32 len = sizeof buf;
    std::string why = SimKel().Kel_GetLastErrMsg(buf, &len);
    EXPECT_NE(why.find(dir + "/" + t.file), std::string::npos) << why;
    EXPECT_NE(why.find(t.reason), std::string::npos) << why;
    EXPECT_EQ(ReadFile(dir + "/" + t.file), t.bytes);
    EXPECT_FALSE(FileExists(dir + "/" + t.file + "-wal"));
    unsetenv("KELSIM_CONFIG");
    Sim::Get().Reset();
  }
  EXPECT_TRUE(SimKel().Kel_Initialize());  // the built-in back end starts again
  SimKel().Kel_Uninitialize();
}

TEST_F(SimState, InUseByAnotherProcessIsRefused) {
  k.Kel_Uninitialize();
  SIM_FN(KelSim_Reset)();  // this process lets go of the file
  Helper other(config(), {"hang"});
  ASSERT_TRUE(other.Read("hanging")) << other.output();
  EXPECT_FALSE(SIM_FN(KelSim_LoadConfig)(config().c_str()));
  EXPECT_NE(ConnectError().find("in use by another process"), std::string::npos);
  other.Kill();
  EXPECT_TRUE(SIM_FN(KelSim_LoadConfig)(config().c_str()));
}

}  // namespace
