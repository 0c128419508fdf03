// ETF basket entrust: after the ETF's basic information, the trade date and the
// constituents have been read and checked, one ordinary buy order per constituent.
#include <functional>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "account/registry.h"
#include "api/guard.h"
#include "api/last_error.h"
#include "comm/conn_pool.h"
#include "comm/kel_api.h"
#include "log/log.h"
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

// A key/value request on a fresh session of the customer's trade connection. A failure
// leaves its code and the transport's text in `err`; `session_failed` tells a missing
// session (reported as it stands) from a refused request.
class BasketQuery {
 public:
  BasketQuery(const Customer& c, std::int32_t node) : customer_(c), node_(node) {}

  bool Ask(const char* code, const std::function<void(kel::int64)>& fields,
           const std::function<void(kel::int64)>& read) {
    KelSession s = AllocTradeSession(*customer_.conn);
    if (!s) {
      session_failed = true;
      err = {-202, GetStagedError().message};
      return false;
    }
    const kel::int64 h = s.handle();
    kel::api.Kel_SetNodeId(h, node_);
    CreateHead(s, code);
    fields(h);
    if (!kel::api.Kel_Run(h)) {
      err = {-204, GetErrorString(h)};
      return false;
    }
    const kel::int32 rc = kel::api.Kel_GetCode(h);
    if (rc < 1) {
      err = {rc < 0 ? rc : -204, GetErrorString(h)};
      return false;
    }
    read(h);
    return true;
  }

  bool session_failed = false;
  ErrorRecord err;

 private:
  const Customer& customer_;
  std::int32_t node_;
};

class Basket {
 public:
  Basket(CusLoginInfo* rec, const char* jys, const char* etf, std::int32_t units, double price,
         std::int64_t ddlx)
      : rec_(rec), jys_(jys), etf_(etf), units_(units), price_(price), ddlx_(ddlx) {}

  std::int64_t Run();

 private:
  std::int64_t Fail(std::int64_t code, const std::string& msg) {
    SetLastError(code, msg, kBasketName, rec_);
    return code;
  }
  // The query's failure: a missing session as it stands, else `prefix` + the text.
  std::int64_t QueryFailed(const BasketQuery& q, const std::string& prefix) {
    return q.session_failed ? Fail(q.err.code, q.err.message)
                            : Fail(q.err.code, prefix + q.err.message);
  }
  std::int64_t PlaceOrders(const std::vector<Constituent>& parts);

  CusLoginInfo* rec_;
  const char* jys_;
  const char* etf_;
  std::int32_t units_;
  double price_;
  std::int64_t ddlx_;
};

std::int64_t Basket::Run() {
  const std::string khh = FieldText(rec_->KHH);
  Customer customer;
  ErrorRecord not_found;
  if (!FindCustomer(khh, customer, not_found)) return Fail(not_found.code, not_found.message);
  BasketQuery q(customer, rec_->NodeID >= 1 ? rec_->NodeID : CustomerNodeId(khh));

  EtfInfo info;
  if (!q.Ask("D00084",
             [&](kel::int64 h) {
               kel::api.Kel_SetItem(h, fid::ZQDM, etf_);
               kel::api.Kel_SetItem(h, fid::JYS, jys_);
             },
             [&](kel::int64 h) {
               info.subscription_allowed = kel::api.Kel_GetLong(h, fid::ETF_CREATION_OK, -1) == 1;
               info.info_date = kel::api.Kel_GetLong(h, fid::SYS_DATE, -1);
               info.unit = kel::api.Kel_GetLong(h, fid::ETF_UNIT, -1);
               info.cash = kel::api.Kel_GetDouble(h, fid::ETF_CASH, -1);
             })) {
    return QueryFailed(q, "查询ETF_JBXX失败: ");
  }

  std::int64_t trade_date = 0;
  if (!q.Ask("A00066", [](kel::int64) {},
             [&](kel::int64 h) { trade_date = kel::api.Kel_GetLong(h, fid::TRADE_DATE, -1); })) {
    return QueryFailed(q, "查询交易日期失败: ");
  }
  if (!info.subscription_allowed) return Fail(-222, fmt::format("无{}申购资格，禁止交易", etf_));
  if (info.info_date != trade_date) {
    return Fail(-222, fmt::format("{}基本信息未更新[cur:{} etf:{}]，禁止交易", etf_, trade_date,
                                  info.info_date));
  }

  std::vector<Constituent> parts;
  if (!q.Ask("D00088",
             [&](kel::int64 h) {
               kel::api.Kel_SetItem(h, fid::ZQDM, etf_);
               kel::api.Kel_SetItem(h, fid::JYS, jys_);
             },
             [&](kel::int64 h) {
               for (kel::int32 row = 0, n = kel::api.Kel_GetCount(h); row < n; ++row) {
                 parts.push_back({GetItemString(h, fid::ETF_COMPONENT, row),
                                  GetItemString(h, fid::JYS, row),
                                  kel::api.Kel_GetLong(h, fid::ETF_COMPONENT_QTY, row)});
               }
             })) {
    return QueryFailed(q, fmt::format("查询{}成分股信息失败:", etf_));
  }
  MOLRA_LOG_INFO("{} etf:{} unit:{} cash:{} constituents:{} tradedate:{}", kBasketName, etf_,
                 info.unit, info.cash, parts.size(), trade_date);
  return PlaceOrders(parts);
}

std::int64_t Basket::PlaceOrders(const std::vector<Constituent>& parts) {
  std::int64_t placed = 0;
  for (const Constituent& p : parts) {
    if (p.qty_per_unit <= 0) continue;  // cash substitutes carry no quantity
    const EntrustArgs a{p.jys.c_str(), p.zqdm.c_str(), kBuy, p.qty_per_unit * units_, price_,
                        ddlx_, static_cast<std::uint8_t>(ddlx_)};
    const std::int64_t wth = EntrustImpl(Fixed(Fam::kOrderEntrust), rec_, a, kSync);
    if (wth <= 0) return wth;
    ++placed;
  }
  MOLRA_LOG_INFO("{} success.[etf:{} orders:{}]", kBasketName, etf_, placed);
  return placed;
}

std::int64_t BasketImpl(CusLoginInfo* rec, const char* jys, const char* etf, std::int32_t units,
                        double price, std::int64_t ddlx) {
  if (rec == nullptr || rec->KHH[0] == '\0' || jys == nullptr || etf == nullptr) {
    SetLastError(-221, kIllegal, kBasketName, rec);
    return -221;
  }
  return Basket(rec, jys, etf, units, price, ddlx).Run();
}

}  // namespace
}  // namespace molra::trade

using namespace molra::trade;
using molra::Guard;

extern "C" {

SECMOLRA_API int64_t SECMOLRA_ETFBasketEntrust(const char* lpKhh, const char* lpJys,
                                               const char* lpEtfCode, const char* lpGdh,
                                               int32_t nUnits, double lfPrice, int64_t lDdlx) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    ArgCheck c = CheckOrderArgs("SECMOLRA_ETFBasketEntrust", lpKhh, lpJys, lpEtfCode, lpGdh, false, 0);
    if (!c.Require(nUnits >= 1).ok()) return c.code();
    MOLRA_LOG_INFO("{} lpKhh:{} lpJys:{} lpEtfCode:{} lpGdh:{} nUnits:{} lfPrice:{} lDdlx:{}",
                   "SECMOLRA_ETFBasketEntrust", lpKhh, lpJys, lpEtfCode, lpGdh, nUnits, lfPrice,
                   lDdlx);
    CusLoginInfo rec = MakeRecord(lpKhh, lpGdh);
    return BasketImpl(&rec, lpJys, lpEtfCode, nUnits, lfPrice, lDdlx);
  });
}

SECMOLRA_API int64_t SECMOLRA_ETFBasketEntrustEx(CusLoginInfo* info, const char* lpJys,
                                                 const char* lpEtfCode, int32_t nUnits,
                                                 double lfPrice, int64_t lDdlx) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    ArgCheck c = CheckOrderArgsEx("SECMOLRA_ETFBasketEntrustEx", info, lpJys, lpEtfCode, false, 0);
    if (!c.Require(nUnits >= 1).ok()) return c.code();
    return BasketImpl(info, lpJys, lpEtfCode, nUnits, lfPrice, lDdlx);
  });
}

}  // extern "C"
