// For the order-layer tests: the kit started on the simulated transport with customer 1001
// logged in, its log in a scratch directory, and helpers to script answers and read the
// requests the back end received.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <sstream>
#include <string>
#include <vector>

#include "core/log.h"
#include "kelsim.h"
#include "secmolra.h"
#include "support/byte_block.h"
#include "support/test_support.h"

namespace molra::test {

constexpr const char* kSimIni =
    "[SIM]\naddr=127.0.0.1:9101\ntradeaddr=127.0.0.1:9102\nsubscribeaddr=127.0.0.1:9104\n"
    "queryaddr=127.0.0.1:9103\n";
constexpr const char* kGdhSH = "A000001001";  // the simulated back end's account of 1001 on SH

#define KELSIM(name) (::molra::test::Sim::Get().Fn<decltype(&name)>(#name))

class TradeTest : public ::testing::Test {
 protected:
  void SetUp() override {
    Sim::Get().Reset();
    dir_ = MakeTempDir();
    WriteFile(dir_ + "/molra.ini", kSimIni);
    SECMOLRA_SetProfilePath((dir_ + "/").c_str());
    SECMOLRA_SetLogPath(dir_.c_str());
    ASSERT_TRUE(SECMOLRA_Init());
    token_ = SECMOLRA_TradeLogin("SIM", "1001", "111111");
    std::string msg;
    ASSERT_GT(token_, 0) << LastError(&msg) << " " << msg;
    KELSIM(KelSim_WaitIdle)();
    Sim::Get().ClearCallLog();
  }
  // The callbacks go first: replies still arriving during the exit reach no test state.
  void TearDown() override {
    SECMOLRA_SetFuncCallback(nullptr);
    SECMOLRA_SetMsgCallback(nullptr);
    SECMOLRA_Exit();
  }

  // The last request of a function code: block bytes, or "id=value|..." for key/value.
  static std::string Request(const char* func) {
    KELSIM(KelSim_WaitIdle)();  // asynchronous requests reach the back end on its thread
    std::int32_t n = KELSIM(KelSim_LastRequest)(func, nullptr, 0);
    if (n < 0) return "(none)";
    std::string buf(static_cast<std::size_t>(n), '\0');
    KELSIM(KelSim_LastRequest)(func, buf.data(), n);
    return buf;
  }
  static void Answer(const char* func, const std::string& block) {
    KELSIM(KelSim_SetStructAnswer)(func, block.data(), static_cast<std::int32_t>(block.size()));
  }
  // An answer block of `len` bytes with the return code at 11 and the message at 302.
  static ByteBlock AnswerBlock(std::size_t len, std::int16_t code, const std::string& msg = "") {
    ByteBlock b(len);
    b.Num<std::int16_t>(11, code);
    if (!msg.empty()) b.Text(302, msg);
    return b;
  }
  // The names of the transport calls since the last clear, in order.
  static std::vector<std::string> Calls() {
    std::vector<std::string> names;
    std::istringstream in(Sim::Get().CallLog());
    for (std::string line; std::getline(in, line);) names.push_back(line.substr(0, line.find('(')));
    return names;
  }
  std::string LogText() const { return KitLog(dir_); }
  static std::string Message() { return LastErrorText(); }
  static std::string Text(const std::string& b, std::size_t off, std::size_t width) {
    return off + width <= b.size() ? b.substr(off, width) : "(block too short)";
  }
  // The NUL-terminated text at `off`, never reading past the block.
  static std::string CText(const std::string& b, std::size_t off) {
    if (off >= b.size()) return "(block too short)";
    return std::string(b.c_str() + off, ::strnlen(b.c_str() + off, b.size() - off));
  }
  template <typename T>
  static T Num(const std::string& b, std::size_t off) {
    T v{};
    if (off + sizeof v <= b.size()) std::memcpy(&v, b.data() + off, sizeof v);
    return v;
  }

  std::int64_t token_ = 0;
  std::string dir_;
};

}  // namespace molra::test
