// Pushes and replies, from the kit's handler entry to the host's callback, beside the floor:
// the same JSON members written by RapidJSON's Writer straight from a prepared record, into
// a buffer and writer reused from message to message, then the same callback.
//
// The 402-byte confirmation reaches the kit's per-subscription handler on the transport's
// push thread (a subscription of the benchmark's own wraps the handler to take the time);
// the 415-byte record is handed to the global structured handler directly; the reply
// processor gets a session whose request was run (the run is outside the measured time).
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <atomic>
#include <cstring>
#include <thread>
#include <type_traits>

#include "bench_env.h"
#include "bench_paths.h"
#include "comm/kel_api.h"
#include "core/context.h"
#include "kelsim.h"
#include "push/push_handlers.h"
#include "trade/order_blocks.h"
#include "trade/replies.h"

namespace molra::bench {
namespace {

// The push settings of a kit without a GLOBAL section ("DM0003" and "DM0004").
molra::PushSettings kDefaultPush;

#pragma pack(push, 1)
// The members both push layouts share, KHH to WTGY.
struct PushCommon {
  char KHH[13];
  char ZJZH[31];
  std::int64_t WTH;
  char YYB[5];
  char JYS[3];
  char GDH[11];
  char BPGDH[11];
  char ZQDM[9];
  char ZQLB[9];
  char JYDY[7];
  char YWLB[3];
  char CXBZ[2];
  char CJBH[31];
  char CJSJ[13];
  char BZ[4];
  double WTJG;
  std::int64_t WTSL;
  std::int64_t CDSL;
  double DJZJ;
  std::int64_t CJSL;
  double CJJG;
  double CJJE;
  std::int64_t ZCJSL;
  double ZCJJE;
  double QSZJ;
  std::uint8_t JYLB;
  std::int32_t DDLX;
  std::int32_t SBJG;
  char JGSM[61];
  std::int64_t CXWTH;
  std::int64_t LSH;
  char WTGY[9];
};
static_assert(sizeof(PushCommon) == 335, "KHH to WTGY");

struct Confirm402 {
  PushCommon c;
  char JYSCPFL[11];
  char JYSCPXH[18];
  char KFSBDBH[17];
  char MSGCODE[8];
  char QRSJ[13];
};
static_assert(sizeof(Confirm402) == kConfirmRecordLen, "per-subscription record");

struct Struct415 {
  char lead[13];
  PushCommon c;
  char JYSCPFL[11];
  char JYSCPXH[11];
  char KFSDM[7];
  char KFSBDBH[17];
  char MSGCODE[8];
  char QRSJ[13];
};
static_assert(sizeof(Struct415) == kStructPushRecordLen, "structured record");
static_assert(offsetof(Struct415, KFSDM) == 370 && offsetof(Struct415, QRSJ) == 402,
              "structured record offsets");
#pragma pack(pop)

// The customer of the benchmark's own subscription: nobody logs it in, so only that
// subscription receives its pushes.
constexpr const char* kPushKhh = "1004";
constexpr const char* kStamp = "093015.123";
constexpr int kConfirmType = 8;

template <std::size_t N>
void Put(char (&field)[N], const char* text) {
  std::memset(field, 0, N);
  std::memcpy(field, text, std::min(std::strlen(text), N));
}

void FillCommon(PushCommon& c) {
  Put(c.KHH, kPushKhh);
  Put(c.ZJZH, "000000001004");
  c.WTH = 1234567;
  Put(c.YYB, "0001");
  Put(c.JYS, "SH");
  Put(c.GDH, "A000001004");
  Put(c.BPGDH, "A000001004");
  Put(c.ZQDM, "600000");
  Put(c.ZQLB, "A0");
  Put(c.YWLB, "01");
  Put(c.CXBZ, "O");
  Put(c.BZ, "RMB");
  c.WTJG = 9.5;
  c.WTSL = 100;
  c.DJZJ = 950.0;
  c.JYLB = 1;
  c.SBJG = 2;
  Put(c.JGSM, "\xCE\xAF\xCD\xD0\xD2\xD1\xC9\xEA\xB1\xA8");  // 委托已申报, GBK
  Put(c.WTGY, "GY01");
}

template <typename R>
R MakeRecord() {
  R r{};
  FillCommon(r.c);
  Put(r.KFSBDBH, "93015000000042");
  Put(r.MSGCODE, "QR");
  Put(r.QRSJ, "093015");
  return r;
}

// ---- the floor: RapidJSON's Writer, reused ----

using FloorWriter = rapidjson::Writer<rapidjson::StringBuffer>;

class FloorJson {
 public:
  FloorJson() : writer_(text_) {}
  FloorWriter& Begin() {
    text_.Clear();
    writer_.Reset(text_);
    return writer_;
  }
  const char* c_str() const { return text_.GetString(); }

 private:
  rapidjson::StringBuffer text_;
  FloorWriter writer_;
};

FloorJson& Floor() {
  static thread_local FloorJson json;
  return json;
}

template <std::size_t N>
rapidjson::SizeType Len(const char (&field)[N]) {
  return static_cast<rapidjson::SizeType>(strnlen(field, N));
}

#define FLOOR_KEY(name) w.Key(#name, sizeof(#name) - 1)
#define FLOOR_TEXT(rec, name) (FLOOR_KEY(name), w.String(rec.name, Len(rec.name)))
#define FLOOR_INT64(rec, name) (FLOOR_KEY(name), w.Int64(rec.name))
#define FLOOR_DOUBLE(rec, name) (FLOOR_KEY(name), w.Double(rec.name))

template <typename R>
void WriteFloorPush(FloorWriter& w, const R& r, int type) {
  const PushCommon& c = r.c;
  w.StartObject();
  FLOOR_KEY(TYPE), w.Int(type);
  FLOOR_KEY(SYS_TYPE), w.Int(4);
  FLOOR_TEXT(c, KHH), FLOOR_TEXT(c, ZJZH), FLOOR_INT64(c, WTH), FLOOR_TEXT(c, YYB);
  FLOOR_TEXT(c, JYS), FLOOR_TEXT(c, GDH), FLOOR_TEXT(c, BPGDH), FLOOR_TEXT(c, ZQDM);
  FLOOR_TEXT(c, ZQLB), FLOOR_TEXT(c, JYDY), FLOOR_TEXT(c, YWLB), FLOOR_TEXT(c, CXBZ);
  FLOOR_TEXT(c, CJBH), FLOOR_TEXT(c, CJSJ), FLOOR_TEXT(c, BZ), FLOOR_DOUBLE(c, WTJG);
  FLOOR_INT64(c, WTSL), FLOOR_INT64(c, CDSL), FLOOR_DOUBLE(c, DJZJ), FLOOR_INT64(c, CJSL);
  FLOOR_DOUBLE(c, CJJG), FLOOR_DOUBLE(c, CJJE), FLOOR_INT64(c, ZCJSL), FLOOR_DOUBLE(c, ZCJJE);
  FLOOR_DOUBLE(c, QSZJ);
  FLOOR_KEY(JYLB), w.Uint(c.JYLB);
  FLOOR_KEY(DDLX), w.Int(c.DDLX);
  FLOOR_KEY(SBJG), w.Int(c.SBJG);
  FLOOR_TEXT(c, JGSM), FLOOR_INT64(c, CXWTH), FLOOR_INT64(c, LSH), FLOOR_TEXT(c, WTGY);
  FLOOR_TEXT(r, QRSJ);
  if constexpr (std::is_same_v<R, Struct415>) FLOOR_TEXT(r, KFSDM);
  FLOOR_TEXT(r, KFSBDBH), FLOOR_TEXT(r, JYSCPFL), FLOOR_TEXT(r, JYSCPXH), FLOOR_TEXT(r, MSGCODE);
  FLOOR_KEY(PARSE_COST), w.Int(0);
  w.EndObject();
}

template <typename R>
void PushFloor(benchmark::State& state) {
  const R record = MakeRecord<R>();
  IterationTimes times;
  for (auto _ : state) {
    const std::int64_t start = NowNs();
    FloorJson& json = Floor();
    WriteFloorPush(json.Begin(), record, kConfirmType);
    OnMessage(kStamp, json.c_str(), kConfirmType);
    times.Add(state, LastCallbackNs() - start);
  }
  times.Report(state);
}

// ---- the kit: the structured record handed to the global handler ----

void Push415(benchmark::State& state) {
  const Struct415 record = MakeRecord<Struct415>();
  const char* data = reinterpret_cast<const char*>(&record);
  IterationTimes times;
  for (auto _ : state) {
    const std::int64_t start = NowNs();
    ScStructMsgProc(&kDefaultPush, 0, sizeof record, data);  // 0: the function number of "DM0003"
    times.Add(state, LastCallbackNs() - start);
  }
  times.Report(state);
}

// ---- the kit: the confirmation through a subscription, on the push thread ----

struct PushProbe {
  std::atomic<std::int64_t> delivered{0};
  std::atomic<std::int64_t> last_ns{0};
  std::atomic<bool> ok{true};
};

bool TimedConfirmation(void* ctx, kel::int64 session) {
  auto* probe = static_cast<PushProbe*>(ctx);
  const std::int64_t start = NowNs();
  const bool ok = ScOrderMsgProcess(nullptr, session);
  probe->last_ns.store(LastCallbackNs() - start, std::memory_order_relaxed);
  if (!ok) probe->ok.store(false, std::memory_order_relaxed);
  probe->delivered.fetch_add(1, std::memory_order_release);
  return ok;
}

class Subscription {
 public:
  Subscription(kel::int64 conn, PushProbe* probe) : conn_(conn) {
    const kel::int64 s = kel::api.Kel_AllocateSession(conn_);
    kel::api.Kel_CreateHead(s, "DM0003");
    const std::string condition = std::string("getstring(605)=='") + kPushKhh + "'";
    kel::api.Kel_SetSubsCondi(s, condition.c_str());
    if (!kel::api.Kel_Subscribe(s, &id_, &TimedConfirmation, probe)) id_ = 0;
    kel::api.Kel_ReleaseSession(s);
  }
  ~Subscription() {
    const kel::int64 s = kel::api.Kel_AllocateSession(conn_);
    kel::api.Kel_Unsubscribe(s, id_);
    kel::api.Kel_ReleaseSession(s);
  }
  bool ok() const { return id_ >= 1; }

 private:
  kel::int64 conn_;
  kel::int64 id_ = 0;
};

void Push402(benchmark::State& state) {
  const Env& env = Env::Get();
  auto push = env.Sim<decltype(&KelSim_PushRecord)>("KelSim_PushRecord");
  const Confirm402 record = MakeRecord<Confirm402>();
  const char* data = reinterpret_cast<const char*>(&record);
  PushProbe probe;
  Subscription sub(env.Wire(0).subscribe_conn, &probe);
  if (!sub.ok()) {
    state.SkipWithError("subscription refused");
    return;
  }
  IterationTimes times;
  for (auto _ : state) {
    const std::int64_t before = probe.delivered.load(std::memory_order_acquire);
    push(kPushKhh, 0, data, sizeof record);
    while (probe.delivered.load(std::memory_order_acquire) == before) std::this_thread::yield();
    times.Add(state, probe.last_ns.load());
  }
  times.Report(state);
  if (!probe.ok) state.SkipWithError("the handler refused the record");
}

// ---- replies ----

constexpr std::int64_t kReplyTag = 93015000000042;

// A session whose entrust was run: what the reply processor receives from the transport.
kel::int64 RunSession(const CustomerWire& w) {
  const kel::int64 s = kel::api.Kel_AllocateSession(w.trade_conn);
  kel::api.Kel_SetNodeId(s, w.node_id);
  kel::api.Kel_SetStructData(s, w.entrust_block.data(),
                             static_cast<kel::int32>(w.entrust_block.size()));
  kel::api.Kel_SetSessData(s, kReplyTag);
  kel::api.Kel_Run(s);
  return s;
}

void Reply(benchmark::State& state) {
  const Env& env = Env::Get();
  env.Ready();
  const CustomerWire& w = env.Wire(0);
  IterationTimes times;
  for (auto _ : state) {
    const kel::int64 s = RunSession(w);  // outside the measured time
    const std::int64_t start = NowNs();
    if (!Sc_Order_AsyncFuncProcess(s)) {
      state.SkipWithError("the reply was refused");
      break;
    }
    times.Add(state, LastCallbackNs() - start);
  }
  times.Report(state);
}

void WriteFloorReply(FloorWriter& w, const trade::OrderEntrustAns& a, const trade::OrderReqHead& q,
                     std::int64_t tag) {
  w.StartObject();
  FLOOR_KEY(TYPE), w.Int(14);
  FLOOR_KEY(SYS_TYPE), w.Int(4);
  FLOOR_KEY(JYLX), w.Int(30);
  FLOOR_KEY(KFSBDBH), w.Int64(tag);
  FLOOR_KEY(KHH), w.String(q.khh, Len(q.khh));
  FLOOR_KEY(WTH), w.Int64(a.wth);
  FLOOR_KEY(WTSJ), w.String(a.wtsj, Len(a.wtsj));
  FLOOR_KEY(DJZJ), w.Double(a.djzj);
  FLOOR_KEY(RETCODE), w.Int(a.head.code);
  FLOOR_KEY(RETNOTE), w.String(a.head.message, Len(a.head.message));
  FLOOR_KEY(PARSE_COST), w.Int(0);
  w.EndObject();
}

void ReplyFloor(benchmark::State& state) {
  const Env& env = Env::Get();
  env.Ready();
  const CustomerWire& w = env.Wire(0);
  trade::OrderEntrustAns answer{};
  const kel::int64 s = RunSession(w);
  kel::int32 len = sizeof answer;
  kel::api.Kel_GetStructData(s, reinterpret_cast<char*>(&answer), &len, -1);
  kel::api.Kel_ReleaseSession(s);
  trade::OrderReqHead request{};
  std::memcpy(&request, w.entrust_block.data(), sizeof request);
  IterationTimes times;
  for (auto _ : state) {
    const std::int64_t start = NowNs();
    FloorJson& json = Floor();
    WriteFloorReply(json.Begin(), answer, request, kReplyTag);
    OnFunction(kStamp, json.c_str(), 14);
    times.Add(state, LastCallbackNs() - start);
  }
  times.Report(state);
}

#undef FLOOR_KEY
#undef FLOOR_TEXT
#undef FLOOR_INT64
#undef FLOOR_DOUBLE

}  // namespace

void RegisterPushBenchmarks() {
  benchmark::RegisterBenchmark(kPush402Kit, Push402)->UseManualTime()->Iterations(20000);
  benchmark::RegisterBenchmark(kPush402Floor, PushFloor<Confirm402>)->UseManualTime();
  benchmark::RegisterBenchmark(kPush415Kit, Push415)->UseManualTime();
  benchmark::RegisterBenchmark(kPush415Floor, PushFloor<Struct415>)->UseManualTime();
  benchmark::RegisterBenchmark(kReplyKit, Reply)->UseManualTime();
  benchmark::RegisterBenchmark(kReplyFloor, ReplyFloor)->UseManualTime();
}

}  // namespace molra::bench
