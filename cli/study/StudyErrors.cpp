#include "cli/study/StudyErrors.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

namespace zyngrad {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

/// Sums over one region, which ranks can exchange as a row.
struct Sums {
  double count = 0.0, weight = 0.0, error = 0.0, error2 = 0.0, nNotFinite = 0.0, max = -1.0;

  void Add(StudyError const& e) {
    count += 1.0;
    weight += e.weight;
    error += e.weight * e.error;
    error2 += e.weight * e.error * e.error;
    if (std::isfinite(e.error))
      max = std::max(max, e.error);
    else
      nNotFinite += 1.0;
  }

  StudyNorms OfAll(Ranks const& ranks) const {
    Sums all;
    for (auto const& row : ranks.Gather({count, weight, error, error2, nNotFinite, max})) {
      all.count += row[0];
      all.weight += row[1];
      all.error += row[2];
      all.error2 += row[3];
      all.nNotFinite += row[4];
      all.max = std::max(all.max, row[5]);
    }
    StudyNorms norms;
    norms.count = static_cast<std::int64_t>(all.count);
    norms.l1 = all.count > 0.0 ? all.error / all.weight : kNaN;
    norms.l2 = all.count > 0.0 ? std::sqrt(all.error2 / all.weight) : kNaN;
    norms.max = all.max >= 0.0 ? all.max : kNaN;
    norms.nNotFinite = static_cast<std::int64_t>(all.nNotFinite);
    return norms;
  }
};

}  // namespace

void ErrorHistogram::Add(double error) {
  if (!std::isfinite(error)) return;
  double const place = error > 0.0 ? (std::log10(error) - kLowest) * kPerDecade : 0.0;
  ++count[static_cast<std::size_t>(std::clamp(place, 0.0, kBins - 1.0))];
}

double ErrorHistogram::LowerEnd(int bin) {
  return std::pow(10.0, kLowest + static_cast<double>(bin) / kPerDecade);
}

StudyErrors SummariseStudyErrors(Ranks const& ranks, std::vector<StudyError> const& own) {
  Sums interior, boundary;
  ErrorHistogram histogram;
  for (StudyError const& e : own) {
    (e.boundary ? boundary : interior).Add(e);
    histogram.Add(e.error);
  }
  StudyErrors errors;
  errors.interior = interior.OfAll(ranks);
  errors.boundary = boundary.OfAll(ranks);
  std::vector<double> const counts(histogram.count.begin(), histogram.count.end());
  for (std::vector<double> const& row : ranks.Gather(counts)) {
    for (std::size_t bin = 0; bin < row.size(); ++bin)
      errors.histogram.count[bin] += static_cast<std::int64_t>(row[bin]);
  }
  return errors;
}

double ObservedOrder(double coarseError, double fineError, double coarseSpacing, double fineSpacing) {
  for (double const number : {coarseError, fineError, coarseSpacing, fineSpacing})
    if (!(number > 0.0) || !std::isfinite(number)) return kNaN;
  if (coarseSpacing == fineSpacing) return kNaN;
  return std::log(coarseError / fineError) / std::log(coarseSpacing / fineSpacing);
}

}  // namespace zyngrad
