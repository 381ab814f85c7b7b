#pragma once

#include "foundation/BoundingBox.h"

class CZYNOptKer;

/// Searches for at least a wanted number of neighbours of a point: a cube around it grows step by step until the tree
/// finds enough entries in it.
///
/// The growth always ends. The first cube that holds all entries is the answer, however few they are, since no larger
/// cube holds more. If entries are missing from the tree, the first cube that covers the bounds is the answer. If the
/// first cube holds too few and the step makes nothing grow (zero, negative, not a number), one search covers
/// everything.
class GrowingBoxSearch {
 public:
  /// In a tree of `nEntry` entries whose points have the bounds `entries`.
  /// @param tree  must outlive this
  /// @param step  L, by which the half-width grows
  GrowingBoxSearch(CZYNOptKer& tree, BoundingBox const& entries, int nEntry, double step)
      : tree_(tree), entries_(entries), nEntry_(nEntry), step_(step) {}

  /// In a tree of unknown content: before the growth ends at the bounds, the tree is asked for all of its entries.
  /// @param estimate  bounds that the entries' points may exceed
  GrowingBoxSearch(CZYNOptKer& tree, BoundingBox const& estimate, double step)
      : GrowingBoxSearch(tree, estimate, kUnknown, step) {}

  struct Answer {
    int const* ids;    ///< [0..count-1], owned by the tree and valid until its next search
    int count;         ///< at least the wanted number, unless there are fewer entries
    double halfWidth;  ///< k * step, L; of the search for everything: the distance to the farthest bound
  };

  /// Entries in the first of the cubes around (x, y, z), with half-widths step, 2 step, 3 step..., that holds at
  /// least `wanted` of them. There is always at least one search.
  Answer AtLeast(int wanted, double x, double y, double z) const;

 private:
  static constexpr int kUnknown = -1;

  Answer Grow(int wanted, double x, double y, double z) const;
  Answer Search(double halfWidth, double x, double y, double z) const;
  Answer SearchEverything(double x, double y, double z) const;
  Answer LeapTo(double farthestTooSmall, int wanted, double x, double y, double z) const;
  bool IsEnough(Answer const& answer, int wanted, double x, double y, double z) const;
  bool Covers(double halfWidth, double x, double y, double z) const;

  CZYNOptKer& tree_;
  BoundingBox entries_;
  int nEntry_;
  double step_;
};
