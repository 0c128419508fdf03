#include "csv.h"

namespace sim {

CsvReader::CsvReader(std::string_view text) : text_(text) {
  if (text_.substr(0, 3) == "\xEF\xBB\xBF") at_ = 3;
}

bool CsvReader::Fail(int line, const std::string& why) {
  error_ = "line " + std::to_string(line) + ": " + why;
  at_ = text_.size();
  return false;
}

bool CsvReader::QuotedField(std::string* out) {
  ++at_;  // the opening quote
  int opened = line_;
  for (;;) {
    if (at_ >= text_.size()) return Fail(opened, "a quoted field is not closed");
    char ch = text_[at_++];
    if (ch == '"') {
      if (at_ < text_.size() && text_[at_] == '"') {
        out->push_back('"');
        ++at_;
        continue;
      }
      return true;
    }
    if (ch == '\n') ++line_;
    out->push_back(ch);
  }
}

bool CsvReader::Next(std::vector<std::string>* fields) {
  fields->clear();
  if (!error_.empty()) return false;
  // Skip empty lines.
  while (at_ < text_.size() &&
         (text_[at_] == '\n' ||
          (text_[at_] == '\r' && at_ + 1 < text_.size() && text_[at_ + 1] == '\n'))) {
    at_ += text_[at_] == '\r' ? 2 : 1;
    ++line_;
  }
  if (at_ >= text_.size()) return false;
  record_line_ = line_;
  fields->emplace_back();
  for (;;) {
    std::string& field = fields->back();
    if (at_ < text_.size() && text_[at_] == '"' && field.empty()) {
      if (!QuotedField(&field)) return false;
      if (at_ < text_.size() && text_[at_] != ',' && text_[at_] != '\n' &&
          !(text_[at_] == '\r' && at_ + 1 < text_.size() && text_[at_ + 1] == '\n'))
        return Fail(line_, "text after the closing quote of a field");
    }
    if (at_ >= text_.size()) return true;
    char ch = text_[at_];
    if (ch == ',') {
      ++at_;
      fields->emplace_back();
    } else if (ch == '\n' || (ch == '\r' && at_ + 1 < text_.size() && text_[at_ + 1] == '\n')) {
      at_ += ch == '\r' ? 2 : 1;
      ++line_;
      return true;
    } else {
      field.push_back(ch);
      ++at_;
    }
  }
}

std::string CsvField(const std::string& value) {
  bool plain =
      !value.empty() && value.find_first_of(",\"\r\n") == std::string::npos &&
      value.compare(0, 3, "\xEF\xBB\xBF") != 0;  // a leading mark would read as a byte-order mark
  if (plain) return value;
  std::string out = "\"";
  for (char ch : value) {
    if (ch == '"') out.push_back('"');
    out.push_back(ch);
  }
  return out + "\"";
}

}  // namespace sim
