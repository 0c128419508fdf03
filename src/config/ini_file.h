// "molra.ini": found in the profile path with no separator added, loaded afresh at every
// reading, values kept as GBK bytes, sections and keys matched without regard to case.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "core/context.h"

namespace molra {

// Boolean rule: "1", "t", "T", "y", "Y" or "on" (any case) are true; "0", "f", "F", "n",
// "N" or "of"/"off" (any case) are false; anything else, empty or missing is the default.
bool ParseIniBool(const char* value, bool dflt);
// Integer rule: decimal, or hexadecimal after "0x"/"0X"; empty, longer than 63 characters,
// "0x" alone or trailing characters after the number give the default.
long ParseIniLong(const char* value, long dflt);

class IniFile {
 public:
  IniFile();
  ~IniFile();
  IniFile(const IniFile&) = delete;
  IniFile& operator=(const IniFile&) = delete;

  // Reads the whole file in binary mode and parses it. A file that cannot be opened or
  // read leaves the object empty (every key then takes its default) and returns false.
  bool Load(const std::string& path);

  const char* GetString(const char* section, const char* key, const char* dflt) const;
  bool GetBool(const char* section, const char* key, bool dflt) const;
  long GetLong(const char* section, const char* key, long dflt) const;

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

// Full path of "molra.ini": the profile path followed directly by the file name.
std::string ConfigFilePath();

// Reads the GLOBAL section (the push settings) and logs it; a missing file gives the
// defaults.
PushSettings CommInit();

}  // namespace molra
