#include "reference_host/gmsh/GmshCursor.h"

#include <cstring>
#include <limits>

namespace reference_host {

void GmshCursor::SetBinary() {
  binary_ = true;
  file_.NamePlacesByOffset();
}

template <class Number>
Number GmshCursor::Raw(char const* what) {
  rawStart_ = text_.Position();
  std::string_view const bytes = text_.Ahead(sizeof(Number));
  if (bytes.size() < sizeof(Number)) Fail(std::string("the file ends where ") + what + " is expected");
  Number value;
  std::memcpy(&value, bytes.data(), sizeof(Number));
  text_.MoveTo(rawStart_ + sizeof(Number));
  return value;
}

int GmshCursor::Int(char const* what) {
  if (binary_) return Raw<std::int32_t>(what);
  std::int64_t const value = text_.Integer(what);
  if (value < std::numeric_limits<int>::min() || value > std::numeric_limits<int>::max()) {
    Fail(std::string(what) + " is out of range");
  }
  return static_cast<int>(value);
}

std::int64_t GmshCursor::Size(char const* what) {
  std::int64_t const value = binary_ ? Raw<std::int64_t>(what) : text_.Integer(what);
  if (value < 0) Fail(std::string(what) + " is out of range");
  return value;
}

double GmshCursor::Real(char const* what) { return binary_ ? Raw<double>(what) : text_.Real(what); }

void GmshCursor::CheckRoom(std::int64_t count, std::size_t numbers, std::size_t bytes,
                           char const* what) const {
  // A number in text takes a digit and a separator, except the last one of the file.
  std::size_t const room = binary_ ? text_.Remaining() : text_.Remaining() + 1;
  std::size_t const each = binary_ ? bytes : 2 * numbers;
  if (count >= 0 && static_cast<std::size_t>(count) <= room / each) return;
  Fail(std::string("the file says ") + std::to_string(count) + " " + what +
       (count < 0 ? "" : ", more than the rest of it can hold"));
}

void GmshCursor::Skip(std::size_t bytes, std::size_t lastNumber) {
  if (bytes == 0) return;
  text_.MoveTo(text_.Position() + bytes);
  rawStart_ = text_.Position() - lastNumber;
}

void GmshCursor::SkipLineBreak() {
  std::size_t position = text_.Position();
  auto const isBlank = [](std::string_view c) { return c == " " || c == "\t" || c == "\r"; };
  std::string_view next = text_.Ahead(1);
  while (isBlank(next)) {
    text_.MoveTo(++position);
    next = text_.Ahead(1);
  }
  if (next != "\n") text_.Fail("the binary numbers do not begin on a line of their own");
  text_.MoveTo(position + 1);
}

void GmshCursor::EndSection(std::string_view section) {
  std::string const expected = "$End" + std::string(section);
  if (text_.Word(expected.c_str()) != expected) text_.Fail(expected + " expected here");
}

void GmshCursor::SkipSection(std::string_view section) {
  std::string const end = "\n$End" + std::string(section);
  std::size_t const found = text_.Find(end, text_.Position());
  if (found == std::string_view::npos) text_.Fail("the file ends before $End" + std::string(section));
  text_.MoveTo(found + end.size());
}

void GmshCursor::Fail(std::string const& what) const {
  if (binary_) file_.Fail(rawStart_, what);
  text_.Fail(what);
}

}  // namespace reference_host
