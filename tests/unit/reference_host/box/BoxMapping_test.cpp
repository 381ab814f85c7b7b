#include "reference_host/box/BoxMapping.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>

#include "reference_host/box/BoxMesh.h"
#include "reference_host/mesh/CellGeometry.h"

namespace reference_host {

TEST(BoxMapping, LeavesAPlainBoxAloneToTheLastBit) {
  BoxMapping const mapping(ParseBoxSpec("box:7,5,3"));
  Point const place = {0.1, 0.2 / 3, 1.0 / 7};
  EXPECT_EQ(mapping.Map(place), place);
}

TEST(BoxMapping, StretchMakesTheFirstCellsSoManyTimesFlatter) {
  // dy'/dY at Y = 0, with Y so small that the curvature does not show: b Y / 2 relative.
  double const small = 1e-9;
  for (double const stretch : {1.5, 10.0, 1000.0, 1e6}) {
    BoxSpec spec = ParseBoxSpec("box:4,4,4");
    spec.stretch = stretch;
    EXPECT_NEAR(BoxMapping(spec).Map({0.5, small, 0.5})[1] / small, 1.0 / stretch, 1e-7 / stretch);
  }
}

TEST(BoxMapping, StretchKeepsOrderEndsAndTheOtherAxes) {
  BoxSpec spec = ParseBoxSpec("box:4,2,4");  // y up to 0.5
  spec.stretch = 1000.0;
  BoxMapping const mapping(spec);
  EXPECT_EQ((Point{0.25, 0.0, 0.75}), mapping.Map({0.25, 0.0, 0.75}));
  EXPECT_EQ((Point{0.25, 0.5, 0.75}), mapping.Map({0.25, 0.5, 0.75}));
  for (double y = 0.0, last = -1.0; y <= 0.5; y += 0.125) {
    double const mapped = mapping.Map({0.25, y, 0.75})[1];
    EXPECT_GT(mapped, last);
    last = mapped;
  }
}

TEST(BoxMapping, SkewMovesAlongXByTheSines) {
  BoxSpec spec = ParseBoxSpec("box:2,1,2");  // y up to 0.5
  spec.skew = 0.2;
  BoxMapping const mapping(spec);
  // All three sines are 1 at X = 1/2, Y = 1/4, Z = 1/4.
  EXPECT_NEAR(0.7, mapping.Map({0.5, 0.125, 0.25})[0], 1e-15);
  EXPECT_NEAR(0.3, mapping.Map({0.5, 0.125, 0.75})[0], 1e-15);
  EXPECT_EQ(0.125, mapping.Map({0.5, 0.125, 0.25})[1]);
  for (Point const surface :
       {Point{0.0, 0.1, 0.3}, Point{1.0, 0.1, 0.3}, Point{0.3, 0.5, 0.3}, Point{0.3, 0.1, 1.0}})
    EXPECT_EQ(mapping.Map(surface), surface);
}

TEST(BoxMapping, StrongestSkewTurnsNoCellOver) {
  for (std::string const shape : {"hex", "tet", "prism"}) {
    FaceMesh const mesh = MakeBox(ParseBoxSpec("box:12,12,12:" + shape + ":skew=0.29"));
    CellGeometry const cells = ComputeCellGeometry(mesh, mesh.nCells);
    EXPECT_GT(*std::min_element(cells.volume.begin(), cells.volume.end()), 0.0) << shape;
  }
}

}  // namespace reference_host
