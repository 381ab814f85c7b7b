#pragma once

#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "reference_host/partition/HostPartition.h"
#include "reference_host/partition/InProcessExchange.h"
#include "tests/unit/reference_host/TestMeshes.h"

namespace bits_dump {

using reference_host::HostPartition;

/// A mesh cut into parts at random, the halo complete, every seventh cell without volume.
class CutMesh {
 public:
  CutMesh(test_meshes::NamedMesh const& mesh, int nParts)
      : name_(std::string(mesh.name) + ", " + std::to_string(nParts) + " parts"), group_(nParts) {
    std::vector<int> const partOfCell = test_meshes::RandomParts(mesh.mesh.nCells, nParts);
    for (auto const& part : reference_host::SplitMesh(mesh.mesh, partOfCell, nParts))
      parts_.push_back(std::make_unique<HostPartition>(part));
    ForEachPart([](HostPartition& own, CCommunication& exchange, CZYNCom&) {
      own.CompleteHalo(exchange);
      for (int c = 1; c <= own.mesh()->NInnerCells; c += 7) own.mesh()->Volume[c] = 0.0;
    });
  }

  int NParts() const { return static_cast<int>(parts_.size()); }
  HostPartition& Part(int p) { return *parts_[static_cast<std::size_t>(p)]; }
  std::string Name(int p) const { return name_ + ", part " + std::to_string(p); }

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
  std::string name_;
  reference_host::InProcessGroup group_;
  std::vector<std::unique_ptr<HostPartition>> parts_;
};

/// call(mesh) for meshes of every element type, each whole and in three parts.
template <class Call>
void ForAllMeshes(Call call) {
  for (test_meshes::NamedMesh const& mesh : test_meshes::AllMeshes()) {
    for (int const nParts : {1, 3}) {
      if (nParts > mesh.mesh.nCells) continue;
      CutMesh cut(mesh, nParts);
      call(cut);
    }
  }
}

/// Smooth in the cells of a part, [0..NCell].
inline std::vector<double> SmoothField(HostPartition& own) {
  CZYN3DFiniteVolumeMesh const& mesh = *own.mesh();
  std::vector<double> phi(static_cast<std::size_t>(mesh.NCell) + 1, 0.0);
  for (int c = 1; c <= mesh.NCell; ++c)
    phi[static_cast<std::size_t>(c)] = std::sin(2 * mesh.xc[c]) * mesh.yc[c] + mesh.zc[c] * mesh.zc[c];
  return phi;
}

}  // namespace bits_dump
