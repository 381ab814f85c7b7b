#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <initializer_list>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

/// Errors on meshes of one kind, from coarse to fine, and the order in which they fall.
class ObservedOrder {
 public:
  /// @param spacing  of the mesh, in any unit that is the same for all levels
  void Add(double spacing, double error) { levels_.push_back({spacing, error}); }

  /// From one level to the next: [0..levels-2].
  std::vector<double> Steps() const {
    std::vector<double> steps;
    for (std::size_t k = 1; k < levels_.size(); ++k) steps.push_back(Between(levels_[k - 1], levels_[k]));
    return steps;
  }

  /// From the coarsest to the finest.
  double Overall() const { return Between(levels_.front(), levels_.back()); }

  std::string Text() const {
    std::ostringstream out;
    out << "errors";
    for (Level const& level : levels_) out << ' ' << level.error;
    out << ", orders";
    for (double const step : Steps()) out << ' ' << step;
    return out.str();
  }

 private:
  struct Level {
    double spacing, error;
  };
  static double Between(Level const& a, Level const& b) {
    return std::log(a.error / b.error) / std::log(a.spacing / b.spacing);
  }

  std::vector<Level> levels_;
};

/// Three levels or more whose errors fall with the order, as far as `slack` below it from the first to the last.
inline void ExpectOrder(ObservedOrder const& observed, double order, double slack, std::string const& what) {
  ASSERT_GE(observed.Steps().size(), 2u);
  EXPECT_GE(observed.Overall(), order - slack) << what << ": " << observed.Text();
  // A claim that is too modest is a claim that nobody measured.
  EXPECT_LT(observed.Overall(), order + 1.0) << what << ": " << observed.Text();
}
