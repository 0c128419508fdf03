// Answers scripted by the control interface, answer-length overrides and the last request
// seen per function code.
#pragma once

#include <cstdint>
#include <string>

#include "session.h"

namespace sim {

// The scripted answer for a function code, if any.
bool FindScripted(const std::string& func, Answer* out);
void ScriptStruct(const std::string& func, std::string block);
void ScriptKv(const std::string& func, std::int32_t code, std::string msg, const std::string& rows);
void ScriptPlain(const std::string& func, std::int32_t code, std::string msg);
void ScriptLength(const std::string& func, std::int32_t len);
// Applies a length override to the back end's own structured answer.
void ApplyLength(const std::string& func, Answer* ans);
void ClearScripts();

void RecordRequest(const std::string& func, std::string bytes);
// Copies at most cap bytes; full length, -1 when none.
std::int32_t LastRequest(const std::string& func, char* buf, std::int32_t cap);
void ClearRequests();

}  // namespace sim
