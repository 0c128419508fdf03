// The simulator's CSV reader and replay files: text of any content read as records, which,
// written back field by field, must read as the same records; and read as a replay file,
// which when accepted must hold rows in time order that name known securities.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "csv.h"
#include "replay.h"

namespace {

using Records = std::vector<std::vector<std::string>>;

bool ReadAll(const std::string& text, Records* out) {
  sim::CsvReader csv(text);
  std::vector<std::string> fields;
  while (csv.Next(&fields)) out->push_back(fields);
  return csv.error().empty();
}

std::string Write(const Records& records) {
  std::string text;
  for (const auto& r : records) {
    for (std::size_t i = 0; i < r.size(); ++i) text += (i ? "," : "") + sim::CsvField(r[i]);
    text += "\n";
  }
  return text;
}

void CheckReplay(const std::string& text) {
  sim::Replay replay;
  std::string error;
  if (!sim::ReadReplay(text, &replay, &error)) {
    if (error.empty()) std::abort();  // a refusal always says why
    return;
  }
  for (std::size_t i = 0; i < replay.rows.size(); ++i) {
    const sim::ReplayRow& r = replay.rows[i];
    if (r.security >= replay.securities.size() || r.last <= 0 || r.volume < 0) std::abort();
    if (i > 0 && replay.rows[i - 1].time_ms > r.time_ms) std::abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  Records records;
  if (ReadAll(text, &records)) {
    Records again;
    if (!ReadAll(Write(records), &again) || again != records) std::abort();
  }
  CheckReplay(text);
  return 0;
}
