#pragma once

#include "foundation/BoundingBox.h"

class CZYNOptKer;

/// The search for at least so many neighbours of a point: a cube around it that grows by one step at a time
/// until the tree finds enough entries in it.
///
/// The growth always ends. Once the cube covers the bounds of all entries, more growth finds nothing more, and
/// what it holds is the answer, however little. If the first cube holds too little and the step makes nothing grow
/// (zero, negative, not a number), one search covers everything.
class GrowingBoxSearch {
 public:
  enum class Bounds {
    Exact,
    Estimate,  ///< the tree may hold entries beyond: before the growth ends it is asked for all of them
  };

  /// @param tree     must outlive this
  /// @param entries  bounds of the points in the tree
  /// @param step     L, by which the half-width grows
  GrowingBoxSearch(CZYNOptKer& tree, BoundingBox const& entries, double step, Bounds bounds = Bounds::Exact)
      : tree_(tree), entries_(entries), step_(step), bounds_(bounds) {}

  struct Answer {
    int const* ids;    ///< [0..count-1], owned by the tree and valid until its next search
    int count;         ///< at least what was wanted, unless all entries are fewer
    double halfWidth;  ///< k * step, L; of the search that covers everything: as far as the farthest bound
  };

  /// Entries in the first of the cubes around (x, y, z) with the half-widths step, 2 step, 3 step... that holds
  /// at least `wanted` of them; there is always one search.
  Answer AtLeast(int wanted, double x, double y, double z) const;

 private:
  Answer Search(double halfWidth, double x, double y, double z) const;
  Answer SearchEverything(double x, double y, double z) const;
  Answer LeapTo(double farthestTooSmall, int wanted, double x, double y, double z) const;
  bool IsEnough(Answer const& answer, int wanted, double x, double y, double z) const;
  bool TreeHolds(int wanted, double x, double y, double z) const;
  bool Covers(double halfWidth, double x, double y, double z) const;

  CZYNOptKer& tree_;
  BoundingBox entries_;
  double step_;
  Bounds bounds_;
};
