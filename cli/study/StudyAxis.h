#pragma once

#include <string>
#include <vector>

namespace zyngrad {

/// One axis of a plot: the positions of values, and the ticks.
class StudyAxis {
 public:
  struct Tick {
    double value = 0.0;
    std::string label;  ///< empty for a tick without a number; "10^-3" stands for a power
  };

  /// An axis that contains all values, with some room at both ends. Values that are not finite, and on a logarithmic
  /// axis values that are not above zero, are ignored. Without values it goes from 0.1 to 1, or from 0 to 1.
  static StudyAxis Logarithmic(std::vector<double> const& values);
  static StudyAxis Linear(std::vector<double> const& values);

  /// Position of a value: 0 at the low end, 1 at the high end; outside the axis below 0 or above 1.
  double Place(double value) const;

  /// Whether the axis can show the value.
  bool Shows(double value) const;

  bool IsLogarithmic() const { return isLogarithmic_; }
  double low() const { return low_; }    ///< value at the low end
  double high() const { return high_; }  ///< value at the high end
  std::vector<Tick> const& ticks() const { return ticks_; }

  /// Number of powers of ten on a logarithmic axis.
  double Decades() const;

 private:
  StudyAxis(bool isLogarithmic, double low, double high);
  void AddLogarithmicTicks();
  void AddLinearTicks();

  bool isLogarithmic_;
  double low_, high_;
  std::vector<Tick> ticks_;
};

}  // namespace zyngrad
