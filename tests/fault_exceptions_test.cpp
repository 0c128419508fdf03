// C++ exceptions inside the kit never reach the host: a transport entry that throws during an
// export, a reply, a push or a connection event, a host callback that throws, and a length
// from the transport that would size a 2 GiB buffer. Exports fail with -299 "内部错误", a
// reply handler records -205, pushes and events are logged and dropped; every session is
// released once.
#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#if !defined(_WIN32)
#include <sys/resource.h>
#endif

#include "comm/kel_api.h"
#include "core/context.h"
#include "push/push_handlers.h"
#include "support/host_callbacks.h"
#include "support/trade_fixture.h"

using namespace molra::test;

namespace {

constexpr char kThrown[] = "transport double failed";

[[noreturn]] void Throw() { throw std::runtime_error(kThrown); }

// Throwing stand-ins for single transport entries.
bool ThrowingSession(kel::int64) { Throw(); }
bool ThrowingSetDefaultInfo(const char*, const char*, const char*, const char*) { Throw(); }
bool ThrowingEncode(const char*, char*, kel::int32*) { Throw(); }
const char* ThrowingStructData(kel::int64, kel::int32*, kel::int32) { Throw(); }
bool ThrowingItemBuf(kel::int64, kel::int32, char*, kel::int32*, kel::int32) { Throw(); }
bool ThrowingBind(kel::int64, const char*) { Throw(); }
void ThrowingHost(const char*, const char*, std::int32_t) { Throw(); }

class Exceptions : public TradeTest {
 protected:
  void SetUp() override {
    TradeTest::SetUp();
    saved_ = kel::api;  // the bound transport
  }
  void TearDown() override {
    kel::api = saved_;
    TradeTest::TearDown();
  }
  // The log holds the export's record and the exception's text.
  void ExpectCaught(const std::string& name, const std::string& record) {
    const std::string log = LogText();
    EXPECT_NE(log.find(name + Gbk("：") + record), std::string::npos) << name;
    EXPECT_NE(log.find(name + " exception: " + kThrown), std::string::npos) << name;
  }
  std::int32_t OpenSessions() { return KELSIM(KelSim_OpenSessions)(); }

  kel::Api saved_;
};

struct ExportCase {
  const char* name;
  std::function<void()> arm;  // makes one transport entry throw
  std::function<std::int64_t()> call;
  std::int64_t failure;  // -299, or 0 (false) for a bool export
};

}  // namespace

TEST_F(Exceptions, AnExportThatCatchesOneFailsWithInternalErrorAndReleasesItsSession) {
  FundRecord rows[4];
  CusLoginInfo info{};
  std::strcpy(info.KHH, "1001");
  std::strcpy(info.Password, "111111");
  const ExportCase kCases[] = {
      {"SECMOLRA_OrderEntrust", [] { kel::api.Kel_Run = ThrowingSession; },
       [] { return SECMOLRA_OrderEntrust("1001", "SH", "600000", 1, 100, 10.0, 0, kGdhSH); }, -299},
      {"SECMOLRA_OrderEntrust_ASync", [] { kel::api.Kel_Write = ThrowingSession; },
       [] {
         return SECMOLRA_OrderEntrust_ASync("1001", "SH", "600000", 1, 100, 10.0, 0, kGdhSH, 5);
       },
       -299},
      {"SECMOLRA_QueryFundInfo", [] { kel::api.Kel_Run = ThrowingSession; },
       [&rows] { return PYSECMOLRA_QueryFundInfo("1001", rows, 4); }, -299},
      {"SECMOLRA_ModifyPwd", [] { kel::api.Kel_UniEncode3rd = ThrowingEncode; },
       [] { return SECMOLRA_ModifyPwd("1001", "111111", "222222", 0); }, -299},
      {"SECMOLRA_SetWTFS", [] { kel::api.Kel_SetDefaultInfo = ThrowingSetDefaultInfo; },
       [] { return std::int64_t{SECMOLRA_SetWTFS("32")}; }, 0},
      // Last: the login has already taken the customer back to not logged in.
      {"SECMOLRA_TradeLoginEx", [] { kel::api.Kel_UniEncode3rd = ThrowingEncode; },
       [&info] { return SECMOLRA_TradeLoginEx("SIM", &info); }, -299},
  };
  for (const ExportCase& c : kCases) {
    c.arm();
    const std::int64_t result = c.call();
    kel::api = saved_;
    EXPECT_EQ(result, c.failure) << c.name;
    std::string msg;
    EXPECT_EQ(LastError(&msg), -299) << c.name;
    EXPECT_EQ(msg, Gbk("内部错误")) << c.name;
    ExpectCaught(c.name, Gbk("内部错误"));
    EXPECT_EQ(OpenSessions(), 0) << c.name;
  }
}

TEST_F(Exceptions, AReplyHandlerThatCatchesOneRecordsAnswerErrorDeliversNothingAndReleasesOnce) {
  HostCallbacks host;
  kel::api.Kel_GetStructDataEx = ThrowingStructData;
  ASSERT_EQ(SECMOLRA_OrderEntrust_ASync("1001", "SH", "600000", 1, 100, 10.0, 0, kGdhSH, 9), 9);
  KELSIM(KelSim_WaitIdle)();
  kel::api = saved_;
  EXPECT_TRUE(host.Functions().empty());
  std::string msg;
  EXPECT_EQ(LastError(&msg), -205);
  EXPECT_EQ(msg, Gbk("内部错误"));
  ExpectCaught("Sc_Order_AsyncFuncProcess", Gbk("内部错误"));
  EXPECT_EQ(OpenSessions(), 0);
  // The kit still works.
  ASSERT_EQ(SECMOLRA_OrderEntrust_ASync("1001", "SH", "600000", 1, 100, 10.0, 0, kGdhSH, 10), 10);
  KELSIM(KelSim_WaitIdle)();
  EXPECT_EQ(host.Functions().size(), 1u);
}

TEST_F(Exceptions, PushesAndConnectionEventsThatThrowAreLoggedAndDropped) {
  HostCallbacks host;
  // A pushed record that the transport fails to hand over.
  kel::api.Kel_GetItemBuf = ThrowingItemBuf;
  char record[402] = {};
  std::memcpy(record, "1001", 4);
  KELSIM(KelSim_PushRecord)("1001", 0, record, sizeof record);
  KELSIM(KelSim_WaitIdle)();
  kel::api = saved_;
  EXPECT_TRUE(host.Messages().empty());
  // A rebind that throws when the trade connection comes back.
  kel::api.Kel_SetCustomerForBindThread = ThrowingBind;
  const std::int64_t trade = KELSIM(KelSim_ConnectionByAddr)("127.0.0.1:9102", 0);
  KELSIM(KelSim_BreakConnection)(trade, 3);
  KELSIM(KelSim_RestoreConnection)(trade);
  KELSIM(KelSim_WaitIdle)();
  kel::api = saved_;
  // A host callback that throws inside the structured handler, on a thread of its own.
  SECMOLRA_SetMsgCallback(ThrowingHost);
  char structured[415] = {};
  molra::PushSettings push;
  std::thread([&] { molra::ScStructMsgProc(&push, 0, sizeof structured, structured); }).join();
  SECMOLRA_SetMsgCallback(nullptr);
  const std::string log = LogText();
  for (const char* name :
       {"ScOrderMsgProcess", "KelComm::KelConn::on_conn_event", "ScStructMsgProc"}) {
    EXPECT_NE(log.find(std::string(name) + " exception: " + kThrown), std::string::npos) << name;
  }
  EXPECT_EQ(OpenSessions(), 0);
  EXPECT_GT(SECMOLRA_OrderEntrust("1001", "SH", "600000", 1, 100, 10.0, 0, kGdhSH), 0) << Message();
}

namespace {

std::vector<kel::int32> g_caps;

// A text field whose length the transport reports as 2^31 - 16 while it holds "1001".
const char* HugeItem(kel::int64, kel::int32, char* buf, kel::int32* len, kel::int32) {
  g_caps.push_back(*len);
  std::snprintf(buf, static_cast<std::size_t>(*len), "%s", "1001");
  *len = 0x7FFFFFF0;
  return buf;
}

// The address space of the process, limited to what it uses now and 512 MiB more, for as
// long as the object lives (not under the sanitizers, which reserve far more up front).
class MemoryLimit {
 public:
  MemoryLimit() {
#if !defined(_WIN32) && !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    std::FILE* f = std::fopen("/proc/self/statm", "r");
    unsigned long pages = 0;
    if (f != nullptr && std::fscanf(f, "%lu", &pages) == 1) {
      getrlimit(RLIMIT_AS, &saved_);
      rlimit limit = saved_;
      limit.rlim_cur = pages * 4096UL + (512UL << 20);
      active_ = setrlimit(RLIMIT_AS, &limit) == 0;
    }
    if (f != nullptr) std::fclose(f);
#endif
  }
  ~MemoryLimit() {
#if !defined(_WIN32)
    if (active_) setrlimit(RLIMIT_AS, &saved_);
#endif
  }

 private:
#if !defined(_WIN32)
  rlimit saved_{};
#endif
  bool active_ = false;
};

}  // namespace

TEST_F(Exceptions, ALengthFromTheTransportIsTrustedOnlyUpToOneMegabyte) {
  KELSIM(KelSim_SetKvAnswer)("ZD0001", 0, "", "1=SH|2=x");
  const std::int64_t cursor = SECMOLRA_BeginQuery("1001", "ZD0001", "");
  ASSERT_GT(cursor, 0) << Message();
  char buf[64] = {};
  std::int64_t n = 0;
  {
    MemoryLimit limit;
    kel::api.Kel_GetItem = HugeItem;
    n = SECMOLRA_GetQuery(cursor, 0, 1, buf, sizeof buf);
    kel::api = saved_;
  }
  EXPECT_EQ(n, 4);
  EXPECT_STREQ(buf, "1001");
  EXPECT_EQ(g_caps, (std::vector<kel::int32>{256, 1048577}));
  EXPECT_EQ(SECMOLRA_EndQuery(cursor), 1);
  EXPECT_EQ(OpenSessions(), 0);
}
