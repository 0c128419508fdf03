// Single entrusts of every business: the blocks that share the ordinary entrust's first 92
// bytes, the key/value businesses, and the ETF block.
#include "comm/kel_api.h"
#include "core/messages.h"
#include "core/text.h"
#include "trade/order_args.h"
#include "trade/order_blocks.h"
#include "trade/order_ops.h"
#include "trade/order_request.h"
#include "util/field_ids.h"

namespace molra::trade {

Failure Refuse(const OrderFamily& family, CusLoginInfo* record, std::int64_t code,
               const char* msg) {
  return Failure{code, msg, family.name, record};
}

Result<const OrderFamily*> Resolve(Target target, std::int32_t jylb, CusLoginInfo* record) {
  if (target.biz == Biz::kNone) return &Family(target.fam);
  if (const OrderFamily* f = Route(target.biz, jylb)) return f;
  const OrderFamily& first = FirstOf(target.biz);
  return Refuse(first, record, SECMOLRA_ERR_UNSUPPORTED, first.refusal);
}

ReqFields SecurityFields(const CusLoginInfo& rec, const char* jys, const char* zqdm) {
  return {ReqField::Text(fid::ZQDM, zqdm), ReqField::Text(fid::GDH, FieldText(rec.GDH)),
          ReqField::Text(fid::KHH, FieldText(rec.KHH)), ReqField::Text(fid::JYS, jys)};
}

namespace {

void FillEntrustBody(OrderRequest& req, const CusLoginInfo& rec, const OrderArgs& a) {
  EntrustBody& b = req.Block<EntrustBody>();
  CopyField(b.jys, a.jys);
  CopyField(b.gdh, rec.GDH);
  CopyField(b.zqdm, a.zqdm);
  // The back end's block has these widths: larger values are cut on purpose.
  b.jylb = static_cast<std::uint8_t>(a.jylb);
  b.wtsl = static_cast<std::int32_t>(a.wtsl);
  b.wtjg = a.wtjg;
  b.byte91 = a.byte91;
}

void FillEtfBlock(OrderRequest& req, const CusLoginInfo& rec, const OrderArgs& a) {
  ETFEntrustReq& b = req.Block<ETFEntrustReq>();
  CopyField(b.gdh, rec.GDH);
  CopyField(b.jys, a.jys);
  CopyField(b.zqdm, a.zqdm);
  b.wtsl = static_cast<std::int32_t>(a.wtsl);
  b.jylb = static_cast<std::uint8_t>(a.jylb);
  if (a.step != nullptr) CopyField(b.step, a.step);
}

ReqFields EntrustFields(const CusLoginInfo& rec, const OrderArgs& a, bool block_trading) {
  ReqFields f = SecurityFields(rec, a.jys, a.zqdm);
  f.insert(f.end(), {ReqField::Int(fid::JYLB, a.jylb), ReqField::Long(fid::WTSL, a.wtsl),
                     ReqField::Double(fid::WTJG, a.wtjg), ReqField::Long(fid::DDLX, a.ddlx)});
  if (!block_trading) return f;
  f.insert(f.end(), {ReqField::Text(fid::DZJY_DFXW, a.dfxw), ReqField::Text(fid::DZJY_LXR, a.lxr),
                     ReqField::Text(fid::DZJY_LXDH, a.lxdh), ReqField::Text(fid::DZJY_HYH, a.hyh),
                     ReqField::Text(fid::DZJY_DFGDH, a.dfgdh),
                     ReqField::Int(fid::DZJY_PDDM, a.pddm), ReqField::Int(fid::DZJY_TDBZ, a.tdbz)});
  return f;
}

void LogArgs(OrderRequest& req, const CusLoginInfo& rec, const OrderArgs& a, Biz biz) {
  if (!req.logging()) return;
  req.Log("khh", FieldText(rec.KHH)).Log("jys", a.jys).Log("zqdm", a.zqdm).Log("jylb", a.jylb);
  req.Log("wtsl", a.wtsl).Log("wtjg", a.wtjg).Log("ddlx", a.ddlx).Log("gdh", FieldText(rec.GDH));
  if (biz == Biz::kETF) req.Log("step", a.step);
  if (biz != Biz::kDZJY) return;
  req.Log("dfxw", a.dfxw).Log("lxr", a.lxr).Log("lxdh", a.lxdh).Log("hyh", a.hyh);
  req.Log("dfgdh", a.dfgdh).Log("pddm", a.pddm).Log("tdbz", a.tdbz);
}

}  // namespace

Result<std::int64_t> EntrustImpl(Target target, CusLoginInfo* record, const OrderArgs& a,
                                 Mode mode) {
  Result<const OrderFamily*> found = Resolve(target, a.jylb, record);
  if (!found) return found.TakeFailure();
  const OrderFamily& f = **found;
  if (record == nullptr || a.jys == nullptr || a.zqdm == nullptr) {
    return Refuse(f, record, SECMOLRA_ERR_ARGUMENT, msg::kIllegalArgument);
  }
  OrderRequest req(f, record);
  if (f.key_value) {
    req.Fields(EntrustFields(*record, a, f.biz == Biz::kDZJY));
  } else if (f.biz == Biz::kETF) {
    FillEtfBlock(req, *record, a);
  } else {
    FillEntrustBody(req, *record, a);
  }
  LogArgs(req, *record, a, f.biz);
  return mode.async ? req.Send(mode.number) : req.Run();
}

Result<std::int64_t> RunEntrust(const char*, Target target, const Caller& c, const OrderArgs& a,
                                Mode mode) {
  ArgCheck check = c.ex ? CheckOrderArgsEx(c.record, a.jys, a.zqdm, mode.async, mode.number)
                        : CheckOrderArgs(c.khh, a.jys, a.zqdm, c.gdh, mode.async, mode.number);
  if (target.biz == Biz::kDZJY) check.NotNull({a.dfxw, a.lxr, a.lxdh, a.hyh, a.dfgdh});
  if (!check.ok()) return check.status().TakeFailure();
  CusLoginInfo own;
  return DropAccount(EntrustImpl(target, c.Record(own), a, mode), &own);
}

}  // namespace molra::trade
