#include "reference_host/mesh/TextCursor.h"
#include "reference_host/mesh/MessageText.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <system_error>

namespace reference_host {
namespace {

constexpr std::size_t kLongestMacro = 500;
constexpr std::string_view kBlanks = " \t\r\n\v\f";
constexpr std::string_view kWordEnd = " \t\r\n\v\f(){};\"";
constexpr std::string_view kNameEnd = " \t\r\n\v\f{};\"";

bool Contains(std::string_view set, char c) { return set.find(c) != std::string_view::npos; }

/// from_chars reports "out of range" for numbers too large and too small for a double alike, without a value.
/// strtod distinguishes them (infinity, or the nearest small number).
bool ParseExtremeReal(std::string_view text, double& value) {
  value = std::strtod(std::string(text).c_str(), nullptr);
  return std::isfinite(value);
}

}  // namespace

TextCursor::TextCursor(MeshFile const& file, Comments comments)
    : file_(file), text_(file.Content()), end_(file.Size()), comments_(comments) {}

/// Holds n bytes from a position on, or those up to the end of the file.
void TextCursor::Load(std::size_t from, std::size_t n) {
  n = std::min(n, end_ - from);
  std::unique_ptr<char[]> next = std::move(AllocateContent(file_.Name(), n).bytes);
  std::size_t const nKept = from >= base_ && from < WindowEnd() ? std::min(n, WindowEnd() - from) : 0;
  if (nKept > 0) std::memcpy(next.get(), text_.data() + (from - base_), nKept);
  file_.Read(from + nKept, next.get() + nKept, n - nKept);
  earlier_ = std::move(window_);
  window_ = std::move(next);
  text_ = {window_.get(), n};
  base_ = from;
}

/// Makes sure that so many bytes from a position on are held, or those up to the end of the file.
void TextCursor::Hold(std::size_t position, std::size_t n) {
  bool const isHeld = position >= base_ && std::min(position + n, end_) <= WindowEnd();
  if (!isHeld) Load(std::min(position, end_), n + file_.Piece());
}

/// Holds more of the text behind the position. Returns false if there is no more.
bool TextCursor::Grow() {
  if (WindowEnd() == end_) return false;
  Load(position_, 2 * (WindowEnd() - position_) + file_.Piece());
  return true;
}

/// May let go of what is before the position.
std::size_t TextCursor::Find(std::string_view what, std::size_t from) {
  while (from <= end_) {
    Hold(from, what.size());
    std::size_t const at = text_.find(what, from - base_);
    if (at != std::string_view::npos) return base_ + at;
    if (WindowEnd() == end_) break;
    from = std::max(from, WindowEnd() - (what.size() - 1));
  }
  return std::string_view::npos;
}

std::string_view TextCursor::Since(std::size_t position, std::size_t most) {
  std::size_t const n = std::min(most, position_ - position);
  Hold(position, n);
  return text_.substr(position - base_, n);
}

bool TextCursor::AtEnd() {
  SkipBlanks();
  return position_ == end_;
}

char TextCursor::Peek() {
  if (AtEnd()) return '\0';
  return Here();
}

bool TextCursor::Accept(char c) {
  if (AtEnd() || Here() != c) return false;
  tokenStart_ = position_++;
  return true;
}

void TextCursor::Expect(char c) {
  char const what[] = {'\'', c, '\'', '\0'};
  BeginToken(what);
  if (Here() != c) FailExpected(what);
  ++position_;
}

std::string_view TextCursor::Word(char const* what) {
  BeginToken(what);
  std::string_view const word = TakeUntil(kWordEnd);
  if (word.empty()) FailExpected(what);
  return word;
}

std::string_view TextCursor::Name(char const* what) {
  BeginToken(what);
  std::string_view const name = TakeUntil(kNameEnd);
  if (name.empty()) FailExpected(what);
  return name;
}

std::string_view TextCursor::QuotedString(char const* what) {
  Expect('"');
  std::string_view const string = TakeUntil("\"\r\n");
  if (position_ == end_ || Here() != '"') Fail(std::string("no closing quotation mark after ") + what);
  ++position_;
  return string;
}

void TextCursor::Verbatim() {
  Expect('{');
  std::size_t const end = Find("#}", position_);
  if (end == std::string_view::npos) Fail("'{' is not closed by '#}'");
  position_ = end + 2;
}

std::string_view TextCursor::Macro() {
  Expect('$');
  std::size_t const start = tokenStart_;
  bool const isBraced = position_ < end_ && Here() == '{';
  if (isBraced) ++position_;
  std::string_view const name = TakeUntil(kWordEnd);
  if (isBraced) Expect('}');
  tokenStart_ = start;
  if (name.empty() || name.size() > kLongestMacro) FailExpected("a macro's name");
  return name;
}

void TextCursor::BeginBytes(char const* what, std::size_t n) {
  Expect('(');
  if (n > Remaining()) {
    Fail(std::string(what) + " has " + std::to_string(n) + " bytes, but the file ends after " +
         std::to_string(Remaining()));
  }
}

std::string_view TextCursor::Bytes(char const* what, std::size_t n) {
  BeginBytes(what, n);
  Hold(position_, n);
  std::string_view const bytes = text_.substr(position_ - base_, n);
  position_ += n;
  Expect(')');
  return bytes;
}

std::size_t TextCursor::SkipBytes(char const* what, std::size_t n) {
  BeginBytes(what, n);
  std::size_t const first = position_;
  position_ += n;
  Expect(')');
  return first;
}

bool TextCursor::SkipToClosing() {
  for (int depth = 1; depth > 0;) {
    SkipBlanks();
    if (position_ == end_) return false;
    std::size_t const next = text_.find_first_of("()/", position_ - base_);
    position_ = next == std::string_view::npos ? WindowEnd() : base_ + next;
    if (next == std::string_view::npos) continue;
    if (Here() == '(') ++depth;
    if (Here() == ')') --depth;
    Fill();
    if (Here() != '/' || !SkipComment()) ++position_;
  }
  tokenStart_ = position_ - 1;
  return true;
}

std::int64_t TextCursor::Integer(char const* what) {
  BeginToken(what);
  std::int64_t value = 0;
  while (true) {
    char const* const begin = text_.data() + (position_ - base_);
    char const* const end = text_.data() + text_.size();
    auto const [stop, error] = std::from_chars(begin, end, value);
    if (stop == end && Grow()) continue;
    if (error != std::errc() || (stop != end && !Contains(kWordEnd, *stop))) FailExpected(what);
    position_ += static_cast<std::size_t>(stop - begin);
    return value;
  }
}

double TextCursor::Real(char const* what) {
  BeginToken(what);
  if (Here() == '+') {  // from_chars does not accept a '+', and no '-' may follow it
    ++position_;
    if (position_ < end_ && Here() == '-') FailExpected(what);
  }
  double value = 0.0;
  while (true) {
    char const* const begin = text_.data() + (position_ - base_);
    char const* const end = text_.data() + text_.size();
    auto const [stop, error] = std::from_chars(begin, end, value);
    if (stop == end && Grow()) continue;
    bool const outOfRange = error == std::errc::result_out_of_range;
    if (outOfRange && !ParseExtremeReal({begin, static_cast<std::size_t>(stop - begin)}, value))
      FailExpected(what);
    if (error != std::errc() && !outOfRange) FailExpected(what);
    if (stop != end && !Contains(kWordEnd, *stop)) FailExpected(what);
    position_ += static_cast<std::size_t>(stop - begin);
    return value;
  }
}

std::size_t TextCursor::Count(char const* what, std::size_t characters) {
  std::int64_t const count = Integer(what);
  if (count < 0) FailExpected(what);
  // The last item needs no separator after it, hence + 1.
  if (static_cast<std::size_t>(count) > (Remaining() + 1) / characters) {
    Fail(std::string(what) + " is " + std::to_string(count) + ", more than the rest of the file can hold");
  }
  return static_cast<std::size_t>(count);
}

void TextCursor::SkipBlanks() {
  do {
    Fill();
    while (position_ < end_ && Contains(kBlanks, Here())) {
      ++position_;
      if (position_ == WindowEnd()) Fill();
    }
    if (position_ == end_ || Here() != '/') break;
    Fill();
  } while (comments_ == Comments::CStyle && SkipComment());
  Fill();
}

/// @pre the next two characters are held
bool TextCursor::SkipComment() {
  std::string_view const begin = text_.substr(position_ - base_, 2);
  if (begin == "//") {
    position_ = std::min(Find("\n", position_), end_);
    return true;
  }
  if (begin == "/*") {
    std::size_t const end = Find("*/", position_ + 2);
    position_ = end == std::string_view::npos ? end_ : end + 2;
    return true;
  }
  return false;
}

void TextCursor::BeginToken(char const* what) {
  SkipBlanks();
  tokenStart_ = position_;
  if (position_ == end_) Fail(std::string("the file ends where ") + what + " is expected");
}

std::string_view TextCursor::TakeUntil(std::string_view separators) {
  std::size_t size = 0;
  do {
    size = std::min(text_.find_first_of(separators, position_ - base_), text_.size()) - (position_ - base_);
  } while (position_ + size == WindowEnd() && Grow());
  std::string_view const taken = text_.substr(position_ - base_, size);
  position_ += size;
  return taken;
}

void TextCursor::FailExpected(char const* what) {
  Hold(tokenStart_, kAhead);
  std::string_view const rest = text_.substr(tokenStart_ - base_);
  Fail(std::string(what) + " expected instead of " + Quoted(rest.substr(0, rest.find_first_of(kBlanks))));
}

}  // namespace reference_host
