#pragma once

#include <array>
#include <vector>

#include "host/ZYNOptKer.h"
#include "host/Zyn3dGV.h"
#include "tests/support/mesh/BoxMesh.h"

namespace zyn_test {

struct FaceSettings {
  int method = 4;
  double span = 1000.0;
  int searchNumber = 20;
};

/// A virtual point and the cell that it is tied to.
struct PlainVirtualPoint {
  Point point;
  int cell = 0;
};

/// Largest error, its face and the sum of the row there, and the sum of all squared errors.
struct PlainErrors {
  double squares = 0.0, largest = 0.0, sum = 0.0;
  int face = 0;
};

/// The largest errors over systems of |A w - b| / (|A| |w| + |b|), in the largest norms. Systems with an entry
/// that is no finite number are counted apart.
struct BackwardErrors {
  double largest = 0.0;
  int systems = 0, notFinite = 0;
};

/// The face operator in its plainest form: what the library computes, by vectors and full loops, with every
/// matrix entry computed for itself and every system built and solved whenever it is needed. The library's
/// tables equal these bit for bit on the same LAPACK and the same search tree.
///
/// Shared with the library are the fixed order of products in an integer power, the dense solve and the tree.
/// It reads the host records only. Cells, vertices and faces count from 1; element 0 of a row is unused and
/// stands for what a library row has in element 0 besides its length.
class PlainFaceOperator {
 public:
  using Row = std::vector<int>;        ///< entries from index 0 on
  using Values = std::vector<double>;  ///< [1..n], element 0 unused

  PlainFaceOperator(CZYN3DFiniteVolumeMesh const& mesh, CPartitionFace_DLL& partitionFaces, int faceType,
                    FaceSettings const& settings);

  /// All stages in their order.
  void Run();

  // The stages.
  void Collate();
  void FillTree();
  void FindStencils();
  void Derive();

  /// value_i = sum over the stencil. @return [1..nFace]
  Values Apply(Values const& phi) const;

  // Single steps, as the library has them.
  int ClosestCell(Point p) const;
  void PlaceVirtualPoints(int i, int const (&pair)[2], Point s);
  void PlaceVirtualPointsInCells(int i, int const (&pair)[2], Point s);
  void StencilFromVertices(int i, int const (&pair)[2], Row const& vertices);
  void StencilFromNeighbours(int i, int const (&pair)[2]);
  void StencilFromVerticesOfTiedCells(int i, int const (&pair)[2]);
  void StencilFromCubes(int i, int const (&pair)[2], Point n);
  void DeriveAtTarget(int i);
  void DeriveOverVertices(int i);
  void DeriveOverVirtualPoints(int i);
  void DeriveOverVerticesOfTiedCells(int i);
  Values VertexWeights(int v);
  Values VirtualPointWeights(bool fromVertices, int i, int k);
  void CreateCellFaces();

  /// The group's arrays.
  struct GroupArrays {
    int count;
    int const *cv, *other;
    int* const* nodes;
    double const *x, *y, *z;  ///< centre; null for partition faces
    double const *sx, *sy, *sz;
  };
  GroupArrays Of(int group) const;

  CZYN3DFiniteVolumeMesh const& mesh;
  int faceType, nFace;
  FaceSettings settings;

  std::vector<Point> points;  ///< [1..NCell] and kinds
  std::vector<int> kinds;
  std::vector<bool> isBoundaryNode;  ///< [1..NNode]
  std::vector<Point> targets;        ///< [1..nFace]
  Point high{-1e10, -1e10, -1e10}, low{1e10, 1e10, 1e10};
  double meanDistance = 0.0;
  int maxNodes = 0;
  std::vector<Row> nodeCells, cellNodes, neighbours;  ///< by vertex, by cell, by cell
  std::vector<Row> cellFaces, cellFaceTypes;          ///< by cell, filled by CreateCellFaces alone

  std::vector<Row> stencils;           ///< [1..nFace]
  std::vector<double> supports;        ///< [1..nFace]
  std::vector<Row> faceNodes;          ///< [1..nFace]
  std::vector<std::vector<Row>> rows;  ///< [1..nFace] rows of positions from index 0 on
  std::vector<std::array<PlainVirtualPoint, 3>> virtualPoints;  ///< [0..nFace], elements 1 and 2

  std::vector<Values> fi, dn;                ///< [1..nFace], element 0 takes what belongs to position 0
  std::vector<std::vector<Point>> gradient;  ///< [1..nFace]

  int facesDone = 0;
  PlainErrors value, ddx, ddy, ddz, ddn;
  double maxVertexError = 0.0;
  int maxVertexErrorNode = 0;
  BackwardErrors backward;
  double largestArgument = 0.0;  ///< largest r / (span h) that a kernel was taken at

 private:
  enum class Kernel { C4, C2 };
  struct Systems;

  Point NodeAt(int v) const;
  Point PointOf(int c) const { return points[static_cast<std::size_t>(c)]; }
  std::vector<int> Search(Point p, double d) const;
  std::vector<int> GrowingSearch(Point p, int wanted, double& d) const;
  void SortByDistance(std::vector<int>& ids, std::vector<double>& distances) const;
  Row DistinctPoints(Row const& list) const;
  void CreateNodeCells();
  void CreateCellNodes();
  void CreateNeighbours();
  std::vector<int> SharingTwoVertices(int c) const;
  void StencilByNode(int i);
  void SetSides(int i, Row const& merged, Row const& listP, Row const& listE);
  double PlaneAhead(Point origin, Point direction, int cell, int exceptGroup, int exceptFace) const;

  /// Solution columns [0..n-1] of the value and, with the C4 kernel, before it those of the slope.
  std::vector<Values> Solve(std::vector<Point> const& nodes, Point at, double h, Kernel kernel, bool slopes);
  void ResizeRows(int i, std::size_t n);
  void AccountForSlopes(int i);
  void AccountForNormal(int i);

  CPartitionFace_DLL& partitionFaces_;
  mutable CZYNOptKer tree_;
};

}  // namespace zyn_test
