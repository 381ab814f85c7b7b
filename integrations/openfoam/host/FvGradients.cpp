#include "host/FvGradients.h"

#include "coupledPolyPatch.H"
#include "host/Interleave.h"
#include "host/LargePages.h"
#include "host/SettingsFolder.h"

namespace Foam {
namespace zyn {

using Kind = GradientMethod::Kind;

namespace {

/// The gradient type that the operator of a method is given; the iterated gradient is of the same type as the plain one.
int TypeOf(Kind kind) { return kind == Kind::kLeastSquares ? 1 : kind == Kind::kRadialBasis ? 2 : 0; }

bool HasRotationalPatch(FvMeshArrays const& arrays) {
  bool found = false;
  for (FvMeshArrays::PatchPlace const& p : arrays.coupledPatches()) {
    auto const* patch = dynamic_cast<coupledPolyPatch const*>(&arrays.mesh().boundaryMesh()[p.patch]);
    found = found || (patch != nullptr && !patch->parallel());
  }
  return returnReduce(found, orOp<bool>());
}

/// glibc maps a block above 32 MB anew each time, so a large result is touched for the first time here.
template <class Type>
void PrepareLargeResult(Field<Type>& gradient) {
  constexpr std::size_t kAlwaysNew = std::size_t{1} << 25;
  std::size_t const bytes = gradient.size() * sizeof(Type);
  if (bytes > kAlwaysNew) AdviseLargePages(gradient.data(), bytes);
}

// Of the components first .. first + count - 1, whose gradients are g[0..2], g[3..5], ...
void CopyOut(double const* const* g, int, int, Field<vector>& gradient) {
  Interleave<3>({g[0], g[1], g[2]}, reinterpret_cast<double*>(gradient.data()), gradient.size());
}

// The gradient of component k is column k.
void CopyOut(double const* const* g, int first, int count, Field<tensor>& gradient) {
  if (count == 1) {
    double* const to = reinterpret_cast<double*>(gradient.data()) + first;
    for (label c = 0; c < gradient.size(); ++c)
      for (int i = 0; i < 3; ++i) to[9 * c + 3 * i] = g[i][c];
    return;
  }
  Interleave<9>({g[0], g[3], g[6],   // d/dx
                 g[1], g[4], g[7],   // d/dy
                 g[2], g[5], g[8]},  // d/dz
                reinterpret_cast<double*>(gradient.data()), gradient.size());
}

}  // namespace

struct FvGradients::Operator {
  explicit Operator(FvMeshArrays const& arrays) : vectorExchange(arrays) {}
  ~Operator() { gradient.Release(); }

  GradientExchange vectorExchange;
  COperatorGradient gradient;
  int nMotions = 0;  ///< of the host, when the operator was last up to date
  bool refusesVectors = false;
};

FvGradients::FvGradients(FvMeshHost& host) : host_(host) {}

FvGradients::~FvGradients() = default;

std::unique_ptr<FvGradients::Operator> FvGradients::MakeOperator(Kind kind) {
  auto op = std::make_unique<Operator>(host_.arrays());
  bool const isRadialBasis = kind == Kind::kRadialBasis, isIterated = kind == Kind::kIterated;
  bool const isGreenGauss = TypeOf(kind) == 0;
  reference_host::ArrayHost& records = isRadialBasis ? host_.Topology() : host_.Faces();
  if (kind != Kind::kPlain) host_.MakeCellCentres();
  if (isIterated) {
    host_.MakeFaceCentres();
    records.MakeIterationArrays();
    op->refusesVectors = HasRotationalPatch(host_.arrays());
  }
  COperatorGradient& gradient = op->gradient;
  gradient.getZyn3dGV(records.globals(), nullptr, nullptr,
                      isGreenGauss ? records.meshWithoutEmptyFaces() : records.mesh());
  gradient.getPartitionFace(records.partitionFaces());
  gradient.getCommunication(isIterated ? &op->vectorExchange : &host_.exchange(), &host_.reduction());
  int type = TypeOf(kind);
  gradient.getGradType(type);
  gradient.SetResultExchange(false);  // OpenFOAM exchanges the result with its boundary values
  return op;
}

/// Calls Initialize, or UpdateGeometry after points have moved.
void FvGradients::SetUp(Operator& op, Kind kind, int (COperatorGradient::*setUp)()) {
  op.nMotions = host_.nMotions();
  int status;
  if (kind == Kind::kRadialBasis) {
    SettingsFolder const folder(host_.arrays().mesh());
    host_.Topology().SetBaseFileName(folder.BaseFileName());
    status = (op.gradient.*setUp)();
  } else {
    status = (op.gradient.*setUp)();
  }
  if (status < 0) FatalErrorInFunction << op.gradient.getErrorMsg() << exit(FatalError);
}

FvGradients::Operator& FvGradients::OperatorOf(Kind kind) {
  auto& op = operators_[static_cast<int>(kind)];
  if (!op) {
    op = MakeOperator(kind);
    SetUp(*op, kind, &COperatorGradient::Initialize);
  } else if (op->nMotions != host_.nMotions()) {
    SetUp(*op, kind, &COperatorGradient::UpdateGeometry);
  }
  return *op;
}

template <class Type>
void FvGradients::Calculate(GradientMethod const& method,
                            GeometricField<Type, fvPatchField, volMesh> const& field,
                            Field<typename outerProduct<vector, Type>::type>& gradient) {
  constexpr int nComponents = pTraits<Type>::nComponents;
  Operator& op = OperatorOf(method.kind);
  if (nComponents > 1 && op.refusesVectors) {
    FatalErrorInFunction
        << "zyn iterated cannot take the gradient of the vector " << field.name()
        << " on a mesh with rotational periodicity: its components are iterated one by one and "
           "would not turn; possible are plain, leastSquares, radialBasis"
        << exit(FatalError);
  }
  // The iterated method takes more arrays than the others, so it makes do with the gradient of one component.
  int const nAtOnce = method.kind == Kind::kIterated ? 1 : nComponents;
  int const nArrays = nComponents + 3 * nAtOnce;
  if (work_.count() < nArrays) work_ = StaggeredArrays(nArrays, host_.arrays().nAllCells());
  double *phi[nComponents], *g[3 * nComponents];
  for (int k = 0; k < nComponents; ++k) phi[k] = work_[k];
  for (int i = 0; i < 3 * nAtOnce; ++i) g[i] = work_[nComponents + i];

  host_.arrays().Fill(field, phi);
  PrepareLargeResult(gradient);
  for (int k = 0; k < nComponents; k += nAtOnce) {
    Apply(op.gradient, method, nAtOnce, phi + k, g);
    CopyOut(g, k, nAtOnce, gradient);
  }
}

/// The operators count cells from 1.
void FvGradients::Apply(COperatorGradient& op, GradientMethod const& method, int nComponents,
                        double* const* phi, double* const* g) {
  if (nComponents == 3 && (method.kind == Kind::kPlain || method.kind == Kind::kLeastSquares)) {
    auto const three = method.kind == Kind::kPlain ? &COperatorGradient::GradMethod_3
                                                   : &COperatorGradient::GradMethod_LeastSquares_3;
    (op.*three)(phi[0] - 1, phi[1] - 1, phi[2] - 1, g[0] - 1, g[1] - 1, g[2] - 1, g[3] - 1, g[4] - 1,
                g[5] - 1, g[6] - 1, g[7] - 1, g[8] - 1);
    return;
  }
  for (int k = 0; k < nComponents; ++k)
    op.GradMethod(phi[k] - 1, g[3 * k] - 1, g[3 * k + 1] - 1, g[3 * k + 2] - 1, method.nSweeps);
}

template void FvGradients::Calculate(GradientMethod const&, volScalarField const&, Field<vector>&);
template void FvGradients::Calculate(GradientMethod const&, volVectorField const&, Field<tensor>&);

}  // namespace zyn
}  // namespace Foam
