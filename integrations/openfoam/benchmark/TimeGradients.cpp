// Times gradient schemes on the mesh of a case, in one process, and tells what the scheme zyn costs beside the library.
//
//   zynFoamTime -case DIR [-parallel] [-rounds N] [-schemes SCHEMES]
//
// Every scheme is called once in each round, after a call that is not timed, so that a slow spell of the machine falls on
// all of them. Rows of the library alone follow for the methods of zyn: the operator's call on arrays that are filled, and
// the same with filling and copying out. On one rank, times are the processor's; on several, a time is that of the slowest
// rank. Prints, with tabs between:
//
//   mesh    CELLS  FACES  RANKS  GB_PER_SECOND                 rate at which a core reads memory
//   setup   SCHEME  SECONDS  BYTES_PER_CELL                    first call less a later one; what stays allocated
//   time    FIELD  SCHEME  NS_PER_CELL  RATIO                  lowest time; median of the ratios to the first scheme
//   client  FIELD  SCHEME  LIBRARY_NS  CLIENT_NS  SCHEME_NS  PERCENT    medians; client is filling and copying out, and the
//                                                              percentage is its part of the scheme's call
//   own     FIELD  SCHEME  OWN  LIBRARY_NS  OWN_NS  RATIO  SCHEME_RATIO    medians; OWN is OpenFOAM's scheme of the same kind,
//                                                              if it is timed; ratios of the operator's call alone and of
//                                                              the whole scheme to it

#include <malloc.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "IStringStream.H"
#include "Time.H"
#include "argList.H"
#include "benchmarks/MemoryRates.h"
#include "gradScheme.H"
#include "gradient/COperatorGradient.h"
#include "host/FvGradients.h"
#include "host/FvMeshHost.h"
#include "surfaceFields.H"
#include "tests/TestFields.h"

using namespace Foam;

namespace {

template <typename Type>
using VolField = GeometricField<Type, fvPatchField, volMesh>;
template <typename Type>
using GradientOf = typename outerProduct<vector, Type>::type;

/// On one rank the processor's time, which other programs disturb least; on several the wall's, since ranks wait for each
/// other.
double Now() {
  if (!Pstream::parRun()) return double(std::clock()) / CLOCKS_PER_SEC;
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

void Barrier() { returnReduce(label(0), sumOp<label>()); }

/// Seconds of the slowest rank.
double Seconds(std::function<void()> const& call) {
  Barrier();
  double const start = Now();
  call();
  return returnReduce(scalar(Now() - start), maxOp<scalar>());
}

double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  std::size_t const n = values.size();
  return n % 2 == 1 ? values[n / 2] : 0.5 * (values[n / 2 - 1] + values[n / 2]);
}

double LiveBytes() {
  struct mallinfo2 const info = mallinfo2();
  return double(info.uordblks) + double(info.hblkhd);
}

struct Row {
  std::string field, scheme;
  std::function<void()> call;
  std::vector<double> seconds;
};

template <typename Type>
std::function<void()> SchemeCall(VolField<Type> const& field, string const& scheme) {
  IStringStream words(scheme);
  auto gradient = std::make_shared<tmp<fv::gradScheme<Type>>>(fv::gradScheme<Type>::New(field.mesh(), words));
  return [&field, gradient] { (*gradient)().calcGrad(field, "grad"); };
}

/// Filling, the operator's call, copying out: the scheme without the field of the result and its boundary values.
template <typename Type>
std::function<void()> ClientCall(VolField<Type> const& field, string const& scheme) {
  IStringStream words(scheme.substr(4));
  zyn::GradientMethod const method = zyn::GradientMethod::Read(words);
  auto result = std::make_shared<Field<GradientOf<Type>>>(field.size());
  return [&field, method, result] {
    zyn::FvMeshHost::Of(field.mesh()).gradients().Calculate(method, field, *result);
  };
}

/// The operator's call alone, on arrays that are filled.
template <typename Type>
std::function<void()> LibraryCall(VolField<Type> const& field, string const& scheme) {
  using Kind = zyn::GradientMethod::Kind;
  struct State {
    COperatorGradient op;
    zyn::StaggeredArrays arrays;
    ~State() { op.Release(); }
  };
  constexpr int n = pTraits<Type>::nComponents;
  IStringStream words(scheme.substr(4));
  zyn::GradientMethod const method = zyn::GradientMethod::Read(words);
  zyn::FvMeshHost& host = zyn::FvMeshHost::Of(field.mesh());
  auto& records = host.Faces();
  auto state = std::make_shared<State>();
  state->arrays = zyn::StaggeredArrays(4 * n, std::size_t(host.arrays().nAllCells()));
  double* fields[4 * n];
  for (int k = 0; k < 4 * n; ++k) fields[k] = state->arrays[k];
  host.arrays().Fill(field, fields);
  bool const isLeastSquares = method.kind == Kind::kLeastSquares;
  state->op.getZyn3dGV(records.globals(), nullptr, nullptr,
                       isLeastSquares ? records.mesh() : records.meshWithoutEmptyFaces());
  state->op.getPartitionFace(records.partitionFaces());
  state->op.getCommunication(&host.exchange(), &host.reduction());
  int type = isLeastSquares ? 1 : 0;
  state->op.getGradType(type);
  state->op.SetResultExchange(false);
  state->op.Initialize();
  return [state, method] {
    zyn::StaggeredArrays& a = state->arrays;
    if (n == 3 && (method.kind == Kind::kPlain || method.kind == Kind::kLeastSquares)) {
      auto const three = method.kind == Kind::kPlain ? &COperatorGradient::GradMethod_3
                                                     : &COperatorGradient::GradMethod_LeastSquares_3;
      (state->op.*three)(a[0] - 1, a[1] - 1, a[2] - 1, a[3] - 1, a[4] - 1, a[5] - 1, a[6] - 1, a[7] - 1,
                         a[8] - 1, a[9] - 1, a[10] - 1, a[11] - 1);
      return;
    }
    for (int k = 0; k < n; ++k)
      state->op.GradMethod(a[k] - 1, a[n + 3 * k] - 1, a[n + 3 * k + 1] - 1, a[n + 3 * k + 2] - 1,
                           method.nSweeps);
  };
}

/// First call on a mesh without a host, less a later one; and the bytes that stay.
void PrintSetUp(volScalarField const& p, string const& scheme, double nCells) {
  zyn::FvMeshHost::Delete(p.mesh());
  double const before = LiveBytes();
  auto const call = SchemeCall(p, scheme);
  double const first = Seconds(call);
  double const bytes = returnReduce(scalar(LiveBytes() - before), sumOp<scalar>());
  std::vector<double> later;
  for (int i = 0; i < 3; ++i) later.push_back(Seconds(call));
  if (Pstream::master())
    std::printf("setup\t%s\t%.3f\t%.0f\n", scheme.c_str(), first - Median(later), bytes / nCells);
}

void Measure(std::vector<Row>& rows, label rounds) {
  for (label round = 0; round < rounds; ++round) {
    for (Row& row : rows) {
      row.call();
      row.seconds.push_back(Seconds(row.call));
    }
  }
}

std::vector<double> Combine(std::vector<double> const& a, std::vector<double> const& b,
                            std::function<double(double, double)> const& f) {
  std::vector<double> result;
  for (std::size_t i = 0; i < a.size(); ++i) result.push_back(f(a[i], b[i]));
  return result;
}

/// OpenFOAM's scheme of the same kind.
string OwnSchemeFor(string const& scheme) {
  if (scheme.startsWith("zyn plain")) return "Gauss linear";
  if (scheme.startsWith("zyn iterated")) return "Gauss skewCorrected linear";
  if (scheme.startsWith("zyn leastSquares")) return "leastSquares";
  return "";
}

/// Times the schemes and, for those of zyn with an operator of its own on faces, the parts of a call.
template <typename Type>
void TimeSchemes(std::string const& kind, VolField<Type> const& field, List<string> const& schemes,
                 label rounds, double nCells) {
  std::vector<Row> rows;
  for (string const& scheme : schemes) {
    rows.push_back({kind, scheme, SchemeCall(field, scheme), {}});
    if (!scheme.startsWith("zyn ") || scheme == "zyn radialBasis") continue;
    rows.push_back({"client", scheme, ClientCall(field, scheme), {}});
    rows.push_back({"library", scheme, LibraryCall(field, scheme), {}});
  }
  Measure(rows, rounds);
  if (!Pstream::master()) return;

  double const ns = 1e9 / nCells;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    Row const& row = rows[i];
    if (row.field != kind) continue;
    std::printf("time\t%s\t%s\t%.2f\t%.2f\n", kind.c_str(), row.scheme.c_str(),
                ns * *std::min_element(row.seconds.begin(), row.seconds.end()),
                Median(Combine(row.seconds, rows[0].seconds, [](double a, double b) { return a / b; })));
    if (i + 1 == rows.size() || rows[i + 1].field != "client") continue;
    auto const &client = rows[i + 1].seconds, &library = rows[i + 2].seconds;
    auto const overhead = Combine(client, library, [](double a, double b) { return a - b; });
    std::printf("client\t%s\t%s\t%.2f\t%.2f\t%.2f\t%.1f\n", kind.c_str(), row.scheme.c_str(),
                ns * Median(library), ns * Median(overhead), ns * Median(row.seconds),
                100 * Median(Combine(overhead, row.seconds, [](double a, double b) { return a / b; })));
    for (Row const& own : rows) {
      if (own.field != kind || own.scheme != OwnSchemeFor(row.scheme)) continue;
      auto const ratio = [](double a, double b) { return a / b; };
      std::printf("own\t%s\t%s\t%s\t%.2f\t%.2f\t%.3f\t%.3f\n", kind.c_str(), row.scheme.c_str(),
                  own.scheme.c_str(), ns * Median(library), ns * Median(own.seconds),
                  Median(Combine(library, own.seconds, ratio)),
                  Median(Combine(row.seconds, own.seconds, ratio)));
    }
  }
}

}  // namespace

int main(int argc, char* argv[]) {
  argList::noBanner();
  argList::addOption("rounds", "N", "timed calls of each scheme (11)");
  argList::addOption("schemes", "schemes", "schemes to time; the first is what others are compared with");
  argList const args(argc, argv);
  Time runTime(Time::controlDictName, args);
  fvMesh const mesh(IOobject(fvMesh::defaultRegion, runTime.timeName(), runTime));
  label const rounds = args.getOrDefault<label>("rounds", 11);
  List<string> schemes(
      {"Gauss linear", "leastSquares", "zyn plain", "zyn iterated 3", "zyn leastSquares", "zyn radialBasis"});
  if (args.found("schemes")) schemes = List<string>(IStringStream(args["schemes"])());

  test_fields::UnitPlace const place(mesh);
  tmp<volScalarField> const p =
      test_fields::Make<scalar>("p", mesh, [&](vector const& x) { return test_fields::Smooth(place(x)); });
  tmp<volVectorField> const U = test_fields::Make<vector>(
      "U", mesh, [&](vector const& x) { return test_fields::SmoothVector(place(x)); });
  SchemeCall(p(), "Gauss linear")();  // makes the geometry that OpenFOAM keeps with the mesh

  double const nCells = returnReduce(mesh.nCells(), sumOp<label>());
  double const nFaces = returnReduce(mesh.nFaces(), sumOp<label>());
  double const rate = benchmarks::MeasureMemoryRates(Barrier).read;
  if (Pstream::master())
    std::printf("mesh\t%.0f\t%.0f\t%d\t%.1f\n", nCells, nFaces, int(Pstream::nProcs()), rate / 1e9);

  for (string const& scheme : schemes)
    if (scheme != "Gauss linear") PrintSetUp(p(), scheme, nCells);
  TimeSchemes("scalar", p(), schemes, rounds, nCells);
  TimeSchemes("vector", U(), schemes, rounds, nCells);
  return 0;
}
