// Tradable quantity of every business (synchronous only): how many units the customer can
// trade at a price for a security, category and order type.
#include "comm/kel_api.h"
#include "core/guard.h"
#include "core/messages.h"
#include "secmolra.h"
#include "trade/order_args.h"
#include "trade/order_blocks.h"
#include "trade/order_ops.h"
#include "trade/order_request.h"
#include "util/field_ids.h"

namespace molra::trade {

namespace {

Target TargetOf(Fam fam) {
  switch (fam) {
    case Fam::kLOFTradableQty:
      return ByCategory(Biz::kLOFTradable);
    case Fam::kFJYTradableQty:
      return ByCategory(Biz::kFJYTradable);
    default:
      return Fixed(fam);
  }
}

// The fields after the common prefix differ by family.
void FillTail(OrderRequest& req, Fam fam, const OrderArgs& a) {
  switch (fam) {
    case Fam::kTradableQty: {
      TradableQtyReq& b = req.Block<TradableQtyReq>();
      b.ddlx = static_cast<std::int32_t>(a.ddlx);
      b.wtjg = a.wtjg;
      break;
    }
    case Fam::kLOFTradableQty: {
      LOFTradableQtyReq& b = req.Block<LOFTradableQtyReq>();
      b.wtjg = a.wtjg;
      b.ddlx = static_cast<std::uint8_t>(a.ddlx);
      break;
    }
    case Fam::kPHDJTradableQty: {
      PHDJTradableQtyReq& b = req.Block<PHDJTradableQtyReq>();
      b.ddlx = static_cast<std::int32_t>(a.ddlx);
      b.wtjg = a.wtjg;
      break;
    }
    default:  // ETF and repurchase carry neither price nor order type
      break;
  }
}

void FillBlock(OrderRequest& req, Fam fam, const CusLoginInfo& rec, const OrderArgs& a) {
  TradableQtyPrefix& p = req.Block<TradableQtyPrefix>();
  CopyField(p.jys, a.jys);
  CopyField(p.gdh, rec.GDH);
  CopyField(p.zqdm, a.zqdm);
  p.jylb = static_cast<std::uint8_t>(a.jylb);
  FillTail(req, fam, a);
}

ReqFields Fields(const CusLoginInfo& rec, const OrderArgs& a) {
  ReqFields f = SecurityFields(rec, a.jys, a.zqdm);
  f.insert(f.end(), {ReqField::Int(fid::JYLB, a.jylb),
                     ReqField::Int(fid::DDLX, static_cast<std::int32_t>(a.ddlx)),
                     ReqField::Double(fid::WTJG, a.wtjg)});
  return f;
}

}  // namespace

Result<std::int64_t> TradableImpl(Fam fam, CusLoginInfo* record, const OrderArgs& a) {
  Result<const OrderFamily*> found = Resolve(TargetOf(fam), a.jylb, record);
  if (!found) return found.TakeFailure();
  const OrderFamily& f = **found;
  if (record == nullptr || a.jys == nullptr || a.zqdm == nullptr) {
    return Refuse(f, record, SECMOLRA_ERR_ARGUMENT, msg::kIllegalArgument);
  }
  OrderRequest req(f, record);
  if (f.key_value) {
    req.Fields(Fields(*record, a));
  } else {
    FillBlock(req, fam, *record, a);
  }
  req.Log("khh", FieldText(record->KHH)).Log("jys", a.jys).Log("zqdm", a.zqdm);
  req.Log("jylb", a.jylb)
      .Log("wtjg", a.wtjg)
      .Log("ddlx", a.ddlx)
      .Log("gdh", FieldText(record->GDH));
  return req.Run();
}

Result<std::int64_t> RunTradable(const char*, Fam fam, const Caller& c, const OrderArgs& a, Mode) {
  ArgCheck check = c.ex ? CheckOrderArgsEx(c.record, a.jys, a.zqdm, false, 0)
                        : CheckOrderArgs(c.khh, a.jys, a.zqdm, c.gdh, false, 0);
  if (!check.ok()) return check.status().TakeFailure();
  CusLoginInfo own;
  return DropAccount(TradableImpl(fam, c.Record(own), a), &own);
}

}  // namespace molra::trade
