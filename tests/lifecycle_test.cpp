// Start-up and tear-down of the kit, and the binding of the transport. Each case runs in a
// process of its own.
#include <gtest/gtest.h>

#include <cstring>

#include "comm/conn_pool.h"
#include "comm/kel_api.h"
#include "core/log.h"
#include "secmolra.h"
#include "support/test_support.h"

using namespace molra::test;

namespace {

std::string TodayLog(const std::string& dir) {
  return ReadFile(dir + "/molra_" + Today() + ".log");
}

void FlushLog() {
  if (auto* l = molra::g_logger.load()) l->flush();
}

}  // namespace

TEST(Lifecycle, InitWithoutTransportFailsWithStagedRecordAndLogsTheBinderError) {
  std::string logdir = MakeTempDir();
  ChangeDir(MakeTempDir());                      // no kelapi50.dll here
  WriteFile("kelapi.dll", "not the transport");  // a differently named file is not tried
  SECMOLRA_SetLogPath(logdir.c_str());
  EXPECT_FALSE(SECMOLRA_Init());
  std::string msg = "x";
  // The failure path replaces the binder's -200 with the staged record: code 0, empty.
  EXPECT_EQ(LastError(&msg), 0);
  EXPECT_EQ(msg, "");
  FlushLog();
  EXPECT_NE(TodayLog(logdir).find(Gbk("加载kelapi.dll失败，错误码：")), std::string::npos);
  // Not initialised: a retry goes through start-up again and fails again.
  EXPECT_FALSE(SECMOLRA_Init());
}

TEST(Lifecycle, TransportLackingItsLastEntryIsRefusedWithEveryOtherEntryBound) {
  std::string logdir = MakeTempDir();
  ChangeDir(BuildDir() + "/variants/missing_last");
  SECMOLRA_SetLogPath(logdir.c_str());
  EXPECT_FALSE(SECMOLRA_Init());
  EXPECT_EQ(kel::api.Kel_AnsIsMulti, nullptr);
  const void* const* slots = reinterpret_cast<const void* const*>(&kel::api);
  for (int i = 0; i < kel::kEntryPointCount - 1; ++i) {
    EXPECT_NE(slots[i], nullptr) << kel::kEntryPointNames[i];
  }
  FlushLog();
  EXPECT_NE(TodayLog(logdir).find(Gbk("加载接口Kel_AnsIsMulti失败，错误码：")), std::string::npos);
}

TEST(Lifecycle, BindsAll123EntryPointsInTableOrder) {
  ASSERT_TRUE(SECMOLRA_Init());
  static_assert(sizeof(kel::Api) == kel::kEntryPointCount * sizeof(void*), "one slot per entry");
  const void* const* slots = reinterpret_cast<const void* const*>(&kel::api);
  for (int i = 0; i < kel::kEntryPointCount; ++i) EXPECT_NE(slots[i], nullptr) << i;
#if defined(_WIN32)
  EXPECT_STREQ(kel::kEntryPointNames[0], "?Kel_GetReqBody@@YA_N_JAEAPEADAEAH@Z");
  EXPECT_STREQ(kel::kEntryPointNames[1], "?Kel_SetWriteData@@YA_N_JPEBDH@Z");
#else
  EXPECT_STREQ(kel::kEntryPointNames[0], "_Z14Kel_GetReqBodylRPcRi");
  EXPECT_STREQ(kel::kEntryPointNames[1], "_Z16Kel_SetWriteDatalPKci");
#endif
  EXPECT_STREQ(kel::kEntryPointNames[2], "Kel_AutoLoadOpenSSL");
  EXPECT_STREQ(kel::kEntryPointNames[90], "Kel_SetStructData");
  EXPECT_STREQ(kel::kEntryPointNames[122], "Kel_AnsIsMulti");
  SECMOLRA_Exit();
}

TEST(Lifecycle, InitStartsTheTransportInOrder) {
  Sim::Get().Reset();
  ASSERT_TRUE(SECMOLRA_Init());
  EXPECT_EQ(Sim::Get().CallLog(),
            "Kel_Initialize()\nKel_SetDefaultSystemId(4)\nKel_SetDefaultNodeId(0)\n"
            "Kel_SetLogPath()\n");
  EXPECT_NE(KitPool(), nullptr);
  SECMOLRA_Exit();
}

TEST(Lifecycle, SecondInitRepeatsNothingAndInitAfterExitLeavesTheTransportTornDown) {
  ASSERT_TRUE(SECMOLRA_Init());
  molra::ConnPool* pool = KitPool();
  Sim::Get().ClearCallLog();
  EXPECT_TRUE(SECMOLRA_Init());
  EXPECT_EQ(Sim::Get().CallLog(), "");
  EXPECT_EQ(KitPool(), pool);
  EXPECT_TRUE(SECMOLRA_Exit());
  EXPECT_NE(Sim::Get().CallLog().find("Kel_Uninitialize()"), std::string::npos);
  EXPECT_EQ(KitPool(), nullptr);
  Sim::Get().ClearCallLog();
  EXPECT_TRUE(SECMOLRA_Init());
  EXPECT_EQ(Sim::Get().CallLog(), "");
  EXPECT_EQ(KitPool(), nullptr);
  EXPECT_TRUE(SECMOLRA_Exit());  // nothing left to tear down
  EXPECT_EQ(Sim::Get().CallLog(), "");
}

TEST(Lifecycle, LogPathIsPassedToTheTransportAsGiven) {
  std::string logdir = MakeTempDir();
  SECMOLRA_SetLogPath(logdir.c_str());
  Sim::Get().Reset();
  ASSERT_TRUE(SECMOLRA_Init());
  EXPECT_NE(Sim::Get().CallLog().find("Kel_SetLogPath(" + logdir + ")"), std::string::npos);
  SECMOLRA_Exit();
}
