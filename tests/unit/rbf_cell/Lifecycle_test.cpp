#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <type_traits>

#include "host/ZYNOptKer.h"
#include "tests/support/mesh/LatticeMesh.h"
#include "tests/support/rbf_cell/CellBed.h"
#include "tests/support/watch/AllocationCount.h"
#include "tests/support/watch/SettingsFolder.h"
#include "tests/support/watch/Undestroyed.h"

// What construction leaves, what the setters store and answer, what set-up allocates, what the destructor
// destroys, and what a copy is.

namespace zyn_test::lifecycle_test {
namespace {

std::string const kPrefix = "Operator Gradient Error = ";

// ---------------------------------------------------------------------------------------------- construction

TEST(CellOperatorRecord, IsAllZeroAndNothingButData) {
  RBFnode const node;
  for (double const value : {node.x, node.y, node.z, node.x0, node.y0, node.z0}) EXPECT_EQ(0.0, value);
  EXPECT_EQ(0, node.id);
  EXPECT_FALSE(std::is_polymorphic<RBFnode>::value);
}

TEST(CellOperatorConstruction, ClearsTheTablesOfTheCells) {
  CZynRBFInternalObject const object;
  EXPECT_EQ(nullptr, object.m_pADTree);
  EXPECT_EQ(nullptr, object.m_pRBFnode);
  EXPECT_EQ(nullptr, object.m_pStencilExtent);
  EXPECT_EQ(nullptr, object.m_ppRBFCellConn);
  EXPECT_EQ(nullptr, object.m_ppRBFCellCoef);
  EXPECT_EQ(nullptr, object.m_pSupportLength);
  EXPECT_EQ(nullptr, object.m_piNodeKind);
  EXPECT_EQ(nullptr, object.m_piNodeKindIndex);
}

TEST(CellOperatorConstruction, ClearsTheTablesOfTheFaces) {
  CZynRBFInternalObject const object;
  EXPECT_EQ(nullptr, object.m_ppRBFInnerFaceConn);
  EXPECT_EQ(nullptr, object.m_ppRBFWallFaceConn);
  EXPECT_EQ(nullptr, object.m_ppRBFInletFaceConn);
  EXPECT_EQ(nullptr, object.m_ppRBFOutletFaceConn);
  EXPECT_EQ(nullptr, object.m_ppRBFPartInterFaceConn);
  EXPECT_EQ(nullptr, object.m_ppRBFInnerFaceCoef);
  EXPECT_EQ(nullptr, object.m_ppRBFPartInterFaceCoef);
  EXPECT_EQ(nullptr, object.m_ppRBFInletFaceCoef);
  EXPECT_EQ(nullptr, object.m_ppRBFWallFaceCoef);
  EXPECT_EQ(nullptr, object.m_ppRBFOutletFaceCoef);
  EXPECT_EQ(nullptr, object.m_ppRBFInnerFaceFlux);
}

TEST(CellOperatorConstruction, ClearsTheTablesOfTheImmersedPoints) {
  CZynRBFInternalObject const object;
  EXPECT_EQ(0, object.m_iNIBNode);
  EXPECT_EQ(nullptr, object.m_ppIBConn);
  EXPECT_EQ(nullptr, object.m_ppIBCoef);
  EXPECT_EQ(nullptr, object.m_ppIBValueCoef);
}

TEST(CellOperatorConstruction, ZeroesTheTreesRange) {
  CZynRBFInternalObject const object;
  for (int axis = 0; axis < 3; ++axis) {
    EXPECT_EQ(0.0, object.m_dBoundMax[axis]);
    EXPECT_EQ(0.0, object.m_dBoundMin[axis]);
  }
}

TEST(CellOperatorConstruction, BeginsTheFailureText) {
  CZynRBFInternalObject object;
  EXPECT_EQ(kPrefix, object.m_szError);
  EXPECT_EQ(object.m_szError, object.getErrorMsg());
}

// ---------------------------------------------------------------------------------------------------- set-up

TestMesh SomeMesh() {
  LatticeOptions options;
  options.cells = Cells::HexaPyramids;
  return LatticeMesh(options);
}

TEST(CellOperatorSetUp, SetsTheStoredValues) {
  CellBed bed(SomeMesh());
  bed.object->m_iWorstElement = 77;
  bed.object->iShape_Normalize = 77;
  bed.SetUp();
  EXPECT_EQ(0, bed.object->m_iWorstElement);
  EXPECT_EQ(0, bed.object->iShape_Normalize);
  EXPECT_EQ(9999999999.0, bed.object->m_dStoredLimit);
  EXPECT_EQ(12.5, bed.object->m_dStoredFactor);
  EXPECT_EQ(500.0, bed.object->Span);
  EXPECT_EQ(bed.folder.SettingsFileName(), bed.object->m_szRBFFileName);
}

TEST(CellOperatorSetUp, AllocatesRowsOfInteriorCellsAlone) {
  TestMesh const mesh = SomeMesh();
  CellBed bed(mesh);
  bed.SetUp();
  CZynRBFInternalObject const& object = *bed.object;
  ASSERT_NE(nullptr, object.m_ppRBFCellConn);
  ASSERT_NE(nullptr, object.m_ppRBFCellCoef);
  for (int c = 0; c <= mesh.NCell(); ++c) {
    bool const interior = c >= 1 && c <= mesh.nInnerCells;
    EXPECT_EQ(interior, object.m_ppRBFCellConn[c] != nullptr) << c;
    EXPECT_EQ(interior, object.m_ppRBFCellCoef[c] != nullptr) << c;
  }
  EXPECT_NE(nullptr, object.m_pADTree);
}

TEST(CellOperatorSetUp, LeavesTheWeightsZeroWithRoomForTheMultiplier) {
  TestMesh const mesh = SomeMesh();
  CellBed bed(mesh);
  bed.SetUp();
  for (int c = 1; c <= mesh.nInnerCells; ++c) {
    int const m = static_cast<int>(mesh.Neighbours(c).size());
    for (int k = 0; k <= m + 2; ++k) {
      RBFnode const& weight = bed.object->m_ppRBFCellCoef[c][k];
      for (double const value : {weight.x, weight.y, weight.z, weight.x0, weight.y0, weight.z0})
        EXPECT_EQ(0.0, value);
      EXPECT_EQ(0, weight.id);
    }
  }
}

TEST(CellOperatorSetUp, GivesEveryRowAPlaceOfItsOwn) {
  TestMesh const mesh = SomeMesh();
  CellBed bed(mesh);
  bed.SetUp();
  auto const fill = [&](auto&& element) {
    for (int c = 1; c <= mesh.nInnerCells; ++c)
      for (int k = 0; k <= static_cast<int>(mesh.Neighbours(c).size()) + 2; ++k) element(c, k);
  };
  fill([&](int c, int k) {
    bed.object->m_ppRBFCellConn[c][k] = 100 * c + k;
    bed.object->m_ppRBFCellCoef[c][k].id = 100 * c + k;
  });
  fill([&](int c, int k) {
    EXPECT_EQ(100 * c + k, bed.object->m_ppRBFCellConn[c][k]);
    EXPECT_EQ(100 * c + k, bed.object->m_ppRBFCellCoef[c][k].id);
  });
}

TEST(CellOperatorSetUp, AllocatesEverythingAnewWhenCalledAgain) {
  CellBed bed(SomeMesh());
  bed.SetUp();
  // The former tables are lost with the second call; a copy keeps them, so that this test can free them with
  // host objects of their own.
  auto* const former = new CZynRBFInternalObject(*bed.object);
  bed.SetUp();
  EXPECT_NE(former->m_ppRBFCellConn, bed.object->m_ppRBFCellConn);
  EXPECT_NE(former->m_ppRBFCellCoef, bed.object->m_ppRBFCellCoef);
  EXPECT_NE(former->m_pSupportLength, bed.object->m_pSupportLength);
  EXPECT_NE(former->m_pADTree, bed.object->m_pADTree);
  EXPECT_NE(former->m_pRBFnode, bed.object->m_pRBFnode);
  EXPECT_NE(former->m_pStencilExtent, bed.object->m_pStencilExtent);
  EXPECT_NE(former->m_piNodeKind, bed.object->m_piNodeKind);
  EXPECT_NE(former->m_piNodeKindIndex, bed.object->m_piNodeKindIndex);
  EXPECT_EQ(1, former->m_piNodeKind[1]);
  CellBed::Connect(*former, bed.host);
  delete former;
}

TEST(CellOperatorSetUp, ReadsTheHostAndCallsNoExchange) {
  CellBed bed(SomeMesh());
  bed.SetUpAndDerive();
  EXPECT_TRUE(bed.host.InputsUntouched());
  EXPECT_TRUE(bed.host.exchanges.empty());
}

// ----------------------------------------------------------------------------------------------- destruction

TEST(CellOperatorDestruction, NeedsNeitherHostObjectsNorSetUp) {
  auto* const object = new CZynRBFInternalObject;
  delete object;
}

TEST(CellOperatorDestruction, DestroysTheFiveHostObjectsInOrderAndLeavesTheMesh) {
  SettingsFolder const folder;
  CellHost host(SomeMesh(), folder.BaseFileName());
  Destroyed const inOrder = {"globals", "partition faces", "communication", "gpu", "openmp"};
  for (bool const setUp : {false, true}) {
    host.destroyed.clear();
    CZynRBFInternalObject* const object = CellBed::NewConnected(host);
    if (setUp) Printed([object] { object->InitialRBFSetting(); });
    delete object;
    EXPECT_EQ(inOrder, host.destroyed);
    EXPECT_EQ(SomeMesh().NCell(), host.mesh.NCell);
    EXPECT_TRUE(host.InputsUntouched());
  }
}

TEST(CellOperatorDestruction, FreesEverythingThatTheObjectAllocated) {
  for (int const mode : {-1, 0, 1, 2}) {
    SettingsFolder const folder;
    CellHost host(SomeMesh(), folder.BaseFileName());
    host.destroyed.reserve(100);
    auto const live = [&host, mode] {
      long const before = LiveAllocations();
      CZynRBFInternalObject* const object = CellBed::NewConnected(host);
      Printed([object, mode] {
        object->InitialRBFSetting();
        object->DeriveRBFweighting();
        if (mode >= 0) object->faceToCellconnection_memoryallocate(mode);
      });
      delete object;
      host.destroyed.clear();
      return LiveAllocations() - before;
    };
    live();  // what the C++ library keeps for good from the first use of a stream
    EXPECT_EQ(0, live()) << "mode " << mode;
  }
}

// -------------------------------------------------------------------------------------------------- copying

template <typename T>
T* Address(std::uintptr_t value) {
  return reinterpret_cast<T*>(value * 64);  // never dereferenced
}

/// Gives every member a value of its own. The object must not be destroyed.
void FillAllMembers(CZynRBFInternalObject& o) {
  o.m_pPartFace = Address<CPartitionFace_DLL>(1);
  o.m_pComm = Address<CCommunication>(2);
  o.m_pGVGPU = Address<CZYNGVGPU>(3);
  o.m_pGVOpenMP = Address<CZYNGVOpenMP>(4);
  o.m_GPUHead = 5;
  o.m_pADTree = Address<CZYNOptKer>(6);
  o.m_pRBFnode = Address<RBFnode>(7);
  o.m_pStencilExtent = Address<RBFnode>(8);
  o.m_iWorstElement = 9;
  o.MAXResidual_X = 10.0;
  o.MAXResidual_Y = 11.0;
  o.MAXResidual_Z = 12.0;
  o.MAX_Weithting_Residual_Normal = 13.0;
  o.m_dStoredLimit = 14.0;
  o.m_dStoredFactor = 15.0;
  std::memset(o.m_szRBFFileName, 'n', sizeof o.m_szRBFFileName);  // the whole buffer, with no terminator
  o.Span = 16.0;
  o.iShape_Normalize = 17;
  o.m_ppRBFCellConn = Address<int*>(18);
  o.m_ppRBFInnerFaceConn = Address<int*>(19);
  o.m_ppRBFWallFaceConn = Address<int*>(20);
  o.m_ppRBFInletFaceConn = Address<int*>(21);
  o.m_ppRBFOutletFaceConn = Address<int*>(22);
  o.m_ppRBFPartInterFaceConn = Address<int*>(23);
  o.m_ppRBFCellCoef = Address<RBFnode*>(24);
  o.m_ppRBFInnerFaceCoef = Address<RBFnode*>(25);
  o.m_ppRBFPartInterFaceCoef = Address<RBFnode*>(26);
  o.m_ppRBFInletFaceCoef = Address<RBFnode*>(27);
  o.m_ppRBFWallFaceCoef = Address<RBFnode*>(28);
  o.m_ppRBFOutletFaceCoef = Address<RBFnode*>(29);
  o.m_ppRBFInnerFaceFlux = Address<double*>(30);
  o.m_pSupportLength = Address<double>(31);
  o.m_piNodeKind = Address<int>(32);
  o.m_piNodeKindIndex = Address<int>(33);
  for (int axis = 0; axis < 3; ++axis) {
    o.m_dBoundMax[axis] = 34.0 + axis;
    o.m_dBoundMin[axis] = 37.0 + axis;
  }
  o.m_dMeanCellDistance = 40.0;
  o.m_iNIBNode = 41;
  o.m_ppIBConn = Address<int*>(42);
  o.m_ppIBCoef = Address<RBFnode*>(43);
  o.m_ppIBValueCoef = Address<double*>(44);
  o.m_pGV = Address<CZyn3dGV>(45);
  o.m_pMesh = Address<CZYN3DFiniteVolumeMesh>(46);
  std::memset(o.m_szError, 'e', sizeof o.m_szError);
}

void ExpectSameHostObjects(CZynRBFInternalObject const& a, CZynRBFInternalObject const& b) {
  EXPECT_EQ(a.m_pPartFace, b.m_pPartFace);
  EXPECT_EQ(a.m_pComm, b.m_pComm);
  EXPECT_EQ(a.m_pGVGPU, b.m_pGVGPU);
  EXPECT_EQ(a.m_pGVOpenMP, b.m_pGVOpenMP);
  EXPECT_EQ(a.m_GPUHead, b.m_GPUHead);
  EXPECT_EQ(a.m_pGV, b.m_pGV);
  EXPECT_EQ(a.m_pMesh, b.m_pMesh);
}

void ExpectSameValues(CZynRBFInternalObject const& a, CZynRBFInternalObject const& b) {
  EXPECT_EQ(a.m_iWorstElement, b.m_iWorstElement);
  EXPECT_EQ(a.MAXResidual_X, b.MAXResidual_X);
  EXPECT_EQ(a.MAXResidual_Y, b.MAXResidual_Y);
  EXPECT_EQ(a.MAXResidual_Z, b.MAXResidual_Z);
  EXPECT_EQ(a.MAX_Weithting_Residual_Normal, b.MAX_Weithting_Residual_Normal);
  EXPECT_EQ(a.m_dStoredLimit, b.m_dStoredLimit);
  EXPECT_EQ(a.m_dStoredFactor, b.m_dStoredFactor);
  EXPECT_EQ(a.Span, b.Span);
  EXPECT_EQ(a.iShape_Normalize, b.iShape_Normalize);
  EXPECT_EQ(a.m_dMeanCellDistance, b.m_dMeanCellDistance);
  EXPECT_EQ(a.m_iNIBNode, b.m_iNIBNode);
  EXPECT_EQ(0, std::memcmp(a.m_dBoundMax, b.m_dBoundMax, sizeof a.m_dBoundMax));
  EXPECT_EQ(0, std::memcmp(a.m_dBoundMin, b.m_dBoundMin, sizeof a.m_dBoundMin));
  EXPECT_EQ(0, std::memcmp(a.m_szRBFFileName, b.m_szRBFFileName, sizeof a.m_szRBFFileName));
  EXPECT_EQ(0, std::memcmp(a.m_szError, b.m_szError, sizeof a.m_szError));
}

void ExpectSameTables(CZynRBFInternalObject const& a, CZynRBFInternalObject const& b) {
  EXPECT_EQ(a.m_pADTree, b.m_pADTree);
  EXPECT_EQ(a.m_pRBFnode, b.m_pRBFnode);
  EXPECT_EQ(a.m_pStencilExtent, b.m_pStencilExtent);
  EXPECT_EQ(a.m_ppRBFCellConn, b.m_ppRBFCellConn);
  EXPECT_EQ(a.m_ppRBFInnerFaceConn, b.m_ppRBFInnerFaceConn);
  EXPECT_EQ(a.m_ppRBFWallFaceConn, b.m_ppRBFWallFaceConn);
  EXPECT_EQ(a.m_ppRBFInletFaceConn, b.m_ppRBFInletFaceConn);
  EXPECT_EQ(a.m_ppRBFOutletFaceConn, b.m_ppRBFOutletFaceConn);
  EXPECT_EQ(a.m_ppRBFPartInterFaceConn, b.m_ppRBFPartInterFaceConn);
  EXPECT_EQ(a.m_ppRBFCellCoef, b.m_ppRBFCellCoef);
  EXPECT_EQ(a.m_ppRBFInnerFaceCoef, b.m_ppRBFInnerFaceCoef);
  EXPECT_EQ(a.m_ppRBFPartInterFaceCoef, b.m_ppRBFPartInterFaceCoef);
  EXPECT_EQ(a.m_ppRBFInletFaceCoef, b.m_ppRBFInletFaceCoef);
  EXPECT_EQ(a.m_ppRBFWallFaceCoef, b.m_ppRBFWallFaceCoef);
  EXPECT_EQ(a.m_ppRBFOutletFaceCoef, b.m_ppRBFOutletFaceCoef);
  EXPECT_EQ(a.m_ppRBFInnerFaceFlux, b.m_ppRBFInnerFaceFlux);
  EXPECT_EQ(a.m_pSupportLength, b.m_pSupportLength);
  EXPECT_EQ(a.m_piNodeKind, b.m_piNodeKind);
  EXPECT_EQ(a.m_piNodeKindIndex, b.m_piNodeKindIndex);
  EXPECT_EQ(a.m_ppIBConn, b.m_ppIBConn);
  EXPECT_EQ(a.m_ppIBCoef, b.m_ppIBCoef);
  EXPECT_EQ(a.m_ppIBValueCoef, b.m_ppIBValueCoef);
}

TEST(CellOperatorCopy, TakesEveryMemberAsItStands) {
  Undestroyed<CZynRBFInternalObject> source;
  FillAllMembers(*source);
  Undestroyed<CZynRBFInternalObject> copy(*source);
  ExpectSameHostObjects(*source, *copy);
  ExpectSameValues(*source, *copy);
  ExpectSameTables(*source, *copy);
}

TEST(CellOperatorAssignment, TakesEveryMemberAsItStandsAndReturnsTheTarget) {
  Undestroyed<CZynRBFInternalObject> source, target;
  FillAllMembers(*source);
  EXPECT_EQ(&*target, &(*target = *source));
  ExpectSameHostObjects(*source, *target);
  ExpectSameValues(*source, *target);
  ExpectSameTables(*source, *target);
}

TEST(CellOperatorAssignment, ReleasesNothingThatTheTargetHeld) {
  CellBed source(SomeMesh()), holder(SomeMesh());
  source.SetUp();
  holder.SetUpAndDerive();
  Undestroyed<CZynRBFInternalObject> target(*holder.object);  // shares the holder's tables and host objects
  *target = *source.object;
  EXPECT_TRUE(holder.host.destroyed.empty());
  EXPECT_EQ(1, holder.object->m_ppRBFCellConn[1][1]);
  EXPECT_EQ(1, holder.object->m_ppRBFCellCoef[1][1].id);
}

TEST(CellOperatorAssignment, ToItselfChangesNothing) {
  CellBed bed(SomeMesh());
  bed.SetUpAndDerive();
  Undestroyed<CZynRBFInternalObject> before(*bed.object);
  CZynRBFInternalObject const& same = *bed.object;
  *bed.object = same;
  ExpectSameHostObjects(*before, *bed.object);
  ExpectSameValues(*before, *bed.object);
  ExpectSameTables(*before, *bed.object);
}

}  // namespace
}  // namespace zyn_test::lifecycle_test
