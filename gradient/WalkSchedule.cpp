#include "gradient/WalkSchedule.h"

#include <algorithm>
#include <cstddef>
#include <numeric>

namespace {

/// Calls use(cv, other) for each partition and boundary face in the order of the sums.
template <class Use>
void ForEachOuterFace(FaceGroups const& faces, Use use) {
  for (FaceGroup const& group : faces.InLeastSquaresOrder()) {
    if (group.kind == FaceKind::Inner || group.kind == FaceKind::Symmetry) continue;
    for (int f = 1; f <= group.count; ++f) use(group.cv[f], group.other[f]);
  }
}

}  // namespace

WalkSchedule::WalkSchedule(CZYN3DFiniteVolumeMesh const& mesh, FaceGroups const& faces)
    : nCells(mesh.NInnerCells), counts_(CountsOf(mesh, faces)) {
  FaceGroup const inner = faces.BetweenCells()[0];
  for (int f = 1; f <= inner.count; ++f) nCells = std::max({nCells, inner.cv[f], inner.other[f]});
  ForEachOuterFace(faces, [&](int cv, int) { nCells = std::max(nCells, cv); });
  ListOuterFaces(faces);
  ListRanges(inner);
}

WalkSchedule::Counts WalkSchedule::CountsOf(CZYN3DFiniteVolumeMesh const& mesh, FaceGroups const& faces) {
  Counts counts;
  counts.cells = mesh.NCell;
  counts.innerCells = mesh.NInnerCells;
  for (FaceGroup const& group : faces.InLeastSquaresOrder()) counts.faces[IndexOf(group.kind)] = group.count;
  return counts;
}

bool WalkSchedule::Fits(CZYN3DFiniteVolumeMesh const& mesh, FaceGroups const& faces) const {
  Counts const counts = CountsOf(mesh, faces);
  return counts.cells == counts_.cells && counts.innerCells == counts_.innerCells &&
         counts.faces == counts_.faces;
}

void WalkSchedule::ListOuterFaces(FaceGroups const& faces) {
  std::vector<std::size_t> end(static_cast<std::size_t>(nCells) + 2, 0);  // by `cv`: where its next face goes
  ForEachOuterFace(faces, [&](int cv, int) { ++end[static_cast<std::size_t>(cv) + 1]; });
  std::partial_sum(end.begin(), end.end(), end.begin());
  outerFaces.resize(end.back());
  ForEachOuterFace(faces, [&](int cv, int other) {
    outerFaces[end[static_cast<std::size_t>(cv)]++] = {cv, other};
  });
}

void WalkSchedule::ListRanges(FaceGroup const& inner) {
  auto const firstFace = [](std::size_t range) { return static_cast<int>(range) * kRange + 1; };
  auto const lastFace = [&](std::size_t range) {
    return static_cast<int>(std::min<long>(inner.count, (static_cast<long>(range) + 1) * kRange));
  };
  ranges.resize((static_cast<std::size_t>(inner.count) + kRange - 1) / kRange);
  int entered = 0;
  for (std::size_t r = 0; r < ranges.size(); ++r) {
    for (int f = firstFace(r); f <= lastFace(r); ++f)
      entered = std::max({entered, inner.cv[f], inner.other[f]});
    ranges[r].entered = std::min(entered | (kGroup - 1), nCells);
  }
  int lowestLater = nCells + 1;
  for (std::size_t r = ranges.size(); r-- > 0;) {
    ranges[r].done = std::clamp(lowestLater / kGroup * kGroup - 1, 0, ranges[r].entered);
    for (int f = firstFace(r); f <= lastFace(r); ++f)
      lowestLater = std::min({lowestLater, inner.cv[f], inner.other[f]});
  }
  int left = 0;
  for (Range const& range : ranges) {
    nUnderWay = std::max(nUnderWay, range.entered - left);
    left = range.done;
  }
}
