// Argument checks of the order exports and the request numbers: what is refused before
// any customer is looked up, with which code and message.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "secmolra.h"
#include "support/host_callbacks.h"
#include "support/test_support.h"
#include "trade/order_args.h"

using namespace molra::test;
using molra::trade::GenerateRequestNumber;
using molra::trade::RequestNumberTimeText;

namespace {

constexpr const char* kEmpty4 = "客户号、交易所、证券代码、股东号不能为空";
constexpr const char* kEmpty2 = "客户号、交易所不能为空";
constexpr const char* kRange = "非法，范围0~9999999999999999";

// The call's result and the message it recorded (written as it reads, compared as GBK).
#define EXPECT_REFUSED(call, code, message)            \
  do {                                                 \
    EXPECT_EQ(call, code);                             \
    EXPECT_EQ(LastErrorText(), Gbk(message)) << #call; \
  } while (0)

CusLoginInfo Record(const char* khh, const char* gdh) {
  CusLoginInfo r{};
  std::strncpy(r.KHH, khh, sizeof r.KHH);
  std::strncpy(r.GDH, gdh, sizeof r.GDH);
  return r;
}

}  // namespace

// ---- request numbers ----

TEST(RequestNumber, TimeTextLosesItsLeadingZeros) {
  EXPECT_EQ(RequestNumberTimeText(9, 31, 5), "93105");
  EXPECT_EQ(RequestNumberTimeText(0, 0, 7), "7");
  EXPECT_EQ(RequestNumberTimeText(0, 10, 0), "1000");
  EXPECT_EQ(RequestNumberTimeText(0, 0, 0), "");
  EXPECT_EQ(RequestNumberTimeText(23, 59, 59), "235959");
}

TEST(RequestNumber, GeneratedNumbersCarryTheCounterInTheirLastTenDigits) {
  molra::Kit kit({}, nullptr);
  const std::int64_t a = GenerateRequestNumber(kit);
  const std::int64_t b = GenerateRequestNumber(kit);
  EXPECT_EQ(a % 10000000000LL, 1);  // the counter starts at 0; its first number uses 1
  EXPECT_EQ(b % 10000000000LL, 2);
  EXPECT_LE(b, molra::trade::kMaxRequestNumber);
}

TEST(RequestNumber, AsyncRangeEdges) {
  // 9999999999999999 passes the check (and fails later: nobody is logged in).
  SECMOLRA_OrderEntrust_ASync("1001", "SH", "600000", 1, 100, 10.0, 0, "A1", 9999999999999999LL);
  EXPECT_NE(LastErrorText().find(Gbk("客户未登录")), std::string::npos) << LastErrorText();

  EXPECT_REFUSED(SECMOLRA_OrderEntrust_ASync("1001", "SH", "600000", 1, 100, 10.0, 0, "A1",
                                             10000000000000000LL),
                 -221, std::string("KFSBDBH[10000000000000000]") + kRange);

  CusLoginInfo rec = Record("1001", "A1");
  EXPECT_REFUSED(SECMOLRA_OrderEntrustEx_ASync(&rec, "SH", "600000", 1, 100, 10.0, 0, -1), -221,
                 std::string("KFSBDBH[-1]") + kRange);
  EXPECT_REFUSED(SECMOLRA_ETFEntrust_ASync("1001", "SH", "510050", 29, 1, "A1", nullptr, -7), -221,
                 std::string("KFSBDBH[-7]") + kRange);
}

// ---- entrust checks ----

TEST(EntrustArgs, AdmittedCategoriesReachTheCustomerLookup) {
  // Nobody is logged in: an admitted category fails at the lookup, not with -222.
  EXPECT_EQ(SECMOLRA_ZQHGEntrust("1001", "SH", "204001", 4, 10, 2.0, 0, "A1"), -203);
  EXPECT_EQ(SECMOLRA_ZQHGEntrust("1001", "SH", "204001", 5, 10, 2.0, 0, "A1"), -203);
  EXPECT_EQ(SECMOLRA_FXYW("1001", "SH", "600000", 24, 10, 1.0, 0, "A1"), -203);
  EXPECT_EQ(SECMOLRA_PHDJEntrust("1001", "SH", "600000", 123, 10, 1.0, 0, "A1"), -203);
  EXPECT_REFUSED(SECMOLRA_FJYTradableQty("1001", "SH", "600000", 76, 1.0, 0, "A1"), -203,
                 "客户未登录");
}

TEST(EntrustArgs, BlockTradingRequiresItsFiveTexts) {
  EXPECT_REFUSED(
      SECMOLRA_DZJY("1001", "SH", "600000", 55, 10, 1.0, 0, "A1", "s", nullptr, "", "", "", 0, 0),
      -221, "非法参数");
}

// ---- withdrawal checks: the families differ on purpose ----

TEST(WithdrawArgs, OrderNumberBelowOneIsIllegalAtTheExport) {
  EXPECT_REFUSED(SECMOLRA_OrderWithdraw("1001", "SH", 0), -221, "非法参数");
  EXPECT_REFUSED(SECMOLRA_FXYWWithdraw_ASync("1001", "SH", 0, 5), -221, "非法参数");
  EXPECT_REFUSED(SECMOLRA_OrderWithdrawByKFSBDBH("1001", "SH", 0), -221, "非法参数");
  EXPECT_REFUSED(SECMOLRA_OrderWithdraw("", "SH", 3), -221, kEmpty2);
  EXPECT_REFUSED(SECMOLRA_PHDJWithdraw_ASync("1001", "SH", 3, 10000000000000000LL), -221,
                 std::string("KFSBDBH[10000000000000000]") + kRange);
}

TEST(WithdrawArgs, AsyncByRequestNumberZeroPassesTheExportAndIsRefusedByTheRequest) {
  ScratchLog log;
  EXPECT_REFUSED(SECMOLRA_OrderWithdrawByKFSBDBH_ASync("1001", "SH", 0, 0), -221, "非法参数");
  const std::string text = log.Text();
  EXPECT_NE(text.find(Gbk("OrderWithdraw：非法参数")), std::string::npos) << text;
  EXPECT_EQ(text.find(Gbk("SECMOLRA_OrderWithdrawByKFSBDBH_ASync：非法参数")), std::string::npos)
      << text;
}

TEST(WithdrawArgs, RangeMessagesDifferByFamily) {
  const std::int64_t big = 10000000000000000LL;
  EXPECT_REFUSED(SECMOLRA_OrderWithdrawByKFSBDBH_ASync("1001", "SH", big, 1), -221,
                 std::string("nCXKFSBDBH[10000000000000000]") + kRange);
  EXPECT_REFUSED(SECMOLRA_ETFWithdrawByKFSBDBHEx_ASync(nullptr, "SH", big, 1), -221,
                 std::string("nCXKFSBDBH[10000000000000000]") + kRange);
  EXPECT_REFUSED(SECMOLRA_ZQHGWithdrawByKFSBDBH_ASync("1001", "SH", big, 1), -221,
                 std::string("nCxkfsbdh[10000000000000000]") + kRange);
  // Repurchase refuses 0 at the export; the ordinary family lets it through (above).
  EXPECT_REFUSED(SECMOLRA_ZQHGWithdrawByKFSBDBH_ASync("1001", "SH", 0, 1), -221, "非法参数");
  // The listed-fund family checks neither range, only that the order's number is 1 or more.
  EXPECT_REFUSED(SECMOLRA_LOFWithdrawByKFSBDBH_ASync("1001", "SH", 0, 1), -221, "非法参数");
  EXPECT_REFUSED(SECMOLRA_LOFWithdrawByKFSBDBH_ASync("1001", "SH", big, -5), -203, "客户未登录");
  // Its withdrawal by order number does check its own request number.
  EXPECT_REFUSED(SECMOLRA_LOFWithdraw_ASync("1001", "SH", 8, -5), -221,
                 std::string("KFSBDBH[-5]") + kRange);
}

TEST(WithdrawArgs, BatchSerialNumberZeroIsAcceptedAndNegativeRefused) {
  EXPECT_EQ(SECMOLRA_BatchOrderWithdraw("1001", 0), -203);
  EXPECT_REFUSED(SECMOLRA_BatchOrderWithdraw("1001", -1), -221, "客户号为空、流水号不能为负");
  EXPECT_REFUSED(SECMOLRA_BatchOrderWithdraw_ASync("", 1), -221, "客户号为空、流水号不能为负");
  EXPECT_REFUSED(SECMOLRA_BatchOrderWithdraw(nullptr, 1), -221, "非法参数");
}

// ---- batch checks before the customer ----

TEST(BatchArgs, EmptyAndOversizedBatchesAreRefused) {
  std::vector<BatchOrderRow> rows;
  EXPECT_REFUSED(SECMOLRA_BatchOrderEntrust("1001", rows, 1), -221, "客户号、批量委托信息不能为空");
  rows.resize(101);
  EXPECT_REFUSED(SECMOLRA_BatchOrderEntrust("1001", rows, 1), -221, "批量委托数量超出限制[100]");
  rows.resize(100);
  EXPECT_EQ(SECMOLRA_BatchOrderEntrust("1001", rows, 1), -203);  // passes on to the lookup
  EXPECT_REFUSED(SECMOLRA_BatchOrderEntrust(nullptr, rows, 1), -221, "非法参数");
  EXPECT_REFUSED(PYSECMOLRA_BatchOrderEntrust("1001", 1, nullptr, 3), -221,
                 "客户号、批量委托信息不能为空");
}
