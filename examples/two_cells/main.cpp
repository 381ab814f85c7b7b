// The smallest mesh that contains everything: two unit cubes side by side. Every array of the mesh record is spelled
// out, and two gradients of phi = 3x - 2y + 1 are computed on it.
//
//            4 ------ 5 ------ 6        nodes at z = 0; nodes 7..12 lie above 1..6, at z = 1
//   inlet    |   1    |   2    |   outlet        y
//            1 ------ 2 ------ 3                 |__ x      walls: y = 0 and y = 1, symmetry: z = 0 and z = 1
//
// Green-Gauss:    grad phi_c = (1/V_c) sum over the faces f of c of phi_f S_f
// Least squares:  grad phi_c minimises the sum over the neighbours n of c of (grad phi_c . (x_n - x_c) - phi_n + phi_c)^2
//
// Both are exact for a linear field on cubes, so the program prints the gradient (3, -2, 0) four times:
//
//   two_cells
//
// All arrays are 1-based. Element 0 exists and is never read; in a row of a table it holds the number of entries that
// follow. The mesh record borrows the arrays, so they must outlive it.

#include <cmath>
#include <cstdio>

#include "gradient/COperatorGradient.h"
#include "host/ZYNCom.h"
#include "host/ZYNCommunication.h"
#include "host/Zyn3dGV.h"

namespace {

// clang-format off

// Step 1. The nodes.
struct Nodes {
  double x[13] = {0,  0, 1, 2, 0, 1, 2,  0, 1, 2, 0, 1, 2};
  double y[13] = {0,  0, 0, 0, 1, 1, 1,  0, 0, 0, 1, 1, 1};
  double z[13] = {0,  0, 0, 0, 0, 0, 0,  1, 1, 1, 1, 1, 1};

  void LendTo(CZYN3DFiniteVolumeMesh& mesh) {
    mesh.NNode = 12, mesh.xn = x, mesh.yn = y, mesh.zn = z;
  }
};

// Step 2. The cells. Cells 1 and 2 are interior. Each boundary face has a ghost cell at the centre of the face: 3 at
// the inlet, 4 at the outlet, 5..8 at the symmetry faces, 9..12 at the walls. The field takes its boundary value there.
struct Cells {
  double x[13] = {0,  .5, 1.5,  0, 2,   .5, 1.5, .5, 1.5,  .5, 1.5, .5, 1.5};
  double y[13] = {0,  .5, .5,  .5, .5,  .5, .5, .5, .5,     0, 0, 1, 1};
  double z[13] = {0,  .5, .5,  .5, .5,   0, 0, 1, 1,       .5, .5, .5, .5};
  double volume[3] = {0,  1, 1};

  void LendTo(CZYN3DFiniteVolumeMesh& mesh) {
    mesh.NCell = 12, mesh.NInnerCells = 2;
    mesh.xc = x, mesh.yc = y, mesh.zc = z, mesh.Volume = volume;
  }
};

// Step 3. The inner face. Its area vector points out of cell ijCV into cell ij. Lamda is the weight of cell ij in the
// value on the face. The nodes of a face turn around its area vector.
struct InnerFaces {
  int cell[2] = {0, 1}, other[2] = {0, 2}, type[2] = {0, 0};
  double sx[2] = {0, 1}, sy[2] = {0, 0}, sz[2] = {0, 0};
  double x[2] = {0, 1}, y[2] = {0, .5}, z[2] = {0, .5}, weight[2] = {0, .5};
  int nodes1[5] = {4,  2, 5, 11, 8};
  int* nodes[2] = {nullptr, nodes1};

  void LendTo(CZYN3DFiniteVolumeMesh& mesh) {
    mesh.NInnerFaces = 1, mesh.ijCV = cell, mesh.ij = other, mesh.FaceType = type, mesh.Lamda = weight;
    mesh.ijSx = sx, mesh.ijSy = sy, mesh.ijSz = sz, mesh.ijxc = x, mesh.ijyc = y, mesh.ijzc = z;
    mesh.ijLnods = nodes;
  }
};

// Step 4. The boundary faces, one group after the other: interior cell, ghost cell, area vector out of the mesh,
// centre, nodes.
struct InletFace {
  int cell[2] = {0, 1}, ghost[2] = {0, 3};
  double sx[2] = {0, -1}, sy[2] = {0, 0}, sz[2] = {0, 0};
  double x[2] = {0, 0}, y[2] = {0, .5}, z[2] = {0, .5};
  int nodes1[5] = {4,  1, 7, 10, 4};
  int* nodes[2] = {nullptr, nodes1};

  void LendTo(CZYN3DFiniteVolumeMesh& mesh) {
    mesh.NInlet = 1, mesh.ijInletCV = cell, mesh.ijInlet = ghost, mesh.ijInletLnods = nodes;
    mesh.ijInletSx = sx, mesh.ijInletSy = sy, mesh.ijInletSz = sz;
    mesh.ijInletxc = x, mesh.ijInletyc = y, mesh.ijInletzc = z;
  }
};

struct OutletFace {
  int cell[2] = {0, 2}, ghost[2] = {0, 4};
  double sx[2] = {0, 1}, sy[2] = {0, 0}, sz[2] = {0, 0};
  double x[2] = {0, 2}, y[2] = {0, .5}, z[2] = {0, .5};
  int nodes1[5] = {4,  3, 6, 12, 9};
  int* nodes[2] = {nullptr, nodes1};

  void LendTo(CZYN3DFiniteVolumeMesh& mesh) {
    mesh.NOutlet = 1, mesh.ijOutletCV = cell, mesh.ijOutlet = ghost, mesh.ijOutletLnods = nodes;
    mesh.ijOutletSx = sx, mesh.ijOutletSy = sy, mesh.ijOutletSz = sz;
    mesh.ijOutletxc = x, mesh.ijOutletyc = y, mesh.ijOutletzc = z;
  }
};

struct SymmetryFaces {
  int cell[5] = {0,  1, 2, 1, 2}, ghost[5] = {0,  5, 6, 7, 8};
  double sx[5] = {0,  0, 0, 0, 0}, sy[5] = {0,  0, 0, 0, 0}, sz[5] = {0,  -1, -1, 1, 1};
  double x[5] = {0,  .5, 1.5, .5, 1.5}, y[5] = {0,  .5, .5, .5, .5}, z[5] = {0,  0, 0, 1, 1};
  int nodes1[5] = {4,  1, 4, 5, 2}, nodes2[5] = {4,  2, 5, 6, 3};
  int nodes3[5] = {4,  7, 8, 11, 10}, nodes4[5] = {4,  8, 9, 12, 11};
  int* nodes[5] = {nullptr, nodes1, nodes2, nodes3, nodes4};

  void LendTo(CZYN3DFiniteVolumeMesh& mesh) {
    mesh.NSymmetry = 4, mesh.ijSymmetryCV = cell, mesh.ijSymmetry = ghost, mesh.ijSymmetryLnods = nodes;
    mesh.ijSymmetrySx = sx, mesh.ijSymmetrySy = sy, mesh.ijSymmetrySz = sz;
    mesh.ijSymmetryxc = x, mesh.ijSymmetryyc = y, mesh.ijSymmetryzc = z;
  }
};

struct WallFaces {
  int cell[5] = {0,  1, 2, 1, 2}, ghost[5] = {0,  9, 10, 11, 12};
  double sx[5] = {0,  0, 0, 0, 0}, sy[5] = {0,  -1, -1, 1, 1}, sz[5] = {0,  0, 0, 0, 0};
  double x[5] = {0,  .5, 1.5, .5, 1.5}, y[5] = {0,  0, 0, 1, 1}, z[5] = {0,  .5, .5, .5, .5};
  int nodes1[5] = {4,  1, 2, 8, 7}, nodes2[5] = {4,  2, 3, 9, 8};
  int nodes3[5] = {4,  4, 10, 11, 5}, nodes4[5] = {4,  5, 11, 12, 6};
  int* nodes[5] = {nullptr, nodes1, nodes2, nodes3, nodes4};

  void LendTo(CZYN3DFiniteVolumeMesh& mesh) {
    mesh.NWall = 4, mesh.ijWallCV = cell, mesh.ijWall = ghost, mesh.ijWallLnods = nodes;
    mesh.ijWallSx = sx, mesh.ijWallSy = sy, mesh.ijWallSz = sz;
    mesh.ijWallxc = x, mesh.ijWallyc = y, mesh.ijWallzc = z;
  }
};

// Step 5. What surrounds each interior cell: its neighbours, ghost cells included; the faces between them, each by its
// number within its group; the groups (0 inner, 1 wall, 2 inlet, 3 outlet, 5 symmetry); and its nodes. In the table of
// nodes, element 0 is not the length, which has an array of its own.
struct Surroundings {
  int cells1[7] = {6,  2, 3, 5, 7, 9, 11}, cells2[7] = {6,  1, 4, 6, 8, 10, 12};
  int faces1[7] = {6,  1, 1, 1, 3, 1, 3}, faces2[7] = {6,  1, 1, 2, 4, 2, 4};
  int groups1[7] = {6,  0, 2, 5, 5, 1, 1}, groups2[7] = {6,  0, 3, 5, 5, 1, 1};
  int nodes1[9] = {0,  1, 2, 5, 4, 7, 8, 11, 10}, nodes2[9] = {0,  2, 3, 6, 5, 8, 9, 12, 11};
  int *cells[3] = {nullptr, cells1, cells2}, *faces[3] = {nullptr, faces1, faces2};
  int *groups[3] = {nullptr, groups1, groups2}, *nodes[3] = {nullptr, nodes1, nodes2}, nNodes[3] = {0,  8, 8};

  void LendTo(CZYN3DFiniteVolumeMesh& mesh) {
    mesh.CellCell = cells, mesh.CellFace = faces, mesh.CellFaceType = groups;
    mesh.CellLnods = nodes, mesh.CellLnodsNumber = nNodes;
  }
};

// Step 6. The cells around each node, with the ghost cells of the boundary faces that touch it.
struct CellsAroundNodes {
  int at1[5] = {4,  1, 3, 5, 9}, at2[7] = {6,  1, 2, 5, 6, 9, 10}, at3[5] = {4,  2, 4, 6, 10};
  int at4[5] = {4,  1, 3, 5, 11}, at5[7] = {6,  1, 2, 5, 6, 11, 12}, at6[5] = {4,  2, 4, 6, 12};
  int at7[5] = {4,  1, 3, 7, 9}, at8[7] = {6,  1, 2, 7, 8, 9, 10}, at9[5] = {4,  2, 4, 8, 10};
  int at10[5] = {4,  1, 3, 7, 11}, at11[7] = {6,  1, 2, 7, 8, 11, 12}, at12[5] = {4,  2, 4, 8, 12};
  int* cells[13] = {nullptr, at1, at2, at3, at4, at5, at6, at7, at8, at9, at10, at11, at12};

  void LendTo(CZYN3DFiniteVolumeMesh& mesh) { mesh.NodeCell = cells; }
};

// clang-format on

// Step 7. The global variables: work arrays of the iterated Green-Gauss gradient, blocks that the interpolation to
// points clears, and the file name of the run, beside which the radial-basis operators would look for their settings.
struct Globals {
  double previousX[13] = {}, previousY[13] = {}, previousZ[13] = {}, resetReal[5] = {};
  int resetInt[5] = {};
  char fileName[14] = "two_cells.run";

  void LendTo(CZyn3dGV& globals) {
    globals.PrevGradX = previousX, globals.PrevGradY = previousY, globals.PrevGradZ = previousZ;
    globals.ResetRealBlock = resetReal, globals.ResetIntBlock = resetInt, globals.BaseFileName = fileName;
  }
};

// Step 8. The neighbours. There is one partition: no face leads to another one, and there is nobody to talk to.
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

// The mesh record and everything that it borrows.
struct TwoCells {
  Nodes nodes;
  Cells cells;
  InnerFaces innerFaces;
  InletFace inlet;
  OutletFace outlet;
  SymmetryFaces symmetry;
  WallFaces walls;
  Surroundings surroundings;
  CellsAroundNodes cellsAroundNodes;
  Globals globalArrays;

  CZYN3DFiniteVolumeMesh mesh;
  CZyn3dGV globals;
  NoPartitionFaces partitionFaces;
  NobodyElse nobody;

  TwoCells() {
    nodes.LendTo(mesh);
    cells.LendTo(mesh);
    innerFaces.LendTo(mesh);
    inlet.LendTo(mesh);
    outlet.LendTo(mesh);
    symmetry.LendTo(mesh);
    walls.LendTo(mesh);
    surroundings.LendTo(mesh);
    cellsAroundNodes.LendTo(mesh);
    globalArrays.LendTo(globals);
  }
  TwoCells(TwoCells const&) = delete;
  TwoCells& operator=(TwoCells const&) = delete;
};

// Step 9. The gradient: wire the operator, choose the method, initialise, compute. Prints the gradient in both cells.
// Returns whether it is exact.
bool ComputeGradient(TwoCells& host, int type) {
  COperatorGradient gradient;
  gradient.getZyn3dGV(&host.globals, nullptr, nullptr, &host.mesh);
  gradient.getPartitionFace(&host.partitionFaces);
  gradient.getCommunication(&host.nobody, &host.nobody);
  gradient.getGradType(type);
  if (gradient.Initialize() != 1) return false;

  // The field has a value in every cell, ghost cells included.
  CZYN3DFiniteVolumeMesh const& mesh = host.mesh;
  double phi[13] = {}, gx[13], gy[13], gz[13];
  for (int c = 1; c <= mesh.NCell; ++c) phi[c] = 3 * mesh.xc[c] - 2 * mesh.yc[c] + 1;
  constexpr int kSweeps = 2;  // of Green-Gauss; least squares ignores the number
  gradient.GradMethod(phi, gx, gy, gz, kSweeps);

  bool isExact = true;
  for (int c = 1; c <= mesh.NInnerCells; ++c) {
    std::printf("type %d, cell %d: %g %g %g\n", type, c, gx[c], gy[c], gz[c]);
    double const error = std::fabs(gx[c] - 3) + std::fabs(gy[c] + 2) + std::fabs(gz[c]);
    isExact = isExact && error < 1e-14;
  }
  return isExact;
}

}  // namespace

int main() {
  constexpr int kGreenGauss = 0, kLeastSquares = 1;
  TwoCells host;
  bool const isExact = ComputeGradient(host, kGreenGauss);
  return ComputeGradient(host, kLeastSquares) && isExact ? 0 : 1;
}
