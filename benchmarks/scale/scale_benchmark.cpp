// One mesh, loaded by all ranks: seconds of each stage and memory of the largest rank.
//
//   mpirun -n RANKS scale_benchmark MESH [whole|slabs]
//
// Prints one line of JSON. Seconds are those of the wall on rank 0, from one stage to the next; every stage ends on all
// ranks together. Bytes are the highest resident memory: "base" before the mesh, "peak" afterwards, of the largest rank.

#include <mpi.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <string>
#include <utility>
#include <vector>

#include "benchmarks/ProcessMeasures.h"
#include "reference_host/parallel/LoadMesh.h"

namespace {

using reference_host::MeshReading;

double LargestOnRanks(double own) {
  MPI_Allreduce(MPI_IN_PLACE, &own, 1, MPI_DOUBLE, MPI_MAX, MPI_COMM_WORLD);
  return own;
}

/// When the stages of loading begin, and what rank 0 holds at most until then.
class StageClock {
 public:
  void Begin(std::string const& stage) {
    stages_.push_back({stage, MPI_Wtime(), benchmarks::StatusBytes("VmHWM")});
  }

  void End() { Begin("end"); }

  void Print() const {
    for (std::size_t i = 0; i + 1 < stages_.size(); ++i) {
      std::printf("%s{\"stage\": \"%s\", \"seconds\": %.3f, \"peakOnRank0\": %.0f}", i == 0 ? "" : ", ",
                  stages_[i].name.c_str(), stages_[i + 1].start - stages_[i].start, stages_[i + 1].peak);
    }
  }

 private:
  struct Stage {
    std::string name;
    double start, peak;
  };
  std::vector<Stage> stages_;
};

void Measure(std::string const& mesh, MeshReading reading) {
  double const base = LargestOnRanks(benchmarks::StatusBytes("VmRSS"));
  int rank = 0;
  MPI_Comm_rank(MPI_COMM_WORLD, &rank);
  StageClock clock;
  MPI_Barrier(MPI_COMM_WORLD);
  double const start = MPI_Wtime();
  reference_host::LoadedMesh const loaded =
      reference_host::LoadMesh(MPI_COMM_WORLD, mesh, {{"*", reference_host::BoundaryGroup::Wall}},
                               [&clock](std::string const& stage) { clock.Begin(stage); }, {reading, ""});
  MPI_Barrier(MPI_COMM_WORLD);
  double const seconds = MPI_Wtime() - start;
  clock.End();
  double const peak = LargestOnRanks(benchmarks::StatusBytes("VmHWM"));
  if (rank != 0) return;
  reference_host::MeshSummary const& m = loaded.summary;
  std::printf(
      "{\"ranks\": %d, \"cells\": %lld, \"nodes\": %lld, \"faces\": %lld, \"cutFaces\": %lld, \"mostCells\": "
      "%lld, "
      "\"mostCutFaces\": %lld, \"mostNeighbours\": %d, \"way\": \"%s\", \"seconds\": %.3f, \"base\": %.0f, "
      "\"peak\": "
      "%.0f, \"stages\": [",
      m.nParts, static_cast<long long>(m.nCells), static_cast<long long>(m.nNodes),
      static_cast<long long>(m.nInnerFaces + m.nCutFaces), static_cast<long long>(m.nCutFaces),
      static_cast<long long>(m.maxCells), static_cast<long long>(m.maxCutFaces), m.maxNeighbours,
      m.way.c_str(), seconds, base, peak);
  clock.Print();
  std::printf("]}\n");
}

}  // namespace

int main(int argc, char** argv) {
  int level = 0;
  MPI_Init_thread(&argc, &argv, MPI_THREAD_MULTIPLE, &level);
  int status = 0;
  std::string const way = argc > 2 ? argv[2] : "";
  if (argc < 2 || argc > 3 || (!way.empty() && way != "whole" && way != "slabs")) {
    std::fprintf(stderr, "scale_benchmark MESH [whole|slabs]\n");
    status = 2;
  } else {
    try {
      Measure(argv[1], way == "whole"   ? MeshReading::Whole
                       : way == "slabs" ? MeshReading::Slabs
                                        : MeshReading::Automatic);
    } catch (std::exception const& error) {
      std::fprintf(stderr, "scale_benchmark: %s\n", error.what());
      status = 1;
    }
  }
  MPI_Finalize();
  return status;
}
