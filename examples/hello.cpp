// The smallest host: checks that the transport and the configuration are where the kit looks
// for them, starts the kit, sets the callbacks, prints the last error and shuts down.
//   molra_hello [PROFILE_DIR/]      PROFILE_DIR/ holds molra.ini (default ./)
// Run it in the folder that holds kelapi50.dll.
#include <cstdio>

#include "host_support.h"
#include "secmolra.h"

static void OnMsg(const char* time, const char* json, int32_t type) {
  std::printf("[%s] push %d %s\n", time, type, host::ForTerminal(json).c_str());
}
static void OnFunc(const char* time, const char* json, int32_t type) {
  std::printf("[%s] reply %d %s\n", time, type, host::ForTerminal(json).c_str());
}
static void OnConn(const char* khh, const char* name, int32_t event, int32_t) {
  std::printf("connection %s %s event %d\n", khh, host::ForTerminal(name).c_str(), event);
}

int main(int argc, char** argv) {
  const char* profile = argc > 1 ? argv[1] : "./";
  if (!host::CheckRunFolder(profile)) return 2;
  SECMOLRA_SetProfilePath(profile);
  if (!SECMOLRA_Init()) {
    host::PrintLastError("SECMOLRA_Init");
    return 1;
  }
  SECMOLRA_SetMsgCallback(OnMsg);         // confirmation and match pushes
  SECMOLRA_SetFuncCallback(OnFunc);       // replies to asynchronous requests
  SECMOLRA_SetConnEventCallback(OnConn);  // connection breaks and recoveries
  char msg[1024];
  long long code = SECMOLRA_GetLastError(msg);
  std::printf("kit started; last error %lld \"%s\"\n", code, host::ForTerminal(msg).c_str());
  SECMOLRA_Exit();
  std::printf("kit stopped\n");
  return 0;
}
