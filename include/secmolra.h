/*
 * molra: client-side trading kit for cash-equity trading.
 *
 * One flat C interface. Every export returns bool or a signed 64-bit value; a failure is a
 * negative code (see the codes below) that is also stored in the process-wide last-error
 * record, read with SECMOLRA_GetLastError, and in the failing thread's own record, read with
 * SECMOLRA_GetThreadLastError. Strings are NUL-terminated GBK byte strings. Nothing is
 * thrown across the interface: an internal failure is -299 "内部错误".
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

#define SECMOLRA_ERR_POOL (-1)            /* connection pool not created, missing table */
#define SECMOLRA_ERR_LOAD (-200)          /* transport or one of its functions not bound */
#define SECMOLRA_ERR_SESSION (-202)       /* no session for the customer */
#define SECMOLRA_ERR_NOT_LOGGED_IN (-203) /* "客户未登录" */
#define SECMOLRA_ERR_SEND (-204)          /* "发送请求失败" */
#define SECMOLRA_ERR_ANSWER (-205)        /* answer or reply packet incorrect */
#define SECMOLRA_ERR_CONFIG (-206)        /* configuration file unreadable */
#define SECMOLRA_ERR_LOGIN_ZERO (-220)    /* login produced no token */
#define SECMOLRA_ERR_ARGUMENT (-221)      /* illegal argument */
#define SECMOLRA_ERR_UNSUPPORTED (-222)   /* not supported, category not admitted */
#define SECMOLRA_ERR_SYSTEM_TYPE (-223)   /* unknown system type */
#define SECMOLRA_ERR_NO_CONN_INFO (-224)  /* no connection information */
#define SECMOLRA_ERR_MANY_NODES (-226)    /* several nodes, none chosen */
#define SECMOLRA_ERR_NO_NODE (-227)       /* customer has no trading node */
#define SECMOLRA_ERR_INTERNAL (-299)      /* "内部错误": the kit caught an internal failure */

/* ---- callbacks ------------------------------------------------------------------------ */

/* Pushes: time local "HHMMSS.mmm"; json one compact JSON object; type 8 confirmation,
 * 9 withdrawal, 10 match, 11 refused. */
typedef void (*SECMOLRA_MsgCallback)(const char* time, const char* json, int32_t type);
/* Replies to asynchronous requests: time and json as for pushes; type 14. */
typedef void (*SECMOLRA_FuncCallback)(const char* time, const char* json, int32_t type);
/* khh: the customer of the connection set; name: the connection's configured Name;
 * event: 0 when every connection of the set is up again, else the transport's break code */
typedef void (*SECMOLRA_ConnEventCallback)(const char* khh, const char* name, int32_t event,
                                           int32_t reserved);

/* ---- records (byte-packed) ------------------------------------------------------------ */

#pragma pack(push, 1)

/* Customer login record, taken by SECMOLRA_TradeLoginEx and every Ex export. */
typedef struct CusLoginInfo {
  char KHH[16];       /* customer number */
  char GDH[12];       /* shareholder account; read by the order Ex exports */
  char Password[40];  /* trade password in clear text */
  int32_t NodeID;     /* trade node; below 1: not specified */
  char WTFS[5];       /* entrust method; empty: the default of SECMOLRA_SetWTFS */
  char Node[256];     /* node text; empty: the default of SECMOLRA_SetNode */
  int64_t Token;      /* out: the session token of the last login */
  int64_t ErrorCode;  /* the account's own copy of its last error */
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
  char Jys[3];  /* exchange, exactly 2 characters */
  char Zqdm[7]; /* security code, exactly 6 characters */
  int32_t Jylb; /* 1 buy, 2 sell */
  double Wtjg;  /* price, (0, 100000) */
  int64_t Wtsl; /* quantity, 1 to 999999999 */
  int32_t Ddlx; /* order type, 0 to 999 */
  char Unused[11];
  int64_t Wth;   /* out: the row's order number */
  char Msg[128]; /* out: the row's note */
} BatchOrderRow;
SECMOLRA_STATIC_ASSERT(sizeof(BatchOrderRow) == 181, "BatchOrderRow is 181 bytes");

/* ---- query records (fund, account, PSQY, order, match, position, ETF share) ---- */
/* @records-queries@ */

/* Fund query (SECMOLRA_QueryFundInfo), one row per currency. Amount1 and Amount2 both carry
 * answer key 709; Total is Amount7 + Amount1 + Amount9, added in that order. */
typedef struct FundRecord {
  char KHH[16];   /* 605 */
  char ZJZH[16];  /* 716 */
  char BZ[4];     /* 511 currency */
  char Text2[16]; /* 1257 */
  double Amount1; /* 709 */
  double Amount2; /* 709 */
  double Amount3; /* 826 */
  double Amount4; /* 2085 */
  double Amount5; /* 619 */
  double Amount6; /* 2086 */
  double Total;   /* (869 + 709) + 647 */
  double Amount7; /* 869 */
  double Amount8; /* 1847 */
  char Reserved[88];
  double Amount9; /* 647 */
  char Reserved2[16];
} FundRecord;
SECMOLRA_STATIC_ASSERT(sizeof(FundRecord) == 236, "FundRecord is 236 bytes");

/* Shareholder-account query (SECMOLRA_QueryAccInfo). */
typedef struct AccountRecord {
  char KHH[16];   /* 605 */
  char JYS[4];    /* 599 exchange short code */
  char GDH[12];   /* 571 shareholder account */
  char Text2[16]; /* 575 */
  char Text3[16]; /* 795 */
  char Text4[8];  /* 1027 */
  char BZ[4];     /* 511 currency */
  char Text5[16]; /* 1532 */
  int32_t Value;  /* 572 */
  int32_t Reserved;
} AccountRecord;
SECMOLRA_STATIC_ASSERT(sizeof(AccountRecord) == 100, "AccountRecord is 100 bytes");

/* Allotment-right query (SECMOLRA_QueryPSQY). Bytes behind a text's terminator are
 * unspecified. */
typedef struct PSQYRecord {
  char KHH[16];   /* 605 */
  char JYS[4];    /* 599 */
  char GDH[12];   /* 571 */
  int64_t Value1; /* 724 */
  int64_t Value2; /* 1179 */
} PSQYRecord;
SECMOLRA_STATIC_ASSERT(sizeof(PSQYRecord) == 48, "PSQYRecord is 48 bytes");

/* Order query (SECMOLRA_QueryOrders): one order of the day. Answer keys in comments. */
typedef struct OrderRecord {
  char KHH[16];    /* 605 */
  char JYS[4];     /* 599 */
  char GDH[12];    /* 571 */
  char ZQDM[9];    /* 719 security code */
  char ZQMC[33];   /* 9206 security name */
  int64_t WTH;     /* 681 order number */
  int32_t JYLB;    /* 595 trade category */
  int64_t WTSL;    /* 684 order quantity */
  double WTJG;     /* 682 order price */
  int32_t DDLX;    /* 1013 order type */
  char WTSJ[13];   /* 9201 entrust time */
  int64_t CJSL;    /* 9202 matched quantity */
  double CJJG;     /* 9203 average match price */
  double CJJE;     /* 9204 match amount */
  int64_t CDSL;    /* 9205 withdrawn quantity */
  int32_t SBJG;    /* 753 declaration result */
  char JGSM[128];  /* 9209 result note */
  char CXBZ[2];    /* 9210 withdrawal flag ("W" marks a withdrawal) */
  int64_t KFSBDBH; /* 9157 the caller's request number */
  int64_t WTPCH;   /* 9216 batch number */
  double DJZJ;     /* 764 frozen funds */
  char ZJZH[31];   /* 716 fund account */
  char BZ[4];      /* 511 currency */
  char Reserved[100];
} OrderRecord;
SECMOLRA_STATIC_ASSERT(sizeof(OrderRecord) == 444, "OrderRecord is 444 bytes");

/* Match query (SECMOLRA_QueryMatchs): one match report of the day. */
typedef struct MatchRecord {
  char KHH[16];    /* 605 */
  char JYS[4];     /* 599 */
  char GDH[12];    /* 571 */
  char ZQDM[9];    /* 719 */
  char ZQMC[33];   /* 9206 */
  int64_t WTH;     /* 681 */
  int32_t JYLB;    /* 595 */
  int64_t CJSL;    /* 9202 matched quantity */
  double CJJG;     /* 9203 match price */
  double CJJE;     /* 9204 match amount */
  char CJBH[31];   /* 9207 match number */
  char CJSJ[13];   /* 9208 match time */
  int64_t KFSBDBH; /* 9157 */
  char Reserved[23];
} MatchRecord;
SECMOLRA_STATIC_ASSERT(sizeof(MatchRecord) == 185, "MatchRecord is 185 bytes");

/* Position query (SECMOLRA_QueryPositions): one security held. */
typedef struct PositionRecord {
  char KHH[16];  /* 605 */
  char JYS[4];   /* 599 */
  char GDH[12];  /* 571 */
  char ZQDM[9];  /* 719 */
  char ZQMC[33]; /* 9206 */
  int64_t GFYE;  /* 9211 position balance */
  int64_t KMSL;  /* 9212 sellable quantity */
  double CBJ;    /* 9213 cost price */
  double ZXJ;    /* 9219 latest price */
  double ZXSZ;   /* 9214 market value */
  double FDYK;   /* 9215 floating profit and loss */
  char BZ[4];    /* 511 */
  char Reserved[258];
} PositionRecord;
SECMOLRA_STATIC_ASSERT(sizeof(PositionRecord) == 384, "PositionRecord is 384 bytes");

/* ETF-share query (SECMOLRA_QueryETFShare): one component or share line of a fund. */
typedef struct ETFShareRecord {
  char KHH[16]; /* 605 */
  char JYS[4];  /* 599 */
  char GDH[12]; /* 571 */
  char JJDM[9]; /* 9225 fund code */
  char ZQDM[9]; /* 719 */
  int64_t FESL; /* 9218 shares */
  char Reserved[14];
} ETFShareRecord;
SECMOLRA_STATIC_ASSERT(sizeof(ETFShareRecord) == 72, "ETFShareRecord is 72 bytes");

/* Fund-allocation ratio between two nodes (SECMOLRA_QueryZJHBCL). */
typedef struct ZJHBCLRecord {
  int64_t Node1; /* 935 */
  int64_t Node2; /* 936 */
  double Ratio1; /* 940 */
  double Ratio2; /* 941 */
} ZJHBCLRecord;
SECMOLRA_STATIC_ASSERT(sizeof(ZJHBCLRecord) == 32, "ZJHBCLRecord is 32 bytes");

/* Available funds of one node (SECMOLRA_QueryJDKYZJ). */
typedef struct JDKYZJRecord {
  int32_t NodeID; /* 2071 */
  int32_t Reserved;
  double KYZJ; /* 709 available funds */
} JDKYZJRecord;
SECMOLRA_STATIC_ASSERT(sizeof(JDKYZJRecord) == 16, "JDKYZJRecord is 16 bytes");

#pragma pack(pop)

/* ---- lifecycle, last error, settings -------------------------------------------------- */

/* Starts the kit: logging, "molra.ini" GLOBAL section, the transport "./kelapi50.dll", the
 * connection pool and the customer registry. A second call returns true and does nothing,
 * also after SECMOLRA_Exit (the transport then stays torn down). */
SECMOLRA_API bool SECMOLRA_Init(void);
/* Closes every connection set, stops the kit's threads and the transport. */
SECMOLRA_API bool SECMOLRA_Exit(void);
/* Copies the last message, NUL included, into buf (no length limit: give 1024 bytes or
 * more), returns the last code. Reading does not clear the record. A null buf is left
 * alone: only the code is returned. */
SECMOLRA_API int64_t SECMOLRA_GetLastError(char* buf);
/* The last error recorded on the calling thread (0 and "" when none): returns its code and
 * copies at most cap - 1 bytes of its message and a NUL into msg (nothing when msg is null
 * or cap is below 1). Threads that fail at the same time each read their own. */
SECMOLRA_API int64_t SECMOLRA_GetThreadLastError(char* msg, int32_t cap);
/* Records an error; with account non-null also in the account's own error fields. */
SECMOLRA_API void SECMOLRA_SetLastError(int64_t code, const char* msg, const char* func,
                                        CusLoginInfo* account);
/* Switches the kit's log lines on or off (on by default); takes effect at once. */
SECMOLRA_API void SECMOLRA_SetWriteLog(bool enable);
/* Switches the transport's own log (Kel_WriteLog). */
SECMOLRA_API bool SECMOLRA_SetKelWriteLog(bool enable);
/* Directory of "molra.ini", joined with no separator added: give the trailing '/'. */
SECMOLRA_API void SECMOLRA_SetProfilePath(const char* path);
/* Log directory ("log" when empty); read by SECMOLRA_Init only. */
SECMOLRA_API void SECMOLRA_SetLogPath(const char* path);
/* Registers the callback of confirmation and match pushes; null removes it. Any time. */
SECMOLRA_API void SECMOLRA_SetMsgCallback(SECMOLRA_MsgCallback cb);
/* Registers the callback of replies to asynchronous requests; null removes it. Any time. */
SECMOLRA_API void SECMOLRA_SetFuncCallback(SECMOLRA_FuncCallback cb);
/* Registers the callback of connection breaks and recoveries; null removes it. Any time. */
SECMOLRA_API void SECMOLRA_SetConnEventCallback(SECMOLRA_ConnEventCallback cb);
/* Default node text used at login; null is refused (false), "" accepted. */
SECMOLRA_API bool SECMOLRA_SetNode(const char* node);
/* Default entrust method; kept only when the transport accepts it. */
SECMOLRA_API bool SECMOLRA_SetWTFS(const char* wtfs);

/* ---- clock and date ---- */
/* @exports-clock@ */
/* Milliseconds since system start. */
SECMOLRA_API uint64_t SECMOLRA_GetTickCount(void);
/* The same entry point as SECMOLRA_GetTickCount, exported under a second name. */
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
/* Token used by later requests of the customer in place of the login's; always true. The
 * token and node tables belong to the running kit: set before SECMOLRA_Init, they are not
 * kept. */
SECMOLRA_API bool SECMOLRA_SetCusToken(const char* lpKhh, int64_t token);
/* Trade node of the customer; a login resets it, so it serves the requests that follow
 * the login. Always true. */
SECMOLRA_API bool SECMOLRA_SetCusNodeID(const char* lpKhh, int32_t nodeId);
/* The back end's trade date YYYYMMDD, asked on the last logged-in customer's connection;
 * or a negative code. */
SECMOLRA_API int64_t SECMOLRA_GetTradeDate(void);

/* ---- account management ---- */
/* @exports-account@ */

/* Changes a password of a logged-in customer: kind 0 the trade password, any other kind the
 * fund password. Returns the answer's result, negative on failure. Null arguments give -221
 * "非法参数", empty ones -221 "客户号、新旧密码不能为空". */
SECMOLRA_API int64_t SECMOLRA_ModifyPwd(const char* khh, const char* oldPwd, const char* newPwd,
                                        int32_t kind);
/* Moves funds into the trading account. text5 and text6 are passed to the back end as they
 * are; a null text (after pwd) is sent empty. khh or pwd null, or amount 0 or less: -221.
 * Returns the answer code (0 or more) or a negative code. */
SECMOLRA_API int64_t SECMOLRA_FundTransIn(const char* khh, const char* pwd, double amount,
                                          const char* zjzh, const char* text5, const char* text6,
                                          const char* remark);
/* Moves funds out of the trading account; arguments as SECMOLRA_FundTransIn. */
SECMOLRA_API int64_t SECMOLRA_FundTransOut(const char* khh, const char* pwd, double amount,
                                           const char* zjzh, const char* text5, const char* text6,
                                           const char* remark);
/* Moves funds between two nodes of the customer. systemType must be 4, khh non-empty,
 * amount above 0, both nodes 1 or more and different; otherwise -221 "非法参数". A null
 * zjzh or remark is sent empty. */
SECMOLRA_API int64_t SECMOLRA_FundTransBetweenNodes(int32_t systemType, const char* khh,
                                                    const char* zjzh, double amount, int64_t node1,
                                                    int64_t node2, const char* remark);
/* Sets the fund-allocation ratio between two nodes. systemType must be 4, khh non-empty,
 * both nodes 1 or more and different, neither ratio negative; otherwise -221 "非法参数". */
SECMOLRA_API int64_t SECMOLRA_ModifyZJHBCL(int32_t systemType, const char* khh, const char* zjzh,
                                           int64_t node1, int64_t node2, double ratio1,
                                           double ratio2, const char* remark);

/* ---- queries ---- */
/* @exports-queries@ */

/* Reference-data tables: a cursor over the answer rows of any key/value request.
 * khh: the customer whose connection set carries the request ("" for the customer that
 * logged in last); funcCode: the table's six-character function code; request: the request
 * fields as "id=value|id=value" text (null or "" for none), sent as text in that order.
 * Returns a cursor id above 0; a negative code (-221 bad arguments, -203 not logged in,
 * -202 no session, -204 send failed, or the answer's negative code); or 0 when the customer
 * has no usable connection set (the last error holds the connection manager's message).
 * Every cursor must be ended with SECMOLRA_EndQuery, before SECMOLRA_Exit. */
SECMOLRA_API int64_t SECMOLRA_BeginQuery(const char* khh, const char* funcCode,
                                         const char* request);
/* Number of rows of the cursor's answer, or -221 for an unknown cursor. */
SECMOLRA_API int64_t SECMOLRA_GetQueryCount(int64_t cursor);
/* Copies field `fieldId` of row `row` (from 0) as text into buf: at most cap-1 bytes and a
 * NUL (nothing when cap is 0 or buf null). Returns the field's full length; -221 for an
 * unknown cursor, a row out of range or a negative cap. An absent field is "". */
SECMOLRA_API int64_t SECMOLRA_GetQuery(int64_t cursor, int32_t row, int32_t fieldId, char* buf,
                                       int32_t cap);
/* Releases the cursor and its session: 1, or -221 for an unknown cursor. */
SECMOLRA_API int64_t SECMOLRA_EndQuery(int64_t cursor);

/* ---- scripting adapters (plain arrays) ---- */
/* @exports-adapters@ */
/* Batch entrust over a plain array of count rows; the rows' results are copied back. */
SECMOLRA_API int64_t PYSECMOLRA_BatchOrderEntrust(const char* lpKhh, int64_t nWTPCH,
                                                  BatchOrderRow* rows, int32_t count);
/* Asynchronous batch entrust over a plain array; nothing is copied back. */
SECMOLRA_API int64_t PYSECMOLRA_BatchOrderEntrust_ASync(const char* lpKhh, int64_t nWTPCH,
                                                        BatchOrderRow* rows, int32_t count);

/* Plain-array forms of the list queries for scripting hosts. Each calls its SECMOLRA_ query
 * with the same leading arguments, copies at most `cap` records and at most as many as the
 * query produced into `records`, and returns the query's result unchanged: the full count
 * (compare it with cap to see whether the array was too small) or a negative code, in which
 * case nothing is copied. */

/* Plain-array form of SECMOLRA_QueryCusNodeinfo. */
SECMOLRA_API int32_t PYSECMOLRA_QueryCusNodeinfo(const char* lpKeyName, const char* khh,
                                                 CusNodeInfo* records, int32_t cap);
/* Plain-array form of SECMOLRA_QueryFundInfo. */
SECMOLRA_API int64_t PYSECMOLRA_QueryFundInfo(const char* khh, FundRecord* records, int32_t cap);
/* Plain-array form of SECMOLRA_QueryAccInfo. */
SECMOLRA_API int64_t PYSECMOLRA_QueryAccInfo(const char* khh, AccountRecord* records, int32_t cap);
/* Plain-array form of SECMOLRA_QueryOrders. */
SECMOLRA_API int64_t PYSECMOLRA_QueryOrders(const char* khh, int32_t nType, int32_t nSortType,
                                            int32_t nRowcount, int32_t nBrowindex, const char* jys,
                                            const char* zqdm, int64_t lWth, OrderRecord* records,
                                            int32_t cap);
/* Plain-array form of SECMOLRA_QueryMatchs. */
SECMOLRA_API int64_t PYSECMOLRA_QueryMatchs(const char* khh, int32_t nType, int32_t nSortType,
                                            int32_t nRowcount, int32_t nBrowindex, const char* jys,
                                            const char* zqdm, int64_t lWth, MatchRecord* records,
                                            int32_t cap);
/* Plain-array form of SECMOLRA_QueryPositions. */
SECMOLRA_API int64_t PYSECMOLRA_QueryPositions(const char* khh, int32_t nSortType,
                                               int32_t nRowcount, int32_t nBrowindex,
                                               const char* gdh, const char* jys, const char* zqdm,
                                               int32_t exeflag, PositionRecord* records,
                                               int32_t cap);
/* Plain-array form of SECMOLRA_QueryPSQY. */
SECMOLRA_API int64_t PYSECMOLRA_QueryPSQY(const char* khh, const char* jys, const char* gdh,
                                          PSQYRecord* records, int32_t cap);
/* Plain-array form of SECMOLRA_QueryETFShare. Checks the fund code itself (null -221
 * "非法参数", empty -221 "基金代码不能为空", both under the name "SECMOLRA_QueryETFShare"). */
SECMOLRA_API int64_t PYSECMOLRA_QueryETFShare(const char* khh, const char* jjdm,
                                              ETFShareRecord* records, int32_t cap);

/* ---- orders: entrust, batch, ETF, other businesses ---- */
/* @exports-orders@ */
/* Orders. Plain forms take the customer number and shareholder account; Ex forms take a
 * CusLoginInfo (KHH, GDH, NodeID and Token; NodeID/Token below 1: the registry's) and do not
 * check the record pointer itself; _ASync forms add nKFSBDBH (0 generates one; above
 * 9999999999999999 or negative: -221), return the request number once sent, and deliver the
 * outcome to the function callback (type 14) carrying that number. Synchronous forms return
 * the order number (WTH) or a failure code (0 or negative) with the last error set.
 * Quantities travel as 32 bits and order types as 8 bits in the binary requests: larger
 * values are cut. Category refusals are -222 before the customer is looked up. */

/* Ordinary buy or sell order (19001). */
SECMOLRA_API int64_t SECMOLRA_OrderEntrust(const char* lpKhh, const char* lpJys, const char* lpZqdm,
                                           int32_t nJylb, int64_t lWtsl, double lfWtjg,
                                           int64_t lDdlx, const char* lpGdh);
/* Ordinary order, customer as record. */
SECMOLRA_API int64_t SECMOLRA_OrderEntrustEx(CusLoginInfo* info, const char* lpJys,
                                             const char* lpZqdm, int32_t nJylb, int64_t lWtsl,
                                             double lfWtjg, int64_t lDdlx);
/* Ordinary order, asynchronous. */
SECMOLRA_API int64_t SECMOLRA_OrderEntrust_ASync(const char* lpKhh, const char* lpJys,
                                                 const char* lpZqdm, int32_t nJylb, int64_t lWtsl,
                                                 double lfWtjg, int64_t lDdlx, const char* lpGdh,
                                                 int64_t nKFSBDBH);
/* Ordinary order, customer as record, asynchronous. */
SECMOLRA_API int64_t SECMOLRA_OrderEntrustEx_ASync(CusLoginInfo* info, const char* lpJys,
                                                   const char* lpZqdm, int32_t nJylb, int64_t lWtsl,
                                                   double lfWtjg, int64_t lDdlx, int64_t nKFSBDBH);

/* ETF subscription (nJylb 29, 19013) or redemption (30, 19014); others -222
 * "仅支持[JYLB_ETFG,JYLB_ETFSH]". lpStep may be null (up to 21 bytes sent). */
SECMOLRA_API int64_t SECMOLRA_ETFEntrust(const char* lpKhh, const char* lpJys, const char* lpZqdm,
                                         int32_t nJylb, int32_t lWtsl, const char* lpGdh,
                                         const char* lpStep);
/* ETF subscription or redemption, customer as record. */
SECMOLRA_API int64_t SECMOLRA_ETFEntrustEx(CusLoginInfo* info, const char* lpJys,
                                           const char* lpZqdm, int32_t nJylb, int32_t lWtsl,
                                           const char* lpStep);
/* ETF subscription or redemption, asynchronous. */
SECMOLRA_API int64_t SECMOLRA_ETFEntrust_ASync(const char* lpKhh, const char* lpJys,
                                               const char* lpZqdm, int32_t nJylb, int32_t lWtsl,
                                               const char* lpGdh, const char* lpStep,
                                               int64_t nKFSBDBH);
/* ETF subscription or redemption, customer as record, asynchronous. */
SECMOLRA_API int64_t SECMOLRA_ETFEntrustEx_ASync(CusLoginInfo* info, const char* lpJys,
                                                 const char* lpZqdm, int32_t nJylb, int32_t lWtsl,
                                                 const char* lpStep, int64_t nKFSBDBH);

/* ETF basket entrust: buys the constituents of nUnits creation units of the ETF lpEtfCode.
 * In order, each refusal recorded under "ETFBasketEntrust": the ETF's basic information
 * ("D00084": subscription flag, information date, creation unit, cash component) — failure:
 * the answer's negative code or -204, "查询ETF_JBXX失败: " + the transport's text; the trade
 * date ("A00066") — failure "查询交易日期失败: " + text; subscription not allowed: -222
 * "无{etf}申购资格，禁止交易"; information not of the trade date: -222
 * "{etf}基本信息未更新[cur:{trade date} etf:{information date}]，禁止交易"; the constituents
 * ("D00088") — failure "查询{etf}成分股信息失败:" + text. No session: -202. Then one ordinary
 * buy order (19001, category 1, price lfPrice, order type lDdlx) per constituent of quantity
 * (per unit x nUnits); constituents without quantity (cash substitutes) are skipped. Returns
 * the number of orders placed; a refused order ends the basket with its code (orders already
 * placed stay). nUnits below 1: -221 "非法参数". */
SECMOLRA_API int64_t SECMOLRA_ETFBasketEntrust(const char* lpKhh, const char* lpJys,
                                               const char* lpEtfCode, const char* lpGdh,
                                               int32_t nUnits, double lfPrice, int64_t lDdlx);
/* ETF basket entrust, customer as record. */
SECMOLRA_API int64_t SECMOLRA_ETFBasketEntrustEx(CusLoginInfo* info, const char* lpJys,
                                                 const char* lpEtfCode, int32_t nUnits,
                                                 double lfPrice, int64_t lDdlx);

/* Repurchase (19042); nJylb 4 or 5, others -222 "仅支持[JYLB_HGRQ,JYLB_HGRZ]". */
SECMOLRA_API int64_t SECMOLRA_ZQHGEntrust(const char* lpKhh, const char* lpJys, const char* lpZqdm,
                                          int32_t nJylb, int32_t lWtsl, double lfWtjg,
                                          int64_t lDdlx, const char* lpGdh);
/* Repurchase, customer as record. */
SECMOLRA_API int64_t SECMOLRA_ZQHGEntrustEx(CusLoginInfo* info, const char* lpJys,
                                            const char* lpZqdm, int32_t nJylb, int32_t lWtsl,
                                            double lfWtjg, int64_t lDdlx);
/* Repurchase, asynchronous. */
SECMOLRA_API int64_t SECMOLRA_ZQHGEntrust_ASync(const char* lpKhh, const char* lpJys,
                                                const char* lpZqdm, int32_t nJylb, int32_t lWtsl,
                                                double lfWtjg, int64_t lDdlx, const char* lpGdh,
                                                int64_t nKFSBDBH);
/* Repurchase, customer as record, asynchronous. */
SECMOLRA_API int64_t SECMOLRA_ZQHGEntrustEx_ASync(CusLoginInfo* info, const char* lpJys,
                                                  const char* lpZqdm, int32_t nJylb, int32_t lWtsl,
                                                  double lfWtjg, int64_t lDdlx, int64_t nKFSBDBH);

/* Pledge in/out for repurchase (19043); nJylb 37 or 38, others -222. */
SECMOLRA_API int64_t SECMOLRA_ZQHGCrk(const char* lpKhh, const char* lpJys, const char* lpZqdm,
                                      int32_t nJylb, int32_t lWtsl, const char* lpGdh);
/* Pledge in/out, customer as record. */
SECMOLRA_API int64_t SECMOLRA_ZQHGCrkEx(CusLoginInfo* info, const char* lpJys, const char* lpZqdm,
                                        int32_t nJylb, int32_t lWtsl);
/* Pledge in/out, asynchronous. */
SECMOLRA_API int64_t SECMOLRA_ZQHGCrk_ASync(const char* lpKhh, const char* lpJys,
                                            const char* lpZqdm, int32_t nJylb, int32_t lWtsl,
                                            const char* lpGdh, int64_t nKFSBDBH);
/* Pledge in/out, customer as record, asynchronous. */
SECMOLRA_API int64_t SECMOLRA_ZQHGCrkEx_ASync(CusLoginInfo* info, const char* lpJys,
                                              const char* lpZqdm, int32_t nJylb, int32_t lWtsl,
                                              int64_t nKFSBDBH);

/* Issuance business (key/value; nJylb 1 -> 19059, 3 -> 19049, 14 -> 19050, 24 -> 19051,
 * others -222 "仅支持[JYLB_PGJK,JYLB_PSSG,JYLB_BUY]"). */
SECMOLRA_API int64_t SECMOLRA_FXYW(const char* lpKhh, const char* lpJys, const char* lpZqdm,
                                   int32_t nJylb, int64_t lWtsl, double lwtjg, int64_t lDdlx,
                                   const char* lpGdh);
/* Issuance business, customer as record. */
SECMOLRA_API int64_t SECMOLRA_FXYWEx(CusLoginInfo* info, const char* lpJys, const char* lpZqdm,
                                     int32_t nJylb, int64_t lWtsl, double lwtjg, int64_t lDdlx);
/* Issuance business, asynchronous. */
SECMOLRA_API int64_t SECMOLRA_FXYW_ASync(const char* lpKhh, const char* lpJys, const char* lpZqdm,
                                         int32_t nJylb, int64_t lWtsl, double lwtjg, int64_t lDdlx,
                                         const char* lpGdh, int64_t nKFSBDBH);
/* Issuance business, customer as record, asynchronous. */
SECMOLRA_API int64_t SECMOLRA_FXYWEx_ASync(CusLoginInfo* info, const char* lpJys,
                                           const char* lpZqdm, int32_t nJylb, int64_t lWtsl,
                                           double lwtjg, int64_t lDdlx, int64_t nKFSBDBH);

/* Block trading (key/value 19081, synchronous only); nJylb 55 to 60, 78, 79, others -222.
 * The five texts are required (null: -221). */
SECMOLRA_API int64_t SECMOLRA_DZJY(const char* lpKhh, const char* lpJys, const char* lpZqdm,
                                   int32_t nJylb, int64_t lWtsl, double lwtjg, int64_t lDdlx,
                                   const char* lpGdh, const char* lpDfxw, const char* lpLxr,
                                   const char* lpLxdh, const char* lpHyh, const char* lpDfgdh,
                                   int32_t nPddm, int32_t nTdbz);
/* Block trading, customer as record. */
SECMOLRA_API int64_t SECMOLRA_DZJYEx(CusLoginInfo* info, const char* lpJys, const char* lpZqdm,
                                     int32_t nJylb, int64_t lWtsl, double lwtjg, int64_t lDdlx,
                                     const char* lpDfxw, const char* lpLxr, const char* lpLxdh,
                                     const char* lpHyh, const char* lpDfgdh, int32_t nPddm,
                                     int32_t nTdbz);

/* Listed fund (19025); nJylb 41, 42, 43, 47, 48, others -222; flag goes to byte 91. */
SECMOLRA_API int64_t SECMOLRA_Lof(const char* lpKhh, const char* lpJys, const char* lpZqdm,
                                  int32_t nJylb, int32_t lWtsl, double lwtjg, char flag,
                                  const char* lpGdh);
/* Listed fund, customer as record. */
SECMOLRA_API int64_t SECMOLRA_LofEx(CusLoginInfo* info, const char* lpJys, const char* lpZqdm,
                                    int32_t nJylb, int32_t lWtsl, double lwtjg, char flag);
/* Listed fund, asynchronous. */
SECMOLRA_API int64_t SECMOLRA_Lof_ASync(const char* lpKhh, const char* lpJys, const char* lpZqdm,
                                        int32_t nJylb, int32_t lWtsl, double lwtjg, char flag,
                                        const char* lpGdh, int64_t nKFSBDBH);
/* Listed fund, customer as record, asynchronous. */
SECMOLRA_API int64_t SECMOLRA_LofEx_ASync(CusLoginInfo* info, const char* lpJys, const char* lpZqdm,
                                          int32_t nJylb, int32_t lWtsl, double lwtjg, char flag,
                                          int64_t nKFSBDBH);

/* After-hours priced trading (19131); categories are not checked. */
SECMOLRA_API int64_t SECMOLRA_PHDJEntrust(const char* lpKhh, const char* lpJys, const char* lpZqdm,
                                          int32_t nJylb, int64_t lWtsl, double lfWtjg,
                                          int64_t lDdlx, const char* lpGdh);
/* After-hours priced trading, customer as record. */
SECMOLRA_API int64_t SECMOLRA_PHDJEntrustEx(CusLoginInfo* info, const char* lpJys,
                                            const char* lpZqdm, int32_t nJylb, int64_t lWtsl,
                                            double lfWtjg, int64_t lDdlx);
/* After-hours priced trading, asynchronous. */
SECMOLRA_API int64_t SECMOLRA_PHDJEntrust_ASync(const char* lpKhh, const char* lpJys,
                                                const char* lpZqdm, int32_t nJylb, int64_t lWtsl,
                                                double lfWtjg, int64_t lDdlx, const char* lpGdh,
                                                int64_t nKFSBDBH);
/* After-hours priced trading, customer as record, asynchronous. */
SECMOLRA_API int64_t SECMOLRA_PHDJEntrustEx_ASync(CusLoginInfo* info, const char* lpJys,
                                                  const char* lpZqdm, int32_t nJylb, int64_t lWtsl,
                                                  double lfWtjg, int64_t lDdlx, int64_t nKFSBDBH);

/* Non-trading business (key/value; nJylb 212 -> 19090, 11/12 -> 19091, 76/77 -> 19092,
 * others -222). */
SECMOLRA_API int64_t SECMOLRA_FJY(const char* lpKhh, const char* lpJys, const char* lpZqdm,
                                  int32_t nJylb, int64_t lWtsl, double lwtjg, int64_t lDdlx,
                                  const char* lpGdh);
/* Non-trading business, customer as record. */
SECMOLRA_API int64_t SECMOLRA_FJYEx(CusLoginInfo* info, const char* lpJys, const char* lpZqdm,
                                    int32_t nJylb, int64_t lWtsl, double lwtjg, int64_t lDdlx);
/* Non-trading business, asynchronous. */
SECMOLRA_API int64_t SECMOLRA_FJY_ASync(const char* lpKhh, const char* lpJys, const char* lpZqdm,
                                        int32_t nJylb, int64_t lWtsl, double lwtjg, int64_t lDdlx,
                                        const char* lpGdh, int64_t nKFSBDBH);
/* Non-trading business, customer as record, asynchronous. */
SECMOLRA_API int64_t SECMOLRA_FJYEx_ASync(CusLoginInfo* info, const char* lpJys, const char* lpZqdm,
                                          int32_t nJylb, int64_t lWtsl, double lwtjg, int64_t lDdlx,
                                          int64_t nKFSBDBH);

/* ---- withdrawals ---- */
/* @exports-withdrawals@ */
/* Withdrawals by order number (nCxwth >= 1) or by the order's own request number
 * (nCXKFSBDBH). Null or a number below 1: -221 "非法参数"; empty: -221 "客户号、交易所不能为空".
 * The asynchronous forms by request number check nCXKFSBDBH per family: ordinary and ETF
 * with "nCXKFSBDBH[..]非法，范围0~9999999999999999" (0 is then refused by the request itself),
 * repurchase below 1 then "nCxkfsbdh[..]非法，..."; the listed-fund family only requires 1 or
 * more. Synchronous forms return the withdrawal's own order number. */
/* Ordinary withdrawal by order number (19002). */
SECMOLRA_API int64_t SECMOLRA_OrderWithdraw(const char* lpKhh, const char* lpJys, int64_t nCxwth);
SECMOLRA_API int64_t SECMOLRA_OrderWithdrawEx(CusLoginInfo* info, const char* lpJys,
                                              int64_t nCxwth);
SECMOLRA_API int64_t SECMOLRA_OrderWithdraw_ASync(const char* lpKhh, const char* lpJys,
                                                  int64_t nCxwth, int64_t nKFSBDBH);
SECMOLRA_API int64_t SECMOLRA_OrderWithdrawEx_ASync(CusLoginInfo* info, const char* lpJys,
                                                    int64_t nCxwth, int64_t nKFSBDBH);
/* Ordinary withdrawal by the order's request number (19002). */
SECMOLRA_API int64_t SECMOLRA_OrderWithdrawByKFSBDBH(const char* lpKhh, const char* lpJys,
                                                     int64_t nCXKFSBDBH);
SECMOLRA_API int64_t SECMOLRA_OrderWithdrawByKFSBDBHEx(CusLoginInfo* info, const char* lpJys,
                                                       int64_t nCXKFSBDBH);
SECMOLRA_API int64_t SECMOLRA_OrderWithdrawByKFSBDBH_ASync(const char* lpKhh, const char* lpJys,
                                                           int64_t nCXKFSBDBH, int64_t nKFSBDBH);
SECMOLRA_API int64_t SECMOLRA_OrderWithdrawByKFSBDBHEx_ASync(CusLoginInfo* info, const char* lpJys,
                                                             int64_t nCXKFSBDBH, int64_t nKFSBDBH);
/* ETF withdrawal by order number (19020). */
SECMOLRA_API int64_t SECMOLRA_ETFWithdraw(const char* lpKhh, const char* lpJys, int64_t nCxwth);
SECMOLRA_API int64_t SECMOLRA_ETFWithdrawEx(CusLoginInfo* info, const char* lpJys, int64_t nCxwth);
SECMOLRA_API int64_t SECMOLRA_ETFWithdraw_ASync(const char* lpKhh, const char* lpJys,
                                                int64_t nCxwth, int64_t nKFSBDBH);
SECMOLRA_API int64_t SECMOLRA_ETFWithdrawEx_ASync(CusLoginInfo* info, const char* lpJys,
                                                  int64_t nCxwth, int64_t nKFSBDBH);
/* ETF withdrawal by the order's request number (19020). */
SECMOLRA_API int64_t SECMOLRA_ETFWithdrawByKFSBDBH(const char* lpKhh, const char* lpJys,
                                                   int64_t nCXKFSBDBH);
SECMOLRA_API int64_t SECMOLRA_ETFWithdrawByKFSBDBHEx(CusLoginInfo* info, const char* lpJys,
                                                     int64_t nCXKFSBDBH);
SECMOLRA_API int64_t SECMOLRA_ETFWithdrawByKFSBDBH_ASync(const char* lpKhh, const char* lpJys,
                                                         int64_t nCXKFSBDBH, int64_t nKFSBDBH);
SECMOLRA_API int64_t SECMOLRA_ETFWithdrawByKFSBDBHEx_ASync(CusLoginInfo* info, const char* lpJys,
                                                           int64_t nCXKFSBDBH, int64_t nKFSBDBH);
/* Repurchase withdrawal by order number (19044). */
SECMOLRA_API int64_t SECMOLRA_ZQHGWithdraw(const char* lpKhh, const char* lpJys, int64_t nCxwth);
SECMOLRA_API int64_t SECMOLRA_ZQHGWithdrawEx(CusLoginInfo* info, const char* lpJys, int64_t nCxwth);
SECMOLRA_API int64_t SECMOLRA_ZQHGWithdraw_ASync(const char* lpKhh, const char* lpJys,
                                                 int64_t nCxwth, int64_t nKFSBDBH);
SECMOLRA_API int64_t SECMOLRA_ZQHGWithdrawEx_ASync(CusLoginInfo* info, const char* lpJys,
                                                   int64_t nCxwth, int64_t nKFSBDBH);
/* Repurchase withdrawal by the order's request number (19044). */
SECMOLRA_API int64_t SECMOLRA_ZQHGWithdrawByKFSBDBH(const char* lpKhh, const char* lpJys,
                                                    int64_t nCXKFSBDBH);
SECMOLRA_API int64_t SECMOLRA_ZQHGWithdrawByKFSBDBHEx(CusLoginInfo* info, const char* lpJys,
                                                      int64_t nCXKFSBDBH);
SECMOLRA_API int64_t SECMOLRA_ZQHGWithdrawByKFSBDBH_ASync(const char* lpKhh, const char* lpJys,
                                                          int64_t nCXKFSBDBH, int64_t nKFSBDBH);
SECMOLRA_API int64_t SECMOLRA_ZQHGWithdrawByKFSBDBHEx_ASync(CusLoginInfo* info, const char* lpJys,
                                                            int64_t nCXKFSBDBH, int64_t nKFSBDBH);
/* Listed-fund withdrawal by order number (19026). */
SECMOLRA_API int64_t SECMOLRA_LOFWithdraw(const char* lpKhh, const char* lpJys, int64_t nCxwth);
SECMOLRA_API int64_t SECMOLRA_LOFWithdrawEx(CusLoginInfo* info, const char* lpJys, int64_t nCxwth);
SECMOLRA_API int64_t SECMOLRA_LOFWithdraw_ASync(const char* lpKhh, const char* lpJys,
                                                int64_t nCxwth, int64_t nKFSBDBH);
SECMOLRA_API int64_t SECMOLRA_LOFWithdrawEx_ASync(CusLoginInfo* info, const char* lpJys,
                                                  int64_t nCxwth, int64_t nKFSBDBH);
/* Listed-fund withdrawal by the order's request number (19026). */
SECMOLRA_API int64_t SECMOLRA_LOFWithdrawByKFSBDBH(const char* lpKhh, const char* lpJys,
                                                   int64_t nCXKFSBDBH);
SECMOLRA_API int64_t SECMOLRA_LOFWithdrawByKFSBDBHEx(CusLoginInfo* info, const char* lpJys,
                                                     int64_t nCXKFSBDBH);
SECMOLRA_API int64_t SECMOLRA_LOFWithdrawByKFSBDBH_ASync(const char* lpKhh, const char* lpJys,
                                                         int64_t nCXKFSBDBH, int64_t nKFSBDBH);
SECMOLRA_API int64_t SECMOLRA_LOFWithdrawByKFSBDBHEx_ASync(CusLoginInfo* info, const char* lpJys,
                                                           int64_t nCXKFSBDBH, int64_t nKFSBDBH);
/* After-hours priced withdrawal by order number (19002, own reply). */
SECMOLRA_API int64_t SECMOLRA_PHDJWithdraw(const char* lpKhh, const char* lpJys, int64_t nCxwth);
SECMOLRA_API int64_t SECMOLRA_PHDJWithdrawEx(CusLoginInfo* info, const char* lpJys, int64_t nCxwth);
SECMOLRA_API int64_t SECMOLRA_PHDJWithdraw_ASync(const char* lpKhh, const char* lpJys,
                                                 int64_t nCxwth, int64_t nKFSBDBH);
SECMOLRA_API int64_t SECMOLRA_PHDJWithdrawEx_ASync(CusLoginInfo* info, const char* lpJys,
                                                   int64_t nCxwth, int64_t nKFSBDBH);
/* Issuance-business withdrawal (key/value 19052). */
SECMOLRA_API int64_t SECMOLRA_FXYWWithdraw(const char* lpKhh, const char* lpJys, int64_t nCxwth);
SECMOLRA_API int64_t SECMOLRA_FXYWWithdrawEx(CusLoginInfo* info, const char* lpJys, int64_t nCxwth);
SECMOLRA_API int64_t SECMOLRA_FXYWWithdraw_ASync(const char* lpKhh, const char* lpJys,
                                                 int64_t nCxwth, int64_t nKFSBDBH);
SECMOLRA_API int64_t SECMOLRA_FXYWWithdrawEx_ASync(CusLoginInfo* info, const char* lpJys,
                                                   int64_t nCxwth, int64_t nKFSBDBH);
/* Non-trading-business withdrawal (key/value 19096). */
SECMOLRA_API int64_t SECMOLRA_FJYWithdraw(const char* lpKhh, const char* lpJys, int64_t nCxwth);
SECMOLRA_API int64_t SECMOLRA_FJYWithdrawEx(CusLoginInfo* info, const char* lpJys, int64_t nCxwth);
SECMOLRA_API int64_t SECMOLRA_FJYWithdraw_ASync(const char* lpKhh, const char* lpJys,
                                                int64_t nCxwth, int64_t nKFSBDBH);
SECMOLRA_API int64_t SECMOLRA_FJYWithdrawEx_ASync(CusLoginInfo* info, const char* lpJys,
                                                  int64_t nCxwth, int64_t nKFSBDBH);
/* Withdrawal of a whole batch by its serial number (19063); nLSH >= 0, else -221
 * "客户号为空、流水号不能为负". Synchronous: the answer's positive return code; asynchronous:
 * nLSH, which tags the reply. */
SECMOLRA_API int64_t SECMOLRA_BatchOrderWithdraw(const char* lpKhh, int64_t nLSH);
SECMOLRA_API int64_t SECMOLRA_BatchOrderWithdrawEx(CusLoginInfo* info, int64_t nLSH);
SECMOLRA_API int64_t SECMOLRA_BatchOrderWithdraw_ASync(const char* lpKhh, int64_t nLSH);
SECMOLRA_API int64_t SECMOLRA_BatchOrderWithdrawEx_ASync(CusLoginInfo* info, int64_t nLSH);

/* ---- tradable quantity ---- */
/* @exports-tradable@ */
/* Tradable quantity (synchronous only): the quantity, truncated toward zero, or a failure
 * code (0 or negative) with the last error set; tell a zero quantity from a failure by the
 * last error. */
/* Ordinary tradable quantity (19011). */
SECMOLRA_API int64_t SECMOLRA_TradableQty(const char* lpKhh, const char* lpJys, const char* lpZqdm,
                                          int32_t nJylb, double lfWtjg, int32_t lDdlx,
                                          const char* lpGdh);
SECMOLRA_API int64_t SECMOLRA_TradableQtyEx(CusLoginInfo* info, const char* lpJys,
                                            const char* lpZqdm, int32_t nJylb, double lfWtjg,
                                            int32_t lDdlx);
/* ETF tradable quantity (19024). */
SECMOLRA_API int64_t SECMOLRA_ETFTradableQty(const char* lpKhh, const char* lpJys,
                                             const char* lpZqdm, int32_t nJylb, const char* lpGdh);
SECMOLRA_API int64_t SECMOLRA_ETFTradableQtyEx(CusLoginInfo* info, const char* lpJys,
                                               const char* lpZqdm, int32_t nJylb);
/* Repurchase tradable quantity (19045). */
SECMOLRA_API int64_t SECMOLRA_ZQHGTradableQty(const char* lpKhh, const char* lpJys,
                                              const char* lpZqdm, int32_t nJylb, const char* lpGdh);
SECMOLRA_API int64_t SECMOLRA_ZQHGTradableQtyEx(CusLoginInfo* info, const char* lpJys,
                                                const char* lpZqdm, int32_t nJylb);
/* Listed-fund tradable quantity (19028); nJylb 41, 42, 43, 47, 48, others -222. */
SECMOLRA_API int64_t SECMOLRA_LOFTradableQty(const char* lpKhh, const char* lpJys,
                                             const char* lpZqdm, int32_t nJylb, double lfWtjg,
                                             int32_t lDdlx, const char* lpGdh);
SECMOLRA_API int64_t SECMOLRA_LOFTradableQtyEx(CusLoginInfo* info, const char* lpJys,
                                               const char* lpZqdm, int32_t nJylb, double lfWtjg,
                                               int32_t lDdlx);
/* After-hours priced tradable quantity (19133). */
SECMOLRA_API int64_t SECMOLRA_PHDJTradableQty(const char* lpKhh, const char* lpJys,
                                              const char* lpZqdm, int32_t nJylb, double lfWtjg,
                                              int32_t lDdlx, const char* lpGdh);
SECMOLRA_API int64_t SECMOLRA_PHDJTradableQtyEx(CusLoginInfo* info, const char* lpJys,
                                                const char* lpZqdm, int32_t nJylb, double lfWtjg,
                                                int32_t lDdlx);
/* Issuance-business tradable quantity (key/value 19058). */
SECMOLRA_API int64_t SECMOLRA_FXYWTradableQty(const char* lpKhh, const char* lpJys,
                                              const char* lpZqdm, int32_t nJylb, double lfWtjg,
                                              int32_t lDdlx, const char* lpGdh);
SECMOLRA_API int64_t SECMOLRA_FXYWTradableQtyEx(CusLoginInfo* info, const char* lpJys,
                                                const char* lpZqdm, int32_t nJylb, double lfWtjg,
                                                int32_t lDdlx);
/* Non-trading tradable quantity (key/value 19105); nJylb 11, 12, 76, others -222. */
SECMOLRA_API int64_t SECMOLRA_FJYTradableQty(const char* lpKhh, const char* lpJys,
                                             const char* lpZqdm, int32_t nJylb, double lfWtjg,
                                             int32_t lDdlx, const char* lpGdh);
SECMOLRA_API int64_t SECMOLRA_FJYTradableQtyEx(CusLoginInfo* info, const char* lpJys,
                                               const char* lpZqdm, int32_t nJylb, double lfWtjg,
                                               int32_t lDdlx);

#ifdef __cplusplus
/* ---- exports that fill a std::vector (C++ hosts with the kit's standard library) ---- */
/* Each has a plain-array PYSECMOLRA_ form for every other host, except where noted. */

/* @vector-exports-login@ */
/* Appends the customer's trade nodes (system type 4) to list; returns how many, or a
 * negative code. An empty key uses the customer's existing connection set (code 0 with the
 * connection layer's message when it has none); a null customer number is -221. */
SECMOLRA_API int64_t SECMOLRA_QueryCusNodeinfo(const char* lpKeyName, const char* lpKhh,
                                               std::vector<CusNodeInfo>& list);

/* @vector-exports-queries@ */

/* Customer queries. Each empties `list`, appends one record per accepted answer row and
 * returns the number of records, or a negative code (also the last error): -221 null or
 * empty customer number ("非法参数", "客户号不能为空"), -203 "客户未登录", -202 no session,
 * -204 "发送请求失败", the answer's negative code with its text, or the connection
 * manager's staged code when the customer has no connection set (that code is 0: tell it
 * from an empty answer by the last error). On an error `list` keeps the records appended
 * before it. The Ex forms take the customer from a login record whose NodeID, when 1 or
 * more, names the node for this call (else the node of the customer's login). */

/* Funds of the customer, one record per currency. */
SECMOLRA_API int64_t SECMOLRA_QueryFundInfo(const char* khh, std::vector<FundRecord>& list);
SECMOLRA_API int64_t SECMOLRA_QueryFundInfoEx(CusLoginInfo* info, std::vector<FundRecord>& list);
/* Shareholder accounts of the customer, one record per exchange account. */
SECMOLRA_API int64_t SECMOLRA_QueryAccInfo(const char* khh, std::vector<AccountRecord>& list);
SECMOLRA_API int64_t SECMOLRA_QueryAccInfoEx(CusLoginInfo* info, std::vector<AccountRecord>& list);
/* Allotment rights on exchange jys and shareholder account gdh (sent as given, null as ""). */
SECMOLRA_API int64_t SECMOLRA_QueryPSQY(const char* khh, const char* jys, const char* gdh,
                                        std::vector<PSQYRecord>& list);
SECMOLRA_API int64_t SECMOLRA_QueryPSQYEx(CusLoginInfo* info, const char* jys, const char* gdh,
                                          std::vector<PSQYRecord>& list);
/* Orders of the day. nType, nSortType, nRowcount (rows per page) and nBrowindex (first row
 * of the page) are passed to the back end; jys, zqdm (null as "") and lWth (0: all) filter. */
SECMOLRA_API int64_t SECMOLRA_QueryOrders(const char* khh, int32_t nType, int32_t nSortType,
                                          int32_t nRowcount, int32_t nBrowindex, const char* jys,
                                          const char* zqdm, int64_t lWth,
                                          std::vector<OrderRecord>& list);
SECMOLRA_API int64_t SECMOLRA_QueryOrdersEx(CusLoginInfo* info, int32_t nType, int32_t nSortType,
                                            int32_t nRowcount, int32_t nBrowindex, const char* jys,
                                            const char* zqdm, int64_t lWth,
                                            std::vector<OrderRecord>& list);
/* Match reports of the day; arguments as SECMOLRA_QueryOrders. */
SECMOLRA_API int64_t SECMOLRA_QueryMatchs(const char* khh, int32_t nType, int32_t nSortType,
                                          int32_t nRowcount, int32_t nBrowindex, const char* jys,
                                          const char* zqdm, int64_t lWth,
                                          std::vector<MatchRecord>& list);
SECMOLRA_API int64_t SECMOLRA_QueryMatchsEx(CusLoginInfo* info, int32_t nType, int32_t nSortType,
                                            int32_t nRowcount, int32_t nBrowindex, const char* jys,
                                            const char* zqdm, int64_t lWth,
                                            std::vector<MatchRecord>& list);
/* Positions; gdh, jys, zqdm filter (null as ""), exeflag is passed to the back end. The Ex
 * form takes the shareholder account from the record's GDH. */
SECMOLRA_API int64_t SECMOLRA_QueryPositions(const char* khh, int32_t nSortType, int32_t nRowcount,
                                             int32_t nBrowindex, const char* gdh, const char* jys,
                                             const char* zqdm, int32_t exeflag,
                                             std::vector<PositionRecord>& list);
SECMOLRA_API int64_t SECMOLRA_QueryPositionsEx(CusLoginInfo* info, int32_t nSortType,
                                               int32_t nRowcount, int32_t nBrowindex,
                                               const char* jys, const char* zqdm, int32_t exeflag,
                                               std::vector<PositionRecord>& list);
/* ETF shares of fund jjdm (null -221 "非法参数", empty -221 "基金代码不能为空"). */
SECMOLRA_API int64_t SECMOLRA_QueryETFShare(const char* khh, const char* jjdm,
                                            std::vector<ETFShareRecord>& list);
SECMOLRA_API int64_t SECMOLRA_QueryETFShareEx(CusLoginInfo* info, const char* jjdm,
                                              std::vector<ETFShareRecord>& list);
/* Fund-allocation ratios between the nodes of fund account zjzh ("" for all). khh null or
 * empty, or zjzh null: -221 "非法参数". No plain-array form. */
SECMOLRA_API int64_t SECMOLRA_QueryZJHBCL(const char* khh, const char* zjzh,
                                          std::vector<ZJHBCLRecord>& list);
/* Available funds per node of fund account zjzh ("" for all); arguments checked as for
 * SECMOLRA_QueryZJHBCL. No plain-array form. */
SECMOLRA_API int64_t SECMOLRA_QueryJDKYZJ(const char* khh, const char* zjzh,
                                          std::vector<JDKYZJRecord>& list);

/* @vector-exports-orders@ */
/* Batch entrust (19012) of 1 to 100 rows, checked row by row before anything is sent (the
 * first bad row: -221 with its number and value). Returns the number of rows accepted; each
 * row receives its order number and note. */
SECMOLRA_API int64_t SECMOLRA_BatchOrderEntrust(const char* lpKhh, std::vector<BatchOrderRow>& rows,
                                                int64_t nWTPCH);
/* Batch entrust, customer as record. */
SECMOLRA_API int64_t SECMOLRA_BatchOrderEntrustEx(CusLoginInfo* info,
                                                  std::vector<BatchOrderRow>& rows, int64_t nWTPCH);
/* Batch entrust, asynchronous: returns nWTPCH, which tags the reply. */
SECMOLRA_API int64_t SECMOLRA_BatchOrderEntrust_ASync(const char* lpKhh,
                                                      std::vector<BatchOrderRow>& rows,
                                                      int64_t nWTPCH);
/* Batch entrust, customer as record, asynchronous. */
SECMOLRA_API int64_t SECMOLRA_BatchOrderEntrustEx_ASync(CusLoginInfo* info,
                                                        std::vector<BatchOrderRow>& rows,
                                                        int64_t nWTPCH);

} /* extern "C" */
#endif

#endif /* SECMOLRA_H */
