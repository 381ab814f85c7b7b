#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "cli/gradient/GradientMethods.h"

namespace zyngrad {

/// What the check can find at a cell, a face or a point, one bit each.
enum Finding : std::uint32_t {
  kIsAtBoundary = 1U << 0,
  kIsBesideSymmetry = 1U << 1,
  kHasNoVolume = 1U << 2,
  kIsFlatCell = 1U << 3,
  kIsSkew = 1U << 4,
  kIsNonOrthogonal = 1U << 5,
  kHasZeroPivot = 1U << 6,
  kHasZeroLastPivot = 1U << 7,
  kHasTinyPivot = 1U << 8,
  kHasMemberAtOrigin = 1U << 9,
  kHasRepeatedMember = 1U << 10,
  kHasCoincidentMembers = 1U << 11,
  kHasFlatAxis = 1U << 12,
  kHasFewMembers = 1U << 13,
  kIsIllConditioned = 1U << 14,
  kIsSingular = 1U << 15,
  kHasSystemNotFinite = 1U << 16,
  kHasRowNotFinite = 1U << 17,
  kHasRowSumOff = 1U << 18,
  kHasLargeWeights = 1U << 30,
};

/// The gradient of method number k of GradientMethods() is not finite.
constexpr std::uint32_t GradientNotFinite(std::size_t k) { return 1U << (19 + k); }

// The limits beyond which something is a finding. docs/use/check.md explains each finding.
constexpr double kFlatCell = 1e-6;                 ///< volume / (surface area)^1.5; 0.07 for a cube
constexpr double kExtremeSkewness = 1.0;           ///< as reference_host::QualitySums measures it
constexpr double kExtremeNonOrthogonality = 70.0;  ///< degrees
constexpr double kTinyPivot = 1e-12;               ///< relative to the moment from which it was eliminated
constexpr double kSamePlace = 1e-12;               ///< relative to the largest extent of the stencil
constexpr int kFewestNeighbours = 3;               ///< the number of components of a slope
constexpr double kPoorCondition = 1e12;            ///< leaves four correct digits
constexpr double kSingularCondition = 4.5e15;      ///< 1 / machine epsilon: leaves no correct digit
constexpr double kCellRowSumTolerance = 1e-6;      ///< for systems with a constant term; others: FaceErrors.h
constexpr double kLargeMagnitude =
    10.0;  ///< sum of the magnitudes of the weights of a value; the weights sum to 1

/// What a finding means for the result.
enum class Severity { Note, Poor, Wrong, NotFinite };

std::string NameOf(Severity severity);

struct FindingKind {
  std::uint32_t finding;
  Severity severity;
  std::string key;   ///< in check.json
  std::string text;  ///< in tables
};

/// All kinds, in the order of the tables; those of the gradient methods come last.
std::vector<FindingKind> const& FindingKinds();

/// The highest severity among the findings; Note if there is none.
Severity SeverityOf(std::uint32_t findings);

/// The findings that are more than notes, the most severe first: "weights not finite; members at the same
/// position". Empty if there are none.
std::string InWords(std::uint32_t findings);

// The findings that a check can produce, so that its table shows what was looked for.

/// For cells, depending on the gradient methods.
std::uint32_t CellFindings(std::vector<GradientMethod const*> const& methods);

/// For interpolation to faces or to points.
std::uint32_t InterpolationFindings();

}  // namespace zyngrad
