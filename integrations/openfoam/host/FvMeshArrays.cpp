#include "host/FvMeshArrays.h"

#include <limits>
#include <type_traits>

#include "emptyPolyPatch.H"
#include "surfaceFields.H"

#ifndef WM_DP
#error "The operators calculate in double precision, and so must OpenFOAM (WM_DP)"
#endif

namespace Foam {
namespace zyn {
namespace {

/// A count of OpenFOAM's, which has 64 bits in some builds, as the operators count.
int Counted(label count, char const* what) {
  if (count >= std::numeric_limits<int>::max()) {
    FatalErrorInFunction << "The mesh has " << count << ' ' << what << " here; the zyn operators count to "
                         << std::numeric_limits<int>::max() - 1 << ": decompose the mesh into more parts"
                         << exit(FatalError);
  }
  return static_cast<int>(count);
}

/// Labels as the operators read them: OpenFOAM's own array where label is int, otherwise a copy in `copy`.
int const* AsInts(labelUList const& labels, std::vector<int>& copy) {
  if constexpr (std::is_same<label, int>::value) {
    return labels.cdata();
  } else {
    copy.assign(labels.begin(), labels.end());
    return copy.data();
  }
}

void Append(labelUList const& labels, std::vector<int>& numbers) {
  numbers.insert(numbers.end(), labels.begin(), labels.end());
}

void CopyVectors(UList<vector> const& from, StaggeredArrays& to, std::size_t first = 0) {
  double *const x = to[0] + first, *const y = to[1] + first, *const z = to[2] + first;
  for (label i = 0; i < from.size(); ++i) {
    x[i] = from[i].x();
    y[i] = from[i].y();
    z[i] = from[i].z();
  }
}

reference_host::Coordinates Lent(StaggeredArrays const& arrays) { return {arrays[0], arrays[1], arrays[2]}; }

/// Makes three arrays unless they are there, at the first call.
/// @return whether they are new
bool MakeThree(StaggeredArrays& arrays, std::size_t size) {
  if (arrays.count() != 0) return false;
  arrays = StaggeredArrays(3, size);
  return true;
}

}  // namespace

FvMeshArrays::FvMeshArrays(fvMesh const& mesh) : mesh_(mesh) {
  CountCells();
  MakeNumbers();
  CopyAreas();
  CopyWeights();
}

void FvMeshArrays::CountCells() {
  // The largest count of all: faces of the inside and of patches.
  Counted(mesh_.nCells() + mesh_.nFaces(), "cells and faces");
  arrays_.nCells = static_cast<int>(mesh_.nCells());
  arrays_.inner.count = static_cast<int>(mesh_.nInternalFaces());

  forAll(mesh_.boundary(), i) {
    fvPatch const& patch = mesh_.boundary()[i];
    int const size = static_cast<int>(patch.patch().size());
    auto& kind = isA<emptyPolyPatch>(patch.patch()) ? empty_ : patch.coupled() ? coupled_ : uncoupled_;
    kind.push_back({i, size, 0, 0});
  }
  int nextCell = arrays_.nCells;
  auto const number = [&nextCell](std::vector<PatchPlace>& patches, int firstFace) {
    int const before = nextCell;
    for (PatchPlace& p : patches) {
      p.firstFace = firstFace + nextCell - before;
      p.firstCell = nextCell;
      nextCell += p.size;
    }
    return nextCell - before;
  };
  int const nWallFaces = number(uncoupled_, 0);
  arrays_.nHaloCells = arrays_.partition.count = number(coupled_, 0);
  arrays_.nEmptyFaces = number(empty_, nWallFaces);
  arrays_.wall.count = nWallFaces + arrays_.nEmptyFaces;
  nAllCells_ = nextCell;
}

void FvMeshArrays::MakeNumbers() {
  arrays_.inner.owner = AsInts(mesh_.owner(), owner_);
  arrays_.neighbour = AsInts(mesh_.neighbour(), neighbour_);
  for (auto const* patches : {&uncoupled_, &empty_})
    for (PatchPlace const& p : *patches) Append(mesh_.boundaryMesh()[p.patch].faceCells(), wallOwner_);
  for (PatchPlace const& p : coupled_) Append(mesh_.boundaryMesh()[p.patch].faceCells(), partitionOwner_);
  arrays_.wall.owner = wallOwner_.data();
  arrays_.partition.owner = partitionOwner_.data();
}

void FvMeshArrays::CopyAreas() {
  if (MakeThree(areas_.inner, arrays_.inner.count)) {
    MakeThree(areas_.wall, arrays_.wall.count);
    MakeThree(areas_.partition, arrays_.partition.count);
    arrays_.inner.area = Lent(areas_.inner);
    arrays_.wall.area = Lent(areas_.wall);
    arrays_.partition.area = Lent(areas_.partition);
  }
  arrays_.volume = mesh_.V().field().cdata();
  CopyVectors(mesh_.Sf().primitiveField(), areas_.inner);
  auto const& patchAreas = mesh_.Sf().boundaryField();
  for (PatchPlace const& p : uncoupled_) CopyVectors(patchAreas[p.patch], areas_.wall, p.firstFace);
  for (PatchPlace const& p : coupled_) CopyVectors(patchAreas[p.patch], areas_.partition, p.firstFace);
  for (PatchPlace const& p : empty_)
    CopyVectors(mesh_.boundaryMesh()[p.patch].faceAreas(), areas_.wall, p.firstFace);
}

void FvMeshArrays::CopyWeights() {
  if (weight_.count() == 0) {
    weight_ = StaggeredArrays(1, arrays_.inner.count);
    haloWeight_ = StaggeredArrays(1, arrays_.partition.count);
    arrays_.neighbourWeight = weight_[0];
    arrays_.haloWeight = haloWeight_[0];
  }
  auto const copy = [](UList<scalar> const& from, double* to) {
    for (label i = 0; i < from.size(); ++i) to[i] = 1.0 - from[i];
  };
  copy(mesh_.weights().primitiveField(), weight_[0]);
  for (PatchPlace const& p : coupled_)
    copy(mesh_.weights().boundaryField()[p.patch], haloWeight_[0] + p.firstFace);
}

void FvMeshArrays::MakeCellCentres() {
  if (!MakeThree(cellCentres_, nAllCells_)) return;
  CopyCellCentres();
  arrays_.centre = Lent(cellCentres_);
}

void FvMeshArrays::CopyCellCentres() {
  CopyVectors(mesh_.cellCentres(), cellCentres_);
  for (auto const* patches : {&uncoupled_, &empty_})
    for (PatchPlace const& p : *patches)
      CopyVectors(mesh_.boundaryMesh()[p.patch].faceCentres(), cellCentres_, p.firstCell);
  for (PatchPlace const& p : coupled_) {
    fvPatch const& patch = mesh_.boundary()[p.patch];
    CopyVectors(vectorField(patch.Cn() + patch.delta()), cellCentres_, p.firstCell);
  }
}

void FvMeshArrays::MakeFaceCentres() {
  if (!MakeThree(faceCentres_.inner, arrays_.inner.count)) return;
  MakeThree(faceCentres_.wall, arrays_.wall.count);
  MakeThree(faceCentres_.partition, arrays_.partition.count);
  CopyFaceCentres();
  arrays_.inner.centre = Lent(faceCentres_.inner);
  arrays_.wall.centre = Lent(faceCentres_.wall);
  arrays_.partition.centre = Lent(faceCentres_.partition);
}

void FvMeshArrays::CopyFaceCentres() {
  CopyVectors(mesh_.Cf().primitiveField(), faceCentres_.inner);
  auto const copy = [this](std::vector<PatchPlace> const& patches, StaggeredArrays& to) {
    for (PatchPlace const& p : patches)
      CopyVectors(mesh_.boundaryMesh()[p.patch].faceCentres(), to, p.firstFace);
  };
  copy(uncoupled_, faceCentres_.wall);
  copy(empty_, faceCentres_.wall);
  copy(coupled_, faceCentres_.partition);
}

void FvMeshArrays::MakeNodes() {
  if (!MakeThree(nodes_, mesh_.nPoints())) return;
  arrays_.nNodes = Counted(mesh_.nPoints(), "points");
  arrays_.node = Lent(nodes_);
  CopyNodes();
  MakeFaceNodes();
}

void FvMeshArrays::CopyNodes() { CopyVectors(mesh_.points(), nodes_); }

void FvMeshArrays::MakeFaceNodes() {
  auto const append = [this](label first, int count, FaceNodes& nodes) {
    if (nodes.start.empty()) nodes.start.push_back(0);
    for (label i = first; i < first + count; ++i) {
      Append(mesh_.faces()[i], nodes.node);
      nodes.start.push_back(Counted(static_cast<label>(nodes.node.size()), "nodes of faces"));
    }
  };
  auto const appendPatches = [&](std::vector<PatchPlace> const& patches, FaceNodes& nodes) {
    for (PatchPlace const& p : patches) append(mesh_.boundaryMesh()[p.patch].start(), p.size, nodes);
  };
  append(0, arrays_.inner.count, innerNodes_);
  append(0, 0, wallNodes_);
  append(0, 0, partitionNodes_);
  appendPatches(uncoupled_, wallNodes_);
  appendPatches(empty_, wallNodes_);
  appendPatches(coupled_, partitionNodes_);

  auto const lend = [](FaceNodes const& nodes, reference_host::ArrayFaces& faces) {
    faces.nodeStart = nodes.start.data();
    faces.node = nodes.node.data();
  };
  lend(innerNodes_, arrays_.inner);
  lend(wallNodes_, arrays_.wall);
  lend(partitionNodes_, arrays_.partition);
}

void FvMeshArrays::UpdateGeometry() {
  CopyAreas();
  CopyWeights();
  if (cellCentres_.count() != 0) CopyCellCentres();
  if (faceCentres_.inner.count() != 0) CopyFaceCentres();
  if (nodes_.count() != 0) CopyNodes();
}

template <class Type>
void FvMeshArrays::Fill(GeometricField<Type, fvPatchField, volMesh> const& field, double* const* phi) const {
  constexpr direction nComponents = pTraits<Type>::nComponents;
  auto const put = [phi](UList<Type> const& values, int first) {
    for (label i = 0; i < values.size(); ++i)
      for (direction d = 0; d < nComponents; ++d) phi[d][first + i] = component(values[i], d);
  };
  put(field.primitiveField(), 0);
  for (PatchPlace const& p : uncoupled_) put(field.boundaryField()[p.patch], p.firstCell);
  for (PatchPlace const& p : coupled_)
    put(field.boundaryField()[p.patch].patchNeighbourField()(), p.firstCell);
  for (PatchPlace const& p : empty_) {
    labelUList const& cells = mesh_.boundaryMesh()[p.patch].faceCells();
    for (label i = 0; i < cells.size(); ++i)
      for (direction d = 0; d < nComponents; ++d) phi[d][p.firstCell + i] = component(field[cells[i]], d);
  }
}

template void FvMeshArrays::Fill(GeometricField<scalar, fvPatchField, volMesh> const&, double* const*) const;
template void FvMeshArrays::Fill(GeometricField<vector, fvPatchField, volMesh> const&, double* const*) const;

}  // namespace zyn
}  // namespace Foam
