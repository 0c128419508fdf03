// Single entrusts of every business: the blocks that share the ordinary entrust's first 92
// bytes, the key/value businesses, and the ETF block.
#include "core/errors.h"
#include "comm/kel_api.h"
#include "trade/order_args.h"
#include "trade/order_blocks.h"
#include "trade/order_ops.h"
#include "trade/order_request.h"
#include "util/field_ids.h"

namespace molra::trade {

std::int64_t Refuse(const OrderFamily& family, CusLoginInfo* record, std::int64_t code,
                    const char* msg) {
  SetLastError(code, msg, family.name, record);
  return code;
}

const OrderFamily* Resolve(Target target, std::int32_t jylb, CusLoginInfo* record) {
  if (target.biz == Biz::kNone) return &Family(target.fam);
  if (const OrderFamily* f = Route(target.biz, jylb)) return f;
  const OrderFamily& first = FirstOf(target.biz);
  Refuse(first, record, -222, first.refusal);
  return nullptr;
}

void SetSecurityFields(kel::int64 h, const CusLoginInfo& rec, const char* jys,
                       const char* zqdm) {
  const std::string gdh = FieldText(rec.GDH);
  const std::string khh = FieldText(rec.KHH);
  kel::api.Kel_SetItem(h, fid::ZQDM, zqdm);
  kel::api.Kel_SetItem(h, fid::GDH, gdh.c_str());
  kel::api.Kel_SetItem(h, fid::KHH, khh.c_str());
  kel::api.Kel_SetItem(h, fid::JYS, jys);
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

void SetEntrustFields(kel::int64 h, const CusLoginInfo& rec, const EntrustArgs& a,
                      const DzjyArgs* d) {
  SetSecurityFields(h, rec, a.jys, a.zqdm);
  kel::api.Kel_SetInt(h, fid::JYLB, a.jylb);
  kel::api.Kel_SetLong(h, fid::WTSL, a.wtsl);
  kel::api.Kel_SetDouble(h, fid::WTJG, a.wtjg, kPricePrecision);
  kel::api.Kel_SetLong(h, fid::DDLX, a.ddlx);
  if (d == nullptr) return;
  kel::api.Kel_SetItem(h, fid::DZJY_DFXW, d->dfxw);
  kel::api.Kel_SetItem(h, fid::DZJY_LXR, d->lxr);
  kel::api.Kel_SetItem(h, fid::DZJY_LXDH, d->lxdh);
  kel::api.Kel_SetItem(h, fid::DZJY_HYH, d->hyh);
  kel::api.Kel_SetItem(h, fid::DZJY_DFGDH, d->dfgdh);
  kel::api.Kel_SetInt(h, fid::DZJY_PDDM, d->pddm);
  kel::api.Kel_SetInt(h, fid::DZJY_TDBZ, d->tdbz);
}

void LogDzjy(OrderRequest& req, const DzjyArgs& d) {
  req.Log("dfxw", d.dfxw).Log("lxr", d.lxr).Log("lxdh", d.lxdh).Log("hyh", d.hyh);
  req.Log("dfgdh", d.dfgdh).Log("pddm", d.pddm).Log("tdbz", d.tdbz);
}

}  // namespace

std::int64_t EntrustImpl(Target target, CusLoginInfo* record, const EntrustArgs& a, Mode mode,
                         const DzjyArgs* dzjy) {
  const OrderFamily* f = Resolve(target, a.jylb, record);
  if (f == nullptr) return -222;
  if (record == nullptr || a.jys == nullptr || a.zqdm == nullptr) {
    return Refuse(*f, record, -221, msg::kIllegalArgument);
  }
  OrderRequest req(*f, record);
  if (f->key_value) {
    req.Fields([&](kel::int64 h) { SetEntrustFields(h, *record, a, dzjy); });
  } else {
    FillEntrustBody(req, *record, a);
  }
  req.Log("khh", FieldText(record->KHH)).Log("jys", a.jys).Log("zqdm", a.zqdm);
  req.Log("jylb", a.jylb).Log("wtsl", a.wtsl).Log("wtjg", a.wtjg).Log("ddlx", a.ddlx);
  req.Log("gdh", FieldText(record->GDH));
  if (dzjy != nullptr) LogDzjy(req, *dzjy);
  return mode.async ? req.Send(mode.number) : req.Run();
}

std::int64_t ETFEntrustImpl(CusLoginInfo* record, const char* jys, const char* zqdm,
                            std::int32_t jylb, std::int32_t wtsl, const char* step, Mode mode) {
  const OrderFamily* f = Resolve(ByCategory(Biz::kETF), jylb, record);
  if (f == nullptr) return -222;
  if (record == nullptr || jys == nullptr || zqdm == nullptr) return Refuse(*f, record, -221, msg::kIllegalArgument);

  OrderRequest req(*f, record);
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
