#include <pybind11/stl.h>

#include <array>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "python/src/ArrayChecks.h"
#include "python/src/Collectable.h"
#include "python/src/FileMesh.h"
#include "python/src/GroupNames.h"
#include "python/src/Mesh.h"
#include "python/src/MeshFindings.h"
#include "reference_host/mesh/FaceMeshBuilder.h"

namespace zyn_python {
namespace {

using reference_host::CellShape;
using reference_host::FaceMesh;
using reference_host::Patch;
using reference_host::Point;

using PatchNames = std::vector<std::pair<std::string, std::optional<std::string>>>;

std::unique_ptr<Mesh> ReadMeshFile(std::string const& path, GroupNames const& groups) {
  // The libraries below some readers are not made for several threads.
  static std::mutex readers;
  GroupsByUser const byUser = GroupsOf(groups);
  py::gil_scoped_release const interpreter;
  std::lock_guard<std::mutex> const one(readers);
  return std::make_unique<Mesh>(ReadHost(path, byUser));
}

std::vector<Point> PointsOf(py::object const& array) {
  double const* const rows = LentElements(array, "points", {Shape::kAny, 3});
  std::vector<Point> points(static_cast<std::size_t>(py::reinterpret_borrow<py::array>(array).shape(0)));
  for (std::size_t i = 0; i < points.size(); ++i) points[i] = {rows[3 * i], rows[3 * i + 1], rows[3 * i + 2]};
  return points;
}

/// Patches that have a group override what their names say.
std::vector<Patch> PatchesOf(PatchNames const& names, GroupsByUser& groups) {
  std::vector<Patch> patches;
  for (auto const& [name, group] : names) {
    patches.push_back({name, "", std::nullopt});
    if (group) groups.emplace(name, GroupNamed(*group, name));
  }
  return patches;
}

py::ssize_t Last(std::size_t n) { return static_cast<py::ssize_t>(n) - 1; }

/// Throws ValueError unless the numbers ascend from 0 to `n`.
void RequireStarts(std::vector<int> const& start, char const* name, std::size_t n) {
  bool ascends = start.front() == 0 && start.back() == static_cast<int>(n);
  for (std::size_t i = 1; i < start.size(); ++i) ascends = ascends && start[i - 1] <= start[i];
  if (!ascends) throw py::value_error(std::string(name) + " must ascend from 0 to " + std::to_string(n));
}

std::unique_ptr<Mesh> MeshFromCells(std::string const& name, py::object const& points,
                                    py::object const& shapes, py::object const& nodes,
                                    py::object const& surfaceNodes, py::object const& surfaceStart,
                                    py::object const& surfacePatch, PatchNames const& patches,
                                    GroupNames const& groups) {
  constexpr auto kLastShape = static_cast<py::ssize_t>(CellShape::Pyramid);
  GroupsByUser byUser = GroupsOf(groups);
  std::vector<Point> place = PointsOf(points);
  std::vector<int> const shape = CopiedNumbers(shapes, "shapes", Shape::kAny, 0, kLastShape);
  std::vector<int> const node = CopiedNumbers(nodes, "nodes", Shape::kAny, 0, Last(place.size()));
  std::vector<int> const patch =
      CopiedNumbers(surfacePatch, "surface_patch", Shape::kAny, 0, Last(patches.size()));
  std::vector<int> const surface =
      CopiedNumbers(surfaceNodes, "surface_nodes", Shape::kAny, 0, Last(place.size()));
  std::vector<int> const start =
      CopiedNumbers(surfaceStart, "surface_start", static_cast<py::ssize_t>(patch.size()) + 1, 0,
                    static_cast<py::ssize_t>(surface.size()));
  RequireStarts(start, "surface_start", surface.size());
  std::size_t nNodes = 0;
  for (int const one : shape)
    nNodes += static_cast<std::size_t>(reference_host::NodeCount(static_cast<CellShape>(one)));
  if (nNodes != node.size())
    throw py::value_error("nodes has " + std::to_string(node.size()) + " numbers, but the shapes have " +
                          std::to_string(nNodes) + " nodes");
  for (std::size_t s = 0; s < patch.size(); ++s) {
    int const n = start[s + 1] - start[s];
    if (n != 3 && n != 4)
      throw py::value_error("surface " + std::to_string(s) + " has " + std::to_string(n) +
                            " nodes, not 3 or 4");
  }
  std::vector<Patch> named = PatchesOf(patches, byUser);

  py::gil_scoped_release const interpreter;
  reference_host::FaceMeshBuilder builder(name, std::move(place), std::move(named));
  int const* next = node.data();
  for (int const one : shape) {
    builder.AddCell(static_cast<CellShape>(one), next);
    next += reference_host::NodeCount(static_cast<CellShape>(one));
  }
  for (std::size_t s = 0; s < patch.size(); ++s)
    builder.AddSurface(surface.data() + start[s], start[s + 1] - start[s], patch[s]);
  return std::make_unique<Mesh>(HostOf(builder.Build(), name, byUser));
}

std::unique_ptr<Mesh> MeshFromFaces(std::string const& name, py::object const& points,
                                    py::object const& faceStart, py::object const& faceNodes,
                                    py::object const& owner, py::object const& neighbour,
                                    py::object const& facePatch, PatchNames const& patches,
                                    GroupNames const& groups) {
  constexpr py::ssize_t kMost = std::numeric_limits<int>::max() - 1;
  GroupsByUser byUser = GroupsOf(groups);
  FaceMesh mesh;
  mesh.points = PointsOf(points);
  mesh.owner = CopiedNumbers(owner, "owner", Shape::kAny, 0, kMost);
  auto const nFaces = static_cast<py::ssize_t>(mesh.owner.size());
  mesh.neighbour = CopiedNumbers(neighbour, "neighbour", nFaces, -1, kMost);
  mesh.facePatch = CopiedNumbers(facePatch, "face_patch", nFaces, -1, Last(patches.size()));
  mesh.faceNode = CopiedNumbers(faceNodes, "face_nodes", Shape::kAny, 0, Last(mesh.points.size()));
  std::vector<int> const start =
      CopiedNumbers(faceStart, "face_start", nFaces + 1, 0, static_cast<py::ssize_t>(mesh.faceNode.size()));
  RequireStarts(start, "face_start", mesh.faceNode.size());
  for (std::size_t f = 0; f < mesh.owner.size(); ++f) {
    if ((mesh.neighbour[f] < 0) != (mesh.facePatch[f] >= 0))
      throw py::value_error("face " + std::to_string(f) + " must have either a neighbour or a patch");
  }
  mesh.faceStart.assign(start.begin(), start.end());
  for (int const cell : mesh.owner) mesh.nCells = std::max(mesh.nCells, cell + 1);
  for (int const cell : mesh.neighbour) mesh.nCells = std::max(mesh.nCells, cell + 1);
  mesh.patches = PatchesOf(patches, byUser);

  py::gil_scoped_release const interpreter;
  return std::make_unique<Mesh>(HostOf(std::move(mesh), name, byUser));
}

/// A mesh that another module of this package has made: its host, in a capsule that is emptied.
std::unique_ptr<Mesh> MeshFromCapsule(py::capsule const& capsule) {
  auto* const host = static_cast<std::unique_ptr<MeshHost>*>(capsule.get_pointer());
  return std::make_unique<Mesh>(std::move(*host));
}

}  // namespace

void BindMesh(py::module_& module) {
  using py::arg;
  TranslateMeshErrors();

  py::class_<Mesh>(module, "Mesh", py::dynamic_attr(),
                   Collectable<Mesh, &Mesh::exchangeObject, Clearing::kAllowed>(), R"(
One partition of a finite-volume mesh, made of the arrays of a solver or read from a file (Mesh.read).

Cells are numbered from 0: n interior cells; a ghost cell for each boundary face, in the order of these faces; halo
cells, which are copies of cells of other partitions; last, the ghost cells of the empty faces. N is the number of all.
L is the unit of length. Arrays of float64 are borrowed: they must be C-contiguous, are never copied, are kept alive,
and must not change while a gradient uses them, see Gradient.update. Arrays of whole numbers may have any integer type;
they are copied, and every number is compared with its bounds.

Parameters
----------
centres : (3, N) cell centres, L; of a ghost cell, the point where the boundary value holds.
volumes : (n,) volumes of interior cells, L^3.
owner, neighbour : (nf,) the interior cells on both sides of an inner face.
areas : (3, nf) area vectors, L^2, that point from owner to neighbour.
face_centres : (3, nf) L.
weights : (nf,) w of the value at a face, (1 - w) * phi[owner] + w * phi[neighbour].
boundary_owner : (nb,) the interior cell of a boundary face.
boundary_areas, boundary_centres : (3, nb) area vectors that point outwards, L^2; face centres, L.
boundary_kinds : dict of the number of faces of each kind, or None, which means that all are walls. The keys are among
    'inlet', 'outlet', 'symmetry', 'wall', in this order, and the boundary faces have the same order.
empty_faces : how many of the last wall faces are the front and back of a mesh of one layer of cells. Green-Gauss
    leaves them out; least squares needs their ghost cells.
partition : PartitionFaces, or None.
nodes : (3, m) nodes, L. With face_nodes and face_node_start, needed by 'radial_basis' and by interpolation alone.
face_nodes, face_node_start : face f has the nodes face_nodes[face_node_start[f]:face_node_start[f + 1]], in order
    around it; inner faces first, then boundary faces, then partition faces.
)")
      .def(py::init([](py::object const& centres, py::object const& volumes, py::object const& owner,
                       py::object const& neighbour, py::object const& areas, py::object const& faceCentres,
                       py::object const& weights, py::object const& boundaryOwner,
                       py::object const& boundaryAreas, py::object const& boundaryCentres,
                       py::object const& boundaryKinds, py::object const& emptyFaces,
                       py::object const& partition, py::object const& nodes, py::object const& faceNodes,
                       py::object const& faceNodeStart) {
             return std::make_unique<Mesh>(MeshArguments{centres, volumes, owner, neighbour, areas,
                                                         faceCentres, weights, boundaryOwner, boundaryAreas,
                                                         boundaryCentres, boundaryKinds, emptyFaces,
                                                         partition, nodes, faceNodes, faceNodeStart});
           }),
           py::kw_only(), arg("centres"), arg("volumes"), arg("owner"), arg("neighbour"), arg("areas"),
           arg("face_centres"), arg("weights"), arg("boundary_owner"), arg("boundary_areas"),
           arg("boundary_centres"), arg("boundary_kinds") = py::none(), arg("empty_faces") = 0,
           arg("partition") = py::none(), arg("nodes") = py::none(), arg("face_nodes") = py::none(),
           arg("face_node_start") = py::none())
      .def(
          "check", [](Mesh& self, int maxPerKind) { return CheckMeshOf(self, maxPerKind); }, py::kw_only(),
          arg("max_per_kind") = 5, R"(
Looks for breaches of the rules for meshes: geometry that does not fit together, faces without area, cells that are not
closed, wrong exchanges and others. Returns a list of Breach, empty for a sound mesh, with at most max_per_kind of each
kind. Collective if the mesh is in partitions. Face and cell numbers in the texts count from 1.
)")
      .def(
          "quality",
          [](Mesh& self) {
            py::gil_scoped_release const interpreter;
            return reference_host::MeasureQuality(self.record(), *self.host().partitionFaces());
          },
          "Non-orthogonality and skewness of the faces between two cells of this partition, as Quality.")
      .def_property_readonly("cell_count", &Mesh::nInterior, "Number n of interior cells.")
      .def_property_readonly("total_count", &Mesh::nAll, "Number N of all cells, the length of a field.")
      .def_property_readonly("ghost_count", &Mesh::nBoundaryFaces, "Number of ghost cells.")
      .def_property_readonly("halo_count", &Mesh::nHalo, "Number of halo cells.")
      .def_property_readonly(
          "inner_face_count", [](Mesh const& self) { return self.record().NInnerFaces; },
          "Number of inner faces.")
      .def_property_readonly("boundary_face_count", &Mesh::nBoundaryFaces, "Number of boundary faces.")
      .def_property_readonly("empty_face_count", &Mesh::nEmptyFaces, "Number of empty faces among them.")
      .def_property_readonly(
          "partition_face_count", [](Mesh& self) { return self.host().partitionFaces()->NParInterFace(); },
          "Number of faces between this partition and others.")
      .def_property_readonly(
          "node_count", [](Mesh const& self) { return self.record().NNode; },
          "Number of nodes; 0: without nodes.")
      .def_property_readonly("centres", &Mesh::Centres, R"(
(3, N) cell centres, L; read-only. These arrays are views of what was passed to Mesh, or copies for a mesh that was read.
)")
      .def_property_readonly("volumes", &Mesh::Volumes, "(n,) volumes of the interior cells, L^3; read-only.")
      .def_property_readonly("owner", &Mesh::Owner, "(nf,) int32, owners of the inner faces; a copy.")
      .def_property_readonly("neighbour", &Mesh::Neighbour,
                             "(nf,) int32, cells across the inner faces; a copy.")
      .def_property_readonly("areas", &Mesh::Areas,
                             "(3, nf) area vectors of the inner faces, L^2; read-only.")
      .def_property_readonly("face_centres", &Mesh::FaceCentres,
                             "(3, nf) centres of the inner faces, L; read-only.")
      .def_property_readonly("weights", &Mesh::Weights, "(nf,) weights of the neighbours; read-only.")
      .def_property_readonly("boundary_owner", &Mesh::BoundaryOwner,
                             "(nb,) int32, cells at the boundary; a copy.")
      .def_property_readonly("boundary_areas", &Mesh::BoundaryAreas,
                             "(3, nb) area vectors outwards, L^2; read-only.")
      .def_property_readonly("boundary_centres", &Mesh::BoundaryCentres, "(3, nb) centres, L; read-only.")
      .def_property_readonly("boundary_kinds", &Mesh::BoundaryKinds, R"(
Number of boundary faces of each kind, a dict in the order of the faces.
)")
      .def_property_readonly("nodes", &Mesh::Nodes, "(3, m) nodes, L; read-only.")
      .def_property_readonly(
          "face_nodes", [](Mesh const& self) { return py::object(self.FaceNodes()[0]); },
          "int32, nodes of all faces, one after another; a copy.")
      .def_property_readonly(
          "face_node_start", [](Mesh const& self) { return py::object(self.FaceNodes()[1]); },
          "int32, where the nodes of each face begin in face_nodes, and the end; a copy.")
      .def_property_readonly("_patches", &Mesh::Patches)
      .def_property_readonly("patch_of_boundary_face", &Mesh::PatchOfBoundaryFace, R"(
(nb,) int32, the patch of each boundary face, an index into patches; -1 in a mesh from arrays.
)")
      .def("ghost_cells", &Mesh::GhostCells, arg("patch"), R"(
Numbers of the ghost cells of the patch with this name, int64: phi[mesh.ghost_cells('inlet')] = 1.0. KeyError for a
patch that the mesh does not have.
)")
      .def_property_readonly("source_cell", &Mesh::SourceCell, R"(
(N,) int64, the number of each cell in the file, from 0; -1 for ghost cells. In a mesh from arrays, interior cells have
their own numbers and all others -1.
)");

  module.def("read", &ReadMeshFile, arg("path"), arg("groups") = py::none());
  module.def("from_host", &MeshFromCapsule);
  module.def("build_cells", &MeshFromCells, arg("name"), arg("points"), arg("shapes"), arg("nodes"),
             arg("surface_nodes"), arg("surface_start"), arg("surface_patch"), arg("patches"),
             arg("groups") = py::none(), R"(
Makes a mesh of standard cells. ValueError begins with name.

points : (m, 3) float64. shapes : (n,) 0 tetrahedron, 1 hexahedron, 2 prism, 3 pyramid. nodes : the nodes of all cells,
one after another. surface_nodes, surface_start, surface_patch : triangles and quadrangles of the boundary, k+1 starts
and k indices into patches. patches : list of (name, group), group None to take it from the name. groups : as in read.
)");
  module.def("build_faces", &MeshFromFaces, arg("name"), arg("points"), arg("face_start"), arg("face_nodes"),
             arg("owner"), arg("neighbour"), arg("face_patch"), arg("patches"), arg("groups") = py::none(),
             R"(
Makes a mesh of polyhedra from its faces. ValueError begins with name.

points : (m, 3) float64. face_start (nf+1) and face_nodes : nodes of the faces, around a normal that points out of the
owner. owner : (nf,). neighbour : (nf,) -1 at the boundary. face_patch : (nf,) index into patches, -1 inside.
patches, groups : as for build_cells.
)");
}

}  // namespace zyn_python
