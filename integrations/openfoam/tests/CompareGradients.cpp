// Compares gradient schemes cell by cell on the mesh of a case, on any number of ranks.
//
//   zynFoamCompare -case DIR [-parallel] [-smooth PAIRS] [-linear PAIRS] [-components SCHEMES]
//
// A pair is a scheme and what it is compared with: another scheme, "reference leastSquares", "reference iterated N" or,
// on a linear field, "exact". Prints a line for each comparison, with tabs between:
//
//   result  FIELD  SCHEME  REFERENCE  DIFFERENCE  BOUNDARY  SLOPE  CELLS
//
// DIFFERENCE is the largest in a cell, BOUNDARY the largest of the patches' values (only between two schemes), SLOPE the
// largest length of the reference. NaN anywhere makes the difference NaN.

#include <cmath>
#include <cstdio>
#include <limits>
#include <string>

#include "IStringStream.H"
#include "PlainGradients.h"
#include "TestFields.h"
#include "Time.H"
#include "argList.H"
#include "gradScheme.H"

using namespace Foam;

namespace {

template <typename Type>
using VolField = GeometricField<Type, fvPatchField, volMesh>;
template <typename Type>
using Gradient = VolField<typename outerProduct<vector, Type>::type>;

template <typename Type>
tmp<Gradient<Type>> SchemeGradient(VolField<Type> const& field, string const& scheme) {
  IStringStream words(scheme);
  return fv::gradScheme<Type>::New(field.mesh(), words)().calcGrad(field, "grad(" + field.name() + ")");
}

/// The largest of what it is given, over all ranks; NaN stays.
class Largest {
 public:
  void Take(scalar value) {
    if (std::isnan(value))
      nan_ = true;
    else
      value_ = std::max(value_, value);
  }
  scalar Over() const {
    scalar const all = returnReduce(value_, maxOp<scalar>());
    return returnReduce(nan_, orOp<bool>()) ? std::numeric_limits<scalar>::quiet_NaN() : all;
  }

 private:
  scalar value_ = 0;
  bool nan_ = false;
};

void Print(std::string const& field, string const& scheme, string const& reference, Largest const& difference,
           Largest const& boundary, Largest const& slope, fvMesh const& mesh) {
  scalar const largest = difference.Over(), atPatches = boundary.Over(), unit = slope.Over();
  label const nCells = returnReduce(mesh.nCells(), sumOp<label>());
  if (Pstream::master()) {
    std::printf("result\t%s\t%s\t%s\t%.6e\t%.6e\t%.6e\t%d\n", field.c_str(), scheme.c_str(),
                reference.c_str(), largest, atPatches, unit, int(nCells));
  }
}

tmp<volVectorField> Reference(volScalarField const& p, string const& name) {
  if (name == "reference leastSquares") return plain::LeastSquares(p);
  return plain::IteratedGreenGauss(p, std::stoi(name.substr(name.rfind(' '))));
}

template <typename Type>
void CompareSchemes(std::string const& kind, VolField<Type> const& field, string const& scheme,
                    string const& other) {
  auto const tg = SchemeGradient(field, scheme), treference = SchemeGradient(field, other);
  Gradient<Type> const &g = tg(), &reference = treference();
  Largest difference, boundary, slope;
  forAll(g, cell) {
    difference.Take(mag(g[cell] - reference[cell]));
    slope.Take(mag(reference[cell]));
  }
  forAll(g.boundaryField(), patchi) {
    forAll(g.boundaryField()[patchi], i)
        boundary.Take(mag(g.boundaryField()[patchi][i] - reference.boundaryField()[patchi][i]));
  }
  Print(kind, scheme, other, difference, boundary, slope, field.mesh());
}

void ComparePair(string const& scheme, string const& other, volScalarField const& p,
                 volVectorField const& U) {
  if (!other.startsWith("reference ")) {
    CompareSchemes("scalar", p, scheme, other);
    CompareSchemes("vector", U, scheme, other);
    return;
  }
  auto const g = SchemeGradient(p, scheme);
  tmp<volVectorField> const reference = Reference(p, other);
  Largest difference, slope;
  forAll(g(), cell) {
    difference.Take(mag(g()[cell] - reference()[cell]));
    slope.Take(mag(reference()[cell]));
  }
  Print("scalar", scheme, other, difference, Largest(), slope, p.mesh());
}

/// The gradient of a field with the slope `exact`, which has no component along an empty direction.
void CompareExact(string const& scheme, fvMesh const& mesh) {
  vector slope(0.7, -0.4, 0.5);
  for (direction d = 0; d < 3; ++d)
    if (mesh.solutionD()[d] < 0) slope[d] = 0;
  tmp<volScalarField> const p =
      test_fields::Make<scalar>("linear", mesh, [&](vector const& x) { return slope & x; });
  auto const g = SchemeGradient(p(), scheme);
  Largest difference, unit;
  unit.Take(mag(slope));
  forAll(g(), cell) difference.Take(mag(g()[cell] - slope));
  Print("linear", scheme, "exact", difference, Largest(), unit, mesh);
}

/// A vector's gradient against those of its components.
void CompareComponents(string const& scheme, volVectorField const& U) {
  auto const g = SchemeGradient(U, scheme);
  Largest difference, slope;
  forAll(g(), cell) slope.Take(mag(g()[cell]));
  for (direction d = 0; d < 3; ++d) {
    tmp<volScalarField> const component = U.component(d);
    auto const gComponent = SchemeGradient(component(), scheme);
    forAll(g(), cell) {
      tensor const& T = g()[cell];
      difference.Take(mag(vector(T[d], T[3 + d], T[6 + d]) - gComponent()[cell]));
    }
  }
  Print("components", scheme, "three scalars", difference, Largest(), slope, U.mesh());
}

List<string> Words(argList const& args, word const& option) {
  return args.found(option) ? List<string>(IStringStream(args[option])()) : List<string>();
}

}  // namespace

int main(int argc, char* argv[]) {
  argList::noBanner();
  argList::addOption("smooth", "pairs", "pairs of schemes to compare on a smooth scalar and a smooth vector");
  argList::addOption("linear", "schemes", "schemes to compare with the slope of a linear scalar");
  argList::addOption("components", "schemes",
                     "schemes of which a vector's gradient is compared with three scalars'");
  argList const args(argc, argv);
  Time runTime(Time::controlDictName, args);
  fvMesh const mesh(IOobject(fvMesh::defaultRegion, runTime.timeName(), runTime));

  test_fields::UnitPlace const place(mesh);
  tmp<volScalarField> const p =
      test_fields::Make<scalar>("p", mesh, [&](vector const& x) { return test_fields::Smooth(place(x)); });
  tmp<volVectorField> const U = test_fields::Make<vector>(
      "U", mesh, [&](vector const& x) { return test_fields::SmoothVector(place(x)); });

  List<string> const pairs = Words(args, "smooth");
  for (label i = 0; i + 1 < pairs.size(); i += 2) ComparePair(pairs[i], pairs[i + 1], p(), U());
  for (string const& scheme : Words(args, "linear")) CompareExact(scheme, mesh);
  for (string const& scheme : Words(args, "components")) CompareComponents(scheme, U());
  return 0;
}
