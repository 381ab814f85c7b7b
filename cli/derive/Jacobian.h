#pragma once

#include <array>

namespace zyngrad {

/// The gradients of the three components of a vector field u at one place: d[i][j] = du_i/dx_j, U/L. Row i is the
/// gradient of component i.
struct Jacobian {
  double d[3][3];
};

/// div u = du_i/dx_i, summed in the order x, y, z.
inline double Divergence(Jacobian const& g) { return g.d[0][0] + g.d[1][1] + g.d[2][2]; }

/// curl u = (du_z/dy - du_y/dz, du_x/dz - du_z/dx, du_y/dx - du_x/dy); of a velocity, the vorticity.
inline std::array<double, 3> Curl(Jacobian const& g) {
  return {g.d[2][1] - g.d[1][2], g.d[0][2] - g.d[2][0], g.d[1][0] - g.d[0][1]};
}

/// The strain rate S_ij = (du_i/dx_j + du_j/dx_i) / 2 as xx, xy, xz, yy, yz, zz.
inline std::array<double, 6> StrainRate(Jacobian const& g) {
  auto const symmetric = [&g](int i, int j) { return 0.5 * (g.d[i][j] + g.d[j][i]); };
  return {g.d[0][0], symmetric(0, 1), symmetric(0, 2), g.d[1][1], symmetric(1, 2), g.d[2][2]};
}

/// The second invariant of the gradient, Q = ((tr g)^2 - tr(g g)) / 2 with tr(g g) = du_i/dx_j du_j/dx_i.
///
/// With the rotation rate W_ij = (du_i/dx_j - du_j/dx_i) / 2, the squares of Frobenius norms give
/// (|W|^2 - |S|^2) / 2 = -tr(g g) / 2, the form in which Q is known for incompressible flow. The two differ by
/// (div u)^2 / 2, and agree where the divergence is zero.  @cite hunt1988 @cite jeong1995
inline double QCriterion(Jacobian const& g) {
  double const trace = Divergence(g);
  double const diagonal = g.d[0][0] * g.d[0][0] + g.d[1][1] * g.d[1][1] + g.d[2][2] * g.d[2][2];
  double const beside = g.d[0][1] * g.d[1][0] + g.d[0][2] * g.d[2][0] + g.d[1][2] * g.d[2][1];
  return 0.5 * (trace * trace - (diagonal + 2.0 * beside));
}

}  // namespace zyngrad
