#include "cli/output/MeshScale.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "cli/base/TextTable.h"

namespace zyngrad {
namespace {

double CentreDistance(CZYN3DFiniteVolumeMesh const& mesh, int a, int b) {
  double const dx = mesh.xc[b] - mesh.xc[a], dy = mesh.yc[b] - mesh.yc[a], dz = mesh.zc[b] - mesh.zc[a];
  return std::sqrt(dx * dx + dy * dy + dz * dz);
}

struct PlaceScale {
  double largest = 0.0;                                      ///< magnitude of a coordinate, L
  double nearest = std::numeric_limits<double>::infinity();  ///< distance of two cells, above 0, L
};

PlaceScale ScaleOfPlaces(reference_host::HostPartition& partition) {
  CZYN3DFiniteVolumeMesh const& mesh = *partition.mesh();
  CPartitionFace_DLL& cuts = *partition.partitionFaces();
  PlaceScale scale;
  for (int c = 1; c <= mesh.NInnerCells; ++c)
    scale.largest =
        std::max({scale.largest, std::fabs(mesh.xc[c]), std::fabs(mesh.yc[c]), std::fabs(mesh.zc[c])});
  auto const meet = [&](int a, int b) {
    double const distance = CentreDistance(mesh, a, b);
    if (distance > 0.0) scale.nearest = std::min(scale.nearest, distance);
  };
  for (int f = 1; f <= mesh.NInnerFaces; ++f) meet(mesh.ijCV[f], mesh.ij[f]);
  for (int f = 1; f <= cuts.NParInterFace(); ++f) meet(cuts.ijParCV()[f], cuts.ijPar()[f]);
  return scale;
}

}  // namespace

// Two places at distance d differ by at least d / sqrt(3) in one coordinate, and the last of n digits of the largest
// coordinate counts units of 10^(exponent + 1 - n).
int PlaceDigits(double largest, double nearest) {
  constexpr int kAllDigits = std::numeric_limits<double>::max_digits10;
  double const step = nearest / std::sqrt(3.0);
  if (!(largest > 0.0) || !(step > 0.0) || !std::isfinite(largest) || !std::isfinite(step))
    return kPlaceDigits;
  double const digits = std::floor(std::log10(largest)) + 1.0 - std::floor(std::log10(step));
  return static_cast<int>(std::clamp(digits, 1.0 * kPlaceDigits, 1.0 * kAllDigits));
}

double MeanCellDistance(Ranks const& ranks, reference_host::HostPartition& partition) {
  CZYN3DFiniteVolumeMesh const& mesh = *partition.mesh();
  CPartitionFace_DLL& cuts = *partition.partitionFaces();
  double sum = 0.0, nFaces = 0.0;
  for (int f = 1; f <= mesh.NInnerFaces; ++f) sum += CentreDistance(mesh, mesh.ijCV[f], mesh.ij[f]);
  nFaces += mesh.NInnerFaces;
  // Each of these pairs is on two ranks.
  for (int f = 1; f <= cuts.NParInterFace(); ++f)
    sum += 0.5 * CentreDistance(mesh, cuts.ijParCV()[f], cuts.ijPar()[f]);
  nFaces += 0.5 * cuts.NParInterFace();

  double allSum = 0.0, allFaces = 0.0;
  for (std::vector<double> const& row : ranks.Gather(std::vector<double>{sum, nFaces})) {
    allSum += row[0];
    allFaces += row[1];
  }
  return allFaces > 0.0 ? allSum / allFaces : std::numeric_limits<double>::infinity();
}

int PlaceDigits(reference_host::HostPartition& partition) {
  PlaceScale const scale = ScaleOfPlaces(partition);
  return PlaceDigits(scale.largest, scale.nearest);
}

int PlaceDigits(Ranks const& ranks, reference_host::HostPartition& partition) {
  PlaceScale scale = ScaleOfPlaces(partition);
  scale.largest = ranks.Max(scale.largest);
  scale.nearest = -ranks.Max(-scale.nearest);
  return PlaceDigits(scale.largest, scale.nearest);
}

}  // namespace zyngrad
