// Times of the gradients on box meshes, each beside the least time that its memory traffic can take.
//
//   gradient_benchmark [CELLS] [--benchmark_...]       alone, or under mpirun with one rank a core
//
// Each line is the median of 11 warm calls: nanoseconds per cell, the bound, and their ratio. Under mpirun
// every rank measures its own part, the slowest counts, and the rates of the bound are measured on all cores
// at once.

#include <benchmark/benchmark.h>
#include <mpi.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "benchmarks/MemoryRates.h"
#include "foundation/FaceGroups.h"
#include "gradient/COperatorGradient.h"
#include "reference_host/box/BoxMesh.h"
#include "reference_host/mesh/BoundaryGroups.h"
#include "reference_host/parallel/LoadMesh.h"
#include "reference_host/partition/HostPartition.h"

namespace {

using benchmarks::MemoryRates;
using benchmarks::Traffic;

MemoryRates rates;
int nRanks = 1;

/// A mesh on all ranks with a field on it, ready for gradients.
struct Case {
  reference_host::LoadedMesh loaded;
  COperatorGradient op;
  std::vector<double> phi[3], coefficient;
  std::vector<std::vector<double>> g;
  double cells = 0, faces = 0;  // of this rank: interior cells, inner faces
};

std::string BoxText(double cellsWanted, std::string const& shape) {
  double const perBox = shape == "tet" ? 6 : 1;
  int const n = std::max(2, static_cast<int>(std::lround(std::cbrt(cellsWanted / perBox))));
  std::string const side = std::to_string(n);
  return "box:" + side + "," + side + "," + side + ":" + shape;
}

// Gives the interior cells random numbers and sorts the faces by them, so that neighbours are far apart in memory. Mesh
// generators that do not renumber their cells leave meshes like this.
void ScatterNumbers(CZYN3DFiniteVolumeMesh& m) {
  std::vector<int> number(static_cast<std::size_t>(m.NCell) + 1);
  std::iota(number.begin(), number.end(), 0);
  std::shuffle(number.begin() + 1, number.begin() + 1 + m.NInnerCells, std::mt19937(7));
  auto const permuteCells = [&](double* x, int last) {
    std::vector<double> const old(x, x + last + 1);
    for (int i = 1; i <= last; ++i) x[number[i]] = old[i];
  };
  for (double* x : {m.xc, m.yc, m.zc}) permuteCells(x, m.NCell);
  permuteCells(m.Volume, m.NInnerCells);
  for (FaceGroupMembers const& group : face_groups::kTable) {
    if (!IsBoundary(group.kind)) continue;
    int* const cv = m.*group.cv;
    for (int f = 1; f <= m.*group.count; ++f) cv[f] = number[cv[f]];
  }

  int const n = m.NInnerFaces;
  std::vector<int> order(static_cast<std::size_t>(n));
  std::iota(order.begin(), order.end(), 1);
  for (int f = 1; f <= n; ++f) {
    m.ijCV[f] = number[m.ijCV[f]];
    m.ij[f] = number[m.ij[f]];
    if (m.ijCV[f] < m.ij[f]) continue;
    std::swap(m.ijCV[f], m.ij[f]);
    m.Lamda[f] = 1 - m.Lamda[f];
    for (double* s : {m.ijSx, m.ijSy, m.ijSz}) s[f] = -s[f];
  }
  std::sort(order.begin(), order.end(),
            [&](int a, int b) { return m.ijCV[a] != m.ijCV[b] ? m.ijCV[a] < m.ijCV[b] : m.ij[a] < m.ij[b]; });
  auto const reorder = [&](auto* x) {
    std::vector<std::decay_t<decltype(*x)>> const old(x, x + n + 1);
    for (int k = 0; k < n; ++k) x[k + 1] = old[order[k]];
  };
  for (int* x : {m.ijCV, m.ij, m.FaceType}) reorder(x);
  for (double* x : {m.Lamda, m.ijSx, m.ijSy, m.ijSz, m.ijxc, m.ijyc, m.ijzc}) reorder(x);
}

std::unique_ptr<Case> MakeCase(std::string const& box, bool scattered) {
  auto c = std::make_unique<Case>();
  c->loaded = reference_host::LoadMesh(MPI_COMM_WORLD, box, {}, {});
  CZYN3DFiniteVolumeMesh& mesh = *c->loaded.partition->mesh();
  if (scattered) ScatterNumbers(mesh);
  c->cells = mesh.NInnerCells;
  c->faces = mesh.NInnerFaces;
  std::size_t const size = static_cast<std::size_t>(mesh.NCell) + 1;
  for (int k = 0; k < 3; ++k) {
    c->phi[k].resize(size);
    for (int i = 1; i <= mesh.NCell; ++i)
      c->phi[k][i] = std::sin((3 + k) * mesh.xc[i]) * mesh.yc[i] + mesh.zc[i];
  }
  c->coefficient.assign(size, 2.0);
  c->g.assign(9, std::vector<double>(static_cast<std::size_t>(mesh.NCell) + 1));
  c->op.getZyn3dGV(c->loaded.partition->globals(), nullptr, nullptr, &mesh);
  c->op.getPartitionFace(c->loaded.partition->partitionFaces());
  c->op.getCommunication(c->loaded.exchange.get(), c->loaded.reduction.get());
  return c;
}

// Bytes of one pass over the cells or faces, every array counted once a pass.
Traffic ClearArrays(Case const& c, int arrays) { return {8 * c.cells * arrays, 8 * c.cells * arrays}; }
Traffic FaceArrays(Case const& c) {
  return {c.faces * (2 * 4 + 3 * 8 + 8 + 4), 0};
}  // cells, S, face weight, type
Traffic ReadCells(Case const& c, int arrays) { return {8 * c.cells * arrays, 0}; }
Traffic AddToCells(Case const& c, int arrays) { return {8 * c.cells * arrays, 8 * c.cells * arrays}; }
Traffic ScaleByVolume(Case const& c, int arrays) { return ReadCells(c, 1) + AddToCells(c, arrays); }

Traffic PlainTraffic(Case const& c) {
  return ClearArrays(c, 3) + FaceArrays(c) + ReadCells(c, 1) + AddToCells(c, 3) + ScaleByVolume(c, 3);
}
Traffic WeightedTraffic(Case const& c) { return PlainTraffic(c) + ReadCells(c, 1); }
Traffic ThreeTraffic(Case const& c) {
  return ClearArrays(c, 9) + FaceArrays(c) + ReadCells(c, 3) + AddToCells(c, 9) + ScaleByVolume(c, 9);
}
// Face centres, cell centres and the previous gradient come to the plain sweep.
Traffic CorrectedTraffic(Case const& c) {
  return PlainTraffic(c) + Traffic{c.faces * 24, 0} + ReadCells(c, 6);
}
Traffic CopyTraffic(Case const& c) { return {2 * 24 * c.cells, 24 * c.cells}; }
// The first sweep has nothing to correct; the last one's result is not copied.
Traffic IteratedTraffic(Case const& c, int nSweep) {
  Traffic t = PlainTraffic(c);
  for (int s = 2; s <= nSweep; ++s) t = t + CorrectedTraffic(c) + (s < nSweep ? CopyTraffic(c) : Traffic{});
  return t;
}
Traffic LeastSquaresTraffic(Case const& c) {
  Traffic const gather = Traffic{c.faces * 8, 0} + ReadCells(c, 4) + AddToCells(c, 3);
  Traffic const solve = ReadCells(c, 6 + 3) + AddToCells(c, 3);
  return ClearArrays(c, 6) + gather + solve;
}

double MaxOverRanks(double x) {
  MPI_Allreduce(MPI_IN_PLACE, &x, 1, MPI_DOUBLE, MPI_MAX, MPI_COMM_WORLD);
  return x;
}

template <class Call>
void Register(std::string const& name, std::shared_ptr<Case> const& c, Traffic const& traffic, Call call) {
  auto const body = [c, traffic, call](benchmark::State& state) {
    call(*c);  // warm: pages touched, tables in whatever cache they fit
    for (auto _ : state) {
      MPI_Barrier(MPI_COMM_WORLD);
      auto const start = std::chrono::steady_clock::now();
      call(*c);
      std::chrono::duration<double> const elapsed = std::chrono::steady_clock::now() - start;
      state.SetIterationTime(MaxOverRanks(elapsed.count()));
      double const seconds = MaxOverRanks(elapsed.count());
      double const bound = MaxOverRanks(BoundSeconds(traffic, rates));
      state.counters["ns/cell"] = seconds / c->cells * 1e9;
      state.counters["bound_ns/cell"] = bound / c->cells * 1e9;
      state.counters["bytes/cell"] = traffic.total() / c->cells;
      state.counters["ratio"] = seconds / bound;
    }
  };
  benchmark::RegisterBenchmark(name.c_str(), body)
      ->UseManualTime()
      ->Iterations(1)
      ->Repetitions(11)
      ->Unit(benchmark::kMillisecond);
}

void RegisterGradients(std::string const& mesh, std::shared_ptr<Case> const& c) {
  auto const out = [](Case& x, int i) { return x.g[static_cast<std::size_t>(i)].data(); };
  auto const gradient = [out](int type, int n) {
    return [out, type, n](Case& x) {
      int wanted = type;
      x.op.getGradType(wanted);
      x.op.GradMethod(x.phi[0].data(), out(x, 0), out(x, 1), out(x, 2), n);
    };
  };
  Register(mesh + "/plain", c, PlainTraffic(*c), gradient(0, 1));
  Register(mesh + "/iterated_2_sweeps", c, IteratedTraffic(*c, 2), gradient(0, 2));
  Register(mesh + "/iterated_3_sweeps", c, IteratedTraffic(*c, 3), gradient(0, 3));
  Register(mesh + "/weighted", c, WeightedTraffic(*c), [out](Case& x) {
    x.op.GradMethod_Weighted(x.phi[0].data(), out(x, 0), out(x, 1), out(x, 2), x.coefficient.data(), 1);
  });
  Register(mesh + "/three_component", c, ThreeTraffic(*c), [out](Case& x) {
    x.op.GradMethod_3(x.phi[0].data(), x.phi[1].data(), x.phi[2].data(), out(x, 0), out(x, 1), out(x, 2),
                      out(x, 3), out(x, 4), out(x, 5), out(x, 6), out(x, 7), out(x, 8));
  });
  Register(mesh + "/least_squares", c, LeastSquaresTraffic(*c), gradient(1, 1));
}

/// The reporter of all ranks but the first, which measure but do not print.
class SilentReporter : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(Context const&) override { return true; }
  void ReportRuns(std::vector<Run> const&) override {}
};

void Run(double cells) {
  int rank = 0;
  MPI_Comm_rank(MPI_COMM_WORLD, &rank);
  MPI_Comm_size(MPI_COMM_WORLD, &nRanks);
  rates = benchmarks::MeasureMemoryRates([] { MPI_Barrier(MPI_COMM_WORLD); });
  if (rank == 0)
    std::printf("ranks %d; per core: read %.2f GB/s, in-place update %.2f GB/s, triad %.2f GB/s\n", nRanks,
                rates.read * 1e-9, rates.update * 1e-9, rates.triad * 1e-9);
  for (std::string const shape : {"hex", "tet"}) {
    for (bool const scattered : {false, true}) {
      if (scattered && (shape == "hex" || nRanks > 1)) continue;
      auto const c = std::shared_ptr<Case>(MakeCase(BoxText(cells, shape), scattered));
      int type = 1;
      c->op.getGradType(type);
      c->op.Initialize();
      RegisterGradients(shape + (scattered ? "_scattered" : ""), c);
    }
  }
  // All cases in one run: the benchmark library does not survive a second one in the same process.
  SilentReporter silent;
  if (rank == 0) {
    benchmark::RunSpecifiedBenchmarks();
  } else {
    benchmark::RunSpecifiedBenchmarks(&silent);
  }
}

}  // namespace

int main(int argc, char** argv) {
  MPI_Init(&argc, &argv);
  benchmark::Initialize(&argc, argv);
  Run(argc > 1 ? std::atof(argv[1]) : 1e6);
  MPI_Finalize();
  return 0;
}
