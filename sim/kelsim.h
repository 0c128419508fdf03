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

/* Back to the start state: the built-in back end, or the one of the file named by the
 * environment variable KELSIM_CONFIG (a file that cannot be used stops the back end: see
 * README), faults and scripted answers cleared, call log emptied, benchmark mode off. Open
 * connections stay open. */
void KelSim_Reset(void);
/* Replaces the back end by the one described in a configuration file; false when the file
 * cannot be read or parsed, or its replay file cannot be read (the back end is then left as
 * it was), or its state file cannot be used (the back end is then stopped until a good
 * configuration is loaded). */
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

/* The last price, and a book of one level at that price on both sides with unlimited volume
 * (the security's liquidity still limits matches); resting orders it reaches match at their
 * own prices. */
void KelSim_SetPrice(const char* jys, const char* zqdm, double price);
/* Quantity matched per match report; 0: one report per level of the book an order takes. */
void KelSim_SetMatchVolume(int64_t volume);
void KelSim_SetServerTimeOffsetMs(int64_t ms);
/* A date later than the trade date starts a new trading day on it (see KelSim_NewDay); an
 * earlier one (0: today) only changes the date. */
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

/* ---- the market, the clock and the trading day ----
 * A security's market as a plain record: the last price, the previous close and the day's
 * price limits (0 when the security has none), the tick, the day's volume and turnover, and
 * five levels a side (bid[0] the best bid, ask[0] the best ask; a price of 0 is no level, a
 * volume of -1 is unlimited). Texts are NUL-terminated. */
#pragma pack(push, 1)
typedef struct KelSimLevel {
  double price;
  int64_t volume;
} KelSimLevel;

typedef struct KelSimQuote {
  char jys[4];
  char zqdm[12];
  int32_t date;    /* trade date, YYYYMMDD */
  int32_t time_ms; /* the clock's time of day when the market last changed, in ms */
  double last;
  double prev_close;
  double upper_limit;
  double lower_limit;
  double tick;
  int64_t volume;
  double turnover;
  KelSimLevel bid[5];
  KelSimLevel ask[5];
} KelSimQuote;
#pragma pack(pop)

#ifdef __cplusplus
static_assert(sizeof(KelSimLevel) == 16, "KelSimLevel is 16 bytes");
static_assert(sizeof(KelSimQuote) == 240, "KelSimQuote is 240 bytes");
#else
_Static_assert(sizeof(KelSimQuote) == 240, "KelSimQuote is 240 bytes");
#endif

typedef void (*KelSimQuoteFn)(const KelSimQuote* quote, void* ctx);

/* The quote of a security; false (and *out untouched) for an unknown security. */
bool KelSim_GetQuote(const char* jys, const char* zqdm, KelSimQuote* out);
/* Sets the market of the security named in the record: last, volume, turnover (below 0:
 * grown by the volume added at the last price) and the ten levels, and the previous close
 * (with it the limits) when it is above 0; date, time, limits and tick are ignored. Resting
 * orders the new book reaches match. False for an unknown security, a price or the day's
 * volume below 0, or a level's volume below -1. */
bool KelSim_SetQuote(const KelSimQuote* quote);
/* Every change of a quote (from a replay, the random walk, KelSim_SetQuote or
 * KelSim_SetPrice) goes to fn on the push thread, in order with the pushes (the match reports
 * of orders a quote reaches come before it); null stops it. */
void KelSim_SetQuoteCallback(KelSimQuoteFn fn, void* ctx);
/* Moves a manual clock on by `ms` milliseconds: the quotes of that time are given and the
 * orders they reach match. Past midnight the day ends (as KelSim_NewDay) and the next one
 * goes on from its start time. False (and nothing happens) for a clock that runs itself or
 * a negative `ms`. */
bool KelSim_Advance(int64_t ms);
/* Ends the trading day: open orders expire (each with a withdrawal pushed), the day's bought
 * shares become sellable, frozen funds are released, each previous close becomes the last
 * price, the day's orders and matches are cleared (order numbers continue); the next weekday
 * starts at the clock's start time. */
void KelSim_NewDay(void);
/* The trade date (YYYYMMDD) and the clock's time of day (milliseconds since midnight);
 * either pointer may be null. */
void KelSim_Clock(int64_t* date, int64_t* time_ms);

/* ---- connections to a server of the back end (molra-simd) ----
 * Kel_Connect to "host:port" that is not an in-process address connects to a server. A
 * dropped server connection reconnects by itself: the first attempt first_ms after the drop,
 * then after twice as long each time, up to max_ms (100 and 2000 by default). While a process
 * has a server connection, the market and clock functions above act on the server's exchange
 * (that of its first server connection). */
void KelSim_SetReconnectDelay(int32_t first_ms, int32_t max_ms);

/* ---- benchmark mode ----
 * On: every Kel_Run and Kel_Write answers at once from the prepared answer of its function
 * code (the last scripted answer, or the back end's answer to the first request of that
 * code), with no back-end work, no call log and no thread hand-off for synchronous runs. */
void KelSim_SetBenchMode(bool on);

#ifdef __cplusplus
}
#endif

#endif
