#include "cli/gradient/GradientFiles.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "cli/vtk/PartitionGrid.h"
#include "cli/vtk/PieceFiles.h"
#include "cli/vtk/VtuFile.h"

namespace zyngrad {
namespace {

using reference_host::HostPartition;

/// The entries 1..nCells of a 1-based array.
template <class T>
std::vector<T> WithoutFirst(std::vector<T> const& values, int nCells) {
  return {values.begin() + 1, values.begin() + 1 + nCells};
}

VtkArray VectorArray(std::string const& name, std::vector<double> const& x, std::vector<double> const& y,
                     std::vector<double> const& z, int nCells) {
  std::vector<double> values;
  values.reserve(3 * static_cast<std::size_t>(nCells));
  for (std::size_t c = 1; c <= static_cast<std::size_t>(nCells); ++c)
    values.insert(values.end(), {x[c], y[c], z[c]});
  return {name, 3, std::move(values)};
}

std::string ArrayName(std::string const& prefix, std::string label) {
  std::replace(label.begin(), label.end(), '.', '_');
  return prefix + label;
}

std::vector<VtkArray> CellData(Ranks const& ranks, HostPartition const& partition, int nCells,
                               GradientCase const& theCase, std::vector<MethodResult> const& results) {
  std::vector<VtkArray> arrays;
  for (std::size_t k = 0; k < theCase.fields.size(); ++k) {
    std::string const suffix = theCase.fields.size() > 1 ? "_" + std::to_string(k + 1) : "";
    TestField const& field = theCase.fields[k];
    arrays.push_back({"field" + suffix, 1, WithoutFirst(field.value, nCells)});
    if (!field.HasExactGradient()) continue;
    arrays.push_back(VectorArray("exact_gradient" + suffix, field.gx, field.gy, field.gz, nCells));
  }
  for (MethodResult const& result : results) {
    for (GradientResult const& one : result.gradients) {
      GradientArrays const& g = one.gradient;
      arrays.push_back(VectorArray(ArrayName("gradient_", one.label), g.x, g.y, g.z, nCells));
      if (one.cellError.empty()) continue;
      arrays.push_back({ArrayName("error_", one.label), 1, WithoutFirst(one.cellError, nCells)});
    }
  }
  arrays.push_back({"rank", 1, std::vector<std::int32_t>(static_cast<std::size_t>(nCells), ranks.rank())});
  arrays.push_back({"cell", 1, WithoutFirst(partition.globalCell(), nCells)});
  return arrays;
}

PieceFiles FilesOf(Ranks const& ranks) { return {ranks, "gradient", "vtu"}; }

}  // namespace

std::vector<std::string> GradientGridFiles(Ranks const& ranks) { return FilesOf(ranks).All(); }

std::string StageGradientGrid(Ranks const& ranks, HostPartition& partition, GradientCase const& theCase,
                              std::vector<MethodResult> const& results, OutputFolder& folder) {
  PieceFiles const files = FilesOf(ranks);
  ranks.Together([&] {
    int const nCells = partition.mesh()->NInnerCells;
    std::vector<VtkArray> const arrays = CellData(ranks, partition, nCells, theCase, results);
    WriteVtu(folder.Stage(files.Own()), GridOfInteriorCells(*partition.mesh()), arrays);
    if (ranks.IsFirst() && !files.IsAlone()) WritePvtu(folder.Stage(files.Index()), arrays, files.Pieces());
  });
  return files.Index();
}

}  // namespace zyngrad
