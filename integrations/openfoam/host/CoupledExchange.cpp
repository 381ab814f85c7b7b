#include "host/CoupledExchange.h"

#include "PstreamReduceOps.H"
#include "calculatedFvPatchFields.H"

namespace Foam {
namespace zyn {

CoupledExchange::CoupledExchange(FvMeshArrays const& arrays)
    : arrays_(arrays), anywhere_(returnReduce(!arrays.coupledPatches().empty(), orOp<bool>())) {}

void CoupledExchange::DDM_Exch(double* field) { ExchangeScalar(field); }

void CoupledExchange::DDM_IExch_Start(double*, ZYNNonBlockingBufferId) {}

void CoupledExchange::DDM_IExch_Wait(double* field, ZYNNonBlockingBufferId) { ExchangeScalar(field); }

void CoupledExchange::ExchangeScalar(double* field) { Exchange<scalar>(scalarCarrier_, &field); }

void CoupledExchange::ExchangeVector(double* const* fields) { Exchange<vector>(vectorCarrier_, fields); }

template <class Type>
void CoupledExchange::Exchange(std::unique_ptr<GeometricField<Type, fvPatchField, volMesh>>& carrier,
                               double* const* fields) {
  if (!anywhere_) return;
  using VolField = GeometricField<Type, fvPatchField, volMesh>;
  constexpr direction nComponents = pTraits<Type>::nComponents;
  fvMesh const& mesh = arrays_.mesh();
  if (!carrier) {
    // Not registered, so that no mapping to another mesh tries to map it.
    IOobject const io("zynExchange", mesh.time().timeName(), mesh, IOobject::NO_READ, IOobject::NO_WRITE,
                      false);
    carrier.reset(
        new VolField(io, mesh, dimensioned<Type>(dimless, Zero), calculatedFvPatchField<Type>::typeName));
  }

  Foam::Field<Type>& inner = carrier->primitiveFieldRef();
  for (FvMeshArrays::PatchPlace const& p : arrays_.coupledPatches()) {
    for (label const cell : mesh.boundary()[p.patch].faceCells())
      for (direction d = 0; d < nComponents; ++d) setComponent(inner[cell], d) = fields[d][cell + 1];
  }
  carrier->correctBoundaryConditions();
  for (FvMeshArrays::PatchPlace const& p : arrays_.coupledPatches()) {
    auto const values = carrier->boundaryField()[p.patch].patchNeighbourField();
    for (int i = 0; i < p.size; ++i)
      for (direction d = 0; d < nComponents; ++d) fields[d][p.firstCell + i + 1] = component(values()[i], d);
  }
}

void GradientExchange::DDM_IExch_Start(double* field, ZYNNonBlockingBufferId id) { started_[id] = field; }

void GradientExchange::DDM_IExch_Wait(double*, ZYNNonBlockingBufferId id) {
  if (id == ZYNNonBlockingBuffer0) ExchangeVector(started_);
}

}  // namespace zyn
}  // namespace Foam
