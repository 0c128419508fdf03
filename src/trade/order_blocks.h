// The packed request and answer blocks of the order layer. Every block request begins with
// OrderReqHead; all multi-byte fields are little-endian and unaligned. The layouts are the
// back end's and must stay byte for byte as they are.
#pragma once

#include <cstddef>
#include <cstdint>

namespace molra::trade {

constexpr std::int32_t kInterfaceVersion = 20200728;
constexpr std::uint8_t kHeadFlag = 1;
constexpr int kKfsbdbhWidth = 17;  // request numbers travel as decimal text

#pragma pack(push, 1)

struct OrderReqHead {
  std::int16_t function;
  std::uint8_t flag;
  std::int64_t token;
  std::int16_t code;
  char khh[13];
  std::int32_t version;
};
static_assert(sizeof(OrderReqHead) == 30, "OrderReqHead is 30 bytes");
static_assert(offsetof(OrderReqHead, token) == 3 && offsetof(OrderReqHead, code) == 11 &&
                  offsetof(OrderReqHead, khh) == 13 && offsetof(OrderReqHead, version) == 26,
              "OrderReqHead offsets");

// The first 92 bytes shared by the ordinary, repurchase, pledge, listed-fund and
// after-hours entrust blocks. `byte91` is the order type or the family's own byte.
struct EntrustBody {
  OrderReqHead head;
  char reserved1[25];
  char jys[3];
  char gdh[11];
  char zqdm[9];
  std::uint8_t jylb;
  std::int32_t wtsl;
  double wtjg;
  std::uint8_t byte91;
};
static_assert(sizeof(EntrustBody) == 92, "entrust body is 92 bytes");
static_assert(offsetof(EntrustBody, jys) == 55 && offsetof(EntrustBody, gdh) == 58 &&
                  offsetof(EntrustBody, zqdm) == 69 && offsetof(EntrustBody, jylb) == 78 &&
                  offsetof(EntrustBody, wtsl) == 79 && offsetof(EntrustBody, wtjg) == 83 &&
                  offsetof(EntrustBody, byte91) == 91,
              "entrust body offsets");

// 19001 ordinary entrust; 19131 after-hours priced entrust has the same layout.
struct OrderEntrustReq {
  EntrustBody body;
  char reserved2[28];
  char kfsbdbh[kKfsbdbhWidth];
};
static_assert(sizeof(OrderEntrustReq) == 137, "OrderEntrustReq is 137 bytes");
static_assert(offsetof(OrderEntrustReq, kfsbdbh) == 120, "OrderEntrustReq KFSBDBH at 120");

// 19042 repurchase.
struct ZQHGEntrustReq {
  EntrustBody body;
  char reserved2[32];
  char kfsbdbh[kKfsbdbhWidth];
  char reserved3[513];
};
static_assert(sizeof(ZQHGEntrustReq) == 654, "ZQHGEntrustReq is 654 bytes");
static_assert(offsetof(ZQHGEntrustReq, kfsbdbh) == 124, "ZQHGEntrustReq KFSBDBH at 124");

// 19043 pledge in and out.
struct ZQHGCrkReq {
  EntrustBody body;
  char reserved2[52];
  char kfsbdbh[kKfsbdbhWidth];
  char reserved3[21];
};
static_assert(sizeof(ZQHGCrkReq) == 182, "ZQHGCrkReq is 182 bytes");
static_assert(offsetof(ZQHGCrkReq, kfsbdbh) == 144, "ZQHGCrkReq KFSBDBH at 144");

// 19025 listed fund.
struct LofEntrustReq {
  EntrustBody body;
  char reserved2[34];
  char kfsbdbh[kKfsbdbhWidth];
};
static_assert(sizeof(LofEntrustReq) == 143, "LofEntrustReq is 143 bytes");
static_assert(offsetof(LofEntrustReq, kfsbdbh) == 126, "LofEntrustReq KFSBDBH at 126");

// 19013 / 19014 ETF subscription and redemption: the shareholder account comes before the
// exchange here.
struct ETFEntrustReq {
  OrderReqHead head;
  char reserved1[25];
  char gdh[11];
  char jys[3];
  char zqdm[9];
  char reserved2[9];
  std::int32_t wtsl;
  std::uint8_t jylb;
  std::uint8_t reserved3;
  char reserved4[32];
  char kfsbdbh[kKfsbdbhWidth];
  char step[21];
};
static_assert(sizeof(ETFEntrustReq) == 163, "ETFEntrustReq is 163 bytes");
static_assert(offsetof(ETFEntrustReq, gdh) == 55 && offsetof(ETFEntrustReq, jys) == 66 &&
                  offsetof(ETFEntrustReq, zqdm) == 69 && offsetof(ETFEntrustReq, wtsl) == 87 &&
                  offsetof(ETFEntrustReq, jylb) == 91 && offsetof(ETFEntrustReq, kfsbdbh) == 125 &&
                  offsetof(ETFEntrustReq, step) == 142,
              "ETFEntrustReq offsets");

// 19002 / 19020 / 19044 / 19026 withdrawals. The after-hours withdrawal writes its own
// request number where the others carry the withdrawn order's (cxkfsbdbh).
struct OrderWithdrawReq {
  OrderReqHead head;
  char reserved1[25];
  char jys[3];
  char reserved2[11];
  std::int64_t cxwth;
  char reserved3[28];
  char kfsbdbh[kKfsbdbhWidth];
  char cxkfsbdbh[kKfsbdbhWidth];
};
static_assert(sizeof(OrderWithdrawReq) == 139, "OrderWithdrawReq is 139 bytes");
static_assert(offsetof(OrderWithdrawReq, jys) == 55 && offsetof(OrderWithdrawReq, cxwth) == 69 &&
                  offsetof(OrderWithdrawReq, kfsbdbh) == 105 &&
                  offsetof(OrderWithdrawReq, cxkfsbdbh) == 122,
              "OrderWithdrawReq offsets");

// 19012 batch entrust: up to 100 rows of 30 characters from 64 on.
constexpr int kBatchMaxRows = 100;
constexpr int kBatchRowWidth = 30;
struct BatchOrderReq {
  OrderReqHead head;
  std::int64_t wtpch;
  char reserved1[26];
  char rows[kBatchMaxRows * kBatchRowWidth];
  char reserved2[110];
};
static_assert(sizeof(BatchOrderReq) == 3174, "batch request is 3174 bytes");
static_assert(offsetof(BatchOrderReq, wtpch) == 30 && offsetof(BatchOrderReq, rows) == 64,
              "batch request offsets");

// 19063 batch withdrawal.
struct BatchWithdrawReq {
  OrderReqHead head;
  std::int64_t lsh;
  char reserved[6060];
};
static_assert(sizeof(BatchWithdrawReq) == 6098, "batch withdrawal request is 6098 bytes");
static_assert(offsetof(BatchWithdrawReq, lsh) == 30, "batch withdrawal LSH at 30");

// The fields every tradable-quantity block starts with.
struct TradableQtyPrefix {
  OrderReqHead head;
  char reserved1[25];
  char jys[3];
  char gdh[11];
  char zqdm[12];
  std::uint8_t jylb;
};
static_assert(sizeof(TradableQtyPrefix) == 82, "tradable prefix is 82 bytes");
static_assert(offsetof(TradableQtyPrefix, jys) == 55 && offsetof(TradableQtyPrefix, gdh) == 58 &&
                  offsetof(TradableQtyPrefix, zqdm) == 69 &&
                  offsetof(TradableQtyPrefix, jylb) == 81,
              "tradable prefix offsets");

// 19011 ordinary tradable quantity.
struct TradableQtyReq {
  TradableQtyPrefix prefix;
  std::int32_t ddlx;
  double wtjg;
  char reserved[11];
};
static_assert(sizeof(TradableQtyReq) == 105, "TradableQtyReq is 105 bytes");
static_assert(offsetof(TradableQtyReq, ddlx) == 82 && offsetof(TradableQtyReq, wtjg) == 86,
              "TradableQtyReq offsets");

// 19024 ETF tradable quantity.
struct ETFTradableQtyReq {
  TradableQtyPrefix prefix;
  char reserved[6];
};
static_assert(sizeof(ETFTradableQtyReq) == 88, "ETF tradable request is 88 bytes");

// 19045 repurchase tradable quantity.
struct ZQHGTradableQtyReq {
  TradableQtyPrefix prefix;
  char reserved[4];
};
static_assert(sizeof(ZQHGTradableQtyReq) == 86, "repurchase tradable request is 86 bytes");

// 19028 listed-fund tradable quantity.
struct LOFTradableQtyReq {
  TradableQtyPrefix prefix;
  double wtjg;
  std::uint8_t ddlx;
};
static_assert(sizeof(LOFTradableQtyReq) == 91, "listed-fund tradable request is 91 bytes");
static_assert(offsetof(LOFTradableQtyReq, wtjg) == 82 && offsetof(LOFTradableQtyReq, ddlx) == 90,
              "listed-fund tradable offsets");

// 19133 after-hours tradable quantity.
struct PHDJTradableQtyReq {
  TradableQtyPrefix prefix;
  std::int32_t ddlx;
  double wtjg;
  char reserved[1];
};
static_assert(sizeof(PHDJTradableQtyReq) == 95, "after-hours tradable request is 95 bytes");
static_assert(offsetof(PHDJTradableQtyReq, ddlx) == 82 && offsetof(PHDJTradableQtyReq, wtjg) == 86,
              "after-hours tradable offsets");

// The part of every answer block that the frame reads: at least 430 bytes arrive.
struct AnswerHead {
  char head[11];
  std::int16_t code;
  char reserved[289];
  char message[128];
};
static_assert(sizeof(AnswerHead) == 430, "answer head is 430 bytes");
static_assert(offsetof(AnswerHead, code) == 11 && offsetof(AnswerHead, message) == 302,
              "answer head offsets");

// Entrust answer (472 bytes); withdrawal answers share the order number at 443.
struct OrderEntrustAns {
  AnswerHead head;
  char reserved[13];
  std::int64_t wth;
  char wtsj[13];
  double djzj;
};
static_assert(sizeof(OrderEntrustAns) == 472, "OrderEntrustAns is 472 bytes");
static_assert(offsetof(OrderEntrustAns, wth) == 443, "order number at 443");

// Listed-fund entrust answer (475 bytes): its frozen funds three bytes further on.
struct LofEntrustAns {
  AnswerHead head;
  char reserved1[13];
  std::int64_t wth;
  char wtsj[13];
  char reserved2[3];
  double djzj;
};
static_assert(sizeof(LofEntrustAns) == 475 && offsetof(LofEntrustAns, djzj) == 467,
              "listed-fund answer");

// Withdrawal answer (516 bytes): the declaration result (SBJG) at 467.
struct OrderWithdrawAns {
  AnswerHead head;
  char reserved1[13];
  std::int64_t wth;
  char wtsj[13];
  char reserved2[3];
  std::int32_t sbjg;
  char reserved3[45];
};
static_assert(sizeof(OrderWithdrawAns) == 516 && offsetof(OrderWithdrawAns, sbjg) == 467,
              "withdrawal answer");

// ETF withdrawal answer (517 bytes): the declaration result as a double at 464.
struct ETFWithdrawAns {
  AnswerHead head;
  char reserved1[13];
  std::int64_t wth;
  char wtsj[13];
  double sbjg;
  char reserved2[45];
};
static_assert(sizeof(ETFWithdrawAns) == 517 && offsetof(ETFWithdrawAns, sbjg) == 464,
              "ETF withdrawal answer");

// Repurchase withdrawal answer (512 bytes); a longer answer carries its declaration result
// right after, at 512.
struct ZQHGWithdrawAns {
  AnswerHead head;
  char reserved[82];
};
static_assert(sizeof(ZQHGWithdrawAns) == 512, "repurchase withdrawal answer");

// Batch withdrawal answer (6459 bytes).
struct BatchWithdrawAns {
  AnswerHead head;
  char reserved[6029];
};
static_assert(sizeof(BatchWithdrawAns) == 6459, "batch withdrawal answer");

// Tradable-quantity answer: the quantity as a double at 430.
struct TradableQtyAns {
  AnswerHead head;
  double quantity;
};
static_assert(sizeof(TradableQtyAns) == 438, "tradable answer is 438 bytes");

// ETF tradable-quantity answer: the quantity as 32 bits at 430.
struct ETFTradableQtyAns {
  AnswerHead head;
  std::int32_t quantity;
};
static_assert(sizeof(ETFTradableQtyAns) == 434, "ETF tradable answer is 434 bytes");

// Batch entrust answer (7663 bytes).
struct BatchOrderAns {
  AnswerHead head;
  char reserved1[13];
  std::int32_t count;  // the failed rows in the synchronous answer
  double djzj;
  std::int64_t wth[kBatchMaxRows];
  char reserved2[8];
  char notes[kBatchMaxRows][64];
};
static_assert(sizeof(BatchOrderAns) == 7663, "batch answer is 7663 bytes");
static_assert(offsetof(BatchOrderAns, count) == 443 && offsetof(BatchOrderAns, wth) == 455 &&
                  offsetof(BatchOrderAns, notes) == 1263,
              "batch answer offsets");

#pragma pack(pop)

}  // namespace molra::trade
