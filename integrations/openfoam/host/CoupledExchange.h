#pragma once

#include <memory>

#include "host/FvMeshArrays.h"
#include "host/ZYNCommunication.h"
#include "volFields.H"

namespace Foam {
namespace zyn {

/// The halo exchange of the operators, by OpenFOAM's own coupled patches: processor, cyclic, processorCyclic, cyclicAMI.
/// On an AMI patch a halo cell gets the weighted value of the cells on the other side.
///
/// An exchange that is started is carried out when it is waited for. All operations are collective.
class CoupledExchange : public CCommunication {
 public:
  /// @param arrays  borrowed; must outlive the object
  explicit CoupledExchange(FvMeshArrays const& arrays);

  /// Of a field that is no component of a vector: values do not change on their way through a rotational patch.
  void DDM_Exch(double* field) override;
  void DDM_IExch_Start(double* field, ZYNNonBlockingBufferId id) override;
  void DDM_IExch_Wait(double* field, ZYNNonBlockingBufferId id) override;

 protected:
  /// Exchanges one scalar, or the x, y and z arrays of a vector, which turns on its way through a rotational patch.
  /// Arrays are [1..NCell].
  void ExchangeScalar(double* field);
  void ExchangeVector(double* const* fields);

 private:
  template <class Type>
  void Exchange(std::unique_ptr<GeometricField<Type, fvPatchField, volMesh>>& carrier, double* const* fields);

  FvMeshArrays const& arrays_;
  bool const anywhere_;  ///< whether any process has a coupled patch
  // Fields that take the values through OpenFOAM's patches, made at the first exchange. Only their values next to
  // coupled patches are ever set.
  std::unique_ptr<volScalarField> scalarCarrier_;
  std::unique_ptr<volVectorField> vectorCarrier_;
};

/// The exchange of the iterated gradient, whose three arrays are the components of one vector.
///
/// The gradient starts three exchanges, in the buffers 0, 1 and 2 for x, y and z, before it waits for the first. They
/// travel together then, so that rotational patches turn the vector.
class GradientExchange : public CoupledExchange {
 public:
  using CoupledExchange::CoupledExchange;

  void DDM_IExch_Start(double* field, ZYNNonBlockingBufferId id) override;
  void DDM_IExch_Wait(double* field, ZYNNonBlockingBufferId id) override;

 private:
  double* started_[3] = {};
};

}  // namespace zyn
}  // namespace Foam
