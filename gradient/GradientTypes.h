#pragma once

/// What COperatorGradient::getGradType is given; COperatorGradient.h says what each type does. Any other number runs the
/// iterated Green-Gauss gradient.
enum GradientType : int {
  kGreenGaussType = 0,
  kLeastSquaresType = 1,
  kRadialBasisType = 2,
  kNoGradientType = 3
};
