#include "cli/study/StudyCondition.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <string>

#include "cli/base/StdoutToFile.h"
#include "cli/base/Timing.h"
#include "cli/faces/FaceSystems.h"
#include "cli/operators/TemporarySettings.h"
#include "cli/operators/WireOperator.h"
#include "cli/points/PointSystems.h"
#include "cli/systems/CellStencil.h"
#include "cli/systems/ConditionEstimate.h"
#include "rbf_ib/CZynIBRBFInternalObject.h"

namespace zyngrad {

using reference_host::HostPartition;

StudyCondition SummariseConditions(Ranks const& ranks, std::vector<double> const& own) {
  std::vector<double> all = ranks.GatherOnFirst(own);
  for (double& condition : all)
    if (std::isnan(condition)) condition = std::numeric_limits<double>::infinity();
  std::vector<double> summary = {static_cast<double>(all.size()), 0.0, 0.0};
  if (!all.empty()) {
    summary[1] = Median(all);
    summary[2] = *std::max_element(all.begin(), all.end());
  }
  ranks.Broadcast(summary);
  return {static_cast<std::int64_t>(summary[0]), summary[1], summary[2]};
}

std::vector<int> SpreadSample(int n) {
  int const step = n / kMostSystems + 1;
  std::vector<int> sample;
  for (int k = 1; k <= n; k += step) sample.push_back(k);
  return sample;
}

std::vector<double> GradientConditions(HostPartition& partition, RadialBasisSettings const& settings) {
  std::vector<double> conditions;
  VisitCellStencils(partition, SpreadSample(partition.mesh()->NInnerCells), settings, "/dev/null",
                    [&conditions](int, CellStencil const& stencil) {
                      conditions.push_back(ConditionEstimate(stencil.matrix, stencil.Order()));
                    });
  return conditions;
}

std::vector<double> FaceConditions(HostPartition& partition, InterpolationSettings const& settings) {
  StdoutToFile const silence("/dev/null");
  FaceSystems const systems(partition, FaceKind::Inner, settings);
  std::vector<double> conditions;
  for (int const f : SpreadSample(systems.faces().count)) {
    if (systems.isByNormal()) {
      for (auto const side : {FaceSystems::kP, FaceSystems::kE})
        conditions.push_back(systems.SideOf(f, side).condition);
    } else {
      conditions.push_back(systems.ConditionOf(f));
    }
  }
  return conditions;
}

std::vector<double> PointConditions(HostPartition& partition, UsableCells& usable, PointSet const& points,
                                    InterpolationSettings const& settings) {
  PointSet chosen;
  chosen.x = chosen.y = chosen.z = {0.0};  // the operator counts from 1
  for (int const i : SpreadSample(static_cast<int>(points.size()))) {
    auto const k = static_cast<std::size_t>(i) - 1;
    chosen.x.push_back(points.x[k]);
    chosen.y.push_back(points.y[k]);
    chosen.z.push_back(points.z[k]);
  }
  int const nPoints = static_cast<int>(chosen.size()) - 1;
  if (nPoints == 0) return {};

  TemporarySettings file(partition);
  file.Write(PointSettingsText(settings));
  StdoutToFile const silence("/dev/null");
  CZynIBRBFInternalObject op;
  WireOperator(op, partition);
  op.Initialize_IBInterpolateData(usable.mark.data(), nPoints, chosen.x.data(), chosen.y.data(),
                                  chosen.z.data());
  std::vector<double> conditions;
  for (int i = 1; i <= nPoints; ++i) conditions.push_back(ConditionOfPoint(op, *partition.mesh(), i));
  return conditions;
}

}  // namespace zyngrad
