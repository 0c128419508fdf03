// The bound transport: one process-wide table of function pointers filled from
// "./kelapi50.dll" by BindTransport. Every other module calls the transport only
// through kel::api.
#pragma once

#include "comm/kel_abi.h"

namespace kel {

struct Api {
#define KEL_API_FIELD(name, ret, params) ret(*name) params = nullptr;
  KEL_ENTRY_POINTS(KEL_API_FIELD)
#undef KEL_API_FIELD
};

extern Api api;

// Names as looked up in the library, in binding order.
extern const char* const kEntryPointNames[kEntryPointCount];

// Loads the transport and binds every entry point in order. A failure records -200 in the
// last-error record and returns false; entries already bound stay bound.
bool BindTransport();

// For tests: the file name loaded ("./kelapi50.dll" unless overridden by a test).
void SetTransportFileForTest(const char* path);

}  // namespace kel
