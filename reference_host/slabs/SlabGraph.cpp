#include "reference_host/slabs/SlabGraph.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

#include "reference_host/slabs/MpiLists.h"

namespace reference_host {
namespace {

/// The end of an edge at `cell`, which leads to `neighbour`.
struct EdgeEnd {
  std::int64_t cell, neighbour;
};

/// The cells at both sides of the own pairs of periodic faces.
using CellPairs = std::vector<std::array<std::int64_t, 2>>;

/// Collective.
CellPairs CellsBesidePeriods(MpiCommunicator const& communicator, MeshSlab const& slab) {
  if (slab.periods.empty()) return {};  // then slab.faces need not be known
  std::vector<std::int64_t> partners;
  for (SlabPeriod const& period : slab.periods) {
    for (auto const& pair : period.faces) partners.push_back(pair[1]);
  }
  std::vector<std::int64_t> const ownersBeyond =
      FetchItems<std::int64_t>(communicator, slab.faces, partners,
                               [&](std::int64_t f) { return slab.owner[static_cast<std::size_t>(f)]; });
  CellPairs cells;
  cells.reserve(partners.size());
  std::int64_t const firstFace = slab.faces.First(communicator.rank());
  for (SlabPeriod const& period : slab.periods) {
    for (auto const& pair : period.faces) {
      cells.push_back(
          {slab.owner[static_cast<std::size_t>(pair[0] - firstFace)], ownersBeyond[cells.size()]});
    }
  }
  return cells;
}

/// Collective. Calls visit(own cell counted from 0, neighbour) for both ends of every edge of the mesh on the rank
/// that has the end's cell. Two cells have an edge for each face that they share. The order is the same at each call.
template <class Visit>
void ForEachOwnEdge(MpiCommunicator const& communicator, MeshSlab const& slab, CellPairs const& periodic,
                    Visit const& visit) {
  // Edges that travel need 16 bytes for each end here and there, so a round has some 10 MB of them.
  constexpr std::size_t kFacesOfRound = std::size_t{1} << 18;
  std::int64_t const first = slab.cells.First(communicator.rank());
  std::int64_t const end = slab.cells.End(communicator.rank());
  std::size_t const nFaces = slab.nOwnFaces(), n = nFaces + periodic.size();
  auto nRounds = static_cast<std::int64_t>((n + kFacesOfRound - 1) / kFacesOfRound);
  MPI_Allreduce(MPI_IN_PLACE, &nRounds, 1, MPI_INT64_T, MPI_MAX, communicator.get());

  std::vector<EdgeEnd> travelling;
  auto const put = [&](std::int64_t cell, std::int64_t neighbour) {
    if (cell >= first && cell < end) {
      visit(cell - first, neighbour);
    } else {
      travelling.push_back({cell, neighbour});
    }
  };
  for (std::int64_t round = 0; round < nRounds; ++round) {
    travelling.clear();
    std::size_t const from = std::min(n, static_cast<std::size_t>(round) * kFacesOfRound);
    std::size_t const to = std::min(n, from + kFacesOfRound);
    for (std::size_t i = from; i < to; ++i) {
      std::int64_t const a = i < nFaces ? slab.owner[i] : periodic[i - nFaces][0];
      std::int64_t const b = i < nFaces ? slab.neighbour[i] : periodic[i - nFaces][1];
      if (b < 0 || a == b) continue;  // at the boundary, or the cell itself beyond a period
      put(a, b);
      put(b, a);
    }
    auto const lists = ListsByRank<EdgeEnd>(
        communicator.size(), travelling.size(),
        [&](std::size_t i) { return slab.cells.BlockOf(travelling[i].cell); },
        [&](std::size_t i) { return travelling[i]; });
    for (EdgeEnd const& edge : SwapLists(communicator, lists).items) visit(edge.cell - first, edge.neighbour);
  }
}

/// Sorts the neighbours of each cell and joins those that are there several times. `weights` gets an entry for each
/// neighbour once two cells share more than one face.
void JoinEqualNeighbours(SlabGraph& graph) {
  std::int64_t nKept = 0, rowBegin = 0;
  for (std::size_t c = 0; c + 1 < graph.rowStart.size(); ++c) {
    std::int64_t const rowEnd = graph.rowStart[c + 1];
    std::sort(graph.columns.begin() + rowBegin, graph.columns.begin() + rowEnd);
    std::int64_t const firstKept = nKept;
    for (std::int64_t i = rowBegin; i < rowEnd; ++i) {
      std::int64_t const neighbour = graph.columns[static_cast<std::size_t>(i)];
      if (nKept > firstKept && graph.columns[static_cast<std::size_t>(nKept - 1)] == neighbour) {
        if (graph.weights.empty()) graph.weights.assign(graph.columns.size(), 1);
        ++graph.weights[static_cast<std::size_t>(nKept - 1)];
      } else {
        graph.columns[static_cast<std::size_t>(nKept++)] = neighbour;
      }
    }
    graph.rowStart[c + 1] = nKept;
    rowBegin = rowEnd;
  }
  graph.columns.resize(static_cast<std::size_t>(nKept));
  if (!graph.weights.empty()) graph.weights.resize(graph.columns.size());
}

}  // namespace

SlabGraph MakeSlabGraph(MpiCommunicator const& communicator, MeshSlab const& slab) {
  CellPairs const periodic = CellsBesidePeriods(communicator, slab);
  SlabGraph graph;
  graph.cells = slab.cells;
  auto const nCells = static_cast<std::size_t>(slab.cells.Size(communicator.rank()));

  // The edges come twice, to be counted and to be stored, so that none has to be kept besides the graph. While they
  // are stored, rowStart[c + 1] is the place of the next edge of cell c.
  graph.rowStart.assign(nCells + 2, 0);
  ForEachOwnEdge(communicator, slab, periodic, [&](std::int64_t cell, std::int64_t) {
    ++graph.rowStart[static_cast<std::size_t>(cell) + 2];
  });
  for (std::size_t c = 2; c < graph.rowStart.size(); ++c) graph.rowStart[c] += graph.rowStart[c - 1];
  graph.columns.resize(static_cast<std::size_t>(graph.rowStart.back()));
  ForEachOwnEdge(communicator, slab, periodic, [&](std::int64_t cell, std::int64_t neighbour) {
    std::int64_t& next = graph.rowStart[static_cast<std::size_t>(cell) + 1];
    graph.columns[static_cast<std::size_t>(next++)] = neighbour;
  });
  graph.rowStart.pop_back();

  JoinEqualNeighbours(graph);
  bool const isWeighted = SumOverRanks(communicator, graph.weights.empty() ? 0 : 1) > 0;
  if (isWeighted && graph.weights.empty()) graph.weights.assign(graph.columns.size(), 1);
  return graph;
}

}  // namespace reference_host
