#include "support/test_support.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <stdexcept>
#include <vector>

#if defined(_WIN32)
#include <windows.h>
#else
#include <iconv.h>
#endif

#include "core/context.h"
#include "core/log.h"
#include "secmolra.h"
#include "util/dynlib.h"

namespace fs = std::filesystem;

namespace molra::test {

std::string BuildDir() {
  // Fixed at the first call (main, started in the build directory), so later changes of the
  // working directory do not move it. The Windows build under Wine gets no MOLRA_BUILD_DIR:
  // the emulator's working directory is the build directory in the program's own terms.
  static const std::string dir = [] {
    const char* d = std::getenv("MOLRA_BUILD_DIR");
    return d && *d ? std::string(d) : fs::current_path().string();
  }();
  return dir;
}

std::string MakeTempDir() {
  static std::mt19937_64 rng(
      std::random_device{}() ^
      static_cast<unsigned long long>(std::chrono::steady_clock::now().time_since_epoch().count()));
  fs::path p = fs::temp_directory_path() / ("molra-test-" + std::to_string(rng()));
  fs::create_directories(p);
  return p.string();
}

void ChangeDir(const std::string& dir) { fs::current_path(dir); }

std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream ss;
  ss << in.rdbuf();
  return ss.str();
}

void WriteFile(const std::string& path, const std::string& text) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out << text;
}

bool FileExists(const std::string& path) { return fs::exists(path); }

std::string Today() {
  std::time_t t = std::time(nullptr);
  std::tm tm{};
#if defined(_WIN32)
  localtime_s(&tm, &t);
#else
  localtime_r(&t, &tm);
#endif
  char buf[16];
  std::strftime(buf, sizeof buf, "%Y-%m-%d", &tm);
  return buf;
}

Sim& Sim::Get() {
  static Sim sim;
  if (sim.module_ == nullptr) {
    sim.module_ = molra::LoadDynamicLibrary((BuildDir() + "/kelapi50.dll").c_str());
    if (sim.module_ == nullptr) throw std::runtime_error("cannot load the simulated transport");
  }
  return sim;
}

void* Sim::Symbol(const char* name) {
  void* p = molra::FindSymbol(module_, name);
  if (p == nullptr) throw std::runtime_error(std::string("simulated transport lacks ") + name);
  return p;
}

void Sim::Reset() { Fn<void (*)()>("KelSim_Reset")(); }

std::string Sim::CallLog() {
  auto fn = Fn<int32_t (*)(char*, int32_t)>("KelSim_CallLog");
  int32_t n = fn(nullptr, 0);
  std::vector<char> buf(static_cast<std::size_t>(n) + 1);
  fn(buf.data(), n + 1);
  return std::string(buf.data(), static_cast<std::size_t>(n));
}

void Sim::ClearCallLog() { Fn<void (*)()>("KelSim_ClearCallLog")(); }

CusRegistry& Customers() { return CurrentKit()->customers; }

ConnPool* KitPool() {
  Kit* kit = CurrentKit();
  return kit != nullptr ? kit->pool() : nullptr;
}

std::int64_t LastError(std::string* msg) {
  std::vector<char> buf(1 << 20);
  std::int64_t code = SECMOLRA_GetLastError(buf.data());
  if (msg) *msg = buf.data();
  return code;
}

std::string LastErrorText() {
  std::string m;
  LastError(&m);
  return m;
}

std::string KitLog(const std::string& dir) {
  if (auto* l = g_logger.load()) l->flush();
  return ReadFile(dir + "/molra_" + Today() + ".log");
}

std::string Gbk(const std::string& utf8) {
#if defined(_WIN32)
  const int wide_len = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, utf8.data(),
                                           static_cast<int>(utf8.size()), nullptr, 0);
  std::wstring wide(static_cast<std::size_t>(wide_len), L'\0');
  MultiByteToWideChar(CP_UTF8, 0, utf8.data(), static_cast<int>(utf8.size()), wide.data(),
                      wide_len);
  const int len = WideCharToMultiByte(936, 0, wide.data(), wide_len, nullptr, 0, nullptr, nullptr);
  std::string out(static_cast<std::size_t>(len), '\0');
  WideCharToMultiByte(936, 0, wide.data(), wide_len, out.data(), len, nullptr, nullptr);
  if (utf8.size() > 0 && (wide_len == 0 || len == 0))
    throw std::runtime_error("no GBK for " + utf8);
  return out;
#else
  iconv_t cd = iconv_open("GBK", "UTF-8");
  if (cd == reinterpret_cast<iconv_t>(-1)) throw std::runtime_error("iconv lacks GBK");
  std::string in = utf8;
  std::string out(utf8.size() * 2 + 1, '\0');
  char* src = in.data();
  char* dst = out.data();
  std::size_t src_left = in.size(), dst_left = out.size();
  const std::size_t r = iconv(cd, &src, &src_left, &dst, &dst_left);
  iconv_close(cd);
  if (r == static_cast<std::size_t>(-1)) throw std::runtime_error("no GBK for " + utf8);
  out.resize(out.size() - dst_left);
  return out;
#endif
}

}  // namespace molra::test
