#include "comm/kv_request.h"

#include <cstdlib>
#include <cstring>

#include "core/errors.h"
#include "comm/kel_api.h"

namespace molra {

ReqField ReqField::Text(std::int32_t id, const char* value) {
  return Text(id, std::string(value ? value : ""));
}

ReqField ReqField::Text(std::int32_t id, const std::string& value) {
  ReqField f;
  f.id = id;
  f.kind = Kind::kText;
  f.text = value;
  return f;
}

ReqField ReqField::Int(std::int32_t id, std::int32_t value) {
  ReqField f;
  f.id = id;
  f.kind = Kind::kInt;
  f.number = value;
  return f;
}

ReqField ReqField::Long(std::int32_t id, std::int64_t value) {
  ReqField f;
  f.id = id;
  f.kind = Kind::kLong;
  f.number = value;
  return f;
}

ReqField ReqField::Double(std::int32_t id, double value) {
  ReqField f;
  f.id = id;
  f.kind = Kind::kDouble;
  f.real = value;
  return f;
}

void SetRequestFields(kel::int64 session, const ReqFields& fields) {
  for (const ReqField& f : fields) {
    switch (f.kind) {
      case ReqField::Kind::kText:
        kel::api.Kel_SetItem(session, f.id, f.text.c_str());
        break;
      case ReqField::Kind::kInt:
        kel::api.Kel_SetInt(session, f.id, static_cast<kel::int32>(f.number));
        break;
      case ReqField::Kind::kLong:
        kel::api.Kel_SetLong(session, f.id, f.number);
        break;
      case ReqField::Kind::kDouble:
        kel::api.Kel_SetDouble(session, f.id, f.real, 6);
        break;
    }
  }
}

bool ParseRequestText(const char* text, ReqFields& out) {
  out.clear();
  if (text == nullptr || *text == '\0') return true;
  const char* p = text;
  for (;;) {
    const char* end = std::strchr(p, '|');
    if (end == nullptr) end = p + std::strlen(p);
    const char* eq = static_cast<const char*>(std::memchr(p, '=', static_cast<std::size_t>(end - p)));
    if (eq == nullptr || eq == p) return false;
    std::int64_t id = 0;
    for (const char* d = p; d < eq; ++d) {
      if (*d < '0' || *d > '9') return false;
      id = id * 10 + (*d - '0');
      if (id > INT32_MAX) return false;
    }
    if (id == 0) return false;
    out.push_back(ReqField::Text(static_cast<std::int32_t>(id), std::string(eq + 1, end)));
    if (*end == '\0') return true;
    p = end + 1;
  }
}

std::string EncodePassword3rd(const char* khh, const char* password) {
  char buf[1024] = {};
  CopyField(buf, sizeof buf - 1, password);
  kel::int32 len = sizeof buf;
  kel::api.Kel_UniEncode3rd(khh, buf, &len);
  buf[sizeof buf - 1] = '\0';
  return buf;
}

}  // namespace molra
