#include "schemes/ZynGrad.h"

#include "extrapolatedCalculatedFvPatchFields.H"
#include "fvMesh.H"
#include "gaussGrad.H"
#include "host/FvGradients.h"
#include "host/FvMeshHost.h"
#include "volFields.H"

namespace Foam {
namespace fv {

template <class Type>
tmp<typename zynGrad<Type>::GradField> zynGrad<Type>::calcGrad(
    GeometricField<Type, fvPatchField, volMesh> const& field, word const& name) const {
  fvMesh const& mesh = field.mesh();
  tmp<GradField> result(
      new GradField(IOobject(name, field.instance(), mesh, IOobject::NO_READ, IOobject::NO_WRITE), mesh,
                    field.dimensions() / dimLength, extrapolatedCalculatedFvPatchField<GradType>::typeName));
  GradField& gradient = result.ref();
  zyn::FvMeshHost::Of(mesh).gradients().Calculate(method_, field, gradient.primitiveFieldRef());
  gradient.correctBoundaryConditions();
  gaussGrad<Type>::correctBoundaryConditions(field, gradient);
  return result;
}

}  // namespace fv
}  // namespace Foam

// The word `zynGrad` in parentheses of a macro becomes the name of the scheme's class.
makeFvGradTypeScheme(zynGrad, scalar) makeFvGradTypeScheme(zynGrad, vector)
