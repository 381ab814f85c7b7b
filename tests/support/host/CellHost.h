#pragma once

#include <string>
#include <vector>

#include "tests/support/host/HostObjects.h"
#include "tests/support/mesh/CellMesh.h"

namespace rbf_cell_test {

/// A ragged table as a host lends it: each row is an allocation of exactly its size, so that a sanitizer sees
/// a step beyond it, and there is no row 0.
class LentTable {
 public:
  LentTable() = default;

  /// @param[in] rows  [1..n] entries of each row, element 0 unused
  explicit LentTable(std::vector<std::vector<int>> const& rows);

  int** Data() { return pointers_.empty() ? nullptr : pointers_.data(); }
  std::vector<std::vector<int>> const& Rows() const { return rows_; }

 private:
  std::vector<std::vector<int>> rows_;
  std::vector<int*> pointers_;
};

/// The arrays of a boundary group or of the inner faces, guarded.
struct LentFaces {
  explicit LentFaces(std::vector<CellFace> const& faces);

  int count = 0;
  gradient_test::GuardedArray<int> cv, other;
  gradient_test::GuardedArray<double> xc, yc, zc, sx, sy, sz;
};

/// The host records of a CellMesh. The mesh and its arrays live as long as this; the five other host objects
/// are made by `new`, once per operator, since the operator destroys those that it was given.
class CellHost {
 public:
  CellHost(CellMesh const& description, std::string const& baseFileName);
  CellHost(CellHost const&) = delete;
  CellHost& operator=(CellHost const&) = delete;

  CZyn3dGV* NewGlobals();
  CPartitionFace_DLL* NewPartitionFaces();
  CCommunication* NewCommunication();
  CZYNGVGPU* NewGPU();
  CZYNGVOpenMP* NewOpenMP();

  /// Whether every array that is lent for reading has the bits that it was made with.
  bool InputsUntouched() const;

  CZYN3DFiniteVolumeMesh mesh;
  PartitionArrays partition;
  Destroyed destroyed;
  int communicationCalls = 0;

 private:
  void LendCells();
  void LendFaces();
  void LendNodes();

  CellMesh description_;
  std::vector<char> baseFileName_;
  gradient_test::GuardedArray<double> xc_, yc_, zc_;
  LentFaces inner_, wall_, inlet_, outlet_, symmetry_;
  LentTable cellCell_, nodeCell_, partitionNodes_;
};

}  // namespace rbf_cell_test
