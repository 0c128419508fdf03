#include "core/guard.h"

#include <exception>

#include "core/errors.h"
#include "core/log.h"
#include "core/messages.h"
#include "secmolra.h"

namespace molra {

namespace {

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
    if (boundary == Boundary::kExport)
      SetLastError(SECMOLRA_ERR_INTERNAL, msg::kInternalError, name, nullptr);
    if (boundary == Boundary::kReply)
      SetLastError(SECMOLRA_ERR_ANSWER, msg::kInternalError, name, nullptr);
    MOLRA_LOG_INFO("{} exception: {}", name, text);
  } catch (...) {
    // Out of memory even for the record: the failure value alone reports it.
  }
}

}  // namespace molra
