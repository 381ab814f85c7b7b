#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/host/Parameters.h"
#include "tests/support/mesh/CutMesh.h"
#include "tests/support/rbf_face/FaceBed.h"
#include "tests/support/watch/SettingsFolder.h"
#include "tests/unit/reference_host/TestMeshes.h"

namespace zyn_test {

/// A cut mesh with a settings file for each part.
class FaceParts : public CutMesh {
 public:
  explicit FaceParts(FaceMesh const& mesh, int nParts = 1) : CutMesh(mesh, nParts) {
    for (int p = 0; p < nParts; ++p) Part(p).SetBaseFileName(FileName(p, ".cas"));
  }

  std::string SettingsFileName(int p) const { return FileName(p, ".rbf"); }

 private:
  std::string FileName(int p, std::string const& extension) const {
    return folder_.Path() + "/part" + std::to_string(p) + extension;
  }

  SettingsFolder folder_;
};

/// A face operator on one part, set up with the settings from a parameter block.
struct FaceOperatorOnPart {
  FaceOperatorOnPart(HostPartition& own, int faceType, FaceSettings const& settings) : part(own) {
    Fill(parameters.block, settings);
    Connect(object, *part.globals(), *part.mesh(), *part.partitionFaces());
    object.SetZYNKNCMP(&parameters);
    Printed([&] { object.Initialize_FaceInterpolateData(faceType); });
  }

  /// The field, given by its value at a point, on the faces: [1..NFace]. In boundary-side cells it is the value at
  /// the face, where these cells stand.
  template <typename Field>
  std::vector<double> ValuesOf(Field field) {
    CZYN3DFiniteVolumeMesh const& m = *part.mesh();
    std::vector<double> phi(static_cast<std::size_t>(m.NCell) + 1),
        zeros(static_cast<std::size_t>(object.NFace) + 1);
    for (int c = 1; c <= m.NCell; ++c) phi[static_cast<std::size_t>(c)] = field(m.xc[c], m.yc[c], m.zc[c]);
    std::vector<double> values = zeros;
    object.Multiply_FaceRBFCoefficent(phi.data(), values.data(), zeros.data(), zeros.data(), zeros.data());
    return values;
  }

  HostPartition& part;
  FaceParameters parameters;
  CZynFaceRBFInternalObject object;
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
