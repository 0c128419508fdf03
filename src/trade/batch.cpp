// Batch entrust: up to 100 ordinary orders of one customer in one 19012 request, checked row
// by row; the answer's order numbers and notes go back into the caller's rows.
#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cstring>

#include "core/guard.h"
#include "core/log.h"
#include "core/messages.h"
#include "secmolra.h"
#include "trade/order_args.h"
#include "trade/order_blocks.h"
#include "trade/order_ops.h"
#include "trade/order_request.h"

namespace molra::trade {

namespace {

constexpr double kPriceBound = 100000.0;  // the message says 99999.99; the test is below this
constexpr std::int64_t kMaxQuantity = 999999999;
constexpr std::uint32_t kMaxOrderType = 999;

// The first failing check of a row, as the message recorded with -221; empty when the row
// is valid. `no` counts rows from 1.
// The row's members are misaligned: fmt takes its arguments by reference, so it is given
// copies.
std::string RowProblem(const BatchOrderRow& r, std::size_t no) {
  if (FieldLength(r.Jys, sizeof r.Jys) != 2)
    return fmt::format(msg::kRowExchange, no, FieldText(r.Jys));
  if (FieldLength(r.Zqdm, sizeof r.Zqdm) != 6) {
    return fmt::format(msg::kRowCode, no, FieldText(r.Zqdm));
  }
  if (r.Jylb != 1 && r.Jylb != 2) {
    return fmt::format(msg::kRowCategory, no, std::int32_t{r.Jylb});
  }
  if (!(r.Wtjg > 0.0 && r.Wtjg < kPriceBound)) {
    return fmt::format(msg::kRowPrice, no, double{r.Wtjg});
  }
  if (r.Wtsl < 1 || r.Wtsl > kMaxQuantity) {
    return fmt::format(msg::kRowQuantity, no, std::int64_t{r.Wtsl});
  }
  if (static_cast<std::uint32_t>(r.Ddlx) > kMaxOrderType) {
    return fmt::format(msg::kRowOrderType, no, static_cast<std::uint32_t>(r.Ddlx));
  }
  return {};
}

// Appends a value already checked to be in range (no sign) as printf's "%0<width>d" or
// "%0<width>.<precision>f" writes it: zeros in front up to `width` characters.
char* PutDigits(char* p, char* end, const char* digits, const char* digits_end, int width) {
  const int len = static_cast<int>(digits_end - digits);
  for (int i = len; i < width && p < end; ++i) *p++ = '0';
  const int n = std::min(len, static_cast<int>(end - p));
  std::memcpy(p, digits, static_cast<std::size_t>(n));
  return p + n;
}

char* PutNumber(char* p, char* end, long long value, int width) {
  char digits[24];
  return PutDigits(p, end, digits, std::to_chars(digits, digits + sizeof digits, value).ptr, width);
}

char* PutFixed(char* p, char* end, double value, int width, int precision) {
  char digits[48];
  const char* last =
      std::to_chars(digits, digits + sizeof digits, value, std::chars_format::fixed, precision).ptr;
  return PutDigits(p, end, digits, last, width);
}

template <std::size_t N>
char* PutText(char* p, char* end, const char (&field)[N]) {
  const std::size_t n = std::min(FieldLength(field, N), static_cast<std::size_t>(end - p));
  std::memcpy(p, field, n);
  return p + n;
}

// The row's 30 characters: exchange, code, category, price, quantity, order type, as
// "%s%s%01d%09.3f%09lld%03d" writes them for a checked row. std::to_chars writes exactly
// what printf writes (the price correctly rounded to 3 decimals), without parsing a format
// for every row: a batch of 100 rows spent most of its time in snprintf.
void PackRow(const BatchOrderRow& r, char* dst) {
  char text[64];
  char* const end = text + sizeof text;
  char* p = PutText(text, end, r.Jys);
  p = PutText(p, end, r.Zqdm);
  p = PutNumber(p, end, r.Jylb, 1);
  p = PutFixed(p, end, r.Wtjg, 9, 3);
  p = PutNumber(p, end, r.Wtsl, 9);
  p = PutNumber(p, end, r.Ddlx, 3);
  std::memcpy(dst, text, std::min<std::size_t>(static_cast<std::size_t>(p - text), kBatchRowWidth));
}

// Copies a note of at most `width` bytes that stops at the first NUL and never reads past
// `avail` bytes of the answer; the rest of the field is zeroed.
void CopyNote(char* dst, std::size_t width, const char* src, std::size_t avail) {
  std::size_t bound = std::min(width, avail);
  std::size_t n = 0;
  while (n < bound && src[n] != '\0') ++n;
  std::memcpy(dst, src, n);
  std::memset(dst + n, 0, width - n);
}

std::int64_t ReadRows(const char* answer, std::int32_t len, std::vector<BatchOrderRow>& rows,
                      const char* name) {
  const auto& ans = *reinterpret_cast<const BatchOrderAns*>(answer);
  const std::size_t notes_at = offsetof(BatchOrderAns, notes);
  for (std::size_t i = 0; i < rows.size(); ++i) {
    rows[i].Wth = ans.wth[i];
    const std::size_t at = notes_at + 64 * i;
    CopyNote(rows[i].Msg, sizeof rows[i].Msg, answer + at, static_cast<std::size_t>(len) - at);
  }
  const std::int64_t failed = ans.count;
  const std::int64_t succeeded = static_cast<std::int64_t>(rows.size()) - failed;
  MOLRA_LOG_INFO("{} success.[Fail:{} Succ:{}]", name, failed, succeeded);
  return succeeded;
}

}  // namespace

Result<std::int64_t> BatchEntrustImpl(CusLoginInfo* record, std::vector<BatchOrderRow>& rows,
                                      std::int64_t wtpch, bool async) {
  const OrderFamily& f = Family(Fam::kBatchEntrust);
  OrderRequest req(f, record);
  BatchOrderReq& block = req.Block<BatchOrderReq>();
  block.wtpch = wtpch;
  req.Prepare([&]() -> Status {
    for (std::size_t i = 0; i < rows.size(); ++i) {
      std::string problem = RowProblem(rows[i], i + 1);
      if (!problem.empty()) return Refuse(f, record, SECMOLRA_ERR_ARGUMENT, problem.c_str());
      PackRow(rows[i], block.rows + kBatchRowWidth * i);
    }
    return Ok();
  });
  req.Read(
      [&](const char* answer, std::int32_t len) { return ReadRows(answer, len, rows, f.name); });
  return async ? req.Send(wtpch) : req.Run();
}

Result<std::int64_t> RunBatchEntrust(const char* name, Fam, const Caller& c, const OrderArgs& a,
                                     Mode mode) {
  std::vector<BatchOrderRow>& rows = *a.rows;
  // An Ex form does not check its record pointer: a null one reaches the frame's check.
  if (c.ex && c.record == nullptr) return BatchEntrustImpl(nullptr, rows, a.number, mode.async);
  ArgCheck check;
  if (!c.ex) check.NotNull({c.khh});
  check.NotEmpty({c.Khh()}, msg::kEmptyBatchArgs).Require(!rows.empty(), msg::kEmptyBatchArgs);
  if (!check.ok()) return check.status().TakeFailure();
  MOLRA_LOG_INFO("{} lpkhh:{} ordernum:{} nWTPCH:{}", name,
                 c.ex ? FieldText(c.record->KHH) : std::string(c.khh), rows.size(), a.number);
  if (!check.Require(rows.size() <= static_cast<std::size_t>(kBatchMaxRows), msg::kTooManyRows)
           .ok()) {
    return check.status().TakeFailure();
  }
  CusLoginInfo own;
  return DropAccount(BatchEntrustImpl(c.Record(own), rows, a.number, mode.async), &own);
}

namespace {

std::int64_t PyBatch(const char* khh, std::int64_t wtpch, BatchOrderRow* rows, std::int32_t count,
                     bool async) {
  std::vector<BatchOrderRow> list;
  if (rows != nullptr && count > 0) list.assign(rows, rows + count);
  std::int64_t r = async ? SECMOLRA_BatchOrderEntrust_ASync(khh, list, wtpch)
                         : SECMOLRA_BatchOrderEntrust(khh, list, wtpch);
  if (!async && !list.empty()) std::copy(list.begin(), list.end(), rows);
  return r;
}

}  // namespace
}  // namespace molra::trade

using namespace molra::trade;
using molra::Guard;

extern "C" {

SECMOLRA_API int64_t PYSECMOLRA_BatchOrderEntrust(const char* lpKhh, int64_t nWTPCH,
                                                  BatchOrderRow* rows, int32_t count) {
  return Guard(__func__, std::int64_t{SECMOLRA_ERR_INTERNAL},
               [&] { return PyBatch(lpKhh, nWTPCH, rows, count, false); });
}

SECMOLRA_API int64_t PYSECMOLRA_BatchOrderEntrust_ASync(const char* lpKhh, int64_t nWTPCH,
                                                        BatchOrderRow* rows, int32_t count) {
  return Guard(__func__, std::int64_t{SECMOLRA_ERR_INTERNAL},
               [&] { return PyBatch(lpKhh, nWTPCH, rows, count, true); });
}

}  // extern "C"
