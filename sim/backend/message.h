// What goes into the back end and what comes out of it: a request (key/value fields or one
// packed block, under a normalised function code), the caller's routing, and the answer
// (code, message, rows of fields, structured blocks). Nothing here knows of connections or
// sessions, so a host other than the simulated transport can carry these.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

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

struct Request {
  std::string func;           // normalised function code ("DQ0003", or a block's "19001")
  std::string raw_func;       // as the client gave it
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

// Where a request was routed: the back-end node the client named (0: the customer's default).
struct Caller {
  std::int32_t node_id = 0;
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

}  // namespace sim
