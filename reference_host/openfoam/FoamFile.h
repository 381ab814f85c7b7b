#pragma once

#include <string>

#include "reference_host/mesh/MeshFile.h"
#include "reference_host/mesh/TextCursor.h"

namespace reference_host {

/// A text file of OpenFOAM, open behind its FoamFile header.
class FoamFile {
 public:
  /// Throws MeshError for files that are missing, compressed, binary or without header.
  FoamFile(std::string const& folder, std::string const& name);

  std::string const& Name() const { return file_.Name(); }
  TextCursor& Text() { return text_; }

  /// The entry "class" of the header, such as "faceList".
  std::string const& ClassName() const { return className_; }

  /// Reads the keyword of the next entry in braces; empty at the closing brace, which is taken.
  std::string Keyword();

  /// Reads the value of an entry up to its end and returns its first word, which is empty for anything but a
  /// word.
  std::string Value();

 private:
  void ReadHeader();

  MeshFile file_;
  TextCursor text_;
  std::string className_;
};

}  // namespace reference_host
