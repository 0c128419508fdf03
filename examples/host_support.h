// What the example hosts share: the checks before SECMOLRA_Init that turn a missing transport
// or configuration into a message naming the path tried, and the conversion of the kit's GBK
// texts for the terminal. The kit's own codes and texts stay as they are.
#pragma once

#include <cstdio>
#include <string>

#ifdef _WIN32
#include <windows.h>
#else
#include <iconv.h>
#include <langinfo.h>
#include <unistd.h>

#include <cerrno>
#include <clocale>
#include <cstring>
#endif

#include "secmolra.h"

namespace host {

inline std::string CurrentDir() {
#ifdef _WIN32
  char buf[MAX_PATH] = {};
  DWORD n = GetCurrentDirectoryA(sizeof buf, buf);
  return n > 0 && n < sizeof buf ? std::string(buf) + "\\" : std::string(".\\");
#else
  char buf[4096] = {};
  return getcwd(buf, sizeof buf) != nullptr ? std::string(buf) + "/" : std::string("./");
#endif
}

inline bool IsAbsolute(const std::string& path) {
  return path[0] == '/' || path[0] == '\\' || (path.size() > 1 && path[1] == ':');
}

inline bool FileExists(const std::string& path) {
  std::FILE* f = std::fopen(path.c_str(), "rb");
  if (f == nullptr) return false;
  std::fclose(f);
  return true;
}

// The kit loads ./kelapi50.dll from the current directory and reads PROFILE_DIR + "molra.ini"
// (joined as given). Both are checked here, since a missing transport makes SECMOLRA_Init
// fail with code 0 and an empty message.
inline bool CheckRunFolder(const std::string& profile_dir) {
  bool ok = true;
  const std::string transport = CurrentDir() + "kelapi50.dll";
  if (!FileExists(transport)) {
    std::printf("no transport: tried %s (run the host in the folder that holds kelapi50.dll)\n",
                transport.c_str());
    ok = false;
  }
  std::string ini = profile_dir + "molra.ini";
  if (ini.compare(0, 2, "./") == 0) ini.erase(0, 2);
  if (!IsAbsolute(ini)) ini = CurrentDir() + ini;
  if (!FileExists(ini)) {
    const char last = profile_dir.empty() ? '/' : profile_dir.back();
    const bool separated = last == '/' || last == '\\';
    std::printf("no configuration: tried %s%s\n", ini.c_str(),
                separated ? "" : " (give the profile folder with its trailing separator)");
    ok = false;
  }
  return ok;
}

#ifdef _WIN32
// GBK (code page 936) to the console's code page.
inline std::string ForTerminal(const char* gbk) {
  int wide_len = MultiByteToWideChar(936, 0, gbk, -1, nullptr, 0);
  if (wide_len <= 0) return gbk;
  std::wstring wide(static_cast<size_t>(wide_len), L'\0');
  MultiByteToWideChar(936, 0, gbk, -1, &wide[0], wide_len);
  UINT cp = GetConsoleOutputCP();
  int len = WideCharToMultiByte(cp, 0, wide.c_str(), -1, nullptr, 0, nullptr, nullptr);
  if (len <= 0) return gbk;
  std::string out(static_cast<size_t>(len), '\0');
  WideCharToMultiByte(cp, 0, wide.c_str(), -1, &out[0], len, nullptr, nullptr);
  out.resize(static_cast<size_t>(len - 1));
  return out;
}
#else
// GBK to the locale's character set; with the C locale (plain ASCII), to UTF-8, which is what
// terminals show today. A byte that is not GBK becomes '?'.
inline std::string ForTerminal(const char* gbk) {
  static const std::string target = [] {
    std::setlocale(LC_CTYPE, "");
    std::string codeset = nl_langinfo(CODESET);
    return codeset == "ANSI_X3.4-1968" ? std::string("UTF-8") : codeset;
  }();
  iconv_t cd = iconv_open(target.c_str(), "GBK");
  if (cd == reinterpret_cast<iconv_t>(-1)) return gbk;
  std::string out;
  char* in = const_cast<char*>(gbk);
  size_t in_left = std::strlen(gbk);
  char buf[256];
  while (in_left > 0) {
    char* o = buf;
    size_t o_left = sizeof buf;
    size_t r = iconv(cd, &in, &in_left, &o, &o_left);
    out.append(buf, static_cast<size_t>(o - buf));
    if (r == static_cast<size_t>(-1) && errno != E2BIG) {  // invalid or cut short
      out += '?';
      ++in;
      --in_left;
    }
  }
  iconv_close(cd);
  return out;
}
#endif

// Prints "STEP failed: CODE MESSAGE" with the kit's last error.
inline void PrintLastError(const char* step) {
  char msg[4096];  // the message has no length limit: give room
  long long code = SECMOLRA_GetLastError(msg);
  std::printf("%s failed: %lld %s\n", step, code, ForTerminal(msg).c_str());
}

}  // namespace host
