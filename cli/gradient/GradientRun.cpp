#include "cli/gradient/GradientRun.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iostream>
#include <limits>
#include <tuple>
#include <utility>

#include "cli/base/StdoutToFile.h"
#include "cli/base/TextTable.h"
#include "cli/base/Timing.h"
#include "cli/operators/InitializeGradient.h"
#include "cli/operators/WireOperator.h"
#include "cli/output/MeshScale.h"
#include "cli/systems/SpanRange.h"

namespace zyngrad {
namespace {

/// One component of one field of a case.
struct Component {
  std::size_t field, component;

  TestField& In(GradientCase& theCase) const { return theCase.fields[field].component[component]; }

  /// Its number, from 0, among the components of all fields.
  std::size_t NumberIn(GradientCase const& theCase) const {
    std::size_t number = component;
    for (std::size_t k = 0; k < field; ++k) number += theCase.fields[k].component.size();
    return number;
  }
};

/// The components that the calls of a method take, 1 or 3 different ones each.
std::vector<std::vector<Component>> CallsOf(GradientMethod const& method, GradientCase const& theCase) {
  std::vector<std::vector<Component>> calls;
  std::vector<Component> scalars;
  for (std::size_t k = 0; k < theCase.fields.size(); ++k) {
    bool const isVector = theCase.fields[k].IsVector();
    if (method.nFields == 1)
      for (std::size_t d = 0; d < theCase.fields[k].component.size(); ++d) calls.push_back({{k, d}});
    else if (isVector)
      calls.push_back({{k, 0}, {k, 1}, {k, 2}});
    else
      scalars.push_back({k, 0});
  }
  for (std::size_t k = 0; k < scalars.size(); k += 3)
    calls.emplace_back(scalars.begin() + static_cast<std::ptrdiff_t>(k),
                       scalars.begin() + static_cast<std::ptrdiff_t>(std::min(k + 3, scalars.size())));
  if (theCase.onlyFirst && method.nFields == 1) calls.resize(1);
  return calls;
}

/// Points the data to the fields of a call and clears the gradients. A call with fewer fields than the method takes
/// repeats the last one.
void PrepareCall(Ranks const& ranks, int nCell, std::vector<Component> const& call, GradientCase& theCase,
                 GradientMethod const& method, MethodData& data) {
  ranks.Together([&] {
    for (std::size_t k = 0; k < static_cast<std::size_t>(method.nFields); ++k) {
      data.field[k] = &call[std::min(k, call.size() - 1)].In(theCase).value;
      for (auto* component : {&data.gradient[k].x, &data.gradient[k].y, &data.gradient[k].z})
        component->assign(static_cast<std::size_t>(nCell) + 1, 0.0);
    }
  });
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

/// @param[in] ownSeconds  of the calls; if hasFirst, that of the first call stands in front
void Summarise(Ranks const& ranks, std::vector<double> const& ownSeconds, bool hasFirst, int nInnerCells,
               MethodTimes& times) {
  std::ptrdiff_t const nFirst = hasFirst ? 1 : 0;
  std::vector<double> const later(ownSeconds.begin() + nFirst, ownSeconds.end());
  times.nsPerCell = ranks.Max(nInnerCells > 0 ? Median(later) * 1e9 / nInnerCells : 0.0);
  std::vector<double> slowest;
  slowest.reserve(ownSeconds.size());
  for (double const own : ownSeconds) slowest.push_back(ranks.Max(own));
  times.first = hasFirst ? slowest.front() : std::numeric_limits<double>::quiet_NaN();
  times.later = Median({slowest.begin() + nFirst, slowest.end()});
}

std::string ComponentName(GradientField const& field, std::size_t component) {
  return field.IsVector() && !field.name.empty() ? field.name + '.' + "xyz"[component] : field.name;
}

/// Measures the gradients of one call and moves them to the result.
void TakeGradients(Ranks const& ranks, reference_host::HostPartition& partition, GradientCase& theCase,
                   std::vector<Component> const& call, MethodData& data, MethodResult& result) {
  for (std::size_t k = 0; k < call.size(); ++k) {
    TestField const& field = call[k].In(theCase);
    GradientResult one;
    one.label = result.method->name;
    one.field = static_cast<int>(call[k].field);
    one.component = static_cast<int>(call[k].component);
    one.fieldName = ComponentName(theCase.fields[call[k].field], call[k].component);
    if (one.fieldName.empty() && call.size() > 1) one.label += '.' + std::to_string(k + 1);
    one.gradient = std::move(data.gradient[k]);
    if (field.HasExactGradient()) {
      ranks.Together([&] { one.cellError = CellErrors(field, one.gradient); });
      one.errors = SummariseErrors(ranks, partition, one.cellError, theCase.isBoundaryCell,
                                   theCase.exactL2[call[k].NumberIn(theCase)]);
    } else {
      one.sizes = MeasureGradient(ranks, partition, one.gradient, theCase.isBoundaryCell);
    }
    result.gradients.push_back(std::move(one));
  }
}

/// Collective.
double LargestValue(Ranks const& ranks, std::vector<GradientField> const& fields) {
  double largest = 0.0;
  for (GradientField const& field : fields)
    for (TestField const& component : field.component)
      for (std::size_t c = 1; c < component.value.size(); ++c)
        largest = std::max(largest, std::fabs(component.value[c]));
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
void RemarkOnEqualNumbers(Ranks const& ranks, GradientCase const& theCase, GradientMethod const& method,
                          std::vector<std::string>& remarks) {
  if (std::string(method.name) == "weighted" && IsWeightConstant(ranks, theCase.weight))
    remarks.emplace_back("the same numbers as plain, because the weight is the same in all cells (--weight)");
  bool const isOneScalar = theCase.fields.size() == 1 && !theCase.fields.front().IsVector();
  if (method.nFields > 1 && isOneScalar)
    remarks.emplace_back("the same numbers as plain, because all three fields are the one given");
}

/// Collective.
std::vector<std::string> RemarksOn(Ranks const& ranks, reference_host::HostPartition& partition,
                                   GradientMethod const& method, GradientCase const& theCase) {
  std::vector<std::string> remarks;
  if (method.remarks != nullptr) remarks = method.remarks(ranks, partition, theCase.radialBasis);
  RemarkOnEqualNumbers(ranks, theCase, method, remarks);
  return remarks;
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

MethodRun::MethodRun(Ranks const& ranks, reference_host::LoadedMesh& mesh, GradientMethod const& method,
                     GradientCase const& theCase)
    : ranks_(ranks), mesh_(mesh), method_(method) {
  StdoutToFile const log(theCase.logFile);
  std::cout << "method " << method.name << std::endl;
  if (!SetUp(ranks, mesh, method, op_, setUpSeconds_)) {
    notRun_ = "its set-up failed";
  } else if (method.obstacle != nullptr) {
    notRun_ = method.obstacle(ranks, op_, *mesh.partition).value_or("");
  }
}

MethodResult MethodRun::Apply(GradientCase& theCase) {
  reference_host::HostPartition& partition = *mesh_.partition;
  MethodResult result;
  result.method = &method_;
  result.notRun = notRun_;
  result.times.setUp = setUpSeconds_;
  if (!notRun_.empty()) return result;

  int const nCell = partition.mesh()->NCell;
  MethodData data;
  ranks_.Together([&] { data.weight = theCase.weight; });
  data.nSweeps = theCase.nSweeps;
  data.exchange = mesh_.exchange.get();
  std::vector<double> seconds;
  for (std::vector<Component> const& call : CallsOf(method_, theCase)) {
    PrepareCall(ranks_, nCell, call, theCase, method_, data);
    {
      StdoutToFile const log(theCase.logFile);
      int const nCalls = isFirst_ && seconds.empty() ? 1 + theCase.nRepeat : 1;
      std::vector<double> const ofCall = TimeCalls(ranks_, method_, op_, data, nCalls);
      seconds.insert(seconds.end(), ofCall.begin(), ofCall.end());
    }
    TakeGradients(ranks_, partition, theCase, call, data, result);
  }
  Summarise(ranks_, seconds, isFirst_, partition.mesh()->NInnerCells, result.times);
  isFirst_ = false;

  std::sort(result.gradients.begin(), result.gradients.end(), [](auto const& a, auto const& b) {
    return std::tie(a.field, a.component) < std::tie(b.field, b.component);
  });
  if (!remarks_) remarks_ = RemarksOn(ranks_, partition, method_, theCase);
  result.remarks = *remarks_;
  if (result.NotFiniteCells() > 0)
    result.whyNotFinite = WhyNotFinite(ranks_, partition, theCase, method_);
  else if (method_.gradientType == kRadialBasisType)  // finite by accident, for example all zeros
    result.whyNotFinite = SpanOutOfRange(theCase.radialBasis.span, MeanCellDistance(ranks_, partition));
  return result;
}

MethodResult RunMethod(Ranks const& ranks, reference_host::LoadedMesh& mesh, GradientMethod const& method,
                       GradientCase& theCase) {
  return MethodRun(ranks, mesh, method, theCase).Apply(theCase);
}

}  // namespace zyngrad
