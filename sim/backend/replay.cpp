#include "replay.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>

#include "config.h"
#include "csv.h"

namespace sim {
namespace {

// Column slots: the six plain columns, then per level bid, bid volume, ask, ask volume.
enum Slot { kTime, kExchange, kCode, kLast, kVolume, kTurnover, kFirstLevel };
constexpr int kSlots = kFirstLevel + 4 * kLevels;

std::string SlotName(int slot) {
  static const char* kPlain[] = {"time", "exchange", "code", "last", "volume", "turnover"};
  if (slot < kFirstLevel) return kPlain[slot];
  int n = (slot - kFirstLevel) / 4 + 1, part = (slot - kFirstLevel) % 4;
  std::string side = part < 2 ? "bid" : "ask";
  return side + std::to_string(n) + (part % 2 == 1 ? "_volume" : "");
}

class RowReader {
 public:
  explicit RowReader(std::string* error) : error_(error) {}

  bool Header(const std::vector<std::string>& names, int line) {
    column_.assign(kSlots, -1);
    for (std::size_t i = 0; i < names.size(); ++i) {
      int slot = -1;
      for (int s = 0; s < kSlots && slot < 0; ++s)
        if (SlotName(s) == names[i]) slot = s;
      if (slot < 0) return Fail(line, "unknown column \"" + names[i] + "\"");
      if (column_[slot] >= 0) return Fail(line, "column \"" + names[i] + "\" given twice");
      column_[slot] = static_cast<int>(i);
    }
    width_ = names.size();
    for (int s : {kTime, kExchange, kCode, kLast, kVolume})
      if (column_[s] < 0) return Fail(line, "no column \"" + SlotName(s) + "\"");
    for (int s = kFirstLevel; s < kSlots; s += 2)
      if ((column_[s] < 0) != (column_[s + 1] < 0))
        return Fail(line, "\"" + SlotName(s) + "\" and \"" + SlotName(s + 1) + "\" come in pairs");
    return true;
  }

  bool Row(const std::vector<std::string>& f, int line, Replay* out) {
    if (f.size() != width_)
      return Fail(line, std::to_string(f.size()) + " fields where the header names " +
                            std::to_string(width_));
    ReplayRow r;
    r.time_ms = ParseTimeOfDay(Cell(f, kTime));
    if (r.time_ms < 0) return Fail(line, "time \"" + Cell(f, kTime) + "\" is not HH:MM:SS[.mmm]");
    const std::string &jys = Cell(f, kExchange), &zqdm = Cell(f, kCode);
    if (jys.empty() || jys.size() > 2 || zqdm.empty() || zqdm.size() > 8)
      return Fail(line, "exchange and code must be given (at most 2 and 8 characters)");
    if (!Price(f, kLast, line, &r.last)) return false;
    if (r.last <= 0) return Fail(line, "last must be above 0");
    if (!Volume(f, kVolume, line, &r.volume)) return false;
    if (column_[kTurnover] >= 0 && !Cell(f, kTurnover).empty() &&
        !Price(f, kTurnover, line, &r.turnover))
      return false;
    for (int n = 0; n < kLevels; ++n)
      if (!LevelAt(f, kFirstLevel + 4 * n, line, &r.bids[n]) ||
          !LevelAt(f, kFirstLevel + 4 * n + 2, line, &r.asks[n]))
        return false;
    r.security = SecurityIndex(jys, zqdm, r.last, out);
    out->rows.push_back(r);
    return true;
  }

 private:
  const std::string& Cell(const std::vector<std::string>& f, int slot) const {
    static const std::string kNone;
    return column_[slot] < 0 ? kNone : f[static_cast<std::size_t>(column_[slot])];
  }
  bool Price(const std::vector<std::string>& f, int slot, int line, double* out) {
    const std::string& v = Cell(f, slot);
    char* end = nullptr;
    double d = std::strtod(v.c_str(), &end);
    if (v.empty() || *end != '\0' || !std::isfinite(d) || d < 0 || d > 1e9)
      return Fail(line, SlotName(slot) + " \"" + v + "\" is not a price");
    *out = d;
    return true;
  }
  bool Volume(const std::vector<std::string>& f, int slot, int line, std::int64_t* out) {
    const std::string& v = Cell(f, slot);
    if (v.empty() || v.size() > 15 || v.find_first_not_of("0123456789") != std::string::npos)
      return Fail(line, SlotName(slot) + " \"" + v + "\" is not a quantity");
    *out = std::atoll(v.c_str());
    return true;
  }
  bool LevelAt(const std::vector<std::string>& f, int slot, int line, Level* out) {
    if (column_[slot] < 0) return true;
    bool no_price = Cell(f, slot).empty(), no_volume = Cell(f, slot + 1).empty();
    if (no_price && no_volume) return true;
    if (no_price != no_volume)
      return Fail(line, SlotName(slot) + " and " + SlotName(slot + 1) + " are given together");
    return Price(f, slot, line, &out->price) && Volume(f, slot + 1, line, &out->volume);
  }
  std::size_t SecurityIndex(const std::string& jys, const std::string& zqdm, double last,
                            Replay* out) {
    auto [it, added] = index_.emplace(jys + "." + zqdm, out->securities.size());
    if (added) out->securities.push_back({jys, zqdm, last});
    return it->second;
  }
  bool Fail(int line, const std::string& why) {
    if (error_->empty()) *error_ = "line " + std::to_string(line) + ": " + why;
    return false;
  }

  std::string* error_;
  std::vector<int> column_;
  std::size_t width_ = 0;
  std::map<std::string, std::size_t> index_;
};

}  // namespace

bool ReadReplay(std::string_view text, Replay* out, std::string* error) {
  std::string why;
  Replay replay;
  CsvReader csv(text);
  RowReader rows(&why);
  std::vector<std::string> fields;
  bool header = true;
  while (why.empty() && csv.Next(&fields)) {
    if (header) {
      rows.Header(fields, csv.line());
      header = false;
    } else {
      rows.Row(fields, csv.line(), &replay);
    }
  }
  if (why.empty()) why = csv.error();
  if (why.empty() && header) why = "no header line";
  if (!why.empty()) {
    if (error) *error = why;
    return false;
  }
  std::stable_sort(replay.rows.begin(), replay.rows.end(),
                   [](const ReplayRow& a, const ReplayRow& b) { return a.time_ms < b.time_ms; });
  *out = std::move(replay);
  return true;
}

bool ReadReplayFile(const std::string& path, Replay* out, std::string* error) {
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    if (error) *error = "cannot read the replay file " + path;
    return false;
  }
  std::ostringstream text;
  text << in.rdbuf();
  if (ReadReplay(text.str(), out, error)) return true;
  if (error) *error = "replay file " + path + ", " + *error;
  return false;
}

}  // namespace sim
