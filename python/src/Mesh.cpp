#include "python/src/Mesh.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "python/src/ArrayChecks.h"
#include "reference_host/mesh/BoundaryGroups.h"
#include "reference_host/partition/HostPartition.h"

namespace zyn_python {
namespace {

/// Copies three arrays [1..n] to the columns first.. of three rows.
void CopyRows(double const* x, double const* y, double const* z, py::ssize_t n, py::array_t<double>& rows,
              py::ssize_t first = 0) {
  double* const out = rows.mutable_data();
  py::ssize_t const length = rows.shape(1);
  double const* const from[] = {x, y, z};
  for (int i = 0; i < 3; ++i) std::copy_n(n > 0 ? from[i] + 1 : nullptr, n, out + i * length + first);
}

py::array Sealed(py::array array) {
  array.attr("flags").attr("writeable") = false;
  return array;
}

/// Cell or node numbers [1..n], counted from 1, as an array counted from 0.
void AppendFromZero(int const* numbers, int n, std::vector<int>& out) {
  for (int i = 1; i <= n; ++i) out.push_back(numbers[i] - 1);
}

template <class Number>
py::array NumberArray(std::vector<Number> const& numbers) {
  return Sealed(py::array_t<Number>(static_cast<py::ssize_t>(numbers.size()), numbers.data()));
}

}  // namespace

Mesh::Mesh(MeshArguments const& arguments) {
  auto host = std::make_unique<ArrayMeshHost>(arguments);
  arrays_ = host.get();
  host_ = std::move(host);
}

int Mesh::nBoundaryFaces() const {
  int n = 0;
  for (FaceGroup const& group : Boundary()) n += group.count;
  return n;
}

std::vector<FaceGroup> Mesh::Boundary() const {
  std::vector<FaceGroup> groups;
  for (FaceKind const kind : kBoundaryOrder) groups.push_back(FacesOf(kind, record()));
  return groups;
}

void Mesh::RefuseMeshMemory(double const* out, py::ssize_t n) const {
  if (arrays_ == nullptr) return;
  for (auto const& [name, array] : arrays_->lent())
    RefuseOverlap(out, n, static_cast<double const*>(array.data()), array.size(), name.c_str());
}

void Mesh::RequireNodes(char const* forWhat) const {
  if (!host_->HasNodes())
    throw py::value_error(std::string(forWhat) +
                          " needs a mesh with nodes: pass nodes, face_nodes and face_node_start to Mesh");
}

py::array const* Mesh::Lent(char const* name) const {
  if (arrays_ == nullptr) return nullptr;
  auto const found = arrays_->lent().find(name);
  return found == arrays_->lent().end() ? nullptr : &found->second;
}

py::array Mesh::Centres() const {
  if (py::array const* lent = Lent("centres")) return ReadOnlyView(*lent);
  py::array_t<double> rows = NewArray({3, nAll()});
  CopyRows(record().xc, record().yc, record().zc, nAll(), rows);
  return Sealed(rows);
}

py::array Mesh::Volumes() const {
  if (py::array const* lent = Lent("volumes")) return ReadOnlyView(*lent);
  return Sealed(py::array_t<double>(nInterior(), record().Volume + 1));
}

py::array Mesh::Weights() const {
  if (py::array const* lent = Lent("weights")) return ReadOnlyView(*lent);
  return Sealed(py::array_t<double>(record().NInnerFaces, record().Lamda + 1));
}

py::array Mesh::LentOrCopied(char const* name, std::vector<FaceGroup> const& groups, bool isArea) const {
  if (py::array const* lent = Lent(name)) return ReadOnlyView(*lent);
  py::ssize_t n = 0;
  for (FaceGroup const& group : groups) n += group.count;
  py::array_t<double> rows = NewArray({3, n});
  py::ssize_t first = 0;
  for (FaceGroup const& g : groups) {
    CopyRows(isArea ? g.sx : g.xc, isArea ? g.sy : g.yc, isArea ? g.sz : g.zc, g.count, rows, first);
    first += g.count;
  }
  return Sealed(rows);
}

py::array Mesh::Areas() const { return LentOrCopied("areas", {Faces(FaceKind::Inner)}, true); }
py::array Mesh::FaceCentres() const { return LentOrCopied("face_centres", {Faces(FaceKind::Inner)}, false); }
py::array Mesh::BoundaryAreas() const { return LentOrCopied("boundary_areas", Boundary(), true); }
py::array Mesh::BoundaryCentres() const { return LentOrCopied("boundary_centres", Boundary(), false); }

py::array Mesh::Nodes() const {
  if (py::array const* lent = Lent("nodes")) return ReadOnlyView(*lent);
  py::array_t<double> rows = NewArray({3, record().NNode});
  CopyRows(record().xn, record().yn, record().zn, record().NNode, rows);
  return Sealed(rows);
}

py::array Mesh::Owner() const {
  std::vector<int> numbers;
  AppendFromZero(record().ijCV, record().NInnerFaces, numbers);
  return NumberArray(numbers);
}

py::array Mesh::Neighbour() const {
  std::vector<int> numbers;
  AppendFromZero(record().ij, record().NInnerFaces, numbers);
  return NumberArray(numbers);
}

py::array Mesh::BoundaryOwner() const {
  std::vector<int> numbers;
  for (FaceGroup const& group : Boundary()) AppendFromZero(group.cv, group.count, numbers);
  return NumberArray(numbers);
}

py::tuple Mesh::FaceNodes() const {
  RequireNodes("face_nodes");
  std::vector<FaceGroup> groups = Boundary();
  groups.insert(groups.begin(), Faces(FaceKind::Inner));
  groups.push_back(Faces(FaceKind::Partition));
  std::vector<int> nodes;
  std::vector<int> start = {0};
  for (FaceGroup const& group : groups) {
    for (int f = 1; f <= group.count; ++f) {
      AppendFromZero(group.nodes[f], group.nodes[f][0], nodes);
      start.push_back(static_cast<int>(nodes.size()));
    }
  }
  return py::make_tuple(NumberArray(nodes), NumberArray(start));
}

py::dict Mesh::BoundaryKinds() const {
  py::dict kinds;
  for (FaceGroup const& group : Boundary()) kinds[MembersOf(group.kind).name] = group.count;
  return kinds;
}

py::list Mesh::Patches() const {
  py::list patches;
  if (host_->partition() == nullptr) return patches;
  for (reference_host::Patch const& patch : host_->partition()->patches()) {
    py::object group = py::none();
    if (patch.group) group = py::str(reference_host::NameOfGroup(*patch.group));
    patches.append(py::make_tuple(patch.name, group));
  }
  return patches;
}

py::array Mesh::PatchOfBoundaryFace() const {
  std::vector<int> patches(static_cast<std::size_t>(nBoundaryFaces()), -1);
  if (host_->partition() != nullptr) {
    std::vector<int> const& ofGhost = host_->partition()->patchOfGhost();
    std::copy_n(ofGhost.begin() + 1 + nInterior(), patches.size(), patches.begin());
  }
  return NumberArray(patches);
}

py::array Mesh::GhostCells(std::string const& patch) const {
  if (host_->partition() == nullptr) throw py::value_error("a mesh from arrays has no patches");
  std::vector<reference_host::Patch> const& patches = host_->partition()->patches();
  auto const found = std::find_if(patches.begin(), patches.end(),
                                  [&](reference_host::Patch const& one) { return one.name == patch; });
  if (found == patches.end()) throw py::key_error(patch);
  auto const wanted = static_cast<int>(found - patches.begin());
  std::vector<int> const& ofGhost = host_->partition()->patchOfGhost();
  std::vector<std::int64_t> cells;
  for (std::size_t c = 1; c < ofGhost.size(); ++c) {
    if (ofGhost[c] == wanted) cells.push_back(static_cast<std::int64_t>(c) - 1);
  }
  return NumberArray(cells);
}

py::array Mesh::SourceCell() const {
  std::vector<std::int64_t> cells(static_cast<std::size_t>(nAll()), -1);
  for (std::size_t c = 0; c < cells.size(); ++c) {
    if (host_->partition() != nullptr)
      cells[c] = host_->partition()->globalCell()[c + 1] - 1;
    else if (c < static_cast<std::size_t>(nInterior()))
      cells[c] = static_cast<std::int64_t>(c);
  }
  return NumberArray(cells);
}

py::object* Mesh::exchangeObject() {
  bool const hasOne = arrays_ != nullptr && arrays_->pythonExchange() != nullptr;
  return hasOne ? &arrays_->pythonExchange()->callable() : nullptr;
}

double* OutputElements(py::object& out, Shape const& shape, double const* phi, py::ssize_t nPhi,
                       Mesh const& mesh) {
  if (out.is_none()) {
    py::array_t<double> created = NewArray(shape);
    double* const elements = created.mutable_data();
    out = std::move(created);
    return elements;
  }
  double* const elements = LentElements(out, "out", shape, Access::kWrite);
  RefuseOverlap(elements, shape.Size(), phi, nPhi, "phi");
  mesh.RefuseMeshMemory(elements, shape.Size());
  return elements;
}

Mesh& MeshIn(py::object const& object) {
  if (!py::isinstance<Mesh>(object))
    throw py::type_error("mesh must be a Mesh, not " +
                         std::string(py::str(py::type::of(object).attr("__name__"))));
  return py::cast<Mesh&>(object);
}

}  // namespace zyn_python
