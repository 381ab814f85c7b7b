#include "reference_host/mesh/CellGeometry.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "reference_host/mesh/Vector3.h"
#include "tests/unit/reference_host/TestMeshes.h"
#include "tests/unit/reference_host/mesh/ExpectPoint.h"

namespace reference_host {
namespace {

using namespace test_meshes;

double TotalVolume(FaceMesh const& mesh) {
  double sum = 0;
  for (double const v : ComputeCellGeometry(mesh, mesh.nCells).volume) sum += v;
  return sum;
}

/// Volume inside the boundary faces: sum of S . apex / 3, apexes seen from a point nearby.
double VolumeInsideBoundary(FaceMesh const& mesh, Point const& origin) {
  FaceTable const faces(mesh);
  double sum = 0;
  for (int f = 0; f < faces.nFaces(); ++f) {
    if (faces.Neighbour(f) >= 0) continue;
    FaceFan const fan = ComputeFaceFan(faces.points, faces.Nodes(f), faces.NodeCount(f));
    sum += Dot(fan.area, Difference(fan.apex, origin)) / 3;
  }
  return sum;
}

TEST(CellGeometry, UnitCubeHasVolumeOneAndItsCentreInTheMiddle) {
  CellGeometry const cells = ComputeCellGeometry(HexBox(1, 1, 1), 1);
  EXPECT_EQ(1.0, cells.volume[0]);
  ExpectPoint(cells.centre[0], {0.5, 0.5, 0.5}, 1e-16);
}

TEST(CellGeometry, TetrahedronHasTheMeanOfItsCorners) {
  Builder builder;
  for (Point const& p : {Point{0, 0, 0}, Point{3, 0, 0}, Point{0, 6, 0}, Point{1, 2, 4}}) builder.AddPoint(p);
  builder.AddCell(Tet(0, 1, 2, 3));
  CellGeometry const cells = ComputeCellGeometry(builder.Finish(), 1);
  EXPECT_NEAR(12, cells.volume[0], 1e-14);
  ExpectPoint(cells.centre[0], {1, 2, 1}, 1e-15);
}

TEST(CellGeometry, PyramidHasItsCentreAtAQuarterOfItsHeight) {
  Builder builder;
  for (Point const& p : {Point{0, 0, 0}, Point{2, 0, 0}, Point{2, 2, 0}, Point{0, 2, 0}, Point{1, 1, 3}}) {
    builder.AddPoint(p);
  }
  builder.AddCell(Pyramid({0, 1, 2, 3}, 4));
  CellGeometry const cells = ComputeCellGeometry(builder.Finish(), 1);
  EXPECT_NEAR(4, cells.volume[0], 1e-15);
  ExpectPoint(cells.centre[0], {1, 1, 0.75}, 1e-15);
}

TEST(CellGeometry, CastellatedCellHasTheGeometryOfItsBox) {
  CellGeometry const cells = ComputeCellGeometry(PolyBox(1), 9);
  EXPECT_NEAR(0.5, cells.volume[0], 4e-16);  // a few roundings: fifths and ninths are not binary
  ExpectPoint(cells.centre[0], {0.25, 0.5, 0.5}, 4e-16);
}

TEST(CellGeometry, WarpedFaceSharesOutVolumeAndMomentExactly) {
  // A cube with one warped inner face in the middle: whatever their shapes, the volumes of the cells add up
  // to that of the cube, and their moments to that of the cube.
  FaceMesh const mesh = Perturbed(HexBox(3, 3, 3), 0.12);
  CellGeometry const cells = ComputeCellGeometry(mesh, mesh.nCells);
  double volume = 0;
  Point moment = {0, 0, 0};
  for (int c = 0; c < mesh.nCells; ++c) {
    volume += cells.volume[c];
    moment = Sum(moment, Scaled(cells.volume[c], cells.centre[c]));
  }
  EXPECT_NEAR(1, volume, 4e-15);
  ExpectPoint(moment, {0.5, 0.5, 0.5}, 4e-15);
}

TEST(CellGeometry, EveryCellIsClosedOnEveryKindOfMesh) {
  for (auto const& [name, plain] : AllMeshes()) {
    SCOPED_TRACE(name);
    for (double const shift : {0.0, 1000.0}) {
      FaceMesh const mesh = Shifted(plain, shift);
      FaceTable const faces(mesh);
      std::vector<Point> sum(mesh.nCells, Point{0, 0, 0});
      std::vector<double> size(mesh.nCells, 0);
      for (int f = 0; f < mesh.nFaces(); ++f) {
        Point const area = ComputeFaceGeometry(mesh.points, faces.Nodes(f), faces.NodeCount(f)).area;
        for (int const side : {0, 1}) {
          int const c = side == 0 ? mesh.owner[f] : mesh.neighbour[f];
          if (c < 0) continue;
          sum[c] = Sum(sum[c], Scaled(side == 0 ? 1 : -1, area));
          size[c] += Length(area);
        }
      }
      double worst = 0;
      for (int c = 0; c < mesh.nCells; ++c) worst = std::max(worst, Length(sum[c]) / size[c]);
      EXPECT_LE(worst, 3e-16) << "shift " << shift;  // a few roundings of vectors of that size
    }
  }
}

TEST(CellGeometry, VolumesArePositiveAndAddUpOnEveryKindOfMesh) {
  for (auto const& [name, mesh] : AllMeshes()) {
    SCOPED_TRACE(name);
    CellGeometry const cells = ComputeCellGeometry(mesh, mesh.nCells);
    EXPECT_GT(*std::min_element(cells.volume.begin(), cells.volume.end()), 0);
    EXPECT_NEAR(1, TotalVolume(mesh), 4e-15);
  }
}

TEST(CellGeometry, VolumesAddUpWithAWarpedSurfaceFarFromTheOrigin) {
  for (auto const& [name, plain] : AllMeshes()) {
    SCOPED_TRACE(name);
    FaceMesh const mesh = Shifted(Perturbed(plain, 0.02, true), 1000);
    // Apexes and tops are rounded to 1e-13, but the inner ones cancel. What is left are the tops of cells
    // that are closed to 1e-16 only, and the rounded apexes of the surface in both sums alike.
    EXPECT_NEAR(TotalVolume(mesh), VolumeInsideBoundary(mesh, {1000.5, 1000.5, 1000.5}), 1e-14);
  }
}

TEST(CellGeometry, CentresMoveWithAShiftedMesh) {
  for (auto const& [name, mesh] : AllMeshes()) {
    SCOPED_TRACE(name);
    FaceMesh const shifted = Shifted(mesh, 1024);
    CellGeometry const near = ComputeCellGeometry(mesh, mesh.nCells);
    CellGeometry const far = ComputeCellGeometry(shifted, mesh.nCells);
    for (int c = 0; c < mesh.nCells; ++c) {
      // The shifted nodes are rounded to 1.1e-13; a centre may feel a few of them.
      ExpectPoint(Difference(far.centre[c], {1024, 1024, 1024}), near.centre[c], 1e-12);
    }
  }
}

TEST(CellGeometry, ComputesTheFirstCellsAloneAsInTheWhole) {
  FaceMesh const mesh = Perturbed(HexBox(3, 2, 2), 0.05);
  CellGeometry const all = ComputeCellGeometry(mesh, mesh.nCells);
  CellGeometry const some = ComputeCellGeometry(mesh, 5);
  ASSERT_EQ(5u, some.volume.size());
  for (int c = 0; c < 5; ++c) {
    EXPECT_EQ(some.volume[c], all.volume[c]);
    EXPECT_EQ(some.centre[c], all.centre[c]);
  }
}

TEST(CellGeometry, TurnedCellHasNegativeVolume) {
  FaceMesh mesh = HexBox(1, 1, 1);
  for (int f = 0; f < mesh.nFaces(); ++f) {
    std::reverse(mesh.faceNode.begin() + static_cast<std::ptrdiff_t>(mesh.faceStart[f]),
                 mesh.faceNode.begin() + static_cast<std::ptrdiff_t>(mesh.faceStart[f + 1]));
  }
  CellGeometry const cells = ComputeCellGeometry(mesh, 1);
  EXPECT_EQ(-1.0, cells.volume[0]);
  ExpectPoint(cells.centre[0], {0.5, 0.5, 0.5}, 0);
}

TEST(CellGeometry, NoCellsGiveNothing) {
  CellGeometry const cells = ComputeCellGeometry(FaceMesh(), 0);
  EXPECT_TRUE(cells.volume.empty());
  EXPECT_TRUE(cells.centre.empty());
}

}  // namespace
}  // namespace reference_host
