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

void FillEntrustBody(OrderRequest& req, const CusLoginInfo& rec, const EntrustArgs& a) {
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

ReqFields EntrustFields(const CusLoginInfo& rec, const EntrustArgs& a, const DzjyArgs* d) {
  ReqFields f = SecurityFields(rec, a.jys, a.zqdm);
  f.insert(f.end(), {ReqField::Int(fid::JYLB, a.jylb), ReqField::Long(fid::WTSL, a.wtsl),
                     ReqField::Double(fid::WTJG, a.wtjg), ReqField::Long(fid::DDLX, a.ddlx)});
  if (d == nullptr) return f;
  f.insert(f.end(), {ReqField::Text(fid::DZJY_DFXW, d->dfxw), ReqField::Text(fid::DZJY_LXR, d->lxr),
                     ReqField::Text(fid::DZJY_LXDH, d->lxdh), ReqField::Text(fid::DZJY_HYH, d->hyh),
                     ReqField::Text(fid::DZJY_DFGDH, d->dfgdh),
                     ReqField::Int(fid::DZJY_PDDM, d->pddm), ReqField::Int(fid::DZJY_TDBZ, d->tdbz)});
  return f;
}

void LogDzjy(OrderRequest& req, const DzjyArgs& d) {
  req.Log("dfxw", d.dfxw).Log("lxr", d.lxr).Log("lxdh", d.lxdh).Log("hyh", d.hyh);
  req.Log("dfgdh", d.dfgdh).Log("pddm", d.pddm).Log("tdbz", d.tdbz);
}

}  // namespace

Result<std::int64_t> EntrustImpl(Target target, CusLoginInfo* record, const EntrustArgs& a,
                                 Mode mode, const DzjyArgs* dzjy) {
  Result<const OrderFamily*> f = Resolve(target, a.jylb, record);
  if (!f) return f.TakeFailure();
  if (record == nullptr || a.jys == nullptr || a.zqdm == nullptr) {
    return Refuse(**f, record, SECMOLRA_ERR_ARGUMENT, msg::kIllegalArgument);
  }
  OrderRequest req(**f, record);
  if ((*f)->key_value) {
    req.Fields(EntrustFields(*record, a, dzjy));
  } else {
    FillEntrustBody(req, *record, a);
  }
  req.Log("khh", FieldText(record->KHH)).Log("jys", a.jys).Log("zqdm", a.zqdm);
  req.Log("jylb", a.jylb).Log("wtsl", a.wtsl).Log("wtjg", a.wtjg).Log("ddlx", a.ddlx);
  req.Log("gdh", FieldText(record->GDH));
  if (dzjy != nullptr) LogDzjy(req, *dzjy);
  return mode.async ? req.Send(mode.number) : req.Run();
}

Result<std::int64_t> ETFEntrustImpl(CusLoginInfo* record, const char* jys, const char* zqdm,
                                    std::int32_t jylb, std::int32_t wtsl, const char* step,
                                    Mode mode) {
  Result<const OrderFamily*> f = Resolve(ByCategory(Biz::kETF), jylb, record);
  if (!f) return f.TakeFailure();
  if (record == nullptr || jys == nullptr || zqdm == nullptr) {
    return Refuse(**f, record, SECMOLRA_ERR_ARGUMENT, msg::kIllegalArgument);
  }
  OrderRequest req(**f, record);
  ETFEntrustReq& b = req.Block<ETFEntrustReq>();
  CopyField(b.gdh, record->GDH);
  CopyField(b.jys, jys);
  CopyField(b.zqdm, zqdm);
  b.wtsl = wtsl;
  b.jylb = static_cast<std::uint8_t>(jylb);
  if (step != nullptr) CopyField(b.step, step);

  req.Log("khh", FieldText(record->KHH)).Log("jys", jys).Log("zqdm", zqdm).Log("jylb", jylb);
  req.Log("wtsl", wtsl).Log("gdh", FieldText(record->GDH)).Log("step", step);
  return mode.async ? req.Send(mode.number) : req.Run();
}

}  // namespace molra::trade
