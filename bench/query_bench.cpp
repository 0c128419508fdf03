// The fund query of 1 and of 1000 rows (a scripted answer) through the kit, beside its
// floor: the same transport calls made directly, each row read into a FundRecord.
#include <algorithm>
#include <cstring>
#include <vector>

#include "bench_env.h"
#include "bench_paths.h"
#include "comm/kel_api.h"
#include "util/field_ids.h"

namespace molra::bench {
namespace {

template <std::size_t N>
void ReadText(kel::int64 s, kel::int32 id, kel::int32 row, char (&field)[N]) {
  char buf[256];
  kel::int32 len = sizeof buf;
  const char* text = kel::api.Kel_GetItem(s, id, buf, &len, row);
  std::memset(field, 0, N);
  if (text != nullptr) std::memcpy(field, text, std::min<std::size_t>(std::strlen(text), N));
}

double Amount(kel::int64 s, kel::int32 id, kel::int32 row) {
  return kel::api.Kel_GetDouble(s, id, row);
}

// The fields the kit reads per row, in its order (709 three times, 869 and 647 twice).
void ReadFundRow(kel::int64 s, kel::int32 row, FundRecord& r) {
  ReadText(s, fid::KHH, row, r.KHH);
  ReadText(s, fid::ZJZH, row, r.ZJZH);
  ReadText(s, fid::BZ, row, r.BZ);
  ReadText(s, fid::FUND_TEXT2, row, r.Text2);
  r.Amount1 = Amount(s, fid::FUND_AMOUNT1, row);
  r.Amount2 = Amount(s, fid::FUND_AMOUNT1, row);
  r.Amount3 = Amount(s, fid::FUND_AMOUNT3, row);
  r.Amount4 = Amount(s, fid::FUND_AMOUNT4, row);
  r.Amount5 = Amount(s, fid::FUND_AMOUNT5, row);
  r.Amount6 = Amount(s, fid::FUND_AMOUNT6, row);
  const double seven = Amount(s, fid::FUND_AMOUNT7, row);
  const double one = Amount(s, fid::FUND_AMOUNT1, row);
  r.Total = seven + one + Amount(s, fid::FUND_AMOUNT9, row);
  r.Amount7 = Amount(s, fid::FUND_AMOUNT7, row);
  r.Amount8 = Amount(s, fid::FUND_AMOUNT8, row);
  r.Amount9 = Amount(s, fid::FUND_AMOUNT9, row);
}

std::int64_t FloorFundQuery(const CustomerWire& w, const char* khh, std::vector<FundRecord>& list) {
  list.clear();
  const kel::int64 s = kel::api.Kel_AllocateSession(w.trade_conn);
  kel::api.Kel_CreateHead(s, "DQ0003");
  kel::api.Kel_SetNodeId(s, w.node_id);
  kel::api.Kel_SetItem(s, fid::KHH, khh);
  kel::api.Kel_SetInt(s, fid::FUND_FLAG1, 1);
  kel::api.Kel_SetInt(s, fid::FUND_FLAG2, 1);
  std::int64_t result = -1;
  if (kel::api.Kel_Run(s) && kel::api.Kel_GetCode(s) >= 0) {
    const kel::int32 rows = kel::api.Kel_GetCount(s);
    for (kel::int32 row = 0; row < rows; ++row) {
      if (kel::api.Kel_GetLong(s, fid::ROW_STATE, row) < 0) continue;
      FundRecord r{};
      ReadFundRow(s, row, r);
      list.push_back(r);
    }
    result = static_cast<std::int64_t>(list.size());
  }
  kel::api.Kel_ReleaseSession(s);
  return result;
}

void FundQuery(benchmark::State& state, int rows) {
  Env::Get().ReadyWithFundRows(rows);
  std::vector<FundRecord> list;
  const char* khh = kCustomers[0].khh;
  if (SECMOLRA_QueryFundInfo(khh, list) != rows) {
    state.SkipWithError("the fund query did not answer the scripted rows");
    return;
  }
  for (auto _ : state) benchmark::DoNotOptimize(SECMOLRA_QueryFundInfo(khh, list));
  state.SetItemsProcessed(state.iterations() * rows);
}

void FundQueryFloor(benchmark::State& state, int rows) {
  const Env& env = Env::Get();
  env.ReadyWithFundRows(rows);
  std::vector<FundRecord> list;
  const char* khh = kCustomers[0].khh;
  if (FloorFundQuery(env.Wire(0), khh, list) != rows) {
    state.SkipWithError("the fund query did not answer the scripted rows");
    return;
  }
  for (auto _ : state) benchmark::DoNotOptimize(FloorFundQuery(env.Wire(0), khh, list));
  state.SetItemsProcessed(state.iterations() * rows);
}

}  // namespace

void RegisterQueryBenchmarks() {
  benchmark::RegisterBenchmark(kFund1Kit, [](benchmark::State& s) { FundQuery(s, 1); });
  benchmark::RegisterBenchmark(kFund1Floor, [](benchmark::State& s) { FundQueryFloor(s, 1); });
  benchmark::RegisterBenchmark(kFund1000Kit, [](benchmark::State& s) { FundQuery(s, 1000); });
  benchmark::RegisterBenchmark(kFund1000Floor,
                               [](benchmark::State& s) { FundQueryFloor(s, 1000); });
}

}  // namespace molra::bench
