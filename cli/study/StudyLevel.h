#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "cli/study/StudyCondition.h"
#include "cli/study/StudyErrors.h"

namespace zyngrad {

/// What one case gave for one field on one mesh.
struct StudyResult {
  std::size_t iCase = 0, iField = 0;
  char const* quantity = "";         ///< kGradient, kFaceValue, kPointValue or kPointGradient
  std::string notRun;                ///< why the method could not be called; the rest is then empty
  std::vector<std::string> remarks;  ///< what a user should know about the result, a line each
  std::string whyNotFinite;          ///< set if some of it is not finite
  StudyErrors errors;
  /// Set-up per cell, face or point, us, on the slowest rank; NaN: too short for the clock.
  double usSetUp = 0.0;
  double nsApply = 0.0;  ///< application, ns, otherwise the same
  StudyCondition condition;

  /// Number of errors that are infinite or NaN.
  std::int64_t NotFinite() const { return errors.interior.nNotFinite + errors.boundary.nNotFinite; }
};

/// `perItem` if the clock can tell the time from which it comes, NaN if that is shorter than ShortestTime.
/// @param[in] seconds  what was measured, of all cells, faces or points
double AboveTheNoise(double seconds, double perItem);

/// The results on one mesh.
struct StudyLevel {
  std::string mesh;
  std::int64_t nCells = 0;
  double spacing = 0.0;  ///< cube root of the mean volume of a cell, L
  std::vector<StudyResult> results;
};

/// Sorts the levels from coarse to fine by their spacing; levels with the same spacing keep their order.
/// @return whether that changed the order
bool SortCoarseToFine(std::vector<StudyLevel>& levels);

/// Whether a method could not be called on some level or gave results that are not finite.
bool AnyFaults(std::vector<StudyLevel> const& levels);

}  // namespace zyngrad
