#include "cli/vtk/PieceFiles.h"

#include <cstddef>
#include <cstdio>
#include <utility>

namespace zyngrad {

PieceFiles::PieceFiles(Ranks const& ranks, std::string name, std::string extension)
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

std::vector<std::string> PieceFiles::All() const {
  std::vector<std::string> all = IsAlone() ? std::vector<std::string>() : Pieces();
  all.push_back(Index());
  return all;
}

}  // namespace zyngrad
