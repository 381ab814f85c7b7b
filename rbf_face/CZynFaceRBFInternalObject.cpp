// Construction, host objects, the order of the set-up, settings, allocation and release of memory of the face
// operator.

#include "rbf_face/CZynFaceRBFInternalObject.h"

#include <cstddef>
#include <memory>

#include "foundation/HostObjects.h"
#include "foundation/Progress.h"
#include "foundation/Release.h"
#include "foundation/RowTable.h"
#include "foundation/SettingsFile.h"
#include "foundation/SettingsText.h"
#include "foundation/Status.h"
#include "foundation/WithoutTraps.h"
#include "host/ZYNCommunication.h"
#include "host/ZYNKNCompParm.h"
#include "host/ZYNOptKer.h"
#include "host/Zyn3dGV.h"
#include "rbf_face/CZynFaceRBFInternalObjectImpl.h"

namespace {

constexpr int kFormatNumber = 1004;
constexpr int kFirstLineLimit = 255;
constexpr double kDefaultDistances = 2.0;  // the default search distance, in mean distances

// Elements 0..n, all zero.
template <typename T>
T* NewArray(int n) {
  return new T[static_cast<std::size_t>(n) + 1]();
}

// Rows of three nodes, 0..n, behind each other in one block.
IBCnode** NewVirtualNodes(int n) {
  constexpr std::size_t kNodes = 3;
  std::size_t const nRow = static_cast<std::size_t>(n) + 1;
  std::unique_ptr<IBCnode*[]> table(new IBCnode*[nRow]);
  IBCnode* const block = new IBCnode[nRow * kNodes];
  for (std::size_t i = 0; i < nRow; ++i) table[i] = block + i * kNodes;
  return table.release();
}

void DeleteVirtualNodes(IBCnode**& table) {
  if (table == nullptr) return;
  delete[] table[0];
  DeleteArray(table);
}

}  // namespace

CZynFaceRBFInternalObject::WorkOwner::WorkOwner() = default;
CZynFaceRBFInternalObject::WorkOwner::WorkOwner(WorkOwner const&) {}
CZynFaceRBFInternalObject::WorkOwner::~WorkOwner() = default;

// The left side drops its work memory, which belongs to the tables that it had.
CZynFaceRBFInternalObject::WorkOwner& CZynFaceRBFInternalObject::WorkOwner::operator=(
    WorkOwner const& other) {
  if (this != &other) Release();
  return *this;
}

void CZynFaceRBFInternalObject::WorkOwner::Release() { work_.reset(); }

/// Releases the work tables at the end of a set-up, also if it ends because memory ran out.
class CZynFaceRBFInternalObject::WorkTables {
 public:
  explicit WorkTables(CZynFaceRBFInternalObject& object) : object_(object) {}
  ~WorkTables() { object_.Release_Memory(); }
  WorkTables(WorkTables const&) = delete;
  WorkTables& operator=(WorkTables const&) = delete;

 private:
  CZynFaceRBFInternalObject& object_;
};

CZynFaceRBFInternalObject::CZynFaceRBFInternalObject() : ErrorMsg{} { StartErrorText(ErrorMsg); }

CZynFaceRBFInternalObject::CZynFaceRBFInternalObject(CZynFaceRBFInternalObject const&) = default;
CZynFaceRBFInternalObject& CZynFaceRBFInternalObject::operator=(CZynFaceRBFInternalObject const&) = default;

CZynFaceRBFInternalObject::~CZynFaceRBFInternalObject() {
  GrowingRowTable<int>::Destroy(m_ppFaceCellConn);
  GrowingRowTable<IBCnode>::Destroy(m_ppFaceGradCoef);
  GrowingRowTable<double>::Destroy(m_ppFaceFiCoef);
  GrowingRowTable<double>::Destroy(m_ppFaceDnCoef);
  pKNCMP = nullptr;
}

int CZynFaceRBFInternalObject::getZyn3dGV(CZyn3dGV* gv, CZYNGVGPU* gpu, CZYNGVOpenMP* openMP,
                                          CZYN3DFiniteVolumeMesh* mesh) {
  return ReceiveMesh(gv, gpu, openMP, mesh, {pGV, pGVGPU, GPUFirstWord, pGVOpenMP, pMesh}, ErrorMsg);
}

int CZynFaceRBFInternalObject::getPartitionFace(CPartitionFace_DLL* partitionFaces) {
  return Receive(partitionFaces, pPartFace, ErrorMsg, kNoPartitionFaces);
}

int CZynFaceRBFInternalObject::getCommunication(CCommunication* communication) {
  return Receive(communication, pCommunication, ErrorMsg, kNoCommunication);
}

int CZynFaceRBFInternalObject::SetZYNKNCMP(CZYNKNCMPCompParm* parameters) {
  ReceiveIfGiven(parameters, pKNCMP);
  return Status::kSuccess;
}

char const* CZynFaceRBFInternalObject::getErrorMsg() { return ErrorMsg; }

int CZynFaceRBFInternalObject::Initialize_FaceInterpolateData(int faceType) {
  iFaceType = faceType;
  if (IsFaceType(faceType)) NFace = OwnFaces().count;
  if (NFace == 0) return Status::kDone;

  WithoutTraps const duringSetUp;
  if (m_ppFaceCellConn != nullptr) ClearReport();
  WorkTables const releasedAtTheEnd(*this);
  ChangeFileName(RBFFileName, ".rbf", pGV->BaseFileName);
  AllocateTables();
  SetFaceNodeCollation();
  // After the mesh was measured, since the default distance is a multiple of the mean distance.
  if (pKNCMP != nullptr) {
    ReadRBFbackdoorfile_DLL();
  } else {
    ReadRBFbackdoorfile();
  }
  SetFaceADTress();
  SetUpAllFaces();
  if (bDebug) PrintDebugMessage();
  return Status::kDone;
}

// SearchFaceADTress and the weights of all faces, but one face after the other, while its stencil and rows are at hand.
// Neighbouring faces share vertices, so the weights of vertices are kept during the walk.
void CZynFaceRBFInternalObject::SetUpAllFaces() {
  Work& work = work_.Get();
  switch (iSearch_method) {
    case 1:
    case 2:
      ForEachFaceByNode(&CZynFaceRBFInternalObject::DeriveFaceCoefficentBysolveDQfullMatrix);
      break;
    case 3:
      work.vertexWeights = GrowingRowTable<double>::Create(pMesh->NNode);
      ForEachFaceByTopology(true);
      GrowingRowTable<double>::Destroy(work.vertexWeights);
      break;
    case 4:
      m_ppVirtualNode = NewVirtualNodes(NFace);  // no other method has any
      SetBoundaryCellADTress();
      ForEachFaceByVirtualNodes(
          &CZynFaceRBFInternalObject::DeriveFaceCoefficentBysolveDQfullMatrix_Virtual_Node);
      break;
    default:
      break;
  }
}

int CZynFaceRBFInternalObject::Initialize_Face_memory_allocate() {
  AllocateTables();
  m_ppVirtualNode = NewVirtualNodes(NFace);
  return Status::kDone;
}

// All tables but the virtual nodes, which would be the largest that a method fills with nothing.
void CZynFaceRBFInternalObject::AllocateTables() {
  int const nCell = pMesh->NCell;
  m_ppFaceCellConn = GrowingRowTable<int>::Create(NFace);
  m_pFaceRows = NewArray<Cpp_DataStructure>(NFace);
  // An earlier set-up may have had fewer faces; its gradients are left behind like its other tables.
  m_ppFaceGradCoef = nullptr;
  if (iSearch_method != 4) {
    m_ppFaceLnods = GrowingRowTable<int>::Create(NFace);
    m_ppFaceGradCoef = GrowingRowTable<IBCnode>::Create(NFace);
    m_pFaceSupport = NewArray<double>(NFace);
  }
  m_ppFaceFiCoef = GrowingRowTable<double>::Create(NFace);
  m_ppFaceDnCoef = GrowingRowTable<double>::Create(NFace);
  m_pCellTree = new CZYNOptKer;
  m_pBoundaryTree = new CZYNOptKer;
  m_pNodeTable = NewArray<IBCnode>(nCell);
  m_pCellType = NewArray<int>(nCell);
  m_pMarkAll = NewArray<int>(nCell);
  m_pMarkP = NewArray<int>(nCell);
  m_pMarkE = NewArray<int>(nCell);
  m_FaceX.Create(NFace, 0.0);
  m_FaceY.Create(NFace, 0.0);
  m_FaceZ.Create(NFace, 0.0);
}

// Tables are allocated before the settings are read, which may name another method.
void CZynFaceRBFInternalObject::MakeMissingTables() {
  if (m_ppFaceLnods == nullptr) m_ppFaceLnods = GrowingRowTable<int>::Create(NFace);
  if (m_ppFaceGradCoef == nullptr && iSearch_method != 4)
    m_ppFaceGradCoef = GrowingRowTable<IBCnode>::Create(NFace);
  if (m_pFaceSupport == nullptr) m_pFaceSupport = NewArray<double>(NFace);
}

int CZynFaceRBFInternalObject::Release_Memory() {
  GrowingRowTable<int>::Destroy(m_ppFaceLnods);
  DeleteVirtualNodes(m_ppVirtualNode);
  RowTable<int>::Destroy(ppRBFiNodeConn);
  RowTable<int>::Destroy(m_ppRBFlnods);
  RowTable<int>::Destroy(m_ppRBFCell33Conn);
  RowTable<int>::Destroy(m_ppRBFCell32Conn);
  RowTable<int>::Destroy(m_ppRBFCell32Type);
  DeleteArray(m_pMarkAll);
  DeleteArray(m_pMarkP);
  DeleteArray(m_pMarkE);
  DeleteArray(m_pFaceRows);
  DeleteArray(m_pCellType);
  DeleteArray(m_pTreeCell);
  DeleteArray(m_pFaceSupport);
  DeleteObject(m_pCellTree);
  DeleteObject(m_pBoundaryTree);
  DeleteArray(m_pNodeTable);
  m_FaceX.Destroy();
  m_FaceY.Destroy();
  m_FaceZ.Destroy();
  work_.Release();
  return Status::kDone;
}

int CZynFaceRBFInternalObject::ReadRBFbackdoorfile() {
  char distanceLine[512];
  FormatText(distanceLine, sizeof(distanceLine), "Search_distance   = %lf\n",
             kDefaultDistances * MeanDistance);
  SettingsFile file(RBFFileName, {kFormatNumber,
                                  kFirstLineLimit,
                                  {"1004\n", "Span              = 1000\n", "iSearch_method    = 4\n",
                                   distanceLine, "Search_number     = 20\n", "Debug mode        = 0\n"}});
  if (!file.IsOpen()) return Status::kDone;
  Span = file.NextReal();
  iSearch_method = file.NextInteger();
  Search_distance = file.NextReal();
  Search_number = file.NextInteger();
  if (file.NextInteger() > 0) bDebug = true;
  return Status::kDone;
}

int CZynFaceRBFInternalObject::ReadRBFbackdoorfile_DLL() {
  CZYNCMP_FaceRBF_Parm const* const block = pKNCMP->getFaceRBFParm();
  if (block == nullptr) return Status::kDone;
  Span = block->Span;
  iSearch_method = block->iSearch_method;
  Search_number = block->Search_number;
  Search_distance = block->Search_distance;
  if (Search_distance < 0.0) Search_distance = kDefaultDistances * MeanDistance;
  if (block->iDebugMode > 0) bDebug = true;
  return Status::kDone;
}

int CZynFaceRBFInternalObject::ChangeFileName(char* result, char const* extension, char* name) {
  return ReplaceExtension(result, extension, name);
}

int CZynFaceRBFInternalObject::StrCopyAB(char const* line, char* key, char* value) {
  return SplitSettingsLine(line, key, value);
}
