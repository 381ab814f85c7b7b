#pragma once

#include <vector>

#include "reference_host/mesh/FaceMesh.h"
#include "reference_host/partition/HostPartition.h"

namespace reference_host {

/// One face group of a partition as a test wants to walk it; arrays [1..n], borrowed.
struct GroupView {
  int code;  ///< in CellFaceType
  int n;
  int const *cv, *other;
  double const *sx, *sy, *sz;
  double const *xc, *yc, *zc;
  int** nodes;

  Point Area(int f) const { return {sx[f], sy[f], sz[f]}; }
  Point Centre(int f) const { return {xc[f], yc[f], zc[f]}; }
};

/// All six groups, the partition faces last.
inline std::vector<GroupView> GroupsOf(HostPartition& partition) {
  CZYN3DFiniteVolumeMesh const& m = *partition.mesh();
  CPartitionFace_DLL& p = *partition.partitionFaces();
  // clang-format off
  return {{0, m.NInnerFaces, m.ijCV, m.ij, m.ijSx, m.ijSy, m.ijSz, m.ijxc, m.ijyc, m.ijzc, m.ijLnods},
          {1, m.NWall, m.ijWallCV, m.ijWall, m.ijWallSx, m.ijWallSy, m.ijWallSz,
           m.ijWallxc, m.ijWallyc, m.ijWallzc, m.ijWallLnods},
          {2, m.NInlet, m.ijInletCV, m.ijInlet, m.ijInletSx, m.ijInletSy, m.ijInletSz,
           m.ijInletxc, m.ijInletyc, m.ijInletzc, m.ijInletLnods},
          {3, m.NOutlet, m.ijOutletCV, m.ijOutlet, m.ijOutletSx, m.ijOutletSy, m.ijOutletSz,
           m.ijOutletxc, m.ijOutletyc, m.ijOutletzc, m.ijOutletLnods},
          {5, m.NSymmetry, m.ijSymmetryCV, m.ijSymmetry, m.ijSymmetrySx, m.ijSymmetrySy, m.ijSymmetrySz,
           m.ijSymmetryxc, m.ijSymmetryyc, m.ijSymmetryzc, m.ijSymmetryLnods},
          {101, p.NParInterFace(), p.ijParCV(), p.ijPar(), p.ijParSx(), p.ijParSy(), p.ijParSz(),
           p.ijParxc(), p.ijParyc(), p.ijParzc(), m.ijParLnods}};
  // clang-format on
}

}  // namespace reference_host
