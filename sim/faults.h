// Faults injected through the control interface. A counted fault fails the next `count`
// calls; -1 fails every call until cleared; 0 clears it.
#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <string>

namespace sim {

class Fault {
 public:
  void Set(std::int32_t count) {
    std::lock_guard<std::mutex> lock(m_);
    count_ = count;
  }
  // Consumes one failure; true when this call must fail.
  bool Hit() {
    std::lock_guard<std::mutex> lock(m_);
    return Consume(count_);
  }

 protected:
  static bool Consume(std::int32_t& n) {
    if (n == 0) return false;
    if (n > 0) --n;
    return true;
  }
  std::mutex m_;
  std::int32_t count_ = 0;
};

// A fault per address, plus one for any address.
class AddrFault : public Fault {
 public:
  void Set(const char* addr, std::int32_t count) {
    std::lock_guard<std::mutex> lock(m_);
    if (addr == nullptr)
      count_ = count;
    else
      per_addr_[addr] = count;
  }
  bool Hit(const std::string& addr) {
    std::lock_guard<std::mutex> lock(m_);
    auto it = per_addr_.find(addr);
    if (it != per_addr_.end() && Consume(it->second)) return true;
    return Consume(count_);
  }
  void Clear() {
    std::lock_guard<std::mutex> lock(m_);
    count_ = 0;
    per_addr_.clear();
  }

 private:
  std::map<std::string, std::int32_t> per_addr_;
};

struct Faults {
  AddrFault connect;
  Fault bind, alloc, run, write;
  void Clear() {
    connect.Clear();
    bind.Set(0);
    alloc.Set(0);
    run.Set(0);
    write.Set(0);
  }
};

Faults& faults();

// Buffer rules of the interface: text copies at most cap-1 bytes and a NUL and reports the
// full length; binary copies at most cap bytes and reports the bytes copied.
const char* CopyText(const std::string& s, char* buf, std::int32_t* len);
bool CopyBinary(const std::string& s, char* buf, std::int32_t* len);

}  // namespace sim
