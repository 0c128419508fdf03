#include "support/fake_kel.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace molra::test {

FakeKel* FakeKel::current = nullptr;

namespace {

using kel::int32;
using kel::int64;

FakeKel& K() { return *FakeKel::current; }

// Runs `f` on the session under the fake's lock, recording the call.
template <typename F>
auto With(const char* call, int64 s, F f) {
  FakeKel& k = K();
  std::lock_guard<std::mutex> lock(k.mutex);
  k.calls.emplace_back(call);
  return f(k.sessions[s]);
}

// Text out as the transport does: at most *len - 1 bytes and a NUL; *len the full length.
const char* CopyText(const std::string& v, char* buf, int32* len) {
  if (buf != nullptr && len != nullptr && *len > 0) {
    const std::size_t n = std::min(v.size(), static_cast<std::size_t>(*len - 1));
    std::memcpy(buf, v.data(), n);
    buf[n] = 0;
  }
  if (len != nullptr) *len = static_cast<int32>(v.size());
  return buf;
}

// Binary out: at most *len bytes; *len the bytes copied.
bool CopyBinary(const std::string& v, char* buf, int32* len) {
  const std::size_t n =
      std::min(v.size(), static_cast<std::size_t>(len != nullptr && *len > 0 ? *len : 0));
  if (buf != nullptr) std::memcpy(buf, v.data(), n);
  if (len != nullptr) *len = static_cast<int32>(n);
  return true;
}

int64 AllocateSession(int64 conn) {
  FakeKel& k = K();
  std::lock_guard<std::mutex> lock(k.mutex);
  k.calls.emplace_back("AllocateSession");
  if (!k.allocate_result) return 0;
  const int64 h = ++k.next_handle;
  k.sessions[h] = k.next_session;
  k.sessions[h].conn = conn;
  return h;
}

void ReleaseSession(int64 s) {
  With("ReleaseSession", s, [](FakeSession& f) { ++f.releases; });
}
void SetNodeId(int64 s, int32 id) {
  With("SetNodeId", s, [&](FakeSession& f) { f.node_id = id; });
}
bool CreateHead(int64 s, const char* code) {
  return With("CreateHead", s, [&](FakeSession& f) {
    f.func_code = code ? code : "";
    return true;
  });
}
bool SetItem(int64 s, int32 id, const char* v) {
  return With("SetItem", s, [&](FakeSession& f) {
    f.request_items[id] = v ? v : "";
    return true;
  });
}
bool SetInt(int64 s, int32 id, int32 v) {
  return With("SetInt", s, [&](FakeSession& f) {
    f.request_items[id] = std::to_string(v);
    return true;
  });
}
bool SetLong(int64 s, int32 id, int64 v) {
  return With("SetLong", s, [&](FakeSession& f) {
    f.request_items[id] = std::to_string(v);
    return true;
  });
}
bool SetDouble(int64 s, int32 id, double v, int32 precision) {
  return With("SetDouble", s, [&](FakeSession& f) {
    char buf[64];
    std::snprintf(buf, sizeof buf, "%.*f", precision, v);
    f.request_items[id] = buf;
    return true;
  });
}
bool SetStructData(int64 s, const char* block, int32 len) {
  return With("SetStructData", s, [&](FakeSession& f) {
    f.request = std::string(block, block + (len > 0 ? len : 0));
    return true;
  });
}
bool Run(int64 s) {
  return With("Run", s, [](FakeSession&) { return K().run_result; });
}
bool Write(int64 s) {
  return With("Write", s, [](FakeSession&) { return K().write_result; });
}
bool IsStruct(int64 s, int32) {
  return With("IsStruct", s, [](FakeSession& f) { return f.is_struct; });
}
int32 GetCode(int64 s) {
  return With("GetCode", s, [](FakeSession& f) { return f.code; });
}
const char* GetErrMsg(int64 s, char* buf, int32* len) {
  return With("GetErrMsg", s, [&](FakeSession& f) { return CopyText(f.message, buf, len); });
}
const char* GetItem(int64 s, int32 id, char* buf, int32* len, int32) {
  return With("GetItem", s, [&](FakeSession& f) -> const char* {
    auto it = f.items.find(id);
    return it == f.items.end() ? nullptr : CopyText(it->second, buf, len);
  });
}
int64 GetLong(int64 s, int32 id, int32) {
  return With("GetLong", s, [&](FakeSession& f) -> int64 {
    auto it = f.items.find(id);
    return it == f.items.end() ? 0 : std::strtoll(it->second.c_str(), nullptr, 10);
  });
}
double GetDouble(int64 s, int32 id, int32) {
  return With("GetDouble", s, [&](FakeSession& f) {
    auto it = f.items.find(id);
    return it == f.items.end() ? 0.0 : std::strtod(it->second.c_str(), nullptr);
  });
}
bool GetItemBuf(int64 s, int32 id, char* buf, int32* len, int32) {
  return With("GetItemBuf", s, [&](FakeSession& f) {
    if (id == 0) return !f.body.empty() && CopyBinary(f.body, buf, len);
    auto it = f.items.find(id);
    return it != f.items.end() && CopyBinary(it->second, buf, len);
  });
}
bool GetStructData(int64 s, char* buf, int32* len, int32) {
  return With("GetStructData", s, [&](FakeSession& f) { return CopyBinary(f.answer, buf, len); });
}
const char* GetStructDataEx(int64 s, int32* len, int32) {
  return With("GetStructDataEx", s, [&](FakeSession& f) -> const char* {
    if (len != nullptr) *len = static_cast<int32>(f.answer.size());
    return f.answer.empty() ? nullptr : f.answer.data();
  });
}
const char* GetReqStructData(int64 s, int32* len) {
  return With("GetReqStructData", s, [&](FakeSession& f) -> const char* {
    if (len != nullptr) *len = f.request ? static_cast<int32>(f.request->size()) : 0;
    return f.request ? f.request->data() : nullptr;
  });
}
void SetSessData(int64 s, int64 d) {
  With("SetSessData", s, [&](FakeSession& f) { f.data = d; });
}
int64 GetSessData(int64 s) {
  return With("GetSessData", s, [](FakeSession& f) { return f.data; });
}
bool RegReplyCallFunc(int64 s, kel::ReplyFn fn) {
  return With("RegReplyCallFunc", s, [&](FakeSession& f) {
    f.reply = fn;
    return true;
  });
}
bool SetSubsCondi(int64 s, const char* c) {
  return With("SetSubsCondi", s, [&](FakeSession&) {
    K().subs_condition = c ? c : "";
    return true;
  });
}
bool Subscribe(int64 s, int64* id, kel::SubscribeFn fn, void*) {
  return With("Subscribe", s, [&](FakeSession&) {
    FakeKel& k = K();
    if (!k.subscribe_result) return false;
    k.subscribed.push_back(fn);
    if (id != nullptr) *id = k.next_subscription_id++;
    return true;
  });
}
bool Unsubscribe(int64 s, int64 id) {
  return With("Unsubscribe", s, [&](FakeSession&) {
    K().unsubscribed.push_back(id);
    return true;
  });
}
void RegGlobalStructPublishFunc(kel::StructPublishFn fn, void*) {
  FakeKel& k = K();
  std::lock_guard<std::mutex> lock(k.mutex);
  k.calls.emplace_back("RegGlobalStructPublishFunc");
  k.struct_publish = fn;
}

}  // namespace

FakeKel::FakeKel() : saved_(kel::api) {
  current = this;
  kel::Api& a = kel::api;
  a.Kel_AllocateSession = AllocateSession;
  a.Kel_ReleaseSession = ReleaseSession;
  a.Kel_SetNodeId = SetNodeId;
  a.Kel_CreateHead = CreateHead;
  a.Kel_SetItem = SetItem;
  a.Kel_SetInt = SetInt;
  a.Kel_SetLong = SetLong;
  a.Kel_SetDouble = SetDouble;
  a.Kel_SetStructData = SetStructData;
  a.Kel_Run = Run;
  a.Kel_Write = Write;
  a.Kel_IsStruct = IsStruct;
  a.Kel_GetCode = GetCode;
  a.Kel_GetErrMsg = GetErrMsg;
  a.Kel_GetItem = GetItem;
  a.Kel_GetLong = GetLong;
  a.Kel_GetDouble = GetDouble;
  a.Kel_GetItemBuf = GetItemBuf;
  a.Kel_GetStructData = GetStructData;
  a.Kel_GetStructDataEx = GetStructDataEx;
  a.Kel_GetReqStructData = GetReqStructData;
  a.Kel_SetSessData = SetSessData;
  a.Kel_GetSessData = GetSessData;
  a.Kel_RegReplyCallFunc = RegReplyCallFunc;
  a.Kel_SetSubsCondi = SetSubsCondi;
  a.Kel_Subscribe = Subscribe;
  a.Kel_Unsubscribe = Unsubscribe;
  a.Kel_RegGlobalStructPublishFunc = RegGlobalStructPublishFunc;
}

FakeKel::~FakeKel() {
  kel::api = saved_;
  current = nullptr;
}

std::int64_t FakeKel::Add(FakeSession s) {
  std::lock_guard<std::mutex> lock(mutex);
  const std::int64_t h = ++next_handle;
  sessions[h] = std::move(s);
  return h;
}

FakeSession& FakeKel::operator[](std::int64_t handle) {
  std::lock_guard<std::mutex> lock(mutex);
  return sessions[handle];
}

int FakeKel::Releases(std::int64_t handle) { return (*this)[handle].releases; }

int FakeKel::TotalReleases() {
  std::lock_guard<std::mutex> lock(mutex);
  int n = 0;
  for (const auto& s : sessions) n += s.second.releases;
  return n;
}

std::vector<std::string> FakeKel::Calls() {
  std::lock_guard<std::mutex> lock(mutex);
  return calls;
}

bool FakeKel::DeliverReply(std::int64_t handle) {
  kel::ReplyFn fn = (*this)[handle].reply;
  return fn != nullptr && fn(handle);
}

}  // namespace molra::test
