#include "support/host_callbacks.h"

#include "core/context.h"
#include "core/log.h"
#include "support/test_support.h"

namespace molra::test {

HostCallbacks* HostCallbacks::current_ = nullptr;

HostCallbacks::HostCallbacks(bool install_msg, bool install_func) {
  current_ = this;
  Host().msg_callback.store(install_msg ? &OnMessage : nullptr);
  Host().func_callback.store(install_func ? &OnFunction : nullptr);
}

HostCallbacks::~HostCallbacks() {
  Host().msg_callback.store(nullptr);
  Host().func_callback.store(nullptr);
  current_ = nullptr;
}

void HostCallbacks::OnMessage(const char* time, const char* json, std::int32_t type) {
  std::lock_guard<std::mutex> lock(current_->mutex_);
  current_->messages_.push_back({time, json, type});
}

void HostCallbacks::OnFunction(const char* time, const char* json, std::int32_t type) {
  std::lock_guard<std::mutex> lock(current_->mutex_);
  current_->functions_.push_back({time, json, type});
}

std::vector<Delivery> HostCallbacks::Messages() {
  std::lock_guard<std::mutex> lock(mutex_);
  return messages_;
}

std::vector<Delivery> HostCallbacks::Functions() {
  std::lock_guard<std::mutex> lock(mutex_);
  return functions_;
}

ScratchLog::ScratchLog() : dir_(MakeTempDir()) {
  g_write_log.store(true);
  SetUpLogging(dir_);
}

std::string ScratchLog::Text() { return KitLog(dir_); }

}  // namespace molra::test
