#pragma once

#include "host/Zyn3dGV.h"

/// The arrays of one group of faces, with 1-based indices up to `count`, as the mesh lends them.
struct FaceGroup {
  int count;
  int const *first, *second;   ///< the cell that the area vector points out of, and the cell beyond
  double const *sx, *sy, *sz;  ///< area vector, L^2
  double const *xc, *yc, *zc;  ///< centre, L; null for partition faces
  int* const* nodes;           ///< ragged: the nodes of a face
};

inline FaceGroup InnerFaces(CZYN3DFiniteVolumeMesh const& m) {
  return {m.NInnerFaces, m.ijCV, m.ij, m.ijSx, m.ijSy, m.ijSz, m.ijxc, m.ijyc, m.ijzc, m.ijLnods};
}

inline FaceGroup WallFaces(CZYN3DFiniteVolumeMesh const& m) {
  return {m.NWall,    m.ijWallCV, m.ijWall,   m.ijWallSx, m.ijWallSy,
          m.ijWallSz, m.ijWallxc, m.ijWallyc, m.ijWallzc, m.ijWallLnods};
}

inline FaceGroup InletFaces(CZYN3DFiniteVolumeMesh const& m) {
  return {m.NInlet,    m.ijInletCV, m.ijInlet,   m.ijInletSx, m.ijInletSy,
          m.ijInletSz, m.ijInletxc, m.ijInletyc, m.ijInletzc, m.ijInletLnods};
}

inline FaceGroup OutletFaces(CZYN3DFiniteVolumeMesh const& m) {
  return {m.NOutlet,    m.ijOutletCV, m.ijOutlet,   m.ijOutletSx, m.ijOutletSy,
          m.ijOutletSz, m.ijOutletxc, m.ijOutletyc, m.ijOutletzc, m.ijOutletLnods};
}

inline FaceGroup SymmetryFaces(CZYN3DFiniteVolumeMesh const& m) {
  return {m.NSymmetry,    m.ijSymmetryCV, m.ijSymmetry,   m.ijSymmetrySx, m.ijSymmetrySy,
          m.ijSymmetrySz, m.ijSymmetryxc, m.ijSymmetryyc, m.ijSymmetryzc, m.ijSymmetryLnods};
}

/// Without centres: a partition face stands at the centre of its halo cell for those who use these groups, so
/// the host is not asked for others.
inline FaceGroup PartitionFaces(CPartitionFace_DLL& p, CZYN3DFiniteVolumeMesh const& m) {
  return {p.NParInterFace(), p.ijParCV(), p.ijPar(), p.ijParSx(), p.ijParSy(),
          p.ijParSz(),       nullptr,     nullptr,   nullptr,     m.ijParLnods};
}
