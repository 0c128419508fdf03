// For the tests of the simulated back end's trading: the transport started, customer 1001
// logged in and subscribed to its confirmations and match reports, and helpers for orders,
// queries, quotes and the pushes received. A test that needs its own back end overrides
// Config() with the text of a configuration file.
#pragma once

#include <gtest/gtest.h>

#include <mutex>
#include <string>
#include <vector>

#include "support/sim_api.h"
#include "util/field_ids.h"

namespace molra::test {

// A pushed 402-byte record, read by field.
struct PushRec {
  std::string b;
  long long Wth() const { return ReadInt(b, 44, 8); }
  std::string Cxbz() const { return ReadText(b, 110); }
  long long Cdsl() const { return ReadInt(b, 176, 8); }
  long long Cjsl() const { return ReadInt(b, 192, 8); }
  double Cjjg() const { return ReadDouble(b, 200); }
  long long Zcjsl() const { return ReadInt(b, 216, 8); }
  double Qszj() const { return ReadDouble(b, 232); }
  int Sbjg() const { return static_cast<int>(ReadInt(b, 245, 4)); }
  long long Cxwth() const { return ReadInt(b, 310, 8); }
  bool IsMatch() const { return Cjsl() > 0; }
};

class SimTradingTest : public ::testing::Test {
 protected:
  void SetUp() override {
    Sim::Get().Reset();
    dir_ = MakeTempDir();
    std::string ini = Config();
    if (!ini.empty()) {
      WriteFile(dir_ + "/sim.ini", ini);
      BeforeLoad();
      if (HasFatalFailure()) return;
      ASSERT_TRUE(SIM_FN(KelSim_LoadConfig)((dir_ + "/sim.ini").c_str()));
    }
    ASSERT_TRUE(k.Kel_Initialize());
    token = c.Login("1001", "111111");
    ASSERT_GT(token, 0);
    Subscribe();
  }
  void TearDown() override { k.Kel_Uninitialize(); }
  // The configuration file of the test's back end (it may write further files into dir_);
  // empty: the built-in back end.
  virtual std::string Config() { return std::string(); }
  // Runs after the configuration file (dir_/sim.ini) is written and before it is loaded.
  virtual void BeforeLoad() {}

  // An ordinary order of 1001; the answer block.
  std::string Entrust(const char* zqdm, int jylb, long long qty, double price,
                      const char* kfsbdbh = "", const char* jys = "SH", int ddlx = 0) {
    SimBlock b(19001, 137, token, "1001");
    b.Text(55, 3, jys)
        .Text(69, 9, zqdm)
        .Int(78, 1, jylb)
        .Int(79, 4, qty)
        .Double(83, price)
        .Int(91, 1, ddlx);
    b.Text(120, 17, kfsbdbh);
    return c.Run(b);
  }
  std::string Withdraw(long long wth, const char* cxkfsbdbh = "") {
    SimBlock b(19002, 139, token, "1001");
    b.Text(55, 3, "SH").Int(69, 8, wth).Text(122, 17, cxkfsbdbh);
    return c.Run(b);
  }
  static int Code(const std::string& ans) { return static_cast<int>(ReadInt(ans, 11, 2)); }
  static long long Wth(const std::string& ans) { return ReadInt(ans, 443, 8); }
  static std::string Note(const std::string& ans) { return ReadText(ans, 302); }

  // A field of the fund row (DQ0003) as its text, money to the cent.
  std::string Fund(int id = fid::FUND_AMOUNT1) {
    SimClient q;
    EXPECT_TRUE(q.Kv("DQ0003", {{fid::KHH, "1001"}}));
    return q.Text(id);
  }
  double Available() { return std::stod(Fund()); }
  // A field of the position row; -1 without such a position.
  long long Position(const char* zqdm, int id) {
    SimClient q;
    EXPECT_TRUE(q.Kv("D00753", {{fid::KHH, "1001"}, {fid::ZQDM, zqdm}}));
    return q.Count() == 1 ? q.Long(id) : -1;
  }
  // Rows of the order query (D00751): a field of each.
  std::vector<std::string> Orders(int id) {
    SimClient q;
    EXPECT_TRUE(q.Kv("D00751", {{fid::KHH, "1001"}}));
    std::vector<std::string> out;
    for (int r = 0; r < q.Count(); ++r) out.push_back(q.Text(id, r));
    return out;
  }

  // The book of a security: one level a side per entry of bids and asks ({price, volume}).
  static void Book(const char* zqdm, double last, std::vector<KelSimLevel> bids,
                   std::vector<KelSimLevel> asks, const char* jys = "SH") {
    KelSimQuote q{};
    std::snprintf(q.jys, sizeof q.jys, "%s", jys);
    std::snprintf(q.zqdm, sizeof q.zqdm, "%s", zqdm);
    q.last = last;
    for (std::size_t i = 0; i < bids.size(); ++i) q.bid[i] = bids[i];
    for (std::size_t i = 0; i < asks.size(); ++i) q.ask[i] = asks[i];
    ASSERT_TRUE(SIM_FN(KelSim_SetQuote)(&q));
  }
  static KelSimQuote Quote(const char* zqdm, const char* jys = "SH") {
    KelSimQuote q{};
    EXPECT_TRUE(SIM_FN(KelSim_GetQuote)(jys, zqdm, &q));
    return q;
  }

  // Every push received so far, in order.
  std::vector<PushRec> Pushes() {
    SIM_FN(KelSim_WaitIdle)();
    std::lock_guard<std::mutex> lock(mutex());
    return received();
  }
  std::vector<PushRec> Matches() {
    std::vector<PushRec> out;
    for (const PushRec& p : Pushes())
      if (p.IsMatch()) out.push_back(p);
    return out;
  }
  void ForgetPushes() {
    SIM_FN(KelSim_WaitIdle)();
    std::lock_guard<std::mutex> lock(mutex());
    received().clear();
  }

  const kel::Api& k = SimKel();
  SimClient c;
  kel::int64 token = 0;
  std::string dir_;

 private:
  static std::mutex& mutex() {
    static std::mutex m;
    return m;
  }
  static std::vector<PushRec>& received() {
    static std::vector<PushRec> v;
    return v;
  }
  static bool Collect(void*, kel::int64 session) {
    char buf[512];
    kel::int32 len = sizeof buf;
    if (!SimKel().Kel_GetItemBuf(session, 0, buf, &len, 0)) return false;
    std::lock_guard<std::mutex> lock(mutex());
    received().push_back({std::string(buf, static_cast<std::size_t>(len))});
    return true;
  }
  void Subscribe() {
    for (const char* code : {"DM0003", "DM0004"}) {
      kel::int64 s = k.Kel_AllocateSession(c.conn);
      k.Kel_CreateHead(s, code);
      k.Kel_SetSubsCondi(s, "getstring(605)=='1001'");
      kel::int64 id = 0;
      ASSERT_TRUE(k.Kel_Subscribe(s, &id, &Collect, nullptr));
      k.Kel_ReleaseSession(s);
    }
  }
};

}  // namespace molra::test
