#pragma once

#include <string>
#include <string_view>

#include "cli/output/Fingerprint.h"

namespace zyngrad {

/// How the program recognises files that it has put into a user's case: by a note in the header, with a checksum of the
/// whole file. A file that was edited, or that another program has written anew, no longer has it.

/// The text of the note, before the checksum is known.
std::string CaseNote();

/// Puts the checksum into the note of a text that comes in pieces twice: once to make the checksum, once to get it.
class CaseSeal {
 public:
  void Add(std::string_view piece) { fingerprint_.Add(piece); }

  /// @param[in] beginning  the first piece, which has CaseNote() in its header
  void PutInto(std::string& beginning) const;

 private:
  GrowingFingerprint fingerprint_;
};

/// Puts the checksum into the note of a file's text.
/// @pre the text has CaseNote() in its header
void Seal(std::string& text);

/// Whether the text has a note with the checksum that it should have.
bool IsSealed(std::string text);

/// Whether the file, which may be compressed, has been written by this program and not been changed since. A file that
/// cannot be read has not.
bool IsOurCaseFile(std::string const& file);

}  // namespace zyngrad
