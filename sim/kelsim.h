/* Control interface of the simulated transport (kelapi50.dll).
 *
 * Tests, benchmarks and tools reach it by looking the KelSim_ functions up in the loaded
 * library (the same module the kit binds). Every function may be called from any thread.
 *
 * Counted faults: `count` is the number of next calls that fail; -1 makes every call fail
 * until cleared; 0 clears the fault. */
#ifndef KELSIM_H
#define KELSIM_H

#include <stdint.h>
#ifndef __cplusplus
#include <stdbool.h>
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ---- state ---- */

/* Back to the start state: the built-in back end (or the file of KELSIM_CONFIG, see
 * README), faults and scripted answers cleared, call log emptied, benchmark mode off.
 * Open connections stay open. */
void KelSim_Reset(void);
/* Replaces the back end by the one described in a configuration file; false when the file
 * cannot be read or parsed. */
bool KelSim_LoadConfig(const char* path);

/* ---- call log: one line per transport call, "Kel_Name(arg,arg,...)" ---- */

/* Copies at most cap-1 bytes and a NUL; returns the full length. */
int32_t KelSim_CallLog(char* buf, int32_t cap);
void KelSim_ClearCallLog(void);
/* Turns the call log on or off (on by default; benchmarks turn it off). */
void KelSim_SetCallLog(bool on);

/* ---- faults ---- */

void KelSim_FailConnect(const char* addr, int32_t count); /* addr null: any address */
void KelSim_FailBind(int32_t count);                      /* Kel_SetCustomerForBindThread */
void KelSim_FailAllocSession(int32_t count);
void KelSim_FailRun(int32_t count);
void KelSim_FailWrite(int32_t count);
/* What Kel_SetDefaultInfo answers (true by default). */
void KelSim_SetDefaultInfoResult(bool ok);

/* ---- connections ---- */

int32_t KelSim_ConnectionCount(void); /* open connections */
/* Handle of the nth (from 0, in order of opening) open connection to addr; 0 if none. */
int64_t KelSim_ConnectionByAddr(const char* addr, int32_t nth);
/* The connection goes down (Kel_IsConnect false) and its event handler receives `event`
 * (non-zero) on the simulator's event thread. */
void KelSim_BreakConnection(int64_t conn, int32_t event);
/* The connection is up again; its handler receives event 0. */
void KelSim_RestoreConnection(int64_t conn);
/* Delivers an event to the connection's handler without changing its state. */
void KelSim_RaiseConnEvent(int64_t conn, int32_t event);
/* Returns when every queued event, asynchronous reply and push has been delivered. */
void KelSim_WaitIdle(void);
/* Sessions allocated and not yet released. */
int32_t KelSim_OpenSessions(void);

/* ---- scripted answers: override the back end for one function code ----
 * `func` is the function code as text: "DQ0003" for key/value requests, the decimal
 * number ("19001") for block requests. A scripted answer stays until cleared. */

/* The structured answer block for func, exactly `len` bytes. */
void KelSim_SetStructAnswer(const char* func, const char* block, int32_t len);
/* Cuts (or zero-extends) the back end's own structured answer for func to len bytes. */
void KelSim_SetAnswerLength(const char* func, int32_t len);
/* A key/value answer: code, message and rows. rows: rows separated by '\n', fields by
 * '|', each field "id=value" (for example "605=1001|709=100.5\n605=1001|709=7"). */
void KelSim_SetKvAnswer(const char* func, int32_t code, const char* msg, const char* rows);
/* An unstructured answer carrying only code and message (for block requests too). */
void KelSim_SetPlainAnswer(const char* func, int32_t code, const char* msg);
void KelSim_ClearAnswers(void);

/* The last request sent with func: a block request's bytes, or a key/value request as
 * "id=value|id=value" in the order set. Copies at most cap bytes; returns the full length,
 * -1 when no such request was sent. */
int32_t KelSim_LastRequest(const char* func, char* buf, int32_t cap);

/* ---- pushes ---- */

/* Pushes a record to the customer's subscriptions: kind 0 confirmation, 1 match. With a
 * per-subscription handler the record is the session's binary body; through the global
 * structured handler it is passed as data with the subscription's function number. Sent
 * on the simulator's push thread. */
void KelSim_PushRecord(const char* khh, int32_t kind, const char* record, int32_t len);

/* ---- market and clock ---- */

void KelSim_SetPrice(const char* jys, const char* zqdm, double price);
/* Quantity matched per match report; 0 matches an order in full at once. */
void KelSim_SetMatchVolume(int64_t volume);
void KelSim_SetServerTimeOffsetMs(int64_t ms);
void KelSim_SetTradeDate(int64_t yyyymmdd);

/* ---- additions ---- */

/* The quantity the market can still match for a security (-1: unlimited, the default);
 * resting orders that the new liquidity allows match at once. */
void KelSim_SetLiquidity(const char* jys, const char* zqdm, int64_t qty);
/* The function codes whose subscriptions receive confirmations and match reports
 * ("DM0003" and "DM0004" by default, or the configuration's); null keeps a code. */
void KelSim_SetPushCodes(const char* confirm, const char* report);
/* Subscriptions held for a customer (null: all). */
int32_t KelSim_SubscriptionCount(const char* khh);
/* The customer bound to a connection with Kel_SetCustomerForBindThread: copies at most
 * cap-1 bytes and a NUL, returns the full length; -1 for an unknown connection. */
int32_t KelSim_BoundCustomer(int64_t conn, char* buf, int32_t cap);

/* ---- benchmark mode ----
 * On: every Kel_Run and Kel_Write answers at once from the prepared answer of its function
 * code (the last scripted answer, or the back end's answer to the first request of that
 * code), with no back-end work, no call log and no thread hand-off for synchronous runs. */
void KelSim_SetBenchMode(bool on);

#ifdef __cplusplus
}
#endif

#endif
