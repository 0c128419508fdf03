// Faults while a customer's connection set is opened: each of the four connects failing
// (once, and for good), and the binding of the customer failing. The login reports the
// connection layer's staged code (0) and message, keeps nothing open, and a later login
// succeeds.
#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "support/login_fixture.h"

using namespace molra::test;

namespace {

#define FAULT_SIM(name) LOGIN_SIM_FN(name)

struct ConnectFault {
  const char* role;   // names the test case
  const char* addr;   // the connection that fails
  int opened_before;  // connections opened before it, in the order management, trade, query,
                      // subscribe
};

const ConnectFault kConnectFaults[] = {{"Management", "127.0.0.1:9101", 0},
                                       {"Trade", "127.0.0.1:9102", 1},
                                       {"Query", "127.0.0.1:9103", 2},
                                       {"Subscribe", "127.0.0.1:9104", 3}};

void PrintTo(const ConnectFault& f, std::ostream* os) { *os << f.addr; }

class ConnectFaults : public LoginTest, public ::testing::WithParamInterface<ConnectFault> {};

TEST_P(ConnectFaults, LoginReportsTheFailedConnectAndKeepsNothingOpen) {
  StartDefault();
  const ConnectFault f = GetParam();
  for (int count : {1, -1}) {
    FAULT_SIM(KelSim_FailConnect)(f.addr, count);
    EXPECT_EQ(SECMOLRA_TradeLogin("T", "1001", "111111"), 0) << f.addr;
    EXPECT_EQ(LastError(), 0);
    EXPECT_EQ(LastErrorText(), std::string("connect failed.connect to ") + f.addr +
                                   " timed out[key:T,addr:" + f.addr + "]\n");
    EXPECT_EQ(Count(Sim::Get().CallLog(), "Kel_Connect("),
              static_cast<std::size_t>(f.opened_before + 1));
    EXPECT_EQ(FAULT_SIM(KelSim_ConnectionCount)(), 0) << "the dropped set closes what it opened";
    EXPECT_EQ(FAULT_SIM(KelSim_OpenSessions)(), 0);
    FAULT_SIM(KelSim_FailConnect)(f.addr, 0);
    Sim::Get().ClearCallLog();
  }
  EXPECT_GT(SECMOLRA_TradeLogin("T", "1001", "111111"), 0) << "the next login connects afresh";
  EXPECT_EQ(FAULT_SIM(KelSim_ConnectionCount)(), 4);
}

INSTANTIATE_TEST_SUITE_P(EveryConnection, ConnectFaults, ::testing::ValuesIn(kConnectFaults),
                         [](const ::testing::TestParamInfo<ConnectFault>& p) {
                           return std::string(p.param.role);
                         });

TEST_F(LoginTest, BindFailureFailsTheLoginAndALaterLoginBinds) {
  StartDefault();
  for (int count : {1, -1}) {
    FAULT_SIM(KelSim_FailBind)(count);
    EXPECT_EQ(SECMOLRA_TradeLogin("T", "1001", "111111"), 0);
    EXPECT_EQ(LastError(), 0);
    EXPECT_EQ(LastErrorText(), "conn bind customer failed[key:T,addr:127.0.0.1:9102,khh:1001]\n");
    EXPECT_EQ(FAULT_SIM(KelSim_ConnectionCount)(), 0);
    EXPECT_EQ(FAULT_SIM(KelSim_OpenSessions)(), 0);
    FAULT_SIM(KelSim_FailBind)(0);
  }
  EXPECT_GT(SECMOLRA_TradeLogin("T", "1001", "111111"), 0);
  char bound[32] = {};
  const auto trade = FAULT_SIM(KelSim_ConnectionByAddr)("127.0.0.1:9102", 0);
  EXPECT_EQ(FAULT_SIM(KelSim_BoundCustomer)(trade, bound, sizeof bound), 4);
  EXPECT_STREQ(bound, "1001");
}

TEST_F(LoginTest, EveryConnectFailingLeavesOtherCustomersServed) {
  StartDefault();
  ASSERT_GT(SECMOLRA_TradeLogin("T", "1001", "111111"), 0);
  FAULT_SIM(KelSim_FailConnect)(nullptr, -1);
  EXPECT_EQ(SECMOLRA_TradeLogin("T", "1002", "222222"), 0);
  EXPECT_EQ(LastErrorText().rfind("connect failed.", 0), 0u) << LastErrorText();
  FAULT_SIM(KelSim_FailConnect)(nullptr, 0);
  EXPECT_GT(SECMOLRA_TradableQty("1001", "SH", "600000", 1, 10.0, 0, "A000001001"), 0)
      << "the first customer's set is untouched";
  EXPECT_EQ(FAULT_SIM(KelSim_ConnectionCount)(), 4);
}

}  // namespace
