// Other businesses: repurchase (19042), pledge (19043), listed funds (19025) and after-hours
// priced trading (19131) as blocks; issuance (19059, 19049, 19050, 19051), block trading
// (19081) and non-trading business (19090, 19091, 19092) as key/value requests, with their
// key/value withdrawals (19052, 19096). After-hours priced orders of category 1 or 2 trade
// like ordinary orders; every other order of these businesses is booked, confirmed and rests
// until withdrawn.
#include <cstdlib>

#include "handlers.h"
#include "market.h"
#include "order_blocks.h"
#include "util/field_ids.h"

namespace sim {
namespace {

struct BlockBusiness {
  int func;
  std::size_t kfsbdbh;  // where the request number lies
  std::size_t answer;   // answer length
  std::size_t djzj;     // where the frozen funds go in the answer
};

constexpr BlockBusiness kBusinesses[] = {
    {19042, 124, blk::kEntrustAnswer, blk::kAnsDjzj},
    {19043, 144, blk::kEntrustAnswer, blk::kAnsDjzj},
    {19025, 126, blk::kLofAnswer, blk::kLofDjzj},
    {19131, blk::kEntrustKfsbdbh, blk::kEntrustAnswer, blk::kAnsDjzj},
};

void KvOrderAnswer(HandlerCtx& c, const Customer& cu, const PlaceResult& r) {
  c.ans.Fail(r.code, r.msg);
  if (r.code <= 0) return;
  Row& row = c.ans.AddRow();
  Put(row, fid::KHH, cu.cfg.khh);  // key/value answers name their customer
  Put(row, fid::WTH, r.wth);
  PutMoney(row, fid::DJZJ, r.djzj);
  Put(row, fid::WTSJ, r.wtsj);
  Put(row, fid::SBJG, 2);
}

}  // namespace

void HandleBlockBusiness(HandlerCtx& c) {
  int func = std::atoi(c.req.func.c_str());
  const BlockBusiness* b = nullptr;
  for (const auto& x : kBusinesses)
    if (x.func == func) b = &x;
  Customer* cu = BlockCustomer(c, b->answer);
  if (cu == nullptr) return;
  Block req(c.req.block);
  OrderIn in;
  in.func = func;
  in.jys = req.Text(blk::kJys, 3);
  in.gdh = req.Text(blk::kGdh, 11);
  in.zqdm = req.Text(blk::kZqdm, 9);
  in.jylb = req.U8(blk::kJylb);
  in.wtsl = req.I32(blk::kWtsl);
  in.wtjg = req.F64(blk::kWtjg);
  in.ddlx = func == 19131 || func == 19042 ? req.U8(blk::kDdlx) : 0;
  in.kfsbdbh = req.Text(b->kfsbdbh, 17);
  in.side = func == 19131 ? OrdinarySide(in.jylb) : Side::None;
  in.matchable = in.side != Side::None;
  PlaceResult r = PlaceOrder(c.be, *cu, in);
  Block ans = AnswerBlock(c.req, b->answer, r.code, r.msg);
  if (r.code > 0) {
    ans.PutI64(blk::kAnsWth, r.wth);
    ans.PutText(blk::kAnsWtsj, 12, r.wtsj);
    ans.PutF64(b->djzj, r.djzj);
  }
  SetBlockAnswer(c, ans);
}

void HandleKvBusiness(HandlerCtx& c) {
  Customer* cu = KvCustomer(c, true);
  if (cu == nullptr) return;
  OrderIn in;
  in.func = std::atoi(c.req.func.c_str());
  in.zqdm = c.req.Text(fid::ZQDM);
  in.gdh = c.req.Text(fid::GDH);
  in.jys = c.req.Text(fid::JYS);
  in.jylb = static_cast<std::int32_t>(c.req.Long(fid::JYLB));
  in.wtsl = c.req.Long(fid::WTSL);
  in.wtjg = c.req.Double(fid::WTJG);
  in.ddlx = static_cast<std::int32_t>(c.req.Long(fid::DDLX));
  in.kfsbdbh = c.req.Text(fid::KFSBDBH);
  in.side = Side::None;
  in.matchable = false;
  KvOrderAnswer(c, *cu, PlaceOrder(c.be, *cu, in));
}

void HandleKvWithdraw(HandlerCtx& c) {
  Customer* cu = KvCustomer(c, true);
  if (cu == nullptr) return;
  std::int64_t wth = c.req.Long(fid::WTH);
  if (wth <= 0) return c.ans.Fail(err::kBadRequest, "no order number to withdraw");
  WithdrawResult r =
      WithdrawOrder(c.be, *cu, wth, "", c.req.Text(fid::KFSBDBH), std::atoi(c.req.func.c_str()));
  c.ans.Fail(r.code, r.msg);
  if (r.code <= 0) return;
  Row& row = c.ans.AddRow();
  Put(row, fid::KHH, cu->cfg.khh);
  Put(row, fid::WTH, r.wth);
  Put(row, fid::SBJG, r.sbjg);
  Put(row, fid::CDSL, r.cdsl);
  Put(row, fid::WTSJ, r.wtsj);
}

}  // namespace sim
