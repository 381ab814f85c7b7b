#include "cli/faces/FaceErrors.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <tuple>

namespace zyngrad {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

/// The face with the largest measure, first of one rank, then of all.
struct WorstFace {
  double measure = -1.0;  ///< negative: there is none yet
  double value = 0.0;     ///< what was measured
  FacePlace place;

  /// Among equal measures the lower cells win, so that the result depends on the number of ranks as little as possible.
  void Offer(double candidate, double candidateValue, FacePlace const& candidatePlace) {
    auto const order = [](FacePlace const& p) { return std::tie(p.cell, p.other, p.rank, p.face); };
    if (candidate < measure) return;
    if (candidate == measure && order(place) < order(candidatePlace)) return;
    measure = candidate;
    value = candidateValue;
    place = candidatePlace;
  }

  /// Collective. The worst of all ranks, on every rank.
  WorstFace OfAll(Ranks const& ranks) const {
    std::vector<double> const own = {measure,
                                     value,
                                     static_cast<double>(place.face),
                                     static_cast<double>(place.rank),
                                     static_cast<double>(place.cell),
                                     static_cast<double>(place.other),
                                     place.at[0],
                                     place.at[1],
                                     place.at[2]};
    WorstFace worst;
    for (std::vector<double> const& row : ranks.Gather(own)) {
      if (row[0] < 0.0) continue;
      auto const whole = [&row](std::size_t k) { return static_cast<std::int64_t>(row[k]); };
      worst.Offer(row[0], row[1], {whole(2), whole(3), whole(4), whole(5), {row[6], row[7], row[8]}});
    }
    return worst;
  }
};

FacePlace PlaceOf(Ranks const& ranks, reference_host::HostPartition const& partition,
                  TargetedFaces const& faces, int f) {
  auto const number = [&partition](int c) { return partition.globalCell()[static_cast<std::size_t>(c)]; };
  auto const [x, y, z] = faces.Target(f);
  return {f, ranks.rank(), number(faces.cv[f]), number(faces.other[f]), {x, y, z}};
}

}  // namespace

FaceErrors SummariseFaceErrors(Ranks const& ranks, reference_host::HostPartition const& partition,
                               TargetedFaces const& faces, std::vector<double> const& value,
                               std::vector<double> const& exact) {
  // faces, area, sum of A |e|, sum of A e^2, sum of A exact^2, values that are not finite
  std::vector<double> own(6, 0.0);
  WorstFace worst;
  for (int f = 1; f <= faces.count; ++f) {
    auto const i = static_cast<std::size_t>(f);
    double const area = faces.Area(f);
    double const e = value[i] - exact[i];
    own[0] += 1.0;
    own[1] += area;
    own[2] += area * std::fabs(e);
    own[3] += area * e * e;
    own[4] += area * exact[i] * exact[i];
    if (std::isfinite(e))
      worst.Offer(std::fabs(e), e, PlaceOf(ranks, partition, faces, f));
    else
      own[5] += 1.0;
  }
  std::vector<double> all(own.size(), 0.0);
  for (std::vector<double> const& row : ranks.Gather(own)) {
    for (std::size_t k = 0; k < all.size(); ++k) all[k] += row[k];
  }
  worst = worst.OfAll(ranks);

  FaceErrors errors;
  errors.nFaces = static_cast<std::int64_t>(all[0]);
  errors.area = all[1];
  errors.l1 = all[0] > 0.0 ? all[2] / all[1] : kNaN;
  errors.l2 = all[0] > 0.0 ? std::sqrt(all[3] / all[1]) : kNaN;
  errors.relativeL2 = all[4] > 0.0 ? std::sqrt(all[3] / all[4]) : kNaN;
  errors.max = worst.measure >= 0.0 ? worst.measure : kNaN;
  errors.maxPlace = worst.place;
  errors.nNotFinite = static_cast<std::int64_t>(all[5]);
  return errors;
}

std::array<double, 2> RangeOfValues(Ranks const& ranks, std::vector<double> const& value) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  double lowest = kInfinity, highest = -kInfinity;
  for (std::size_t f = 1; f < value.size(); ++f) {
    if (!std::isfinite(value[f])) continue;
    lowest = std::min(lowest, value[f]);
    highest = std::max(highest, value[f]);
  }
  lowest = -ranks.Max(-lowest);
  highest = ranks.Max(highest);
  if (lowest > highest) return {kNaN, kNaN};
  return {lowest, highest};
}

FaceRowCheck CheckFaceRows(Ranks const& ranks, reference_host::HostPartition const& partition,
                           TargetedFaces const& faces, std::vector<double> const& rowSum) {
  double nOff = 0.0, nNotFinite = 0.0;
  WorstFace off, notFinite;
  for (int f = 1; f <= faces.count; ++f) {
    double const sum = rowSum[static_cast<std::size_t>(f)];
    double const distance = std::fabs(sum - 1.0);
    if (!std::isfinite(sum)) {
      nNotFinite += 1.0;
      notFinite.Offer(0.0, 0.0, PlaceOf(ranks, partition, faces, f));
    } else if (distance > kRowSumTolerance) {
      nOff += 1.0;
      off.Offer(distance, sum, PlaceOf(ranks, partition, faces, f));
    }
  }
  FaceRowCheck check;
  for (std::vector<double> const& row : ranks.Gather(std::vector<double>{nOff, nNotFinite})) {
    check.nOff += static_cast<std::int64_t>(row[0]);
    check.nNotFinite += static_cast<std::int64_t>(row[1]);
  }
  WorstFace const worstOff = off.OfAll(ranks);
  if (check.nOff > 0) check.worstSum = worstOff.value;
  check.worst = worstOff.place;
  check.firstNotFinite = notFinite.OfAll(ranks).place;
  return check;
}

}  // namespace zyngrad
