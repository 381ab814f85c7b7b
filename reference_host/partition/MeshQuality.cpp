#include "reference_host/partition/MeshQuality.h"

#include <algorithm>
#include <vector>

#include "foundation/FaceGroups.h"
#include "reference_host/mesh/Vector3.h"

namespace reference_host {
namespace {

constexpr double kDegreesPerRadian = 57.295779513082320877;

/// @pre f is a face between two cells
void AddFace(CZYN3DFiniteVolumeMesh const& mesh, FaceGroup const& faces, int f, QualitySums& sums) {
  auto const centre = [&mesh](int c) { return Point{mesh.xc[c], mesh.yc[c], mesh.zc[c]}; };
  Point const centreCV = centre(faces.cv[f]), area = {faces.sx[f], faces.sy[f], faces.sz[f]};
  Point const d = Difference(centre(faces.other[f]), centreCV);
  // atan2 instead of acos, which would turn rounding errors of 1e-16 into angles of 1e-6 degrees.
  double const angle = std::atan2(Length(Cross(d, area)), Dot(d, area)) * kDegreesPerRadian;
  Point const interpolated = Sum(centreCV, Scaled(faces.weight[f], d));
  double const distance = Length(d);
  Point const faceCentre = {faces.xc[f], faces.yc[f], faces.zc[f]};
  double const skewness = distance > 0.0 ? Length(Difference(faceCentre, interpolated)) / distance : 0.0;

  QualitySums face;
  face.sumNonOrthogonality = face.maxNonOrthogonality = angle;
  face.sumSkewness = face.maxSkewness = skewness;
  face.nFaces = 1;
  AddQuality(sums, face);
}

void AddFaces(CZYN3DFiniteVolumeMesh const& mesh, FaceGroup const& faces, QualitySums& sums) {
  for (int f = 1; f <= faces.count; ++f) AddFace(mesh, faces, f, sums);
}

/// [cell - first halo cell] the part that owns a halo cell.
std::vector<int> PartsOfHaloCells(HostPartition const& partition, int firstHalo) {
  std::vector<int> parts(partition.nHaloCells(), -1);
  for (ExchangeList const& list : partition.exchangeLists()) {
    for (int const cell : list.receive) parts[cell - firstHalo] = list.part;
  }
  return parts;
}

}  // namespace

QualitySums MeasureQuality(HostPartition& partition) {
  CZYN3DFiniteVolumeMesh const& mesh = *partition.mesh();
  QualitySums sums;
  AddFaces(mesh, FacesOf(FaceKind::Inner, mesh), sums);

  FaceGroup const cut = PartitionFaces(*partition.partitionFaces(), mesh);
  int const firstHalo = mesh.NCell - partition.nHaloCells() + 1;
  std::vector<int> const partOfHalo = PartsOfHaloCells(partition, firstHalo);
  // Of the two sides of a face, the lower partition counts it; in one partition, the first side of the period.
  for (int f = 1; f <= cut.count; ++f) {
    int const halo = cut.other[f] - firstHalo;
    bool const isOwn = partOfHalo[halo] == partition.part();
    if (partOfHalo[halo] > partition.part() || (isOwn && partition.haloPeriod()[halo] < 0)) {
      AddFace(mesh, cut, f, sums);
    }
  }
  return sums;
}

QualitySums MeasureQuality(CZYN3DFiniteVolumeMesh const& mesh, CPartitionFace_DLL& partitionFaces) {
  QualitySums sums;
  AddFaces(mesh, FacesOf(FaceKind::Inner, mesh), sums);
  AddFaces(mesh, PartitionFaces(partitionFaces, mesh), sums);
  return sums;
}

void AddQuality(QualitySums& sums, QualitySums const& more) {
  sums.sumNonOrthogonality += more.sumNonOrthogonality;
  sums.maxNonOrthogonality = std::max(sums.maxNonOrthogonality, more.maxNonOrthogonality);
  sums.sumSkewness += more.sumSkewness;
  sums.maxSkewness = std::max(sums.maxSkewness, more.maxSkewness);
  sums.nFaces += more.nFaces;
}

}  // namespace reference_host
