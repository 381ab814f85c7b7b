#pragma once

#include <memory>
#include <utility>

#include "python/src/MeshHost.h"
#include "reference_host/partition/HostPartition.h"

namespace zyn_python {

/// A mesh that was read, in one piece.
class PartitionHost : public MeshHost {
 public:
  explicit PartitionHost(std::unique_ptr<reference_host::HostPartition> partition)
      : partition_(std::move(partition)) {}

  CZYN3DFiniteVolumeMesh* mesh() override { return partition_->mesh(); }
  CZYN3DFiniteVolumeMesh* meshWithoutEmptyFaces() override { return partition_->mesh(); }
  CPartitionFace_DLL* partitionFaces() override { return partition_->partitionFaces(); }
  CCommunication* exchange() override { return &alone_; }
  CZYNCom* reduction() override { return &alone_; }
  bool HasNodes() const override { return true; }
  bool IsPartitioned() const override { return false; }
  reference_host::HostPartition const* partition() const override { return partition_.get(); }

 private:
  std::unique_ptr<reference_host::HostPartition> partition_;
  OnePartition alone_;
};

}  // namespace zyn_python
