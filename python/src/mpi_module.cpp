#include <mpi.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "python/src/GroupNames.h"
#include "python/src/MeshHost.h"
#include "reference_host/mesh/MeshError.h"
#include "reference_host/parallel/LoadMesh.h"

namespace zyn_python {
namespace {

namespace py = pybind11;

/// A rank's partition of a mesh that was read on all ranks of a communicator.
class LoadedMeshHost : public MeshHost {
 public:
  explicit LoadedMeshHost(reference_host::LoadedMesh loaded) : loaded_(std::move(loaded)) {}

  CZYN3DFiniteVolumeMesh* mesh() override { return loaded_.partition->mesh(); }
  CZYN3DFiniteVolumeMesh* meshWithoutEmptyFaces() override { return mesh(); }
  CPartitionFace_DLL* partitionFaces() override { return loaded_.partition->partitionFaces(); }
  CCommunication* exchange() override { return loaded_.exchange.get(); }
  CZYNCom* reduction() override { return loaded_.reduction.get(); }
  bool HasNodes() const override { return true; }
  bool IsPartitioned() const override { return true; }
  reference_host::HostPartition const* partition() const override { return loaded_.partition.get(); }

 private:
  reference_host::LoadedMesh loaded_;
};

/// The host in a capsule, from which the core takes it.
/// @param[in] communicator  its number in Fortran, which does not depend on how a language stores it
py::capsule ReadOnRanks(std::string const& path, GroupNames const& groups, MPI_Fint communicator) {
  GroupsByUser const byUser = GroupsOf(groups);
  auto host = std::make_unique<std::unique_ptr<MeshHost>>();
  {
    py::gil_scoped_release const interpreter;
    *host = std::make_unique<LoadedMeshHost>(
        reference_host::LoadMesh(MPI_Comm_f2c(communicator), path, byUser, {}));
  }
  // From here on the capsule owns it.
  return {host.release(), [](void* p) { delete static_cast<std::unique_ptr<MeshHost>*>(p); }};
}

std::string LibraryVersion() {
  char text[MPI_MAX_LIBRARY_VERSION_STRING];
  int length = 0;
  MPI_Get_library_version(text, &length);
  return std::string(text, static_cast<std::size_t>(length));
}

}  // namespace
}  // namespace zyn_python

PYBIND11_MODULE(_mpi, module) {
  module.doc() = "Reading of meshes on the ranks of a communicator.";
  zyn_python::TranslateMeshErrors();
  module.def("read", &zyn_python::ReadOnRanks, pybind11::arg("path"), pybind11::arg("groups"),
             pybind11::arg("communicator"));
  module.def("library_version", &zyn_python::LibraryVersion);
}
