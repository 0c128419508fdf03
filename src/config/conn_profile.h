// One connection section of "molra.ini" (a connection key, or the backup it names).
#pragma once

#include <cstdint>

namespace molra {

class IniFile;

// The keys the kit uses. Character fields are bounded copies: a value as long as the field
// keeps no NUL.
struct ConnProfile {
  char name[33];              // Name: passed to the connection-event callback
  char auth_name[64];         // Authname: user given to Kel_Connect
  char auth_pwd[128];         // Authpwd
  char addr[512];             // addr: management connection
  char trade_addr[512];       // tradeaddr; addr when empty
  char subscribe_addr[512];   // subscribeaddr; the trade address when empty
  char query_addr[512];       // queryaddr; the trade address when empty
  char app_name[64];          // AppName; also the text sent as field 1264 at login
  char wtgy[16];              // wtgy: entrust teller, the operator code of the authentication login
  char backup[20];            // backup: name of the backup section
  char exchange[3];           // exchange: the short code sent as field 599 (3 bytes kept)
  bool use3rd;                // use3rd, default true: direct login form
  bool use_traders;           // usetraders, default false: no customer binding
  bool trade_addr_defaulted;  // tradeaddr was empty and addr was used
  bool cancel_resub;          // cancelkelresub, default false
  char cert_file[512];        // CertFile; empty: no certificate
  char cert_pwd[128];         // CertPwd
};

// What reading one section yields besides the profile itself.
struct ConnSectionInfo {
  long system_type = 4;          // SystemType, default 4
  bool connect_with_ua = false;  // ConnWithUA: only a four-letter "true" in any case
};

// Zeroes the profile and fills it from `section` with every key's default.
ConnSectionInfo ReadConnProfile(const IniFile& ini, const char* section, ConnProfile& profile);
// The same from a fresh load of "molra.ini"; a file that cannot be read gives the defaults.
ConnSectionInfo ReadConnSection(const char* section, ConnProfile& profile);

}  // namespace molra
