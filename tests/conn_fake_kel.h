// A transport double for the connection manager's unit tests: fills kel::api with functions
// that record their calls and answer from a little state the test controls. Each test case
// runs in its own process, so the state is plain globals.
#pragma once

#include <cstring>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "core/context.h"
#include "comm/kel_api.h"
#include "support/test_support.h"

namespace fake {

struct Conn {
  std::string addr;
  bool up = true;
  kel::ConnEventFn fn = nullptr;
  void* ctx = nullptr;
};

struct State {
  std::recursive_mutex mutex;
  std::vector<std::string> calls;
  std::map<kel::int64, Conn> conns;
  kel::int64 next_conn = 1;
  kel::int64 next_session = 1001;
  std::set<kel::int64> open_sessions;
  std::set<std::string> failing_addrs;
  std::string last_err = "no route to host";
  int fail_bind = 0;       // next binds that fail; -1: all
  bool fail_alloc = false;
  std::string item;        // the value Kel_GetItem answers; absent when item_absent
  bool item_absent = false;
  std::string errmsg;      // the text Kel_GetErrMsg answers
  std::vector<kel::int32> caps;  // capacities passed to Kel_GetItem / Kel_GetErrMsg
};

inline State& S() {
  static State s;
  return s;
}

inline std::string Str(const char* s) { return s ? s : "(null)"; }

inline void Call(const std::string& line) {
  std::lock_guard<std::recursive_mutex> lock(S().mutex);
  S().calls.push_back(line);
}

inline std::string Calls(const std::string& prefix = "") {
  std::lock_guard<std::recursive_mutex> lock(S().mutex);
  std::string out;
  for (const auto& c : S().calls) {
    if (c.compare(0, prefix.size(), prefix) == 0) out += c + "\n";
  }
  return out;
}

inline void ClearCalls() {
  std::lock_guard<std::recursive_mutex> lock(S().mutex);
  S().calls.clear();
}

// Copies text with the transport's in/out length convention.
inline const char* CopyOut(const std::string& text, char* buf, kel::int32* len) {
  kel::int32 cap = *len;
  S().caps.push_back(cap);
  std::size_t n = std::min<std::size_t>(text.size(), cap > 0 ? static_cast<std::size_t>(cap - 1) : 0);
  if (cap > 0) {
    std::memcpy(buf, text.data(), n);
    buf[n] = '\0';
  }
  *len = static_cast<kel::int32>(text.size());
  return buf;
}

inline kel::int64 Connect(const char* addr, const char* user, const char* pwd, kel::int32 t) {
  std::lock_guard<std::recursive_mutex> lock(S().mutex);
  Call("Kel_Connect(" + Str(addr) + "," + Str(user) + "," + Str(pwd) + "," + std::to_string(t) + ")");
  if (S().failing_addrs.count(addr)) return 0;
  kel::int64 h = S().next_conn++;
  S().conns[h].addr = addr;
  return h;
}

inline bool Bind(kel::int64 h, const char* khh) {
  std::lock_guard<std::recursive_mutex> lock(S().mutex);
  Call("Kel_SetCustomerForBindThread(" + S().conns[h].addr + "," + Str(khh) + ")");
  if (S().fail_bind == 0) return true;
  if (S().fail_bind > 0) --S().fail_bind;
  return false;
}

inline std::string AddrOf(kel::int64 h) {
  std::lock_guard<std::recursive_mutex> lock(S().mutex);
  auto it = S().conns.find(h);
  return it == S().conns.end() ? "#" + std::to_string(h) : it->second.addr;
}

inline void Install() {
  kel::Api& a = kel::api;
  a.Kel_SetParamEx = [](const char* n, const char* v) {
    Call("Kel_SetParamEx(" + Str(n) + "," + Str(v) + ")");
    return true;
  };
  a.Kel_SetAppInfo = [](const char* app, const char* extra) {
    Call("Kel_SetAppInfo(" + Str(app) + "," + Str(extra) + ")");
  };
  a.Kel_SetCertFile = [](const char* f, const char* p, const char* x, const char* y, kel::int32 flag) {
    Call("Kel_SetCertFile(" + Str(f) + "," + Str(p) + "," + Str(x) + "," + Str(y) + "," +
         std::to_string(flag) + ")");
  };
  a.Kel_SetDefaultSystemId = [](kel::int32 id) { Call("Kel_SetDefaultSystemId(" + std::to_string(id) + ")"); };
  a.Kel_Connect = &Connect;
  a.Kel_IsConnect = [](kel::int64 h) {
    std::lock_guard<std::recursive_mutex> lock(S().mutex);
    auto it = S().conns.find(h);
    return it != S().conns.end() && it->second.up;
  };
  a.Kel_Close = [](kel::int64 h) {
    std::lock_guard<std::recursive_mutex> lock(S().mutex);
    Call("Kel_Close(" + AddrOf(h) + ")");
    S().conns.erase(h);
  };
  a.Kel_GetLastErrMsg = [](char* buf, kel::int32* len) {
    return CopyOut(S().last_err, buf, len);
  };
  a.Kel_SetCustomerForBindThread = &Bind;
  a.Kel_SetConnEvent = [](kel::int64 h, kel::ConnEventFn fn, void* ctx) {
    std::lock_guard<std::recursive_mutex> lock(S().mutex);
    Call("Kel_SetConnEvent(" + AddrOf(h) + "," + (fn ? "fn" : "null") + ")");
    auto it = S().conns.find(h);
    if (it != S().conns.end()) {
      it->second.fn = fn;
      it->second.ctx = ctx;
    }
  };
  a.Kel_AllocateSession = [](kel::int64 h) -> kel::int64 {
    std::lock_guard<std::recursive_mutex> lock(S().mutex);
    Call("Kel_AllocateSession(" + AddrOf(h) + ")");
    if (S().fail_alloc) return 0;
    kel::int64 s = S().next_session++;
    S().open_sessions.insert(s);
    return s;
  };
  a.Kel_ReleaseSession = [](kel::int64 s) {
    std::lock_guard<std::recursive_mutex> lock(S().mutex);
    Call("Kel_ReleaseSession(" + std::to_string(s) + ")");
    S().open_sessions.erase(s);
  };
  a.Kel_Unsubscribe = [](kel::int64 s, kel::int64 id) {
    Call("Kel_Unsubscribe(" + std::to_string(s) + "," + std::to_string(id) + ")");
    return true;
  };
  a.Kel_CreateHead = [](kel::int64 s, const char* code) {
    Call("Kel_CreateHead(" + std::to_string(s) + "," + Str(code) + ")");
    return true;
  };
  a.Kel_GetItem = [](kel::int64, kel::int32, char* buf, kel::int32* len, kel::int32) -> const char* {
    if (S().item_absent) return nullptr;
    return CopyOut(S().item, buf, len);
  };
  a.Kel_GetErrMsg = [](kel::int64, char* buf, kel::int32* len) {
    return CopyOut(S().errmsg, buf, len);
  };
}

inline int OpenSessions() {
  std::lock_guard<std::recursive_mutex> lock(S().mutex);
  return static_cast<int>(S().open_sessions.size());
}

// The first connection opened to addr and still open.
inline kel::int64 HandleOf(const std::string& addr) {
  std::lock_guard<std::recursive_mutex> lock(S().mutex);
  for (auto& [h, c] : S().conns) {
    if (c.addr == addr) return h;
  }
  return 0;
}

inline void SetUp(kel::int64 h, bool up) {
  std::lock_guard<std::recursive_mutex> lock(S().mutex);
  S().conns[h].up = up;
}

// Delivers an event the way the transport does: to the handler registered for h.
inline void Raise(kel::int64 h, kel::int32 event) {
  kel::ConnEventFn fn;
  void* ctx;
  {
    std::lock_guard<std::recursive_mutex> lock(S().mutex);
    fn = S().conns[h].fn;
    ctx = S().conns[h].ctx;
  }
  if (fn) fn(h, event, ctx);
}

// Writes molra.ini into a fresh directory and points the kit at it.
inline void UseIni(const std::string& text) {
  std::string dir = molra::test::MakeTempDir();
  molra::test::WriteFile(dir + "/molra.ini", text);
  molra::Kit().SetProfilePath(dir + "/");
}

}  // namespace fake
