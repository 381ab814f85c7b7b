// The smallest solver: two unit cubes along x with an inlet at x = 0 and an outlet at x = 2, on one partition. The side
// faces are left out: nothing changes in y and z, so their fluxes cancel. Element 0 of every array is unused.

#include <cstdio>

#include "gradient/COperatorGradient.h"
#include "host/ZYNCom.h"
#include "host/ZYNCommunication.h"
#include "host/Zyn3dGV.h"

namespace {

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

struct OnePartition : CCommunication, CZYNCom {
  void DDM_Exch(double*) override {}
  void DDM_IExch_Start(double*, ZYNNonBlockingBufferId) override {}
  void DDM_IExch_Wait(double*, ZYNNonBlockingBufferId) override {}
  int AllMin(int&) override { return 0; }
};

}  // namespace

int main() {
  // Interior cells 1 and 2, ghost cells 3 (inlet) and 4 (outlet).
  CZYN3DFiniteVolumeMesh mesh;
  double volume[] = {0, 1, 1};
  mesh.NInnerCells = 2;
  mesh.NCell = 4;
  mesh.Volume = volume;

  // Faces: the area vector points out of the CV cell, and Lamda is the weight of the other cell.
  double nothing[] = {0, 0};
  int innerCV[] = {0, 1}, inner[] = {0, 2}, faceType[] = {0, 0};
  double innerSx[] = {0, 1}, weight[] = {0, 0.5};
  mesh.NInnerFaces = 1;
  mesh.ijCV = innerCV, mesh.ij = inner, mesh.FaceType = faceType, mesh.Lamda = weight;
  mesh.ijSx = innerSx, mesh.ijSy = nothing, mesh.ijSz = nothing;

  int inletCV[] = {0, 1}, inlet[] = {0, 3};
  double inletSx[] = {0, -1};
  mesh.NInlet = 1;
  mesh.ijInletCV = inletCV, mesh.ijInlet = inlet;
  mesh.ijInletSx = inletSx, mesh.ijInletSy = nothing, mesh.ijInletSz = nothing;

  int outletCV[] = {0, 2}, outlet[] = {0, 4};
  double outletSx[] = {0, 1};
  mesh.NOutlet = 1;
  mesh.ijOutletCV = outletCV, mesh.ijOutlet = outlet;
  mesh.ijOutletSx = outletSx, mesh.ijOutletSy = nothing, mesh.ijOutletSz = nothing;

  // The operator and the objects that it borrows.
  CZyn3dGV globals;
  NoPartitionFaces partitionFaces;
  OnePartition one;
  COperatorGradient gradient;
  int type = 0;  // Green-Gauss
  if (gradient.getZyn3dGV(&globals, nullptr, nullptr, &mesh) != 1) return 1;
  if (gradient.getPartitionFace(&partitionFaces) != 1) return 1;
  if (gradient.getCommunication(&one, &one) != 1) return 1;
  gradient.getGradType(type);
  if (gradient.Initialize() != 1) return 1;

  // phi = 2x at the cell centres, and at the boundary faces for the ghost cells.
  double phi[] = {0, 1, 3, 0, 4}, gx[5], gy[5], gz[5];
  gradient.GradMethod(phi, gx, gy, gz, 1);
  std::printf("d(phi)/dx = %g, %g\n", gx[1], gx[2]);
  return gx[1] == 2 && gx[2] == 2 ? 0 : 1;
}
