#include "cli/gradient/GradientSizes.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

namespace zyngrad {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNoExactGradient = std::numeric_limits<double>::quiet_NaN();

/// The largest finite value of sign * v over the interior cells of all ranks; -infinity if there is none.
double LargestFinite(Ranks const& ranks, std::vector<double> const& v, int nInnerCells, double sign) {
  double largest = -kInfinity;
  for (int c = 1; c <= nInnerCells; ++c) {
    double const value = v[static_cast<std::size_t>(c)];
    if (std::isfinite(value)) largest = std::max(largest, sign * value);
  }
  return ranks.Max(largest);
}

}  // namespace

std::vector<double> GradientLengths(CZYN3DFiniteVolumeMesh const& mesh, GradientArrays const& gradient) {
  std::vector<double> length(static_cast<std::size_t>(mesh.NInnerCells) + 1, 0.0);
  for (std::size_t c = 1; c < length.size(); ++c) {
    double const gx = gradient.x[c], gy = gradient.y[c], gz = gradient.z[c];
    length[c] = std::sqrt(gy * gy + gx * gx + gz * gz);
  }
  return length;
}

GradientSizes MeasureGradient(Ranks const& ranks, reference_host::HostPartition& partition,
                              GradientArrays const& gradient, std::vector<char> const& isBoundaryCell) {
  CZYN3DFiniteVolumeMesh const& mesh = *partition.mesh();
  GradientSizes sizes;
  std::vector<double> length;
  ranks.Together([&] { length = GradientLengths(mesh, gradient); });
  sizes.norms = SummariseErrors(ranks, partition, length, isBoundaryCell, kNoExactGradient);
  std::array<std::vector<double> const*, 3> const components = {&gradient.x, &gradient.y, &gradient.z};
  for (std::size_t d = 0; d < components.size(); ++d) {
    sizes.lowest[d] = -LargestFinite(ranks, *components[d], mesh.NInnerCells, -1.0);
    sizes.highest[d] = LargestFinite(ranks, *components[d], mesh.NInnerCells, 1.0);
    if (sizes.lowest[d] > sizes.highest[d])
      sizes.lowest[d] = sizes.highest[d] = std::numeric_limits<double>::quiet_NaN();
  }
  return sizes;
}

}  // namespace zyngrad
