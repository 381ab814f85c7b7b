#pragma once

#include <memory>
#include <string>
#include <vector>

#include "reference_host/partition/HostPartition.h"
#include "reference_host/partition/InProcessExchange.h"
#include "tests/support/watch/SettingsFolder.h"
#include "tests/unit/reference_host/TestMeshes.h"

namespace zyn_test {

using reference_host::FaceMesh;
using reference_host::HostPartition;

/// A mesh cut into parts at random, with the centres of the halo cells complete and a settings file for each part.
class CutMesh {
 public:
  explicit CutMesh(FaceMesh const& mesh, int nParts = 1) {
    std::vector<int> const partOfCell = test_meshes::RandomParts(mesh.nCells, nParts);
    for (auto const& part : reference_host::SplitMesh(mesh, partOfCell, nParts))
      parts_.push_back(std::make_unique<HostPartition>(part));
    reference_host::InProcessGroup group(nParts);
    reference_host::RunInProcess(group, [&](int p) {
      reference_host::InProcessCommunication exchange(group, Part(p));
      Part(p).CompleteHalo(exchange);
    });
    for (int p = 0; p < nParts; ++p) Part(p).SetBaseFileName(FileName(p, ".cas"));
  }

  int NParts() const { return static_cast<int>(parts_.size()); }
  HostPartition& Part(int p) { return *parts_[static_cast<std::size_t>(p)]; }
  std::string SettingsFileName(int p) const { return FileName(p, ".rbf"); }

 private:
  std::string FileName(int p, std::string const& extension) const {
    return folder_.Path() + "/part" + std::to_string(p) + extension;
  }

  SettingsFolder folder_;
  std::vector<std::unique_ptr<HostPartition>> parts_;
};

/// A mesh of one kind of cells or of several, as it is made, with many cells at equal distances, or with its nodes
/// moved.
struct MeshKind {
  char const* name;
  FaceMesh (*make)();
  bool perturbed;

  FaceMesh Make() const { return perturbed ? test_meshes::Perturbed(make(), 0.04, true) : make(); }
};

inline std::vector<MeshKind> AllMeshKinds() {
  std::vector<MeshKind> kinds;
  for (bool const perturbed : {false, true}) {
    kinds.push_back({"Hexahedra", [] { return test_meshes::HexBox(3, 3, 4); }, perturbed});
    kinds.push_back({"Tetrahedra", [] { return test_meshes::TetBox(3); }, perturbed});
    kinds.push_back({"Prisms", [] { return test_meshes::PrismBox(3); }, perturbed});
    kinds.push_back({"Mixed", [] { return test_meshes::MixedBox(3); }, perturbed});
  }
  return kinds;
}

}  // namespace zyn_test
