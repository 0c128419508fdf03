// Handlers of trade-message pushes (confirmations and match reports), called on transport
// threads, and the decoding of pushed records into the message callback's JSON texts.
#pragma once

#include <cstdint>
#include <string>

#include "comm/kel_abi.h"

namespace molra {

// Global structured publish handler (StructPushMsg on): registered with
// Kel_RegGlobalStructPublishFunc, with the kit's PushSettings as ctx.
void ScStructMsgProc(void* ctx, kel::int32 func, kel::int32 len, const char* data);
// Per-subscription handlers (StructPushMsg off): passed to Kel_Subscribe.
bool ScOrderMsgProcess(void* ctx, kel::int64 session);
bool ScReportMsgProcess(void* ctx, kel::int64 session);

// Message types of the message callback, also "TYPE" inside the text.
constexpr int kPushConfirm = 8;     // order confirmation
constexpr int kPushWithdrawal = 9;  // confirmation of a withdrawal (CXBZ "W")
constexpr int kPushMatch = 10;      // match report
constexpr int kPushRefused = 11;    // refused declaration (SBJG 3 or 9)

// Record sizes of the two push layouts.
constexpr int kConfirmRecordLen = 402;
constexpr int kStructPushRecordLen = 415;

// The JSON text of one push: "TYPE", "SYS_TYPE", the record's members, "PARSE_COST".
// `structured` selects the 415-byte layout. The record must hold the layout's full length.
std::string DecodePush(const char* record, bool structured, int type);
// The type of a confirmation: 9 withdrawal ("W"), 11 refused (SBJG 3 or 9), else 8.
int ConfirmType(const char* record, bool structured);

}  // namespace molra
