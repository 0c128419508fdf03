// Entry points of the simulated transport that have no behaviour of their own yet: each
// records its call and returns the neutral value.
#include "sim_core.h"

#pragma GCC diagnostic ignored "-Wunused-parameter"

KEL_CXX_EXPORT bool Kel_GetReqBody(kel::int64 session, char*& body, int& len) { sim::Trace("Kel_GetReqBody"); return false; }
KEL_CXX_EXPORT bool Kel_SetWriteData(kel::int64 session, const char* data, int len) { sim::Trace("Kel_SetWriteData"); return false; }
KEL_EXPORT bool Kel_AutoLoadOpenSSL(void) { sim::Trace("Kel_AutoLoadOpenSSL"); return false; }
KEL_EXPORT void Kel_SetCharset(const char* charset) { sim::Trace("Kel_SetCharset"); }
KEL_EXPORT void Kel_SetAppInfo(const char* app, const char* extra) { sim::Trace("Kel_SetAppInfo"); }
KEL_EXPORT void Kel_SetDefaultQYBM(const char* qybm) { sim::Trace("Kel_SetDefaultQYBM"); }
KEL_EXPORT void Kel_SetProxy(kel::int32 type, const char* host, kel::int32 port, const char* user,                             const char* pwd) { sim::Trace("Kel_SetProxy"); }
KEL_EXPORT void Kel_SetCertFile(const char* file, const char* pwd, const char* a, const char* b,                                   kel::int32 flag) { sim::Trace("Kel_SetCertFile"); }
KEL_EXPORT void Kel_SetZipName(const char* name) { sim::Trace("Kel_SetZipName"); }
KEL_EXPORT kel::int64 Kel_Connect(const char* addr, const char* user, const char* pwd,                                                kel::int32 timeoutSeconds) { sim::Trace("Kel_Connect"); return 0; }
KEL_EXPORT bool Kel_AddBackupSvrAddr(kel::int64 conn, const char* addr) { sim::Trace("Kel_AddBackupSvrAddr"); return false; }
KEL_EXPORT void Kel_Close(kel::int64 conn) { sim::Trace("Kel_Close"); }
KEL_EXPORT kel::int64 Kel_AllocateSession(kel::int64 conn) { sim::Trace("Kel_AllocateSession"); return 0; }
KEL_EXPORT void Kel_ReleaseSession(kel::int64 session) { sim::Trace("Kel_ReleaseSession"); }
KEL_EXPORT void Kel_SetTimeOut(kel::int64 session, kel::int32 seconds) { sim::Trace("Kel_SetTimeOut"); }
KEL_EXPORT void Kel_SetWTFS(kel::int64 session, const char* wtfs) { sim::Trace("Kel_SetWTFS"); }
KEL_EXPORT void Kel_SetFBDM(kel::int64 session, const char* fbdm) { sim::Trace("Kel_SetFBDM"); }
KEL_EXPORT void Kel_SetDestFBDM(kel::int64 session, const char* fbdm) { sim::Trace("Kel_SetDestFBDM"); }
KEL_EXPORT void Kel_SetNode(kel::int64 session, const char* node) { sim::Trace("Kel_SetNode"); }
KEL_EXPORT void Kel_SetGYDM(kel::int64 session, const char* gydm) { sim::Trace("Kel_SetGYDM"); }
KEL_EXPORT void Kel_SetUserHeadInfo(kel::int64 session, const char* info) { sim::Trace("Kel_SetUserHeadInfo"); }
KEL_EXPORT bool Kel_CreateHead(kel::int64 session, const char* funcCode) { sim::Trace("Kel_CreateHead"); return false; }
KEL_EXPORT bool Kel_CreateReq(kel::int64 session, const char* funcCode) { sim::Trace("Kel_CreateReq"); return false; }
KEL_EXPORT bool Kel_SetItem(kel::int64 session, kel::int32 fieldId, const char* value) { sim::Trace("Kel_SetItem"); return false; }
KEL_EXPORT bool Kel_SetString(kel::int64 session, kel::int32 fieldId, const char* value,                                         kel::int32 len) { sim::Trace("Kel_SetString"); return false; }
KEL_EXPORT bool Kel_SetInt(kel::int64 session, kel::int32 fieldId, kel::int32 value) { sim::Trace("Kel_SetInt"); return false; }
KEL_EXPORT bool Kel_SetInt64(kel::int64 session, kel::int32 fieldId, kel::int64 value) { sim::Trace("Kel_SetInt64"); return false; }
KEL_EXPORT bool Kel_SetLong(kel::int64 session, kel::int32 fieldId, kel::int64 value) { sim::Trace("Kel_SetLong"); return false; }
KEL_EXPORT bool Kel_SetDouble(kel::int64 session, kel::int32 fieldId, double value,                                              kel::int32 precision) { sim::Trace("Kel_SetDouble"); return false; }
KEL_EXPORT bool Kel_SetItemBuf(kel::int64 session, kel::int32 fieldId, const char* data,                                          kel::int32 len) { sim::Trace("Kel_SetItemBuf"); return false; }
KEL_EXPORT bool Kel_Run(kel::int64 session) { sim::Trace("Kel_Run"); return false; }
KEL_EXPORT bool Kel_Cancel(kel::int64 session) { sim::Trace("Kel_Cancel"); return false; }
KEL_EXPORT bool Kel_AsyncRun(kel::int64 session) { sim::Trace("Kel_AsyncRun"); return false; }
KEL_EXPORT bool Kel_IsReplyed(kel::int64 session) { sim::Trace("Kel_IsReplyed"); return false; }
KEL_EXPORT kel::int32 Kel_GetCode(kel::int64 session) { sim::Trace("Kel_GetCode"); return 0; }
KEL_EXPORT const char* Kel_GetErrMsg(kel::int64 session, char* buf, kel::int32* len) { sim::Trace("Kel_GetErrMsg"); return nullptr; }
KEL_EXPORT kel::int32 Kel_GetCount(kel::int64 session) { sim::Trace("Kel_GetCount"); return 0; }
KEL_EXPORT bool Kel_HaveItem(kel::int64 session, kel::int32 fieldId, kel::int32 row) { sim::Trace("Kel_HaveItem"); return false; }
KEL_EXPORT const char* Kel_GetItem(kel::int64 session, kel::int32 fieldId, char* buf,                                                 kel::int32* len, kel::int32 row) { sim::Trace("Kel_GetItem"); return nullptr; }
KEL_EXPORT kel::int64 Kel_GetInt64(kel::int64 session, kel::int32 fieldId, kel::int32 row) { sim::Trace("Kel_GetInt64"); return 0; }
KEL_EXPORT kel::int64 Kel_GetLong(kel::int64 session, kel::int32 fieldId, kel::int32 row) { sim::Trace("Kel_GetLong"); return 0; }
KEL_EXPORT double Kel_GetDouble(kel::int64 session, kel::int32 fieldId, kel::int32 row) { sim::Trace("Kel_GetDouble"); return 0; }
KEL_EXPORT bool Kel_GetItemBuf(kel::int64 session, kel::int32 fieldId, char* buf, kel::int32* len,                                kel::int32 row) { sim::Trace("Kel_GetItemBuf"); return false; }
KEL_EXPORT kel::int64 Kel_GetPublishPacketId(kel::int64 session) { sim::Trace("Kel_GetPublishPacketId"); return 0; }
KEL_EXPORT kel::int32 Kel_GetPublishType(kel::int64 session) { sim::Trace("Kel_GetPublishType"); return 0; }
KEL_EXPORT bool Kel_UniEncode(const char* khh, char* buf, kel::int32* len) { sim::Trace("Kel_UniEncode"); return false; }
KEL_EXPORT bool Kel_UniEncode3rd(const char* khh, char* buf, kel::int32* len) { sim::Trace("Kel_UniEncode3rd"); return false; }
KEL_EXPORT bool Kel_Encode_Old(const char* khh, char* buf, kel::int32* len) { sim::Trace("Kel_Encode_Old"); return false; }
KEL_EXPORT kel::int64 Kel_GetToken(kel::int64 session) { sim::Trace("Kel_GetToken"); return 0; }
KEL_EXPORT void Kel_SetToken(kel::int64 session, kel::int64 token) { sim::Trace("Kel_SetToken"); }
KEL_EXPORT bool Kel_Write(kel::int64 session) { sim::Trace("Kel_Write"); return false; }
KEL_EXPORT void Kel_SetAutoReconnect(kel::int64 conn, bool on) { sim::Trace("Kel_SetAutoReconnect"); }
KEL_EXPORT bool Kel_GetAutoReconnect(kel::int64 conn) { sim::Trace("Kel_GetAutoReconnect"); return false; }
KEL_EXPORT bool Kel_IsConnect(kel::int64 conn) { sim::Trace("Kel_IsConnect"); return false; }
KEL_EXPORT const char* Kel_GetLastErrMsg(char* buf, kel::int32* len) { sim::Trace("Kel_GetLastErrMsg"); return nullptr; }
KEL_EXPORT void Kel_SetSubsPacketId(kel::int64 session, kel::int64 id) { sim::Trace("Kel_SetSubsPacketId"); }
KEL_EXPORT kel::int64 Kel_GetSubsPacketId(kel::int64 session) { sim::Trace("Kel_GetSubsPacketId"); return 0; }
KEL_EXPORT bool Kel_SubscribeByToken(kel::int64 session, kel::int64 token, kel::int64* subscriptionId,                                   kel::SubscribeFn fn, void* ctx) { sim::Trace("Kel_SubscribeByToken"); return false; }
KEL_EXPORT bool Kel_SubscribeByCustomer(kel::int64 session, const char* khh,                                                               kel::int64* subscriptionId, kel::SubscribeFn fn, void* ctx) { sim::Trace("Kel_SubscribeByCustomer"); return false; }
KEL_EXPORT bool Kel_UASubscribeByCustomer(kel::int64 session, const char* khh,                                                               kel::int64* subscriptionId, kel::SubscribeFn fn, void* ctx) { sim::Trace("Kel_UASubscribeByCustomer"); return false; }
KEL_EXPORT bool Kel_UASubscribeByCustomer_RZRQ(kel::int64 session, const char* khh,                                                               kel::int64* subscriptionId, kel::SubscribeFn fn,                                                    void* ctx) { sim::Trace("Kel_UASubscribeByCustomer_RZRQ"); return false; }
KEL_EXPORT bool Kel_UASubscribeByCustomer_SOP(kel::int64 session, const char* khh,                                                               kel::int64* subscriptionId, kel::SubscribeFn fn,                                                    void* ctx) { sim::Trace("Kel_UASubscribeByCustomer_SOP"); return false; }
KEL_EXPORT bool Kel_SubscribeQuote(kel::int64 session, const char* codes, kel::int64* subscriptionId,                                 kel::SubscribeFn fn, void* ctx) { sim::Trace("Kel_SubscribeQuote"); return false; }
KEL_EXPORT bool Kel_Unsubscribe(kel::int64 session, kel::int64 subscriptionId) { sim::Trace("Kel_Unsubscribe"); return false; }
KEL_EXPORT bool Kel_RegReplyCallFunc(kel::int64 session, kel::ReplyFn fn) { sim::Trace("Kel_RegReplyCallFunc"); return false; }
KEL_EXPORT void Kel_SetSessData(kel::int64 session, kel::int64 data) { sim::Trace("Kel_SetSessData"); }
KEL_EXPORT kel::int64 Kel_GetSessData(kel::int64 session) { sim::Trace("Kel_GetSessData"); return 0; }
KEL_EXPORT void Kel_SetLogLevel(kel::int32 level) { sim::Trace("Kel_SetLogLevel"); }
KEL_EXPORT kel::int32 Kel_GetColumnCount(kel::int64 session) { sim::Trace("Kel_GetColumnCount"); return 0; }
KEL_EXPORT const char* Kel_GetValWithIdByIndex(kel::int64 session, kel::int32 index,                                                              kel::int32* fieldId, char* buf, kel::int32* len,                                                    kel::int32 row) { sim::Trace("Kel_GetValWithIdByIndex"); return nullptr; }
KEL_EXPORT bool Kel_GetBody(kel::int64 session, char* buf, kel::int32* len) { sim::Trace("Kel_GetBody"); return false; }
KEL_EXPORT void Kel_SetSystemId(kel::int64 session, kel::int32 systemId) { sim::Trace("Kel_SetSystemId"); }
KEL_EXPORT void Kel_SetNodeId(kel::int64 session, kel::int32 nodeId) { sim::Trace("Kel_SetNodeId"); }
KEL_EXPORT void Kel_SetESB(kel::int64 session, bool on) { sim::Trace("Kel_SetESB"); }
KEL_EXPORT void Kel_SetDebug(bool on) { sim::Trace("Kel_SetDebug"); }
KEL_EXPORT kel::int32 Kel_GetSystemId(kel::int64 session) { sim::Trace("Kel_GetSystemId"); return 0; }
KEL_EXPORT kel::int32 Kel_GetNodeId(kel::int64 session) { sim::Trace("Kel_GetNodeId"); return 0; }
KEL_EXPORT kel::int32 Kel_GetDefaultSystemId(void) { sim::Trace("Kel_GetDefaultSystemId"); return 0; }
KEL_EXPORT kel::int32 Kel_GetDefaultNodeId(void) { sim::Trace("Kel_GetDefaultNodeId"); return 0; }
KEL_EXPORT kel::int64 Kel_GetLastRecvTime(kel::int64 conn) { sim::Trace("Kel_GetLastRecvTime"); return 0; }
KEL_EXPORT kel::int64 Kel_GetLastSendTime(kel::int64 conn) { sim::Trace("Kel_GetLastSendTime"); return 0; }
KEL_EXPORT const char* Kel_GetConnectIp(kel::int64 conn, char* buf, kel::int32* len) { sim::Trace("Kel_GetConnectIp"); return nullptr; }
KEL_EXPORT bool Kel_SetCustomerForBindThread(kel::int64 conn, const char* khh) { sim::Trace("Kel_SetCustomerForBindThread"); return false; }
KEL_EXPORT bool Kel_SetStructData(kel::int64 session, const char* block, kel::int32 len) { sim::Trace("Kel_SetStructData"); return false; }
KEL_EXPORT bool Kel_IsStruct(kel::int64 session, kel::int32 index) { sim::Trace("Kel_IsStruct"); return false; }
KEL_EXPORT bool Kel_GetStructData(kel::int64 session, char* buf, kel::int32* len, kel::int32 index) { sim::Trace("Kel_GetStructData"); return false; }
KEL_EXPORT const char* Kel_GetStructDataEx(kel::int64 session, kel::int32* len, kel::int32 index) { sim::Trace("Kel_GetStructDataEx"); return nullptr; }
KEL_EXPORT const char* Kel_GetReqStructData(kel::int64 session, kel::int32* len) { sim::Trace("Kel_GetReqStructData"); return nullptr; }
KEL_EXPORT void Kel_RegGlobalPublishFunc(kel::PublishFn fn, void* ctx) { sim::Trace("Kel_RegGlobalPublishFunc"); }
KEL_EXPORT void Kel_RegGlobalStructPublishFunc(kel::StructPublishFn fn, void* ctx) { sim::Trace("Kel_RegGlobalStructPublishFunc"); }
KEL_EXPORT kel::int64 Kel_GetPacketId(kel::int64 session) { sim::Trace("Kel_GetPacketId"); return 0; }
KEL_EXPORT void Kel_SetConnEvent(kel::int64 conn, kel::ConnEventFn fn, void* ctx) { sim::Trace("Kel_SetConnEvent"); }
KEL_EXPORT bool Kel_SetSysInfo(kel::int64 session, kel::int32 kind, kel::int32 fieldId) { sim::Trace("Kel_SetSysInfo"); return false; }
KEL_EXPORT void Kel_SetLevel(kel::int64 session, kel::int32 level) { sim::Trace("Kel_SetLevel"); }
KEL_EXPORT void Kel_SetDataType(kel::int64 session, kel::int32 type) { sim::Trace("Kel_SetDataType"); }
KEL_EXPORT void Kel_UsePool(bool on) { sim::Trace("Kel_UsePool"); }
KEL_EXPORT bool Kel_SetParamEx(const char* name, const char* value) { sim::Trace("Kel_SetParamEx"); return false; }
KEL_EXPORT bool Kel_UnRegisterSvc(const char* service) { sim::Trace("Kel_UnRegisterSvc"); return false; }
KEL_EXPORT bool Kel_CreateAnswer(kel::int64 session, kel::int32 code, const char* msg) { sim::Trace("Kel_CreateAnswer"); return false; }
KEL_EXPORT bool Kel_CreateAnswerMul(kel::int64 session, kel::int32 code, const char* msg,                                              kel::int32 rows) { sim::Trace("Kel_CreateAnswerMul"); return false; }
KEL_EXPORT bool Kel_CreateNextAnswer(kel::int64 session) { sim::Trace("Kel_CreateNextAnswer"); return false; }
KEL_EXPORT bool Kel_CreateEndMark(kel::int64 session) { sim::Trace("Kel_CreateEndMark"); return false; }
KEL_EXPORT void Kel_AddRefSession(kel::int64 session) { sim::Trace("Kel_AddRefSession"); }
KEL_EXPORT void Kel_SetSessDataString(kel::int64 session, const char* data) { sim::Trace("Kel_SetSessDataString"); }
KEL_EXPORT bool Kel_SetWriteString(kel::int64 session, const char* data) { sim::Trace("Kel_SetWriteString"); return false; }
KEL_EXPORT const char* Kel_GetSessDataString(kel::int64 session) { sim::Trace("Kel_GetSessDataString"); return nullptr; }
KEL_EXPORT bool Kel_GetSocketRawData(kel::int64 session, char* buf, kel::int32* len) { sim::Trace("Kel_GetSocketRawData"); return false; }
KEL_EXPORT bool Kel_WriteSocketRawData(kel::int64 session, const char* data, kel::int32 len) { sim::Trace("Kel_WriteSocketRawData"); return false; }
KEL_EXPORT void Kel_SetSessionWrited(kel::int64 session) { sim::Trace("Kel_SetSessionWrited"); }
KEL_EXPORT bool Kel_SetSubsCondi(kel::int64 session, const char* condition) { sim::Trace("Kel_SetSubsCondi"); return false; }
KEL_EXPORT bool Kel_Subscribe(kel::int64 session, kel::int64* subscriptionId, kel::SubscribeFn fn,                               void* ctx) { sim::Trace("Kel_Subscribe"); return false; }
KEL_EXPORT bool Kel_SetSocketOpt(kel::int64 conn, kel::int32 option, kel::int32 value) { sim::Trace("Kel_SetSocketOpt"); return false; }
KEL_EXPORT bool Kel_Publish(kel::int64 session) { sim::Trace("Kel_Publish"); return false; }
KEL_EXPORT bool Kel_PublishEx(kel::int64 session, const char* condition) { sim::Trace("Kel_PublishEx"); return false; }
KEL_EXPORT const char* Kel_GetAnsData(kel::int64 session, kel::int32* len) { sim::Trace("Kel_GetAnsData"); return nullptr; }
#if !defined(KELSIM_OMIT_LAST)  // the variant used to test a transport lacking its last entry
KEL_EXPORT bool Kel_AnsIsMulti(kel::int64 session) { sim::Trace("Kel_AnsIsMulti"); return false; }
#endif
