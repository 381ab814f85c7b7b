#include "reference_host/openfoam/FoamFile.h"

#include <filesystem>
#include <utility>

#include "reference_host/openfoam/CollatedFile.h"
#include "reference_host/openfoam/GzipFile.h"

namespace reference_host {
namespace {

constexpr TextCursor::Comments kComments = TextCursor::Comments::CStyle;

}  // namespace

FoamFile::FoamFile(std::string const& folder, std::string const& name)
    : storage_(FindFoamFile((std::filesystem::path(folder) / name).string())) {
  if (storage_.piece == FoamStorage::kWhole) {
    Open();
  } else {
    OpenPiece();
  }
  header_.format.isCompressed = storage_.IsCompressed();
  if (header_.format.isBinary) file_->NamePlacesByOffset();
}

void FoamFile::Open() {
  if (storage_.IsCompressed()) {
    file_ = std::make_unique<MeshFile>(Name(), GzipFile(Name()).ReadRest(), 0);
  } else {
    file_ = std::make_unique<MeshFile>(Name());
  }
  text_ = std::make_unique<TextCursor>(*file_, kComments);
  header_ = ReadFoamHeader(*text_);
}

void FoamFile::OpenPiece() {
  CollatedPiece piece = ReadCollatedPiece(Name(), storage_.piece, storage_.processor);
  bool const hasHeader = storage_.piece == 0;
  if (!hasHeader) {
    MeshFile firstPiece(Name(), std::move(piece.header), piece.firstByteOfHeader);
    firstPiece.NamePlacesByOffset();
    TextCursor text(firstPiece, kComments);
    header_ = ReadFoamHeader(text);
  }
  file_ = std::make_unique<MeshFile>(Name(), std::move(piece.content), piece.firstByte);
  file_->NamePlacesByOffset();
  text_ = std::make_unique<TextCursor>(*file_, kComments);
  if (hasHeader) header_ = ReadFoamHeader(*text_);
}

}  // namespace reference_host
