#include "cli/faces/FaceFiles.h"

#include <cstddef>
#include <cstdint>
#include <utility>

#include "cli/vtk/UsedNodes.h"
#include "cli/vtk/VtpFile.h"

namespace zyngrad {
namespace {

VtpSurface PolygonsOf(CZYN3DFiniteVolumeMesh const& mesh, TargetedFaces const& faces) {
  VtpSurface surface;
  UsedNodes nodes(mesh, surface.points);
  for (int f = 1; f <= faces.count; ++f) {
    int const* row = faces.nodes[f];
    for (int k = 1; k <= row[0]; ++k) surface.connectivity.push_back(nodes.Number(row[k]));
    surface.offsets.push_back(static_cast<std::int64_t>(surface.connectivity.size()));
  }
  return surface;
}

/// The entries 1..n of a 1-based array.
template <class T>
std::vector<T> WithoutFirst(std::vector<T> const& values) {
  return {values.begin() + 1, values.end()};
}

/// What the operator says of each face, and where it is.
void AddRows(Ranks const& ranks, reference_host::HostPartition const& partition, TargetedFaces const& faces,
             FaceRows const& rows, std::vector<VtkArray>& arrays) {
  auto const nFaces = static_cast<std::size_t>(faces.count);
  std::vector<std::int64_t> cell(nFaces);
  for (std::size_t f = 1; f <= nFaces; ++f)
    cell[f - 1] = partition.globalCell()[static_cast<std::size_t>(faces.cv[f])];
  arrays.push_back({"weight_sum", 1, WithoutFirst(rows.rowSum)});
  arrays.push_back({"members", 1, std::vector<std::int32_t>(rows.members.begin() + 1, rows.members.end())});
  arrays.push_back({"rank", 1, std::vector<std::int32_t>(nFaces, ranks.rank())});
  arrays.push_back({"cell", 1, std::move(cell)});
}

}  // namespace

SeriesFiles FacesFiles(Ranks const& ranks, std::vector<std::string> const& times) {
  return {ranks, "faces", "vtp", times};
}

std::vector<VtkArray> FormulaArrays(std::vector<double> const& value, std::vector<double> const& exact) {
  std::vector<double> error;
  for (std::size_t f = 1; f < value.size(); ++f) error.push_back(value[f] - exact[f]);
  return {
      {"value", 1, WithoutFirst(value)}, {"exact", 1, WithoutFirst(exact)}, {"error", 1, std::move(error)}};
}

VtkArray FieldArray(std::string const& name, std::vector<std::vector<double>> const& components) {
  std::vector<double> values;
  for (std::size_t f = 1; f < components.front().size(); ++f)
    for (std::vector<double> const& component : components) values.push_back(component[f]);
  return {name, static_cast<int>(components.size()), std::move(values)};
}

void StageFaces(Ranks const& ranks, reference_host::HostPartition& partition, TargetedFaces const& faces,
                FaceRows const& rows, std::vector<VtkArray> arrays, PieceFiles const& files,
                OutputFolder& folder) {
  ranks.Together([&] {
    AddRows(ranks, partition, faces, rows, arrays);
    WritePolygons(folder.Stage(files.Own()), PolygonsOf(*partition.mesh(), faces), arrays);
    if (ranks.IsFirst() && !files.IsAlone()) WritePvtp(folder.Stage(files.Index()), arrays, files.Pieces());
  });
}

}  // namespace zyngrad
