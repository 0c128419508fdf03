// The last-error record, the account-level copy and the setters.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <string>
#include <thread>

#include "core/context.h"
#include "core/errors.h"
#include "core/messages.h"
#include "core/text.h"
#include "secmolra.h"
#include "support/test_support.h"

using namespace molra::test;

static_assert(offsetof(CusLoginInfo, NodeID) == 68, "node id at 68");
static_assert(offsetof(CusLoginInfo, WTFS) == 72, "WTFS at 72");
static_assert(offsetof(CusLoginInfo, Node) == 77, "node at 77");
static_assert(offsetof(CusLoginInfo, Token) == 333, "token at 333");
static_assert(offsetof(CusLoginInfo, ErrorCode) == 341, "account error code at 341");
static_assert(offsetof(CusLoginInfo, ErrorMsg) == 349, "account error message at 349");
static_assert(offsetof(BatchOrderRow, Wth) == 45 && offsetof(BatchOrderRow, Msg) == 53,
              "batch row");

// Every text of the kit's table: the bytes it compiles are the GBK of the text it shows.
TEST(Messages, EveryRowsBytesAreTheGbkOfItsText) {
  struct Row {
    const char* name;
    const char* text;
    const char* gbk;
  };
  const Row rows[] = {
#define MOLRA_ROW(name, text, gbk) {#name, text, gbk},
      MOLRA_MESSAGES(MOLRA_ROW)
#undef MOLRA_ROW
  };
  for (const Row& r : rows) EXPECT_EQ(Gbk(r.text), r.gbk) << r.name;
}

TEST(LastError, IsZeroAndEmptyBeforeAnyErrorReadingDoesNotClearAndNullMessageIsEmpty) {
  char buf[64];
  std::memset(buf, 'x', sizeof buf);
  EXPECT_EQ(SECMOLRA_GetLastError(buf), 0);
  EXPECT_STREQ(buf, "");
  SECMOLRA_SetLastError(-5, nullptr, nullptr, nullptr);
  std::string got = "x";
  EXPECT_EQ(LastError(&got), -5);
  EXPECT_EQ(got, "");
  EXPECT_EQ(LastError(&got), -5);
}

TEST(LastError, NullBufferGivesTheCodeAndWritesNothing) {
  SECMOLRA_SetLastError(-42, "abcdef", "Fn", nullptr);
  EXPECT_EQ(SECMOLRA_GetLastError(nullptr), -42);
  EXPECT_EQ(SECMOLRA_GetThreadLastError(nullptr, 16), -42);
}

TEST(LastError, ThreadRecordIsCopiedWithinTheCapacityAndIsEmptyOnAThreadWithoutErrors) {
  SECMOLRA_SetLastError(-42, "abcdef", "Fn", nullptr);
  struct Case {
    std::int32_t cap;
    const char* text;  // what the buffer holds afterwards
  };
  for (const Case& c : {Case{-1, "untouched"}, Case{0, "untouched"}, Case{1, ""}, Case{4, "abc"},
                        Case{7, "abcdef"}, Case{64, "abcdef"}}) {
    char buf[64] = "untouched";
    EXPECT_EQ(SECMOLRA_GetThreadLastError(buf, c.cap), -42) << c.cap;
    EXPECT_STREQ(buf, c.text) << c.cap;
  }
  std::thread([] {
    char buf[16] = "untouched";
    EXPECT_EQ(SECMOLRA_GetThreadLastError(buf, sizeof buf), 0);
    EXPECT_STREQ(buf, "");
    SECMOLRA_SetLastError(-7, "other", nullptr, nullptr);
    EXPECT_EQ(SECMOLRA_GetThreadLastError(buf, sizeof buf), -7);
  }).join();
  // The process-wide record follows every thread; this thread's record stays its own.
  EXPECT_EQ(SECMOLRA_GetLastError(nullptr), -7);
  EXPECT_EQ(SECMOLRA_GetThreadLastError(nullptr, 0), -42);
}

TEST(LastError, LongMessageIsKeptWholeButCutTo256UnterminatedBytesInTheAccount) {
  std::string msg(300, 'm');
  msg[255] = 'E';
  msg[256] = 'F';
  CusLoginInfo acc;
  std::memset(&acc, 0x5a, sizeof acc);
  SECMOLRA_SetLastError(-77, msg.c_str(), "Fn", &acc);
  std::string got;
  EXPECT_EQ(LastError(&got), -77);
  EXPECT_EQ(got, msg);
  EXPECT_EQ(V(acc.ErrorCode), -77);
  EXPECT_EQ(std::string(acc.ErrorMsg, 256), msg.substr(0, 256));
  // The record ends with the message field: nothing was written past it.
  EXPECT_EQ(V(acc.Token), 0x5a5a5a5a5a5a5a5aLL);
}

TEST(LastError, ShortMessageZeroFillsTheAccountField) {
  CusLoginInfo acc;
  std::memset(&acc, 0x5a, sizeof acc);
  SECMOLRA_SetLastError(-1, "abc", nullptr, &acc);
  EXPECT_STREQ(acc.ErrorMsg, "abc");
  for (std::size_t i = 3; i < sizeof acc.ErrorMsg; ++i) ASSERT_EQ(acc.ErrorMsg[i], 0) << i;
}

TEST(Setters, SetNodeRefusesNullAndAcceptsEmpty) {
  EXPECT_TRUE(SECMOLRA_SetNode("node-a"));
  EXPECT_FALSE(SECMOLRA_SetNode(nullptr));
  EXPECT_EQ(molra::Host().Node(), "node-a");
  EXPECT_TRUE(SECMOLRA_SetNode(""));
  EXPECT_EQ(molra::Host().Node(), "");
}

TEST(Setters, SetWTFSKeepsThePreviousMethodWhenTheTransportRefusesAndSetKelWriteLogForwards) {
  ASSERT_TRUE(SECMOLRA_Init());
  Sim::Get().Reset();
  EXPECT_TRUE(SECMOLRA_SetWTFS("32"));
  EXPECT_EQ(molra::Host().Wtfs(), "32");
  EXPECT_NE(Sim::Get().CallLog().find("Kel_SetDefaultInfo(,32,,)"), std::string::npos);
  Sim::Get().Fn<void (*)(bool)>("KelSim_SetDefaultInfoResult")(false);
  EXPECT_FALSE(SECMOLRA_SetWTFS("64"));
  EXPECT_EQ(molra::Host().Wtfs(), "32");
  Sim::Get().ClearCallLog();
  EXPECT_TRUE(SECMOLRA_SetKelWriteLog(false));
  EXPECT_EQ(Sim::Get().CallLog(), "Kel_WriteLog(0)\n");
  SECMOLRA_Exit();
}

TEST(Setters, SetWTFSBeforeInitIsRefusedWithoutCallingTheTransport) {
  EXPECT_FALSE(SECMOLRA_SetWTFS("32"));
  EXPECT_FALSE(SECMOLRA_SetKelWriteLog(true));
  EXPECT_EQ(molra::Host().Wtfs(), "");
}

static void Cb1(const char*, const char*, int32_t) {}

TEST(Setters, CallbackSettersStoreAndSwitchOff) {
  SECMOLRA_SetMsgCallback(Cb1);
  SECMOLRA_SetFuncCallback(Cb1);
  EXPECT_EQ(molra::Host().msg_callback.load(), &Cb1);
  EXPECT_EQ(molra::Host().func_callback.load(), &Cb1);
  SECMOLRA_SetMsgCallback(nullptr);
  EXPECT_EQ(molra::Host().msg_callback.load(), nullptr);
}
