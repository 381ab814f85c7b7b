// Times of the gradients on box meshes, each beside the least time that its memory traffic can take, and beside the time
// without instructions beyond those that the library is compiled for.
//
//   gradient_benchmark [CELLS [ROUNDS]]             alone, or under mpirun with one rank a core
//   gradient_benchmark threads [CELLS [ROUNDS]]     nanoseconds per cell of least squares on all ranks, nothing else
//
// In each round, every call is made with and without these instructions, so that a slow spell of the machine falls on both;
// values are medians. Under mpirun every rank measures its own part, the slowest counts, and the rates of the bound are
// measured on all cores at once. Prints lines for run.sh: see Report.h.

#include <mpi.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "benchmarks/MemoryRates.h"
#include "benchmarks/ProcessMeasures.h"
#include "benchmarks/Report.h"
#include "foundation/FaceGroups.h"
#include "foundation/Processor.h"
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
  COperatorGradient op, plain;  // the second never uses special instructions
  std::vector<double> phi[3], coefficient;
  std::vector<std::vector<double>> g;
  double cells = 0, faces = 0;  // of this rank: interior cells, inner faces
};

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
  for (COperatorGradient* op : {&c->op, &c->plain}) {
    op->getZyn3dGV(c->loaded.partition->globals(), nullptr, nullptr, &mesh);
    op->getPartitionFace(c->loaded.partition->partitionFaces());
    op->getCommunication(c->loaded.exchange.get(), c->loaded.reduction.get());
  }
  int type = 1;  // so that least squares are set up, too
  c->op.getGradType(type);
  c->op.Initialize();
  processor::TakenForPlain const taken;
  c->plain.getGradType(type);
  c->plain.Initialize();
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

// Three fields: coordinates and matrices of the cells are read once.
Traffic ThreeLeastSquaresTraffic(Case const& c) {
  Traffic const gather = Traffic{c.faces * 8, 0} + ReadCells(c, 3 + 3) + AddToCells(c, 9);
  Traffic const solve = ReadCells(c, 6 + 9) + AddToCells(c, 9);
  return ClearArrays(c, 18) + gather + solve;
}

double MaxOverRanks(double x) {
  MPI_Allreduce(MPI_IN_PLACE, &x, 1, MPI_DOUBLE, MPI_MAX, MPI_COMM_WORLD);
  return x;
}

double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

using Call = std::function<void(Case&, COperatorGradient&)>;

struct Method {
  std::string name;
  Traffic traffic;
  Call call;
};

Call Gradient(int type, int nSweep) {
  return [type, nSweep](Case& x, COperatorGradient& op) {
    int wanted = type;
    op.getGradType(wanted);
    op.GradMethod(x.phi[0].data(), x.g[0].data(), x.g[1].data(), x.g[2].data(), nSweep);
  };
}

template <class Operation>
Call ThreeFields(Operation operation) {
  return [operation](Case& x, COperatorGradient& op) {
    auto& g = x.g;
    (op.*operation)(x.phi[0].data(), x.phi[1].data(), x.phi[2].data(), g[0].data(), g[1].data(), g[2].data(),
                    g[3].data(), g[4].data(), g[5].data(), g[6].data(), g[7].data(), g[8].data());
  };
}

std::vector<Method> Methods(Case const& c) {
  return {
      {"plain", PlainTraffic(c), Gradient(0, 1)},
      {"three components", ThreeTraffic(c), ThreeFields(&COperatorGradient::GradMethod_3)},
      {"weighted", WeightedTraffic(c),
       [](Case& x, COperatorGradient& op) {
         op.GradMethod_Weighted(x.phi[0].data(), x.g[0].data(), x.g[1].data(), x.g[2].data(),
                                x.coefficient.data(), 1);
       }},
      {"iterated, 2 sweeps", IteratedTraffic(c, 2), Gradient(0, 2)},
      {"iterated, 3 sweeps", IteratedTraffic(c, 3), Gradient(0, 3)},
      {"least squares", LeastSquaresTraffic(c), Gradient(1, 1)},
      {"least squares, three fields", ThreeLeastSquaresTraffic(c),
       ThreeFields(&COperatorGradient::GradMethod_LeastSquares_3)},
  };
}

/// Seconds of one call. On one rank the processor's time, which other programs disturb least; on several the wall's, and of
/// the slowest rank, since ranks wait for each other.
double SecondsOf(Case& c, COperatorGradient& op, Call const& call, int nCall) {
  MPI_Barrier(MPI_COMM_WORLD);
  double const start = nRanks == 1 ? benchmarks::ProcessorSeconds() : MPI_Wtime();
  for (int i = 0; i < nCall; ++i) call(c, op);
  double const end = nRanks == 1 ? benchmarks::ProcessorSeconds() : MPI_Wtime();
  return MaxOverRanks(end - start) / nCall;
}

struct Times {
  double seconds, overPlain;  // medians
};

Times Measure(Case& c, Call const& call, int nRounds, int nCall) {
  std::vector<double> fast, ratio;
  for (int round = -1; round < nRounds;
       ++round) {  // the first is not counted: pages are touched and caches filled
    double const a = SecondsOf(c, c.op, call, nCall);
    processor::TakenForPlain const taken;
    double const b = SecondsOf(c, c.plain, call, nCall);
    if (round >= 0) fast.push_back(a), ratio.push_back(a / b);
  }
  return {Median(fast), Median(ratio)};
}

// Many calls at a time on a mesh in cache, for which memory sets no bound.
void RunMesh(std::string const& name, Case& c, bool isInCache, int nRounds, bool isFirstRank) {
  std::string const table = nRanks == 1 ? "walks" : "walks-ranks";
  for (Method const& method : Methods(c)) {
    Times const times = Measure(c, method.call, nRounds, isInCache ? 200 : 1);
    double const perCell = 1e9 / MaxOverRanks(c.cells);
    double const bound = MaxOverRanks(BoundSeconds(method.traffic, rates));
    if (!isFirstRank) continue;
    std::string const ranks = nRanks == 1 ? "" : ", " + std::to_string(nRanks);
    std::string const row = name + ranks + " | " + method.name;
    benchmarks::Report(table, row, "ns per cell", times.seconds * perCell, 1);
    if (!isInCache) {
      benchmarks::Report(table, row, "bound", bound * perCell, 1);
      benchmarks::Report(table, row, "over the bound", times.seconds / bound, 2);
    }
    benchmarks::Report(table, row, "over the plain path", times.overPlain, 2, isInCache ? 1.02 : 0);
  }
}

void Run(double cells, int nRounds, bool isFirstRank) {
  rates = benchmarks::MeasureMemoryRates([] { MPI_Barrier(MPI_COMM_WORLD); });
  if (isFirstRank)
    std::printf("fact\tread and in-place update, %d rank(s)\t%.1f and %.1f GB/s per core\n", nRanks,
                rates.read * 1e-9, rates.update * 1e-9);
  for (std::string const shape : {"hex", "tet"}) {
    for (bool const scattered : {false, true}) {
      if (scattered && (shape == "hex" || nRanks > 1)) continue;
      std::unique_ptr<Case> const c = MakeCase(benchmarks::BoxText(cells, shape), scattered);
      RunMesh(benchmarks::NameOf(shape) + (scattered ? ", scattered" : ""), *c, false, nRounds, isFirstRank);
    }
  }
  if (nRanks > 1) return;
  std::unique_ptr<Case> const small = MakeCase("box:14,14,14", false);
  RunMesh("14^3 hexahedra", *small, true, nRounds, isFirstRank);
}

// Wall time, since threads that wait use the processor, too. Nothing pins the number of threads here.
void RunThreads(double cells, int nRounds, bool isFirstRank) {
  std::unique_ptr<Case> const c = MakeCase(benchmarks::BoxText(cells, "hex"), false);
  std::vector<double> seconds;
  Call const call = Gradient(1, 1);
  for (int round = -1; round < nRounds; ++round) {
    MPI_Barrier(MPI_COMM_WORLD);
    double const start = MPI_Wtime();
    call(*c, c->op);
    double const elapsed = MaxOverRanks(MPI_Wtime() - start);
    if (round >= 0) seconds.push_back(elapsed);
  }
  double const perCell = 1e9 / MaxOverRanks(c->cells);
  if (isFirstRank) std::printf("%.3f\n", Median(seconds) * perCell);
}

}  // namespace

int main(int argc, char** argv) {
  int threadLevel = 0;
  MPI_Init_thread(&argc, &argv, MPI_THREAD_MULTIPLE, &threadLevel);  // PT-Scotch needs it
  int rank = 0;
  MPI_Comm_rank(MPI_COMM_WORLD, &rank);
  MPI_Comm_size(MPI_COMM_WORLD, &nRanks);
  bool const isForThreads = argc > 1 && std::string(argv[1]) == "threads";
  char** const sizes = argv + (isForThreads ? 2 : 1);
  double const cells = sizes < argv + argc ? std::atof(sizes[0]) : 1e6;
  int const nRounds = sizes + 1 < argv + argc ? std::atoi(sizes[1]) : 11;
  (isForThreads ? RunThreads : Run)(cells, nRounds, rank == 0);
  MPI_Finalize();
  return 0;
}
