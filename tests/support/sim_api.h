// For the tests that drive the simulated transport directly: its Kel_ entry points, looked
// up in ./kelapi50.dll by name, and its control functions (kelsim.h) through SIM_FN.
#pragma once

#include <string>

#include "comm/kel_api.h"
#include "kelsim.h"
#include "support/test_support.h"

namespace molra::test {

inline const kel::Api& SimKel() {
  static const kel::Api api = [] {
    kel::Api a;
    void** slots = reinterpret_cast<void**>(&a);
    for (int i = 0; i < kel::kEntryPointCount; ++i) slots[i] = Sim::Get().Symbol(kel::kEntryPointNames[i]);
    return a;
  }();
  return api;
}

}  // namespace molra::test

// A control function of the simulated transport, typed from kelsim.h.
#define SIM_FN(name) (::molra::test::Sim::Get().Fn<decltype(&name)>(#name))
