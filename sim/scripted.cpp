#include "scripted.h"

#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>
#include <sstream>

namespace sim {
namespace {
std::mutex g_scripts_mutex;
std::map<std::string, Answer> g_answers;
std::map<std::string, std::int32_t> g_lengths;
std::map<std::string, std::string> g_requests;
}  // namespace

bool FindScripted(const std::string& func, Answer* out) {
  std::lock_guard<std::mutex> lock(g_scripts_mutex);
  auto it = g_answers.find(func);
  if (it == g_answers.end()) return false;
  *out = it->second;
  return true;
}

void ScriptStruct(const std::string& func, std::string block) {
  Answer a;
  if (block.size() >= 13)
    a.code = static_cast<std::int16_t>(static_cast<unsigned char>(block[11]) |
                                       (static_cast<unsigned char>(block[12]) << 8));
  if (block.size() > 302)
    a.msg =
        std::string(block.c_str() + 302,
                    strnlen(block.c_str() + 302, std::min<std::size_t>(128, block.size() - 302)));
  a.blocks.push_back(std::move(block));
  std::lock_guard<std::mutex> lock(g_scripts_mutex);
  g_answers[func] = std::move(a);
}

void ScriptKv(const std::string& func, std::int32_t code, std::string msg,
              const std::string& rows) {
  Answer a;
  a.code = code;
  a.msg = std::move(msg);
  std::istringstream lines(rows);
  std::string line;
  while (std::getline(lines, line, '\n')) {
    Row& r = a.AddRow();
    std::istringstream fields(line);
    std::string f;
    while (std::getline(fields, f, '|')) {
      std::size_t eq = f.find('=');
      if (eq == std::string::npos) continue;
      r.push_back({std::atoi(f.substr(0, eq).c_str()), f.substr(eq + 1)});
    }
  }
  std::lock_guard<std::mutex> lock(g_scripts_mutex);
  g_answers[func] = std::move(a);
}

void ScriptPlain(const std::string& func, std::int32_t code, std::string msg) {
  Answer a;
  a.code = code;
  a.msg = std::move(msg);
  std::lock_guard<std::mutex> lock(g_scripts_mutex);
  g_answers[func] = std::move(a);
}

void ScriptLength(const std::string& func, std::int32_t len) {
  std::lock_guard<std::mutex> lock(g_scripts_mutex);
  g_lengths[func] = len < 0 ? 0 : len;
}

void ApplyLength(const std::string& func, Answer* ans) {
  std::lock_guard<std::mutex> lock(g_scripts_mutex);
  auto it = g_lengths.find(func);
  if (it == g_lengths.end() || ans->blocks.empty()) return;
  ans->blocks[0].resize(static_cast<std::size_t>(it->second), '\0');
}

void ClearScripts() {
  std::lock_guard<std::mutex> lock(g_scripts_mutex);
  g_answers.clear();
  g_lengths.clear();
}

void RecordRequest(const std::string& func, std::string bytes) {
  std::lock_guard<std::mutex> lock(g_scripts_mutex);
  g_requests[func] = std::move(bytes);
}

std::int32_t LastRequest(const std::string& func, char* buf, std::int32_t cap) {
  std::lock_guard<std::mutex> lock(g_scripts_mutex);
  auto it = g_requests.find(func);
  if (it == g_requests.end()) return -1;
  if (buf != nullptr && cap > 0)
    std::memcpy(buf, it->second.data(),
                std::min<std::size_t>(it->second.size(), static_cast<std::size_t>(cap)));
  return static_cast<std::int32_t>(it->second.size());
}

void ClearRequests() {
  std::lock_guard<std::mutex> lock(g_scripts_mutex);
  g_requests.clear();
}

}  // namespace sim
