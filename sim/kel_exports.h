// Declares every plain Kel_ entry point from the shared table, so that each definition in
// the export files is checked against the signature the kit binds. The two entries exported
// as C++ functions (the first two of the table) are defined in exports_decorated.cpp, which
// does not include this file: declaring them here with C linkage would clash there.
#pragma once

#include "sim_core.h"

#define SIM_DECLARE_KEL(name, ret, params) KEL_EXPORT ret name params;
KEL_ENTRY_POINTS(SIM_DECLARE_KEL)
#undef SIM_DECLARE_KEL
