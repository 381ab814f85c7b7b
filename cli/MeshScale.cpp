#include "cli/MeshScale.h"

#include <cmath>
#include <limits>

namespace zyngrad {
namespace {

double CentreDistance(const CZYN3DFiniteVolumeMesh& mesh, int a, int b) {
  const double dx = mesh.xc[b] - mesh.xc[a], dy = mesh.yc[b] - mesh.yc[a], dz = mesh.zc[b] - mesh.zc[a];
  return std::sqrt(dx * dx + dy * dy + dz * dz);
}

}  // namespace

double MeanCellDistance(const Ranks& ranks, reference_host::HostPartition& partition) {
  const CZYN3DFiniteVolumeMesh& mesh = *partition.mesh();
  CPartitionFace_DLL& cuts = *partition.partitionFaces();
  double sum = 0.0, nFaces = 0.0;
  for (int f = 1; f <= mesh.NInnerFaces; ++f) sum += CentreDistance(mesh, mesh.ijCV[f], mesh.ij[f]);
  nFaces += mesh.NInnerFaces;
  // Two ranks have each of these.
  for (int f = 1; f <= cuts.NParInterFace(); ++f)
    sum += 0.5 * CentreDistance(mesh, cuts.ijParCV()[f], cuts.ijPar()[f]);
  nFaces += 0.5 * cuts.NParInterFace();

  double allSum = 0.0, allFaces = 0.0;
  for (const std::vector<double>& row : ranks.Gather(std::vector<double>{sum, nFaces})) {
    allSum += row[0];
    allFaces += row[1];
  }
  return allFaces > 0.0 ? allSum / allFaces : std::numeric_limits<double>::infinity();
}

}  // namespace zyngrad
