// The bound transport: one process-wide table of function pointers filled from
// "./kelapi50.dll" by BindTransport. Every other module calls the transport only
// through kel::api.
#pragma once

#include "comm/kel_abi.h"
#include "core/status.h"

namespace kel {

struct Api {
#define KEL_API_FIELD(name, ret, params) ret(*name) params = nullptr;
  KEL_ENTRY_POINTS(KEL_API_FIELD)
#undef KEL_API_FIELD
};

extern Api api;

// Names as looked up in the library, in binding order.
extern const char* const kEntryPointNames[kEntryPointCount];

// Loads the transport and binds every entry point in order; -200 when the library or one of
// its entries is missing (entries already bound stay bound).
molra::Status BindTransport();

}  // namespace kel
