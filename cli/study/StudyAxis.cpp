#include "cli/study/StudyAxis.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <utility>

namespace zyngrad {
namespace {

constexpr double kRoom = 0.06;  // share of the axis at either end

std::string Number(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.10g", value);
  return text;
}

/// Smallest and largest of the values that count; {1, 0} if there are none.
std::pair<double, double> Range(std::vector<double> const& values, double above) {
  std::pair<double, double> range = {std::numeric_limits<double>::infinity(), 0.0};
  bool isFirst = true;
  for (double const value : values) {
    if (!std::isfinite(value) || !(value > above)) continue;
    range.first = isFirst ? value : std::min(range.first, value);
    range.second = isFirst ? value : std::max(range.second, value);
    isFirst = false;
  }
  return isFirst ? std::pair(1.0, 0.0) : range;
}

}  // namespace

StudyAxis StudyAxis::Logarithmic(std::vector<double> const& values) {
  auto [low, high] = Range(values, 0.0);
  if (low > high) return {true, 0.1, 1.0};
  // At least half a decade, so that equal errors make a straight line instead of noise.
  double const room = std::max(kRoom * std::log10(high / low), 0.5 * (0.5 - std::log10(high / low)));
  return {true, low * std::pow(10.0, -room), high * std::pow(10.0, room)};
}

StudyAxis StudyAxis::Linear(std::vector<double> const& values) {
  auto [low, high] = Range(values, -std::numeric_limits<double>::infinity());
  if (low > high) return {false, 0.0, 1.0};
  double const room = high > low ? kRoom * (high - low) : 0.5;
  return {false, low - room, high + room};
}

StudyAxis::StudyAxis(bool isLogarithmic, double low, double high)
    : isLogarithmic_(isLogarithmic), low_(low), high_(high) {
  if (isLogarithmic_)
    AddLogarithmicTicks();
  else
    AddLinearTicks();
}

double StudyAxis::Place(double value) const {
  return isLogarithmic_ ? std::log10(value / low_) / Decades() : (value - low_) / (high_ - low_);
}

bool StudyAxis::Shows(double value) const { return std::isfinite(value) && (!isLogarithmic_ || value > 0.0); }

double StudyAxis::Decades() const { return std::log10(high_ / low_); }

// Within one decade all ticks have numbers; over a few decades 1, 2 and 5 do; over many, every second or third power.
void StudyAxis::AddLogarithmicTicks() {
  constexpr double kFewDecades = 2.0, kLessThanOne = 0.8;
  constexpr int kMostPowers = 8;
  bool const isShort = Decades() <= kFewDecades;
  int const first = static_cast<int>(std::floor(std::log10(low_)));
  int const last = static_cast<int>(std::ceil(std::log10(high_)));
  int const step = (last - first) / kMostPowers + 1;
  for (int power = first; power <= last; ++power) {
    for (int k = 1; k <= 9; ++k) {
      double const value = k * std::pow(10.0, power);
      if (value < low_ || value > high_) continue;
      std::string label;
      if (isShort && (k == 1 || k == 2 || k == 5 || Decades() < kLessThanOne)) label = Number(value);
      if (!isShort && k == 1 && power % step == 0) label = "10^" + std::to_string(power);
      if (isShort || k == 1 || step == 1) ticks_.push_back({value, std::move(label)});
    }
  }
}

// About five steps of 1, 2 or 5 times a power of ten.
void StudyAxis::AddLinearTicks() {
  constexpr double kSteps = 5.0;
  double const power = std::pow(10.0, std::floor(std::log10((high_ - low_) / kSteps)));
  double step = power;
  for (double const factor : {2.0, 5.0, 10.0})
    if ((high_ - low_) / step > 1.5 * kSteps) step = factor * power;
  for (double k = std::ceil(low_ / step); k * step <= high_; k += 1.0) {
    double const value = k * step + 0.0;  // turns -0 into 0
    ticks_.push_back({value, Number(value)});
  }
}

}  // namespace zyngrad
