#include "cli/compare_ranks/RankComparison.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>
#include <numeric>
#include <ostream>

#include "cli/base/TextTable.h"
#include "cli/systems/SpanRange.h"

namespace zyngrad {
namespace {

using Align = TextTable::Align;
using reference_host::Point;

/// Compares bit by bit, so that NaN equals NaN.
bool SameBits(std::vector<Point> const& a, std::vector<Point> const& b) {
  return a.size() == b.size() &&
         (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(Point)) == 0);
}

/// Length of the difference; 0 for the same bits, infinity instead of NaN.
double DifferenceOf(Point const& a, Point const& b) {
  if (std::memcmp(a.data(), b.data(), a.size() * sizeof(double)) == 0) return 0.0;
  double const dx = a[0] - b[0], dy = a[1] - b[1], dz = a[2] - b[2];
  double const length = std::sqrt(dy * dy + dx * dx + dz * dz);
  return std::isnan(length) ? std::numeric_limits<double>::infinity() : length;
}

bool IsFinite(Point const& item) {
  return std::all_of(item.begin(), item.end(), [](double value) { return std::isfinite(value); });
}

/// Cube root of the mean cell volume, L, as if the mesh filled its bounding box.
double SpacingOf(WholeMesh const& mesh) {
  Point low = mesh.faces.points.front(), high = low;
  for (Point const& point : mesh.faces.points) {
    for (std::size_t d = 0; d < point.size(); ++d) {
      low[d] = std::min(low[d], point[d]);
      high[d] = std::max(high[d], point[d]);
    }
  }
  double const volume = (high[0] - low[0]) * (high[1] - low[1]) * (high[2] - low[2]);
  return std::cbrt(volume / mesh.nCells());
}

RankDifference Compare(RankResult const& reference, RankResult const& result, RankResult const& again,
                       RankLevel const& level, std::vector<int> const& layers) {
  RankDifference difference;
  difference.level = level.name;
  difference.notRun = result.notRun.empty() ? reference.notRun : result.notRun;
  if (!difference.notRun.empty()) return difference;
  difference.isRepeatable = SameBits(result.item, again.item);
  for (std::size_t i = 0; i < layers.size(); ++i) {
    if (reference.isThere[i] == 0 || result.isThere[i] == 0) continue;
    auto const layer = static_cast<std::size_t>(layers[i]);
    if (!IsFinite(reference.item[i]) || !IsFinite(result.item[i])) ++difference.nNotFinite;
    double const delta = DifferenceOf(reference.item[i], result.item[i]);
    ++difference.nItems[layer];
    difference.largest[layer] = std::max(difference.largest[layer], delta);
    // A level of NaN, from a singular system, promises nothing.
    if (delta > 0.0 && !std::isnan(level.atItem[i]))
      difference.worstRatio = std::max(difference.worstRatio, delta / level.atItem[i]);
  }
  return difference;
}

/// A face is as far from the cuts as the nearer of its cells.
std::vector<int> LayersOfFaces(reference_host::FaceMesh const& mesh, std::vector<int> const& ofCells) {
  std::vector<int> layers(mesh.owner.size(), kLastLayer);
  for (std::size_t f = 0; f < layers.size(); ++f) {
    layers[f] = ofCells[static_cast<std::size_t>(mesh.owner[f])];
    if (mesh.neighbour[f] >= 0)
      layers[f] = std::min(layers[f], ofCells[static_cast<std::size_t>(mesh.neighbour[f])]);
  }
  return layers;
}

/// The distance of each cell from the nearest cut of either division.
std::vector<int> NearestLayers(WholeMesh const& mesh, int nRanks, int nReference) {
  std::vector<int> layers = LayersFromCuts(mesh.faces, mesh.PartOfCell(nRanks));
  if (nReference == 1) return layers;
  std::vector<int> const other = LayersFromCuts(mesh.faces, mesh.PartOfCell(nReference));
  for (std::size_t c = 0; c < layers.size(); ++c) layers[c] = std::min(layers[c], other[c]);
  return layers;
}

}  // namespace

std::vector<RankComparison> CompareRankCounts(WholeMesh const& mesh, std::vector<int> const& counts,
                                              RankQuestion const& question) {
  std::vector<RankComparison> comparisons;
  std::vector<RankResult> reference;
  std::vector<RankLevel> levels;
  for (int const nRanks : counts) {
    std::vector<RankResult> const results = RunOnParts(mesh, nRanks, question, false);
    std::vector<RankResult> const again = RunOnParts(mesh, nRanks, question, true);
    if (reference.empty()) {
      reference = results;
      levels = LevelsOf(mesh, question, reference);
    }
    RankComparison comparison = {nRanks, counts.front(), {}};
    std::vector<int> const ofCells = NearestLayers(mesh, nRanks, counts.front());
    std::vector<int> const ofFaces = LayersOfFaces(mesh.faces, ofCells);
    for (std::size_t k = 0; k < results.size(); ++k) {
      bool const areFaces = question.cases[k].method->kind == StudyMethod::Kind::Faces;
      comparison.differences.push_back(
          Compare(reference[k], results[k], again[k], levels[k], areFaces ? ofFaces : ofCells));
      RankDifference& difference = comparison.differences.back();
      difference.method = Label(question.cases[k]);
      if (difference.nNotFinite > 0 && question.cases[k].method->TakesSpan())
        difference.whyNotFinite = WhyRadialBasisIsNotFinite(question.cases[k].span, SpacingOf(mesh));
    }
    comparisons.push_back(std::move(comparison));
  }
  return comparisons;
}

void PrintComparisons(std::ostream& out, std::vector<RankComparison> const& comparisons) {
  bool isFirst = true;
  for (RankComparison const& comparison : comparisons) {
    TextTable table({{"method", Align::Left},
                     {"promise", Align::Left},
                     {"beside a cut"},
                     {"1 cell away"},
                     {"2"},
                     {"3 or more"},
                     {"ratio to promise"},
                     {"second run", Align::Left},
                     {"", Align::Left}});
    for (RankDifference const& d : comparison.differences) {
      if (!d.notRun.empty()) continue;
      std::vector<std::string> row = {d.method, d.level};
      for (std::size_t layer = 0; layer < d.largest.size(); ++layer)
        row.push_back(d.nItems[layer] > 0 ? Scientific(d.largest[layer], 2) : "-");
      row.push_back(Scientific(d.worstRatio, 2));
      row.emplace_back(d.isRepeatable ? "same bits" : "different bits");
      row.emplace_back(d.KeepsItsPromise() ? "" : "BROKEN");
      table.AddRow(row);
    }
    out << (isFirst ? "" : "\n") << "largest differences on " << comparison.nRanks
        << (comparison.nRanks == 1 ? " rank" : " ranks") << " compared with " << comparison.nReference
        << ", by distance from the cuts\n\n";
    table.Print(out);
    for (RankDifference const& d : comparison.differences) {
      if (!d.notRun.empty()) out << "  " << d.method << ": not run: " << d.notRun << '\n';
      if (d.nNotFinite > 0) {
        out << "  " << d.method << ": not finite at " << Grouped(d.nNotFinite) << " of "
            << Grouped(std::accumulate(d.nItems.begin(), d.nItems.end(), std::int64_t{0})) << " places"
            << (d.whyNotFinite.empty() ? "" : ": " + d.whyNotFinite) << '\n';
      }
    }
    isFirst = false;
  }
}

}  // namespace zyngrad
