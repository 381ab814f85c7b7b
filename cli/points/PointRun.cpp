#include "cli/points/PointRun.h"

#include <cmath>
#include <cstddef>
#include <iostream>
#include <utility>

#include "cli/base/StdoutToFile.h"
#include "cli/base/Timing.h"
#include "cli/operators/WireOperator.h"

namespace zyngrad {
namespace {

constexpr int kLaterCalls = 3;

PointTimes SummariseTimes(Ranks const& ranks, double setUp, std::vector<double> const& calls, int nOwn) {
  std::vector<double> const later(calls.begin() + 1, calls.end());
  PointTimes times;
  times.setUp = ranks.Max(setUp);
  times.first = ranks.Max(calls.front());
  times.later = ranks.Max(Median(later));
  times.usPerPoint = ranks.Max(nOwn > 0 ? setUp * 1e6 / nOwn : 0.0);
  times.nsPerPoint = ranks.Max(nOwn > 0 ? Median(later) * 1e9 / nOwn : 0.0);
  return times;
}

bool IsRowFinite(CZynIBRBFInternalObject const& op, int i) {
  for (int k = 1; k <= op.m_ppIBConn[i][0]; ++k) {
    IBCnode const& slope = op.m_ppIBCoef[i][k];
    // A sum is finite only if all its terms are.
    if (!std::isfinite(op.m_ppIBValueCoef[i][k] + slope.x + slope.y + slope.z)) return false;
  }
  return true;
}

/// Collective. Gathers the entries [1..] of all ranks on the first rank, in the order of the points.
template <class T>
void InOrder(Ranks const& ranks, std::vector<std::int64_t> const& numbers, std::vector<T>& values) {
  values.erase(values.begin());
  std::vector<T> const gathered = ranks.GatherOnFirst(values);
  values.resize(gathered.size());
  for (std::size_t k = 0; k < gathered.size(); ++k)
    values[static_cast<std::size_t>(numbers[k])] = gathered[k];
}

}  // namespace

PointOperator::PointOperator(Ranks const& ranks, reference_host::LoadedMesh& mesh, UsableCells& usable,
                             PointSet const& points, std::vector<PointOwner> const& owners,
                             std::string logFile)
    : ranks_(ranks), logFile_(std::move(logFile)) {
  ranks.Together([&] { own_ = Select(points, owners, ranks.rank()); });
  StdoutToFile const log(logFile_);
  std::cout << own_.count() << " points" << std::endl;
  WireOperator(operator_, *mesh.partition, mesh.exchange.get());
  ranks.Barrier();
  Stopwatch const watch;
  if (own_.count() > 0) {
    operator_.Initialize_IBInterpolateData(usable.mark.data(), own_.count(), own_.x.data(), own_.y.data(),
                                           own_.z.data());
  }
  setUpSeconds_ = watch.Seconds();
}

PointOperator::OwnPoints PointOperator::Select(PointSet const& points, std::vector<PointOwner> const& owners,
                                               int rank) {
  OwnPoints own;
  for (std::size_t i = 0; i < points.size(); ++i) {
    if (owners[i].rank != rank) continue;
    own.number.push_back(static_cast<std::int64_t>(i));
    own.x.push_back(points.x[i]);
    own.y.push_back(points.y[i]);
    own.z.push_back(points.z[i]);
  }
  return own;
}

PointValues PointOperator::Room() const {
  PointValues values;
  ranks_.Together([&] {
    for (auto* column : {&values.value, &values.gx, &values.gy, &values.gz})
      column->assign(own_.number.size() + 1, 0.0);
  });
  return values;
}

void PointOperator::Multiply(std::vector<double>& field, PointValues& values) {
  if (own_.count() == 0) return;
  operator_.Multiply_IBRBFCoefficent(field.data(), values.value.data(), values.gx.data(), values.gy.data(),
                                     values.gz.data());
}

PointValues PointOperator::Apply(std::vector<double>& field) {
  PointValues values = Room();
  {
    StdoutToFile const log(logFile_);
    Multiply(field, values);
  }
  std::vector<std::int64_t> const numbers = ranks_.GatherOnFirst(own_.number);
  for (auto* column : {&values.value, &values.gx, &values.gy, &values.gz}) InOrder(ranks_, numbers, *column);
  return values;
}

PointValues PointOperator::Stencils() const {
  PointValues values;
  ranks_.Together([&] {
    values.members.assign(own_.number.size() + 1, 0);
    values.isRowFinite.assign(own_.number.size() + 1, 1);
    for (int i = 1; i <= own_.count(); ++i) {
      values.members[static_cast<std::size_t>(i)] = operator_.m_ppIBConn[i][0];
      values.isRowFinite[static_cast<std::size_t>(i)] = IsRowFinite(operator_, i) ? 1 : 0;
    }
  });
  std::vector<std::int64_t> const numbers = ranks_.GatherOnFirst(own_.number);
  for (auto* column : {&values.members, &values.isRowFinite}) InOrder(ranks_, numbers, *column);
  return values;
}

PointTimes PointOperator::TimeCalls(std::vector<double>& field) {
  PointValues values = Room();
  std::vector<double> seconds;
  StdoutToFile const log(logFile_);
  for (int call = 0; call < 1 + kLaterCalls; ++call) {
    ranks_.Barrier();
    Stopwatch const watch;
    Multiply(field, values);
    seconds.push_back(watch.Seconds());
  }
  return SummariseTimes(ranks_, setUpSeconds_, seconds, own_.count());
}

PointRun RunPoints(Ranks const& ranks, reference_host::LoadedMesh& mesh, UsableCells& usable,
                   PointSet const& points, std::vector<PointOwner> const& owners, std::vector<double>& field,
                   std::string const& logFile) {
  PointOperator op(ranks, mesh, usable, points, owners, logFile);
  PointRun run;
  run.times = op.TimeCalls(field);
  run.values = op.Apply(field);
  PointValues stencils = op.Stencils();
  run.values.members = std::move(stencils.members);
  run.values.isRowFinite = std::move(stencils.isRowFinite);
  return run;
}

}  // namespace zyngrad
