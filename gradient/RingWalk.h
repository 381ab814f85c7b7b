#pragma once

#include "gradient/FaceRing.h"
#include "gradient/FourDoubles.h"

/// @file
/// The walk over inner faces with the records of a FaceRing, for processors with AVX2. It adds the same fluxes in the same
/// order as the walk of FaceWalk.h, so the sums have the same bits.

#if ZYN_HAS_TARGETS

#include <algorithm>
#include <cstddef>

#include "foundation/FaceGroups.h"
#include "gradient/FaceWalk.h"

namespace ring_walk {

using four_doubles::Four;

constexpr std::size_t kFour = 4 * sizeof(double);

/// Where the record of a cell is: its offset in a table with one Four a cell, in bytes.
class Slots {
 public:
  explicit Slots(FaceRing const& ring) : mask_(static_cast<std::size_t>(ring.capacity()) * kFour - 1) {}

  std::size_t Of(int cell) const { return (static_cast<std::size_t>(cell) * kFour) & mask_; }

 private:
  std::size_t mask_;
};

/// A part of the records: so many Fours of each cell, side by side.
template <int Fours>
class Table {
 public:
  /// @param before  number of Fours of each cell in the tables before this one
  Table(FaceRing const& ring, int before)
      : start_(reinterpret_cast<char*>(ring.records()) +
               static_cast<std::size_t>(ring.capacity()) * static_cast<std::size_t>(before) * kFour) {}

  double* At(std::size_t slot, int part = 0) const {
    return reinterpret_cast<double*>(start_ + Fours * slot) + 4 * part;
  }

 private:
  char* start_;
};

/// How many faces ahead their arrays are asked for, and how many cells ahead those that are written.
constexpr int kFacesAhead = 128;
constexpr int kCellsAhead = 64;

/// Walks over the inner faces.
/// @tparam Records  keeps the records of the cells: `Enter(cell, slot)` begins one, `AddRange<Irregular>(group, first, last, value)` adds
///                  faces that all take the flux on two different sides, `Add(group, f, value)` adds any face,
///                  `LeaveFour(cell, slot)` and `Leave(cell, slot)` store what is complete
template <class Records, class FaceValue>
class RingWalk {
 public:
  /// @param faceValue  gives the value at a face, as for the walk without a ring
  RingWalk(FaceGroup const& inner, int nCell, FaceRing const& ring, Records const& records,
           FaceValue const& faceValue)
      : inner_(inner), nCell_(nCell), ring_(ring), slots_(ring), records_(records), faceValue_(faceValue) {}

  /// @return false: the faces are not those that the ring was prepared for. What was stored is of no use then
  ZYN_TARGET_AVX2 bool Run() {
    for (int first = 1, range = 0; first <= inner_.count; first += FaceRing::kRange, ++range) {
      int const last = std::min(first + FaceRing::kRange - 1, inner_.count);
      FaceBounds const bounds = BoundsOf(inner_, first, last);
      // Complete cells leave by fours that begin at a multiple of 4.
      int const complete = (ring_.CompleteBelow(range) & ~3) - 1;
      if (bounds.least <= std::max(complete, 0) || bounds.greatest > nCell_ ||
          bounds.greatest - complete > ring_.capacity())
        return false;
      LeaveUntil(complete);
      EnterUntil(bounds.greatest);
      if (!bounds.allTwoSided) {
        for (int f = first; f <= last; ++f) records_.Add(inner_, f, faceValue_);
      } else if (ring_.IsIrregular(range)) {
        records_.template AddRange<true>(inner_, first, last, faceValue_);
      } else {
        records_.template AddRange<false>(inner_, first, last, faceValue_);
      }
    }
    LeaveUntil(nCell_);
    return true;
  }

 private:
  struct FaceBounds {
    int least, greatest;  ///< numbers of cells
    bool allTwoSided;
  };

  ZYN_INLINE_AVX2 static FaceBounds BoundsOf(FaceGroup const& group, int first, int last) {
    int least = group.cv[first], greatest = least, exceptions = 0;
    for (int f = first; f <= last; ++f) {
      int const cv = group.cv[f], other = group.other[f];
      int const lower = cv < other ? cv : other, higher = cv < other ? other : cv;
      least = lower < least ? lower : least;
      greatest = higher > greatest ? higher : greatest;
      exceptions |= static_cast<int>(group.type[f] == 1) | static_cast<int>(cv == other);
    }
    return {least, greatest, exceptions == 0};
  }

  ZYN_INLINE_AVX2 void EnterUntil(int cell) {
    for (; entered_ < cell; ++entered_) records_.Enter(entered_ + 1, slots_.Of(entered_ + 1));
  }

  ZYN_INLINE_AVX2 void LeaveUntil(int cell) {
    while (left_ < cell) {
      int const next = left_ + 1;
      if (next % 4 == 0 && next + 3 <= cell) {
        EnterUntil(next + 3);  // cells that no inner face touches
        records_.LeaveFour(next, slots_.Of(next));
        left_ += 4;
      } else {
        EnterUntil(next);
        records_.Leave(next, slots_.Of(next));
        ++left_;
      }
    }
  }

  FaceGroup const inner_;
  int const nCell_;
  FaceRing const& ring_;
  Slots const slots_;
  Records const records_;
  FaceValue const faceValue_;
  int entered_ = 0, left_ = 0;
};

}  // namespace ring_walk

#endif
