#include "core/context.h"

namespace molra {

KitState& Kit() {
  static KitState* state = new KitState();  // never destroyed: transport threads read it
  return *state;
}

}  // namespace molra
