#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "tests/support/compare/SameBits.h"
#include "tests/support/mesh/BoxMesh.h"
#include "tests/support/rbf_face/FaceBed.h"
#include "tests/support/rbf_face/FaceTables.h"

// The rows of coefficients: closed forms of small systems, what each routine adds where, and what it leaves alone.

namespace zyn_test::coefficients_test {
namespace {

using Row = std::vector<int>;

// --------------------------------------------------------------------------------------------------- closed forms

// Both kernels and the first one's slope over its argument, with extended precision and powers of the library, as
// functions of the distance and the support radius c.
long double C4(long double r, long double c) {
  long double const s = r / c;
  return std::pow(1.0L - s, 6.0L) * (35.0L * s * s + 18.0L * s + 3.0L);
}

/// d kernel / d d_a = this times d_a.
long double C4SlopeFactor(long double r, long double c) {
  long double const s = r / c;
  return -56.0L * std::pow(1.0L - s, 5.0L) * (5.0L * s + 1.0L) / (c * c);
}

long double C2(long double r, long double c) {
  long double const s = r / c;
  return std::pow(1.0L - s, 4.0L) * (4.0L * s + 1.0L);
}

// With Span 2 the matrices below have condition numbers below 100, so that the stored numbers agree to 1e-13.
constexpr double kSpan = 2.0;
constexpr double kRoundOff = 1e-13;

/// Sets up to the coefficients of a method; `change` may alter the stencils before they are used.
struct Derived {
  template <typename Change>
  Derived(TestMesh const& plan, int faceType, FaceSettings const& settings, Change change)
      : bed(plan), stages(bed.object, faceType, settings) {
    stages.FindStencils();
    change(bed.object);
    stages.Derive();
  }
  Derived(TestMesh const& plan, int faceType, FaceSettings const& settings)
      : Derived(plan, faceType, settings, [](CZynFaceRBFInternalObject&) {}) {}
  CZynFaceRBFInternalObject* operator->() { return &bed.object; }

  /// Position of a cell in the stencil of face i.
  int PositionOf(int i, int cell) {
    for (int k = 1; k <= bed.object.m_ppFaceCellConn[i][0]; ++k)
      if (bed.object.m_ppFaceCellConn[i][k] == cell) return k;
    return 0;
  }

  FaceBed bed;
  Stages stages;
};

// ------------------------------------------------------------------------------------------------ methods 1 and 2

// Two cells at distance r on either side of the face, the same support c: by symmetry both value weights are w with
// (kernel(0) + kernel(2r)) w = kernel(r), and the slopes along x are opposite, (kernel(0) - kernel(2r)) g = slope
// of the kernel around the first cell at +r. There is no slope along y and z.
TEST(FaceCoefficients, OfTwoCellsAtEqualDistanceAreTheClosedForm) {
  Derived o(CubesOfAllGroups(), kInner, {2, kSpan, 2});
  int const i = 9;
  ASSERT_EQ(0.5, o->m_pFaceSupport[i]);
  long double const r = 0.5L, c = 2.0L * r;
  double const w = static_cast<double>(C4(r, c) / (C4(0, c) + C4(2 * r, c)));
  double const g = static_cast<double>(C4SlopeFactor(r, c) * r / (C4(0, c) - C4(2 * r, c)));
  int const low = o.PositionOf(i, 13), high = o.PositionOf(i, 14);
  for (int const k : {low, high}) {
    EXPECT_NEAR(w, o->m_ppFaceFiCoef[i][k], kRoundOff);
    EXPECT_NEAR(k == low ? g : -g, o->m_ppFaceGradCoef[i][k].x, kRoundOff);
    EXPECT_NEAR(0.0, o->m_ppFaceGradCoef[i][k].y, kRoundOff);
    EXPECT_NEAR(0.0, o->m_ppFaceGradCoef[i][k].z, kRoundOff);
    EXPECT_EQ(i, o->m_ppFaceGradCoef[i][k].tag);
  }
  EXPECT_LT(g, 0.0) << "the value falls where the lower cell's rises";
}

// One cell at distance r from the face: w = kernel(r) / kernel(0).
TEST(FaceCoefficients, OfOneCellAreTheClosedForm) {
  Derived o(CubesOfAllGroups(), kInner, {2, kSpan, 1});
  int const i = 9;
  ASSERT_EQ(1, o->m_ppFaceCellConn[i][0]);
  long double const r = 0.5L, c = 1.0L;
  EXPECT_NEAR(static_cast<double>(C4(r, c) / C4(0, c)), o->m_ppFaceFiCoef[i][1], kRoundOff);
  double const sign = o->m_ppFaceCellConn[i][1] == 13 ? 1.0 : -1.0;  // which side of the face it is on
  EXPECT_NEAR(sign * static_cast<double>(C4SlopeFactor(r, c) * r / C4(0, c)), o->m_ppFaceGradCoef[i][1].x,
              kRoundOff);
}

TEST(FaceCoefficients, AreThoseOfTheStencilAndSupportAsTheyStand) {
  Derived o(CubesOfAllGroups(), kInner, {2, kSpan, 2}, [](CZynFaceRBFInternalObject& object) {
    object.m_ppFaceCellConn[9][1] = 14;
    object.m_ppFaceCellConn[9][2] = 13;
    object.m_pFaceSupport[9] = 1.5;
  });
  long double const r = 0.5L, c = 3.0L;
  double const w = static_cast<double>(C4(r, c) / (C4(0, c) + C4(2 * r, c)));
  EXPECT_NEAR(w, o->m_ppFaceFiCoef[9][1], kRoundOff);
  EXPECT_GT(o->m_ppFaceGradCoef[9][1].x, 0.0) << "position 1 is the upper cell now";
}

TEST(FaceCoefficients, OfAnEmptyStencilAreNone) {
  Derived o(TwoCubes(), kInner, {2, 1000.0, 0});
  EXPECT_EQ(0, o->m_ppFaceCellConn[1][0]);
  EXPECT_EQ(1.0, o->fiMAX) << "the sum of no weights is 0";
  EXPECT_EQ(0.0, o->fiMAXRBF);
}

TEST(FaceCoefficients, OfMethods1And2CountNoFaceAsDone) {
  for (int const method : {1, 2}) {
    Derived o(SkewedCubesOfAllGroups(), kInner, {method, 50.0, 8});
    EXPECT_EQ(0, o->NFaceDone);
    EXPECT_GT(o->fiRMS, 0.0);
  }
}

// Two equal rows of the matrix: what the solve leaves is stored, and nobody says so.
TEST(FaceCoefficients, OfCellsAtOnePointAreStoredAsTheSolveLeavesThem) {
  TestMesh plan = CubesOfAllGroups();
  plan.centres[13] = plan.centres[14];
  for (int const method : {1, 2}) {
    FaceBed bed(plan);
    EXPECT_EQ("", bed.SetUp(kInner, {method, 100.0, 6}));
    PlainFaceOperator plain = bed.Plain(kInner, {method, 100.0, 6});
    plain.Run();
    EXPECT_TRUE(SameStencils(plain, bed.object));
    EXPECT_TRUE(SameCoefficients(plain, bed.object));
  }
}

// ------------------------------------------------------------------------------------------------------- method 3

/// The two cubes with nothing but the cells 1 and 2 around the vertices of their common face, and no boundary.
TestMesh TwoCubesAlone() {
  TestMesh plan = TwoCubes();
  for (Group const group : {kWall, kInlet, kOutlet, kPartition, kSymmetry}) plan.Of(group).clear();
  plan.centres.resize(3);
  for (auto& faces : plan.cellFaces)
    if (!faces.empty()) faces = {{kInner, 1}};
  plan.ListCellsAroundNodes();
  return plan;
}

// Face at 0, cells at (-1/2, 0, 0) and (1/2, 0, 0), vertices at (0, +-1/2, +-1/2), all within c = 2 sqrt(1/2).
// By symmetry all value weights of the cells are a and those of the vertices b:
//   a (k(0) + k(1)) + 4 b k(l) = k(1/2)                     l   from a cell to a vertex, sqrt(3)/2
//   2 a k(l) + b (k(0) + 2 k(1) + k(d)) = k(sqrt(1/2))      d   from a vertex to the opposite one, sqrt(2)
// and slopes along x are those of the two cells alone. A vertex has the two cells around it, both l away, its own
// support being 2 l: u (k'(0) + k'(1)) = k'(l). Both cells end with the value a + 4 b u.
struct SymmetricFace {
  long double const l = std::sqrt(0.75L), d = std::sqrt(2.0L), h = std::sqrt(0.5L), c = kSpan * h;
  long double const k0 = C4(0, c), k1 = C4(1, c), kl = C4(l, c), kd = C4(d, c);
  long double const rhsCell = C4(0.5L, c), rhsVertex = C4(h, c);
  long double const det = (k0 + k1) * (k0 + 2 * k1 + kd) - 8 * kl * kl;
  long double const a = (rhsCell * (k0 + 2 * k1 + kd) - 4 * kl * rhsVertex) / det;
  long double const b = ((k0 + k1) * rhsVertex - 2 * kl * rhsCell) / det;
  long double const u = C4(l, kSpan* l) / (C4(0, kSpan* l) + C4(1, kSpan* l));
  long double const slope = C4SlopeFactor(0.5L, c) * 0.5L / (k0 - k1);
};

TEST(FaceCoefficientsOverVertices, OfASymmetricFaceAreTheClosedForm) {
  Derived o(TwoCubesAlone(), kInner, {3, kSpan, 20});
  ASSERT_EQ((Row{1, 2}), RowOf(o->m_ppFaceCellConn[1]));
  SymmetricFace const f;
  for (int const k : {1, 2}) {
    EXPECT_NEAR(static_cast<double>(f.a + 4 * f.b * f.u), o->m_ppFaceFiCoef[1][k], kRoundOff);
    EXPECT_NEAR(static_cast<double>(k == 1 ? f.slope : -f.slope), o->m_ppFaceGradCoef[1][k].x, kRoundOff);
    EXPECT_NEAR(0.0, o->m_ppFaceGradCoef[1][k].y, kRoundOff);
    EXPECT_NEAR(0.0, o->m_ppFaceGradCoef[1][k].z, kRoundOff);
    EXPECT_EQ(0, o->m_ppFaceGradCoef[1][k].tag);
    EXPECT_EQ(0.0, o->m_ppFaceDnCoef[1][k]) << "stays as it was allocated";
  }
  EXPECT_EQ(1, o->NFaceDone);
}

TEST(FaceCoefficientsOverVertices, AddTheVerticesToWhatTheRowsHold) {
  Derived o(TwoCubesAlone(), kInner, {3, kSpan, 20}, [](CZynFaceRBFInternalObject& object) {
    object.m_ppFaceFiCoef[1][2] = 100.0;
    object.m_ppFaceGradCoef[1][1].SetData(200.0, 300.0, 400.0, 7);
  });
  SymmetricFace const f;
  EXPECT_NEAR(100.0 + static_cast<double>(f.a + 4 * f.b * f.u), o->m_ppFaceFiCoef[1][2], 1e-11);
  EXPECT_NEAR(200.0 + static_cast<double>(f.slope), o->m_ppFaceGradCoef[1][1].x, 1e-11);
  EXPECT_EQ(7, o->m_ppFaceGradCoef[1][1].tag);
}

TEST(VertexCoefficients, OfTwoCellsAtEqualDistanceAreTheClosedForm) {
  Derived o(TwoCubesAlone(), kInner, {3, kSpan, 20});
  SymmetricFace const f;
  double out[] = {-7.5, -7.5, -7.5, -7.5};
  EXPECT_EQ(1, o->DeriveFacefiBysolveDQfullMatrix_03(2, out));
  EXPECT_EQ(-7.5, out[0]);
  EXPECT_NEAR(static_cast<double>(f.u), out[1], kRoundOff);
  EXPECT_NEAR(static_cast<double>(f.u), out[2], kRoundOff);
  EXPECT_EQ(-7.5, out[3]);
}

TEST(VertexCoefficients, RaiseTheLargestErrorOfTheirSumStrictly) {
  Derived o(TwoCubesAlone(), kInner, {3, kSpan, 20});
  o->MAXerr = 0.0;
  o->MAXerrNodeID = 0;
  double out[3] = {};
  for (int const v : {5, 2, 8, 11}) o->DeriveFacefiBysolveDQfullMatrix_03(v, out);
  EXPECT_TRUE(SameBits(std::fabs(out[1] + out[2] - 1.0), o->MAXerr));
  EXPECT_EQ(5, o->MAXerrNodeID) << "the later ones have the same error";
  o->MAXerr = 2.0;
  o->DeriveFacefiBysolveDQfullMatrix_03(8, out);
  EXPECT_EQ(2.0, o->MAXerr);
  EXPECT_EQ(5, o->MAXerrNodeID);
}

TEST(VertexCoefficients, OfASharedVertexAreTheSameForEveryFace) {
  TestMesh const plan = SkewedCubesOfAllGroups();
  Derived o(plan, kInner, {3, 50.0, 20});
  PlainFaceOperator plain = o.bed.Plain(kInner, {3, 50.0, 20});
  plain.Collate();
  for (int v = 1; v <= plan.NNode(); ++v) {
    std::vector<double> once(100), again(100);
    o->DeriveFacefiBysolveDQfullMatrix_03(v, once.data());
    o->DeriveFacefiBysolveDQfullMatrix_03(v, again.data());
    std::vector<double> const expected = plain.VertexWeights(v);
    for (std::size_t k = 0; k < expected.size(); ++k) {
      EXPECT_TRUE(SameBits(expected[k], once[k + 1])) << v;
      EXPECT_TRUE(SameBits(expected[k], again[k + 1])) << v;
    }
  }
}

TEST(VertexCoefficients, FollowASpanThatIsChangedBetweenTwoCalls) {
  Derived o(TwoCubesAlone(), kInner, {3, kSpan, 20});
  long double const l = std::sqrt(0.75L), c = 5.0L * l;
  o->Span = 5.0;
  double out[3] = {};
  o->DeriveFacefiBysolveDQfullMatrix_03(2, out);
  EXPECT_NEAR(static_cast<double>(C4(l, c) / (C4(0, c) + C4(1, c))), out[1], 1e-12);
}

TEST(FaceCoefficientsOverVertices, TakeTheWorstVertexAsIfEachWereSolvedForEachFace) {
  for (Group const group : kGroups) {
    Derived o(SkewedCubesOfAllGroups(), group, {3, 50.0, 20});
    PlainFaceOperator plain = o.bed.Plain(group, {3, 50.0, 20});
    plain.Run();
    EXPECT_TRUE(SameReport(plain, o.bed.object)) << group;
    EXPECT_GT(o->MAXerrNodeID, 0) << group;
  }
}

// ------------------------------------------------------------------------------------------------------- method 4

// Cells at (-1/2, 0, 0) and (1/2, 1/4, 0) with the face at x = 1/8: P = (-1/2, 0, 0) is the first cell's centre, E =
// (1/2, 0, 0) is 1/4 from the second. D = 1, |F - E| = 3/8 and |F - P| = 5/8.
TestMesh SkewPair() {
  TestMesh plan = TwoCubesAlone();
  plan.centres[2].y = 0.25;
  plan.Of(kInner)[0].centre.x = 0.125;
  return plan;
}

struct SkewWeights {
  // Nodes X1, X2 apart by m; E is m1 from the first and m2 from the second, its support being m1.
  long double const m = std::sqrt(1.0625L), m1 = 1.0L, m2 = 0.25L, c = kSpan * m1;
  long double const p = C2(m, c), det = 1 - p * p;
  long double const e1 = (C2(m1, c) - p * C2(m2, c)) / det;
  long double const e2 = (C2(m2, c) - p * C2(m1, c)) / det;
};

TEST(FaceCoefficientsOverVirtualPoints, OfTwoCellsAreTheClosedForm) {
  Derived o(SkewPair(), kInner, {4, kSpan, 20});
  ASSERT_EQ((Row{1, 2}), RowOf(o->m_ppFaceCellConn[1]));
  ASSERT_EQ((std::vector<Row>{{1, 2}, {2, 1}}), RowsOf(o->m_pFaceRows[1]));
  SkewWeights const s;
  // The weights of P are 1 and 0.
  EXPECT_NEAR(static_cast<double>(0.375L + 0.625L * s.e1), o->m_ppFaceFiCoef[1][1], kRoundOff);
  EXPECT_NEAR(static_cast<double>(0.625L * s.e2), o->m_ppFaceFiCoef[1][2], kRoundOff);
  EXPECT_NEAR(static_cast<double>(s.e1 - 1.0L), o->m_ppFaceDnCoef[1][1], kRoundOff);
  EXPECT_NEAR(static_cast<double>(s.e2), o->m_ppFaceDnCoef[1][2], kRoundOff);
  EXPECT_EQ(0.0, o->m_ppFaceFiCoef[1][0]);
  EXPECT_EQ(1, o->NFaceDone);
}

TEST(FaceCoefficientsOverVirtualPoints, AreDividedByTheDistanceOfPAndE) {
  TestMesh plan = TwoCubesAlone();
  plan.centres[1].x = -1.5;
  plan.centres[2].x = 2.5;
  Derived o(plan, kInner, {4, kSpan, 20});
  EXPECT_NEAR(-0.25, o->m_ppFaceDnCoef[1][1], kRoundOff);
  EXPECT_NEAR(0.25, o->m_ppFaceDnCoef[1][2], kRoundOff);
  EXPECT_NEAR(0.625, o->m_ppFaceFiCoef[1][1], kRoundOff);
  EXPECT_NEAR(0.375, o->m_ppFaceFiCoef[1][2], kRoundOff);
}

double SumOfValues(CZynFaceRBFInternalObject const& object, int i) {
  double sum = 0.0;
  for (int k = 1; k <= object.m_ppFaceCellConn[i][0]; ++k) sum += object.m_ppFaceFiCoef[i][k];
  return sum;
}

// P = (-1/2, 0, 0), E = (1/2, 0, 0), both cells' centres: the weights of P and E sum to 1 but for round-off.
TEST(FaceCoefficientsOverVirtualPoints, SumToTheDistancesToPAndEOverTheirDistance) {
  for (double const x : {0.0, 0.25, -0.5, 0.75, -2.0}) {
    TestMesh plan = TwoCubesAlone();
    plan.Of(kInner)[0].centre.x = x;
    Derived o(plan, kInner, {4, kSpan, 20});
    double const expected = std::fabs(x - 0.5) + std::fabs(x + 0.5);
    EXPECT_NEAR(expected, SumOfValues(o.bed.object, 1), 1e-12) << x;
    if (std::fabs(x) <= 0.5) {
      EXPECT_EQ(1.0, expected);
    } else {
      EXPECT_GT(SumOfValues(o.bed.object, 1), 1.4) << "F is not between P and E";
    }
  }
}

// There is no term for constants: with a narrow support the weights sum to less.
TEST(FaceCoefficientsOverVirtualPoints, NeedNotSumTo1) {
  Derived narrow(SkewPair(), kInner, {4, kSpan, 20}), wide(SkewPair(), kInner, {4, 1000.0, 20});
  EXPECT_GT(std::fabs(SumOfValues(narrow.bed.object, 1) - 1.0), 1e-3);
  EXPECT_LT(std::fabs(SumOfValues(wide.bed.object, 1) - 1.0), 1e-3);
}

// A member is at most the support length from its virtual point, so two are at most twice that apart: divided by the
// span of 1000, every argument is near 0, far from the kernel's edge at 1.
TEST(FaceCoefficientsOverVirtualPoints, HaveKernelArgumentsNear0AtTheStandardSpan) {
  for (Group const group : kGroups) {
    FaceSettings const standard = {4, 1000.0, 20};
    FaceBed bed(SkewedCubesOfAllGroups());
    bed.SetUp(group, standard);
    PlainFaceOperator plain = bed.Plain(group, standard);
    plain.Run();
    EXPECT_GT(plain.largestArgument, 0.001) << group;
    EXPECT_LE(plain.largestArgument, 0.0020000001) << group;
    EXPECT_TRUE(SameCoefficients(plain, bed.object)) << group;
  }
}

// The feet of the cells on a line without a direction are nowhere, and so is what is interpolated there. The search
// around them ends, and the faces beside it have the rows that they have on the sound mesh.
TEST(FaceCoefficientsOverVirtualPoints, OfAFaceWithoutAreaAreNoNumbersAndDoNoHarmBesideIt) {
  for (Group const group : kGroups) {
    TestMesh plan = SkewedCubesOfAllGroups();
    Derived sound(plan, group, {});
    plan.Of(group)[4].area = {0.0, 0.0, 0.0};
    Derived spoilt(plan, group, {});
    IBCnode const* const points = spoilt->m_ppVirtualNode[5];
    bool const hasTwoFeet = group == kInner || group == kPartition;
    EXPECT_TRUE(std::isnan(points[1].x) && std::isnan(points[1].y) && std::isnan(points[1].z)) << group;
    EXPECT_EQ(hasTwoFeet, std::isnan(points[2].x) && std::isnan(points[2].y) && std::isnan(points[2].z))
        << group;

    Face const& face = plan.Of(group)[4];
    Row const members = RowOf(spoilt->m_ppFaceCellConn[5]);
    ASSERT_GE(members.size(), 2U) << group;
    EXPECT_EQ((Row{face.cv, face.other}), Row(members.begin(), members.begin() + 2)) << group;
    ASSERT_TRUE(std::isnan(SumOfValues(spoilt.bed.object, 5))) << group;
    EXPECT_TRUE(std::isnan(spoilt->m_ppFaceDnCoef[5][2])) << group;
    for (int i = 1; i <= spoilt->NFace; ++i) {
      if (i == 5) continue;
      ASSERT_EQ(RowOf(sound->m_ppFaceCellConn[i]), RowOf(spoilt->m_ppFaceCellConn[i])) << group << " " << i;
      for (int k = 1; k <= sound->m_ppFaceCellConn[i][0]; ++k) {
        EXPECT_TRUE(SameBits(sound->m_ppFaceFiCoef[i][k], spoilt->m_ppFaceFiCoef[i][k])) << group << " " << i;
        EXPECT_TRUE(SameBits(sound->m_ppFaceDnCoef[i][k], spoilt->m_ppFaceDnCoef[i][k])) << group << " " << i;
      }
    }
  }
}

TEST(FaceCoefficientsOverVirtualPoints, OnBoundaryFacesGiveTheValueRowsOfZeros) {
  for (Group const group : {kWall, kInlet, kOutlet, kSymmetry}) {
    for (double const span : {1000.0, kSpan}) {
      Derived o(SkewedCubesOfAllGroups(), group, {4, span, 20});
      for (int i = 1; i <= o->NFace; ++i)
        for (int k = 0; k <= o->m_ppFaceCellConn[i][0]; ++k)
          EXPECT_EQ(0.0, o->m_ppFaceFiCoef[i][k]) << group << " " << i;
    }
  }
}

// Unit cubes: P is the cell's centre, half a unit from the side. Its own weight is 1, and the side cell at position
// 2 takes the whole value of E.
TEST(FaceCoefficientsOverVirtualPoints, OnBoundaryFacesGiveTheNormalDifference) {
  for (Group const group : {kWall, kInlet, kOutlet, kSymmetry}) {
    Derived o(CubesOfAllGroups(), group, {4, kSpan, 20});
    for (int i = 1; i <= o->NFace; ++i) {
      EXPECT_NEAR(-2.0, o->m_ppFaceDnCoef[i][1], 1e-11) << group << " " << i;
      EXPECT_NEAR(2.0, o->m_ppFaceDnCoef[i][2], 1e-11) << group << " " << i;
      for (int k = 3; k <= o->m_ppFaceCellConn[i][0]; ++k)
        EXPECT_NEAR(0.0, o->m_ppFaceDnCoef[i][k], 1e-11) << group << " " << i;
    }
  }
}

TEST(FaceCoefficientsOverVirtualPoints, OnBoundaryFacesDoNotReadTheRowOfE) {
  TestMesh const plan = SkewedCubesOfAllGroups();
  Derived asItIs(plan, kWall, {4, kSpan, 20});
  Derived spoilt(plan, kWall, {4, kSpan, 20}, [](CZynFaceRBFInternalObject& object) {
    for (int i = 1; i <= object.NFace; ++i)
      for (int k = 1; k <= object.m_pFaceRows[i].GetValue(2, 0); ++k)
        object.m_pFaceRows[i].SetValue(2, k, std::numeric_limits<int>::max());
  });
  for (int i = 1; i <= asItIs->NFace; ++i)
    for (int k = 1; k <= asItIs->m_ppFaceCellConn[i][0]; ++k)
      EXPECT_TRUE(SameBits(asItIs->m_ppFaceDnCoef[i][k], spoilt->m_ppFaceDnCoef[i][k]));
}

// E is the halo cell's own point: its weight is 1, and all value comes from E.
TEST(FaceCoefficientsOverVirtualPoints, OnPartitionFacesAreThoseOfEAlone) {
  Derived o(CubesOfAllGroups(), kPartition, {4, kSpan, 20});
  for (int i = 1; i <= o->NFace; ++i) {
    EXPECT_NEAR(1.0, o->m_ppFaceFiCoef[i][2], 1e-11) << i;
    EXPECT_NEAR(0.0, o->m_ppFaceFiCoef[i][1], 1e-11) << i;
    for (int k = 3; k <= o->m_ppFaceCellConn[i][0]; ++k)
      EXPECT_NEAR(0.0, o->m_ppFaceFiCoef[i][k], 1e-11) << i;
    EXPECT_NEAR(-1.0, o->m_ppFaceDnCoef[i][1], 1e-11) << i;
    EXPECT_NEAR(1.0, o->m_ppFaceDnCoef[i][2], 1e-11) << i;
  }
}

/// The two cubes whose inlet's side cell stands where cell 2 does, with P and E at the centres of 1 and 2.
struct DroppedTwin {
  DroppedTwin() : bed(Plan()), stages(bed.object, kInner, {4, kSpan, 20}) {
    stages.FillTree();
    bed.object.m_ppVirtualNode[1][1].SetData(-0.5, 0.0, 0.0, 1);
    bed.object.m_ppVirtualNode[1][2].SetData(0.5, 0.0, 0.0, 2);
    int pair[] = {1, 2};
    EXPECT_EQ(11, bed.object.CountingVirtualNodeToCellconnectionNumber_By33(1, pair));
  }
  static TestMesh Plan() {
    TestMesh plan = TwoCubes();
    plan.Of(kInlet)[0].centre = plan.centres[2];
    return plan;
  }
  FaceBed bed;
  Stages stages;
};

// There are 11 members; the node at position 0 is the cell with that number, the symmetry's (0.5, 0, -0.5).
TEST(VirtualPointCoefficients, TakeTheNumberOfMembersForTheCellAtPosition0) {
  DroppedTwin twin;
  double asItIs[20] = {}, replaced[20] = {};
  EXPECT_EQ(1, twin.bed.object.DeriveFacefiBysolveDQfullMatrix_Virtual03(false, 1, 1, asItIs));
  ASSERT_EQ(0, twin.bed.object.m_pFaceRows[1].GetValue(1, 2));
  ASSERT_EQ(11, twin.bed.object.m_ppFaceCellConn[1][10]);
  twin.bed.object.m_pFaceRows[1].SetValue(1, 2, 10);
  twin.bed.object.DeriveFacefiBysolveDQfullMatrix_Virtual03(false, 1, 1, replaced);
  for (int k = 1; k <= 6; ++k) EXPECT_TRUE(SameBits(replaced[k], asItIs[k])) << k;
}

TEST(FaceCoefficientsOverVirtualPoints, PutTheWeightOfPosition0IntoTheUnusedElement) {
  DroppedTwin twin;
  CZynFaceRBFInternalObject& object = twin.bed.object;
  double w[20] = {};
  object.DeriveFacefiBysolveDQfullMatrix_Virtual03(false, 1, 1, w);
  object.DeriveFaceCoefficentBysolveDQfullMatrix_Virtual_Node(1);
  EXPECT_TRUE(SameBits(0.0 + w[2] * 0.5, object.m_ppFaceFiCoef[1][0]));
  EXPECT_TRUE(SameBits(0.0 - w[2] * 1.0, object.m_ppFaceDnCoef[1][0]));
  double sum = 0.0;
  for (int k = 1; k <= 11; ++k) sum += object.m_ppFaceFiCoef[1][k];
  EXPECT_TRUE(SameBits(std::fabs(1.0 - sum), object.fiMAX)) << "element 0 is in no sum";
}

TEST(VirtualPointCoefficients, OfCellsAreTheClosedForm) {
  Derived o(SkewPair(), kInner, {4, kSpan, 20});
  SkewWeights const s;
  double out[] = {-7.5, -7.5, -7.5, -7.5};
  EXPECT_EQ(1, o->DeriveFacefiBysolveDQfullMatrix_Virtual03(false, 1, 2, out));
  EXPECT_EQ(-7.5, out[0]);
  EXPECT_NEAR(static_cast<double>(s.e2), out[1], kRoundOff) << "the row of E begins with position 2";
  EXPECT_NEAR(static_cast<double>(s.e1), out[2], kRoundOff);
  EXPECT_EQ(-7.5, out[3]);
}

// The cell's two vertices at (0, +-1/2, 0) around P = (0, 0, 0): (1 + psi(1)) w = psi(1/2), with the support 1/2.
TEST(VirtualPointCoefficients, OfVerticesAreTheClosedForm) {
  TestMesh plan = TwoCubesAlone();
  int const low = plan.AddNode({0.0, -0.5, 0.0}), high = plan.AddNode({0.0, 0.5, 0.0});
  plan.cellNodes[1] = {low, high};
  Derived o(plan, kInner, {4, kSpan, 20});
  o->m_ppVirtualNode[1][1].SetData(0.0, 0.0, 0.0, 1);
  double out[] = {-7.5, -7.5, -7.5, -7.5};
  EXPECT_EQ(1, o->DeriveFacefiBysolveDQfullMatrix_Virtual03(true, 1, 1, out));
  double const w = static_cast<double>(C2(0.5L, 1.0L) / (1.0L + C2(1.0L, 1.0L)));
  EXPECT_NEAR(w, out[1], kRoundOff);
  EXPECT_NEAR(w, out[2], kRoundOff);
  EXPECT_EQ(-7.5, out[0]);
  EXPECT_EQ(-7.5, out[3]);
}

// --------------------------------------------------------------------------------- routines that no set-up takes

TEST(FaceCoefficientsOfThePair, ChangeNoTable) {
  TestMesh const plan = SkewedCubesOfAllGroups();
  for (int const method : {3, 4}) {
    Derived o(plan, kInner, {method, 50.0, 20});
    PlainFaceOperator plain = o.bed.Plain(kInner, {method, 50.0, 20});
    plain.Run();
    for (int i = 1; i <= o->NFace; ++i) EXPECT_EQ(1, o->DeriveFaceCoefficentBysolveDQfullMatrix_Cell_PE(i));
    EXPECT_TRUE(SameStencils(plain, o.bed.object));
    EXPECT_TRUE(SameStencilWork(plain, o.bed.object));
    EXPECT_TRUE(SameCoefficients(plain, o.bed.object));
    EXPECT_TRUE(SameReport(plain, o.bed.object));
  }
}

/// An operator whose face i has the rows that the vertices of both tied cells give.
struct OverTiedVertices {
  OverTiedVertices(TestMesh const& plan, int faceType, double span)
      : bed(plan),
        settings{3, span, 20},
        stages(bed.object, faceType, settings),
        plain(bed.Plain(faceType, settings)) {
    stages.FillTree();
    plain.Collate();
    plain.FillTree();
  }
  void Prepare(int i) {
    Face const& face =
        bed.host.Description().Of(static_cast<Group>(bed.object.iFaceType))[static_cast<std::size_t>(i - 1)];
    int pair[] = {face.cv, face.other};
    bed.object.Set_VirtualNode_Coord_and_ClosestCellID(bed.object.iFaceType, i, pair, face.area.x,
                                                       face.area.y, face.area.z);
    plain.PlaceVirtualPoints(i, {pair[0], pair[1]}, face.area);
    std::vector<int> vertices;
    for (int const k : {1, 2}) {
      Row const row = RowOf(bed.object.m_ppRBFlnods[bed.object.m_ppVirtualNode[i][k].tag]);
      vertices.insert(vertices.end(), row.begin(), row.end());
    }
    plain.StencilFromVertices(i, {pair[0], pair[1]}, vertices);
    vertices.insert(vertices.begin(), static_cast<int>(vertices.size()));
    bed.object.CountingNodeToCellconnectionNumber(i, pair, vertices.data());
  }
  CZynFaceRBFInternalObject* operator->() { return &bed.object; }

  FaceBed bed;
  FaceSettings settings;
  Stages stages;
  PlainFaceOperator plain;
};

TEST(FaceCoefficientsOverTiedVertices, EqualThePlainFormForEveryGroup) {
  for (Group const group : kGroups) {
    OverTiedVertices o(SkewedCubesOfAllGroups(), group, 50.0);
    for (int i = 1; i <= o->NFace; ++i) {
      o.Prepare(i);
      EXPECT_EQ(1, o->DeriveFaceCoefficentBysolveDQfullMatrix_Virtual_Node_30_03(i));
      o.plain.DeriveOverVerticesOfTiedCells(i);
      EXPECT_TRUE(SameRows(o.plain, o.bed.object, i)) << group << " " << i;
    }
    EXPECT_TRUE(SameReport(o.plain, o.bed.object)) << group;
    EXPECT_EQ(o->NFace, o->NFaceDone);
  }
}

/// Cells 1 and 2, each with one vertex of its own, around which stands the other cell too.
TestMesh OneVertexACell() {
  TestMesh plan = SkewPair();
  int const first = plan.AddNode({-0.5, 0.5, 0.0}), second = plan.AddNode({0.5, -1.0, 0.0});
  plan.cellNodes[1] = {first};
  plan.cellNodes[2] = {second};
  plan.nodeCells[static_cast<std::size_t>(first)] = {1, 2};
  plan.nodeCells[static_cast<std::size_t>(second)] = {1, 2};
  return plan;
}

// F at x = 1/8, |F - P| = 5/8, D = 1. Of a single vertex at any distance the weight is psi(1/2) = 3/16. The value
// row takes 3/16 * 5/8 for each of the two cells around each vertex, whatever their weights u; the normal row takes
// 3/16 * u, of P's vertex with a plus.
TEST(FaceCoefficientsOverTiedVertices, LeaveTheCellsWeightsOutOfTheValue) {
  OverTiedVertices o(OneVertexACell(), kInner, kSpan);
  o.Prepare(1);
  o->DeriveFaceCoefficentBysolveDQfullMatrix_Virtual_Node_30_03(1);
  double ofP[3] = {}, ofE[3] = {};
  o->DeriveFacefiBysolveDQfullMatrix_03(o->m_ppRBFlnods[1][1], ofP);
  o->DeriveFacefiBysolveDQfullMatrix_03(o->m_ppRBFlnods[2][1], ofE);
  for (int const k : {1, 2}) {
    EXPECT_NEAR(2 * 0.1875 * 0.625, o->m_ppFaceFiCoef[1][k], kRoundOff);
    EXPECT_NEAR(0.1875 * (ofP[k] - ofE[k]), o->m_ppFaceDnCoef[1][k], kRoundOff);
  }
  EXPECT_GT(o->m_ppFaceDnCoef[1][1], 0.01) << "of the opposite sign to method 4";
}

TEST(FaceCoefficientsOverTiedVertices, TakeTheSideCellAloneBeyondABoundaryFace) {
  OverTiedVertices o(CubesOfAllGroups(), kWall, kSpan);
  for (int i = 1; i <= o->NFace; ++i) {
    o.Prepare(i);
    // What the vertices of P's cell give comes first, then the side cell takes -1/D = -2.
    o.bed.object.m_ppFaceDnCoef[i][2] = 100.0;
    o->DeriveFaceCoefficentBysolveDQfullMatrix_Virtual_Node_30_03(i);
    double sum = 0.0;
    for (int k = 1; k <= o->m_ppFaceCellConn[i][0]; ++k) sum += o->m_ppFaceDnCoef[i][k];
    double ofP = 0.0;
    double w[20] = {}, u[100] = {};
    o->DeriveFacefiBysolveDQfullMatrix_Virtual03(true, i, 1, w);
    int const cell = o->m_ppVirtualNode[i][1].tag;
    for (int j = 1; j <= o->m_ppRBFlnods[cell][0]; ++j) {
      int const v = o->m_ppRBFlnods[cell][j];
      o->DeriveFacefiBysolveDQfullMatrix_03(v, u);
      for (int m = 1; m <= o->ppRBFiNodeConn[v][0]; ++m) ofP += w[j] * 2.0 * u[m];
    }
    EXPECT_NEAR(98.0 + ofP, sum, 1e-10) << i;
  }
}

}  // namespace
}  // namespace zyn_test::coefficients_test
