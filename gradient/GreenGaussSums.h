#pragma once

#include "foundation/FaceGroups.h"
#include "foundation/Processor.h"
#include "gradient/CellSums.h"
#include "gradient/FaceRing.h"
#include "gradient/FaceWalk.h"
#include "gradient/GreenGauss.h"
#include "gradient/RingRecords.h"

namespace green_gauss {

/// The sums of the Green-Gauss gradients with guarded volumes:
///
///   g_c = 1/(V_c + kTiny) * sum over the faces f of c of phi_f S_f,    S_f pointing out of c
///
/// added in the order inner faces, partition faces, boundary faces. Where a ring fits, it takes the inner faces and stores
/// the results of cells without other faces at once.
class Sums {
 public:
  Sums(CZYN3DFiniteVolumeMesh const& mesh, FaceGroups const& faces, FaceRing& ring)
      : mesh_(mesh), faces_(faces), ring_(ring) {}

  /// @param faceValue  phi_f between two cells
  /// @param phi        phi_f on the boundary, in the ghost cell
  /// @param results    [1..NCell] each: g in interior cells, bare sums beyond them
  template <class Flux, class FaceValue, class Field>
  void Store(FaceValue const& faceValue, Field const& phi, typename Flux::Arrays const& results) const {
    auto const [inner, partition] = faces_.BetweenCells();
    auto const boundary = faces_.OnBoundaryInGreenGaussOrder();
    face_walk::CellSums<Flux> g(results, mesh_.NCell);

    // g_cv += phi_f S,  g_other -= phi_f S
    bool const scaledByRing = StoreInner(inner, partition, boundary, faceValue, results);
    if (scaledByRing)
      g.TakeAsReached(mesh_.NInnerCells);
    else
      AddFluxes(inner, faceValue, g);
    AddFluxes(partition, faceValue, g);
    // g_cv += phi_ghost S
    for (FaceGroup const& group : boundary) AddBoundaryFluxes(group, phi, g);
    // g_c *= 1/V
    auto const divide = [&](int c) { g.Multiply(c, 1.0 / (mesh_.Volume[c] + kTiny)); };
    if (scaledByRing) {
      ring_.ForEachMarked(divide);
    } else {
      for (int c = 1; c <= mesh_.NInnerCells; ++c) divide(c);
    }
  }

 private:
  /// @return whether the sums over the inner faces are in the results, multiplied already in cells that have no other face
  template <class FaceValue, class Boundary, class Arrays>
  bool StoreInner([[maybe_unused]] FaceGroup const& inner, [[maybe_unused]] FaceGroup const& partition,
                  [[maybe_unused]] Boundary const& boundary, [[maybe_unused]] FaceValue const& faceValue,
                  [[maybe_unused]] Arrays const& results) const {
#if ZYN_HAS_TARGETS
    using Records = typename FaceValue::Records;
    if (!processor::HasAvx2() || !ring_.Fits(inner, mesh_.NInnerCells, Records::kDoubles)) return false;
    if (ring_.IsSmall() && !Records::kPaysOnSmallMeshes) return false;
    ring_.ClearMarks();
    for (int f = 1; f <= partition.count; ++f) ring_.Mark(partition.cv[f]), ring_.Mark(partition.other[f]);
    for (FaceGroup const& group : boundary)
      for (int f = 1; f <= group.count; ++f) ring_.Mark(group.cv[f]);
    Records const records(ring_, faceValue, mesh_.Volume, results);
    if (ring_walk::RingWalk(inner, mesh_.NInnerCells, ring_, records, faceValue).Run()) return true;
    ring_.Abandon();
#endif
    return false;
  }

  CZYN3DFiniteVolumeMesh const& mesh_;
  FaceGroups const& faces_;
  FaceRing& ring_;
};

}  // namespace green_gauss
