#pragma once

#include <memory>

#include "gradient/COperatorGradient.h"
#include "host/FvMeshHost.h"
#include "host/GradientMethod.h"
#include "host/StaggeredArrays.h"
#include "volFields.H"

namespace Foam {
namespace zyn {

/// The gradients of the fields of a mesh, interior cells only. An operator is made when its method is first used, and so
/// are the arrays that it calculates with; all of them are kept from call to call.
class FvGradients {
 public:
  /// @param host  borrowed; must outlive the object
  explicit FvGradients(FvMeshHost& host);
  ~FvGradients();

  /// Collective.
  /// @param[out] gradient  of the interior cells, overwritten; T_ij = d/dx_i of component j for a vector
  template <class Type>
  void Calculate(GradientMethod const& method, GeometricField<Type, fvPatchField, volMesh> const& field,
                 Field<typename outerProduct<vector, Type>::type>& gradient);

 private:
  struct Operator;
  Operator& OperatorOf(GradientMethod::Kind kind);
  std::unique_ptr<Operator> MakeOperator(GradientMethod::Kind kind);
  void SetUp(Operator& op, GradientMethod::Kind kind, int (COperatorGradient::*setUp)());
  static void Apply(COperatorGradient& op, GradientMethod const& method, int nComponents, double* const* phi,
                    double* const* g);

  static constexpr int kKinds = 4;

  FvMeshHost& host_;
  std::unique_ptr<Operator> operators_[kKinds];
  StaggeredArrays work_;  ///< fields, then x, y, z of the gradient of each
};

}  // namespace zyn
}  // namespace Foam
