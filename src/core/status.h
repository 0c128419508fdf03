// How failures travel. Lower layers return a Result: the value, or the Failure that took its
// place. Only the exports and the functions the transport calls write the error records
// (core/errors.h), each once, when the failure reaches them.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <variant>

#include "core/messages.h"
#include "secmolra.h"

namespace molra {

// The code that the connection manager's failures carry (a missing or unusable connection
// set): the operations that report them as they stand return it, so hosts tell such a failure
// from success by the last error.
constexpr std::int64_t kConnectionFailure = 0;

// What the error records will hold: code and message, the function name they carry (null:
// the name of the export or handler that reports it) and the customer record that receives
// the account's own copy (null: none).
struct Failure {
  std::int64_t code = 0;
  std::string message;
  const char* where = nullptr;
  CusLoginInfo* account = nullptr;

  // The same failure recorded under `name` with `record` as account.
  Failure At(const char* name, CusLoginInfo* record = nullptr) && {
    where = name;
    account = record;
    return std::move(*this);
  }
};

// A value, or the failure that took its place.
template <typename T>
class Result {
 public:
  Result(T value) : v_(std::in_place_index<0>, std::move(value)) {}  // NOLINT: implicit by design
  Result(Failure f) : v_(std::in_place_index<1>, std::move(f)) {}    // NOLINT: implicit by design

  bool ok() const { return v_.index() == 0; }
  explicit operator bool() const { return ok(); }
  T& operator*() { return std::get<0>(v_); }
  const T& operator*() const { return std::get<0>(v_); }
  T* operator->() { return &std::get<0>(v_); }
  const T* operator->() const { return &std::get<0>(v_); }
  const Failure& failure() const { return std::get<1>(v_); }
  Failure TakeFailure() { return std::move(std::get<1>(v_)); }

 private:
  std::variant<T, Failure> v_;
};

// The result with its failure's account dropped where that account is `temporary`: a record
// the kit built itself for a plain export, which is gone before the export reports the
// failure. Only a host's own record (the Ex forms) receives the account's copy.
template <typename T>
Result<T> DropAccount(Result<T> r, const CusLoginInfo* temporary) {
  if (r || r.failure().account != temporary) return r;
  Failure f = r.TakeFailure();
  f.account = nullptr;
  return f;
}

// -221: an argument the kit refuses.
inline Failure IllegalArgument(const char* message = msg::kIllegalArgument) {
  return Failure{SECMOLRA_ERR_ARGUMENT, message};
}

// A step that yields nothing but may fail.
struct Done {};
using Status = Result<Done>;
inline Status Ok() { return Done{}; }

}  // namespace molra
