#include "host_check/CellFaces.h"

#include <numeric>

namespace host_check {
namespace {

/// Calls visit(cell, entry) for every face and each of its interior cells.
template <class Visit>
void ForEachSide(HostView const& view, Visit const& visit) {
  for (int g = 0; g < HostView::kGroups; ++g) {
    CheckedFaceGroup const& group = view.groups[g];
    for (int f = 1; f <= group.count; ++f) {
      bool const hasOther = group.otherSound[f];
      if (group.cvSound[f]) {
        visit(group.cv[f], CellFaces::Entry{g, f, hasOther ? group.other[f] : 0, 1.0, true});
      }
      if (hasOther && group.LeadsToInterior()) {
        int const cv = group.cvSound[f] ? group.cv[f] : 0;
        visit(group.other[f], CellFaces::Entry{g, f, cv, -1.0, !group.IsOneSided(f)});
      }
    }
  }
}

}  // namespace

CellFaces::CellFaces(HostView const& view) : start_(static_cast<std::size_t>(view.nInner) + 2, 0) {
  ForEachSide(view, [this](int c, Entry const&) { ++start_[c + 1]; });
  std::partial_sum(start_.begin(), start_.end(), start_.begin());
  entries_.resize(start_.back());
  std::vector<std::size_t> next = start_;
  ForEachSide(view, [&](int c, Entry const& entry) { entries_[next[c]++] = entry; });
}

}  // namespace host_check
