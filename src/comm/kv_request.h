// Key/value requests, the one way the kit sends them: a request as data (its session
// settings, function code and fields, set in order), one runner that creates the head, sets
// the fields, runs the request and judges the answer's code by a rule given as data.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "comm/conn_pool.h"
#include "comm/kel_abi.h"
#include "core/status.h"

namespace molra {

// One item set on a request session, in order: a field by id, or a session setting.
struct ReqField {
  enum class Kind : std::uint8_t {
    kText,     // Kel_SetItem
    kInt,      // Kel_SetInt
    kLong,     // Kel_SetLong
    kDouble,   // Kel_SetDouble, precision 6
    kNodeId,   // Kel_SetNodeId
    kWtfs,     // Kel_SetWTFS
    kNode,     // Kel_SetNode
    kGydm,     // Kel_SetGYDM
    kTimeout,  // Kel_SetTimeOut, seconds
    kSysInfo,  // Kel_SetSysInfo(number, id)
  };
  Kind kind = Kind::kText;
  std::int32_t id = 0;
  std::string text;
  std::int64_t number = 0;
  double real = 0;

  // A null text is sent as "".
  static ReqField Text(std::int32_t id, const char* value);
  static ReqField Text(std::int32_t id, std::string value);
  static ReqField Int(std::int32_t id, std::int32_t value);
  static ReqField Long(std::int32_t id, std::int64_t value);
  static ReqField Double(std::int32_t id, double value);
  static ReqField NodeId(std::int32_t node_id);
  static ReqField Wtfs(std::string wtfs);
  static ReqField Node(std::string node);
  static ReqField Gydm(std::string gydm);
  static ReqField Timeout(std::int32_t seconds);
  static ReqField SysInfo(std::int32_t kind, std::int32_t id);
};

using ReqFields = std::vector<ReqField>;

struct KvRequest {
  ReqFields settings;  // set on the session before the head
  const char* code;    // six-character function code, or the order layer's number
  ReqFields fields;    // set after the head
};

// How the answer decides the request. Its value is the answer's code, or for `row_state`
// the per-row state of row 0 (field 507). A value below `lowest_accepted` refuses the
// request with the value and the answer's error text; a refused value of 0 or more is
// reported as `nonnegative_refusal` when that is set.
struct AnswerRule {
  std::int64_t lowest_accepted;
  bool row_state = false;
  std::int64_t nonnegative_refusal = 0;  // 0: the value itself
  bool send_text_from_answer = false;  // a failed run carries the answer's text, not "发送请求失败"
};
inline constexpr AnswerRule kPositiveCode{1};     // login, node list, trade date
inline constexpr AnswerRule kNonNegativeCode{0};  // queries, fund transfers, key/value orders
inline constexpr AnswerRule kRowState{0, true};   // password change
inline constexpr AnswerRule kAnyCode{INT64_MIN};  // the clock: the caller reads the code
inline constexpr AnswerRule kReferenceData{1, false, SECMOLRA_ERR_SEND, true};  // ETF basket data

// An accepted answer: the session that holds it, and the value the rule judged.
struct KvAnswer {
  KelSession session;
  std::int64_t value = 0;
};

// Sets a request's settings, head and fields on the session (a key/value order written
// asynchronously stops here).
void PrepareRequest(const KelSession& session, const KvRequest& request);
// Runs a prepared request and judges its answer. Fails with -204 when the run fails, and as
// the rule says when the answer refuses; the failure names no function (the caller's own).
Result<KvAnswer> RunPrepared(KelSession session, const AnswerRule& rule);
// PrepareRequest, then RunPrepared.
Result<KvAnswer> RunRequest(KelSession session, const KvRequest& request, const AnswerRule& rule);

// Parses "id=value|id=value" (ids decimal, above 0; values may be empty) into text fields.
// False on a malformed text. Null or "" is an empty list.
bool ParseRequestText(const char* text, ReqFields& out);

// The password encoded by Kel_UniEncode3rd for khh (a zeroed 1024-byte buffer, length 1024).
std::string EncodePassword3rd(const char* khh, const char* password);

}  // namespace molra
