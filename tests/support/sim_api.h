// For the tests that drive the simulated transport directly: its Kel_ entry points, looked
// up in ./kelapi50.dll by name, and its control functions (kelsim.h) through SIM_FN.
#pragma once

#include <string>

#include "comm/kel_api.h"
#include "kelsim.h"
#include "support/test_support.h"

namespace molra::test {

inline const kel::Api& SimKel() {
  static const kel::Api api = [] {
    kel::Api a;
    void** slots = reinterpret_cast<void**>(&a);
    for (int i = 0; i < kel::kEntryPointCount; ++i)
      slots[i] = Sim::Get().Symbol(kel::kEntryPointNames[i]);
    return a;
  }();
  return api;
}

}  // namespace molra::test

// A control function of the simulated transport, typed from kelsim.h.
#define SIM_FN(name) (::molra::test::Sim::Get().Fn<decltype(&name)>(#name))

#include <cstring>
#include <utility>
#include <vector>

namespace molra::test {

// A packed request block: head (function, flag 1, token, KHH, version) and typed writes.
class SimBlock {
 public:
  SimBlock(int func, std::size_t size, kel::int64 token, const std::string& khh) : b_(size, '\0') {
    Int(0, 2, func);
    Int(2, 1, 1);
    Int(3, 8, token);
    Text(13, 13, khh);
    Int(26, 4, 20200728);
  }
  SimBlock& Int(std::size_t off, int width, long long v) {
    for (int i = 0; i < width; ++i)
      b_[off + i] = static_cast<char>((static_cast<unsigned long long>(v) >> (8 * i)) & 0xff);
    return *this;
  }
  SimBlock& Double(std::size_t off, double d) {
    long long v;
    std::memcpy(&v, &d, 8);
    return Int(off, 8, v);
  }
  SimBlock& Text(std::size_t off, std::size_t width, const std::string& s) {
    for (std::size_t i = 0; i < width; ++i) b_[off + i] = i < s.size() ? s[i] : '\0';
    return *this;
  }
  const std::string& bytes() const { return b_; }

 private:
  std::string b_;
};

inline long long ReadInt(const std::string& b, std::size_t off, int width) {
  unsigned long long v = 0;
  for (int i = 0; i < width && off + i < b.size(); ++i)
    v |= static_cast<unsigned long long>(static_cast<unsigned char>(b[off + i])) << (8 * i);
  if (width < 8 && (v >> (8 * width - 1)) & 1) v |= ~0ULL << (8 * width);
  return static_cast<long long>(v);
}
inline double ReadDouble(const std::string& b, std::size_t off) {
  long long v = ReadInt(b, off, 8);
  double d;
  std::memcpy(&d, &v, 8);
  return d;
}
inline std::string ReadText(const std::string& b, std::size_t off) {
  return std::string(b.c_str() + off);
}

// Drives the simulated transport as a client: one connection, synchronous requests.
class SimClient {
 public:
  explicit SimClient(const char* addr = "127.0.0.1:9102")
      : conn(SimKel().Kel_Connect(addr, "", "", 10)) {}
  ~SimClient() {
    if (s_) SimKel().Kel_ReleaseSession(s_);
  }

  // A key/value request; the answer stays readable through session() until the next request.
  bool Kv(const std::string& func, const std::vector<std::pair<int, std::string>>& fields,
          int node = 0) {
    Fresh();
    const kel::Api& k = SimKel();
    k.Kel_SetNodeId(s_, node);
    k.Kel_CreateHead(s_, func.c_str());
    for (const auto& [id, v] : fields) k.Kel_SetItem(s_, id, v.c_str());
    return k.Kel_Run(s_);
  }
  // A block request; returns the answer block ("" when the answer has none).
  std::string Run(const SimBlock& b, int node = 0) {
    Fresh();
    const kel::Api& k = SimKel();
    k.Kel_SetNodeId(s_, node);
    k.Kel_SetStructData(s_, b.bytes().data(), static_cast<kel::int32>(b.bytes().size()));
    if (!k.Kel_Run(s_)) return std::string();
    kel::int32 n = 0;
    const char* p = k.Kel_GetStructDataEx(s_, &n, -1);
    return p ? std::string(p, static_cast<std::size_t>(n)) : std::string();
  }
  // Logs in with the direct form; the token, or the answer's code when it is below 1.
  kel::int64 Login(const std::string& khh, const std::string& pwd, int node = 0) {
    char buf[1024] = {};
    std::strncpy(buf, pwd.c_str(), sizeof buf - 1);
    kel::int32 len = sizeof buf;
    SimKel().Kel_UniEncode3rd(khh.c_str(), buf, &len);
    if (!Kv("610301", {{605, khh}, {598, buf}, {781, "6"}}, node)) return -9999;
    kel::int32 code = Code();
    return code < 1 ? code : Long(1600);
  }
  kel::int32 Code() { return SimKel().Kel_GetCode(s_); }
  kel::int32 Count() { return SimKel().Kel_GetCount(s_); }
  kel::int64 Long(int id, int row = -1) { return SimKel().Kel_GetLong(s_, id, row); }
  double Double(int id, int row = -1) { return SimKel().Kel_GetDouble(s_, id, row); }
  std::string Text(int id, int row = -1) {
    char buf[512];
    kel::int32 len = sizeof buf;
    const char* p = SimKel().Kel_GetItem(s_, id, buf, &len, row);
    return p ? p : "(absent)";
  }
  std::string Msg() {
    char buf[512];
    kel::int32 len = sizeof buf;
    SimKel().Kel_GetErrMsg(s_, buf, &len);
    return buf;
  }
  kel::int64 session() const { return s_; }

  kel::int64 conn;

 private:
  void Fresh() {
    if (s_) SimKel().Kel_ReleaseSession(s_);
    s_ = SimKel().Kel_AllocateSession(conn);
  }
  kel::int64 s_ = 0;
};

}  // namespace molra::test
