// The connection manager end to end on the simulated transport; the rules themselves are
// tested against the transport double (conn_pool_test, conn_events_test).
#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <string>
#include <thread>

#include "comm/conn_pool.h"
#include "comm/timer.h"
#include "conn_host_events.h"
#include "secmolra.h"
#include "support/sim_api.h"
#include "support/test_support.h"

using namespace molra::test;
using KelComm::KelConn;

namespace {

const char kFourAddrs[] =
    "[K]\nName=Main\nAuthname=u\nAuthpwd=p\naddr=127.0.0.1:9101\ntradeaddr=127.0.0.1:9102\n"
    "queryaddr=127.0.0.1:9103\nsubscribeaddr=127.0.0.1:9104\n";

std::string N(const std::atomic<kel::int64>& v) { return std::to_string(v.load()); }

class ConnSim : public ::testing::Test {
 protected:
  void Start(const std::string& ini) {
    Sim::Get().Reset();
    std::string dir = MakeTempDir();
    WriteFile(dir + "/molra.ini", ini);
    SECMOLRA_SetProfilePath((dir + "/").c_str());
    SECMOLRA_SetLogPath(MakeTempDir().c_str());
    ASSERT_TRUE(SECMOLRA_Init());
    SECMOLRA_SetConnEventCallback(&hostevents::Record);
    Sim::Get().ClearCallLog();
  }
  void TearDown() override { SECMOLRA_Exit(); }

  std::shared_ptr<KelConn> Get() { return molra::Pool()->GetConnection("1001", "K"); }
  static int Connections() { return SIM_FN(KelSim_ConnectionCount)(); }
  static int OpenSessions() { return SIM_FN(KelSim_OpenSessions)(); }
};

// Lines of the call log that begin with one of the names.
std::string CallsOf(std::initializer_list<const char*> names) {
  std::string out, log = Sim::Get().CallLog();
  std::size_t pos = 0;
  while (pos < log.size()) {
    std::size_t end = log.find('\n', pos);
    std::string line = log.substr(pos, end - pos);
    for (const char* n : names) {
      if (line.rfind(std::string(n) + "(", 0) == 0) out += line + "\n";
    }
    pos = end + 1;
  }
  return out;
}

// The first argument of the nth call `name` in `log`.
std::string FirstArg(const std::string& log, const std::string& name, int nth = 0) {
  std::size_t pos = std::string::npos;
  do {
    pos = log.find(name + "(", pos == std::string::npos ? 0 : pos + 1);
  } while (pos != std::string::npos && nth-- > 0);
  if (pos == std::string::npos) return "?";
  std::size_t start = pos + name.size() + 1;
  return log.substr(start, log.find_first_of(",)", start) - start);
}

}  // namespace

TEST_F(ConnSim, LongAnswerTextsAreReadWhole) {
  Start(kFourAddrs);
  auto set = Get();
  const std::string value(700, 'v'), message(5000, 'm');
  SIM_FN(KelSim_SetKvAnswer)("ZZ0009", 1, message.c_str(), ("605=1001|9206=" + value).c_str());
  molra::KelSession s = molra::AllocQuerySession(*set);
  ASSERT_TRUE(molra::CreateHead(s, "ZZ0009"));
  ASSERT_TRUE(kel::api.Kel_Run(s.handle()));
  EXPECT_EQ(molra::GetItemString(s.handle(), 9206, 0), value);
  EXPECT_EQ(molra::GetItemString(s.handle(), 605, -1), "1001");
  EXPECT_EQ(molra::GetItemString(s.handle(), 4211, 0), "");
  EXPECT_EQ(molra::GetErrorString(s.handle()), message);
}

TEST_F(ConnSim, ExitClosesSetsInOrderAndLeavesNoTimerThread) {
  Start(kFourAddrs);
  auto set = Get();
  set->ActiveSlots()[KelConn::kConfirmSlot] = 51;
  set->ActiveSlots()[KelConn::kReportSlot] = 53;
  const std::string m = N(set->mgmt_handle), t = N(set->trade_handle),
                    q = N(set->query_handle), s = N(set->subscribe_handle);
  EXPECT_EQ(molra::TimerService::LiveThreads(), 1);
  Sim::Get().ClearCallLog();
  EXPECT_TRUE(SECMOLRA_Exit());
  std::string log = CallsOf({"Kel_SetConnEvent", "Kel_Close", "Kel_AllocateSession",
                             "Kel_Unsubscribe", "Kel_ReleaseSession", "Kel_Uninitialize"});
  const std::string s1 = FirstArg(log, "Kel_Unsubscribe"), s2 = FirstArg(log, "Kel_Unsubscribe", 1);
  EXPECT_EQ(log, "Kel_SetConnEvent(" + m + ",(null))\nKel_SetConnEvent(" + s +
                     ",(null))\nKel_SetConnEvent(" + q + ",(null))\nKel_SetConnEvent(" + t +
                     ",(null))\nKel_Close(" + m + ")\nKel_Close(" + t + ")\nKel_Close(" + q +
                     ")\nKel_AllocateSession(" + s + ")\nKel_Unsubscribe(" + s1 +
                     ",51)\nKel_ReleaseSession(" + s1 + ")\nKel_AllocateSession(" + s +
                     ")\nKel_Unsubscribe(" + s2 + ",53)\nKel_ReleaseSession(" + s2 +
                     ")\nKel_Close(" + s + ")\nKel_Uninitialize()\n");
  EXPECT_EQ(molra::Pool(), nullptr);
  EXPECT_EQ(molra::TimerService::LiveThreads(), 0);
  EXPECT_EQ(Connections(), 0);
  EXPECT_EQ(OpenSessions(), 0);
}

#if defined(__linux__)
TEST_F(ConnSim, ExitLeavesNoThreadOfTheKitBehind) {
  auto threads = [] {
    int n = 0;
    for (auto& e : std::filesystem::directory_iterator("/proc/self/task")) n += e.is_directory();
    return n;
  };
  std::thread([] {}).join();  // runtimes that start a helper with the first thread do so now
  Sim::Get().Reset();         // so does loading the transport
  int before = threads();
  Start(kFourAddrs);
  ASSERT_NE(Get(), nullptr);
  EXPECT_GT(threads(), before);
  SECMOLRA_Exit();
  EXPECT_EQ(threads(), before);
}
#endif
