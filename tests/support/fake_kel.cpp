#include "support/fake_kel.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace molra::test {

FakeKel* FakeKel::current = nullptr;

namespace {

using kel::int32;
using kel::int64;

// Runs `f` on the session under the fake's lock.
template <typename F>
auto With(int64 s, F f) {
  FakeKel& k = *FakeKel::current;
  std::lock_guard<std::mutex> lock(k.mutex);
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

const std::string* Item(const FakeSession& f, int32 id) {
  auto it = f.items.find(id);
  return it == f.items.end() ? nullptr : &it->second;
}

void ReleaseSession(int64 s) {
  With(s, [](FakeSession& f) { ++f.releases; });
}
bool IsStruct(int64 s, int32) {
  return With(s, [](FakeSession& f) { return f.is_struct; });
}
int32 GetCode(int64 s) {
  return With(s, [](FakeSession& f) { return f.code; });
}
int64 GetSessData(int64 s) {
  return With(s, [](FakeSession& f) { return f.data; });
}
const char* GetErrMsg(int64 s, char* buf, int32* len) {
  return With(s, [&](FakeSession& f) { return CopyText(f.message, buf, len); });
}
const char* GetItem(int64 s, int32 id, char* buf, int32* len, int32) {
  return With(s, [&](FakeSession& f) -> const char* {
    const std::string* v = Item(f, id);
    return v == nullptr ? nullptr : CopyText(*v, buf, len);
  });
}
int64 GetLong(int64 s, int32 id, int32) {
  return With(s, [&](FakeSession& f) -> int64 {
    const std::string* v = Item(f, id);
    return v == nullptr ? 0 : std::strtoll(v->c_str(), nullptr, 10);
  });
}
double GetDouble(int64 s, int32 id, int32) {
  return With(s, [&](FakeSession& f) {
    const std::string* v = Item(f, id);
    return v == nullptr ? 0.0 : std::strtod(v->c_str(), nullptr);
  });
}
// The pushed record, field 0: at most *len bytes; *len the bytes copied.
bool GetItemBuf(int64 s, int32 id, char* buf, int32* len, int32) {
  return With(s, [&](FakeSession& f) {
    if (id != 0 || f.body.empty()) return false;
    const std::size_t n =
        std::min(f.body.size(), static_cast<std::size_t>(len != nullptr && *len > 0 ? *len : 0));
    if (buf != nullptr) std::memcpy(buf, f.body.data(), n);
    if (len != nullptr) *len = static_cast<int32>(n);
    return true;
  });
}
const char* GetStructDataEx(int64 s, int32* len, int32) {
  return With(s, [&](FakeSession& f) -> const char* {
    if (len != nullptr) *len = static_cast<int32>(f.answer.size());
    return f.answer.empty() ? nullptr : f.answer.data();
  });
}
const char* GetReqStructData(int64 s, int32* len) {
  return With(s, [&](FakeSession& f) -> const char* {
    if (len != nullptr) *len = f.request ? static_cast<int32>(f.request->size()) : 0;
    return f.request ? f.request->data() : nullptr;
  });
}

}  // namespace

FakeKel::FakeKel() : saved_(kel::api) {
  current = this;
  kel::Api& a = kel::api;
  a.Kel_ReleaseSession = ReleaseSession;
  a.Kel_IsStruct = IsStruct;
  a.Kel_GetCode = GetCode;
  a.Kel_GetSessData = GetSessData;
  a.Kel_GetErrMsg = GetErrMsg;
  a.Kel_GetItem = GetItem;
  a.Kel_GetLong = GetLong;
  a.Kel_GetDouble = GetDouble;
  a.Kel_GetItemBuf = GetItemBuf;
  a.Kel_GetStructDataEx = GetStructDataEx;
  a.Kel_GetReqStructData = GetReqStructData;
}

FakeKel::~FakeKel() {
  kel::api = saved_;
  current = nullptr;
}

std::int64_t FakeKel::Add(FakeSession s) {
  std::lock_guard<std::mutex> lock(mutex);
  const std::int64_t h = ++next_handle_;
  sessions[h] = std::move(s);
  return h;
}

int FakeKel::Releases(std::int64_t handle) {
  std::lock_guard<std::mutex> lock(mutex);
  return sessions[handle].releases;
}

int FakeKel::TotalReleases() {
  std::lock_guard<std::mutex> lock(mutex);
  int n = 0;
  for (const auto& entry : sessions) n += entry.second.releases;
  return n;
}

}  // namespace molra::test
