#include "cli/points/PointErrors.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "cli/base/OneLine.h"
#include "cli/base/UsageError.h"
#include "cli/output/RunSettings.h"

namespace zyngrad {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr std::size_t kShown = 5;

double Length(double x, double y, double z) { return std::sqrt(y * y + x * x + z * z); }

/// @param[in] exactSquared  [point] square of the exact value
PointNorms NormsOf(std::vector<double> const& errors, std::vector<double> const& exactSquared) {
  PointNorms norms;
  double sum = 0.0, sum2 = 0.0, exact2 = 0.0;
  norms.max = kNaN;
  for (std::size_t i = 0; i < errors.size(); ++i) {
    double const e = std::fabs(errors[i]);
    sum += e;
    sum2 += e * e;
    exact2 += exactSquared[i];
    if (!std::isfinite(e)) {
      ++norms.nNotFinite;
    } else if (norms.maxPoint == 0 || e > norms.max) {
      norms.max = e;
      norms.maxPoint = static_cast<std::int64_t>(i) + 1;
    }
  }
  auto const n = static_cast<double>(errors.size());
  norms.l1 = n > 0.0 ? sum / n : kNaN;
  norms.l2 = n > 0.0 ? std::sqrt(sum2 / n) : kNaN;
  norms.relativeL2 = exact2 > 0.0 ? std::sqrt(sum2 / exact2) : kNaN;
  return norms;
}

/// A measure of how bad a flagged point is; larger is worse.
double Badness(PointFlag flag, std::size_t i, PointValues const& values,
               std::vector<PointOwner> const& owners) {
  switch (flag) {
    case kIsFar:
    case kIsOutside:
      return owners[i].distance;
    case kHasFewCells:
      return -static_cast<double>(values.members[i]);
    case kIsNotFinite:
      break;
  }
  return 0.0;
}

}  // namespace

ExactAtPoints ExactValuesAt(PointSet const& points, Expression const& expression) {
  ExactAtPoints exact;
  for (std::size_t i = 0; i < points.size(); ++i) {
    Dual const at = expression.ValueAndGradient(points.x[i], points.y[i], points.z[i]);
    for (double const number : {at.value, at.dx, at.dy, at.dz}) {
      if (std::isfinite(number)) continue;
      throw UsageError("the field " + Quoted(expression.text()) + " or its gradient is not finite at point " +
                       std::to_string(i + 1) + " at (" + ShortestText(points.x[i]) + ", " +
                       ShortestText(points.y[i]) + ", " + ShortestText(points.z[i]) + ')');
    }
    exact.value.push_back(at.value);
    exact.gx.push_back(at.dx);
    exact.gy.push_back(at.dy);
    exact.gz.push_back(at.dz);
  }
  return exact;
}

ErrorsAtPoints ErrorsAt(PointValues const& values, ExactAtPoints const& exact) {
  ErrorsAtPoints errors;
  for (std::size_t i = 0; i < exact.value.size(); ++i) {
    errors.value.push_back(values.value[i] - exact.value[i]);
    errors.gradient.push_back(
        Length(values.gx[i] - exact.gx[i], values.gy[i] - exact.gy[i], values.gz[i] - exact.gz[i]));
  }
  return errors;
}

PointNorms ValueNorms(ErrorsAtPoints const& errors, ExactAtPoints const& exact) {
  std::vector<double> squared;
  squared.reserve(exact.value.size());
  for (double const value : exact.value) squared.push_back(value * value);
  return NormsOf(errors.value, squared);
}

PointNorms GradientNorms(ErrorsAtPoints const& errors, ExactAtPoints const& exact) {
  std::vector<double> squared;
  squared.reserve(exact.gx.size());
  for (std::size_t i = 0; i < exact.gx.size(); ++i)
    squared.push_back(exact.gy[i] * exact.gy[i] + exact.gx[i] * exact.gx[i] + exact.gz[i] * exact.gz[i]);
  return NormsOf(errors.gradient, squared);
}

std::vector<std::int32_t> FlagPoints(PointValues const& values, std::vector<PointOwner> const& owners,
                                     double meanDistance, std::vector<double> const& aspectRatios) {
  std::vector<std::int32_t> flags(values.isRowFinite.size(), 0);
  for (std::size_t i = 0; i < flags.size(); ++i) {
    if (owners[i].distance > kFarDistances * meanDistance) flags[i] += kIsFar;
    if (values.members[i] < kLeastMembers) flags[i] += kHasFewCells;
    if (values.isRowFinite[i] == 0) flags[i] += kIsNotFinite;
    if (!aspectRatios.empty() && aspectRatios[i] == 0.0) flags[i] += kIsOutside;
  }
  return flags;
}

std::array<FlaggedPoints, kPointFlags> CountFlags(std::vector<std::int32_t> const& flags,
                                                  PointValues const& values,
                                                  std::vector<PointOwner> const& owners) {
  std::array<FlaggedPoints, kPointFlags> all;
  PointFlag const kinds[] = {kIsFar, kHasFewCells, kIsNotFinite, kIsOutside};
  for (std::size_t k = 0; k < all.size(); ++k) {
    FlaggedPoints& flagged = all[k];
    flagged.flag = kinds[k];
    for (std::size_t i = 0; i < flags.size(); ++i) {
      if ((flags[i] & flagged.flag) != 0) flagged.worst.push_back(i);
    }
    flagged.count = static_cast<std::int64_t>(flagged.worst.size());
    std::stable_sort(flagged.worst.begin(), flagged.worst.end(), [&](std::size_t a, std::size_t b) {
      return Badness(flagged.flag, a, values, owners) > Badness(flagged.flag, b, values, owners);
    });
    flagged.worst.resize(std::min(flagged.worst.size(), kShown));
  }
  return all;
}

}  // namespace zyngrad
