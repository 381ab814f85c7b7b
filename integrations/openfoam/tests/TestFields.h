#pragma once

#include <cmath>

#include "fixedValueFvPatchFields.H"
#include "fvMesh.H"
#include "volFields.H"

namespace test_fields {

/// A place in units of the mesh's largest extent, from the lowest corner of its box. Collective when constructed.
class UnitPlace {
 public:
  explicit UnitPlace(Foam::fvMesh const& mesh)
      : lowest_(mesh.bounds().min()), extent_(Foam::cmptMax(mesh.bounds().span())) {}
  Foam::vector operator()(Foam::vector const& x) const { return (x - lowest_) / extent_; }

 private:
  Foam::vector lowest_;
  Foam::scalar extent_;
};

/// A smooth function without symmetry.
inline Foam::scalar Smooth(Foam::vector const& x) {
  return std::sin(5 * x.x() + 0.2) * std::cos(3 * x.y()) + 0.3 * std::exp(2 * x.z()) + x.x() * x.z();
}

inline Foam::vector SmoothVector(Foam::vector const& x) {
  return Foam::vector(Smooth(x), Smooth(Foam::vector(x.y(), x.z(), x.x())),
                      Smooth(Foam::vector(x.z(), x.x(), x.y())));
}

/// The field f(place) in cells and on boundary faces. Patches that are a constraint keep their type. Collective.
template <typename Type, typename Function>
Foam::tmp<Foam::GeometricField<Type, Foam::fvPatchField, Foam::volMesh>> Make(Foam::word const& name,
                                                                              Foam::fvMesh const& mesh,
                                                                              Function f) {
  using FieldType = Foam::GeometricField<Type, Foam::fvPatchField, Foam::volMesh>;
  auto result = Foam::tmp<FieldType>::New(
      Foam::IOobject(name, mesh.time().timeName(), mesh, Foam::IOobject::NO_READ, Foam::IOobject::NO_WRITE),
      mesh, Foam::dimensioned<Type>(Foam::dimless, Foam::Zero), Foam::fixedValueFvPatchField<Type>::typeName);
  FieldType& field = result.ref();
  forAll(field, cell) field[cell] = f(mesh.C()[cell]);
  forAll(mesh.boundary(), patchi) {
    auto& values = field.boundaryFieldRef()[patchi];
    if (values.coupled()) continue;
    Foam::Field<Type> atFaces(values.size());
    forAll(atFaces, i) atFaces[i] = f(mesh.boundary()[patchi].Cf()[i]);
    values == atFaces;
  }
  field.correctBoundaryConditions();
  return result;
}

}  // namespace test_fields
