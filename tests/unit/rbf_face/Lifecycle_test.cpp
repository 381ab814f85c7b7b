#include <gtest/gtest.h>

#include <cstring>
#include <new>
#include <string>
#include <utility>

#include "tests/support/host/GuardedArray.h"
#include "tests/support/mesh/BoxMesh.h"
#include "tests/support/rbf_face/FaceBed.h"
#include "tests/support/rbf_face/FaceTables.h"
#include "tests/support/watch/AllocationCount.h"
#include "tests/support/watch/SettingsFolder.h"

// What construction leaves, what the setters store and answer, what is allocated when and released when, and what
// a copy is.

namespace zyn_test::lifecycle_test {
namespace {

using Object = CZynFaceRBFInternalObject;
using Array = GuardedArray<double>;

std::string const kPrefix = "Operator Gradient Error = ";

// ------------------------------------------------------------------------------------------------ construction

TEST(FaceOperatorConstruction, ClearsTheResults) {
  Object const object;
  EXPECT_EQ(nullptr, object.m_ppFaceCellConn);
  EXPECT_EQ(nullptr, object.m_ppFaceGradCoef);
  EXPECT_EQ(nullptr, object.m_ppFaceDnCoef);
  EXPECT_EQ(nullptr, object.m_ppFaceFiCoef);
}

TEST(FaceOperatorConstruction, ClearsTheWorkTablesOfFaces) {
  Object const object;
  EXPECT_EQ(nullptr, object.m_pFaceRows);
  EXPECT_EQ(nullptr, object.m_pFaceSupport);
  EXPECT_EQ(nullptr, object.m_ppFaceLnods);
  EXPECT_EQ(nullptr, object.m_ppVirtualNode);
  EXPECT_TRUE(object.m_FaceX.Empty());
  EXPECT_TRUE(object.m_FaceY.Empty());
  EXPECT_TRUE(object.m_FaceZ.Empty());
}

TEST(FaceOperatorConstruction, ClearsTheWorkTablesOfCellsAndVertices) {
  Object const object;
  EXPECT_EQ(nullptr, object.ppRBFiNodeConn);
  EXPECT_EQ(nullptr, object.m_ppRBFlnods);
  EXPECT_EQ(nullptr, object.m_ppRBFCell33Conn);
  EXPECT_EQ(nullptr, object.m_ppRBFCell32Conn);
  EXPECT_EQ(nullptr, object.m_ppRBFCell32Type);
  EXPECT_EQ(nullptr, object.m_pCellType);
  EXPECT_EQ(nullptr, object.m_pTreeCell);
  EXPECT_EQ(nullptr, object.m_pMarkAll);
  EXPECT_EQ(nullptr, object.m_pMarkP);
  EXPECT_EQ(nullptr, object.m_pMarkE);
  EXPECT_EQ(nullptr, object.m_pCellTree);
  EXPECT_EQ(nullptr, object.m_pBoundaryTree);
  EXPECT_EQ(nullptr, object.m_pNodeTable);
  EXPECT_TRUE(object.m_BoundaryNode.Empty());
}

TEST(FaceOperatorConstruction, SetsTheDefaultsOfTheSettings) {
  Object const object;
  EXPECT_EQ(4, object.iSearch_method);
  EXPECT_FALSE(object.bDebug);
  EXPECT_EQ(0.0, object.Search_distance);
  EXPECT_EQ(20, object.Search_number);
  EXPECT_EQ(1000.0, object.Span) << "what the settings file holds when it is written";
}

TEST(FaceOperatorConstruction, SetsTheFaceTypeAndTheCounts) {
  Object const object;
  EXPECT_EQ(1, object.iFaceType);
  EXPECT_EQ(0, object.NFace);
  EXPECT_EQ(0, object.NFaceDone);
  EXPECT_EQ(0, object.MaxLnods);
}

TEST(FaceOperatorConstruction, ZeroesTheMeasuresOfTheMesh) {
  Object const o;
  for (double const value : {o.Xmax, o.Ymax, o.Zmax, o.Xmin, o.Ymin, o.Zmin, o.MeanDistance})
    EXPECT_EQ(0.0, value);
}

TEST(FaceOperatorConstruction, ZeroesTheReport) {
  Object const o;
  for (double const value : {o.fiRMS, o.fiMAX, o.fiMAXAnalysis, o.fiMAXRBF, o.dfidxRMS, o.dfidxMAX,
                             o.dfidxMAXRBF, o.dfidyRMS, o.dfidyMAX, o.dfidyMAXRBF, o.dfidzRMS, o.dfidzMAX,
                             o.dfidzMAXRBF, o.dfidnRMS, o.dfidnMAX, o.dfidnMAXRBF, o.MAXerr})
    EXPECT_EQ(0.0, value);
  for (int const face : {o.fiMAXFaceID, o.dfidxMAXFaceID, o.dfidyMAXFaceID, o.dfidzMAXFaceID,
                         o.dfidnMAXFaceID, o.MAXerrNodeID})
    EXPECT_EQ(0, face);
}

TEST(FaceOperatorConstruction, ClearsTheHostObjects) {
  Object const object;
  EXPECT_EQ(nullptr, object.pGV);
  EXPECT_EQ(nullptr, object.pMesh);
  EXPECT_EQ(nullptr, object.pPartFace);
  EXPECT_EQ(nullptr, object.pCommunication);
  EXPECT_EQ(nullptr, object.pGVGPU);
  EXPECT_EQ(nullptr, object.pGVOpenMP);
  EXPECT_EQ(0U, object.GPUFirstWord);
  EXPECT_EQ(nullptr, object.pKNCMP);
}

TEST(FaceOperatorConstruction, BeginsTheFailureText) {
  Object object;
  EXPECT_EQ(kPrefix, object.ErrorMsg);
  EXPECT_EQ(object.ErrorMsg, object.getErrorMsg());
}

// ------------------------------------------------------------------------------------------------ host objects

TEST(FaceOperatorSetters, NullParametersAreNoFailureAndKeepTheFormer) {
  FaceParameters parameters;
  Object object;
  EXPECT_EQ(1, object.SetZYNKNCMP(nullptr));
  EXPECT_EQ(nullptr, object.pKNCMP);
  object.SetZYNKNCMP(&parameters);
  EXPECT_EQ(1, object.SetZYNKNCMP(nullptr));
  EXPECT_EQ(&parameters, object.pKNCMP);
  EXPECT_EQ(kPrefix, object.getErrorMsg());
}

// ------------------------------------------------------------------------------------------- texts of settings

TEST(FaceOperatorTexts, SplitASettingsLineAtItsEqualsSign) {
  Object object;
  char key[1024], value[1024];
  EXPECT_EQ(1, object.StrCopyAB("Search_number     = 20  \n", key, value));
  EXPECT_STREQ("Search_number", key);
  EXPECT_STREQ("20  ", value);
  EXPECT_EQ(0, object.StrCopyAB("abc", key, value));
  EXPECT_STREQ("abc", key);
  EXPECT_STREQ("c", value);
}

TEST(FaceOperatorTexts, ReplaceTheLastFourCharactersOfAName) {
  Object object;
  char result[1024], name[] = "case.xyz", four[] = ".xyz";
  EXPECT_EQ(1, object.ChangeFileName(result, ".rbf", name));
  EXPECT_STREQ("case.rbf", result);
  EXPECT_EQ(1, object.ChangeFileName(result, ".rbf", four));
  EXPECT_STREQ(".rbf", result);
}

// ----------------------------------------------------------------------------------------------- the face type

TEST(FaceOperatorSetUp, TakesTheNumberOfFacesFromTheGroup) {
  for (Group const group : kGroups) {
    FaceBed bed(SkewedCubesOfAllGroups());
    bed.SetUp(group);
    EXPECT_EQ(group, bed.object.iFaceType);
    EXPECT_EQ(bed.host.NFace(group), bed.object.NFace);
    EXPECT_EQ(group == kInner ? 54 : group == kWall ? 18 : 9, bed.object.NFace);
  }
}

/// No table of those that live during set-up alone.
void ExpectWorkReleased(Object const& o) {
  EXPECT_EQ(nullptr, o.m_ppFaceLnods);
  EXPECT_EQ(nullptr, o.m_ppVirtualNode);
  EXPECT_EQ(nullptr, o.ppRBFiNodeConn);
  EXPECT_EQ(nullptr, o.m_ppRBFlnods);
  EXPECT_EQ(nullptr, o.m_ppRBFCell33Conn);
  EXPECT_EQ(nullptr, o.m_ppRBFCell32Conn);
  EXPECT_EQ(nullptr, o.m_ppRBFCell32Type);
  EXPECT_EQ(nullptr, o.m_pMarkAll);
  EXPECT_EQ(nullptr, o.m_pMarkP);
  EXPECT_EQ(nullptr, o.m_pMarkE);
  EXPECT_EQ(nullptr, o.m_pFaceRows);
  EXPECT_EQ(nullptr, o.m_pCellType);
  EXPECT_EQ(nullptr, o.m_pTreeCell);
  EXPECT_EQ(nullptr, o.m_pFaceSupport);
  EXPECT_EQ(nullptr, o.m_pCellTree);
  EXPECT_EQ(nullptr, o.m_pBoundaryTree);
  EXPECT_EQ(nullptr, o.m_pNodeTable);
  EXPECT_TRUE(o.m_FaceX.Empty());
  EXPECT_TRUE(o.m_FaceY.Empty());
  EXPECT_TRUE(o.m_FaceZ.Empty());
}

void ExpectNothingHappened(FaceBed const& bed) {
  Object const& o = bed.object;
  EXPECT_EQ(0, o.NFace);
  EXPECT_FALSE(bed.folder.Exists());
  EXPECT_STREQ("", o.RBFFileName);
  EXPECT_EQ(nullptr, o.m_ppFaceCellConn);
  EXPECT_EQ(nullptr, o.m_ppFaceGradCoef);
  EXPECT_EQ(nullptr, o.m_ppFaceDnCoef);
  EXPECT_EQ(nullptr, o.m_ppFaceFiCoef);
  ExpectWorkReleased(o);
  EXPECT_TRUE(o.m_BoundaryNode.Empty());
  EXPECT_EQ(0.0, o.MeanDistance);
}

TEST(FaceOperatorSetUp, DoesNothingForAGroupWithoutFaces) {
  std::vector<double> const lines = {0.0, 1.0, 2.0};
  TestMesh const walls = Box(lines, lines, lines, {kWall, kWall, kWall, kWall, kWall, kWall});
  for (Group const group : {kInlet, kOutlet, kPartition, kSymmetry}) {
    FaceBed bed(walls);
    EXPECT_EQ("", bed.SetUp(group));
    EXPECT_EQ(group, bed.object.iFaceType);
    ExpectNothingHappened(bed);
  }
}

TEST(FaceOperatorSetUp, DoesNothingForAnUnknownTypeOnANewObject) {
  for (int const type : {0, 7, -1, 101}) {
    FaceBed bed(TwoCubes());
    EXPECT_EQ("", bed.SetUp(type));
    EXPECT_EQ(type, bed.object.iFaceType);
    ExpectNothingHappened(bed);
  }
}

TEST(FaceOperatorSetUp, KeepsTheNumberOfFacesForAnUnknownType) {
  FaceBed bed(TwoCubes(), Settings("1000", "7", "1.0", "20", "0"));
  bed.object.NFace = 3;
  bed.SetUp(9);
  EXPECT_EQ(3, bed.object.NFace);
  ASSERT_NE(nullptr, bed.object.m_ppFaceCellConn);
  for (int i = 0; i <= 3; ++i) EXPECT_EQ(nullptr, bed.object.m_ppFaceCellConn[i]);
}

TEST(FaceOperatorSetUp, NamesTheSettingsFileAfterTheBaseFileName) {
  FaceBed bed(TwoCubes());
  bed.SetUp(kInner);
  EXPECT_EQ(bed.folder.Path() + "/run.rbf", bed.object.RBFFileName);
  EXPECT_TRUE(bed.folder.Exists());
}

TEST(FaceOperatorSetUp, ReadsTheHostAndCallsNoExchange) {
  for (int const method : {1, 2, 3, 4}) {
    FaceBed bed(SkewedCubesOfAllGroups());
    bed.SetUp(kInner, {method, 50.0, 8});
    EXPECT_TRUE(bed.host.InputsUntouched()) << method;
    EXPECT_TRUE(bed.host.exchanges.empty()) << method;
  }
}

TEST(FaceOperatorSetUp, PrintsNothingBesideSettingsTopologyAndReport) {
  FaceBed four(TwoCubes()), two(TwoCubes()), three(TwoCubes());
  EXPECT_EQ("Default DQ parameter is adopted.\n", four.SetUp(kInner));
  EXPECT_EQ("", two.SetUp(kInner, {2, 100.0, 4}));
  EXPECT_EQ("Search topology relationship on (1 face/1 Total face)\r", three.SetUp(kInner, {3, 100.0, 4}));
}

// -------------------------------------------------------------------------------------------------- allocation

/// An operator before the allocation of its tables.
struct Fresh {
  explicit Fresh(int method) : bed(SkewedCubesOfAllGroups()) {
    bed.object.NFace = 4;
    bed.object.iSearch_method = method;
    EXPECT_EQ(0, bed.object.Initialize_Face_memory_allocate());
  }
  ~Fresh() { bed.object.Release_Memory(); }

  FaceBed bed;
  Object& object = bed.object;
  int nCell = bed.host.NCell();
};

TEST(FaceOperatorAllocation, MakesFaceTablesWithoutRows) {
  Fresh fresh(4);
  for (int i = 0; i <= 4; ++i) {
    EXPECT_EQ(nullptr, fresh.object.m_ppFaceCellConn[i]);
    EXPECT_EQ(nullptr, fresh.object.m_ppFaceFiCoef[i]);
    EXPECT_EQ(nullptr, fresh.object.m_ppFaceDnCoef[i]);
    EXPECT_EQ(0, fresh.object.m_pFaceRows[i].m_iNRow);
    EXPECT_EQ(nullptr, fresh.object.m_pFaceRows[i].m_ppRow);
  }
}

TEST(FaceOperatorAllocation, MakesVirtualNodesOfZeroForFace0Too) {
  Fresh fresh(4);
  for (int i = 0; i <= 4; ++i) {
    for (int k = 0; k <= 2; ++k) {
      IBCnode const& node = fresh.object.m_ppVirtualNode[i][k];
      for (double const value : {node.x, node.y, node.z}) EXPECT_EQ(0.0, value);
      EXPECT_EQ(0, node.tag);
    }
  }
}

TEST(FaceOperatorAllocation, MakesZeroedCellTables) {
  Fresh fresh(4);
  for (int c = 0; c <= fresh.nCell; ++c) {
    EXPECT_EQ(0, fresh.object.m_pCellType[c]);
    EXPECT_EQ(0, fresh.object.m_pMarkAll[c]);
    EXPECT_EQ(0, fresh.object.m_pMarkP[c]);
    EXPECT_EQ(0, fresh.object.m_pMarkE[c]);
    EXPECT_EQ(0.0, fresh.object.m_pNodeTable[c].x);
    EXPECT_EQ(0, fresh.object.m_pNodeTable[c].tag);
  }
}

TEST(FaceOperatorAllocation, MakesTargetPointsOfZeroAndTwoTrees) {
  Fresh fresh(4);
  for (CZYNVector<double, 1>* const target :
       {&fresh.object.m_FaceX, &fresh.object.m_FaceY, &fresh.object.m_FaceZ}) {
    EXPECT_EQ(4, target->GetSize());
    for (int i = 0; i <= 4; ++i) EXPECT_EQ(0.0, (*target)[i]);
  }
  EXPECT_NE(nullptr, fresh.object.m_pCellTree);
  EXPECT_NE(nullptr, fresh.object.m_pBoundaryTree);
  EXPECT_NE(fresh.object.m_pCellTree, fresh.object.m_pBoundaryTree);
}

TEST(FaceOperatorAllocation, LeavesThreeTablesOutForMethod4) {
  Fresh fresh(4);
  EXPECT_EQ(nullptr, fresh.object.m_ppFaceLnods);
  EXPECT_EQ(nullptr, fresh.object.m_ppFaceGradCoef);
  EXPECT_EQ(nullptr, fresh.object.m_pFaceSupport);
}

TEST(FaceOperatorAllocation, MakesTheThreeTablesForAnyOtherMethod) {
  for (int const method : {1, 2, 3, 7, 0}) {
    Fresh fresh(method);
    ASSERT_NE(nullptr, fresh.object.m_ppFaceLnods) << method;
    ASSERT_NE(nullptr, fresh.object.m_ppFaceGradCoef) << method;
    ASSERT_NE(nullptr, fresh.object.m_pFaceSupport) << method;
    for (int i = 0; i <= 4; ++i) {
      EXPECT_EQ(nullptr, fresh.object.m_ppFaceLnods[i]);
      EXPECT_EQ(nullptr, fresh.object.m_ppFaceGradCoef[i]);
      EXPECT_EQ(0.0, fresh.object.m_pFaceSupport[i]);
    }
  }
}

TEST(FaceOperatorAllocation, LeavesTheTablesOfLaterStepsOut) {
  Fresh fresh(3);
  EXPECT_EQ(nullptr, fresh.object.m_pTreeCell);
  EXPECT_EQ(nullptr, fresh.object.ppRBFiNodeConn);
  EXPECT_EQ(nullptr, fresh.object.m_ppRBFlnods);
  EXPECT_EQ(nullptr, fresh.object.m_ppRBFCell33Conn);
  EXPECT_EQ(nullptr, fresh.object.m_ppRBFCell32Conn);
  EXPECT_EQ(nullptr, fresh.object.m_ppRBFCell32Type);
  EXPECT_TRUE(fresh.object.m_BoundaryNode.Empty());
}

// The settings come after the allocation, so a new object sees the 4 it was constructed with.
TEST(FaceOperatorSetUp, RunsMethods1To3OnANewObject) {
  for (int const method : {1, 2, 3}) {
    FaceBed file(SkewedCubesOfAllGroups(), Settings("50", std::to_string(method), "1.0", "8", "0"));
    FaceBed block(SkewedCubesOfAllGroups());
    file.SetUp(kInner);
    block.SetUp(kInner, {method, 50.0, 8});
    for (FaceBed const* const bed : {&file, &block}) {
      Object const& o = bed->object;
      ASSERT_NE(nullptr, o.m_ppFaceGradCoef) << method;
      for (int i = 1; i <= o.NFace; ++i) {
        EXPECT_GT(o.m_ppFaceCellConn[i][0], 0) << method;
        EXPECT_NE(nullptr, o.m_ppFaceGradCoef[i]) << method;
        EXPECT_NE(0.0, o.m_ppFaceFiCoef[i][1]) << method;
      }
    }
  }
}

TEST(FaceOperatorSetUp, LeavesMethod4WithoutSlopeRows) {
  FaceBed bed(SkewedCubesOfAllGroups());
  bed.SetUp(kInner);
  EXPECT_EQ(nullptr, bed.object.m_ppFaceGradCoef);
}

TEST(FaceOperatorSetUp, AllocatesNoNormalRowsForMethods1And2) {
  for (int const method : {1, 2, 3, 4}) {
    FaceBed bed(SkewedCubesOfAllGroups());
    bed.SetUp(kInner, {method, 50.0, 8});
    for (int i = 1; i <= bed.object.NFace; ++i)
      EXPECT_EQ(method >= 3, bed.object.m_ppFaceDnCoef[i] != nullptr) << method;
  }
}

// Without rows there is nothing to sum up: the values are 0, and no row is followed.
TEST(FaceOperatorSetUp, WithAnUnknownMethodRunsNoStencilAndNoCoefficientStep) {
  for (std::string const method : {"7", "0", "-1", "5"}) {
    FaceBed bed(SkewedCubesOfAllGroups(), Settings("1000", method, "1.0", "20", "0"));
    EXPECT_EQ("", bed.SetUp(kInner)) << method;
    EXPECT_EQ(54, bed.object.NFace) << method;
    ASSERT_NE(nullptr, bed.object.m_ppFaceCellConn) << method;
    for (int i = 0; i <= 54; ++i) {
      EXPECT_EQ(nullptr, bed.object.m_ppFaceCellConn[i]) << method;
      EXPECT_EQ(nullptr, bed.object.m_ppFaceFiCoef[i]) << method;
      EXPECT_EQ(nullptr, bed.object.m_ppFaceDnCoef[i]) << method;
    }
    EXPECT_EQ(0, bed.object.NFaceDone) << method;

    Array phi(bed.host.NCell(), 1.0), value(54, -7.5), a(54, -7.5), b(54, -7.5), c(54, -7.5), zeros(54, 0.0);
    EXPECT_EQ(0,
              bed.object.Multiply_FaceRBFCoefficent(phi.Data(), value.Data(), a.Data(), b.Data(), c.Data()));
    for (Array const* const output : {&value, &a, &b, &c}) EXPECT_TRUE(output->IdenticalTo(zeros)) << method;
  }
}

TEST(FaceOperatorSetUp, GivesTheSameRowsAsTheStepsOneByOne) {
  for (int const method : {1, 2, 3, 4}) {
    FaceSettings const settings = {method, 50.0, 8};
    for (Group const group : kGroups) {
      FaceBed bed(SkewedCubesOfAllGroups());
      bed.SetUp(group, settings);
      PlainFaceOperator plain = bed.Plain(group, settings);
      plain.Run();
      EXPECT_TRUE(SameStencils(plain, bed.object)) << method << " " << group;
      EXPECT_TRUE(SameCoefficients(plain, bed.object)) << method << " " << group;
      EXPECT_TRUE(SameReport(plain, bed.object)) << method << " " << group;
    }
  }
}

// ----------------------------------------------------------------------------------------------------- release

TEST(FaceOperatorRelease, EndsEverySetUp) {
  for (int const method : {1, 2, 3, 4, 7}) {
    FaceBed bed(SkewedCubesOfAllGroups());
    bed.SetUp(kWall, {method, 50.0, 8});
    ExpectWorkReleased(bed.object);
  }
}

TEST(FaceOperatorRelease, KeepsTheResultsAndTheMarksOfBoundaryNodes) {
  FaceBed bed(SkewedCubesOfAllGroups());
  bed.SetUp(kInner, {3, 50.0, 8});
  EXPECT_NE(nullptr, bed.object.m_ppFaceCellConn);
  EXPECT_NE(nullptr, bed.object.m_ppFaceGradCoef);
  EXPECT_NE(nullptr, bed.object.m_ppFaceDnCoef);
  EXPECT_NE(nullptr, bed.object.m_ppFaceFiCoef);
  EXPECT_EQ(64, bed.object.m_BoundaryNode.GetSize());
  EXPECT_TRUE(bed.object.m_BoundaryNode[1]);
}

TEST(FaceOperatorRelease, NeedsNothingToReleaseAndMayComeTwice) {
  Object object;
  EXPECT_EQ(0, object.Release_Memory());
  ExpectWorkReleased(object);
  FaceBed bed(SkewedCubesOfAllGroups());
  bed.SetUp(kInner);
  EXPECT_EQ(0, bed.object.Release_Memory());
  ExpectWorkReleased(bed.object);
}

TEST(FaceOperatorRelease, TakesTheCellToFaceTableToo) {
  FaceBed bed(SkewedCubesOfAllGroups());
  Stages stages(bed.object, kInner, {4, 50.0, 8});
  stages.Collate();
  EXPECT_EQ(0, bed.object.Create_m_ppRBFCell32Conn());
  EXPECT_NE(nullptr, bed.object.m_ppRBFCell32Conn);
  EXPECT_EQ(0, bed.object.Release_Memory());
  ExpectWorkReleased(bed.object);
}

TEST(FaceOperatorDestruction, NeedsNeitherHostObjectsNorSetUp) {
  auto* const object = new Object;
  delete object;
}

TEST(FaceOperatorDestruction, LeavesTheHostObjects) {
  SettingsFolder folder;
  FaceHost host(TwoCubes(), folder.BaseFileName());
  {
    Object object;
    Connect(object, host.globals, host.mesh, host.partitionFaces);
    Printed([&] { object.Initialize_FaceInterpolateData(kInner); });
  }
  EXPECT_TRUE(host.InputsUntouched());
  EXPECT_EQ(1, host.partitionFaces.NParInterFace() - 1);
}

TEST(FaceOperatorDestruction, FreesEverythingThatTheObjectAllocated) {
  for (int const method : {1, 2, 3, 4, 7}) {
    SettingsFolder folder;
    folder.Write(Settings({method, 50.0, 8}));
    FaceHost host(SkewedCubesOfAllGroups(), folder.BaseFileName());
    auto const live = [&host] {
      long const before = LiveAllocations();
      auto* const object = new Object;
      Connect(*object, host.globals, host.mesh, host.partitionFaces);
      Printed([object] { object->Initialize_FaceInterpolateData(kInner); });
      delete object;
      return LiveAllocations() - before;
    };
    live();  // what the C++ library keeps for good from the first use of a stream
    EXPECT_EQ(0, live()) << "method " << method;
  }
}

// What may stay of one face: four arrays with a row each, and the marks of boundary nodes.
TEST(FaceOperatorRelease, LeavesNoWorkMemoryBehind) {
  for (int const method : {1, 2, 3, 4, 7}) {
    auto const liveAfterSetUp = [method] {
      FaceBed bed(TwoCubes());
      long const before = LiveAllocations();
      bed.SetUp(kInner, {method, 50.0, 8});
      return LiveAllocations() - before;
    };
    liveAfterSetUp();  // what the C++ library keeps for good from the first use of a stream
    EXPECT_LE(liveAfterSetUp(), 9) << method;
  }
}

// ----------------------------------------------------------------------------------------------------- copying

/// An operator that is never destroyed: one that shares its tables with another, or whose members a test has
/// overwritten.
class Undestroyed {
 public:
  template <typename... Arguments>
  explicit Undestroyed(Arguments&&... arguments)
      : object_(new (memory_) Object(std::forward<Arguments>(arguments)...)) {}
  ~Undestroyed() {
    object_->m_BoundaryNode.Destroy();  // the vectors are its own
    for (CZYNVector<double, 1>* const target : {&object_->m_FaceX, &object_->m_FaceY, &object_->m_FaceZ})
      target->Destroy();
  }
  Undestroyed(Undestroyed const&) = delete;
  Undestroyed& operator=(Undestroyed const&) = delete;

  Object& operator*() { return *object_; }
  Object* operator->() { return object_; }

 private:
  alignas(Object) unsigned char memory_[sizeof(Object)];
  Object* object_;
};

template <typename T>
T* Address(std::uintptr_t value) {
  return reinterpret_cast<T*>(value * 64);  // never dereferenced
}

void FillTables(Object& o) {
  o.m_ppFaceCellConn = Address<int*>(1);
  o.m_ppFaceGradCoef = Address<IBCnode*>(2);
  o.m_ppFaceDnCoef = Address<double*>(3);
  o.m_ppFaceFiCoef = Address<double*>(4);
  o.m_pFaceRows = Address<Cpp_DataStructure>(5);
  o.ppRBFiNodeConn = Address<int*>(6);
  o.m_ppRBFlnods = Address<int*>(7);
  o.m_ppRBFCell33Conn = Address<int*>(8);
  o.m_ppRBFCell32Conn = Address<int*>(9);
  o.m_ppRBFCell32Type = Address<int*>(10);
  o.m_pCellType = Address<int>(11);
  o.m_pTreeCell = Address<int>(12);
  o.m_pFaceSupport = Address<double>(13);
  o.m_ppFaceLnods = Address<int*>(14);
  o.m_pMarkAll = Address<int>(15);
  o.m_pMarkP = Address<int>(16);
  o.m_pMarkE = Address<int>(17);
  o.m_pCellTree = Address<CZYNOptKer>(18);
  o.m_pBoundaryTree = Address<CZYNOptKer>(19);
  o.m_ppVirtualNode = Address<IBCnode*>(20);
  o.m_pNodeTable = Address<IBCnode>(21);
  o.m_BoundaryNode.Create(3, true);
  o.m_FaceX.Create(2, 22.0);
  o.m_FaceY.Create(2, 23.0);
  o.m_FaceZ.Create(2, 24.0);
}

void FillHostObjects(Object& o) {
  o.pGV = Address<CZyn3dGV>(30);
  o.pMesh = Address<CZYN3DFiniteVolumeMesh>(31);
  o.pPartFace = Address<CPartitionFace_DLL>(32);
  o.pCommunication = Address<CCommunication>(33);
  o.pGVGPU = Address<CZYNGVGPU>(34);
  o.pGVOpenMP = Address<CZYNGVOpenMP>(35);
  o.GPUFirstWord = 36;
  o.pKNCMP = Address<CZYNKNCMPCompParm>(37);
}

void FillValues(Object& o) {
  int number = 40;
  for (int* const value : {&o.iSearch_method, &o.Search_number, &o.iFaceType, &o.NFace, &o.NFaceDone,
                           &o.MaxLnods, &o.fiMAXFaceID, &o.dfidxMAXFaceID, &o.dfidyMAXFaceID,
                           &o.dfidzMAXFaceID, &o.dfidnMAXFaceID, &o.MAXerrNodeID})
    *value = ++number;
  for (double* const value : {&o.Search_distance,
                              &o.Xmax,
                              &o.Ymax,
                              &o.Zmax,
                              &o.Xmin,
                              &o.Ymin,
                              &o.Zmin,
                              &o.MeanDistance,
                              &o.Span,
                              &o.fiRMS,
                              &o.fiMAX,
                              &o.fiMAXAnalysis,
                              &o.fiMAXRBF,
                              &o.dfidxRMS,
                              &o.dfidxMAX,
                              &o.dfidxMAXRBF,
                              &o.dfidyRMS,
                              &o.dfidyMAX,
                              &o.dfidyMAXRBF,
                              &o.dfidzRMS,
                              &o.dfidzMAX,
                              &o.dfidzMAXRBF,
                              &o.dfidnRMS,
                              &o.dfidnMAX,
                              &o.dfidnMAXRBF,
                              &o.MAXerr})
    *value = ++number;
  o.bDebug = true;
  std::memset(o.RBFFileName, 'n', sizeof o.RBFFileName);  // the whole buffer, with no terminator
  std::memset(o.ErrorMsg, 'e', sizeof o.ErrorMsg);
}

void ExpectSameTables(Object const& a, Object const& b) {
  EXPECT_EQ(a.m_ppFaceCellConn, b.m_ppFaceCellConn);
  EXPECT_EQ(a.m_ppFaceGradCoef, b.m_ppFaceGradCoef);
  EXPECT_EQ(a.m_ppFaceDnCoef, b.m_ppFaceDnCoef);
  EXPECT_EQ(a.m_ppFaceFiCoef, b.m_ppFaceFiCoef);
  EXPECT_EQ(a.m_pFaceRows, b.m_pFaceRows);
  EXPECT_EQ(a.ppRBFiNodeConn, b.ppRBFiNodeConn);
  EXPECT_EQ(a.m_ppRBFlnods, b.m_ppRBFlnods);
  EXPECT_EQ(a.m_ppRBFCell33Conn, b.m_ppRBFCell33Conn);
  EXPECT_EQ(a.m_ppRBFCell32Conn, b.m_ppRBFCell32Conn);
  EXPECT_EQ(a.m_ppRBFCell32Type, b.m_ppRBFCell32Type);
  EXPECT_EQ(a.m_pCellType, b.m_pCellType);
  EXPECT_EQ(a.m_pTreeCell, b.m_pTreeCell);
  EXPECT_EQ(a.m_pFaceSupport, b.m_pFaceSupport);
  EXPECT_EQ(a.m_ppFaceLnods, b.m_ppFaceLnods);
  EXPECT_EQ(a.m_pMarkAll, b.m_pMarkAll);
  EXPECT_EQ(a.m_pMarkP, b.m_pMarkP);
  EXPECT_EQ(a.m_pMarkE, b.m_pMarkE);
  EXPECT_EQ(a.m_pCellTree, b.m_pCellTree);
  EXPECT_EQ(a.m_pBoundaryTree, b.m_pBoundaryTree);
  EXPECT_EQ(a.m_ppVirtualNode, b.m_ppVirtualNode);
  EXPECT_EQ(a.m_pNodeTable, b.m_pNodeTable);
}

/// Same elements in another block.
template <typename Vector>
void ExpectDeepCopy(Vector const& a, Vector const& b) {
  ASSERT_EQ(a.GetSize(), b.GetSize());
  EXPECT_NE(a.Get_Ptr(), b.Get_Ptr());
  for (int i = 1; i <= a.GetSize(); ++i) EXPECT_EQ(a[i], b[i]);
}

void ExpectDeepVectors(Object const& a, Object const& b) {
  ExpectDeepCopy(a.m_BoundaryNode, b.m_BoundaryNode);
  ExpectDeepCopy(a.m_FaceX, b.m_FaceX);
  ExpectDeepCopy(a.m_FaceY, b.m_FaceY);
  ExpectDeepCopy(a.m_FaceZ, b.m_FaceZ);
}

void ExpectSameHostObjects(Object const& a, Object const& b) {
  EXPECT_EQ(a.pGV, b.pGV);
  EXPECT_EQ(a.pMesh, b.pMesh);
  EXPECT_EQ(a.pPartFace, b.pPartFace);
  EXPECT_EQ(a.pCommunication, b.pCommunication);
  EXPECT_EQ(a.pGVGPU, b.pGVGPU);
  EXPECT_EQ(a.pGVOpenMP, b.pGVOpenMP);
  EXPECT_EQ(a.GPUFirstWord, b.GPUFirstWord);
  EXPECT_EQ(a.pKNCMP, b.pKNCMP);
}

void ExpectSameSettingsAndMeasures(Object const& a, Object const& b) {
  EXPECT_EQ(a.iSearch_method, b.iSearch_method);
  EXPECT_EQ(a.bDebug, b.bDebug);
  EXPECT_EQ(a.Search_distance, b.Search_distance);
  EXPECT_EQ(a.Search_number, b.Search_number);
  EXPECT_EQ(a.iFaceType, b.iFaceType);
  EXPECT_EQ(a.Span, b.Span);
  EXPECT_EQ(a.NFace, b.NFace);
  EXPECT_EQ(a.MaxLnods, b.MaxLnods);
  EXPECT_EQ(a.MeanDistance, b.MeanDistance);
  double const boundsA[] = {a.Xmax, a.Ymax, a.Zmax, a.Xmin, a.Ymin, a.Zmin};
  double const boundsB[] = {b.Xmax, b.Ymax, b.Zmax, b.Xmin, b.Ymin, b.Zmin};
  EXPECT_EQ(0, std::memcmp(boundsA, boundsB, sizeof boundsA));
  EXPECT_EQ(0, std::memcmp(a.RBFFileName, b.RBFFileName, sizeof a.RBFFileName));
  EXPECT_EQ(0, std::memcmp(a.ErrorMsg, b.ErrorMsg, sizeof a.ErrorMsg));
}

void ExpectSameReport(Object const& a, Object const& b) {
  auto const doubles = [](Object const& o) {
    return std::vector<double>{o.fiRMS,       o.fiMAX,       o.fiMAXAnalysis, o.fiMAXRBF, o.dfidxRMS,
                               o.dfidxMAX,    o.dfidxMAXRBF, o.dfidyRMS,      o.dfidyMAX, o.dfidyMAXRBF,
                               o.dfidzRMS,    o.dfidzMAX,    o.dfidzMAXRBF,   o.dfidnRMS, o.dfidnMAX,
                               o.dfidnMAXRBF, o.MAXerr};
  };
  auto const ints = [](Object const& o) {
    return std::vector<int>{o.NFaceDone,      o.fiMAXFaceID,    o.dfidxMAXFaceID, o.dfidyMAXFaceID,
                            o.dfidzMAXFaceID, o.dfidnMAXFaceID, o.MAXerrNodeID};
  };
  EXPECT_EQ(doubles(a), doubles(b));
  EXPECT_EQ(ints(a), ints(b));
}

void ExpectCopied(Object const& a, Object const& b) {
  ExpectSameTables(a, b);
  ExpectDeepVectors(a, b);
  ExpectSameHostObjects(a, b);
  ExpectSameSettingsAndMeasures(a, b);
  ExpectSameReport(a, b);
}

TEST(FaceOperatorCopy, TakesEveryMemberAsItStandsAndTheVectorsAnew) {
  Undestroyed source;
  FillTables(*source);
  FillHostObjects(*source);
  FillValues(*source);
  Undestroyed copy(*source);
  ExpectCopied(*source, *copy);
}

TEST(FaceOperatorAssignment, TakesEveryMemberAsItStandsAndReturnsTheTarget) {
  Undestroyed source, target;
  FillTables(*source);
  FillHostObjects(*source);
  FillValues(*source);
  EXPECT_EQ(&*target, &(*target = *source));
  ExpectCopied(*source, *target);
}

TEST(FaceOperatorAssignment, ToItselfChangesNothing) {
  FaceBed bed(SkewedCubesOfAllGroups());
  bed.SetUp(kInner, {3, 50.0, 8});
  Undestroyed before(bed.object);
  Object const& same = bed.object;
  bed.object = same;
  ExpectSameTables(*before, bed.object);
  ExpectSameReport(*before, bed.object);
  EXPECT_EQ(64, bed.object.m_BoundaryNode.GetSize());
}

TEST(FaceOperatorCopy, BeforeSetUpIsAnOperatorOfItsOwn) {
  FaceBed bed(SkewedCubesOfAllGroups());
  bed.UseBlock({4, 50.0, 8});
  Object copy(bed.object);
  bed.SetUp(kInner);
  Printed([&] { copy.Initialize_FaceInterpolateData(kWall); });
  EXPECT_EQ(54, bed.object.NFace);
  EXPECT_EQ(18, copy.NFace);
  EXPECT_NE(bed.object.m_ppFaceCellConn, copy.m_ppFaceCellConn);
}

TEST(FaceOperatorCopy, AfterSetUpSharesTheRowsOfTheSource) {
  FaceBed bed(SkewedCubesOfAllGroups());
  bed.SetUp(kInner);
  Undestroyed copy(bed.object);
  EXPECT_EQ(bed.object.m_ppFaceCellConn[1], copy->m_ppFaceCellConn[1]);
  EXPECT_EQ(bed.object.m_ppFaceFiCoef[1], copy->m_ppFaceFiCoef[1]);
}

}  // namespace
}  // namespace zyn_test::lifecycle_test
