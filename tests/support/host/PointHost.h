#pragma once

#include <functional>
#include <string>
#include <vector>

#include "host/ZYNKNCompParm.h"
#include "tests/support/host/CellHost.h"
#include "tests/support/host/HostObjects.h"
#include "tests/support/mesh/PointMesh.h"

namespace rbf_ib_test {

/// The arrays of a face group, guarded.
struct LentGroup {
  explicit LentGroup(std::vector<Face> const& faces);

  int count;
  gradient_test::GuardedArray<int> cv, other;
  gradient_test::GuardedArray<double> xc, yc, zc;
  rbf_cell_test::LentTable nodes;
};

/// The solver's parameters, which count how often a block is asked for.
class Parameters : public CZYNKNCMPCompParm {
 public:
  CZYNCMP_FaceRBF_Parm* getFaceRBFParm() override { return nullptr; }
  CZYNCMP_IBRBF_Parm* getIBRBFParm() override {
    ++calls;
    if (onCall) onCall();
    return &block;
  }

  CZYNCMP_IBRBF_Parm block;
  int calls = 0;
  std::function<void()> onCall;  ///< may be empty
};

/// The host objects of a PointMesh, all of them alive as long as this: the point operator borrows them.
class PointHost {
 public:
  PointHost(PointMesh const& description, std::string const& baseFileName);
  PointHost(PointHost const&) = delete;
  PointHost& operator=(PointHost const&) = delete;

  /// Whether every array that is lent has the bits that it was made with.
  bool InputsUntouched() const;

  CZYN3DFiniteVolumeMesh mesh;
  rbf_cell_test::PartitionArrays partition;
  rbf_cell_test::Destroyed destroyed;  ///< what of the following an operator has destroyed
  int communicationCalls = 0;
  rbf_cell_test::WatchedGlobals globals{destroyed};
  rbf_cell_test::WatchedGPU gpu{destroyed};
  rbf_cell_test::WatchedOpenMP openMP{destroyed};
  rbf_cell_test::WatchedPartitionFaces partitionFaces{destroyed, partition};
  rbf_cell_test::WatchedCommunication communication{destroyed, communicationCalls};

 private:
  void LendCellsAndNodes();
  void LendFaces();

  PointMesh description_;
  std::vector<char> baseFileName_;
  gradient_test::GuardedArray<double> xc_, yc_, zc_, xn_, yn_, zn_;
  gradient_test::GuardedArray<int> nodeNumbers_;
  LentGroup inner_, wall_, inlet_, outlet_, symmetry_, partition_;
  rbf_cell_test::LentTable nodeCell_, cellNodes_;
};

}  // namespace rbf_ib_test
