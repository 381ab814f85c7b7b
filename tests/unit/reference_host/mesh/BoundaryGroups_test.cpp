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
using reference_host::GroupRules;
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

TEST(BoundaryGroups, FindsTheGroupInAWordOfTheName) {
  for (char const* const name :
       {"the_wall", "lowerWall", "movingWall", "fixedWalls", "lowerwall", "side-walls", "WALLS",
        "no-slip wall", "noSlipWall", "2wall", "mappedWALL", "wall.1"}) {
    EXPECT_EQ(BoundaryGroup::Wall, GroupByName(name, "")) << name;
  }
  for (char const* const name : {"airInlet", "velocity-inlet", "inlets", "leftinlet3"})
    EXPECT_EQ(BoundaryGroup::Inlet, GroupByName(name, "")) << name;
  for (char const* const name : {"pressureOutlet", "outlet2", "upper_outlets"})
    EXPECT_EQ(BoundaryGroup::Outlet, GroupByName(name, "")) << name;
  for (char const* const name : {"leftSymmetry", "symmetryplane_x", "y symmetry"})
    EXPECT_EQ(BoundaryGroup::Symmetry, GroupByName(name, "")) << name;
}

TEST(BoundaryGroups, FindsNoGroupInOtherNames) {
  for (char const* const name : {"", "wal", "unnamed", "surface_7", "in let", "symm", "swallow",
                                 "antisymmetry", "antiSymmetry", "asymmetry", "non-wall", "not_inlet"}) {
    EXPECT_EQ(std::nullopt, GroupByName(name, "")) << name;
  }
}

TEST(BoundaryGroups, FindsNoGroupInNamesThatTellTwo) {
  for (char const* const name :
       {"inletWall", "inlet_outlet", "inletoutlet", "wall of the inlet", "symmetryWall"})
    EXPECT_EQ(std::nullopt, GroupByName(name, "")) << name;
}

TEST(BoundaryGroups, PrefersTheTypeOfAPatchToItsName) {
  EXPECT_EQ(BoundaryGroup::Wall, GroupByName("sphere", "wall"));
  EXPECT_EQ(BoundaryGroup::Wall, GroupByName("inletWall", "wall"));
  EXPECT_EQ(BoundaryGroup::Wall, GroupByName("left", "mappedWall"));
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

TEST(BoundaryGroups, TakesMissingDimensionsAndPlanesOfSymmetryOfOpenFoamForWalls) {
  for (char const* const type : {"empty", "wedge", "symmetry", "symmetryPlane", "Empty"}) {
    EXPECT_EQ(BoundaryGroup::Wall, GroupByName("front", type)) << type;
    EXPECT_EQ(BoundaryGroup::Wall, GroupByName("inlet", type)) << type;
  }
}

TEST(BoundaryGroups, LeavesPatchesThatAreNoBoundaryToTheUser) {
  for (char const* const type : {"cyclic", "cyclicAMI", "processor", "processorCyclic", "Cyclic"}) {
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
  std::map<std::string, BoundaryGroup> const map = {{"inlet", BoundaryGroup::Outlet},
                                                    {"front", BoundaryGroup::Symmetry}};
  AssignBoundaryGroups(patches, {1, 2, 3}, map);
  EXPECT_EQ(BoundaryGroup::Outlet, patches[0].group);
  EXPECT_EQ(BoundaryGroup::Symmetry, patches[1].group);
  EXPECT_EQ(BoundaryGroup::Wall, patches[2].group);
}

TEST(BoundaryGroups, ListsAllPatchesWithoutAGroup) {
  std::vector<Patch> patches = {{"front", "cyclicAMI", {}}, {"wall", "", {}}, {"unnamed", "", {}}};
  EXPECT_EQ(
      "boundary faces without a group: 'front' of type cyclicAMI (120 faces), 'unnamed' (1 face); map each "
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
      "the mesh has no boundary called 'top', 'back'; it has 'inlet', 'wall'", MeshErrorOf([&] {
        AssignBoundaryGroups(patches, {1, 1}, {{"top", BoundaryGroup::Wall}, {"back", BoundaryGroup::Wall}});
      }));
}

/// Patches without types, without groups.
std::vector<Patch> Named(std::vector<std::string> const& names) {
  std::vector<Patch> patches;
  for (std::string const& name : names) patches.push_back({name, "", {}});
  return patches;
}

/// With a face in each patch. Returns "name group reason" of each.
std::vector<std::string> Assigned(std::vector<Patch> patches, GroupRules const& rules) {
  AssignBoundaryGroups(patches, std::vector<std::int64_t>(patches.size(), 1), rules);
  std::vector<std::string> texts;
  for (Patch const& patch : patches)
    texts.push_back(patch.name + ' ' + (patch.group ? NameOfGroup(*patch.group) : "-") + ' ' + patch.reason);
  return texts;
}

TEST(BoundaryGroups, TellWhyAPatchHasItsGroup) {
  std::vector<Patch> patches = Named({"hole1", "hole2", "inlet", "top", "rest"});
  patches.push_back({"front", "empty", {}});
  GroupRules rules;
  rules.rules = {{"hole*", BoundaryGroup::Wall, "--group"}, {"top", BoundaryGroup::Outlet, "groups.txt:7"}};
  rules.fallback = BoundaryGroup::Symmetry;
  EXPECT_EQ(Assigned(patches, rules),
            (std::vector<std::string>{"hole1 wall --group 'hole*'", "hole2 wall --group 'hole*'",
                                      "inlet inlet name", "top outlet groups.txt:7",
                                      "rest symmetry --default-group", "front wall type empty"}));
}

TEST(BoundaryGroups, PreferNamesToPatternsAndLaterRulesToEarlierOnes) {
  using B = BoundaryGroup;
  auto const groups = [](GroupRules const& rules) {
    std::string text;
    for (std::string const& line : Assigned(Named({"h1", "h2", "h3"}), rules))
      text += line.substr(3, line.find(' ', 3) - 3) + ' ';
    return text;
  };
  EXPECT_EQ("wall inlet wall ", groups({{"h2", B::Inlet}, {"h*", B::Wall}}));
  EXPECT_EQ("outlet outlet outlet ", groups({{"h*", B::Wall}, {"?*", B::Outlet}}));
  EXPECT_EQ("wall outlet wall ", groups({{"h2", B::Inlet}, {"h?", B::Wall}, {"h2", B::Outlet}}));
}

TEST(BoundaryGroups, TakeANameWithAStarLiterallyWhereTheMeshHasIt) {
  EXPECT_EQ(Assigned(Named({"wall*1", "inlet_x", "wall-1"}),
                     {{"wall*1", BoundaryGroup::Outlet}, {"inlet*", BoundaryGroup::Symmetry}}),
            (std::vector<std::string>{"wall*1 outlet chosen", "inlet_x symmetry chosen 'inlet*'",
                                      "wall-1 wall name"}));
}

TEST(BoundaryGroups, RefuseRulesThatApplyToNothing) {
  std::vector<Patch> patches = Named({"inlet", "wall"});
  GroupRules rules;
  rules.rules = {{"hole*", BoundaryGroup::Wall, "--group"},
                 {"top", BoundaryGroup::Wall, "groups.txt:2"},
                 {"w*", BoundaryGroup::Wall, "--group"}};
  EXPECT_EQ(
      "the mesh has no boundary called 'top' (groups.txt:2) and none that matches 'hole*' (--group); it has "
      "'inlet', "
      "'wall'",
      MeshErrorOf([&] {
        AssignBoundaryGroups(patches, {1, 1}, rules);
      }));
}

TEST(BoundaryGroups, ShowTheOptionToType) {
  GroupRules rules;
  rules.areOptions = true;
  auto const advice = [&](std::vector<std::string> const& names) {
    std::vector<Patch> patches = Named(names);
    std::string const what = MeshErrorOf(
        [&] { AssignBoundaryGroups(patches, std::vector<std::int64_t>(patches.size(), 20), rules); });
    return what.substr(what.find("; ") + 2);
  };
  std::string const others = "--default-group wall (or inlet, outlet, symmetry)";
  EXPECT_EQ("type --group 'hole*=wall' or " + others, advice({"hole1", "inlet", "hole2", "hole"}));
  EXPECT_EQ("type --group 'top=wall' or " + others, advice({"top", "wall"}));
  EXPECT_EQ("type --group 'it'\\''s=wall' or " + others, advice({"it's"}));
  // The pattern would take the wall along.
  EXPECT_EQ("type --group 's1=wall' --group 's2=wall' or " + others, advice({"s1", "s2", "s_wall"}));
  EXPECT_EQ("type --group '1=wall' --group '2=wall' or " + others, advice({"1", "2"}));
  EXPECT_EQ("type " + others, advice({"a", "b", "c", "d"}));
  EXPECT_EQ("type " + others, advice({std::string(1000, 'x')}));
}

/// left and right are each other's continuation, both of type cyclic; wall has a group of its own.
std::vector<Patch> Periodic() {
  std::vector<Patch> patches = {{"left", "cyclic", {}}, {"wall", "wall", {}}, {"right", "cyclic", {}}};
  patches[0].partners = {2};
  patches[2].partners = {0};
  return patches;
}

TEST(BoundaryGroups, LeavePeriodicPatchesWithoutAGroup) {
  GroupRules rules;
  std::vector<std::string> const none = {"left - periodic with 'right'", "wall wall type wall",
                                         "right - periodic with 'left'"};
  EXPECT_EQ(Assigned(Periodic(), rules), none);
  rules.fallback = BoundaryGroup::Outlet;
  EXPECT_EQ(Assigned(Periodic(), rules), none);
}

TEST(BoundaryGroups, GiveBothSidesOfAPeriodTheGroupOfOne) {
  EXPECT_EQ(Assigned(Periodic(), {{"l*", BoundaryGroup::Inlet}}),
            (std::vector<std::string>{"left inlet chosen 'l*'", "wall wall type wall",
                                      "right inlet partner of 'left'"}));
  EXPECT_EQ(Assigned(Periodic(), {{"left", BoundaryGroup::Inlet}, {"right", BoundaryGroup::Outlet}}),
            (std::vector<std::string>{"left inlet chosen", "wall wall type wall", "right outlet chosen"}));
}

TEST(BoundaryGroups, NeedAGroupForAPatchWhosePartnerHasOneByName) {
  std::vector<Patch> patches = Named({"inlet", "x1", "x2"});
  patches[0].partners = {1};
  patches[1].partners = {0, 2};
  patches[2].partners = {1};
  std::vector<std::int64_t> const nFaces = {1, 1, 1};
  ExpectContains(MeshErrorOf([&] { AssignBoundaryGroups(patches, nFaces, {}); }),
                 "without a group: 'x1' (1 face);");
  GroupRules rules;
  rules.fallback = BoundaryGroup::Wall;
  EXPECT_EQ(Assigned(patches, rules), (std::vector<std::string>{"inlet inlet name", "x1 wall --default-group",
                                                                "x2 wall --default-group"}));
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
