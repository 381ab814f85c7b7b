#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "tests/support/compare/SameBits.h"
#include "tests/support/mesh/BoxMesh.h"
#include "tests/support/rbf_face/FaceBed.h"
#include "tests/support/rbf_face/FaceTables.h"

// At which point each cell number and each face stands, the measures of the mesh, the tree's table, the search for
// the nearest cell and the sort by distance.

namespace zyn_test::collation_test {
namespace {

/// An operator whose cells are in the tree.
struct Collated {
  explicit Collated(TestMesh const& plan, int faceType = kInner, FaceSettings const& settings = {})
      : bed(plan), stages(bed.object, faceType, settings) {
    stages.FillTree();
  }
  CZynFaceRBFInternalObject* operator->() { return &bed.object; }

  FaceBed bed;
  Stages stages;
};

AssertionResult StandsAt(Collated& o, int c, Point point, int kind) {
  if (AssertionResult same = SamePoint("point", point, o->m_pNodeTable[c]); !same) return same;
  if (o->m_pNodeTable[c].tag != c) return ::testing::AssertionFailure() << "tag " << o->m_pNodeTable[c].tag;
  if (o->m_pCellType[c] != kind) return ::testing::AssertionFailure() << "kind " << o->m_pCellType[c];
  return ::testing::AssertionSuccess();
}

// --------------------------------------------------------------------------------------------------- the points

TEST(FaceCollation, InteriorCellsStandAtTheirCentres) {
  Collated o(TwoCubes());
  EXPECT_TRUE(StandsAt(o, 1, {-0.5, 0.0, 0.0}, 1));
  EXPECT_TRUE(StandsAt(o, 2, {0.5, 0.0, 0.0}, 1));
}

TEST(FaceCollation, BoundarySideCellsStandAtTheirFaceCentres) {
  TestMesh const plan = SkewedCubesOfAllGroups();
  Collated o(plan);
  for (Group const group : {kWall, kInlet, kOutlet, kSymmetry})
    for (Face const& face : plan.Of(group)) EXPECT_TRUE(StandsAt(o, face.other, face.centre, group));
}

TEST(FaceCollation, HaloCellsStandAtTheirOwnCentres) {
  TestMesh const plan = SkewedCubesOfAllGroups();
  Collated o(plan);
  for (Face const& face : plan.Of(kPartition)) {
    Point const centre = plan.centres[static_cast<std::size_t>(face.other)];
    EXPECT_TRUE(StandsAt(o, face.other, centre, kPartition));
    EXPECT_NE(face.centre.y, centre.y);
  }
}

TEST(FaceCollation, CellThatNoFaceNamesStaysAtTheOriginWithKind0) {
  TestMesh plan = TwoCubes();
  int const lonely = plan.AddOuterCell({7.0, 8.0, 9.0});
  Collated o(plan);
  EXPECT_TRUE(SamePoint("point", {0.0, 0.0, 0.0}, o->m_pNodeTable[lonely]));
  EXPECT_EQ(0, o->m_pCellType[lonely]);
}

TEST(FaceCollation, CellOfSeveralFacesTakesTheLastOfThePasses) {
  TestMesh plan = TwoCubes();
  int const ghost = plan.Of(kOutlet)[0].other;
  plan.Of(kWall)[0].other = ghost;      // walls come before outlets,
  plan.Of(kSymmetry)[0].other = ghost;  // symmetry comes last
  Collated o(plan);
  EXPECT_TRUE(StandsAt(o, ghost, plan.Of(kSymmetry)[0].centre, kSymmetry));
}

TEST(FaceCollation, HaloCellOfTwoPartitionFacesKeepsItsPointAndMarksTheVerticesOfBoth) {
  TestMesh plan = TwoCubes();
  ASSERT_EQ(2U, plan.Of(kPartition).size());
  int const halo = plan.Of(kPartition)[0].other;
  plan.Of(kPartition)[1].other = halo;
  Collated o(plan);
  EXPECT_TRUE(StandsAt(o, halo, plan.centres[static_cast<std::size_t>(halo)], kPartition));
  for (Face const& face : plan.Of(kPartition))
    for (int const v : face.nodes) EXPECT_TRUE(o->m_BoundaryNode[v]);
}

// ------------------------------------------------------------------------------------------- the target points

AssertionResult TargetIs(Collated& o, int i, Point point) {
  return SamePoint("target", point, IBCnode(o->m_FaceX[i], o->m_FaceY[i], o->m_FaceZ[i], 0));
}

TEST(FaceCollation, TargetsAreTheFaceCentresExceptOnPartitionFaces) {
  TestMesh const plan = SkewedCubesOfAllGroups();
  for (Group const group : {kInner, kWall, kInlet, kOutlet, kSymmetry}) {
    Collated o(plan, group);
    std::vector<Face> const& faces = plan.Of(group);
    for (std::size_t f = 0; f < faces.size(); ++f)
      EXPECT_TRUE(TargetIs(o, static_cast<int>(f) + 1, faces[f].centre)) << group;
  }
}

// The faces' own centres are not even lent.
TEST(FaceCollation, TargetOfAPartitionFaceIsTheCentreOfItsHaloCell) {
  TestMesh const plan = SkewedCubesOfAllGroups();
  Collated o(plan, kPartition);
  std::vector<Face> const& faces = plan.Of(kPartition);
  for (std::size_t f = 0; f < faces.size(); ++f)
    EXPECT_TRUE(TargetIs(o, static_cast<int>(f) + 1, plan.centres[static_cast<std::size_t>(faces[f].other)]));
}

TEST(FaceCollation, EveryTypeCollatesTheWholeMesh) {
  TestMesh const plan = SkewedCubesOfAllGroups();
  for (Group const group : kGroups) {
    Collated o(plan, group);
    PlainFaceOperator plain = o.bed.Plain(group, {});
    plain.Collate();
    EXPECT_TRUE(SameCollation(plain, o.bed.object)) << group;
    EXPECT_TRUE(SameConnectivity(plain, o.bed.object)) << group;
  }
}

// ------------------------------------------------------------------------------------------------- the measures

TEST(FaceCollation, BoundsAreThoseOfInnerCellsAndVertices) {
  TestMesh plan = TwoCubes();
  plan.centres[1].x = -9.0;              // a cell at an inner face
  plan.nodes[1].y = -8.0;                // a vertex
  plan.centres[3] = {50.0, 50.0, 50.0};  // a boundary-side cell
  Collated o(plan);
  EXPECT_EQ(-9.0, o->Xmin);
  EXPECT_EQ(1.0, o->Xmax);
  EXPECT_EQ(-8.0, o->Ymin);
  EXPECT_EQ(0.5, o->Ymax);
  EXPECT_EQ(-0.5, o->Zmin);
  EXPECT_EQ(0.5, o->Zmax);
}

// Each of the two cells of an inner face may be the one that lies outermost, in each direction.
TEST(FaceCollation, BoundsTakeBothCellsOfAnInnerFaceInEveryDirection) {
  for (std::size_t const cell : {1U, 2U}) {
    for (double const far : {-9.0, 9.0}) {
      for (double Point::*const axis : {&Point::x, &Point::y, &Point::z}) {
        TestMesh plan = TwoCubes();
        plan.centres[cell].*axis = far;
        Collated o(plan);
        Point const high = {o->Xmax, o->Ymax, o->Zmax}, low = {o->Xmin, o->Ymin, o->Zmin};
        EXPECT_EQ(far, far > 0.0 ? high.*axis : low.*axis) << cell;
      }
    }
  }
}

TEST(FaceCollation, MeanDistanceIsThatBetweenTheCellsOfInnerFaces) {
  Collated o(Box({0.0, 1.0, 2.0, 5.0}, {0.0, 1.0}, {0.0, 1.0}));  // centres at 0.5, 1.5, 3.5
  EXPECT_EQ(1.5, o->MeanDistance);
}

TEST(FaceCollation, MeanDistanceAddsTheSquaresOfYXZInThisOrder) {
  // y*y + x*x + z*z = (1 + 2^-53) + 2^-53 rounds to 1; with x and z first it would not.
  double const small = std::ldexp(1.0, -27) * std::sqrt(2.0);
  TestMesh plan = TwoCubes();
  plan.centres[1] = {0.0, 0.0, 0.0};
  plan.centres[2] = {small, 1.0, small};
  Collated o(plan);
  double const y2x2 = 1.0 + small * small;
  EXPECT_TRUE(SameBits(std::sqrt(y2x2 + small * small), o->MeanDistance));
}

TEST(FaceCollation, MeshWithoutInnerFacesHasNoMeanDistance) {
  TestMesh const plan = Box({0.0, 1.0}, {0.0, 1.0}, {0.0, 1.0});
  Collated o(plan, kWall);
  EXPECT_TRUE(std::isnan(o->MeanDistance));
}

TEST(FaceCollation, MostVerticesAreThoseOfACellOrOfABoundaryFace) {
  Collated cubes(TwoCubes());
  EXPECT_EQ(8, cubes->MaxLnods);
  for (Group const group : {kWall, kInlet, kOutlet, kPartition, kSymmetry}) {
    TestMesh plan = TwoCubes();
    plan.Of(group)[0].nodes = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
    Collated o(plan);
    EXPECT_EQ(10, o->MaxLnods) << group;
  }
  TestMesh inner = TwoCubes();
  inner.Of(kInner)[0].nodes = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
  Collated o(inner);
  EXPECT_EQ(8, o->MaxLnods) << "inner faces do not count";
  o->MaxLnods = 99;
  EXPECT_EQ(1, o->SetFaceNodeCollation());
  EXPECT_EQ(8, o->MaxLnods) << "an earlier number does not count";
}

TEST(FaceCollation, BoundaryNodesAreThoseOfFacesThatAreNotInner) {
  TestMesh const plan = CubesOfAllGroups();
  Collated o(plan);
  for (int v = 1; v <= plan.NNode(); ++v) {
    Point const p = plan.nodes[static_cast<std::size_t>(v)];
    auto const inside = [](double x) { return x == 1.0 || x == 2.0; };
    EXPECT_EQ(!(inside(p.x) && inside(p.y) && inside(p.z)), o->m_BoundaryNode[v]) << v;
  }
}

// ----------------------------------------------------------------------------------------------------- the tree

TEST(FaceTree, EntriesAreTheCellsThemselves) {
  TestMesh const plan = SkewedCubesOfAllGroups();
  Collated o(plan);
  EXPECT_EQ(0, o->m_pTreeCell[0]);
  for (int c = 1; c <= plan.NCell(); ++c) EXPECT_EQ(c, o->m_pTreeCell[c]);
}

TEST(FaceTree, BuildingTheBoundaryTreeAnswers0) {
  Collated o(SkewedCubesOfAllGroups());
  EXPECT_EQ(0, o->SetBoundaryCellADTress());
}

// --------------------------------------------------------------------------------------------- the nearest cell

TEST(FaceNearestCell, OfACellsOwnPointIsThatCell) {
  TestMesh const plan = SkewedCubesOfAllGroups();
  Collated o(plan);
  for (int c = 1; c <= plan.NCell(); ++c) {
    IBCnode const& p = o->m_pNodeTable[c];
    EXPECT_EQ(c, o->Search_ClosestCellID_byNode(p.x, p.y, p.z));
  }
}

TEST(FaceNearestCell, MayBeABoundarySideOrHaloCell) {
  TestMesh const plan = CubesOfAllGroups();
  Collated o(plan);
  for (Group const group : {kWall, kInlet, kOutlet, kPartition, kSymmetry}) {
    int const c = plan.Of(group)[4].other;
    IBCnode const& p = o->m_pNodeTable[c];
    EXPECT_EQ(c, o->Search_ClosestCellID_byNode(p.x + 0.125, p.y - 0.125, p.z + 0.0625)) << group;
  }
}

TEST(FaceNearestCell, IsFoundFarOutsideTheMesh) {
  Collated o(TwoCubes());
  int const outlet = o.bed.host.Description().Of(kOutlet)[0].other;
  EXPECT_EQ(outlet, o->Search_ClosestCellID_byNode(37.5, 0.0, 0.0));
}

// A cube holds corners that are farther away than what lies just outside a face of it: the nearest cell of the
// first cube that holds any counts, not the nearest of all.
TEST(FaceNearestCell, IsSoughtInTheFirstCubeThatHoldsAnyCell) {
  TestMesh plan;
  for (int n = 0; n < 4; ++n) plan.AddNode({0.0, 0.0, 0.0});
  plan.AddCell({0.9, 0.9, 0.9}, {1, 2, 3, 4});   // at 1.56, in the cube of half-width 1
  plan.AddCell({-1.1, 0.0, 0.0}, {1, 2, 3, 4});  // at 1.10, outside it
  plan.AddCell({-1.1, 50.0, 0.0}, {1, 2, 3, 4});
  plan.AddCell({-1.1, 51.0, 0.0}, {1, 2, 3, 4});  // one unit from cell 3: the mean distance
  Face face;
  face.cv = 3, face.other = 4, face.nodes = {1, 2, 3}, face.area = {0.0, 1.0, 0.0};
  plan.AddFace(kInner, face);
  plan.ListCellsAroundNodes();
  Collated o(plan);
  ASSERT_EQ(1.0, o->MeanDistance);
  EXPECT_EQ(1, o->Search_ClosestCellID_byNode(0.0, 0.0, 0.0));
}

TEST(FaceNearestCell, OfAMeshWithoutInnerFacesIsStillFound) {
  TestMesh const plan = Box({0.0, 1.0}, {0.0, 1.0}, {0.0, 1.0});
  Collated o(plan, kWall);
  EXPECT_EQ(1, o->Search_ClosestCellID_byNode(0.5, 0.5, 0.625));
  EXPECT_EQ(plan.Of(kOutlet)[0].other, o->Search_ClosestCellID_byNode(25.0, 0.5, 0.5));
}

TEST(FaceNearestCell, OfAMeshWithCellsOnTopOfEachOtherIsStillFound) {
  TestMesh plan = TwoCubes();
  plan.centres[2] = plan.centres[1];
  Collated o(plan);
  ASSERT_EQ(0.0, o->MeanDistance);
  int const outlet = plan.Of(kOutlet)[0].other;
  EXPECT_EQ(outlet, o->Search_ClosestCellID_byNode(0.9, 0.0, 0.0));
}

// ------------------------------------------------------------------------------------------------------ the sort

struct Sorted {
  std::vector<int> ids;
  std::vector<double> distances;
};

Sorted Sort(std::vector<int> ids, std::vector<double> distances) {
  CZynFaceRBFInternalObject object;
  object.Dis_Sorting(ids.data(), distances.data(), static_cast<int>(ids.size()));
  return {ids, distances};
}

TEST(FaceSort, IsByDistanceWithTheNumbersMovingAlong) {
  Sorted const s = Sort({1, 2, 3, 4}, {3.0, 1.0, 4.0, 2.0});
  EXPECT_EQ((std::vector<int>{2, 4, 1, 3}), s.ids);
  EXPECT_EQ((std::vector<double>{1.0, 2.0, 3.0, 4.0}), s.distances);
}

TEST(FaceSort, LeavesEqualDistancesInTheirFoundOrder) {
  EXPECT_EQ((std::vector<int>{4, 7, 2, 9, 1, 3}),
            Sort({9, 4, 1, 7, 3, 2}, {2.0, 1.0, 2.0, 1.0, 2.0, 1.0}).ids);
  EXPECT_EQ((std::vector<int>{5, 6, 8}), Sort({5, 6, 8}, {0.0, -0.0, 0.0}).ids);
}

TEST(FaceSort, OfFewerThanTwoDoesNothing) {
  CZynFaceRBFInternalObject object;
  int ids[] = {8, 6};
  double distances[] = {2.0, 1.0};
  for (int const n : {1, 0, -3}) object.Dis_Sorting(ids, distances, n);
  EXPECT_EQ(8, ids[0]);
  EXPECT_EQ(2.0, distances[0]);
  object.Dis_Sorting(nullptr, nullptr, 0);
}

TEST(FaceSort, LeavesWhatLiesBeyondItsEnd) {
  CZynFaceRBFInternalObject object;
  int ids[] = {1, 2, 3};
  double distances[] = {3.0, 2.0, 1.0};
  object.Dis_Sorting(ids, distances, 2);
  EXPECT_EQ((std::vector<int>{2, 1, 3}), (std::vector<int>(ids, ids + 3)));
  EXPECT_EQ(1.0, distances[2]);
}

// With a distance that is not a number, no comparison moves it, and what stands before it does not pass.
TEST(FaceSort, DoesNotMoveADistanceThatIsNotANumber) {
  Sorted const s = Sort({1, 2, 3, 4, 5}, {3.0, 2.0, std::nan(""), 2.0, 1.0});
  EXPECT_EQ((std::vector<int>{2, 1, 3, 5, 4}), s.ids);
}

}  // namespace
}  // namespace zyn_test::collation_test
