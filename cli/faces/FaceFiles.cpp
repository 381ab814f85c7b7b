#include "cli/faces/FaceFiles.h"

#include <cstddef>
#include <cstdint>

#include "cli/vtk/PieceFiles.h"
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

std::vector<VtkArray> FaceData(Ranks const& ranks, reference_host::HostPartition const& partition,
                               TargetedFaces const& faces, FaceRows const& rows,
                               std::vector<double> const& exact) {
  auto const nFaces = static_cast<std::size_t>(faces.count);
  std::vector<double> error(nFaces);
  std::vector<std::int64_t> cell(nFaces);
  for (std::size_t f = 1; f <= nFaces; ++f) {
    error[f - 1] = rows.value[f] - exact[f];
    cell[f - 1] = partition.globalCell()[static_cast<std::size_t>(faces.cv[f])];
  }
  return {{"value", 1, WithoutFirst(rows.value)},
          {"exact", 1, WithoutFirst(exact)},
          {"error", 1, error},
          {"weight_sum", 1, WithoutFirst(rows.rowSum)},
          {"members", 1, std::vector<std::int32_t>(rows.members.begin() + 1, rows.members.end())},
          {"rank", 1, std::vector<std::int32_t>(nFaces, ranks.rank())},
          {"cell", 1, cell}};
}

PieceFiles FilesOf(Ranks const& ranks) { return {ranks, "faces", "vtp"}; }

}  // namespace

std::vector<std::string> FacesFiles(Ranks const& ranks) { return FilesOf(ranks).All(); }

std::string StageFaces(Ranks const& ranks, reference_host::HostPartition& partition,
                       TargetedFaces const& faces, FaceRows const& rows, std::vector<double> const& exact,
                       OutputFolder& folder) {
  PieceFiles const files = FilesOf(ranks);
  ranks.Together([&] {
    std::vector<VtkArray> const arrays = FaceData(ranks, partition, faces, rows, exact);
    WritePolygons(folder.Stage(files.Own()), PolygonsOf(*partition.mesh(), faces), arrays);
    if (ranks.IsFirst() && !files.IsAlone()) WritePvtp(folder.Stage(files.Index()), arrays, files.Pieces());
  });
  return files.Index();
}

}  // namespace zyngrad
