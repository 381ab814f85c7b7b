#include "cli/faces/FaceRun.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <iostream>
#include <utility>

#include "cli/base/OneLine.h"
#include "cli/base/StdoutToFile.h"
#include "cli/base/TextTable.h"
#include "cli/base/Timing.h"
#include "cli/base/UsageError.h"
#include "cli/operators/WireOperator.h"

namespace zyngrad {
namespace {

constexpr int kLaterCalls = 3;

double SetUp(Ranks const& ranks, reference_host::LoadedMesh& mesh, FaceKind group,
             CZynFaceRBFInternalObject& op) {
  WireOperator(op, *mesh.partition, mesh.exchange.get());
  ranks.Barrier();
  Stopwatch const watch;
  op.Initialize_FaceInterpolateData(static_cast<int>(group));
  return watch.Seconds();
}

/// This rank's times of the first application and of each later one.
std::vector<double> TimeCalls(Ranks const& ranks, CZynFaceRBFInternalObject& op, std::vector<double>& field,
                              std::vector<double>& value, int nCalls) {
  // The operator clears three more arrays, which it does not fill.
  std::array<std::vector<double>, 3> cleared;
  for (auto& values : cleared) values.assign(value.size(), 0.0);
  std::vector<double> seconds;
  for (int call = 0; call < nCalls; ++call) {
    ranks.Barrier();
    Stopwatch const watch;
    op.Multiply_FaceRBFCoefficent(field.data(), value.data(), cleared[0].data(), cleared[1].data(),
                                  cleared[2].data());
    seconds.push_back(watch.Seconds());
  }
  return seconds;
}

FaceTimes SummariseTimes(Ranks const& ranks, double setUp, std::vector<double> const& calls, int nFaces) {
  std::vector<double> const later(calls.begin() + 1, calls.end());
  FaceTimes times;
  times.setUp = ranks.Max(setUp);
  times.first = ranks.Max(calls.front());
  times.later = ranks.Max(Median(later));
  times.usPerFace = ranks.Max(nFaces > 0 ? setUp * 1e6 / nFaces : 0.0);
  times.nsPerFace = ranks.Max(nFaces > 0 ? Median(later) * 1e9 / nFaces : 0.0);
  return times;
}

void ReadRows(CZynFaceRBFInternalObject const& op, int nFaces, FaceRows& rows) {
  rows.rowSum.assign(static_cast<std::size_t>(nFaces) + 1, 0.0);
  rows.members.assign(static_cast<std::size_t>(nFaces) + 1, 0);
  for (int f = 1; f <= nFaces; ++f) {
    int const n = op.m_ppFaceCellConn[f][0];
    double sum = 0.0;
    for (int k = 1; k <= n; ++k) sum += op.m_ppFaceFiCoef[f][k];
    rows.rowSum[static_cast<std::size_t>(f)] = sum;
    rows.members[static_cast<std::size_t>(f)] = n;
  }
}

}  // namespace

FaceOperator::FaceOperator(Ranks const& ranks, reference_host::LoadedMesh& mesh, FaceKind group,
                           std::string logFile)
    : ranks_(ranks), logFile_(std::move(logFile)) {
  int const nFaces = TargetedFacesOf(*mesh.partition, group).count;
  StdoutToFile const log(logFile_);
  std::cout << NameOf(group) << " faces" << std::endl;
  setUpSeconds_ = SetUp(ranks, mesh, group, op_);
  ranks.Together([&] { ReadRows(op_, nFaces, rows_); });
}

std::vector<double> FaceOperator::Apply(std::vector<double>& field) {
  std::vector<double> value;
  ranks_.Together([&] { value.assign(rows_.rowSum.size(), 0.0); });
  std::vector<double> calls;
  {
    StdoutToFile const log(logFile_);
    calls = TimeCalls(ranks_, op_, field, value, isFirst_ ? 1 + kLaterCalls : 1);
  }
  if (isFirst_) times_ = SummariseTimes(ranks_, setUpSeconds_, calls, static_cast<int>(value.size()) - 1);
  isFirst_ = false;
  return value;
}

FaceRun RunFaces(Ranks const& ranks, reference_host::LoadedMesh& mesh, FaceKind group,
                 std::vector<double>& field, std::string const& logFile) {
  FaceOperator op(ranks, mesh, group, logFile);
  FaceRun run;
  std::vector<double> value = op.Apply(field);
  run.rows = op.rows();
  run.rows.value = std::move(value);
  run.times = op.times();
  return run;
}

std::vector<double> ExactFaceValues(Ranks const& ranks, TargetedFaces const& faces, FaceKind group,
                                    Expression const& expression, int placeDigits) {
  std::vector<double> exact(static_cast<std::size_t>(faces.count) + 1, 0.0);
  ranks.Together([&] {
    for (int f = 1; f <= faces.count; ++f) {
      auto const [x, y, z] = faces.Target(f);
      double const value = expression.Value(x, y, z);
      if (!std::isfinite(value)) {
        throw UsageError("the field " + Quoted(expression.text()) + " is not finite at a face of the group " +
                         NameOf(group) + " at " + Place(x, y, z, placeDigits));
      }
      exact[static_cast<std::size_t>(f)] = value;
    }
  });
  return exact;
}

}  // namespace zyngrad
