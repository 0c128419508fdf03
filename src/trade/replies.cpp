// Replies to asynchronous requests: one frame for every business, driven by a table of what
// each business reports. A reply becomes one JSON text for the function callback (type 14).
#include "trade/replies.h"

#include <charconv>

#include "comm/conn_pool.h"
#include "comm/kel_api.h"
#include "core/context.h"
#include "core/errors.h"
#include "core/guard.h"
#include "core/json_text.h"
#include "core/log.h"
#include "core/messages.h"
#include "trade/order_blocks.h"
#include "util/field_ids.h"

namespace molra {
namespace {

using namespace trade;

constexpr int kReplyType = 14;

// Offsets and widths of the blocks (trade/order_blocks.h). Every structured answer: return
// code, return note, order number, entrust time.
constexpr int kMinAnswer = sizeof(AnswerHead);
constexpr int kCodeAt = offsetof(AnswerHead, code);
constexpr int kNoteAt = offsetof(AnswerHead, message), kNoteWidth = sizeof(AnswerHead::message);
constexpr int kWthAt = offsetof(OrderEntrustAns, wth);
constexpr int kWtsjAt = offsetof(OrderEntrustAns, wtsj), kWtsjWidth = sizeof(OrderEntrustAns::wtsj);
// The request block's customer number.
constexpr int kReqKhhAt = offsetof(OrderReqHead, khh), kReqKhhWidth = sizeof(OrderReqHead::khh);
// Batch entrust: rows of the request, and the answer's count, funds, numbers and notes.
constexpr int kReqRowsAt = offsetof(BatchOrderReq, rows), kReqRowWidth = kBatchRowWidth;
constexpr int kBatchSuccessAt = offsetof(BatchOrderAns, count);
constexpr int kBatchDjzjAt = offsetof(BatchOrderAns, djzj);
constexpr int kBatchWthAt = offsetof(BatchOrderAns, wth);
constexpr int kBatchNoteAt = offsetof(BatchOrderAns, notes);
constexpr int kBatchNoteWidth = sizeof(BatchOrderAns::notes[0]);

enum class Form : std::uint8_t {
  kSingle,         // one order's structured answer
  kKeyValue,       // answer fields by id (issuance and non-trading businesses)
  kBatch,          // batch entrust: count, funds and one order number and note per row
  kBatchWithdraw,  // batch withdrawal: no order number
};

enum class Third : std::uint8_t {
  kNone,
  kDjzj,            // "DJZJ", a double
  kSbjg,            // "SBJG", an int32 (key/value: an integer field)
  kSbjgFromDouble,  // "SBJG", a double truncated toward zero
};

struct ReplyKind {
  const char* name;  // also the function name of a refusal's last error
  int jylx;
  Form form;
  int wth_width;  // bytes of the order number at 443 (8 or 4)
  Third third;
  int min_len;   // a structured answer with a positive code must be at least this long
  int third_at;  // byte offset of a structured answer, field id of a key/value one
};

enum Reply {
  kOrder,
  kBatchOrder,
  kEtfSg,
  kEtfSh,
  kZqhg,
  kZqcrk,
  kLof,
  kPhdj,
  kFxyw,
  kFjy,
  kOrderWithdraw,
  kBatchWithdraw,
  kEtfWithdraw,
  kZqhgWithdraw,
  kLofWithdraw,
  kPhdjWithdraw,
  kFxywWithdraw,
  kReplyCount
};

// The answer block's length and where its third value lies.
#define MOLRA_ANSWER(T, third) sizeof(T), offsetof(T, third)

// The repurchase withdrawal's "SBJG" lies right after its 512-byte answer: it is read only
// when the answer holds those bytes (every read below is bounded by the answer).
constexpr ReplyKind kReplies[kReplyCount] = {
    {"Sc_Order_AsyncFuncProcess", 30, Form::kSingle, 8, Third::kDjzj,
     MOLRA_ANSWER(OrderEntrustAns, djzj)},
    {"Sc_BatchOrder_AsyncFuncProcess", 30, Form::kBatch, 0, Third::kNone, sizeof(BatchOrderAns), 0},
    {"Sc_ETFSG_AsyncFuncProcess", 31, Form::kSingle, 8, Third::kDjzj,
     MOLRA_ANSWER(OrderEntrustAns, djzj)},
    {"Sc_ETFSH_AsyncFuncProcess", 32, Form::kSingle, 8, Third::kDjzj,
     MOLRA_ANSWER(OrderEntrustAns, djzj)},
    {"Sc_ZQHG_AsyncFuncProcess", 33, Form::kSingle, 4, Third::kDjzj,
     MOLRA_ANSWER(OrderEntrustAns, djzj)},
    {"Sc_ZQCRK_AsyncFuncProcess", 34, Form::kSingle, 4, Third::kDjzj,
     MOLRA_ANSWER(OrderEntrustAns, djzj)},
    {"Sc_LOF_AsyncFuncProcess", 35, Form::kSingle, 4, Third::kDjzj,
     MOLRA_ANSWER(LofEntrustAns, djzj)},
    {"Sc_PHDJ_AsyncFuncProcess", 36, Form::kSingle, 8, Third::kDjzj,
     MOLRA_ANSWER(OrderEntrustAns, djzj)},
    {"Sc_FXYW_AsyncFuncProcess", 37, Form::kKeyValue, 0, Third::kDjzj, 0, fid::DJZJ},
    {"Sc_FJY_AsyncFuncProcess", 38, Form::kKeyValue, 0, Third::kDjzj, 0, fid::DJZJ},
    {"Sc_OrderWithDraw_AsyncFuncProcess", 40, Form::kSingle, 4, Third::kSbjg,
     MOLRA_ANSWER(OrderWithdrawAns, sbjg)},
    {"Sc_BatchOrderWithDraw_AsyncFuncProcess", 41, Form::kBatchWithdraw, 0, Third::kNone,
     sizeof(BatchWithdrawAns), 0},
    {"Sc_ETFWithDraw_AsyncFuncProcess", 42, Form::kSingle, 4, Third::kSbjgFromDouble,
     MOLRA_ANSWER(ETFWithdrawAns, sbjg)},
    {"Sc_ZQHGWithDraw_AsyncFuncProcess", 43, Form::kSingle, 4, Third::kSbjg,
     sizeof(ZQHGWithdrawAns), sizeof(ZQHGWithdrawAns)},
    {"Sc_LOFWithDraw_AsyncFuncProcess", 44, Form::kSingle, 4, Third::kSbjg,
     MOLRA_ANSWER(OrderWithdrawAns, sbjg)},
    {"Sc_PHDJWithDraw_AsyncFuncProcess", 45, Form::kSingle, 4, Third::kSbjg,
     MOLRA_ANSWER(OrderWithdrawAns, sbjg)},
    {"Sc_FXYWWithDraw_AsyncFuncProcess", 46, Form::kKeyValue, 0, Third::kSbjg, 0, fid::SBJG},
};
#undef MOLRA_ANSWER

// A block owned by the session; every read is bounded by its length.
struct Block {
  const char* data = nullptr;
  kel::int32 len = 0;

  template <typename T>
  T At(int off) const {
    return off >= 0 && off + static_cast<int>(sizeof(T)) <= len ? LoadAt<T>(data + off) : T{};
  }
  void Text(JsonWriter& w, int off, int width) const {
    const int room = off < len ? len - off : 0;
    if (room == 0) {
      w.String("", 0);
      return;
    }
    WriteText(w, data + off, static_cast<std::size_t>(room < width ? room : width));
  }
};

std::int64_t OrderNumber(const Block& answer, const ReplyKind& k) {
  return k.wth_width == 8 ? answer.At<std::int64_t>(kWthAt) : answer.At<std::int32_t>(kWthAt);
}

std::int64_t Truncated(double d) {
  return d > -9.2e18 && d < 9.2e18 ? static_cast<std::int64_t>(d) : 0;
}

bool Refuse(const ReplyKind& k, const char* msg) {
  Report(Failure{SECMOLRA_ERR_ANSWER, msg, k.name}, nullptr);
  return false;
}

Block RequestBlock(kel::int64 session) {
  Block req;
  req.data = kel::api.Kel_GetReqStructData(session, &req.len);
  if (req.data == nullptr) req.len = 0;
  return req;
}

void WriteString(JsonWriter& w, const std::string& text) {
  w.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
}

// "TYPE", "SYS_TYPE", "JYLX", the request's tag ("KFSBDBH", or "WTPCH" and "KFSBDBH" 0 for
// the batch), and "KHH" as its name, with its value left to the caller.
void WriteHead(JsonWriter& w, const ReplyKind& k, kel::int64 session) {
  w.StartObject();
  Key(w, "TYPE");
  w.Int(kReplyType);
  Key(w, "SYS_TYPE");
  w.Int(4);
  Key(w, "JYLX");
  w.Int(k.jylx);
  const std::int64_t tag = kel::api.Kel_GetSessData(session);
  if (k.form == Form::kBatch) {
    Key(w, "WTPCH");
    w.Int64(tag);
    Key(w, "KFSBDBH");
    w.Int64(0);
  } else {
    Key(w, "KFSBDBH");
    w.Int64(tag);
  }
  Key(w, "KHH");
}

bool ReportsOrderNumber(const ReplyKind& k) {
  return k.form == Form::kSingle || k.form == Form::kKeyValue;
}

bool Finish(const ReplyKind& k, HostCallback cb, JsonText& text) {
  JsonWriter& w = text.writer();
  Key(w, "PARSE_COST");
  w.Int(0);
  w.EndObject();
  MOLRA_LOG_INFO("{} push orderNo {}", k.name, text.c_str());
  CallHost(cb, text.c_str(), kReplyType);
  return true;
}

void WriteBatchOrders(JsonWriter& w, const Block& answer, const Block& request) {
  Key(w, "orders");
  w.StartObject();
  int row = 0;
  for (int i = 0; i < kBatchMaxRows; ++i) {
    const int at = kReqRowsAt + i * kReqRowWidth;
    if (at + kReqRowWidth > request.len) break;
    const char* packed = request.data + at;
    if (FieldLength(packed, kReqRowWidth) == 0) continue;  // an empty row
    char name[12];
    const auto end = std::to_chars(name, name + sizeof name, ++row).ptr;
    w.Key(name, static_cast<rapidjson::SizeType>(end - name));
    w.StartObject();
    Key(w, "WTH");
    w.Int64(answer.At<std::int64_t>(kBatchWthAt + 8 * (row - 1)));
    Key(w, "NOTE");
    answer.Text(w, kBatchNoteAt + kBatchNoteWidth * (row - 1), kBatchNoteWidth);
    w.EndObject();
  }
  w.EndObject();
}

// The members between "KHH" and "PARSE_COST" of a structured answer.
void WriteAnswer(JsonWriter& w, const ReplyKind& k, const Block& answer, const Block& request) {
  const int code = answer.At<std::int16_t>(kCodeAt);
  const bool ok = code > 0;
  if (ReportsOrderNumber(k)) {
    Key(w, "WTH");
    w.Int64(ok ? OrderNumber(answer, k) : 0);
  }
  if (ok && k.form != Form::kBatch) {
    Key(w, "WTSJ");
    answer.Text(w, kWtsjAt, kWtsjWidth);
  }
  if (ok && k.third == Third::kDjzj) {
    Key(w, "DJZJ");
    WriteDouble(w, answer.At<double>(k.third_at));
  } else if (ok && k.third == Third::kSbjg) {
    Key(w, "SBJG");
    w.Int(answer.At<std::int32_t>(k.third_at));
  } else if (ok && k.third == Third::kSbjgFromDouble) {
    Key(w, "SBJG");
    w.Int64(Truncated(answer.At<double>(k.third_at)));
  }
  Key(w, "RETCODE");
  w.Int(code);
  Key(w, "RETNOTE");
  answer.Text(w, kNoteAt, kNoteWidth);
  if (ok && k.form == Form::kBatch) {
    Key(w, "Success");
    w.Int(answer.At<std::int32_t>(kBatchSuccessAt));
    Key(w, "DJZJ");
    WriteDouble(w, answer.At<double>(kBatchDjzjAt));
    WriteBatchOrders(w, answer, request);
  }
}

bool StructuredReply(kel::int64 session, const ReplyKind& k) {
  Block answer;
  answer.data = kel::api.Kel_GetStructDataEx(session, &answer.len, -1);
  if (answer.data == nullptr || answer.len < kMinAnswer) return Refuse(k, msg::kAnswerShort1);
  if (answer.At<std::int16_t>(kCodeAt) > 0 && answer.len < k.min_len) {
    return Refuse(k, msg::kAnswerShort);
  }
  const Block request = RequestBlock(session);
  if (request.data == nullptr) return Refuse(k, msg::kAnswerShort1);
  const HostCallback cb = Host().func_callback.load(std::memory_order_acquire);
  if (cb == nullptr) return true;
  JsonText text;
  JsonWriter& w = text.writer();
  WriteHead(w, k, session);
  request.Text(w, kReqKhhAt, kReqKhhWidth);
  WriteAnswer(w, k, answer, request);
  return Finish(k, cb, text);
}

// The back end answered with an error and no record: the short form.
bool UnstructuredReply(kel::int64 session, const ReplyKind& k) {
  const Block request = RequestBlock(session);
  if (request.data == nullptr) return Refuse(k, msg::kAnswerShort1);
  const HostCallback cb = Host().func_callback.load(std::memory_order_acquire);
  if (cb == nullptr) return true;
  JsonText text;
  JsonWriter& w = text.writer();
  WriteHead(w, k, session);
  request.Text(w, kReqKhhAt, kReqKhhWidth);
  if (ReportsOrderNumber(k)) {
    Key(w, "WTH");
    w.Int64(0);
  }
  Key(w, "RETCODE");
  w.Int(kel::api.Kel_GetCode(session));
  Key(w, "RETNOTE");
  WriteString(w, GetErrorString(session));
  return Finish(k, cb, text);
}

// Issuance and non-trading businesses answer with fields by id: the customer number in
// field 605, the entrust time in the entrust-time field, the note is the transport's text.
// As for their synchronous calls, a code of 0 or above is an acceptance.
bool KeyValueReply(kel::int64 session, const ReplyKind& k) {
  const HostCallback cb = Host().func_callback.load(std::memory_order_acquire);
  if (cb == nullptr) return true;
  const int code = kel::api.Kel_GetCode(session);
  const bool ok = code >= 0;
  JsonText text;
  JsonWriter& w = text.writer();
  WriteHead(w, k, session);
  WriteString(w, GetItemString(session, fid::KHH, 0));
  Key(w, "WTH");
  w.Int64(ok ? kel::api.Kel_GetLong(session, fid::WTH, 0) : 0);
  if (ok) {
    Key(w, "WTSJ");
    WriteString(w, GetItemString(session, fid::WTSJ, 0));
    if (k.third == Third::kDjzj) {
      Key(w, "DJZJ");
      WriteDouble(w, kel::api.Kel_GetDouble(session, k.third_at, 0));
    } else {
      Key(w, "SBJG");
      w.Int64(kel::api.Kel_GetLong(session, k.third_at, 0));
    }
  }
  Key(w, "RETCODE");
  w.Int(code);
  Key(w, "RETNOTE");
  WriteString(w, GetErrorString(session));
  return Finish(k, cb, text);
}

bool Process(kel::int64 session, Reply which) {
  const ReplyKind& k = kReplies[which];
  return Guard(
      k.name, false,
      [&] {
        const KelSession owned(session, false);  // the handler owns the session: released on return
        if (k.form == Form::kKeyValue) return KeyValueReply(session, k);
        if (!kel::api.Kel_IsStruct(session, 0)) return UnstructuredReply(session, k);
        return StructuredReply(session, k);
      },
      Boundary::kReply);
}

}  // namespace

bool Sc_Order_AsyncFuncProcess(kel::int64 s) { return Process(s, kOrder); }
bool Sc_BatchOrder_AsyncFuncProcess(kel::int64 s) { return Process(s, kBatchOrder); }
bool Sc_ETFSG_AsyncFuncProcess(kel::int64 s) { return Process(s, kEtfSg); }
bool Sc_ETFSH_AsyncFuncProcess(kel::int64 s) { return Process(s, kEtfSh); }
bool Sc_ZQHG_AsyncFuncProcess(kel::int64 s) { return Process(s, kZqhg); }
bool Sc_ZQCRK_AsyncFuncProcess(kel::int64 s) { return Process(s, kZqcrk); }
bool Sc_LOF_AsyncFuncProcess(kel::int64 s) { return Process(s, kLof); }
bool Sc_PHDJ_AsyncFuncProcess(kel::int64 s) { return Process(s, kPhdj); }
bool Sc_FXYW_AsyncFuncProcess(kel::int64 s) { return Process(s, kFxyw); }
bool Sc_FJY_AsyncFuncProcess(kel::int64 s) { return Process(s, kFjy); }
bool Sc_OrderWithDraw_AsyncFuncProcess(kel::int64 s) { return Process(s, kOrderWithdraw); }
bool Sc_BatchOrderWithDraw_AsyncFuncProcess(kel::int64 s) { return Process(s, kBatchWithdraw); }
bool Sc_ETFWithDraw_AsyncFuncProcess(kel::int64 s) { return Process(s, kEtfWithdraw); }
bool Sc_ZQHGWithDraw_AsyncFuncProcess(kel::int64 s) { return Process(s, kZqhgWithdraw); }
bool Sc_LOFWithDraw_AsyncFuncProcess(kel::int64 s) { return Process(s, kLofWithdraw); }
bool Sc_PHDJWithDraw_AsyncFuncProcess(kel::int64 s) { return Process(s, kPhdjWithdraw); }
bool Sc_FXYWWithDraw_AsyncFuncProcess(kel::int64 s) { return Process(s, kFxywWithdraw); }

}  // namespace molra
