#include "benchmarks/MemoryRates.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <vector>

namespace benchmarks {

namespace {

constexpr std::size_t kElements = std::size_t{1} << 25;  // 256 MiB an array
constexpr int kPasses = 7;

// Keeps a result alive without storing it anywhere that costs time.
double volatile sink;

double BestSeconds(std::function<void()> const& barrier, std::function<void()> const& pass) {
  double best = 1e300;
  for (int i = 0; i < kPasses; ++i) {
    barrier();
    auto const start = std::chrono::steady_clock::now();
    pass();
    std::chrono::duration<double> const elapsed = std::chrono::steady_clock::now() - start;
    best = std::min(best, elapsed.count());
  }
  return best;
}

// Eight partial sums, so that the additions do not wait for each other and only memory is measured.
double Sum(std::vector<double> const& a) {
  double sum[8] = {};
  for (std::size_t i = 0; i < a.size(); i += 8)
    for (std::size_t k = 0; k < 8; ++k) sum[k] += a[i + k];
  return sum[0] + sum[1] + sum[2] + sum[3] + sum[4] + sum[5] + sum[6] + sum[7];
}

}  // namespace

MemoryRates MeasureMemoryRates(std::function<void()> const& barrier) {
  std::vector<double> a(kElements, 1.0), b(kElements, 2.0), c(kElements, 3.0);
  double const n = static_cast<double>(kElements);
  MemoryRates rates;
  rates.read = 8 * n / BestSeconds(barrier, [&] { sink = Sum(a); });
  rates.update = 16 * n / BestSeconds(barrier, [&] {
                   for (double& x : a) x *= 1.0000001;
                   sink = a[kElements / 2];
                 });
  rates.triad = 32 * n / BestSeconds(barrier, [&] {
                  for (std::size_t i = 0; i < kElements; ++i) a[i] = b[i] + 0.5 * c[i];
                  sink = a[kElements / 2];
                });
  return rates;
}

double BoundSeconds(Traffic const& traffic, MemoryRates const& rates) {
  return std::max(traffic.read / rates.read, traffic.total() / rates.update);
}

}  // namespace benchmarks
