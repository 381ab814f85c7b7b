// Construction, host objects, the order of the set-up, settings, allocation and destruction of the point operator.

#include "rbf_ib/CZynIBRBFInternalObject.h"

#include <algorithm>
#include <cstddef>

#include "foundation/ErrorText.h"
#include "foundation/GrowingRowTable.h"
#include "foundation/HostObjects.h"
#include "foundation/Progress.h"
#include "foundation/Release.h"
#include "foundation/RowTable.h"
#include "foundation/SettingsFile.h"
#include "foundation/SettingsText.h"
#include "foundation/Status.h"
#include "foundation/WithoutTraps.h"
#include "foundation/ZeroedBlock.h"
#include "host/ZYNKNCompParm.h"
#include "host/ZYNOptKer.h"
#include "host/Zyn3dGV.h"

namespace {

constexpr int kFormatNumber = 1002;
constexpr int kFirstLineLimit = 255;
constexpr double kDefaultDistanceInMeans = 2.0;

}  // namespace

CZynIBRBFInternalObject::CZynIBRBFInternalObject() : ErrorMsg{} { StartErrorText(ErrorMsg); }

CZynIBRBFInternalObject::CZynIBRBFInternalObject(CZynIBRBFInternalObject const&) = default;
CZynIBRBFInternalObject& CZynIBRBFInternalObject::operator=(CZynIBRBFInternalObject const&) = default;

CZynIBRBFInternalObject::~CZynIBRBFInternalObject() {
  ReleaseTables();
  m_pKNCMP = nullptr;
}

void CZynIBRBFInternalObject::ReleaseTables() {
  GrowingRowTable<int>::Destroy(m_ppIBConn);
  GrowingRowTable<int>::Destroy(m_ppIBNodeConn);
  GrowingRowTable<IBCnode>::Destroy(m_ppIBCoef);
  GrowingRowTable<double>::Destroy(m_ppIBValueCoef);
  RowTable<int>::Destroy(ppRBFiNodeConn);
  DeleteArray(m_pIBNodeCellTable);
  DeleteObject(positionStore_);

  FreeZeroedArray(m_piCellToBlock);
  FreeZeroedArray(m_piNodeKind);
  FreeZeroedArray(m_piBlockToCell);
  FreeZeroedArray(m_pIBSupportLength);
  FreeZeroedArray(m_pIBTwoSeeds);

  DeleteObject(m_pADTree);
  DeleteArray(m_pIBCnode);
  m_CellLocalID.Destroy();
  m_NodeLocalID.Destroy();
  m_bBoundaryNode.Destroy();
}

int CZynIBRBFInternalObject::getZyn3dGV(CZyn3dGV* pGV, CZYNGVGPU* pGPU, CZYNGVOpenMP* pOpenMP,
                                        CZYN3DFiniteVolumeMesh* pMesh) {
  return ReceiveMesh(pGV, pGPU, pOpenMP, pMesh, {m_pGV, m_pGVGPU, m_GPUHead, m_pGVOpenMP, m_pMesh}, ErrorMsg);
}

int CZynIBRBFInternalObject::getPartitionFace(CPartitionFace_DLL* pPartFace) {
  return Receive(pPartFace, m_pPartFace, ErrorMsg, kNoPartitionFaces);
}

int CZynIBRBFInternalObject::getCommunication(CCommunication* pComm) {
  return Receive(pComm, m_pComm, ErrorMsg, kNoCommunication);
}

int CZynIBRBFInternalObject::SetZYNKNCMP(CZYNKNCMPCompParm* pKNCMP) {
  ReceiveIfGiven(pKNCMP, m_pKNCMP);
  return Status::kSuccess;
}

int CZynIBRBFInternalObject::Initialize_IBInterpolateData(double* pCellMark, int nIB, double* x, double* y,
                                                          double* z) {
  WithoutTraps const duringSetUp;
  if (m_ppIBConn != nullptr) ResetForNewSetUp();
  ChangeFileName(RBFFileName, ".rbf", m_pGV->BaseFileName);
  Initialize_IB_memory_allocate(nIB);
  PrintFlushed("IB Memory Allocation ok\n");
  SetIBNodeCollation();
  PrintFlushed("SetNodeCollation ok\n");
  Create_ppRBFiNodeConn(pCellMark);
  if (m_pKNCMP != nullptr) {
    ReadRBFbackdoorfile_DLL();
  } else {
    ReadRBFbackdoorfile();
  }
  SetIBADTress(pCellMark);
  PrintFlushed("SetIBADTress ok\n");
  // Without coefficients: these are written with what stands in them, not made as zeros before.
  FindStencils(x, y, z, iSearch_method, Search_number, false);
  PrintFlushed("SearchIBADTress ok\n");
  DeriveAllPoints(x, y, z);
  PrintFlushed("DeriveIBCoefficentBysolveDQfullMatrix ok\n");
  PrintDebugMessage(x, y, z);
  return Status::kDone;
}

// Back to what the constructor leaves, except for the host objects: a body that moved is set up like the first.
void CZynIBRBFInternalObject::ResetForNewSetUp() {
  ReleaseTables();
  iSearch_method = 3;
  Search_distance = 0.0;
  Search_number = 20;
  Span = 500.0;
  m_iNDerived = 0;
  m_iFiMaxPoint = m_iDfdxMaxPoint = m_iDfdyMaxPoint = m_iDfdzMaxPoint = 0;
  m_dFiMaxAnalysis = 0.0;
  for (double* value :
       {&m_dFiSumSq, &m_dDfdxSumSq, &m_dDfdySumSq, &m_dDfdzSumSq, &m_dFiMaxError, &m_dDfdxMaxError,
        &m_dDfdyMaxError, &m_dDfdzMaxError, &m_dFiMaxRBF, &m_dDfdxMaxRBF, &m_dDfdyMaxRBF, &m_dDfdzMaxRBF})
    *value = 0.0;
}

int CZynIBRBFInternalObject::Initialize_IB_memory_allocate(int nIB) {
  ReleaseTables();
  int const nPoint = std::max(nIB, 0);
  int const nCell = m_pMesh->NCell;
  m_iNIBNode = nIB;
  m_ppIBConn = GrowingRowTable<int>::Create(nPoint);
  m_ppIBNodeConn = GrowingRowTable<int>::Create(nPoint);
  m_pIBNodeCellTable = new Cpp_DataStructure[static_cast<std::size_t>(nPoint) + 1];
  positionStore_ = new PieceStore;
  m_ppIBCoef = GrowingRowTable<IBCnode>::Create(nPoint);
  m_ppIBValueCoef = GrowingRowTable<double>::Create(nPoint);
  m_pIBSupportLength = NewZeroedArray<double>(nPoint);
  m_pIBTwoSeeds = NewZeroedArray<unsigned char>(nPoint);
  m_pADTree = new CZYNOptKer;
  m_piCellToBlock = NewZeroedArray<int>(nCell);
  m_pIBCnode = new IBCnode[static_cast<std::size_t>(nCell) + 1];
  m_piNodeKind = NewZeroedArray<int>(nCell);
  m_CellLocalID.Create(nCell, 0);
  m_NodeLocalID.Create(m_pMesh->NNode, 0);
  return Status::kDone;
}

int CZynIBRBFInternalObject::ReadRBFbackdoorfile() {
  char distance[512];  // a double has at most 309 digits before the point
  FormatText(distance, sizeof(distance), "Search_distance   = %lf\n", kDefaultDistanceInMeans * MeanDistance);
  SettingsFile file(RBFFileName, {kFormatNumber,
                                  kFirstLineLimit,
                                  {"1002\n", "Span              = 500\n", "iSearch_method    = 3\n", distance,
                                   "Search_number     = 20\n"}});
  if (!file.IsOpen()) return Status::kDone;
  Span = file.NextReal();
  iSearch_method = file.NextInteger();
  Search_distance = file.NextReal();
  Search_number = file.NextInteger();
  return Status::kDone;
}

int CZynIBRBFInternalObject::ReadRBFbackdoorfile_DLL() {
  Span = m_pKNCMP->getIBRBFParm()->Span;
  iSearch_method = m_pKNCMP->getIBRBFParm()->iSearch_method;
  Search_distance = m_pKNCMP->getIBRBFParm()->Search_distance;
  if (0.0 > Search_distance) Search_distance = kDefaultDistanceInMeans * MeanDistance;
  Search_number = m_pKNCMP->getIBRBFParm()->Search_number;
  return Status::kDone;
}

int CZynIBRBFInternalObject::ChangeFileName(char* result, char const* extension, char* name) {
  return ReplaceExtension(result, extension, name);
}

int CZynIBRBFInternalObject::StrCopyAB(char const* line, char* key, char* value) {
  return SplitSettingsLine(line, key, value);
}
