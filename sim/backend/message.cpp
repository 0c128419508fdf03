#include "message.h"

#include <cstdio>
#include <cstdlib>

namespace sim {

void Put(Row& row, std::int32_t id, const std::string& value) { row.push_back({id, value}); }
void Put(Row& row, std::int32_t id, const char* value) { row.push_back({id, value ? value : ""}); }
void Put(Row& row, std::int32_t id, std::int64_t value) {
  row.push_back({id, std::to_string(value)});
}
void Put(Row& row, std::int32_t id, int value) { row.push_back({id, std::to_string(value)}); }
void PutMoney(Row& row, std::int32_t id, double value, int decimals) {
  char buf[64];
  std::snprintf(buf, sizeof buf, "%.*f", decimals, value);
  row.push_back({id, buf});
}

void Request::Clear() {
  func.clear();
  raw_func.clear();
  fields.clear();
  block.clear();
  is_block = false;
}

void Request::SetField(std::int32_t id, std::string value) {
  for (auto& f : fields) {
    if (f.id == id) {
      f.value = std::move(value);
      return;
    }
  }
  fields.push_back({id, std::move(value)});
}

const std::string* Request::Find(std::int32_t id) const {
  for (const auto& f : fields)
    if (f.id == id) return &f.value;
  return nullptr;
}

std::string Request::Text(std::int32_t id) const {
  const std::string* v = Find(id);
  return v ? *v : std::string();
}

std::int64_t Request::Long(std::int32_t id) const {
  const std::string* v = Find(id);
  return v ? std::strtoll(v->c_str(), nullptr, 10) : 0;
}

double Request::Double(std::int32_t id) const {
  const std::string* v = Find(id);
  return v ? std::strtod(v->c_str(), nullptr) : 0.0;
}

std::string Request::Describe() const {
  if (is_block) return block;
  std::string s;
  for (const auto& f : fields) {
    if (!s.empty()) s += '|';
    s += std::to_string(f.id) + "=" + f.value;
  }
  return s;
}

const std::string* Answer::Find(std::int32_t id, std::int32_t row) const {
  if (row < 0) row = 0;
  if (static_cast<std::size_t>(row) >= rows.size()) return nullptr;
  for (const auto& f : rows[static_cast<std::size_t>(row)])
    if (f.id == id) return &f.value;
  return nullptr;
}

}  // namespace sim
