// No C++ exception leaves the kit. Every export and every function the transport calls runs
// its body through Guard, which turns an exception into the outcome of its boundary:
//
//   SECMOLRA_API int64_t SECMOLRA_Xxx(...) {
//     return Guard(__func__, SECMOLRA_ERR_INTERNAL, [&] { return ...; });
//   }
//
// An export records -299 "内部错误" under its name and returns its failure value; a reply
// handler records -205 under its name and delivers nothing; a push or connection-event
// handler drops the event. The exception's text is logged in every case. Sessions are
// released by the unwinding, once.
#pragma once

#include <cstdint>
#include <type_traits>

#include "core/errors.h"
#include "secmolra.h"

namespace molra {

enum class Boundary {
  kExport,  // -299 "内部错误" under the export's name
  kReply,   // -205 "内部错误" under the reply handler's name
  kEvent,   // a push or a connection event: logged and dropped
};

// Records and logs the exception being handled; call it from a catch block only.
void ReportCaught(Boundary boundary, const char* name) noexcept;

// The failure value of an export that returns nothing.
struct NoResult {};
inline constexpr NoResult kNoResult{};

// Runs body(); when it throws, reports the exception and returns `failure` (nothing for a
// body that returns void).
template <typename Failure, typename Body>
auto Guard(const char* name, Failure failure, Body&& body,
           Boundary boundary = Boundary::kExport) noexcept -> std::invoke_result_t<Body&> {
  try {
    return body();
  } catch (...) {
    ReportCaught(boundary, name);
    if constexpr (!std::is_void_v<std::invoke_result_t<Body&>>) return failure;
  }
}

// An export whose body yields a Result<int64_t>: its value, or the failure's code once
// recorded under the export's name (or the function name the failure carries).
template <typename Body>
std::int64_t Export(const char* name, Body&& body) noexcept {
  return Guard(name, std::int64_t{SECMOLRA_ERR_INTERNAL},
               [&]() -> std::int64_t { return Reported(body(), name); });
}

}  // namespace molra
