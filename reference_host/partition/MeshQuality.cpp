#include "reference_host/partition/MeshQuality.h"

#include <algorithm>
#include <vector>

#include "reference_host/mesh/Vector3.h"

namespace reference_host {
namespace {

constexpr double kDegreesPerRadian = 57.295779513082320877;

void AddFace(Point const& centreCV, Point const& centreOther, Point const& faceCentre, Point const& area,
             double lamda, QualitySums& sums) {
  Point const d = Difference(centreOther, centreCV);
  // atan2 of sine and cosine: acos would turn rounding errors of 1e-16 into angles of 1e-6 degrees.
  double const angle = std::atan2(Length(Cross(d, area)), Dot(d, area)) * kDegreesPerRadian;
  Point const interpolated = Sum(centreCV, Scaled(lamda, d));
  double const distance = Length(d);
  double const skewness = distance > 0.0 ? Length(Difference(faceCentre, interpolated)) / distance : 0.0;

  QualitySums face;
  face.sumNonOrthogonality = face.maxNonOrthogonality = angle;
  face.sumSkewness = face.maxSkewness = skewness;
  face.nFaces = 1;
  AddQuality(sums, face);
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
  auto const centre = [&mesh](int c) { return Point{mesh.xc[c], mesh.yc[c], mesh.zc[c]}; };

  QualitySums sums;
  for (int f = 1; f <= mesh.NInnerFaces; ++f) {
    AddFace(centre(mesh.ijCV[f]), centre(mesh.ij[f]), {mesh.ijxc[f], mesh.ijyc[f], mesh.ijzc[f]},
            {mesh.ijSx[f], mesh.ijSy[f], mesh.ijSz[f]}, mesh.Lamda[f], sums);
  }

  CPartitionFace_DLL& faces = *partition.partitionFaces();
  int const firstHalo = mesh.NCell - partition.nHaloCells() + 1;
  std::vector<int> const partOfHalo = PartsOfHaloCells(partition, firstHalo);
  for (int f = 1; f <= faces.NParInterFace(); ++f) {
    int const own = faces.ijParCV()[f], halo = faces.ijPar()[f];
    if (partOfHalo[halo - firstHalo] < partition.part()) continue;
    AddFace(centre(own), centre(halo), {faces.ijParxc()[f], faces.ijParyc()[f], faces.ijParzc()[f]},
            {faces.ijParSx()[f], faces.ijParSy()[f], faces.ijParSz()[f]}, faces.ParInterFace_Lamda()[f],
            sums);
  }
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
