#pragma once

#include <array>
#include <string>
#include <vector>

#include "host/Zyn3dGV.h"

/// A table of rows of nodes, cells or faces, in the form of the mesh record: element 0 of a row holds the number of
/// entries that follow, and rows are counted from 1.
class Rows {
 public:
  void Resize(int n) { rows_.resize(static_cast<std::size_t>(n) + 1, {0}); }
  void Append(int row, int entry) {
    rows_[static_cast<std::size_t>(row)].push_back(entry);
    ++rows_[static_cast<std::size_t>(row)][0];
  }
  void AddRow(std::array<int, 4> const& entries) {
    rows_.push_back({4, entries[0], entries[1], entries[2], entries[3]});
  }
  std::vector<int> const& operator[](int row) const { return rows_[static_cast<std::size_t>(row)]; }

  /// The table to lend. Nothing may be appended afterwards.
  int** Lend() {
    pointers_.clear();
    for (std::vector<int>& row : rows_) pointers_.push_back(row.data());
    return pointers_.data();
  }

 private:
  std::vector<std::vector<int>> rows_ = {{0}};
  std::vector<int*> pointers_;
};

/// One group of faces. All arrays are [1..count].
struct FaceTable {
  std::vector<int> cell = {0}, other = {0};          ///< interior cell; interior, ghost or halo cell beyond
  std::vector<double> sx = {0}, sy = {0}, sz = {0};  ///< area vector, from `cell` to `other`
  std::vector<double> x = {0}, y = {0}, z = {0};     ///< centre
  std::vector<double> weight = {0};                  ///< weight of `other` in the linear face value
  std::vector<int> type = {0};                       ///< 0: both sides take the flux
  Rows nodes;

  int count() const { return static_cast<int>(cell.size()) - 1; }
};

/// Where the value of a halo cell comes from.
struct HaloSource {
  int haloCell;  ///< here
  int part;      ///< the partition that owns the cell
  int cell;      ///< its number there
};

/// One of several slabs, arranged along x, of a box of cubes: the mesh of a solver that identifies its cells by (i, j,
/// k). Cell numbers, neighbours and positions follow from these indices. The class writes them into the tables of the
/// mesh record, which it owns.
class Slab {
 public:
  /// @param[in] ownPart,nParts  number of this slab, from 0, and number of slabs
  /// @param[in] size            cells of a slab along x, y and z
  /// @param[in] edge            edge length of a cell
  Slab(int ownPart, int nParts, std::array<int, 3> size, double edge);
  Slab(Slab const&) = delete;
  Slab& operator=(Slab const&) = delete;

  CZYN3DFiniteVolumeMesh mesh;
  FaceTable partitionFaces;
  std::vector<HaloSource> halo;
  int part;

 private:
  using Place = std::array<int, 3>;

  int Cell(Place const& p) const { return 1 + p[0] + size_[0] * (p[1] + size_[1] * p[2]); }
  int Node(Place const& p) const { return 1 + p[0] + (size_[0] + 1) * (p[1] + (size_[1] + 1) * p[2]); }
  void MakeNodes();
  void MakeCells();
  void MakeFaces();
  void AddFace(Place const& p, int axis, bool isHighSide);
  void AddTo(FaceTable& faces, int code, Place const& p, int other, int axis, bool isHighSide);
  int AddCell(std::array<double, 3> const& centre);
  std::array<double, 3> FaceCentre(Place const& p, int axis, bool isHighSide) const;
  void MakeNodeCells();
  void LendAll();

  Place size_;
  int nParts_;
  double edge_;
  std::vector<double> xn_ = {0}, yn_ = {0}, zn_ = {0}, xc_ = {0}, yc_ = {0}, zc_ = {0}, volume_ = {0};
  std::vector<int> nCellNodes_ = {0};
  FaceTable inner_, wall_, inlet_, outlet_;
  Rows cellCell_, cellFace_, cellFaceType_, cellNodes_, nodeCell_;
};
