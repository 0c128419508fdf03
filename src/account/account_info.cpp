#include "account/account_info.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include <fmt/format.h>

#include "account/login_texts.h"
#include "account/registry.h"
#include "api/kit_state.h"
#include "api/last_error.h"
#include "comm/conn_pool.h"
#include "comm/kel_api.h"
#include "log/log.h"
#include "push/subscribe.h"
#include "util/field_ids.h"
#include "util/server_time.h"

namespace molra {

namespace {

namespace text = login_text;

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
  KelSession (*alloc_session)(KelComm::KelConn&);
  bool authentication;
};

const LoginForm kDirectForm{"610301", "D00749", 6, &kel::Api::Kel_UniEncode3rd,
                            &AllocTradeSession, false};
const LoginForm kAuthForm{"A00401", "A00210", 5, &kel::Api::Kel_UniEncode,
                          &AllocManagementSession, true};

// System-information pairs (kind, field id) attached to every login request.
struct SysInfoPair {
  kel::int32 kind;
  kel::int32 field;
};
constexpr SysInfoPair kLoginSysInfo[] = {{0, 2075}, {1, 2076}, {4, 3800}, {5, 3085}, {6, 3086}};

constexpr int kEncodeCap = 1024;
constexpr int kRowExchangeCap = 4;

const LoginForm& FormOf(const KelComm::KelConn& conn) {
  const ConnProfile* p = conn.ActiveProfile();
  bool use3rd = p == nullptr || p->use3rd;  // the key's default is the direct form
  return conn.system_type == 4 && use3rd ? kDirectForm : kAuthForm;
}

bool HasAsciiLetter(const std::string& s) {
  return std::any_of(s.begin(), s.end(), [](char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
  });
}

class LoginRun {
 public:
  LoginRun(const std::shared_ptr<KelComm::KelConn>& conn, CusLoginInfo& info, std::string* msg)
      : conn_(conn), info_(info), msg_(msg) {}

  std::int64_t Run();

 private:
  std::int64_t Fail(std::int64_t code, const std::string& message) {
    if (msg_ != nullptr) *msg_ = message;
    SetLastError(code, message, kLoginFunc, &info_);
    return code;
  }
  std::int64_t ResolveNode();
  std::string EncodedPassword(const LoginForm& form) const;
  void FillRequest(const KelSession& s, const LoginForm& form, const std::string& pwd) const;
  std::int64_t ReadToken(const KelSession& s, const LoginForm& form) const;
  void Register(std::int64_t token) const;

  const std::shared_ptr<KelComm::KelConn>& conn_;
  CusLoginInfo& info_;
  std::string* msg_;
  const ConnProfile* profile_ = nullptr;
  std::string khh_, password_, node_, wtfs_;
  std::int32_t node_id_ = -1;
};

std::int64_t LoginRun::Run() {
  khh_ = FieldText(info_.KHH);
  password_ = FieldText(info_.Password);
  node_ = FieldText(info_.Node);
  wtfs_ = FieldText(info_.WTFS);
  node_id_ = info_.NodeID;
  if (node_.empty()) node_ = Kit().Node();
  if (wtfs_.empty()) wtfs_ = Kit().Wtfs();
  if (khh_.empty() || password_.empty()) return Fail(-221, text::kKhhOrPasswordEmpty);
  profile_ = conn_ ? conn_->ActiveProfile() : nullptr;
  if (profile_ == nullptr) return Fail(-224, text::kNoConnInfo);

  if (std::int64_t r = ResolveNode(); r < 0) return r;
  info_.NodeID = node_id_;
  NodeTable().Set(khh_, node_id_);

  const LoginForm& form = FormOf(*conn_);
  std::shared_ptr<KelComm::KelConn> session_conn = conn_;
  if (form.authentication) {
    session_conn = Pool() ? Pool()->GetConnection(khh_, "") : nullptr;
    if (!session_conn) return Fail(-224, text::kNoConnConfig);
  }
  KelSession session = form.alloc_session(*session_conn);
  if (!session) return Fail(-202, GetStagedError().message);

  FillRequest(session, form, EncodedPassword(form));
  if (!kel::api.Kel_Run(session.handle())) return Fail(-204, text::kSendFailed);
  std::int32_t code = kel::api.Kel_GetCode(session.handle());
  if (code < 1) return Fail(code, GetErrorString(session.handle()));

  std::int64_t token = ReadToken(session, form);
  Register(token);
  info_.Token = token;
  MOLRA_LOG_INFO("{} success. [khh:{} systype:{} token:{}]", kLoginFunc, khh_, conn_->system_type,
                 token);
  Registry().SetDefault(conn_->system_type, khh_, conn_);
  SubscribeTradeMsg(khh_, conn_);
  GetCurTime();
  return token;
}

// The record's node id, else the node table's, else the only type-4 node of the node list.
std::int64_t LoginRun::ResolveNode() {
  if (node_id_ >= 1) return 0;
  node_id_ = NodeTable().Get(khh_);
  if (node_id_ >= 1) return 0;
  std::vector<CusNodeInfo> nodes;
  std::int64_t n = AccountInfo::AcctManage::GetAccountJDBH(khh_, *conn_, nodes, 0);
  if (n < 0) {
    if (msg_ != nullptr) *msg_ = ThreadLastError().message;  // recorded by the query
    return n;
  }
  if (n == 0) return Fail(-227, text::kNoNode);
  if (n >= 2) return Fail(-226, text::kManyNodes);
  node_id_ = nodes.front().NodeID;
  return 0;
}

std::string LoginRun::EncodedPassword(const LoginForm& form) const {
  char buf[kEncodeCap] = {};
  std::memcpy(buf, password_.data(), std::min<std::size_t>(password_.size(), kEncodeCap - 1));
  kel::int32 len = kEncodeCap;
  (kel::api.*form.encoder)(khh_.c_str(), buf, &len);
  buf[kEncodeCap - 1] = '\0';
  return buf;
}

void LoginRun::FillRequest(const KelSession& s, const LoginForm& form,
                           const std::string& pwd) const {
  kel::int64 h = s.handle();
  kel::api.Kel_SetWTFS(h, wtfs_.c_str());
  if (form.authentication) kel::api.Kel_SetGYDM(h, FieldText(profile_->wtgy).c_str());
  kel::api.Kel_SetNode(h, node_.c_str());
  kel::api.Kel_SetNodeId(h, node_id_);
  CreateHead(s, form.login_code);
  kel::api.Kel_SetItem(h, fid::KHH, khh_.c_str());
  kel::api.Kel_SetItem(h, fid::JYMM, pwd.c_str());
  kel::api.Kel_SetInt(h, fid::LOGIN_TYPE, form.login_type);
  if (form.authentication) {
    kel::api.Kel_SetInt(h, fid::SYSTEM_TYPE, conn_->system_type);
    kel::api.Kel_SetItem(h, fid::APP_NAME, "molra");
    kel::api.Kel_SetItem(h, fid::APP_EXTRA, "");
  }
  kel::api.Kel_SetItem(h, fid::APP_TEXT, FieldText(profile_->app_name).c_str());
  for (const SysInfoPair& p : kLoginSysInfo) kel::api.Kel_SetSysInfo(h, p.kind, p.field);
}

// The authentication back end may answer a non-numeric token; the customer number stands
// in for it then.
std::int64_t LoginRun::ReadToken(const KelSession& s, const LoginForm& form) const {
  if (form.authentication && HasAsciiLetter(GetItemString(s.handle(), fid::TOKEN, -1))) {
    return std::atol(khh_.c_str());
  }
  return kel::api.Kel_GetLong(s.handle(), fid::TOKEN, -1);
}

// A new record replaces the customer's: order threads may be reading the one registered.
// The password is not kept: it served this login only.
void LoginRun::Register(std::int64_t token) const {
  std::shared_ptr<const CusRecord> old = Registry().Find(conn_->system_type, khh_);
  auto rec = old ? std::make_shared<CusRecord>(*old) : std::make_shared<CusRecord>();
  CopyField(rec->khh, khh_.c_str());
  CopyField(rec->password, "");
  rec->token = token;
  rec->node_id = node_id_;
  rec->wtfs_number = std::atol(wtfs_.c_str());
  CopyField(rec->wtfs, wtfs_.c_str());
  Registry().Register(conn_->system_type, khh_, std::move(rec));
}

std::int64_t JdbhFail(std::int64_t code, const std::string& message) {
  SetLastError(code, message, kJdbhFunc, nullptr);
  return code;
}

CusNodeInfo NodeRow(kel::int64 session, kel::int32 row) {
  CusNodeInfo node{};
  CopyField(node.KHH, GetItemString(session, fid::KHH, row).c_str());
  node.SystemType = 4;
  // The row's exchange is read but not kept.
  char exchange[kRowExchangeCap] = {};
  kel::int32 len = kRowExchangeCap;
  kel::api.Kel_GetItem(session, fid::JYS, exchange, &len, row);
  node.NodeID = static_cast<std::int32_t>(kel::api.Kel_GetLong(session, fid::NODE_ID, row));
  return node;
}

}  // namespace

std::int64_t AccountInfo::Login(const std::shared_ptr<KelComm::KelConn>& conn, CusLoginInfo& info,
                                std::string* msg) {
  return LoginRun(conn, info, msg).Run();
}

std::int64_t AccountInfo::AcctManage::GetAccountJDBH(const std::string& khh,
                                                     KelComm::KelConn& conn,
                                                     std::vector<CusNodeInfo>& list, int flag) {
  MOLRA_LOG_INFO("{} Req LST_KHXX. Param[khh:{}]", kJdbhFunc, khh);
  const LoginForm& form = FormOf(conn);
  KelSession session = form.alloc_session(conn);
  if (!session) return JdbhFail(-202, GetStagedError().message);
  if (conn.system_type != 4) {
    return JdbhFail(-223, fmt::format(fmt::runtime(text::kInvalidSystemType), conn.system_type));
  }
  kel::int64 h = session.handle();
  CreateHead(session, form.node_list_code);
  kel::api.Kel_SetItem(h, fid::KHH, khh.c_str());
  const ConnProfile* profile = conn.ActiveProfile();
  if (!form.authentication && flag == 0 && profile != nullptr) {
    kel::api.Kel_SetItem(h, fid::JYS, FieldText(profile->exchange).c_str());
  }
  if (!kel::api.Kel_Run(h)) return JdbhFail(-204, text::kSendFailed);
  std::int32_t code = kel::api.Kel_GetCode(h);
  if (code < 1) return JdbhFail(code, GetErrorString(h));

  std::int64_t count = 0;
  kel::int32 rows = kel::api.Kel_GetCount(h);
  for (kel::int32 row = 0; row < rows; ++row) {
    if (kel::api.Kel_GetLong(h, fid::SYSTEM_TYPE, row) != 4) continue;
    list.push_back(NodeRow(h, row));
    ++count;
  }
  MOLRA_LOG_INFO("{} success.[khh:{} infonum:{}]", kJdbhFunc, khh, count);
  return count;
}

}  // namespace molra
