#include "reference_host/partition/HostPartition.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <set>
#include <tuple>

#include "reference_host/mesh/FaceGeometry.h"
#include "reference_host/mesh/MeshError.h"
#include "reference_host/mesh/Vector3.h"
#include "tests/unit/reference_host/TestMeshes.h"
#include "tests/unit/reference_host/partition/GroupsOfPartition.h"

namespace reference_host {
namespace {

using namespace test_meshes;

HostPartition WholeOf(FaceMesh const& mesh) {
  return HostPartition(ExtractPart(mesh, std::vector<int>(mesh.nCells, 0), 0, 1));
}

/// Runs check(partition) for every kind of mesh, whole and as each of three ragged parts.
template <class Check>
void ForAllPartitions(Check const& check) {
  for (auto const& [name, mesh] : AllMeshes()) {
    SCOPED_TRACE(name);
    for (int const nParts : {1, 3}) {
      for (MeshPart const& part : SplitMesh(mesh, RandomParts(mesh.nCells, nParts), nParts)) {
        SCOPED_TRACE("part " + std::to_string(part.part) + " of " + std::to_string(nParts));
        HostPartition partition(part);
        check(part, partition);
      }
    }
  }
}

std::vector<int> RowOf(int const* row) { return std::vector<int>(row + 1, row + 1 + row[0]); }

// ---- a mesh to be counted by hand

//   Two unit cubes side by side in x, scaled to the unit cube:
//
//        y ^   +-----+-----+       cell 1 at x = 0.25, cell 2 at x = 0.75; each 0.5 x 1 x 1
//          |   |  1  |  2  |       inlet x=0, outlet x=1, symmetry y=1, wall y=0, z=0, z=1
//          |   +-----+-----+
//          +--> x
TEST(HostPartition, TwoBoxesHaveTheTablesCountedByHand) {
  HostPartition partition = WholeOf(HexBox(2, 1, 1));
  CZYN3DFiniteVolumeMesh const& mesh = *partition.mesh();
  EXPECT_EQ(2, mesh.NInnerCells);
  EXPECT_EQ(12, mesh.NCell);
  EXPECT_EQ(1, mesh.NInnerFaces);
  EXPECT_EQ(12, mesh.NNode);
  EXPECT_EQ(1, mesh.NInlet);
  EXPECT_EQ(1, mesh.NOutlet);
  EXPECT_EQ(2, mesh.NSymmetry);
  EXPECT_EQ(6, mesh.NWall);
  EXPECT_EQ(0, partition.partitionFaces()->NParInterFace());

  EXPECT_EQ(1, mesh.ijCV[1]);
  EXPECT_EQ(2, mesh.ij[1]);
  EXPECT_EQ(1, mesh.ijSx[1]);
  EXPECT_EQ(0, mesh.ijSy[1]);
  EXPECT_EQ(0, mesh.ijSz[1]);
  EXPECT_EQ(0.5, mesh.ijxc[1]);
  EXPECT_EQ(0.5, mesh.Lamda[1]);
  EXPECT_EQ(0.5, mesh.Volume[1]);
  EXPECT_EQ(0.25, mesh.xc[1]);
  EXPECT_EQ(0.75, mesh.xc[2]);

  // Ghost cells: inlet 3, outlet 4, symmetry 5 and 6, wall 7 to 12.
  EXPECT_EQ(1, mesh.ijInletCV[1]);
  EXPECT_EQ(3, mesh.ijInlet[1]);
  EXPECT_EQ(-1, mesh.ijInletSx[1]);
  EXPECT_EQ(2, mesh.ijOutletCV[1]);
  EXPECT_EQ(4, mesh.ijOutlet[1]);
  EXPECT_EQ(1, mesh.ijOutletSx[1]);
  EXPECT_EQ(5, mesh.ijSymmetry[1]);
  EXPECT_EQ(0.5, mesh.ijSymmetrySy[1]);
  EXPECT_EQ(12, mesh.ijWall[6]);
  EXPECT_EQ(0, mesh.xc[3]);  // the ghost centre is the face centre
  EXPECT_EQ(1, mesh.xc[4]);
  EXPECT_EQ(1, mesh.yc[5]);

  EXPECT_EQ(6, mesh.CellCell[1][0]);
  EXPECT_EQ(8, mesh.CellLnodsNumber[1]);
  EXPECT_EQ(4, mesh.CellLnodsNumber[3]);
  // A corner of the first box: the box and its three ghost cells. A node in the middle: both boxes and twice
  // two ghosts.
  auto const nAround = [&mesh](double x, double y, double z) {
    for (int n = 1; n <= mesh.NNode; ++n) {
      if (mesh.xn[n] == x && mesh.yn[n] == y && mesh.zn[n] == z) return mesh.NodeCell[n][0];
    }
    return -1;
  };
  EXPECT_EQ(4, nAround(0, 0, 0));
  EXPECT_EQ(6, nAround(0.5, 1, 1));
}

// ---- claims on every mesh

TEST(HostPartition, ElementZeroOfEveryArrayIsZero) {
  HostPartition partition = WholeOf(MixedBox(3));
  CZYN3DFiniteVolumeMesh const& mesh = *partition.mesh();
  for (double const* values :
       {mesh.xn, mesh.yn, mesh.zn, mesh.xc, mesh.yc, mesh.zc, mesh.Lamda, mesh.Volume}) {
    EXPECT_EQ(0.0, values[0]);
  }
  EXPECT_EQ(0, mesh.CellLnodsNumber[0]);
  for (FaceGroup const& group : GroupsOf(partition)) {
    EXPECT_EQ(0, group.cv[0]);
    EXPECT_EQ(0, group.other[0]);
    EXPECT_EQ(0.0, group.sx[0]);
    EXPECT_EQ(0.0, group.xc[0]);
  }
}

TEST(HostPartition, CellsAreInteriorThenGhostByGroupThenHalo) {
  ForAllPartitions([](MeshPart const& part, HostPartition& partition) {
    CZYN3DFiniteVolumeMesh const& mesh = *partition.mesh();
    ASSERT_EQ(mesh.NInnerCells, part.nOwned);
    ASSERT_EQ(partition.nHaloCells(), part.nHalo());
    ASSERT_EQ(mesh.NCell,
              part.nOwned + mesh.NInlet + mesh.NOutlet + mesh.NSymmetry + mesh.NWall + part.nHalo());

    int next = mesh.NInnerCells;
    for (FaceKind const kind : {FaceKind::Inlet, FaceKind::Outlet, FaceKind::Symmetry, FaceKind::Wall}) {
      FaceGroup const group = FacesOf(kind, mesh);
      for (int f = 1; f <= group.count; ++f) EXPECT_EQ(group.other[f], ++next);
    }

    std::vector<std::int64_t> owned(partition.globalCell().begin() + 1,
                                    partition.globalCell().begin() + 1 + mesh.NInnerCells);
    std::sort(owned.begin(), owned.end());
    for (int c = 0; c < part.nOwned; ++c) EXPECT_EQ(owned[c], part.globalCell[c] + 1);
    for (int c = mesh.NInnerCells + 1; c <= next; ++c) EXPECT_EQ(0, partition.globalCell()[c]);
  });
}

TEST(HostPartition, HaloCellsAscendByPartThenByCell) {
  ForAllPartitions([](MeshPart const& part, HostPartition& partition) {
    int const nCells = partition.mesh()->NCell;
    std::vector<std::pair<int, std::int64_t>> found, expected;
    for (ExchangeList const& list : partition.exchangeLists()) {
      for (int const cell : list.receive) found.emplace_back(list.part, partition.globalCell()[cell] - 1);
    }
    for (int h = 0; h < part.nHalo(); ++h) {
      expected.emplace_back(part.haloPart[h], part.globalCell[part.nOwned + h]);
    }
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(found, expected);
    int next = nCells - part.nHalo();
    for (ExchangeList const& list : partition.exchangeLists()) {
      for (int const cell : list.receive) EXPECT_EQ(cell, ++next);
    }
    EXPECT_EQ(next, nCells);
  });
}

TEST(HostPartition, FacesAscendByTheirCells) {
  ForAllPartitions([](MeshPart const&, HostPartition& partition) {
    for (FaceGroup const& group : GroupsOf(partition)) {
      for (int f = 1; f <= group.count; ++f) EXPECT_LT(group.cv[f], group.other[f]);
      for (int f = 2; f <= group.count; ++f) {
        EXPECT_LE(std::pair(group.cv[f - 1], group.other[f - 1]), std::pair(group.cv[f], group.other[f]))
            << MembersOf(group.kind).name << " face " << f;
      }
    }
  });
}

TEST(HostPartition, EveryFaceHasItsCellsNodesAreaAndCentreOnce) {
  using Key = std::vector<std::int64_t>;  // sorted nodes, then the cells on both sides; 0 at the boundary
  ForAllPartitions([](MeshPart const& part, HostPartition& partition) {
    std::map<Key, int> faceOf;
    auto const sorted = [](Key nodes) {
      std::sort(nodes.begin(), nodes.end());
      return nodes;
    };
    for (int f = 0; f < part.nFaces(); ++f) {
      Key nodes;
      for (std::size_t i = part.faceStart[f]; i < part.faceStart[f + 1]; ++i) {
        nodes.push_back(part.globalNode[part.faceNode[i]] + 1);
      }
      EXPECT_TRUE(faceOf.emplace(sorted(nodes), f).second);
    }

    for (FaceGroup const& group : GroupsOf(partition)) {
      for (int f = 1; f <= group.count; ++f) {
        Key nodes;
        for (int const node : RowOf(group.nodes[f])) nodes.push_back(partition.globalNode()[node]);
        auto const found = faceOf.find(sorted(nodes));
        ASSERT_NE(found, faceOf.end());
        int const partFace = found->second;
        faceOf.erase(found);

        bool const isTurned =
            partition.globalCell()[group.cv[f]] != part.globalCell[part.owner[partFace]] + 1;
        int const otherCell = isTurned ? part.owner[partFace] : part.neighbour[partFace];
        EXPECT_EQ(partition.globalCell()[group.other[f]], otherCell < 0 ? 0 : part.globalCell[otherCell] + 1);
        EXPECT_FALSE(isTurned && otherCell < 0);

        FaceGeometry const face =
            ComputeFaceGeometry(part.points, part.faceNode.data() + part.faceStart[partFace],
                                static_cast<int>(part.faceStart[partFace + 1] - part.faceStart[partFace]));
        double const sign = isTurned ? -1 : 1;
        EXPECT_EQ((Point{sign * face.area[0], sign * face.area[1], sign * face.area[2]}), AreaOf(group, f));
        EXPECT_EQ(CentreOf(group, f), face.centre);
      }
    }
    EXPECT_TRUE(faceOf.empty());
  });
}

TEST(HostPartition, FaceRowsTurnAroundTheAreaAndBeginWithATriangleInThePlane) {
  ForAllPartitions([](MeshPart const&, HostPartition& partition) {
    CZYN3DFiniteVolumeMesh const& mesh = *partition.mesh();
    for (FaceGroup const& group : GroupsOf(partition)) {
      for (int f = 1; f <= group.count; ++f) {
        std::vector<Point> corners;
        for (int const node : RowOf(group.nodes[f])) {
          corners.push_back({mesh.xn[node], mesh.yn[node], mesh.zn[node]});
        }
        auto const projection = [&](std::size_t i) {
          std::size_t const n = corners.size();
          Point const& n1 = corners[i];
          return Dot(Cross(Difference(corners[(i + 1) % n], n1), Difference(corners[(i + 2) % n], n1)),
                     AreaOf(group, f));
        };
        double const area2 = Dot(AreaOf(group, f), AreaOf(group, f));
        EXPECT_GT(projection(0), 0.3 * area2);
        for (std::size_t i = 1; i < corners.size(); ++i) {
          EXPECT_GE(projection(0), projection(i) - 1e-14 * area2);  // ties may differ by rounding
        }
        std::vector<int> order(corners.size());
        for (std::size_t i = 0; i < order.size(); ++i) order[i] = static_cast<int>(i);
        FaceGeometry const face = ComputeFaceGeometry(corners, order.data(), static_cast<int>(order.size()));
        EXPECT_LE(Length(Difference(face.area, AreaOf(group, f))), 1e-15 + 1e-14 * std::sqrt(area2));
      }
    }
  });
}

TEST(HostPartition, GhostCentreIsTheFaceCentreAndGhostsKnowTheirPatch) {
  ForAllPartitions([](MeshPart const&, HostPartition& partition) {
    CZYN3DFiniteVolumeMesh const& mesh = *partition.mesh();
    std::vector<int> patch(mesh.NCell + 1, -1);
    for (FaceGroup const& group : GroupsOf(partition)) {
      if (!IsBoundary(group.kind)) continue;
      int const expected = group.kind == FaceKind::Inlet    ? 0
                           : group.kind == FaceKind::Outlet ? 1
                           : group.kind == FaceKind::Wall   ? 2
                                                            : 3;
      for (int f = 1; f <= group.count; ++f) {
        int const g = group.other[f];
        EXPECT_EQ((Point{mesh.xc[g], mesh.yc[g], mesh.zc[g]}), CentreOf(group, f));
        patch[g] = expected;
      }
    }
    EXPECT_EQ(partition.patchOfGhost(), patch);
    EXPECT_EQ(4u, partition.patches().size());
  });
}

TEST(HostPartition, CellRowsListEveryFaceOfTheCellAndWhatLiesBeyond) {
  ForAllPartitions([](MeshPart const&, HostPartition& partition) {
    CZYN3DFiniteVolumeMesh const& mesh = *partition.mesh();
    std::map<int, FaceGroup> groupOfCode;
    std::vector<std::set<std::pair<int, int>>> facesOfCell(mesh.NInnerCells + 1);
    for (FaceGroup const& group : GroupsOf(partition)) {
      int const code = MembersOf(group.kind).code;
      groupOfCode.emplace(code, group);
      for (int f = 1; f <= group.count; ++f) {
        facesOfCell[group.cv[f]].emplace(code, f);
        if (group.kind == FaceKind::Inner) facesOfCell[group.other[f]].emplace(code, f);
      }
    }
    for (int c = 1; c <= mesh.NInnerCells; ++c) {
      int const n = mesh.CellFace[c][0];
      ASSERT_EQ(static_cast<std::size_t>(n), facesOfCell[c].size());
      ASSERT_EQ(mesh.CellCell[c][0], n);
      std::set<std::pair<int, int>> found;
      for (int k = 1; k <= n; ++k) {
        int const f = mesh.CellFace[c][k];
        int const code = mesh.CellFaceType[c][k];
        FaceGroup const& group = groupOfCode.at(code);
        found.emplace(code, f);
        EXPECT_EQ(mesh.CellCell[c][k], group.cv[f] == c ? group.other[f] : group.cv[f]);
      }
      EXPECT_EQ(found, facesOfCell[c]);
    }
  });
}

TEST(HostPartition, CellNodesAreThoseOfTheFacesAndAscend) {
  ForAllPartitions([](MeshPart const& part, HostPartition& partition) {
    CZYN3DFiniteVolumeMesh const& mesh = *partition.mesh();
    std::vector<std::set<int>> expected(mesh.NCell + 1);
    for (FaceGroup const& group : GroupsOf(partition)) {
      for (int f = 1; f <= group.count; ++f) {
        for (int const node : RowOf(group.nodes[f])) {
          expected[group.cv[f]].insert(node);
          if (group.kind != FaceKind::Partition)
            expected[group.other[f]].insert(node);  // halo cells have more faces than these
        }
      }
    }
    std::map<std::int64_t, int> haloOf;
    for (int h = 0; h < part.nHalo(); ++h) haloOf[part.globalCell[part.nOwned + h] + 1] = h;
    for (int c = mesh.NCell - part.nHalo() + 1; c <= mesh.NCell; ++c) {
      int const h = haloOf.at(partition.globalCell()[c]);
      std::set<std::int64_t> nodes;
      for (std::size_t i = part.haloNodeStart[h]; i < part.haloNodeStart[h + 1]; ++i) {
        nodes.insert(part.globalNode[part.haloNode[i]] + 1);
      }
      for (int n = 1; n <= mesh.NNode; ++n) {
        if (nodes.count(partition.globalNode()[n]) > 0) expected[c].insert(n);
      }
    }
    for (int c = 1; c <= mesh.NCell; ++c) {
      EXPECT_EQ(RowOf(mesh.CellLnods[c]), std::vector<int>(expected[c].begin(), expected[c].end()));
      EXPECT_EQ(mesh.CellLnodsNumber[c], mesh.CellLnods[c][0]);
    }
  });
}

TEST(HostPartition, NodeRowsListInteriorThenGhostThenHaloCellsOnce) {
  ForAllPartitions([](MeshPart const&, HostPartition& partition) {
    CZYN3DFiniteVolumeMesh const& mesh = *partition.mesh();
    // Interior cells have the lowest numbers and halo cells the highest, so a row must ascend strictly.
    std::vector<std::vector<int>> expected(mesh.NNode + 1);
    for (int c = 1; c <= mesh.NCell; ++c) {
      for (int const node : RowOf(mesh.CellLnods[c])) expected[node].push_back(c);
    }
    for (int n = 1; n <= mesh.NNode; ++n) {
      EXPECT_EQ(RowOf(mesh.NodeCell[n]), expected[n]);
      EXPECT_FALSE(expected[n].empty());
    }
  });
}

TEST(HostPartition, NodesAreThoseOfTheMeshEachOnce) {
  ForAllPartitions([](MeshPart const& part, HostPartition& partition) {
    CZYN3DFiniteVolumeMesh const& mesh = *partition.mesh();
    ASSERT_EQ(static_cast<std::size_t>(mesh.NNode), part.points.size());
    std::map<std::int64_t, Point> pointOf;
    for (std::size_t i = 0; i < part.points.size(); ++i) pointOf[part.globalNode[i] + 1] = part.points[i];
    for (int n = 1; n <= mesh.NNode; ++n) {
      EXPECT_EQ((Point{mesh.xn[n], mesh.yn[n], mesh.zn[n]}), pointOf.at(partition.globalNode()[n]));
      pointOf.erase(partition.globalNode()[n]);
    }
    EXPECT_TRUE(pointOf.empty());
  });
}

TEST(HostPartition, BothSidesTakeTheFluxOfEveryFace) {
  ForAllPartitions([](MeshPart const&, HostPartition& partition) {
    for (int f = 1; f <= partition.mesh()->NInnerFaces; ++f) EXPECT_EQ(0, partition.mesh()->FaceType[f]);
    CPartitionFace_DLL& faces = *partition.partitionFaces();
    for (int f = 1; f <= faces.NParInterFace(); ++f) EXPECT_EQ(0, faces.FaceType_Partition()[f]);
  });
}

TEST(HostPartition, WeightIsThePlaceOfTheFaceBetweenTheCentres) {
  // Boxes of width 1/4 and 1/2 (a coarse cell beside fine ones): the face is at 2/3 of the way from the
  // coarse centre.
  HostPartition partition = WholeOf(PolyBox(1));
  CZYN3DFiniteVolumeMesh const& mesh = *partition.mesh();
  int nSteps = 0;
  for (int f = 1; f <= mesh.NInnerFaces; ++f) {
    double const volumeCV = mesh.Volume[mesh.ijCV[f]], volume = mesh.Volume[mesh.ij[f]];
    if (std::abs(volumeCV - volume) < 0.1) {
      EXPECT_NEAR(0.5, mesh.Lamda[f], 1e-15);
    } else {
      EXPECT_NEAR(mesh.Lamda[f], volumeCV > volume ? 2.0 / 3 : 1.0 / 3, 1e-15);
      ++nSteps;
    }
  }
  EXPECT_EQ(4, nSteps);
}

TEST(HostPartition, WeightsLieBetweenTheCellsOfWarpedMeshes) {
  ForAllPartitions([](MeshPart const&, HostPartition& partition) {
    CZYN3DFiniteVolumeMesh const& mesh = *partition.mesh();
    for (int f = 1; f <= mesh.NInnerFaces; ++f) {
      EXPECT_GT(mesh.Lamda[f], 0.0);
      EXPECT_LT(mesh.Lamda[f], 1.0);
    }
  });
}

TEST(HostPartition, GlobalsHaveWorkArraysAndAnEmptyName) {
  HostPartition partition = WholeOf(HexBox(2, 2, 1));
  CZyn3dGV& globals = *partition.globals();
  for (double* values : {globals.PrevGradX, globals.PrevGradY, globals.PrevGradZ}) {
    std::fill(values, values + partition.mesh()->NCell + 1, 1.0);  // ASan knows the extent
  }
  for (int i = 0; i <= 4; ++i) {
    EXPECT_EQ(0.0, globals.ResetRealBlock[i]);
    EXPECT_EQ(0, globals.ResetIntBlock[i]);
  }
  EXPECT_STREQ("", globals.BaseFileName);
  EXPECT_EQ(0, globals.UseNonBlockingExch);
  partition.SetBaseFileName("channel.dat");
  EXPECT_STREQ("channel.dat", globals.BaseFileName);
}

TEST(HostPartition, SameInputTwiceGivesTheSameNumbers) {
  for (auto const& [name, mesh] : AllMeshes()) {
    SCOPED_TRACE(name);
    MeshPart const part = ExtractPart(mesh, RandomParts(mesh.nCells, 2), 1, 2);
    HostPartition a(part), b(part);
    EXPECT_EQ(a.globalCell(), b.globalCell());
    EXPECT_EQ(a.globalNode(), b.globalNode());
    for (int f = 1; f <= a.mesh()->NInnerFaces; ++f) {
      EXPECT_EQ(RowOf(a.mesh()->ijLnods[f]), RowOf(b.mesh()->ijLnods[f]));
      EXPECT_EQ(a.mesh()->Lamda[f], b.mesh()->Lamda[f]);
    }
  }
}

TEST(HostPartition, NeighboursGetNearNumbers) {
  // The boxes of a 10 x 10 x 10 grid in random order: a level set of the renumbered graph has at most 75
  // cells.
  FaceMesh mesh = HexBox(10, 10, 10);
  std::vector<int> shuffled(mesh.nCells);
  for (int c = 0; c < mesh.nCells; ++c) shuffled[c] = c;
  std::shuffle(shuffled.begin(), shuffled.end(), std::mt19937(5));
  for (int f = 0; f < mesh.nFaces(); ++f) {
    mesh.owner[f] = shuffled[mesh.owner[f]];
    if (mesh.neighbour[f] >= 0) mesh.neighbour[f] = shuffled[mesh.neighbour[f]];
  }
  HostPartition partition = WholeOf(mesh);
  int width = 0;
  for (int f = 1; f <= partition.mesh()->NInnerFaces; ++f) {
    width = std::max(width, partition.mesh()->ij[f] - partition.mesh()->ijCV[f]);
  }
  EXPECT_LE(width, 150);
}

// ---- corner cases

TEST(HostPartition, OneCellAloneHasOnlyBoundaryFaces) {
  HostPartition partition = WholeOf(HexBox(1, 1, 1));
  CZYN3DFiniteVolumeMesh const& mesh = *partition.mesh();
  EXPECT_EQ(1, mesh.NInnerCells);
  EXPECT_EQ(0, mesh.NInnerFaces);
  EXPECT_EQ(7, mesh.NCell);
  EXPECT_EQ(1.0, mesh.Volume[1]);
}

TEST(HostPartition, OneCellAmongOthersHasOnlyPartitionFaces) {
  FaceMesh const mesh = HexBox(3, 3, 3);
  std::vector<int> partOfCell(27, 0);
  partOfCell[13] = 1;
  HostPartition partition(ExtractPart(mesh, partOfCell, 1, 2));
  EXPECT_EQ(1, partition.mesh()->NInnerCells);
  EXPECT_EQ(7, partition.mesh()->NCell);
  EXPECT_EQ(0, partition.mesh()->NInnerFaces);
  EXPECT_EQ(0, partition.mesh()->NWall);
  EXPECT_EQ(6, partition.partitionFaces()->NParInterFace());
  ASSERT_EQ(1u, partition.exchangeLists().size());
  EXPECT_EQ(std::vector<int>{1}, partition.exchangeLists()[0].send);  // once, though six faces need it
}

TEST(HostPartition, PartWithoutCellsHasEmptyTables) {
  HostPartition partition(ExtractPart(HexBox(2, 1, 1), {0, 0}, 1, 2));
  EXPECT_EQ(0, partition.mesh()->NCell);
  EXPECT_EQ(0, partition.mesh()->NNode);
  EXPECT_EQ(0, partition.mesh()->NInnerFaces);
  EXPECT_TRUE(partition.exchangeLists().empty());
  EXPECT_EQ(1, partition.part());
  EXPECT_EQ(2, partition.nParts());
}

TEST(HostPartition, TwoFacesBetweenTheSameCellsStayTwo) {
  // Two boxes whose common side is cut into two rectangles.
  Builder builder;
  for (double const z : {0.0, 0.5, 1.0}) {
    for (double const y : {0.0, 1.0}) builder.AddPoint({0.5, y, z});
  }
  for (double const x : {0.0, 1.0}) {
    for (Point const& p : {Point{x, 0, 0}, Point{x, 1, 0}, Point{x, 0, 1}, Point{x, 1, 1}})
      builder.AddPoint(p);
  }
  for (int const v : {6, 10}) {
    builder.AddCell({{v, v + 1, v + 3, v + 2},
                     {0, 1, 3, 2},
                     {2, 3, 5, 4},
                     {v, 0, 2, 4, v + 2},
                     {v + 1, 1, 3, 5, v + 3},
                     {v, v + 1, 1, 0},
                     {v + 2, v + 3, 5, 4}});
  }
  HostPartition partition = WholeOf(builder.Finish());
  CZYN3DFiniteVolumeMesh const& mesh = *partition.mesh();
  ASSERT_EQ(2, mesh.NInnerFaces);
  EXPECT_EQ(1, mesh.ijCV[1]);
  EXPECT_EQ(1, mesh.ijCV[2]);
  EXPECT_EQ(2, RowOf(mesh.CellCell[1])[1]);
  EXPECT_EQ(2, RowOf(mesh.CellCell[1])[2]);
  EXPECT_NE(RowOf(mesh.CellFace[1])[1], RowOf(mesh.CellFace[1])[2]);
  EXPECT_EQ(10, mesh.CellLnodsNumber[1]);
}

std::string ErrorOf(FaceMesh const& mesh) {
  try {
    WholeOf(mesh);
  } catch (MeshError const& error) {
    return error.what();
  }
  return "";
}

TEST(HostPartition, BoundaryWithoutGroupIsRefusedByName) {
  FaceMesh mesh = HexBox(1, 1, 1);
  mesh.patches[2].group.reset();
  EXPECT_EQ("patch 'wall' has no boundary group", ErrorOf(mesh));
}

TEST(HostPartition, BoundaryFaceWithoutPatchIsRefused) {
  FaceMesh mesh = HexBox(2, 1, 1);
  mesh.facePatch[mesh.nFaces() - 1] = -1;
  EXPECT_EQ("boundary face of cell 2 belongs to no patch", ErrorOf(mesh));
}

}  // namespace
}  // namespace reference_host
