#include "account/account_info.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "comm/conn_pool.h"
#include "comm/kel_api.h"
#include "comm/kv_request.h"
#include "core/log.h"
#include "core/messages.h"
#include "core/text.h"
#include "push/subscribe.h"
#include "util/field_ids.h"

namespace molra {

namespace {

constexpr const char* kLoginFunc = "AccountInfo::Login";
constexpr const char* kJdbhFunc = "AccountInfo::AcctManage::GetAccountJDBH";

using Encoder = bool (*kel::Api::*)(const char* khh, char* buf, kel::int32* len);

// The two ways a customer logs in. The direct form talks to the trade back end on the
// customer's own set; the authentication form goes through the management connection.
struct LoginForm {
  const char* login_code;
  const char* node_list_code;
  std::int32_t login_type;
  Encoder encoder;
  Result<KelSession> (*alloc_session)(KelComm::KelConn&);
  bool authentication;
};

const LoginForm kDirectForm{"610301",           "D00749", 6, &kel::Api::Kel_UniEncode3rd,
                            &AllocTradeSession, false};
const LoginForm kAuthForm{"A00401", "A00210", 5, &kel::Api::Kel_UniEncode, &AllocManagementSession,
                          true};

// System-information pairs (kind, field id) attached to every login request.
struct SysInfoPair {
  kel::int32 kind;
  kel::int32 field;
};
constexpr SysInfoPair kLoginSysInfo[] = {{0, 2075}, {1, 2076}, {4, 3800}, {5, 3085}, {6, 3086}};

constexpr int kEncodeCap = 1024;
constexpr int kRowExchangeCap = 4;
constexpr std::size_t kRecordWtfsWidth = 10;

const LoginForm& FormOf(const KelComm::KelConn& conn) {
  return conn.system_type == kSystemType && conn.profile.use3rd ? kDirectForm : kAuthForm;
}

bool HasAsciiLetter(const std::string& s) {
  return std::any_of(s.begin(), s.end(),
                     [](char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); });
}

class LoginRun {
 public:
  LoginRun(Kit& kit, const std::shared_ptr<KelComm::KelConn>& conn, CusLoginInfo& info)
      : kit_(kit), conn_(conn), info_(info) {}

  Result<std::int64_t> Run();

 private:
  Failure Fail(std::int64_t code, std::string message) const {
    return Failure{code, std::move(message), kLoginFunc, &info_};
  }
  Status ResolveNode();
  std::string EncodedPassword(const LoginForm& form) const;
  KvRequest Request(const LoginForm& form, const std::string& pwd) const;
  std::int64_t ReadToken(kel::int64 session, const LoginForm& form) const;

  Kit& kit_;
  const std::shared_ptr<KelComm::KelConn>& conn_;
  CusLoginInfo& info_;
  std::string khh_, password_, node_, wtfs_;
  std::int32_t node_id_ = -1;
};

Result<std::int64_t> LoginRun::Run() {
  khh_ = FieldText(info_.KHH);
  password_ = FieldText(info_.Password);
  node_ = FieldText(info_.Node);
  wtfs_ = FieldText(info_.WTFS);
  node_id_ = info_.NodeID;
  if (node_.empty()) node_ = Host().Node();
  if (wtfs_.empty()) wtfs_ = Host().Wtfs();
  if (khh_.empty() || password_.empty())
    return Fail(SECMOLRA_ERR_ARGUMENT, msg::kKhhOrPasswordEmpty);

  if (Status node = ResolveNode(); !node) return node.TakeFailure();
  info_.NodeID = node_id_;
  kit_.customers.nodes.Set(khh_, node_id_);

  const LoginForm& form = FormOf(*conn_);
  std::shared_ptr<KelComm::KelConn> session_conn = conn_;
  if (form.authentication) {
    ConnPool* pool = kit_.pool();
    Result<std::shared_ptr<KelComm::KelConn>> found =
        pool != nullptr ? pool->GetConnection(khh_, "") : Failure{kConnectionFailure, ""};
    if (!found) return Fail(SECMOLRA_ERR_NO_CONN_INFO, msg::kNoConnConfig);
    session_conn = std::move(*found);
  }
  Result<KelSession> session = form.alloc_session(*session_conn);
  if (!session) return session.TakeFailure().At(kLoginFunc, &info_);

  const KvRequest request = Request(form, EncodedPassword(form));
  Result<KvAnswer> answer = RunRequest(std::move(*session), request, kPositiveCode);
  if (!answer) return answer.TakeFailure().At(kLoginFunc, &info_);

  const std::int64_t token = ReadToken(answer->session.handle(), form);
  // A new record replaces the customer's: order threads may be reading the one registered.
  // The password is not kept: it served this login only.
  kit_.customers.Register(
      conn_->system_type, khh_,
      std::make_shared<const CusRecord>(CusRecord{token, wtfs_.substr(0, kRecordWtfsWidth)}));
  info_.Token = token;
  MOLRA_LOG_INFO("{} success. [khh:{} systype:{} token:{}]", kLoginFunc, khh_, conn_->system_type,
                 token);
  kit_.customers.SetDefault(conn_->system_type, khh_, conn_);
  SubscribeTradeMsg(kit_.push, khh_, kit_.customers.nodes.Get(khh_), conn_);
  return token;
}

// The record's node id, else the node table's, else the only type-4 node of the node list.
Status LoginRun::ResolveNode() {
  if (node_id_ >= 1) return Ok();
  node_id_ = kit_.customers.nodes.Get(khh_);
  if (node_id_ >= 1) return Ok();
  std::vector<CusNodeInfo> nodes;
  Result<std::int64_t> n = AccountInfo::AcctManage::GetAccountJDBH(khh_, *conn_, nodes, 0);
  if (!n) return n.TakeFailure();
  if (*n == 0) return Fail(SECMOLRA_ERR_NO_NODE, msg::kNoTradingNode);
  if (*n >= 2) return Fail(SECMOLRA_ERR_MANY_NODES, msg::kManyNodes);
  node_id_ = nodes.front().NodeID;
  return Ok();
}

std::string LoginRun::EncodedPassword(const LoginForm& form) const {
  char buf[kEncodeCap] = {};
  CopyField(buf, kEncodeCap - 1, password_.c_str());
  kel::int32 len = kEncodeCap;
  (kel::api.*form.encoder)(khh_.c_str(), buf, &len);
  buf[kEncodeCap - 1] = '\0';
  return buf;
}

KvRequest LoginRun::Request(const LoginForm& form, const std::string& pwd) const {
  const ConnProfile& profile = conn_->profile;
  KvRequest r{{ReqField::Wtfs(wtfs_)}, form.login_code, {}};
  if (form.authentication) r.settings.push_back(ReqField::Gydm(FieldText(profile.wtgy)));
  r.settings.push_back(ReqField::Node(node_));
  r.settings.push_back(ReqField::NodeId(node_id_));
  r.fields = {ReqField::Text(fid::KHH, khh_), ReqField::Text(fid::JYMM, pwd),
              ReqField::Int(fid::LOGIN_TYPE, form.login_type)};
  if (form.authentication) {
    r.fields.push_back(ReqField::Int(fid::SYSTEM_TYPE, conn_->system_type));
    r.fields.push_back(ReqField::Text(fid::APP_NAME, "molra"));
    r.fields.push_back(ReqField::Text(fid::APP_EXTRA, ""));
  }
  r.fields.push_back(ReqField::Text(fid::APP_TEXT, FieldText(profile.app_name)));
  for (const SysInfoPair& p : kLoginSysInfo) r.fields.push_back(ReqField::SysInfo(p.kind, p.field));
  return r;
}

// The authentication back end may answer a non-numeric token; the customer number stands
// in for it then.
std::int64_t LoginRun::ReadToken(kel::int64 session, const LoginForm& form) const {
  if (form.authentication && HasAsciiLetter(GetItemString(session, fid::TOKEN, -1))) {
    return std::atol(khh_.c_str());
  }
  return kel::api.Kel_GetLong(session, fid::TOKEN, -1);
}

CusNodeInfo NodeRow(kel::int64 session, kel::int32 row) {
  CusNodeInfo node{};
  CopyField(node.KHH, GetItemString(session, fid::KHH, row).c_str());
  node.SystemType = kSystemType;
  // The row's exchange is read but not kept.
  char exchange[kRowExchangeCap] = {};
  kel::int32 len = kRowExchangeCap;
  kel::api.Kel_GetItem(session, fid::JYS, exchange, &len, row);
  node.NodeID = static_cast<std::int32_t>(kel::api.Kel_GetLong(session, fid::NODE_ID, row));
  return node;
}

}  // namespace

Result<std::int64_t> AccountInfo::Login(Kit& kit, const std::shared_ptr<KelComm::KelConn>& conn,
                                        CusLoginInfo& info) {
  return LoginRun(kit, conn, info).Run();
}

Result<std::int64_t> AccountInfo::AcctManage::GetAccountJDBH(const std::string& khh,
                                                             KelComm::KelConn& conn,
                                                             std::vector<CusNodeInfo>& list,
                                                             int flag) {
  MOLRA_LOG_INFO("{} Req LST_KHXX. Param[khh:{}]", kJdbhFunc, khh);
  const LoginForm& form = FormOf(conn);
  Result<KelSession> session = form.alloc_session(conn);
  if (!session) return session.TakeFailure().At(kJdbhFunc);
  if (conn.system_type != kSystemType) {
    return Failure{SECMOLRA_ERR_SYSTEM_TYPE,
                   fmt::format(fmt::runtime(msg::kInvalidSystemType), conn.system_type), kJdbhFunc};
  }
  KvRequest request{{}, form.node_list_code, {ReqField::Text(fid::KHH, khh)}};
  if (!form.authentication && flag == 0) {
    request.fields.push_back(ReqField::Text(fid::JYS, FieldText(conn.profile.exchange)));
  }
  Result<KvAnswer> answer = RunRequest(std::move(*session), request, kPositiveCode);
  if (!answer) return answer.TakeFailure().At(kJdbhFunc);

  const kel::int64 h = answer->session.handle();
  std::int64_t count = 0;
  kel::int32 rows = kel::api.Kel_GetCount(h);
  for (kel::int32 row = 0; row < rows; ++row) {
    if (kel::api.Kel_GetLong(h, fid::SYSTEM_TYPE, row) != kSystemType) continue;
    list.push_back(NodeRow(h, row));
    ++count;
  }
  MOLRA_LOG_INFO("{} success.[khh:{} infonum:{}]", kJdbhFunc, khh, count);
  return count;
}

}  // namespace molra
