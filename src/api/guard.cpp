#include "api/guard.h"

#include <exception>

#include "api/last_error.h"
#include "log/log.h"
#include "secmolra.h"

namespace molra {

namespace {

constexpr char kInternalError[] = "内部错误";

// The text of the exception being handled; valid while its handler runs.
const char* CaughtText() noexcept {
  try {
    throw;
  } catch (const std::exception& e) {
    return e.what();
  } catch (...) {
    return "unknown exception";
  }
}

}  // namespace

void ReportCaught(Boundary boundary, const char* name) noexcept {
  const char* text = CaughtText();
  try {
    if (boundary == Boundary::kExport) SetLastError(SECMOLRA_ERR_INTERNAL, kInternalError, name, nullptr);
    if (boundary == Boundary::kReply) SetLastError(SECMOLRA_ERR_ANSWER, kInternalError, name, nullptr);
    MOLRA_LOG_INFO("{} exception: {}", name, text);
  } catch (...) {
    // Out of memory even for the record: the failure value alone reports it.
  }
}

}  // namespace molra
