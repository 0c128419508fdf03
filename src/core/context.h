// Process-wide settings and callbacks of the kit, set by the setters of the exported
// interface and read everywhere else.
#pragma once

#include <atomic>
#include <mutex>
#include <string>

#include "secmolra.h"

namespace molra {

class KitState {
 public:
  std::string ProfilePath() const { return Get(profile_path_); }
  std::string LogPath() const { return Get(log_path_); }
  std::string Node() const { return Get(node_); }
  std::string Wtfs() const { return Get(wtfs_); }
  void SetProfilePath(std::string v) { Set(profile_path_, std::move(v)); }
  void SetLogPath(std::string v) { Set(log_path_, std::move(v)); }
  void SetNode(std::string v) { Set(node_, std::move(v)); }
  void SetWtfs(std::string v) { Set(wtfs_, std::move(v)); }

  std::atomic<SECMOLRA_MsgCallback> msg_callback{nullptr};
  std::atomic<SECMOLRA_FuncCallback> func_callback{nullptr};
  std::atomic<SECMOLRA_ConnEventCallback> conn_event_callback{nullptr};

  // Start-up flags; SECMOLRA_Init and SECMOLRA_Exit are called once, from one thread.
  bool initialised = false;
  bool config_read = false;
  bool transport_loaded = false;
  bool registry_created = false;

 private:
  std::string Get(const std::string& s) const {
    std::lock_guard<std::mutex> lock(mutex_);
    return s;
  }
  void Set(std::string& s, std::string v) {
    std::lock_guard<std::mutex> lock(mutex_);
    s = std::move(v);
  }
  mutable std::mutex mutex_;
  std::string profile_path_ = "./";
  std::string log_path_;
  std::string node_;
  std::string wtfs_;
};

KitState& Kit();

}  // namespace molra
