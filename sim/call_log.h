// The call log: one line per transport call, "Kel_Name(arg,arg)". Strings are printed as
// they are, a null string as "(null)", numbers in decimal, bools as 1/0; caller buffers and
// out-pointers are left out.
#pragma once

#include <cstdint>
#include <string>
#include <type_traits>

namespace sim {

bool CallLogOn();  // switched on and not in benchmark mode
void SetCallLog(bool on);
void Trace(const std::string& line);
std::string CallLogText();
void ClearCallLog();

inline std::string LogArg(const char* s) { return s ? s : "(null)"; }
inline std::string LogArg(const std::string& s) { return s; }
inline std::string LogArg(bool b) { return b ? "1" : "0"; }
std::string LogArg(double d);
template <typename T, typename = std::enable_if_t<std::is_integral<T>::value>>
std::string LogArg(T v) {
  return std::to_string(v);
}
// A callback or context pointer: "fn" or "(null)".
struct Ptr {
  const void* p;
};
inline std::string LogArg(Ptr p) { return p.p ? "fn" : "(null)"; }

inline void AppendArgs(std::string&) {}
template <typename A, typename... R>
void AppendArgs(std::string& s, const A& a, const R&... rest) {
  s += LogArg(a);
  if (sizeof...(rest) > 0) s += ',';
  AppendArgs(s, rest...);
}

template <typename... A>
void LogCall(const char* name, const A&... args) {
  if (!CallLogOn()) return;
  std::string s = name;
  s += '(';
  AppendArgs(s, args...);
  s += ')';
  Trace(s);
}

}  // namespace sim
