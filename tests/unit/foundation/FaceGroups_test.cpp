#include "foundation/FaceGroups.h"

#include <gtest/gtest.h>

#include <array>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace zyn_test::face_groups_test {
namespace {

using face_groups::kFacesWithOwnCell;
using face_groups::kGreenGaussBoundary;
using face_groups::kLeastSquaresBoundary;
using face_groups::kTable;

/// Storage of which every element has an address of its own, to tell one borrowed array from another.
struct Places {
  int ints[64];
  double doubles[64];
  int* rows[64];
};

/// Partition faces that lend nine arrays of their own and note which of them were asked for.
class LentPartitionFaces : public CPartitionFace_DLL {
 public:
  explicit LentPartitionFaces(Places& places) : places_(places) {}

  int NParInterFace() override { return Asked("NParInterFace", 5); }
  int* ijParCV() override { return Asked("ijParCV", &places_.ints[50]); }
  int* ijPar() override { return Asked("ijPar", &places_.ints[51]); }
  int* FaceType_Partition() override { return Asked("FaceType_Partition", &places_.ints[52]); }
  double* ijParSx() override { return Asked("ijParSx", &places_.doubles[50]); }
  double* ijParSy() override { return Asked("ijParSy", &places_.doubles[51]); }
  double* ijParSz() override { return Asked("ijParSz", &places_.doubles[52]); }
  double* ijParxc() override { return Asked("ijParxc", &places_.doubles[53]); }
  double* ijParyc() override { return Asked("ijParyc", &places_.doubles[54]); }
  double* ijParzc() override { return Asked("ijParzc", &places_.doubles[55]); }
  double* ParInterFace_Lamda() override { return Asked("ParInterFace_Lamda", &places_.doubles[56]); }

  std::set<std::string> asked;

 private:
  template <typename T>
  T Asked(char const* name, T answer) {
    asked.insert(name);
    return answer;
  }

  Places& places_;
};

/// A mesh record of which every member of a group of faces has a value of its own.
class FaceGroupsOfAMesh : public ::testing::Test {
 protected:
  FaceGroupsOfAMesh() {
    int i = 0, d = 0, r = 0;
    mesh.NInnerFaces = 6, mesh.NWall = 1, mesh.NInlet = 2, mesh.NOutlet = 3, mesh.NSymmetry = 4;
    for (int** array :
         {&mesh.ijCV, &mesh.ij, &mesh.FaceType, &mesh.ijWallCV, &mesh.ijWall, &mesh.ijInletCV, &mesh.ijInlet,
          &mesh.ijOutletCV, &mesh.ijOutlet, &mesh.ijSymmetryCV, &mesh.ijSymmetry})
      *array = &places.ints[i++];
    for (double** array :
         {&mesh.ijSx,         &mesh.ijSy,         &mesh.ijSz,         &mesh.ijxc,         &mesh.ijyc,
          &mesh.ijzc,         &mesh.Lamda,        &mesh.ijWallSx,     &mesh.ijWallSy,     &mesh.ijWallSz,
          &mesh.ijWallxc,     &mesh.ijWallyc,     &mesh.ijWallzc,     &mesh.ijInletSx,    &mesh.ijInletSy,
          &mesh.ijInletSz,    &mesh.ijInletxc,    &mesh.ijInletyc,    &mesh.ijInletzc,    &mesh.ijOutletSx,
          &mesh.ijOutletSy,   &mesh.ijOutletSz,   &mesh.ijOutletxc,   &mesh.ijOutletyc,   &mesh.ijOutletzc,
          &mesh.ijSymmetrySx, &mesh.ijSymmetrySy, &mesh.ijSymmetrySz, &mesh.ijSymmetryxc, &mesh.ijSymmetryyc,
          &mesh.ijSymmetryzc})
      *array = &places.doubles[d++];
    for (int*** table : {&mesh.ijLnods, &mesh.ijWallLnods, &mesh.ijInletLnods, &mesh.ijOutletLnods,
                         &mesh.ijParLnods, &mesh.ijSymmetryLnods})
      *table = &places.rows[r++];
  }

  Places places{};
  CZYN3DFiniteVolumeMesh mesh;
  LentPartitionFaces partition{places};
};

void ExpectGroup(FaceGroup const& expected, FaceGroup const& group) {
  EXPECT_EQ(expected.kind, group.kind);
  EXPECT_EQ(expected.count, group.count);
  EXPECT_EQ(expected.cv, group.cv);
  EXPECT_EQ(expected.other, group.other);
  EXPECT_EQ(expected.sx, group.sx);
  EXPECT_EQ(expected.sy, group.sy);
  EXPECT_EQ(expected.sz, group.sz);
  EXPECT_EQ(expected.xc, group.xc);
  EXPECT_EQ(expected.yc, group.yc);
  EXPECT_EQ(expected.zc, group.zc);
  EXPECT_EQ(expected.weight, group.weight);
  EXPECT_EQ(expected.type, group.type);
  EXPECT_EQ(expected.nodes, group.nodes);
}

TEST_F(FaceGroupsOfAMesh, InnerFacesHaveTheirOwnArrays) {
  ExpectGroup({FaceKind::Inner, 6, mesh.ijCV, mesh.ij, mesh.ijSx, mesh.ijSy, mesh.ijSz, mesh.ijxc, mesh.ijyc,
               mesh.ijzc, mesh.Lamda, mesh.FaceType, mesh.ijLnods},
              FacesOf(FaceKind::Inner, mesh));
}

TEST_F(FaceGroupsOfAMesh, WallsHaveTheirOwnArrays) {
  ExpectGroup({FaceKind::Wall, 1, mesh.ijWallCV, mesh.ijWall, mesh.ijWallSx, mesh.ijWallSy, mesh.ijWallSz,
               mesh.ijWallxc, mesh.ijWallyc, mesh.ijWallzc, nullptr, nullptr, mesh.ijWallLnods},
              FacesOf(FaceKind::Wall, mesh));
}

TEST_F(FaceGroupsOfAMesh, InletsHaveTheirOwnArrays) {
  ExpectGroup(
      {FaceKind::Inlet, 2, mesh.ijInletCV, mesh.ijInlet, mesh.ijInletSx, mesh.ijInletSy, mesh.ijInletSz,
       mesh.ijInletxc, mesh.ijInletyc, mesh.ijInletzc, nullptr, nullptr, mesh.ijInletLnods},
      FacesOf(FaceKind::Inlet, mesh));
}

TEST_F(FaceGroupsOfAMesh, OutletsHaveTheirOwnArrays) {
  ExpectGroup(
      {FaceKind::Outlet, 3, mesh.ijOutletCV, mesh.ijOutlet, mesh.ijOutletSx, mesh.ijOutletSy, mesh.ijOutletSz,
       mesh.ijOutletxc, mesh.ijOutletyc, mesh.ijOutletzc, nullptr, nullptr, mesh.ijOutletLnods},
      FacesOf(FaceKind::Outlet, mesh));
}

TEST_F(FaceGroupsOfAMesh, SymmetriesHaveTheirOwnArrays) {
  ExpectGroup({FaceKind::Symmetry, 4, mesh.ijSymmetryCV, mesh.ijSymmetry, mesh.ijSymmetrySx,
               mesh.ijSymmetrySy, mesh.ijSymmetrySz, mesh.ijSymmetryxc, mesh.ijSymmetryyc, mesh.ijSymmetryzc,
               nullptr, nullptr, mesh.ijSymmetryLnods},
              FacesOf(FaceKind::Symmetry, mesh));
}

TEST_F(FaceGroupsOfAMesh, PartitionFacesComeFromTheirOwnObject) {
  ExpectGroup({FaceKind::Partition, 5, &places.ints[50], &places.ints[51], &places.doubles[50],
               &places.doubles[51], &places.doubles[52], &places.doubles[53], &places.doubles[54],
               &places.doubles[55], &places.doubles[56], &places.ints[52], mesh.ijParLnods},
              PartitionFaces(partition, mesh));
}

TEST_F(FaceGroupsOfAMesh, PartitionFacesAtHaloCellsAskForNoCentresWeightsAndTypes) {
  ExpectGroup(
      {FaceKind::Partition, 5, &places.ints[50], &places.ints[51], &places.doubles[50], &places.doubles[51],
       &places.doubles[52], nullptr, nullptr, nullptr, nullptr, nullptr, mesh.ijParLnods},
      PartitionFacesAtHaloCells(partition, mesh));
  EXPECT_EQ((std::set<std::string>{"NParInterFace", "ijPar", "ijParCV", "ijParSx", "ijParSy", "ijParSz"}),
            partition.asked);
}

TEST_F(FaceGroupsOfAMesh, PartitionFaceCellsAskForNothingElse) {
  FaceGroup expected;
  expected.kind = FaceKind::Partition;
  expected.count = 5;
  expected.cv = &places.ints[50];
  expected.other = &places.ints[51];
  ExpectGroup(expected, PartitionFaceCells(partition));
  EXPECT_EQ((std::set<std::string>{"NParInterFace", "ijPar", "ijParCV"}), partition.asked);
}

TEST_F(FaceGroupsOfAMesh, AnyKindIsFoundWhereverItsArraysAre) {
  for (FaceGroupMembers const& members : kTable) {
    if (members.kind == FaceKind::Partition) {
      ExpectGroup(PartitionFaces(partition, mesh), FacesOf(members.kind, mesh, &partition));
    } else {
      ExpectGroup(FacesOf(members.kind, mesh), FacesOf(members.kind, mesh, nullptr));
    }
  }
}

TEST_F(FaceGroupsOfAMesh, BetweenCellsAreInnerFacesThenPartitionFaces) {
  FaceGroup const lent = PartitionFaces(partition, mesh);
  std::array<FaceGroup, 2> const groups = FaceGroups(mesh, lent).BetweenCells();
  ExpectGroup(FacesOf(FaceKind::Inner, mesh), groups[0]);
  ExpectGroup(lent, groups[1]);
}

TEST_F(FaceGroupsOfAMesh, GreenGaussTakesWallsLast) {
  std::array<FaceGroup, 4> const groups =
      FaceGroups(mesh, PartitionFaceCells(partition)).OnBoundaryInGreenGaussOrder();
  ExpectGroup(FacesOf(FaceKind::Inlet, mesh), groups[0]);
  ExpectGroup(FacesOf(FaceKind::Outlet, mesh), groups[1]);
  ExpectGroup(FacesOf(FaceKind::Symmetry, mesh), groups[2]);
  ExpectGroup(FacesOf(FaceKind::Wall, mesh), groups[3]);
}

TEST_F(FaceGroupsOfAMesh, LeastSquaresTakesSymmetriesLast) {
  FaceGroup const lent = PartitionFaceCells(partition);
  std::array<FaceGroup, kFaceKinds> const groups = FaceGroups(mesh, lent).InLeastSquaresOrder();
  ExpectGroup(FacesOf(FaceKind::Inner, mesh), groups[0]);
  ExpectGroup(lent, groups[1]);
  ExpectGroup(FacesOf(FaceKind::Inlet, mesh), groups[2]);
  ExpectGroup(FacesOf(FaceKind::Outlet, mesh), groups[3]);
  ExpectGroup(FacesOf(FaceKind::Wall, mesh), groups[4]);
  ExpectGroup(FacesOf(FaceKind::Symmetry, mesh), groups[5]);
}

TEST(FaceGroupTable, StandsByAscendingFaceType) {
  for (std::size_t k = 0; k < kTable.size(); ++k) {
    EXPECT_EQ(k, IndexOf(kTable[k].kind));
    EXPECT_EQ(static_cast<int>(k) + 1, static_cast<int>(kTable[k].kind));
    EXPECT_EQ(&kTable[k], &MembersOf(kTable[k].kind));
  }
}

TEST(FaceGroupTable, KnowsTheFaceTypesOneToSix) {
  EXPECT_FALSE(IsFaceType(0));
  for (int type = 1; type <= 6; ++type) EXPECT_TRUE(IsFaceType(type)) << type;
  EXPECT_FALSE(IsFaceType(7));
}

// The numbers of the groups in CellFaceType.
TEST(FaceGroupTable, FindsGroupsByTheirCodes) {
  std::map<int, FaceKind> const codes = {{0, FaceKind::Inner},    {1, FaceKind::Wall},
                                         {2, FaceKind::Inlet},    {3, FaceKind::Outlet},
                                         {5, FaceKind::Symmetry}, {101, FaceKind::Partition}};
  for (int code = -2; code <= 110; ++code) {
    FaceGroupMembers const* const members = GroupWithCode(code);
    auto const expected = codes.find(code);
    ASSERT_EQ(expected != codes.end(), members != nullptr) << code;
    if (members == nullptr) continue;
    EXPECT_EQ(expected->second, members->kind) << code;
  }
}

TEST(FaceGroupTable, CountsAllButInnerAndPartitionFacesAmongTheBoundary) {
  for (FaceKind const kind : {FaceKind::Wall, FaceKind::Inlet, FaceKind::Outlet, FaceKind::Symmetry})
    EXPECT_TRUE(IsBoundary(kind));
  EXPECT_FALSE(IsBoundary(FaceKind::Inner));
  EXPECT_FALSE(IsBoundary(FaceKind::Partition));
}

TEST(FaceGroupTable, NamesMembersAsTheRecordDoes) {
  struct Names {
    FaceKind kind;
    std::string name, prefix, count;
  };
  for (Names const& names : {Names{FaceKind::Inner, "inner", "ij", "NInnerFaces"},
                             Names{FaceKind::Wall, "wall", "ijWall", "NWall"},
                             Names{FaceKind::Inlet, "inlet", "ijInlet", "NInlet"},
                             Names{FaceKind::Outlet, "outlet", "ijOutlet", "NOutlet"},
                             Names{FaceKind::Partition, "partition", "ijPar", "NParInterFace()"},
                             Names{FaceKind::Symmetry, "symmetry", "ijSymmetry", "NSymmetry"}}) {
    FaceGroupMembers const& members = MembersOf(names.kind);
    EXPECT_EQ(names.name, members.name);
    EXPECT_EQ(names.prefix, members.prefix) << names.name;
    EXPECT_EQ(names.count, members.countName) << names.name;
  }
}

TEST(FaceGroupTable, NamesWeightsAndTypesOfFacesBetweenCellsAlone) {
  EXPECT_STREQ("Lamda", MembersOf(FaceKind::Inner).weightName);
  EXPECT_STREQ("FaceType", MembersOf(FaceKind::Inner).typeName);
  EXPECT_STREQ("ParInterFace_Lamda", MembersOf(FaceKind::Partition).weightName);
  EXPECT_STREQ("FaceType_Partition", MembersOf(FaceKind::Partition).typeName);
  for (FaceKind const kind : kGreenGaussBoundary) {
    EXPECT_EQ(nullptr, MembersOf(kind).weightName);
    EXPECT_EQ(nullptr, MembersOf(kind).typeName);
  }
}

TEST(FaceGroupTable, OrdersAreThoseOfTheOperators) {
  using Kinds = std::vector<FaceKind>;
  EXPECT_EQ((Kinds{FaceKind::Inlet, FaceKind::Outlet, FaceKind::Symmetry, FaceKind::Wall}),
            Kinds(kGreenGaussBoundary.begin(), kGreenGaussBoundary.end()));
  EXPECT_EQ((Kinds{FaceKind::Inlet, FaceKind::Outlet, FaceKind::Wall, FaceKind::Symmetry}),
            Kinds(kLeastSquaresBoundary.begin(), kLeastSquaresBoundary.end()));
  EXPECT_EQ(
      (Kinds{FaceKind::Wall, FaceKind::Inlet, FaceKind::Outlet, FaceKind::Partition, FaceKind::Symmetry}),
      Kinds(kFacesWithOwnCell.begin(), kFacesWithOwnCell.end()));
}

}  // namespace
}  // namespace zyn_test::face_groups_test
