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

// What a push carries: the back end's values, written in the layout each target wants, or the
// records themselves (a server's, in both layouts; or the control interface's one record).
struct PushBody {
  const PushValues* values = nullptr;
  std::string plain, structured;
  std::string Record(bool structured_layout) const {
    if (values != nullptr) return EncodePushRecord(*values, structured_layout);
    return structured_layout ? structured : plain;
  }
};

void Deliver(std::int64_t scope, const std::string& khh, int kind, const PushBody& body) {
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
      s->body = body.Record(false);
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
      std::string data = body.Record(true);
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
  PostPush([shared] {
    PushBody body;
    body.values = &shared->values;
    Deliver(kInProcess, shared->khh, shared->kind, body);
  });
}

void QueueServerPush(std::int64_t conn, const std::string& khh, int kind, std::string plain,
                     std::string structured) {
  auto body = std::make_shared<PushBody>();
  body->plain = std::move(plain);
  body->structured = std::move(structured);
  PostPush([conn, khh, kind, body] { Deliver(conn, khh, kind, *body); });
}

void QueueRawPush(const std::string& khh, int kind, std::string record) {
  auto body = std::make_shared<PushBody>();
  body->plain = record;
  body->structured = std::move(record);
  PostPush([khh, kind, body] { Deliver(kEveryConnection, khh, kind, *body); });
}

}  // namespace sim
