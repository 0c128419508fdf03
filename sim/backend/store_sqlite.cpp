// State files in SQLite. The file is opened in exclusive locking mode (one process at a time)
// with a write-ahead log and synchronous=NORMAL: a committed transaction survives the process
// being killed. A file that is not an SQLite database, or one that holds other tables, is
// refused before anything is written to it.
#include <sqlite3.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <sstream>
#include <variant>
#include <vector>

#include "store.h"

namespace sim {
namespace {

constexpr const char* kFormat = "molra simulated back end, state 1";

constexpr const char* kSchema = R"(
CREATE TABLE sim_meta(key TEXT PRIMARY KEY, value TEXT NOT NULL);
CREATE TABLE sim_customers(khh TEXT PRIMARY KEY, password, name, zjzh, gdh_sh, gdh_sz, nodes, funds, token_text,
  bad_fund_row, trade_pwd, fund_pwd, token, balance, frozen, day_start, node_alloc, node_ratio);
CREATE TABLE sim_positions(khh, jys, zqdm, gdh, balance, sellable, cost, PRIMARY KEY(khh, jys, zqdm));
CREATE TABLE sim_orders(wth INTEGER PRIMARY KEY, khh, func, jys, gdh, zqdm, kfsbdbh, wtsj, jylb, wtsl, wtjg, ddlx,
  wtpch, side, freeze_price, frozen, matched, matched_amount, matched_milli, commission, withdrawn, sbjg, jgsm, cxbz,
  cxwth, matchable);
CREATE TABLE sim_matches(cjbh TEXT PRIMARY KEY, seq, khh, jys, gdh, zqdm, kfsbdbh, cjsj, wth, jylb, qty, price, amount,
  fees, qszj);
CREATE TABLE sim_securities(jys, zqdm, name, kind, tick, lot, limit_ratio, volatility, prev_close, last, volume,
  turnover, liquidity, levels, PRIMARY KEY(jys, zqdm));
)";

using Value = std::variant<std::int64_t, double, std::string>;
using Values = std::vector<Value>;

std::string Image(const Values& v) {
  std::ostringstream out;
  out.precision(17);
  for (const Value& x : v) {
    std::visit([&](const auto& a) { out << a; }, x);
    out << '\x1f';
  }
  return out.str();
}

class Stmt {
 public:
  Stmt(sqlite3* db, const char* sql) { sqlite3_prepare_v2(db, sql, -1, &s_, nullptr); }
  ~Stmt() { sqlite3_finalize(s_); }
  Stmt(const Stmt&) = delete;
  Stmt& operator=(const Stmt&) = delete;
  bool ok() const { return s_ != nullptr; }
  Stmt& Bind(const Values& v) {
    sqlite3_reset(s_);
    for (std::size_t i = 0; i < v.size(); ++i) {
      int at = static_cast<int>(i) + 1;
      if (const auto* n = std::get_if<std::int64_t>(&v[i])) {
        sqlite3_bind_int64(s_, at, *n);
      } else if (const auto* d = std::get_if<double>(&v[i])) {
        sqlite3_bind_double(s_, at, *d);
      } else {
        const auto& t = std::get<std::string>(v[i]);
        sqlite3_bind_text(s_, at, t.data(), static_cast<int>(t.size()), SQLITE_TRANSIENT);
      }
    }
    return *this;
  }
  // Binds the values and runs the statement to its end; false on an error.
  bool Run(const Values& v) {
    Bind(v);
    int rc;
    while ((rc = sqlite3_step(s_)) == SQLITE_ROW) {
    }
    return rc == SQLITE_DONE;
  }
  bool Row() { return sqlite3_step(s_) == SQLITE_ROW; }
  std::int64_t Int(int i) { return sqlite3_column_int64(s_, i); }
  double Real(int i) { return sqlite3_column_double(s_, i); }
  std::string Text(int i) {
    const unsigned char* t = sqlite3_column_text(s_, i);
    return t ? std::string(reinterpret_cast<const char*>(t),
                           static_cast<std::size_t>(sqlite3_column_bytes(s_, i)))
             : "";
  }

 private:
  sqlite3_stmt* s_ = nullptr;
};

// "id:value,id:value" for the node maps, "price:volume ..." for the book.
template <typename K, typename V>
std::string Pairs(const std::map<K, V>& m) {
  std::ostringstream out;
  out.precision(17);
  for (const auto& [k, v] : m) out << k << ':' << v << ',';
  return out.str();
}
template <typename K, typename V>
std::map<K, V> ParsePairs(const std::string& text) {
  std::map<K, V> m;
  std::istringstream in(text);
  K k;
  V v;
  char colon, comma;
  while (in >> k >> colon >> v >> comma) m[k] = v;
  return m;
}
std::string BookText(const Security& s) {
  std::ostringstream out;
  out.precision(17);
  for (const Levels* side : {&s.bids, &s.asks})
    for (const Level& lv : *side) out << lv.price << ' ' << lv.volume << ' ';
  return out.str();
}
void ReadBook(const std::string& text, Security& s) {
  std::istringstream in(text);
  for (Levels* side : {&s.bids, &s.asks})
    for (Level& lv : *side) in >> lv.price >> lv.volume;
}
std::string NodesText(const std::vector<NodeCfg>& nodes) {
  std::string s;
  for (const auto& n : nodes)
    s += std::to_string(n.node_id) + ":" + std::to_string(n.system_type) + ",";
  return s;
}
std::vector<NodeCfg> ParseNodesText(const std::string& text) {
  std::vector<NodeCfg> out;
  for (const auto& [id, type] : ParsePairs<std::int32_t, std::int32_t>(text))
    out.push_back({id, type});
  return out;
}

Values CustomerRow(const Customer& c) {
  const CustomerCfg& k = c.cfg;
  return {k.khh,
          k.password,
          k.name,
          k.zjzh,
          k.gdh_sh,
          k.gdh_sz,
          NodesText(k.nodes),
          k.funds,
          k.token_text,
          std::int64_t{k.bad_fund_row},
          c.trade_pwd,
          c.fund_pwd,
          c.token,
          c.balance,
          c.frozen,
          c.day_start,
          Pairs(c.node_alloc),
          Pairs(c.node_ratio)};
}
void ReadCustomer(Stmt& q, Customer& c) {
  CustomerCfg& k = c.cfg;
  k.khh = q.Text(0), k.password = q.Text(1), k.name = q.Text(2), k.zjzh = q.Text(3),
  k.gdh_sh = q.Text(4);
  k.gdh_sz = q.Text(5), k.nodes = ParseNodesText(q.Text(6)), k.funds = q.Real(7),
  k.token_text = q.Text(8);
  k.bad_fund_row = q.Int(9) != 0;
  c.trade_pwd = q.Text(10), c.fund_pwd = q.Text(11), c.token = q.Int(12), c.balance = q.Real(13);
  c.frozen = q.Real(14), c.day_start = q.Real(15);
  c.node_alloc = ParsePairs<std::int32_t, double>(q.Text(16));
  c.node_ratio = ParsePairs<std::int32_t, double>(q.Text(17));
}
std::vector<Values> PositionRows(const Customer& c) {
  std::vector<Values> rows;
  for (const Position& p : c.positions)
    rows.push_back({c.cfg.khh, p.jys, p.zqdm, p.gdh, p.balance, p.sellable, p.cost});
  return rows;
}

Values OrderRow(const Order& o) {
  return {o.wth,
          o.khh,
          std::int64_t{o.func},
          o.jys,
          o.gdh,
          o.zqdm,
          o.kfsbdbh,
          o.wtsj,
          std::int64_t{o.jylb},
          o.wtsl,
          o.wtjg,
          std::int64_t{o.ddlx},
          o.wtpch,
          static_cast<std::int64_t>(o.side),
          o.freeze_price,
          o.frozen,
          o.matched,
          o.matched_amount,
          o.matched_milli,
          o.commission,
          o.withdrawn,
          std::int64_t{o.sbjg},
          o.jgsm,
          o.cxbz,
          o.cxwth,
          std::int64_t{o.matchable}};
}
Order ReadOrder(Stmt& q) {
  Order o;
  o.wth = q.Int(0), o.khh = q.Text(1), o.func = static_cast<std::int32_t>(q.Int(2)),
  o.jys = q.Text(3);
  o.gdh = q.Text(4), o.zqdm = q.Text(5), o.kfsbdbh = q.Text(6), o.wtsj = q.Text(7);
  o.jylb = static_cast<std::int32_t>(q.Int(8)), o.wtsl = q.Int(9), o.wtjg = q.Real(10);
  o.ddlx = static_cast<std::int32_t>(q.Int(11)), o.wtpch = q.Int(12),
  o.side = static_cast<Side>(q.Int(13));
  o.freeze_price = q.Real(14), o.frozen = q.Real(15), o.matched = q.Int(16),
  o.matched_amount = q.Real(17);
  o.matched_milli = q.Int(18), o.commission = q.Int(19), o.withdrawn = q.Int(20);
  o.sbjg = static_cast<std::int32_t>(q.Int(21)), o.jgsm = q.Text(22), o.cxbz = q.Text(23),
  o.cxwth = q.Int(24);
  o.matchable = q.Int(25) != 0;
  return o;
}

Values MatchRow(const MatchRec& m, std::int64_t seq) {
  return {m.cjbh, seq,       m.khh,    m.jys,  m.gdh,
          m.zqdm, m.kfsbdbh, m.cjsj,   m.wth,  std::int64_t{m.jylb},
          m.qty,  m.price,   m.amount, m.fees, m.qszj};
}
MatchRec ReadMatch(Stmt& q) {
  MatchRec m;
  m.cjbh = q.Text(0), m.khh = q.Text(2), m.jys = q.Text(3), m.gdh = q.Text(4), m.zqdm = q.Text(5);
  m.kfsbdbh = q.Text(6), m.cjsj = q.Text(7), m.wth = q.Int(8),
  m.jylb = static_cast<std::int32_t>(q.Int(9));
  m.qty = q.Int(10), m.price = q.Real(11), m.amount = q.Real(12), m.fees = q.Real(13),
  m.qszj = q.Real(14);
  return m;
}

Values SecurityRow(const Security& s) {
  const SecurityCfg& k = s.cfg;
  return {k.jys,        k.zqdm,     k.name,   static_cast<std::int64_t>(k.kind),
          k.tick,       k.lot,      k.limit,  k.volatility,
          s.prev_close, s.last,     s.volume, s.turnover,
          s.liquidity,  BookText(s)};
}
void ReadSecurity(Stmt& q, Backend& be) {
  Security* s = be.FindSecurity(q.Text(0), q.Text(1));
  if (s == nullptr) {
    SecurityCfg k = MakeSecurity(q.Text(0), q.Text(1), q.Text(2), q.Real(9));
    k.kind = static_cast<SecurityKind>(q.Int(3)), k.tick = q.Real(4), k.lot = q.Int(5),
    k.limit = q.Real(6);
    k.volatility = q.Real(7);
    s = &be.AddSecurity(k);
  }
  s->prev_close = q.Real(8), s->last = q.Real(9), s->volume = q.Int(10), s->turnover = q.Real(11);
  s->liquidity = q.Int(12);
  ReadBook(q.Text(13), *s);
}

class SqliteStore : public Store {
 public:
  SqliteStore(std::string path, sqlite3* db) : path_(std::move(path)), db_(db) {}
  ~SqliteStore() override { sqlite3_close_v2(db_); }

  const std::string& path() const override { return path_; }
  bool fresh() const override { return fresh_; }

  // Checks the file and takes it for this process; false with the reason.
  bool Open(std::string* error) {
    std::vector<std::string> tables;
    {
      Stmt list(db_, "SELECT name FROM sqlite_master WHERE type = 'table'");
      while (list.ok() && list.Row()) tables.push_back(list.Text(0));
    }
    int rc = sqlite3_errcode(db_);
    if (rc == SQLITE_OK || rc == SQLITE_DONE)
      rc = sqlite3_exec(db_, "BEGIN EXCLUSIVE; COMMIT;", nullptr, nullptr, nullptr);
    if (rc == SQLITE_BUSY || rc == SQLITE_LOCKED)
      return Fail(error, "is in use by another process (" + std::string(sqlite3_errmsg(db_)) + ")");
    if (rc != SQLITE_OK && rc != SQLITE_DONE)
      return Fail(error, "is not a state file of the simulated back end (" +
                             std::string(sqlite3_errmsg(db_)) + ")");
    fresh_ = tables.empty();
    if (fresh_) {
      if (!Exec("PRAGMA journal_mode = WAL") ||
          !Exec(std::string("BEGIN;") + kSchema + "COMMIT;") || !Meta("format", kFormat))
        return Fail(error, "cannot be written (" + std::string(sqlite3_errmsg(db_)) + ")");
    } else {
      Stmt f(db_, "SELECT value FROM sim_meta WHERE key = 'format'");
      if (!f.ok() || !f.Row() || f.Text(0) != kFormat)
        return Fail(error, "is an SQLite database but not a state file of the simulated back end");
      Exec("PRAGMA journal_mode = WAL");
    }
    Exec("PRAGMA synchronous = NORMAL");
    return true;
  }

  bool Restore(Backend& be, std::string* error) override {
    if (fresh_) return true;
    auto& customers = be.customers();
    Stmt cq(db_, "SELECT * FROM sim_customers");
    Stmt pq(
        db_,
        "SELECT khh, jys, zqdm, gdh, balance, sellable, cost FROM sim_positions ORDER BY rowid");
    Stmt sq(db_, "SELECT * FROM sim_securities");
    Stmt oq(db_, "SELECT * FROM sim_orders ORDER BY wth");
    Stmt mq(db_, "SELECT * FROM sim_matches ORDER BY seq");
    if (!cq.ok() || !pq.ok() || !sq.ok() || !oq.ok() || !mq.ok())
      return Fail(error, "cannot be read (" + std::string(sqlite3_errmsg(db_)) + ")");
    while (cq.Row()) {
      Customer& c = customers[cq.Text(0)];
      c = Customer();
      ReadCustomer(cq, c);
      saved_customers_[c.cfg.khh] = std::string();  // positions follow
    }
    while (pq.Row()) {
      auto it = customers.find(pq.Text(0));
      if (it == customers.end()) continue;
      Position& p = it->second.GetPosition(pq.Text(1), pq.Text(2));
      p.gdh = pq.Text(3), p.balance = pq.Int(4), p.sellable = pq.Int(5), p.cost = pq.Real(6);
    }
    while (sq.Row()) ReadSecurity(sq, be);
    for (auto& [key, s] : be.securities()) saved_securities_[key] = Image(SecurityRow(s));
    while (oq.Row()) {
      Order o = ReadOrder(oq);
      auto it = customers.find(o.khh);
      if (it == customers.end()) continue;
      Order& stored = it->second.orders[o.wth] = o;
      Security* s = be.FindSecurity(o.jys, o.zqdm);
      if (s != nullptr && stored.Open() && stored.matchable && stored.side != Side::None &&
          stored.ddlx == 0) {
        std::int64_t p = Milli(stored.wtjg);
        (stored.side == Side::Buy ? s->buys
                                  : s->sells)[{stored.side == Side::Buy ? -p : p, stored.wth}] =
            &it->second;
      }
    }
    while (mq.Row()) {
      MatchRec m = ReadMatch(mq);
      auto it = customers.find(m.khh);
      if (it != customers.end()) it->second.matches.push_back(m);
      next_seq_ = mq.Int(1) + 1;
    }
    for (auto& [khh, c] : customers) {
      c.matches_saved = c.matches.size();
      if (saved_customers_.count(khh)) saved_customers_[khh] = CustomerImage(c);
    }
    be.RestoreSequences(
        {MetaNumber("next_wth", 1), MetaNumber("next_cjbh", 1), MetaNumber("next_token", 1)});
    be.clock.Restore(MetaNumber("date", be.clock.Date()), MetaNumber("time_ms", be.clock.Ms()));
    return true;
  }

  bool Commit(Backend& be, std::string* error) override {
    Backend::Changes changes = be.TakeChanges();
    if (!Exec("BEGIN"))
      return Fail(error, "cannot be written (" + std::string(sqlite3_errmsg(db_)) + ")");
    bool ok = true;
    if (changes.day_cleared) ok = Exec("DELETE FROM sim_orders; DELETE FROM sim_matches;");
    for (Customer* c : changes.customers) ok = ok && SaveCustomer(*c);
    for (auto& [khh, c] : be.customers()) ok = ok && SaveMatches(c);
    std::sort(changes.orders.begin(), changes.orders.end());
    changes.orders.erase(std::unique(changes.orders.begin(), changes.orders.end()),
                         changes.orders.end());
    Stmt put_order(db_,
                   "INSERT OR REPLACE INTO sim_orders VALUES "
                   "(?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)");
    for (const auto& [c, wth] : changes.orders) {
      auto it = c->orders.find(wth);
      if (it != c->orders.end()) ok = ok && put_order.Run(OrderRow(it->second));
    }
    for (Security* s : changes.securities) ok = ok && SaveSecurity(*s);
    Backend::Sequences seq = be.sequences();
    ok = ok && Meta("next_wth", std::to_string(seq.wth)) &&
         Meta("next_cjbh", std::to_string(seq.cjbh)) &&
         Meta("next_token", std::to_string(seq.token)) &&
         Meta("date", std::to_string(be.clock.Date())) &&
         Meta("time_ms", std::to_string(be.clock.Ms()));
    if (ok && Exec("COMMIT")) return true;
    std::string why = sqlite3_errmsg(db_);
    Exec("ROLLBACK");
    return Fail(error, "cannot be written (" + why + ")");
  }

 private:
  bool Fail(std::string* error, const std::string& why) {
    if (error) *error = "state file " + path_ + " " + why;
    return false;
  }
  bool Exec(const std::string& sql) {
    return sqlite3_exec(db_, sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK;
  }
  bool Meta(const std::string& key, const std::string& value) {
    auto it = meta_.find(key);
    if (it != meta_.end() && it->second == value) return true;
    Stmt put(db_, "INSERT OR REPLACE INTO sim_meta VALUES (?, ?)");
    if (!put.Run({key, value})) return false;
    meta_[key] = value;
    return true;
  }
  std::int64_t MetaNumber(const std::string& key, std::int64_t def) {
    Stmt get(db_, "SELECT value FROM sim_meta WHERE key = ?");
    if (!get.Bind({key}).Row()) return def;
    meta_[key] = get.Text(0);
    return std::atoll(meta_[key].c_str());
  }
  static std::string CustomerImage(const Customer& c) {
    std::string image = Image(CustomerRow(c));
    for (const Values& p : PositionRows(c)) image += Image(p);
    return image;
  }
  bool SaveCustomer(const Customer& c) {
    std::string image = CustomerImage(c);
    std::string& saved = saved_customers_[c.cfg.khh];
    if (image == saved) return true;
    Stmt put(db_,
             "INSERT OR REPLACE INTO sim_customers VALUES (?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)");
    Stmt drop(db_, "DELETE FROM sim_positions WHERE khh = ?");
    Stmt put_position(db_, "INSERT INTO sim_positions VALUES (?,?,?,?,?,?,?)");
    bool ok = put.Run(CustomerRow(c)) && drop.Run({c.cfg.khh});
    for (const Values& p : PositionRows(c)) ok = ok && put_position.Run(p);
    if (ok) saved = image;
    return ok;
  }
  bool SaveMatches(Customer& c) {
    if (c.matches_saved >= c.matches.size()) return true;
    Stmt put(db_, "INSERT OR REPLACE INTO sim_matches VALUES (?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)");
    for (; c.matches_saved < c.matches.size(); ++c.matches_saved)
      if (!put.Run(MatchRow(c.matches[c.matches_saved], next_seq_++))) return false;
    return true;
  }
  bool SaveSecurity(const Security& s) {
    Values row = SecurityRow(s);
    std::string image = Image(row);
    std::string& saved = saved_securities_[s.cfg.jys + "." + s.cfg.zqdm];
    if (image == saved) return true;
    Stmt put(db_, "INSERT OR REPLACE INTO sim_securities VALUES (?,?,?,?,?,?,?,?,?,?,?,?,?,?)");
    if (!put.Run(row)) return false;
    saved = image;
    return true;
  }

  std::string path_;
  sqlite3* db_;
  bool fresh_ = false;
  std::int64_t next_seq_ = 1;
  std::map<std::string, std::string> meta_;
  std::map<std::string, std::string> saved_customers_;  // images as last written
  std::map<std::string, std::string> saved_securities_;
};

}  // namespace

bool StateFilesSupported() { return true; }

std::unique_ptr<Store> OpenStore(const std::string& path, std::string* error) {
  sqlite3* db = nullptr;
  if (sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr) !=
      SQLITE_OK) {
    if (error)
      *error = "state file " + path + " cannot be opened (" +
               (db ? sqlite3_errmsg(db) : "out of memory") + ")";
    sqlite3_close_v2(db);
    return nullptr;
  }
  sqlite3_exec(db, "PRAGMA locking_mode = EXCLUSIVE", nullptr, nullptr, nullptr);
  auto store = std::make_unique<SqliteStore>(path, db);
  if (!store->Open(error)) return nullptr;
  return store;
}

}  // namespace sim
