#include "reference_host/openfoam/FoamFile.h"

#include <filesystem>
#include <utility>

#include "reference_host/openfoam/CollatedFile.h"
#include "reference_host/openfoam/GzipFile.h"

namespace reference_host {
namespace {

constexpr TextCursor::Comments kComments = TextCursor::Comments::CStyle;

bool BeginsWithHeader(TextCursor& text) {
  bool const isHeader = text.Peek() == 'F' && text.Name("FoamFile") == "FoamFile";
  text.MoveTo(0);
  return isHeader;
}

}  // namespace

FoamFile::FoamFile(std::string const& folder, std::string const& name, Reading reading)
    : storage_(FindFoamFile((std::filesystem::path(folder) / name).string())) {
  if (storage_.piece == FoamStorage::kWhole) {
    Open(reading);
  } else {
    OpenPiece();
  }
  header_.format.isCompressed = storage_.IsCompressed();
  if (header_.format.isBinary) file_->NamePlacesByOffset();
}

void FoamFile::Open(Reading reading) {
  if (reading == Reading::InPieces) {
    file_ = std::make_unique<MeshFile>(
        Name(), storage_.IsCompressed() ? OpenGzipFile(Name()) : OpenPlainFile(Name()));
  } else if (storage_.IsCompressed()) {
    file_ = std::make_unique<MeshFile>(Name(), GzipFile(Name()).ReadRest(), 0);
  } else {
    file_ = std::make_unique<MeshFile>(Name());
  }
  text_ = std::make_unique<TextCursor>(*file_, kComments);
  header_ = ReadFoamHeader(*text_);
}

void FoamFile::OpenPiece() {
  CollatedPiece piece = ReadCollatedPiece(Name(), storage_.piece, storage_.processor);
  file_ = std::make_unique<MeshFile>(Name(), std::move(piece.content), piece.firstByte);
  file_->NamePlacesByOffset();
  text_ = std::make_unique<TextCursor>(*file_, kComments);
  if (storage_.piece == 0 || BeginsWithHeader(*text_)) {
    header_ = ReadFoamHeader(*text_);
    return;
  }
  MeshFile firstPiece(Name(), std::move(piece.header), piece.firstByteOfHeader);
  firstPiece.NamePlacesByOffset();
  TextCursor text(firstPiece, kComments);
  header_ = ReadFoamHeader(text);
}

}  // namespace reference_host
