#include "cli/points/PointRun.h"

#include <cmath>
#include <cstddef>
#include <iostream>

#include "cli/base/StdoutToFile.h"
#include "cli/base/Timing.h"
#include "cli/operators/WireOperator.h"
#include "rbf_ib/CZynIBRBFInternalObject.h"

namespace zyngrad {
namespace {

constexpr int kLaterCalls = 3;

/// The points of this rank. Coordinates are [1..count]; the operator's report reads element 0.
struct OwnPoints {
  std::vector<std::int64_t> number;  ///< among all points, from 0
  std::vector<double> x = {0.0}, y = {0.0}, z = {0.0};

  int count() const { return static_cast<int>(number.size()); }
};

OwnPoints Select(PointSet const& points, std::vector<PointOwner> const& owners, int rank) {
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

double SetUp(Ranks const& ranks, reference_host::LoadedMesh& mesh, UsableCells& usable, OwnPoints& own,
             CZynIBRBFInternalObject& op) {
  WireOperator(op, *mesh.partition, mesh.exchange.get());
  ranks.Barrier();
  Stopwatch const watch;
  if (own.count() > 0) {
    op.Initialize_IBInterpolateData(usable.mark.data(), own.count(), own.x.data(), own.y.data(),
                                    own.z.data());
  }
  return watch.Seconds();
}

/// This rank's times of the first application and of each later one.
/// @param[out] values  [1..count of own points], overwritten
std::vector<double> TimeCalls(Ranks const& ranks, CZynIBRBFInternalObject& op, int nOwn,
                              std::vector<double>& field, PointValues& values) {
  std::vector<double> seconds;
  for (int call = 0; call < 1 + kLaterCalls; ++call) {
    ranks.Barrier();
    Stopwatch const watch;
    if (nOwn > 0) {
      op.Multiply_IBRBFCoefficent(field.data(), values.value.data(), values.gx.data(), values.gy.data(),
                                  values.gz.data());
    }
    seconds.push_back(watch.Seconds());
  }
  return seconds;
}

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

void ReadRows(CZynIBRBFInternalObject const& op, int nOwn, PointValues& values) {
  values.members.assign(static_cast<std::size_t>(nOwn) + 1, 0);
  values.isRowFinite.assign(static_cast<std::size_t>(nOwn) + 1, 1);
  for (int i = 1; i <= nOwn; ++i) {
    values.members[static_cast<std::size_t>(i)] = op.m_ppIBConn[i][0];
    values.isRowFinite[static_cast<std::size_t>(i)] = IsRowFinite(op, i) ? 1 : 0;
  }
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

void InOrder(Ranks const& ranks, OwnPoints const& own, PointValues& values) {
  std::vector<std::int64_t> const numbers = ranks.GatherOnFirst(own.number);
  for (auto* column : {&values.value, &values.gx, &values.gy, &values.gz}) InOrder(ranks, numbers, *column);
  for (auto* column : {&values.members, &values.isRowFinite}) InOrder(ranks, numbers, *column);
}

}  // namespace

PointRun RunPoints(Ranks const& ranks, reference_host::LoadedMesh& mesh, UsableCells& usable,
                   PointSet const& points, std::vector<PointOwner> const& owners, std::vector<double>& field,
                   std::string const& logFile) {
  PointRun run;
  OwnPoints own;
  ranks.Together([&] {
    own = Select(points, owners, ranks.rank());
    for (auto* column : {&run.values.value, &run.values.gx, &run.values.gy, &run.values.gz})
      column->assign(own.number.size() + 1, 0.0);
  });

  CZynIBRBFInternalObject op;
  StdoutToFile const log(logFile);
  std::cout << own.count() << " points" << std::endl;
  double const setUp = SetUp(ranks, mesh, usable, own, op);
  std::vector<double> const calls = TimeCalls(ranks, op, own.count(), field, run.values);
  run.times = SummariseTimes(ranks, setUp, calls, own.count());
  ranks.Together([&] { ReadRows(op, own.count(), run.values); });
  InOrder(ranks, own, run.values);
  return run;
}

}  // namespace zyngrad
