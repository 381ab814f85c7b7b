#include "cli/StudyCondition.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <string>

#include "cli/CellStencil.h"
#include "cli/ConditionEstimate.h"
#include "cli/FaceGroup.h"
#include "cli/FaceSystems.h"
#include "cli/PointSystems.h"
#include "cli/RunSettings.h"
#include "cli/StdoutToFile.h"
#include "cli/TemporaryFolder.h"
#include "cli/Timing.h"
#include "rbf_ib/CZynIBRBFInternalObject.h"

namespace zyngrad {

using reference_host::HostPartition;

StudyCondition SummariseConditions(const Ranks& ranks, const std::vector<double>& own) {
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
  const int step = n / kMostSystems + 1;
  std::vector<int> sample;
  for (int k = 1; k <= n; k += step) sample.push_back(k);
  return sample;
}

std::vector<double> GradientConditions(HostPartition& partition, const RadialBasisSettings& settings) {
  std::vector<double> conditions;
  VisitCellStencils(partition, SpreadSample(partition.mesh()->NInnerCells), settings, "/dev/null",
                    [&conditions](int, const CellStencil& stencil) {
                      conditions.push_back(ConditionEstimate(stencil.matrix, stencil.Order()));
                    });
  return conditions;
}

std::vector<double> FaceConditions(HostPartition& partition, const InterpolationSettings& settings) {
  const StdoutToFile silence("/dev/null");
  const FaceSystems systems(partition, FaceGroup::Inner, settings);
  std::vector<double> conditions;
  for (const int f : SpreadSample(systems.faces().count)) {
    if (systems.isByNormal()) {
      for (const auto side : {FaceSystems::kP, FaceSystems::kE})
        conditions.push_back(systems.SideOf(f, side).condition);
    } else {
      conditions.push_back(systems.ConditionOf(f));
    }
  }
  return conditions;
}

std::vector<double> PointConditions(HostPartition& partition, UsableCells& usable, const PointSet& points,
                                    const InterpolationSettings& settings) {
  PointSet chosen;
  chosen.x = chosen.y = chosen.z = {0.0};  // the operator counts from 1
  for (const int i : SpreadSample(static_cast<int>(points.size()))) {
    const auto k = static_cast<std::size_t>(i) - 1;
    chosen.x.push_back(points.x[k]);
    chosen.y.push_back(points.y[k]);
    chosen.z.push_back(points.z[k]);
  }
  const int nPoints = static_cast<int>(chosen.size()) - 1;
  if (nPoints == 0) return {};

  const TemporaryFolder folder;
  partition.SetBaseFileName(WriteSettingsText(folder.path() + "/settings.rbf", PointSettingsText(settings)));
  const StdoutToFile silence("/dev/null");
  CZynIBRBFInternalObject op;
  op.getZyn3dGV(partition.globals(), nullptr, nullptr, partition.mesh());
  op.getPartitionFace(partition.partitionFaces());
  op.Initialize_IBInterpolateData(usable.mark.data(), nPoints, chosen.x.data(), chosen.y.data(),
                                  chosen.z.data());
  std::vector<double> conditions;
  for (int i = 1; i <= nPoints; ++i) conditions.push_back(ConditionOfPoint(op, *partition.mesh(), i));
  return conditions;
}

}  // namespace zyngrad
