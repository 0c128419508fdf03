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

/* Fund query (SECMOLRA_QueryFundInfo), one row per currency. Amount1 and Amount2 both carry
 * answer key 709; Total is Amount7 + Amount1 + Amount9, added in that order. */
typedef struct FundRecord {
  char KHH[16];      /* 605 */
  char ZJZH[16];     /* 716 */
  char BZ[4];        /* 511 currency */
  char Text2[16];    /* 1257 */
  double Amount1;    /* 709 */
  double Amount2;    /* 709 */
  double Amount3;    /* 826 */
  double Amount4;    /* 2085 */
  double Amount5;    /* 619 */
  double Amount6;    /* 2086 */
  double Total;      /* (869 + 709) + 647 */
  double Amount7;    /* 869 */
  double Amount8;    /* 1847 */
  char Reserved[88];
  double Amount9;    /* 647 */
  char Reserved2[16];
} FundRecord;
SECMOLRA_STATIC_ASSERT(sizeof(FundRecord) == 236, "FundRecord is 236 bytes");

/* Shareholder-account query (SECMOLRA_QueryAccInfo). */
typedef struct AccountRecord {
  char KHH[16];      /* 605 */
  char JYS[4];       /* 599 exchange short code */
  char GDH[12];      /* 571 shareholder account */
  char Text2[16];    /* 575 */
  char Text3[16];    /* 795 */
  char Text4[8];     /* 1027 */
  char BZ[4];        /* 511 currency */
  char Text5[16];    /* 1532 */
  int32_t Value;     /* 572 */
  int32_t Reserved;
} AccountRecord;
SECMOLRA_STATIC_ASSERT(sizeof(AccountRecord) == 100, "AccountRecord is 100 bytes");

/* Allotment-right query (SECMOLRA_QueryPSQY). Bytes behind a text's terminator are
 * unspecified. */
typedef struct PSQYRecord {
  char KHH[16];      /* 605 */
  char JYS[4];       /* 599 */
  char GDH[12];      /* 571 */
  int64_t Value1;    /* 724 */
  int64_t Value2;    /* 1179 */
} PSQYRecord;
SECMOLRA_STATIC_ASSERT(sizeof(PSQYRecord) == 48, "PSQYRecord is 48 bytes");

/* Order query (SECMOLRA_QueryOrders): one order of the day. Answer keys in comments. */
typedef struct OrderRecord {
  char KHH[16];      /* 605 */
  char JYS[4];       /* 599 */
  char GDH[12];      /* 571 */
  char ZQDM[9];      /* 719 security code */
  char ZQMC[33];     /* 9206 security name */
  int64_t WTH;       /* 681 order number */
  int32_t JYLB;      /* 595 trade category */
  int64_t WTSL;      /* 684 order quantity */
  double WTJG;       /* 682 order price */
  int32_t DDLX;      /* 1013 order type */
  char WTSJ[13];     /* 9201 entrust time */
  int64_t CJSL;      /* 9202 matched quantity */
  double CJJG;       /* 9203 average match price */
  double CJJE;       /* 9204 match amount */
  int64_t CDSL;      /* 9205 withdrawn quantity */
  int32_t SBJG;      /* 753 declaration result */
  char JGSM[128];    /* 9209 result note */
  char CXBZ[2];      /* 9210 withdrawal flag ("W" marks a withdrawal) */
  int64_t KFSBDBH;   /* 9157 the caller's request number */
  int64_t WTPCH;     /* 9216 batch number */
  double DJZJ;       /* 764 frozen funds */
  char ZJZH[31];     /* 716 fund account */
  char BZ[4];        /* 511 currency */
  char Reserved[100];
} OrderRecord;
SECMOLRA_STATIC_ASSERT(sizeof(OrderRecord) == 444, "OrderRecord is 444 bytes");

/* Match query (SECMOLRA_QueryMatchs): one match report of the day. */
typedef struct MatchRecord {
  char KHH[16];      /* 605 */
  char JYS[4];       /* 599 */
  char GDH[12];      /* 571 */
  char ZQDM[9];      /* 719 */
  char ZQMC[33];     /* 9206 */
  int64_t WTH;       /* 681 */
  int32_t JYLB;      /* 595 */
  int64_t CJSL;      /* 9202 matched quantity */
  double CJJG;       /* 9203 match price */
  double CJJE;       /* 9204 match amount */
  char CJBH[31];     /* 9207 match number */
  char CJSJ[13];     /* 9208 match time */
  int64_t KFSBDBH;   /* 9157 */
  char Reserved[23];
} MatchRecord;
SECMOLRA_STATIC_ASSERT(sizeof(MatchRecord) == 185, "MatchRecord is 185 bytes");

/* Position query (SECMOLRA_QueryPositions): one security held. */
typedef struct PositionRecord {
  char KHH[16];      /* 605 */
  char JYS[4];       /* 599 */
  char GDH[12];      /* 571 */
  char ZQDM[9];      /* 719 */
  char ZQMC[33];     /* 9206 */
  int64_t GFYE;      /* 9211 position balance */
  int64_t KMSL;      /* 9212 sellable quantity */
  double CBJ;        /* 9213 cost price */
  double ZXJ;        /* 9219 latest price */
  double ZXSZ;       /* 9214 market value */
  double FDYK;       /* 9215 floating profit and loss */
  char BZ[4];        /* 511 */
  char Reserved[258];
} PositionRecord;
SECMOLRA_STATIC_ASSERT(sizeof(PositionRecord) == 384, "PositionRecord is 384 bytes");

/* ETF-share query (SECMOLRA_QueryETFShare): one component or share line of a fund. */
typedef struct ETFShareRecord {
  char KHH[16];      /* 605 */
  char JYS[4];       /* 599 */
  char GDH[12];      /* 571 */
  char JJDM[9];      /* 9225 fund code */
  char ZQDM[9];      /* 719 */
  int64_t FESL;      /* 9218 shares */
  char Reserved[14];
} ETFShareRecord;
SECMOLRA_STATIC_ASSERT(sizeof(ETFShareRecord) == 72, "ETFShareRecord is 72 bytes");

/* Fund-allocation ratio between two nodes (SECMOLRA_QueryZJHBCL). */
typedef struct ZJHBCLRecord {
  int64_t Node1;     /* 935 */
  int64_t Node2;     /* 936 */
  double Ratio1;     /* 940 */
  double Ratio2;     /* 941 */
} ZJHBCLRecord;
SECMOLRA_STATIC_ASSERT(sizeof(ZJHBCLRecord) == 32, "ZJHBCLRecord is 32 bytes");

/* Available funds of one node (SECMOLRA_QueryJDKYZJ). */
typedef struct JDKYZJRecord {
  int32_t NodeID;    /* 2071 */
  int32_t Reserved;
  double KYZJ;       /* 709 available funds */
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

/* ---- login, logout, tokens, nodes ---- */
/* @exports-login@ */

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
                                                    const char* zjzh, double amount,
                                                    int64_t node1, int64_t node2,
                                                    const char* remark);
/* Sets the fund-allocation ratio between two nodes. systemType must be 4, khh non-empty,
 * both nodes 1 or more and different, neither ratio negative; otherwise -221 "非法参数". */
SECMOLRA_API int64_t SECMOLRA_ModifyZJHBCL(int32_t systemType, const char* khh,
                                           const char* zjzh, int64_t node1, int64_t node2,
                                           double ratio1, double ratio2, const char* remark);

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

/* Plain-array forms of the list queries for scripting hosts. Each calls its SECMOLRA_ query
 * with the same leading arguments, copies at most `cap` records and at most as many as the
 * query produced into `records`, and returns the query's result unchanged: the full count
 * (compare it with cap to see whether the array was too small) or a negative code, in which
 * case nothing is copied. */
SECMOLRA_API int64_t PYSECMOLRA_QueryFundInfo(const char* khh, FundRecord* records, int32_t cap);
SECMOLRA_API int64_t PYSECMOLRA_QueryAccInfo(const char* khh, AccountRecord* records,
                                             int32_t cap);
SECMOLRA_API int64_t PYSECMOLRA_QueryOrders(const char* khh, int32_t nType, int32_t nSortType,
                                            int32_t nRowcount, int32_t nBrowindex,
                                            const char* jys, const char* zqdm, int64_t lWth,
                                            OrderRecord* records, int32_t cap);
SECMOLRA_API int64_t PYSECMOLRA_QueryMatchs(const char* khh, int32_t nType, int32_t nSortType,
                                            int32_t nRowcount, int32_t nBrowindex,
                                            const char* jys, const char* zqdm, int64_t lWth,
                                            MatchRecord* records, int32_t cap);
SECMOLRA_API int64_t PYSECMOLRA_QueryPositions(const char* khh, int32_t nSortType,
                                               int32_t nRowcount, int32_t nBrowindex,
                                               const char* gdh, const char* jys,
                                               const char* zqdm, int32_t exeflag,
                                               PositionRecord* records, int32_t cap);
SECMOLRA_API int64_t PYSECMOLRA_QueryPSQY(const char* khh, const char* jys, const char* gdh,
                                          PSQYRecord* records, int32_t cap);
/* Checks the fund code itself (null -221 "非法参数", empty -221 "基金代码不能为空", both
 * under the name "SECMOLRA_QueryETFShare"). */
SECMOLRA_API int64_t PYSECMOLRA_QueryETFShare(const char* khh, const char* jjdm,
                                              ETFShareRecord* records, int32_t cap);

/* ---- orders: entrust, batch, ETF, other businesses ---- */
/* @exports-orders@ */

/* ---- withdrawals ---- */
/* @exports-withdrawals@ */

/* ---- tradable quantity ---- */
/* @exports-tradable@ */

#ifdef __cplusplus
/* Exports that fill a caller-owned std::vector (C++ hosts with the kit's standard library). */

/* @vector-exports-login@ */

/* @vector-exports-queries@ */

/* Customer queries. Each empties `list`, appends one record per accepted answer row and
 * returns the number of records, or a negative code (also the last error): -221 null or
 * empty customer number ("非法参数", "客户号不能为空"), -203 "客户未登录", -202 no session,
 * -204 "发送请求失败", the answer's negative code with its text, or the connection
 * manager's staged code when the customer has no connection set (that code is 0: tell it
 * from an empty answer by the last error). On an error `list` keeps the records appended
 * before it. The Ex forms take the customer from a login record whose NodeID, when 1 or
 * more, names the node for this call (else the node of the customer's login). */
SECMOLRA_API int64_t SECMOLRA_QueryFundInfo(const char* khh, std::vector<FundRecord>& list);
SECMOLRA_API int64_t SECMOLRA_QueryFundInfoEx(CusLoginInfo* info, std::vector<FundRecord>& list);
SECMOLRA_API int64_t SECMOLRA_QueryAccInfo(const char* khh, std::vector<AccountRecord>& list);
SECMOLRA_API int64_t SECMOLRA_QueryAccInfoEx(CusLoginInfo* info,
                                             std::vector<AccountRecord>& list);
/* Allotment rights on exchange jys and shareholder account gdh (sent as given, null as ""). */
SECMOLRA_API int64_t SECMOLRA_QueryPSQY(const char* khh, const char* jys, const char* gdh,
                                        std::vector<PSQYRecord>& list);
SECMOLRA_API int64_t SECMOLRA_QueryPSQYEx(CusLoginInfo* info, const char* jys, const char* gdh,
                                          std::vector<PSQYRecord>& list);
/* Orders of the day. nType, nSortType, nRowcount (rows per page) and nBrowindex (first row
 * of the page) are passed to the back end; jys, zqdm (null as "") and lWth (0: all) filter. */
SECMOLRA_API int64_t SECMOLRA_QueryOrders(const char* khh, int32_t nType, int32_t nSortType,
                                          int32_t nRowcount, int32_t nBrowindex,
                                          const char* jys, const char* zqdm, int64_t lWth,
                                          std::vector<OrderRecord>& list);
SECMOLRA_API int64_t SECMOLRA_QueryOrdersEx(CusLoginInfo* info, int32_t nType,
                                            int32_t nSortType, int32_t nRowcount,
                                            int32_t nBrowindex, const char* jys,
                                            const char* zqdm, int64_t lWth,
                                            std::vector<OrderRecord>& list);
/* Match reports of the day; arguments as SECMOLRA_QueryOrders. */
SECMOLRA_API int64_t SECMOLRA_QueryMatchs(const char* khh, int32_t nType, int32_t nSortType,
                                          int32_t nRowcount, int32_t nBrowindex,
                                          const char* jys, const char* zqdm, int64_t lWth,
                                          std::vector<MatchRecord>& list);
SECMOLRA_API int64_t SECMOLRA_QueryMatchsEx(CusLoginInfo* info, int32_t nType,
                                            int32_t nSortType, int32_t nRowcount,
                                            int32_t nBrowindex, const char* jys,
                                            const char* zqdm, int64_t lWth,
                                            std::vector<MatchRecord>& list);
/* Positions; gdh, jys, zqdm filter (null as ""), exeflag is passed to the back end. The Ex
 * form takes the shareholder account from the record's GDH. */
SECMOLRA_API int64_t SECMOLRA_QueryPositions(const char* khh, int32_t nSortType,
                                             int32_t nRowcount, int32_t nBrowindex,
                                             const char* gdh, const char* jys, const char* zqdm,
                                             int32_t exeflag, std::vector<PositionRecord>& list);
SECMOLRA_API int64_t SECMOLRA_QueryPositionsEx(CusLoginInfo* info, int32_t nSortType,
                                               int32_t nRowcount, int32_t nBrowindex,
                                               const char* jys, const char* zqdm,
                                               int32_t exeflag,
                                               std::vector<PositionRecord>& list);
/* ETF shares of fund jjdm (null -221 "非法参数", empty -221 "基金代码不能为空"). */
SECMOLRA_API int64_t SECMOLRA_QueryETFShare(const char* khh, const char* jjdm,
                                            std::vector<ETFShareRecord>& list);
SECMOLRA_API int64_t SECMOLRA_QueryETFShareEx(CusLoginInfo* info, const char* jjdm,
                                              std::vector<ETFShareRecord>& list);
/* Fund-allocation ratios of fund account zjzh ("" for all), and the available funds per
 * node. khh null or empty, or zjzh null: -221 "非法参数". */
SECMOLRA_API int64_t SECMOLRA_QueryZJHBCL(const char* khh, const char* zjzh,
                                          std::vector<ZJHBCLRecord>& list);
SECMOLRA_API int64_t SECMOLRA_QueryJDKYZJ(const char* khh, const char* zjzh,
                                          std::vector<JDKYZJRecord>& list);

/* @vector-exports-orders@ */

} /* extern "C" */
#endif

#endif /* SECMOLRA_H */
