#pragma once

#include <array>
#include <vector>

#include "tests/support/host/RecordingCommunication.h"
#include "tests/support/mesh/TestMesh.h"

/// @file
/// Every gradient once more, in the plainest words: one statement per operation, in the order that the
/// results promise, arrays made anew for each call. The operators must give the same bits.

namespace zyn_test {

/// Cell values [1..NCell], element 0 unused.
using Field = std::vector<double>;

/// The three derivatives, [1..NCell] each.
struct Gradient {
  explicit Gradient(TestMesh const& mesh, double value = 0.0) : x(mesh.centres.size(), value), y(x), z(x) {}

  Field x, y, z;
};

/// Iterated Green-Gauss, nSweep sweeps.
/// @param[in,out] g  what the outputs held before the call; the gradient after it. Without a sweep they are
/// exchanged
///                   as they are
/// @return the previous-iterate arrays after the call
Gradient IteratedGreenGauss(TestMesh const& mesh, Field const& phi, int nSweep, Exchange const& exchange,
                            Gradient& g);

/// Plain Green-Gauss: one pass without skewness correction.
Gradient PlainGreenGauss(TestMesh const& mesh, Field const& phi, Exchange const& exchange);

/// Green-Gauss with face values weighted harmonically by the cell coefficient k.
Gradient WeightedGreenGauss(TestMesh const& mesh, Field const& phi, Field const& k, Exchange const& exchange);

/// Plain Green-Gauss of three fields.
std::array<Gradient, 3> ThreeComponentGreenGauss(TestMesh const& mesh, std::array<Field, 3> const& phi,
                                                 Exchange const& exchange);

/// The six moments of least squares, [1..NCell] each.
struct Moments {
  explicit Moments(TestMesh const& mesh) : xx(mesh.centres.size()), yy(xx), zz(xx), xy(xx), xz(xx), yz(xx) {}

  Field xx, yy, zz, xy, xz, yz;
};

Moments LeastSquaresMoments(TestMesh const& mesh);

/// What least squares leaves behind.
struct LeastSquaresResult {
  Gradient g;
  Gradient rightHandSide;
  bool zeroPivot;  ///< stopped at a singular cell, without an exchange
};

LeastSquaresResult LeastSquares(TestMesh const& mesh, Moments const& moments, Field const& phi,
                                Exchange const& exchange);

}  // namespace zyn_test
