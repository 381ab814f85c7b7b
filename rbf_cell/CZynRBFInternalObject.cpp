// Construction, host objects, settings and destruction of the cell operator.

#include "rbf_cell/CZynRBFInternalObject.h"

#include "foundation/ErrorText.h"
#include "foundation/HostObjects.h"
#include "foundation/Progress.h"
#include "foundation/RowTable.h"
#include "foundation/SettingsFile.h"
#include "foundation/SettingsText.h"
#include "foundation/WithoutTraps.h"
#include "foundation/ZeroedBlock.h"
#include "host/ZYNCommunication.h"
#include "host/ZYNOptKer.h"
#include "host/Zyn3dGV.h"

namespace {

constexpr int kSuccess = 1;

constexpr double kDefaultSpan = 500.0;
constexpr int kFormatNumber = 1001;
constexpr int kFirstLineLimit = 254;

// A stencil is the cell and its m neighbours; the row holds their number before them and one element behind
// them, which in the row of weights takes the multiplier.
constexpr int kElementsBesideNeighbours = 3;

template <typename T>
void DeleteRowByRow(T**& table, int nRow) {
  if (table == nullptr) return;
  for (int i = 0; i <= nRow; ++i) delete[] table[i];
  delete[] table;
  table = nullptr;
}

template <typename T>
void FreeArray(T*& array) {
  FreeZeroedBlock(array);
  array = nullptr;
}

template <typename T>
void DeleteObject(T*& object) {
  delete object;
  object = nullptr;
}

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

  DeleteRowByRow(m_ppIBConn, m_iNIBNode);
  DeleteRowByRow(m_ppIBCoef, m_iNIBNode);
  DeleteRowByRow(m_ppIBValueCoef, m_iNIBNode);

  FreeArray(m_piNodeKindIndex);
  FreeArray(m_piNodeKind);
  FreeArray(m_pSupportLength);

  DeleteObject(m_pADTree);
  FreeArray(m_pRBFnode);
  FreeArray(m_pStencilExtent);
}

// All that were handed over but the mesh. On purpose, and the reason why COperatorGradient, which only
// borrows them, never destroys its cell operator.
void CZynRBFInternalObject::DestroyHostObjects() {
  DeleteObject(m_pGV);
  DeleteObject(m_pPartFace);
  DeleteObject(m_pComm);
  DeleteObject(m_pGVGPU);
  DeleteObject(m_pGVOpenMP);
}

int CZynRBFInternalObject::getZyn3dGV(CZyn3dGV* pGV, CZYNGVGPU* pGPU, CZYNGVOpenMP* pOpenMP,
                                      CZYN3DFiniteVolumeMesh* pMesh) {
  int const status = Receive(pGV, m_pGV, m_szError, kNoGlobals);
  if (status != kSuccess) return status;
  ReceiveAccelerator(pGPU, m_pGVGPU, m_GPUHead);
  ReceiveIfGiven(pOpenMP, m_pGVOpenMP);
  ReceiveIfGiven(pMesh, m_pMesh);
  return kSuccess;
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
  return kSuccess;
}

// Tables of an earlier set-up are left behind.
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
  SettingsFile::Prepare(m_szRBFFileName, kFormatNumber, kFirstLineLimit,
                        {"1001\n", "Span              = 500\n", "Shape Normalize   = 0\n"});
  SettingsFile file(m_szRBFFileName);
  if (!file.IsOpen()) return 0;
  file.ReadLine();  // the format number
  file.ReadLine();
  Span = file.Real();
  file.ReadLine();
  iShape_Normalize = file.Integer();
  if (iShape_Normalize == 1) PrintFlushed("iShape_Normalize = On\n");
  return 0;
}

int CZynRBFInternalObject::ChangeFileName(char* result, char const* extension, char* name) {
  return ReplaceExtension(result, extension, name);
}

int CZynRBFInternalObject::StrCopyAB(char const* line, char* key, char* value) {
  return SplitSettingsLine(line, key, value);
}
