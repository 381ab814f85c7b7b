#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "tests/support/compare/SameBits.h"
#include "tests/support/host/GuardedArray.h"
#include "tests/support/mesh/BoxMesh.h"
#include "tests/support/rbf_face/FaceBed.h"
#include "tests/support/watch/AllocationCount.h"

// The sparse dot products: which elements are written, in which order sums run, and what comes out.

namespace zyn_test::application_test {
namespace {

using Array = GuardedArray<double>;

/// The five arrays of an application; the outputs begin with a value that must not stay, guarded at both ends.
struct Application {
  Application(FaceBed& bed, double value)
      : phi(bed.host.NCell(), value),
        face(bed.object.NFace, -7.5),
        a(bed.object.NFace, -7.5),
        b(bed.object.NFace, -7.5),
        c(bed.object.NFace, -7.5),
        bed_(bed) {}

  Application& Random() {
    std::mt19937_64 random(5);
    std::uniform_real_distribution<double> value(-1.0, 1.0);
    for (int cell = 1; cell <= phi.Size(); ++cell) phi[cell] = value(random);
    return *this;
  }
  Application& Run() {
    EXPECT_EQ(0,
              bed_.object.Multiply_FaceRBFCoefficent(phi.Data(), face.Data(), a.Data(), b.Data(), c.Data()));
    return *this;
  }
  bool GuardsIntact() const {
    return face.GuardsIntact() && a.GuardsIntact() && b.GuardsIntact() && c.GuardsIntact();
  }

  Array phi, face, a, b, c;

 private:
  FaceBed& bed_;
};

TEST(FaceApplication, WithoutFacesReturns0AndWritesNothing) {
  FaceBed fresh(TwoCubes());
  Array const before(4, -7.5);
  Array phi(12, 1.0), outputs[4] = {before, before, before, before};
  EXPECT_EQ(0, fresh.object.Multiply_FaceRBFCoefficent(phi.Data(), outputs[0].Data(), outputs[1].Data(),
                                                       outputs[2].Data(), outputs[3].Data()));
  for (Array const& output : outputs) EXPECT_TRUE(output.IdenticalTo(before));
  EXPECT_EQ(0, fresh.object.Multiply_FaceRBFCoefficent(nullptr, nullptr, nullptr, nullptr, nullptr));
}

TEST(FaceApplication, AfterASetUpOfAGroupWithoutFacesWritesNothing) {
  std::vector<double> const lines = {0.0, 1.0, 2.0};
  FaceBed bed(Box(lines, lines, lines, {kWall, kWall, kWall, kWall, kWall, kWall}));
  bed.SetUp(kInlet);
  EXPECT_EQ(0, bed.object.Multiply_FaceRBFCoefficent(nullptr, nullptr, nullptr, nullptr, nullptr));
}

TEST(FaceApplication, StaysWithinElements1ToNFaceAndLeavesTheField) {
  for (int const method : {1, 2, 3, 4}) {
    FaceBed bed(SkewedCubesOfAllGroups());
    bed.SetUp(kInner, {method, 50.0, 8});
    Application application(bed, 0.0);
    application.Random();
    Array const before = application.phi;
    application.Run();
    EXPECT_TRUE(application.GuardsIntact()) << method;
    EXPECT_TRUE(application.phi.IdenticalTo(before)) << method;
    EXPECT_TRUE(bed.host.InputsUntouched()) << method;
    EXPECT_TRUE(bed.host.exchanges.empty()) << method;
  }
}

TEST(FaceApplication, ClearsThreeOutputs) {
  FaceBed bed(SkewedCubesOfAllGroups());
  bed.SetUp(kInner, {3, 50.0, 8});
  Application application(bed, 0.0);
  application.Random().Run();
  for (int i = 1; i <= bed.object.NFace; ++i) {
    for (Array const* const output : {&application.a, &application.b, &application.c})
      EXPECT_TRUE(SameBits(0.0, (*output)[i]));
    EXPECT_NE(0.0, application.face[i]);
  }
}

TEST(FaceApplication, OneArrayForAllOutputsEndsAsZeros) {
  FaceBed bed(SkewedCubesOfAllGroups());
  bed.SetUp(kInner, {3, 50.0, 8});
  Application run(bed, 1.0);
  double* const all = run.face.Data();
  EXPECT_EQ(0, bed.object.Multiply_FaceRBFCoefficent(run.phi.Data(), all, all, all, all));
  for (int i = 1; i <= run.face.Size(); ++i) EXPECT_EQ(0.0, run.face[i]);
}

TEST(FaceApplication, IsTheSumOverTheStencilInItsOrder) {
  for (int const method : {1, 2, 3, 4}) {
    for (Group const group : kGroups) {
      FaceBed bed(SkewedCubesOfAllGroups());
      bed.SetUp(group, {method, 50.0, 8});
      Application application(bed, 0.0);
      application.Random().Run();
      for (int i = 1; i <= bed.object.NFace; ++i) {
        int const* const row = bed.object.m_ppFaceCellConn[i];
        double v = 0.0;
        for (int j = 1; j <= row[0]; ++j) v += application.phi[row[j]] * bed.object.m_ppFaceFiCoef[i][j];
        EXPECT_TRUE(SameBits(v, application.face[i])) << method << " " << group << " " << i;
      }
    }
  }
}

// Terms 1, 2^-53, 2^-53 in stencil order: from 1 on each small one is lost; any other order would keep them.
TEST(FaceApplication, SumsInStencilOrderFromZeroOn) {
  FaceBed bed(CubesOfAllGroups());
  bed.SetUp(kInner, {2, 50.0, 3});
  double* const row = bed.object.m_ppFaceFiCoef[1];
  Application application(bed, 1.0);
  row[1] = 1.0, row[2] = row[3] = std::ldexp(1.0, -53);
  application.Run();
  EXPECT_EQ(1.0, application.face[1]);
  row[3] = 1.0, row[1] = row[2] = std::ldexp(1.0, -53);
  application.Run();
  EXPECT_EQ(1.0 + std::ldexp(1.0, -52), application.face[1]);
  row[1] = row[2] = row[3] = -0.0;
  application.Run();
  EXPECT_TRUE(SameBits(0.0, application.face[1])) << "-0.0 added to 0.0";
}

// With an output in the place of the input the clearing comes first, and nothing is left to read.
TEST(FaceApplication, ClearsItsOutputsBeforeItReads) {
  FaceBed bed(SkewedCubesOfAllGroups());
  bed.SetUp(kInner, {3, 50.0, 8});
  int const nCell = bed.host.NCell(), nFace = bed.object.NFace;
  for (int const which : {1, 2, 3, 4}) {
    Array shared(nCell, 0.0), other1(nFace), other2(nFace), other3(nFace);
    for (int c = 1; c <= nFace; ++c) shared[c] = 1.0;  // gone before it is read
    double* outputs[5] = {nullptr, other1.Data(), other1.Data(), other2.Data(), other3.Data()};
    outputs[which] = shared.Data();
    Array value(nFace);
    if (which != 1) outputs[1] = value.Data();
    bed.object.Multiply_FaceRBFCoefficent(shared.Data(), outputs[1], outputs[2], outputs[3], outputs[4]);
    EXPECT_EQ(0.0, outputs[1][1]) << which;
    EXPECT_EQ(0.0, outputs[1][nFace]) << which;
  }
}

TEST(FaceApplication, ReadsNeitherElement0NorSlopesNorNormals) {
  FaceBed bed(SkewedCubesOfAllGroups());
  bed.SetUp(kInner, {3, 50.0, 8});
  Application before(bed, 0.0), after(bed, 0.0);
  before.Random().Run();
  double const spoilt = GuardValue<double>();
  for (int i = 1; i <= bed.object.NFace; ++i) {
    bed.object.m_ppFaceFiCoef[i][0] = spoilt;
    for (int k = 0; k <= bed.object.m_ppFaceCellConn[i][0]; ++k) {
      bed.object.m_ppFaceDnCoef[i][k] = spoilt;
      bed.object.m_ppFaceGradCoef[i][k].SetData(spoilt, spoilt, spoilt, 0);
    }
  }
  after.Random().Run();
  EXPECT_TRUE(before.face.IdenticalTo(after.face));
}

// A row's element 0 takes the weights of position 0, a dropped twin's.
TEST(FaceApplication, LeavesOutTheWeightsOfADroppedTwin) {
  TestMesh plan = TwoCubes();
  plan.Of(kInlet)[0].centre = plan.centres[2];
  FaceBed bed(plan);
  Stages stages(bed.object, kInner, {4, 2.0, 20});
  stages.Derive();
  ASSERT_EQ(11, bed.object.m_ppFaceCellConn[1][0]);
  Application application(bed, 1.0);
  application.Run();
  double sum = 0.0;
  for (int k = 1; k <= 11; ++k) sum += bed.object.m_ppFaceFiCoef[1][k];
  EXPECT_TRUE(SameBits(sum, application.face[1]));
}

TEST(FaceApplication, OfTheField1IsTheSumThatTheReportTested) {
  for (int const method : {1, 2, 3, 4}) {
    FaceBed bed(SkewedCubesOfAllGroups());
    bed.SetUp(kInner, {method, 50.0, 8});
    Application application(bed, 1.0);
    application.Run();
    double largest = 0.0;
    int worst = 0;
    for (int i = 1; i <= bed.object.NFace; ++i) {
      double const error = std::fabs(1.0 - application.face[i]);
      if (error > largest) largest = error, worst = i;
    }
    EXPECT_TRUE(SameBits(largest, bed.object.fiMAX)) << method;
    EXPECT_EQ(worst, bed.object.fiMAXFaceID) << method;
    EXPECT_TRUE(SameBits(bed.object.fiMAXRBF, application.face[worst])) << method;
  }
}

TEST(FaceApplication, OfMethod4OnBoundaryFacesIs0WhateverTheField) {
  for (Group const group : {kWall, kInlet, kOutlet, kSymmetry}) {
    FaceBed bed(SkewedCubesOfAllGroups());
    bed.SetUp(group);
    for (bool const random : {false, true}) {
      Application application(bed, 1e6);
      if (random) application.Random();
      application.Run();
      for (int i = 1; i <= bed.object.NFace; ++i) EXPECT_EQ(0.0, application.face[i]) << group << " " << i;
    }
  }
}

// The target is the halo cell's own point, which is a node: its column of the matrix is the right-hand side.
TEST(FaceApplication, OfMethod4OnPartitionFacesIsTheHaloCellsOwnValue) {
  FaceBed narrow(SkewedCubesOfAllGroups()), standard(SkewedCubesOfAllGroups());
  narrow.SetUp(kPartition, {4, 5.0, 20});
  standard.SetUp(kPartition);
  for (FaceBed* const bed : {&narrow, &standard}) {
    Application application(*bed, 0.0);
    application.Random().Run();
    for (int i = 1; i <= bed->object.NFace; ++i) {
      int const halo = bed->host.Description().Of(kPartition)[static_cast<std::size_t>(i - 1)].other;
      EXPECT_NEAR(application.phi[halo], application.face[i], bed == &narrow ? 1e-10 : 1e-5) << i;
    }
  }
}

TEST(FaceApplication, TakesGhostAndHaloCellsAsTheyStand) {
  FaceBed bed(SkewedCubesOfAllGroups());
  bed.SetUp(kInner, {3, 50.0, 8});
  int const first = bed.host.mesh.NInnerCells + 1;
  Application without(bed, 1.0), with(bed, 1.0);
  for (int c = first; c <= bed.host.NCell(); ++c) with.phi[c] = 1e6;
  without.Run();
  with.Run();
  int changed = 0;
  for (int i = 1; i <= bed.object.NFace; ++i)
    if (std::fabs(with.face[i] - without.face[i]) > 1.0) ++changed;
  EXPECT_GT(changed, bed.object.NFace / 2);
}

TEST(FaceApplication, OfAnEmptyStencilIs0) {
  FaceBed bed(TwoCubes());
  bed.SetUp(kInner, {2, 50.0, 0});
  Application application(bed, 3.0);
  application.Run();
  EXPECT_TRUE(SameBits(0.0, application.face[1]));
}

TEST(FaceApplication, AllocatesNothing) {
  FaceBed bed(SkewedCubesOfAllGroups());
  bed.SetUp(kInner, {3, 50.0, 8});
  Application application(bed, 1.0);
  long const before = Allocations();
  bed.object.Multiply_FaceRBFCoefficent(application.phi.Data(), application.face.Data(), application.a.Data(),
                                        application.b.Data(), application.c.Data());
  EXPECT_EQ(before, Allocations());
}

TEST(FaceApplication, GivesTheSameAgainAndAgain) {
  FaceBed bed(SkewedCubesOfAllGroups());
  bed.SetUp(kInner, {3, 50.0, 8});
  Application once(bed, 0.0), again(bed, 0.0);
  once.Random().Run();
  again.Random().Run().Run();
  EXPECT_TRUE(once.face.IdenticalTo(again.face));
}

}  // namespace
}  // namespace zyn_test::application_test
