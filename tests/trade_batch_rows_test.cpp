// The packed rows of a batch entrust are written without snprintf: every character must
// still be what "%s%s%01d%09.3f%09lld%03d" writes, prices rounded as printf rounds them
// (ties of binary fractions included) and cut at 30 characters.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "support/trade_fixture.h"

using namespace molra::test;

namespace {

class BatchRows : public TradeTest {};

std::string Printf(const BatchOrderRow& r) {
  char text[96];
  std::snprintf(text, sizeof text, "%s%s%01d%09.3f%09lld%03d", r.Jys, r.Zqdm,
                static_cast<int>(r.Jylb), r.Wtjg, static_cast<long long>(r.Wtsl),
                static_cast<int>(r.Ddlx));
  return std::string(text).substr(0, 30);
}

}  // namespace

TEST_F(BatchRows, EveryRowAsPrintfWritesIt) {
  // Ties of binary fractions (0.0625, 0.1875, 2.5625), values just below and above a
  // rounding step, the smallest and largest prices and quantities, and a price that rounds
  // up to six integer digits (its row is cut at 30 characters).
  const double prices[] = {0.001,     0.0005,   0.0625,    0.1875,     2.5625,    1.0005,
                           2.675,     4.35,     0.3,       9.5,        10.0,      12.3456789,
                           1234.5675, 99999.99, 99999.995, 99999.9994, 99999.9996};
  const std::int64_t quantities[] = {1, 7, 100, 123456789, 999999999};
  const int types[] = {0, 5, 42, 999};
  std::vector<BatchOrderRow> rows;
  for (std::size_t i = 0; i < sizeof prices / sizeof prices[0]; ++i) {
    BatchOrderRow r{};
    std::strcpy(r.Jys, i % 2 ? "SZ" : "SH");
    std::strcpy(r.Zqdm, i % 2 ? "000001" : "600000");
    r.Jylb = 1 + static_cast<int>(i % 2);
    r.Wtjg = prices[i];
    r.Wtsl = quantities[i % 5];
    r.Ddlx = types[i % 4];
    rows.push_back(r);
  }
  const std::vector<BatchOrderRow> sent = rows;
  ASSERT_GE(SECMOLRA_BatchOrderEntrust("1001", rows, 9), 0);
  const std::string b = Request("19012");
  ASSERT_EQ(b.size(), 3174u);
  for (std::size_t i = 0; i < sent.size(); ++i) {
    EXPECT_EQ(b.substr(64 + 30 * i, 30), Printf(sent[i]))
        << "row " << i << " price " << sent[i].Wtjg;
  }
  EXPECT_EQ(b.find_first_not_of('\0', 64 + 30 * sent.size()), std::string::npos);
}
