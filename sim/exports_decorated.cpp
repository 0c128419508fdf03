// The two entry points exported as C++ functions (looked up by their decorated names). They
// are never called by the kit.
#include "sim_core.h"

#pragma GCC diagnostic ignored "-Wunused-parameter"

KEL_CXX_EXPORT bool Kel_GetReqBody(kel::int64 session, char*& body, int& len) {
  sim::LogCall("Kel_GetReqBody");
  return false;
}
KEL_CXX_EXPORT bool Kel_SetWriteData(kel::int64 session, const char* data, int len) {
  sim::LogCall("Kel_SetWriteData");
  return false;
}
