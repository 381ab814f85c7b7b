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
  EXPECT_EQ(BoundaryGroup::Inlet, GroupByName("inlet", ""));
  EXPECT_EQ(BoundaryGroup::Inlet, GroupByName("Inlet_2", ""));
  EXPECT_EQ(BoundaryGroup::Outlet, GroupByName("OUTLET", ""));
  EXPECT_EQ(BoundaryGroup::Wall, GroupByName("wall_sphere", ""));
  EXPECT_EQ(BoundaryGroup::Wall, GroupByName("WallLeft", "patch"));
  EXPECT_EQ(BoundaryGroup::Symmetry, GroupByName("symmetryPlane", ""));
}

TEST(BoundaryGroups, FindsNoGroupInOtherNames) {
  for (char const* const name : {"", "wal", "the_wall", "unnamed", "surface_7", "in let", "symm"}) {
    EXPECT_EQ(std::nullopt, GroupByName(name, "")) << name;
  }
}

TEST(BoundaryGroups, PrefersTheTypeOfAPatchToItsName) {
  EXPECT_EQ(BoundaryGroup::Wall, GroupByName("sphere", "wall"));
  EXPECT_EQ(BoundaryGroup::Wall, GroupByName("inletWall", "wall"));
  EXPECT_EQ(BoundaryGroup::Symmetry, GroupByName("front", "symmetryPlane"));
  EXPECT_EQ(BoundaryGroup::Symmetry, GroupByName("front", "symmetry"));
  EXPECT_EQ(BoundaryGroup::Inlet, GroupByName("left", "inlet"));
  EXPECT_EQ(BoundaryGroup::Inlet, GroupByName("inlet", "patch"));
}

TEST(BoundaryGroups, KnowsTheTypesOfCgnsConditions) {
  for (char const* const type : {"BCWall", "BCWallViscousHeatFlux", "BCWallInviscid"}) {
    EXPECT_EQ(BoundaryGroup::Wall, GroupByName("hull", type)) << type;
  }
  for (char const* const type : {"BCInflow", "BCInflowSubsonic", "BCTunnelInflow"}) {
    EXPECT_EQ(BoundaryGroup::Inlet, GroupByName("hull", type)) << type;
  }
  for (char const* const type : {"BCOutflow", "BCOutflowSupersonic", "BCTunnelOutflow"}) {
    EXPECT_EQ(BoundaryGroup::Outlet, GroupByName("hull", type)) << type;
  }
  EXPECT_EQ(BoundaryGroup::Symmetry, GroupByName("hull", "BCSymmetryPlane"));
  EXPECT_EQ(std::nullopt, GroupByName("hull", "BCFarfield"));
  EXPECT_EQ(BoundaryGroup::Outlet, GroupByName("outlet 2", "BCGeneral"));  // left to the name
}

TEST(BoundaryGroups, LeavesPatchesThatAreNoBoundaryToTheUser) {
  for (char const* const type :
       {"empty", "wedge", "cyclic", "cyclicAMI", "processor", "processorCyclic", "Empty"}) {
    EXPECT_EQ(std::nullopt, GroupByName("wall", type)) << type;
  }
}

TEST(BoundaryGroups, NamesAndWordsAreInverse) {
  for (BoundaryGroup const group : kAll) EXPECT_EQ(GroupFromWord(NameOfGroup(group)), group);
  EXPECT_EQ(BoundaryGroup::Wall, GroupFromWord("Wall"));
  EXPECT_EQ(std::nullopt, GroupFromWord("walls"));
  EXPECT_EQ(std::nullopt, GroupFromWord(""));
}

TEST(BoundaryGroups, TheUsersMapGoesFirst) {
  std::vector<Patch> patches = {{"inlet", "", {}}, {"front", "empty", {}}, {"wall", "", {}}};
  AssignBoundaryGroups(patches, {1, 2, 3},
                       {{"inlet", BoundaryGroup::Outlet}, {"front", BoundaryGroup::Symmetry}});
  EXPECT_EQ(BoundaryGroup::Outlet, patches[0].group);
  EXPECT_EQ(BoundaryGroup::Symmetry, patches[1].group);
  EXPECT_EQ(BoundaryGroup::Wall, patches[2].group);
}

TEST(BoundaryGroups, ListsAllPatchesWithoutAGroup) {
  std::vector<Patch> patches = {{"front", "empty", {}}, {"wall", "", {}}, {"unnamed", "", {}}};
  EXPECT_EQ(
      "boundary faces without a group: 'front' of type empty (120 faces), 'unnamed' (1 face); map each "
      "name to "
      "inlet, outlet, symmetry or wall",
      MeshErrorOf([&] {
        AssignBoundaryGroups(patches, {120, 3, 1}, {});
      }));
}

TEST(BoundaryGroups, LetsPatchesWithoutFacesBe) {
  std::vector<Patch> patches = {{"inside", "", {}}, {"wall", "", {}}};
  AssignBoundaryGroups(patches, {0, 3}, {});
  EXPECT_EQ(std::nullopt, patches[0].group);
}

TEST(BoundaryGroups, RefusesNamesThatTheMeshDoesNotHave) {
  std::vector<Patch> patches = {{"inlet", "", {}}, {"wall", "", {}}};
  EXPECT_EQ(
      "the mesh has no boundary called 'back', 'top'; it has 'inlet', 'wall'", MeshErrorOf([&] {
        AssignBoundaryGroups(patches, {1, 1}, {{"top", BoundaryGroup::Wall}, {"back", BoundaryGroup::Wall}});
      }));
}

TEST(BoundaryGroups, NamesTheMeshAndTheFirstOfManyPatches) {
  std::vector<Patch> patches;
  for (int p = 0; p < 5000; ++p) patches.push_back({"part" + std::to_string(p), "", {}});
  patches[0].name = std::string(100000, 'n');
  std::string const what =
      MeshErrorOf([&] { AssignBoundaryGroups(patches, std::vector<std::int64_t>(5000, 1), {}, "a.msh"); });
  EXPECT_EQ(0U, what.rfind("a.msh: boundary faces without a group: 'nnn", 0)) << what;
  ExpectContains(what, "nnn...' (1 face), 'part1' (1 face), ");
  ExpectContains(what, "'part9' (1 face) and 4990 more; map each name");
  EXPECT_LT(what.size(), 500U);
  std::string const unknown = MeshErrorOf([&] {
    AssignBoundaryGroups(patches, std::vector<std::int64_t>(5000, 1), {{"top", BoundaryGroup::Wall}},
                         "a.msh");
  });
  EXPECT_EQ(0U, unknown.rfind("a.msh: the mesh has no boundary called 'top'; it has 'nnn", 0)) << unknown;
  EXPECT_LT(unknown.size(), 500U);
}

}  // namespace
