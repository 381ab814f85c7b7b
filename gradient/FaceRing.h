#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "foundation/FaceGroups.h"

/// A window of cells that moves over the mesh while a walk over the inner faces goes on, and the memory for their records.
///
/// A record has everything about a cell that the walk reads and adds to, side by side: a face then needs one or two cache
/// lines of each of its cells, and whole registers. A cell enters the window with the first face that touches it and
/// leaves with the last one, when its sum is complete. So its result is written once, and nothing is cleared or scaled in
/// passes of their own.
///
/// That pays where neighbours have neighbouring numbers. Prepare looks at the numbers; meshes whose window would not
/// stay in cache are walked without.
class FaceRing {
 public:
  /// Faces are taken in ranges; cells enter and leave between them.
  static constexpr int kRange = 256;

  /// Finds out which cells are complete before which range, and provides the memory.
  /// @param inner  the inner faces, of which `cv` and `other` are read; arrays may be null
  /// @param nCell  interior cells
  void Prepare(FaceGroup const& inner, int nCell);

  void Release();

  /// Small meshes are in cache as they are: one field is faster on them without a ring.
  bool IsSmall() const { return nCell_ < leastCells_; }
  /// For tests.
  void TakeNoMeshForSmall() { leastCells_ = 0; }

  /// Whether these faces, of so many interior cells, can be walked with records of so many doubles: 4, 12 or 16.
  bool Fits(FaceGroup const& inner, int nCell, int recordDoubles) const {
    return nRange_ > 0 && inner.count == nFace_ && nCell == nCell_ &&
           static_cast<std::size_t>(capacity_) * static_cast<std::size_t>(recordDoubles) <= kMostDoubles;
  }

  /// What Prepare found no longer holds: walks go on without the ring, until Prepare is called again.
  void Abandon() { nRange_ = 0; }

  /// A number that no face of this range or a later one is below in either of its cells. Kept from Prepare, so a walk has
  /// to see whether it still holds.
  int CompleteBelow(int range) const { return completeBelow_[range]; }

  /// Whether the numbers of faces that follow each other with the same `cv` follow no pattern in this range.
  bool IsIrregular(int range) const { return isIrregular_[range]; }

  /// Number of records, a power of two.
  int capacity() const { return capacity_; }
  /// Room for `capacity` records, at the start of a cache line.
  double* records() const { return records_; }

  /// Forgets which cells are marked.
  void ClearMarks();
  /// Marks a cell, if it is an interior one: further faces will be added to it after the walk.
  void Mark(int cell) {
    if (cell >= 1 && cell <= nCell_) marks_[cell >> 6] |= std::uint64_t{1} << (cell & 63);
  }
  /// The marks of the cells c to c + 3 in the lowest bits. @pre c is a multiple of 4
  unsigned FourMarks(int c) const { return static_cast<unsigned>(marks_[c >> 6] >> (c & 63)) & 15U; }
  bool IsMarked(int c) const { return (marks_[c >> 6] >> (c & 63) & 1U) != 0; }

  template <class Visit>
  void ForEachMarked(Visit const& visit) const {
    for (int word = 0; word < MarkWords(); ++word)
      for (std::uint64_t bits = marks_[word]; bits != 0; bits &= bits - 1)
        visit(word * 64 + __builtin_ctzll(bits));
  }

 private:
  static constexpr int kTogether = 4;  ///< cells that leave together
  int MarkWords() const { return (nCell_ >> 6) + 1; }

  /// 8 MB of records. With 4 MB, those of eight million cells, three fields take two fifths of the time without.
  static constexpr std::size_t kMostDoubles = std::size_t{1} << 20;
  static constexpr std::size_t kGreatestCapacity = std::size_t{1} << 16;
  static constexpr int kGreatestRecord = 16;

  int nFace_ = 0, nCell_ = 0;
  int nRange_ = 0;  ///< 0: nothing is prepared
  int capacity_ = 0;
  int leastCells_ = 4096;                   ///< measured on hexahedra
  std::unique_ptr<int[]> completeBelow_;    ///< [0..nRange_-1]
  std::unique_ptr<bool[]> isIrregular_;     ///< [0..nRange_-1]
  std::unique_ptr<std::uint64_t[]> marks_;  ///< [0..MarkWords()-1] a bit a cell, from cell 0
  std::unique_ptr<double[]> memory_;
  double* records_ = nullptr;  ///< in memory_
};
