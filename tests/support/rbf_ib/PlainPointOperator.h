#pragma once

#include <array>
#include <vector>

#include "host/ZYNOptKer.h"
#include "host/Zyn3dGV.h"
#include "tests/support/mesh/SmallMeshes.h"

namespace zyn_test {

struct PointSettings {
  double span = 500.0;
  int method = 3;
  int number = 20;
};

/// The weights of one stencil member.
struct Weights {
  double x = 0.0, y = 0.0, z = 0.0, value = 0.0;
};

/// Matrix and right-hand sides of one system, row-major; after Solve the solution in their place.
struct System {
  int order = 0;
  int columns = 0;
  std::vector<double> matrix;          ///< order x order
  std::vector<double> rightHandSides;  ///< order x columns

  double Solution(int row, int column) const {
    return rightHandSides[static_cast<std::size_t>(row * columns + column)];
  }
};

/// Solves in place by the routine that the library uses.
void Solve(System& system);

/// |A w - b| / (|A| |w| + |b|) of one column in the maximum norm, the products in extended precision.
double BackwardError(System const& system, int column, std::vector<double> const& w);

/// The largest of them over the columns of the system's own solution.
double WorstBackwardError(System const& system);

/// How well the weights reproduce the constant field 1, for one quantity.
struct Statistics {
  double sumOfSquares = 0.0, largest = 0.0;
  int point = 0;       ///< of the largest
  double there = 0.0;  ///< what the weights give at that point

  /// Takes the error of `computed` against `exact`; an equal error stays with the earlier point.
  void Take(int i, double computed, double exact);
};

/// The interpolation to free points in its plainest form: full loops, every matrix entry computed for itself,
/// every system built and solved each time that it is needed. The library's results equal these bit for bit on
/// the same LAPACK and the same search tree.
///
/// Shared with the library are the dense solve, and the tree as far as the order goes in which it names what it
/// found; what it found is checked by comparison with every cell.
class PlainPointOperator {
 public:
  /// Borrows the mesh and the faces.
  PlainPointOperator(CZYN3DFiniteVolumeMesh const& mesh, CPartitionFace_DLL& partitionFaces,
                     PointSettings settings = PointSettings());

  /// All steps. @param mark [1..NCell], negative for usable cells; point i stands at points[i - 1]
  void SetUp(double const* mark, std::vector<Point> const& points);

  void Collate();
  void CollectNodeCells(double const* mark);
  void EnterCells(double const* mark);
  void SearchAll(std::vector<Point> const& points);
  void DeriveAll(std::vector<Point> const& points);

  /// The system of a point on the cells of its stencil.
  System CellSystem(int i, Point p) const;

  /// The system of a point on its seeds and the mesh nodes around them.
  System NodeAndSeedSystem(int i, Point p) const;

  /// The system of a mesh node on the usable cells around it, with one right-hand side.
  System NodeSystem(int node) const;

  /// d/dx, d/dy, d/dz and the value at point i. @param field [1..NCell]
  Weights Apply(int i, double const* field) const;

  /// The exchange sort with one pass fewer than it needs.
  static void SortAllButTheFirstTwo(std::vector<int>& ids, std::vector<double>& distances);

  CZYN3DFiniteVolumeMesh const& mesh;
  CPartitionFace_DLL& partitionFaces;
  PointSettings settings;

  std::vector<Point> positions;  ///< [1..NCell]
  std::vector<int> tags, kinds;  ///< [1..NCell]
  Point boundMax{-1e10, -1e10, -1e10}, boundMin{1e10, 1e10, 1e10};
  double meanDistance = 0.0;
  std::vector<bool> boundaryNode;           ///< [1..NNode]
  std::vector<std::vector<int>> nodeCells;  ///< [1..NNode] usable cells around a node
  std::vector<int> cellToBlock;             ///< [1..NCell]
  std::vector<int> blockToCell;             ///< [1..number of usable cells]

  std::vector<std::vector<int>> stencils;    ///< [1..nPoint]
  std::vector<double> supports;              ///< [1..nPoint]
  std::vector<bool> twoSeeds;                ///< [1..nPoint]
  std::vector<std::vector<int>> pointNodes;  ///< [1..nPoint], method 3
  std::vector<std::vector<std::vector<int>>>
      nodeTable;                              ///< [1..nPoint][node 0..m-1][cell 0..]: stencil position
  std::vector<std::vector<Weights>> weights;  ///< [1..nPoint][member 0..n-1]

  int nDerived = 0;
  Statistics value, dx, dy, dz;

 private:
  struct Found {
    std::vector<int> ids;
    std::vector<double> distances;
    double halfWidth = 0.0;
  };

  void MeasureBounds();
  void Place(int c, Point p, int kind);
  void MarkNodes(int count, int* const* faceNodes);
  Found Search(Point p, int wanted);
  std::vector<int> Meeting(Point p, double d) const;
  bool CoversAll(Point p, double d) const;
  double FarthestBound(Point p) const;
  void SearchByNumber(int i, Point p);
  void SearchByTopology(int i, Point p);
  void CollectRing(int i, std::vector<int> const& seeds);
  void DeriveOnCells(int i, Point p);
  void DeriveOnNodes(int i, Point p);
  void TakeStatistics(int i);
  System Assemble(std::vector<Point> const& nodes, Point p, double support, int columns) const;
  Point NodePoint(int node) const;
  Point const& PositionOfBlock(int b) const;

  CZYNOptKer tree_;
};

}  // namespace zyn_test
