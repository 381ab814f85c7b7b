#include "cli/compare_ranks/RankLevel.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>

#include "cli/base/StdoutToFile.h"
#include "cli/operators/InitializeGradient.h"
#include "cli/operators/WireOperator.h"
#include "cli/study/StudyCondition.h"
#include "cli/study/StudyPoints.h"
#include "cli/systems/CellStencil.h"
#include "cli/systems/ConditionEstimate.h"
#include "foundation/FaceGroups.h"
#include "gradient/COperatorGradient.h"
#include "gradient/COperatorGradientImpl.h"
#include "gradient/GradientTypes.h"
#include "reference_host/mesh/FaceGeometry.h"
#include "reference_host/mesh/MeshPart.h"
#include "reference_host/partition/HostPartition.h"
#include "reference_host/partition/InProcessExchange.h"

namespace zyngrad {
namespace {

using reference_host::HostPartition;
using reference_host::Point;

constexpr double kEps = std::numeric_limits<double>::epsilon();
constexpr double kInfinite = std::numeric_limits<double>::infinity();
constexpr double kLeastRelative = 1e-12;

double Length(double x, double y, double z) { return std::sqrt(y * y + x * x + z * z); }

double LargestSlope(RankResult const& result) {
  double largest = 0.0;
  for (Point const& g : result.item) largest = std::max(largest, Length(g[0], g[1], g[2]));
  return largest;
}

/// The mesh as one partition, and the measures from which the levels are computed.
class WholeMeasures {
 public:
  WholeMeasures(WholeMesh const& mesh, RankQuestion const& question)
      : field_(question.field),
        partition_(
            SplitMesh(mesh.faces, std::vector<int>(static_cast<std::size_t>(mesh.nCells()), 0), 1).front()),
        group_(1),
        exchange_(group_, partition_),
        reduction_(group_) {
    partition_.CompleteHalo(exchange_);
    CZYN3DFiniteVolumeMesh const& m = *partition_.mesh();
    std::vector<double> const values = question.field.ValuesOn(partition_);
    for (int c = 1; c <= m.NCell; ++c)
      largestValue_ = std::max(largestValue_, std::fabs(values[static_cast<std::size_t>(c)]));
  }

  double largestValue() const { return largestValue_; }

  /// The largest ratio of the sum of the areas around a cell to its volume, 1/L.
  double LargestSurfaceOverVolume() {
    CZYN3DFiniteVolumeMesh const& m = *partition_.mesh();
    std::vector<double> surface(static_cast<std::size_t>(m.NCell) + 1, 0.0);
    auto const add = [&surface](FaceGroup const& faces, int const* cells) {
      for (int f = 1; f <= faces.count; ++f)
        surface[static_cast<std::size_t>(cells[f])] += Length(faces.sx[f], faces.sy[f], faces.sz[f]);
    };
    FaceGroup const inner = FacesOf(FaceKind::Inner, m);
    add(inner, inner.cv);
    add(inner, inner.other);
    FaceGroup const periodic = PartitionFaces(*partition_.partitionFaces(), m);
    add(periodic, periodic.cv);
    for (FaceKind const kind : face_groups::kGreenGaussBoundary) {
      FaceGroup const faces = FacesOf(kind, m);
      add(faces, faces.cv);
    }
    double largest = 0.0;
    for (int c = 1; c <= m.NInnerCells; ++c)
      largest = std::max(largest, surface[static_cast<std::size_t>(c)] / m.Volume[c]);
    return largest;
  }

  /// [0..nCells-1] condition number of the moments of least squares.
  std::vector<double> MomentConditions() {
    StdoutToFile const silence("/dev/null");
    COperatorGradient op;
    WireOperator(op, partition_, &exchange_, &reduction_);
    InitializeGradient(op, kLeastSquaresType);
    COperatorGradientImpl const& m = *op.m_pImpl;
    return ByMeshNumber([&](int c) {
      return ConditionEstimate({m.m_pSxx[c], m.m_pSxy[c], m.m_pSxz[c], m.m_pSxy[c], m.m_pSyy[c], m.m_pSyz[c],
                                m.m_pSxz[c], m.m_pSyz[c], m.m_pSzz[c]},
                               3);
    });
  }

  /// [0..nCells-1] condition number times the sum of |w|, 1/L.
  std::vector<double> WeightedConditions(RadialBasisSettings const& settings) {
    std::vector<double> found = {0.0};
    VisitCellStencils(partition_, settings, "/dev/null", [&found](int, CellStencil const& stencil) {
      double sum = 0.0;
      for (StencilMember const& member : stencil.members)
        sum += Length(member.weight.x, member.weight.y, member.weight.z);
      found.push_back(ConditionEstimate(stencil.matrix, stencil.Order()) * sum);
    });
    return ByMeshNumber([&](int c) { return found[static_cast<std::size_t>(c)]; });
  }

  /// The largest error of the values at faces or points, compared with the formula at their places.
  double LargestError(StudyMethod const& method, reference_host::FaceMesh const& faces,
                      RankResult const& result) {
    double largest = 0.0;
    auto const take = [&](std::size_t item, Point const& place) {
      if (result.isThere[item] == 0) return;
      double const error =
          std::fabs(result.item[item][0] - field_.formula()->Value(place[0], place[1], place[2]));
      if (std::isfinite(error)) largest = std::max(largest, error);
    };
    if (method.kind == StudyMethod::Kind::Faces) {
      for (std::size_t f = 0; f < result.item.size(); ++f) {
        std::size_t const first = faces.faceStart[f], n = faces.faceStart[f + 1] - first;
        take(f, reference_host::ComputeFaceGeometry(faces.points, faces.faceNode.data() + first,
                                                    static_cast<int>(n))
                    .centre);
      }
      return largest;
    }
    for (int c = 1; c <= partition_.mesh()->NInnerCells; ++c) {
      std::int64_t const number = partition_.globalCell()[static_cast<std::size_t>(c)];
      take(static_cast<std::size_t>(number - 1), PointInCell(partition_, c));
    }
    return largest;
  }

  /// The largest difference of the values at faces from the mean of their two cells, or at points from their cell.
  double LargestStep(StudyMethod const& method, reference_host::FaceMesh const& faces,
                     RankResult const& result) const {
    double largest = 0.0;
    for (std::size_t i = 0; i < result.item.size(); ++i) {
      if (result.isThere[i] == 0) continue;
      double const beside = method.kind == StudyMethod::Kind::Faces
                                ? 0.5 * (field_.AtCell(faces.owner[i]) + field_.AtCell(faces.neighbour[i]))
                                : field_.AtCell(static_cast<int>(i));
      double const step = std::fabs(result.item[i][0] - beside);
      if (std::isfinite(step)) largest = std::max(largest, step);
    }
    return largest;
  }

  /// The worst condition number among a sample of the systems of faces or points.
  double WorstCondition(StudyCase const& theCase, int searchNumber) {
    InterpolationSettings const settings = {theCase.method->searchMethod, theCase.span, searchNumber, 0.0,
                                            false};
    std::vector<double> conditions;
    if (theCase.method->kind == StudyMethod::Kind::Faces) {
      conditions = FaceConditions(partition_, settings);
    } else {
      UsableCells usable;
      for (std::int64_t const number : partition_.globalCell())
        usable.mark.push_back(number > 0 ? -1.0 : 1.0);
      PointSet points;
      for (int const c : CellsWithPoints(partition_, partition_.mesh()->NInnerCells)) {
        Point const point = PointInCell(partition_, c);
        points.x.push_back(point[0]);
        points.y.push_back(point[1]);
        points.z.push_back(point[2]);
      }
      conditions = PointConditions(partition_, usable, points, settings);
    }
    double worst = 0.0;
    for (double const condition : conditions) {
      if (std::isnan(condition)) return kInfinite;
      worst = std::max(worst, condition);
    }
    return worst;
  }

 private:
  template <class Measure>
  std::vector<double> ByMeshNumber(Measure const& measure) {
    int const nCells = partition_.mesh()->NInnerCells;
    std::vector<double> values(static_cast<std::size_t>(nCells), 0.0);
    for (int c = 1; c <= nCells; ++c) {
      std::int64_t const number = partition_.globalCell()[static_cast<std::size_t>(c)];
      values[static_cast<std::size_t>(number - 1)] = measure(c);
    }
    return values;
  }

  RankField const& field_;
  HostPartition partition_;
  reference_host::InProcessGroup group_;
  reference_host::InProcessCommunication exchange_;
  reference_host::InProcessReduction reduction_;
  double largestValue_ = 0.0;
};

}  // namespace

std::vector<RankLevel> LevelsOf(WholeMesh const& mesh, RankQuestion const& question,
                                std::vector<RankResult> const& results) {
  WholeMeasures measures(mesh, question);
  std::vector<RankLevel> levels;
  for (std::size_t k = 0; k < results.size(); ++k) {
    StudyCase const& theCase = question.cases[k];
    if (theCase.method->kind != StudyMethod::Kind::Gradient) {
      bool const isFormula = question.field.formula() != nullptr;
      double const bound = isFormula ? 10.0 * measures.LargestError(*theCase.method, mesh.faces, results[k])
                                     : measures.LargestStep(*theCase.method, mesh.faces, results[k]);
      double const rounding =
          kEps * measures.largestValue() * measures.WorstCondition(theCase, question.searchNumber);
      levels.push_back(
          {isFormula ? "error" : "step", std::vector<double>(results[k].item.size(), bound + rounding)});
      continue;
    }
    double const slope = LargestSlope(results[k]), least = kLeastRelative * slope;
    int const type = theCase.method->gradient->gradientType;
    RankLevel level = {"round-off", {}};
    if (type == kRadialBasisType) {
      level = {"conditioning", measures.WeightedConditions({theCase.span, false})};
      for (double& bound : level.atItem) bound *= kEps * measures.largestValue();
    } else if (type == kLeastSquaresType) {
      level.atItem = measures.MomentConditions();
      for (double& bound : level.atItem) bound = std::max(least, 16.0 * kEps * bound * slope);
    } else {
      int const nSweeps = std::max(1, theCase.nSweeps);
      double const bound =
          8.0 * nSweeps * kEps * measures.largestValue() * measures.LargestSurfaceOverVolume();
      level.atItem.assign(static_cast<std::size_t>(mesh.nCells()), std::max(least, bound));
    }
    levels.push_back(std::move(level));
  }
  return levels;
}

}  // namespace zyngrad
