// Login of a customer on its connection set, and the node-list query ("LST_KHXX").
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "secmolra.h"

namespace KelComm {
class KelConn;
}

namespace molra {

class AccountInfo {
 public:
  // Logs the customer of `info` in on `conn`: resolves the node, sends the login of the
  // set's form, records the customer in the registry as the default of its system type,
  // subscribes its trade messages and measures the server time. Returns the token, or a
  // negative code (also the last error, and copied to `msg` when given).
  static std::int64_t Login(const std::shared_ptr<KelComm::KelConn>& conn, CusLoginInfo& info,
                            std::string* msg);

  class AcctManage {
   public:
    // Appends the customer's nodes of system type 4 to `list`; returns how many, or a
    // negative code. `flag` 0 sends the key's exchange short code with the direct form.
    static std::int64_t GetAccountJDBH(const std::string& khh, KelComm::KelConn& conn,
                                       std::vector<CusNodeInfo>& list, int flag);
  };
};

}  // namespace molra
