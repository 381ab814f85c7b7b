#pragma once

#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <string>
#include <vector>

#include "host/ZYNCommunication.h"
#include "host/ZYNKNCompParm.h"
#include "host/Zyn3dGV.h"
#include "tests/support/host/CellHost.h"
#include "tests/support/host/GuardedArray.h"
#include "tests/support/mesh/MeshPlan.h"

namespace rbf_face_test {

/// The arrays of one group of faces, guarded; null for a group without faces.
struct LentGroup {
  explicit LentGroup(std::vector<Face> const& faces);

  bool IdenticalTo(LentGroup const& other) const;

  template <typename T>
  T* Lend(gradient_test::GuardedArray<T>& array) {
    return arrays.count == 0 ? nullptr : array.Data();
  }

  rbf_cell_test::LentFaces arrays;
  rbf_cell_test::LentTable nodes;
};

/// Partition faces lent from a group. To ask for what the face operator does not need, their centres among it,
/// fails the test.
class LentPartitionFaces : public CPartitionFace_DLL {
 public:
  explicit LentPartitionFaces(LentGroup& group) : group_(group) {}

  int NParInterFace() override { return group_.arrays.count; }
  int* ijParCV() override { return group_.Lend(group_.arrays.cv); }
  int* ijPar() override { return group_.Lend(group_.arrays.other); }
  double* ijParSx() override { return group_.Lend(group_.arrays.sx); }
  double* ijParSy() override { return group_.Lend(group_.arrays.sy); }
  double* ijParSz() override { return group_.Lend(group_.arrays.sz); }
  double* ijParxc() override { return NotNeeded<double>("ijParxc"); }
  double* ijParyc() override { return NotNeeded<double>("ijParyc"); }
  double* ijParzc() override { return NotNeeded<double>("ijParzc"); }
  double* ParInterFace_Lamda() override { return NotNeeded<double>("ParInterFace_Lamda"); }
  int* FaceType_Partition() override { return NotNeeded<int>("FaceType_Partition"); }

 private:
  template <typename T>
  static T* NotNeeded(char const* name) {
    ADD_FAILURE() << name << " is not for the face operator";
    return nullptr;
  }

  LentGroup& group_;
};

/// A halo exchange that counts how often it is asked for anything.
class CountingCommunication : public CCommunication {
 public:
  void DDM_Exch(double*) override { ++calls; }
  void DDM_IExch_Start(double*, ZYNNonBlockingBufferId) override { ++calls; }
  void DDM_IExch_Wait(double*, ZYNNonBlockingBufferId) override { ++calls; }

  int calls = 0;
};

/// The solver's parameters with one block of them; there is none for points.
class LentParameters : public CZYNKNCMPCompParm {
 public:
  CZYNCMP_FaceRBF_Parm* getFaceRBFParm() override { return &block; }
  CZYNCMP_IBRBF_Parm* getIBRBFParm() override { return nullptr; }

  CZYNCMP_FaceRBF_Parm block;
};

/// The host records of a MeshPlan and the host objects, which the face operator borrows.
class FaceHost {
 public:
  FaceHost(MeshPlan const& plan, std::string const& baseFileName);
  FaceHost(FaceHost const&) = delete;
  FaceHost& operator=(FaceHost const&) = delete;

  int NCell() const { return plan_.NCell(); }
  int NFace(int group) const { return groups_[static_cast<std::size_t>(group)]->arrays.count; }
  MeshPlan const& Plan() const { return plan_; }

  /// Whether every array that is lent for reading has the bits that it was made with.
  bool InputsUntouched() const;

  CZYN3DFiniteVolumeMesh mesh;
  CZyn3dGV globals;
  CZYNGVGPU gpu;
  CZYNGVOpenMP openMP;
  CountingCommunication communication;
  LentParameters parameters;

 private:
  void LendCells();
  void LendNodes();
  void LendInnerFaces();
  void LendWallsAndInlets();
  void LendOutletsAndSymmetry();

  MeshPlan plan_;
  std::vector<char> baseFileName_;
  gradient_test::GuardedArray<double> xn_, yn_, zn_, xc_, yc_, zc_;
  gradient_test::GuardedArray<int> cellNodeNumber_;
  rbf_cell_test::LentTable cellNodes_, cellFace_, cellFaceType_, nodeCell_;
  std::array<std::unique_ptr<LentGroup>, 7> groups_;

 public:
  LentPartitionFaces partitionFaces;
};

}  // namespace rbf_face_test
