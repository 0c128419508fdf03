// For the fuzz targets that drive whole exports: the kit started on the simulated transport
// (kelapi50.dll of the build directory) with customer 1001 logged in, logs off, and the
// simulator's control functions.
#pragma once

#include <cstdint>

#include "kelsim.h"

namespace molra::fuzz {

// Starts the kit once per process; aborts when that fails (a fuzz run without a kit would
// test nothing).
void StartKitOnSim();

// A control function of the simulated transport, looked up in the loaded library.
void* SimSymbol(const char* name);
#define FUZZ_SIM(name) (reinterpret_cast<decltype(&name)>(::molra::fuzz::SimSymbol(#name)))

}  // namespace molra::fuzz
