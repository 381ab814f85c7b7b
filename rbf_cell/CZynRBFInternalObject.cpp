// Construction, host objects, settings, set-up and destruction of the cell operator.

#include "rbf_cell/CZynRBFInternalObject.h"

#include "foundation/ErrorText.h"
#include "foundation/HostObjects.h"
#include "foundation/Progress.h"
#include "foundation/Release.h"
#include "foundation/RowTable.h"
#include "foundation/SettingsFile.h"
#include "foundation/SettingsText.h"
#include "foundation/Status.h"
#include "foundation/WithoutTraps.h"
#include "foundation/ZeroedBlock.h"
#include "host/ZYNCommunication.h"
#include "host/ZYNOptKer.h"
#include "host/Zyn3dGV.h"
#include "rbf_cell/PointTable.h"

namespace {

constexpr double kDefaultSpan = 500.0;
constexpr int kFormatNumber = 1001;
constexpr int kFirstLineLimit = 254;

// A stencil is the cell and its m neighbours. A row has the stencil's length in front of it and one element behind
// it; in the row of weights that is the multiplier.
constexpr int kElementsBesideNeighbours = 3;

}  // namespace

CZynRBFInternalObject::CZynRBFInternalObject() : m_szError{} { StartErrorText(m_szError); }

CZynRBFInternalObject::CZynRBFInternalObject(CZynRBFInternalObject const&) = default;
CZynRBFInternalObject& CZynRBFInternalObject::operator=(CZynRBFInternalObject const&) = default;

CZynRBFInternalObject::~CZynRBFInternalObject() {
  ReleaseTables();
  DestroyHostObjects();
}

void CZynRBFInternalObject::ReleaseTables() {
  RowTable<int>::Destroy(m_ppRBFCellConn);
  RowTable<RBFnode>::Destroy(m_ppRBFCellCoef);

  RowTable<RBFnode>::Destroy(m_ppRBFInnerFaceCoef);
  RowTable<double>::Destroy(m_ppRBFInnerFaceFlux);
  RowTable<RBFnode>::Destroy(m_ppRBFPartInterFaceCoef);
  RowTable<RBFnode>::Destroy(m_ppRBFInletFaceCoef);
  RowTable<RBFnode>::Destroy(m_ppRBFWallFaceCoef);
  RowTable<RBFnode>::Destroy(m_ppRBFOutletFaceCoef);

  RowTable<int>::Destroy(m_ppRBFInnerFaceConn);
  RowTable<int>::Destroy(m_ppRBFWallFaceConn);
  RowTable<int>::Destroy(m_ppRBFInletFaceConn);
  RowTable<int>::Destroy(m_ppRBFOutletFaceConn);
  RowTable<int>::Destroy(m_ppRBFPartInterFaceConn);

  PointTable<int>::Destroy(m_ppIBConn, m_iNIBNode);
  PointTable<RBFnode>::Destroy(m_ppIBCoef, m_iNIBNode);
  PointTable<double>::Destroy(m_ppIBValueCoef, m_iNIBNode);

  FreeZeroedArray(m_piNodeKindIndex);
  FreeZeroedArray(m_piNodeKind);
  FreeZeroedArray(m_pSupportLength);

  DeleteObject(m_pADTree);
  FreeZeroedArray(m_pRBFnode);
  FreeZeroedArray(m_pStencilExtent);
}

// All that were handed over except the mesh. They belong to this object from then on. COperatorGradient only borrows
// its host objects, so it takes them back before it destroys its cell operator.
void CZynRBFInternalObject::DestroyHostObjects() {
  DeleteObject(m_pGV);
  DeleteObject(m_pPartFace);
  DeleteObject(m_pComm);
  DeleteObject(m_pGVGPU);
  DeleteObject(m_pGVOpenMP);
}

int CZynRBFInternalObject::getZyn3dGV(CZyn3dGV* pGV, CZYNGVGPU* pGPU, CZYNGVOpenMP* pOpenMP,
                                      CZYN3DFiniteVolumeMesh* pMesh) {
  return ReceiveMesh(pGV, pGPU, pOpenMP, pMesh, {m_pGV, m_pGVGPU, m_GPUHead, m_pGVOpenMP, m_pMesh},
                     m_szError);
}

int CZynRBFInternalObject::getPartitionFace(CPartitionFace_DLL* pPartFace) {
  return Receive(pPartFace, m_pPartFace, m_szError, kNoPartitionFaces);
}

int CZynRBFInternalObject::getCommunication(CCommunication* pComm) {
  return Receive(pComm, m_pComm, m_szError, kNoCommunication);
}

char const* CZynRBFInternalObject::getErrorMsg() { return m_szError; }

int CZynRBFInternalObject::InitialRBFSetting() {
  WithoutTraps const duringSetUp;
  ChangeFileName(m_szRBFFileName, ".rbf", m_pGV->BaseFileName);
  m_iWorstElement = 0;
  iShape_Normalize = 0;
  m_dStoredLimit = 9999999999.0;
  m_dStoredFactor = 12.5;
  AllocateCellTables();
  Span = kDefaultSpan;
  ReadRBFbackdoorfile();
  SetNodeCollation();
  SetCellToCellconnection();
  return Status::kSuccess;
}

// The tables of an earlier set-up are left behind, since a copy of the object may still read them.
void CZynRBFInternalObject::AllocateCellTables() {
  int const nCell = m_pMesh->NCell;
  int const nInnerCells = m_pMesh->NInnerCells;
  int* const* const cellCell = m_pMesh->CellCell;
  auto const rowSize = [cellCell](int i) { return cellCell[i][0] + kElementsBesideNeighbours; };

  m_ppRBFCellConn = RowTable<int>::Create(nCell, nInnerCells, rowSize);
  m_ppRBFCellCoef = RowTable<RBFnode>::Create(nCell, nInnerCells, rowSize);
  m_pSupportLength = NewZeroedArray<double>(nCell);
  m_pADTree = new CZYNOptKer;
  m_pRBFnode = NewZeroedArray<RBFnode>(nCell);
  m_pStencilExtent = NewZeroedArray<RBFnode>(nCell);
  m_piNodeKind = NewZeroedArray<int>(nCell);
  m_piNodeKindIndex = NewZeroedArray<int>(nCell);
}

int CZynRBFInternalObject::ReadRBFbackdoorfile() {
  SettingsFile file(
      m_szRBFFileName,
      {kFormatNumber, kFirstLineLimit, {"1001\n", "Span              = 500\n", "Shape Normalize   = 0\n"}});
  if (!file.IsOpen()) return Status::kDone;
  Span = file.NextReal();
  iShape_Normalize = file.NextInteger();
  if (iShape_Normalize == 1) PrintFlushed("iShape_Normalize = On\n");
  return Status::kDone;
}

int CZynRBFInternalObject::ChangeFileName(char* result, char const* extension, char* name) {
  return ReplaceExtension(result, extension, name);
}

int CZynRBFInternalObject::StrCopyAB(char const* line, char* key, char* value) {
  return SplitSettingsLine(line, key, value);
}
