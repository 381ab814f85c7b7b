#pragma once

#include <vector>

#include "host_check/CellFaces.h"
#include "host_check/HostView.h"

namespace host_check {

/// The nodes of every interior cell according to its faces' rows of nodes.
class CellNodes {
 public:
  /// @pre CheckFaceRows; without it, no node of any cell is known
  CellNodes(HostView const& view, CellFaces const& cellFaces);

  /// Whether all faces of the cell have sound rows; only then are its nodes complete.
  bool AreKnown(int c) const { return isKnown_[c] != 0; }

  /// Nodes that the cell must have, ascending.
  int const* begin(int c) const { return nodes_.data() + start_[c]; }
  int const* end(int c) const { return nodes_.data() + start_[c + 1]; }
  int Count(int c) const { return static_cast<int>(start_[c + 1] - start_[c]); }

  /// Whether the node is one of them.
  bool Has(int c, int node) const;
  /// Whether it belongs to a one-sided face that ends at the cell. The cell's row may list such a node or
  /// not.
  bool MayHave(int c, int node) const;
  /// The largest number of nodes that MayHave allows.
  int MayCount(int c) const;

 private:
  HostView const& view_;
  CellFaces const& cellFaces_;
  std::vector<char> isKnown_;       // [1..nInner]
  std::vector<std::size_t> start_;  // [1..nInner+1]
  std::vector<int> nodes_;
};

}  // namespace host_check
