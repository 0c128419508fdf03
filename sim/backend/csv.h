// A small reader of comma-separated text, shared by every platform the simulator builds on:
// fields separated by commas, a field may be enclosed in double quotes (then it may hold
// commas, line ends and "" for a quote), records end with LF or CR LF, a UTF-8 byte-order
// mark at the start is skipped. Empty lines are skipped.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace sim {

class CsvReader {
 public:
  // The text must outlive the reader.
  explicit CsvReader(std::string_view text);
  // The next record; false at the end of the text or on malformed input (error() then says
  // why: a quote that is never closed, or text right after a closing quote).
  bool Next(std::vector<std::string>* fields);
  const std::string& error() const { return error_; }
  // The line (from 1) on which the record last returned starts.
  int line() const { return record_line_; }

 private:
  bool Fail(int line, const std::string& why);
  bool QuotedField(std::string* out);

  std::string_view text_;
  std::size_t at_ = 0;
  int line_ = 1;
  int record_line_ = 0;
  std::string error_;
};

// The field as it must be written to read back as itself: quoted when it is empty, holds a
// comma, a quote or a line end, or starts like a byte-order mark.
std::string CsvField(const std::string& value);

}  // namespace sim
