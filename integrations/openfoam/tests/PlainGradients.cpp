#include "PlainGradients.h"

#include <algorithm>

#include "calculatedFvPatchFields.H"
#include "emptyFvPatch.H"
#include "fvMesh.H"
#include "surfaceFields.H"

using namespace Foam;

namespace plain {
namespace {

tmp<volVectorField> ZeroGradient(volScalarField const& p) {
  return tmp<volVectorField>::New(
      IOobject("plainGradient", p.instance(), p.mesh(), IOobject::NO_READ, IOobject::NO_WRITE, false),
      p.mesh(), dimensionedVector(p.dimensions() / dimLength, Zero), calculatedFvPatchVectorField::typeName);
}

/// What least squares sums in each cell.
struct Sums {
  symmTensorField moments;
  vectorField rightHandSide;

  void Add(label cell, vector const& d, scalar dphi) {
    moments[cell] += sqr(d);
    rightHandSide[cell] += dphi * d;
  }
};

scalar Median(scalar a, scalar b, scalar c) { return std::max(std::min(a, b), std::min(std::max(a, b), c)); }

/// One side of a face between two cells: value, gradient and place of the cell.
struct Side {
  scalar value;
  vector gradient, place;
};

/// Value at the face's centre; `w` belongs to `a`.
scalar FaceValue(Side const& a, Side const& b, scalar w, vector const& faceCentre) {
  scalar const linear = w * a.value + (1 - w) * b.value;
  vector const foot = w * a.place + (1 - w) * b.place;
  vector const slope = w * a.gradient + (1 - w) * b.gradient;
  return Median(a.value, linear + (slope & (faceCentre - foot)), b.value);
}

}  // namespace

tmp<volVectorField> LeastSquares(volScalarField const& p) {
  fvMesh const& mesh = p.mesh();
  volVectorField const& C = mesh.C();
  Sums sums{symmTensorField(mesh.nCells(), Zero), vectorField(mesh.nCells(), Zero)};

  forAll(mesh.neighbour(), face) {
    label const own = mesh.owner()[face], nei = mesh.neighbour()[face];
    vector const d = C[nei] - C[own];
    sums.Add(own, d, p[nei] - p[own]);
    sums.Add(nei, -d, p[own] - p[nei]);
  }
  forAll(mesh.boundary(), patchi) {
    fvPatch const& patch = mesh.boundary()[patchi];
    polyPatch const& faces = patch.patch();
    fvPatchScalarField const& values = p.boundaryField()[patchi];
    if (patch.coupled()) {
      scalarField const other(values.patchNeighbourField());
      vectorField const d(patch.delta());
      forAll(d, i) sums.Add(faces.faceCells()[i], d[i], other[i] - p[faces.faceCells()[i]]);
    } else {
      bool const empty = isA<emptyFvPatch>(patch);
      forAll(faces, i) {
        label const cell = faces.faceCells()[i];
        sums.Add(cell, faces.faceCentres()[i] - C[cell], empty ? 0 : values[i] - p[cell]);
      }
    }
  }

  tmp<volVectorField> result = ZeroGradient(p);
  forAll(sums.moments, cell) result.ref()[cell] = inv(sums.moments[cell]) & sums.rightHandSide[cell];
  return result;
}

tmp<volVectorField> IteratedGreenGauss(volScalarField const& p, int nSweep) {
  fvMesh const& mesh = p.mesh();
  tmp<volVectorField> result = ZeroGradient(p);
  volVectorField& previous = result.ref();

  for (int sweep = 1; sweep <= nSweep; ++sweep) {
    vectorField g(mesh.nCells(), Zero);
    forAll(mesh.neighbour(), face) {
      label const own = mesh.owner()[face], nei = mesh.neighbour()[face];
      vector const flux =
          FaceValue({p[own], previous[own], mesh.C()[own]}, {p[nei], previous[nei], mesh.C()[nei]},
                    mesh.weights()[face], mesh.Cf()[face]) *
          mesh.Sf()[face];
      g[own] += flux;
      g[nei] -= flux;
    }
    forAll(mesh.boundary(), patchi) {
      fvPatch const& patch = mesh.boundary()[patchi];
      fvPatchScalarField const& values = p.boundaryField()[patchi];
      if (patch.coupled()) {
        scalarField const other(values.patchNeighbourField());
        vectorField const otherGradient(previous.boundaryField()[patchi].patchNeighbourField());
        vectorField const d(patch.delta());
        forAll(patch, i) {
          label const own = patch.faceCells()[i];
          g[own] += FaceValue({p[own], previous[own], mesh.C()[own]},
                              {other[i], otherGradient[i], mesh.C()[own] + d[i]}, patch.weights()[i],
                              patch.Cf()[i]) *
                    patch.Sf()[i];
        }
      } else {
        forAll(patch, i) g[patch.faceCells()[i]] += values[i] * patch.Sf()[i];
      }
    }
    forAll(g, cell) previous[cell] = g[cell] / mesh.V()[cell];
    previous.correctBoundaryConditions();
  }
  return result;
}

}  // namespace plain
