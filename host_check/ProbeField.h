#pragma once

#include <cstdint>
#include <cstring>
#include <vector>

#include "host_check/HostView.h"

namespace host_check {

/// A cell array of the checker's own for an exchange: values in the interior cells, and a marker everywhere
/// else, also before and after the array.
class ProbeField {
 public:
  /// No exchange of the values used here produces this value.
  static constexpr double kMarker = -7.25e+77;

  /// @param valueOf  double(int cell), for the interior cells
  template <class ValueOf>
  ProbeField(HostView const& view, ValueOf const& valueOf)
      : view_(view), values_(static_cast<std::size_t>(view.nCell) + 1 + 2 * kGuard, kMarker) {
    for (int c = 1; c <= view.nInner; ++c) (*this)[c] = valueOf(c);
    original_.assign(values_.begin() + kGuard, values_.begin() + kGuard + view.nInner + 1);
  }

  double* Data() { return values_.data() + kGuard; }  ///< [1..NCell]
  double& operator[](int c) {
    return values_[static_cast<std::size_t>(c) + static_cast<std::size_t>(kGuard)];
  }
  double operator[](int c) const {
    return values_[static_cast<std::size_t>(c) + static_cast<std::size_t>(kGuard)];
  }
  bool IsFilled(int c) const { return (*this)[c] != kMarker; }

  /// Calls tell(cell) for each interior cell whose value has changed in any bit.
  template <class Tell>
  void ForEachChangedInterior(Tell const& tell) const {
    for (int c = 1; c <= view_.nInner; ++c) {
      if (!SameBits((*this)[c], original_[static_cast<std::size_t>(c)])) tell(c);
    }
  }

  /// Calls tell(cell) for each ghost cell of a boundary face that has been written to.
  template <class Tell>
  void ForEachChangedGhost(Tell const& tell) const {
    for (int c = view_.nInner + 1; c <= view_.nCell; ++c) {
      int const g = view_.namer[c].group;
      if (g >= 0 && view_.groups[g].LeadsToGhosts() && IsFilled(c)) tell(c);
    }
  }

  /// Calls tell(element) for each element outside 1..NCell that has been written to.
  template <class Tell>
  void ForEachChangedOutside(Tell const& tell) const {
    for (int i = -kGuard; i <= 0; ++i)
      if (IsFilled(i)) tell(i);
    for (int i = view_.nCell + 1; i <= view_.nCell + kGuard; ++i)
      if (IsFilled(i)) tell(i);
  }

  static bool SameBits(double a, double b) {
    std::uint64_t bitsOfA = 0, bitsOfB = 0;
    std::memcpy(&bitsOfA, &a, sizeof a);
    std::memcpy(&bitsOfB, &b, sizeof b);
    return bitsOfA == bitsOfB;
  }

 private:
  static constexpr int kGuard = 64;

  HostView const& view_;
  std::vector<double> values_;    // [-kGuard..nCell+kGuard] of the field
  std::vector<double> original_;  // [1..nInner]
};

}  // namespace host_check
