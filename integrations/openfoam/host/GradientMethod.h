#pragma once

#include "Istream.H"
#include "word.H"

namespace Foam {
namespace zyn {

/// The method of a gradient, as the entry of gradSchemes names it after the word zyn.
struct GradientMethod {
  enum class Kind { kPlain, kIterated, kLeastSquares, kRadialBasis };

  /// Reads `plain`, `iterated N`, `leastSquares` or `radialBasis`, and nothing that follows. Anything else ends the
  /// program with a message that names the entry, the word and what is possible.
  static GradientMethod Read(Istream& is);

  Kind kind = Kind::kPlain;
  int nSweeps = 1;  ///< of the iterated method; one sweep gives the plain gradient
};

}  // namespace zyn
}  // namespace Foam
