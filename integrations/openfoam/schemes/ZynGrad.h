#pragma once

#include "gradScheme.H"
#include "host/GradientMethod.h"

namespace Foam {
namespace fv {

/// The gradients of Zyn3dGradOp as a scheme: `gradSchemes { default zyn plain; }`. GradientMethod lists the methods.
///
/// Boundary values of the gradient are made as OpenFOAM's Gauss scheme makes them: the value of the cell, with the normal
/// component of the field's own snGrad.
template <class Type>
class zynGrad : public gradScheme<Type> {
 public:
  using GradType = typename outerProduct<vector, Type>::type;
  using GradField = GeometricField<GradType, fvPatchField, volMesh>;

  TypeName("zyn");

  zynGrad(fvMesh const& mesh, Istream& schemeData)
      : gradScheme<Type>(mesh), method_(zyn::GradientMethod::Read(schemeData)) {}

  tmp<GradField> calcGrad(GeometricField<Type, fvPatchField, volMesh> const& field,
                          word const& name) const override;

 private:
  zyn::GradientMethod method_;
};

}  // namespace fv
}  // namespace Foam
