// The control interface (kelsim.h) that tests and tools use to steer the simulated transport.
#include <cstdio>
#include <cstring>

#include "bench.h"
#include "dispatch.h"
#include "faults.h"
#include "host.h"
#include "kelsim.h"
#include "push.h"
#include "remote.h"
#include "scripted.h"
#include "sim_core.h"

namespace sim {
extern std::atomic<bool> g_default_info_ok;
}

namespace {
std::string Str(const char* s) { return s ? s : ""; }

sim::Quote FromRecord(const KelSimQuote& r) {
  sim::Quote q;
  q.jys = std::string(r.jys, strnlen(r.jys, sizeof r.jys));
  q.zqdm = std::string(r.zqdm, strnlen(r.zqdm, sizeof r.zqdm));
  q.last = r.last;
  q.prev_close = r.prev_close;
  q.volume = r.volume;
  q.turnover = r.turnover;
  for (int i = 0; i < sim::kLevels; ++i) {
    q.bids[i] = {r.bid[i].price, r.bid[i].volume};
    q.asks[i] = {r.ask[i].price, r.ask[i].volume};
  }
  return q;
}

using Op = sim::wire::ControlOp;

sim::wire::ControlMsg Msg(Op op, const char* jys = nullptr, const char* zqdm = nullptr) {
  sim::wire::ControlMsg m;
  m.op = op;
  m.jys = Str(jys);
  m.zqdm = Str(zqdm);
  return m;
}

// The market and the clock of a process with a connection to a server are the server's: true
// when the call went there (its result in *a).
bool AtServer(const sim::wire::ControlMsg& m, sim::wire::ControlAnswer* a = nullptr) {
  sim::wire::ControlAnswer ignored;
  return sim::remote::Control(m, a ? a : &ignored);
}
}  // namespace

KELSIM_EXPORT void KelSim_Reset(void) {
  sim::StartFromStartConfig();
  sim::faults().Clear();
  sim::ClearScripts();
  sim::ClearRequests();
  sim::SetBenchMode(false);
  sim::SetCallLog(true);
  sim::ClearCallLog();
  sim::g_default_info_ok = true;
}

KELSIM_EXPORT bool KelSim_LoadConfig(const char* path) {
  sim::Config cfg;
  std::string why;
  if (path == nullptr) return false;
  if (!sim::LoadConfigFile(path, cfg, &why) || !sim::StartExchange(cfg, &why)) {
    std::fprintf(stderr, "kelapi50 (simulated): %s\n", why.c_str());
    return false;
  }
  return true;
}

KELSIM_EXPORT int32_t KelSim_CallLog(char* buf, int32_t cap) {
  std::string log = sim::CallLogText();
  if (buf != nullptr && cap > 0) {
    std::size_t n = std::min<std::size_t>(log.size(), static_cast<std::size_t>(cap - 1));
    std::memcpy(buf, log.data(), n);
    buf[n] = '\0';
  }
  return static_cast<int32_t>(log.size());
}

KELSIM_EXPORT void KelSim_ClearCallLog(void) { sim::ClearCallLog(); }
KELSIM_EXPORT void KelSim_SetCallLog(bool on) { sim::SetCallLog(on); }

KELSIM_EXPORT void KelSim_FailConnect(const char* addr, int32_t count) {
  sim::faults().connect.Set(addr, count);
}
KELSIM_EXPORT void KelSim_FailBind(int32_t count) { sim::faults().bind.Set(count); }
KELSIM_EXPORT void KelSim_FailAllocSession(int32_t count) { sim::faults().alloc.Set(count); }
KELSIM_EXPORT void KelSim_FailRun(int32_t count) { sim::faults().run.Set(count); }
KELSIM_EXPORT void KelSim_FailWrite(int32_t count) { sim::faults().write.Set(count); }
KELSIM_EXPORT void KelSim_SetDefaultInfoResult(bool ok) { sim::g_default_info_ok = ok; }

KELSIM_EXPORT int32_t KelSim_ConnectionCount(void) {
  std::lock_guard<std::mutex> lock(sim::core().mutex);
  return static_cast<int32_t>(sim::core().conns.size());
}

KELSIM_EXPORT int64_t KelSim_ConnectionByAddr(const char* addr, int32_t nth) {
  std::lock_guard<std::mutex> lock(sim::core().mutex);
  for (const auto& [id, k] : sim::core().conns)
    if (k.addr == Str(addr) && nth-- == 0) return id;
  return 0;
}

KELSIM_EXPORT void KelSim_BreakConnection(int64_t conn, int32_t event) {
  bool remote;
  {
    std::lock_guard<std::mutex> lock(sim::core().mutex);
    sim::Connection* k = sim::core().FindConnLocked(conn);
    if (k == nullptr) return;
    k->up = false;
    remote = k->remote;
  }
  if (remote) sim::remote::Break(conn);  // its socket closes; no reconnection until restored
  sim::PostConnEvent(conn, event == 0 ? 1 : event);
}

KELSIM_EXPORT void KelSim_RestoreConnection(int64_t conn) {
  bool remote;
  {
    std::lock_guard<std::mutex> lock(sim::core().mutex);
    sim::Connection* k = sim::core().FindConnLocked(conn);
    if (k == nullptr) return;
    remote = k->remote;
    if (!remote) k->up = true;
  }
  // A server connection is up, with its event 0, once the server has it again.
  if (remote) return sim::remote::Restore(conn);
  sim::PostConnEvent(conn, 0);
}

KELSIM_EXPORT void KelSim_RaiseConnEvent(int64_t conn, int32_t event) {
  sim::PostConnEvent(conn, event);
}

KELSIM_EXPORT void KelSim_SetReconnectDelay(int32_t first_ms, int32_t max_ms) {
  sim::remote::SetReconnectDelay(first_ms, max_ms);
}

KELSIM_EXPORT void KelSim_WaitIdle(void) { sim::WaitIdle(); }

KELSIM_EXPORT int32_t KelSim_OpenSessions(void) {
  std::lock_guard<std::mutex> lock(sim::core().mutex);
  return static_cast<int32_t>(sim::core().sessions.size());
}

KELSIM_EXPORT void KelSim_SetStructAnswer(const char* func, const char* block, int32_t len) {
  sim::ScriptStruct(Str(func), block && len > 0 ? std::string(block, static_cast<std::size_t>(len))
                                                : std::string());
  sim::ClearPrepared();
}
KELSIM_EXPORT void KelSim_SetAnswerLength(const char* func, int32_t len) {
  sim::ScriptLength(Str(func), len);
  sim::ClearPrepared();
}
KELSIM_EXPORT void KelSim_SetKvAnswer(const char* func, int32_t code, const char* msg,
                                      const char* rows) {
  sim::ScriptKv(Str(func), code, Str(msg), Str(rows));
  sim::ClearPrepared();
}
KELSIM_EXPORT void KelSim_SetPlainAnswer(const char* func, int32_t code, const char* msg) {
  sim::ScriptPlain(Str(func), code, Str(msg));
  sim::ClearPrepared();
}
KELSIM_EXPORT void KelSim_ClearAnswers(void) {
  sim::ClearScripts();
  sim::ClearPrepared();
}

KELSIM_EXPORT int32_t KelSim_LastRequest(const char* func, char* buf, int32_t cap) {
  return sim::LastRequest(Str(func), buf, cap);
}

KELSIM_EXPORT void KelSim_PushRecord(const char* khh, int32_t kind, const char* record,
                                     int32_t len) {
  sim::QueueRawPush(
      Str(khh), kind,
      record && len > 0 ? std::string(record, static_cast<std::size_t>(len)) : std::string());
}

KELSIM_EXPORT void KelSim_SetPrice(const char* jys, const char* zqdm, double price) {
  sim::wire::ControlMsg m = Msg(Op::SetPrice, jys, zqdm);
  m.price = price;
  if (!AtServer(m)) sim::exchange().SetPrice(Str(jys), Str(zqdm), price);
}
KELSIM_EXPORT void KelSim_SetLiquidity(const char* jys, const char* zqdm, int64_t qty) {
  sim::wire::ControlMsg m = Msg(Op::SetLiquidity, jys, zqdm);
  m.n = qty;
  if (!AtServer(m)) sim::exchange().SetLiquidity(Str(jys), Str(zqdm), qty);
}
KELSIM_EXPORT void KelSim_SetMatchVolume(int64_t volume) {
  sim::wire::ControlMsg m = Msg(Op::SetMatchVolume);
  m.n = volume;
  if (!AtServer(m)) sim::exchange().SetMatchVolume(volume);
}
KELSIM_EXPORT void KelSim_SetServerTimeOffsetMs(int64_t ms) {
  sim::wire::ControlMsg m = Msg(Op::SetTimeOffset);
  m.n = ms;
  if (!AtServer(m)) sim::exchange().SetTimeOffset(ms);
}
KELSIM_EXPORT void KelSim_SetTradeDate(int64_t yyyymmdd) {
  sim::wire::ControlMsg m = Msg(Op::SetTradeDate);
  m.n = yyyymmdd;
  if (!AtServer(m)) sim::exchange().SetTradeDate(yyyymmdd);
}
KELSIM_EXPORT void KelSim_SetPushCodes(const char* confirm, const char* report) {
  std::lock_guard<std::mutex> lock(sim::core().mutex);
  if (confirm) sim::core().confirm_func = confirm;
  if (report) sim::core().report_func = report;
}

KELSIM_EXPORT bool KelSim_GetQuote(const char* jys, const char* zqdm, KelSimQuote* out) {
  if (out == nullptr) return false;
  sim::wire::ControlAnswer a;
  if (!AtServer(Msg(Op::GetQuote, jys, zqdm), &a))
    a.ok = sim::exchange().GetQuote(Str(jys), Str(zqdm), &a.quote);
  if (a.ok) *out = sim::ToRecord(a.quote);
  return a.ok;
}
KELSIM_EXPORT bool KelSim_SetQuote(const KelSimQuote* quote) {
  if (quote == nullptr) return false;
  sim::wire::ControlMsg m = Msg(Op::SetQuote);
  m.quote = FromRecord(*quote);
  sim::wire::ControlAnswer a;
  return AtServer(m, &a) ? a.ok : sim::exchange().SetQuote(m.quote);
}
KELSIM_EXPORT void KelSim_SetQuoteCallback(KelSimQuoteFn fn, void* ctx) {
  sim::SetQuoteCallback(fn, ctx);
}
KELSIM_EXPORT bool KelSim_Advance(int64_t ms) {
  sim::wire::ControlMsg m = Msg(Op::Advance);
  m.n = ms;
  sim::wire::ControlAnswer a;
  return AtServer(m, &a) ? a.ok : sim::exchange().Advance(ms);
}
KELSIM_EXPORT void KelSim_NewDay(void) {
  if (!AtServer(Msg(Op::NewDay))) sim::exchange().NewDay();
}
KELSIM_EXPORT void KelSim_Clock(int64_t* date, int64_t* time_ms) {
  sim::wire::ControlAnswer a;
  if (!AtServer(Msg(Op::Clock), &a)) return sim::exchange().ClockTime(date, time_ms);
  if (date) *date = a.date;
  if (time_ms) *time_ms = a.ms;
}

KELSIM_EXPORT int32_t KelSim_SubscriptionCount(const char* khh) {
  std::lock_guard<std::mutex> lock(sim::core().mutex);
  int32_t n = 0;
  for (const auto& [id, s] : sim::core().subs)
    if (khh == nullptr || s.khh == khh) ++n;
  return n;
}

KELSIM_EXPORT int32_t KelSim_BoundCustomer(int64_t conn, char* buf, int32_t cap) {
  std::string khh;
  {
    std::lock_guard<std::mutex> lock(sim::core().mutex);
    const sim::Connection* k = sim::core().FindConnLocked(conn);
    if (k == nullptr) return -1;
    khh = k->bound_khh;
  }
  if (buf != nullptr && cap > 0) {
    std::size_t n = std::min<std::size_t>(khh.size(), static_cast<std::size_t>(cap - 1));
    std::memcpy(buf, khh.data(), n);
    buf[n] = '\0';
  }
  return static_cast<int32_t>(khh.size());
}

KELSIM_EXPORT void KelSim_SetBenchMode(bool on) { sim::SetBenchMode(on); }
