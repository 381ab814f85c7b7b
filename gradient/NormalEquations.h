#pragma once

#include <array>

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

/// The matrices of the cells, [1..nCell] each.
struct Matrices {
  double const *xx, *yy, *zz, *xy, *xz, *yz;
};
/// A vector in each cell, [1..nCell] along x, y and z.
struct Vectors {
  double *x, *y, *z;
};
/// Right-hand sides and answers of a field. They may be the same arrays.
struct Solution {
  Vectors b, g;
};
/// The systems of the cells: fields share the matrices.
template <int FieldCount>
struct Systems {
  Matrices matrices;
  std::array<Solution, FieldCount> fields;
};

/// Solves those of the cells first..last by ascending number, four or two cells side by side.
/// A last pivot of zero is no failure: the gradients of the cell are not finite then, and no trap stops the program.
/// @return last + 1, or a cell whose first or second pivot is zero; that cell and the later ones are left as they are
template <int FieldCount>
int SolveCells(Systems<FieldCount> const& systems, int first, int last);

}  // namespace normal_equations
