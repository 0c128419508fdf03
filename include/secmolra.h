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
/* Batch entrust over a plain array of count rows; the rows' results are copied back. */
SECMOLRA_API int64_t PYSECMOLRA_BatchOrderEntrust(const char* lpKhh, int64_t nWTPCH,
                                                  BatchOrderRow* rows, int32_t count);
/* Asynchronous batch entrust over a plain array; nothing is copied back. */
SECMOLRA_API int64_t PYSECMOLRA_BatchOrderEntrust_ASync(const char* lpKhh, int64_t nWTPCH,
                                                        BatchOrderRow* rows, int32_t count);

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
SECMOLRA_API int64_t SECMOLRA_OrderEntrust(const char* lpKhh, const char* lpJys,
                                           const char* lpZqdm, int32_t nJylb, int64_t lWtsl,
                                           double lfWtjg, int64_t lDdlx, const char* lpGdh);
/* Ordinary order, customer as record. */
SECMOLRA_API int64_t SECMOLRA_OrderEntrustEx(CusLoginInfo* info, const char* lpJys,
                                             const char* lpZqdm, int32_t nJylb, int64_t lWtsl,
                                             double lfWtjg, int64_t lDdlx);
/* Ordinary order, asynchronous. */
SECMOLRA_API int64_t SECMOLRA_OrderEntrust_ASync(const char* lpKhh, const char* lpJys,
                                                 const char* lpZqdm, int32_t nJylb,
                                                 int64_t lWtsl, double lfWtjg, int64_t lDdlx,
                                                 const char* lpGdh, int64_t nKFSBDBH);
/* Ordinary order, customer as record, asynchronous. */
SECMOLRA_API int64_t SECMOLRA_OrderEntrustEx_ASync(CusLoginInfo* info, const char* lpJys,
                                                   const char* lpZqdm, int32_t nJylb,
                                                   int64_t lWtsl, double lfWtjg, int64_t lDdlx,
                                                   int64_t nKFSBDBH);

/* ETF subscription (nJylb 29, 19013) or redemption (30, 19014); others -222
 * "仅支持[JYLB_ETFG,JYLB_ETFSH]". lpStep may be null (up to 21 bytes sent). */
SECMOLRA_API int64_t SECMOLRA_ETFEntrust(const char* lpKhh, const char* lpJys,
                                         const char* lpZqdm, int32_t nJylb, int32_t lWtsl,
                                         const char* lpGdh, const char* lpStep);
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
                                                 const char* lpZqdm, int32_t nJylb,
                                                 int32_t lWtsl, const char* lpStep,
                                                 int64_t nKFSBDBH);

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
SECMOLRA_API int64_t SECMOLRA_ZQHGEntrust(const char* lpKhh, const char* lpJys,
                                          const char* lpZqdm, int32_t nJylb, int32_t lWtsl,
                                          double lfWtjg, int64_t lDdlx, const char* lpGdh);
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
                                                  const char* lpZqdm, int32_t nJylb,
                                                  int32_t lWtsl, double lfWtjg, int64_t lDdlx,
                                                  int64_t nKFSBDBH);

/* Pledge in/out for repurchase (19043); nJylb 37 or 38, others -222. */
SECMOLRA_API int64_t SECMOLRA_ZQHGCrk(const char* lpKhh, const char* lpJys, const char* lpZqdm,
                                      int32_t nJylb, int32_t lWtsl, const char* lpGdh);
/* Pledge in/out, customer as record. */
SECMOLRA_API int64_t SECMOLRA_ZQHGCrkEx(CusLoginInfo* info, const char* lpJys,
                                        const char* lpZqdm, int32_t nJylb, int32_t lWtsl);
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
SECMOLRA_API int64_t SECMOLRA_FXYW_ASync(const char* lpKhh, const char* lpJys,
                                         const char* lpZqdm, int32_t nJylb, int64_t lWtsl,
                                         double lwtjg, int64_t lDdlx, const char* lpGdh,
                                         int64_t nKFSBDBH);
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
SECMOLRA_API int64_t SECMOLRA_Lof_ASync(const char* lpKhh, const char* lpJys,
                                        const char* lpZqdm, int32_t nJylb, int32_t lWtsl,
                                        double lwtjg, char flag, const char* lpGdh,
                                        int64_t nKFSBDBH);
/* Listed fund, customer as record, asynchronous. */
SECMOLRA_API int64_t SECMOLRA_LofEx_ASync(CusLoginInfo* info, const char* lpJys,
                                          const char* lpZqdm, int32_t nJylb, int32_t lWtsl,
                                          double lwtjg, char flag, int64_t nKFSBDBH);

/* After-hours priced trading (19131); categories are not checked. */
SECMOLRA_API int64_t SECMOLRA_PHDJEntrust(const char* lpKhh, const char* lpJys,
                                          const char* lpZqdm, int32_t nJylb, int64_t lWtsl,
                                          double lfWtjg, int64_t lDdlx, const char* lpGdh);
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
                                                  const char* lpZqdm, int32_t nJylb,
                                                  int64_t lWtsl, double lfWtjg, int64_t lDdlx,
                                                  int64_t nKFSBDBH);

/* Non-trading business (key/value; nJylb 212 -> 19090, 11/12 -> 19091, 76/77 -> 19092,
 * others -222). */
SECMOLRA_API int64_t SECMOLRA_FJY(const char* lpKhh, const char* lpJys, const char* lpZqdm,
                                  int32_t nJylb, int64_t lWtsl, double lwtjg, int64_t lDdlx,
                                  const char* lpGdh);
/* Non-trading business, customer as record. */
SECMOLRA_API int64_t SECMOLRA_FJYEx(CusLoginInfo* info, const char* lpJys, const char* lpZqdm,
                                    int32_t nJylb, int64_t lWtsl, double lwtjg, int64_t lDdlx);
/* Non-trading business, asynchronous. */
SECMOLRA_API int64_t SECMOLRA_FJY_ASync(const char* lpKhh, const char* lpJys,
                                        const char* lpZqdm, int32_t nJylb, int64_t lWtsl,
                                        double lwtjg, int64_t lDdlx, const char* lpGdh,
                                        int64_t nKFSBDBH);
/* Non-trading business, customer as record, asynchronous. */
SECMOLRA_API int64_t SECMOLRA_FJYEx_ASync(CusLoginInfo* info, const char* lpJys,
                                          const char* lpZqdm, int32_t nJylb, int64_t lWtsl,
                                          double lwtjg, int64_t lDdlx, int64_t nKFSBDBH);

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
SECMOLRA_API int64_t SECMOLRA_OrderWithdrawEx(CusLoginInfo* info, const char* lpJys, int64_t nCxwth);
SECMOLRA_API int64_t SECMOLRA_OrderWithdraw_ASync(const char* lpKhh, const char* lpJys, int64_t nCxwth,
                                           int64_t nKFSBDBH);
SECMOLRA_API int64_t SECMOLRA_OrderWithdrawEx_ASync(CusLoginInfo* info, const char* lpJys,
                                             int64_t nCxwth, int64_t nKFSBDBH);
/* Ordinary withdrawal by the order's request number (19002). */
SECMOLRA_API int64_t SECMOLRA_OrderWithdrawByKFSBDBH(const char* lpKhh, const char* lpJys, int64_t nCXKFSBDBH);
SECMOLRA_API int64_t SECMOLRA_OrderWithdrawByKFSBDBHEx(CusLoginInfo* info, const char* lpJys, int64_t nCXKFSBDBH);
SECMOLRA_API int64_t SECMOLRA_OrderWithdrawByKFSBDBH_ASync(const char* lpKhh, const char* lpJys, int64_t nCXKFSBDBH,
                                           int64_t nKFSBDBH);
SECMOLRA_API int64_t SECMOLRA_OrderWithdrawByKFSBDBHEx_ASync(CusLoginInfo* info, const char* lpJys,
                                             int64_t nCXKFSBDBH, int64_t nKFSBDBH);
/* ETF withdrawal by order number (19020). */
SECMOLRA_API int64_t SECMOLRA_ETFWithdraw(const char* lpKhh, const char* lpJys, int64_t nCxwth);
SECMOLRA_API int64_t SECMOLRA_ETFWithdrawEx(CusLoginInfo* info, const char* lpJys, int64_t nCxwth);
SECMOLRA_API int64_t SECMOLRA_ETFWithdraw_ASync(const char* lpKhh, const char* lpJys, int64_t nCxwth,
                                           int64_t nKFSBDBH);
SECMOLRA_API int64_t SECMOLRA_ETFWithdrawEx_ASync(CusLoginInfo* info, const char* lpJys,
                                             int64_t nCxwth, int64_t nKFSBDBH);
/* ETF withdrawal by the order's request number (19020). */
SECMOLRA_API int64_t SECMOLRA_ETFWithdrawByKFSBDBH(const char* lpKhh, const char* lpJys, int64_t nCXKFSBDBH);
SECMOLRA_API int64_t SECMOLRA_ETFWithdrawByKFSBDBHEx(CusLoginInfo* info, const char* lpJys, int64_t nCXKFSBDBH);
SECMOLRA_API int64_t SECMOLRA_ETFWithdrawByKFSBDBH_ASync(const char* lpKhh, const char* lpJys, int64_t nCXKFSBDBH,
                                           int64_t nKFSBDBH);
SECMOLRA_API int64_t SECMOLRA_ETFWithdrawByKFSBDBHEx_ASync(CusLoginInfo* info, const char* lpJys,
                                             int64_t nCXKFSBDBH, int64_t nKFSBDBH);
/* Repurchase withdrawal by order number (19044). */
SECMOLRA_API int64_t SECMOLRA_ZQHGWithdraw(const char* lpKhh, const char* lpJys, int64_t nCxwth);
SECMOLRA_API int64_t SECMOLRA_ZQHGWithdrawEx(CusLoginInfo* info, const char* lpJys, int64_t nCxwth);
SECMOLRA_API int64_t SECMOLRA_ZQHGWithdraw_ASync(const char* lpKhh, const char* lpJys, int64_t nCxwth,
                                           int64_t nKFSBDBH);
SECMOLRA_API int64_t SECMOLRA_ZQHGWithdrawEx_ASync(CusLoginInfo* info, const char* lpJys,
                                             int64_t nCxwth, int64_t nKFSBDBH);
/* Repurchase withdrawal by the order's request number (19044). */
SECMOLRA_API int64_t SECMOLRA_ZQHGWithdrawByKFSBDBH(const char* lpKhh, const char* lpJys, int64_t nCXKFSBDBH);
SECMOLRA_API int64_t SECMOLRA_ZQHGWithdrawByKFSBDBHEx(CusLoginInfo* info, const char* lpJys, int64_t nCXKFSBDBH);
SECMOLRA_API int64_t SECMOLRA_ZQHGWithdrawByKFSBDBH_ASync(const char* lpKhh, const char* lpJys, int64_t nCXKFSBDBH,
                                           int64_t nKFSBDBH);
SECMOLRA_API int64_t SECMOLRA_ZQHGWithdrawByKFSBDBHEx_ASync(CusLoginInfo* info, const char* lpJys,
                                             int64_t nCXKFSBDBH, int64_t nKFSBDBH);
/* Listed-fund withdrawal by order number (19026). */
SECMOLRA_API int64_t SECMOLRA_LOFWithdraw(const char* lpKhh, const char* lpJys, int64_t nCxwth);
SECMOLRA_API int64_t SECMOLRA_LOFWithdrawEx(CusLoginInfo* info, const char* lpJys, int64_t nCxwth);
SECMOLRA_API int64_t SECMOLRA_LOFWithdraw_ASync(const char* lpKhh, const char* lpJys, int64_t nCxwth,
                                           int64_t nKFSBDBH);
SECMOLRA_API int64_t SECMOLRA_LOFWithdrawEx_ASync(CusLoginInfo* info, const char* lpJys,
                                             int64_t nCxwth, int64_t nKFSBDBH);
/* Listed-fund withdrawal by the order's request number (19026). */
SECMOLRA_API int64_t SECMOLRA_LOFWithdrawByKFSBDBH(const char* lpKhh, const char* lpJys, int64_t nCXKFSBDBH);
SECMOLRA_API int64_t SECMOLRA_LOFWithdrawByKFSBDBHEx(CusLoginInfo* info, const char* lpJys, int64_t nCXKFSBDBH);
SECMOLRA_API int64_t SECMOLRA_LOFWithdrawByKFSBDBH_ASync(const char* lpKhh, const char* lpJys, int64_t nCXKFSBDBH,
                                           int64_t nKFSBDBH);
SECMOLRA_API int64_t SECMOLRA_LOFWithdrawByKFSBDBHEx_ASync(CusLoginInfo* info, const char* lpJys,
                                             int64_t nCXKFSBDBH, int64_t nKFSBDBH);
/* After-hours priced withdrawal by order number (19002, own reply). */
SECMOLRA_API int64_t SECMOLRA_PHDJWithdraw(const char* lpKhh, const char* lpJys, int64_t nCxwth);
SECMOLRA_API int64_t SECMOLRA_PHDJWithdrawEx(CusLoginInfo* info, const char* lpJys, int64_t nCxwth);
SECMOLRA_API int64_t SECMOLRA_PHDJWithdraw_ASync(const char* lpKhh, const char* lpJys, int64_t nCxwth,
                                           int64_t nKFSBDBH);
SECMOLRA_API int64_t SECMOLRA_PHDJWithdrawEx_ASync(CusLoginInfo* info, const char* lpJys,
                                             int64_t nCxwth, int64_t nKFSBDBH);
/* Issuance-business withdrawal (key/value 19052). */
SECMOLRA_API int64_t SECMOLRA_FXYWWithdraw(const char* lpKhh, const char* lpJys, int64_t nCxwth);
SECMOLRA_API int64_t SECMOLRA_FXYWWithdrawEx(CusLoginInfo* info, const char* lpJys, int64_t nCxwth);
SECMOLRA_API int64_t SECMOLRA_FXYWWithdraw_ASync(const char* lpKhh, const char* lpJys, int64_t nCxwth,
                                           int64_t nKFSBDBH);
SECMOLRA_API int64_t SECMOLRA_FXYWWithdrawEx_ASync(CusLoginInfo* info, const char* lpJys,
                                             int64_t nCxwth, int64_t nKFSBDBH);
/* Non-trading-business withdrawal (key/value 19096). */
SECMOLRA_API int64_t SECMOLRA_FJYWithdraw(const char* lpKhh, const char* lpJys, int64_t nCxwth);
SECMOLRA_API int64_t SECMOLRA_FJYWithdrawEx(CusLoginInfo* info, const char* lpJys, int64_t nCxwth);
SECMOLRA_API int64_t SECMOLRA_FJYWithdraw_ASync(const char* lpKhh, const char* lpJys, int64_t nCxwth,
                                           int64_t nKFSBDBH);
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
SECMOLRA_API int64_t SECMOLRA_ETFTradableQty(const char* lpKhh, const char* lpJys, const char* lpZqdm,
                                     int32_t nJylb, const char* lpGdh);
SECMOLRA_API int64_t SECMOLRA_ETFTradableQtyEx(CusLoginInfo* info, const char* lpJys,
                                       const char* lpZqdm, int32_t nJylb);
/* Repurchase tradable quantity (19045). */
SECMOLRA_API int64_t SECMOLRA_ZQHGTradableQty(const char* lpKhh, const char* lpJys, const char* lpZqdm,
                                     int32_t nJylb, const char* lpGdh);
SECMOLRA_API int64_t SECMOLRA_ZQHGTradableQtyEx(CusLoginInfo* info, const char* lpJys,
                                       const char* lpZqdm, int32_t nJylb);
/* Listed-fund tradable quantity (19028); nJylb 41, 42, 43, 47, 48, others -222. */
SECMOLRA_API int64_t SECMOLRA_LOFTradableQty(const char* lpKhh, const char* lpJys, const char* lpZqdm,
                                     int32_t nJylb, double lfWtjg, int32_t lDdlx,
                                     const char* lpGdh);
SECMOLRA_API int64_t SECMOLRA_LOFTradableQtyEx(CusLoginInfo* info, const char* lpJys,
                                       const char* lpZqdm, int32_t nJylb, double lfWtjg,
                                       int32_t lDdlx);
/* After-hours priced tradable quantity (19133). */
SECMOLRA_API int64_t SECMOLRA_PHDJTradableQty(const char* lpKhh, const char* lpJys, const char* lpZqdm,
                                     int32_t nJylb, double lfWtjg, int32_t lDdlx,
                                     const char* lpGdh);
SECMOLRA_API int64_t SECMOLRA_PHDJTradableQtyEx(CusLoginInfo* info, const char* lpJys,
                                       const char* lpZqdm, int32_t nJylb, double lfWtjg,
                                       int32_t lDdlx);
/* Issuance-business tradable quantity (key/value 19058). */
SECMOLRA_API int64_t SECMOLRA_FXYWTradableQty(const char* lpKhh, const char* lpJys, const char* lpZqdm,
                                     int32_t nJylb, double lfWtjg, int32_t lDdlx,
                                     const char* lpGdh);
SECMOLRA_API int64_t SECMOLRA_FXYWTradableQtyEx(CusLoginInfo* info, const char* lpJys,
                                       const char* lpZqdm, int32_t nJylb, double lfWtjg,
                                       int32_t lDdlx);
/* Non-trading tradable quantity (key/value 19105); nJylb 11, 12, 76, others -222. */
SECMOLRA_API int64_t SECMOLRA_FJYTradableQty(const char* lpKhh, const char* lpJys, const char* lpZqdm,
                                     int32_t nJylb, double lfWtjg, int32_t lDdlx,
                                     const char* lpGdh);
SECMOLRA_API int64_t SECMOLRA_FJYTradableQtyEx(CusLoginInfo* info, const char* lpJys,
                                       const char* lpZqdm, int32_t nJylb, double lfWtjg,
                                       int32_t lDdlx);

#ifdef __cplusplus
/* Exports that fill a caller-owned std::vector (C++ hosts with the kit's standard library). */

/* @vector-exports-login@ */
/* Appends the customer's trade nodes (system type 4) to list; returns how many, or a
 * negative code. */
SECMOLRA_API int64_t SECMOLRA_QueryCusNodeinfo(const char* lpKeyName, const char* lpKhh,
                                               std::vector<CusNodeInfo>& list);

/* @vector-exports-queries@ */

/* @vector-exports-orders@ */
/* Batch entrust (19012) of 1 to 100 rows, checked row by row before anything is sent (the
 * first bad row: -221 with its number and value). Returns the number of rows accepted; each
 * row receives its order number and note. */
SECMOLRA_API int64_t SECMOLRA_BatchOrderEntrust(const char* lpKhh,
                                                std::vector<BatchOrderRow>& rows,
                                                int64_t nWTPCH);
/* Batch entrust, customer as record. */
SECMOLRA_API int64_t SECMOLRA_BatchOrderEntrustEx(CusLoginInfo* info,
                                                  std::vector<BatchOrderRow>& rows,
                                                  int64_t nWTPCH);
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
