// A full round trip against the simulated back end: an asynchronous order's reply, its
// confirmation push and its match push all carry the request number the caller chose.
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "support/host_callbacks.h"
#include "support/trade_fixture.h"

using namespace molra::test;

using RoundTrip = TradeTest;

namespace {

int CountWith(const std::vector<Delivery>& ds, const std::string& needle) {
  int n = 0;
  for (const Delivery& d : ds) n += d.json.find(needle) != std::string::npos ? 1 : 0;
  return n;
}

}  // namespace

TEST_F(RoundTrip, ReplyConfirmationAndMatchCarryTheSameRequestNumber) {
  HostCallbacks host;
  const std::int64_t n = 8123456789012LL;
  ASSERT_EQ(SECMOLRA_OrderEntrust_ASync("1001", "SH", "600000", 1, 100, 10.5, 0, kGdhSH, n), n)
      << Message();
  // Replies and pushes arrive on transport threads.
  for (int i = 0; i < 50 && (host.Functions().empty() || host.Messages().size() < 2); ++i) {
    KELSIM(KelSim_WaitIdle)();
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  const std::vector<Delivery> replies = host.Functions();
  ASSERT_EQ(replies.size(), 1u);
  EXPECT_EQ(replies[0].type, 14);
  EXPECT_NE(replies[0].json.find("\"KFSBDBH\":8123456789012"), std::string::npos)
      << replies[0].json;
  EXPECT_NE(replies[0].json.find("\"KHH\":\"1001\""), std::string::npos) << replies[0].json;

  const std::vector<Delivery> pushes = host.Messages();
  ASSERT_GE(pushes.size(), 2u);
  EXPECT_GE(CountWith(pushes, "8123456789012"), 2) << pushes[0].json;
  // Every push names the order number the reply reported.
  const std::size_t at = replies[0].json.find("\"WTH\":");
  ASSERT_NE(at, std::string::npos);
  const std::string wth = replies[0].json.substr(at + 6, replies[0].json.find(',', at) - at - 6);
  EXPECT_GE(CountWith(pushes, wth), 2) << wth;
}
