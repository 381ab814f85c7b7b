#include "cli/operators/TemporarySettings.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "tests/unit/cli/BoxPartition.h"

namespace zyngrad {
namespace {

namespace fs = std::filesystem;

std::string Content(fs::path const& file) {
  std::ostringstream text;
  text << std::ifstream(file).rdbuf();
  return text.str();
}

TEST(TemporarySettings, StandBesideTheBaseFileNameAndGoWithIt) {
  auto const box = BoxPartition("box:2,2,2");
  box->SetBaseFileName("before.dat");
  fs::path file;
  {
    TemporarySettings settings(*box);
    settings.Write("first\n");
    settings.Write("second\n");
    file = fs::path(box->globals()->BaseFileName).replace_extension(".rbf");
    EXPECT_EQ("second\n", Content(file));
  }
  EXPECT_FALSE(fs::exists(file.parent_path()));
  EXPECT_STREQ("before.dat", box->globals()->BaseFileName);
}

TEST(TemporarySettings, AreApartForEachPartition) {
  auto const a = BoxPartition("box:2,2,2"), b = BoxPartition("box:2,2,2");
  TemporarySettings ofA(*a), ofB(*b);
  ofA.Write("a\n");
  ofB.Write("b\n");
  EXPECT_EQ("a\n", Content(fs::path(a->globals()->BaseFileName).replace_extension(".rbf")));
  EXPECT_EQ("b\n", Content(fs::path(b->globals()->BaseFileName).replace_extension(".rbf")));
}

}  // namespace
}  // namespace zyngrad
