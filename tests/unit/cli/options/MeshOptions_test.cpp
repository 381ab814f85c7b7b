#include "cli/options/MeshOptions.h"

#include <gtest/gtest.h>

#include <CLI/CLI.hpp>
#include <fstream>

#include "cli/base/TemporaryFolder.h"
#include "cli/base/UsageError.h"
#include "reference_host/mesh/BoundaryGroups.h"
#include "tests/unit/cli/TestRanks.h"

namespace zyngrad {
namespace {

using reference_host::BoundaryGroup;
using reference_host::GroupRule;

reference_host::GroupRules Groups(std::vector<std::string> const& texts) {
  MeshOptions options;
  options.groups = texts;
  return GroupsByUser(options).options;
}

/// "name group origin" of each rule.
std::vector<std::string> InWords(std::vector<GroupRule> const& rules) {
  std::vector<std::string> texts;
  for (GroupRule const& rule : rules)
    texts.push_back(rule.name + ' ' + reference_host::NameOfGroup(rule.group) + ' ' + rule.origin);
  return texts;
}

TEST(MeshOptions, TakeGroupsByNameInTheOrderGiven) {
  EXPECT_EQ(InWords(Groups({"left=inlet", "a=b=Wall", "hole*=wall", "left=OUTLET", " x =wall"}).rules),
            (std::vector<std::string>{"left inlet --group", "a=b wall --group", "hole* wall --group",
                                      "left outlet --group", " x  wall --group"}));
}

TEST(MeshOptions, RefuseGroupsThatAreNotOne) {
  for (char const* text : {"left", "left=", "left=door", "=wall", ""})
    EXPECT_THROW(Groups({text}), UsageError) << text;
}

TEST(MeshOptions, TakeADefaultGroup) {
  MeshOptions options;
  EXPECT_EQ(std::nullopt, GroupsByUser(options).options.fallback);
  options.fallback = "Wall";
  EXPECT_EQ(BoundaryGroup::Wall, GroupsByUser(options).options.fallback);
  options.fallback = "walls";
  EXPECT_THROW(GroupsByUser(options), UsageError);
}

TEST(MeshOptions, ChooseHowTheMeshIsRead) {
  using reference_host::MeshReading;
  LoadingOptions options;
  EXPECT_EQ(MeshReading::Automatic, LoadingByUser(options).reading);
  options.reading = "slabs";
  EXPECT_EQ(MeshReading::Slabs, LoadingByUser(options).reading);
  options.reading = "whole";
  options.partitionFile = "wing.parts";
  EXPECT_EQ(MeshReading::Whole, LoadingByUser(options).reading);
  EXPECT_EQ("wing.parts", LoadingByUser(options).partitionFile);
  options.reading = "half";
  EXPECT_THROW(LoadingByUser(options), UsageError);
}

TEST(MeshOptions, ReadGroupsFromLines) {
  EXPECT_EQ(InWords(ParseGroupFile("# holes\n\n hole* = wall\r\nleft=inlet\n\t# end\nin side=Outlet",
                                   "groups.txt")),
            (std::vector<std::string>{"hole* wall groups.txt:3", "left inlet groups.txt:4",
                                      "in side outlet groups.txt:6"}));
  EXPECT_TRUE(ParseGroupFile("", "groups.txt").empty());
}

TEST(MeshOptions, NameTheLineThatIsNoGroup) {
  try {
    ParseGroupFile("left=inlet\n# wall\nright wall\n", "groups.txt");
    FAIL();
  } catch (UsageError const& error) {
    EXPECT_STREQ("--groups groups.txt:3: \"right wall\": expected NAME=inlet, outlet, wall or symmetry",
                 error.what());
  }
}

TEST(MeshOptions, PutTheLinesOfTheFileBeforeTheOptions) {
  TemporaryFolder const folder;
  std::string const name = folder.path() + "/groups.txt";
  std::ofstream(name) << "left=wall\n";
  MeshOptions options;
  options.file = name;
  options.groups = {"left=inlet"};
  EXPECT_EQ(InWords(ReadGroupRules(TestRanks(), GroupsByUser(options)).rules),
            (std::vector<std::string>{"left wall " + name + ":1", "left inlet --group"}));
  for (std::string const& wrong : {folder.path() + "/none.txt", folder.path()}) {
    options.file = wrong;
    EXPECT_THROW(ReadGroupRules(TestRanks(), GroupsByUser(options)), UsageError) << wrong;
  }
}

TEST(MeshOptions, GiveOneValueToEachRepeatedOption) {
  CLI::App app;
  std::vector<std::string> fields;
  std::string mesh;
  AddRepeatableOption(app, "--field", fields, "");
  app.add_option("MESH", mesh);
  app.parse(
      std::vector<std::string>{"--field=-z", "-y", "--field", "mesh", "-x", "--field"});  // from the back
  EXPECT_EQ((std::vector<std::string>{"-x", "-y", "-z"}), fields);
  EXPECT_EQ("mesh", mesh);
}

}  // namespace
}  // namespace zyngrad
