// Writing a pushed record's members straight into a JSON writer (the message handlers and
// anything that needs the text without a copy use this; DecodePush wraps it).
#pragma once

#include "core/json_text.h"

namespace molra {

// Members between "SYS_TYPE" and "PARSE_COST" of each layout.
constexpr int kConfirmMembers = 37;
constexpr int kStructPushMembers = 38;

// The record's members in member order. The record must hold the layout's full length.
void WritePushMembers(JsonWriter& w, const char* record, bool structured);
// The whole object: "TYPE", "SYS_TYPE" 4, the record's members, "PARSE_COST" 0.
void WritePush(JsonWriter& w, const char* record, bool structured, int type);

}  // namespace molra
