// Times and memory of the interpolation to faces and to free points on box meshes, on one core.
//
//   interpolation_benchmark [CELLS [POINTS [METHODS [SHAPES [SETUPS]]]]]
//
// METHODS is a string of digits, by default 1234; SHAPES is hex, tet or both, hex,tet, by default. Method 1 takes most of
// the time. The fastest of SETUPS set-ups counts. Prints lines for run.sh: see Report.h.
//
// Set-up stands beside bare LAPACKE_dgesv calls on the same systems, row-major as a program would write them. The program
// has a LAPACKE_dgesv of its own in front of LAPACK's, which the library calls through: in one run of the set-up it
// copies every system and solves the copies again, some at a time, in a loop that is timed; in the others it only passes
// the call on.
// Application is the median of 11 warm calls beside the time that its memory traffic takes at the least.

#include <dlfcn.h>
#include <lapacke.h>
#include <malloc.h>
#include <mpi.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "benchmarks/InterpolationCase.h"
#include "benchmarks/MemoryRates.h"
#include "benchmarks/ProcessMeasures.h"
#include "benchmarks/Report.h"
#include "rbf_face/CZynFaceRBFInternalObject.h"
#include "rbf_ib/CZynIBRBFInternalObject.h"

namespace {

using benchmarks::ForgetPeak;
using benchmarks::InterpolationCase;
using benchmarks::MemoryRates;
using benchmarks::QuietOutput;
using benchmarks::Report;
using benchmarks::Seconds;
using benchmarks::StatusBytes;
using benchmarks::Traffic;

constexpr int kRepetitions = 11;
int nSetUps = 3;
constexpr std::size_t kChunk = 32;  // systems that stay in the nearest cache

/// The systems that pass by, solved again in a timed loop.
class LapackClock {
 public:
  using Solver = decltype(&LAPACKE_dgesv);

  static LapackClock& Instance() {
    static LapackClock clock;
    return clock;
  }

  void Start() { isCopying_ = true, seconds_ = 0, nSystem_ = 0; }
  void Stop() {
    SolveCopies();
    isCopying_ = false;
  }
  double seconds() const { return seconds_; }
  double nSystem() const { return nSystem_; }

  lapack_int Solve(int layout, lapack_int n, lapack_int nrhs, double* a, lapack_int lda, lapack_int* pivots,
                   double* b, lapack_int ldb) {
    if (isCopying_) Copy(layout, n, nrhs, a, b);
    return solver_(layout, n, nrhs, a, lda, pivots, b, ldb);
  }

 private:
  struct System {
    lapack_int n, nrhs;
  };

  LapackClock() : solver_(reinterpret_cast<Solver>(dlsym(RTLD_NEXT, "LAPACKE_dgesv"))) {}

  // Row-major. All matrices are symmetric, so only right-hand sides depend on the layout.
  void Copy(int layout, lapack_int n, lapack_int nrhs, double const* a, double const* b) {
    systems_.push_back({n, nrhs});
    values_.insert(values_.end(), a, a + static_cast<std::ptrdiff_t>(n) * n);
    std::ptrdiff_t const nextRow = layout == LAPACK_ROW_MAJOR ? nrhs : 1;
    std::ptrdiff_t const nextColumn = layout == LAPACK_ROW_MAJOR ? 1 : n;
    for (lapack_int i = 0; i < n; ++i)
      for (lapack_int j = 0; j < nrhs; ++j) values_.push_back(b[i * nextRow + j * nextColumn]);
    if (static_cast<std::size_t>(n) > pivots_.size()) pivots_.resize(static_cast<std::size_t>(n));
    if (systems_.size() >= kChunk) SolveCopies();
  }

  void SolveCopies() {
    seconds_ += Seconds([this] {
      double* at = values_.data();
      for (System const& system : systems_) {
        double* const b = at + static_cast<std::ptrdiff_t>(system.n) * system.n;
        solver_(LAPACK_ROW_MAJOR, system.n, system.nrhs, at, system.n, pivots_.data(), b, system.nrhs);
        at = b + static_cast<std::ptrdiff_t>(system.n) * system.nrhs;
      }
    });
    nSystem_ += static_cast<double>(systems_.size());
    systems_.clear();
    values_.clear();
  }

  Solver solver_;
  bool isCopying_ = false;
  double seconds_ = 0, nSystem_ = 0;
  std::vector<System> systems_;
  std::vector<double> values_;
  std::vector<lapack_int> pivots_;
};

/// Seconds of the whole, bytes of the object and its work tables.
struct SetUp {
  double total = 1e300, lapack = 1e300, nSystem = 0, peakBytes = 0;
};

/// @param prepare  makes a fresh object
/// @param setUp    sets it up
template <class Prepare, class SetUpCall>
SetUp MeasureSetUp(Prepare const& prepare, SetUpCall const& setUp) {
  SetUp result;
  LapackClock& clock = LapackClock::Instance();
  for (int i = 0; i < nSetUps; ++i) {
    prepare();
    malloc_trim(0);
    ForgetPeak();
    double const before = StatusBytes("VmRSS");
    QuietOutput const quiet;
    result.total = std::min(result.total, Seconds(setUp));
    result.peakBytes = StatusBytes("VmHWM") - before;
    prepare();
    clock.Start();
    setUp();
    clock.Stop();
    result.lapack = std::min(result.lapack, clock.seconds());
    result.nSystem = clock.nSystem();
  }
  return result;
}

template <class Call>
double MedianSeconds(Call const& call) {
  call();  // warm
  std::vector<double> seconds;
  for (int i = 0; i < kRepetitions; ++i) seconds.push_back(Seconds(call));
  std::sort(seconds.begin(), seconds.end());
  return seconds[kRepetitions / 2];
}

struct Line {
  std::string shape, what;  // faces or points
  double cells, targets, members;
  int method;
  SetUp setUp;
  double application;
  Traffic traffic;
};

// What the set-up may take in units of its LAPACK calls.
double Target(int method) { return method == 1 ? 1.3 : method == 2 ? 1.6 : 2.0; }

void Print(Line const& line, MemoryRates const& rates) {
  double const per = 1e9 / line.targets;
  double const bound = BoundSeconds(line.traffic, rates) * per;
  std::string const row = benchmarks::NameOf(line.shape) + ", " + benchmarks::Thousands(line.cells) + " | " +
                          line.what + ", " + std::to_string(line.method);
  Report("set-up", row, "us", 1e-3 * line.setUp.total * per, 2);
  Report("set-up", row, "LAPACK, us", 1e-3 * line.setUp.lapack * per, 2);
  Report("set-up", row, "over LAPACK", line.setUp.total / line.setUp.lapack, 2, Target(line.method));
  Report("application", row, "number", line.targets, 0);
  Report("application", row, "members", line.members / line.targets, 1);
  Report("application", row, "ns", line.application * per, 1);
  Report("application", row, "bound, ns", bound, 1);
  Report("application", row, "over the bound", line.application * per / bound, 2);
  Report("application", row, "peak of the set-up, bytes", line.setUp.peakBytes / line.targets, 0);
}

template <class Row>
double SumOfLengths(Row** rows, int n) {
  double sum = 0;
  for (int i = 1; i <= n; ++i) sum += rows[i][0];
  return sum;
}

// Of the inner faces.
void RunFaces(InterpolationCase& host, std::string const& shape, int method, MemoryRates const& rates) {
  host.parameters.face = {0, 1000, method, -1.0, 20, 0};
  std::unique_ptr<CZynFaceRBFInternalObject> object;
  SetUp const setUp = MeasureSetUp(
      [&] {
        object = std::make_unique<CZynFaceRBFInternalObject>();
        host.Connect(*object);
      },
      [&] { object->Initialize_FaceInterpolateData(1); });

  int const n = object->NFace;
  std::vector<double> out[4];
  for (auto& values : out) values.resize(static_cast<std::size_t>(n) + 1);
  double const seconds = MedianSeconds([&] {
    object->Multiply_FaceRBFCoefficent(host.phi.data(), out[0].data(), out[1].data(), out[2].data(),
                                       out[3].data());
  });
  double const members = SumOfLengths(object->m_ppFaceCellConn, n);
  // Rows of cell numbers with their count and of weights with their unused element, two row pointers; the field once;
  // four cleared outputs, one of them written again.
  Traffic const traffic = {members * 12 + n * (4.0 + 8 + 16 + 5 * 8) + host.mesh.NCell * 8.0, n * 5 * 8.0};
  Print({shape, "faces", double(host.mesh.NInnerCells), double(n), members, method, setUp, seconds, traffic},
        rates);
}

// At random places of the box.
void RunPoints(InterpolationCase& host, std::string const& shape, int method, int nPoint,
               MemoryRates const& rates) {
  host.parameters.points = {0, 500, method, -1.0, 20};
  CZYN3DFiniteVolumeMesh const& mesh = host.mesh;
  std::vector<double> mark = host.AllCells();
  std::vector<double> place[3];
  for (int d = 0; d < 3; ++d) place[d] = host.RandomPlaces(nPoint, d);
  std::unique_ptr<CZynIBRBFInternalObject> object;
  SetUp const setUp = MeasureSetUp(
      [&] {
        object = std::make_unique<CZynIBRBFInternalObject>();
        host.Connect(*object);
      },
      [&] {
        object->Initialize_IBInterpolateData(mark.data(), nPoint, place[0].data(), place[1].data(),
                                             place[2].data());
      });
  std::vector<double> out[4];
  for (auto& values : out) values.resize(static_cast<std::size_t>(nPoint) + 1);
  double const seconds = MedianSeconds([&] {
    object->Multiply_IBRBFCoefficent(host.phi.data(), out[0].data(), out[1].data(), out[2].data(),
                                     out[3].data());
  });
  double const members = SumOfLengths(object->m_ppIBConn, nPoint);
  // Rows of cell numbers, of value weights and of records for the gradient, three row pointers; a field value a
  // member, as points come in no order; four outputs, cleared and written.
  double const n = nPoint;
  Traffic const traffic = {
      members * (4 + 8 + sizeof(IBCnode) + 8) + n * (4.0 + 8 + sizeof(IBCnode) + 24 + 8 * 8), n * 8 * 8};
  Print({shape, "points", double(mesh.NInnerCells), n, members, method, setUp, seconds, traffic}, rates);
}

// Twenty set-ups on one object, as a moving body makes them.
void RunAgain(InterpolationCase& host, int nPoint) {
  host.parameters.points = {0, 500, 2, -1.0, 20};
  CZYN3DFiniteVolumeMesh const& mesh = host.mesh;
  std::vector<double> mark(static_cast<std::size_t>(mesh.NCell) + 1, -1.0),
      x(static_cast<std::size_t>(nPoint) + 1);
  CZynIBRBFInternalObject object;
  host.Connect(object);
  std::mt19937 random(4);
  std::uniform_real_distribution<double> anywhere(0.0, 1.0);
  double second = 0;
  for (int i = 1; i <= 20; ++i) {
    for (double& value : x) value = anywhere(random);
    QuietOutput const quiet;
    object.Initialize_IBInterpolateData(mark.data(), nPoint, x.data(), x.data(), x.data());
    if (i == 2) second = StatusBytes("VmRSS");
  }
  std::string const row = "20 set-ups of " + benchmarks::Thousands(nPoint) + " points on one object";
  Report("again", row, "in use after the second, MB", second * 1e-6, 1);
  Report("again", row, "after the last", StatusBytes("VmRSS") * 1e-6, 1);
}

struct Choice {
  std::string methods = "1234", shapes = "hex,tet";

  bool Has(std::string const& shape) const { return shapes.find(shape) != std::string::npos; }
  bool Has(int method) const { return methods.find(static_cast<char>('0' + method)) != std::string::npos; }
};

void Run(double cells, int nPoint, Choice const& choice) {
  MemoryRates const rates = benchmarks::MeasureMemoryRates([] {});
  for (std::string const shape : {"hex", "tet"}) {
    if (!choice.Has(shape)) continue;
    InterpolationCase host(benchmarks::BoxText(cells, shape));
    for (int const method : {1, 2, 3, 4})
      if (choice.Has(method)) RunFaces(host, shape, method, rates);
    for (int const method : {1, 2, 3})
      if (choice.Has(method)) RunPoints(host, shape, method, nPoint, rates);
    if (shape == "hex" && choice.Has(2)) RunAgain(host, nPoint / 10);
  }
}

}  // namespace

// Stands in front of LAPACK's for the library, too.
extern "C" lapack_int LAPACKE_dgesv(int layout, lapack_int n, lapack_int nrhs, double* a, lapack_int lda,
                                    lapack_int* pivots, double* b, lapack_int ldb) {
  return LapackClock::Instance().Solve(layout, n, nrhs, a, lda, pivots, b, ldb);
}

int main(int argc, char** argv) {
  int threadLevel = 0;
  MPI_Init_thread(&argc, &argv, MPI_THREAD_MULTIPLE, &threadLevel);  // PT-Scotch needs it
  Choice choice;
  if (argc > 3) choice.methods = argv[3];
  if (argc > 4) choice.shapes = argv[4];
  if (argc > 5) nSetUps = std::atoi(argv[5]);
  Run(argc > 1 ? std::atof(argv[1]) : 20000, argc > 2 ? std::atoi(argv[2]) : 5000, choice);
  MPI_Finalize();
  return 0;
}
