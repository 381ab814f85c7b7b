// Parts of meshes that continue beyond their boundary.

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <vector>

#include "reference_host/mesh/MeshPart.h"
#include "tests/unit/reference_host/PeriodicMeshes.h"

namespace reference_host {
namespace {

using namespace test_meshes;

MeshPart Whole(FaceMesh const& mesh) { return ExtractPart(mesh, std::vector<int>(mesh.nCells, 0), 0, 1); }

// x: 0 [cell 0] 0.5 [cell 1] 1: the halo cells are cell 0 at 1..1.5 and cell 1 at -0.5..0.
TEST(MeshPartPeriods, OnePartIsItsOwnNeighbour) {
  MeshPart const part = Whole(Periodic(HexBox(2, 1, 1), "x"));
  EXPECT_EQ(part.nOwned, 2);
  EXPECT_EQ(part.globalCell, (std::vector<std::int64_t>{0, 1, 0, 1}));
  EXPECT_EQ(part.haloPart, (std::vector<int>{0, 0}));
  EXPECT_EQ(part.haloPeriod, (std::vector<int>{1, -1}));
  EXPECT_EQ(part.shifts, (std::vector<Point>{{1.0, 0.0, 0.0}}));
  EXPECT_EQ(part.points.size(), 12u + 8u);  // four shifted nodes at x = -0.5, four at x = 1.5
  std::set<double> x;
  for (Point const& p : part.points) x.insert(p[0]);
  EXPECT_EQ(x, (std::set<double>{-0.5, 0.0, 0.5, 1.0, 1.5}));
}

TEST(MeshPartPeriods, ACellMayBeItsOwnNeighbourOnAllSides) {
  MeshPart const part = Whole(Periodic(HexBox(1, 1, 1), "xyz"));
  EXPECT_EQ(part.globalCell, std::vector<std::int64_t>(7, 0));
  EXPECT_EQ(part.haloPeriod, (std::vector<int>{-3, -2, -1, 1, 2, 3}));
  for (int f = 0; f < part.nFaces(); ++f) {
    EXPECT_EQ(part.owner[f], 0);
    EXPECT_GT(part.neighbour[f], 0);
    EXPECT_EQ(part.facePatch[f], -1);
  }
  // 8 corners, and 4 more beyond each of the 6 sides.
  EXPECT_EQ(part.points.size(), 8u + 6u * 4u);
}

TEST(MeshPartPeriods, HaloCellsHaveAllTheirNodesOneShiftAway) {
  for (auto const& [name, mesh] : PeriodicMeshes()) {
    SCOPED_TRACE(name);
    for (int const nParts : {1, 2, 3}) {
      for (MeshPart const& part : SplitMesh(mesh, RandomParts(mesh.nCells, nParts), nParts)) {
        for (int h = 0; h < part.nHalo(); ++h) {
          std::int64_t const cell = part.globalCell[part.nOwned + h];
          std::set<int> nodes;
          for (int f = 0; f < mesh.nFaces(); ++f) {
            if (mesh.owner[f] != cell && mesh.neighbour[f] != cell) continue;
            nodes.insert(mesh.faceNode.begin() + static_cast<std::ptrdiff_t>(mesh.faceStart[f]),
                         mesh.faceNode.begin() + static_cast<std::ptrdiff_t>(mesh.faceStart[f + 1]));
          }
          ASSERT_EQ(part.haloNodeStart[h + 1] - part.haloNodeStart[h], nodes.size());
          for (int const node : nodes) {
            Point place = mesh.points[node];
            if (part.haloPeriod[h] != 0) place = Sum(place, ShiftOf(part.shifts, part.haloPeriod[h]));
            auto const begin = part.haloNode.begin() + static_cast<std::ptrdiff_t>(part.haloNodeStart[h]);
            auto const end = part.haloNode.begin() + static_cast<std::ptrdiff_t>(part.haloNodeStart[h + 1]);
            EXPECT_TRUE(std::any_of(begin, end,
                                    [&](int n) { return Length(Difference(part.points[n], place)) < 1e-12; }))
                << "halo cell " << h << ", node " << node;
          }
        }
      }
    }
  }
}

TEST(MeshPartPeriods, FacesOfAPeriodShareTheirNodesWithTheHaloCell) {
  for (auto const& [name, mesh] : PeriodicMeshes()) {
    SCOPED_TRACE(name);
    MeshPart const part = Whole(mesh);
    int nPeriodic = 0;
    for (int f = 0; f < part.nFaces(); ++f) {
      if (part.neighbour[f] < part.nOwned) continue;
      ++nPeriodic;
      int const h = part.neighbour[f] - part.nOwned;
      auto const begin = part.haloNode.begin() + static_cast<std::ptrdiff_t>(part.haloNodeStart[h]);
      auto const end = part.haloNode.begin() + static_cast<std::ptrdiff_t>(part.haloNodeStart[h + 1]);
      for (std::size_t i = part.faceStart[f]; i < part.faceStart[f + 1]; ++i) {
        EXPECT_EQ(std::count(begin, end, part.faceNode[i]), 1);
      }
    }
    int nExpected = 0;
    for (Period const& period : mesh.periods) nExpected += 2 * static_cast<int>(period.faces.size());
    EXPECT_EQ(nPeriodic, nExpected);
  }
}

TEST(MeshPartPeriods, ShiftedNodesStandOnceAndApartFromOthers) {
  for (auto const& [name, mesh] : PeriodicMeshes()) {
    SCOPED_TRACE(name);
    MeshPart const part = Whole(mesh);
    std::set<Point> places(part.points.begin(), part.points.end());
    EXPECT_EQ(places.size(), part.points.size());
    EXPECT_TRUE(std::is_sorted(part.globalNode.begin(), part.globalNode.end()));
  }
}

}  // namespace
}  // namespace reference_host
