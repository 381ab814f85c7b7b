#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "tests/support/mesh/LatticeMesh.h"
#include "tests/support/mesh/SmallMeshes.h"
#include "tests/support/rbf_cell/CellBed.h"
#include "tests/support/rbf_cell/TableComparison.h"
#include "tests/support/watch/FlushedOutput.h"
#include "tests/support/watch/SettingsFolder.h"

// The two-node weights at faces: five operations and their drivers, against the plain form, and their oddities.

namespace zyn_test::face_flux_test {
namespace {

using Object = CZynRBFInternalObject;

/// An operator with face tables for two nodes a face, and the plain form beside it.
struct FaceBed : CellBed {
  explicit FaceBed(TestMesh const& cellMesh, double span = 500.0, int shapeNormalize = 0)
      : CellBed(cellMesh, Settings(std::to_string(span), std::to_string(shapeNormalize))),
        mesh(cellMesh),
        plain(mesh, span, shapeNormalize) {
    SetUp();
    EXPECT_EQ(0, object->faceToCellconnection_memoryallocate(0));
    plain.Collate();
  }

  /// Runs a driver. @return what it printed
  std::string Run(int (Object::*driver)()) {
    return Printed([&] { EXPECT_EQ(1, (object->*driver)()); });
  }

  /// Clears the plain form's maxima and derives all faces of a group.
  std::vector<std::vector<Triple>> PlainRows(std::vector<Face> const& faces) {
    plain.residuals.x = plain.residuals.y = plain.residuals.z = 0.0;
    std::vector<std::vector<Triple>> rows;
    for (Face const& face : faces) rows.push_back(plain.DeriveFace(face, static_cast<int>(rows.size()) + 1));
    return rows;
  }

  TestMesh const mesh;
  PlainCellOperator plain;
};

std::string ThreeMaxima(std::string const& title, double span, Residuals const& r) {
  char line[500];
  std::snprintf(line, sizeof line, "Span = %f, MAXResidual_X = %e, MAXResidual_Y = %e, MAXResidual_Z = %e\n",
                span, r.x, r.y, r.z);
  return title + line;
}

std::string OneMaximum(double span, double normal) {
  char line[500];
  std::snprintf(line, sizeof line, "Span = %f, MAX_Weithting_Residual_Normal = %e\n", span, normal);
  return std::string("Inner face RBF flux Interpolation is done.\n") + line;
}

TestMesh SomeMesh(Cells cells = Cells::Tetrahedra, std::uint64_t seed = 1) {
  LatticeOptions options;
  options.cells = cells;
  options.seed = seed;
  return LatticeMesh(options);
}

/// A driver, its group of faces, its table and its first line.
struct Driver {
  char const* title;
  int (Object::*run)();
  std::vector<Face> TestMesh::*faces;
  RBFnode** Object::*table;
};

Driver const kInletDriver = {"Inelt face RBF flux Interpolation is done.\n",
                             &Object::DeriveRBFweighting_InletfaceFlux, &TestMesh::inlet,
                             &Object::m_ppRBFInletFaceCoef};
Driver const kOutletDriver = {"Outlet face flux Interpolation is done.\n",
                              &Object::DeriveRBFweighting_OutletfaceFlux, &TestMesh::outlet,
                              &Object::m_ppRBFOutletFaceCoef};
Driver const kPartitionDriver = {"Part inter face RBF flux Interpolation is done.\n",
                                 &Object::DeriveRBFweighting_PartInterfaceFlux, &TestMesh::partition,
                                 &Object::m_ppRBFPartInterFaceCoef};

void ExpectDriverEqualsPlainForm(Driver const& driver) {
  for (double const span : {500.0, 5.0, 1.5}) {
    for (int const shape : {0, 1}) {
      FaceBed bed(SomeMesh(), span, shape);
      auto const rows = bed.PlainRows(bed.mesh.*driver.faces);
      ASSERT_FALSE(rows.empty());
      EXPECT_EQ(ThreeMaxima(driver.title, span, bed.plain.residuals), bed.Run(driver.run));
      EXPECT_TRUE(SameFaceRows(rows, bed.object->*driver.table)) << span << " " << shape;
      EXPECT_TRUE(SameResiduals(bed.plain, *bed.object)) << span << " " << shape;
      EXPECT_TRUE(bed.host.InputsUntouched());
    }
  }
}

TEST(InletFaceWeights, EqualThePlainFormAndArePrintedInTheseWords) {
  ExpectDriverEqualsPlainForm(kInletDriver);
}
TEST(OutletFaceWeights, EqualThePlainFormAndArePrintedInTheseWords) {
  ExpectDriverEqualsPlainForm(kOutletDriver);
}
TEST(PartitionFaceWeights, EqualThePlainFormAndArePrintedInTheseWords) {
  ExpectDriverEqualsPlainForm(kPartitionDriver);
}

TEST(InnerFaceWeights, EqualThePlainFormAndArePrintedInTheseWords) {
  for (double const span : {500.0, 5.0, 1.5}) {
    for (int const shape : {0, 1}) {
      FaceBed bed(SomeMesh(), span, shape);
      std::vector<Triple> rows;
      for (std::size_t f = 1; f <= bed.mesh.inner.size(); ++f)
        rows.push_back(bed.plain.DeriveInnerFace(static_cast<int>(f)));
      EXPECT_EQ(OneMaximum(span, bed.plain.residuals.normal),
                bed.Run(&Object::DeriveRBFweighting_InnerfaceFlux));
      for (std::size_t f = 1; f <= rows.size(); ++f) {
        double const* const row = bed.object->m_ppRBFInnerFaceFlux[f];
        EXPECT_TRUE(SameValue("element 0", 0.0, row[0]));
        for (std::size_t k = 0; k < 3; ++k) EXPECT_TRUE(SameValue("weight", rows[f - 1][k], row[k + 1])) << f;
      }
      EXPECT_TRUE(
          SameValue("maximum", bed.plain.residuals.normal, bed.object->MAX_Weithting_Residual_Normal));
      EXPECT_EQ(bed.plain.residuals.worst, bed.object->m_iWorstElement);
    }
  }
}

TEST(WallFaceWeights, EqualThePlainFormWhenDerivedFaceByFace) {
  for (int const shape : {0, 1}) {
    FaceBed bed(SomeMesh(), 5.0, shape);
    auto const rows = bed.PlainRows(bed.mesh.wall);
    bed.object->MAXResidual_X = bed.object->MAXResidual_Y = bed.object->MAXResidual_Z = 0.0;
    for (std::size_t f = 1; f <= rows.size(); ++f)
      EXPECT_EQ(1, bed.object->DeriveWallFaceCoefficentBysolveDQfullMatrix(static_cast<int>(f)));
    EXPECT_TRUE(SameFaceRows(rows, bed.object->m_ppRBFWallFaceCoef));
    EXPECT_TRUE(SameResiduals(bed.plain, *bed.object));
  }
}

TEST(FaceWeights, OfOneFaceLeaveAllOtherRows) {
  FaceBed bed(SomeMesh());
  EXPECT_EQ("", Printed([&] { EXPECT_EQ(1, bed.object->DeriveOutletFaceCoefficentBysolveDQfullMatrix(2)); }));
  EXPECT_NE(0, bed.object->m_ppRBFOutletFaceCoef[2][1].id);
  EXPECT_TRUE(SameRecord("row 1", Triple{}, 0, bed.object->m_ppRBFOutletFaceCoef[1][1]));
  EXPECT_TRUE(SameRecord("inlet", Triple{}, 0, bed.object->m_ppRBFInletFaceCoef[2][1]));
}

// Faces beyond the partition faces count nothing there; their two weights need their room all the same.
TEST(FaceWeights, OfInnerFacesAreTheSameInTheRowsOfAllNodes) {
  TestMesh const mesh = SomeMesh();
  ASSERT_GT(mesh.inner.size(), mesh.partition.size());
  FaceBed twoNodes(mesh);
  twoNodes.Run(&Object::DeriveRBFweighting_InnerfaceFlux);
  CellBed allNodes(mesh);
  allNodes.SetUp();
  EXPECT_EQ(0, allNodes.object->faceToCellconnection_memoryallocate(1));
  Printed([&] { EXPECT_EQ(1, allNodes.object->DeriveRBFweighting_InnerfaceFlux()); });
  for (int f = 1; f <= static_cast<int>(mesh.inner.size()); ++f)
    for (int k : {1, 2})
      EXPECT_TRUE(SameValue("weight", twoNodes.object->m_ppRBFInnerFaceFlux[f][k],
                            allNodes.object->m_ppRBFInnerFaceFlux[f][k]))
          << f;
}

TEST(FaceWeights, MessagesAreFlushed) {
  FaceBed bed(SomeMesh());
  for (auto const driver :
       {&Object::DeriveRBFweighting_InnerfaceFlux, &Object::DeriveRBFweighting_InletfaceFlux}) {
    std::string arrived;
    {
      FlushedOutput const output;
      (bed.object->*driver)();
      arrived = output.Arrived();
    }
    ASSERT_FALSE(arrived.empty());
    EXPECT_EQ('\n', arrived.back());
    EXPECT_NE(std::string::npos, arrived.find("Span = 500.000000"));
  }
}

TEST(FaceWeights, WithoutFacesPrintZeros) {
  FaceBed bed(SevenPoints());
  EXPECT_EQ(ThreeMaxima(kInletDriver.title, 500.0, Residuals()), bed.Run(kInletDriver.run));
  EXPECT_EQ(ThreeMaxima(kOutletDriver.title, 500.0, Residuals()), bed.Run(kOutletDriver.run));
  EXPECT_EQ(ThreeMaxima("Wall face flux Interpolation is done.\n", 500.0, Residuals()),
            bed.Run(&Object::DeriveRBFweighting_WallfaceFlux));
  EXPECT_EQ(OneMaximum(500.0, 0.0), bed.Run(&Object::DeriveRBFweighting_InnerfaceFlux));
}

TEST(FaceWeights, AllocateTheirRowsInMode1Too) {
  FaceBed bed(SomeMesh());
  auto const rows = bed.PlainRows(bed.mesh.partition);
  CellBed mode1(bed.mesh, Settings("500", "0"));
  mode1.SetUp();
  mode1.object->faceToCellconnection_memoryallocate(1);
  Printed([&] { mode1.object->DeriveRBFweighting_PartInterfaceFlux(); });
  for (std::size_t f = 1; f <= rows.size(); ++f) {
    ASSERT_GE(mode1.object->m_ppRBFPartInterFaceConn[f][0], 1);
    for (std::size_t k = 1; k <= 2; ++k)
      EXPECT_TRUE(SameRecord("weight", rows[f - 1][k - 1], static_cast<int>(f),
                             mode1.object->m_ppRBFPartInterFaceCoef[f][k]));
  }
}

// ------------------------------------------------------------------------------------------- the wall driver

/// A mesh with the given numbers of wall and inlet faces.
TestMesh WallsAndInlets(std::size_t nWall, std::size_t nInlet) {
  TestMesh mesh = SomeMesh();
  EXPECT_GE(mesh.wall.size(), nWall);
  EXPECT_GE(mesh.inlet.size(), nInlet);
  mesh.wall.resize(nWall);
  mesh.inlet.resize(nInlet);
  return mesh;
}

void ExpectWallDriverDerivesInlets(TestMesh const& mesh, std::size_t nFace) {
  FaceBed bed(mesh, 5.0);
  std::vector<Face> const inlets(mesh.inlet.begin(), mesh.inlet.begin() + static_cast<std::ptrdiff_t>(nFace));
  auto const rows = bed.PlainRows(inlets);
  EXPECT_EQ(ThreeMaxima("Wall face flux Interpolation is done.\n", 5.0, bed.plain.residuals),
            bed.Run(&Object::DeriveRBFweighting_WallfaceFlux));
  EXPECT_TRUE(SameFaceRows(rows, bed.object->m_ppRBFInletFaceCoef));
  EXPECT_TRUE(SameResiduals(bed.plain, *bed.object));
  for (std::size_t f = nFace + 1; f <= mesh.inlet.size(); ++f)
    EXPECT_TRUE(SameRecord("inlet", Triple{}, 0, bed.object->m_ppRBFInletFaceCoef[f][1])) << f;
  for (std::size_t f = 1; f <= mesh.wall.size(); ++f)
    for (std::size_t k = 0; k < 4; ++k)
      EXPECT_TRUE(SameRecord("wall", Triple{}, 0, bed.object->m_ppRBFWallFaceCoef[f][k])) << f;
}

TEST(WallDriver, WritesInletWeightsAtWallFaceNumbers) {
  ExpectWallDriverDerivesInlets(WallsAndInlets(3, 5), 3);
}

TEST(WallDriver, StopsAtTheLastInletFace) { ExpectWallDriverDerivesInlets(WallsAndInlets(5, 3), 3); }

TEST(WallDriver, WithoutInletFacesDerivesNothing) { ExpectWallDriverDerivesInlets(WallsAndInlets(5, 0), 0); }

// ---------------------------------------------------------------------------------------------- the maxima

TEST(FaceResiduals, DriversClearOnlyTheirOwnMaxima) {
  FaceBed bed(SomeMesh());
  Object& o = *bed.object;
  auto const fill = [&o] {
    o.MAXResidual_X = o.MAXResidual_Y = o.MAXResidual_Z = o.MAX_Weithting_Residual_Normal = 1e30;
  };
  fill();
  bed.Run(&Object::DeriveRBFweighting_InnerfaceFlux);
  EXPECT_EQ(1e30, o.MAXResidual_X);
  EXPECT_EQ(1e30, o.MAXResidual_Y);
  EXPECT_EQ(1e30, o.MAXResidual_Z);
  EXPECT_NE(1e30, o.MAX_Weithting_Residual_Normal);
  for (auto const driver : {kInletDriver.run, kOutletDriver.run, kPartitionDriver.run,
                            &Object::DeriveRBFweighting_WallfaceFlux}) {
    fill();
    bed.Run(driver);
    EXPECT_NE(1e30, o.MAXResidual_X);
    EXPECT_NE(1e30, o.MAXResidual_Y);
    EXPECT_NE(1e30, o.MAXResidual_Z);
    EXPECT_EQ(1e30, o.MAX_Weithting_Residual_Normal);
  }
}

// At Span 5 the multiplier of an inlet face is far from zero, the sum of its two weights is not.
TEST(FaceResiduals, LeaveTheMultiplierOut) {
  FaceBed bed(SomeMesh(), 5.0);
  bed.Run(kInletDriver.run);
  Residuals largest;
  for (std::size_t f = 1; f <= bed.mesh.inlet.size(); ++f) {
    RBFnode const* const row = bed.object->m_ppRBFInletFaceCoef[f];
    largest.x = std::fmax(largest.x, row[1].x + row[2].x);
    largest.y = std::fmax(largest.y, row[1].y + row[2].y);
    largest.z = std::fmax(largest.z, row[1].z + row[2].z);
  }
  EXPECT_EQ(largest.x, bed.object->MAXResidual_X);
  EXPECT_EQ(largest.y, bed.object->MAXResidual_Y);
  EXPECT_EQ(largest.z, bed.object->MAXResidual_Z);
}

TEST(FaceResiduals, OfInnerFacesAreTheLargestMultiplierWithItsSign) {
  FaceBed bed(SomeMesh(), 5.0);
  bed.Run(&Object::DeriveRBFweighting_InnerfaceFlux);
  double largest = 0.0;
  for (std::size_t f = 1; f <= bed.mesh.inner.size(); ++f)
    largest = std::fmax(largest, bed.object->m_ppRBFInnerFaceFlux[f][3]);
  EXPECT_GT(largest, 0.0);
  EXPECT_EQ(largest, bed.object->MAX_Weithting_Residual_Normal);
}

// --------------------------------------------------------------------------------------------- single faces

/// Cells 1 and 2 at -1/2 and 1/2 along an axis (0, 1, 2), and the face between them.
TestMesh TwoCellsAlong(int axis) {
  TestMesh mesh;
  auto const at = [axis](double t) {
    return Point{axis == 0 ? t : 0.0, axis == 1 ? t : 0.0, axis == 2 ? t : 0.0};
  };
  mesh.AddInteriorCell(at(-0.5));
  mesh.AddInteriorCell(at(0.5));
  mesh.JoinInterior(1, 2);
  mesh.inner[0].area = at(4.0);
  return mesh;
}

// Two nodes at distance 1 around the face, h = 1/2, Span 4: c = 2. The slope at each node is +-56/2 (5/2 + 2)
// (3/2)^5 / 2^8, the matrix holds 3 and kernel(1/2) = 0.32421875, so the weights are -+slope / (3 - kernel).
TEST(InnerFaceWeights, OfTwoNodesAreThoseOfTheSystemByHand) {
  double const slope = 0.5 * 56.0 * (2.5 + 2.0) * std::pow(1.5, 5) / 256.0;
  double const weight = slope / (3.0 - 0.32421875);
  for (int axis = 0; axis < 3; ++axis) {
    FaceBed bed(TwoCellsAlong(axis), 4.0);
    EXPECT_EQ(1, bed.object->DeriveInnerFaceCoefficentBysolveDQfullMatrix(1));
    double const* const row = bed.object->m_ppRBFInnerFaceFlux[1];
    EXPECT_NEAR(-weight, row[1], 1e-14 * weight);
    EXPECT_NEAR(weight, row[2], 1e-14 * weight);
    EXPECT_NEAR(0.0, row[3], 1e-14 * weight);
  }
}

TEST(InnerFaceWeights, TakeTheNormalFromTheAreaWhateverItsSize) {
  FaceBed bed(TwoCellsAlong(0), 4.0);
  TestMesh larger = TwoCellsAlong(0);
  larger.inner[0].area = {1024.0, 0.0, 0.0};
  FaceBed other(larger, 4.0);
  bed.object->DeriveInnerFaceCoefficentBysolveDQfullMatrix(1);
  other.object->DeriveInnerFaceCoefficentBysolveDQfullMatrix(1);
  for (int k = 1; k <= 3; ++k)
    EXPECT_TRUE(SameValue("weight", bed.object->m_ppRBFInnerFaceFlux[1][k],
                          other.object->m_ppRBFInnerFaceFlux[1][k]));
}

TEST(InnerFaceWeights, OfAFaceWithoutAreaAreZeroNotNotANumber) {
  TestMesh mesh = TwoCellsAlong(0);
  mesh.inner[0].area = {0.0, 0.0, 0.0};
  FaceBed bed(mesh, 4.0);
  bed.object->DeriveInnerFaceCoefficentBysolveDQfullMatrix(1);
  for (int k = 1; k <= 3; ++k) EXPECT_EQ(0.0, bed.object->m_ppRBFInnerFaceFlux[1][k]);
}

TEST(InnerFaceWeights, OfAFaceWithoutAreaAlongOneAxisEqualThePlainForm) {
  for (int axis = 0; axis < 3; ++axis) {
    TestMesh mesh = TwoCellsAlong(axis);
    mesh.Centre(2) = {mesh.Centre(2).x + 0.1, mesh.Centre(2).y + 0.2, mesh.Centre(2).z + 0.3};
    FaceBed bed(mesh, 4.0);
    Triple const expected = bed.plain.DeriveInnerFace(1);
    bed.object->DeriveInnerFaceCoefficentBysolveDQfullMatrix(1);
    for (std::size_t k = 0; k < 3; ++k)
      EXPECT_TRUE(SameValue("weight", expected[k], bed.object->m_ppRBFInnerFaceFlux[1][k + 1]));
  }
}

TEST(InnerFaceWeights, ShapeNormalisedFormReplacesAZeroExtentByAMillionth) {
  TestMesh mesh = TwoCellsAlong(0);
  mesh.inner[0].area = {1.0, 2.0, 3.0};
  FaceBed bed(mesh, 4.0, 1);
  Triple const expected = bed.plain.DeriveInnerFace(1);
  bed.object->DeriveInnerFaceCoefficentBysolveDQfullMatrix(1);
  for (std::size_t k = 0; k < 3; ++k) {
    EXPECT_FALSE(std::isnan(bed.object->m_ppRBFInnerFaceFlux[1][k + 1]));
    EXPECT_TRUE(SameValue("weight", expected[k], bed.object->m_ppRBFInnerFaceFlux[1][k + 1]));
  }
}

TEST(OtherFaceWeights, ShapeNormalisedFormDividesByAZeroExtent) {
  TestMesh mesh = TwoCellsAlong(0);
  mesh.AddSide(kInlet, 1, {-1.0, 0.0, 0.0}, {-1.5, 0.0, 0.0});
  FaceBed bed(mesh, 4.0, 1);
  bed.Run(kInletDriver.run);
  RBFnode const* const row = bed.object->m_ppRBFInletFaceCoef[1];
  EXPECT_TRUE(std::isnan(row[1].x) && std::isnan(row[1].y) && std::isnan(row[1].z));
  EXPECT_EQ(0.0, bed.object->MAXResidual_X) << "a NaN is never above a maximum";
  auto const rows = bed.PlainRows(mesh.inlet);
  EXPECT_TRUE(SameFaceRows(rows, bed.object->m_ppRBFInletFaceCoef));
}

TEST(OtherFaceWeights, PlainFormDoesNotLookAtTheExtents) {
  TestMesh mesh = TwoCellsAlong(0);
  mesh.AddSide(kInlet, 1, {-1.0, 0.0, 0.0}, {-1.5, 0.0, 0.0});
  FaceBed bed(mesh, 4.0, 0);
  bed.Run(kInletDriver.run);
  EXPECT_GT(bed.object->m_ppRBFInletFaceCoef[1][1].x, 0.0) << "the interior cell is on the side of +x";
  EXPECT_EQ(bed.object->m_ppRBFInletFaceCoef[1][1].x, -bed.object->m_ppRBFInletFaceCoef[1][2].x);
}

// The side cell stands at the face's centre, so that its right-hand sides are -0.0: of the slope d at the cell,
// with kernel values 3 and k, the weights are d / (2 (3 - k)) and its negative.
TEST(InletFaceWeights, SecondNodeStandsAtTheFaceCentre) {
  TestMesh mesh = TwoCellsAlong(0);
  mesh.AddSide(kInlet, 1, {-1.5, 0.0, 0.0}, {9.0, 9.0, 9.0});  // at distance 1 from cell 1, h = 1
  FaceBed bed(mesh, 2.0);
  bed.Run(kInletDriver.run);
  double const slope = 56.0 * (5.0 + 2.0) * 1.0 / 256.0;  // c = 2
  double const weight = slope / (2.0 * (3.0 - 0.32421875));
  EXPECT_NEAR(weight, bed.object->m_ppRBFInletFaceCoef[1][1].x, 1e-14);
  EXPECT_NEAR(-weight, bed.object->m_ppRBFInletFaceCoef[1][2].x, 1e-14);
}

// Single precision would show here: three of its roundings are 1e-7 of the weight.
TEST(FaceWeights, RightHandSidesKeepDoublePrecision) {
  TestMesh mesh = TwoCellsAlong(0);
  mesh.AddSide(kInlet, 1, {-1.2, 0.0, 0.0}, {9.0, 9.0, 9.0});
  FaceBed bed(mesh, 3.0);
  bed.Run(kInletDriver.run);
  double const h = 0.7, c = 3.0 * h, s = h / c;
  double const slope = h * 56.0 * (5.0 * h + c) * std::pow(c - h, 5) / std::pow(c, 8);
  double const kernel = std::pow(1.0 - s, 6) * (35.0 * s * s + 18.0 * s + 3.0);
  ASSERT_GT(std::fabs(slope - static_cast<double>(static_cast<float>(slope))), 1e-10 * slope);
  double const weight = slope / (2.0 * (3.0 - kernel));
  EXPECT_NEAR(weight, bed.object->m_ppRBFInletFaceCoef[1][1].x, 1e-13 * weight);
}

TEST(FaceWeights, OfTwoNodesAtOnePointEqualThePlainForm) {
  TestMesh mesh = TwoCellsAlong(0);
  mesh.AddSide(kOutlet, 1, mesh.Centre(1), {9.0, 9.0, 9.0});
  for (int const shape : {0, 1}) {
    FaceBed bed(mesh, 5.0, shape);
    auto const rows = bed.PlainRows(mesh.outlet);
    bed.Run(kOutletDriver.run);
    EXPECT_TRUE(SameFaceRows(rows, bed.object->m_ppRBFOutletFaceCoef));
    EXPECT_TRUE(SameResiduals(bed.plain, *bed.object));
  }
}

TEST(FaceWeightsDeathTest, WithoutRowsReachANullRow) {
  EXPECT_DEATH(
      {
        CellBed bed(SomeMesh());
        bed.SetUp();
        bed.object->faceToCellconnection_memoryallocate(2);
        bed.object->DeriveRBFweighting_InletfaceFlux();
      },
      "");
}

}  // namespace
}  // namespace zyn_test::face_flux_test
