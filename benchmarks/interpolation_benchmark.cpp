// Times and memory of the interpolation to faces and to free points on box meshes, on one core.
//
//   interpolation_benchmark [CELLS [POINTS [METHODS [SHAPES]]]]
//
// METHODS is a string of digits, by default 1234; SHAPES is hex, tet or both, hex,tet, by default. Method 1 takes most of
// the time.
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

#include "benchmarks/MemoryRates.h"
#include "benchmarks/ProcessMeasures.h"
#include "host/ZYNKNCompParm.h"
#include "host/Zyn3dGV.h"
#include "rbf_face/CZynFaceRBFInternalObject.h"
#include "rbf_ib/CZynIBRBFInternalObject.h"
#include "reference_host/parallel/LoadMesh.h"

namespace {

using benchmarks::ForgetPeak;
using benchmarks::MemoryRates;
using benchmarks::QuietOutput;
using benchmarks::Seconds;
using benchmarks::StatusBytes;
using benchmarks::Traffic;

constexpr int kRepetitions = 11;
constexpr int kSetUps = 3;          // the fastest counts
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

/// Settings that come from the program.
class Parameters : public CZYNKNCMPCompParm {
 public:
  CZYNCMP_FaceRBF_Parm* getFaceRBFParm() override { return &face; }
  CZYNCMP_IBRBF_Parm* getIBRBFParm() override { return &points; }

  CZYNCMP_FaceRBF_Parm face;
  CZYNCMP_IBRBF_Parm points;
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
  for (int i = 0; i < kSetUps; ++i) {
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

void PrintHead(char const* target) {
  std::printf("%-5s %8s %6s %8s %7s | %-34s | %10s | %-26s\n", "", "", "", "", "",
              (std::string("set-up, ns/") + target).c_str(), "peak",
              (std::string("application, ns/") + target).c_str());
  std::printf("%-5s %8s %6s %8s %7s | %9s %8s %8s %6s | %10s | %8s %8s %6s\n", "mesh", "cells", "method",
              target, "members", "systems", "total", "LAPACK", "ratio", (std::string("B/") + target).c_str(),
              "measured", "bound", "ratio");
}

struct Line {
  std::string shape;
  double cells, targets, members;
  int method;
  SetUp setUp;
  double application;
  Traffic traffic;
};

void Print(Line const& line, MemoryRates const& rates) {
  double const per = 1e9 / line.targets;
  double const bound = BoundSeconds(line.traffic, rates) * per;
  std::printf("%-5s %8.0f %6d %8.0f %7.2f | %9.2f %8.0f %8.0f %6.2f | %10.0f | %8.1f %8.1f %6.2f\n",
              line.shape.c_str(), line.cells, line.method, line.targets, line.members / line.targets,
              line.setUp.nSystem / line.targets, line.setUp.total * per, line.setUp.lapack * per,
              line.setUp.total / line.setUp.lapack, line.setUp.peakBytes / line.targets,
              line.application * per, bound, line.application * per / bound);
  std::fflush(stdout);
}

struct Host {
  explicit Host(std::string const& box)
      : loaded(reference_host::LoadMesh(MPI_COMM_WORLD, box, {}, {})), mesh(*loaded.partition->mesh()) {
    loaded.partition->SetBaseFileName("unused.cas");
    phi.resize(static_cast<std::size_t>(mesh.NCell) + 1);
    for (int c = 1; c <= mesh.NCell; ++c) phi[c] = std::sin(3 * mesh.xc[c]) * mesh.yc[c] + mesh.zc[c];
  }

  template <class Object>
  void Connect(Object& object) {
    object.getZyn3dGV(loaded.partition->globals(), nullptr, nullptr, &mesh);
    object.getPartitionFace(loaded.partition->partitionFaces());
    object.SetZYNKNCMP(&parameters);
  }

  reference_host::LoadedMesh loaded;
  CZYN3DFiniteVolumeMesh& mesh;
  Parameters parameters;
  std::vector<double> phi;
};

template <class Row>
double SumOfLengths(Row** rows, int n) {
  double sum = 0;
  for (int i = 1; i <= n; ++i) sum += rows[i][0];
  return sum;
}

// Of the inner faces.
void RunFaces(Host& host, std::string const& shape, int method, MemoryRates const& rates) {
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
  Print({shape, double(host.mesh.NInnerCells), double(n), members, method, setUp, seconds, traffic}, rates);
}

// At random places of the box.
void RunPoints(Host& host, std::string const& shape, int method, int nPoint, MemoryRates const& rates) {
  host.parameters.points = {0, 500, method, -1.0, 20};
  CZYN3DFiniteVolumeMesh const& mesh = host.mesh;
  std::vector<double> mark(static_cast<std::size_t>(mesh.NCell) + 1, 1.0);
  std::fill_n(mark.begin() + 1, mesh.NInnerCells, -1.0);
  std::vector<double> place[3];
  std::mt19937 random(3);
  double const* const nodes[3] = {mesh.xn, mesh.yn, mesh.zn};
  for (int d = 0; d < 3; ++d) {
    auto const [low, high] = std::minmax_element(nodes[d] + 1, nodes[d] + 1 + mesh.NNode);
    std::uniform_real_distribution<double> anywhere(*low, *high);
    place[d].resize(static_cast<std::size_t>(nPoint) + 1);
    for (double& value : place[d]) value = anywhere(random);
  }
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
  Print({shape, double(mesh.NInnerCells), n, members, method, setUp, seconds, traffic}, rates);
}

// Twenty set-ups on one object, as a moving body makes them.
void RunAgain(Host& host, int nPoint) {
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
  std::printf("20 set-ups on one object: %.1f MB in use after the second, %.1f MB after the last\n",
              second * 1e-6, StatusBytes("VmRSS") * 1e-6);
}

struct Choice {
  std::string methods = "1234", shapes = "hex,tet";

  bool Has(std::string const& shape) const { return shapes.find(shape) != std::string::npos; }
  bool Has(int method) const { return methods.find(static_cast<char>('0' + method)) != std::string::npos; }
};

void Run(double cells, int nPoint, Choice const& choice) {
  MemoryRates const rates = benchmarks::MeasureMemoryRates([] {});
  std::printf("one core: read %.2f GB/s, in-place update %.2f GB/s, triad %.2f GB/s\n", rates.read * 1e-9,
              rates.update * 1e-9, rates.triad * 1e-9);
  PrintHead("faces");
  for (std::string const shape : {"hex", "tet"}) {
    if (!choice.Has(shape)) continue;
    for (double const share : {1.0 / 3, 1.0}) {
      Host host(benchmarks::BoxText(share * cells, shape));
      for (int const method : {1, 2, 3, 4})
        if (choice.Has(method)) RunFaces(host, shape, method, rates);
    }
  }
  PrintHead("points");
  for (std::string const shape : {"hex", "tet"}) {
    if (!choice.Has(shape)) continue;
    Host host(benchmarks::BoxText(cells, shape));
    for (int const share : {2, 1})
      for (int const method : {1, 2, 3})
        if (choice.Has(method)) RunPoints(host, shape, method, nPoint / share, rates);
    if (shape == "hex") RunAgain(host, nPoint / 10);
  }
}

}  // namespace

// Stands in front of LAPACK's for the library, too.
extern "C" lapack_int LAPACKE_dgesv(int layout, lapack_int n, lapack_int nrhs, double* a, lapack_int lda,
                                    lapack_int* pivots, double* b, lapack_int ldb) {
  return LapackClock::Instance().Solve(layout, n, nrhs, a, lda, pivots, b, ldb);
}

int main(int argc, char** argv) {
  MPI_Init(&argc, &argv);
  Choice choice;
  if (argc > 3) choice.methods = argv[3];
  if (argc > 4) choice.shapes = argv[4];
  Run(argc > 1 ? std::atof(argv[1]) : 3e5, argc > 2 ? std::atoi(argv[2]) : 50000, choice);
  MPI_Finalize();
  return 0;
}
