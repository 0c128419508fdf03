// Account management: password change, fund transfers in and out and between nodes, and the
// fund-allocation ratio. Each export checks its arguments and finds the logged-in customer
// (errors under the export's name); the method then sends one key/value request on the
// customer's trade connection (errors under "AccountInfo::<method>").
#include <functional>
#include <string>

#include "comm/conn_pool.h"
#include "comm/customer.h"
#include "comm/kel_api.h"
#include "comm/kv_request.h"
#include "core/context.h"
#include "core/errors.h"
#include "core/guard.h"
#include "core/log.h"
#include "core/messages.h"
#include "core/text.h"
#include "secmolra.h"
#include "util/field_ids.h"

namespace molra::account {

namespace {

// One account method: its name in errors and log lines, function code, whether it sets the
// customer's entrust method and node on the session, and how its answer is judged.
struct Method {
  const char* name;
  const char* func_code;
  bool session_settings;
  const AnswerRule& rule;
};

const Method kModifyTradePwd{"AccountInfo::ScModifyPwd", "610303", false, kRowState};
const Method kModifyFundPwd{"AccountInfo::ScModifyPwd", "610304", false, kRowState};
const Method kTransferIn{"AccountInfo::FunMDBFundsTransfer", "610403", true, kNonNegativeCode};
const Method kTransferOut{"AccountInfo::FunMDBFundsTransfer", "610404", true, kNonNegativeCode};
const Method kBetweenNodes{"AccountInfo::FundTransBetweenNodes", "910001", true, kNonNegativeCode};
const Method kModifyRatio{"AccountInfo::ModifyZJHBCL", "910004", true, kNonNegativeCode};

constexpr std::int32_t kLoginType = 6;

bool Missing(const char* s) { return s == nullptr || *s == '\0'; }

std::string CustomerWtfs(const Customer& c) {
  return c.record->wtfs.empty() ? Host().Wtfs() : c.record->wtfs;
}

// Session, request, run and result of one method. `fields` is called once the session is
// open (the password change encodes its passwords there).
Result<std::int64_t> RunMethod(const Method& m, const Customer& c,
                               const std::function<ReqFields()>& fields) {
  Result<KelSession> session = AllocTradeSession(*c.conn);
  if (!session) return session.TakeFailure().At(m.name);
  KvRequest request{{}, m.func_code, fields()};
  if (m.session_settings) {
    request.settings = {ReqField::Wtfs(CustomerWtfs(c)), ReqField::Node(Host().Node())};
  }
  Result<KvAnswer> answer = RunRequest(std::move(*session), request, m.rule);
  if (!answer) {
    Failure f = answer.TakeFailure().At(m.name);
    const bool refused = f.code != SECMOLRA_ERR_SEND || f.message != msg::kSendFailed;
    if (refused) MOLRA_LOG_INFO("{} failed.", m.name);
    return f;
  }
  MOLRA_LOG_INFO("{} success.", m.name);
  return answer->value;
}

Result<std::int64_t> ModifyPwd(const Customer& c, const char* khh, const char* old_pwd,
                               const char* new_pwd, std::int32_t kind) {
  if (c.conn->system_type != kSystemType) {
    return Failure{SECMOLRA_ERR_UNSUPPORTED, msg::kNotImplemented, "AccountInfo::ModifyPwd"};
  }
  const Method& m = kind == 0 ? kModifyTradePwd : kModifyFundPwd;
  return RunMethod(m, c, [&] {
    std::string old_enc = EncodePassword3rd(khh, old_pwd);
    std::string new_enc = EncodePassword3rd(khh, new_pwd);
    // The back end accepts the encoded passwords as they are: neither goes to the log.
    MOLRA_LOG_INFO("{} Req {} modify pwd. Param[khh:{} oldpwd:*** newpwd:***]", m.name, m.func_code,
                   khh);
    return ReqFields{ReqField::Text(fid::KHH, khh), ReqField::Int(fid::LOGIN_TYPE, kLoginType),
                     ReqField::Text(fid::OLD_PWD, old_enc), ReqField::Text(fid::NEW_PWD, new_enc)};
  });
}

Result<std::int64_t> FundTransfer(const char* export_name, const Method& m, const char* khh,
                                  const char* pwd, double amount, const char* zjzh,
                                  const char* text5, const char* text6, const char* remark) {
  if (khh == nullptr || pwd == nullptr || !(amount > 0)) return IllegalArgument();
  MOLRA_LOG_INFO("{} lpKhh:{} dFsje:{} sZjzh:{} sZy:{}", export_name, khh, amount, LogText(zjzh),
                 LogText(remark));
  Result<CustomerRef> c = FindCustomer(khh);
  if (!c) return c.TakeFailure();
  // Transfers exist for the one back-office system type the kit accepts.
  if ((*c)->conn->system_type != kSystemType) {
    return Failure{SECMOLRA_ERR_UNSUPPORTED, msg::kNotImplemented, m.name};
  }
  return RunMethod(m, **c, [&] {
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

Result<std::int64_t> ModifyPwdExport(const char* khh, const char* old_pwd, const char* new_pwd,
                                     std::int32_t kind) {
  if (khh == nullptr || old_pwd == nullptr || new_pwd == nullptr) return IllegalArgument();
  if (*khh == '\0' || *old_pwd == '\0' || *new_pwd == '\0') {
    return Failure{SECMOLRA_ERR_ARGUMENT, msg::kPasswordArgsEmpty};
  }
  MOLRA_LOG_INFO("{} lpKhh:{} nType:{}", "SECMOLRA_ModifyPwd", khh, kind);
  Result<CustomerRef> c = FindCustomer(khh);
  if (!c) return c.TakeFailure();
  return ModifyPwd(**c, khh, old_pwd, new_pwd, kind);
}

}  // namespace

}  // namespace molra::account

using namespace molra;
using namespace molra::account;

extern "C" {

SECMOLRA_API int64_t SECMOLRA_ModifyPwd(const char* khh, const char* oldPwd, const char* newPwd,
                                        int32_t kind) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    return Reported(ModifyPwdExport(khh, oldPwd, newPwd, kind), "SECMOLRA_ModifyPwd");
  });
}

SECMOLRA_API int64_t SECMOLRA_FundTransIn(const char* khh, const char* pwd, double amount,
                                          const char* zjzh, const char* text5, const char* text6,
                                          const char* remark) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    constexpr const char* kName = "SECMOLRA_FundTransIn";
    return Reported(FundTransfer(kName, kTransferIn, khh, pwd, amount, zjzh, text5, text6, remark),
                    kName);
  });
}

SECMOLRA_API int64_t SECMOLRA_FundTransOut(const char* khh, const char* pwd, double amount,
                                           const char* zjzh, const char* text5, const char* text6,
                                           const char* remark) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    constexpr const char* kName = "SECMOLRA_FundTransOut";
    return Reported(FundTransfer(kName, kTransferOut, khh, pwd, amount, zjzh, text5, text6, remark),
                    kName);
  });
}

SECMOLRA_API int64_t SECMOLRA_FundTransBetweenNodes(int32_t systemType, const char* khh,
                                                    const char* zjzh, double amount, int64_t node1,
                                                    int64_t node2, const char* remark) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    constexpr const char* kName = "SECMOLRA_FundTransBetweenNodes";
    MOLRA_LOG_INFO("{} systemtype:{},lpKhh:{},sZjzh:{},dFsje:{},nNode1:{},nNode2:{},sZy:{} ", kName,
                   systemType, LogText(khh), LogText(zjzh), amount, node1, node2, LogText(remark));
    if (systemType != kSystemType || Missing(khh) || !(amount > 0) || !ValidNodes(node1, node2)) {
      return Report(IllegalArgument(), kName);
    }
    Result<CustomerRef> c = FindCustomer(khh);
    if (!c) return Report(c.failure(), kName);
    return Reported(
        RunMethod(kBetweenNodes, **c,
                  [&] {
                    return ReqFields{
                        ReqField::Text(fid::KHH, khh),      ReqField::Text(fid::BZ, "RMB"),
                        ReqField::Text(fid::ZJZH, zjzh),    ReqField::Double(fid::FSJE, amount),
                        ReqField::Long(fid::NODE1, node1),  ReqField::Long(fid::NODE2, node2),
                        ReqField::Text(fid::REMARK, remark)};
                  }),
        kName);
  });
}

SECMOLRA_API int64_t SECMOLRA_ModifyZJHBCL(int32_t systemType, const char* khh, const char* zjzh,
                                           int64_t node1, int64_t node2, double ratio1,
                                           double ratio2, const char* remark) {
  return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&]() -> int64_t {
    constexpr const char* kName = "SECMOLRA_ModifyZJHBCL";
    MOLRA_LOG_INFO("{} systemtype:{},lpKhh:{},sZjzh:{},nNode1:{},nNode2:{},dBl1:{},dBl2:{},sZy:{} ",
                   kName, systemType, LogText(khh), LogText(zjzh), node1, node2, ratio1, ratio2,
                   LogText(remark));
    if (systemType != kSystemType || Missing(khh) || !ValidNodes(node1, node2) || !(ratio1 >= 0) ||
        !(ratio2 >= 0)) {
      return Report(IllegalArgument(), kName);
    }
    Result<CustomerRef> c = FindCustomer(khh);
    if (!c) return Report(c.failure(), kName);
    return Reported(RunMethod(kModifyRatio, **c,
                              [&] {
                                return ReqFields{ReqField::Text(fid::KHH, khh),
                                                 ReqField::Text(fid::BZ, "RMB"),
                                                 ReqField::Text(fid::ZJZH, zjzh),
                                                 ReqField::Long(fid::NODE1, node1),
                                                 ReqField::Long(fid::NODE2, node2),
                                                 ReqField::Double(fid::RATIO1, ratio1),
                                                 ReqField::Double(fid::RATIO2, ratio2),
                                                 ReqField::Text(fid::REMARK, remark)};
                              }),
                    kName);
  });
}

}  // extern "C"
