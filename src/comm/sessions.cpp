// Request sessions on a connection set and the small helpers every request uses.
#include <cstdint>
#include <cstring>
#include <vector>

#include "comm/conn_pool.h"
#include "comm/kel_api.h"
#include "core/messages.h"
#include "core/text.h"

namespace molra {

KelSession& KelSession::operator=(KelSession&& o) noexcept {
  if (this != &o) {
    Release();
    handle_ = o.handle_;
    ua_ = o.ua_;
    o.handle_ = 0;
  }
  return *this;
}

void KelSession::Release() noexcept {
  if (handle_ != 0 && kel::api.Kel_ReleaseSession != nullptr) {
    kel::api.Kel_ReleaseSession(handle_);
  }
  handle_ = 0;
}

namespace {

Result<KelSession> AllocSession(const KelComm::KelConn& conn, kel::int64 handle) {
  if (handle == 0 || !kel::api.Kel_IsConnect(handle)) {
    return Failure{SECMOLRA_ERR_SESSION, msg::kSessionNotConnected};
  }
  kel::int64 session = kel::api.Kel_AllocateSession(handle);
  if (session == 0) return Failure{SECMOLRA_ERR_SESSION, msg::kSessionFailed};
  return KelSession(session, conn.connect_with_ua);
}

}  // namespace

Result<KelSession> AllocManagementSession(KelComm::KelConn& conn) {
  return AllocSession(conn, conn.mgmt_handle);
}
Result<KelSession> AllocTradeSession(KelComm::KelConn& conn) {
  return AllocSession(conn, conn.trade_handle);
}
Result<KelSession> AllocSubscribeSession(KelComm::KelConn& conn) {
  return AllocSession(conn, conn.subscribe_handle);
}

bool CreateHead(const KelSession& session, const char* code) {
  if (code == nullptr) return false;
  // Connecting with UA, the six-character function codes go out as "H" + code.
  if (session.connect_with_ua() && std::strlen(code) == 6) {
    std::string prefixed = std::string("H") + code;
    return kel::api.Kel_CreateHead(session.handle(), prefixed.c_str());
  }
  return kel::api.Kel_CreateHead(session.handle(), code);
}

namespace {

// Text the transport wrote into buf: up to the NUL, never past the buffer.
std::string TextIn(const char* text, const char* buf, std::size_t cap) {
  if (text == nullptr) return {};
  if (text != buf) return text;
  return std::string(buf, FieldLength(buf, cap));
}

}  // namespace

// The largest text read from the transport: a reported length is trusted up to here, and a
// longer text is read cut to it.
constexpr kel::int32 kLargestText = 1024 * 1024 + 1;

std::string GetItemString(kel::int64 session, kel::int32 id, kel::int32 row) {
  constexpr kel::int32 kFirst = 256;
  char buf[kFirst] = {};
  kel::int32 len = kFirst;
  const char* text = kel::api.Kel_GetItem(session, id, buf, &len, row);
  if (text == nullptr || len < kFirst) return TextIn(text, buf, kFirst);
  // Cut: the transport reported the full length; read it again into a buffer that fits.
  kel::int32 cap = len < kLargestText ? len + 1 : kLargestText;
  std::vector<char> big(static_cast<std::size_t>(cap));
  text = kel::api.Kel_GetItem(session, id, big.data(), &cap, row);
  return TextIn(text, big.data(), big.size());
}

std::string GetErrorString(kel::int64 session) {
  constexpr kel::int32 kFirst = 2048;
  constexpr kel::int32 kLarge = kLargestText;
  char buf[kFirst] = {};
  kel::int32 len = kFirst;
  const char* text = kel::api.Kel_GetErrMsg(session, buf, &len);
  if (text == nullptr || len < kFirst) return TextIn(text, buf, kFirst);
  std::vector<char> big(kLarge);
  len = kLarge;
  text = kel::api.Kel_GetErrMsg(session, big.data(), &len);
  return TextIn(text, big.data(), big.size());
}

}  // namespace molra
