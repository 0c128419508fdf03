#include "comm/kel_api.h"

#include <fmt/format.h>

#include <cstring>
#include <string>

#include "core/messages.h"
#include "secmolra.h"
#include "util/dynlib.h"

namespace kel {

namespace msg = molra::msg;

Api api;

namespace {

// The first two entries are C++ functions exported under their decorated names.
const char* LookupName(const char* plain) {
  if (std::strcmp(plain, "Kel_GetReqBody") == 0) return KEL_NAME_Kel_GetReqBody;
  if (std::strcmp(plain, "Kel_SetWriteData") == 0) return KEL_NAME_Kel_SetWriteData;
  return plain;
}

// The transport is loaded from the host's current directory.
constexpr const char* kTransportFile = "./kelapi50.dll";

// The binder's failures are recorded under no function name.
molra::Failure Unbound(std::string message) {
  return molra::Failure{SECMOLRA_ERR_LOAD, std::move(message), ""};
}

}  // namespace

#define KEL_LOOKUP_NAME(name, ret, params) LookupName(#name),
const char* const kEntryPointNames[kEntryPointCount] = {KEL_ENTRY_POINTS(KEL_LOOKUP_NAME)};
#undef KEL_LOOKUP_NAME

molra::Status BindTransport() {
  void* module = molra::LoadDynamicLibrary(kTransportFile);
  if (module == nullptr) {
    return Unbound(fmt::format(msg::kLoadLibraryFailed, molra::LastSystemError()));
  }
  // Fields of Api are laid out in the same order as kEntryPointNames; bind through a
  // parallel table of field addresses so one loop serves all 123 entries.
  void** const slots[kEntryPointCount] = {
#define KEL_SLOT(name, ret, params) reinterpret_cast<void**>(&api.name),
      KEL_ENTRY_POINTS(KEL_SLOT)
#undef KEL_SLOT
  };
  for (int i = 0; i < kEntryPointCount; ++i) {
    void* fn = molra::FindSymbol(module, kEntryPointNames[i]);
    if (fn == nullptr) {
      return Unbound(
          fmt::format(msg::kLoadEntryFailed, kEntryPointNames[i], molra::LastSystemError()));
    }
    *slots[i] = fn;
  }
  return molra::Ok();
}

}  // namespace kel
