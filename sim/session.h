// What a transport session holds: the request being built, its settings, the answer, and
// the session's own data.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "comm/kel_abi.h"

namespace sim {

struct Field {
  std::int32_t id;
  std::string value;
};
using Row = std::vector<Field>;

// Appends a field to a row; numbers are written as decimal text.
void Put(Row& row, std::int32_t id, const std::string& value);
void Put(Row& row, std::int32_t id, const char* value);
void Put(Row& row, std::int32_t id, std::int64_t value);
void Put(Row& row, std::int32_t id, int value);
void PutMoney(Row& row, std::int32_t id, double value, int decimals = 2);

// Function code as the back end files it: a key/value code ("DQ0003"; a 7-character code
// with a leading "H", as sent over a connection through the unified authentication gateway,
// is filed without the "H"), or a block request's decimal function number ("19001").
std::string NormaliseFuncCode(const std::string& code);

struct Request {
  std::string func;       // normalised function code; empty before Kel_CreateHead/SetStructData
  std::string raw_func;   // as given to Kel_CreateHead
  std::vector<Field> fields;  // in the order set; a field set twice keeps its last value
  std::string block;
  bool is_block = false;

  void Clear();
  void SetField(std::int32_t id, std::string value);
  const std::string* Find(std::int32_t id) const;
  bool Has(std::int32_t id) const { return Find(id) != nullptr; }
  std::string Text(std::int32_t id) const;
  std::int64_t Long(std::int32_t id) const;
  double Double(std::int32_t id) const;
  // "id=value|id=value" for key/value requests, the block bytes for block requests.
  std::string Describe() const;
};

struct Settings {
  std::string wtfs, node, gydm, fbdm, dest_fbdm, user_head, subs_condi;
  std::int32_t node_id = 0;
  std::int32_t system_id = 0;
  std::int32_t timeout = 0;
  std::int64_t token = 0;
  std::vector<std::pair<std::int32_t, std::int32_t>> sysinfo;
};

struct Answer {
  std::int32_t code = 0;
  std::string msg;
  std::vector<Row> rows;
  std::vector<std::string> blocks;  // structured blocks, index 0 first

  void Fail(std::int32_t c, std::string m) {
    code = c;
    msg = std::move(m);
  }
  Row& AddRow() {
    rows.emplace_back();
    return rows.back();
  }
  // The field of a row; row -1 is row 0; null when absent.
  const std::string* Find(std::int32_t id, std::int32_t row) const;
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
