// Function codes, answer keys and request fields of every customer query. The order, match,
// position, ETF-share, allocation-ratio and node-funds queries follow the kit's own
// agreement with the back end (see docs/back-end-assumptions.md).
#include "query/query_table.h"

#include <cstddef>

#include "secmolra.h"
#include "util/field_ids.h"

namespace molra::query {

namespace {

// The layout of records R: their fields, their size.
template <typename R, std::size_t N>
constexpr RecordLayout Layout(const FieldSpec (&fields)[N]) {
  return RecordLayout{fields, N, sizeof(R)};
}

const FieldSpec kFundFields[] = {
    MOLRA_FIELD(FundRecord, KHH, fid::KHH),
    MOLRA_FIELD(FundRecord, ZJZH, fid::ZJZH),
    MOLRA_FIELD(FundRecord, BZ, fid::BZ),
    MOLRA_FIELD(FundRecord, Text2, fid::FUND_TEXT2),
    MOLRA_FIELD(FundRecord, Amount1, fid::FUND_AMOUNT1),
    MOLRA_FIELD(FundRecord, Amount2, fid::FUND_AMOUNT1),
    MOLRA_FIELD(FundRecord, Amount3, fid::FUND_AMOUNT3),
    MOLRA_FIELD(FundRecord, Amount4, fid::FUND_AMOUNT4),
    MOLRA_FIELD(FundRecord, Amount5, fid::FUND_AMOUNT5),
    MOLRA_FIELD(FundRecord, Amount6, fid::FUND_AMOUNT6),
    MOLRA_SUM_FIELD(FundRecord, Total, fid::FUND_AMOUNT7, fid::FUND_AMOUNT1, fid::FUND_AMOUNT9),
    MOLRA_FIELD(FundRecord, Amount7, fid::FUND_AMOUNT7),
    MOLRA_FIELD(FundRecord, Amount8, fid::FUND_AMOUNT8),
    MOLRA_FIELD(FundRecord, Amount9, fid::FUND_AMOUNT9),
};

const FieldSpec kAccountFields[] = {
    MOLRA_FIELD(AccountRecord, KHH, fid::KHH),
    MOLRA_FIELD(AccountRecord, JYS, fid::JYS),
    MOLRA_FIELD(AccountRecord, GDH, fid::GDH),
    MOLRA_FIELD(AccountRecord, Text2, fid::ACC_TEXT2),
    MOLRA_FIELD(AccountRecord, Text3, fid::ACC_TEXT3),
    MOLRA_FIELD(AccountRecord, Text4, fid::ACC_TEXT4),
    MOLRA_FIELD(AccountRecord, BZ, fid::BZ),
    MOLRA_FIELD(AccountRecord, Text5, fid::ACC_TEXT5),
    MOLRA_FIELD(AccountRecord, Value, fid::ACC_INT),
};

const FieldSpec kPSQYFields[] = {
    MOLRA_FIELD(PSQYRecord, KHH, fid::KHH),
    MOLRA_FIELD(PSQYRecord, JYS, fid::JYS),
    MOLRA_FIELD(PSQYRecord, GDH, fid::GDH),
    MOLRA_FIELD(PSQYRecord, Value1, fid::PSQY_VALUE1),
    MOLRA_FIELD(PSQYRecord, Value2, fid::PSQY_VALUE2),
};

const FieldSpec kOrderFields[] = {
    MOLRA_FIELD(OrderRecord, KHH, fid::KHH),         MOLRA_FIELD(OrderRecord, JYS, fid::JYS),
    MOLRA_FIELD(OrderRecord, GDH, fid::GDH),         MOLRA_FIELD(OrderRecord, ZQDM, fid::ZQDM),
    MOLRA_FIELD(OrderRecord, ZQMC, fid::ZQMC),       MOLRA_FIELD(OrderRecord, WTH, fid::WTH),
    MOLRA_FIELD(OrderRecord, JYLB, fid::JYLB),       MOLRA_FIELD(OrderRecord, WTSL, fid::WTSL),
    MOLRA_FIELD(OrderRecord, WTJG, fid::WTJG),       MOLRA_FIELD(OrderRecord, DDLX, fid::DDLX),
    MOLRA_FIELD(OrderRecord, WTSJ, fid::WTSJ),       MOLRA_FIELD(OrderRecord, CJSL, fid::CJSL),
    MOLRA_FIELD(OrderRecord, CJJG, fid::CJJG),       MOLRA_FIELD(OrderRecord, CJJE, fid::CJJE),
    MOLRA_FIELD(OrderRecord, CDSL, fid::CDSL),       MOLRA_FIELD(OrderRecord, SBJG, fid::SBJG),
    MOLRA_FIELD(OrderRecord, JGSM, fid::JGSM),       MOLRA_FIELD(OrderRecord, CXBZ, fid::CXBZ),
    MOLRA_FIELD(OrderRecord, KFSBDBH, fid::KFSBDBH), MOLRA_FIELD(OrderRecord, WTPCH, fid::WTPCH),
    MOLRA_FIELD(OrderRecord, DJZJ, fid::DJZJ),       MOLRA_FIELD(OrderRecord, ZJZH, fid::ZJZH),
    MOLRA_FIELD(OrderRecord, BZ, fid::BZ),
};

const FieldSpec kMatchFields[] = {
    MOLRA_FIELD(MatchRecord, KHH, fid::KHH),         MOLRA_FIELD(MatchRecord, JYS, fid::JYS),
    MOLRA_FIELD(MatchRecord, GDH, fid::GDH),         MOLRA_FIELD(MatchRecord, ZQDM, fid::ZQDM),
    MOLRA_FIELD(MatchRecord, ZQMC, fid::ZQMC),       MOLRA_FIELD(MatchRecord, WTH, fid::WTH),
    MOLRA_FIELD(MatchRecord, JYLB, fid::JYLB),       MOLRA_FIELD(MatchRecord, CJSL, fid::CJSL),
    MOLRA_FIELD(MatchRecord, CJJG, fid::CJJG),       MOLRA_FIELD(MatchRecord, CJJE, fid::CJJE),
    MOLRA_FIELD(MatchRecord, CJBH, fid::CJBH),       MOLRA_FIELD(MatchRecord, CJSJ, fid::CJSJ),
    MOLRA_FIELD(MatchRecord, KFSBDBH, fid::KFSBDBH),
};

const FieldSpec kPositionFields[] = {
    MOLRA_FIELD(PositionRecord, KHH, fid::KHH),   MOLRA_FIELD(PositionRecord, JYS, fid::JYS),
    MOLRA_FIELD(PositionRecord, GDH, fid::GDH),   MOLRA_FIELD(PositionRecord, ZQDM, fid::ZQDM),
    MOLRA_FIELD(PositionRecord, ZQMC, fid::ZQMC), MOLRA_FIELD(PositionRecord, GFYE, fid::GFYE),
    MOLRA_FIELD(PositionRecord, KMSL, fid::KMSL), MOLRA_FIELD(PositionRecord, CBJ, fid::CBJ),
    MOLRA_FIELD(PositionRecord, ZXJ, fid::ZXJ),   MOLRA_FIELD(PositionRecord, ZXSZ, fid::ZXSZ),
    MOLRA_FIELD(PositionRecord, FDYK, fid::FDYK), MOLRA_FIELD(PositionRecord, BZ, fid::BZ),
};

const FieldSpec kETFShareFields[] = {
    MOLRA_FIELD(ETFShareRecord, KHH, fid::KHH),   MOLRA_FIELD(ETFShareRecord, JYS, fid::JYS),
    MOLRA_FIELD(ETFShareRecord, GDH, fid::GDH),   MOLRA_FIELD(ETFShareRecord, JJDM, fid::JJDM),
    MOLRA_FIELD(ETFShareRecord, ZQDM, fid::ZQDM), MOLRA_FIELD(ETFShareRecord, FESL, fid::FESL),
};

const FieldSpec kZJHBCLFields[] = {
    MOLRA_FIELD(ZJHBCLRecord, Node1, fid::NODE1),
    MOLRA_FIELD(ZJHBCLRecord, Node2, fid::NODE2),
    MOLRA_FIELD(ZJHBCLRecord, Ratio1, fid::RATIO1),
    MOLRA_FIELD(ZJHBCLRecord, Ratio2, fid::RATIO2),
};

const FieldSpec kJDKYZJFields[] = {
    MOLRA_FIELD(JDKYZJRecord, NodeID, fid::NODE_ID),
    MOLRA_FIELD(JDKYZJRecord, KYZJ, fid::FUND_AMOUNT1),
};

// Indexed by QueryKind; each row reads the records QueryOf names for its kind.
const QuerySpec kQueries[] = {
    {"QueryZjxx", "DQ0003", Layout<FundRecord>(kFundFields), RowMode::kSkipNegativeState},
    {"QueryGDH", "D00734", Layout<AccountRecord>(kAccountFields), RowMode::kSkipNegativeState},
    {"QueryPSQY", "D00985", Layout<PSQYRecord>(kPSQYFields), RowMode::kRecheckAnswerCode},
    {"QueryWtxx", "D00751", Layout<OrderRecord>(kOrderFields), RowMode::kSkipNegativeState},
    {"QueryCjxx", "D00752", Layout<MatchRecord>(kMatchFields), RowMode::kSkipNegativeState},
    {"QueryCcxx", "D00753", Layout<PositionRecord>(kPositionFields), RowMode::kSkipNegativeState},
    {"QueryETFShare", "D00754", Layout<ETFShareRecord>(kETFShareFields),
     RowMode::kSkipNegativeState},
    {"QueryZJHBCL", "910005", Layout<ZJHBCLRecord>(kZJHBCLFields), RowMode::kSkipNegativeState},
    {"QueryJDKYZJ", "910006", Layout<JDKYZJRecord>(kJDKYZJFields), RowMode::kSkipNegativeState},
};

static_assert(sizeof(kQueries) / sizeof(kQueries[0]) ==
                  static_cast<std::size_t>(QueryKind::kJDKYZJ) + 1,
              "one entry per query kind");

}  // namespace

const QuerySpec& Spec(QueryKind kind) { return kQueries[static_cast<std::size_t>(kind)]; }

ReqFields FundRequest() {
  return {ReqField::Int(fid::FUND_FLAG1, 1), ReqField::Int(fid::FUND_FLAG2, 1)};
}

ReqFields AccountRequest() {
  return {ReqField::Int(fid::ACC_REQ_FLAG, 0), ReqField::Int(fid::ACC_REQ_LIMIT, 30000000)};
}

ReqFields PSQYRequest(const char* jys, const char* gdh) {
  return {ReqField::Text(fid::GDH, gdh), ReqField::Text(fid::JYS, jys)};
}

ReqFields OrdersRequest(std::int32_t type, std::int32_t sort, std::int32_t rowcount,
                        std::int32_t browindex, const char* jys, const char* zqdm,
                        std::int64_t wth) {
  return {ReqField::Text(fid::JYS, jys),
          ReqField::Text(fid::ZQDM, zqdm),
          ReqField::Long(fid::WTH, wth),
          ReqField::Int(fid::Q_TYPE, type),
          ReqField::Int(fid::Q_SORT, sort),
          ReqField::Int(fid::Q_ROWCOUNT, rowcount),
          ReqField::Int(fid::Q_BROWINDEX, browindex)};
}

ReqFields PositionsRequest(std::int32_t sort, std::int32_t rowcount, std::int32_t browindex,
                           const char* gdh, const char* jys, const char* zqdm,
                           std::int32_t exeflag) {
  return {ReqField::Text(fid::GDH, gdh),
          ReqField::Text(fid::JYS, jys),
          ReqField::Text(fid::ZQDM, zqdm),
          ReqField::Int(fid::Q_SORT, sort),
          ReqField::Int(fid::Q_ROWCOUNT, rowcount),
          ReqField::Int(fid::Q_BROWINDEX, browindex),
          ReqField::Int(fid::Q_EXEFLAG, exeflag)};
}

ReqFields ETFShareRequest(const char* jjdm) { return {ReqField::Text(fid::JJDM, jjdm)}; }

ReqFields NodeFundsRequest(const char* zjzh) {
  return {ReqField::Text(fid::BZ, "RMB"), ReqField::Text(fid::ZJZH, zjzh)};
}

}  // namespace molra::query
