// The configuration reader: "molra.ini" of any content through IniFile, every connection
// section through ReadConnProfile, and every value through the boolean and integer rules.
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <string>

#include "config/conn_profile.h"
#include "config/ini_file.h"

namespace {

std::string g_path;

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  g_path = "/tmp/molra-config-fuzz-" + std::to_string(::getpid()) + ".ini";
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // The reader's own path: the file read from disk in binary mode.
  std::FILE* f = std::fopen(g_path.c_str(), "wb");
  if (f == nullptr) return 0;
  std::fwrite(data, 1, size, f);
  std::fclose(f);

  molra::IniFile ini;
  ini.Load(g_path);
  static const char* const kSections[] = {"GLOBAL", "SIM", "T", "BK", ""};
  static const char* const kKeys[] = {"addr",          "tradeaddr", "SystemType", "usetraders",
                                      "StructPushMsg", "backup",    "exchange",   "Name"};
  volatile unsigned long sink = 0;  // keeps the results alive; unsigned: wraps freely
  for (const char* section : kSections) {
    molra::ConnProfile profile;
    molra::ConnSectionInfo info = molra::ReadConnProfile(ini, section, profile);
    sink = sink + static_cast<unsigned long>(info.system_type) + profile.use3rd +
           static_cast<unsigned char>(profile.exchange[0]);
    for (const char* key : kKeys) {
      const char* v = ini.GetString(section, key, nullptr);
      sink = sink + static_cast<unsigned long>(molra::ParseIniLong(v, -7)) +
             molra::ParseIniBool(v, true);
      sink = sink + static_cast<unsigned long>(ini.GetLong(section, key, 3)) +
             ini.GetBool(section, key, false);
    }
  }
  // The rules on the raw bytes as one value too (cut at the first NUL).
  const std::string raw(reinterpret_cast<const char*>(data), size);
  sink = sink + static_cast<unsigned long>(molra::ParseIniLong(raw.c_str(), 0)) +
         molra::ParseIniBool(raw.c_str(), false);
  return 0;
}
