// Account management: password change, fund transfers in and out and between nodes, and the
// fund-allocation ratio. Each export checks its arguments and finds the logged-in customer
// (errors under the export's name); the method then sends one key/value request on the
// customer's trade connection (errors under "AccountInfo::<method>").
#include <cstring>
#include <functional>
#include <string>

#include "account/registry.h"
#include "api/guard.h"
#include "api/kit_state.h"
#include "api/last_error.h"
#include "comm/conn_pool.h"
#include "comm/kel_api.h"
#include "comm/kv_request.h"
#include "log/log.h"
#include "secmolra.h"
#include "util/field_ids.h"

namespace molra::account {

namespace {

enum class Result { kAnswerCode, kRowState };

// One account method: its name in errors and log lines, function code, whether it sets the
// customer's entrust method and node on the session, and where its result is read.
struct Method {
  const char* name;
  const char* func_code;
  bool session_settings;
  Result result;
};

const Method kModifyTradePwd{"AccountInfo::ScModifyPwd", "610303", false, Result::kRowState};
const Method kModifyFundPwd{"AccountInfo::ScModifyPwd", "610304", false, Result::kRowState};
const Method kTransferIn{"AccountInfo::FunMDBFundsTransfer", "610403", true, Result::kAnswerCode};
const Method kTransferOut{"AccountInfo::FunMDBFundsTransfer", "610404", true,
                          Result::kAnswerCode};
const Method kBetweenNodes{"AccountInfo::FundTransBetweenNodes", "910001", true,
                           Result::kAnswerCode};
const Method kModifyRatio{"AccountInfo::ModifyZJHBCL", "910004", true, Result::kAnswerCode};

constexpr std::int32_t kSystemType = 4;
constexpr std::int32_t kLoginType = 6;

bool Missing(const char* s) { return s == nullptr || *s == '\0'; }

// Export step: the logged-in customer, or false with the lookup's error under `func`.
bool Lookup(const char* func, const char* khh, Customer& c, std::int64_t& code) {
  ErrorRecord err;
  if (FindCustomer(khh, c, err)) return true;
  code = Fail(err.code, err.message, func);
  return false;
}

std::string CustomerWtfs(const Customer& c) {
  std::string wtfs;
  if (c.record) wtfs.assign(c.record->wtfs, strnlen(c.record->wtfs, sizeof c.record->wtfs));
  return wtfs.empty() ? Kit().Wtfs() : wtfs;
}

// Session, request, run and result of one method. `fields` is called once the session is
// open (the password change encodes its passwords there).
std::int64_t RunMethod(const Method& m, const Customer& c, const std::function<ReqFields()>& fields) {
  KelSession session = AllocTradeSession(*c.conn);
  if (!session) return Fail(SECMOLRA_ERR_SESSION, GetStagedError().message, m.name);
  kel::int64 h = session.handle();
  ReqFields request = fields();
  if (m.session_settings) {
    kel::api.Kel_SetWTFS(h, CustomerWtfs(c).c_str());
    kel::api.Kel_SetNode(h, Kit().Node().c_str());
  }
  CreateHead(session, m.func_code);
  SetRequestFields(h, request);
  if (!kel::api.Kel_Run(h)) return Fail(SECMOLRA_ERR_SEND, "发送请求失败", m.name);
  std::int64_t result = m.result == Result::kRowState ? kel::api.Kel_GetLong(h, fid::ROW_STATE, 0)
                                                      : kel::api.Kel_GetCode(h);
  if (result < 0) {
    Fail(result, GetErrorString(h), m.name);
    MOLRA_LOG_INFO("{} failed.", m.name);
  } else {
    MOLRA_LOG_INFO("{} success.", m.name);
  }
  return result;
}

std::int64_t ModifyPwd(const Customer& c, const char* khh, const char* old_pwd,
                       const char* new_pwd, std::int32_t kind) {
  if (c.conn->system_type != kSystemType) {
    return Fail(SECMOLRA_ERR_UNSUPPORTED, "功能未实现", "AccountInfo::ModifyPwd");
  }
  const Method& m = kind == 0 ? kModifyTradePwd : kModifyFundPwd;
  return RunMethod(m, c, [&] {
    std::string old_enc = EncodePassword3rd(khh, old_pwd);
    std::string new_enc = EncodePassword3rd(khh, new_pwd);
    // The back end accepts the encoded passwords as they are: neither goes to the log.
    MOLRA_LOG_INFO("{} Req {} modify pwd. Param[khh:{} oldpwd:*** newpwd:***]", m.name,
                   m.func_code, khh);
    return ReqFields{ReqField::Text(fid::KHH, khh), ReqField::Int(fid::LOGIN_TYPE, kLoginType),
                     ReqField::Text(fid::OLD_PWD, old_enc),
                     ReqField::Text(fid::NEW_PWD, new_enc)};
  });
}

std::int64_t FundTransfer(const char* export_name, const Method& m, const char* khh,
                          const char* pwd, double amount, const char* zjzh, const char* text5,
                          const char* text6, const char* remark) {
  if (khh == nullptr || pwd == nullptr || !(amount > 0)) {
    return Fail(SECMOLRA_ERR_ARGUMENT, "非法参数", export_name);
  }
  MOLRA_LOG_INFO("{} lpKhh:{} dFsje:{} sZjzh:{} sZy:{}", export_name, khh, amount,
                 LogText(zjzh), LogText(remark));
  Customer c;
  std::int64_t code = 0;
  if (!Lookup(export_name, khh, c, code)) return code;
  // Transfers exist for the one back-office system type the kit accepts.
  if (c.conn->system_type != kSystemType) return Fail(SECMOLRA_ERR_UNSUPPORTED, "功能未实现", m.name);
  return RunMethod(m, c, [&] {
    return ReqFields{ReqField::Text(fid::KHH, khh),
                     ReqField::Double(fid::FSJE, amount),
                     ReqField::Text(fid::JYMM, EncodePassword3rd(khh, pwd)),
                     ReqField::Int(fid::LOGIN_TYPE, kLoginType),
                     ReqField::Text(fid::ZJZH, zjzh),
                     ReqField::Text(fid::TRANSFER_TEXT5, text5),
                     ReqField::Text(fid::TRANSFER_TEXT6, text6),
                     ReqField::Text(fid::REMARK, remark)};
  });
}

bool ValidNodes(std::int64_t node1, std::int64_t node2) {
  return node1 >= 1 && node2 >= 1 && node1 != node2;
}

}  // namespace

}  // namespace molra::account

using namespace molra;
using namespace molra::account;

extern "C" {

SECMOLRA_API int64_t SECMOLRA_ModifyPwd(const char* khh, const char* oldPwd, const char* newPwd,
                                        int32_t kind) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    constexpr const char* kName = "SECMOLRA_ModifyPwd";
    if (khh == nullptr || oldPwd == nullptr || newPwd == nullptr) {
      return Fail(SECMOLRA_ERR_ARGUMENT, "非法参数", kName);
    }
    if (*khh == '\0' || *oldPwd == '\0' || *newPwd == '\0') {
      return Fail(SECMOLRA_ERR_ARGUMENT, "客户号、新旧密码不能为空", kName);
    }
    MOLRA_LOG_INFO("{} lpKhh:{} nType:{}", kName, khh, kind);
    Customer c;
    std::int64_t code = 0;
    if (!Lookup(kName, khh, c, code)) return code;
    return ModifyPwd(c, khh, oldPwd, newPwd, kind);
  });
}

SECMOLRA_API int64_t SECMOLRA_FundTransIn(const char* khh, const char* pwd, double amount,
                                          const char* zjzh, const char* text5, const char* text6,
                                          const char* remark) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return FundTransfer("SECMOLRA_FundTransIn", kTransferIn, khh, pwd, amount, zjzh, text5, text6,
                        remark);
  });
}

SECMOLRA_API int64_t SECMOLRA_FundTransOut(const char* khh, const char* pwd, double amount,
                                           const char* zjzh, const char* text5, const char* text6,
                                           const char* remark) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return FundTransfer("SECMOLRA_FundTransOut", kTransferOut, khh, pwd, amount, zjzh, text5,
                        text6, remark);
  });
}

SECMOLRA_API int64_t SECMOLRA_FundTransBetweenNodes(int32_t systemType, const char* khh,
                                                    const char* zjzh, double amount,
                                                    int64_t node1, int64_t node2,
                                                    const char* remark) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    constexpr const char* kName = "SECMOLRA_FundTransBetweenNodes";
    MOLRA_LOG_INFO("{} systemtype:{},lpKhh:{},sZjzh:{},dFsje:{},nNode1:{},nNode2:{},sZy:{} ",
                   kName, systemType, LogText(khh), LogText(zjzh), amount, node1, node2,
                   LogText(remark));
    if (systemType != kSystemType || Missing(khh) || !(amount > 0) || !ValidNodes(node1, node2)) {
      return Fail(SECMOLRA_ERR_ARGUMENT, "非法参数", kName);
    }
    Customer c;
    std::int64_t code = 0;
    if (!Lookup(kName, khh, c, code)) return code;
    return RunMethod(kBetweenNodes, c, [&] {
      return ReqFields{ReqField::Text(fid::KHH, khh), ReqField::Text(fid::BZ, "RMB"),
                       ReqField::Text(fid::ZJZH, zjzh), ReqField::Double(fid::FSJE, amount),
                       ReqField::Long(fid::NODE1, node1), ReqField::Long(fid::NODE2, node2),
                       ReqField::Text(fid::REMARK, remark)};
    });
  });
}

SECMOLRA_API int64_t SECMOLRA_ModifyZJHBCL(int32_t systemType, const char* khh,
                                           const char* zjzh, int64_t node1, int64_t node2,
                                           double ratio1, double ratio2, const char* remark) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    constexpr const char* kName = "SECMOLRA_ModifyZJHBCL";
    MOLRA_LOG_INFO("{} systemtype:{},lpKhh:{},sZjzh:{},nNode1:{},nNode2:{},dBl1:{},dBl2:{},sZy:{} ",
                   kName, systemType, LogText(khh), LogText(zjzh), node1, node2, ratio1, ratio2,
                   LogText(remark));
    if (systemType != kSystemType || Missing(khh) || !ValidNodes(node1, node2) ||
        !(ratio1 >= 0) || !(ratio2 >= 0)) {
      return Fail(SECMOLRA_ERR_ARGUMENT, "非法参数", kName);
    }
    Customer c;
    std::int64_t code = 0;
    if (!Lookup(kName, khh, c, code)) return code;
    return RunMethod(kModifyRatio, c, [&] {
      return ReqFields{ReqField::Text(fid::KHH, khh),       ReqField::Text(fid::BZ, "RMB"),
                       ReqField::Text(fid::ZJZH, zjzh),     ReqField::Long(fid::NODE1, node1),
                       ReqField::Long(fid::NODE2, node2),   ReqField::Double(fid::RATIO1, ratio1),
                       ReqField::Double(fid::RATIO2, ratio2), ReqField::Text(fid::REMARK, remark)};
    });
  });
}

}  // extern "C"
