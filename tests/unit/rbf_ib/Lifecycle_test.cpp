#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "tests/support/mesh/Hexahedra.h"
#include "tests/support/rbf_ib/PointBed.h"
#include "tests/support/rbf_ib/PointTables.h"
#include "tests/support/watch/AllocationCount.h"
#include "tests/support/watch/FlushedOutput.h"
#include "tests/support/watch/FlushedPieces.h"
#include "tests/support/watch/SettingsFolder.h"

// The whole set-up and its order, setting up again, destruction, and what a copy is.

namespace zyn_test::lifecycle_test {
namespace {

using Object = CZynIBRBFInternalObject;

std::string const kAllocated = "IB Memory Allocation ok\n";
std::string const kCollated = "SetNodeCollation ok\n";
std::string const kDefaults = "Default DQ parameter is adopted.\n";
std::string const kTree = "SetIBADTress ok\n";
std::string const kSearched = "SearchIBADTress ok\n";
std::string const kDerived = "DeriveIBCoefficentBysolveDQfullMatrix ok\n";

TestMesh SomeMesh() { return Hexahedra(HexahedraOptions()); }

std::vector<Point> SomePoints() {
  return {{1.2, 1.4, 1.6}, {0.3, 0.2, 2.5}, {2.9, 1.5, 0.4}, {1.5, 1.5, 1.5}, {5.0, -2.0, 1.0}};
}

// -------------------------------------------------------------------------------------------------- progress

TEST(PointSetUp, PrintsItsProgressWordForWord) {
  for (int const method : {1, 2, 3}) {
    PointBed bed(SomeMesh(), PointSettings{500.0, method, 8});
    std::string const printed = bed.SetUp(AllUsable(bed.host.mesh.NCell), SomePoints());
    std::string const progress = kAllocated + kCollated + kTree + kSearched + kDerived;
    EXPECT_EQ(progress + "FI = 1.e0\n\n", printed.substr(0, progress.size() + 11)) << "method " << method;
  }
}

TEST(PointSetUp, SaysBetweenCollationAndTreeThatItTakesTheDefaults) {
  PointBed bed(SomeMesh());
  std::string const printed = bed.SetUp(AllUsable(bed.host.mesh.NCell), SomePoints());
  EXPECT_EQ(0U, printed.find(kAllocated + kCollated + kDefaults + kTree + kSearched + kDerived + "FI"));
}

TEST(PointSetUp, PrintsTheSameLinesForAnUnknownMethod) {
  PointBed bed(SomeMesh(), PointSettings{500.0, 4, 8});
  std::string const printed = bed.SetUp(AllUsable(bed.host.mesh.NCell), SomePoints());
  EXPECT_EQ(0U, printed.find(kAllocated + kCollated + kTree + kSearched + kDerived + "FI"));
}

// The partition faces are asked during the collation, the parameters when the settings are read.
TEST(PointSetUp, FlushesEveryLineAtOnce) {
  PointBed bed(SomeMesh());
  PointParameters parameters;
  parameters.block = {0, 500, 2, 0.0, 8};
  bed.object.SetZYNKNCMP(&parameters);
  Array marks = AllUsable(bed.host.mesh.NCell);
  PointArrays points(SomePoints());
  std::string atCollation, atSettings, all;
  {
    FlushedOutput const output;
    bed.host.partition.onCount = [&] { atCollation = output.Arrived(); };
    parameters.onCall = [&] { atSettings = output.Arrived(); };
    bed.object.Initialize_IBInterpolateData(marks.Data(), points.Size(), points.x.Data(), points.y.Data(),
                                            points.z.Data());
    bed.host.partition.onCount = nullptr;
    all = output.Arrived();
  }
  EXPECT_EQ(kAllocated, atCollation);
  EXPECT_EQ(kAllocated + kCollated, atSettings);
  EXPECT_EQ(0U, all.find(kAllocated + kCollated + kTree + kSearched + kDerived + "FI = 1.e0\n\n"));
  EXPECT_EQ("\n\n", all.substr(all.size() - 2));
}

TEST(PointSetUp, FlushesEachLineByItself) {
  PointBed bed(SomeMesh());
  Array marks = AllUsable(bed.host.mesh.NCell);
  PointArrays points(SomePoints());
  std::vector<std::string> pieces = PrintedPieces([&] {
    bed.object.Initialize_IBInterpolateData(marks.Data(), points.Size(), points.x.Data(), points.y.Data(),
                                            points.z.Data());
  });
  ASSERT_EQ(6U + 17U, pieces.size()) << "progress and report";
  pieces.resize(6);
  EXPECT_EQ((std::vector<std::string>{kAllocated, kCollated, kDefaults, kTree, kSearched, kDerived}), pieces);
}

TEST(PointSetUp, ReadsTheSettingsAfterTheCollationAndTheNodeRowsAndBeforeTheTree) {
  PointBed bed(SomeMesh());
  PointParameters parameters;
  parameters.block = {0, 500, 3, -1.0, 8};
  bed.object.SetZYNKNCMP(&parameters);
  int node = 0, identity = -1;
  double mean = 0.0;
  parameters.onCall = [&] {
    mean = bed.object.MeanDistance;
    node = bed.object.ppRBFiNodeConn == nullptr ? 0 : bed.object.ppRBFiNodeConn[1][0];
    identity = bed.object.m_piCellToBlock[1];
  };
  bed.SetUp(AllUsable(bed.host.mesh.NCell), SomePoints());
  EXPECT_EQ(bed.object.MeanDistance, mean);
  EXPECT_GT(mean, 0.5);
  EXPECT_GT(node, 0);
  EXPECT_EQ(0, identity);
  EXPECT_EQ(1, bed.object.m_piCellToBlock[1]);
}

TEST(PointSetUp, ReadsTheHostAndCallsNoExchange) {
  PointBed bed(SomeMesh());
  Array marks = InteriorUsable(SomeMesh());
  Array const marksBefore = marks;
  PointArrays points(SomePoints());
  Array const xBefore = points.x, yBefore = points.y, zBefore = points.z;
  bed.SetUp(marks, points);
  EXPECT_TRUE(bed.host.InputsUntouched());
  EXPECT_TRUE(bed.host.exchanges.empty());
  EXPECT_TRUE(marks.IdenticalTo(marksBefore));
  EXPECT_TRUE(points.x.IdenticalTo(xBefore) && points.y.IdenticalTo(yBefore) &&
              points.z.IdenticalTo(zBefore));
}

TEST(PointSetUp, NeedsNoCommunication) {
  PointBed bed(SomeMesh());
  Object object;
  object.getZyn3dGV(&bed.host.globals, nullptr, nullptr, &bed.host.mesh);
  object.getPartitionFace(&bed.host.partitionFaces);
  Array marks = AllUsable(bed.host.mesh.NCell);
  PointArrays points(SomePoints());
  Printed([&] {
    EXPECT_EQ(0, object.Initialize_IBInterpolateData(marks.Data(), points.Size(), points.x.Data(),
                                                     points.y.Data(), points.z.Data()));
  });
  EXPECT_GT(object.m_ppIBConn[1][0], 0);
}

// ------------------------------------------------------------------------------------------------ allocation

TEST(PointAllocation, MakesAllTablesWithZerosAndWithoutRows) {
  PointBed bed(SomeMesh());
  Object& object = bed.object;
  EXPECT_EQ(0, object.Initialize_IB_memory_allocate(3));
  EXPECT_EQ(3, object.m_iNIBNode);
  for (int i = 0; i <= 3; ++i) {
    EXPECT_EQ(nullptr, object.m_ppIBConn[i]);
    EXPECT_EQ(nullptr, object.m_ppIBNodeConn[i]);
    EXPECT_EQ(nullptr, object.m_ppIBCoef[i]);
    EXPECT_EQ(nullptr, object.m_ppIBValueCoef[i]);
    EXPECT_EQ(0, object.m_pIBNodeCellTable[i].m_iNRow);
    EXPECT_EQ(nullptr, object.m_pIBNodeCellTable[i].m_ppRow);
    EXPECT_EQ(0.0, object.m_pIBSupportLength[i]);
    EXPECT_EQ(0, object.m_pIBTwoSeeds[i]);
  }
  EXPECT_NE(nullptr, object.m_pADTree);
  int const nCell = bed.host.mesh.NCell;
  for (int c = 0; c <= nCell; ++c) {
    IBCnode const& p = object.m_pIBCnode[c];
    EXPECT_EQ(0, object.m_piCellToBlock[c]);
    EXPECT_EQ(0, object.m_piNodeKind[c]);
    EXPECT_TRUE(p.x == 0.0 && p.y == 0.0 && p.z == 0.0 && p.tag == 0);
  }
  EXPECT_EQ(nCell, object.m_CellLocalID.GetSize());
  EXPECT_EQ(bed.host.mesh.NNode, object.m_NodeLocalID.GetSize());
  EXPECT_EQ(0, object.m_CellLocalID[nCell]);
  EXPECT_EQ(0, object.m_NodeLocalID[bed.host.mesh.NNode]);
}

TEST(PointAllocation, LeavesWhatLaterStepsMake) {
  PointBed bed(SomeMesh());
  bed.object.Initialize_IB_memory_allocate(3);
  EXPECT_EQ(nullptr, bed.object.ppRBFiNodeConn);
  EXPECT_EQ(nullptr, bed.object.m_piBlockToCell);
  EXPECT_TRUE(bed.object.m_bBoundaryNode.Empty());
}

TEST(PointAllocation, KeepsAllTablesAfterTheSetUp) {
  PointBed bed(SomeMesh());
  bed.SetUp(AllUsable(bed.host.mesh.NCell), SomePoints());
  EXPECT_NE(nullptr, bed.object.m_ppIBNodeConn[1]);
  EXPECT_NE(nullptr, bed.object.ppRBFiNodeConn[1]);
  EXPECT_NE(nullptr, bed.object.m_pADTree);
  EXPECT_NE(nullptr, bed.object.m_pIBNodeCellTable[1].m_ppRow);
  EXPECT_EQ(1, bed.object.m_piBlockToCell[1]);
}

// Every element of every row is written and read again, so that two rows in one place would show.
TEST(PointAllocation, GivesEveryRowAPlaceOfItsOwn) {
  for (int const method : {1, 2, 3}) {
    PointBed bed(SomeMesh(), PointSettings{500.0, method, 8});
    bed.SetUp(AllUsable(bed.host.mesh.NCell), SomePoints());
    Object& object = bed.object;
    std::vector<int> sizes(1, 0);
    for (int i = 1; i <= object.m_iNIBNode; ++i) sizes.push_back(object.m_ppIBConn[i][0]);
    auto const forEachElement = [&](auto&& visit) {
      for (int i = 1; i <= object.m_iNIBNode; ++i)
        for (int k = 0; k <= sizes[static_cast<std::size_t>(i)]; ++k) visit(i, k);
    };
    forEachElement([&](int i, int k) {
      object.m_ppIBConn[i][k] = 1000 * i + k;
      object.m_ppIBCoef[i][k].tag = 1000 * i + k;
      object.m_ppIBValueCoef[i][k] = 1000 * i + k;
    });
    forEachElement([&](int i, int k) {
      EXPECT_EQ(1000 * i + k, object.m_ppIBConn[i][k]);
      EXPECT_EQ(1000 * i + k, object.m_ppIBCoef[i][k].tag);
      EXPECT_EQ(1000 * i + k, object.m_ppIBValueCoef[i][k]);
    });
  }
}

// ------------------------------------------------------------------------------------- no points, no method

TEST(PointSetUp, WithoutPointsMakesTablesOfOneElement) {
  PointBed bed(SomeMesh());
  PointArrays none({});
  none.x[0] = none.y[0] = none.z[0] = 0.0;
  Array marks = AllUsable(bed.host.mesh.NCell);
  std::string const printed = bed.SetUp(marks, none);
  EXPECT_EQ(0U, printed.find(kAllocated + kCollated + kDefaults + kTree + kSearched + kDerived + "FI"));
  EXPECT_EQ(0, bed.object.m_iNIBNode);
  EXPECT_EQ(0, bed.object.m_iNDerived);
  EXPECT_EQ(nullptr, bed.object.m_ppIBConn[0]);
  EXPECT_EQ(nullptr, bed.object.m_ppIBNodeConn[0]);
  EXPECT_EQ(nullptr, bed.object.m_ppIBCoef[0]);
  EXPECT_EQ(nullptr, bed.object.m_ppIBValueCoef[0]);
  EXPECT_EQ(0, bed.object.m_pIBNodeCellTable[0].m_iNRow);
  EXPECT_EQ(nullptr, bed.object.m_pIBNodeCellTable[0].m_ppRow);
  EXPECT_EQ(0.0, bed.object.m_pIBSupportLength[0]);
  EXPECT_EQ(0, bed.object.m_pIBTwoSeeds[0]);
  EXPECT_TRUE(std::isnan(bed.object.m_dFiSumSq));
}

TEST(PointSetUp, WithANegativeNumberOfPointsDoesWhatItDoesWithoutPoints) {
  PointBed bed(SomeMesh());
  Array marks = AllUsable(bed.host.mesh.NCell), none(0);
  none[0] = 0.0;
  std::string const printed = Printed([&] {
    EXPECT_EQ(
        0, bed.object.Initialize_IBInterpolateData(marks.Data(), -3, none.Data(), none.Data(), none.Data()));
  });
  EXPECT_NE(std::string::npos, printed.find(kDerived));
  EXPECT_EQ(0, bed.object.m_iNDerived);
  Array field(bed.host.mesh.NCell), untouched(2, 7.5);
  bed.object.Multiply_IBRBFCoefficent(field.Data(), untouched.Data(), untouched.Data(), untouched.Data(),
                                      untouched.Data());
  EXPECT_TRUE(untouched.IdenticalTo(Array(2, 7.5)));
}

TEST(PointSetUp, WithAnUnknownMethodLeavesThePointsWithoutRows) {
  for (int const method : {4, 0, -1}) {
    PointBed bed(SomeMesh(), PointSettings{500.0, method, 8});
    bed.SetUp(AllUsable(bed.host.mesh.NCell), SomePoints());
    for (int i = 0; i <= bed.object.m_iNIBNode; ++i) {
      EXPECT_EQ(nullptr, bed.object.m_ppIBConn[i]);
      EXPECT_EQ(nullptr, bed.object.m_ppIBCoef[i]);
      EXPECT_EQ(nullptr, bed.object.m_ppIBValueCoef[i]);
      EXPECT_EQ(nullptr, bed.object.m_ppIBNodeConn[i]);
    }
    EXPECT_EQ(0, bed.object.m_iNDerived);
    EXPECT_EQ(1, bed.object.m_piCellToBlock[1]) << "the tree is filled all the same";
  }
}

// ----------------------------------------------------------------------------------------- setting up again

/// A set-up that another one follows on the same object.
struct Round {
  int method;
  double xShift;
  std::size_t nPoint;
  bool boundaryCellsUsable;
};

std::vector<Point> PointsOf(Round const& round) {
  std::vector<Point> points = SomePoints();
  points.resize(round.nPoint, Point{1.1, 0.7, 2.2});
  for (Point& p : points) p.x += round.xShift;
  return points;
}

Array MarksOf(Round const& round) {
  return round.boundaryCellsUsable ? AllUsable(SomeMesh().NCell()) : InteriorUsable(SomeMesh());
}

TEST(PointSetUpAgain, EqualsAFreshObjectBitForBit) {
  std::vector<Round> const rounds = {{3, 0.0, 5, true}, {3, 0.3, 9, false}, {1, 0.1, 3, true},
                                     {2, 0.2, 6, true}, {4, 0.0, 4, true},  {3, 0.5, 5, false}};
  PointBed bed(SomeMesh());
  for (Round const& round : rounds) {
    PointSettings const settings{500.0, round.method, 8};
    bed.folder.Write(Settings(settings));
    std::string const printed = bed.SetUp(MarksOf(round), PointsOf(round));
    PointBed fresh(SomeMesh(), settings);
    EXPECT_EQ(fresh.SetUp(MarksOf(round), PointsOf(round)), printed) << "method " << round.method;
    ASSERT_TRUE(SameContent(fresh.object, bed.object)) << "method " << round.method;
  }
}

TEST(PointSetUpAgain, KeepsTheMemoryConstant) {
  PointBed bed(SomeMesh());
  Array marks = AllUsable(bed.host.mesh.NCell);
  PointArrays points(SomePoints());
  auto const setUp = [&](int method) {
    bed.folder.Write(Settings(PointSettings{500.0, method, 8}));
    bed.SetUp(marks, points);
  };
  for (int const method : {1, 2, 3}) setUp(method);
  long const live = LiveAllocations();
  for (int round = 0; round < 20; ++round) {
    for (int const method : {1, 2, 3}) setUp(method);
  }
  EXPECT_EQ(live, LiveAllocations());
}

TEST(PointSetUpAgain, WorksOnAnotherMesh) {
  PointBed bed(SomeMesh());
  bed.SetUp(AllUsable(bed.host.mesh.NCell), SomePoints());
  HexahedraOptions larger;
  larger.nx = 5;
  larger.nz = 2;
  PointBed other(Hexahedra(larger));
  PointBed::Connect(bed.object, other.host);
  bed.SetUp(AllUsable(other.host.mesh.NCell), SomePoints());
  other.SetUp(AllUsable(other.host.mesh.NCell), SomePoints());
  EXPECT_TRUE(SameContent(other.object, bed.object));
}

// ----------------------------------------------------------------------------------------------- destruction

TEST(PointDestruction, NeedsNeitherHostObjectsNorSetUp) {
  auto const object = std::make_unique<Object>();
  EXPECT_EQ(nullptr, object->m_ppIBConn);
}

TEST(PointDestruction, LeavesAllHostObjects) {
  SettingsFolder const folder;
  PointHost host(SomeMesh(), folder.BaseFileName());
  {
    Object object;
    PointBed::Connect(object, host);
    Array marks = AllUsable(host.mesh.NCell);
    PointArrays points(SomePoints());
    Printed([&] {
      object.Initialize_IBInterpolateData(marks.Data(), points.Size(), points.x.Data(), points.y.Data(),
                                          points.z.Data());
    });
  }
  EXPECT_TRUE(host.destroyed.empty());
  EXPECT_TRUE(host.InputsUntouched());
}

TEST(PointDestruction, FreesEverythingThatTheObjectAllocated) {
  for (int const method : {1, 2, 3, 4}) {
    SettingsFolder const folder;
    folder.Write(Settings(PointSettings{500.0, method, 8}));
    PointHost host(SomeMesh(), folder.BaseFileName());
    Array marks = AllUsable(host.mesh.NCell);
    PointArrays points(SomePoints());
    auto const live = [&] {
      long const before = LiveAllocations();
      {
        Object object;
        PointBed::Connect(object, host);
        Printed([&] {
          object.Initialize_IBInterpolateData(marks.Data(), points.Size(), points.x.Data(), points.y.Data(),
                                              points.z.Data());
        });
      }
      return LiveAllocations() - before;
    };
    live();  // what the C++ library keeps for good from the first use of a stream
    EXPECT_EQ(0, live()) << "method " << method;
  }
}

TEST(PointDestruction, FreesTablesWithoutRowsToo) {
  SettingsFolder const folder;
  PointHost host(SomeMesh(), folder.BaseFileName());
  long const before = LiveAllocations();
  {
    Object object;
    PointBed::Connect(object, host);
    object.Initialize_IB_memory_allocate(7);
    object.Initialize_IB_memory_allocate(3);
  }
  EXPECT_EQ(before, LiveAllocations());
}

// --------------------------------------------------------------------------------------------------- copying

/// An object that is never destroyed, since it shares its tables with another. Its three vectors, which are its
/// own, are.
class Undestroyed {
 public:
  Undestroyed() : object_(new (memory_) Object) {}
  explicit Undestroyed(Object const& source) : object_(new (memory_) Object(source)) {}
  ~Undestroyed() {
    object_->m_CellLocalID.Destroy();
    object_->m_NodeLocalID.Destroy();
    object_->m_bBoundaryNode.Destroy();
  }
  Undestroyed(Undestroyed const&) = delete;
  Undestroyed& operator=(Undestroyed const&) = delete;

  Object& operator*() { return *object_; }
  Object* operator->() { return object_; }

 private:
  alignas(Object) unsigned char memory_[sizeof(Object)];
  Object* object_;
};

void ExpectSharedTables(Object const& a, Object const& b) {
  EXPECT_EQ(a.m_pIBCnode, b.m_pIBCnode);
  EXPECT_EQ(a.m_ppIBConn, b.m_ppIBConn);
  EXPECT_EQ(a.m_ppIBCoef, b.m_ppIBCoef);
  EXPECT_EQ(a.m_ppIBValueCoef, b.m_ppIBValueCoef);
  EXPECT_EQ(a.ppRBFiNodeConn, b.ppRBFiNodeConn);
  EXPECT_EQ(a.m_piNodeKind, b.m_piNodeKind);
  EXPECT_EQ(a.m_piCellToBlock, b.m_piCellToBlock);
  EXPECT_EQ(a.m_piBlockToCell, b.m_piBlockToCell);
  EXPECT_EQ(a.m_pIBSupportLength, b.m_pIBSupportLength);
  EXPECT_EQ(a.m_pIBTwoSeeds, b.m_pIBTwoSeeds);
  EXPECT_EQ(a.m_ppIBNodeConn, b.m_ppIBNodeConn);
  EXPECT_EQ(a.m_pADTree, b.m_pADTree);
  EXPECT_EQ(a.m_pIBNodeCellTable, b.m_pIBNodeCellTable);
}

void ExpectSameHostObjectsAndTexts(Object const& a, Object const& b) {
  EXPECT_EQ(a.m_pPartFace, b.m_pPartFace);
  EXPECT_EQ(a.m_pComm, b.m_pComm);
  EXPECT_EQ(a.m_pGVGPU, b.m_pGVGPU);
  EXPECT_EQ(a.m_pGVOpenMP, b.m_pGVOpenMP);
  EXPECT_EQ(a.m_GPUHead, b.m_GPUHead);
  EXPECT_EQ(a.m_pGV, b.m_pGV);
  EXPECT_EQ(a.m_pMesh, b.m_pMesh);
  EXPECT_EQ(a.m_pKNCMP, b.m_pKNCMP);
  EXPECT_EQ(0, std::memcmp(a.RBFFileName, b.RBFFileName, sizeof a.RBFFileName));
  EXPECT_EQ(0, std::memcmp(a.ErrorMsg, b.ErrorMsg, sizeof a.ErrorMsg));
}

template <typename Vector>
void ExpectOwnEqualVector(Vector const& a, Vector const& b) {
  ASSERT_EQ(a.GetSize(), b.GetSize());
  EXPECT_NE(a.Get_Ptr(), b.Get_Ptr());
  for (int i = 1; i <= a.GetSize(); ++i) EXPECT_EQ(a[i], b[i]) << i;
}

void ExpectFlatCopy(Object const& source, Object const& copy) {
  ExpectSharedTables(source, copy);
  ExpectSameHostObjectsAndTexts(source, copy);
  EXPECT_TRUE(SameContent(source, copy));
  ExpectOwnEqualVector(source.m_CellLocalID, copy.m_CellLocalID);
  ExpectOwnEqualVector(source.m_NodeLocalID, copy.m_NodeLocalID);
  ExpectOwnEqualVector(source.m_bBoundaryNode, copy.m_bBoundaryNode);
}

/// An object with a failure text, parameters and all tables.
struct Source : PointBed {
  Source() : PointBed(SomeMesh(), PointSettings{37.5, 3, 11}) {
    object.getCommunication(nullptr);
    SetUp(AllUsable(host.mesh.NCell), SomePoints());
    object.SetZYNKNCMP(&parameters);
  }
  PointParameters parameters;
};

TEST(PointCopy, SharesTablesAndHostObjectsAndCopiesTheVectorsDeeply) {
  Source source;
  Undestroyed copy(source.object);
  ExpectFlatCopy(source.object, *copy);
}

TEST(PointAssignment, SharesTablesAndHostObjectsAndCopiesTheVectorsDeeply) {
  Source source;
  Undestroyed target;
  EXPECT_EQ(&*target, &(*target = source.object));
  ExpectFlatCopy(source.object, *target);
}

TEST(PointAssignment, ReleasesNothingThatTheTargetHeld) {
  Source source, holder;
  Undestroyed target(holder.object);  // shares the holder's tables
  *target = source.object;
  ExpectSharedTables(source.object, *target);
  EXPECT_EQ(1, holder.object.m_pIBCnode[1].tag);
  EXPECT_GT(holder.Stencil(1).size(), 2U);
  EXPECT_EQ(1, holder.object.m_piBlockToCell[1]);
}

TEST(PointAssignment, ToItselfChangesNothing) {
  Source source;
  Undestroyed before(source.object);
  Object const& same = source.object;
  source.object = same;
  ExpectSharedTables(*before, source.object);
  EXPECT_TRUE(SameContent(*before, source.object));
  EXPECT_EQ(source.host.mesh.NCell, source.object.m_CellLocalID.GetSize());
}

TEST(PointCopy, InterpolatesLikeItsSource) {
  Source source;
  Undestroyed copy(source.object);
  int const n = copy->m_iNIBNode;
  Array field(source.host.mesh.NCell, 2.5);
  Array value(n), x(n), y(n), z(n), copyValue(n), copyX(n), copyY(n), copyZ(n);
  source.object.Multiply_IBRBFCoefficent(field.Data(), value.Data(), x.Data(), y.Data(), z.Data());
  copy->Multiply_IBRBFCoefficent(field.Data(), copyValue.Data(), copyX.Data(), copyY.Data(), copyZ.Data());
  EXPECT_TRUE(value.IdenticalTo(copyValue) && x.IdenticalTo(copyX) && y.IdenticalTo(copyY) &&
              z.IdenticalTo(copyZ));
  EXPECT_NEAR(2.5, value[1], 0.1) << "constants are reproduced nearly";
}

}  // namespace
}  // namespace zyn_test::lifecycle_test
