#include "cli/gradient/GradientFiles.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "cli/vtk/PartitionGrid.h"
#include "cli/vtk/PieceFiles.h"

namespace zyngrad {
namespace {

using reference_host::HostPartition;

/// The entries 1..nCells of a 1-based array.
template <class T>
std::vector<T> WithoutFirst(std::vector<T> const& values, int nCells) {
  return {values.begin() + 1, values.begin() + 1 + nCells};
}

/// The vectors or, with three gradients, the tensors of the cells: d/dx, d/dy, d/dz of the first component, then of the
/// second and of the third.
VtkArray ArrayOf(std::string const& name, std::vector<std::vector<double> const*> const& columns,
                 int nCells) {
  std::vector<double> values;
  values.reserve(columns.size() * static_cast<std::size_t>(nCells));
  for (std::size_t c = 1; c <= static_cast<std::size_t>(nCells); ++c)
    for (std::vector<double> const* const column : columns) values.push_back((*column)[c]);
  VtkArray array = {name, static_cast<int>(columns.size()), std::move(values)};
  if (columns.size() == 9)
    array.componentNames = {"dux/dx", "dux/dy", "dux/dz", "duy/dx", "duy/dy",
                            "duy/dz", "duz/dx", "duz/dy", "duz/dz"};
  return array;
}

/// Of a scalar the length of the difference from the exact gradient, of a vector the Frobenius norm of that of the
/// tensors.
VtkArray ErrorArray(std::string const& name, std::vector<std::vector<double> const*> const& errors,
                    int nCells) {
  if (errors.size() == 1) return ArrayOf(name, errors, nCells);
  std::vector<double> norm;
  norm.reserve(static_cast<std::size_t>(nCells));
  for (std::size_t c = 1; c <= static_cast<std::size_t>(nCells); ++c) {
    double sum = 0.0;
    for (std::vector<double> const* const e : errors) sum += (*e)[c] * (*e)[c];
    norm.push_back(std::sqrt(sum));
  }
  return {name, 1, std::move(norm)};
}

std::string ArrayName(std::string const& prefix, std::string label) {
  std::replace(label.begin(), label.end(), '.', '_');
  return prefix + label;
}

/// "field", "field_2" of formulas; the name of a field from a file.
std::string FieldArrayName(GradientCase const& theCase, std::size_t k) {
  if (!theCase.fields[k].name.empty()) return theCase.fields[k].name;
  return theCase.fields.size() > 1 ? "field_" + std::to_string(k + 1) : "field";
}

void AddField(GradientCase const& theCase, std::size_t k, int nCells, std::vector<VtkArray>& arrays) {
  GradientField const& field = theCase.fields[k];
  std::vector<std::vector<double> const*> values, exact;
  for (TestField const& component : field.component) {
    values.push_back(&component.value);
    if (component.HasExactGradient())
      exact.insert(exact.end(), {&component.gx, &component.gy, &component.gz});
  }
  arrays.push_back(ArrayOf(FieldArrayName(theCase, k), values, nCells));
  if (exact.empty()) return;
  std::string const suffix = theCase.fields.size() > 1 ? "_" + std::to_string(k + 1) : "";
  arrays.push_back(ArrayOf("exact_gradient" + suffix, exact, nCells));
}

/// The gradients of a method: one array for each scalar and for each vector.
void AddGradients(GradientCase const& theCase, MethodResult const& result, int nCells,
                  std::vector<VtkArray>& arrays) {
  for (std::size_t i = 0; i < result.gradients.size();) {
    GradientResult const& first = result.gradients[i];
    GradientField const& field = theCase.fields[static_cast<std::size_t>(first.field)];
    std::string const name = field.name.empty() ? ArrayName("", first.label) : field.name + '_' + first.label;
    std::vector<std::vector<double> const*> columns, errors;
    for (std::size_t k = 0; k < field.component.size(); ++k) {
      GradientResult const& one = result.gradients[i + k];
      columns.insert(columns.end(), {&one.gradient.x, &one.gradient.y, &one.gradient.z});
      errors.push_back(&one.cellError);
    }
    arrays.push_back(ArrayOf("gradient_" + name, columns, nCells));
    if (!first.cellError.empty()) arrays.push_back(ErrorArray("error_" + name, errors, nCells));
    i += field.component.size();
  }
}

std::vector<VtkArray> CellData(Ranks const& ranks, HostPartition const& partition, int nCells,
                               GradientCase const& theCase, std::vector<MethodResult> const& results,
                               std::vector<VtkArray> more) {
  std::vector<VtkArray> arrays;
  for (std::size_t k = 0; k < theCase.fields.size(); ++k) AddField(theCase, k, nCells, arrays);
  for (MethodResult const& result : results) AddGradients(theCase, result, nCells, arrays);
  for (VtkArray& array : more) arrays.push_back(std::move(array));
  arrays.push_back({"rank", 1, std::vector<std::int32_t>(static_cast<std::size_t>(nCells), ranks.rank())});
  arrays.push_back({"cell", 1, WithoutFirst(partition.globalCell(), nCells)});
  return arrays;
}

SeriesFiles FilesOf(Ranks const& ranks, std::vector<std::string> const& times) {
  return {ranks, "gradient", "vtu", times};
}

}  // namespace

std::vector<std::string> GradientGridFiles(Ranks const& ranks, std::vector<std::string> const& times) {
  return FilesOf(ranks, times).All();
}

GradientGrid::GradientGrid(Ranks const& ranks, HostPartition& partition, OutputFolder& folder,
                           std::vector<std::string> const& times)
    : ranks_(ranks), partition_(partition), folder_(folder), files_(FilesOf(ranks, times)) {}

void GradientGrid::Stage(std::size_t time, GradientCase const& theCase,
                         std::vector<MethodResult> const& results, std::vector<VtkArray> more) {
  PieceFiles const files = files_.At(time);
  ranks_.Together([&] {
    if (!grid_) grid_ = GridOfInteriorCells(*partition_.mesh());
    int const nCells = partition_.mesh()->NInnerCells;
    std::vector<VtkArray> const arrays =
        CellData(ranks_, partition_, nCells, theCase, results, std::move(more));
    WriteVtu(folder_.Stage(files.Own()), *grid_, arrays);
    if (ranks_.IsFirst() && !files.IsAlone()) WritePvtu(folder_.Stage(files.Index()), arrays, files.Pieces());
  });
}

std::string GradientGrid::StageIndex() {
  ranks_.Together([&] {
    if (ranks_.IsFirst() && files_.IsSeries()) files_.WriteIndex(folder_.Stage(files_.Index()));
  });
  return files_.Index();
}

}  // namespace zyngrad
