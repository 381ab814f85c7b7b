#include "python/src/FaceInterpolation.h"

#include <stdexcept>
#include <utility>

#include "foundation/Status.h"
#include "python/src/ArrayChecks.h"
#include "python/src/Collectable.h"
#include "python/src/Unlocked.h"

namespace zyn_python {
namespace {

constexpr int kFaceMethods = 4;

FaceKind KindNamed(std::string const& name) {
  for (FaceGroupMembers const& members : face_groups::kTable) {
    if (name == members.name) return members.kind;
  }
  throw py::value_error("kind must be 'inner', 'wall', 'inlet', 'outlet', 'partition' or 'symmetry', not '" +
                        name + "'");
}

}  // namespace

FaceInterpolation::FaceInterpolation(py::object mesh, std::string const& kind, int method, int span,
                                     int number)
    : mesh_(std::move(mesh)),
      m_(MeshIn(mesh_)),
      kind_(KindNamed(kind)),
      nFaces_(m_.Faces(kind_).count),
      settings_(method, kFaceMethods, span, number),
      cleared_(static_cast<std::size_t>(nFaces_) + 1, 0.0) {
  m_.RequireNodes("interpolation to faces");
  MeshHost& host = m_.host();
  bool const isWired = op_.getZyn3dGV(&globals_, nullptr, nullptr, host.mesh()) == Status::kSuccess &&
                       op_.getPartitionFace(host.partitionFaces()) == Status::kSuccess &&
                       op_.getCommunication(host.exchange()) == Status::kSuccess;
  if (!isWired) throw std::runtime_error(op_.getErrorMsg());
  op_.SetZYNKNCMP(&settings_);
  RunUnlocked(lock_, [&] { op_.Initialize_FaceInterpolateData(static_cast<int>(kind_)); });
}

py::object FaceInterpolation::Call(py::object const& phi, py::object out) {
  py::ssize_t const nCells = m_.nAll();
  double const* const field = LentElements(phi, "phi", {nCells});
  double* const values = OutputElements(out, {nFaces_}, field, nCells, m_);
  RunUnlocked(lock_, [&] {
    // The three arrays that the operator clears may be one: it writes nothing but zeros.
    double* const zero = cleared_.data();
    op_.Multiply_FaceRBFCoefficent(const_cast<double*>(field) - 1, values - 1, zero, zero, zero);
  });
  return out;
}

py::array FaceInterpolation::Targets() const {
  FaceGroup const faces = m_.Faces(kind_);
  CZYN3DFiniteVolumeMesh const& record = m_.record();
  py::array_t<double> rows = NewArray({3, nFaces_});
  double* const x = rows.mutable_data();
  double *const y = x + nFaces_, *const z = y + nFaces_;
  for (int f = 1; f <= nFaces_; ++f) {
    // The operator puts a partition face at the centre of its halo cell.
    bool const isAtHalo = kind_ == FaceKind::Partition;
    int const c = faces.other[f];
    x[f - 1] = isAtHalo ? record.xc[c] : faces.xc[f];
    y[f - 1] = isAtHalo ? record.yc[c] : faces.yc[f];
    z[f - 1] = isAtHalo ? record.zc[c] : faces.zc[f];
  }
  return rows;
}

void BindFaceInterpolation(py::module_& module) {
  using py::arg;
  py::class_<FaceInterpolation>(module, "FaceInterpolation",
                                Collectable<FaceInterpolation, &FaceInterpolation::mesh>(),
                                R"(
Radial-basis interpolation of cell fields to the faces of one kind. Stencils and weights are computed once, here.

Parameters
----------
mesh : Mesh
    With nodes; kept alive.
kind : str
    'inner', 'wall', 'inlet', 'outlet', 'symmetry' or 'partition'.
method : int
    1: all cells of a cube around the face that holds `number` cells; 2: the nearest `number` of them; 3: the face's
    two cells and the cells around its nodes, which prints a line per face; 4: two points on the face's normal, values
    0 on boundary faces.
span : int
    Support radius as a multiple of the stencil's length. Method 1 wants 50 to 200.
number : int
    Wanted number of cells in a stencil, methods 1 and 2.

Calls release the interpreter's lock; a second thread that calls the same object waits for the first. Nothing is
exchanged.
)")
      .def(py::init<py::object, std::string const&, int, int, int>(), arg("mesh"), arg("kind") = "inner",
           py::kw_only(), arg("method") = 4, arg("span") = 1000, arg("number") = 20)
      .def("__call__", &FaceInterpolation::Call, arg("phi"), arg("out") = py::none(), R"(
Values at the faces.

phi : (N,) field in all cells, U. out : (face_count,) values, U; overwritten.
Returns out.
)")
      .def_property_readonly("targets", &FaceInterpolation::Targets, R"(
(3, face_count) places of the values, L: centres of the faces; of partition faces, the centres of the halo cells.
)")
      .def_property_readonly(
          "mesh", [](FaceInterpolation& self) { return *self.mesh(); }, "The mesh.")
      .def_property_readonly("kind", &FaceInterpolation::kindName, "Kind of the faces.")
      .def_property_readonly("face_count", &FaceInterpolation::nFaces, "Number of faces.");
}

}  // namespace zyn_python
