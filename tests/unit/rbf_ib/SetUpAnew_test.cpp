#include <gtest/gtest.h>

#include <filesystem>

#include "tests/support/mesh/SmallMeshes.h"
#include "tests/support/rbf_ib/PointBed.h"

// A body that moved is set up as if it were the first.

namespace zyn_test::set_up_anew_test {
namespace {

// A folder stands where the settings file was, so that nothing is read.
TEST(PointSetUpAnew, BeginsWithTheSettingsOfANewObject) {
  TestMesh const mesh = LooseCells({Point{0, 0, 0}, Point{1, 0, 0}, Point{0, 1, 0}});
  PointBed bed(mesh, Settings("30", "1", "1.5", "5"));
  bed.SetUp(AllUsable(3), {{0.5, 0.25, 0.0}});
  ASSERT_EQ(1, bed.object.iSearch_method);
  ASSERT_EQ(1.5, bed.object.Search_distance);
  ASSERT_EQ(5, bed.object.Search_number);
  ASSERT_EQ(30.0, bed.object.Span);

  std::filesystem::remove(bed.folder.SettingsFileName());
  std::filesystem::create_directory(bed.folder.SettingsFileName());
  bed.SetUp(AllUsable(3), {{0.5, 0.25, 0.0}});
  EXPECT_EQ(3, bed.object.iSearch_method);
  EXPECT_EQ(0.0, bed.object.Search_distance);
  EXPECT_EQ(20, bed.object.Search_number);
  EXPECT_EQ(500.0, bed.object.Span);
}

}  // namespace
}  // namespace zyn_test::set_up_anew_test
