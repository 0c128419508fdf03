// Host-side test doubles: callbacks that record what the kit delivered, and a log in a
// scratch directory whose text a test can read back.
#pragma once

#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

namespace molra::test {

struct Delivery {
  std::string time;
  std::string json;
  std::int32_t type;
};

// While alive, the kit's message and function callbacks record into this object.
// `install_msg` / `install_func` false leave that callback unset.
class HostCallbacks {
 public:
  explicit HostCallbacks(bool install_msg = true, bool install_func = true);
  ~HostCallbacks();
  HostCallbacks(const HostCallbacks&) = delete;
  HostCallbacks& operator=(const HostCallbacks&) = delete;

  std::vector<Delivery> Messages();   // from the message callback
  std::vector<Delivery> Functions();  // from the function callback

 private:
  static void OnMessage(const char* time, const char* json, std::int32_t type);
  static void OnFunction(const char* time, const char* json, std::int32_t type);
  static HostCallbacks* current_;
  std::mutex mutex_;
  std::vector<Delivery> messages_;
  std::vector<Delivery> functions_;
};

// The kit's log, written into a fresh directory for the test.
class ScratchLog {
 public:
  ScratchLog();
  std::string Text();  // flushes and reads today's file
  const std::string& dir() const { return dir_; }

 private:
  std::string dir_;
};

}  // namespace molra::test
