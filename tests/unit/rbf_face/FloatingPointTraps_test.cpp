#include <gtest/gtest.h>

#include <string>

#include "tests/support/gradient/BitComparison.h"
#include "tests/support/mesh/BoxMesh.h"
#include "tests/support/rbf_face/FaceBed.h"
#include "tests/support/watch/ArmedTraps.h"
#include "tests/support/watch/SettingsFolder.h"

// A solver may have divisions by zero, invalid operations and overflow stop the program. No set-up, report or
// application of the face operator does that. A trap ends these tests.

namespace zyn_test::floating_point_traps_test {
namespace {

using Array = GuardedArray<double>;

struct Outcome {
  std::string printed;
  Array values;
};

/// Set-up with its report, and application, with the traps armed or without.
Outcome SetUpAndApply(TestMesh const& plan, int group, FaceSettings const& settings, bool withTraps) {
  FaceBed bed(plan);
  bed.UseBlock(settings);
  bed.host.parameters.block.iDebugMode = 1;
  int const nFace = bed.host.NFace(group);
  Array phi(plan.NCell()), values(nFace), zero(nFace);
  for (int c = 1; c <= plan.NCell(); ++c) phi[c] = 1.0 + 0.01 * (c % 13);
  auto const run = [&] {
    bed.object.Initialize_FaceInterpolateData(group);
    bed.object.Multiply_FaceRBFCoefficent(phi.Data(), values.Data(), zero.Data(), zero.Data(), zero.Data());
  };
  std::string printed = Printed([&] {
    if (!withTraps) return run();
    ArmedTraps const traps;
    run();
    EXPECT_TRUE(traps.StillArmed());
  });
  return {printed, values};
}

void ExpectNoTrap(TestMesh const& plan, FaceSettings const& settings) {
  for (Group const group : kGroups) {
    Outcome const without = SetUpAndApply(plan, group, settings, false);
    Outcome const with = SetUpAndApply(plan, group, settings, true);
    EXPECT_EQ(without.printed, with.printed) << "group " << group << ", method " << settings.method;
    EXPECT_TRUE(SameBits(without.values.Size(), without.values.Data(), with.values.Data()))
        << "group " << group << ", method " << settings.method;
  }
}

// The report of methods 1 and 2 divides by a number of faces that stays 0.
TEST(FaceOperatorTraps, NoSetUpReportOrApplicationStopsASolver) {
  for (TestMesh const& plan : {TwoCubes(), CubesOfAllGroups(), SkewedCubesOfAllGroups()})
    for (int const method : {1, 2, 3, 4, 7})
      for (double const span : {1000.0, 20.0}) ExpectNoTrap(plan, {method, span, 8});
}

TEST(FaceOperatorTraps, MoreCellsWantedThanThereAreStopNoSolver) {
  for (int const method : {1, 2}) ExpectNoTrap(TwoCubes(), {method, 50.0, 1000});
}

// Without inner faces the mean distance is 0 / 0, and every comparison with it is one with no number.
TEST(FaceOperatorTraps, AMeshWithoutInnerFacesStopsNoSolver) {
  TestMesh const plan = Box({0.0, 1.0}, {0.0, 1.0}, {0.0, 1.0});
  for (int const method : {1, 2, 3, 4}) ExpectNoTrap(plan, {method, 50.0, 4});
}

TEST(FaceOperatorTraps, ASpanOfZeroStopsNoSolver) {
  for (int const method : {1, 2, 3, 4}) ExpectNoTrap(TwoCubes(), {method, 0.0, 4});
}

// The settings file in place of the block; a mean distance of no number stands in the file that is written.
TEST(FaceOperatorTraps, NoSettingsFileStopsASolver) {
  std::string const settings[] = {"", Settings("1e999", "4", "1e999", "20", "1"),
                                  Settings("x", "2", "y", "5", "1")};
  for (TestMesh const& plan : {TwoCubes(), Box({0.0, 1.0}, {0.0, 1.0}, {0.0, 1.0})}) {
    for (std::string const& text : settings) {
      std::string printed[2];
      for (bool const withTraps : {false, true}) {
        FaceBed bed(plan);
        if (!text.empty()) bed.folder.Write(text);
        printed[withTraps ? 1 : 0] = Printed([&] {
          if (!withTraps) {
            bed.object.Initialize_FaceInterpolateData(kWall);
            return;
          }
          ArmedTraps const traps;
          bed.object.Initialize_FaceInterpolateData(kWall);
        });
      }
      EXPECT_EQ(printed[0], printed[1]);
    }
  }
}

}  // namespace
}  // namespace zyn_test::floating_point_traps_test
