#include "cli/gradient/GradientRun.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iostream>

#include "cli/base/StdoutToFile.h"
#include "cli/base/TextTable.h"
#include "cli/base/Timing.h"
#include "cli/operators/InitializeGradient.h"
#include "cli/operators/WireOperator.h"
#include "cli/output/MeshScale.h"
#include "cli/systems/SpanRange.h"

namespace zyngrad {
namespace {

MethodData MakeData(Ranks const& ranks, int nCell, GradientMethod const& method, GradientCase& theCase) {
  MethodData data;
  ranks.Together([&] {
    std::size_t const length = static_cast<std::size_t>(nCell) + 1;
    for (std::size_t k = 0; k < static_cast<std::size_t>(method.nFields); ++k) {
      // A single field serves as all three components.
      data.field[k] = &theCase.fields[std::min(k, theCase.fields.size() - 1)].value;
      for (auto* component : {&data.gradient[k].x, &data.gradient[k].y, &data.gradient[k].z}) {
        component->assign(length, 0.0);
      }
    }
    data.weight = theCase.weight;
  });
  data.nSweeps = theCase.nSweeps;
  return data;
}

/// @return whether every rank's set-up succeeded
bool SetUp(Ranks const& ranks, reference_host::LoadedMesh& mesh, GradientMethod const& method,
           COperatorGradient& op, double& seconds) {
  WireOperator(op, *mesh.partition, mesh.exchange.get(), mesh.reduction.get());
  ranks.Barrier();
  Stopwatch const watch;
  bool const isReady = InitializeGradient(op, method.gradientType);
  seconds = ranks.Max(watch.Seconds());
  return isReady;
}

/// This rank's times of the first call and of each later one.
std::vector<double> TimeCalls(Ranks const& ranks, GradientMethod const& method, COperatorGradient& op,
                              MethodData& data, int nCalls) {
  std::vector<double> seconds;
  for (int call = 0; call < nCalls; ++call) {
    ranks.Barrier();
    Stopwatch const watch;
    method.run(op, data);
    seconds.push_back(watch.Seconds());
  }
  return seconds;
}

void Summarise(Ranks const& ranks, std::vector<double> const& ownSeconds, int nInnerCells,
               MethodTimes& times) {
  std::vector<double> const later(ownSeconds.begin() + 1, ownSeconds.end());
  times.nsPerCell = ranks.Max(nInnerCells > 0 ? Median(later) * 1e9 / nInnerCells : 0.0);
  std::vector<double> slowest;
  slowest.reserve(ownSeconds.size());
  for (double const own : ownSeconds) slowest.push_back(ranks.Max(own));
  times.first = slowest.front();
  times.later = Median({slowest.begin() + 1, slowest.end()});
}

void EvaluateGradients(Ranks const& ranks, reference_host::HostPartition& partition,
                       GradientCase const& theCase, MethodData& data, MethodResult& result) {
  std::size_t const nGiven = theCase.fields.size();
  std::size_t const nGradients = std::min(static_cast<std::size_t>(result.method->nFields), nGiven);
  for (std::size_t k = 0; k < nGradients; ++k) {
    GradientResult one;
    one.label = result.method->name;
    if (nGradients > 1) one.label += '.' + std::to_string(k + 1);
    one.field = static_cast<int>(k);
    one.gradient = std::move(data.gradient[k]);
    if (theCase.fields[k].HasExactGradient()) {
      ranks.Together([&] { one.cellError = CellErrors(theCase.fields[k], one.gradient); });
      one.errors =
          SummariseErrors(ranks, partition, one.cellError, theCase.isBoundaryCell, theCase.exactL2[k]);
    } else {
      one.sizes = MeasureGradient(ranks, partition, one.gradient, theCase.isBoundaryCell);
    }
    result.gradients.push_back(std::move(one));
  }
}

/// Collective.
double LargestValue(Ranks const& ranks, std::vector<TestField> const& fields) {
  double largest = 0.0;
  for (TestField const& field : fields)
    for (std::size_t c = 1; c < field.value.size(); ++c)
      largest = std::max(largest, std::fabs(field.value[c]));
  return ranks.Max(largest);
}

/// Collective.
std::string WhyNotFinite(Ranks const& ranks, reference_host::HostPartition& partition,
                         GradientCase const& theCase, GradientMethod const& method) {
  constexpr double kHuge =
      1e290;  // sums of products with areas and distances then come close to the largest number
  double const largest = LargestValue(ranks, theCase.fields);
  double const length = MeanCellDistance(ranks, partition);
  if (largest > kHuge)
    return "the field's values reach " + Scientific(largest, 2) + ", so that their sums overflow";
  if (method.gradientType == kRadialBasisType)
    return WhyRadialBasisIsNotFinite(theCase.radialBasis.span, length);
  return "zyngrad check shows what is wrong with these cells";
}

/// Collective. Whether the weight is the same everywhere, so that it has no effect.
bool IsWeightConstant(Ranks const& ranks, std::vector<double> const& weight) {
  if (weight.size() < 2) return true;
  auto const [least, most] = std::minmax_element(weight.begin() + 1, weight.end());
  return ranks.Max(*most) == -ranks.Max(-*least);
}

/// Collective. Says why the numbers of a method equal those of another one, so that nobody looks for a difference.
void RemarkOnEqualNumbers(Ranks const& ranks, GradientCase const& theCase, MethodData const& data,
                          MethodResult& result) {
  if (std::string(result.method->name) == "weighted" && IsWeightConstant(ranks, data.weight))
    result.remarks.emplace_back(
        "the same numbers as plain, because the weight is the same in all cells (--weight)");
  if (result.method->nFields > 1 && theCase.fields.size() == 1)
    result.remarks.emplace_back("the same numbers as plain, because all three fields are the one given");
}

}  // namespace

std::int64_t MethodResult::NotFiniteCells() const {
  std::int64_t count = 0;
  for (GradientResult const& one : gradients) {
    GradientErrors const& norms = NormsOf(one);
    count += norms.interior.nNotFinite + norms.boundary.nNotFinite;
  }
  return count;
}

GradientErrors const& NormsOf(GradientResult const& one) { return one.sizes ? one.sizes->norms : one.errors; }

MethodResult RunMethod(Ranks const& ranks, reference_host::LoadedMesh& mesh, GradientMethod const& method,
                       GradientCase& theCase) {
  reference_host::HostPartition& partition = *mesh.partition;
  MethodResult result;
  result.method = &method;
  MethodData data = MakeData(ranks, partition.mesh()->NCell, method, theCase);
  data.exchange = mesh.exchange.get();
  COperatorGradient op;
  {
    StdoutToFile const log(theCase.logFile);
    std::cout << "method " << method.name << std::endl;
    if (!SetUp(ranks, mesh, method, op, result.times.setUp)) {
      result.notRun = "its set-up failed";
      return result;
    }
    if (method.obstacle != nullptr) {
      if (auto const reason = method.obstacle(ranks, op, partition)) {
        result.notRun = *reason;
        return result;
      }
    }
    std::vector<double> const seconds = TimeCalls(ranks, method, op, data, 1 + theCase.nRepeat);
    Summarise(ranks, seconds, partition.mesh()->NInnerCells, result.times);
  }
  if (method.remarks != nullptr) result.remarks = method.remarks(ranks, partition, theCase.radialBasis);
  RemarkOnEqualNumbers(ranks, theCase, data, result);
  EvaluateGradients(ranks, partition, theCase, data, result);
  if (result.NotFiniteCells() > 0)
    result.whyNotFinite = WhyNotFinite(ranks, partition, theCase, method);
  else if (method.gradientType == kRadialBasisType)  // finite by accident, for example all zeros
    result.whyNotFinite = SpanOutOfRange(theCase.radialBasis.span, MeanCellDistance(ranks, partition));
  return result;
}

}  // namespace zyngrad
