#pragma once

#include <memory>

/// A search tree of axis-aligned boxes, each with an integer identity. Solvers usually bring an alternating
/// digital tree; any structure that answers the same query will do.
///
/// The operators construct the tree, set its range, add boxes, search and destroy it. A copy shares the tree
/// with its source, boxes and last answer included. Both may be destroyed, in any order. @cite bonet1991
///
/// The tree of the reference host answers in ascending order, so that its structure shows in no result: the operators keep
/// the order of the answer among equally distant members of a stencil. A box or a query with a NaN, or with a low corner
/// above its high corner, contains no point and meets nothing there.
class CZYNOptKer {
 public:
  CZYNOptKer();
  CZYNOptKer(CZYNOptKer const&) = default;
  CZYNOptKer& operator=(CZYNOptKer const&) = default;
  ~CZYNOptKer();

  /// Sets the root box, before the first box is added. High corner first, then the low corner, L. The three
  /// integers are tuning values of the structure; the operators always pass 1, 10000 and 200000. The result
  /// is ignored.
  int SetADTreeRange(double xmax, double ymax, double zmax, double xmin, double ymin, double zmin, int, int,
                     int);

  /// Adds a box with the caller's number `id`. High corner first, then the low corner, L. Several boxes may
  /// have the same number, and a box may lie outside the range. The result is ignored.
  int AddSurfaceToADTree(int id, double xhigh, double yhigh, double zhigh, double xlow, double ylow,
                         double zlow);

  /// The numbers of all boxes that intersect the query box, touching included, in any order. A number is there once for each of its
  /// boxes.
  ///
  /// LOW corner first, then the high corner: the opposite of AddSurfaceToADTree.
  /// @param[out] count  number of identities; 0: no box intersects the query
  /// @return array [0..count-1], owned by the tree and valid until its next search (through any copy)
  int const* SearchNearBlockID(double xlow, double ylow, double zlow, double xhigh, double yhigh,
                               double zhigh, int& count, int);

 private:
  struct Tree;
  std::shared_ptr<Tree> tree_;
};
