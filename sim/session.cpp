#include "session.h"

namespace sim {

std::string NormaliseFuncCode(const std::string& code) {
  if (code.size() == 7 && code[0] == 'H') return code.substr(1);
  return code;
}

}  // namespace sim
