#include "cli/check/CheckFindings.h"

#include <algorithm>
#include <cstddef>

#include "gradient/GradientTypes.h"

namespace zyngrad {
namespace {

constexpr std::uint32_t kGeometryFindings =
    kIsAtBoundary | kIsBesideSymmetry | kHasNoVolume | kIsFlatCell | kIsSkew | kIsNonOrthogonal;

constexpr std::uint32_t kPivotFindings = kHasZeroPivot | kHasZeroLastPivot | kHasTinyPivot;

constexpr std::uint32_t kSystemFindings = kHasRepeatedMember | kHasCoincidentMembers | kHasFlatAxis |
                                          kHasFewMembers | kIsIllConditioned | kIsSingular |
                                          kHasSystemNotFinite | kHasRowNotFinite | kHasRowSumOff;

std::vector<FindingKind> MakeKinds() {
  // clang-format off
  std::vector<FindingKind> kinds = {
      {kIsAtBoundary, Severity::Note, "atBoundary", "at the boundary"},
      {kIsBesideSymmetry, Severity::Note, "besideSymmetry", "beside symmetry faces"},
      {kHasNoVolume, Severity::Wrong, "noVolume", "volume not positive"},
      {kIsFlatCell, Severity::Poor, "flatCell", "volume tiny for the surface area"},
      {kIsSkew, Severity::Poor, "skew", "extreme skewness"},
      {kIsNonOrthogonal, Severity::Poor, "nonOrthogonal", "extreme non-orthogonality"},
      {kHasZeroPivot, Severity::NotFinite, "zeroPivot", "least squares stops: zero pivot"},
      {kHasZeroLastPivot, Severity::NotFinite, "zeroLastPivot", "least squares divides by 0: zero last pivot"},
      {kHasTinyPivot, Severity::Wrong, "tinyPivot", "least squares: pivot is round-off"},
      {kHasMemberAtOrigin, Severity::Wrong, "memberAtOrigin", "members at the origin (symmetry)"},
      {kHasRepeatedMember, Severity::Poor, "repeatedMember", "a neighbour listed more than once"},
      {kHasCoincidentMembers, Severity::Wrong, "coincidentMembers", "members at the same position"},
      {kHasFlatAxis, Severity::Wrong, "flatAxis", "stencil flat along an axis"},
      {kHasFewMembers, Severity::Wrong, "fewMembers", "fewer than 3 neighbours"},
      {kIsIllConditioned, Severity::Poor, "illConditioned", "condition number above 1e12"},
      {kIsSingular, Severity::Wrong, "singular", "singular to working precision"},
      {kHasSystemNotFinite, Severity::Wrong, "systemNotFinite", "system not finite"},
      {kHasRowNotFinite, Severity::NotFinite, "rowNotFinite", "weights not finite"},
      {kHasRowSumOff, Severity::Wrong, "rowSumOff", "wrong sum of weights"},
      {kHasLargeWeights, Severity::Poor, "largeWeights", "weights amplify errors tenfold"},
  };
  // clang-format on
  for (std::size_t k = 0; k < GradientMethods().size(); ++k) {
    std::string const name = GradientMethods()[k].name;
    kinds.push_back(
        {GradientNotFinite(k), Severity::NotFinite, name + "NotFinite", "gradient not finite: " + name});
  }
  return kinds;
}

}  // namespace

std::string NameOf(Severity severity) {
  switch (severity) {
    case Severity::Note:
      return "note";
    case Severity::Poor:
      return "poor";
    case Severity::Wrong:
      return "wrong";
    case Severity::NotFinite:
      return "not finite";
  }
  return {};
}

std::vector<FindingKind> const& FindingKinds() {
  static std::vector<FindingKind> const kinds = MakeKinds();
  return kinds;
}

Severity SeverityOf(std::uint32_t findings) {
  Severity gravest = Severity::Note;
  for (FindingKind const& kind : FindingKinds())
    if ((findings & kind.finding) != 0) gravest = std::max(gravest, kind.severity);
  return gravest;
}

std::string InWords(std::uint32_t findings) {
  std::string words;
  for (Severity const severity : {Severity::NotFinite, Severity::Wrong, Severity::Poor}) {
    for (FindingKind const& kind : FindingKinds()) {
      if (kind.severity != severity || (findings & kind.finding) == 0) continue;
      words += (words.empty() ? "" : "; ") + kind.text;
    }
  }
  return words;
}

std::uint32_t CellFindings(std::vector<GradientMethod const*> const& methods) {
  std::uint32_t findings = kGeometryFindings;
  for (GradientMethod const* method : methods) {
    if (method->gradientType == kRadialBasisType) {
      findings |= kSystemFindings | kHasMemberAtOrigin;
      continue;
    }
    if (method->gradientType == kLeastSquaresType) findings |= kPivotFindings;
    findings |= GradientNotFinite(static_cast<std::size_t>(method - GradientMethods().data()));
  }
  return findings;
}

std::uint32_t InterpolationFindings() { return (kSystemFindings & ~kHasRepeatedMember) | kHasLargeWeights; }

}  // namespace zyngrad
