#pragma once

#include <string>
#include <vector>

#include "tests/support/mesh/CutMesh.h"
#include "tests/unit/reference_host/TestMeshes.h"

namespace bits_dump {

using reference_host::HostPartition;

/// A mesh cut at random, every seventh cell without volume.
class NamedCutMesh : public zyn_test::CutMesh {
 public:
  NamedCutMesh(test_meshes::NamedMesh const& mesh, int nParts)
      : CutMesh(mesh.mesh, nParts), name_(std::string(mesh.name) + ", " + std::to_string(nParts) + " parts") {
    for (auto const& part : Parts())
      for (int c = 1; c <= part->mesh()->NInnerCells; c += 7) part->mesh()->Volume[c] = 0.0;
  }

  std::string Name(int p) const { return name_ + ", part " + std::to_string(p); }

 private:
  std::string name_;
};

/// call(mesh) for meshes of every element type, each whole and in three parts.
template <class Call>
void ForAllMeshes(Call call) {
  for (test_meshes::NamedMesh const& mesh : test_meshes::AllMeshes()) {
    for (int const nParts : {1, 3}) {
      if (nParts > mesh.mesh.nCells) continue;
      NamedCutMesh cut(mesh, nParts);
      call(cut);
    }
  }
}

/// Smooth in the cells of a part, [0..NCell]. Functions of the C library would have other bits on other processors.
inline std::vector<double> SmoothField(HostPartition& own) {
  CZYN3DFiniteVolumeMesh const& mesh = *own.mesh();
  std::vector<double> phi(static_cast<std::size_t>(mesh.NCell) + 1, 0.0);
  for (int c = 1; c <= mesh.NCell; ++c)
    phi[static_cast<std::size_t>(c)] = mesh.yc[c] / (1 + mesh.xc[c] * mesh.xc[c]) + mesh.zc[c] * mesh.zc[c];
  return phi;
}

}  // namespace bits_dump
