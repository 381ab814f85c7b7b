#include "reference_host/arrays/ArrayHost.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "reference_host/mesh/Vector3.h"
#include "reference_host/partition/InProcessExchange.h"
#include "tests/unit/reference_host/TestMeshes.h"
#include "tests/unit/reference_host/partition/GroupsOfPartition.h"

// The records made of a solver's arrays. A partition of the reference host plays the solver: its records, taken apart
// into arrays from 0 and put together again, are the same.

namespace reference_host {
namespace {

using namespace test_meshes;

/// A group's cells and nodes as a solver has them.
struct SolverFaces {
  std::vector<int> owner, other, nodeStart = {0}, node;
};

/// A partition's arrays as a solver has them: from 0, cells counted from 0.
class SolverMesh {
 public:
  explicit SolverMesh(HostPartition& partition) {
    CZYN3DFiniteVolumeMesh const& m = *partition.mesh();
    arrays.nCells = m.NInnerCells;
    arrays.nHaloCells = partition.nHaloCells();
    arrays.centre = {m.xc + 1, m.yc + 1, m.zc + 1};
    arrays.volume = m.Volume + 1;
    arrays.nNodes = m.NNode;
    arrays.node = {m.xn + 1, m.yn + 1, m.zn + 1};
    std::vector<FaceGroup> const groups = GroupsOf(partition);
    for (FaceGroup const& group : groups) TakeFaces(group, faces_[IndexOf(group.kind)]);
    arrays.inner = Arrays(groups, FaceKind::Inner);
    arrays.inlet = Arrays(groups, FaceKind::Inlet);
    arrays.outlet = Arrays(groups, FaceKind::Outlet);
    arrays.symmetry = Arrays(groups, FaceKind::Symmetry);
    arrays.wall = Arrays(groups, FaceKind::Wall);
    arrays.partition = Arrays(groups, FaceKind::Partition);
    arrays.neighbour = faces_[IndexOf(FaceKind::Inner)].other.data();
    arrays.neighbourWeight = groups[IndexOf(FaceKind::Inner)].weight + 1;
    arrays.haloWeight = groups[IndexOf(FaceKind::Partition)].weight + 1;
    int const firstHalo = m.NCell - partition.nHaloCells();
    for (int const cell : faces_[IndexOf(FaceKind::Partition)].other) halo_.push_back(cell - firstHalo);
    arrays.haloCell = halo_.data();
    for (int c = firstHalo + 1; c <= m.NCell; ++c) {
      for (int k = 1; k <= m.CellLnodsNumber[c]; ++k) haloNode_.push_back(m.CellLnods[c][k] - 1);
      haloNodeStart_.push_back(static_cast<int>(haloNode_.size()));
    }
    arrays.haloNodeStart = haloNodeStart_.data();
    arrays.haloNode = haloNode_.data();
  }

  ArrayMesh arrays;

 private:
  static void TakeFaces(FaceGroup const& group, SolverFaces& faces) {
    for (int f = 1; f <= group.count; ++f) {
      faces.owner.push_back(group.cv[f] - 1);
      faces.other.push_back(group.other[f] - 1);
      // Another first node than the host's: the best is to be found again.
      int const n = group.nodes[f][0];
      for (int k = 0; k < n; ++k) faces.node.push_back(group.nodes[f][1 + (k + f) % n] - 1);
      faces.nodeStart.push_back(static_cast<int>(faces.node.size()));
    }
  }

  ArrayFaces Arrays(std::vector<FaceGroup> const& groups, FaceKind kind) {
    FaceGroup const& group = groups[IndexOf(kind)];
    SolverFaces const& faces = faces_[IndexOf(kind)];
    ArrayFaces result;
    result.count = group.count;
    result.owner = faces.owner.data();
    result.nodeStart = faces.nodeStart.data();
    result.node = faces.node.data();
    if (group.count == 0) return result;
    result.area = {group.sx + 1, group.sy + 1, group.sz + 1};
    result.centre = {group.xc + 1, group.yc + 1, group.zc + 1};
    return result;
  }

  SolverFaces faces_[kFaceKinds];
  std::vector<int> halo_, haloNodeStart_ = {0}, haloNode_;
};

/// Runs check(partition) for every partition of every kind of mesh, cut into one and into three parts.
template <class Check>
void ForAllPartitions(Check const& check) {
  for (auto const& [name, mesh] : AllMeshes()) {
    for (int const nParts : {1, 3}) {
      std::vector<std::unique_ptr<HostPartition>> partitions;
      for (MeshPart const& part : SplitMesh(mesh, RunParts(mesh.nCells, nParts), nParts))
        partitions.push_back(std::make_unique<HostPartition>(part));
      InProcessGroup group(nParts);
      RunInProcess(group, [&](int p) {
        InProcessCommunication communication(group, *partitions[p]);
        partitions[p]->CompleteHalo(communication);
      });
      for (auto const& partition : partitions) {
        SCOPED_TRACE(std::string(name) + ", part " + std::to_string(partition->part() + 1) + " of " +
                     std::to_string(nParts));
        check(*partition);
      }
    }
  }
}

template <class Value>
std::vector<Value> Elements(Value const* fromOne, int count) {
  return count == 0 ? std::vector<Value>() : std::vector<Value>(fromOne + 1, fromOne + 1 + count);
}

/// The rows 1..n of a ragged table.
std::vector<std::vector<int>> Rows(int* const* table, int n) {
  std::vector<std::vector<int>> rows;
  for (int i = 1; i <= n; ++i) rows.push_back(Elements(table[i], table[i][0]));
  return rows;
}

/// The same rows, each from its lowest node on.
std::vector<std::vector<int>> FromLowest(std::vector<std::vector<int>> rows) {
  for (std::vector<int>& row : rows)
    std::rotate(row.begin(), std::min_element(row.begin(), row.end()), row.end());
  return rows;
}

/// Twice the area of the triangle of a row's first three nodes.
double SpannedArea(CZYN3DFiniteVolumeMesh const& m, int const* row) {
  auto const point = [&](int k) { return Point{m.xn[row[k]], m.yn[row[k]], m.zn[row[k]]}; };
  Point const area = Cross(Difference(point(2), point(1)), Difference(point(3), point(1)));
  return Length(area);
}

TEST(ArrayHost, FacesAreThoseOfTheSolver) {
  ForAllPartitions([](HostPartition& partition) {
    SolverMesh const solver(partition);
    ArrayHost host(solver.arrays, ArrayHost::Extent::kFaces);
    for (FaceGroup const& expected : GroupsOf(partition)) {
      if (expected.kind == FaceKind::Partition) continue;
      FaceGroup const found = FacesOf(expected.kind, *host.mesh());
      int const n = expected.count;
      SCOPED_TRACE(MembersOf(expected.kind).name);
      ASSERT_EQ(n, found.count);
      EXPECT_EQ(Elements(expected.cv, n), Elements(found.cv, n));
      EXPECT_EQ(Elements(expected.other, n), Elements(found.other, n));
      EXPECT_EQ(n == 0 ? nullptr : expected.sx, n == 0 ? nullptr : found.sx) << "lent, not copied";
      EXPECT_EQ(n == 0 ? nullptr : expected.zc, n == 0 ? nullptr : found.zc);
      if (expected.kind != FaceKind::Inner) continue;
      EXPECT_EQ(expected.weight, found.weight);
      EXPECT_EQ(Elements(expected.type, n), Elements(found.type, n));
    }
    CPartitionFace_DLL &expected = *partition.partitionFaces(), &found = *host.partitionFaces();
    int const n = expected.NParInterFace();
    ASSERT_EQ(n, found.NParInterFace());
    EXPECT_EQ(Elements(expected.ijParCV(), n), Elements(found.ijParCV(), n));
    EXPECT_EQ(Elements(expected.ijPar(), n), Elements(found.ijPar(), n));
    EXPECT_EQ(Elements(expected.FaceType_Partition(), n), Elements(found.FaceType_Partition(), n));
    if (n == 0) return;
    EXPECT_EQ(expected.ijParSy(), found.ijParSy());
    EXPECT_EQ(expected.ijParxc(), found.ijParxc());
    EXPECT_EQ(expected.ParInterFace_Lamda(), found.ParInterFace_Lamda());
  });
}

TEST(ArrayHost, CellsAreThoseOfTheSolver) {
  ForAllPartitions([](HostPartition& partition) {
    SolverMesh const solver(partition);
    ArrayHost host(solver.arrays, ArrayHost::Extent::kFaces);
    CZYN3DFiniteVolumeMesh const &expected = *partition.mesh(), &found = *host.mesh();
    EXPECT_EQ(expected.NCell, found.NCell);
    EXPECT_EQ(expected.NCell, host.nCells());
    EXPECT_EQ(expected.NInnerCells, found.NInnerCells);
    EXPECT_EQ(expected.yc, found.yc);
    EXPECT_EQ(expected.Volume, found.Volume);
    EXPECT_EQ(expected.NCell - partition.nHaloCells(), host.FirstHalo());
    EXPECT_EQ(0, found.NNode);
    EXPECT_EQ(nullptr, found.CellCell);
    int next = expected.NInnerCells;
    for (FaceKind const kind : {FaceKind::Inlet, FaceKind::Outlet, FaceKind::Symmetry, FaceKind::Wall}) {
      EXPECT_EQ(next, host.FirstGhost(kind));
      next += expected.*MembersOf(kind).count;
    }
  });
}

TEST(ArrayHost, TopologyHasTheNodesAndNeighboursOfTheReferenceHost) {
  ForAllPartitions([](HostPartition& partition) {
    SolverMesh const solver(partition);
    ArrayHost host(solver.arrays, ArrayHost::Extent::kTopology);
    CZYN3DFiniteVolumeMesh const &expected = *partition.mesh(), &found = *host.mesh();
    ASSERT_EQ(expected.NNode, found.NNode);
    EXPECT_EQ(expected.yn, found.yn);
    for (FaceGroupMembers const& members : face_groups::kTable) {
      int const n =
          members.kind == FaceKind::Partition ? host.partitionFaces()->NParInterFace() : found.*members.count;
      EXPECT_EQ(FromLowest(Rows(expected.*members.nodes, n)), FromLowest(Rows(found.*members.nodes, n)))
          << members.name;
      for (int f = 1; f <= n; ++f)
        EXPECT_NEAR(SpannedArea(expected, (expected.*members.nodes)[f]),
                    SpannedArea(found, (found.*members.nodes)[f]), 1e-12);
    }
    EXPECT_EQ(Elements(expected.CellLnodsNumber, expected.NCell),
              Elements(found.CellLnodsNumber, expected.NCell));
    EXPECT_EQ(Rows(expected.CellLnods, expected.NCell), Rows(found.CellLnods, expected.NCell));
    EXPECT_EQ(Rows(expected.NodeCell, expected.NNode), Rows(found.NodeCell, expected.NNode));

    // The reference host has a cell's faces in the order of the file, this one by group.
    auto const facesOf = [](CZYN3DFiniteVolumeMesh const& m, int c) {
      std::vector<std::vector<int>> faces;
      for (int k = 1; k <= m.CellFace[c][0]; ++k)
        faces.push_back({m.CellFaceType[c][k], m.CellFace[c][k], m.CellCell[c][k]});
      std::sort(faces.begin(), faces.end());
      return faces;
    };
    for (int c = 1; c <= expected.NInnerCells; ++c) {
      EXPECT_EQ(facesOf(expected, c), facesOf(found, c)) << "cell " << c;
      EXPECT_EQ(expected.CellCell[c][0], found.CellCell[c][0]);
    }
  });
}

TEST(ArrayHost, WithoutStatedNodesAHaloCellHasThoseOfItsPartitionFaces) {
  ForAllPartitions([](HostPartition& partition) {
    SolverMesh solver(partition);
    solver.arrays.haloNodeStart = solver.arrays.haloNode = nullptr;
    ArrayHost host(solver.arrays, ArrayHost::Extent::kTopology);
    CZYN3DFiniteVolumeMesh const& mesh = *host.mesh();
    CPartitionFace_DLL& faces = *host.partitionFaces();
    std::vector<std::vector<int>> expected(static_cast<std::size_t>(mesh.NCell) + 1);
    for (int f = 1; f <= faces.NParInterFace(); ++f)
      for (int k = 1; k <= mesh.ijParLnods[f][0]; ++k)
        expected[faces.ijPar()[f]].push_back(mesh.ijParLnods[f][k]);
    for (int c = host.FirstHalo() + 1; c <= mesh.NCell; ++c) {
      std::sort(expected[c].begin(), expected[c].end());
      expected[c].erase(std::unique(expected[c].begin(), expected[c].end()), expected[c].end());
      EXPECT_EQ(expected[c], Elements(mesh.CellLnods[c], mesh.CellLnods[c][0])) << "cell " << c;
    }
  });
}

TEST(ArrayHost, PartitionFaceIHasHaloCellIUnlessTheSolverSaysOtherwise) {
  ForAllPartitions([](HostPartition& partition) {
    SolverMesh solver(partition);
    solver.arrays.haloCell = nullptr;
    solver.arrays.nHaloCells = solver.arrays.partition.count;
    ArrayHost host(solver.arrays, ArrayHost::Extent::kFaces);
    for (int f = 1; f <= solver.arrays.partition.count; ++f)
      EXPECT_EQ(host.FirstHalo() + f, host.partitionFaces()->ijPar()[f]);
  });
}

TEST(ArrayHost, EmptyFacesAreWallsWithTheLastGhostCellsAndCanBeLeftOut) {
  FaceMesh const mesh = AllMeshes()[0].mesh;
  HostPartition partition(SplitMesh(mesh, std::vector<int>(mesh.nCells, 0), 1)[0]);
  SolverMesh solver(partition);
  int const nWall = solver.arrays.wall.count;
  ASSERT_LT(2, nWall);
  solver.arrays.nEmptyFaces = 2;
  ArrayHost host(solver.arrays, ArrayHost::Extent::kFaces);
  CZYN3DFiniteVolumeMesh const &all = *host.mesh(), &without = *host.meshWithoutEmptyFaces();
  EXPECT_EQ(nWall, all.NWall);
  EXPECT_EQ(nWall - 2, without.NWall);
  EXPECT_EQ(all.NCell - 2, without.NCell);
  EXPECT_EQ(all.NCell - 2, host.FirstGhostOfEmptyFaces());
  EXPECT_EQ(all.NCell - 2, host.FirstHalo());
  EXPECT_EQ(all.NCell - 1, all.ijWall[nWall - 1]);
  EXPECT_EQ(all.NCell, all.ijWall[nWall]);
  EXPECT_EQ(host.FirstGhost(FaceKind::Wall) + nWall - 2, all.ijWall[nWall - 2]);
}

TEST(ArrayHost, GeometryIsLentAgain) {
  FaceMesh const mesh = AllMeshes()[0].mesh;
  HostPartition partition(SplitMesh(mesh, std::vector<int>(mesh.nCells, 0), 1)[0]);
  SolverMesh solver(partition);
  solver.arrays.nEmptyFaces = 2;
  ArrayMesh const later = solver.arrays;
  for (Coordinates* places : {&solver.arrays.centre, &solver.arrays.inner.centre, &solver.arrays.wall.centre})
    *places = {};
  for (auto const extent : {ArrayHost::Extent::kFaces, ArrayHost::Extent::kTopology}) {
    ArrayHost host(solver.arrays, extent);
    int** const nodeCell = host.mesh()->NodeCell;
    for (auto* const record : {host.mesh(), host.meshWithoutEmptyFaces()}) {
      EXPECT_EQ(nullptr, record->xc);
      EXPECT_EQ(nullptr, record->ijxc);
    }
    ArrayMesh moved = later;
    std::vector<double> const volume(later.volume, later.volume + later.nCells);
    std::vector<double> const weight(later.neighbourWeight, later.neighbourWeight + later.inner.count);
    std::vector<double> const area(later.wall.area.z, later.wall.area.z + later.wall.count);
    std::vector<double> const x(later.node.x, later.node.x + later.nNodes);
    moved.volume = volume.data();
    moved.neighbourWeight = weight.data();
    moved.wall.area.z = area.data();
    moved.node.x = x.data();
    host.LendGeometry(moved);
    for (auto* const record : {host.mesh(), host.meshWithoutEmptyFaces()}) {
      EXPECT_EQ(later.centre.x, record->xc + 1);
      EXPECT_EQ(later.inner.centre.y, record->ijyc + 1);
      EXPECT_EQ(later.wall.centre.z, record->ijWallzc + 1);
      EXPECT_EQ(volume.data(), record->Volume + 1);
      EXPECT_EQ(weight.data(), record->Lamda + 1);
      EXPECT_EQ(area.data(), record->ijWallSz + 1);
      EXPECT_EQ(nodeCell, record->NodeCell);
      if (extent == ArrayHost::Extent::kTopology) {
        EXPECT_EQ(x.data(), record->xn + 1);
      }
    }
    EXPECT_EQ(host.mesh()->NCell - 2, host.meshWithoutEmptyFaces()->NCell);
    EXPECT_EQ(host.mesh()->NWall - 2, host.meshWithoutEmptyFaces()->NWall);
  }
}

TEST(ArrayHost, WorkArraysAndNamesAreMadeForTheOperators) {
  FaceMesh const mesh = AllMeshes()[0].mesh;
  HostPartition partition(SplitMesh(mesh, std::vector<int>(mesh.nCells, 0), 1)[0]);
  SolverMesh const solver(partition);
  ArrayHost host(solver.arrays, ArrayHost::Extent::kFaces);
  EXPECT_EQ(nullptr, host.globals()->PrevGradX);
  EXPECT_STREQ("", host.globals()->BaseFileName);
  host.MakeIterationArrays();
  double* const made = host.globals()->PrevGradX;
  ASSERT_NE(nullptr, made);
  made[host.nCells()] = host.globals()->PrevGradZ[host.nCells()] = 1.0;
  host.MakeIterationArrays();
  EXPECT_EQ(made, host.globals()->PrevGradX);
  host.SetBaseFileName("run.cas");
  EXPECT_STREQ("run.cas", host.globals()->BaseFileName);
  for (int k = 1; k <= 4; ++k) {
    EXPECT_EQ(0.0, host.globals()->ResetRealBlock[k]);
    EXPECT_EQ(0, host.globals()->ResetIntBlock[k]);
  }
}

TEST(ArrayHost, AMeshWithoutCellsHasNone) {
  ArrayHost host(ArrayMesh(), ArrayHost::Extent::kTopology);
  EXPECT_EQ(0, host.nCells());
  EXPECT_EQ(0, host.mesh()->NNode);
}

}  // namespace
}  // namespace reference_host
