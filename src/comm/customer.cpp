#include "comm/customer.h"

#include "comm/conn_pool.h"
#include "core/context.h"
#include "core/messages.h"

namespace molra {

Result<Customer> FindCustomer(const std::string& khh) {
  Kit* kit = CurrentKit();
  ConnPool* pool = kit != nullptr ? kit->pool() : nullptr;
  if (pool == nullptr) return Failure{SECMOLRA_ERR_NOT_LOGGED_IN, msg::kNotLoggedIn};
  Result<std::shared_ptr<KelComm::KelConn>> conn = pool->GetConnection(khh, "");
  if (!conn) return conn.TakeFailure();
  Customer c;
  c.conn = std::move(*conn);
  c.record = kit->customers.Find(c.conn->system_type, khh);
  if (!c.record) return Failure{SECMOLRA_ERR_NOT_LOGGED_IN, msg::kNotLoggedIn};
  const std::int64_t host_token = kit->customers.tokens.Get(khh);
  c.token = host_token >= 1 ? host_token : c.record->token;
  c.node_id = kit->customers.nodes.Get(khh);
  return c;
}

}  // namespace molra
