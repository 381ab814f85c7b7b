#include "cli/study/StudyLevel.h"

#include <algorithm>
#include <limits>

#include "cli/base/Timing.h"

namespace zyngrad {

double AboveTheNoise(double seconds, double perItem) {
  return seconds >= ShortestTime() ? perItem : std::numeric_limits<double>::quiet_NaN();
}

bool SortCoarseToFine(std::vector<StudyLevel>& levels) {
  auto const isCoarser = [](StudyLevel const& a, StudyLevel const& b) { return a.spacing > b.spacing; };
  if (std::is_sorted(levels.begin(), levels.end(), isCoarser)) return false;
  std::stable_sort(levels.begin(), levels.end(), isCoarser);
  return true;
}

bool AnyFaults(std::vector<StudyLevel> const& levels) {
  return std::any_of(levels.begin(), levels.end(), [](StudyLevel const& level) {
    return std::any_of(level.results.begin(), level.results.end(),
                       [](StudyResult const& r) { return !r.notRun.empty() || r.NotFinite() > 0; });
  });
}

}  // namespace zyngrad
