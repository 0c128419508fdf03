#include "config/conn_profile.h"

#include <cstring>

#include "config/ini_file.h"
#include "core/text.h"

namespace molra {

namespace {

// ConnWithUA is compared as text, not by the boolean rules: "1", "yes" or "on" leave it off.
bool IsFourLetterTrue(const char* v) {
  if (v == nullptr || std::strlen(v) != 4) return false;
  static const char kTrue[] = "true";
  for (int i = 0; i < 4; ++i) {
    char c = v[i];
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    if (c != kTrue[i]) return false;
  }
  return true;
}

const char* OrElse(const char* value, const char* fallback) {
  return value[0] != '\0' ? value : fallback;
}

}  // namespace

ConnSectionInfo ReadConnProfile(const IniFile& ini, const char* section, ConnProfile& p) {
  std::memset(&p, 0, sizeof(p));
  auto text = [&](const char* key, const char* dflt = "") {
    return ini.GetString(section, key, dflt);
  };
  ConnSectionInfo info;
  info.system_type = ini.GetLong(section, "SystemType", 4);

  CopyField(p.name, text("Name"));
  CopyField(p.auth_name, text("Authname"));
  CopyField(p.auth_pwd, text("Authpwd"));

  const char* addr = text("addr");
  const char* trade = text("tradeaddr");
  p.trade_addr_defaulted = trade[0] == '\0';
  trade = OrElse(trade, addr);
  CopyField(p.addr, addr);
  CopyField(p.trade_addr, trade);
  CopyField(p.subscribe_addr, OrElse(text("subscribeaddr"), trade));
  CopyField(p.query_addr, OrElse(text("queryaddr"), trade));

  CopyField(p.app_name, text("AppName"));
  CopyField(p.wtgy, text("wtgy"));
  CopyField(p.backup, text("backup"));
  CopyField(p.exchange, text("exchange"));
  CopyField(p.cert_file, text("CertFile"));
  CopyField(p.cert_pwd, text("CertPwd"));

  p.use3rd = ini.GetBool(section, "use3rd", true);
  p.use_traders = ini.GetBool(section, "usetraders", false);
  p.cancel_resub = ini.GetBool(section, "cancelkelresub", false);
  info.connect_with_ua = IsFourLetterTrue(text("ConnWithUA", "false"));
  return info;
}

ConnSectionInfo ReadConnSection(const char* section, ConnProfile& profile) {
  IniFile ini;
  ini.Load(ConfigFilePath());  // no file: every key takes its default
  return ReadConnProfile(ini, section, profile);
}

}  // namespace molra
