#include <gtest/gtest.h>

#include <string>

#include "tests/unit/gradient/ArmedTraps.h"
#include "tests/unit/gradient/BitComparison.h"
#include "tests/unit/rbf_face/FaceBed.h"

// A solver may have divisions by zero, invalid operations and overflow stop the program. No set-up, report or
// application of the face operator does that. A trap ends these tests.

namespace rbf_face_test {
namespace {

using Array = gradient_test::GuardedArray<double>;

struct Outcome {
  std::string printed;
  Array values;
};

/// Set-up with its report, and application, with the traps armed or without.
Outcome SetUpAndApply(const MeshPlan& plan, int group, const PlainSettings& settings, bool withTraps) {
  FaceBed bed(plan);
  bed.UseBlock(settings);
  bed.host.parameters.block.iDebugMode = 1;
  const int nFace = bed.host.NFace(group);
  Array phi(plan.NCell()), values(nFace), zero(nFace);
  for (int c = 1; c <= plan.NCell(); ++c) phi[c] = 1.0 + 0.01 * (c % 13);
  const auto run = [&] {
    bed.object.Initialize_FaceInterpolateData(group);
    bed.object.Multiply_FaceRBFCoefficent(phi.Data(), values.Data(), zero.Data(), zero.Data(), zero.Data());
  };
  std::string printed = Printed([&] {
    if (!withTraps) return run();
    const gradient_test::ArmedTraps traps;
    run();
    EXPECT_TRUE(traps.StillArmed());
  });
  return {printed, values};
}

void ExpectNoTrap(const MeshPlan& plan, const PlainSettings& settings) {
  for (const Group group : kGroups) {
    const Outcome without = SetUpAndApply(plan, group, settings, false);
    const Outcome with = SetUpAndApply(plan, group, settings, true);
    EXPECT_EQ(without.printed, with.printed) << "group " << group << ", method " << settings.method;
    EXPECT_TRUE(gradient_test::SameBits(without.values.Size(), without.values.Data(), with.values.Data()))
        << "group " << group << ", method " << settings.method;
  }
}

// The report of methods 1 and 2 divides by a number of faces that stays 0.
TEST(FaceOperatorTraps, NoSetUpReportOrApplicationStopsASolver) {
  for (const MeshPlan& plan : {TwoCubes(), CubesOfAllGroups(), SkewedCubesOfAllGroups()})
    for (const int method : {1, 2, 3, 4, 7})
      for (const double span : {1000.0, 20.0}) ExpectNoTrap(plan, {method, span, 8});
}

TEST(FaceOperatorTraps, MoreCellsWantedThanThereAreStopNoSolver) {
  for (const int method : {1, 2}) ExpectNoTrap(TwoCubes(), {method, 50.0, 1000});
}

// Without inner faces the mean distance is 0 / 0, and every comparison with it is one with no number.
TEST(FaceOperatorTraps, AMeshWithoutInnerFacesStopsNoSolver) {
  const MeshPlan plan = BoxPlan({0.0, 1.0}, {0.0, 1.0}, {0.0, 1.0});
  for (const int method : {1, 2, 3, 4}) ExpectNoTrap(plan, {method, 50.0, 4});
}

TEST(FaceOperatorTraps, ASpanOfZeroStopsNoSolver) {
  for (const int method : {1, 2, 3, 4}) ExpectNoTrap(TwoCubes(), {method, 0.0, 4});
}

// The settings file in place of the block; a mean distance of no number stands in the file that is written.
TEST(FaceOperatorTraps, NoSettingsFileStopsASolver) {
  const std::string settings[] = {"", Settings("1e999", "4", "1e999", "20", "1"),
                                  Settings("x", "2", "y", "5", "1")};
  for (const MeshPlan& plan : {TwoCubes(), BoxPlan({0.0, 1.0}, {0.0, 1.0}, {0.0, 1.0})}) {
    for (const std::string& text : settings) {
      std::string printed[2];
      for (const bool withTraps : {false, true}) {
        FaceBed bed(plan);
        if (!text.empty()) bed.folder.Write(text);
        printed[withTraps ? 1 : 0] = Printed([&] {
          if (!withTraps) {
            bed.object.Initialize_FaceInterpolateData(kWall);
            return;
          }
          const gradient_test::ArmedTraps traps;
          bed.object.Initialize_FaceInterpolateData(kWall);
        });
      }
      EXPECT_EQ(printed[0], printed[1]);
    }
  }
}

}  // namespace
}  // namespace rbf_face_test
