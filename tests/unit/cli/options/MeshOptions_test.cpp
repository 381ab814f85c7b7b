#include "cli/options/MeshOptions.h"

#include <gtest/gtest.h>

#include <CLI/CLI.hpp>

#include "cli/base/UsageError.h"

namespace zyngrad {
namespace {

using reference_host::BoundaryGroup;

std::map<std::string, BoundaryGroup> Groups(std::vector<std::string> const& texts) {
  MeshOptions options;
  options.groups = texts;
  return GroupsByUser(options);
}

TEST(MeshOptions, TakeGroupsByName) {
  auto const groups = Groups({"left=inlet", "a=b=Wall", "left=inlet"});
  ASSERT_EQ(2U, groups.size());
  EXPECT_EQ(BoundaryGroup::Inlet, groups.at("left"));
  EXPECT_EQ(BoundaryGroup::Wall, groups.at("a=b"));
}

TEST(MeshOptions, RefuseGroupsThatAreNotOne) {
  for (char const* text : {"left", "left=", "left=door", "=wall", ""})
    EXPECT_THROW(Groups({text}), UsageError) << text;
  EXPECT_THROW(Groups({"left=inlet", "left=wall"}), UsageError);
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
