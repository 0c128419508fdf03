#include "trade/named_line.h"

#include <fmt/compile.h>

namespace molra {

namespace {
fmt::string_view Span(const char* from, const char* to) {
  return fmt::string_view(from, static_cast<std::size_t>(to - from));
}

// A short text at the end of the line: fmt's append copies a character range in a loop
// that costs more than the copy itself for the few characters of a field.
template <typename Buffer>
void Put(Buffer& out, fmt::string_view text) {
  const std::size_t at = out.size();
  out.resize(at + text.size());
  if (text.size() != 0) std::memcpy(out.data() + at, text.data(), text.size());
}
void Put(fmt::memory_buffer& out, const fmt::format_int& number) {
  Put(out, fmt::string_view(number.data(), number.size()));
}
}  // namespace

NamedLine::Field& NamedLine::Next(const char* name, Kind kind) {
  Field& f = count_ < kMaxFields ? fields_[count_++] : spare_;
  f.name = line_detail::Name::Of(name);
  f.kind = kind;
  return f;
}

void NamedLine::AddText(const char* name, fmt::string_view text) {
  Next(name, Kind::kText).text = Text{texts_.size(), text.size()};
  Put(texts_, text);
}

// From the last field back, so that a name given again counts with its last value.
const NamedLine::Field* NamedLine::Find(const line_detail::Name& name) const {
  for (int i = count_ - 1; i >= 0; --i) {
    if (fields_[i].name == name) return &fields_[i];
  }
  return nullptr;
}

void NamedLine::Write(const Field& f, fmt::memory_buffer& out) const {
  switch (f.kind) {
    case Kind::kInt:
      Put(out, fmt::format_int(f.i));
      break;
    case Kind::kUint:
      Put(out, fmt::format_int(f.u));
      break;
    case Kind::kDouble: {
      char text[32];  // the longest shortest text of a double is 24 characters
      const char* end = fmt::format_to(text, FMT_COMPILE("{}"), f.d);  // no format parsed
      Put(out, Span(text, end));
      break;
    }
    case Kind::kText:
      Put(out, fmt::string_view(texts_.data() + f.text.at, f.text.size));
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
      if (brace != p) pieces_.push_back({Span(p, brace), false, {}});
      return;
    }
    if (brace[0] == brace[1]) {  // "{{" or "}}": the literal up to and with one brace
      pieces_.push_back({Span(p, brace + 1), false, {}});
      p = brace + 2;
      continue;
    }
    const char* end = brace + 1;
    while (*end != '\0' && *end != '}') ++end;
    if (*brace == '}' || *end == '\0') {
      pieces_.push_back({Span(p, brace), false, {}});
      usable_ = false;
      return;
    }
    const fmt::string_view name = Span(brace + 1, end);
    pieces_.push_back({Span(p, brace), true, line_detail::Name::Of(name)});
    p = end + 1;
  }
}

bool NamedLine::Format(const char* format, fmt::memory_buffer& out) const {
  return Format(LineFormat(format), out);
}

bool NamedLine::Format(const LineFormat& format, fmt::memory_buffer& out) const {
  for (const LineFormat::Piece& piece : format.pieces_) {
    Put(out, piece.literal);
    if (!piece.named) continue;
    const Field* f = Find(piece.name);
    if (f == nullptr) return false;
    Write(*f, out);
  }
  return format.usable_;
}

}  // namespace molra
