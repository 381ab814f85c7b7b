#pragma once

#include <array>
#include <cstddef>
#include <memory>

#include "gradient/WalkSchedule.h"

/// @file
/// The right-hand sides of least squares in one walk over the faces, with four lanes of AVX2. Each sum takes the same
/// products in the same order as in a walk over one group of faces after the other, so the stored numbers are the same.
///
/// The cells that are under way have records in a ring: cell c has the record c modulo its size. A record holds what the
/// faces of the cell read and what they add to, side by side: a face reads and writes two records, where it would read
/// and write two places in each of seven arrays (fifteen for three fields).

/// What the walks of a mesh keep from call to call: their schedule and the ring.
class RightHandSidePlan {
 public:
  RightHandSidePlan(CZYN3DFiniteVolumeMesh const& mesh, FaceGroups const& faces);

  /// Whether the processor can take the walk, the ring is a small one, and the mesh has not changed.
  bool Serves(CZYN3DFiniteVolumeMesh const& mesh, FaceGroups const& faces) const;

  WalkSchedule const& schedule() const { return schedule_; }
  /// Records of kRecord doubles each, for the cells 0..mask of the ring.
  double* records() const { return records_; }
  std::size_t mask() const { return nRecords_ - 1; }

 private:
  WalkSchedule schedule_;
  std::size_t nRecords_ = 0;  ///< a power of two; 0: the bandwidth of the numbering is too large for a ring
  std::unique_ptr<double[]> memory_;
  double* records_ = nullptr;  ///< in memory_, at the beginning of a cache line
};

/// One walk, for one field or for three. It stops whenever cells are complete, so that the caller solves their systems
/// while they are in cache:
///
///   while (walk.Next()) solve the systems of the cells walk.first() .. walk.last()
///
/// The cells follow each other from 1 to schedule().nCells.
template <int kFields>
class RightHandSideWalk {
 public:
  /// [1..NCell] of each field
  using Fields = std::array<double const*, kFields>;
  /// [1..NCell] of the right-hand sides: x, y, z of the first field, then of the others
  using Sums = std::array<double*, 3 * kFields>;
  /// Arrays that the caller reads for complete cells: they are asked for ahead.
  using ReadBeside = std::array<double const*, 6>;

  /// @param b  overwritten for the cells 1..schedule().nCells
  /// @pre plan.Serves(mesh, faces). What is passed outlives the walk.
  RightHandSideWalk(RightHandSidePlan const& plan, CZYN3DFiniteVolumeMesh const& mesh, FaceGroup const& inner,
                    Fields const& phi, Sums const& b, ReadBeside const& readBeside);

  /// Walks on until further cells are complete, and stores their right-hand sides. @return false after the last cell
  bool Next();
  int first() const { return first_; }
  int last() const { return last_; }

 private:
  void Enter(int last);
  void AddRange(int first, int last, WalkSchedule::Range const& range);
  void Leave(int last);

  WalkSchedule const& schedule_;
  double const *xc_, *yc_, *zc_;
  FaceGroup inner_;
  Fields phi_;
  Sums b_;
  ReadBeside readBeside_;
  double* records_;
  std::size_t mask_;
  bool isLarge_;  ///< whether the arrays of the mesh are in memory rather than in cache

  std::size_t range_ = 0;      ///< the next range of faces
  std::size_t outerFace_ = 0;  ///< the next outer face
  int entered_ = 0;
  int first_ = 1, last_ = 0;  ///< what has been left last
};
