#include "gradient/NormalEquations.h"

#include "foundation/WithoutTraps.h"

namespace normal_equations {
namespace {

using two_faces::At;
using two_faces::StoreAt;
using two_faces::Two;

template <class Value>
Matrix<Value> MatrixAt(OfCells const& s, int c) {
  return {At<Value>(s.xx, c), At<Value>(s.xy, c), At<Value>(s.xz, c),
          At<Value>(s.yy, c), At<Value>(s.yz, c), At<Value>(s.zz, c)};
}

template <class Value>
Vector<Value> RightHandSideAt(OfCells const& s, int c) {
  return {At<Value>(s.bx, c), At<Value>(s.by, c), At<Value>(s.bz, c)};
}

// Not inlined: a compiler that sees the caller, too, may move the divisions behind the end of its WithoutTraps.
[[gnu::noinline]] void SolveWithZeroLastPivot(OfCells const& s, int c, Vector<double>& g) {
  g = Solve(MatrixAt<double>(s, c), RightHandSideAt<double>(s, c));
}

/// @return false, without an answer, when the first or second pivot of the cell is zero
bool SolveOne(OfCells const& s, int c, Vector<double>& g) {
  Matrix<double> const m = MatrixAt<double>(s, c);
  if (HasZeroPivot(m)) return false;
  if (two_faces::AnyZero(LastPivot(m))) {
    WithoutTraps const whileDividing;
    SolveWithZeroLastPivot(s, c, g);
  } else {
    g = Solve(m, RightHandSideAt<double>(s, c));
  }
  return true;
}

}  // namespace

bool SolveAll(OfCells const& cells, int nCell, double* gx, double* gy, double* gz) {
  OfCells const s = cells;
  auto const store = [=](int c, auto const& g) {
    StoreAt(gx, c, g.x), StoreAt(gy, c, g.y), StoreAt(gz, c, g.z);
  };
  for (int c = 1; c <= nCell;) {
    if (c < nCell) {
      Matrix<Two> const m = MatrixAt<Two>(s, c);
      if (!HasZeroPivot(m) && !two_faces::AnyZero(LastPivot(m))) {
        store(c, Solve(m, RightHandSideAt<Two>(s, c)));
        c += 2;
        continue;
      }
    }
    // The last cell of an odd number, or the first of two of which one has a zero pivot.
    Vector<double> g;
    if (!SolveOne(s, c, g)) return false;
    store(c, g);
    ++c;
  }
  return true;
}

}  // namespace normal_equations
