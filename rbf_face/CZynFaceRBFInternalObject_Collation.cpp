// Where cell numbers and faces stand, the search trees, and the search for the nearest cell.

#include <cmath>
#include <cstddef>
#include <limits>

#include "foundation/DQVector.h"
#include "host/ZYNOptKer.h"
#include "host/Zyn3dGV.h"
#include "rbf_face/CZynFaceRBFInternalObjectImpl.h"

namespace {

constexpr int kSuccess = 1;
constexpr int kDone = 0;

constexpr double kBoxHalfWidth = 1e-6;  // L; a point as a box of the tree

void Raise(int& maximum, int value) {
  if (value > maximum) maximum = value;
}

}  // namespace

int CZynFaceRBFInternalObject::SetFaceNodeCollation() {
  CZYN3DFiniteVolumeMesh const& mesh = *pMesh;
  MeasureMesh();
  m_pCellTree->SetADTreeRange(Xmax, Ymax, Zmax, Xmin, Ymin, Zmin, 1, 10000, 200000);

  m_BoundaryNode.Destroy();
  m_BoundaryNode.Create(mesh.NNode, false);
  MaxLnods = 0;
  for (int c = 1; c <= mesh.NInnerCells; ++c) {
    m_pNodeTable[c].SetData(mesh.xc[c], mesh.yc[c], mesh.zc[c], c);
    m_pCellType[c] = kInnerFaces;
    Raise(MaxLnods, mesh.CellLnodsNumber[c]);
  }
  for (int const type : kBoundaryTypes) CollateFaces(type);

  Create_ppRBFiNodeConn();
  Create_m_ppRBFlnods();
  Create_m_ppRBFCell33Conn();
  return kSuccess;
}

// Bounds of all vertices and of the cells beside inner faces; ghost and halo cells may lie outside.
void CZynFaceRBFInternalObject::MeasureMesh() {
  CZYN3DFiniteVolumeMesh const& mesh = *pMesh;
  BoundingBox box;
  double distanceSum = 0.0;
  for (int f = 1; f <= mesh.NInnerFaces; ++f) {
    int const a = mesh.ijCV[f], b = mesh.ij[f];
    DQVector const first = {mesh.xc[a], mesh.yc[a], mesh.zc[a]};
    DQVector const second = {mesh.xc[b], mesh.yc[b], mesh.zc[b]};
    box.Widen(first.x, first.y, first.z);
    box.Widen(second.x, second.y, second.z);
    distanceSum += Length(OffsetBetween(first, second));
    if (iFaceType == kInnerFaces) SetTarget(f, mesh.ijxc[f], mesh.ijyc[f], mesh.ijzc[f]);
  }
  MeanDistance = distanceSum / mesh.NInnerFaces;
  for (int v = 1; v <= mesh.NNode; ++v) box.Widen(mesh.xn[v], mesh.yn[v], mesh.zn[v]);

  Xmax = box.xmax, Ymax = box.ymax, Zmax = box.zmax;
  Xmin = box.xmin, Ymin = box.ymin, Zmin = box.zmin;
}

// A ghost cell stands at the centre of its face, a halo cell at its own centre, which is the target point of
// its face, too: on purpose the centres of partition faces are not asked for.
void CZynFaceRBFInternalObject::CollateFaces(int type) {
  CZYN3DFiniteVolumeMesh const& mesh = *pMesh;
  FaceGroup const faces = FacesOfType(type, mesh, pPartFace);
  for (int f = 1; f <= faces.count; ++f) {
    int const c = faces.other[f];
    DQVector const point = type == kPartitionFaces ? DQVector{mesh.xc[c], mesh.yc[c], mesh.zc[c]}
                                                   : DQVector{faces.xc[f], faces.yc[f], faces.zc[f]};
    m_pNodeTable[c].SetData(point.x, point.y, point.z, c);
    m_pCellType[c] = type;
    if (iFaceType == type) SetTarget(f, point.x, point.y, point.z);

    int const* const vertices = faces.nodes[f];
    for (int k = 1; k <= vertices[0]; ++k) m_BoundaryNode.SetValue(vertices[k], true);
    Raise(MaxLnods, vertices[0]);
  }
}

void CZynFaceRBFInternalObject::SetTarget(int f, double x, double y, double z) {
  m_FaceX.SetValue(f, x);
  m_FaceY.SetValue(f, y);
  m_FaceZ.SetValue(f, z);
}

int CZynFaceRBFInternalObject::SetFaceADTress() {
  constexpr double d = kBoxHalfWidth;
  int const nCell = pMesh->NCell;
  m_pTreeCell = new int[static_cast<std::size_t>(nCell) + 1]();
  for (int id = 1; id <= nCell; ++id) {
    IBCnode const& point = m_pNodeTable[id];
    m_pCellTree->AddSurfaceToADTree(id, point.x + d, point.y + d, point.z + d, point.x - d, point.y - d,
                                    point.z - d);
    m_pTreeCell[id] = id;
  }
  work_.Get().entries.reset();
  return kDone;
}

int CZynFaceRBFInternalObject::SetBoundaryCellADTress() {
  CZYN3DFiniteVolumeMesh const& mesh = *pMesh;
  m_pBoundaryTree->SetADTreeRange(Xmax, Ymax, Zmax, Xmin, Ymin, Zmin, 1, 10000, 200000);
  int id = 0;
  for (int const type : {kWallFaces, kInletFaces, kOutletFaces, kSymmetryFaces}) {
    FaceGroup const faces = FacesOfType(type, mesh, pPartFace);
    for (int f = 1; f <= faces.count; ++f) {
      int const* const vertices = faces.nodes[f];
      BoundingBox box;
      for (int k = 1; k <= vertices[0]; ++k)
        box.Widen(mesh.xn[vertices[k]], mesh.yn[vertices[k]], mesh.zn[vertices[k]]);
      m_pBoundaryTree->AddSurfaceToADTree(++id, box.xmax, box.ymax, box.zmax, box.xmin, box.ymin, box.zmin);
    }
  }
  return kDone;
}

int CZynFaceRBFInternalObject::SearchFaceADTress() {
  switch (iSearch_method) {
    case 1:
    case 2:
      Search_by_Node_control();
      break;
    case 3:
      Search_by_Topology_control();
      break;
    case 4:
      SetBoundaryCellADTress();
      Search_by_normal_virtual_node();
      break;
    default:
      break;
  }
  return kDone;
}

// The growth of the searches ends where all entries are covered, so their bounds are measured once.
GrowingBoxSearch CZynFaceRBFInternalObject::CellSearch() {
  std::optional<BoundingBox>& entries = work_.Get().entries;
  if (!entries) {
    entries.emplace();
    for (int id = 1; id <= pMesh->NCell; ++id)
      entries->Widen(m_pNodeTable[id].x, m_pNodeTable[id].y, m_pNodeTable[id].z);
  }
  return GrowingBoxSearch(*m_pCellTree, *entries, pMesh->NCell, MeanDistance);
}

// Fills ids and distances with the entries of an answer, in its order.
void CZynFaceRBFInternalObject::MeasureFound(int const* ids, int count, DQVector const& from) {
  Work& work = work_.Get();
  work.ids.assign(ids, ids + count);
  work.distances.resize(static_cast<std::size_t>(count));
  for (std::size_t k = 0; k < work.ids.size(); ++k)
    work.distances[k] = Length(OffsetBetween(from, m_pNodeTable[m_pTreeCell[work.ids[k]]]));
}

int CZynFaceRBFInternalObject::Search_ClosestCellID_byNode(double x, double y, double z) {
  GrowingBoxSearch::Answer const found = CellSearch().AtLeast(1, x, y, z);
  if (found.count < 1) return 0;

  // What sorting would bring to the front: the first of the least distances. Distances are compared by their
  // squares where these tell; two squares may have the same root.
  DQVector const from = {x, y, z};
  int closest = 0;
  double least2 = std::numeric_limits<double>::infinity(), least = least2;
  bool isOrdered = true;
  for (int k = 0; k < found.count; ++k) {
    double const r2 = SquaredLength(OffsetBetween(from, m_pNodeTable[m_pTreeCell[found.ids[k]]]));
    if (r2 < least2) {
      double const r = std::sqrt(r2);
      if (r < least) {
        least = r;
        least2 = r2;
        closest = k;
      }
    } else if (!(r2 >= least2)) {
      isOrdered = false;
    }
  }
  if (isOrdered) return found.ids[closest];

  // Some distance is not a number, and only sorting tells where it ends up.
  MeasureFound(found.ids, found.count, from);
  Work& work = work_.Get();
  Dis_Sorting(work.ids.data(), work.distances.data(), found.count);
  return work.ids[0];
}

void CZynFaceRBFInternalObject::Dis_Sorting(int* ids, double* dist, int n) {
  work_.Get().distanceSort.Sort(ids, dist, n);
}
