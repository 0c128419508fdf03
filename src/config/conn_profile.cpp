#include "config/conn_profile.h"

#include <cstring>

#include "api/last_error.h"
#include "config/ini_file.h"

namespace molra {

namespace {
bool IsFourLetterTrue(const char* v) {
  return v != nullptr && std::strlen(v) == 4 && (v[0] | 0x20) == 't' && (v[1] | 0x20) == 'r' &&
         (v[2] | 0x20) == 'u' && (v[3] | 0x20) == 'e';
}
}  // namespace

ConnSectionInfo ReadConnProfile(const IniFile& ini, const char* section, ConnProfile& p) {
  std::memset(&p, 0, sizeof(p));
  auto text = [&](const char* key, const char* dflt = "") { return ini.GetString(section, key, dflt); };
  ConnSectionInfo info;
  info.system_type = ini.GetLong(section, "SystemType", 4);
  CopyField(p.name, text("Name"));
  CopyField(p.auth_name, text("Authname"));
  CopyField(p.auth_pwd, text("Authpwd"));
  CopyField(p.addr, text("addr"));
  const char* trade = text("tradeaddr");
  p.trade_addr_defaulted = trade[0] == '\0';
  CopyField(p.trade_addr, p.trade_addr_defaulted ? text("addr") : trade);
  const char* sub = text("subscribeaddr");
  CopyField(p.subscribe_addr, sub[0] ? sub : p.trade_addr_defaulted ? text("addr") : trade);
  const char* query = text("queryaddr");
  CopyField(p.query_addr, query[0] ? query : p.trade_addr_defaulted ? text("addr") : trade);
  CopyField(p.app_name, text("AppName"));
  CopyField(p.yybbh, text("yybbh", "0"));
  CopyField(p.wtgy, text("wtgy"));
  CopyField(p.node, text("node"));
  CopyField(p.backup, text("backup"));
  CopyField(p.exchange, text("exchange"));
  CopyField(p.cert_file, text("CertFile"));
  CopyField(p.cert_pwd, text("CertPwd"));
  CopyField(p.ca_file, text("CA"));
  CopyField(p.app_ver, text("AppVer"));
  p.use3rd = ini.GetBool(section, "use3rd", true);
  p.use_traders = ini.GetBool(section, "usetraders", false);
  p.cancel_resub = ini.GetBool(section, "cancelkelresub", false);
  info.connect_with_ua = IsFourLetterTrue(text("ConnWithUA", "false"));
  return info;
}

}  // namespace molra
