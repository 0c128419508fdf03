// The registry of logged-in customers and the node and token tables. Each table has its own
// mutex, held for one map operation only; no two are held at once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "core/errors.h"

namespace KelComm {
class KelConn;
}

namespace molra {

#pragma pack(push, 1)
struct CusRecord {
  char khh[13];
  char password[40];
  std::int64_t reserved;
  std::int64_t token;
  std::int64_t wtfs_number;
  char wtfs[10];
  std::int32_t node_id;
  unsigned char state[128];  // zeroed at creation; filled by the operations that use it
};
#pragma pack(pop)
static_assert(sizeof(CusRecord) == 219, "CusRecord is 219 bytes");
static_assert(offsetof(CusRecord, token) == 61, "token follows the reserved int64");
static_assert(offsetof(CusRecord, node_id) == 87, "node id follows the WTFS text");

class CusNodeTable {
 public:
  std::int32_t Get(const std::string& khh) const;  // -1 when absent
  void Set(const std::string& khh, std::int32_t node_id);

 private:
  mutable std::mutex mutex_;
  std::map<std::string, std::int32_t> map_;
};

class CusTokenTable {
 public:
  std::int64_t Get(const std::string& khh) const;  // -1 when absent
  void Set(const std::string& khh, std::int64_t token);

 private:
  mutable std::mutex mutex_;
  std::map<std::string, std::int64_t> map_;
};

class CusRegistry {
 public:
  // Half (a): records keyed by (system type, KHH).
  std::shared_ptr<CusRecord> Find(std::int32_t system_type, const std::string& khh) const;
  void Register(std::int32_t system_type, const std::string& khh, std::shared_ptr<CusRecord> rec);
  void Remove(std::int32_t system_type, const std::string& khh);

  // Half (b): the default customer. Type 0 stands for the last customer that logged in.
  std::string DefaultKhh(std::int32_t system_type) const;
  std::shared_ptr<KelComm::KelConn> DefaultConn(std::int32_t system_type) const;
  void SetDefault(std::int32_t system_type, const std::string& khh,
                  std::shared_ptr<KelComm::KelConn> conn);
  // Clears the default of `system_type` when it is `khh`.
  void ClearDefault(std::int32_t system_type, const std::string& khh);

 private:
  mutable std::mutex records_mutex_;
  std::map<std::pair<std::int32_t, std::string>, std::shared_ptr<CusRecord>> records_;
  mutable std::mutex defaults_mutex_;
  std::string default_khh_;
  std::map<std::int32_t, std::string> default_khh_by_type_;
  std::map<std::int32_t, std::shared_ptr<KelComm::KelConn>> default_conn_by_type_;
  std::shared_ptr<KelComm::KelConn> default_conn_;
};

CusRegistry& Registry();
CusNodeTable& NodeTable();
CusTokenTable& TokenTable();
void CreateCusRegistry();

// Takes a customer back to not logged in; always 1.
std::int64_t ResetCustomer(const std::string& khh);

// A logged-in customer as business operations need it.
struct Customer {
  std::shared_ptr<KelComm::KelConn> conn;
  std::shared_ptr<CusRecord> record;
};

// Finds the logged-in customer `khh`. On failure returns false and fills `err` with what
// the caller records under its own name: the connection manager's staged error when the
// customer has no connection set, -203 "客户未登录" when it is not logged in.
bool FindCustomer(const std::string& khh, Customer& out, ErrorRecord& err);
// The token of a request: the token table's entry (SECMOLRA_SetCusToken) when set, else the
// record's token from login.
std::int64_t CustomerToken(const Customer& c, const std::string& khh);
// The node id of a request: the node table's entry of khh.
std::int32_t CustomerNodeId(const std::string& khh);

}  // namespace molra
