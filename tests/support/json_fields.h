// Reading one member of the kit's compact JSON texts, for tests that count deliveries.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <string>

namespace molra::test {

// The value of "name" as text (quotes removed), or "" when absent.
inline std::string JsonMember(const std::string& json, const std::string& name) {
  const std::string key = "\"" + name + "\":";
  std::size_t p = json.find(key);
  if (p == std::string::npos) return "";
  p += key.size();
  if (p < json.size() && json[p] == '"') {
    const std::size_t end = json.find('"', p + 1);
    return json.substr(p + 1, end == std::string::npos ? std::string::npos : end - p - 1);
  }
  const std::size_t end = json.find_first_of(",}", p);
  return json.substr(p, end == std::string::npos ? std::string::npos : end - p);
}

inline std::int64_t JsonNumber(const std::string& json, const std::string& name) {
  return std::strtoll(JsonMember(json, name).c_str(), nullptr, 10);
}

}  // namespace molra::test
