#include "cli/check/CheckPoints.h"

#include <cstddef>
#include <cstdint>
#include <iostream>

#include "cli/base/StdoutToFile.h"
#include "cli/check/CheckFindings.h"
#include "cli/check/SystemChecks.h"
#include "cli/faces/FaceErrors.h"
#include "cli/operators/TemporarySettings.h"
#include "cli/operators/WireOperator.h"
#include "cli/points/PointSystems.h"
#include "rbf_ib/CZynIBRBFInternalObject.h"

namespace zyngrad {
namespace {

using reference_host::HostPartition;

void CheckRows(CZynIBRBFInternalObject const& op, int i, CheckedSystem& point) {
  RowSum value, x, y, z;
  for (int k = 1; k <= point.members; ++k) {
    value.Add(op.m_ppIBValueCoef[i][k]);
    IBCnode const& slope = op.m_ppIBCoef[i][k];
    x.Add(slope.x);
    y.Add(slope.y);
    z.Add(slope.z);
  }
  CheckRowOfValue(value, kRowSumTolerance, point);
  for (RowSum const& row : {x, y, z}) CheckRowOfSlope(row, kRowSumTolerance, point);
}

}  // namespace

std::vector<CheckedSystem> CheckPoints(HostPartition& partition, UsableCells& usable, PointSet const& points,
                                       std::vector<PointOwner> const& owners, int rank,
                                       InterpolationSettings const& settings, std::string const& logFile) {
  PointSet own;
  own.x = own.y = own.z = {0.0};  // the operator counts from 1
  std::vector<CheckedSystem> systems;
  for (std::size_t i = 0; i < points.size(); ++i) {
    if (owners[i].rank != rank) continue;
    own.x.push_back(points.x[i]);
    own.y.push_back(points.y[i]);
    own.z.push_back(points.z[i]);
    CheckedSystem system;
    system.number = static_cast<std::int64_t>(i) + 1;
    system.at[0] = points.x[i], system.at[1] = points.y[i], system.at[2] = points.z[i];
    systems.push_back(system);
  }
  if (systems.empty()) return systems;

  TemporarySettings file(partition);
  file.Write(PointSettingsText(settings));
  StdoutToFile const log(logFile);
  std::cout << systems.size() << " points" << std::endl;
  CZynIBRBFInternalObject op;
  WireOperator(op, partition);
  op.Initialize_IBInterpolateData(usable.mark.data(), static_cast<int>(systems.size()), own.x.data(),
                                  own.y.data(), own.z.data());
  for (std::size_t k = 0; k < systems.size(); ++k) {
    int const i = static_cast<int>(k) + 1;
    systems[k].members = op.m_ppIBConn[i][0];
    CheckPlaces(NodesOfPoint(op, *partition.mesh(), i), systems[k]);
    CheckCondition(ConditionOfPoint(op, *partition.mesh(), i), systems[k]);
    CheckRows(op, i, systems[k]);
  }
  return systems;
}

}  // namespace zyngrad
