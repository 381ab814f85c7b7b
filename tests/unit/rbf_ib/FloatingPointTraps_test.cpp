#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "tests/support/gradient/BitComparison.h"
#include "tests/support/mesh/Hexahedra.h"
#include "tests/support/mesh/SmallMeshes.h"
#include "tests/support/rbf_ib/PointBed.h"
#include "tests/support/watch/ArmedTraps.h"
#include "tests/support/watch/SettingsFolder.h"

// A solver may have divisions by zero, invalid operations and overflow stop the program. No set-up with its report and
// no application of the point operator does that. A trap ends these tests.

namespace zyn_test::floating_point_traps_test {
namespace {

struct Outcome {
  std::string printed;
  std::vector<Array> results;
};

bool AllFinite(CZynIBRBFInternalObject const& object) {
  for (int i = 1; i <= object.m_iNIBNode; ++i) {
    if (object.m_ppIBConn[i] == nullptr) continue;
    for (int k = 1; k <= object.m_ppIBConn[i][0]; ++k) {
      IBCnode const& c = object.m_ppIBCoef[i][k];
      for (double const value : {c.x, c.y, c.z, object.m_ppIBValueCoef[i][k]})
        if (!std::isfinite(value)) return false;
    }
  }
  return true;
}

/// Set-up and application with the traps armed, or without. Coefficients that are no finite numbers are applied without
/// traps: that is a use of them.
Outcome SetUpAndApply(TestMesh const& mesh, std::string const& settings, Array marks,
                      std::vector<Point> const& points, bool withTraps) {
  PointBed bed(mesh, settings);
  PointArrays p(points);
  Array phi(mesh.NCell());
  for (int c = 1; c <= mesh.NCell(); ++c) phi[c] = 1.0 + 0.01 * (c % 13);
  Outcome outcome;
  outcome.results.assign(4, Array(p.Size()));
  std::vector<Array>& r = outcome.results;
  auto const setUp = [&] {
    bed.object.Initialize_IBInterpolateData(marks.Data(), p.Size(), p.x.Data(), p.y.Data(), p.z.Data());
  };
  auto const apply = [&] {
    bed.object.Multiply_IBRBFCoefficent(phi.Data(), r[0].Data(), r[1].Data(), r[2].Data(), r[3].Data());
  };
  outcome.printed = Printed([&] {
    if (!withTraps) return setUp();
    ArmedTraps const traps;
    setUp();
    EXPECT_TRUE(traps.StillArmed());
  });
  if (withTraps && AllFinite(bed.object)) {
    ArmedTraps const traps;
    apply();
  } else {
    apply();
  }
  return outcome;
}

void ExpectNoTrap(TestMesh const& mesh, std::string const& settings, Array const& marks,
                  std::vector<Point> const& points) {
  Outcome const without = SetUpAndApply(mesh, settings, marks, points, false);
  Outcome const with = SetUpAndApply(mesh, settings, marks, points, true);
  EXPECT_EQ(without.printed, with.printed) << settings;
  for (std::size_t k = 0; k < with.results.size(); ++k)
    EXPECT_TRUE(SameBits(with.results[k].Size(), without.results[k].Data(), with.results[k].Data()))
        << settings;
}

std::vector<Point> const kPoints = {{1.1, 1.2, 1.3}, {0.5, 0.5, 0.5}, {2.9, 0.1, 1.5}, {7.0, 8.0, 9.0}};

TEST(PointOperatorTraps, NoSetUpReportOrApplicationStopsASolver) {
  for (double const jitter : {0.0, 0.2}) {
    HexahedraOptions options;
    options.jitter = jitter;
    TestMesh const mesh = Hexahedra(options);
    for (char const* const method : {"1", "2", "3", "4"})
      for (char const* const span : {"500", "20"})
        ExpectNoTrap(mesh, Settings(span, method, "1.0", "8"), InteriorUsable(mesh), kPoints);
  }
}

// The report divides by the number of points.
TEST(PointOperatorTraps, NoPointsStopNoSolver) {
  TestMesh const mesh = Hexahedra({});
  for (char const* const method : {"1", "2", "3"})
    ExpectNoTrap(mesh, Settings("500", method, "1.0", "8"), InteriorUsable(mesh), {});
}

TEST(PointOperatorTraps, FewOrNoUsableCellsStopNoSolver) {
  TestMesh const mesh = Hexahedra({});
  Array one(mesh.NCell(), kUnusable);
  one[5] = kUsable;
  for (char const* const method : {"1", "2", "3"})
    for (Array const& marks : {Array(mesh.NCell(), kUnusable), one})
      ExpectNoTrap(mesh, Settings("500", method, "1.0", "8"), marks, kPoints);
}

// Without inner faces the mean distance is 0 / 0; a point on the only cell has no support length.
TEST(PointOperatorTraps, NoDegenerateMeshStopsASolver) {
  for (char const* const method : {"1", "2", "3"}) {
    ExpectNoTrap(LooseCells({Point{0, 0, 0}}), Settings("500", method, "1.0", "1"), AllUsable(1),
                 {{0.0, 0.0, 0.0}, {1.0, 0.0, 0.0}});
    ExpectNoTrap(LooseCells({Point{0, 0, 0}, Point{0, 0, 0}}), Settings("500", method, "1.0", "2"),
                 AllUsable(2), {{0.0, 0.0, 0.0}, {1.0, 0.0, 0.0}});
  }
}

TEST(PointOperatorTraps, NoSettingsFileStopsASolver) {
  TestMesh const mesh = Hexahedra({});
  for (char const* const span : {"1e999", "1e300", "0", "nan", "no number"})
    ExpectNoTrap(mesh, Settings(span, "2", "1e999", "8"), InteriorUsable(mesh), kPoints);
  ExpectNoTrap(LooseCells({Point{0, 0, 0}}), "", AllUsable(1), {{1.0, 0.0, 0.0}});
}

}  // namespace
}  // namespace zyn_test::floating_point_traps_test
