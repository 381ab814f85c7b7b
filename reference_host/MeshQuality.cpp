#include "reference_host/MeshQuality.h"

#include <algorithm>
#include <vector>

#include "reference_host/Vector3.h"

namespace reference_host {
namespace {

constexpr double kDegreesPerRadian = 57.295779513082320877;

void AddFace(const Point& centreCV, const Point& centreOther, const Point& faceCentre, const Point& area,
             double lamda, QualitySums& sums) {
  const Point d = Difference(centreOther, centreCV);
  // atan2 of sine and cosine: acos would turn rounding errors of 1e-16 into angles of 1e-6 degrees.
  const double angle = std::atan2(Length(Cross(d, area)), Dot(d, area)) * kDegreesPerRadian;
  const Point interpolated = Sum(centreCV, Scaled(lamda, d));
  const double distance = Length(d);
  const double skewness = distance > 0.0 ? Length(Difference(faceCentre, interpolated)) / distance : 0.0;

  QualitySums face;
  face.sumNonOrthogonality = face.maxNonOrthogonality = angle;
  face.sumSkewness = face.maxSkewness = skewness;
  face.nFaces = 1;
  AddQuality(sums, face);
}

/// [cell - first halo cell] the part that owns a halo cell.
std::vector<int> PartsOfHaloCells(const HostPartition& partition, int firstHalo) {
  std::vector<int> parts(partition.nHaloCells(), -1);
  for (const ExchangeList& list : partition.exchangeLists()) {
    for (const int cell : list.receive) parts[cell - firstHalo] = list.part;
  }
  return parts;
}

}  // namespace

QualitySums MeasureQuality(HostPartition& partition) {
  const CZYN3DFiniteVolumeMesh& mesh = *partition.mesh();
  const auto centre = [&mesh](int c) { return Point{mesh.xc[c], mesh.yc[c], mesh.zc[c]}; };

  QualitySums sums;
  for (int f = 1; f <= mesh.NInnerFaces; ++f) {
    AddFace(centre(mesh.ijCV[f]), centre(mesh.ij[f]), {mesh.ijxc[f], mesh.ijyc[f], mesh.ijzc[f]},
            {mesh.ijSx[f], mesh.ijSy[f], mesh.ijSz[f]}, mesh.Lamda[f], sums);
  }

  CPartitionFace_DLL& faces = *partition.partitionFaces();
  const int firstHalo = mesh.NCell - partition.nHaloCells() + 1;
  const std::vector<int> partOfHalo = PartsOfHaloCells(partition, firstHalo);
  for (int f = 1; f <= faces.NParInterFace(); ++f) {
    const int own = faces.ijParCV()[f], halo = faces.ijPar()[f];
    if (partOfHalo[halo - firstHalo] < partition.part()) continue;
    AddFace(centre(own), centre(halo), {faces.ijParxc()[f], faces.ijParyc()[f], faces.ijParzc()[f]},
            {faces.ijParSx()[f], faces.ijParSy()[f], faces.ijParSz()[f]}, faces.ParInterFace_Lamda()[f],
            sums);
  }
  return sums;
}

void AddQuality(QualitySums& sums, const QualitySums& more) {
  sums.sumNonOrthogonality += more.sumNonOrthogonality;
  sums.maxNonOrthogonality = std::max(sums.maxNonOrthogonality, more.maxNonOrthogonality);
  sums.sumSkewness += more.sumSkewness;
  sums.maxSkewness = std::max(sums.maxSkewness, more.maxSkewness);
  sums.nFaces += more.nFaces;
}

}  // namespace reference_host
