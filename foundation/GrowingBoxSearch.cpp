#include "foundation/GrowingBoxSearch.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "host/ZYNOptKer.h"

namespace {

// A point this many steps away from its neighbours is far outside the mesh. From here on the growth leaps.
constexpr int kStepsOneByOne = 1000;

constexpr double kEntryHalfWidth = 1e-6;  // L; of the boxes that the operators make of points

}  // namespace

GrowingBoxSearch::Answer GrowingBoxSearch::AtLeast(int wanted, double x, double y, double z) const {
  bool const grows = step_ > 0.0 && std::isfinite(x) && std::isfinite(y) && std::isfinite(z);
  if (!grows) {
    Answer const answer = Search(step_, x, y, z);
    return answer.count >= wanted ? answer : SearchEverything(x, y, z);
  }
  if (nEntry_ != kUnknown) return Grow(std::min(wanted, nEntry_), x, y, z);
  Answer const answer = Grow(wanted, x, y, z);
  // If the growth ended at the bounds, the search for all entries has overwritten the answer in the tree: search
  // again.
  return answer.count >= wanted ? answer : Search(answer.halfWidth, x, y, z);
}

GrowingBoxSearch::Answer GrowingBoxSearch::Grow(int wanted, double x, double y, double z) const {
  for (int k = 1; k <= kStepsOneByOne; ++k) {
    Answer const answer = Search(k * step_, x, y, z);
    if (IsEnough(answer, wanted, x, y, z)) return answer;
  }
  return LeapTo(kStepsOneByOne, wanted, x, y, z);
}

// The same cube as step by step. A larger cube never holds less, so doubling the number of steps and then halving the
// interval finds the first that is large enough.
GrowingBoxSearch::Answer GrowingBoxSearch::LeapTo(double farthestTooSmall, int wanted, double x, double y,
                                                  double z) const {
  double tooSmall = farthestTooSmall;
  double enough = 2.0 * tooSmall;
  while (!IsEnough(Search(enough * step_, x, y, z), wanted, x, y, z)) {
    tooSmall = enough;
    enough *= 2.0;
  }
  for (double middle = std::floor(0.5 * (tooSmall + enough)); tooSmall < middle && middle < enough;
       middle = std::floor(0.5 * (tooSmall + enough))) {
    bool const isEnough = IsEnough(Search(middle * step_, x, y, z), wanted, x, y, z);
    (isEnough ? enough : tooSmall) = middle;
  }
  return Search(enough * step_, x, y, z);
}

bool GrowingBoxSearch::IsEnough(Answer const& answer, int wanted, double x, double y, double z) const {
  double const d = answer.halfWidth;
  if (answer.count >= wanted) return true;
  if (nEntry_ != kUnknown) return Covers(d, x, y, z);
  // Because of rounding, a cube may meet the boxes of all points without covering the points.
  if (!Covers(d + kEntryHalfWidth, x, y, z)) return false;
  int const nAll = SearchEverything(x, y, z).count;
  return nAll < wanted && (answer.count == nAll || Covers(d, x, y, z));
}

bool GrowingBoxSearch::Covers(double d, double x, double y, double z) const {
  return x - d <= entries_.xmin && y - d <= entries_.ymin && z - d <= entries_.zmin &&
         x + d >= entries_.xmax && y + d >= entries_.ymax && z + d >= entries_.zmax;
}

GrowingBoxSearch::Answer GrowingBoxSearch::Search(double d, double x, double y, double z) const {
  Answer answer = {nullptr, 0, d};
  answer.ids = tree_.SearchNearBlockID(x - d, y - d, z - d, x + d, y + d, z + d, answer.count, 0);
  return answer;
}

GrowingBoxSearch::Answer GrowingBoxSearch::SearchEverything(double x, double y, double z) const {
  constexpr double kAll = std::numeric_limits<double>::max();
  Answer answer = {nullptr, 0, 0.0};
  answer.ids = tree_.SearchNearBlockID(-kAll, -kAll, -kAll, kAll, kAll, kAll, answer.count, 0);
  answer.halfWidth = std::max({x - entries_.xmin, y - entries_.ymin, z - entries_.zmin, entries_.xmax - x,
                               entries_.ymax - y, entries_.zmax - z});
  return answer;
}
