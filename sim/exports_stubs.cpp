// Entry points the kit never calls: each records its call and returns the neutral value.
#include "kel_exports.h"

#pragma GCC diagnostic ignored "-Wunused-parameter"

// One stub a line.
// clang-format off
KEL_EXPORT bool Kel_AutoLoadOpenSSL(void) { sim::LogCall("Kel_AutoLoadOpenSSL"); return false; }
KEL_EXPORT void Kel_SetCharset(const char* charset) { sim::LogCall("Kel_SetCharset"); }
KEL_EXPORT void Kel_SetDefaultQYBM(const char* qybm) { sim::LogCall("Kel_SetDefaultQYBM"); }
KEL_EXPORT void Kel_SetProxy(kel::int32 type, const char* host, kel::int32 port, const char* user, const char* pwd) { sim::LogCall("Kel_SetProxy"); }
KEL_EXPORT void Kel_SetZipName(const char* name) { sim::LogCall("Kel_SetZipName"); }
KEL_EXPORT bool Kel_AddBackupSvrAddr(kel::int64 conn, const char* addr) { sim::LogCall("Kel_AddBackupSvrAddr"); return false; }
KEL_EXPORT bool Kel_CreateReq(kel::int64 session, const char* funcCode) { sim::LogCall("Kel_CreateReq"); return false; }
KEL_EXPORT bool Kel_Cancel(kel::int64 session) { sim::LogCall("Kel_Cancel"); return false; }
KEL_EXPORT bool Kel_AsyncRun(kel::int64 session) { sim::LogCall("Kel_AsyncRun"); return false; }
KEL_EXPORT kel::int64 Kel_GetPublishPacketId(kel::int64 session) { sim::LogCall("Kel_GetPublishPacketId"); return 0; }
KEL_EXPORT kel::int32 Kel_GetPublishType(kel::int64 session) { sim::LogCall("Kel_GetPublishType"); return 0; }
KEL_EXPORT bool Kel_Encode_Old(const char* khh, char* buf, kel::int32* len) { sim::LogCall("Kel_Encode_Old"); return false; }
KEL_EXPORT void Kel_SetSubsPacketId(kel::int64 session, kel::int64 id) { sim::LogCall("Kel_SetSubsPacketId"); }
KEL_EXPORT kel::int64 Kel_GetSubsPacketId(kel::int64 session) { sim::LogCall("Kel_GetSubsPacketId"); return 0; }
KEL_EXPORT bool Kel_SubscribeByToken(kel::int64 session, kel::int64 token, kel::int64* subscriptionId, kel::SubscribeFn fn, void* ctx) { sim::LogCall("Kel_SubscribeByToken"); return false; }
KEL_EXPORT bool Kel_SubscribeByCustomer(kel::int64 session, const char* khh, kel::int64* subscriptionId, kel::SubscribeFn fn, void* ctx) { sim::LogCall("Kel_SubscribeByCustomer"); return false; }
KEL_EXPORT bool Kel_UASubscribeByCustomer(kel::int64 session, const char* khh, kel::int64* subscriptionId, kel::SubscribeFn fn, void* ctx) { sim::LogCall("Kel_UASubscribeByCustomer"); return false; }
KEL_EXPORT bool Kel_UASubscribeByCustomer_RZRQ(kel::int64 session, const char* khh, kel::int64* subscriptionId, kel::SubscribeFn fn, void* ctx) { sim::LogCall("Kel_UASubscribeByCustomer_RZRQ"); return false; }
KEL_EXPORT bool Kel_UASubscribeByCustomer_SOP(kel::int64 session, const char* khh, kel::int64* subscriptionId, kel::SubscribeFn fn, void* ctx) { sim::LogCall("Kel_UASubscribeByCustomer_SOP"); return false; }
KEL_EXPORT bool Kel_SubscribeQuote(kel::int64 session, const char* codes, kel::int64* subscriptionId, kel::SubscribeFn fn, void* ctx) { sim::LogCall("Kel_SubscribeQuote"); return false; }
KEL_EXPORT void Kel_SetLogLevel(kel::int32 level) { sim::LogCall("Kel_SetLogLevel"); }
KEL_EXPORT void Kel_SetESB(kel::int64 session, bool on) { sim::LogCall("Kel_SetESB"); }
KEL_EXPORT void Kel_SetDebug(bool on) { sim::LogCall("Kel_SetDebug"); }
KEL_EXPORT void Kel_RegGlobalPublishFunc(kel::PublishFn fn, void* ctx) { sim::LogCall("Kel_RegGlobalPublishFunc"); }
KEL_EXPORT kel::int64 Kel_GetPacketId(kel::int64 session) { sim::LogCall("Kel_GetPacketId"); return 0; }
KEL_EXPORT void Kel_SetLevel(kel::int64 session, kel::int32 level) { sim::LogCall("Kel_SetLevel"); }
KEL_EXPORT void Kel_SetDataType(kel::int64 session, kel::int32 type) { sim::LogCall("Kel_SetDataType"); }
KEL_EXPORT void Kel_UsePool(bool on) { sim::LogCall("Kel_UsePool"); }
KEL_EXPORT bool Kel_UnRegisterSvc(const char* service) { sim::LogCall("Kel_UnRegisterSvc"); return false; }
KEL_EXPORT bool Kel_CreateAnswer(kel::int64 session, kel::int32 code, const char* msg) { sim::LogCall("Kel_CreateAnswer"); return false; }
KEL_EXPORT bool Kel_CreateAnswerMul(kel::int64 session, kel::int32 code, const char* msg, kel::int32 rows) { sim::LogCall("Kel_CreateAnswerMul"); return false; }
KEL_EXPORT bool Kel_CreateNextAnswer(kel::int64 session) { sim::LogCall("Kel_CreateNextAnswer"); return false; }
KEL_EXPORT bool Kel_CreateEndMark(kel::int64 session) { sim::LogCall("Kel_CreateEndMark"); return false; }
KEL_EXPORT void Kel_AddRefSession(kel::int64 session) { sim::LogCall("Kel_AddRefSession"); }
KEL_EXPORT void Kel_SetSessDataString(kel::int64 session, const char* data) { sim::LogCall("Kel_SetSessDataString"); }
KEL_EXPORT bool Kel_SetWriteString(kel::int64 session, const char* data) { sim::LogCall("Kel_SetWriteString"); return false; }
KEL_EXPORT const char* Kel_GetSessDataString(kel::int64 session) { sim::LogCall("Kel_GetSessDataString"); return nullptr; }
KEL_EXPORT bool Kel_GetSocketRawData(kel::int64 session, char* buf, kel::int32* len) { sim::LogCall("Kel_GetSocketRawData"); return false; }
KEL_EXPORT bool Kel_WriteSocketRawData(kel::int64 session, const char* data, kel::int32 len) { sim::LogCall("Kel_WriteSocketRawData"); return false; }
KEL_EXPORT void Kel_SetSessionWrited(kel::int64 session) { sim::LogCall("Kel_SetSessionWrited"); }
KEL_EXPORT bool Kel_SetSocketOpt(kel::int64 conn, kel::int32 option, kel::int32 value) { sim::LogCall("Kel_SetSocketOpt"); return false; }
KEL_EXPORT bool Kel_Publish(kel::int64 session) { sim::LogCall("Kel_Publish"); return false; }
KEL_EXPORT bool Kel_PublishEx(kel::int64 session, const char* condition) { sim::LogCall("Kel_PublishEx"); return false; }
KEL_EXPORT const char* Kel_GetAnsData(kel::int64 session, kel::int32* len) { sim::LogCall("Kel_GetAnsData"); return nullptr; }
#if !defined(KELSIM_OMIT_LAST)  // the variant used to test a transport lacking its last entry
KEL_EXPORT bool Kel_AnsIsMulti(kel::int64 session) { sim::LogCall("Kel_AnsIsMulti"); return false; }
#endif
// clang-format on
