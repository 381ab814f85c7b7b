#pragma once

#include "foundation/BoundingBox.h"

class CZYNOptKer;

/// The search for at least so many neighbours of a point: a cube around it that grows by one step at a time
/// until the tree finds enough entries in it.
///
/// The growth always ends. The first cube that holds all entries is the answer, however few they are: more growth
/// finds nothing more. Where entries are missing from the tree, it is the first cube that covers the bounds. If the
/// first cube holds too little and the step makes nothing grow (zero, negative, not a number), one search covers
/// everything.
class GrowingBoxSearch {
 public:
  /// In a tree of `nEntry` entries whose points have the bounds `entries`.
  /// @param tree  must outlive this
  /// @param step  L, by which the half-width grows
  GrowingBoxSearch(CZYNOptKer& tree, BoundingBox const& entries, int nEntry, double step)
      : tree_(tree), entries_(entries), nEntry_(nEntry), step_(step) {}

  /// In a tree whose content is not known here: before the growth ends at the bounds, the tree is asked for all of its
  /// entries.
  /// @param estimate  bounds that the entries' points may exceed
  GrowingBoxSearch(CZYNOptKer& tree, BoundingBox const& estimate, double step)
      : GrowingBoxSearch(tree, estimate, kUnknown, step) {}

  struct Answer {
    int const* ids;    ///< [0..count-1], owned by the tree and valid until its next search
    int count;         ///< at least what was wanted, unless all entries are fewer
    double halfWidth;  ///< k * step, L; of the search that covers everything: as far as the farthest bound
  };

  /// Entries in the first of the cubes around (x, y, z) with the half-widths step, 2 step, 3 step... that holds
  /// at least `wanted` of them; there is always one search.
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
