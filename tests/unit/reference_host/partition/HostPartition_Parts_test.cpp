// Compares the partitions of one mesh with each other and with the whole mesh.

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <set>
#include <vector>

#include "reference_host/mesh/Vector3.h"
#include "reference_host/partition/HostPartition.h"
#include "reference_host/partition/InProcessExchange.h"
#include "tests/unit/reference_host/TestMeshes.h"
#include "tests/unit/reference_host/partition/GroupsOfPartition.h"

namespace reference_host {
namespace {

using namespace test_meshes;
using Partitions = std::vector<std::unique_ptr<HostPartition>>;

Partitions CompletePartitions(FaceMesh const& mesh, std::vector<int> const& partOfCell, int nParts) {
  Partitions partitions;
  for (MeshPart const& part : SplitMesh(mesh, partOfCell, nParts)) {
    partitions.push_back(std::make_unique<HostPartition>(part));
  }
  InProcessGroup group(nParts);
  RunInProcess(group, [&](int p) {
    InProcessCommunication communication(group, *partitions[p]);
    partitions[p]->CompleteHalo(communication);
  });
  return partitions;
}

/// Runs check(partitions, whole) for every kind of mesh in 1 to 5 parts, contiguous and scattered.
template <class Check>
void ForAllDecompositions(Check const& check) {
  for (auto const& [name, mesh] : AllMeshes()) {
    SCOPED_TRACE(name);
    Partitions const whole = CompletePartitions(mesh, std::vector<int>(mesh.nCells, 0), 1);
    for (int nParts = 1; nParts <= 5; ++nParts) {
      SCOPED_TRACE(std::to_string(nParts) + " parts");
      check(CompletePartitions(mesh, RunParts(mesh.nCells, nParts), nParts), *whole[0]);
      check(CompletePartitions(mesh, RandomParts(mesh.nCells, nParts), nParts), *whole[0]);
    }
  }
}

/// A face of the mesh in any partition: the cells on its sides (0: boundary), the lower first, and its nodes.
using FaceKey = std::vector<std::int64_t>;

FaceKey KeyOf(HostPartition& partition, FaceGroup const& group, int f) {
  FaceKey key = {partition.globalCell()[group.cv[f]], partition.globalCell()[group.other[f]]};
  std::sort(key.begin(), key.end());
  for (int k = 1; k <= group.nodes[f][0]; ++k) key.push_back(partition.globalNode()[group.nodes[f][k]]);
  std::sort(key.begin() + 2, key.end());
  return key;
}

struct FaceSide {
  std::int64_t cell;  ///< the one that the area points out of
  Point area, centre;
  double lamda;
};

/// All sides of all faces: inner and boundary faces have one entry, partition faces one from each partition.
std::map<FaceKey, std::vector<FaceSide>> AllFaces(Partitions const& partitions) {
  std::map<FaceKey, std::vector<FaceSide>> faces;
  for (auto const& partition : partitions) {
    for (FaceGroup const& group : GroupsOf(*partition)) {
      for (int f = 1; f <= group.count; ++f) {
        double const lamda = group.weight != nullptr ? group.weight[f] : 0.0;
        faces[KeyOf(*partition, group, f)].push_back(
            {partition->globalCell()[group.cv[f]], AreaOf(group, f), CentreOf(group, f), lamda});
      }
    }
  }
  return faces;
}

std::map<std::int64_t, int> CellOfNumber(HostPartition& partition) {
  std::map<std::int64_t, int> cellOf;
  for (int c = 1; c <= partition.mesh()->NCell; ++c) {
    if (partition.globalCell()[c] > 0) cellOf[partition.globalCell()[c]] = c;
  }
  return cellOf;
}

TEST(HostPartitionParts, EveryCellIsInteriorOnceAndHasTheBitsOfTheWhole) {
  ForAllDecompositions([](Partitions const& partitions, HostPartition& whole) {
    CZYN3DFiniteVolumeMesh const& w = *whole.mesh();
    std::map<std::int64_t, int> cellOf = CellOfNumber(whole);
    for (auto const& partition : partitions) {
      CZYN3DFiniteVolumeMesh const& m = *partition->mesh();
      for (int c = 1; c <= m.NInnerCells; ++c) {
        auto const found = cellOf.find(partition->globalCell()[c]);
        ASSERT_NE(found, cellOf.end());
        EXPECT_EQ(m.Volume[c], w.Volume[found->second]);
        EXPECT_EQ(m.xc[c], w.xc[found->second]);
        EXPECT_EQ(m.yc[c], w.yc[found->second]);
        EXPECT_EQ(m.zc[c], w.zc[found->second]);
        cellOf.erase(found);
      }
    }
    EXPECT_TRUE(cellOf.empty());
  });
}

TEST(HostPartitionParts, ExchangedCentresAreThoseOfTheWhole) {
  ForAllDecompositions([](Partitions const& partitions, HostPartition& whole) {
    CZYN3DFiniteVolumeMesh const& w = *whole.mesh();
    std::map<std::int64_t, int> const cellOf = CellOfNumber(whole);
    for (auto const& partition : partitions) {
      CZYN3DFiniteVolumeMesh const& m = *partition->mesh();
      for (int c = m.NCell - partition->nHaloCells() + 1; c <= m.NCell; ++c) {
        int const same = cellOf.at(partition->globalCell()[c]);
        EXPECT_EQ(m.xc[c], w.xc[same]);
        EXPECT_EQ(m.yc[c], w.yc[same]);
        EXPECT_EQ(m.zc[c], w.zc[same]);
      }
    }
  });
}

TEST(HostPartitionParts, EveryFaceIsThereOnceWithTheBitsOfTheWhole) {
  ForAllDecompositions([](Partitions const& partitions, HostPartition& whole) {
    CZYN3DFiniteVolumeMesh const& w = *whole.mesh();
    auto faces = AllFaces(partitions);
    int nFaces = 0;
    for (FaceGroup const& group : GroupsOf(whole)) {
      nFaces += group.count;
      for (int f = 1; f <= group.count; ++f) {
        auto const found = faces.find(KeyOf(whole, group, f));
        ASSERT_NE(found, faces.end());
        // A cut face is in two partitions, any other in one. The two sides have different cells.
        std::vector<FaceSide> const& sides = found->second;
        ASSERT_LE(sides.size(), group.kind == FaceKind::Inner ? 2u : 1u);
        if (sides.size() == 2) {
          EXPECT_NE(sides[0].cell, sides[1].cell);
        }
        for (FaceSide const& side : sides) {
          bool const isTurned = side.cell != whole.globalCell()[group.cv[f]];
          EXPECT_EQ(side.centre, CentreOf(group, f));
          EXPECT_EQ(side.area, isTurned ? Scaled(-1, AreaOf(group, f)) : AreaOf(group, f));
          if (group.kind == FaceKind::Inner) {
            EXPECT_NEAR(side.lamda, isTurned ? 1 - w.Lamda[f] : w.Lamda[f], 4e-16);
          }
        }
      }
    }
    EXPECT_EQ(faces.size(), static_cast<std::size_t>(nFaces));
  });
}

TEST(HostPartitionParts, BothSidesOfACutHaveTheSameFaceUpToItsSign) {
  ForAllDecompositions([](Partitions const& partitions, HostPartition&) {
    std::size_t nCut = 0;
    for (auto const& partition : partitions) nCut += partition->partitionFaces()->NParInterFace();
    for (auto const& [key, sides] : AllFaces(partitions)) {
      if (sides.size() != 2) continue;
      EXPECT_EQ(sides[0].centre, sides[1].centre);
      EXPECT_EQ(sides[0].area, Scaled(-1, sides[1].area));
      nCut -= 2;
    }
    EXPECT_EQ(0u, nCut);
  });
}

TEST(HostPartitionParts, WhatOneSendsIsWhatTheOtherReceives) {
  ForAllDecompositions([](Partitions const& partitions, HostPartition&) {
    for (auto const& receiver : partitions) {
      for (ExchangeList const& to : receiver->exchangeLists()) {
        HostPartition& sender = *partitions[to.part];
        std::vector<std::int64_t> sent, received;
        for (ExchangeList const& from : sender.exchangeLists()) {
          if (from.part != receiver->part()) continue;
          for (int const cell : from.send) {
            EXPECT_LE(cell, sender.mesh()->NInnerCells);
            sent.push_back(sender.globalCell()[cell]);
          }
        }
        for (int const cell : to.receive) received.push_back(receiver->globalCell()[cell]);
        EXPECT_EQ(sent, received);
        EXPECT_FALSE(received.empty());
        EXPECT_TRUE(std::is_sorted(received.begin(), received.end()));
      }
      EXPECT_TRUE(
          std::is_sorted(receiver->exchangeLists().begin(), receiver->exchangeLists().end(),
                         [](ExchangeList const& a, ExchangeList const& b) { return a.part < b.part; }));
    }
  });
}

TEST(HostPartitionParts, NeighboursStandInTheSameOrderInAnyDecomposition) {
  ForAllDecompositions([](Partitions const& partitions, HostPartition& whole) {
    std::map<std::int64_t, int> const cellOf = CellOfNumber(whole);
    for (auto const& partition : partitions) {
      for (int c = 1; c <= partition->mesh()->NInnerCells; ++c) {
        int const* row = partition->mesh()->CellCell[c];
        int const* expected = whole.mesh()->CellCell[cellOf.at(partition->globalCell()[c])];
        ASSERT_EQ(row[0], expected[0]);
        for (int k = 1; k <= row[0]; ++k) {
          EXPECT_EQ(partition->globalCell()[row[k]], whole.globalCell()[expected[k]]);
        }
      }
    }
  });
}

TEST(HostPartitionParts, PartitionFaceWeightsLieBetweenTheCells) {
  ForAllDecompositions([](Partitions const& partitions, HostPartition&) {
    for (auto const& partition : partitions) {
      CPartitionFace_DLL& faces = *partition->partitionFaces();
      for (int f = 1; f <= faces.NParInterFace(); ++f) {
        EXPECT_GT(faces.ParInterFace_Lamda()[f], 0.0);
        EXPECT_LT(faces.ParInterFace_Lamda()[f], 1.0);
      }
    }
  });
}

TEST(HostPartitionParts, EveryCellAPartitionOfItsOwn) {
  FaceMesh const mesh = Perturbed(HexBox(3, 3, 3), 0.05);
  std::vector<int> partOfCell(27);
  for (int c = 0; c < 27; ++c) partOfCell[c] = 26 - c;
  Partitions const partitions = CompletePartitions(mesh, partOfCell, 27);
  Partitions const whole = CompletePartitions(mesh, std::vector<int>(27, 0), 1);
  std::map<std::int64_t, int> const cellOf = CellOfNumber(*whole[0]);
  int nCut = 0;
  for (auto const& partition : partitions) {
    EXPECT_EQ(1, partition->mesh()->NInnerCells);
    EXPECT_EQ(0, partition->mesh()->NInnerFaces);
    nCut += partition->partitionFaces()->NParInterFace();
    for (int c = 1; c <= partition->mesh()->NCell; ++c) {
      if (partition->globalCell()[c] == 0) continue;
      EXPECT_EQ(partition->mesh()->xc[c], whole[0]->mesh()->xc[cellOf.at(partition->globalCell()[c])]);
    }
  }
  EXPECT_EQ(nCut, 2 * 54);
}

TEST(HostPartitionParts, PartsWithoutCellsStandAsideInCollectiveCalls) {
  FaceMesh const mesh = HexBox(4, 2, 2);
  std::vector<int> partOfCell = RunParts(mesh.nCells, 2);
  for (int& p : partOfCell) p *= 2;  // parts 0 and 2; parts 1 and 3 are empty
  Partitions const partitions = CompletePartitions(mesh, partOfCell, 4);
  EXPECT_EQ(0, partitions[1]->mesh()->NCell);
  EXPECT_EQ(0, partitions[3]->mesh()->NCell);
  EXPECT_GT(partitions[0]->partitionFaces()->NParInterFace(), 0);
  EXPECT_EQ(2, partitions[0]->exchangeLists()[0].part);
}

}  // namespace
}  // namespace reference_host
