#include "python/src/Gradient.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <locale>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "foundation/Status.h"
#include "python/src/Collectable.h"
#include "python/src/SettingsFolder.h"
#include "python/src/Unlocked.h"

namespace zyn_python {
namespace {

constexpr int kDefaultSweeps = 3;

// Gradient types of the operator, see COperatorGradient.
constexpr int kGreenGaussType = 0, kLeastSquaresType = 1, kRadialBasisType = 2;

std::string SettingsText(double span, bool shapeNormalize) {
  std::ostringstream text;
  text.imbue(std::locale::classic());
  text.precision(17);
  text << "1001\nSpan              = " << span << "\nShape Normalize   = " << (shapeNormalize ? 1 : 0)
       << '\n';
  return text.str();
}

}  // namespace

Gradient::Gradient(py::object mesh, std::string method, double span, bool shapeNormalize, bool exchangeResult)
    : mesh_(std::move(mesh)),
      m_(MeshIn(mesh_)),
      n_(m_.nAll()),
      nEmptyFaces_(m_.nEmptyFaces()),
      method_(std::move(method)),
      form_([this] {
        if (method_ == "plain") return Form::kPlain;
        if (method_ == "iterated") return Form::kIterated;
        if (method_ == "least_squares") return Form::kLeastSquares;
        if (method_ == "radial_basis") return Form::kRadialBasis;
        throw py::value_error("method must be 'plain', 'iterated', 'least_squares' or 'radial_basis', not '" +
                              method_ + "'");
      }()),
      span_(span),
      shapeNormalize_(shapeNormalize),
      exchangesResult_(exchangeResult) {
  if (form_ == Form::kRadialBasis) {
    m_.RequireNodes("the gradient 'radial_basis'");
    if (!(span_ > 0.0 && std::isfinite(span_))) throw py::value_error("span must be finite and above 0");
  }
  bool const isGreenGauss = form_ == Form::kPlain || form_ == Form::kIterated;
  if (form_ == Form::kIterated) globals_.MakeIterationArrays(static_cast<int>(n_));
  Wire(op_, isGreenGauss ? m_.host().meshWithoutEmptyFaces() : m_.host().mesh());
  if (!isGreenGauss) {
    other_ = std::make_unique<COperatorGradient>();
    Wire(*other_, m_.host().meshWithoutEmptyFaces());
  }
  int type = isGreenGauss                   ? kGreenGaussType
             : form_ == Form::kLeastSquares ? kLeastSquaresType
                                            : kRadialBasisType;
  op_.getGradType(type);
  SetUp(&COperatorGradient::Initialize);
}

void Gradient::Wire(COperatorGradient& op, CZYN3DFiniteVolumeMesh* record) {
  MeshHost& host = m_.host();
  bool const isWired = op.getZyn3dGV(&globals_, nullptr, nullptr, record) == Status::kSuccess &&
                       op.getPartitionFace(host.partitionFaces()) == Status::kSuccess &&
                       op.getCommunication(host.exchange(), host.reduction()) == Status::kSuccess;
  if (!isWired) throw std::runtime_error(op.getErrorMsg());
  op.SetResultExchange(exchangesResult_);
}

void Gradient::SetUp(int (COperatorGradient::*step)()) {
  std::optional<SettingsFolder> settings;
  if (form_ == Form::kRadialBasis) {
    settings.emplace(SettingsText(span_, shapeNormalize_));
    globals_.SetFileName(settings->baseFileName());
  }
  RunUnlocked(lock(), [&] {
    if ((op_.*step)() != Status::kSuccess) throw std::runtime_error(op_.getErrorMsg());
  });
}

void Gradient::Update() { SetUp(&COperatorGradient::UpdateGeometry); }

int Gradient::Sweeps(py::object const& sweeps) const {
  if (form_ != Form::kIterated) {
    if (sweeps.is_none()) return 1;
    throw py::value_error("sweeps is for the method 'iterated', not '" + method_ + "'");
  }
  if (sweeps.is_none()) return kDefaultSweeps;
  return static_cast<int>(WholeNumber(sweeps, "sweeps", 1, std::numeric_limits<int>::max()));
}

void Gradient::ClearEmptyFaces(double* out, int nRows) const {
  for (int i = 1; i <= nRows; ++i) std::fill_n(out + i * n_ - nEmptyFaces_, nEmptyFaces_, 0.0);
}

/// @param[in] phi  [0..n_-1]; only read, although the operator takes it without const
void Gradient::Apply(double const* phi, double* out, int nSweeps) {
  double* const field = const_cast<double*>(phi) - 1;
  double* const g[] = {out - 1, out + n_ - 1, out + 2 * n_ - 1};
  op_.GradMethod(field, g[0], g[1], g[2], nSweeps);
  // The operator leaves this exchange to its caller for this method alone.
  if (form_ == Form::kRadialBasis && exchangesResult_) {
    for (double* const component : g) m_.host().exchange()->DDM_Exch(component);
  }
  if (nEmptyFaces_ > 0) ClearEmptyFaces(out, 3);
}

py::object Gradient::Call(py::object const& phi, py::object out, py::object const& sweeps) {
  double const* const field = LentElements(phi, "phi", {n_});
  int const nSweeps = Sweeps(sweeps);
  double* const gradient = OutputElements(out, {3, n_}, field, n_, m_);
  RunUnlocked(lock(), [&] { Apply(field, gradient, nSweeps); });
  return out;
}

py::object Gradient::Three(py::object const& phi, py::object out) {
  double const* const fields = LentElements(phi, "phi", {3, n_});
  double* const gradient = OutputElements(out, {3, 3, n_}, fields, 3 * n_, m_);
  RunUnlocked(lock(), [&] {
    if (form_ != Form::kPlain && form_ != Form::kLeastSquares) {
      int const nSweeps = Sweeps(py::none());
      for (int i = 0; i < 3; ++i) Apply(fields + i * n_, gradient + 3 * i * n_, nSweeps);
      return;
    }
    double* const f = const_cast<double*>(fields) - 1;
    double* const g = gradient - 1;
    auto const three = form_ == Form::kPlain ? &COperatorGradient::GradMethod_3
                                             : &COperatorGradient::GradMethod_LeastSquares_3;
    (op_.*three)(f, f + n_, f + 2 * n_, g, g + n_, g + 2 * n_, g + 3 * n_, g + 4 * n_, g + 5 * n_, g + 6 * n_,
                 g + 7 * n_, g + 8 * n_);
    if (nEmptyFaces_ > 0) ClearEmptyFaces(gradient, 9);
  });
  return out;
}

py::object Gradient::Weighted(py::object const& phi, py::object const& weight, py::object out) {
  double const* const field = LentElements(phi, "phi", {n_});
  double const* const coefficient = LentElements(weight, "weight", {n_});
  bool const isNew = out.is_none();
  double* const gradient = OutputElements(out, {3, n_}, field, n_, m_);
  if (!isNew) RefuseOverlap(gradient, 3 * n_, coefficient, n_, "weight");
  RunUnlocked(lock(), [&] {
    double* const g = gradient - 1;
    GreenGauss().GradMethod_Weighted(const_cast<double*>(field) - 1, g, g + n_, g + 2 * n_,
                                     const_cast<double*>(coefficient) - 1, 1);
    if (nEmptyFaces_ > 0) ClearEmptyFaces(gradient, 3);
  });
  return out;
}

void BindGradient(py::module_& module) {
  using py::arg;
  py::class_<Gradient>(module, "Gradient", Collectable<Gradient, &Gradient::mesh>(), R"(
Gradient of cell fields on one mesh.

Parameters
----------
mesh : Mesh
    Kept alive by the gradient.
method : str
    'plain': Green-Gauss with linear interpolation to the faces.
    'iterated': Green-Gauss with face values corrected for skewness in several sweeps.
    'least_squares': unweighted least squares over the face neighbours.
    'radial_basis': radial basis functions over the face neighbours; needs a mesh with nodes. Its set-up prints ten lines.
span : float
    Support radius of 'radial_basis' as a multiple of the stencil's length.
shape_normalize : bool
    The setting of that name of 'radial_basis'.
exchange_result : bool
    False leaves out the exchange at the end of a call; halo cells of results then have no defined value.

N is mesh.total_count, U the unit of the field, L that of the mesh. Fields have a value in every cell: in interior
cells, in ghost cells that at the boundary face, in halo cells that of the owner. Arrays are float64, C-contiguous,
and are used in place. A result that you do not pass as `out` is a new array. Calls release the interpreter's lock;
a second thread that calls the same object waits for the first. On a mesh in partitions, set-up and calls are
collective.

A cell whose neighbours do not span space has no gradient by least squares: the result is nan there, or the call
prints 'aa[ii][j]=0.' and '4' and ends early.
)")
      .def(py::init<py::object, std::string, double, bool, bool>(), arg("mesh"), arg("method") = "plain",
           py::kw_only(), arg("span") = 500.0, arg("shape_normalize") = false, arg("exchange_result") = true)
      .def("__call__", &Gradient::Call, arg("phi"), arg("out") = py::none(), py::kw_only(),
           arg("sweeps") = py::none(), R"(
Gradient of a field.

phi : (N,) field, U. out : (3, N) d/dx, d/dy, d/dz, U/L; overwritten, 0 in ghost cells.
sweeps : number of sweeps of 'iterated', 3 if not given.
Returns out.
)")
      .def("three", &Gradient::Three, arg("phi"), arg("out") = py::none(), R"(
Gradients of three fields, such as the components of a velocity: 'plain' and 'least_squares' in one walk over the faces.

phi : (3, N) fields, U. out : (3, 3, N) with out[i, j] the derivative of phi[i] along direction j, U/L; overwritten.
Returns out.
)")
      .def("weighted", &Gradient::Weighted, arg("phi"), arg("weight"), arg("out") = py::none(), R"(
Green-Gauss gradient with face values from the harmonic mean of a coefficient, whatever the method.

phi : (N,) field, U. weight : (N,) coefficient, above 0. out : (3, N), U/L; overwritten.
Returns out.
)")
      .def("update", &Gradient::Update, R"(
Brings the gradient up to date after you changed the mesh's centres, areas or volumes in place. Collective.
)")
      .def_property_readonly(
          "mesh", [](Gradient& self) { return *self.mesh(); }, "The mesh.")
      .def_property_readonly("method", &Gradient::method, "Name of the method.");
}

}  // namespace zyn_python
