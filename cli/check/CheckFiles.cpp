#include "cli/check/CheckFiles.h"

#include <cstdint>
#include <utility>

#include "cli/check/CheckFindings.h"
#include "cli/vtk/PartitionGrid.h"
#include "cli/vtk/PieceFiles.h"
#include "cli/vtk/VtuFile.h"

namespace zyngrad {
namespace {

/// One measure, for each cell.
template <class T, class Measure>
VtkArray CellArray(std::string const& name, std::vector<CheckedSystem> const& cells, Measure const& measure) {
  std::vector<T> values;
  values.reserve(cells.size());
  for (CheckedSystem const& cell : cells) values.push_back(static_cast<T>(measure(cell)));
  return {name, 1, std::move(values)};
}

std::vector<VtkArray> CellData(int rank, std::vector<CheckedSystem> const& cells) {
  using Cell = CheckedSystem;
  return {
      CellArray<double>("condition", cells, [](Cell const& c) { return c.condition; }),
      CellArray<double>("row_sum_off", cells, [](Cell const& c) { return c.rowSum; }),
      CellArray<double>("skewness", cells, [](Cell const& c) { return c.skewness; }),
      CellArray<double>("non_orthogonality", cells, [](Cell const& c) { return c.nonOrthogonality; }),
      CellArray<double>("volume", cells, [](Cell const& c) { return c.volume; }),
      CellArray<std::int32_t>("members", cells, [](Cell const& c) { return c.members; }),
      CellArray<std::int32_t>("severity", cells, [](Cell const& c) { return SeverityOf(c.findings); }),
      CellArray<std::int32_t>("findings", cells, [](Cell const& c) { return c.findings; }),
      CellArray<std::int32_t>("rank", cells, [rank](Cell const&) { return rank; }),
      CellArray<std::int64_t>("cell", cells, [](Cell const& c) { return c.number; }),
  };
}

PieceFiles FilesOf(Ranks const& ranks) { return {ranks, "check", "vtu"}; }

}  // namespace

std::vector<std::string> CheckGridFiles(Ranks const& ranks) { return FilesOf(ranks).All(); }

std::string StageCheckGrid(Ranks const& ranks, reference_host::HostPartition& partition,
                           std::vector<CheckedSystem> const& cells, OutputFolder& folder) {
  PieceFiles const files = FilesOf(ranks);
  ranks.Together([&] {
    std::vector<VtkArray> const arrays = CellData(ranks.rank(), cells);
    WriteVtu(folder.Stage(files.Own()), GridOfInteriorCells(*partition.mesh()), arrays);
    if (ranks.IsFirst() && !files.IsAlone()) WritePvtu(folder.Stage(files.Index()), arrays, files.Pieces());
  });
  return files.Index();
}

}  // namespace zyngrad
