#include "trade/named_line.h"

#include <cstring>

namespace molra {

NamedLine::Field& NamedLine::Next(const char* name, Kind kind) {
  Field& f = count_ < kMaxFields ? fields_[count_++] : spare_;
  f.name = name;
  f.kind = kind;
  return f;
}

void NamedLine::AddText(const char* name, fmt::string_view text) {
  Next(name, Kind::kText).text = Text{texts_.size(), text.size()};
  texts_.append(text.data(), text.data() + text.size());
}

// From the last field back, so that a name given again counts with its last value.
const NamedLine::Field* NamedLine::Find(fmt::string_view name) const {
  for (int i = count_ - 1; i >= 0; --i) {
    const fmt::string_view have = fields_[i].name;
    if (have.size() == name.size() && (name.size() == 0 || have[0] == name[0]) &&
        std::memcmp(have.data(), name.data(), name.size()) == 0) {
      return &fields_[i];
    }
  }
  return nullptr;
}

void NamedLine::Write(const Field& f, fmt::memory_buffer& out) const {
  switch (f.kind) {
    case Kind::kInt: {
      const fmt::format_int text(f.i);
      out.append(text.data(), text.data() + text.size());
      break;
    }
    case Kind::kUint: {
      const fmt::format_int text(f.u);
      out.append(text.data(), text.data() + text.size());
      break;
    }
    case Kind::kDouble:
      fmt::format_to(fmt::appender(out), "{}", f.d);
      break;
    case Kind::kText:
      out.append(texts_.data() + f.text.at, texts_.data() + f.text.at + f.text.size);
      break;
  }
}

// Placeholders come every few characters: a plain scan beats strpbrk's set-up.
LineFormat::LineFormat(const char* format) {
  const char* p = format;
  for (;;) {
    const char* brace = p;
    while (*brace != '\0' && *brace != '{' && *brace != '}') ++brace;
    if (*brace == '\0') {
      if (brace != p) pieces_.push_back({fmt::string_view(p, brace - p), {}});
      return;
    }
    if (brace[0] == brace[1]) {  // "{{" or "}}": the literal up to and with one brace
      pieces_.push_back({fmt::string_view(p, brace + 1 - p), {}});
      p = brace + 2;
      continue;
    }
    const char* end = brace + 1;
    while (*end != '\0' && *end != '}') ++end;
    if (*brace == '}' || *end == '\0') {
      pieces_.push_back({fmt::string_view(p, brace - p), {}});
      usable_ = false;
      return;
    }
    pieces_.push_back({fmt::string_view(p, brace - p), fmt::string_view(brace + 1, end - brace - 1)});
    p = end + 1;
  }
}

bool NamedLine::Format(const char* format, fmt::memory_buffer& out) const {
  return Format(LineFormat(format), out);
}

bool NamedLine::Format(const LineFormat& format, fmt::memory_buffer& out) const {
  for (const LineFormat::Piece& piece : format.pieces_) {
    out.append(piece.literal.data(), piece.literal.data() + piece.literal.size());
    if (piece.name.data() == nullptr) continue;
    const Field* f = Find(piece.name);
    if (f == nullptr) return false;
    Write(*f, out);
  }
  return format.usable_;
}

}  // namespace molra
