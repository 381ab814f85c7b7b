// Moves or refines the mesh of a case and compares gradients right after each change.
//
//   zynFoamChange -case DIR [-parallel] -changes N -by motion|update -schemes SCHEMES [-against SCHEME] [-memory]
//
// "motion" shakes all points that are not on the boundary; "update" lets the case's dynamicMeshDict change the mesh, with
// a field alpha.water, for refinement, that is 1 in a ball. The ball goes round once in 100 changes, so that the mesh is
// about the same after any multiple of these. Prints, with tabs between:
//
//   changes  N  MOTIONS  TOPOLOGY_CHANGES  CELLS_AT_LEAST  CELLS_AT_MOST
//   result   FIELD  SCHEME  REFERENCE  DIFFERENCE              the largest, relative to the largest slope after its change
//   memory   CHANGES  LIVE_BYTES                               after a tenth of the changes and after all of them

#include <malloc.h>

#include <cmath>
#include <cstdio>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "IStringStream.H"
#include "TestFields.h"
#include "Time.H"
#include "argList.H"
#include "dynamicFvMesh.H"
#include "gradScheme.H"
#include "mathematicalConstants.H"
#include "surfaceFields.H"

using namespace Foam;

namespace {

template <typename Type>
using VolField = GeometricField<Type, fvPatchField, volMesh>;

template <typename Type>
auto SchemeGradient(VolField<Type> const& field, string const& scheme) {
  IStringStream words(scheme);
  return fv::gradScheme<Type>::New(field.mesh(), words)().calcGrad(field, "grad(" + field.name() + ")");
}

/// The largest difference relative to the largest slope; NaN is larger than everything.
template <typename GradField>
scalar Difference(GradField const& g, GradField const& reference) {
  scalar difference = 0, slope = 0;
  forAll(g, cell) {
    scalar const d = mag(g[cell] - reference[cell]);
    difference = std::isnan(d) ? std::numeric_limits<scalar>::infinity() : std::max(difference, d);
    slope = std::max(slope, mag(reference[cell]));
  }
  return returnReduce(difference, maxOp<scalar>()) / returnReduce(slope, maxOp<scalar>());
}

/// Makes the next gradient begin with a mesh that it has never seen.
void ForgetHost(fvMesh const& mesh) {
  if (auto* host = mesh.thisDb().getObjectPtr<regIOobject>("zynHost")) host->checkOut();
}

/// Compares gradients of a field after each change.
template <typename Type>
class Comparison {
 public:
  Comparison(List<string> const& schemes, string const& against)
      : schemes_(schemes), against_(against), worst_(std::size_t(schemes.size()), 0) {}

  void Run(VolField<Type> const& field) {
    std::vector<decltype(SchemeGradient(field, against_))> g;
    for (string const& scheme : schemes_) g.push_back(SchemeGradient(field, scheme));
    if (against_.empty()) return;
    if (against_ == "fresh") ForgetHost(field.mesh());
    for (std::size_t s = 0; s < g.size(); ++s) {
      auto const reference = SchemeGradient(field, against_ == "fresh" ? schemes_[label(s)] : against_);
      worst_[s] = std::max(worst_[s], Difference(g[s](), reference()));
    }
  }

  void Print(char const* kind) const {
    for (std::size_t s = 0; s < worst_.size(); ++s)
      std::printf("result\t%s\t%s\t%s\t%.6e\n", kind, schemes_[label(s)].c_str(), against_.c_str(),
                  worst_[s]);
  }

 private:
  List<string> const& schemes_;
  string const& against_;
  std::vector<scalar> worst_;
};

/// Bytes in use that this process has allocated.
double LiveBytes() {
  struct mallinfo2 const info = mallinfo2();
  return double(info.uordblks) + double(info.hblkhd);
}

/// Moves inner points about their first places by up to a tenth of the shortest edge.
class Shaker {
 public:
  explicit Shaker(fvMesh const& mesh) : places_(mesh.points()), amplitude_(VGREAT) {
    for (edge const& e : mesh.edges()) amplitude_ = std::min(amplitude_, 0.1 * e.mag(mesh.points()));
    amplitude_ = returnReduce(amplitude_, minOp<scalar>());
    inner_.resize(std::size_t(mesh.nPoints()), true);
    for (label face = mesh.nInternalFaces(); face < mesh.nFaces(); ++face)
      for (label const point : mesh.faces()[face]) inner_[std::size_t(point)] = false;
  }

  void Shake(fvMesh& mesh) {
    pointField points(places_);
    std::uniform_real_distribution<scalar> move(-amplitude_, amplitude_);
    forAll(points, i) {
      if (inner_[std::size_t(i)]) points[i] += vector(move(random_), move(random_), move(random_));
    }
    mesh.movePoints(points);
  }

 private:
  pointField places_;
  scalar amplitude_;
  std::vector<bool> inner_;
  std::mt19937 random_{1};
};

scalar Ball(vector const& x, scalar turn) {
  vector const centre(0.5 + 0.3 * std::cos(turn), 0.5 + 0.3 * std::sin(turn), 0.5);
  return std::min(1.0, std::max(0.0, 0.5 - 4 * (mag(x - centre) - 0.25)));
}

}  // namespace

int main(int argc, char* argv[]) {
  argList::noBanner();
  argList::addOption("changes", "N", "number of changes");
  argList::addOption("by", "motion|update", "what changes the mesh");
  argList::addOption("schemes", "schemes", "gradients to compute after each change");
  argList::addOption("against", "scheme",
                     "scheme to compare them with; fresh: themselves, on a mesh that they have never seen; "
                     "none: they are only computed");
  argList::addBoolOption("memory", "print the bytes in use");
  argList const args(argc, argv);
  Time runTime(Time::controlDictName, args);
  runTime.functionObjects().off();

  bool const shaken = args["by"] == "motion";
  label const nChanges = args.get<label>("changes");
  List<string> const schemes((IStringStream(args["schemes"])()));
  string const against = args.getOrDefault<string>("against", "");

  IOobject const where(fvMesh::defaultRegion, runTime.timeName(), runTime);
  autoPtr<dynamicFvMesh> dynamicMesh;
  autoPtr<fvMesh> staticMesh;
  if (shaken)
    staticMesh.reset(new fvMesh(where));
  else
    dynamicMesh = dynamicFvMesh::New(args, runTime);
  fvMesh& mesh = shaken ? staticMesh() : static_cast<fvMesh&>(dynamicMesh());
  Shaker shaker(mesh);
  test_fields::UnitPlace const place(mesh);
  volScalarField alpha(
      test_fields::Make<scalar>("alpha.water", mesh, [&](vector const& x) { return Ball(place(x), 0); }));

  label nMotions = 0, nTopologyChanges = 0, fewest = labelMax, most = 0;
  Comparison<scalar> ofScalar(schemes, against);
  Comparison<vector> ofVector(schemes, against);
  for (label change = 1; change <= nChanges; ++change) {
    ++runTime;
    if (shaken) {
      shaker.Shake(mesh);
      mesh.topoChanging(false);
    } else {
      forAll(alpha, cell) alpha[cell] =
          Ball(place(mesh.C()[cell]), constant::mathematical::twoPi * scalar(change) / 100);
      alpha.correctBoundaryConditions();
      dynamicMesh().update();
    }
    nMotions += mesh.moving() ? 1 : 0;
    nTopologyChanges += mesh.topoChanging() ? 1 : 0;
    label const nCells = returnReduce(mesh.nCells(), sumOp<label>());
    fewest = std::min(fewest, nCells);
    most = std::max(most, nCells);

    tmp<volScalarField> const p = test_fields::Make<scalar>(
        "pTest", mesh, [&](vector const& x) { return test_fields::Smooth(place(x)); });
    tmp<volVectorField> const U = test_fields::Make<vector>(
        "UTest", mesh, [&](vector const& x) { return test_fields::SmoothVector(place(x)); });
    ofScalar.Run(p());
    // The operators are the same for vectors, and would begin with the mesh that the scalar has made fresh.
    if (against != "fresh") ofVector.Run(U());
    if (args.found("memory") && (change == nChanges / 10 || change == nChanges) && Pstream::master())
      std::printf("memory\t%d\t%.0f\n", int(change), LiveBytes());
  }
  if (!Pstream::master()) return 0;
  std::printf("changes\t%d\t%d\t%d\t%d\t%d\n", int(nChanges), int(nMotions), int(nTopologyChanges),
              int(fewest), int(most));
  if (against.empty()) return 0;
  ofScalar.Print("scalar");
  if (against != "fresh") ofVector.Print("vector");
  return 0;
}
