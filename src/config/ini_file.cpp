#include "config/ini_file.h"

// The only translation unit that uses SimpleIni, so its implementation is compiled here.
#define SI_NO_CONVERSION
#define SI_IMPLEMENTATION
#include <SimpleIni.h>

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "core/context.h"
#include "core/log.h"

namespace molra {

bool ParseIniBool(const char* value, bool dflt) {
  if (value == nullptr || *value == '\0') return dflt;
  switch (value[0]) {
    case '1':
    case 't':
    case 'T':
    case 'y':
    case 'Y':
      return true;
    case '0':
    case 'f':
    case 'F':
    case 'n':
    case 'N':
      return false;
    case 'o':
    case 'O':
      if (value[1] == 'n' || value[1] == 'N') return true;
      if (value[1] == 'f' || value[1] == 'F') return false;
      break;
    default:
      break;
  }
  return dflt;
}

long ParseIniLong(const char* value, long dflt) {
  if (value == nullptr || *value == '\0') return dflt;
  if (std::strlen(value) > 63) return dflt;
  char* end = nullptr;
  long n;
  if (value[0] == '0' && (value[1] == 'x' || value[1] == 'X')) {
    if (value[2] == '\0') return dflt;
    n = std::strtol(value + 2, &end, 16);
  } else {
    n = std::strtol(value, &end, 10);
  }
  if (*end != '\0') return dflt;
  return n;
}

struct IniFile::Impl {
  CSimpleIniA ini{false, false, false};
};

IniFile::IniFile() : impl_(std::make_unique<Impl>()) {}
IniFile::~IniFile() = default;

bool IniFile::Load(const std::string& path) {
  impl_->ini.Reset();
  std::FILE* f = std::fopen(path.c_str(), "rb");
  if (f == nullptr) return false;
  std::vector<char> data;
  bool ok = std::fseek(f, 0, SEEK_END) == 0;
  long size = ok ? std::ftell(f) : -1;
  if (size >= 0 && std::fseek(f, 0, SEEK_SET) == 0) {
    data.resize(static_cast<std::size_t>(size));
    ok = std::fread(data.data(), 1, data.size(), f) == data.size();
  } else {
    ok = false;
  }
  std::fclose(f);
  if (!ok) return false;
  return impl_->ini.LoadData(data.data(), data.size()) >= 0;
}

const char* IniFile::GetString(const char* section, const char* key, const char* dflt) const {
  return impl_->ini.GetValue(section, key, dflt);
}

bool IniFile::GetBool(const char* section, const char* key, bool dflt) const {
  return ParseIniBool(impl_->ini.GetValue(section, key, nullptr), dflt);
}

long IniFile::GetLong(const char* section, const char* key, long dflt) const {
  return ParseIniLong(impl_->ini.GetValue(section, key, nullptr), dflt);
}

std::string ConfigFilePath() { return Host().ProfilePath() + "molra.ini"; }

PushSettings CommInit() {
  PushSettings push;
  IniFile ini;
  ini.Load(ConfigFilePath());
  push.struct_push_msg = ini.GetBool("GLOBAL", "StructPushMsg", false);
  push.confirm_msg_func = ini.GetString("GLOBAL", "ConfirmMsgFunc", "DM0003");
  push.report_msg_func = ini.GetString("GLOBAL", "ReportMsgFunc", "DM0004");
  MOLRA_LOG_INFO("CommInit success. StructPushMsg:{} ConfirmMsgFunc:{} ReportMsgFunc:{}",
                 push.struct_push_msg, push.confirm_msg_func, push.report_msg_func);
  return push;
}

}  // namespace molra
