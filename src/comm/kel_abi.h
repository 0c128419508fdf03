// The transport library's binary interface: every entry point that "./kelapi50.dll"
// must export, in binding order, with its signature. The kit's binder and the simulated
// transport both expand KEL_ENTRY_POINTS, so the two can never disagree on a signature
// or on the order.
#pragma once

#include <cstdint>

namespace kel {

using int64 = std::int64_t;
using int32 = std::int32_t;

using ConnEventFn = void (*)(int64 conn, int32 event, void* ctx);
using ReplyFn = bool (*)(int64 session);
using SubscribeFn = bool (*)(void* ctx, int64 session);
using StructPublishFn = void (*)(void* ctx, int32 func, int32 len, const char* data);
using PublishFn = void (*)(void* ctx, int64 session);

}  // namespace kel

// X(name, return type, parameter list). Entries 1 and 2 are free C++ functions looked up
// by their decorated names (see KEL_DECORATED_NAMES); all others are plain C exports.
// clang-format off
#define KEL_ENTRY_POINTS(X)                                                                        \
  X(Kel_GetReqBody, bool, (kel::int64 session, char*& body, int& len))                            \
  X(Kel_SetWriteData, bool, (kel::int64 session, const char* data, int len))                      \
  X(Kel_AutoLoadOpenSSL, bool, (void))                                                             \
  X(Kel_Initialize, bool, (void))                                                                  \
  X(Kel_SetCharset, void, (const char* charset))                                                   \
  X(Kel_Uninitialize, void, (void))                                                                \
  X(Kel_SetAppInfo, void, (const char* app, const char* extra))                                    \
  X(Kel_SetDefaultInfo, bool, (const char* a, const char* wtfs, const char* c, const char* d))     \
  X(Kel_SetDefaultQYBM, void, (const char* qybm))                                                  \
  X(Kel_SetProxy, void, (kel::int32 type, const char* host, kel::int32 port, const char* user,   \
                         const char* pwd))                                                         \
  X(Kel_SetCertFile, void, (const char* file, const char* pwd, const char* a, const char* b,      \
                            kel::int32 flag))                                                      \
  X(Kel_SetZipName, void, (const char* name))                                                      \
  X(Kel_Connect, kel::int64, (const char* addr, const char* user, const char* pwd,                 \
                              kel::int32 timeoutSeconds))                                          \
  X(Kel_AddBackupSvrAddr, bool, (kel::int64 conn, const char* addr))                               \
  X(Kel_Close, void, (kel::int64 conn))                                                            \
  X(Kel_AllocateSession, kel::int64, (kel::int64 conn))                                            \
  X(Kel_ReleaseSession, void, (kel::int64 session))                                                \
  X(Kel_SetTimeOut, void, (kel::int64 session, kel::int32 seconds))                                \
  X(Kel_SetWTFS, void, (kel::int64 session, const char* wtfs))                                     \
  X(Kel_SetFBDM, void, (kel::int64 session, const char* fbdm))                                     \
  X(Kel_SetDestFBDM, void, (kel::int64 session, const char* fbdm))                                 \
  X(Kel_SetNode, void, (kel::int64 session, const char* node))                                     \
  X(Kel_SetGYDM, void, (kel::int64 session, const char* gydm))                                     \
  X(Kel_SetUserHeadInfo, void, (kel::int64 session, const char* info))                             \
  X(Kel_CreateHead, bool, (kel::int64 session, const char* funcCode))                              \
  X(Kel_CreateReq, bool, (kel::int64 session, const char* funcCode))                               \
  X(Kel_SetItem, bool, (kel::int64 session, kel::int32 fieldId, const char* value))                \
  X(Kel_SetString, bool, (kel::int64 session, kel::int32 fieldId, const char* value,              \
                          kel::int32 len))                                                         \
  X(Kel_SetInt, bool, (kel::int64 session, kel::int32 fieldId, kel::int32 value))                  \
  X(Kel_SetInt64, bool, (kel::int64 session, kel::int32 fieldId, kel::int64 value))                \
  X(Kel_SetLong, bool, (kel::int64 session, kel::int32 fieldId, kel::int64 value))                 \
  X(Kel_SetDouble, bool, (kel::int64 session, kel::int32 fieldId, double value,                   \
                          kel::int32 precision))                                                   \
  X(Kel_SetItemBuf, bool, (kel::int64 session, kel::int32 fieldId, const char* data,              \
                           kel::int32 len))                                                        \
  X(Kel_Run, bool, (kel::int64 session))                                                           \
  X(Kel_Cancel, bool, (kel::int64 session))                                                        \
  X(Kel_AsyncRun, bool, (kel::int64 session))                                                      \
  X(Kel_IsReplyed, bool, (kel::int64 session))                                                     \
  X(Kel_GetCode, kel::int32, (kel::int64 session))                                                 \
  X(Kel_GetErrMsg, const char*, (kel::int64 session, char* buf, kel::int32* len))                  \
  X(Kel_GetCount, kel::int32, (kel::int64 session))                                                \
  X(Kel_HaveItem, bool, (kel::int64 session, kel::int32 fieldId, kel::int32 row))                  \
  X(Kel_GetItem, const char*, (kel::int64 session, kel::int32 fieldId, char* buf,                 \
                               kel::int32* len, kel::int32 row))                                   \
  X(Kel_GetInt64, kel::int64, (kel::int64 session, kel::int32 fieldId, kel::int32 row))            \
  X(Kel_GetLong, kel::int64, (kel::int64 session, kel::int32 fieldId, kel::int32 row))             \
  X(Kel_GetDouble, double, (kel::int64 session, kel::int32 fieldId, kel::int32 row))               \
  X(Kel_GetItemBuf, bool, (kel::int64 session, kel::int32 fieldId, char* buf, kel::int32* len,    \
                           kel::int32 row))                                                        \
  X(Kel_GetPublishPacketId, kel::int64, (kel::int64 session))                                      \
  X(Kel_GetPublishType, kel::int32, (kel::int64 session))                                          \
  X(Kel_UniEncode, bool, (const char* khh, char* buf, kel::int32* len))                            \
  X(Kel_UniEncode3rd, bool, (const char* khh, char* buf, kel::int32* len))                         \
  X(Kel_Encode_Old, bool, (const char* khh, char* buf, kel::int32* len))                           \
  X(Kel_GetToken, kel::int64, (kel::int64 session))                                                \
  X(Kel_SetToken, void, (kel::int64 session, kel::int64 token))                                    \
  X(Kel_WriteLog, bool, (bool enable))                                                             \
  X(Kel_Write, bool, (kel::int64 session))                                                         \
  X(Kel_SetAutoReconnect, void, (kel::int64 conn, bool on))                                        \
  X(Kel_GetAutoReconnect, bool, (kel::int64 conn))                                                 \
  X(Kel_IsConnect, bool, (kel::int64 conn))                                                        \
  X(Kel_GetLastErrMsg, const char*, (char* buf, kel::int32* len))                                  \
  X(Kel_SetSubsPacketId, void, (kel::int64 session, kel::int64 id))                                \
  X(Kel_GetSubsPacketId, kel::int64, (kel::int64 session))                                         \
  X(Kel_SubscribeByToken, bool, (kel::int64 session, kel::int64 token, kel::int64* subscriptionId, \
                                 kel::SubscribeFn fn, void* ctx))                                  \
  X(Kel_SubscribeByCustomer, bool, (kel::int64 session, const char* khh,                          \
                                    kel::int64* subscriptionId, kel::SubscribeFn fn, void* ctx))   \
  X(Kel_UASubscribeByCustomer, bool, (kel::int64 session, const char* khh,                        \
                                      kel::int64* subscriptionId, kel::SubscribeFn fn, void* ctx)) \
  X(Kel_UASubscribeByCustomer_RZRQ, bool, (kel::int64 session, const char* khh,                   \
                                           kel::int64* subscriptionId, kel::SubscribeFn fn,        \
                                           void* ctx))                                             \
  X(Kel_UASubscribeByCustomer_SOP, bool, (kel::int64 session, const char* khh,                    \
                                          kel::int64* subscriptionId, kel::SubscribeFn fn,         \
                                          void* ctx))                                              \
  X(Kel_SubscribeQuote, bool, (kel::int64 session, const char* codes, kel::int64* subscriptionId, \
                               kel::SubscribeFn fn, void* ctx))                                    \
  X(Kel_Unsubscribe, bool, (kel::int64 session, kel::int64 subscriptionId))                        \
  X(Kel_RegReplyCallFunc, bool, (kel::int64 session, kel::ReplyFn fn))                             \
  X(Kel_SetSessData, void, (kel::int64 session, kel::int64 data))                                  \
  X(Kel_GetSessData, kel::int64, (kel::int64 session))                                             \
  X(Kel_SetLogPath, void, (const char* dir))                                                       \
  X(Kel_SetLogLevel, void, (kel::int32 level))                                                     \
  X(Kel_GetColumnCount, kel::int32, (kel::int64 session))                                          \
  X(Kel_GetValWithIdByIndex, const char*, (kel::int64 session, kel::int32 index,                  \
                                           kel::int32* fieldId, char* buf, kel::int32* len,        \
                                           kel::int32 row))                                        \
  X(Kel_GetBody, bool, (kel::int64 session, char* buf, kel::int32* len))                           \
  X(Kel_SetSystemId, void, (kel::int64 session, kel::int32 systemId))                              \
  X(Kel_SetNodeId, void, (kel::int64 session, kel::int32 nodeId))                                  \
  X(Kel_SetESB, void, (kel::int64 session, bool on))                                               \
  X(Kel_SetDebug, void, (bool on))                                                                 \
  X(Kel_GetSystemId, kel::int32, (kel::int64 session))                                             \
  X(Kel_GetNodeId, kel::int32, (kel::int64 session))                                               \
  X(Kel_SetDefaultSystemId, void, (kel::int32 systemId))                                           \
  X(Kel_SetDefaultNodeId, void, (kel::int32 nodeId))                                               \
  X(Kel_GetDefaultSystemId, kel::int32, (void))                                                    \
  X(Kel_GetDefaultNodeId, kel::int32, (void))                                                      \
  X(Kel_GetLastRecvTime, kel::int64, (kel::int64 conn))                                            \
  X(Kel_GetLastSendTime, kel::int64, (kel::int64 conn))                                            \
  X(Kel_GetConnectIp, const char*, (kel::int64 conn, char* buf, kel::int32* len))                  \
  X(Kel_SetCustomerForBindThread, bool, (kel::int64 conn, const char* khh))                        \
  X(Kel_SetStructData, bool, (kel::int64 session, const char* block, kel::int32 len))              \
  X(Kel_IsStruct, bool, (kel::int64 session, kel::int32 index))                                    \
  X(Kel_GetStructData, bool, (kel::int64 session, char* buf, kel::int32* len, kel::int32 index))   \
  X(Kel_GetStructDataEx, const char*, (kel::int64 session, kel::int32* len, kel::int32 index))     \
  X(Kel_GetReqStructData, const char*, (kel::int64 session, kel::int32* len))                      \
  X(Kel_RegGlobalPublishFunc, void, (kel::PublishFn fn, void* ctx))                                \
  X(Kel_RegGlobalStructPublishFunc, void, (kel::StructPublishFn fn, void* ctx))                    \
  X(Kel_GetPacketId, kel::int64, (kel::int64 session))                                             \
  X(Kel_SetConnEvent, void, (kel::int64 conn, kel::ConnEventFn fn, void* ctx))                     \
  X(Kel_SetSysInfo, bool, (kel::int64 session, kel::int32 kind, kel::int32 fieldId))               \
  X(Kel_SetLevel, void, (kel::int64 session, kel::int32 level))                                    \
  X(Kel_SetDataType, void, (kel::int64 session, kel::int32 type))                                  \
  X(Kel_UsePool, void, (bool on))                                                                  \
  X(Kel_SetParamEx, bool, (const char* name, const char* value))                                   \
  X(Kel_UnRegisterSvc, bool, (const char* service))                                                \
  X(Kel_CreateAnswer, bool, (kel::int64 session, kel::int32 code, const char* msg))                \
  X(Kel_CreateAnswerMul, bool, (kel::int64 session, kel::int32 code, const char* msg,             \
                                kel::int32 rows))                                                  \
  X(Kel_CreateNextAnswer, bool, (kel::int64 session))                                              \
  X(Kel_CreateEndMark, bool, (kel::int64 session))                                                 \
  X(Kel_AddRefSession, void, (kel::int64 session))                                                 \
  X(Kel_SetSessDataString, void, (kel::int64 session, const char* data))                           \
  X(Kel_SetWriteString, bool, (kel::int64 session, const char* data))                              \
  X(Kel_GetSessDataString, const char*, (kel::int64 session))                                      \
  X(Kel_GetSocketRawData, bool, (kel::int64 session, char* buf, kel::int32* len))                  \
  X(Kel_WriteSocketRawData, bool, (kel::int64 session, const char* data, kel::int32 len))          \
  X(Kel_SetSessionWrited, void, (kel::int64 session))                                              \
  X(Kel_SetSubsCondi, bool, (kel::int64 session, const char* condition))                           \
  X(Kel_Subscribe, bool, (kel::int64 session, kel::int64* subscriptionId, kel::SubscribeFn fn,    \
                          void* ctx))                                                              \
  X(Kel_SetSocketOpt, bool, (kel::int64 conn, kel::int32 option, kel::int32 value))                \
  X(Kel_Publish, bool, (kel::int64 session))                                                       \
  X(Kel_PublishEx, bool, (kel::int64 session, const char* condition))                              \
  X(Kel_GetAnsData, const char*, (kel::int64 session, kel::int32* len))                            \
  X(Kel_AnsIsMulti, bool, (kel::int64 session))
// clang-format on

// Export names of the first two entries, which the transport exports as C++ functions.
// The Windows names are the Microsoft decoration (the real transport is built with that
// compiler); a MinGW-built stand-in exports them through a module-definition file.
#if defined(_WIN32)
#define KEL_NAME_Kel_GetReqBody "?Kel_GetReqBody@@YA_N_JAEAPEADAEAH@Z"
#define KEL_NAME_Kel_SetWriteData "?Kel_SetWriteData@@YA_N_JPEBDH@Z"
#else
#define KEL_NAME_Kel_GetReqBody "_Z14Kel_GetReqBodylRPcRi"
#define KEL_NAME_Kel_SetWriteData "_Z16Kel_SetWriteDatalPKci"
#endif

namespace kel {
constexpr int kEntryPointCount = 123;
}
