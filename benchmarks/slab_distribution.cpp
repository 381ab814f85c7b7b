// Seconds and memory of the steps from a mesh in slabs to the parts of the ranks.
//
//   mpirun -n RANKS slab_distribution [BOX | FILE.msh]
//
// Each rank makes its share of a box. The parts are slices across the first direction, while the blocks of the slabs
// go along the last one, so that nearly everything travels. A binary Gmsh file is read and cut into parts as the
// program does it.

#include <mpi.h>

#include <cstdint>
#include <cstdio>
#include <exception>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "benchmarks/ProcessMeasures.h"
#include "benchmarks/Report.h"
#include "reference_host/box/BoxSpec.h"
#include "reference_host/slabs/BoxSlab.h"
#include "reference_host/slabs/GmshSlabReader.h"
#include "reference_host/slabs/SlabCheck.h"
#include "reference_host/slabs/SlabDistribution.h"
#include "reference_host/slabs/SlabPartition.h"

namespace {

using namespace reference_host;

/// Runs steps one after the other and prints what each takes on the slowest and on the largest rank.
class Steps {
 public:
  Steps(MpiCommunicator const& communicator, std::string row)
      : communicator_(communicator), row_(std::move(row)), before_(benchmarks::StatusBytes("VmRSS")) {}

  /// @param[in] slab  its mesh counts the cells
  void Run(std::string const& name, MeshSlab const& slab, std::function<void()> const& step) {
    MPI_Barrier(communicator_.get());
    benchmarks::ForgetPeak();
    double const start = MPI_Wtime();
    step();
    double most[2] = {MPI_Wtime() - start, benchmarks::StatusBytes("VmHWM") - before_};
    MPI_Allreduce(MPI_IN_PLACE, most, 2, MPI_DOUBLE, MPI_MAX, communicator_.get());
    if (communicator_.rank() > 0) return;
    benchmarks::Report("slabs", row_, name + ", s", most[0], 2);
    benchmarks::Report("slabs", row_, name + ", bytes a cell",
                       most[1] * communicator_.size() / static_cast<double>(slab.cells.nItems()), 0);
  }

 private:
  MpiCommunicator const& communicator_;
  std::string row_;
  double before_;
};

/// Parts across x.
std::vector<int> SlicesOf(BoxSpec const& spec, MeshSlab const& slab, MpiCommunicator const& communicator) {
  std::vector<int> part;
  std::int64_t const nx = spec.nx, nCellsOfCube = slab.cells.nItems() / (nx * spec.ny * spec.nz);
  int const rank = communicator.rank();
  for (std::int64_t cell = slab.cells.First(rank); cell < slab.cells.End(rank); ++cell) {
    part.push_back(static_cast<int>(cell / nCellsOfCube % nx * communicator.size() / nx));
  }
  return part;
}

void Measure(MpiCommunicator const& communicator, std::string const& mesh) {
  Steps steps(communicator, mesh + " on " + std::to_string(communicator.size()));
  MeshSlab slab;
  std::vector<int> part;
  if (IsBoxSpec(mesh)) {
    BoxSpec const spec = ParseBoxSpec(mesh);
    steps.Run("slab", slab, [&] { slab = MakeBoxSlab(communicator, spec); });
    part = SlicesOf(spec, slab, communicator);
  } else {
    steps.Run("slab", slab, [&] { slab = ReadGmshSlab(communicator, mesh); });
    steps.Run("cut", slab, [&] { part = PartitionSlab(communicator, slab, mesh); });
  }
  steps.Run("tables checked", slab, [&] { CheckSlabTables(communicator, slab, mesh); });
  MeshPart own;
  steps.Run("distributed and checked", slab,
            [&] { own = DistributeSlab(communicator, std::move(slab), part, mesh); });
}

}  // namespace

int main(int argc, char** argv) {
  int level = 0;
  MPI_Init_thread(&argc, &argv, MPI_THREAD_MULTIPLE, &level);  // for PT-Scotch
  int status = 0;
  try {
    Measure(MpiCommunicator(MPI_COMM_WORLD), argc > 1 ? argv[1] : "box:94,94,94:tet");
  } catch (std::exception const& error) {
    std::fprintf(stderr, "%s\n", error.what());
    status = 1;
  }
  MPI_Finalize();
  return status;
}
