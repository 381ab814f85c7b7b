#pragma once

#include <vector>

#include "foundation/FaceGroups.h"

/// @file
/// What the connectivity of a mesh says about a walk over its faces: when a cell is first reached, and when its sums are
/// complete.
///
/// The walk takes the inner faces by ascending number, in ranges. A cell is complete after the last range with a face of
/// it, and after its other faces, which follow the inner ones in every sum: the walk adds those when it leaves the cell.
/// On a mesh whose numbering has a small bandwidth, few cells are under way at a time, and all of these fit into a cache.

struct WalkSchedule {
  /// Inner faces in a range.
  static constexpr int kRange = 256;
  /// Cells are entered and left in groups c..c+3 with c a multiple of this, but for the first and the last.
  static constexpr int kGroup = 4;

  /// What surrounds the faces of a range.
  struct Range {
    int entered;  ///< the cells up to this one are entered before the range
    int done;     ///< the cells up to this one are left after it
  };
  /// A partition or boundary face.
  struct OuterFace {
    int cv, other;
  };

  WalkSchedule() = default;
  /// For sums in the order of least squares, which leaves symmetry faces out.
  explicit WalkSchedule(CZYN3DFiniteVolumeMesh const& mesh, FaceGroups const& faces);

  /// Whether a mesh has as many cells and faces of each group as the one that the schedule is for.
  bool Fits(CZYN3DFiniteVolumeMesh const& mesh, FaceGroups const& faces) const;

  std::vector<Range> ranges;
  std::vector<OuterFace> outerFaces;  ///< by ascending `cv`, those of a cell in the order of the sums
  int nCells = 0;     ///< the walk enters and leaves 1..nCells; no sum of a later cell changes
  int nUnderWay = 0;  ///< the largest number of cells that have been entered and not left

 private:
  struct Counts {
    int cells = 0, innerCells = 0;
    std::array<int, kFaceKinds> faces = {};
  };
  static Counts CountsOf(CZYN3DFiniteVolumeMesh const& mesh, FaceGroups const& faces);
  void ListOuterFaces(FaceGroups const& faces);
  void ListRanges(FaceGroup const& inner);

  Counts counts_;
};
