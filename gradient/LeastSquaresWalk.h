#pragma once

#include <array>
#include <cstddef>
#include <memory>

#include "gradient/NormalEquations.h"
#include "gradient/WalkSchedule.h"

/// @file
/// Least squares in one walk over the faces, with four lanes of AVX2: right-hand sides are gathered, and the system of a
/// cell is solved when its last face has passed. Each sum takes the same products in the same order as in a walk over one
/// group of faces after the other, so the stored numbers are the same.
///
/// The cells that are under way have records in a ring: cell c has the record c modulo its size. A record holds what the
/// faces of the cell read and what they add to, side by side: a face reads and writes two records, where it would read
/// and write two places in each of seven arrays (fifteen for three fields).

/// What the walks of a mesh keep from call to call: their schedule and the ring.
class LeastSquaresPlan {
 public:
  LeastSquaresPlan(CZYN3DFiniteVolumeMesh const& mesh, FaceGroups const& faces);

  /// Whether the processor can take the walk, the ring is a small one, and the mesh has not changed.
  bool Serves(CZYN3DFiniteVolumeMesh const& mesh, FaceGroups const& faces) const;

  WalkSchedule const& schedule() const { return schedule_; }
  /// Records of kRecord doubles each, for the cells 0..mask of the ring.
  double* records() const { return records_; }
  unsigned mask() const { return static_cast<unsigned>(nRecords_) - 1; }

 private:
  WalkSchedule schedule_;
  std::size_t nRecords_ = 0;  ///< a power of two; 0: the bandwidth of the numbering is too large for a ring
  std::unique_ptr<double[]> memory_;
  double* records_ = nullptr;  ///< in memory_, at the beginning of a cache line
};

/// One walk, for one field or for three, over the cells 1..schedule().nCells.
///
/// With one field, the right-hand sides are stored beside the gradients. With three, they have no arrays of their own: the
/// arrays of right-hand sides and gradients are the same.
template <int FieldCount>
class LeastSquaresWalk {
 public:
  /// [1..NCell] of each field
  using Fields = std::array<double const*, FieldCount>;
  using Systems = normal_equations::Systems<FieldCount>;

  /// @pre plan.Serves(mesh, faces). What is passed outlives the walk.
  LeastSquaresWalk(LeastSquaresPlan const& plan, CZYN3DFiniteVolumeMesh const& mesh, FaceGroup const& inner,
                   Fields const& phi, Systems const& systems);

  /// Gathers all right-hand sides and solves the systems of interior cells by ascending number, until one has a zero pivot.
  /// @return the first cell whose system has not been solved
  int SolveAll();

 private:
  void Enter(int last);
  void AddRange(std::size_t range);
  void Leave(int last);

  WalkSchedule const& schedule_;
  CZYN3DFiniteVolumeMesh const& mesh_;
  FaceGroup inner_;
  Fields phi_;
  Systems systems_;
  double* records_;
  unsigned mask_;
  bool isLarge_;  ///< whether the arrays of the mesh are in memory rather than in cache

  std::size_t outerFace_ = 0;  ///< the next outer face
  int entered_ = 0;            ///< the last cell that has been entered
  int left_ = 0;               ///< the last cell that has been left
  int unsolved_ = 1;           ///< left_ + 1 as long as no pivot was zero
};
