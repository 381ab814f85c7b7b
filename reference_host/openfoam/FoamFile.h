#pragma once

#include <memory>
#include <string>

#include "reference_host/mesh/MeshFile.h"
#include "reference_host/mesh/TextCursor.h"
#include "reference_host/openfoam/FoamStorage.h"
#include "reference_host/openfoam/FoamSyntax.h"

namespace reference_host {

/// A file of OpenFOAM, text or binary, opened and read up to the end of its FoamFile header. It may be compressed, or
/// a processor's piece of a collated file.
class FoamFile {
 public:
  /// Pieces of collated files are always held whole.
  enum class Reading { Whole, InPieces };

  /// Opens what FindFoamFile finds for FOLDER/NAME. Throws MeshError for files that are missing, damaged or without a
  /// header.
  FoamFile(std::string const& folder, std::string const& name, Reading reading = Reading::Whole);

  /// The file on disk.
  std::string const& Name() const { return storage_.file; }
  FoamStorage const& Storage() const { return storage_; }

  /// Whether a position in the content is one in the file on disk.
  bool IsAsOnDisk() const { return storage_.piece == FoamStorage::kWhole && !storage_.IsCompressed(); }

  MeshFile const& Content() const { return *file_; }
  TextCursor& Text() { return *text_; }
  FoamFormat const& Format() const { return header_.format; }

  /// The entry "class" of the header, such as "faceList".
  std::string const& ClassName() const { return header_.className; }

  /// ReadFoamKeyword and ReadFoamValue of this file.
  std::string Keyword() { return ReadFoamKeyword(*text_); }
  std::string Value() { return ReadFoamValue(*text_, header_.format); }

 private:
  void Open(Reading reading);
  void OpenPiece();

  FoamStorage storage_;
  std::unique_ptr<MeshFile> file_;
  std::unique_ptr<TextCursor> text_;
  FoamHeader header_;
};

}  // namespace reference_host
