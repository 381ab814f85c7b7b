#include "cli/study/StudySeries.h"

#include <cstddef>
#include <cstdint>

#include "cli/base/OneLine.h"
#include "cli/base/UsageError.h"
#include "reference_host/box/BoxMesh.h"

namespace zyngrad {
namespace {

constexpr int kLevels = 4;

/// The box with `factor` times as many cubes in every direction.
std::string RefinedBox(std::string const& text, std::int64_t factor) {
  reference_host::BoxSpec const spec = reference_host::ParseBoxSpec(text);
  auto const times = [factor](int n) { return std::to_string(n * factor); };
  std::size_t const counts = text.find(':') + 1;
  std::size_t const rest = text.find(':', counts);
  return text.substr(0, counts) + times(spec.nx) + ',' + times(spec.ny) + ',' + times(spec.nz) +
         (rest == std::string::npos ? "" : text.substr(rest));
}

std::string NamesOfSeries() {
  std::string names;
  for (NamedSeries const& series : NamedStudySeries()) names += std::string(series.name) + ", ";
  return names;
}

}  // namespace

std::vector<NamedSeries> const& NamedStudySeries() {
  static std::vector<NamedSeries> const series = {
      {"hex", "orthogonal hexahedra", "box:6,6,6:hex", kLevels},
      {"perturbed", "hexahedra with nodes moved at random", "box:6,6,6:hex:perturb=0.25,seed=1", kLevels},
      {"tet", "tetrahedra", "box:3,3,3:tet", kLevels},
      {"prism", "prisms", "box:4,4,4:prism", kLevels},
      {"stretched", "hexahedra growing from an aspect of 1000 at one wall", "box:6,6,6:hex:stretch=1000",
       kLevels},
      {"skewed", "hexahedra in a strongly skewed smooth mapping", "box:6,6,6:hex:skew=0.25", kLevels},
      {"polyhedra", "polyhedra of 14 faces", "box:5,5,5:dual", kLevels},
  };
  return series;
}

std::vector<std::string> MeshesOfSeries(std::string const& series, int nLevels) {
  std::string first = series;
  int nDefault = kLevels;
  for (NamedSeries const& named : NamedStudySeries()) {
    if (series != named.name) continue;
    first = named.firstMesh;
    nDefault = named.nLevels;
  }
  if (!reference_host::IsBoxSpec(first))
    throw UsageError("--series " + Quoted(series) + ": expected " + NamesOfSeries() + "or a box:...");
  std::vector<std::string> meshes;
  std::int64_t factor = 1;
  for (int level = 0; level < (nLevels > 0 ? nLevels : nDefault); ++level, factor *= 2) {
    meshes.push_back(RefinedBox(first, factor));
    reference_host::ParseBoxSpec(meshes.back());  // throws if the counts are too large
  }
  return meshes;
}

}  // namespace zyngrad
