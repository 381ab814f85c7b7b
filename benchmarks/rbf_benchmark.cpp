// Times and memory of the radial-basis cell operator on box meshes, on one core.
//
//   rbf_benchmark CELLS...
//
// Prints lines for run.sh: see Report.h. Set-up stands beside the bare LAPACKE_dgesv calls on the same systems, which are put
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
#include "benchmarks/Report.h"
#include "host/ZYNOptKer.h"
#include "host/Zyn3dGV.h"

namespace {

using benchmarks::CellOperatorOnMesh;
using benchmarks::CellSystems;
using benchmarks::ForgetPeak;
using benchmarks::MemoryRates;
using benchmarks::QuietOutput;
using benchmarks::Report;
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

void RunMesh(std::string const& shape, double cells, MemoryRates const& rates) {
  CellOperatorOnMesh on(benchmarks::BoxText(cells, shape));
  double const n = on.mesh().NInnerCells, perCell = 1e9 / n;
  SetUp const s = MeasureSetUp(on);
  Application const a = MeasureApplication(on, s.members, rates);
  std::string const row = benchmarks::NameOf(shape) + ", " + benchmarks::Thousands(n) + " | cells";
  if (s.nDifferent != 0) {
    std::fprintf(stderr, "rbf_benchmark: %s: %ld weights are not those of LAPACK\n", row.c_str(),
                 s.nDifferent);
    std::exit(1);
  }
  Report("set-up", row, "us", 1e-3 * (s.initial + s.derive) * perCell, 2);
  Report("set-up", row, "LAPACK, us", 1e-3 * s.lapack * perCell, 2);
  Report("set-up", row, "over LAPACK", (s.initial + s.derive) / s.lapack, 2, 1.35);
  Report("application", row, "number", n, 0);
  Report("application", row, "members", s.members / n, 1);
  Report("application", row, "ns", a.measured, 1);
  Report("application", row, "bound, ns", a.bound, 1);
  Report("application", row, "over the bound", a.measured / a.bound, 2);
  Report("application", row, "peak of the set-up, bytes", (s.peakBytes - s.treeBytes) / n, 0);
  Report("cells", row, "stencils, us", 1e-3 * s.initial * perCell, 2);
  Report("cells", row, "weights", 1e-3 * s.derive * perCell, 2);
  Report("cells", row, "weights again, into the same pages", 1e-3 * s.again * perCell, 2);
  Report("cells", row, "tables, bytes", s.tableBytes / n, 0);
  Report("cells", row, "search tree, bytes", s.treeBytes / n, 0);
  Report("cells", row, "bound of the application if its rows were packed, ns", a.packedBound, 1);
}

}  // namespace

int main(int argc, char** argv) {
  int threadLevel = 0;
  MPI_Init_thread(&argc, &argv, MPI_THREAD_MULTIPLE, &threadLevel);  // PT-Scotch needs it
  MemoryRates const rates = benchmarks::MeasureMemoryRates([] {});
  for (std::string const shape : {"hex", "tet"})
    for (int i = 1; i < argc; ++i) RunMesh(shape, std::atof(argv[i]), rates);
  MPI_Finalize();
  return 0;
}
