#include "reference_host/mesh/Periods.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "reference_host/mesh/FaceTurn.h"
#include "tests/unit/reference_host/MeshTestSupport.h"
#include "tests/unit/reference_host/PeriodicMeshes.h"

namespace reference_host {
namespace {

using namespace test_meshes;

FaceMesh Unjoined(FaceMesh mesh, int direction) {
  AddPeriod(mesh, direction);
  return mesh;
}

std::string Refusal(FaceMesh mesh) {
  return MeshErrorOf([&mesh] { JoinPeriods(mesh, "m"); });
}

TEST(Periods, FindsTheShiftAndHowTheNodesLieOnEachOther) {
  for (int direction = 0; direction < 3; ++direction) {
    FaceMesh mesh = Unjoined(HexBox(2, 3, 4), direction);
    JoinPeriods(mesh);
    ASSERT_EQ(mesh.periods.size(), 1u);
    Period const& period = mesh.periods[0];
    Point expected = {0.0, 0.0, 0.0};
    expected[direction] = 1.0;
    EXPECT_EQ(period.shift, expected);
    ASSERT_EQ(period.turn.size(), period.faces.size());
    for (std::size_t i = 0; i < period.faces.size(); ++i) {
      std::vector<Point> const here = PlacesOfFace(mesh, period.faces[i].first);
      std::vector<Point> const there = PlacesOfFace(mesh, period.faces[i].second);
      int const n = static_cast<int>(here.size());
      for (int k = 0; k < n; ++k) {
        EXPECT_EQ(there[(period.turn[i] + n - k) % n], Sum(here[k], period.shift));
      }
    }
  }
}

TEST(Periods, GroupsOfEitherSideMakeBoundariesOfBoth) {
  for (int side = 0; side < 2; ++side) {
    FaceMesh mesh = Unjoined(HexBox(2, 2, 2), 0);
    mesh.patches[mesh.patches.size() - 1 - side].group = BoundaryGroup::Wall;
    JoinPeriods(mesh);
    EXPECT_TRUE(mesh.periods.empty());
  }
}

TEST(Periods, WithoutFacesAreDropped) {
  FaceMesh mesh = Unjoined(HexBox(2, 2, 2), 0);
  mesh.periods[0].faces.clear();
  JoinPeriods(mesh);
  EXPECT_TRUE(mesh.periods.empty());
}

TEST(Periods, AreRefusedIfTheFileCallsThemRotational) {
  FaceMesh mesh = Unjoined(HexBox(2, 2, 2), 0);
  mesh.periods[0].refusal = "is rotational";
  EXPECT_EQ(
      Refusal(mesh),
      "m: cyclic patch 'low_x' is rotational; only translations can be joined, --group 'low_x=wall' makes "
      "walls of both sides");
}

TEST(Periods, AreRefusedIfFacesDoNotLieOnEachOther) {
  FaceMesh mesh = Unjoined(HexBox(2, 2, 2), 0);
  std::swap(mesh.periods[0].faces[1].second, mesh.periods[0].faces[2].second);
  ExpectContains(Refusal(mesh), "m: cyclic patch 'low_x' has ");
  ExpectContains(Refusal(mesh), "does not lie on ");
  ExpectContains(Refusal(mesh), "when moved by (1 0 0); only translations can be joined");

  FaceMesh moved = Unjoined(HexBox(2, 2, 2), 0);
  for (Point& p : moved.points) {
    if (p[0] == 1.0 && p[1] == 0.5 && p[2] == 0.5) p[1] += 1e-3;
  }
  ExpectContains(Refusal(moved), "does not lie on ");
  moved.periods[0].tolerance = 1e-2;
  JoinPeriods(moved);
  EXPECT_EQ(moved.periods.size(), 1u);
}

// A wedge of 90 degrees without the word "rotational": its first faces suggest a translation that others do not have.
TEST(Periods, AreRefusedIfOneSideIsTurned) {
  FaceMesh mesh = Unjoined(HexBox(2, 2, 2), 0);
  for (Point& p : mesh.points) {
    double const angle = 0.5 * p[0], radius = 1.0 + p[1];
    p = {radius * std::cos(angle), radius * std::sin(angle), p[2]};
  }
  ExpectContains(Refusal(mesh), "which does not lie on ");
}

TEST(Periods, AreRefusedIfTheFileGivesAnotherVector) {
  FaceMesh mesh = Unjoined(HexBox(2, 2, 2), 1);
  mesh.periods[0].vector = Point{0.0, -1.0, 0.0};  // files differ in the direction
  JoinPeriods(mesh);
  mesh.periods[0].vector = Point{0.0, 1.1, 0.0};
  ExpectContains(Refusal(mesh), "cyclic patch 'low_y' is (0 1 0) from its partner, not (0 1.1 0)");
}

TEST(Periods, AreRefusedIfTheSidesLieOnEachOtherAlready) {
  FaceMesh mesh = Unjoined(HexBox(1, 1, 1), 0);
  mesh.periods[0].faces[0].second = mesh.periods[0].faces[0].first;
  ExpectContains(Refusal(mesh), "lies on its partner, no distance away");
}

TEST(FaceTurn, IsFoundForAnyFirstNode) {
  std::vector<Point> const face = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}};
  auto const a = [&face](int i) { return face[i]; };
  for (int turn = 0; turn < 4; ++turn) {
    auto const b = [&](int i) { return face[(turn + 4 - i) % 4]; };
    EXPECT_EQ(FindTurn(4, a, b, 1e-9), turn);
  }
  EXPECT_EQ(FindTurn(4, a, a, 1e-9), kNoTurn);  // the same direction around
}

}  // namespace
}  // namespace reference_host
