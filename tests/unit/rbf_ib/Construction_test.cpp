#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

#include "host/ZYNOptKer.h"
#include "tests/support/mesh/SmallMeshes.h"
#include "tests/support/rbf_ib/PointBed.h"

// What construction leaves in each member, and what the setters store and answer.

namespace zyn_test {
namespace {

std::string const kPrefix = "Operator Gradient Error = ";
std::string const kNoGlobals = "Can not get the object of Global Variables\n";
std::string const kNoPartFaces = "Can not get the object of Part Faces\n";
std::string const kNoCommunication = "Can not get the object of Communication\n";

using Object = CZynIBRBFInternalObject;

// ---------------------------------------------------------------------------------------------- construction

TEST(PointOperatorConstruction, ClearsTheHostObjects) {
  Object const object;
  EXPECT_EQ(nullptr, object.m_pPartFace);
  EXPECT_EQ(nullptr, object.m_pComm);
  EXPECT_EQ(nullptr, object.m_pGVGPU);
  EXPECT_EQ(nullptr, object.m_pGVOpenMP);
  EXPECT_EQ(nullptr, object.m_pGV);
  EXPECT_EQ(nullptr, object.m_pMesh);
  EXPECT_EQ(nullptr, object.m_pKNCMP);
}

TEST(PointOperatorConstruction, ClearsTheTables) {
  Object const object;
  EXPECT_EQ(nullptr, object.m_pIBCnode);
  EXPECT_EQ(nullptr, object.m_ppIBConn);
  EXPECT_EQ(nullptr, object.m_ppIBCoef);
  EXPECT_EQ(nullptr, object.m_ppIBValueCoef);
  EXPECT_EQ(nullptr, object.ppRBFiNodeConn);
  EXPECT_EQ(nullptr, object.m_piNodeKind);
  EXPECT_EQ(nullptr, object.m_piCellToBlock);
  EXPECT_EQ(nullptr, object.m_piBlockToCell);
  EXPECT_EQ(nullptr, object.m_pIBSupportLength);
  EXPECT_EQ(nullptr, object.m_pIBTwoSeeds);
  EXPECT_EQ(nullptr, object.m_ppIBNodeConn);
  EXPECT_EQ(nullptr, object.m_pADTree);
  EXPECT_EQ(nullptr, object.m_pIBNodeCellTable);
  EXPECT_TRUE(object.m_CellLocalID.Empty());
  EXPECT_TRUE(object.m_NodeLocalID.Empty());
  EXPECT_TRUE(object.m_bBoundaryNode.Empty());
}

TEST(PointOperatorConstruction, SetsTheDefaultsOfTheSettings) {
  Object const object;
  EXPECT_EQ(3, object.iSearch_method);
  EXPECT_EQ(0.0, object.Search_distance);
  EXPECT_EQ(20, object.Search_number);
  EXPECT_EQ(500.0, object.Span);
  EXPECT_EQ(0.0, object.MeanDistance);
}

TEST(PointOperatorConstruction, ZeroesTheTreesRangeAndTheCounts) {
  Object const object;
  for (double const bound : {object.Xmax, object.Ymax, object.Zmax, object.Xmin, object.Ymin, object.Zmin})
    EXPECT_EQ(0.0, bound);
  EXPECT_EQ(0, object.m_iNIBNode);
  EXPECT_EQ(0, object.m_iNDerived);
}

TEST(PointOperatorConstruction, ZeroesTheStatistics) {
  Object const o;
  for (double const value : {o.m_dFiSumSq, o.m_dFiMaxError, o.m_dFiMaxAnalysis, o.m_dFiMaxRBF, o.m_dDfdxSumSq,
                             o.m_dDfdxMaxError, o.m_dDfdxMaxRBF, o.m_dDfdySumSq, o.m_dDfdyMaxError,
                             o.m_dDfdyMaxRBF, o.m_dDfdzSumSq, o.m_dDfdzMaxError, o.m_dDfdzMaxRBF})
    EXPECT_EQ(0.0, value);
  for (int const point : {o.m_iFiMaxPoint, o.m_iDfdxMaxPoint, o.m_iDfdyMaxPoint, o.m_iDfdzMaxPoint})
    EXPECT_EQ(0, point);
}

TEST(PointOperatorConstruction, BeginsTheFailureText) {
  Object const object;
  EXPECT_EQ(kPrefix, object.ErrorMsg);
}

TEST(PointOperator, HasAVirtualDestructorAndCharacterBuffersOf1024) {
  EXPECT_TRUE(std::has_virtual_destructor<Object>::value);
  EXPECT_EQ(1024U, sizeof(Object::ErrorMsg));
  EXPECT_EQ(1024U, sizeof(Object::RBFFileName));
  EXPECT_EQ(sizeof(void*), sizeof(Object::m_GPUHead));
}

// Other code of a solver may read the members where they have always been.
TEST(PointOperator, KeepsItsMembersInTheirOrder) {
  Object const o;
  std::vector<void const*> const members = {&o.m_pPartFace,
                                            &o.m_pComm,
                                            &o.m_pGVGPU,
                                            &o.m_pGVOpenMP,
                                            &o.m_GPUHead,
                                            &o.m_pIBCnode,
                                            &o.iSearch_method,
                                            &o.Search_distance,
                                            &o.Search_number,
                                            &o.m_ppIBConn,
                                            &o.m_ppIBCoef,
                                            &o.m_ppIBValueCoef,
                                            &o.ppRBFiNodeConn,
                                            &o.Xmax,
                                            &o.Ymax,
                                            &o.Zmax,
                                            &o.Xmin,
                                            &o.Ymin,
                                            &o.Zmin,
                                            &o.MeanDistance,
                                            &o.RBFFileName,
                                            &o.Span,
                                            &o.m_iNIBNode,
                                            &o.m_iNDerived,
                                            &o.m_dFiSumSq,
                                            &o.m_dFiMaxError,
                                            &o.m_iFiMaxPoint,
                                            &o.m_dFiMaxAnalysis,
                                            &o.m_dFiMaxRBF,
                                            &o.m_dDfdxSumSq,
                                            &o.m_dDfdxMaxError,
                                            &o.m_iDfdxMaxPoint,
                                            &o.m_dDfdxMaxRBF,
                                            &o.m_dDfdySumSq,
                                            &o.m_dDfdyMaxError,
                                            &o.m_iDfdyMaxPoint,
                                            &o.m_dDfdyMaxRBF,
                                            &o.m_dDfdzSumSq,
                                            &o.m_dDfdzMaxError,
                                            &o.m_iDfdzMaxPoint,
                                            &o.m_dDfdzMaxRBF,
                                            &o.m_piNodeKind,
                                            &o.m_piCellToBlock,
                                            &o.m_piBlockToCell,
                                            &o.m_pIBSupportLength,
                                            &o.m_pIBTwoSeeds,
                                            &o.m_ppIBNodeConn,
                                            &o.m_CellLocalID,
                                            &o.m_NodeLocalID,
                                            &o.m_bBoundaryNode,
                                            &o.m_pADTree,
                                            &o.m_pIBNodeCellTable,
                                            &o.m_pGV,
                                            &o.m_pMesh,
                                            &o.ErrorMsg,
                                            &o.m_pKNCMP};
  for (std::size_t k = 1; k < members.size(); ++k) EXPECT_LT(members[k - 1], members[k]) << "member " << k;
}

// ---------------------------------------------------------------------------------------------- host objects

struct Setters : ::testing::Test {
  PointHost host{LooseCells({Point{0, 0, 0}, Point{1, 0, 0}}), "run.cas"};
  Object object;

  std::uint64_t FirstWordOfGPU() const {
    std::uint64_t word = 0;
    std::memcpy(&word, static_cast<void const*>(&host.gpu), sizeof word);
    return word;
  }
};

using PointOperatorSetters = Setters;

TEST_F(PointOperatorSetters, StoreAllHostObjects) {
  EXPECT_EQ(1, object.getZyn3dGV(&host.globals, &host.gpu, &host.openMP, &host.mesh));
  EXPECT_EQ(1, object.getPartitionFace(&host.partitionFaces));
  EXPECT_EQ(1, object.getCommunication(&host.communication));
  EXPECT_EQ(&host.globals, object.m_pGV);
  EXPECT_EQ(&host.gpu, object.m_pGVGPU);
  EXPECT_EQ(&host.openMP, object.m_pGVOpenMP);
  EXPECT_EQ(&host.mesh, object.m_pMesh);
  EXPECT_EQ(&host.partitionFaces, object.m_pPartFace);
  EXPECT_EQ(&host.communication, object.m_pComm);
  EXPECT_EQ(kPrefix, object.ErrorMsg);
}

TEST_F(PointOperatorSetters, CopyTheFirstWordOfTheAcceleratorObject) {
  object.getZyn3dGV(&host.globals, &host.gpu, nullptr, nullptr);
  EXPECT_EQ(FirstWordOfGPU(), object.m_GPUHead);
}

TEST_F(PointOperatorSetters, KeepFormerValuesForNullsBesideValidGlobals) {
  object.getZyn3dGV(&host.globals, &host.gpu, &host.openMP, &host.mesh);
  CZyn3dGV otherGlobals;
  EXPECT_EQ(1, object.getZyn3dGV(&otherGlobals, nullptr, nullptr, nullptr));
  EXPECT_EQ(&otherGlobals, object.m_pGV);
  EXPECT_EQ(&host.gpu, object.m_pGVGPU);
  EXPECT_EQ(&host.openMP, object.m_pGVOpenMP);
  EXPECT_EQ(&host.mesh, object.m_pMesh);
  EXPECT_EQ(FirstWordOfGPU(), object.m_GPUHead);
  EXPECT_EQ(kPrefix, object.ErrorMsg);
}

TEST_F(PointOperatorSetters, NullGlobalsFailAndNothingIsStored) {
  EXPECT_EQ(-1, object.getZyn3dGV(nullptr, &host.gpu, &host.openMP, &host.mesh));
  EXPECT_EQ(nullptr, object.m_pGV);
  EXPECT_EQ(nullptr, object.m_pGVGPU);
  EXPECT_EQ(nullptr, object.m_pGVOpenMP);
  EXPECT_EQ(nullptr, object.m_pMesh);
  EXPECT_EQ(kPrefix + kNoGlobals, object.ErrorMsg);
}

TEST_F(PointOperatorSetters, NullGlobalsFailAndKeepAllFormerObjects) {
  object.getZyn3dGV(&host.globals, &host.gpu, &host.openMP, &host.mesh);
  object.getPartitionFace(&host.partitionFaces);
  object.getCommunication(&host.communication);
  CZYNGVGPU otherGPU;
  CZYNGVOpenMP otherOpenMP;
  CZYN3DFiniteVolumeMesh otherMesh;
  EXPECT_EQ(-1, object.getZyn3dGV(nullptr, &otherGPU, &otherOpenMP, &otherMesh));
  EXPECT_EQ(&host.globals, object.m_pGV);
  EXPECT_EQ(&host.gpu, object.m_pGVGPU);
  EXPECT_EQ(FirstWordOfGPU(), object.m_GPUHead);
  EXPECT_EQ(&host.openMP, object.m_pGVOpenMP);
  EXPECT_EQ(&host.mesh, object.m_pMesh);
  EXPECT_EQ(&host.partitionFaces, object.m_pPartFace);
  EXPECT_EQ(&host.communication, object.m_pComm);
  EXPECT_EQ(kPrefix + kNoGlobals, object.ErrorMsg);
}

TEST_F(PointOperatorSetters, NullPartitionFacesFailAndKeepTheFormer) {
  object.getPartitionFace(&host.partitionFaces);
  EXPECT_EQ(-1, object.getPartitionFace(nullptr));
  EXPECT_EQ(&host.partitionFaces, object.m_pPartFace);
  EXPECT_EQ(kPrefix + kNoPartFaces, object.ErrorMsg);
}

TEST_F(PointOperatorSetters, NullCommunicationFailsAndKeepsTheFormer) {
  object.getCommunication(&host.communication);
  EXPECT_EQ(-1, object.getCommunication(nullptr));
  EXPECT_EQ(&host.communication, object.m_pComm);
  EXPECT_EQ(kPrefix + kNoCommunication, object.ErrorMsg);
}

TEST_F(PointOperatorSetters, ParametersAreStoredAndNullIsIgnoredWithoutFailure) {
  PointParameters parameters;
  EXPECT_EQ(1, object.SetZYNKNCMP(nullptr));
  EXPECT_EQ(nullptr, object.m_pKNCMP);
  EXPECT_EQ(1, object.SetZYNKNCMP(&parameters));
  EXPECT_EQ(&parameters, object.m_pKNCMP);
  EXPECT_EQ(1, object.SetZYNKNCMP(nullptr));
  EXPECT_EQ(&parameters, object.m_pKNCMP);
  EXPECT_EQ(kPrefix, object.ErrorMsg);
}

TEST(PointOperatorFailureText, GathersTheFailuresInTheirOrder) {
  Object object;
  object.getCommunication(nullptr);
  object.getZyn3dGV(nullptr, nullptr, nullptr, nullptr);
  object.getPartitionFace(nullptr);
  object.getCommunication(nullptr);
  EXPECT_EQ(kPrefix + kNoCommunication + kNoGlobals + kNoPartFaces + kNoCommunication, object.ErrorMsg);
}

TEST(PointOperatorFailureText, IsCutAt1023Characters) {
  Object object;
  std::string all = kPrefix;
  for (int i = 0; i < 40; ++i) {
    object.getPartitionFace(nullptr);
    all += kNoPartFaces;
    EXPECT_EQ(all.substr(0, 1023), object.ErrorMsg);
  }
}

// -------------------------------------------------------------------------------------------------- helpers

TEST(PointOperatorText, ChangeFileNameReplacesTheLastFourCharacters) {
  Object object;
  char result[1024] = "";
  std::string name = "case.xyz";
  EXPECT_EQ(1, object.ChangeFileName(result, ".rbf", name.data()));
  EXPECT_STREQ("case.rbf", result);
  std::string four = ".cas";
  object.ChangeFileName(result, ".rbf", four.data());
  EXPECT_STREQ(".rbf", result);
}

TEST(PointOperatorText, StrCopyABSplitsALineAtTheEqualsSign) {
  Object object;
  char key[1024] = "", value[1024] = "";
  EXPECT_EQ(1, object.StrCopyAB("Span  =   500  \n", key, value));
  EXPECT_STREQ("Span", key);
  EXPECT_STREQ("500  ", value);
  EXPECT_EQ(0, object.StrCopyAB("abc", key, value));
  EXPECT_STREQ("abc", key);
  EXPECT_STREQ("c", value);
}

}  // namespace
}  // namespace zyn_test
