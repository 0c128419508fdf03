// The platform's dynamic loader, behind three calls.
#pragma once

namespace molra {

void* LoadDynamicLibrary(const char* path);        // LoadLibraryA / dlopen; null on failure
void* FindSymbol(void* module, const char* name);  // GetProcAddress / dlsym; null on failure
unsigned long LastSystemError();                   // GetLastError / errno-like code of the loader

}  // namespace molra
