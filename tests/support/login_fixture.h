// A started kit with a "molra.ini" whose key "T" reaches the simulated back end, for the
// tests that log customers in. Each test case runs in a process of its own.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "core/log.h"
#include "kelsim.h"
#include "secmolra.h"
#include "support/test_support.h"

#define LOGIN_SIM_FN(name) (::molra::test::Sim::Get().Fn<decltype(&name)>(#name))

namespace molra::test {

// The connection section "T": management, trade, query and subscribe on their own ports.
inline std::string TradeSection(const std::string& extra = "") {
  return "[T]\naddr=127.0.0.1:9101\ntradeaddr=127.0.0.1:9102\nqueryaddr=127.0.0.1:9103\n"
         "subscribeaddr=127.0.0.1:9104\nName=sim\nAppName=molra-test\nwtgy=GY01\n"
         "exchange=SHA\n" +
         extra;
}

class LoginTest : public ::testing::Test {
 protected:
  // Writes the configuration, then starts the kit on it.
  void Start(const std::string& ini) {
    profile_ = MakeTempDir() + "/";
    logdir_ = MakeTempDir();
    WriteFile(profile_ + "molra.ini", ini);
    Sim::Get().Reset();
    SECMOLRA_SetProfilePath(profile_.c_str());
    SECMOLRA_SetLogPath(logdir_.c_str());
    ASSERT_TRUE(SECMOLRA_Init());
    Sim::Get().ClearCallLog();
  }
  void StartDefault(const std::string& global = "", const std::string& extra = "") {
    Start("[GLOBAL]\n" + global + TradeSection(extra));
  }
  void TearDown() override { SECMOLRA_Exit(); }

  std::string Log() { return KitLog(logdir_); }
  static std::size_t Count(const std::string& text, const std::string& what) {
    std::size_t n = 0;
    for (std::size_t p = text.find(what); p != std::string::npos; p = text.find(what, p + 1)) ++n;
    return n;
  }
  // The key/value request last sent with func, "id=value|id=value" in the order set.
  static std::string LastRequest(const char* func) {
    char buf[4096] = {};
    int32_t n = LOGIN_SIM_FN(KelSim_LastRequest)(func, buf, sizeof buf - 1);
    return n < 0 ? std::string("<none>") : std::string(buf);
  }

  std::string profile_;
  std::string logdir_;
};

}  // namespace molra::test
