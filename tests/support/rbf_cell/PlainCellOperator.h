#pragma once

#include <array>
#include <vector>

#include "tests/support/mesh/SmallMeshes.h"

namespace zyn_test {

/// One row of weights: x, y, z.
using Triple = std::array<double, 3>;

/// A point of the collation with its kind (1 interior, 2 wall, 3 inlet, 4 outlet, 5 partition, 0 none) and
/// its number within the kind.
struct CollatedPoint {
  Point point;
  int id = 0;
  int kind = 0;
  int index = 0;
};

/// The largest sums of weights met so far, and where one of them last rose.
struct Residuals {
  double x = 0.0, y = 0.0, z = 0.0, normal = 0.0;
  int worst = 0;
};

/// The matrix and the right-hand sides of one system, row-major, and its order.
struct DenseSystem {
  int order = 0;
  std::vector<double> matrix;          ///< order x order
  std::vector<double> rightHandSides;  ///< order x the number of right-hand sides
};

/// The cell operator in its plainest form: what the library computes, by allocated tables and full loops,
/// with every matrix entry computed for itself. The library's results equal these bit for bit on the same
/// LAPACK.
///
/// Shared with the library are the fixed order of products in an integer power, and LAPACK.
class PlainCellOperator {
 public:
  PlainCellOperator(TestMesh const& mesh, double span, int shapeNormalize);

  /// Points, stencils and their length scales.
  void Collate();

  /// Weights of all cells; clears the maxima.
  void DeriveAll();
  void DeriveCell(int cell);

  /// The system that DeriveCell solves.
  DenseSystem SystemOf(int cell) const;

  /// Two-node weights of one face from its two cells: two rows.
  std::vector<Triple> DeriveFace(Face const& face, int number);

  /// Normal weights of inner face f: two weights and the multiplier.
  Triple DeriveInnerFace(int f);

  /// Whether two members of a cell's stencil stand at one point, as a repeated member does and all side cells of
  /// symmetry faces do. Its system then has no proper solution.
  bool HasCoincidentPoints(int cell) const;

  Triple Gradient(int cell, std::vector<double> const& phi) const;

  TestMesh const& mesh;
  double span;
  bool shapeNormalize;

  std::vector<CollatedPoint> points;         ///< [1..NCell]
  std::vector<std::vector<int>> stencils;    ///< [1..nInnerCells] members, the cell itself first
  std::vector<double> supportLengths;        ///< [1..nInnerCells]
  std::vector<Point> extents;                ///< [1..nInnerCells]
  std::vector<std::vector<Triple>> weights;  ///< [1..nInnerCells] one row per member, then the multiplier
  Point boundMax{-1e10, -1e10, -1e10}, boundMin{1e10, 1e10, 1e10};
  double meanDistance = 0.0;
  Residuals residuals;

 private:
  struct Scales {
    Point extent;
    double h = 0.0;
  };

  void CollateKind(int kind, std::vector<Face> const& faces);
  void SetStencil(int cell);
  Point Offset(Point from, Point to, Scales const& scales) const;
  double Kernel(double r, Scales const& scales) const;
  Triple KernelSlope(Point d, Scales const& scales) const;
  Point const& PointOf(int c) const { return points[static_cast<std::size_t>(c)].point; }
  Scales ScalesOfFace(Face const& face) const;
  void TakeMaxima(Triple const& sum, int number);

  /// The system of a face: nodes, evaluation point, one right-hand side along `normal` or three without it.
  DenseSystem FaceSystem(Face const& face, Scales const& scales, Point const* normal) const;
};

/// Solves a system in place by the routine that the library uses.
void SolveInPlace(DenseSystem& system);

}  // namespace zyn_test
