#include "cli/GradientFiles.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "cli/PartitionGrid.h"
#include "cli/PieceFiles.h"
#include "cli/VtuFile.h"

namespace zyngrad {
namespace {

using reference_host::HostPartition;

/// The entries 1..nCells of a 1-based array.
template <class T>
std::vector<T> WithoutFirst(const std::vector<T>& values, int nCells) {
  return {values.begin() + 1, values.begin() + 1 + nCells};
}

VtkArray VectorArray(const std::string& name, const std::vector<double>& x, const std::vector<double>& y,
                     const std::vector<double>& z, int nCells) {
  std::vector<double> values;
  values.reserve(3 * static_cast<std::size_t>(nCells));
  for (std::size_t c = 1; c <= static_cast<std::size_t>(nCells); ++c)
    values.insert(values.end(), {x[c], y[c], z[c]});
  return {name, 3, std::move(values)};
}

std::string ArrayName(const std::string& prefix, std::string label) {
  std::replace(label.begin(), label.end(), '.', '_');
  return prefix + label;
}

std::vector<VtkArray> CellData(const Ranks& ranks, const HostPartition& partition, int nCells,
                               const GradientCase& theCase, const std::vector<MethodResult>& results) {
  std::vector<VtkArray> arrays;
  for (std::size_t k = 0; k < theCase.fields.size(); ++k) {
    const std::string suffix = theCase.fields.size() > 1 ? "_" + std::to_string(k + 1) : "";
    const TestField& field = theCase.fields[k];
    arrays.push_back({"field" + suffix, 1, WithoutFirst(field.value, nCells)});
    if (!field.HasExactGradient()) continue;
    arrays.push_back(VectorArray("exact_gradient" + suffix, field.gx, field.gy, field.gz, nCells));
  }
  for (const MethodResult& result : results) {
    for (const GradientResult& one : result.gradients) {
      const GradientArrays& g = one.gradient;
      arrays.push_back(VectorArray(ArrayName("gradient_", one.label), g.x, g.y, g.z, nCells));
      if (one.cellError.empty()) continue;
      arrays.push_back({ArrayName("error_", one.label), 1, WithoutFirst(one.cellError, nCells)});
    }
  }
  arrays.push_back({"rank", 1, std::vector<std::int32_t>(static_cast<std::size_t>(nCells), ranks.rank())});
  arrays.push_back({"cell", 1, WithoutFirst(partition.globalCell(), nCells)});
  return arrays;
}

PieceFiles FilesOf(const Ranks& ranks) { return {ranks, "gradient", "vtu"}; }

}  // namespace

std::vector<std::string> GradientGridFiles(const Ranks& ranks) { return FilesOf(ranks).All(); }

std::string StageGradientGrid(const Ranks& ranks, HostPartition& partition, const GradientCase& theCase,
                              const std::vector<MethodResult>& results, OutputFolder& folder) {
  const PieceFiles files = FilesOf(ranks);
  ranks.Together([&] {
    const int nCells = partition.mesh()->NInnerCells;
    const std::vector<VtkArray> arrays = CellData(ranks, partition, nCells, theCase, results);
    WriteVtu(folder.Stage(files.Own()), GridOfInteriorCells(*partition.mesh()), arrays);
    if (ranks.IsFirst() && !files.IsAlone()) WritePvtu(folder.Stage(files.Index()), arrays, files.Pieces());
  });
  return files.Index();
}

}  // namespace zyngrad
