// The smallest host: starts the kit on the transport in the current directory, sets the
// callbacks, prints the last error and shuts down.
#include <cstdio>

#include "secmolra.h"

static void OnMsg(const char* time, const char* json, int32_t type) {
  std::printf("[%s] push %d %s\n", time, type, json);
}
static void OnFunc(const char* time, const char* json, int32_t type) {
  std::printf("[%s] reply %d %s\n", time, type, json);
}
static void OnConn(const char* khh, const char* name, int32_t event, int32_t) {
  std::printf("connection %s %s event %d\n", khh, name, event);
}

int main() {
  if (!SECMOLRA_Init()) {
    char msg[1024];
    long long code = SECMOLRA_GetLastError(msg);
    std::printf("SECMOLRA_Init failed: %lld %s\n", code, msg);
    return 1;
  }
  SECMOLRA_SetMsgCallback(OnMsg);
  SECMOLRA_SetFuncCallback(OnFunc);
  SECMOLRA_SetConnEventCallback(OnConn);
  char msg[1024];
  long long code = SECMOLRA_GetLastError(msg);
  std::printf("kit started; last error %lld \"%s\"\n", code, msg);
  SECMOLRA_Exit();
  std::printf("kit stopped\n");
  return 0;
}
