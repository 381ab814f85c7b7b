#pragma once

#include <memory>
#include <vector>

#include "reference_host/partition/HostPartition.h"
#include "reference_host/partition/InProcessExchange.h"
#include "tests/unit/reference_host/TestMeshes.h"

namespace zyn_test {

using reference_host::FaceMesh;
using reference_host::HostPartition;

/// A mesh cut into parts, with the centres of the halo cells complete.
class CutMesh {
 public:
  /// @param[in] partOfCell  the part of each cell, 0..nParts-1
  CutMesh(FaceMesh const& mesh, std::vector<int> const& partOfCell, int nParts) : group_(nParts) {
    for (auto const& part : reference_host::SplitMesh(mesh, partOfCell, nParts))
      parts_.push_back(std::make_unique<HostPartition>(part));
    ForEachPart([](HostPartition& own, CCommunication& exchange, CZYNCom&) { own.CompleteHalo(exchange); });
  }

  /// Cut at random.
  explicit CutMesh(FaceMesh const& mesh, int nParts = 1)
      : CutMesh(mesh, test_meshes::RandomParts(mesh.nCells, nParts), nParts) {}

  int NParts() const { return static_cast<int>(parts_.size()); }
  HostPartition& Part(int p) const { return *parts_[static_cast<std::size_t>(p)]; }
  std::vector<std::unique_ptr<HostPartition>> const& Parts() const { return parts_; }

  /// call(part, exchange, reduction), every part in a thread.
  template <class Call>
  void ForEachPart(Call call) {
    reference_host::RunInProcess(group_, [&](int p) {
      reference_host::InProcessCommunication exchange(group_, Part(p));
      reference_host::InProcessReduction reduction(group_);
      call(Part(p), exchange, reduction);
    });
  }

 private:
  reference_host::InProcessGroup group_;
  std::vector<std::unique_ptr<HostPartition>> parts_;
};

}  // namespace zyn_test
