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

// The subscriptions a push is for: those on connections to the in-process back end, those
// of one connection to a server, or all (a record given through the control interface).
constexpr std::int64_t kInProcess = 0;
constexpr std::int64_t kEveryConnection = -1;

int KindOf(const std::string& func, const std::string& confirm, const std::string& report) {
  if (func == confirm) return 0;
  if (func == report) return 1;
  return -1;
}

bool InScope(const Connection& conn, std::int64_t scope) {
  if (scope == kEveryConnection) return true;
  return scope == kInProcess ? !conn.remote : conn.id == scope;
}

void Deliver(std::int64_t scope, const std::string& khh, int kind, const PushValues* values, const std::string* raw) {
  std::vector<Target> targets;
  kel::StructPublishFn struct_fn = nullptr;
  void* struct_ctx = nullptr;
  Core& c = core();
  {
    std::lock_guard<std::mutex> lock(c.mutex);
    for (const auto& [id, s] : c.subs) {
      if (!s.khh.empty() && s.khh != khh) continue;
      const Connection* conn = c.FindConnLocked(s.conn);
      if (conn == nullptr || !conn->up || !InScope(*conn, scope)) continue;
      // A server's subscription codes are its own.
      if (conn->remote ? KindOf(s.func, conn->confirm_func, conn->report_func) != kind
                       : KindOf(s.func, c.confirm_func, c.report_func) != kind)
        continue;
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
  PostPush([shared] { Deliver(kInProcess, shared->khh, shared->kind, &shared->values, nullptr); });
}

void QueueServerPush(std::int64_t conn, PendingPush p) {
  auto shared = std::make_shared<PendingPush>(std::move(p));
  PostPush([conn, shared] { Deliver(conn, shared->khh, shared->kind, &shared->values, nullptr); });
}

void QueueRawPush(const std::string& khh, int kind, std::string record) {
  auto rec = std::make_shared<std::string>(std::move(record));
  PostPush([khh, kind, rec] { Deliver(kEveryConnection, khh, kind, nullptr, rec.get()); });
}

}  // namespace sim
