#pragma once

#include <string>
#include <vector>

#include "cli/base/Ranks.h"

namespace zyngrad {

/// The file names of a grid of which every rank writes its part: NAME.EXT on one rank; on several ranks the index
/// NAME.pEXT and one piece per rank in the folder NAME. All are relative to the output folder.
class PieceFiles {
 public:
  PieceFiles(Ranks const& ranks, std::string name, std::string extension);

  bool IsAlone() const { return ranks_.count() == 1; }
  std::string Index() const;  ///< the file to open
  std::string Own() const;    ///< what this rank writes
  std::vector<std::string> Pieces() const;
  std::vector<std::string> All() const;  ///< what all ranks write, the index last

 private:
  std::string Piece(int rank) const;

  Ranks const& ranks_;
  std::string name_, extension_;
};

}  // namespace zyngrad
