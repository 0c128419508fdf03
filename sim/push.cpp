#include "push.h"

#include <cctype>
#include <memory>
#include <vector>

#include "sim_core.h"

namespace sim {
namespace {

struct Target {
  std::int64_t conn = 0;
  kel::SubscribeFn fn = nullptr;
  void* ctx = nullptr;
  int func = 0;
};

int KindOf(const std::string& func, const std::string& confirm, const std::string& report) {
  if (func == confirm) return 0;
  if (func == report) return 1;
  return -1;
}

void Deliver(const std::string& khh, int kind, const PushValues* values, const std::string* raw) {
  std::vector<Target> targets;
  kel::StructPublishFn struct_fn = nullptr;
  void* struct_ctx = nullptr;
  Core& c = core();
  {
    std::lock_guard<std::mutex> lock(c.mutex);
    const std::string& confirm = c.confirm_func;
    const std::string& report = c.report_func;
    for (const auto& [id, s] : c.subs) {
      if (!s.khh.empty() && s.khh != khh) continue;
      if (KindOf(s.func, confirm, report) != kind) continue;
      const Connection* conn = c.FindConnLocked(s.conn);
      if (conn == nullptr || !conn->up) continue;
      targets.push_back({s.conn, s.fn, s.ctx, FuncNumber(s.func)});
    }
    struct_fn = c.struct_fn;
    struct_ctx = c.struct_ctx;
  }
  for (const auto& t : targets) {
    if (t.fn != nullptr) {
      auto s = std::make_shared<Session>();
      s->conn = t.conn;
      s->transport_owned = true;
      s->body = raw ? *raw : EncodePushRecord(*values, false);
      s->replied = true;
      {
        std::lock_guard<std::mutex> lock(c.mutex);
        s->id = c.NewHandle();
        c.sessions[s->id] = s;
      }
      t.fn(t.ctx, s->id);
      std::lock_guard<std::mutex> lock(c.mutex);
      c.sessions.erase(s->id);
    } else if (struct_fn != nullptr) {
      std::string data = raw ? *raw : EncodePushRecord(*values, true);
      struct_fn(struct_ctx, t.func, static_cast<kel::int32>(data.size()), data.data());
    }
  }
}

}  // namespace

int FuncNumber(const std::string& code) {
  int n = 0;
  for (char ch : code) {
    if (!std::isdigit(static_cast<unsigned char>(ch))) break;
    n = n * 10 + (ch - '0');
  }
  return n;
}

void QueueBackendPush(PendingPush p) {
  auto shared = std::make_shared<PendingPush>(std::move(p));
  PostPush([shared] { Deliver(shared->khh, shared->kind, &shared->values, nullptr); });
}

void QueueRawPush(const std::string& khh, int kind, std::string record) {
  auto rec = std::make_shared<std::string>(std::move(record));
  PostPush([khh, kind, rec] { Deliver(khh, kind, nullptr, rec.get()); });
}

}  // namespace sim
