// The smallest solver: two cells, one inner face, a gradient.

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
  int cv[] = {0, 1}, other[] = {0, 2}, type[] = {0, 0};
  double sx[] = {0, 1}, zero[] = {0, 0, 0}, weight[] = {0, 0.5}, volume[] = {0, 1, 1};
  double phi[] = {0, 1, 3}, gx[3], gy[3], gz[3];
  CZYN3DFiniteVolumeMesh mesh;
  mesh.NCell = mesh.NInnerCells = 2;
  mesh.NInnerFaces = 1;
  mesh.ijCV = cv, mesh.ij = other, mesh.FaceType = type;
  mesh.ijSx = sx, mesh.ijSy = zero, mesh.ijSz = zero, mesh.Lamda = weight, mesh.Volume = volume;

  CZyn3dGV globals;
  NoPartitionFaces partitionFaces;
  OnePartition one;
  COperatorGradient gradient;
  gradient.getZyn3dGV(&globals, nullptr, nullptr, &mesh);
  gradient.getPartitionFace(&partitionFaces);
  gradient.getCommunication(&one, &one);
  bool const ready = gradient.Initialize() == 1;
  gradient.GradMethod(phi, gx, gy, gz, 1);
  std::printf("gx = %g, %g\n", gx[1], gx[2]);
  return ready && gx[1] == 2.0 && gx[2] == -2.0 ? 0 : 1;
}
