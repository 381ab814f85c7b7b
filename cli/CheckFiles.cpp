#include "cli/CheckFiles.h"

#include <cstdint>
#include <utility>

#include "cli/CheckFindings.h"
#include "cli/PartitionGrid.h"
#include "cli/PieceFiles.h"
#include "cli/VtuFile.h"

namespace zyngrad {
namespace {

/// One measure of each cell.
template <class T, class Measure>
VtkArray CellArray(const std::string& name, const std::vector<CheckedSystem>& cells, const Measure& measure) {
  std::vector<T> values;
  values.reserve(cells.size());
  for (const CheckedSystem& cell : cells) values.push_back(static_cast<T>(measure(cell)));
  return {name, 1, std::move(values)};
}

std::vector<VtkArray> CellData(int rank, const std::vector<CheckedSystem>& cells) {
  using Cell = CheckedSystem;
  return {
      CellArray<double>("condition", cells, [](const Cell& c) { return c.condition; }),
      CellArray<double>("row_sum_off", cells, [](const Cell& c) { return c.rowSum; }),
      CellArray<double>("skewness", cells, [](const Cell& c) { return c.skewness; }),
      CellArray<double>("non_orthogonality", cells, [](const Cell& c) { return c.nonOrthogonality; }),
      CellArray<double>("volume", cells, [](const Cell& c) { return c.volume; }),
      CellArray<std::int32_t>("members", cells, [](const Cell& c) { return c.members; }),
      CellArray<std::int32_t>("severity", cells, [](const Cell& c) { return SeverityOf(c.findings); }),
      CellArray<std::int32_t>("findings", cells, [](const Cell& c) { return c.findings; }),
      CellArray<std::int32_t>("rank", cells, [rank](const Cell&) { return rank; }),
      CellArray<std::int64_t>("cell", cells, [](const Cell& c) { return c.number; }),
  };
}

PieceFiles FilesOf(const Ranks& ranks) { return {ranks, "check", "vtu"}; }

}  // namespace

std::vector<std::string> CheckGridFiles(const Ranks& ranks) { return FilesOf(ranks).All(); }

std::string StageCheckGrid(const Ranks& ranks, reference_host::HostPartition& partition,
                           const std::vector<CheckedSystem>& cells, OutputFolder& folder) {
  const PieceFiles files = FilesOf(ranks);
  ranks.Together([&] {
    const std::vector<VtkArray> arrays = CellData(ranks.rank(), cells);
    WriteVtu(folder.Stage(files.Own()), GridOfInteriorCells(*partition.mesh()), arrays);
    if (ranks.IsFirst() && !files.IsAlone()) WritePvtu(folder.Stage(files.Index()), arrays, files.Pieces());
  });
  return files.Index();
}

}  // namespace zyngrad
