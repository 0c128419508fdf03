// The request frame shared by every order-layer call: customer lookup, a session on the
// customer's trade connection, token and node id, the packed block (or key/value fields),
// the log line, then an asynchronous write or a synchronous run with the answer checks.
// The session is released on every path except a successful asynchronous write, after
// which the family's reply handler owns it.
#pragma once

#include <spdlog/spdlog.h>

#include <chrono>
#include <cstdint>
#include <cstring>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "comm/kv_request.h"
#include "core/messages.h"
#include "core/status.h"
#include "secmolra.h"
#include "trade/named_line.h"
#include "trade/order_family.h"

namespace molra::trade {

class OrderRequest {
 public:
  using Reader = std::function<std::int64_t(const char* answer, std::int32_t len)>;

  // `record` is the customer (khh, node id, token); it also receives the account's copy of
  // every failure of the frame, which carries the family's name.
  OrderRequest(const OrderFamily& family, CusLoginInfo* record);

  const OrderFamily& family() const { return family_; }

  // The family's zeroed block as its layout T; the frame fills the head and the request
  // number, the family everything else.
  template <typename T>
  T& Block() {
    static_assert(alignof(T) == 1, "blocks are packed");
    static_assert(sizeof(T) <= kMaxBlock, "every block fits the frame's buffer");
    if (block_len_ < sizeof(T)) {
      std::memset(block_ + block_len_, 0, sizeof(T) - block_len_);
      block_len_ = sizeof(T);
    }
    return *reinterpret_cast<T*>(block_);
  }
  // Key/value families: fields set after the head; the frame adds the token and, for
  // asynchronous calls, the request number.
  void Fields(ReqFields fields) { fields_ = std::move(fields); }
  // A named value of the family's log line (see the formats in the family table); a null
  // text is "". Nothing is kept when the line will not be written.
  template <typename T>
  OrderRequest& Log(const char* name, const T& value) {
    if (line_) line_->Add(name, value);
    return *this;
  }
  // Whether the call's line will be written (the log was on when the request began).
  bool logging() const { return line_.has_value(); }
  // Families whose result is not one value of the answer read it themselves.
  void Read(Reader reader) { reader_ = std::move(reader); }
  // Checks that run once the customer and its session are found, before the block is
  // sent: a failure ends the call with nothing sent.
  void Prepare(std::function<Status()> check) { prepare_ = std::move(check); }

  // Synchronous: the family's result.
  Result<std::int64_t> Run();
  // Asynchronous: the request number once the request is written. `number` is the caller's
  // (0 generates one; batch families pass their tag, which is never generated).
  Result<std::int64_t> Send(std::int64_t number);

 private:
  Result<std::int64_t> Execute(bool async, std::int64_t number);
  void PutHead(std::int64_t token, const std::string& khh);
  void PutNumber(std::int64_t number);
  KvRequest FieldRequest(std::int32_t node, std::int64_t token, bool async,
                         std::int64_t number) const;
  void LogLine(std::int64_t lsh);
  bool Write(kel::int64 session, std::int64_t number);
  Result<std::int64_t> ReadBlockAnswer(kel::int64 session);
  Result<std::int64_t> ReadFieldAnswer(KelSession session);
  std::int64_t ResultOf(const char* answer, std::int32_t len);
  Failure Fail(std::int64_t code, std::string msg) const;

  // The largest block (the batch withdrawal's 6098 bytes) with room to spare: requests are
  // built on the stack, not on the heap.
  static constexpr std::size_t kMaxBlock = 6144;

  const OrderFamily& family_;
  CusLoginInfo* record_;
  // Taken once: a request that starts with the log off collects nothing for its line.
  spdlog::logger* const logger_;
  std::size_t block_len_;
  char block_[kMaxBlock];
  ReqFields fields_;
  Reader reader_;
  std::function<Status()> prepare_;
  std::optional<NamedLine> line_;  // only while the log is on
  std::chrono::steady_clock::time_point start_;
};

}  // namespace molra::trade
