#include "query/record_layout.h"

#include <cstring>
#include <string>

#include "comm/conn_pool.h"
#include "comm/kel_api.h"
#include "core/errors.h"
#include "core/text.h"

namespace molra::query {

namespace {

template <typename T>
void Put(char* at, T value) {
  std::memcpy(at, &value, sizeof value);
}

double Sum(kel::int64 session, kel::int32 row, const std::int32_t (&keys)[3]) {
  double total = 0;
  bool first = true;
  for (std::int32_t key : keys) {
    if (key == 0) continue;
    double v = kel::api.Kel_GetDouble(session, key, row);
    total = first ? v : total + v;
    first = false;
  }
  return total;
}

}  // namespace

void FillRecord(kel::int64 session, kel::int32 row, const RecordLayout& layout, char* record) {
  for (std::size_t i = 0; i < layout.count; ++i) {
    const FieldSpec& f = layout.fields[i];
    char* at = record + f.offset;
    switch (f.type) {
      case FieldType::kText:
        CopyField(at, f.width, GetItemString(session, f.key, row).c_str());
        break;
      case FieldType::kInt32:
        Put(at, static_cast<std::int32_t>(kel::api.Kel_GetLong(session, f.key, row)));
        break;
      case FieldType::kInt64:
        Put(at, static_cast<std::int64_t>(kel::api.Kel_GetLong(session, f.key, row)));
        break;
      case FieldType::kDouble:
        Put(at, kel::api.Kel_GetDouble(session, f.key, row));
        break;
      case FieldType::kDoubleSum:
        Put(at, Sum(session, row, f.sum_keys));
        break;
    }
  }
}

}  // namespace molra::query
