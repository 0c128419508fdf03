#include "comm/conn_pool.h"

#include "api/last_error.h"
#include "comm/kel_api.h"
#include "comm/timer.h"

namespace molra {

KelSession& KelSession::operator=(KelSession&& o) noexcept {
  if (this != &o) {
    Release();
    handle_ = o.handle_;
    ua_ = o.ua_;
    borrowed_ = o.borrowed_;
    o.handle_ = 0;
  }
  return *this;
}

void KelSession::Release() noexcept {
  if (handle_ != 0 && !borrowed_ && kel::api.Kel_ReleaseSession != nullptr) {
    kel::api.Kel_ReleaseSession(handle_);
  }
  handle_ = 0;
}

ConnPool::ConnPool() : timer_(std::make_unique<TimerService>()) {}

ConnPool::~ConnPool() = default;

namespace {
std::unique_ptr<ConnPool> g_pool;
}

ConnPool* Pool() { return g_pool.get(); }

bool CreateConnPool() {
  g_pool = std::make_unique<ConnPool>();
  return g_pool != nullptr;
}

bool TearDownConnPool() {
  if (!g_pool) return true;
  g_pool->CloseAll();
  g_pool->Timer().Stop();
  g_pool.reset();
  return true;
}

}  // namespace molra
