// How good the parts are that PT-Scotch makes on all ranks, beside those of METIS in one process.
//
//   mpirun -n RANKS partition_quality [BOX...]
//
// Into as many parts as there are ranks. The boxes default to the series of the study and, as the last line, a million
// hexahedra. Prints a table in Markdown: cells, faces between parts, cells of the largest part over those of an average
// one, seconds, and the bytes a cell of which the memory of the rank with the most grows. Rank 0 makes the whole mesh for
// METIS, with 400 bytes a cell for hexahedra.

#include <mpi.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "benchmarks/ProcessMeasures.h"
#include "benchmarks/Report.h"
#include "reference_host/box/BoxMesh.h"
#include "reference_host/parallel/MeshDistribution.h"
#include "reference_host/slabs/BoxSlab.h"
#include "reference_host/slabs/MpiLists.h"
#include "reference_host/slabs/ScotchPartition.h"
#include "reference_host/slabs/SlabGraph.h"

namespace {

using benchmarks::Thousands;
using namespace reference_host;

struct Quality {
  std::int64_t nCutFaces = 0;
  double imbalance = 0.0;
  double seconds = 0.0;
  double bytesOfCell = 0.0;  ///< of the rank with the most
};

/// Seconds by the clock of what the ranks do together: they wait for each other.
template <class Work>
double SecondsTogether(MpiCommunicator const& world, Work const& work) {
  MPI_Barrier(world.get());
  double const start = MPI_Wtime();
  work();
  MPI_Barrier(world.get());
  return MPI_Wtime() - start;
}

double Imbalance(std::vector<std::int64_t> const& nCellsOfPart, std::int64_t nCells) {
  auto const largest = *std::max_element(nCellsOfPart.begin(), nCellsOfPart.end());
  return static_cast<double>(largest) * static_cast<double>(nCellsOfPart.size()) /
         static_cast<double>(nCells);
}

/// Rank 0 alone; the others wait.
Quality MeasureMetis(MpiCommunicator const& world, BoxSpec const& spec) {
  Quality quality;
  FaceMesh mesh;
  std::vector<int> partOfCell;
  if (world.rank() == 0) mesh = MakeBox(spec);
  quality.seconds = SecondsTogether(world, [&] {
    if (world.rank() == 0) partOfCell = PartitionMesh(mesh, world.size());
  });
  if (world.rank() != 0) return quality;
  std::vector<std::int64_t> nCells(static_cast<std::size_t>(world.size()), 0);
  for (int const part : partOfCell) ++nCells[static_cast<std::size_t>(part)];
  quality.imbalance = Imbalance(nCells, mesh.nCells);
  for (std::size_t f = 0; f < mesh.owner.size(); ++f) {
    if (mesh.neighbour[f] < 0) continue;
    quality.nCutFaces += partOfCell[static_cast<std::size_t>(mesh.owner[f])] !=
                         partOfCell[static_cast<std::size_t>(mesh.neighbour[f])];
  }
  return quality;
}

/// Half of the sum over all cells of the faces to cells of other parts.
std::int64_t CutFaces(MpiCommunicator const& world, SlabGraph const& graph,
                      std::vector<int> const& partOfOwn) {
  std::vector<std::int64_t> beyond = graph.columns;
  std::sort(beyond.begin(), beyond.end());
  beyond.erase(std::unique(beyond.begin(), beyond.end()), beyond.end());
  std::vector<int> const partBeyond = FetchItems<int>(world, graph.cells, beyond, [&](std::int64_t cell) {
    return partOfOwn[static_cast<std::size_t>(cell)];
  });
  std::int64_t nEnds = 0;
  for (std::size_t c = 0; c < partOfOwn.size(); ++c) {
    for (auto i = static_cast<std::size_t>(graph.rowStart[c]);
         i < static_cast<std::size_t>(graph.rowStart[c + 1]); ++i) {
      auto const at = std::lower_bound(beyond.begin(), beyond.end(), graph.columns[i]) - beyond.begin();
      if (partBeyond[static_cast<std::size_t>(at)] == partOfOwn[c]) continue;
      nEnds += graph.weights.empty() ? 1 : graph.weights[i];
    }
  }
  return SumOverRanks(world, nEnds) / 2;
}

Quality MeasureScotch(MpiCommunicator const& world, BoxSpec const& spec) {
  MeshSlab const slab = MakeBoxSlab(world, spec);
  Quality quality;
  SlabGraph graph;
  std::vector<int> partOfOwn;
  benchmarks::ForgetPeak();
  double const before = benchmarks::StatusBytes("VmRSS");
  quality.seconds = SecondsTogether(world, [&] {
    graph = MakeSlabGraph(world, slab);
    partOfOwn = PartitionByScotch(world, graph);
  });
  auto const nRanks = static_cast<double>(world.size()), nCells = static_cast<double>(slab.cells.nItems());
  quality.bytesOfCell = (benchmarks::StatusBytes("VmHWM") - before) * nRanks / nCells;
  MPI_Allreduce(MPI_IN_PLACE, &quality.bytesOfCell, 1, MPI_DOUBLE, MPI_MAX, world.get());
  quality.nCutFaces = CutFaces(world, graph, partOfOwn);
  std::vector<std::int64_t> nCellsOfPart(static_cast<std::size_t>(world.size()), 0);
  for (int const part : partOfOwn) ++nCellsOfPart[static_cast<std::size_t>(part)];
  MPI_Allreduce(MPI_IN_PLACE, nCellsOfPart.data(), world.size(), MPI_INT64_T, MPI_SUM, world.get());
  quality.imbalance = Imbalance(nCellsOfPart, slab.cells.nItems());
  return quality;
}

void Measure(MpiCommunicator const& world, std::string const& text) {
  BoxSpec const spec = ParseBoxSpec(text);
  Quality const metis = MeasureMetis(world, spec), scotch = MeasureScotch(world, spec);
  if (world.rank() != 0) return;
  std::printf(
      "| `%s` | %d | %s | %s | %.3f | %.3f | %.3f | %.2f | %.2f | %.0f |\n", text.c_str(), world.size(),
      Thousands(static_cast<double>(metis.nCutFaces)).c_str(),
      Thousands(static_cast<double>(scotch.nCutFaces)).c_str(),
      static_cast<double>(scotch.nCutFaces) / static_cast<double>(std::max<std::int64_t>(metis.nCutFaces, 1)),
      metis.imbalance, scotch.imbalance, metis.seconds, scotch.seconds, scotch.bytesOfCell);
  std::fflush(stdout);
}

/// The series of the study, each with twice the cells in every direction of the one before. Moved nodes change no
/// partition, so that hexahedra stand for the perturbed, stretched and skewed ones.
std::vector<std::string> SeriesOfStudy() {
  std::vector<std::string> boxes;
  auto const add = [&boxes](int n, std::string const& shape) {
    for (int level = 0; level < 4; ++level, n *= 2) {
      std::string const number = std::to_string(n);
      boxes.push_back("box:" + number + "," + number + "," + number + ":" + shape);
    }
  };
  add(6, "hex");
  add(3, "tet");
  add(4, "prism");
  add(5, "dual");
  boxes.emplace_back("box:100,100,100:hex");
  return boxes;
}

}  // namespace

int main(int argc, char** argv) {
  int threadLevel = 0;
  MPI_Init_thread(&argc, &argv, MPI_THREAD_MULTIPLE, &threadLevel);
  int status = 0;
  try {
    MpiCommunicator const world(MPI_COMM_WORLD);
    if (world.rank() == 0) {
      std::printf(
          "| mesh | parts | cut faces, METIS | PT-Scotch | ratio | imbalance, METIS | PT-Scotch | s, METIS | "
          "PT-Scotch | "
          "bytes a cell |\n|---|--:|--:|--:|--:|--:|--:|--:|--:|--:|\n");
    }
    std::vector<std::string> const given(argv + 1, argv + argc);
    for (std::string const& box : given.empty() ? SeriesOfStudy() : given) Measure(world, box);
  } catch (std::exception const& error) {  // every rank throws the same
    std::fprintf(stderr, "partition_quality: %s\n", error.what());
    status = 1;
  }
  MPI_Finalize();
  return status;
}
