#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "rbf_ib/CZynIBRBFInternalObject.h"
#include "reference_host/box/BoxMesh.h"
#include "tests/support/mesh/CutMesh.h"
#include "tests/support/rbf_ib/PointBed.h"
#include "tests/unit/reference_host/TestMeshes.h"

namespace zyn_test {

/// One mesh of the unit cube for each type of cell, nodes moved so that distances are all different, and one
/// without that, where many are equal.
inline std::vector<test_meshes::NamedMesh> Meshes() {
  using reference_host::BoxSpec;
  auto const box = [](int n, BoxSpec::Shape shape, double perturb) {
    BoxSpec spec;
    spec.nx = spec.ny = spec.nz = n;
    spec.shape = shape;
    spec.perturb = perturb;
    spec.seed = 3;
    return reference_host::MakeBox(spec);
  };
  using test_meshes::Perturbed;
  return {{"hexahedra", box(5, BoxSpec::Shape::Hex, 0.2)},
          {"regular hexahedra", test_meshes::HexBox(4, 4, 4)},
          {"tetrahedra", box(3, BoxSpec::Shape::Tet, 0.2)},
          {"prisms", box(4, BoxSpec::Shape::Prism, 0.2)},
          {"all types", Perturbed(test_meshes::MixedBox(4), 0.03)},
          {"polyhedra", Perturbed(test_meshes::PolyBox(2), 0.03)}};
}

/// The mesh with boundary groups after the names of the box's patches, wherever they are missing.
inline FaceMesh WithBoundaryGroups(FaceMesh mesh) {
  using reference_host::BoundaryGroup;
  for (reference_host::Patch& patch : mesh.patches) {
    if (patch.group) continue;
    patch.group = patch.name == "inlet"       ? BoundaryGroup::Inlet
                  : patch.name == "outlet"    ? BoundaryGroup::Outlet
                  : patch.name == "wall_ymin" ? BoundaryGroup::Symmetry
                                              : BoundaryGroup::Wall;
  }
  return mesh;
}

/// A mesh cut into runs of cells, with a settings file. The parts run one after the other here and share it.
class PointParts : public CutMesh {
 public:
  PointParts(FaceMesh const& mesh, int nParts)
      : CutMesh(WithBoundaryGroups(mesh), test_meshes::RunParts(mesh.nCells, nParts), nParts) {
    for (auto const& own : Parts()) own->SetBaseFileName(folder_.BaseFileName());
  }

  void WriteSettings(PointSettings const& settings) const { folder_.Write(Settings(settings)); }

 private:
  SettingsFolder folder_;
};

/// Which cells are usable.
enum class Usable {
  All,           ///< ghost and halo cells too
  InnerAndHalo,  ///< no ghost cells
  OutsideBody,   ///< inner and halo cells outside a sphere in the middle of the cube
  Few            ///< every ninth cell of any kind
};
constexpr Usable kUsableKinds[] = {Usable::All, Usable::InnerAndHalo, Usable::OutsideBody, Usable::Few};

inline std::string Name(Usable usable) {
  char const* const names[] = {"all", "inner and halo", "outside a body", "few"};
  return names[static_cast<int>(usable)];
}

constexpr double kBodyRadius = 0.3;

inline Array MarksOf(HostPartition& own, Usable usable) {
  CZYN3DFiniteVolumeMesh const& mesh = *own.mesh();
  int const firstHalo = mesh.NCell - own.nHaloCells() + 1;
  Array marks(mesh.NCell, kUnusable);
  for (int c = 1; c <= mesh.NCell; ++c) {
    bool const ghost = c > mesh.NInnerCells && c < firstHalo;
    double const dx = mesh.xc[c] - 0.5, dy = mesh.yc[c] - 0.5, dz = mesh.zc[c] - 0.5;
    bool const inBody = dx * dx + dy * dy + dz * dz < kBodyRadius * kBodyRadius;
    bool const chosen =
        usable == Usable::All ||
        (usable == Usable::Few ? c % 9 == 0 : !ghost && (usable != Usable::OutsideBody || !inBody));
    if (chosen) marks[c] = kUsable;
  }
  return marks;
}

/// Points all over the cube, on the body, at cells, twice at one place, and far away.
inline std::vector<Point> PointsFor(HostPartition& own, std::uint64_t seed, int nRandom = 20) {
  std::mt19937_64 random(seed);
  std::uniform_real_distribution<double> in(-0.1, 1.1), direction(-1.0, 1.0);
  std::vector<Point> points;
  for (int i = 0; i < nRandom; ++i) points.push_back({in(random), in(random), in(random)});
  for (int i = 0; i < 5; ++i) {
    double const x = direction(random), y = direction(random), z = direction(random);
    double const s = kBodyRadius / std::sqrt(x * x + y * y + z * z);
    points.push_back({0.5 + s * x, 0.5 + s * y, 0.5 + s * z});
  }
  CZYN3DFiniteVolumeMesh const& mesh = *own.mesh();
  for (int const c : {1, mesh.NInnerCells, mesh.NCell})
    points.push_back({mesh.xc[c], mesh.yc[c], mesh.zc[c]});
  points.push_back(points[2]);
  points.push_back({0.5, 0.5, 0.5});
  points.push_back({7.0, -3.0, 0.5});
  points.push_back({0.5, 0.5, -40.0});
  return points;
}

/// An object on one partition.
inline void Connect(CZynIBRBFInternalObject& object, HostPartition& own) {
  EXPECT_EQ(1, object.getZyn3dGV(own.globals(), nullptr, nullptr, own.mesh()));
  EXPECT_EQ(1, object.getPartitionFace(own.partitionFaces()));
}

inline std::string RunSetUp(CZynIBRBFInternalObject& object, Array& marks, std::vector<Point> const& points) {
  PointArrays arrays(points);
  return Printed([&] {
    EXPECT_EQ(0, object.Initialize_IBInterpolateData(marks.Data(), arrays.Size(), arrays.x.Data(),
                                                     arrays.y.Data(), arrays.z.Data()));
  });
}

}  // namespace zyn_test
