#include "gradient/NormalEquations.h"

#include <algorithm>

#include "foundation/Processor.h"
#include "foundation/WithoutTraps.h"
#include "gradient/FourSystems.h"

namespace normal_equations {
namespace {

using two_faces::At;
using two_faces::StoreAt;
using two_faces::Two;

template <class Value>
Matrix<Value> MatrixAt(Matrices const& m, int c) {
  return {At<Value>(m.xx, c), At<Value>(m.xy, c), At<Value>(m.xz, c),
          At<Value>(m.yy, c), At<Value>(m.yz, c), At<Value>(m.zz, c)};
}

template <class Value>
Vector<Value> VectorAt(Vectors const& v, int c) {
  return {At<Value>(v.x, c), At<Value>(v.y, c), At<Value>(v.z, c)};
}

template <class Value>
void StoreAt(Vectors const& v, int c, Vector<Value> const& value) {
  StoreAt(v.x, c, value.x), StoreAt(v.y, c, value.y), StoreAt(v.z, c, value.z);
}

template <class Value, int FieldCount>
void SolveAt(Systems<FieldCount> const& s, Matrix<Value> const& m, int c) {
  for (Solution const& field : s.fields) StoreAt(field.g, c, Solve(m, VectorAt<Value>(field.b, c)));
}

// Not inlined: a compiler that sees the caller, too, may move the divisions behind the end of its WithoutTraps.
template <int FieldCount>
[[gnu::noinline]] void SolveWithZeroLastPivot(Systems<FieldCount> const& s, Matrix<double> const& m, int c) {
  SolveAt(s, m, c);
}

/// @return false, without an answer, when the first or second pivot of the cell is zero
template <int FieldCount>
bool SolveOne(Systems<FieldCount> const& s, int c) {
  Matrix<double> const m = MatrixAt<double>(s.matrices, c);
  if (HasZeroPivot(m)) return false;
  if (two_faces::AnyZero(LastPivot(m))) {
    WithoutTraps const whileDividing;
    SolveWithZeroLastPivot(s, m, c);
  } else {
    SolveAt(s, m, c);
  }
  return true;
}

/// Solves cells side by side from c on. @return the first cell that is not solved, since its neighbours up to `last` are
/// too few or one of them has a zero pivot
template <int FieldCount>
int SolvePairs(Systems<FieldCount> const& systems, int c, int last) {
  Systems<FieldCount> const s = systems;
  for (; c < last; c += 2) {
    Matrix<Two> const m = MatrixAt<Two>(s.matrices, c);
    if (HasZeroPivot(m) || two_faces::AnyZero(LastPivot(m))) break;
    SolveAt(s, m, c);
  }
  return c;
}

#if ZYN_HAS_TARGETS

/// The same for four cells.
template <int FieldCount>
ZYN_TARGET_AVX2 int SolveFours(Systems<FieldCount> const& systems, int c, int last) {
  Systems<FieldCount> const s = systems;
  for (FourSystems eliminated; c + 3 <= last && Eliminate(s.matrices, c, eliminated); c += 4) {
    for (Solution const& field : s.fields) {
      Four const bx = _mm256_loadu_pd(field.b.x + c), by = _mm256_loadu_pd(field.b.y + c);
      SolveFour(eliminated, bx, by, _mm256_loadu_pd(field.b.z + c), field.g, c);
    }
  }
  return c;
}

#else

template <int FieldCount>
int SolveFours(Systems<FieldCount> const&, int c, int) {
  return c;
}

#endif

}  // namespace

template <int FieldCount>
int SolveCells(Systems<FieldCount> const& systems, int first, int last) {
  bool const hasFours = processor::HasAvx2();
  int const sideBySide = hasFours ? 4 : 2;
  for (int c = first; c <= last;) {
    c = hasFours ? SolveFours(systems, c, last) : SolvePairs(systems, c, last);
    // The last cells, or those of which one has a zero pivot.
    for (int const end = std::min(c + sideBySide - 1, last); c <= end; ++c)
      if (!SolveOne(systems, c)) return c;
  }
  return last + 1;
}

template int SolveCells(Systems<1> const&, int, int);
template int SolveCells(Systems<3> const&, int, int);

}  // namespace normal_equations
