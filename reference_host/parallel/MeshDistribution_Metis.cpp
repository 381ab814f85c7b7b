#include <metis.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "reference_host/mesh/MeshError.h"
#include "reference_host/mesh/Periods.h"
#include "reference_host/parallel/CellGraph.h"
#include "reference_host/parallel/MeshDistribution.h"
#include "reference_host/partition/CuthillMcKee.h"

namespace reference_host {
namespace {

/// A cell that is its own neighbour beyond a period is left out: METIS takes no loops.
CellGraph MakeCellGraph(FaceMesh const& mesh) {
  CellGraph graph;
  graph.rowStart.assign(static_cast<std::size_t>(mesh.nCells) + 1, 0);
  ForEachNeighbours(mesh, [&graph](int a, int b) {
    if (a == b) return;
    ++graph.rowStart[a + 1];
    ++graph.rowStart[b + 1];
  });
  for (int c = 0; c < mesh.nCells; ++c) graph.rowStart[c + 1] += graph.rowStart[c];

  graph.columns.resize(graph.rowStart.back());
  std::vector<std::size_t> next(graph.rowStart.begin(), graph.rowStart.end() - 1);
  ForEachNeighbours(mesh, [&](int a, int b) {
    if (a == b) return;
    graph.columns[next[a]++] = b;
    graph.columns[next[b]++] = a;
  });
  return graph;
}

/// The same graph for METIS: each neighbour once, weighted by the number of shared faces.
struct MetisGraph {
  std::vector<idx_t> rowStart, columns, weights;
};

MetisGraph MakeMetisGraph(CellGraph&& graph) {
  MetisGraph result;
  result.rowStart.reserve(graph.rowStart.size());
  result.columns.reserve(graph.columns.size());
  result.weights.reserve(graph.columns.size());
  for (int c = 0; c < graph.nCells(); ++c) {
    result.rowStart.push_back(static_cast<idx_t>(result.columns.size()));
    auto const begin = graph.columns.begin() + static_cast<std::ptrdiff_t>(graph.rowStart[c]);
    auto const end = graph.columns.begin() + static_cast<std::ptrdiff_t>(graph.rowStart[c + 1]);
    std::sort(begin, end);
    for (auto neighbour = begin; neighbour != end; ++neighbour) {
      if (neighbour != begin && *neighbour == *(neighbour - 1)) {
        ++result.weights.back();
      } else {
        result.columns.push_back(*neighbour);
        result.weights.push_back(1);
      }
    }
  }
  result.rowStart.push_back(static_cast<idx_t>(result.columns.size()));
  return result;
}

/// Whether every cell can be reached from the first.
bool IsConnected(MetisGraph const& graph) {
  std::size_t const nCells = graph.rowStart.size() - 1;
  std::vector<char> isReached(nCells, 0);
  std::vector<idx_t> reached = {0};
  isReached[0] = 1;
  for (std::size_t i = 0; i < reached.size(); ++i) {
    for (idx_t k = graph.rowStart[reached[i]]; k < graph.rowStart[reached[i] + 1]; ++k) {
      idx_t const neighbour = graph.columns[k];
      if (isReached[neighbour] != 0) continue;
      isReached[neighbour] = 1;
      reached.push_back(neighbour);
    }
  }
  return reached.size() == nCells;
}

// METIS takes even constant arguments by non-const pointers.
std::vector<int> PartitionByMetis(MetisGraph& graph, int nParts) {
  std::array<idx_t, METIS_NOPTIONS> options;
  METIS_SetDefaultOptions(options.data());
  options[METIS_OPTION_NUMBERING] = 0;
  options[METIS_OPTION_SEED] = 1;

  // For few parts, recursive bisection balances better and cuts fewer faces; for many, k-way division is
  // better. Only the latter can keep parts connected, and only on a connected mesh.
  constexpr int kMostPartsByBisection = 8;
  bool const byBisection = nParts <= kMostPartsByBisection;
  if (!byBisection && IsConnected(graph)) options[METIS_OPTION_CONTIG] = 1;

  idx_t nCells = static_cast<idx_t>(graph.rowStart.size()) - 1;
  idx_t nConstraints = 1, parts = nParts, cut = 0;
  std::vector<idx_t> partOfCell(static_cast<std::size_t>(nCells), 0);
  auto const divide = byBisection ? METIS_PartGraphRecursive : METIS_PartGraphKway;
  int const status =
      divide(&nCells, &nConstraints, graph.rowStart.data(), graph.columns.data(), nullptr, nullptr,
             graph.weights.data(), &parts, nullptr, nullptr, options.data(), &cut, partOfCell.data());
  if (status != METIS_OK) {
    throw MeshError(status == METIS_ERROR_MEMORY ? "not enough memory to partition the mesh"
                                                 : "METIS failed with status " + std::to_string(status));
  }
  return {partOfCell.begin(), partOfCell.end()};
}

/// Equal pieces of the cells in Cuthill-McKee order. Used for parts of a few cells, for which METIS leaves
/// parts empty and prints warnings.
std::vector<int> PartitionByOrder(CellGraph const& graph, int nParts) {
  std::vector<int> const cells = CuthillMcKee(graph.rowStart, graph.columns);
  std::vector<int> partOfCell(cells.size());
  for (std::size_t i = 0; i < cells.size(); ++i) {
    partOfCell[cells[i]] = static_cast<int>(i * static_cast<std::size_t>(nParts) / cells.size());
  }
  return partOfCell;
}

void CheckCounts(FaceMesh const& mesh, int nParts, std::string const& meshName) {
  std::string const beginning = meshName.empty() ? "" : meshName + ": ";
  if (mesh.nCells < nParts) {
    throw MeshError(beginning + "the mesh has " + std::to_string(mesh.nCells) + " cells, fewer than the " +
                    std::to_string(nParts) + " ranks");
  }
  if (mesh.owner.size() > static_cast<std::size_t>(std::numeric_limits<idx_t>::max() / 2)) {
    throw MeshError(beginning + "the mesh has more faces than this METIS can count");
  }
}

}  // namespace

std::vector<int> PartitionMesh(FaceMesh const& mesh, int nParts, std::string const& meshName) {
  CheckCounts(mesh, nParts, meshName);
  if (nParts == 1) return std::vector<int>(static_cast<std::size_t>(mesh.nCells), 0);
  return PartitionGraph(MakeCellGraph(mesh), nParts);
}

std::vector<int> PartitionGraph(CellGraph&& graph, int nParts) {
  constexpr int kFewCells = 8;
  if (graph.nCells() / nParts < kFewCells) return PartitionByOrder(graph, nParts);

  MetisGraph metisGraph = MakeMetisGraph(std::move(graph));
  graph = {};
  std::vector<int> partOfCell = PartitionByMetis(metisGraph, nParts);
  FillEmptyParts(partOfCell, nParts);
  return partOfCell;
}

void FillEmptyParts(std::vector<int>& partOfCell, int nParts) {
  std::vector<int> nCells(static_cast<std::size_t>(nParts), 0);
  for (int const part : partOfCell) ++nCells[part];
  for (int empty = 0; empty < nParts; ++empty) {
    if (nCells[empty] > 0) continue;
    auto const largest = static_cast<int>(std::max_element(nCells.begin(), nCells.end()) - nCells.begin());
    *std::find(partOfCell.begin(), partOfCell.end(), largest) = empty;
    --nCells[largest];
    ++nCells[empty];
  }
}

}  // namespace reference_host
