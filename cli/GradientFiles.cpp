#include "cli/GradientFiles.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <utility>

#include "cli/PartitionGrid.h"
#include "cli/VtuFile.h"

namespace zyngrad {
namespace {

using reference_host::HostPartition;

/// The entries 1..nCells of a 1-based array.
template <class T>
std::vector<T> WithoutFirst(const std::vector<T>& values, int nCells) {
  return {values.begin() + 1, values.begin() + 1 + nCells};
}

VtuArray VectorArray(const std::string& name, const std::vector<double>& x, const std::vector<double>& y,
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

std::vector<VtuArray> CellData(const Ranks& ranks, const HostPartition& partition, int nCells,
                               const GradientCase& theCase, const std::vector<MethodResult>& results) {
  std::vector<VtuArray> arrays;
  for (std::size_t k = 0; k < theCase.fields.size(); ++k) {
    const std::string suffix = theCase.fields.size() > 1 ? "_" + std::to_string(k + 1) : "";
    const TestField& field = theCase.fields[k];
    arrays.push_back({"field" + suffix, 1, WithoutFirst(field.value, nCells)});
    arrays.push_back(VectorArray("exact_gradient" + suffix, field.gx, field.gy, field.gz, nCells));
  }
  for (const MethodResult& result : results) {
    for (const GradientResult& one : result.gradients) {
      const GradientArrays& g = one.gradient;
      arrays.push_back(VectorArray(ArrayName("gradient_", one.label), g.x, g.y, g.z, nCells));
      arrays.push_back({ArrayName("error_", one.label), 1, WithoutFirst(one.cellError, nCells)});
    }
  }
  arrays.push_back({"rank", 1, std::vector<std::int32_t>(static_cast<std::size_t>(nCells), ranks.rank())});
  arrays.push_back({"cell", 1, WithoutFirst(partition.globalCell(), nCells)});
  return arrays;
}

std::string PieceName(int rank) {
  char name[48];
  std::snprintf(name, sizeof name, "gradient/gradient.%04d.vtu", rank);
  return name;
}

/// Files of an earlier run on another number of ranks would show old results beside the new ones.
void DiscardOtherForm(const Ranks& ranks, OutputFolder& folder) {
  const bool isAlone = ranks.count() == 1;
  folder.Discard(isAlone ? "gradient.pvtu" : "gradient.vtu");
  for (int rank = isAlone ? 0 : ranks.count(); folder.Has(PieceName(rank)); ++rank)
    folder.Discard(PieceName(rank));
  if (isAlone) folder.Discard("gradient");  // goes only when empty
}

}  // namespace

std::string StageGradientGrid(const Ranks& ranks, HostPartition& partition, const GradientCase& theCase,
                              const std::vector<MethodResult>& results, OutputFolder& folder) {
  const bool isAlone = ranks.count() == 1;
  std::string index = isAlone ? "gradient.vtu" : "gradient.pvtu";
  if (!isAlone) folder.MakeSubfolder("gradient");
  ranks.Together([&] {
    const int nCells = partition.mesh()->NInnerCells;
    const std::vector<VtuArray> arrays = CellData(ranks, partition, nCells, theCase, results);
    WriteVtu(folder.Stage(isAlone ? index : PieceName(ranks.rank())), GridOfInteriorCells(*partition.mesh()),
             arrays);
    if (isAlone || !ranks.IsFirst()) return;
    std::vector<std::string> pieces;
    pieces.reserve(static_cast<std::size_t>(ranks.count()));
    for (int rank = 0; rank < ranks.count(); ++rank) pieces.push_back(PieceName(rank));
    WritePvtu(folder.Stage(index), arrays, pieces);
  });
  DiscardOtherForm(ranks, folder);
  return index;
}

}  // namespace zyngrad
