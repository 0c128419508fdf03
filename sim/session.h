// What a transport session holds: the request being built, its settings, the answer, and
// the session's own data. Requests and answers are the back end's messages (backend/message.h).
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "backend/message.h"
#include "comm/kel_abi.h"

namespace sim {

// Function code as the back end files it: a key/value code ("DQ0003"; a 7-character code
// with a leading "H", as sent over a connection through the unified authentication gateway,
// is filed without the "H"), or a block request's decimal function number ("19001").
std::string NormaliseFuncCode(const std::string& code);

struct Settings {
  std::string wtfs, node, gydm, fbdm, dest_fbdm, user_head, subs_condi;
  std::int32_t node_id = 0;
  std::int32_t system_id = 0;
  std::int32_t timeout = 0;
  std::int64_t token = 0;
  std::vector<std::pair<std::int32_t, std::int32_t>> sysinfo;
};

struct Session {
  std::int64_t id = 0;
  std::int64_t conn = 0;
  bool transport_owned = false;  // a push session: the transport frees it after the handler
  Request req;
  Settings set;
  Answer ans;
  std::atomic<bool> replied{false};
  std::int64_t data = 0;
  std::string data_string;
  kel::ReplyFn reply_fn = nullptr;
  std::string body;  // binary body: the record of a push (field id 0)
};

}  // namespace sim
