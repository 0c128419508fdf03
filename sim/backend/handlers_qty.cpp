// Tradable quantity: blocks 19011 (ordinary), 19133 (after-hours), 19028 (listed funds),
// 19024 (ETF), 19045 (repurchase); key/value 19058 (issuance) and 19105 (non-trading).
#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "handlers.h"
#include "order_blocks.h"
#include "util/field_ids.h"

namespace sim {
namespace {

struct QtyReq {
  std::string jys, gdh, zqdm;
  int jylb = 0;
  double wtjg = 0;
};

std::int64_t Sellable(Customer& cu, const QtyReq& q) {
  Position* p = cu.FindPosition(q.jys, q.zqdm);
  return p ? p->sellable : 0;
}

std::int64_t Affordable(const Customer& cu, double price, std::int64_t lot) {
  if (!(price > 0)) return 0;
  auto n = static_cast<std::int64_t>(std::floor(cu.Available() / price + 1e-9));
  return n / lot * lot;
}

// The quantity, or a refusal (code < 0 and message).
std::int64_t Quantity(Backend& be, Customer& cu, int func, const QtyReq& q, int* code,
                      std::string* msg) {
  const Security* sec = be.FindSecurity(q.jys, q.zqdm);
  double price = q.wtjg > 0 ? q.wtjg : (sec ? sec->last : 0.0);
  switch (func) {
    case 19011:
    case 19133:
    case 19028:
      if (sec == nullptr) break;
      if (q.jylb == 1 || q.jylb == 41 || q.jylb == 42)
        return Affordable(cu, price, func == 19028 ? 1 : 100);
      return Sellable(cu, q);
    case 19024: {
      const EtfCfg* e = be.FindEtf(q.jys, q.zqdm);
      if (e == nullptr || e->unit <= 0) break;
      if (q.jylb == 30) return Sellable(cu, q) / e->unit * e->unit;
      std::int64_t units =
          e->cash > 0 ? static_cast<std::int64_t>(std::floor(cu.Available() / e->cash)) : 1000000;
      for (const auto& k : e->constituents) {
        Position* p = cu.FindPosition(k.jys, k.zqdm);
        if (k.flag != 1 && k.qty > 0) units = std::min(units, (p ? p->sellable : 0) / k.qty);
      }
      return e->creation_allowed ? units * e->unit : 0;
    }
    case 19045:
      return static_cast<std::int64_t>(std::floor(cu.Available() / 100.0 + 1e-9));  // 100.00 a unit
    case 19058:
      return Affordable(cu, price, 1);
    case 19105:
      return Sellable(cu, q);
    default:
      break;
  }
  *code = err::kNoSecurity;
  *msg = "security " + q.jys + "." + q.zqdm + " does not exist";
  return 0;
}

}  // namespace

void HandleTradableQty(HandlerCtx& c) {
  int func = std::atoi(c.req.func.c_str());
  // 19024 answers the quantity as an int32 in a 434-byte block; the others as a double.
  std::size_t size = func == 19024 ? 434 : 438;
  Customer* cu = BlockCustomer(c, size);
  if (cu == nullptr) return;
  Block req(c.req.block);
  QtyReq q;
  q.jys = req.Text(blk::kQtyJys, 3);
  q.gdh = req.Text(blk::kQtyGdh, 11);
  q.zqdm = req.Text(blk::kQtyZqdm, 12);
  q.jylb = req.U8(blk::kQtyJylb);
  if (func == 19011 || func == 19133) q.wtjg = req.F64(blk::kQtyWtjg);
  if (func == 19028) q.wtjg = req.F64(blk::kQtyDdlx);  // 19028 carries the price at 82
  if (!q.gdh.empty() && q.gdh != cu->GdhFor(q.jys))
    return RefuseBlock(c, size, err::kBadAccount,
                       "shareholder account [" + q.gdh + "] is not the customer's on " + q.jys);
  int code = 1;
  std::string msg = "ok";
  std::int64_t n = Quantity(c.be, *cu, func, q, &code, &msg);
  Block ans = AnswerBlock(c.req, size, code, msg);
  if (code > 0) {
    if (func == 19024)
      ans.PutI32(blk::kQtyValue, n);
    else
      ans.PutF64(blk::kQtyValue, static_cast<double>(n));
  }
  SetBlockAnswer(c, ans);
}

void HandleKvTradableQty(HandlerCtx& c) {
  Customer* cu = KvCustomer(c, true);
  if (cu == nullptr) return;
  QtyReq q;
  q.jys = c.req.Text(fid::JYS);
  q.gdh = c.req.Text(fid::GDH);
  q.zqdm = c.req.Text(fid::ZQDM);
  q.jylb = static_cast<int>(c.req.Long(fid::JYLB));
  q.wtjg = c.req.Double(fid::WTJG);
  int code = 1;
  std::string msg = "ok";
  std::int64_t n = Quantity(c.be, *cu, std::atoi(c.req.func.c_str()), q, &code, &msg);
  c.ans.Fail(code, msg);
  if (code > 0) Put(c.ans.AddRow(), fid::WTSL, n);
}

}  // namespace sim
