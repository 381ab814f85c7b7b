#include "cli/study/StudySeries.h"

#include <gtest/gtest.h>

#include "cli/base/UsageError.h"
#include "reference_host/box/BoxMesh.h"
#include "reference_host/mesh/MeshError.h"

namespace zyngrad {
namespace {

TEST(StudySeries, DoublesTheCellsAndKeepsTheRest) {
  EXPECT_EQ((std::vector<std::string>{"box:2,3,4:tet:perturb=0.1,seed=7", "box:4,6,8:tet:perturb=0.1,seed=7",
                                      "box:8,12,16:tet:perturb=0.1,seed=7"}),
            MeshesOfSeries("box:2,3,4:tet:perturb=0.1,seed=7", 3));
  EXPECT_EQ((std::vector<std::string>{"box:5,5,5", "box:10,10,10"}), MeshesOfSeries("box:5,5,5", 2));
}

TEST(StudySeries, HasTheNamedOnes) {
  for (NamedSeries const& series : NamedStudySeries()) {
    std::vector<std::string> const meshes = MeshesOfSeries(series.name, 0);
    EXPECT_EQ(meshes.size(), static_cast<std::size_t>(series.nLevels));
    EXPECT_EQ(meshes.front(), series.firstMesh);
    for (std::string const& mesh : meshes) EXPECT_NO_THROW(reference_host::ParseBoxSpec(mesh)) << mesh;
    EXPECT_EQ(2u, MeshesOfSeries(series.name, 2).size());
  }
  EXPECT_EQ(7u, NamedStudySeries().size());
}

TEST(StudySeries, RefusesUnknownNamesAndWrongBoxes) {
  try {
    MeshesOfSeries("hexes", 3);
    FAIL();
  } catch (UsageError const& error) {
    EXPECT_EQ(0u, std::string(error.what()).find("--series \"hexes\": expected hex, perturbed, tet"))
        << error.what();
  }
  EXPECT_THROW(MeshesOfSeries("", 3), UsageError);
  EXPECT_THROW(MeshesOfSeries("box:0,1,1", 3), reference_host::MeshError);
  EXPECT_THROW(MeshesOfSeries("box:2,2,2:ball", 3), reference_host::MeshError);
}

TEST(StudySeries, RefusesMoreLevelsThanCellsCanBeCounted) {
  EXPECT_THROW(MeshesOfSeries("hex", 1000000000), reference_host::MeshError);
}

}  // namespace
}  // namespace zyngrad
