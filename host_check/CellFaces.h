#pragma once

#include <vector>

#include "host_check/HostView.h"

namespace host_check {

/// The faces of every interior cell according to the face tables, from which the tables of cells and nodes
/// follow. A face belongs to each of its cells whose number is sound.
class CellFaces {
 public:
  struct Entry {
    int group, face;
    int neighbour;    ///< the cell across the face; 0: its number is not sound
    double sign;      ///< +1 where the area vector points out of the cell
    bool isRequired;  ///< false on the far side of a one-sided face, which the cell's rows may list or not
  };

  /// @pre CheckFaceCells
  explicit CellFaces(HostView const& view);

  Entry const* begin(int c) const { return entries_.data() + start_[c]; }
  Entry const* end(int c) const { return entries_.data() + start_[c + 1]; }
  int Count(int c) const { return static_cast<int>(start_[c + 1] - start_[c]); }

 private:
  std::vector<std::size_t> start_;  // [1..nInner+1]
  std::vector<Entry> entries_;
};

}  // namespace host_check
