// Records the calls of the host's connection-event callback.
#pragma once

#include <cstdint>
#include <mutex>
#include <ostream>
#include <string>
#include <tuple>
#include <vector>

namespace hostevents {

struct Event {
  std::string khh, name;
  int event, reserved;
  bool operator==(const Event& o) const {
    return std::tie(khh, name, event, reserved) == std::tie(o.khh, o.name, o.event, o.reserved);
  }
};
inline std::ostream& operator<<(std::ostream& os, const Event& e) {
  return os << "{" << e.khh << "," << e.name << "," << e.event << "," << e.reserved << "}";
}

inline std::mutex& Mutex() {
  static std::mutex m;
  return m;
}
inline std::vector<Event>& List() {
  static std::vector<Event> v;
  return v;
}

// The callback to register.
inline void Record(const char* khh, const char* name, int32_t event, int32_t reserved) {
  std::lock_guard<std::mutex> lock(Mutex());
  List().push_back({khh, name, event, reserved});
}

inline std::vector<Event> Recorded() {
  std::lock_guard<std::mutex> lock(Mutex());
  return List();
}

}  // namespace hostevents
