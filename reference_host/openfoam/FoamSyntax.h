#pragma once

#include <string>

#include "reference_host/mesh/TextCursor.h"

namespace reference_host {

/// How an OpenFOAM file is written.
struct FoamFormat {
  bool isBinary = false;
  bool isCompressed = false;  ///< by gzip, NAME.gz
  int labelBytes = 4;         ///< of an integer in a binary file, 4 or 8
  int scalarBytes = 8;        ///< of a number in a binary file, 4 or 8
};

/// What the header of an OpenFOAM file says.
struct FoamHeader {
  std::string className;  ///< such as "faceList"
  FoamFormat format;
};

/// Reads "FoamFile { format ascii; class faceList; ... }". Throws MeshError if it is not there, and for formats that
/// cannot be read.
FoamHeader ReadFoamHeader(TextCursor& text);

/// Reads the keyword of the next entry in braces. Returns an empty text at the closing brace, after reading it.
std::string ReadFoamKeyword(TextCursor& text);

/// Reads the value of an entry to its end, over binary lists in it, too. Returns its first word; empty if it does not
/// begin with a word.
std::string ReadFoamValue(TextCursor& text, FoamFormat const& format);

}  // namespace reference_host
