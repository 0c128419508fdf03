/*
 * molra: client-side trading kit for cash-equity trading.
 *
 * One flat C interface. Every export returns bool or a signed 64-bit value; a failure is a
 * negative code (see the codes below) that is also stored in the process-wide last-error
 * record, read with SECMOLRA_GetLastError. Strings are NUL-terminated GBK byte strings.
 * Nothing is thrown across the interface.
 *
 * Callbacks run on the transport library's threads, possibly several at once: make them
 * thread-safe and return quickly.
 *
 * Exports taking std::vector need a host built with the same C++ standard library as the
 * kit; every other host uses the PYSECMOLRA_ exports, which take plain arrays.
 */
#ifndef SECMOLRA_H
#define SECMOLRA_H

#include <stdint.h>
#ifndef __cplusplus
#include <stdbool.h>
#endif

#if defined(_WIN32)
#if defined(SECMOLRA_BUILDING)
#define SECMOLRA_API __declspec(dllexport)
#else
#define SECMOLRA_API __declspec(dllimport)
#endif
#else
#define SECMOLRA_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
#include <vector>
#define SECMOLRA_STATIC_ASSERT(c, m) static_assert(c, m)
extern "C" {
#else
#define SECMOLRA_STATIC_ASSERT(c, m) _Static_assert(c, m)
#endif

/* ---- error codes ---------------------------------------------------------------------- */

#define SECMOLRA_ERR_POOL (-1)              /* connection pool not created, missing table */
#define SECMOLRA_ERR_LOAD (-200)            /* transport or one of its functions not bound */
#define SECMOLRA_ERR_SESSION (-202)         /* no session for the customer */
#define SECMOLRA_ERR_NOT_LOGGED_IN (-203)   /* "客户未登录" */
#define SECMOLRA_ERR_SEND (-204)            /* "发送请求失败" */
#define SECMOLRA_ERR_ANSWER (-205)          /* answer or reply packet incorrect */
#define SECMOLRA_ERR_CONFIG (-206)          /* configuration file unreadable */
#define SECMOLRA_ERR_LOGIN_ZERO (-220)      /* login produced no token */
#define SECMOLRA_ERR_ARGUMENT (-221)        /* illegal argument */
#define SECMOLRA_ERR_UNSUPPORTED (-222)     /* not supported, category not admitted */
#define SECMOLRA_ERR_SYSTEM_TYPE (-223)     /* unknown system type */
#define SECMOLRA_ERR_NO_CONN_INFO (-224)    /* no connection information */
#define SECMOLRA_ERR_MANY_NODES (-226)      /* several nodes, none chosen */
#define SECMOLRA_ERR_NO_NODE (-227)         /* customer has no trading node */

/* ---- callbacks ------------------------------------------------------------------------ */

/* time: local "HHMMSS.mmm"; json: one compact JSON object; type: 8 to 11 pushes, 14 replies */
typedef void (*SECMOLRA_MsgCallback)(const char* time, const char* json, int32_t type);
typedef void (*SECMOLRA_FuncCallback)(const char* time, const char* json, int32_t type);
/* khh: the customer of the connection set; name: the connection's configured Name;
 * event: 0 when every connection of the set is up again, else the transport's break code */
typedef void (*SECMOLRA_ConnEventCallback)(const char* khh, const char* name, int32_t event,
                                           int32_t reserved);

/* ---- records (byte-packed) ------------------------------------------------------------ */

#pragma pack(push, 1)

/* Customer login record, taken by SECMOLRA_TradeLoginEx and every Ex export. */
typedef struct CusLoginInfo {
  char KHH[16];      /* customer number */
  char GDH[12];      /* shareholder account; read by the order Ex exports */
  char Password[40]; /* trade password in clear text */
  int32_t NodeID;    /* trade node; below 1: not specified */
  char WTFS[5];      /* entrust method; empty: the default of SECMOLRA_SetWTFS */
  char Node[256];    /* node text; empty: the default of SECMOLRA_SetNode */
  int64_t Token;     /* out: the session token of the last login */
  int64_t ErrorCode; /* the account's own copy of its last error */
  char ErrorMsg[256]; /* its message: at most 256 bytes, not terminated when full */
} CusLoginInfo;
SECMOLRA_STATIC_ASSERT(sizeof(CusLoginInfo) == 605, "CusLoginInfo is 605 bytes");

/* One entry of a customer's node list. */
typedef struct CusNodeInfo {
  char KHH[16]; /* not terminated when 16 long */
  int32_t SystemType;
  int32_t Reserved;
  int32_t NodeID;
} CusNodeInfo;
SECMOLRA_STATIC_ASSERT(sizeof(CusNodeInfo) == 28, "CusNodeInfo is 28 bytes");

/* One row of a batch entrust: in Jys..Ddlx, out Wth and Msg. */
typedef struct BatchOrderRow {
  char Jys[3];   /* exchange, exactly 2 characters */
  char Zqdm[7];  /* security code, exactly 6 characters */
  int32_t Jylb;  /* 1 buy, 2 sell */
  double Wtjg;   /* price, (0, 100000) */
  int64_t Wtsl;  /* quantity, 1 to 999999999 */
  int32_t Ddlx;  /* order type, 0 to 999 */
  char Unused[11];
  int64_t Wth;   /* out: the row's order number */
  char Msg[128]; /* out: the row's note */
} BatchOrderRow;
SECMOLRA_STATIC_ASSERT(sizeof(BatchOrderRow) == 181, "BatchOrderRow is 181 bytes");

/* ---- query records (fund, account, PSQY, order, match, position, ETF share) ---- */
/* @records-queries@ */

#pragma pack(pop)

/* ---- lifecycle, last error, settings -------------------------------------------------- */

/* Starts the kit: logging, "molra.ini" GLOBAL section, the transport "./kelapi50.dll", the
 * connection pool and the customer registry. A second call returns true and does nothing,
 * also after SECMOLRA_Exit (the transport then stays torn down). */
SECMOLRA_API bool SECMOLRA_Init(void);
/* Closes every connection set, stops the kit's threads and the transport. */
SECMOLRA_API bool SECMOLRA_Exit(void);
/* Copies the last message, NUL included, into buf (no length limit: give 1024 bytes or
 * more), returns the last code. Reading does not clear the record. */
SECMOLRA_API int64_t SECMOLRA_GetLastError(char* buf);
/* Records an error; with account non-null also in the account's own error fields. */
SECMOLRA_API void SECMOLRA_SetLastError(int64_t code, const char* msg, const char* func,
                                        CusLoginInfo* account);
SECMOLRA_API void SECMOLRA_SetWriteLog(bool enable);
/* Switches the transport's own log (Kel_WriteLog). */
SECMOLRA_API bool SECMOLRA_SetKelWriteLog(bool enable);
/* Directory of "molra.ini", joined with no separator added: give the trailing '/'. */
SECMOLRA_API void SECMOLRA_SetProfilePath(const char* path);
/* Log directory ("log" when empty); read by SECMOLRA_Init only. */
SECMOLRA_API void SECMOLRA_SetLogPath(const char* path);
SECMOLRA_API void SECMOLRA_SetMsgCallback(SECMOLRA_MsgCallback cb);
SECMOLRA_API void SECMOLRA_SetFuncCallback(SECMOLRA_FuncCallback cb);
SECMOLRA_API void SECMOLRA_SetConnEventCallback(SECMOLRA_ConnEventCallback cb);
/* Default node text used at login; null is refused (false), "" accepted. */
SECMOLRA_API bool SECMOLRA_SetNode(const char* node);
/* Default entrust method; kept only when the transport accepts it. */
SECMOLRA_API bool SECMOLRA_SetWTFS(const char* wtfs);

/* ---- clock and date ---- */
/* @exports-clock@ */
/* Milliseconds since system start. */
SECMOLRA_API uint64_t SECMOLRA_GetTickCount(void);
/* The same as SECMOLRA_GetTickCount. */
SECMOLRA_API uint64_t SECMOLRA_GetDoubleTickCount(void);
/* The back end's date YYYYMMDD, measured at login; queried first when not yet known (0 and
 * last error -202 when nobody is logged in). */
SECMOLRA_API int64_t SECMOLRA_GetSystemDate(void);
/* Local time of day corrected by the offset to the back end's clock, "HH:MM:SS.mmm"; give
 * 13 bytes or more (negative or over-a-day values give longer texts). */
SECMOLRA_API void SECMOLRA_GetReviseTime(char* buf);
/* The revised time as the number HHMMSS. */
SECMOLRA_API int64_t SECMOLRA_GetReviseTimeAsLong(void);
/* Quotes are not offered: always false. */
SECMOLRA_API bool SECMOLRA_OpenQuoteLink(void);
/* Quotes are not offered: sets *count to 0 and returns 0. */
SECMOLRA_API int64_t SECMOLRA_GetQuote(const char* codes, void* records, int32_t* count);

/* ---- login, logout, tokens, nodes ---- */
/* @exports-login@ */
/* Logs the customer in on the connection key lpKeyName (a section of "molra.ini"). Returns
 * the session token, or a negative code; a failed connection returns the connection
 * layer's code (0) with its message in the last error. */
SECMOLRA_API int64_t SECMOLRA_TradeLogin(const char* lpKeyName, const char* lpKhh,
                                         const char* password);
/* As SECMOLRA_TradeLogin with the customer's record: a NodeID above 0 names the trade node
 * (no node-list query); NodeID and Token are written back. */
SECMOLRA_API int64_t SECMOLRA_TradeLoginEx(const char* lpKeyName, CusLoginInfo* info);
/* Takes the customer back to not logged in (no request to the back end); 1, or -221. */
SECMOLRA_API int64_t SECMOLRA_TradeLogout(const char* lpKhh);
/* Token used by later requests of the customer in place of the login's; always true. */
SECMOLRA_API bool SECMOLRA_SetCusToken(const char* lpKhh, int64_t token);
/* Trade node of the customer; a login resets it, so it serves the requests that follow
 * the login. Always true. */
SECMOLRA_API bool SECMOLRA_SetCusNodeID(const char* lpKhh, int32_t nodeId);
/* The back end's trade date YYYYMMDD, asked on the last logged-in customer's connection;
 * or a negative code. */
SECMOLRA_API int64_t SECMOLRA_GetTradeDate(void);

/* ---- account management ---- */
/* @exports-account@ */

/* ---- queries ---- */
/* @exports-queries@ */

/* ---- scripting adapters (plain arrays) ---- */
/* @exports-adapters@ */

/* ---- orders: entrust, batch, ETF, other businesses ---- */
/* @exports-orders@ */

/* ---- withdrawals ---- */
/* @exports-withdrawals@ */

/* ---- tradable quantity ---- */
/* @exports-tradable@ */

#ifdef __cplusplus
/* Exports that fill a caller-owned std::vector (C++ hosts with the kit's standard library). */

/* @vector-exports-login@ */
/* Appends the customer's trade nodes (system type 4) to list; returns how many, or a
 * negative code. */
SECMOLRA_API int64_t SECMOLRA_QueryCusNodeinfo(const char* lpKeyName, const char* lpKhh,
                                               std::vector<CusNodeInfo>& list);

/* @vector-exports-queries@ */

/* @vector-exports-orders@ */

} /* extern "C" */
#endif

#endif /* SECMOLRA_H */
