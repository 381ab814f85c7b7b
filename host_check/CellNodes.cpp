#include "host_check/CellNodes.h"

#include <algorithm>

namespace host_check {

CellNodes::CellNodes(HostView const& view, CellFaces const& cellFaces)
    : view_(view),
      cellFaces_(cellFaces),
      isKnown_(static_cast<std::size_t>(view.nInner) + 1, 0),
      start_(static_cast<std::size_t>(view.nInner) + 2, 0) {
  std::vector<int> ofCell;
  for (int c = 1; c <= view.nInner; ++c) {
    ofCell.clear();
    isKnown_[c] = cellFaces.Count(c) > 0 ? 1 : 0;
    for (auto const* entry = cellFaces.begin(c); entry != cellFaces.end(c); ++entry) {
      CheckedFaceGroup const& group = view.groups[entry->group];
      if (!group.nodesSound[entry->face]) {
        isKnown_[c] = 0;
      } else if (entry->isRequired) {
        int const* row = group.nodes[entry->face];
        ofCell.insert(ofCell.end(), row + 1, row + 1 + row[0]);
      }
    }
    std::sort(ofCell.begin(), ofCell.end());
    ofCell.erase(std::unique(ofCell.begin(), ofCell.end()), ofCell.end());
    nodes_.insert(nodes_.end(), ofCell.begin(), ofCell.end());
    start_[c + 1] = nodes_.size();
  }
}

bool CellNodes::Has(int c, int node) const { return std::binary_search(begin(c), end(c), node); }

bool CellNodes::MayHave(int c, int node) const {
  for (auto const* entry = cellFaces_.begin(c); entry != cellFaces_.end(c); ++entry) {
    CheckedFaceGroup const& group = view_.groups[entry->group];
    if (entry->isRequired || !group.nodesSound[entry->face]) continue;
    int const* row = group.nodes[entry->face];
    if (std::find(row + 1, row + 1 + row[0], node) != row + 1 + row[0]) return true;
  }
  return false;
}

int CellNodes::MayCount(int c) const {
  int count = 0;
  for (auto const* entry = cellFaces_.begin(c); entry != cellFaces_.end(c); ++entry) {
    CheckedFaceGroup const& group = view_.groups[entry->group];
    if (!entry->isRequired && group.nodesSound[entry->face]) count += group.nodes[entry->face][0];
  }
  return count;
}

}  // namespace host_check
