// Numeric field ids of the back end's key/value requests and answers, as the kit uses them.
// The simulated back end includes this header too, so both sides name a field the same way.
//
// Ids marked "kit assumption" belong to requests and answers whose layout the back end's
// documentation left to us (the order, match, position and ETF-share queries);
// docs/back-end-assumptions.md lists them.
#pragma once

#include <cstdint>

namespace fid {

enum : std::int32_t {
  // Customer, accounts, login.
  KHH = 605,           // customer number
  JYMM = 598,          // encoded trade password
  JYS = 599,           // exchange (short code)
  GDH = 571,           // shareholder account
  ZJZH = 716,          // fund account
  BZ = 511,            // currency
  LOGIN_TYPE = 781,    // login type (6 direct, 5 authentication)
  SYSTEM_TYPE = 1923,  // back-office system type
  NODE_ID = 2071,      // node id
  TOKEN = 1600,        // session token
  APP_TEXT = 1264,     // application text of the login
  APP_NAME = 3071,     // "molra" in the authentication login
  APP_EXTRA = 3072,    // "" in the authentication login
  OLD_PWD = 631,       // encoded old password
  NEW_PWD = 640,       // encoded new password
  ROW_STATE =
      507,  // per-row state of query answers: negative rows are skipped; password change result

  // Server time and trade date.
  SYS_DATE = 578,          // back end's date YYYYMMDD
  TIME_UNUSED = 2051,      // read, not used
  TIME_CORRECTION = 2052,  // correction in milliseconds
  SERVER_TIME = 1219,      // "HH:MM:SS" or "HH:MM:SS.mmm"
  TRADE_DATE = 4211,       // trade date YYYYMMDD (A00066)

  // Orders.
  ZQDM = 719,      // security code
  JYLB = 595,      // trade category
  WTSL = 684,      // quantity; also the tradable quantity answer
  WTJG = 682,      // price
  DDLX = 1013,     // order type
  WTH = 681,       // order number
  DJZJ = 764,      // frozen funds
  SBJG = 753,      // declaration result
  KFSBDBH = 9157,  // caller's request number of an asynchronous request

  // Block trading.
  DZJY_DFXW = 1935,   // counterparty seat
  DZJY_LXR = 9076,    // contact person
  DZJY_LXDH = 532,    // contact telephone
  DZJY_HYH = 4176,    // agreement number
  DZJY_DFGDH = 1936,  // counterparty shareholder account
  DZJY_PDDM = 4279,   // matching code
  DZJY_TDBZ = 9134,   // flag

  // Fund transfers and allocation ratios.
  FSJE = 808,  // amount
  TRANSFER_TEXT5 = 793,
  TRANSFER_TEXT6 = 765,
  REMARK = 730,
  NODE1 = 935,
  NODE2 = 936,
  RATIO1 = 940,
  RATIO2 = 941,

  // Fund query answer.
  FUND_TEXT2 = 1257,
  FUND_AMOUNT1 = 709,  // also amount 2 and part of the total
  FUND_AMOUNT3 = 826,
  FUND_AMOUNT4 = 2085,
  FUND_AMOUNT5 = 619,
  FUND_AMOUNT6 = 2086,
  FUND_AMOUNT7 = 869,  // part of the total
  FUND_AMOUNT8 = 1847,
  FUND_AMOUNT9 = 647,  // part of the total
  FUND_FLAG1 = 988,    // request flag, 1
  FUND_FLAG2 = 533,    // request flag, 1

  // Shareholder-account query.
  ACC_TEXT2 = 575,
  ACC_TEXT3 = 795,
  ACC_TEXT4 = 1027,
  ACC_TEXT5 = 1532,
  ACC_INT = 572,
  ACC_REQ_FLAG = 618,   // request, 0
  ACC_REQ_LIMIT = 590,  // request, 30000000

  // Allotment-right (PSQY) query.
  PSQY_VALUE1 = 724,
  PSQY_VALUE2 = 1179,

  // Order, match, position and ETF-share queries (kit assumption).
  Q_TYPE = 9220,       // nType
  Q_SORT = 9221,       // nSortType
  Q_ROWCOUNT = 9222,   // nRowcount
  Q_BROWINDEX = 9223,  // nBrowindex
  Q_EXEFLAG = 9224,    // exeflag
  JJDM = 9225,         // fund code of the ETF-share query
  WTSJ = 9201,         // entrust time
  CJSL = 9202,         // matched quantity
  CJJG = 9203,         // match price
  CJJE = 9204,         // match amount
  CDSL = 9205,         // withdrawn quantity
  ZQMC = 9206,         // security name
  CJBH = 9207,         // match number
  CJSJ = 9208,         // match time
  JGSM = 9209,         // result note
  CXBZ = 9210,         // withdrawal flag
  GFYE = 9211,         // position balance
  KMSL = 9212,         // sellable quantity
  CBJ = 9213,          // cost price
  ZXSZ = 9214,         // market value
  FDYK = 9215,         // floating profit and loss
  WTPCH = 9216,        // batch number
  FESL = 9218,         // ETF shares
  ZXJ = 9219,          // latest price

  // ETF reference data: basic information "D00084" and constituents "D00088" (kit assumption).
  ETF_CREATION_OK = 9230,    // 1 when the ETF admits creation (subscription), else 0
  ETF_UNIT = 9231,           // creation unit (shares per basket)
  ETF_CASH = 9232,           // cash component per creation unit
  ETF_COMPONENT = 9233,      // security code of a constituent
  ETF_COMPONENT_QTY = 9234,  // quantity of the constituent per creation unit
  ETF_SUBSTITUTE = 9235,     // substitution flag: 1 cash substitution allowed, 0 not
};

}  // namespace fid
