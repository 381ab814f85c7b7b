#include "foundation/CellPositions.h"

#include <gtest/gtest.h>

#include <vector>

#include "foundation/BoundingBox.h"

// Two interior cells with one face between them, and one face in every group; every coordinate is a number of its own.
//
//   cell      1  2  3     4      5       6         7
//   kind      interior  wall  inlet  outlet  symmetry  halo

namespace zyn_test::cell_positions_test {
namespace {

class OnePartitionFace : public CPartitionFace_DLL {
 public:
  int NParInterFace() override { return 1; }
  int* ijParCV() override { return nullptr; }
  int* ijPar() override { return halo_; }
  double* ijParSx() override { return nullptr; }
  double* ijParSy() override { return nullptr; }
  double* ijParSz() override { return nullptr; }
  double* ijParxc() override { return nullptr; }
  double* ijParyc() override { return nullptr; }
  double* ijParzc() override { return nullptr; }
  double* ParInterFace_Lamda() override { return nullptr; }
  int* FaceType_Partition() override { return nullptr; }

 private:
  int halo_[2] = {-1, 7};
};

/// Elements 0 are numbers that must not be seen.
struct SmallMesh {
  int cv[2] = {-1, 1}, other[2] = {-1, 2};
  double x[8] = {-99, 1, 3, 10, 20, 30, 40, 50}, y[8] = {-99, 2, 8, 11, 21, 31, 41, 51},
         z[8] = {-99, 4, 13, 12, 22, 32, 42, 52};
  int wall[2] = {-1, 3}, inlet[2] = {-1, 4}, outlet[2] = {-1, 5}, symmetry[2] = {-1, 6};
  double wallX[2] = {-99, 0.5}, wallY[2] = {-99, 2.5}, wallZ[2] = {-99, 5.5};
  double inletX[2] = {-99, 2.5}, inletY[2] = {-99, 9.5}, inletZ[2] = {-99, 3.5};
  double outletX[2] = {-99, 100}, outletY[2] = {-99, 200}, outletZ[2] = {-99, 300};

  CZYN3DFiniteVolumeMesh Record() {
    CZYN3DFiniteVolumeMesh m;
    m.NInnerCells = 2, m.NCell = 7;
    m.xc = x, m.yc = y, m.zc = z;
    m.NInnerFaces = 1, m.ijCV = cv, m.ij = other;
    m.NWall = 1, m.ijWall = wall, m.ijWallxc = wallX, m.ijWallyc = wallY, m.ijWallzc = wallZ;
    m.NInlet = 1, m.ijInlet = inlet, m.ijInletxc = inletX, m.ijInletyc = inletY, m.ijInletzc = inletZ;
    m.NOutlet = 1, m.ijOutlet = outlet, m.ijOutletxc = outletX, m.ijOutletyc = outletY,
    m.ijOutletzc = outletZ;
    m.NSymmetry = 1, m.ijSymmetry = symmetry;
    return m;
  }
};

TEST(CellPositions, CellsHaveTheirCentresAndGhostsTheirFaces) {
  SmallMesh arrays;
  CZYN3DFiniteVolumeMesh const mesh = arrays.Record();
  OnePartitionFace partition;
  struct Place {
    int c;
    double x, y, z;
    FaceKind kind;
    bool operator==(Place const& o) const {
      return c == o.c && x == o.x && y == o.y && z == o.z && kind == o.kind;
    }
  };
  std::vector<Place> places;
  PlaceCells(mesh, partition, [&](int c, double x, double y, double z, FaceKind kind) {
    places.push_back({c, x, y, z, kind});
  });
  ASSERT_EQ(6U, places.size());
  EXPECT_TRUE(places[0] == (Place{1, 1, 2, 4, FaceKind::Inner}));
  EXPECT_TRUE(places[1] == (Place{2, 3, 8, 13, FaceKind::Inner}));
  EXPECT_TRUE(places[2] == (Place{3, 0.5, 2.5, 5.5, FaceKind::Wall}));
  EXPECT_TRUE(places[3] == (Place{4, 2.5, 9.5, 3.5, FaceKind::Inlet}));
  EXPECT_TRUE(places[4] == (Place{5, 100, 200, 300, FaceKind::Outlet}));
  EXPECT_TRUE(places[5] == (Place{7, 50, 51, 52, FaceKind::Partition}));
}

TEST(CellPositions, ExtentIsThatOfInnerCellsWallsAndInlets) {
  SmallMesh arrays;
  MeshExtent const extent = MeasureExtent(arrays.Record());
  EXPECT_EQ(0.5, extent.box.xmin);  // of the wall
  EXPECT_EQ(3.0, extent.box.xmax);
  EXPECT_EQ(2.0, extent.box.ymin);
  EXPECT_EQ(9.5, extent.box.ymax);  // of the inlet
  EXPECT_EQ(3.5, extent.box.zmin);  // of the inlet
  EXPECT_EQ(13.0, extent.box.zmax);
  EXPECT_EQ(11.0, extent.meanDistance);  // sqrt(6^2 + 2^2 + 9^2)
}

}  // namespace
}  // namespace zyn_test::cell_positions_test
