#pragma once

#include <string>

#include "reference_host/mesh/MeshFile.h"
#include "reference_host/mesh/TextCursor.h"

namespace reference_host {

/// A text file of OpenFOAM, opened and read up to the end of its FoamFile header.
class FoamFile {
 public:
  /// Throws MeshError for files that are missing, compressed, binary or without a header.
  FoamFile(std::string const& folder, std::string const& name);

  std::string const& Name() const { return file_.Name(); }
  TextCursor& Text() { return text_; }

  /// The entry "class" of the header, such as "faceList".
  std::string const& ClassName() const { return className_; }

  /// Reads the keyword of the next entry in braces. Returns an empty text at the closing brace, after reading
  /// it.
  std::string Keyword();

  /// Reads the value of an entry to its end. Returns its first word; empty if it does not begin with a word.
  std::string Value();

 private:
  void ReadHeader();

  MeshFile file_;
  TextCursor text_;
  std::string className_;
};

}  // namespace reference_host
