#pragma once

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "python/src/MeshHost.h"
#include "python/src/PythonExchange.h"
#include "reference_host/arrays/ArrayHost.h"

namespace zyn_python {

/// The arguments of Mesh(...), as Python passes them; the doc string of the class says what each is.
struct MeshArguments {
  pybind11::object centres, volumes;
  pybind11::object owner, neighbour, areas, faceCentres, weights;
  pybind11::object boundaryOwner, boundaryAreas, boundaryCentres, boundaryKinds;
  pybind11::object emptyFaces, partition;
  pybind11::object nodes, faceNodes, faceNodeStart;
};

/// A mesh on arrays of numpy, which are lent to the operators as they are and kept alive. Whole numbers are copied.
class ArrayMeshHost : public MeshHost {
 public:
  /// Checks everything before it is used; throws TypeError or ValueError.
  explicit ArrayMeshHost(MeshArguments const& arguments);

  CZYN3DFiniteVolumeMesh* mesh() override { return host_->mesh(); }
  CZYN3DFiniteVolumeMesh* meshWithoutEmptyFaces() override { return host_->meshWithoutEmptyFaces(); }
  CPartitionFace_DLL* partitionFaces() override { return host_->partitionFaces(); }
  CCommunication* exchange() override;
  CZYNCom* reduction() override;
  bool HasNodes() const override { return arrays_.nNodes > 0; }
  bool IsPartitioned() const override { return exchange_ != nullptr; }
  reference_host::HostPartition const* partition() const override { return nullptr; }

  /// The arrays that are lent, by the name of the argument.
  std::map<std::string, pybind11::array> const& lent() const { return lent_; }

  PythonExchange* pythonExchange() { return exchange_.get(); }  ///< null without partition faces

 private:
  void TakeCells(MeshArguments const& arguments);
  void TakeInnerFaces(MeshArguments const& arguments);
  void TakeBoundary(MeshArguments const& arguments);
  void DivideBoundary(MeshArguments const& arguments);
  void TakePartition(pybind11::object const& partition);
  void TakeNodes(MeshArguments const& arguments);

  double const* Lend(pybind11::object const& array, char const* name, pybind11::ssize_t length);
  reference_host::Coordinates LendRows(pybind11::object const& array, char const* name,
                                       pybind11::ssize_t length);

  std::map<std::string, pybind11::array> lent_;
  std::vector<int> owner_, neighbour_, boundaryOwner_, partitionOwner_, haloCell_, faceNode_, faceNodeStart_;
  pybind11::ssize_t nBoundaryFaces_ = 0;
  reference_host::ArrayMesh arrays_;
  std::unique_ptr<reference_host::ArrayHost> host_;
  std::unique_ptr<PythonExchange> exchange_;
  OnePartition alone_;
};

}  // namespace zyn_python
