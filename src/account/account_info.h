// Login of a customer on its connection set, and the node-list query ("LST_KHXX").
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "core/context.h"
#include "core/status.h"
#include "secmolra.h"

namespace KelComm {
class KelConn;
}

namespace molra {

class AccountInfo {
 public:
  // Logs the customer of `info` in on `conn`: resolves the node, sends the login of the set's
  // form, records the customer in the kit's registry as the default of its system type and
  // subscribes its trade messages. The token, also written into `info`; failures are
  // recorded under "AccountInfo::Login" with `info` as account (the node list's under its own
  // name).
  static Result<std::int64_t> Login(Kit& kit, const std::shared_ptr<KelComm::KelConn>& conn,
                                    CusLoginInfo& info);

  class AcctManage {
   public:
    // Appends the customer's nodes of system type 4 to `list`; returns how many. `flag` 0
    // sends the key's exchange short code with the direct form. Failures are recorded under
    // "AccountInfo::AcctManage::GetAccountJDBH".
    static Result<std::int64_t> GetAccountJDBH(const std::string& khh, KelComm::KelConn& conn,
                                               std::vector<CusNodeInfo>& list, int flag);
  };
};

}  // namespace molra
