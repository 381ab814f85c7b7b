#include "reference_host/mesh/TextCursor.h"
#include "reference_host/mesh/MessageText.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
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
    : file_(file), text_(file.Content()), comments_(comments) {}

bool TextCursor::AtEnd() {
  SkipBlanks();
  return position_ == text_.size();
}

char TextCursor::Peek() {
  if (AtEnd()) return '\0';
  return text_[position_];
}

bool TextCursor::Accept(char c) {
  if (AtEnd() || text_[position_] != c) return false;
  tokenStart_ = position_++;
  return true;
}

void TextCursor::Expect(char c) {
  char const what[] = {'\'', c, '\'', '\0'};
  BeginToken(what);
  if (text_[position_] != c) FailExpected(what);
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
  std::size_t const end = std::min(text_.find_first_of("\"\r\n", position_), text_.size());
  std::string_view const string = text_.substr(position_, end - position_);
  if (end == text_.size() || text_[end] != '"') Fail(std::string("no closing quotation mark after ") + what);
  position_ = end + 1;
  return string;
}

void TextCursor::Verbatim() {
  Expect('{');
  std::size_t const end = text_.find("#}", position_);
  if (end == std::string_view::npos) Fail("'{' is not closed by '#}'");
  position_ = end + 2;
}

std::string_view TextCursor::Macro() {
  Expect('$');
  std::size_t const start = tokenStart_;
  bool const isBraced = position_ < text_.size() && text_[position_] == '{';
  if (isBraced) ++position_;
  std::string_view const name = TakeUntil(kWordEnd);
  if (isBraced) Expect('}');
  tokenStart_ = start;
  if (name.empty() || name.size() > kLongestMacro) FailExpected("a macro's name");
  return name;
}

std::string_view TextCursor::Bytes(char const* what, std::size_t n) {
  Expect('(');
  if (n > Remaining()) {
    Fail(std::string(what) + " has " + std::to_string(n) + " bytes, but the file ends after " +
         std::to_string(Remaining()));
  }
  std::string_view const bytes = text_.substr(position_, n);
  position_ += n;
  Expect(')');
  return bytes;
}

std::int64_t TextCursor::Integer(char const* what) {
  BeginToken(what);
  char const* const end = text_.data() + text_.size();
  std::int64_t value = 0;
  auto const [stop, error] = std::from_chars(text_.data() + position_, end, value);
  if (error != std::errc() || (stop != end && !Contains(kWordEnd, *stop))) FailExpected(what);
  position_ = static_cast<std::size_t>(stop - text_.data());
  return value;
}

double TextCursor::Real(char const* what) {
  BeginToken(what);
  if (text_[position_] == '+') {  // from_chars does not accept a '+', and no '-' may follow it
    ++position_;
    if (position_ < text_.size() && text_[position_] == '-') FailExpected(what);
  }
  char const* const begin = text_.data() + position_;
  char const* const end = text_.data() + text_.size();
  double value = 0.0;
  auto const [stop, error] = std::from_chars(begin, end, value);
  bool const outOfRange = error == std::errc::result_out_of_range;
  if (outOfRange && !ParseExtremeReal({begin, static_cast<std::size_t>(stop - begin)}, value))
    FailExpected(what);
  if (error != std::errc() && !outOfRange) FailExpected(what);
  if (stop != end && !Contains(kWordEnd, *stop)) FailExpected(what);
  position_ = static_cast<std::size_t>(stop - text_.data());
  return value;
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
    while (position_ < text_.size() && Contains(kBlanks, text_[position_])) ++position_;
  } while (comments_ == Comments::CStyle && SkipComment());
}

bool TextCursor::SkipComment() {
  std::string_view const begin = text_.substr(position_, 2);
  if (begin == "//") {
    position_ = std::min(text_.find('\n', position_), text_.size());
    return true;
  }
  if (begin == "/*") {
    std::size_t const end = text_.find("*/", position_ + 2);
    position_ = end == std::string_view::npos ? text_.size() : end + 2;
    return true;
  }
  return false;
}

void TextCursor::BeginToken(char const* what) {
  SkipBlanks();
  tokenStart_ = position_;
  if (position_ == text_.size()) Fail(std::string("the file ends where ") + what + " is expected");
}

std::string_view TextCursor::TakeUntil(std::string_view separators) {
  std::size_t const end = std::min(text_.find_first_of(separators, position_), text_.size());
  std::string_view const taken = text_.substr(position_, end - position_);
  position_ = end;
  return taken;
}

void TextCursor::FailExpected(char const* what) {
  std::size_t const end = text_.find_first_of(kBlanks, tokenStart_);
  Fail(std::string(what) + " expected instead of " + Quoted(text_.substr(tokenStart_, end - tokenStart_)));
}

}  // namespace reference_host
