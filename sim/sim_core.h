// Shared internals of the simulated transport.
#pragma once

#include <string>

#include "comm/kel_abi.h"

#if defined(_WIN32)
// Exports are listed in kelapi50.def.
#define KEL_EXPORT extern "C"
#define KEL_CXX_EXPORT
#define KELSIM_EXPORT extern "C"
#else
#define KEL_EXPORT extern "C" __attribute__((visibility("default")))
#define KEL_CXX_EXPORT __attribute__((visibility("default")))
#define KELSIM_EXPORT extern "C" __attribute__((visibility("default")))
#endif

namespace sim {

// Appends one line to the call log that tests read with KelSim_CallLog.
void Trace(const std::string& line);

}  // namespace sim
