#include "reference_host/mesh/BoundaryGroups.h"

#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tests/unit/reference_host/MeshTestSupport.h"

namespace {

using reference_host::AssignBoundaryGroups;
using reference_host::BoundaryGroup;
using reference_host::GroupByName;
using reference_host::GroupFromWord;
using reference_host::NameOfGroup;
using reference_host::Patch;

std::vector<BoundaryGroup> const kAll = {BoundaryGroup::Inlet, BoundaryGroup::Outlet, BoundaryGroup::Symmetry,
                                         BoundaryGroup::Wall};

TEST(BoundaryGroups, FindsTheGroupThatANameBeginsWith) {
  EXPECT_EQ(GroupByName("inlet", ""), BoundaryGroup::Inlet);
  EXPECT_EQ(GroupByName("Inlet_2", ""), BoundaryGroup::Inlet);
  EXPECT_EQ(GroupByName("OUTLET", ""), BoundaryGroup::Outlet);
  EXPECT_EQ(GroupByName("wall_sphere", ""), BoundaryGroup::Wall);
  EXPECT_EQ(GroupByName("WallLeft", "patch"), BoundaryGroup::Wall);
  EXPECT_EQ(GroupByName("symmetryPlane", ""), BoundaryGroup::Symmetry);
}

TEST(BoundaryGroups, FindsNoGroupInOtherNames) {
  for (char const* const name : {"", "wal", "the_wall", "unnamed", "surface_7", "in let", "symm"}) {
    EXPECT_EQ(GroupByName(name, ""), std::nullopt) << name;
  }
}

TEST(BoundaryGroups, PrefersTheTypeOfAPatchToItsName) {
  EXPECT_EQ(GroupByName("sphere", "wall"), BoundaryGroup::Wall);
  EXPECT_EQ(GroupByName("inletWall", "wall"), BoundaryGroup::Wall);
  EXPECT_EQ(GroupByName("front", "symmetryPlane"), BoundaryGroup::Symmetry);
  EXPECT_EQ(GroupByName("front", "symmetry"), BoundaryGroup::Symmetry);
  EXPECT_EQ(GroupByName("left", "inlet"), BoundaryGroup::Inlet);
  EXPECT_EQ(GroupByName("inlet", "patch"), BoundaryGroup::Inlet);
}

TEST(BoundaryGroups, KnowsTheTypesOfCgnsConditions) {
  for (char const* const type : {"BCWall", "BCWallViscousHeatFlux", "BCWallInviscid"}) {
    EXPECT_EQ(GroupByName("hull", type), BoundaryGroup::Wall) << type;
  }
  for (char const* const type : {"BCInflow", "BCInflowSubsonic", "BCTunnelInflow"}) {
    EXPECT_EQ(GroupByName("hull", type), BoundaryGroup::Inlet) << type;
  }
  for (char const* const type : {"BCOutflow", "BCOutflowSupersonic", "BCTunnelOutflow"}) {
    EXPECT_EQ(GroupByName("hull", type), BoundaryGroup::Outlet) << type;
  }
  EXPECT_EQ(GroupByName("hull", "BCSymmetryPlane"), BoundaryGroup::Symmetry);
  EXPECT_EQ(GroupByName("hull", "BCFarfield"), std::nullopt);
  EXPECT_EQ(GroupByName("outlet 2", "BCGeneral"), BoundaryGroup::Outlet);  // left to the name
}

TEST(BoundaryGroups, LeavesPatchesThatAreNoBoundaryToTheUser) {
  for (char const* const type :
       {"empty", "wedge", "cyclic", "cyclicAMI", "processor", "processorCyclic", "Empty"}) {
    EXPECT_EQ(GroupByName("wall", type), std::nullopt) << type;
  }
}

TEST(BoundaryGroups, NamesAndWordsAreInverse) {
  for (BoundaryGroup const group : kAll) EXPECT_EQ(GroupFromWord(NameOfGroup(group)), group);
  EXPECT_EQ(GroupFromWord("Wall"), BoundaryGroup::Wall);
  EXPECT_EQ(GroupFromWord("walls"), std::nullopt);
  EXPECT_EQ(GroupFromWord(""), std::nullopt);
}

TEST(BoundaryGroups, TheUsersMapGoesFirst) {
  std::vector<Patch> patches = {{"inlet", "", {}}, {"front", "empty", {}}, {"wall", "", {}}};
  AssignBoundaryGroups(patches, {1, 2, 3},
                       {{"inlet", BoundaryGroup::Outlet}, {"front", BoundaryGroup::Symmetry}});
  EXPECT_EQ(patches[0].group, BoundaryGroup::Outlet);
  EXPECT_EQ(patches[1].group, BoundaryGroup::Symmetry);
  EXPECT_EQ(patches[2].group, BoundaryGroup::Wall);
}

TEST(BoundaryGroups, ListsAllPatchesWithoutAGroup) {
  std::vector<Patch> patches = {{"front", "empty", {}}, {"wall", "", {}}, {"unnamed", "", {}}};
  EXPECT_EQ(MeshErrorOf([&] {
              AssignBoundaryGroups(patches, {120, 3, 1}, {});
            }),
            "boundary faces without a group: 'front' of type empty (120 faces), 'unnamed' (1 face); map each "
            "name to "
            "inlet, outlet, symmetry or wall");
}

TEST(BoundaryGroups, LetsPatchesWithoutFacesBe) {
  std::vector<Patch> patches = {{"inside", "", {}}, {"wall", "", {}}};
  AssignBoundaryGroups(patches, {0, 3}, {});
  EXPECT_EQ(patches[0].group, std::nullopt);
}

TEST(BoundaryGroups, RefusesNamesThatTheMeshDoesNotHave) {
  std::vector<Patch> patches = {{"inlet", "", {}}, {"wall", "", {}}};
  EXPECT_EQ(
      MeshErrorOf([&] {
        AssignBoundaryGroups(patches, {1, 1}, {{"top", BoundaryGroup::Wall}, {"back", BoundaryGroup::Wall}});
      }),
      "the mesh has no boundary called 'back', 'top'; it has 'inlet', 'wall'");
}

TEST(BoundaryGroups, NamesTheMeshAndTheFirstOfManyPatches) {
  std::vector<Patch> patches;
  for (int p = 0; p < 5000; ++p) patches.push_back({"part" + std::to_string(p), "", {}});
  patches[0].name = std::string(100000, 'n');
  std::string const what =
      MeshErrorOf([&] { AssignBoundaryGroups(patches, std::vector<std::int64_t>(5000, 1), {}, "a.msh"); });
  EXPECT_EQ(what.rfind("a.msh: boundary faces without a group: 'nnn", 0), 0U) << what;
  ExpectContains(what, "nnn...' (1 face), 'part1' (1 face), ");
  ExpectContains(what, "'part9' (1 face) and 4990 more; map each name");
  EXPECT_LT(what.size(), 500U);
  std::string const unknown = MeshErrorOf([&] {
    AssignBoundaryGroups(patches, std::vector<std::int64_t>(5000, 1), {{"top", BoundaryGroup::Wall}},
                         "a.msh");
  });
  EXPECT_EQ(unknown.rfind("a.msh: the mesh has no boundary called 'top'; it has 'nnn", 0), 0U) << unknown;
  EXPECT_LT(unknown.size(), 500U);
}

}  // namespace
