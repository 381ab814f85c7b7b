#pragma once

#include <array>
#include <string>
#include <vector>

#include "host/Zyn3dGV.h"
#include "tests/support/host/GuardedArray.h"
#include "tests/support/host/HostObjects.h"
#include "tests/support/host/LentFaces.h"
#include "tests/support/host/RaggedTable.h"
#include "tests/support/host/Reads.h"
#include "tests/support/mesh/TestMesh.h"

namespace zyn_test {

/// Everything that an operator borrows, made from a description: the mesh record filled with guarded arrays, and the
/// other host objects.
class Host : public HostObjects {
 public:
  /// @param[in] baseFileName     the run's file name
  /// @param[in] lendEmptyArrays  groups without faces lend arrays of guards instead of null pointers
  Host(TestMesh const& description, Reads const& reads, std::string const& baseFileName = std::string(),
       Exchange const& exchange = NoExchange(), bool lendEmptyArrays = false);

  int NCell() const { return description_.NCell(); }
  int NFace(int faceType) const { return Faces(static_cast<FaceKind>(faceType)).count; }
  TestMesh const& Description() const { return description_; }

  LentFaces const& Faces(FaceKind kind) const {
    return kind == FaceKind::Partition ? partition.faces : groups_[IndexOf(kind)];
  }
  LentFaces& Faces(FaceKind kind) {
    return kind == FaceKind::Partition ? partition.faces : groups_[IndexOf(kind)];
  }

  /// Whether every array that is lent for reading has the bits that it was made with.
  bool InputsUntouched() const;

  void UseNonBlockingExchange(bool nonBlocking) { globals.UseNonBlockingExch = nonBlocking ? 1 : 0; }

  CZYN3DFiniteVolumeMesh mesh;
  GuardedGradient centres;      ///< xc, yc, zc
  GuardedArray<double> volume;  ///< of interior cells
  GuardedGradient previous;     ///< PrevGradX, PrevGradY, PrevGradZ

 private:
  void LendCells();
  void LendNodes();
  void LendTables();
  void LendGroup(FaceKind kind);

  TestMesh description_;
  Reads reads_;
  std::vector<char> baseFileName_;
  GuardedGradient nodes_;
  GuardedArray<int> nodesOfCell_;
  RaggedTable neighbours_, cellNodes_, cellFaces_, cellFaceTypes_, nodeCells_;
  std::array<LentFaces, kFaceKinds> groups_;
};

}  // namespace zyn_test
