#include "comm/customer.h"

#include <utility>
#include <vector>

#include "comm/conn_pool.h"
#include "core/context.h"
#include "core/messages.h"

namespace molra {

namespace {

// The customers this thread found under one generation of the registry.
class ThreadCustomers {
 public:
  CustomerRef Find(std::uint64_t generation, const std::string& khh) {
    if (generation != generation_) {
      Clear();
      generation_ = generation;
      return nullptr;
    }
    for (const Entry& e : found_) {
      if (e.khh == khh) return e.customer;
    }
    return nullptr;
  }
  void Add(const std::string& khh, CustomerRef customer) {
    if (found_.size() >= kMaxCustomers) Clear();
    found_.push_back(Entry{khh, std::move(customer)});
  }
  // Drops the copies (and with them the sets they hold).
  void Clear() {
    found_.clear();
    generation_ = 0;
  }

 private:
  static constexpr std::size_t kMaxCustomers = 64;  // a host with more starts again
  struct Entry {
    std::string khh;
    CustomerRef customer;
  };
  std::uint64_t generation_ = 0;  // the registry's are never 0
  std::vector<Entry> found_;
};

thread_local ThreadCustomers t_customers;

// Read under the registry's locks when the thread has no copy for the generation.
Result<CustomerRef> ReadCustomer(const Kit& kit, std::shared_ptr<KelComm::KelConn> set,
                                 const std::string& khh) {
  std::shared_ptr<const CusRecord> record = kit.customers.Find(set->system_type, khh);
  if (!record) return Failure{SECMOLRA_ERR_NOT_LOGGED_IN, msg::kNotLoggedIn};
  const std::int64_t host_token = kit.customers.tokens.Get(khh);
  const std::int64_t token = host_token >= 1 ? host_token : record->token;
  const std::int32_t node_id = kit.customers.nodes.Get(khh);
  return std::make_shared<const Customer>(
      Customer{std::move(set), std::move(record), token, node_id});
}

}  // namespace

Result<CustomerRef> FindCustomer(const std::string& khh) {
  Kit* kit = CurrentKit();
  ConnPool* pool = kit != nullptr ? kit->pool() : nullptr;
  if (pool == nullptr) {
    t_customers.Clear();
    return Failure{SECMOLRA_ERR_NOT_LOGGED_IN, msg::kNotLoggedIn};
  }
  // Read before the tables: a change after this read moves the generation, and the next call
  // reads again.
  const std::uint64_t generation = kit->customers.Generation();
  CustomerRef found = t_customers.Find(generation, khh);
  std::shared_ptr<KelComm::KelConn> set = found ? nullptr : pool->Find(khh);
  const KelComm::KelConn* checked = found ? found->conn.get() : set.get();
  if (checked == nullptr) return Failure{kConnectionFailure, msg::kNotConnected};
  if (Status usable = CheckConnections(*checked); !usable) return usable.TakeFailure();
  if (found) return found;
  Result<CustomerRef> read = ReadCustomer(*kit, std::move(set), khh);
  if (read) t_customers.Add(khh, *read);
  return read;
}

}  // namespace molra
