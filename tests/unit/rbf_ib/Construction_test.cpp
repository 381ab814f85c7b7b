#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "tests/support/rbf_ib/PointBed.h"

// What construction leaves in each member, and what the setters store and answer.

namespace zyn_test::construction_test {
namespace {

std::string const kPrefix = "Operator Gradient Error = ";

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

// Other code of a solver may read the members where they have always been.
TEST(PointOperator, KeepsItsMembersInTheirOrder) {
  Object const o;
  // clang-format off
  std::vector<void const*> const members = {
      &o.m_pPartFace, &o.m_pComm, &o.m_pGVGPU, &o.m_pGVOpenMP, &o.m_GPUHead, &o.m_pIBCnode,
      &o.iSearch_method, &o.Search_distance, &o.Search_number, &o.m_ppIBConn, &o.m_ppIBCoef,
      &o.m_ppIBValueCoef, &o.ppRBFiNodeConn, &o.Xmax, &o.Ymax, &o.Zmax, &o.Xmin, &o.Ymin, &o.Zmin,
      &o.MeanDistance, &o.RBFFileName, &o.Span, &o.m_iNIBNode, &o.m_iNDerived, &o.m_dFiSumSq,
      &o.m_dFiMaxError, &o.m_iFiMaxPoint, &o.m_dFiMaxAnalysis, &o.m_dFiMaxRBF, &o.m_dDfdxSumSq,
      &o.m_dDfdxMaxError, &o.m_iDfdxMaxPoint, &o.m_dDfdxMaxRBF, &o.m_dDfdySumSq, &o.m_dDfdyMaxError,
      &o.m_iDfdyMaxPoint, &o.m_dDfdyMaxRBF, &o.m_dDfdzSumSq, &o.m_dDfdzMaxError, &o.m_iDfdzMaxPoint,
      &o.m_dDfdzMaxRBF, &o.m_piNodeKind, &o.m_piCellToBlock, &o.m_piBlockToCell, &o.m_pIBSupportLength,
      &o.m_pIBTwoSeeds, &o.m_ppIBNodeConn, &o.m_CellLocalID, &o.m_NodeLocalID, &o.m_bBoundaryNode,
      &o.m_pADTree, &o.m_pIBNodeCellTable, &o.m_pGV, &o.m_pMesh, &o.ErrorMsg, &o.m_pKNCMP};
  // clang-format on
  for (std::size_t k = 1; k < members.size(); ++k) EXPECT_LT(members[k - 1], members[k]) << "member " << k;
}

TEST(PointOperatorSetters, ParametersAreStoredAndNullIsIgnoredWithoutFailure) {
  Object object;
  PointParameters parameters;
  EXPECT_EQ(1, object.SetZYNKNCMP(nullptr));
  EXPECT_EQ(nullptr, object.m_pKNCMP);
  EXPECT_EQ(1, object.SetZYNKNCMP(&parameters));
  EXPECT_EQ(&parameters, object.m_pKNCMP);
  EXPECT_EQ(1, object.SetZYNKNCMP(nullptr));
  EXPECT_EQ(&parameters, object.m_pKNCMP);
  EXPECT_EQ(kPrefix, object.ErrorMsg);
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
}  // namespace zyn_test::construction_test
