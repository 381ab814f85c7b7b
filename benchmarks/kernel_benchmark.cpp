// Times of the kernels' powers and of the radial-basis systems that are filled with them, with the instructions of this
// processor, without AVX2 and FMA, and beside std::pow and plain products.
//
//   kernel_benchmark
//
// Prints lines for run.sh: see Report.h.

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "benchmarks/ProcessMeasures.h"
#include "benchmarks/Report.h"
#include "foundation/DQKernel.h"
#include "foundation/DQMatrix.h"
#include "foundation/Power.h"
#include "foundation/Processor.h"

namespace {

using benchmarks::ProcessorSeconds;
using benchmarks::Report;

using Run = std::function<void()>;
using Variants = std::vector<std::pair<std::string, Run>>;

/// The least time of a run of each variant, ns. The variants take turns, so that all of them meet the same disturbances.
std::map<std::string, double> Times(Variants const& variants, int nRun) {
  std::map<std::string, double> least;
  for (int round = 0; round < 50; ++round) {
    for (auto const& [name, run] : variants) {
      double const start = ProcessorSeconds();
      for (int i = 0; i < nRun; ++i) run();
      double const time = (ProcessorSeconds() - start) / nRun * 1e9;
      auto const known = least.emplace(name, time).first;
      known->second = std::min(known->second, time);
    }
  }
  return least;
}

/// `run`, and the same without AVX2 and FMA.
Variants OnBothProcessors(Run const& run) {
  return {{"this processor", run}, {"without AVX2 and FMA", [run] {
                                      processor::TakenForPlain const plain;
                                      run();
                                    }}};
}

std::vector<double> Bases(int n) {
  std::mt19937_64 random(1);
  std::uniform_real_distribution<double> base(0.99, 1.0);
  std::vector<double> bases;
  for (int i = 0; i < n; ++i) bases.push_back(base(random));
  return bases;
}

/// As many as a block of a matrix has.
void TimePowers() {
  constexpr int kNumbers = 128;
  std::vector<double> const bases = Bases(kNumbers);
  std::vector<double> powers(bases);
  Variants variants = OnBothProcessors([&] {
    std::copy(bases.begin(), bases.end(), powers.begin());
    RaiseToPower<6>(powers.data(), kNumbers);
  });
  variants.emplace_back("one at a time",
                        [&] { std::transform(bases.begin(), bases.end(), powers.begin(), Power<6>); });
  variants.emplace_back("std::pow", [&] {
    std::transform(bases.begin(), bases.end(), powers.begin(), [](double x) { return std::pow(x, 6.0); });
  });
  variants.emplace_back("products", [&] {
    std::transform(bases.begin(), bases.end(), powers.begin(),
                   [](double x) { return (x * x * x) * (x * x * x); });
  });
  for (auto const& [name, time] : Times(variants, 200)) Report("powers", "x^6", name, time / kNumbers, 2);
}

void TimeSystems() {
  for (int const n : {7, 14, 20, 60}) {
    std::vector<double> const coordinates = Bases(3 * n);
    std::vector<DQVector> points;
    for (std::size_t k = 0; k < coordinates.size(); k += 3)
      points.push_back({coordinates[k], coordinates[k + 1], coordinates[k + 2]});
    std::vector<double> matrix(static_cast<std::size_t>(n) * static_cast<std::size_t>(n)),
        columns(4 * points.size());
    PlainDQKernel const kernel(500.0, 0.02);
    Variants const variants = OnBothProcessors([&] {
      FillKernelMatrix(kernel, points.data(), n, matrix.data(), n);
      FillGradientAndValueColumns(kernel, points.data(), n, points[0], columns.data());
    });
    for (auto const& [name, time] : Times(variants, 20000 / n))
      Report("systems", "order " + std::to_string(n), name, time, 0);
  }
}

}  // namespace

int main() {
  TimePowers();
  TimeSystems();
}
