#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "cli/base/Ranks.h"
#include "cli/vtk/PieceFiles.h"

namespace zyngrad {

/// The file names of a grid that a run writes at one time or several. One time: those of PieceFiles for NAME. Several:
/// those for NAME_TIME at each time, and the index NAME.pvd, which viewers open as a series.
class SeriesFiles {
 public:
  /// @param[in] times  numbers as texts, each different; a single one may be empty
  SeriesFiles(Ranks const& ranks, std::string name, std::string extension, std::vector<std::string> times);

  bool IsSeries() const { return times_.size() > 1; }
  PieceFiles At(std::size_t time) const;
  std::string Index() const;             ///< the file to open
  std::vector<std::string> All() const;  ///< what all ranks write

  /// Writes the index of a series to `file`, where it is staged. Throws UsageError if that fails. @pre IsSeries()
  void WriteIndex(std::string const& file) const;

 private:
  Ranks const& ranks_;
  std::string name_, extension_;
  std::vector<std::string> times_;
};

}  // namespace zyngrad
