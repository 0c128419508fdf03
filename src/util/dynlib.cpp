#include "util/dynlib.h"

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>

#include <cerrno>
#endif

namespace molra {

#if defined(_WIN32)
void* LoadDynamicLibrary(const char* path) { return reinterpret_cast<void*>(LoadLibraryA(path)); }
void* FindSymbol(void* module, const char* name) {
  return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(module), name));
}
unsigned long LastSystemError() { return GetLastError(); }
#else
namespace {
// dlopen/dlsym report through dlerror() text, not a number; keep the number the loader's
// last failure maps to (ENOENT for a missing file or symbol) so messages read alike.
thread_local unsigned long t_last_error = 0;
}  // namespace
void* LoadDynamicLibrary(const char* path) {
  void* h = dlopen(path, RTLD_NOW | RTLD_LOCAL);
  t_last_error = h ? 0 : (errno ? static_cast<unsigned long>(errno) : ENOENT);
  return h;
}
void* FindSymbol(void* module, const char* name) {
  dlerror();
  void* p = dlsym(module, name);
  t_last_error = p ? 0 : 127;  // the value Windows reports for a missing procedure
  return p;
}
unsigned long LastSystemError() { return t_last_error; }
#endif

}  // namespace molra
