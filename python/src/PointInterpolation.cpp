#include "python/src/PointInterpolation.h"

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <utility>

#include "foundation/Status.h"
#include "python/src/Collectable.h"
#include "python/src/Unlocked.h"

namespace zyn_python {
namespace {

constexpr int kPointMethods = 3;
constexpr double kUsable = -1.0, kUnusable = 1.0;  // marks of the operator: below 0 is usable

}  // namespace

PointInterpolation::PointInterpolation(py::object mesh, py::object const& points, int method, int span,
                                       int number, py::object const& usable)
    : mesh_(std::move(mesh)), m_(MeshIn(mesh_)), settings_(method, kPointMethods, span, number) {
  m_.RequireNodes("interpolation to points");
  double const* const rows = LentElements(points, "points", {3, Shape::kAny});
  nPoints_ = py::reinterpret_borrow<py::array>(points).shape(1);
  if (nPoints_ >= std::numeric_limits<int>::max()) throw py::value_error("points has too many columns");
  std::vector<double> mark = Marks(usable);
  gradient_.assign(static_cast<std::size_t>(3 * nPoints_), 0.0);

  MeshHost& host = m_.host();
  bool const isWired = op_.getZyn3dGV(&globals_, nullptr, nullptr, host.mesh()) == Status::kSuccess &&
                       op_.getPartitionFace(host.partitionFaces()) == Status::kSuccess &&
                       op_.getCommunication(host.exchange()) == Status::kSuccess;
  if (!isWired) throw std::runtime_error(op_.ErrorMsg);
  op_.SetZYNKNCMP(&settings_);
  RunUnlocked(lock_, [&] {
    // From element 1, as copies: element 0 has to exist, and the points are not used after the set-up.
    std::vector<double> place[3];
    for (int i = 0; i < 3; ++i) {
      place[i].assign(static_cast<std::size_t>(nPoints_) + 1, 0.0);
      std::copy_n(rows + i * nPoints_, nPoints_, place[i].begin() + 1);
    }
    op_.Initialize_IBInterpolateData(mark.data(), static_cast<int>(nPoints_), place[0].data(),
                                     place[1].data(), place[2].data());
  });
}

/// [1..NCell]. By default interior and halo cells are usable: ghost cells of symmetry planes have no place of their own.
std::vector<double> PointInterpolation::Marks(py::object const& usable) const {
  py::ssize_t const nCells = m_.nAll();
  std::vector<double> marks(static_cast<std::size_t>(nCells) + 1, kUsable);
  if (usable.is_none()) {
    for (FaceKind const kind : kBoundaryOrder) {
      FaceGroup const faces = m_.Faces(kind);
      for (int f = 1; f <= faces.count; ++f) marks[static_cast<std::size_t>(faces.other[f])] = kUnusable;
    }
    return marks;
  }
  bool const isBoolean =
      py::isinstance<py::array>(usable) && py::reinterpret_borrow<py::array>(usable).dtype().kind() == 'b';
  if (!isBoolean) throw py::type_error("usable must be an array of numpy with the dtype bool, or None");
  auto const flags = py::array_t<bool, py::array::c_style>::ensure(usable);
  if (flags.ndim() != 1 || flags.size() != nCells)
    throw py::value_error("usable must have the shape " + Shape{nCells}.Text() + ", not " +
                          std::string(py::str(flags.attr("shape"))));
  for (py::ssize_t c = 0; c < nCells; ++c)
    marks[static_cast<std::size_t>(c) + 1] = flags.data()[c] ? kUsable : kUnusable;
  return marks;
}

/// @param[out] value,gx,gy,gz  [0..nPoints_-1]
void PointInterpolation::Apply(double const* field, double* value, double* gx, double* gy, double* gz) {
  op_.Multiply_IBRBFCoefficent(const_cast<double*>(field) - 1, value - 1, gx - 1, gy - 1, gz - 1);
}

py::object PointInterpolation::Call(py::object const& phi, py::object out) {
  double const* const field = LentElements(phi, "phi", {m_.nAll()});
  double* const value = OutputElements(out, {nPoints_}, field, m_.nAll(), m_);
  RunUnlocked(lock_, [&] {
    double* const unwanted = gradient_.data();
    Apply(field, value, unwanted, unwanted + nPoints_, unwanted + 2 * nPoints_);
  });
  return out;
}

py::object PointInterpolation::WithGradient(py::object const& phi, py::object out) {
  double const* const field = LentElements(phi, "phi", {m_.nAll()});
  double* const row = OutputElements(out, {4, nPoints_}, field, m_.nAll(), m_);
  RunUnlocked(lock_, [&] { Apply(field, row, row + nPoints_, row + 2 * nPoints_, row + 3 * nPoints_); });
  return out;
}

void BindPointInterpolation(py::module_& module) {
  using py::arg;
  py::class_<PointInterpolation>(module, "PointInterpolation",
                                 Collectable<PointInterpolation, &PointInterpolation::mesh>(), R"(
Radial-basis interpolation of cell fields and their gradients to points. Stencils and weights are computed once, here;
the set-up prints five lines and a report.

Parameters
----------
mesh : Mesh
    With nodes; kept alive. In partitions: pass each point to the partition that has the cell.
points : (3, m) float64 array
    Places, L. Read during the set-up only.
method : int
    1: all cells of a cube around the point that holds `number` cells; 2: the nearest `number` of them; 3: the cells
    around the nodes of the nearest cells.
span : int
    Support radius as a multiple of the stencil's length.
number : int
    Wanted number of cells in a stencil, methods 1 and 2.
usable : (N,) bool array, or None
    The cells that may contribute. None: interior and halo cells.

Calls release the interpreter's lock; a second thread that calls the same object waits for the first. Nothing is
exchanged.
)")
      .def(py::init<py::object, py::object const&, int, int, int, py::object const&>(), arg("mesh"),
           arg("points"), py::kw_only(), arg("method") = 3, arg("span") = 500, arg("number") = 20,
           arg("usable") = py::none())
      .def("__call__", &PointInterpolation::Call, arg("phi"), arg("out") = py::none(), R"(
Values at the points.

phi : (N,) field in all cells, U. out : (m,) values, U; overwritten; 0 at a point without a usable cell.
Returns out.
)")
      .def("with_gradient", &PointInterpolation::WithGradient, arg("phi"), arg("out") = py::none(),
           R"(
Values and gradients at the points.

phi : (N,) field in all cells, U. out : (4, m) the rows value, U, and d/dx, d/dy, d/dz, U/L; overwritten.
Returns out.
)")
      .def_property_readonly(
          "mesh", [](PointInterpolation& self) { return *self.mesh(); }, "The mesh.")
      .def_property_readonly("point_count", &PointInterpolation::nPoints, "Number of points.");
}

}  // namespace zyn_python
