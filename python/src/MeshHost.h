#pragma once

#include "host/ZYNCom.h"
#include "host/ZYNCommunication.h"
#include "host/Zyn3dGV.h"

namespace reference_host {
class HostPartition;
}

namespace zyn_python {

/// What the operators borrow of a mesh, wherever it comes from. Two modules share it: the parallel reader hands its
/// meshes to the core as objects of this class.
class MeshHost {
 public:
  MeshHost() = default;
  virtual ~MeshHost() = default;
  MeshHost(MeshHost const&) = delete;
  MeshHost& operator=(MeshHost const&) = delete;

  virtual CZYN3DFiniteVolumeMesh* mesh() = 0;                   ///< with all faces
  virtual CZYN3DFiniteVolumeMesh* meshWithoutEmptyFaces() = 0;  ///< for Green-Gauss
  virtual CPartitionFace_DLL* partitionFaces() = 0;
  virtual CCommunication* exchange() = 0;
  virtual CZYNCom* reduction() = 0;

  virtual bool HasNodes() const = 0;
  virtual bool IsPartitioned() const = 0;  ///< whether there are other partitions to exchange with

  /// The partition of a mesh that was read; null for a mesh from arrays.
  virtual reference_host::HostPartition const* partition() const = 0;
};

/// The communication of a mesh in one piece.
class OnePartition : public CCommunication, public CZYNCom {
 public:
  void DDM_Exch(double*) override {}
  void DDM_IExch_Start(double*, ZYNNonBlockingBufferId) override {}
  void DDM_IExch_Wait(double*, ZYNNonBlockingBufferId) override {}
  int AllMin(int&) override { return 0; }
};

}  // namespace zyn_python
