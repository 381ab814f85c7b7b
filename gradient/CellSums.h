#pragma once

#include <algorithm>
#include <array>
#include <cstddef>

#include "foundation/FaceGroups.h"
#include "gradient/TwoFaces.h"

/// @file
/// Sums over the faces of cells: what is added, the arrays that it is added to, and the one sum that a walk over the
/// faces keeps in registers.

namespace face_walk {

/// A face value times the area vector, or a sum of such: x and y side by side in one register, z in another.
struct Flux {
  static constexpr std::size_t kArrays = 3;  ///< x, y, z
  static constexpr bool kPrefetchesFarCells = true;
  using Arrays = std::array<double*, kArrays>;

  two_faces::Two xy;
  double z;

  [[gnu::always_inline]] static Flux Of(double value, FaceGroup const& group, int f) {
    return {two_faces::Two{value, value} * two_faces::Two{group.sx[f], group.sy[f]}, value * group.sz[f]};
  }
  [[gnu::always_inline]] static Flux At(Arrays const& a, int c) {
    return {two_faces::Two{a[0][c], a[1][c]}, a[2][c]};
  }
  [[gnu::always_inline]] void StoreAt(Arrays const& a, int c) const {
    a[0][c] = xy[0];
    a[1][c] = xy[1];
    a[2][c] = z;
  }
  [[gnu::always_inline]] void SubtractAt(Arrays const& a, int c) const {
    a[0][c] -= xy[0];
    a[1][c] -= xy[1];
    a[2][c] -= z;
  }
  [[gnu::always_inline]] void operator+=(Flux const& o) {
    xy += o.xy;
    z += o.z;
  }
  [[gnu::always_inline]] void operator-=(Flux const& o) {
    xy -= o.xy;
    z -= o.z;
  }
};

/// The sums of all cells, [1..nCell] in each array, 0.0 to begin with.
///
/// The arrays are set to zero in blocks, just ahead of the first cell that a face touches: where neighbours have
/// neighbouring numbers, a block is still in cache when its sums begin. The stored numbers are those of clearing
/// everything first.
template <class Flux>
class CellSums {
 public:
  using Arrays = typename Flux::Arrays;

  CellSums(Arrays const& arrays, int nCell) : arrays_(arrays), nCell_(nCell) {}

  /// Makes the cells of the faces first..last ready to be added to.
  void Reach(FaceGroup const& group, int first, int last) {
    int f = first;
    for (; f + 7 <= last; f += 8)
      if (two_faces::AnyOfEightAbove(cleared_, group.cv + f, group.other + f)) break;
    for (; f <= last; ++f) ClearAhead(std::max(group.cv[f], group.other[f]));
  }
  /// Says that the cells up to this one hold sums already.
  void TakeAsReached(int cell) { cleared_ = cell; }
  /// Makes all cells ready to be added to. Cells that no face touches hold 0.0 only after this.
  void ReachAll() { ClearTo(nCell_); }

  Arrays const& arrays() const { return arrays_; }

  /// @pre the cell has been reached
  void Multiply(int c, double factor) {
    for (double* array : arrays_) array[c] *= factor;
  }

 private:
  static constexpr int kBlock = 512;

  void ClearAhead(int cell) {
    if (cell > cleared_) ClearTo(std::min(cell + kBlock, nCell_));
  }
  void ClearTo(int last) {
    if (last <= cleared_) return;
    for (double* array : arrays_) std::fill(array + cleared_ + 1, array + last + 1, 0.0);
    cleared_ = last;
  }

  Arrays arrays_;
  int nCell_;
  int cleared_ = 0;
};

/// The sum of the cell on the CV side, kept in registers while faces of the same cell follow each other. It is stored
/// before that of another cell is fetched, so no addition changes its place.
template <class Flux>
class CvSum {
 public:
  using Arrays = typename Flux::Arrays;

  [[gnu::always_inline]] CvSum(Arrays const& arrays, int cell) : arrays_(arrays) { Fetch(cell); }

  /// @return whether the cell is another one than before
  [[gnu::always_inline]] bool MoveTo(int cell) {
    if (cell == cell_) return false;
    Store();
    Fetch(cell);
    return true;
  }
  /// Adds the flux of a face to its CV side, the cell that was moved to.
  [[gnu::always_inline]] void Add(Flux const& flux) { sum_ += flux; }
  /// Subtracts it on the other side.
  [[gnu::always_inline]] void Subtract(Flux const& flux, int other) {
    if (__builtin_expect(other == cell_, 0)) {  // a face of a cell with itself
      sum_ -= flux;
    } else {
      flux.SubtractAt(arrays_, other);
    }
  }
  /// The same for a cell that is not the CV side.
  [[gnu::always_inline]] void SubtractBeyond(Flux const& flux, int other) { flux.SubtractAt(arrays_, other); }

  [[gnu::always_inline]] void Store() const { sum_.StoreAt(arrays_, cell_); }

 private:
  [[gnu::always_inline]] void Fetch(int cell) {
    cell_ = cell;
    sum_ = Flux::At(arrays_, cell);
  }

  Arrays const arrays_;
  int cell_;
  Flux sum_;
};

}  // namespace face_walk
