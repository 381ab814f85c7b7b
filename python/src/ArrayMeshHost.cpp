#include "python/src/ArrayMeshHost.h"

#include <limits>
#include <utility>

#include "python/src/ArrayChecks.h"

namespace zyn_python {
namespace {

using reference_host::ArrayFaces;
using reference_host::ArrayHost;
using reference_host::Coordinates;

constexpr py::ssize_t kMostNumbers =
    std::numeric_limits<int>::max() - 1;  // cells and faces count with int, from 1

py::ssize_t LengthOf(py::object const& object, char const* name) {
  if (!py::isinstance<py::array>(object))
    throw py::type_error(std::string(name) + " must be an array of numpy, not " +
                         std::string(py::str(py::type::of(object).attr("__name__"))));
  auto const array = py::reinterpret_borrow<py::array>(object);
  if (array.ndim() != 1)
    throw py::value_error(std::string(name) + " must have one dimension, not the shape " +
                          std::string(py::str(array.attr("shape"))));
  if (array.size() > kMostNumbers)
    throw py::value_error(std::string(name) + " has " + std::to_string(array.size()) +
                          " elements, more than " + std::to_string(kMostNumbers));
  return array.size();
}

Coordinates From(Coordinates const& c, int first) { return {c.x + first, c.y + first, c.z + first}; }

/// The `count` faces of `faces` from number `first` on.
ArrayFaces Section(ArrayFaces const& faces, int first, int count) {
  ArrayFaces section = faces;
  section.count = count;
  section.owner += first;
  section.area = From(faces.area, first);
  section.centre = From(faces.centre, first);
  if (faces.nodeStart != nullptr) section.nodeStart += first;
  return section;
}

}  // namespace

ArrayMeshHost::ArrayMeshHost(MeshArguments const& arguments) {
  arrays_.nCells = static_cast<int>(LengthOf(arguments.volumes, "volumes"));
  arrays_.inner.count = static_cast<int>(LengthOf(arguments.owner, "owner"));
  nBoundaryFaces_ = LengthOf(arguments.boundaryOwner, "boundary_owner");
  TakePartition(arguments.partition);
  TakeCells(arguments);
  TakeInnerFaces(arguments);
  TakeBoundary(arguments);
  TakeNodes(arguments);
  DivideBoundary(arguments);

  auto const extent = HasNodes() ? ArrayHost::Extent::kTopology : ArrayHost::Extent::kFaces;
  py::gil_scoped_release const interpreter;
  host_ = std::make_unique<ArrayHost>(arrays_, extent);
}

CCommunication* ArrayMeshHost::exchange() {
  return exchange_ != nullptr ? static_cast<CCommunication*>(exchange_.get()) : &alone_;
}

CZYNCom* ArrayMeshHost::reduction() {
  return exchange_ != nullptr ? static_cast<CZYNCom*>(exchange_.get()) : &alone_;
}

double const* ArrayMeshHost::Lend(py::object const& array, char const* name, py::ssize_t length) {
  double const* const elements = LentElements(array, name, {length});
  lent_[name] = py::reinterpret_borrow<py::array>(array);
  return elements;
}

Coordinates ArrayMeshHost::LendRows(py::object const& array, char const* name, py::ssize_t length) {
  double const* const rows = LentElements(array, name, {3, length});
  lent_[name] = py::reinterpret_borrow<py::array>(array);
  return {rows, rows + length, rows + 2 * length};
}

void ArrayMeshHost::TakeCells(MeshArguments const& arguments) {
  py::ssize_t const nAll = arrays_.nCells + nBoundaryFaces_ + arrays_.nHaloCells;
  if (nAll > kMostNumbers)
    throw py::value_error("the mesh has " + std::to_string(nAll) + " cells, more than " +
                          std::to_string(kMostNumbers));
  arrays_.volume = Lend(arguments.volumes, "volumes", arrays_.nCells);
  try {
    arrays_.centre = LendRows(arguments.centres, "centres", nAll);
  } catch (py::value_error const& error) {
    throw py::value_error(std::string(error.what()) + " (" + std::to_string(arrays_.nCells) + " interior, " +
                          std::to_string(nBoundaryFaces_) + " ghost and " +
                          std::to_string(arrays_.nHaloCells) + " halo cells)");
  }
}

void ArrayMeshHost::TakeInnerFaces(MeshArguments const& arguments) {
  ArrayFaces& inner = arrays_.inner;
  owner_ = CopiedNumbers(arguments.owner, "owner", inner.count, 0, arrays_.nCells - 1);
  neighbour_ = CopiedNumbers(arguments.neighbour, "neighbour", inner.count, 0, arrays_.nCells - 1);
  inner.owner = owner_.data();
  arrays_.neighbour = neighbour_.data();
  inner.area = LendRows(arguments.areas, "areas", inner.count);
  inner.centre = LendRows(arguments.faceCentres, "face_centres", inner.count);
  arrays_.neighbourWeight = Lend(arguments.weights, "weights", inner.count);
}

void ArrayMeshHost::TakeBoundary(MeshArguments const& arguments) {
  boundaryOwner_ =
      CopiedNumbers(arguments.boundaryOwner, "boundary_owner", nBoundaryFaces_, 0, arrays_.nCells - 1);
  ArrayFaces& all = arrays_.wall;  // all kinds, until they are divided
  all.count = static_cast<int>(nBoundaryFaces_);
  all.owner = boundaryOwner_.data();
  all.area = LendRows(arguments.boundaryAreas, "boundary_areas", nBoundaryFaces_);
  all.centre = LendRows(arguments.boundaryCentres, "boundary_centres", nBoundaryFaces_);
}

void ArrayMeshHost::DivideBoundary(MeshArguments const& arguments) {
  if (!arguments.boundaryKinds.is_none()) {
    if (!py::isinstance<py::dict>(arguments.boundaryKinds))
      throw py::type_error("boundary_kinds must be a dict of the number of faces of each kind, or None");
    ArrayFaces const all = arrays_.wall;
    std::pair<char const*, ArrayFaces*> const kinds[] = {{"inlet", &arrays_.inlet},
                                                         {"outlet", &arrays_.outlet},
                                                         {"symmetry", &arrays_.symmetry},
                                                         {"wall", &arrays_.wall}};
    arrays_.wall = Section(all, all.count, 0);
    int first = 0;
    auto const* kind = std::begin(kinds);
    for (auto const& [key, value] : py::reinterpret_borrow<py::dict>(arguments.boundaryKinds)) {
      std::string const name = py::str(key);
      while (kind != std::end(kinds) && name != kind->first) ++kind;
      if (kind == std::end(kinds))
        throw py::value_error(
            "boundary_kinds must have keys among 'inlet', 'outlet', 'symmetry', 'wall' in this order, "
            "which is that of the faces; '" +
            name + "' is unknown or comes too late");
      // At most as many as are left.
      py::ssize_t const count = WholeNumber(value, "boundary_kinds['" + name + "']", 0, all.count - first);
      *kind->second = Section(all, first, static_cast<int>(count));
      first += static_cast<int>(count);
    }
    if (first != all.count)
      throw py::value_error("boundary_kinds has " + std::to_string(first) + " faces, but there are " +
                            std::to_string(all.count) + " boundary faces");
  }
  // They are the last of the wall faces.
  arrays_.nEmptyFaces =
      static_cast<int>(WholeNumber(arguments.emptyFaces, "empty_faces", 0, arrays_.wall.count));
}

void ArrayMeshHost::TakePartition(py::object const& partition) {
  ArrayFaces& faces = arrays_.partition;
  if (partition.is_none()) return;
  for (char const* attribute :
       {"owner", "areas", "centres", "weights", "exchange", "halo_cells", "halo_count"}) {
    if (!py::hasattr(partition, attribute))
      throw py::type_error("partition must be a PartitionFaces, or None");
  }
  faces.count = static_cast<int>(LengthOf(partition.attr("owner"), "partition.owner"));
  partitionOwner_ =
      CopiedNumbers(partition.attr("owner"), "partition.owner", faces.count, 0, arrays_.nCells - 1);
  faces.owner = partitionOwner_.data();
  faces.area = LendRows(partition.attr("areas"), "partition.areas", faces.count);
  faces.centre = LendRows(partition.attr("centres"), "partition.centres", faces.count);
  arrays_.haloWeight = Lend(partition.attr("weights"), "partition.weights", faces.count);

  py::object const haloCount = partition.attr("halo_count");
  py::ssize_t const nHalo =
      haloCount.is_none() ? faces.count : WholeNumber(haloCount, "partition.halo_count", 0, kMostNumbers);
  py::object const haloCells = partition.attr("halo_cells");
  if (haloCells.is_none() && nHalo != faces.count)
    throw py::value_error("partition.halo_count is " + std::to_string(nHalo) + " for " +
                          std::to_string(faces.count) +
                          " partition faces; without halo_cells, each face has a halo cell of its own");
  arrays_.nHaloCells = static_cast<int>(nHalo);
  if (!haloCells.is_none()) {
    haloCell_ = CopiedNumbers(haloCells, "partition.halo_cells", faces.count, 0, nHalo - 1);
    arrays_.haloCell = haloCell_.data();
  }
  exchange_ = std::make_unique<PythonExchange>(partition.attr("exchange"),
                                               arrays_.nCells + nBoundaryFaces_ + arrays_.nHaloCells);
}

void ArrayMeshHost::TakeNodes(MeshArguments const& arguments) {
  bool const isGiven[] = {!arguments.nodes.is_none(), !arguments.faceNodes.is_none(),
                          !arguments.faceNodeStart.is_none()};
  if (!isGiven[0] && !isGiven[1] && !isGiven[2]) return;
  if (!isGiven[0] || !isGiven[1] || !isGiven[2])
    throw py::value_error("nodes, face_nodes and face_node_start must be given together");

  if (!py::isinstance<py::array>(arguments.nodes)) LentElements(arguments.nodes, "nodes", {3, Shape::kAny});
  auto const nodes = py::reinterpret_borrow<py::array>(arguments.nodes);
  py::ssize_t const nNodes = nodes.ndim() == 2 ? nodes.shape(1) : Shape::kAny;
  arrays_.node = LendRows(arguments.nodes, "nodes", nNodes);
  if (nNodes < 1 || nNodes > kMostNumbers)
    throw py::value_error("nodes must have 1.." + std::to_string(kMostNumbers) + " columns");
  arrays_.nNodes = static_cast<int>(nNodes);

  ArrayFaces* const sections[] = {&arrays_.inner, &arrays_.wall, &arrays_.partition};
  py::ssize_t nFaces = 0;
  for (ArrayFaces const* section : sections) nFaces += section->count;
  faceNode_ = CopiedNumbers(arguments.faceNodes, "face_nodes", Shape::kAny, 0, nNodes - 1);
  auto const nFaceNodes = static_cast<py::ssize_t>(faceNode_.size());
  faceNodeStart_ = CopiedNumbers(arguments.faceNodeStart, "face_node_start", nFaces + 1, 0, nFaceNodes);
  if (faceNodeStart_.front() != 0 || faceNodeStart_.back() != nFaceNodes)
    throw py::value_error("face_node_start must begin with 0 and end with the length of face_nodes, " +
                          std::to_string(nFaceNodes));
  for (std::size_t f = 0; f + 1 < faceNodeStart_.size(); ++f) {
    if (faceNodeStart_[f + 1] - faceNodeStart_[f] < 3)
      throw py::value_error("face_node_start[" + std::to_string(f + 1) + "] is " +
                            std::to_string(faceNodeStart_[f + 1]) + " after " +
                            std::to_string(faceNodeStart_[f]) + ", but a face has 3 nodes or more");
  }
  int first = 0;
  for (ArrayFaces* section : sections) {
    section->node = faceNode_.data();
    section->nodeStart = faceNodeStart_.data() + first;
    first += section->count;
  }
}

}  // namespace zyn_python
