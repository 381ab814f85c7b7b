#include <algorithm>
#include <numeric>
#include <vector>

#include "host_check/LocalChecks.h"
#include "host_check/Text.h"

namespace host_check {
namespace {

/// The cells around every node according to the face tables: a ragged table in one block.
class NodeCells {
 public:
  /// @param forEachPair  calls its argument with (node, cell) for each entry, in the same way each time
  template <class ForEachPair>
  NodeCells(int nNode, ForEachPair const& forEachPair) : start_(static_cast<std::size_t>(nNode) + 2, 0) {
    forEachPair([this](int node, int) { ++start_[node + 1]; });
    std::partial_sum(start_.begin(), start_.end(), start_.begin());
    cells_.resize(start_.back());
    std::vector<std::size_t> next = start_;
    forEachPair([&](int node, int cell) { cells_[next[node]++] = cell; });
    for (int n = 1; n <= nNode; ++n) std::sort(cells_.begin() + Offset(n), cells_.begin() + Offset(n + 1));
  }

  int const* begin(int node) const { return cells_.data() + start_[node]; }
  int const* end(int node) const { return cells_.data() + start_[node + 1]; }
  int Count(int node) const { return static_cast<int>(start_[node + 1] - start_[node]); }
  bool Has(int node, int cell) const { return std::binary_search(begin(node), end(node), cell); }

 private:
  std::ptrdiff_t Offset(int node) const { return static_cast<std::ptrdiff_t>(start_[node]); }

  std::vector<std::size_t> start_;  // [1..nNode+1]
  std::vector<int> cells_;
};

/// The interior cells at every node.
NodeCells InteriorAtNodes(HostView const& view, CellNodes const& cellNodes) {
  return NodeCells(view.nNodeUsed, [&](auto const& add) {
    for (int c = 1; c <= view.nInner; ++c) {
      for (int const* node = cellNodes.begin(c); node != cellNodes.end(c); ++node) add(*node, c);
    }
  });
}

/// The ghost and halo cells beyond the faces at every node. A halo cell may occur several times.
NodeCells BeyondAtNodes(HostView const& view) {
  return NodeCells(view.nNodeUsed, [&](auto const& add) {
    for (CheckedFaceGroup const& group : view.groups) {
      if (group.LeadsToInterior()) continue;
      for (int f = 1; f <= group.count; ++f) {
        if (!group.nodesSound[f] || !group.otherSound[f]) continue;
        for (int k = 1; k <= group.nodes[f][0]; ++k) add(group.nodes[f][k], group.other[f]);
      }
    }
  });
}

class NodeCellCheck {
 public:
  NodeCellCheck(HostView const& view, CellNodes const& cellNodes, HostCheckReport& report)
      : view_(view),
        cellNodes_(cellNodes),
        report_(report),
        interior_(InteriorAtNodes(view, cellNodes)),
        beyond_(BeyondAtNodes(view)),
        mayBeAnywhere_(static_cast<std::size_t>(view.nCell) + 1, 0) {
    MarkCells();
  }

  void CheckNode(int n) {
    int const* row = view_.mesh.NodeCell[n];
    if (row == nullptr) {
      report_.Add(HostBreach::MissingRow, n, [&] { return Text("row ", n, " of NodeCell is null"); });
      return;
    }
    int const longest = interior_.Count(n) + beyond_.Count(n) + nAnywhere_;
    if (row[0] < 0 || row[0] > longest) {
      report_.Add(HostBreach::RowLength, n, [&] {
        return Text("the NodeCell row of node ", n, " has the length ", row[0],
                    ", but the face tables give it ", interior_.Count(n), " interior cells and ",
                    beyond_.Count(n), " faces to cells beyond");
      });
      return;
    }
    sorted_.assign(row + 1, row + 1 + row[0]);
    std::sort(sorted_.begin(), sorted_.end());
    CheckEntries(n);
    CheckMissing(n);
  }

 private:
  /// Cells whose nodes are unknown here may be in any row: halo cells, whose faces are known only at the cut,
  /// cells that no face names, and cells whose faces have unsound rows.
  void MarkCells() {
    for (int c = 1; c <= view_.nCell; ++c) {
      int const g = view_.IsInterior(c) ? -1 : view_.namer[c].group;
      bool const isGhost = g >= 0 && view_.groups[g].LeadsToGhosts();
      bool const isKnown = view_.IsInterior(c) ? cellNodes_.AreKnown(c)
                                               : isGhost && view_.groups[g].nodesSound[view_.namer[c].face];
      mayBeAnywhere_[c] = isKnown ? 0 : 1;
      nAnywhere_ += mayBeAnywhere_[c];
    }
    for (CheckedFaceGroup const& group : view_.groups) {
      for (int f = 1; f <= group.count; ++f) allFacesAreSound_ = allFacesAreSound_ && group.nodesSound[f];
    }
  }

  void CheckEntries(int n) {
    for (std::size_t k = 0; k < sorted_.size(); ++k) {
      int const cell = sorted_[k];
      if (cell < 1 || cell > view_.nCell) {
        report_.Add(HostBreach::IndexOutOfRange, n, [&] {
          return Text("the NodeCell row of node ", n, " names cell ", cell, ", outside 1..", view_.nCell);
        });
      } else if (k > 0 && cell == sorted_[k - 1]) {
        report_.Add(HostBreach::RowEntryTwice, n, [&] {
          return Text("the NodeCell row of node ", n, " names ", view_.CellName(cell), " twice");
        });
      } else if (!MayStandAt(n, cell)) {
        report_.Add(HostBreach::RowEntryExtra, n, [&] {
          return Text("the NodeCell row of node ", n, " names ", view_.CellName(cell), ", no face of which ",
                      "touches the node");
        });
      }
    }
  }

  bool MayStandAt(int n, int cell) const {
    if (mayBeAnywhere_[cell]) return true;
    if (!view_.IsInterior(cell)) return beyond_.Has(n, cell);
    return interior_.Has(n, cell) || cellNodes_.MayHave(cell, n);
  }

  /// A row must have all ghost and halo cells. At inner nodes it must have the interior cells, too; at other
  /// nodes it has all of them or none.
  void CheckMissing(int n) {
    RequireAll(n, beyond_);
    bool const namesInterior = !sorted_.empty() && view_.IsInterior(sorted_.front());
    bool const isInnerNode = beyond_.Count(n) == 0 && allFacesAreSound_;
    if (namesInterior || isInnerNode) RequireAll(n, interior_);
  }

  void RequireAll(int n, NodeCells const& cells) {
    for (int const* cell = cells.begin(n); cell != cells.end(n); ++cell) {
      bool const isRepeat = cell != cells.begin(n) && cell[-1] == *cell;
      if (isRepeat || std::binary_search(sorted_.begin(), sorted_.end(), *cell)) continue;
      report_.Add(HostBreach::RowEntryMissing, n,
                  [&] { return Text("the NodeCell row of node ", n, " lacks ", view_.CellName(*cell)); });
    }
  }

  HostView const& view_;
  CellNodes const& cellNodes_;
  HostCheckReport& report_;
  NodeCells const interior_, beyond_;
  std::vector<char> mayBeAnywhere_;  // [1..nCell]
  int nAnywhere_ = 0;
  bool allFacesAreSound_ = true;
  std::vector<int> sorted_;
};

}  // namespace

void CheckNodeCells(HostView const& view, CellNodes const& cellNodes, HostCheckReport& report) {
  if (view.mesh.NodeCell == nullptr) return;
  NodeCellCheck check(view, cellNodes, report);
  for (int n = 1; n <= view.nNodeUsed; ++n) check.CheckNode(n);
}

}  // namespace host_check
