// The smallest mesh that has everything: two unit cubes side by side, every array of the mesh record spelled out.
//
//            4 ------ 5 ------ 6        nodes at z = 0; 7..12 lie above 1..6, at z = 1
//   inlet    |   1    |   2    |   outlet        y
//            1 ------ 2 ------ 3                 |__ x      walls: y = 0 and y = 1, symmetry: z = 0 and z = 1
//
// Two gradients of phi = 3x - 2y + 1 are computed, Green-Gauss and least squares. Both are exact here: (3, -2, 0).
//
// All arrays are 1-based. Element 0 exists and is never read; in a row it holds the number of entries behind it.

#include <cmath>
#include <cstdio>
#include <initializer_list>

#include "gradient/COperatorGradient.h"
#include "host/ZYNCom.h"
#include "host/ZYNCommunication.h"
#include "host/Zyn3dGV.h"

namespace {

// One partition: no face leads to another one, and there is nobody to talk to.
struct NoPartitionFaces : CPartitionFace_DLL {
  int NParInterFace() override { return 0; }
  int* ijParCV() override { return nullptr; }
  int* ijPar() override { return nullptr; }
  double* ijParSx() override { return nullptr; }
  double* ijParSy() override { return nullptr; }
  double* ijParSz() override { return nullptr; }
  double* ijParxc() override { return nullptr; }
  double* ijParyc() override { return nullptr; }
  double* ijParzc() override { return nullptr; }
  double* ParInterFace_Lamda() override { return nullptr; }
  int* FaceType_Partition() override { return nullptr; }
};

struct NobodyElse : CCommunication, CZYNCom {
  void DDM_Exch(double*) override {}
  void DDM_IExch_Start(double*, ZYNNonBlockingBufferId) override {}
  void DDM_IExch_Wait(double*, ZYNNonBlockingBufferId) override {}
  int AllMin(int&) override { return 0; }
};

}  // namespace

int main() {
  // clang-format off
  CZYN3DFiniteVolumeMesh mesh;

  // Nodes.
  double xn[] = {0,  0, 1, 2, 0, 1, 2,  0, 1, 2, 0, 1, 2};
  double yn[] = {0,  0, 0, 0, 1, 1, 1,  0, 0, 0, 1, 1, 1};
  double zn[] = {0,  0, 0, 0, 0, 0, 0,  1, 1, 1, 1, 1, 1};
  mesh.NNode = 12, mesh.xn = xn, mesh.yn = yn, mesh.zn = zn;

  // Cells: 1 and 2 are interior. Each boundary face has a ghost cell, put at the face's centre: 3 inlet, 4 outlet,
  // 5..8 symmetry, 9..12 wall. The field's value there is then the boundary value.
  double xc[] = {0,  .5, 1.5,  0, 2,   .5, 1.5, .5, 1.5,  .5, 1.5, .5, 1.5};
  double yc[] = {0,  .5, .5,  .5, .5,  .5, .5, .5, .5,     0, 0, 1, 1};
  double zc[] = {0,  .5, .5,  .5, .5,   0, 0, 1, 1,       .5, .5, .5, .5};
  double volume[] = {0,  1, 1};
  mesh.NCell = 12, mesh.NInnerCells = 2;
  mesh.xc = xc, mesh.yc = yc, mesh.zc = zc, mesh.Volume = volume;

  // The inner face: its area vector points out of cell ijCV into cell ij. Lamda is the weight of ij.
  int cv[] = {0, 1}, other[] = {0, 2}, faceType[] = {0, 0};
  double sx[] = {0, 1}, sy[] = {0, 0}, sz[] = {0, 0};
  double fx[] = {0, 1}, fy[] = {0, .5}, fz[] = {0, .5}, weight[] = {0, .5};
  mesh.NInnerFaces = 1, mesh.ijCV = cv, mesh.ij = other, mesh.FaceType = faceType, mesh.Lamda = weight;
  mesh.ijSx = sx, mesh.ijSy = sy, mesh.ijSz = sz, mesh.ijxc = fx, mesh.ijyc = fy, mesh.ijzc = fz;

  // Boundary faces: interior cell, ghost cell, area vector out of the mesh, centre.
  int inletCV[] = {0, 1}, inlet[] = {0, 3};
  double inletSx[] = {0, -1}, inletSy[] = {0, 0}, inletSz[] = {0, 0};
  double inletX[] = {0, 0}, inletY[] = {0, .5}, inletZ[] = {0, .5};
  mesh.NInlet = 1, mesh.ijInletCV = inletCV, mesh.ijInlet = inlet;
  mesh.ijInletSx = inletSx, mesh.ijInletSy = inletSy, mesh.ijInletSz = inletSz;
  mesh.ijInletxc = inletX, mesh.ijInletyc = inletY, mesh.ijInletzc = inletZ;

  int outletCV[] = {0, 2}, outlet[] = {0, 4};
  double outletSx[] = {0, 1}, outletSy[] = {0, 0}, outletSz[] = {0, 0};
  double outletX[] = {0, 2}, outletY[] = {0, .5}, outletZ[] = {0, .5};
  mesh.NOutlet = 1, mesh.ijOutletCV = outletCV, mesh.ijOutlet = outlet;
  mesh.ijOutletSx = outletSx, mesh.ijOutletSy = outletSy, mesh.ijOutletSz = outletSz;
  mesh.ijOutletxc = outletX, mesh.ijOutletyc = outletY, mesh.ijOutletzc = outletZ;

  int symmetryCV[] = {0,  1, 2, 1, 2}, symmetry[] = {0,  5, 6, 7, 8};
  double symmetrySx[] = {0,  0, 0, 0, 0}, symmetrySy[] = {0,  0, 0, 0, 0}, symmetrySz[] = {0,  -1, -1, 1, 1};
  double symmetryX[] = {0,  .5, 1.5, .5, 1.5}, symmetryY[] = {0,  .5, .5, .5, .5}, symmetryZ[] = {0,  0, 0, 1, 1};
  mesh.NSymmetry = 4, mesh.ijSymmetryCV = symmetryCV, mesh.ijSymmetry = symmetry;
  mesh.ijSymmetrySx = symmetrySx, mesh.ijSymmetrySy = symmetrySy, mesh.ijSymmetrySz = symmetrySz;
  mesh.ijSymmetryxc = symmetryX, mesh.ijSymmetryyc = symmetryY, mesh.ijSymmetryzc = symmetryZ;

  int wallCV[] = {0,  1, 2, 1, 2}, wall[] = {0,  9, 10, 11, 12};
  double wallSx[] = {0,  0, 0, 0, 0}, wallSy[] = {0,  -1, -1, 1, 1}, wallSz[] = {0,  0, 0, 0, 0};
  double wallX[] = {0,  .5, 1.5, .5, 1.5}, wallY[] = {0,  0, 0, 1, 1}, wallZ[] = {0,  .5, .5, .5, .5};
  mesh.NWall = 4, mesh.ijWallCV = wallCV, mesh.ijWall = wall;
  mesh.ijWallSx = wallSx, mesh.ijWallSy = wallSy, mesh.ijWallSz = wallSz;
  mesh.ijWallxc = wallX, mesh.ijWallyc = wallY, mesh.ijWallzc = wallZ;

  // Nodes of the faces, turning around the area vector.
  int in1[] = {4,  2, 5, 11, 8};
  int in2[] = {4,  1, 7, 10, 4}, out1[] = {4,  3, 6, 12, 9};
  int s1[] = {4,  1, 4, 5, 2}, s2[] = {4,  2, 5, 6, 3}, s3[] = {4,  7, 8, 11, 10}, s4[] = {4,  8, 9, 12, 11};
  int w1[] = {4,  1, 2, 8, 7}, w2[] = {4,  2, 3, 9, 8}, w3[] = {4,  4, 10, 11, 5}, w4[] = {4,  5, 11, 12, 6};
  int *innerNodes[] = {nullptr, in1}, *inletNodes[] = {nullptr, in2}, *outletNodes[] = {nullptr, out1};
  int *symmetryNodes[] = {nullptr, s1, s2, s3, s4}, *wallNodes[] = {nullptr, w1, w2, w3, w4};
  mesh.ijLnods = innerNodes, mesh.ijInletLnods = inletNodes, mesh.ijOutletLnods = outletNodes;
  mesh.ijSymmetryLnods = symmetryNodes, mesh.ijWallLnods = wallNodes;

  // Around each interior cell: its neighbours, ghost cells included; the faces to them, each by its number within its
  // group; and the groups: 0 inner, 1 wall, 2 inlet, 3 outlet, 5 symmetry.
  int cells1[] = {6,  2, 3, 5, 7, 9, 11}, cells2[] = {6,  1, 4, 6, 8, 10, 12};
  int faces1[] = {6,  1, 1, 1, 3, 1, 3}, faces2[] = {6,  1, 1, 2, 4, 2, 4};
  int codes1[] = {6,  0, 2, 5, 5, 1, 1}, codes2[] = {6,  0, 3, 5, 5, 1, 1};
  int *cellCell[] = {nullptr, cells1, cells2}, *cellFace[] = {nullptr, faces1, faces2};
  int *cellFaceType[] = {nullptr, codes1, codes2};
  mesh.CellCell = cellCell, mesh.CellFace = cellFace, mesh.CellFaceType = cellFaceType;

  // Nodes of each interior cell. Here element 0 is not the length, which has an array of its own.
  int nodes1[] = {0,  1, 2, 5, 4, 7, 8, 11, 10}, nodes2[] = {0,  2, 3, 6, 5, 8, 9, 12, 11};
  int *cellNodes[] = {nullptr, nodes1, nodes2}, nCellNodes[] = {0,  8, 8};
  mesh.CellLnods = cellNodes, mesh.CellLnodsNumber = nCellNodes;

  // Cells around each node, with the ghost cells of the boundary faces that touch it.
  int around1[] = {4,  1, 3, 5, 9}, around2[] = {6,  1, 2, 5, 6, 9, 10}, around3[] = {4,  2, 4, 6, 10};
  int around4[] = {4,  1, 3, 5, 11}, around5[] = {6,  1, 2, 5, 6, 11, 12}, around6[] = {4,  2, 4, 6, 12};
  int around7[] = {4,  1, 3, 7, 9}, around8[] = {6,  1, 2, 7, 8, 9, 10}, around9[] = {4,  2, 4, 8, 10};
  int around10[] = {4,  1, 3, 7, 11}, around11[] = {6,  1, 2, 7, 8, 11, 12}, around12[] = {4,  2, 4, 8, 12};
  int* nodeCell[] = {nullptr, around1, around2, around3, around4, around5, around6,
                     around7, around8, around9, around10, around11, around12};
  mesh.NodeCell = nodeCell;
  // clang-format on

  // Global variables: work arrays of the iterated Green-Gauss gradient, blocks that an interpolation to points clears,
  // and the run's file name, beside which the radial-basis operators would look for their settings.
  double previousX[13], previousY[13], previousZ[13], resetReal[5];
  int resetInt[5];
  char fileName[] = "two_cells.run";
  CZyn3dGV globals;
  globals.PrevGradX = previousX, globals.PrevGradY = previousY, globals.PrevGradZ = previousZ;
  globals.ResetRealBlock = resetReal, globals.ResetIntBlock = resetInt, globals.BaseFileName = fileName;

  // The field: filled in all cells, ghost cells included.
  double phi[13], gx[13], gy[13], gz[13];
  for (int c = 1; c <= mesh.NCell; ++c) phi[c] = 3 * xc[c] - 2 * yc[c] + 1;

  NoPartitionFaces partitionFaces;
  NobodyElse nobody;
  bool isExact = true;
  for (int type : {0, 1}) {  // 0 Green-Gauss, 1 least squares
    COperatorGradient gradient;
    gradient.getZyn3dGV(&globals, nullptr, nullptr, &mesh);
    gradient.getPartitionFace(&partitionFaces);
    gradient.getCommunication(&nobody, &nobody);
    gradient.getGradType(type);
    if (gradient.Initialize() != 1) return 1;
    gradient.GradMethod(phi, gx, gy, gz, 2);  // two sweeps; least squares has none
    for (int c = 1; c <= mesh.NInnerCells; ++c) {
      std::printf("type %d, cell %d: %g %g %g\n", type, c, gx[c], gy[c], gz[c]);
      double const error = std::fabs(gx[c] - 3) + std::fabs(gy[c] + 2) + std::fabs(gz[c]);
      isExact = isExact && error < 1e-14;
    }
  }
  return isExact ? 0 : 1;
}
