#include "reference_host/partition/BoundaryVectors.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "foundation/FaceGroups.h"
#include "reference_host/mesh/Vector3.h"
#include "reference_host/partition/HostNumbering.h"

namespace reference_host {

Point WithoutNormalPart(Point const& v, Point const& n) { return Difference(v, Scaled(Dot(v, n), n)); }

// With a the coordinate direction and k = a x n, which has the length sin of the angle:
// v cos + k x v + k (k . v) / (1 + cos), where cos = a . n is at least 1 / sqrt(3).
Point TurnedToSide(Point const& v, Point const& n) {
  std::size_t nearest = 0;
  for (std::size_t d = 1; d < n.size(); ++d)
    if (std::fabs(n[d]) > std::fabs(n[nearest])) nearest = d;
  Point a = {0.0, 0.0, 0.0};
  a[nearest] = n[nearest] < 0.0 ? -1.0 : 1.0;
  double const cosine = Dot(a, n);
  Point const k = Cross(a, n);
  return Sum(Sum(Scaled(cosine, v), Cross(k, v)), Scaled(Dot(k, v) / (1.0 + cosine), k));
}

void CompleteBoundaryVectors(HostPartition& partition, std::vector<FaceValues> const& ofPatch,
                             std::array<std::vector<double>, 3>& vector) {
  auto const isRule = [](FaceValues rule) {
    return rule == FaceValues::Tangential || rule == FaceValues::Turned;
  };
  if (std::none_of(ofPatch.begin(), ofPatch.end(), isRule)) return;
  CZYN3DFiniteVolumeMesh const& mesh = *partition.mesh();
  for (FaceKind const kind : kGhostOrder) {
    FaceGroup const faces = FacesOf(kind, mesh);
    for (int f = 1; f <= faces.count; ++f) {
      auto const ghost = static_cast<std::size_t>(faces.other[f]);
      int const patch = partition.patchOfGhost()[ghost];
      if (patch < 0 || !isRule(ofPatch[static_cast<std::size_t>(patch)])) continue;
      Point const area = {faces.sx[f], faces.sy[f], faces.sz[f]};
      Point const n = Scaled(1.0 / Length(area), area);
      Point const v = {vector[0][ghost], vector[1][ghost], vector[2][ghost]};
      Point const atFace = ofPatch[static_cast<std::size_t>(patch)] == FaceValues::Turned
                               ? TurnedToSide(v, n)
                               : WithoutNormalPart(v, n);
      for (std::size_t d = 0; d < atFace.size(); ++d) vector[d][ghost] = atFace[d];
    }
  }
}

}  // namespace reference_host
