// Offsets of the order layer's request and answer blocks (every request starts with the
// 30-byte head: int16 function @0, uint8 flag @2, int64 token @3, int16 code @11,
// char[13] KHH @13, int32 version @26).
#pragma once

#include <cstddef>

namespace sim::blk {

// Entrust-like requests (19001 and the block businesses): the first 92 bytes.
constexpr std::size_t kJys = 55, kGdh = 58, kZqdm = 69, kJylb = 78, kWtsl = 79, kWtjg = 83,
                      kDdlx = 91;
constexpr std::size_t kEntrustKfsbdbh = 120;  // 19001, 19131
// ETF entrust (19013/19014, 163 bytes).
constexpr std::size_t kEtfGdh = 55, kEtfJys = 66, kEtfZqdm = 69, kEtfWtsl = 87, kEtfJylb = 91,
                      kEtfKfsbdbh = 125;
// Withdrawal (139 bytes).
constexpr std::size_t kWdJys = 55, kWdCxwth = 69, kWdKfsbdbh = 105, kWdCxkfsbdbh = 122;
// Batch entrust (3174 bytes) and batch withdrawal (6098 bytes).
constexpr std::size_t kBatchNo = 30, kBatchRows = 64, kBatchRowLen = 30, kBatchMaxRows = 100;
// Tradable quantity (19011, 105 bytes; the other families see README.md).
constexpr std::size_t kQtyJys = 55, kQtyGdh = 58, kQtyZqdm = 69, kQtyJylb = 81, kQtyDdlx = 82,
                      kQtyWtjg = 86;

// Answers: code @11, message @302 (char[128]), then per family.
constexpr std::size_t kAnsWth = 443, kAnsWtsj = 451, kAnsDjzj = 464;
constexpr std::size_t kEntrustAnswer = 472;
constexpr std::size_t kLofAnswer = 475, kLofDjzj = 467;
constexpr std::size_t kWithdrawAnswer = 516, kEtfWithdrawAnswer = 517, kRepoWithdrawAnswer = 512;
constexpr std::size_t kWdSbjg = 467;     // int32 (516-byte answers)
constexpr std::size_t kEtfWdSbjg = 464;  // double (517-byte answer)
constexpr std::size_t kBatchAnswer = 7663, kBatchFailed = 443, kBatchDjzj = 447, kBatchWth = 455,
                      kBatchNotes = 1263, kBatchNoteLen = 64;
constexpr std::size_t kBatchWithdrawAnswer = 6459;
constexpr std::size_t kQtyValue = 430;

}  // namespace sim::blk
