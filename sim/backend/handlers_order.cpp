// Ordinary orders as blocks: entrust (19001), withdrawal (19002), batch entrust (19012) and
// batch withdrawal (19063).
#include <cstdlib>

#include "handlers.h"
#include "market.h"
#include "order_blocks.h"

namespace sim {

void HandleEntrust(HandlerCtx& c) {
  Customer* cu = BlockCustomer(c, blk::kEntrustAnswer);
  if (cu == nullptr) return;
  Block req(c.req.block);
  OrderIn in;
  in.func = 19001;
  in.jys = req.Text(blk::kJys, 3);
  in.gdh = req.Text(blk::kGdh, 11);
  in.zqdm = req.Text(blk::kZqdm, 9);
  in.jylb = req.U8(blk::kJylb);
  in.wtsl = req.I32(blk::kWtsl);
  in.wtjg = req.F64(blk::kWtjg);
  in.ddlx = req.U8(blk::kDdlx);
  in.kfsbdbh = req.Text(blk::kEntrustKfsbdbh, 17);
  in.side = OrdinarySide(in.jylb);
  if (in.side == Side::None)
    return RefuseBlock(c, blk::kEntrustAnswer, err::kBadOrder,
                       "trade category " + std::to_string(in.jylb) + " is not buy or sell");
  PlaceResult r = PlaceOrder(c.be, *cu, in);
  Block ans = AnswerBlock(c.req, blk::kEntrustAnswer, r.code, r.msg);
  if (r.code > 0) {
    ans.PutI64(blk::kAnsWth, r.wth);
    ans.PutText(blk::kAnsWtsj, 12, r.wtsj);
    ans.PutF64(blk::kAnsDjzj, r.djzj);
  }
  SetBlockAnswer(c, ans);
}

void HandleWithdraw(HandlerCtx& c) {
  // One handler for the withdrawal families: 19002 (ordinary and after-hours), 19020 (ETF),
  // 19044 (repurchase), 19026 (listed funds); they differ in the answer's length and in
  // where the declaration result lies.
  int func = std::atoi(c.req.func.c_str());
  std::size_t size = func == 19020
                         ? blk::kEtfWithdrawAnswer
                         : (func == 19044 ? blk::kRepoWithdrawAnswer : blk::kWithdrawAnswer);
  Customer* cu = BlockCustomer(c, size);
  if (cu == nullptr) return;
  Block req(c.req.block);
  std::int64_t cxwth = req.I64(blk::kWdCxwth);
  std::string cxkfsbdbh = req.Text(blk::kWdCxkfsbdbh, 17);
  if (cxwth <= 0 && cxkfsbdbh.empty())
    return RefuseBlock(c, size, err::kBadRequest,
                       "neither an order number nor a request number to withdraw");
  WithdrawResult r = WithdrawOrder(c.be, *cu, cxwth, cxwth > 0 ? std::string() : cxkfsbdbh,
                                   req.Text(blk::kWdKfsbdbh, 17), func);
  Block ans = AnswerBlock(c.req, size, r.code, r.msg);
  if (r.code > 0) {
    ans.PutI64(blk::kAnsWth, r.wth);
    ans.PutText(blk::kAnsWtsj, 12, r.wtsj);
    if (func == 19020)
      ans.PutF64(blk::kEtfWdSbjg, r.sbjg);
    else if (func != 19044)
      ans.PutI32(blk::kWdSbjg, r.sbjg);
  }
  SetBlockAnswer(c, ans);
}

void HandleBatch(HandlerCtx& c) {
  Customer* cu = BlockCustomer(c, blk::kBatchAnswer);
  if (cu == nullptr) return;
  Block req(c.req.block);
  std::int64_t wtpch = req.I64(blk::kBatchNo);
  Block ans = AnswerBlock(c.req, blk::kBatchAnswer, 1, "");
  int rows = 0, failed = 0;
  double djzj = 0;
  for (std::size_t i = 0; i < blk::kBatchMaxRows; ++i) {
    std::string row = req.Text(blk::kBatchRows + i * blk::kBatchRowLen, blk::kBatchRowLen);
    if (row.empty()) break;
    ++rows;
    PlaceResult r;
    if (row.size() != blk::kBatchRowLen) {
      r.code = err::kBadRequest;
      r.msg = "malformed row";
    } else {
      OrderIn in;
      in.func = 19012;
      in.jys = row.substr(0, 2);
      in.zqdm = row.substr(2, 6);
      in.jylb = std::atoi(row.substr(8, 1).c_str());
      in.wtjg = std::atof(row.substr(9, 9).c_str());
      in.wtsl = std::atoll(row.substr(18, 9).c_str());
      in.ddlx = std::atoi(row.substr(27, 3).c_str());
      in.wtpch = wtpch;
      in.side = OrdinarySide(in.jylb);
      r = in.side == Side::None
              ? PlaceResult{err::kBadOrder, "trade category is not buy or sell", 0, 0, ""}
              : PlaceOrder(c.be, *cu, in);
    }
    if (r.code > 0) {
      ans.PutI64(blk::kBatchWth + 8 * i, r.wth);
      ans.PutText(blk::kBatchNotes + blk::kBatchNoteLen * i, blk::kBatchNoteLen - 1, "accepted");
      djzj += r.djzj;
    } else {
      ++failed;
      ans.PutText(blk::kBatchNotes + blk::kBatchNoteLen * i, blk::kBatchNoteLen - 1, r.msg);
    }
  }
  // The count at 443 is the number of refused rows.
  ans.PutI32(blk::kBatchFailed, failed);
  ans.PutF64(blk::kBatchDjzj, djzj);
  ans.PutText(302, 127,
              "batch of " + std::to_string(rows) + " rows: " + std::to_string(rows - failed) +
                  " accepted, " + std::to_string(failed) + " refused");
  SetBlockAnswer(c, ans);
}

void HandleBatchWithdraw(HandlerCtx& c) {
  Customer* cu = BlockCustomer(c, blk::kBatchWithdrawAnswer);
  if (cu == nullptr) return;
  std::int64_t lsh = Block(c.req.block).I64(blk::kBatchNo);
  std::vector<std::int64_t> open;
  for (const auto& [wth, o] : cu->orders)
    if (o.func == 19012 && o.wtpch == lsh && o.Open()) open.push_back(wth);
  if (open.empty())
    return RefuseBlock(c, blk::kBatchWithdrawAnswer, err::kNoOrder,
                       "batch " + std::to_string(lsh) + " has no order left to withdraw");
  for (std::int64_t wth : open) WithdrawOrder(c.be, *cu, wth, "", "", 19063);
  Block ans = AnswerBlock(
      c.req, blk::kBatchWithdrawAnswer, 1,
      std::to_string(open.size()) + " orders of batch " + std::to_string(lsh) + " withdrawn");
  ans.PutI32(blk::kAnsWth, static_cast<std::int32_t>(open.size()));
  SetBlockAnswer(c, ans);
}

}  // namespace sim
