// Names of the benchmarks: "<path>:<variant>". scripts/bench_table.py pairs each kit
// variant with its floor by these names.
#pragma once

namespace molra::bench {

constexpr const char* kEntrustLogOff = "entrust:kit_log_off";
constexpr const char* kEntrustLogOn = "entrust:kit_log_on";
constexpr const char* kEntrustFloor = "entrust:floor";
constexpr const char* kEntrustFloorChecked = "entrust:floor_with_connection_checks";
constexpr const char* kLoggerLine = "log_line:logger_only";
constexpr const char* kWithdrawLogOff = "withdraw:kit_log_off";
constexpr const char* kWithdrawLogOn = "withdraw:kit_log_on";
constexpr const char* kWithdrawFloor = "withdraw:floor";
constexpr const char* kFund1Kit = "fund_query_1:kit";
constexpr const char* kFund1Floor = "fund_query_1:floor";
constexpr const char* kFund1000Kit = "fund_query_1000:kit";
constexpr const char* kFund1000Floor = "fund_query_1000:floor";
constexpr const char* kPush402Kit = "push_402:kit";
constexpr const char* kPush402Floor = "push_402:floor";
constexpr const char* kPush415Kit = "push_415:kit";
constexpr const char* kPush415Floor = "push_415:floor";
constexpr const char* kReplyKit = "reply:kit";
constexpr const char* kReplyFloor = "reply:floor";
constexpr const char* kBatchKit = "batch_100:kit";
constexpr const char* kBatchFloor = "batch_100:floor";
constexpr const char* kThreadsKit = "entrust_threads:kit";
constexpr const char* kThreadsFloor = "entrust_threads:floor";
constexpr const char* kSendKit = "send:kit";
constexpr const char* kSendFloor = "send:floor";
constexpr const char* kAllocEntrustKit = "allocations:entrust_kit";
constexpr const char* kAllocEntrustFloor = "allocations:entrust_floor";
constexpr const char* kAllocSendKit = "allocations:send_kit";
constexpr const char* kAllocSendFloor = "allocations:send_floor";
constexpr const char* kMemoryKit = "memory:kit";
constexpr const char* kMemoryFloor = "memory:floor";

void RegisterOrderBenchmarks();
void RegisterQueryBenchmarks();
void RegisterPushBenchmarks();
void RegisterSendBenchmarks();

}  // namespace molra::bench
