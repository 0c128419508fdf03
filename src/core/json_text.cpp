#include "core/json_text.h"

#include "util/clock.h"

namespace molra {

void CallHost(HostCallback cb, const char* json, std::int32_t type) {
  char stamp[16];
  FormatLocalStamp(stamp);
  cb(stamp, json, type);
}

}  // namespace molra
