#pragma once

#include <string>
#include <vector>

namespace zyngrad {

/// One axis of a plot: where values lie on it, and its ticks.
class StudyAxis {
 public:
  struct Tick {
    double value = 0.0;
    std::string label;  ///< empty: a tick without a number; "10^-3" stands for a power
  };

  /// An axis that holds all the values, with some room at both ends. What is not finite, and on a logarithmic
  /// axis what is not above zero, does not count. Without any value it goes from 0.1 to 1, or from 0 to 1.
  static StudyAxis Logarithmic(std::vector<double> const& values);
  static StudyAxis Linear(std::vector<double> const& values);

  /// 0 at the low end, 1 at the high end, beyond them outside.
  double Place(double value) const;

  /// Whether the axis can show the value.
  bool Shows(double value) const;

  bool IsLogarithmic() const { return isLogarithmic_; }
  double low() const { return low_; }    ///< value at the low end
  double high() const { return high_; }  ///< value at the high end
  std::vector<Tick> const& ticks() const { return ticks_; }

  /// Powers of ten on a logarithmic axis.
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
