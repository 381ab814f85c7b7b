#include "cli/vtk/SeriesFiles.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "cli/base/TemporaryFolder.h"
#include "tests/unit/cli/TestRanks.h"

namespace zyngrad {
namespace {

using Names = std::vector<std::string>;

TEST(SeriesFiles, OneTimeHasTheFilesOfAGridWithoutTimes) {
  for (std::string const& time : Names{"", "0.5"}) {
    SeriesFiles const files(TestRanks(), "gradient", "vtu", {time});
    EXPECT_FALSE(files.IsSeries());
    EXPECT_EQ(files.Index(), "gradient.vtu");
    EXPECT_EQ(files.All(), Names{"gradient.vtu"});
  }
}

TEST(SeriesFiles, SeveralTimesHaveAGridEachAndAnIndex) {
  SeriesFiles const files(TestRanks(), "faces", "vtp", {"0.5", "1e-05"});
  EXPECT_EQ(files.All(), (Names{"faces_0.5.vtp", "faces_1e-05.vtp", "faces.pvd"}));
  EXPECT_EQ(files.Index(), "faces.pvd");
  TemporaryFolder const folder;
  files.WriteIndex(folder.path() + "/faces.pvd");
  std::ostringstream text;
  text << std::ifstream(folder.path() + "/faces.pvd").rdbuf();
  EXPECT_EQ(text.str(),
            "<?xml version=\"1.0\"?>\n<VTKFile type=\"Collection\" version=\"0.1\">\n<Collection>\n"
            "<DataSet timestep=\"0.5\" part=\"0\" file=\"faces_0.5.vtp\"/>\n"
            "<DataSet timestep=\"1e-05\" part=\"0\" file=\"faces_1e-05.vtp\"/>\n"
            "</Collection>\n</VTKFile>\n");
}

}  // namespace
}  // namespace zyngrad
