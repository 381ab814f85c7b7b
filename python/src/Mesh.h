#pragma once

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <memory>
#include <string>
#include <vector>

#include "foundation/FaceGroups.h"
#include "python/src/ArrayChecks.h"
#include "python/src/ArrayMeshHost.h"
#include "python/src/CallLock.h"
#include "python/src/MeshHost.h"

namespace zyn_python {

/// The boundary groups in the order of their ghost cells.
inline constexpr FaceKind kBoundaryOrder[] = {FaceKind::Inlet, FaceKind::Outlet, FaceKind::Symmetry,
                                              FaceKind::Wall};

/// A mesh as Python sees it: all numbers from 0, vectors in three rows.
class Mesh {
 public:
  explicit Mesh(MeshArguments const& arguments);
  explicit Mesh(std::unique_ptr<MeshHost> host) : host_(std::move(host)) {}

  MeshHost& host() { return *host_; }
  CZYN3DFiniteVolumeMesh const& record() const { return *host_->mesh(); }
  FaceGroup Faces(FaceKind kind) const { return FacesOf(kind, record(), host_->partitionFaces()); }

  int nInterior() const { return record().NInnerCells; }
  int nAll() const { return record().NCell; }
  int nEmptyFaces() const { return record().NCell - host_->meshWithoutEmptyFaces()->NCell; }
  int nBoundaryFaces() const;
  int nHalo() const { return nAll() - nInterior() - nBoundaryFaces(); }

  /// Guards the calls of the operators on a mesh in partitions: their exchanges must not mix.
  CallLock& lock() { return lock_; }

  /// Throws ValueError if `out` shares memory with an array that the mesh borrows.
  void RefuseMeshMemory(double const* out, pybind11::ssize_t n) const;

  /// Throws ValueError if there are no nodes.
  void RequireNodes(char const* forWhat) const;

  pybind11::array Centres() const;
  pybind11::array Volumes() const;
  pybind11::array Weights() const;
  pybind11::array Areas() const;
  pybind11::array FaceCentres() const;
  pybind11::array BoundaryAreas() const;
  pybind11::array BoundaryCentres() const;
  pybind11::array Nodes() const;
  pybind11::array Owner() const;
  pybind11::array Neighbour() const;
  pybind11::array BoundaryOwner() const;
  pybind11::tuple FaceNodes() const;  ///< nodes and starts
  pybind11::dict BoundaryKinds() const;
  pybind11::list Patches() const;
  pybind11::array PatchOfBoundaryFace() const;
  pybind11::array GhostCells(std::string const& patch) const;
  pybind11::array SourceCell() const;

  /// For the garbage collector: what may refer back to the mesh. Null if there is nothing.
  pybind11::object* exchangeObject();

 private:
  pybind11::array LentOrCopied(char const* name, std::vector<FaceGroup> const& groups, bool isArea) const;
  pybind11::array const* Lent(char const* name) const;
  std::vector<FaceGroup> Boundary() const;

  std::unique_ptr<MeshHost> host_;
  ArrayMeshHost* arrays_ = nullptr;  ///< host_, if it stands on arrays
  CallLock lock_;
};

/// The elements of the array `out`, or of a new one that is put there if it is None. Throws like LentElements, and
/// ValueError if the array shares memory with the input or the mesh.
/// @param[in] nPhi  number of elements of `phi`
double* OutputElements(pybind11::object& out, Shape const& shape, double const* phi, pybind11::ssize_t nPhi,
                       Mesh const& mesh);

/// The mesh that an object of Python is. Throws TypeError for anything else.
Mesh& MeshIn(pybind11::object const& object);

void BindMesh(pybind11::module_& module);

}  // namespace zyn_python
