#include "cli/CompareRanksLevels.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <memory>

#include "cli/CellStencil.h"
#include "cli/ConditionEstimate.h"
#include "cli/StdoutToFile.h"
#include "gradient/COperatorGradient.h"
#include "gradient/COperatorGradientImpl.h"
#include "reference_host/HostPartition.h"
#include "reference_host/InProcessExchange.h"
#include "reference_host/MeshPart.h"

namespace zyngrad {
namespace {

using reference_host::HostPartition;
using reference_host::Point;

constexpr double kEps = std::numeric_limits<double>::epsilon();
constexpr double kLeastRelative = 1e-12;
constexpr int kLeastSquaresType = 1;

double Length(double x, double y, double z) { return std::sqrt(y * y + x * x + z * z); }

double LargestSlope(const RankResult& result) {
  double largest = 0.0;
  for (const Point& g : result.gradient) largest = std::max(largest, Length(g[0], g[1], g[2]));
  return largest;
}

/// The mesh as one partition, and what the levels are made of.
class WholeMeasures {
 public:
  WholeMeasures(const WholeMesh& mesh, const RankQuestion& question)
      : partition_(
            SplitMesh(mesh.faces, std::vector<int>(static_cast<std::size_t>(mesh.nCells()), 0), 1).front()),
        group_(1),
        exchange_(group_, partition_),
        reduction_(group_) {
    partition_.CompleteHalo(exchange_);
    const CZYN3DFiniteVolumeMesh& m = *partition_.mesh();
    for (int c = 1; c <= m.NCell; ++c)
      largestValue_ = std::max(largestValue_, std::fabs(question.field.Value(m.xc[c], m.yc[c], m.zc[c])));
  }

  double largestValue() const { return largestValue_; }

  /// Largest sum of the areas around a cell over its volume, 1/L.
  double LargestSurfaceOverVolume() {
    const CZYN3DFiniteVolumeMesh& m = *partition_.mesh();
    std::vector<double> surface(static_cast<std::size_t>(m.NCell) + 1, 0.0);
    const auto add = [&surface](int n, const int* cells, const double* Sx, const double* Sy,
                                const double* Sz) {
      for (int f = 1; f <= n; ++f) surface[static_cast<std::size_t>(cells[f])] += Length(Sx[f], Sy[f], Sz[f]);
    };
    add(m.NInnerFaces, m.ijCV, m.ijSx, m.ijSy, m.ijSz);
    add(m.NInnerFaces, m.ij, m.ijSx, m.ijSy, m.ijSz);
    add(m.NInlet, m.ijInletCV, m.ijInletSx, m.ijInletSy, m.ijInletSz);
    add(m.NOutlet, m.ijOutletCV, m.ijOutletSx, m.ijOutletSy, m.ijOutletSz);
    add(m.NSymmetry, m.ijSymmetryCV, m.ijSymmetrySx, m.ijSymmetrySy, m.ijSymmetrySz);
    add(m.NWall, m.ijWallCV, m.ijWallSx, m.ijWallSy, m.ijWallSz);
    double largest = 0.0;
    for (int c = 1; c <= m.NInnerCells; ++c)
      largest = std::max(largest, surface[static_cast<std::size_t>(c)] / m.Volume[c]);
    return largest;
  }

  /// [0..nCells-1] condition number of the moments of least squares.
  std::vector<double> MomentConditions() {
    const StdoutToFile silence("/dev/null");
    COperatorGradient op;
    op.getZyn3dGV(partition_.globals(), nullptr, nullptr, partition_.mesh());
    op.getPartitionFace(partition_.partitionFaces());
    op.getCommunication(&exchange_, &reduction_);
    int type = kLeastSquaresType;
    op.getGradType(type);
    op.Initialize();
    const COperatorGradientImpl& m = *op.m_pImpl;
    return ByMeshNumber([&](int c) {
      return ConditionEstimate({m.m_pSxx[c], m.m_pSxy[c], m.m_pSxz[c], m.m_pSxy[c], m.m_pSyy[c], m.m_pSyz[c],
                                m.m_pSxz[c], m.m_pSyz[c], m.m_pSzz[c]},
                               3);
    });
  }

  /// [0..nCells-1] condition number times the sum of |w|, 1/L.
  std::vector<double> WeightedConditions(const RadialBasisSettings& settings) {
    std::vector<double> found = {0.0};
    VisitCellStencils(partition_, settings, "/dev/null", [&found](int, const CellStencil& stencil) {
      double sum = 0.0;
      for (const StencilMember& member : stencil.members)
        sum += Length(member.weight.x, member.weight.y, member.weight.z);
      found.push_back(ConditionEstimate(stencil.matrix, stencil.Order()) * sum);
    });
    return ByMeshNumber([&](int c) { return found[static_cast<std::size_t>(c)]; });
  }

 private:
  template <class Measure>
  std::vector<double> ByMeshNumber(const Measure& measure) const {
    std::vector<double> values(partition_.globalCell().size(), 0.0);
    int nCells = 0;
    for (std::size_t c = 1; c < partition_.globalCell().size(); ++c) {
      if (partition_.globalCell()[c] == 0) continue;
      values[static_cast<std::size_t>(partition_.globalCell()[c] - 1)] = measure(static_cast<int>(c));
      ++nCells;
    }
    values.resize(static_cast<std::size_t>(nCells));
    return values;
  }

  HostPartition partition_;
  reference_host::InProcessGroup group_;
  reference_host::InProcessCommunication exchange_;
  reference_host::InProcessReduction reduction_;
  double largestValue_ = 0.0;
};

}  // namespace

std::vector<RankLevel> LevelsOf(const WholeMesh& mesh, const RankQuestion& question,
                                const std::vector<RankResult>& results) {
  WholeMeasures measures(mesh, question);
  std::vector<RankLevel> levels;
  for (std::size_t k = 0; k < results.size(); ++k) {
    const GradientMethod& method = *question.methods[k];
    const double slope = LargestSlope(results[k]), least = kLeastRelative * slope;
    RankLevel level = {"round-off", {}};
    if (method.gradientType == kRadialBasisType) {
      level = {"conditioning", measures.WeightedConditions(question.radialBasis)};
      for (double& bound : level.atCell) bound *= kEps * measures.largestValue();
    } else if (method.gradientType == kLeastSquaresType) {
      level.atCell = measures.MomentConditions();
      for (double& bound : level.atCell) bound = std::max(least, 16.0 * kEps * bound * slope);
    } else {
      const int nSweeps = std::string(method.name) == "iterated" ? std::max(1, question.nSweeps) : 1;
      const double bound =
          8.0 * nSweeps * kEps * measures.largestValue() * measures.LargestSurfaceOverVolume();
      level.atCell.assign(static_cast<std::size_t>(mesh.nCells()), std::max(least, bound));
    }
    levels.push_back(std::move(level));
  }
  return levels;
}

}  // namespace zyngrad
