#include <gtest/gtest.h>

#include <array>

#include "reference_host/BoundaryGroups.h"
#include "reference_host/BoxMesh.h"
#include "tests/unit/host_check/CheckedRun.h"
#include "tests/unit/reference_host/TestMeshes.h"

namespace {

using namespace test_meshes;
using host_check::HostCheckReport;
using reference_host::BoxSpec;

void ExpectNoBreach(CheckedRun& run, const std::string& what) {
  for (const HostCheckReport& report : run.Check()) {
    EXPECT_EQ(report.Count(), 0) << what << '\n' << TextOf(report);
    EXPECT_TRUE(report.Notes().empty()) << what << '\n' << TextOf(report);
  }
}

TEST(SoundHost, BoxesOfAllShapesHaveNoBreachOnOneAndOnThreePartitions) {
  for (const auto shape : {BoxSpec::Shape::Hex, BoxSpec::Shape::Tet, BoxSpec::Shape::Prism}) {
    for (const double perturb : {0.0, 0.3}) {
      BoxSpec box;
      box.nx = 5;
      box.ny = 4;
      box.nz = 3;
      box.shape = shape;
      box.perturb = perturb;
      box.seed = 3;
      for (const int nParts : {1, 3}) {
        std::vector<reference_host::MeshPart> parts;
        for (int p = 0; p < nParts; ++p) {
          parts.push_back(MakeBoxPart(box, p, nParts));
          for (auto& patch : parts.back().patches) {
            patch.group = reference_host::GroupByName(patch.name, patch.type);
          }
        }
        CheckedRun run(parts);
        ExpectNoBreach(run, "shape " + std::to_string(static_cast<int>(shape)) + ", parts " +
                                std::to_string(nParts) + ", perturb " + std::to_string(perturb));
      }
    }
  }
}

TEST(SoundHost, EveryKindOfCellHasNoBreachInRaggedPartitions) {
  for (const NamedMesh& named : AllMeshes()) {
    for (const int nParts : {1, 3}) {
      CheckedRun run(named.mesh, RandomParts(named.mesh.nCells, nParts), nParts);
      ExpectNoBreach(run, named.name);
    }
  }
}

TEST(SoundHost, PartitionWithoutCellsHasNoBreach) {
  CheckedRun run(HexBox(2, 2, 1), {0, 0, 2, 2}, 3);
  ExpectNoBreach(run, "part 1 is empty");
}

TEST(SoundHost, MeshFarFromTheOriginHasNoBreach) {
  CheckedRun run(Shifted(Perturbed(HexBox(3, 3, 3), 0.05), 1000.0));
  ExpectNoBreach(run, "shifted by 1000");
}

TEST(SoundHost, StretchedMeshHasNoBreach) {
  FaceMesh mesh = Perturbed(PrismBox(3), 0.04);
  for (auto& point : mesh.points) point[2] *= 1e-3;
  CheckedRun run(mesh, RandomParts(mesh.nCells, 3), 3);
  ExpectNoBreach(run, "aspect 1000");
}

TEST(SoundHost, SecondCheckFindsNothingNew) {
  CheckedRun run(TetBox(2), RandomParts(48, 3), 3);
  ExpectNoBreach(run, "first");
  ExpectNoBreach(run, "second");
}

TEST(SoundHost, MirroredGhostCentresAreAllowed) {
  CheckedRun run(Perturbed(HexBox(3, 3, 3), 0.05));
  CZYN3DFiniteVolumeMesh& m = *run.lent[0].mesh;
  for (int f = 1; f <= m.NWall; ++f) {
    const int ghost = m.ijWall[f], cell = m.ijWallCV[f];
    m.xc[ghost] = 2 * m.ijWallxc[f] - m.xc[cell];
    m.yc[ghost] = 2 * m.ijWallyc[f] - m.yc[cell];
    m.zc[ghost] = 2 * m.ijWallzc[f] - m.zc[cell];
  }
  ExpectNoBreach(run, "mirrored");
}

TEST(SoundHost, NodesOfBoundariesNeedNotNameInteriorCells) {
  CheckedRun run(HexBox(3, 3, 3), RandomParts(27, 3), 3);
  for (const LentHost& host : run.lent) {
    const CZYN3DFiniteVolumeMesh& m = *host.mesh;
    for (int n = 1; n <= m.NNode; ++n) {
      int* row = m.NodeCell[n];
      bool isInner = true;
      for (int k = 1; k <= row[0]; ++k) isInner = isInner && row[k] <= m.NInnerCells;
      if (isInner) continue;
      int length = 0;
      for (int k = 1; k <= row[0]; ++k)
        if (row[k] > m.NInnerCells) row[++length] = row[k];
      row[0] = length;
    }
  }
  ExpectNoBreach(run, "ghost cells alone");
}

// Two cells may share several faces; CellCell then names the neighbour once or once a face.
TEST(SoundHost, NeighbourOverTwoFacesMayBeNamedOnce) {
  // A cube in two halves whose common face is cut in two along a diagonal.
  Builder builder;
  const Grid grid(builder, 2, 1, 1);
  const std::vector<int> v = grid.Corners(0, 0, 0), w = grid.Corners(1, 0, 0);
  Cell left = Hex(v), right = Hex(w);
  left[1] = {v[1], v[3], v[7]};
  left.push_back({v[1], v[7], v[5]});
  right[0] = {w[0], w[2], w[6]};
  right.push_back({w[0], w[6], w[4]});
  builder.AddCell(left);
  builder.AddCell(right);
  CheckedRun run(builder.Finish());
  CZYN3DFiniteVolumeMesh& m = *run.lent[0].mesh;
  ASSERT_EQ(m.NInnerFaces, 2);
  ExpectNoBreach(run, "named twice");
  int* row = m.CellCell[1];
  int length = 0;
  bool isNamed = false;
  for (int k = 1; k <= row[0]; ++k) {
    if (row[k] == 2 && isNamed) continue;
    isNamed = isNamed || row[k] == 2;
    row[++length] = row[k];
  }
  EXPECT_EQ(length, row[0] - 1);
  row[0] = length;
  ExpectNoBreach(run, "named once");
}

// Where only the ijCV side takes a face's contribution, the other cell closes without the face and its rows may
// leave the face out.
TEST(SoundHost, OneSidedFaceBelongsToItsOwnCellOnly) {
  CheckedRun run(HexBox(2, 1, 1));
  CZYN3DFiniteVolumeMesh& m = *run.lent[0].mesh;
  ASSERT_EQ(m.NInnerFaces, 1);
  ASSERT_EQ(m.ij[1], 2);
  // Cell 2 gets a wall of its own in place of the shared face: one more ghost cell and wall face.
  std::vector<std::vector<double>> reals;
  std::vector<std::vector<int>> integers;
  reals.reserve(16);
  integers.reserve(16);
  const auto grow = [&reals](double*& array, int n, double value) {
    reals.emplace_back(array, array + n + 1);
    reals.back().push_back(value);
    array = reals.back().data();
  };
  const auto growInt = [&integers](int*& array, int n, int value) {
    integers.emplace_back(array, array + n + 1);
    integers.back().push_back(value);
    array = integers.back().data();
  };
  const int ghost = m.NCell + 1;
  grow(m.xc, m.NCell, m.ijxc[1]);
  grow(m.yc, m.NCell, m.ijyc[1]);
  grow(m.zc, m.NCell, m.ijzc[1]);
  grow(m.ijWallSx, m.NWall, -m.ijSx[1]);
  grow(m.ijWallSy, m.NWall, -m.ijSy[1]);
  grow(m.ijWallSz, m.NWall, -m.ijSz[1]);
  grow(m.ijWallxc, m.NWall, m.ijxc[1]);
  grow(m.ijWallyc, m.NWall, m.ijyc[1]);
  grow(m.ijWallzc, m.NWall, m.ijzc[1]);
  growInt(m.ijWall, m.NWall, ghost);
  growInt(m.ijWallCV, m.NWall, 2);
  m.NCell = ghost;
  ++m.NWall;
  m.FaceType[1] = 1;
  for (int k = 1; k <= m.CellFace[2][0]; ++k) {
    if (m.CellFaceType[2][k] != 0) continue;
    m.CellFaceType[2][k] = 1;
    m.CellFace[2][k] = m.NWall;
    m.CellCell[2][k] = ghost;
  }
  host_check::HostCheckOptions options;
  options.nodeTables = false;  // they would have to grow too
  const HostCheckReport report = run.Check(options)[0];
  // The work arrays of the reference host are one cell too short now, which nobody can see.
  EXPECT_EQ(report.Count(), 0) << TextOf(report);
}

}  // namespace
