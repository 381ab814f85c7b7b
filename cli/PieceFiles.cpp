#include "cli/PieceFiles.h"

#include <cstddef>
#include <cstdio>
#include <utility>

namespace zyngrad {

PieceFiles::PieceFiles(const Ranks& ranks, std::string name, std::string extension)
    : ranks_(ranks), name_(std::move(name)), extension_(std::move(extension)) {}

std::string PieceFiles::Piece(int rank) const {
  char number[16];
  std::snprintf(number, sizeof number, "%04d", rank);
  return name_ + '/' + name_ + '.' + number + '.' + extension_;
}

std::string PieceFiles::Index() const { return name_ + (IsAlone() ? "." : ".p") + extension_; }

std::string PieceFiles::Own() const { return IsAlone() ? Index() : Piece(ranks_.rank()); }

std::vector<std::string> PieceFiles::Pieces() const {
  std::vector<std::string> pieces;
  pieces.reserve(static_cast<std::size_t>(ranks_.count()));
  for (int rank = 0; rank < ranks_.count(); ++rank) pieces.push_back(Piece(rank));
  return pieces;
}

void PieceFiles::MakeFolder(OutputFolder& folder) const {
  if (!IsAlone()) folder.MakeSubfolder(name_);
}

void PieceFiles::DiscardOtherForm(OutputFolder& folder) const {
  folder.Discard(name_ + (IsAlone() ? ".p" : ".") + extension_);
  for (int rank = IsAlone() ? 0 : ranks_.count(); folder.Has(Piece(rank)); ++rank)
    folder.Discard(Piece(rank));
  if (IsAlone()) folder.Discard(name_);  // goes only when empty
}

}  // namespace zyngrad
