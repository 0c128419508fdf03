// Reading an answer: code, message, rows of fields, structured blocks, the binary body.
#include <cstdlib>

#include "faults.h"
#include "kel_exports.h"

using sim::LogCall;

namespace {

// The value of an answer field, copied; false when absent.
bool Item(kel::int64 session, kel::int32 fieldId, kel::int32 row, std::string* out) {
  bool found = false;
  sim::WithSession(session, [&](sim::Session& s) {
    if (const std::string* v = s.ans.Find(fieldId, row)) {
      *out = *v;
      found = true;
    }
  });
  return found;
}

// index -1 is the first block.
const std::string* BlockAt(const sim::Session& s, kel::int32 index) {
  if (index < 0) index = 0;
  if (static_cast<std::size_t>(index) >= s.ans.blocks.size()) return nullptr;
  return &s.ans.blocks[static_cast<std::size_t>(index)];
}

}  // namespace

KEL_EXPORT kel::int32 Kel_GetCode(kel::int64 session) {
  LogCall("Kel_GetCode", session);
  kel::int32 v = 0;
  sim::WithSession(session, [&](sim::Session& s) { v = s.ans.code; });
  return v;
}

KEL_EXPORT const char* Kel_GetErrMsg(kel::int64 session, char* buf, kel::int32* len) {
  LogCall("Kel_GetErrMsg", session);
  std::string msg;
  if (!sim::WithSession(session, [&](sim::Session& s) { msg = s.ans.msg; })) {
    if (len) *len = 0;
    if (buf && len) buf[0] = '\0';
    return buf;
  }
  sim::CopyText(msg, buf, len);
  return buf;
}

KEL_EXPORT kel::int32 Kel_GetCount(kel::int64 session) {
  LogCall("Kel_GetCount", session);
  kel::int32 v = 0;
  sim::WithSession(session,
                   [&](sim::Session& s) { v = static_cast<kel::int32>(s.ans.rows.size()); });
  return v;
}

KEL_EXPORT kel::int32 Kel_GetColumnCount(kel::int64 session) {
  LogCall("Kel_GetColumnCount", session);
  kel::int32 v = 0;
  sim::WithSession(session, [&](sim::Session& s) {
    if (!s.ans.rows.empty()) v = static_cast<kel::int32>(s.ans.rows[0].size());
  });
  return v;
}

KEL_EXPORT bool Kel_HaveItem(kel::int64 session, kel::int32 fieldId, kel::int32 row) {
  LogCall("Kel_HaveItem", session, fieldId, row);
  std::string v;
  return Item(session, fieldId, row, &v);
}

KEL_EXPORT const char* Kel_GetItem(kel::int64 session, kel::int32 fieldId, char* buf,
                                   kel::int32* len, kel::int32 row) {
  LogCall("Kel_GetItem", session, fieldId, row);
  std::string v;
  if (!Item(session, fieldId, row, &v)) {
    if (len) *len = 0;
    return nullptr;
  }
  return sim::CopyText(v, buf, len);
}

KEL_EXPORT kel::int64 Kel_GetLong(kel::int64 session, kel::int32 fieldId, kel::int32 row) {
  LogCall("Kel_GetLong", session, fieldId, row);
  std::string v;
  return Item(session, fieldId, row, &v) ? std::strtoll(v.c_str(), nullptr, 10) : 0;
}

KEL_EXPORT kel::int64 Kel_GetInt64(kel::int64 session, kel::int32 fieldId, kel::int32 row) {
  LogCall("Kel_GetInt64", session, fieldId, row);
  std::string v;
  return Item(session, fieldId, row, &v) ? std::strtoll(v.c_str(), nullptr, 10) : 0;
}

KEL_EXPORT double Kel_GetDouble(kel::int64 session, kel::int32 fieldId, kel::int32 row) {
  LogCall("Kel_GetDouble", session, fieldId, row);
  std::string v;
  return Item(session, fieldId, row, &v) ? std::strtod(v.c_str(), nullptr) : 0.0;
}

KEL_EXPORT bool Kel_GetItemBuf(kel::int64 session, kel::int32 fieldId, char* buf, kel::int32* len,
                               kel::int32 row) {
  LogCall("Kel_GetItemBuf", session, fieldId, row);
  std::string v;
  bool found = false;
  sim::WithSession(session, [&](sim::Session& s) {
    if (fieldId == 0) {
      found = !s.body.empty();
      v = s.body;
    } else if (const std::string* p = s.ans.Find(fieldId, row)) {
      found = true;
      v = *p;
    }
  });
  if (!found) {
    if (len) *len = 0;
    return false;
  }
  return sim::CopyBinary(v, buf, len);
}

KEL_EXPORT const char* Kel_GetValWithIdByIndex(kel::int64 session, kel::int32 index,
                                               kel::int32* fieldId, char* buf, kel::int32* len,
                                               kel::int32 row) {
  LogCall("Kel_GetValWithIdByIndex", session, index, row);
  sim::Field f{0, {}};
  bool found = false;
  sim::WithSession(session, [&](sim::Session& s) {
    std::size_t r = row < 0 ? 0 : static_cast<std::size_t>(row);
    if (r < s.ans.rows.size() && index >= 0 &&
        static_cast<std::size_t>(index) < s.ans.rows[r].size()) {
      f = s.ans.rows[r][static_cast<std::size_t>(index)];
      found = true;
    }
  });
  if (!found) return nullptr;
  if (fieldId) *fieldId = f.id;
  return sim::CopyText(f.value, buf, len);
}

KEL_EXPORT bool Kel_IsStruct(kel::int64 session, kel::int32 index) {
  LogCall("Kel_IsStruct", session, index);
  bool v = false;
  sim::WithSession(session, [&](sim::Session& s) { v = BlockAt(s, index) != nullptr; });
  return v;
}

KEL_EXPORT bool Kel_GetStructData(kel::int64 session, char* buf, kel::int32* len,
                                  kel::int32 index) {
  LogCall("Kel_GetStructData", session, index);
  std::string v;
  bool found = false;
  sim::WithSession(session, [&](sim::Session& s) {
    if (const std::string* b = BlockAt(s, index)) {
      v = *b;
      found = true;
    }
  });
  if (!found) {
    if (len) *len = 0;
    return false;
  }
  return sim::CopyBinary(v, buf, len);
}

KEL_EXPORT const char* Kel_GetStructDataEx(kel::int64 session, kel::int32* len, kel::int32 index) {
  LogCall("Kel_GetStructDataEx", session, index);
  const char* p = nullptr;
  kel::int32 n = 0;
  sim::WithSession(session, [&](sim::Session& s) {
    if (const std::string* b = BlockAt(s, index)) {
      p = b->data();
      n = static_cast<kel::int32>(b->size());
    }
  });
  if (len) *len = n;
  return p;
}

KEL_EXPORT const char* Kel_GetReqStructData(kel::int64 session, kel::int32* len) {
  LogCall("Kel_GetReqStructData", session);
  const char* p = nullptr;
  kel::int32 n = 0;
  sim::WithSession(session, [&](sim::Session& s) {
    if (s.req.is_block) {
      p = s.req.block.data();
      n = static_cast<kel::int32>(s.req.block.size());
    }
  });
  if (len) *len = n;
  return p;
}

KEL_EXPORT bool Kel_GetBody(kel::int64 session, char* buf, kel::int32* len) {
  LogCall("Kel_GetBody", session);
  std::string v;
  bool found = sim::WithSession(session, [&](sim::Session& s) { v = s.body; });
  if (!found || v.empty()) {
    if (len) *len = 0;
    return false;
  }
  return sim::CopyBinary(v, buf, len);
}
