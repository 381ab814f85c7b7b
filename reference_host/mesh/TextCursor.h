#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "reference_host/mesh/MeshFile.h"

namespace reference_host {

/// Reads the text of a mesh file item by item. Every failure is a MeshError that names the position of the
/// last item. The file is borrowed.
class TextCursor {
 public:
  enum class Comments { None, CStyle };

  TextCursor(MeshFile const& file, Comments comments);

  std::size_t Position() const { return position_; }
  void MoveTo(std::size_t position) { position_ = position; }
  /// What has been read since a position.
  std::string_view Since(std::size_t position) const { return text_.substr(position, position_ - position); }
  std::size_t Remaining() const { return text_.size() - position_; }

  /// Whether only blanks and comments are left.
  bool AtEnd();

  /// The next character after blanks and comments, which stays unread; '\0' at the end.
  char Peek();

  /// Reads that character if it is c.
  bool Accept(char c);
  void Expect(char c);

  /// Characters up to the next blank or one of ( ) { } ; ". Never empty.
  /// @param[in] what  what is expected here, for the message: "a node number"
  std::string_view Word(char const* what);

  /// Characters up to the next blank or one of { } ; ", for names that may hold parentheses. Never empty.
  std::string_view Name(char const* what);

  /// The text between two quotation marks on one line.
  std::string_view QuotedString(char const* what);

  /// Passes over the text in "{ ... #}", which has no other form.
  void Verbatim();

  /// The name in "$name" or "${name}", with the characters of a word. Never empty.
  std::string_view Macro();

  /// The n bytes in "(n bytes)". Fails if the file ends before.
  std::string_view Bytes(char const* what, std::size_t n);

  std::int64_t Integer(char const* what);
  double Real(char const* what);

  /// The number of items that follow, each at least `characters` long. Fails for a count that the rest of the
  /// file cannot hold, before anything is allocated for it.
  std::size_t Count(char const* what, std::size_t characters);

  /// Fails at the beginning of the last item read.
  [[noreturn]] void Fail(std::string const& what) const { FailAt(tokenStart_, what); }

  /// Fails at a position.
  [[noreturn]] void FailAt(std::size_t position, std::string const& what) const {
    file_.Fail(position, what);
  }

 private:
  void SkipBlanks();
  bool SkipComment();
  void BeginToken(char const* what);
  std::string_view TakeUntil(std::string_view separators);
  [[noreturn]] void FailExpected(char const* what);

  MeshFile const& file_;
  std::string_view text_;
  Comments comments_;
  std::size_t position_ = 0;
  std::size_t tokenStart_ = 0;
};

}  // namespace reference_host
