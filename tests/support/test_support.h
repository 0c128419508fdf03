// Helpers shared by the kit's tests: the simulated transport's control interface, scratch
// directories and reading files.
#pragma once

#include <cstdint>
#include <string>

namespace molra {
class ConnPool;
class CusRegistry;
}  // namespace molra

namespace molra::test {

// The build directory (where kelapi50.dll is): MOLRA_BUILD_DIR, else the directory the test
// program started in. Tests start there.
std::string BuildDir();

// A fresh empty directory under the system's temporary directory.
std::string MakeTempDir();
void ChangeDir(const std::string& dir);
std::string ReadFile(const std::string& path);
void WriteFile(const std::string& path, const std::string& text);
bool FileExists(const std::string& path);
std::string Today();  // "YYYY-MM-DD", local time

// The simulated transport loaded from ./kelapi50.dll (the same module the kit binds).
class Sim {
 public:
  static Sim& Get();
  void* Symbol(const char* name);
  template <typename F>
  F Fn(const char* name) {
    return reinterpret_cast<F>(Symbol(name));
  }
  void Reset();
  std::string CallLog();
  void ClearCallLog();

 private:
  void* module_ = nullptr;
};

// A copy of a value. Members of packed records are often misaligned, and binding a
// reference to one (gtest's assertions take their arguments by reference) is undefined:
// pass V(record.Field) instead.
template <typename T>
T V(T v) {
  return v;
}

// The running kit's connection pool; null without a kit or after SECMOLRA_Exit.
molra::ConnPool* KitPool();
// The running kit's customer registry (SECMOLRA_Init first).
molra::CusRegistry& Customers();

// The kit's last error as (code, message), and its message alone.
std::int64_t LastError(std::string* msg = nullptr);
std::string LastErrorText();

// The kit's log file of today in dir, flushed first.
std::string KitLog(const std::string& dir);

// The GBK bytes of a UTF-8 text: the tests write the kit's texts as they read, and compare
// what the kit hands out byte for byte. Converted by the platform (iconv, or the Windows
// code page 936), independently of the kit's own table.
std::string Gbk(const std::string& utf8);

}  // namespace molra::test
