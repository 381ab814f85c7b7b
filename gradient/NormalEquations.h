#pragma once

#include "gradient/TwoFaces.h"

/// @file
/// The normal equations of a cell and their elimination. The least-squares gradient solves them with these functions,
/// and `zyngrad check` judges their pivots with the same ones.
///
/// Gaussian elimination without row exchange takes
///
///   [ xx xy xz | bx ]      [ xx xy  xz  | bx  ]
///   [ xy yy yz | by ]  to  [    yy' yz' | by' ]
///   [ xz yz zz | bz ]      [        zz" | bz" ]
///
/// Functions are for one cell (Value = double) or for two side by side (Value = two_faces::Two). A question about pivots is
/// then answered with yes if the answer is yes for either cell.

namespace normal_equations {

template <class Value>
struct Matrix {
  Value xx, xy, xz, yy, yz, zz;
};

template <class Value>
struct Vector {
  Value x, y, z;
};

/// yy' @pre the first pivot, xx, is not zero
template <class Value>
Value SecondPivot(Matrix<Value> const& m) {
  return m.yy - (m.xy / m.xx) * m.xy;
}

/// zz" @pre no earlier pivot is zero
template <class Value>
Value LastPivot(Matrix<Value> const& m) {
  Value const yz = m.yz - (m.xy / m.xx) * m.xz;
  Value const zy = m.yz - (m.xz / m.xx) * m.xy;
  Value const zz = m.zz - (m.xz / m.xx) * m.xz;
  return zz - (zy / SecondPivot(m)) * yz;
}

/// Whether the first or second pivot is exactly zero, where elimination stops. The last pivot is no divisor of the
/// elimination. (A pivot is looked at before anything is divided by it: the solver may have armed a trap for division by
/// zero.)
template <class Value>
bool HasZeroPivot(Matrix<Value> const& m) {
  return two_faces::AnyZero(m.xx) || two_faces::AnyZero(SecondPivot(m));
}

/// Elimination, then substitution from the bottom. @pre no pivot is zero, but for the last, which gives infinities or NaN
template <class Value>
Vector<Value> Solve(Matrix<Value> const& m, Vector<Value> const& b) {
  Value const yFactor = m.xy / m.xx, zFactor = m.xz / m.xx;
  Value const yy = SecondPivot(m);
  Value const yz = m.yz - yFactor * m.xz;
  Value const by = b.y - yFactor * b.x;
  Value const zy = m.yz - zFactor * m.xy;
  Value const bz = (b.z - zFactor * b.x) - (zy / yy) * by;
  Vector<Value> g;
  g.z = bz / LastPivot(m);
  g.y = (by - g.z * yz) / yy;
  g.x = (b.x - g.y * m.xy - m.xz * g.z) / m.xx;
  return g;
}

/// Matrices and right-hand sides of the cells, [1..nCell] each.
struct OfCells {
  double const *xx, *yy, *zz, *xy, *xz, *yz;
  double const *bx, *by, *bz;
};

/// Solves those of the cells 1..nCell by ascending number, into [1..nCell].
/// A last pivot of zero is no failure: the gradient of the cell is not finite then, and no trap stops the program.
/// @return false at a cell whose first or second pivot is zero; that cell and the later ones are left as they are
bool SolveAll(OfCells const& cells, int nCell, double* gx, double* gy, double* gz);

}  // namespace normal_equations
