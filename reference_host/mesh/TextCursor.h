#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "reference_host/mesh/MeshFile.h"

namespace reference_host {

/// Reads the text of a mesh file item by item. Every failure is a MeshError that names the position of the
/// last item. The file is borrowed.
///
/// Of a file in pieces, the cursor holds a piece around its position. What it returns of the text can be used until the
/// next item but one is read.
class TextCursor {
 public:
  enum class Comments { None, CStyle };

  TextCursor(MeshFile const& file, Comments comments);

  std::size_t Position() const { return position_; }
  void MoveTo(std::size_t position) { position_ = position; }
  /// What has been read since a position, at most so many characters.
  std::string_view Since(std::size_t position, std::size_t most);
  std::size_t Remaining() const { return end_ - position_; }

  /// The next n bytes, or those up to the end of the file, which stay unread.
  std::string_view Ahead(std::size_t n) {
    if (position_ < base_ || position_ + n > WindowEnd()) Hold(position_, n);
    return text_.substr(position_ - base_, n);
  }

  /// The first place of a text from a position on; npos if there is none.
  std::size_t Find(std::string_view what, std::size_t from);

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

  /// Passes over the n bytes in "(n bytes)", with the same failures. Returns the position of the first one.
  std::size_t SkipBytes(char const* what, std::size_t n);

  /// Passes over the rest of a list in parentheses, the first of which has been read, whatever is in it. Returns false
  /// if the file ends before.
  bool SkipToClosing();

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
  /// The least text that is held ahead of the position at the start of an item: more than messages quote.
  static constexpr std::size_t kAhead = 64;

  char Here() const { return text_[position_ - base_]; }
  std::size_t WindowEnd() const { return base_ + text_.size(); }
  void Load(std::size_t from, std::size_t n);
  void Hold(std::size_t position, std::size_t n);
  void Fill() {
    if (position_ + kAhead > WindowEnd() || position_ < base_) Hold(position_, kAhead);
  }
  bool Grow();
  void BeginBytes(char const* what, std::size_t n);

  void SkipBlanks();
  bool SkipComment();
  void BeginToken(char const* what);
  std::string_view TakeUntil(std::string_view separators);
  [[noreturn]] void FailExpected(char const* what);

  MeshFile const& file_;
  std::string_view text_;                     ///< what is held of the file
  std::size_t base_ = 0;                      ///< its position
  std::size_t end_;                           ///< of the file
  std::unique_ptr<char[]> window_, earlier_;  ///< of a file in pieces: text_, and what was held before
  Comments comments_;
  std::size_t position_ = 0;
  std::size_t tokenStart_ = 0;
};

}  // namespace reference_host
