// What the radial-basis gradient is worth on box meshes, against the span of its kernel.
//
//   rbf_accuracy [write FILE | compare FILE | moved]
//
// With `moved`, the same meshes are turned or scaled, and the gradients compared with those on the meshes as they were.
// With `write`, the gradients of the smooth field go to a file; with `compare`, the last column shows how far they are
// from those in the file, which another build of LAPACK may have written.

#include <lapacke.h>
#include <mpi.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "benchmarks/CellOperatorOnMesh.h"
#include "benchmarks/ProcessMeasures.h"
#include "host/Zyn3dGV.h"

namespace {

using benchmarks::CellOperatorOnMesh;
using benchmarks::CellSystems;
using benchmarks::QuietOutput;
using reference_host::BoundaryGroup;
using reference_host::Point;

/// A field and its exact slope on the unit cube.
struct Field {
  std::function<double(Point const&)> value;
  std::function<Point(Point const&)> slope;
};

Field const kConstant = {[](Point const&) { return 1.0; }, [](Point const&) { return Point{0, 0, 0}; }};
Field const kLinear = {[](Point const& p) { return 2 * p[0] + 3 * p[1] - p[2] + 1; },
                       [](Point const&) {
                         return Point{2, 3, -1};
                       }};
Field const kSmooth = {[](Point const& p) { return std::sin(2 * p[0]) * p[1] + p[2] * p[2]; },
                       [](Point const& p) {
                         return Point{2 * std::cos(2 * p[0]) * p[1], std::sin(2 * p[0]), 2 * p[2]};
                       }};

double Norm(Point const& p) { return std::sqrt(p[0] * p[0] + p[1] * p[1] + p[2] * p[2]); }

struct MedianAndWorst {
  double median = 0, worst = 0;
};

MedianAndWorst Summary(std::vector<double> values) {
  if (values.empty()) return {};
  std::sort(values.begin(), values.end());
  return {values[values.size() / 2], values.back()};
}

std::vector<Point> Gradient(CellOperatorOnMesh& on, Field const& field) {
  CZYN3DFiniteVolumeMesh const& m = on.mesh();
  std::vector<double> phi(static_cast<std::size_t>(m.NCell) + 1), gx(phi), gy(phi), gz(phi);
  for (int c = 1; c <= m.NCell; ++c) phi[c] = field.value({m.xc[c], m.yc[c], m.zc[c]});
  on.op().MultiplyRBFCoefficent(phi.data(), gx.data(), gy.data(), gz.data());
  std::vector<Point> g(phi.size());
  for (int c = 1; c <= m.NInnerCells; ++c) g[c] = {gx[c], gy[c], gz[c]};
  return g;
}

// Length of the error, in each cell that counts, over the largest exact slope (over 1 for the constant).
MedianAndWorst Errors(CellOperatorOnMesh& on, Field const& field, std::vector<bool> const& counts) {
  CZYN3DFiniteVolumeMesh const& m = on.mesh();
  std::vector<Point> const g = Gradient(on, field);
  std::vector<double> errors;
  double scale = 0;
  for (int c = 1; c <= m.NInnerCells; ++c) {
    Point const exact = field.slope({m.xc[c], m.yc[c], m.zc[c]});
    scale = std::max(scale, Norm(exact));
    if (counts[c]) errors.push_back(Norm({g[c][0] - exact[0], g[c][1] - exact[1], g[c][2] - exact[2]}));
  }
  if (scale > 0)
    for (double& e : errors) e /= scale;
  return Summary(errors);
}

// Of the cells' systems, in the 1-norm, as LAPACK estimates it from the factors.
MedianAndWorst ConditionNumbers(CellOperatorOnMesh& on, std::vector<bool> const& counts) {
  std::vector<double> conditions;
  std::vector<lapack_int> pivots(1024);
  for (int c = 1; c <= on.mesh().NInnerCells; ++c) {
    if (!counts[c]) continue;
    CellSystems s;
    on.AppendSystem(c, s);
    lapack_int const n = s.order[0];
    double* const A = s.matrices.data();
    double const norm = LAPACKE_dlange(LAPACK_ROW_MAJOR, '1', n, n, A, n);
    double reciprocal = 0;
    LAPACKE_dgetrf(LAPACK_ROW_MAJOR, n, n, A, n, pivots.data());
    LAPACKE_dgecon(LAPACK_ROW_MAJOR, '1', n, A, n, norm, &reciprocal);
    conditions.push_back(1 / reciprocal);
  }
  return Summary(conditions);
}

std::vector<bool> CellsBesideSymmetry(CZYN3DFiniteVolumeMesh const& m) {
  std::vector<bool> beside(static_cast<std::size_t>(m.NCell) + 1, false);
  for (int f = 1; f <= m.NSymmetry; ++f) beside[m.ijSymmetryCV[f]] = true;
  return beside;
}

/// Gradients of one run after the other, written to a file or compared with what is there.
class Record {
 public:
  Record(std::string const& how, std::string const& fileName) {
    if (how == "write") out_.open(fileName, std::ios::binary);
    if (how == "compare") in_.open(fileName, std::ios::binary);
  }

  /// Largest difference over the largest gradient; "-" when nothing is compared.
  std::string Take(std::vector<Point> const& g, std::vector<bool> const& counts) {
    auto const bytes = static_cast<std::streamsize>(g.size() * sizeof(Point));
    if (out_.is_open()) out_.write(static_cast<char const*>(static_cast<void const*>(g.data())), bytes);
    if (!in_.is_open()) return "-";
    std::vector<Point> other(g.size());
    in_.read(static_cast<char*>(static_cast<void*>(other.data())), bytes);
    if (!in_) return "no data";
    double difference = 0, scale = 0;
    for (std::size_t c = 1; c < g.size(); ++c) {
      if (!counts[c]) continue;
      scale = std::max(scale, Norm(g[c]));
      difference =
          std::max(difference, Norm({g[c][0] - other[c][0], g[c][1] - other[c][1], g[c][2] - other[c][2]}));
    }
    char text[32];
    std::snprintf(text, sizeof text, "%.1e", difference / scale);
    return text;
  }

 private:
  std::ofstream out_;
  std::ifstream in_;
};

void PrintLine(CellOperatorOnMesh& on, std::string const& name, std::vector<bool> const& counts,
               Record& record) {
  MedianAndWorst const linear = Errors(on, kLinear, counts), smooth = Errors(on, kSmooth, counts);
  MedianAndWorst const condition = ConditionNumbers(on, counts);
  std::printf("| %s | %g | %.1e | %.1e | %.1e | %.1e | %.1e | %.1e | %.1e | %s |\n", name.c_str(),
              on.op().Span, Errors(on, kConstant, counts).worst, linear.median, linear.worst, smooth.median,
              smooth.worst, condition.median, condition.worst,
              record.Take(Gradient(on, kSmooth), counts).c_str());
}

void Measure(std::string const& name, CellOperatorOnMesh& on, std::vector<double> const& spans,
             Record& record) {
  {
    QuietOutput const quiet;
    on.NewOperator().InitialRBFSetting();
  }
  std::vector<bool> const beside = CellsBesideSymmetry(on.mesh());
  std::vector<bool> away = beside;
  away.flip();
  for (double const span : spans) {
    on.op().Span = span;
    {
      QuietOutput const quiet;
      on.op().DeriveRBFweighting();
    }
    PrintLine(on, name, away, record);
    if (on.mesh().NSymmetry > 0) PrintLine(on, name + ", beside symmetry", beside, record);
  }
}

void Run(Record& record) {
  std::printf(
      "| mesh | Span | constant | linear median | worst | smooth median | worst | condition median | worst | "
      "difference |\n|---|---|---|---|---|---|---|---|---|---|\n");
  std::vector<double> const spans = {2, 5, 20, 50, 100, 200, 500, 1000, 2000};
  for (std::string const box : {"box:20,20,20:hex", "box:12,12,12:tet"}) {
    CellOperatorOnMesh on(box);
    Measure(box, on, spans, record);
  }
  for (std::string const box : {"box:10,10,10:hex", "box:20,20,20:hex:perturb=0.2,seed=1", "box:6,6,6:tet",
                                "box:12,12,12:tet:perturb=0.2,seed=1"}) {
    CellOperatorOnMesh on(box);
    Measure(box, on, {5, 500}, record);
  }
  for (std::string const box : {"box:20,20,20:hex", "box:12,12,12:tet"}) {
    CellOperatorOnMesh on(box,
                          {{"wall_ymin", BoundaryGroup::Symmetry}, {"wall_ymax", BoundaryGroup::Symmetry}});
    Measure(box, on, {5, 500}, record);
  }
}

/// x -> factor R x, with a turn R around the axis (1, 2, 3).
struct Move {
  std::string name;
  double degrees, factor;

  Point operator()(Point const& p) const {  // Rodrigues' formula
    double const length = std::sqrt(14.0);
    Point const k = {1 / length, 2 / length, 3 / length};
    double const angle = degrees * std::acos(-1.0) / 180, c = std::cos(angle), s = std::sin(angle);
    double const along = (k[0] * p[0] + k[1] * p[1] + k[2] * p[2]) * (1 - c);
    Point const across = {k[1] * p[2] - k[2] * p[1], k[2] * p[0] - k[0] * p[2], k[0] * p[1] - k[1] * p[0]};
    Point moved;
    for (std::size_t i = 0; i < 3; ++i) moved[i] = factor * (c * p[i] + s * across[i] + k[i] * along);
    return moved;
  }
};

void MovePlaces(Move const& move, int n, double* x, double* y, double* z) {
  for (int i = 1; i <= n; ++i) {
    Point const p = move({x[i], y[i], z[i]});
    x[i] = p[0], y[i] = p[1], z[i] = p[2];
  }
}

/// All places that the cell operator reads.
void MoveMesh(Move const& move, CZYN3DFiniteVolumeMesh& m) {
  MovePlaces(move, m.NCell, m.xc, m.yc, m.zc);
  MovePlaces(move, m.NInnerFaces, m.ijxc, m.ijyc, m.ijzc);
  MovePlaces(move, m.NWall, m.ijWallxc, m.ijWallyc, m.ijWallzc);
  MovePlaces(move, m.NInlet, m.ijInletxc, m.ijInletyc, m.ijInletzc);
  MovePlaces(move, m.NOutlet, m.ijOutletxc, m.ijOutletyc, m.ijOutletzc);
}

std::vector<Point> GradientOf(CellOperatorOnMesh& on, double span, std::vector<double> const& phi) {
  {
    QuietOutput const quiet;
    on.NewOperator().InitialRBFSetting();
    on.op().Span = span;
    on.op().DeriveRBFweighting();
  }
  std::vector<double> values = phi, gx(phi.size()), gy(phi.size()), gz(phi.size());
  on.op().MultiplyRBFCoefficent(values.data(), gx.data(), gy.data(), gz.data());
  std::vector<Point> g(phi.size());
  for (int c = 1; c <= on.mesh().NInnerCells; ++c) g[c] = {gx[c], gy[c], gz[c]};
  return g;
}

/// Worst error of the smooth field on the mesh as it is, and the largest difference that each move makes, all over
/// the largest exact slope.
void MeasureMoves(std::string const& box, double span, std::vector<Move> const& moves) {
  CellOperatorOnMesh still(box);
  CZYN3DFiniteVolumeMesh const& m = still.mesh();
  std::vector<double> phi(static_cast<std::size_t>(m.NCell) + 1);
  double scale = 0, error = 0;
  for (int c = 1; c <= m.NCell; ++c) phi[c] = kSmooth.value({m.xc[c], m.yc[c], m.zc[c]});
  std::vector<Point> const g = GradientOf(still, span, phi);
  for (int c = 1; c <= m.NInnerCells; ++c) {
    Point const exact = kSmooth.slope({m.xc[c], m.yc[c], m.zc[c]});
    scale = std::max(scale, Norm(exact));
    error = std::max(error, Norm({g[c][0] - exact[0], g[c][1] - exact[1], g[c][2] - exact[2]}));
  }
  std::printf("| %s | %g | %.1e |", box.c_str(), span, error / scale);
  for (Move const& move : moves) {
    CellOperatorOnMesh moved(box);
    MoveMesh(move, moved.mesh());
    std::vector<Point> const h = GradientOf(moved, span, phi);
    double difference = 0;
    for (int c = 1; c <= m.NInnerCells; ++c) {
      // The slope of the field on the moved mesh is R g / factor.
      Point const expected = Move{"", move.degrees, 1 / move.factor}(g[c]);
      Point const d = {h[c][0] - expected[0], h[c][1] - expected[1], h[c][2] - expected[2]};
      difference = std::max(difference, Norm(d) * move.factor);
    }
    std::printf(" %.1e |", difference / scale);
  }
  std::printf("\n");
}

void RunMoves() {
  std::vector<Move> const moves = {{"turned", 30, 1}, {"times 1000", 0, 1000}, {"times 1024", 0, 1024}};
  std::printf("| mesh | Span | worst error |");
  for (Move const& move : moves) std::printf(" %s |", move.name.c_str());
  std::printf("\n|---|---|---|---|---|---|\n");
  for (std::string const box :
       {"box:12,12,12:hex:perturb=0.2,seed=1", "box:12,12,12:tet", "box:12,12,12:prism", "box:12,12,12:dual",
        "box:16,16,16:dual", "box:12,12,12:dual:perturb=0.2,seed=1"})
    for (double const span : {20.0, 50.0, 100.0, 500.0}) MeasureMoves(box, span, moves);
}

}  // namespace

int main(int argc, char** argv) {
  int threadLevel = 0;
  MPI_Init_thread(&argc, &argv, MPI_THREAD_MULTIPLE, &threadLevel);  // PT-Scotch needs it
  if (argc == 2 && std::string(argv[1]) == "moved") {
    RunMoves();
  } else {
    Record record(argc > 2 ? argv[1] : "", argc > 2 ? argv[2] : "");
    Run(record);
  }
  MPI_Finalize();
  return 0;
}
