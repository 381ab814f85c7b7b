#include "cli/gradient/LeastSquaresCheck.h"

#include <cstdint>
#include <limits>

#include "gradient/COperatorGradientImpl.h"
#include "gradient/NormalEquations.h"

namespace zyngrad {

bool LeastSquaresStopsAt(double sxx, double sxy, double syy) {
  normal_equations::Matrix<double> moments = {};
  moments.xx = sxx, moments.xy = sxy, moments.yy = syy;
  return HasZeroPivot(moments);
}

std::optional<std::string> LeastSquaresObstacle(Ranks const& ranks, COperatorGradient& op,
                                                reference_host::HostPartition& partition) {
  constexpr std::int64_t kNone = std::numeric_limits<std::int64_t>::max();
  COperatorGradientImpl const& moments = *op.m_pImpl;
  std::int64_t own = kNone;
  for (int c = 1; c <= partition.mesh()->NInnerCells; ++c) {
    std::int64_t const number = partition.globalCell()[static_cast<std::size_t>(c)];
    if (number < own && LeastSquaresStopsAt(moments.m_pSxx[c], moments.m_pSxy[c], moments.m_pSyy[c]))
      own = number;
  }
  std::int64_t lowest = kNone;
  MPI_Allreduce(&own, &lowest, 1, MPI_INT64_T, MPI_MIN, ranks.communicator());
  if (lowest == kNone) return std::nullopt;
  int const ownRank = own == lowest ? ranks.rank() : -1;
  int rank = -1;
  MPI_Allreduce(&ownRank, &rank, 1, MPI_INT, MPI_MAX, ranks.communicator());
  return "least squares stops at cell " + std::to_string(lowest) + " on rank " + std::to_string(rank) +
         " (zero pivot)";
}

}  // namespace zyngrad
