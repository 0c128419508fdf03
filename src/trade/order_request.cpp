#include "trade/order_request.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "account/registry.h"
#include "api/last_error.h"
#include "comm/conn_pool.h"
#include "comm/kel_api.h"
#include "log/log.h"
#include "trade/order_args.h"
#include "trade/order_blocks.h"
#include "util/field_ids.h"

namespace molra::trade {

namespace {

template <typename T>
T ReadAt(const char* answer, std::size_t offset) {
  T v;
  std::memcpy(&v, answer + offset, sizeof v);
  return v;
}

// The longest answer, the batch entrust's, read on the stack.
constexpr std::int32_t kMaxAnswer = 8192;
static_assert(sizeof(BatchOrderAns) <= kMaxAnswer, "every answer fits");

// The block head's function number from the family's code ("19001"); the codes are digits.
std::int16_t FunctionNumber(const char* code) {
  int n = 0;
  for (const char* p = code; *p >= '0' && *p <= '9'; ++p) n = n * 10 + (*p - '0');
  return static_cast<std::int16_t>(n);
}

std::string NumberText(std::int64_t number) {
  char text[32];
  std::snprintf(text, sizeof text, "%lld", static_cast<long long>(number));
  return text;
}


}  // namespace

OrderRequest::OrderRequest(const OrderFamily& family, CusLoginInfo* record)
    : family_(family), record_(record), logger_(ActiveLogger()),
      block_len_(std::min(static_cast<std::size_t>(family.block_len), kMaxBlock)) {
  std::memset(block_, 0, block_len_);
  if (logger_ != nullptr) {
    line_.emplace();
    start_ = std::chrono::steady_clock::now();
  }
}

std::int64_t OrderRequest::Run() { return Execute(false, 0); }

std::int64_t OrderRequest::Send(std::int64_t number) { return Execute(true, number); }

std::int64_t OrderRequest::Fail(std::int64_t code, const std::string& msg) {
  SetLastError(code, msg, family_.name, record_);
  return code;
}

std::int64_t OrderRequest::Execute(bool async, std::int64_t number) {
  if (record_ == nullptr || record_->KHH[0] == '\0') return Fail(-221, kIllegal);
  const std::string khh = FieldText(record_->KHH);

  Customer customer;
  ErrorRecord not_found;
  if (!FindCustomer(khh, customer, not_found)) return Fail(not_found.code, not_found.message);

  KelSession session = AllocTradeSession(*customer.conn);
  if (!session) return Fail(-202, GetStagedError().message);

  const std::int64_t token = record_->Token >= 1 ? record_->Token : CustomerToken(customer, khh);
  const std::int32_t node = record_->NodeID >= 1 ? record_->NodeID : CustomerNodeId(khh);
  if (prepare_) {
    if (std::int64_t code = prepare_(); code != 0) return code;
  }
  if (async && family_.number_at != kNumberIsTag && number < 1) number = GenerateRequestNumber();
  const kel::int64 h = session.handle();

  kel::api.Kel_SetNodeId(h, node);
  if (family_.key_value) {
    CreateHead(session, family_.code);
    if (fields_) fields_(h);
    kel::api.Kel_SetLong(h, fid::TOKEN, token);
    if (async) kel::api.Kel_SetItem(h, fid::KFSBDBH, NumberText(number).c_str());
  } else {
    PutHead(token, khh);
    if (async) PutNumber(number);
    kel::api.Kel_SetStructData(h, block_, static_cast<kel::int32>(block_len_));
  }
  LogLine(async ? number : 0);

  if (async) {
    if (!Write(h, number)) return Fail(-204, kSendFailed);
    session.Detach();  // the reply handler owns and releases it
    return number;
  }
  if (!kel::api.Kel_Run(h)) return Fail(-204, kSendFailed);
  return family_.key_value ? ReadFieldAnswer(h) : ReadBlockAnswer(h);
}

void OrderRequest::PutHead(std::int64_t token, const std::string& khh) {
  OrderReqHead& head = Block<OrderReqHead>();
  head.function = FunctionNumber(family_.code);
  head.flag = kHeadFlag;
  head.token = token;
  head.code = 0;
  CopyField(head.khh, khh.c_str());
  head.version = kInterfaceVersion;
}

void OrderRequest::PutNumber(std::int64_t number) {
  if (family_.number_at < 0) return;
  CopyField(block_ + family_.number_at, kKfsbdbhWidth, NumberText(number).c_str());
}

void OrderRequest::LogLine(std::int64_t lsh) {
  if (logger_ == nullptr || family_.log_format == nullptr) return;
  auto cost = std::chrono::duration_cast<std::chrono::milliseconds>(
                  std::chrono::steady_clock::now() - start_)
                  .count();
  line_->Add("fn", family_.name);
  line_->Add("lsh", lsh);
  line_->Add("cost", static_cast<long long>(cost));
  fmt::memory_buffer text;
  if (line_->Format(family_.log_format, text)) {
    logger_->info(fmt::string_view(text.data(), text.size()));
  } else {
    logger_->info("{} log line: a field of \"{}\" is missing", family_.name, family_.log_format);
  }
}

bool OrderRequest::Write(kel::int64 session, std::int64_t number) {
  kel::api.Kel_SetSessData(session, number);
  kel::api.Kel_RegReplyCallFunc(session, family_.reply);
  return kel::api.Kel_Write(session);
}

std::int64_t OrderRequest::ReadBlockAnswer(kel::int64 session) {
  if (!kel::api.Kel_IsStruct(session, 0)) {
    std::int64_t code = kel::api.Kel_GetCode(session);
    if (code > 0) code = -code;
    return Fail(code, GetErrorString(session));
  }
  alignas(8) char answer[kMaxAnswer];
  const std::int32_t capacity = std::min(family_.answer_len, kMaxAnswer);
  std::memset(answer, 0, static_cast<std::size_t>(capacity));
  kel::int32 len = capacity;
  if (!kel::api.Kel_GetStructData(session, answer, &len, -1)) len = 0;
  len = std::min(len, capacity);

  if (len < kAnswerHeadLen) return Fail(-205, kAnswerTooShort);
  const AnswerHead& head = *reinterpret_cast<const AnswerHead*>(answer);
  if (head.code < family_.min_ok) return Fail(head.code, FieldText(head.message));
  if (len < family_.answer_len) return Fail(-205, family_.short_answer);
  return Result(answer, len);
}

std::int64_t OrderRequest::Result(const char* answer, std::int32_t len) {
  switch (family_.result) {
    case ResultKind::kOrderNumber:
      return ReadAt<std::int64_t>(answer, offsetof(OrderEntrustAns, wth));
    case ResultKind::kQuantity: {
      double q = ReadAt<double>(answer, offsetof(TradableQtyAns, quantity));
      constexpr double kLimit = 9.2e18;  // beyond it the int64 conversion is undefined
      return std::isfinite(q) && std::fabs(q) < kLimit ? static_cast<std::int64_t>(q) : 0;
    }
    case ResultKind::kQuantity32:
      return ReadAt<std::int32_t>(answer, offsetof(TradableQtyAns, quantity));
    case ResultKind::kReturnCode:
      return ReadAt<std::int16_t>(answer, offsetof(AnswerHead, code));
    case ResultKind::kCustom:
      return reader_ ? reader_(answer, len) : 0;
  }
  return 0;
}

std::int64_t OrderRequest::ReadFieldAnswer(kel::int64 session) {
  kel::int32 code = kel::api.Kel_GetCode(session);
  if (code < 0) return Fail(code, GetErrorString(session));
  kel::int32 field = family_.result == ResultKind::kQuantity ? fid::WTSL : fid::WTH;
  return kel::api.Kel_GetLong(session, field, -1);
}

}  // namespace molra::trade
