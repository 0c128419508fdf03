// ETF basket entrust: after the ETF's basic information, the trade date and the
// constituents have been read and checked, one ordinary buy order per constituent.
#include <fmt/format.h>

#include <functional>
#include <string>
#include <vector>

#include "account/server_clock.h"
#include "comm/conn_pool.h"
#include "comm/customer.h"
#include "comm/kel_api.h"
#include "comm/kv_request.h"
#include "core/guard.h"
#include "core/log.h"
#include "core/messages.h"
#include "secmolra.h"
#include "trade/order_args.h"
#include "trade/order_ops.h"
#include "util/field_ids.h"

namespace molra::trade {

namespace {

constexpr const char* kBasketName = "ETFBasketEntrust";
constexpr std::int32_t kBuy = 1;

struct EtfInfo {
  bool subscription_allowed = false;
  std::int64_t info_date = 0;
  std::int64_t unit = 0;
  double cash = 0;
};

struct Constituent {
  std::string zqdm;
  std::string jys;
  std::int64_t qty_per_unit = 0;
};

class Basket {
 public:
  Basket(CusLoginInfo* rec, const char* jys, const char* etf, std::int32_t units, double price,
         std::int64_t ddlx)
      : rec_(rec), jys_(jys), etf_(etf), units_(units), price_(price), ddlx_(ddlx) {}

  Result<std::int64_t> Run();

 private:
  Failure Fail(std::int64_t code, std::string msg) const {
    return Failure{code, std::move(msg), kBasketName, rec_};
  }
  // A session of the customer's trade connection on its node.
  Result<KelSession> Session() const;
  // A reference-data request: its answer, or the basket's failure: a missing session as it
  // stands, a refusal with `prefix` before the answer's text.
  Result<KvAnswer> Ask(const char* code, const std::string& prefix);
  Result<std::int64_t> TradeDate();
  Result<std::int64_t> PlaceOrders(const std::vector<Constituent>& parts);

  CusLoginInfo* rec_;
  const char* jys_;
  const char* etf_;
  std::int32_t units_;
  double price_;
  std::int64_t ddlx_;
  CustomerRef customer_;
  std::int32_t node_ = -1;
};

Result<KelSession> Basket::Session() const {
  Result<KelSession> s = AllocTradeSession(*customer_->conn);
  if (!s) return s.TakeFailure().At(kBasketName, rec_);
  return s;
}

Result<KvAnswer> Basket::Ask(const char* code, const std::string& prefix) {
  Result<KelSession> session = Session();
  if (!session) return session.TakeFailure();
  const KvRequest request{{ReqField::NodeId(node_)},
                          code,
                          {ReqField::Text(fid::ZQDM, etf_), ReqField::Text(fid::JYS, jys_)}};
  Result<KvAnswer> answer = RunRequest(std::move(*session), request, kReferenceData);
  if (!answer) {
    Failure f = answer.TakeFailure();
    return Fail(f.code, prefix + f.message);
  }
  return answer;
}

Result<std::int64_t> Basket::TradeDate() {
  Result<KelSession> session = Session();
  if (!session) return session.TakeFailure();
  Result<std::int64_t> date =
      AskTradeDate(std::move(*session), {ReqField::NodeId(node_)}, kReferenceData);
  if (!date) {
    Failure f = date.TakeFailure();
    return Fail(f.code, msg::kTradeDateFailed + f.message);
  }
  return date;
}

Result<std::int64_t> Basket::Run() {
  const std::string khh = FieldText(rec_->KHH);
  Result<CustomerRef> found = FindCustomer(khh);
  if (!found) return found.TakeFailure().At(kBasketName, rec_);
  customer_ = std::move(*found);
  node_ = rec_->NodeID >= 1 ? rec_->NodeID : customer_->node_id;

  Result<KvAnswer> basics = Ask("D00084", msg::kEtfInfoFailed);
  if (!basics) return basics.TakeFailure();
  EtfInfo info;
  const kel::int64 b = basics->session.handle();
  info.subscription_allowed = kel::api.Kel_GetLong(b, fid::ETF_CREATION_OK, -1) == 1;
  info.info_date = kel::api.Kel_GetLong(b, fid::SYS_DATE, -1);
  info.unit = kel::api.Kel_GetLong(b, fid::ETF_UNIT, -1);
  info.cash = kel::api.Kel_GetDouble(b, fid::ETF_CASH, -1);
  basics->session.Release();

  Result<std::int64_t> trade_date = TradeDate();
  if (!trade_date) return trade_date;
  if (!info.subscription_allowed) {
    return Fail(SECMOLRA_ERR_UNSUPPORTED, fmt::format(msg::kNoCreationRight, etf_));
  }
  if (info.info_date != *trade_date) {
    return Fail(SECMOLRA_ERR_UNSUPPORTED,
                fmt::format(msg::kEtfInfoStale, etf_, *trade_date, info.info_date));
  }

  Result<KvAnswer> members = Ask("D00088", fmt::format(msg::kConstituentsFailed, etf_));
  if (!members) return members.TakeFailure();
  std::vector<Constituent> parts;
  const kel::int64 m = members->session.handle();
  for (kel::int32 row = 0, n = kel::api.Kel_GetCount(m); row < n; ++row) {
    parts.push_back({GetItemString(m, fid::ETF_COMPONENT, row), GetItemString(m, fid::JYS, row),
                     kel::api.Kel_GetLong(m, fid::ETF_COMPONENT_QTY, row)});
  }
  members->session.Release();
  MOLRA_LOG_INFO("{} etf:{} unit:{} cash:{} constituents:{} tradedate:{}", kBasketName, etf_,
                 info.unit, info.cash, parts.size(), *trade_date);
  return PlaceOrders(parts);
}

Result<std::int64_t> Basket::PlaceOrders(const std::vector<Constituent>& parts) {
  std::int64_t placed = 0;
  for (const Constituent& p : parts) {
    if (p.qty_per_unit <= 0) continue;  // cash substitutes carry no quantity
    OrderArgs a;
    a.jys = p.jys.c_str();
    a.zqdm = p.zqdm.c_str();
    a.jylb = kBuy;
    a.wtsl = p.qty_per_unit * units_;
    a.wtjg = price_;
    a.ddlx = ddlx_;
    a.byte91 = static_cast<std::uint8_t>(ddlx_);
    Result<std::int64_t> wth = EntrustImpl(Fixed(Fam::kOrderEntrust), rec_, a, kSync);
    if (!wth || *wth <= 0) return wth;
    ++placed;
  }
  MOLRA_LOG_INFO("{} success.[etf:{} orders:{}]", kBasketName, etf_, placed);
  return placed;
}

}  // namespace

Result<std::int64_t> BasketImpl(CusLoginInfo* rec, const OrderArgs& a) {
  if (rec == nullptr || rec->KHH[0] == '\0' || a.jys == nullptr || a.zqdm == nullptr) {
    return Failure{SECMOLRA_ERR_ARGUMENT, msg::kIllegalArgument, kBasketName, rec};
  }
  return Basket(rec, a.jys, a.zqdm, a.units, a.wtjg, a.ddlx).Run();
}

Result<std::int64_t> RunBasket(const char* name, Target, const Caller& c, const OrderArgs& a,
                               Mode) {
  ArgCheck check = c.ex ? CheckOrderArgsEx(c.record, a.jys, a.zqdm, false, 0)
                        : CheckOrderArgs(c.khh, a.jys, a.zqdm, c.gdh, false, 0);
  if (!check.Require(a.units >= 1).ok()) return check.status().TakeFailure();
  if (!c.ex) {
    MOLRA_LOG_INFO("{} lpKhh:{} lpJys:{} lpEtfCode:{} lpGdh:{} nUnits:{} lfPrice:{} lDdlx:{}", name,
                   c.khh, a.jys, a.zqdm, c.gdh, a.units, a.wtjg, a.ddlx);
  }
  CusLoginInfo own;
  return DropAccount(BasketImpl(c.Record(own), a), &own);
}

}  // namespace molra::trade
