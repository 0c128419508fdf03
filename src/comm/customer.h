// A logged-in customer as its requests need it, found in one look-up: its connection set, its
// login record, and the token and node its requests carry.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "core/customers.h"
#include "core/status.h"

namespace KelComm {
class KelConn;
}

namespace molra {

// What one generation of the registry says of a customer; never changed once built.
struct Customer {
  std::shared_ptr<KelComm::KelConn> conn;
  std::shared_ptr<const CusRecord> record;
  std::int64_t token = -1;    // the host's (SECMOLRA_SetCusToken) when set, else the login's
  std::int32_t node_id = -1;  // the customer's trade node; -1 when none is known
};
using CustomerRef = std::shared_ptr<const Customer>;

// The logged-in customer `khh`. Fails with the connection manager's reason (code 0) when its
// connection set is missing or unusable, and with -203 "客户未登录" when it is not logged in
// (also before SECMOLRA_Init and after SECMOLRA_Exit). The set's connections are checked on
// every call; the rest is read once per thread and registry generation, then taken from the
// thread's copy without a lock.
Result<CustomerRef> FindCustomer(const std::string& khh);

}  // namespace molra
