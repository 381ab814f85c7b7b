// Times and memory of the radial-basis cell operator on box meshes, on one core.
//
//   rbf_benchmark [CELLS]
//
// Set-up is shown for 0.1, 0.3 and 1 times CELLS beside the bare LAPACKE_dgesv calls on the same systems, which are put
// together in chunks outside the timed part and whose solutions are compared with the stored weights bit by bit.
// "again" derives the weights a second time, into pages that are there already.
// Application is the median of 11 warm calls beside the time that its memory traffic takes at the least.

#include <lapacke.h>
#include <malloc.h>
#include <mpi.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "benchmarks/CellOperatorOnMesh.h"
#include "benchmarks/MemoryRates.h"
#include "benchmarks/ProcessMeasures.h"
#include "host/ZYNOptKer.h"
#include "host/Zyn3dGV.h"

namespace {

using benchmarks::CellOperatorOnMesh;
using benchmarks::CellSystems;
using benchmarks::ForgetPeak;
using benchmarks::MemoryRates;
using benchmarks::QuietOutput;
using benchmarks::Seconds;
using benchmarks::StatusBytes;
using benchmarks::Traffic;

constexpr int kRepetitions = 11;
constexpr int kSetUps = 3;      // the fastest counts
constexpr int kChunk = 32;      // systems that stay in the nearest cache
constexpr double kRecord = 56;  // bytes of a record of weights
constexpr double kPacked = 24;  // of its three numbers that are read
constexpr double kPointer = 8;

/// Seconds for all interior cells, bytes of the whole object.
struct SetUp {
  double initial = 1e300, derive = 1e300, again = 1e300, lapack = 1e300;
  double peakBytes = 0, treeBytes = 0, tableBytes = 0;
  double members = 0;   // of all stencils
  long nDifferent = 0;  // weights that LAPACK called alone does not give, bit by bit
};

double TableBytes(CellOperatorOnMesh& on) {
  CZYN3DFiniteVolumeMesh const& mesh = on.mesh();
  double bytes = (mesh.NCell + 1.0) * (2 * kPointer + 2 * kRecord + 8 + 2 * 4);
  for (int c = 1; c <= mesh.NInnerCells; ++c) bytes += (mesh.CellCell[c][0] + 3.0) * (4 + kRecord);
  return bytes;
}

void SetUpOnce(CellOperatorOnMesh& on, SetUp& result) {
  CZynRBFInternalObject& op = on.NewOperator();
  malloc_trim(0);
  ForgetPeak();
  double const before = StatusBytes("VmRSS");
  QuietOutput const quiet;
  result.initial = std::min(result.initial, Seconds([&] { op.InitialRBFSetting(); }));
  result.derive = std::min(result.derive, Seconds([&] { op.DeriveRBFweighting(); }));
  result.again = std::min(result.again, Seconds([&] { op.DeriveRBFweighting(); }));
  result.peakBytes = StatusBytes("VmHWM") - before;
}

// The tree is the host's: what goes when it is destroyed is not the operator's.
double TreeBytes(CZynRBFInternalObject& op) {
  double const before = StatusBytes("VmRSS");
  delete op.m_pADTree;
  op.m_pADTree = nullptr;
  malloc_trim(0);
  return before - StatusBytes("VmRSS");
}

long CountDifferent(CZynRBFInternalObject const& op, int firstCell, CellSystems const& solved) {
  long n = 0;
  double const* w = solved.columns.data();
  for (std::size_t i = 0; i < solved.order.size(); ++i)
    for (int k = 1; k <= solved.order[i]; ++k, w += 3) {
      RBFnode const& stored = op.m_ppRBFCellCoef[firstCell + static_cast<int>(i)][k];
      for (auto [a, b] : {std::pair{w[0], stored.x}, {w[1], stored.y}, {w[2], stored.z}})
        n += std::memcmp(&a, &b, sizeof a) != 0;
    }
  return n;
}

// The calls that the operator cannot do without.
void SolveAll(CellSystems& systems, std::vector<lapack_int>& pivots) {
  double *A = systems.matrices.data(), *b = systems.columns.data();
  for (int const order : systems.order) {
    LAPACKE_dgesv(LAPACK_ROW_MAJOR, order, 3, A, order, pivots.data(), b, 3);
    A += static_cast<std::ptrdiff_t>(order) * order;
    b += std::ptrdiff_t{3} * order;
  }
}

double LapackOnce(CellOperatorOnMesh& on, long& nDifferent) {
  std::vector<lapack_int> pivots(1024);
  CellSystems systems;
  double seconds = 0;
  int const nCells = on.mesh().NInnerCells;
  nDifferent = 0;
  for (int first = 1; first <= nCells; first += kChunk) {
    systems.Clear();
    for (int c = first; c < std::min(first + kChunk, nCells + 1); ++c) on.AppendSystem(c, systems);
    seconds += Seconds([&] { SolveAll(systems, pivots); });
    nDifferent += CountDifferent(on.op(), first, systems);
  }
  return seconds;
}

SetUp MeasureSetUp(CellOperatorOnMesh& on) {
  SetUp result;
  result.tableBytes = TableBytes(on);
  // In turn, so that both see the same state of the machine.
  for (int i = 0; i < kSetUps; ++i) {
    SetUpOnce(on, result);
    result.lapack = std::min(result.lapack, LapackOnce(on, result.nDifferent));
  }
  result.treeBytes = TreeBytes(on.op());
  for (int c = 1; c <= on.mesh().NInnerCells; ++c) result.members += on.op().m_ppRBFCellConn[c][0];
  return result;
}

/// Nanoseconds a cell.
struct Application {
  double measured = 0, bound = 0, packedBound = 0;
};

// Rows of weights, numbers of the members with their count, row pointers, phi once; three results, written lines read
// first.
Traffic ApplicationTraffic(double cells, double members, double bytesOfWeights, double pointers) {
  return {members * (bytesOfWeights + 4) + cells * (4 + pointers * kPointer + 8 + 24), cells * 24};
}

Application MeasureApplication(CellOperatorOnMesh& on, double members, MemoryRates const& rates) {
  CZYN3DFiniteVolumeMesh const& mesh = on.mesh();
  std::vector<double> phi(static_cast<std::size_t>(mesh.NCell) + 1), gx(phi), gy(phi), gz(phi);
  for (int c = 1; c <= mesh.NCell; ++c) phi[c] = std::sin(3 * mesh.xc[c]) * mesh.yc[c] + mesh.zc[c];
  auto const apply = [&] { on.op().MultiplyRBFCoefficent(phi.data(), gx.data(), gy.data(), gz.data()); };
  apply();  // warm
  std::vector<double> seconds;
  for (int i = 0; i < kRepetitions; ++i) seconds.push_back(Seconds(apply));
  std::sort(seconds.begin(), seconds.end());
  double const cells = mesh.NInnerCells, perCell = 1e9 / cells;
  return {seconds[kRepetitions / 2] * perCell,
          BoundSeconds(ApplicationTraffic(cells, members, kRecord, 2), rates) * perCell,
          BoundSeconds(ApplicationTraffic(cells, members, kPacked, 0), rates) * perCell};
}

void Run(double cells) {
  MemoryRates const rates = benchmarks::MeasureMemoryRates([] {});
  std::printf("one core: read %.2f GB/s, in-place update %.2f GB/s, triad %.2f GB/s\n", rates.read * 1e-9,
              rates.update * 1e-9, rates.triad * 1e-9);
  std::printf("%-5s %9s %7s | %-53s | %-27s | %-35s\n", "", "", "", "set-up, ns/cell", "memory, bytes/cell",
              "application, ns/cell");
  std::printf("%-5s %9s %7s | %8s %8s %8s %8s %7s %9s | %8s %8s %9s | %8s %8s %6s %10s\n", "mesh", "cells",
              "members", "initial", "derive", "again", "LAPACK", "ratio", "different", "peak", "tables",
              "host tree", "measured", "bound", "ratio", "if packed");
  for (std::string const shape : {"hex", "tet"}) {
    for (double const share : {0.1, 0.3, 1.0}) {
      CellOperatorOnMesh on(benchmarks::BoxText(share * cells, shape));
      double const n = on.mesh().NInnerCells, perCell = 1e9 / n;
      SetUp const s = MeasureSetUp(on);
      Application const a = MeasureApplication(on, s.members, rates);
      std::printf(
          "%-5s %9.0f %7.2f | %8.0f %8.0f %8.0f %8.0f %7.2f %9ld | %8.0f %8.0f %9.0f | %8.1f %8.1f %6.2f "
          "%10.1f\n",
          shape.c_str(), n, s.members / n, s.initial * perCell, s.derive * perCell, s.again * perCell,
          s.lapack * perCell, (s.initial + s.derive) / s.lapack, s.nDifferent,
          (s.peakBytes - s.treeBytes) / n, s.tableBytes / n, s.treeBytes / n, a.measured, a.bound,
          a.measured / a.bound, a.packedBound);
      std::fflush(stdout);
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  MPI_Init(&argc, &argv);
  Run(argc > 1 ? std::atof(argv[1]) : 1e6);
  MPI_Finalize();
  return 0;
}
