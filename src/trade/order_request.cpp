#include "trade/order_request.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "comm/conn_pool.h"
#include "comm/customer.h"
#include "comm/kel_api.h"
#include "core/context.h"
#include "core/log.h"
#include "core/messages.h"
#include "core/text.h"
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

std::string NumberText(std::int64_t number) { return fmt::format_int(number).str(); }

// Every family's log format, read once for the process; null where the family has none.
const LineFormat* FormatOf(const OrderFamily& family) {
  using Formats =
      std::array<std::unique_ptr<const LineFormat>, static_cast<std::size_t>(Fam::kCount)>;
  static const Formats* const formats = [] {
    auto* all = new Formats();  // never destroyed: a transport thread may log during exit
    for (std::size_t i = 0; i < all->size(); ++i) {
      const char* format = Family(static_cast<Fam>(i)).log_format;
      if (format != nullptr) (*all)[i] = std::make_unique<const LineFormat>(format);
    }
    return all;
  }();
  return (*formats)[static_cast<std::size_t>(family.id)].get();
}

}  // namespace

OrderRequest::OrderRequest(const OrderFamily& family, CusLoginInfo* record)
    : family_(family),
      record_(record),
      logger_(ActiveLogger()),
      block_len_(std::min(static_cast<std::size_t>(family.block_len), kMaxBlock)) {
  std::memset(block_, 0, block_len_);
  if (logger_ != nullptr) {
    line_.emplace();
    start_ = std::chrono::steady_clock::now();
  }
}

Result<std::int64_t> OrderRequest::Run() { return Execute(false, 0); }

Result<std::int64_t> OrderRequest::Send(std::int64_t number) { return Execute(true, number); }

Failure OrderRequest::Fail(std::int64_t code, std::string msg) const {
  return Failure{code, std::move(msg), family_.name, record_};
}

Result<std::int64_t> OrderRequest::Execute(bool async, std::int64_t number) {
  if (record_ == nullptr || record_->KHH[0] == '\0') {
    return Fail(SECMOLRA_ERR_ARGUMENT, msg::kIllegalArgument);
  }
  const std::string khh = FieldText(record_->KHH);
  Result<CustomerRef> customer = FindCustomer(khh);
  if (!customer) return customer.TakeFailure().At(family_.name, record_);
  Result<KelSession> session = AllocTradeSession(*(*customer)->conn);
  if (!session) return session.TakeFailure().At(family_.name, record_);

  // Read by value: the packed record's token is not aligned for a reference.
  const std::int64_t own_token = record_->Token;
  const std::int64_t token = own_token >= 1 ? own_token : (*customer)->token;
  const std::int32_t own_node = record_->NodeID;
  const std::int32_t node = own_node >= 1 ? own_node : (*customer)->node_id;
  if (prepare_) {
    if (Status checked = prepare_(); !checked) return checked.TakeFailure();
  }
  if (async && family_.number_at != kNumberIsTag && number < 1) {
    number = GenerateRequestNumber(*CurrentKit());
  }
  const kel::int64 h = session->handle();
  if (family_.key_value) {
    PrepareRequest(*session, FieldRequest(node, token, async, number));
  } else {
    kel::api.Kel_SetNodeId(h, node);
    PutHead(token, khh);
    if (async) PutNumber(number);
    kel::api.Kel_SetStructData(h, block_, static_cast<kel::int32>(block_len_));
  }
  LogLine(async ? number : 0);

  if (async) {
    if (!Write(h, number)) return Fail(SECMOLRA_ERR_SEND, msg::kSendFailed);
    session->Detach();  // the reply handler owns and releases it
    return number;
  }
  if (family_.key_value) return ReadFieldAnswer(std::move(*session));
  if (!kel::api.Kel_Run(h)) return Fail(SECMOLRA_ERR_SEND, msg::kSendFailed);
  return ReadBlockAnswer(h);
}

KvRequest OrderRequest::FieldRequest(std::int32_t node, std::int64_t token, bool async,
                                     std::int64_t number) const {
  KvRequest r{{ReqField::NodeId(node)}, family_.code, fields_};
  r.fields.push_back(ReqField::Long(fid::TOKEN, token));
  if (async) r.fields.push_back(ReqField::Text(fid::KFSBDBH, NumberText(number)));
  return r;
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
  const fmt::format_int text(number);  // on the stack, NUL-terminated
  CopyField(block_ + family_.number_at, kKfsbdbhWidth, text.c_str());
}

void OrderRequest::LogLine(std::int64_t lsh) {
  const LineFormat* format = logger_ != nullptr ? FormatOf(family_) : nullptr;
  if (format == nullptr) return;
  auto cost = std::chrono::duration_cast<std::chrono::milliseconds>(
                  std::chrono::steady_clock::now() - start_)
                  .count();
  line_->Add("fn", family_.name);
  line_->Add("lsh", lsh);
  line_->Add("cost", static_cast<long long>(cost));
  fmt::memory_buffer text;
  if (line_->Format(*format, text)) {
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

Result<std::int64_t> OrderRequest::ReadBlockAnswer(kel::int64 session) {
  if (!kel::api.Kel_IsStruct(session, 0)) {
    std::int64_t code = kel::api.Kel_GetCode(session);
    if (code > 0) code = -code;
    return Fail(code, GetErrorString(session));
  }
  // Not zeroed: nothing past the length the transport gives is read.
  alignas(8) char answer[kMaxAnswer];
  const std::int32_t capacity = std::min(family_.answer_len, kMaxAnswer);
  kel::int32 len = capacity;
  if (!kel::api.Kel_GetStructData(session, answer, &len, -1)) len = 0;
  len = std::min(len, capacity);

  if (len < static_cast<std::int32_t>(sizeof(AnswerHead))) {
    return Fail(SECMOLRA_ERR_ANSWER, msg::kAnswerShort1);
  }
  const AnswerHead& head = *reinterpret_cast<const AnswerHead*>(answer);
  if (head.code < family_.min_ok) return Fail(head.code, FieldText(head.message));
  if (len < family_.answer_len) return Fail(SECMOLRA_ERR_ANSWER, family_.short_answer);
  return ResultOf(answer, len);
}

std::int64_t OrderRequest::ResultOf(const char* answer, std::int32_t len) {
  switch (family_.result) {
    case ResultKind::kOrderNumber:
      return ReadAt<std::int64_t>(answer, offsetof(OrderEntrustAns, wth));
    case ResultKind::kQuantity: {
      double q = ReadAt<double>(answer, offsetof(TradableQtyAns, quantity));
      constexpr double kLimit = 9.2e18;  // beyond it the int64 conversion is undefined
      return std::isfinite(q) && std::fabs(q) < kLimit ? static_cast<std::int64_t>(q) : 0;
    }
    case ResultKind::kQuantity32:
      return ReadAt<std::int32_t>(answer, offsetof(ETFTradableQtyAns, quantity));
    case ResultKind::kReturnCode:
      return ReadAt<std::int16_t>(answer, offsetof(AnswerHead, code));
    case ResultKind::kCustom:
      return reader_ ? reader_(answer, len) : 0;
  }
  return 0;
}

Result<std::int64_t> OrderRequest::ReadFieldAnswer(KelSession session) {
  Result<KvAnswer> answer = RunPrepared(std::move(session), kNonNegativeCode);
  if (!answer) return answer.TakeFailure().At(family_.name, record_);
  const kel::int32 field = family_.result == ResultKind::kQuantity ? fid::WTSL : fid::WTH;
  return kel::api.Kel_GetLong(answer->session.handle(), field, -1);
}

}  // namespace molra::trade
