// The fields of a key/value request as data: built by the operation, set on the session in
// order by SetRequestFields. Keeping them as a list lets the query frame and the account
// operations share one way of filling a request, and lets tests compare what was sent.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "comm/kel_abi.h"
#include "core/text.h"

namespace molra {

struct ReqField {
  enum class Kind { kText, kInt, kLong, kDouble };
  std::int32_t id = 0;
  Kind kind = Kind::kText;
  std::string text;
  std::int64_t number = 0;
  double real = 0;

  // A null text is sent as "".
  static ReqField Text(std::int32_t id, const char* value);
  static ReqField Text(std::int32_t id, const std::string& value);
  static ReqField Int(std::int32_t id, std::int32_t value);
  static ReqField Long(std::int32_t id, std::int64_t value);
  // Sent with precision 6.
  static ReqField Double(std::int32_t id, double value);
};

using ReqFields = std::vector<ReqField>;

// Kel_SetItem / Kel_SetInt / Kel_SetLong / Kel_SetDouble for each field, in order.
void SetRequestFields(kel::int64 session, const ReqFields& fields);

// Parses "id=value|id=value" (ids decimal, above 0; values may be empty) into text fields.
// False on a malformed text. Null or "" is an empty list.
bool ParseRequestText(const char* text, ReqFields& out);

// The password encoded by Kel_UniEncode3rd for khh (a zeroed 1024-byte buffer, length 1024).
std::string EncodePassword3rd(const char* khh, const char* password);

}  // namespace molra
