// Where cell numbers and faces stand, the search trees, and the search for the nearest cell.

#include <cmath>
#include <cstddef>
#include <limits>

#include "foundation/CellPositions.h"
#include "foundation/DQVector.h"
#include "foundation/ListedDistances.h"
#include "foundation/Status.h"
#include "host/ZYNOptKer.h"
#include "host/Zyn3dGV.h"
#include "rbf_face/CZynFaceRBFInternalObjectImpl.h"

namespace {

constexpr double kBoxHalfWidth = 1e-6;  // L; a point as a box of the tree

void Raise(int& maximum, int value) {
  if (value > maximum) maximum = value;
}

}  // namespace

int CZynFaceRBFInternalObject::SetFaceNodeCollation() {
  CZYN3DFiniteVolumeMesh const& mesh = *pMesh;
  MeasureMesh();
  if (Kind() == FaceKind::Inner) SetInnerTargets();
  m_pCellTree->SetADTreeRange(Xmax, Ymax, Zmax, Xmin, Ymin, Zmin, 1, 10000, 200000);

  m_BoundaryNode.Destroy();
  m_BoundaryNode.Create(mesh.NNode, false);
  MaxLnods = 0;
  for (int c = 1; c <= mesh.NInnerCells; ++c) {
    m_pNodeTable[c].SetData(mesh.xc[c], mesh.yc[c], mesh.zc[c], c);
    m_pCellType[c] = static_cast<int>(FaceKind::Inner);
    Raise(MaxLnods, mesh.CellLnodsNumber[c]);
  }
  for (FaceKind const kind : face_groups::kFacesWithOwnCell) CollateFaces(kind);

  Create_ppRBFiNodeConn();
  Create_m_ppRBFlnods();
  Create_m_ppRBFCell33Conn();
  return Status::kSuccess;
}

// Bounds of the cells beside inner faces and of all vertices. Ghost and halo cells may lie outside.
void CZynFaceRBFInternalObject::MeasureMesh() {
  CZYN3DFiniteVolumeMesh const& mesh = *pMesh;
  auto [box, meanDistance] = MeasureInnerFaces(mesh);
  for (int v = 1; v <= mesh.NNode; ++v) box.Widen(mesh.xn[v], mesh.yn[v], mesh.zn[v]);

  MeanDistance = meanDistance;
  Xmax = box.xmax, Ymax = box.ymax, Zmax = box.zmax;
  Xmin = box.xmin, Ymin = box.ymin, Zmin = box.zmin;
}

void CZynFaceRBFInternalObject::SetInnerTargets() {
  FaceGroup const faces = FacesOf(FaceKind::Inner, *pMesh);
  for (int f = 1; f <= faces.count; ++f) SetTarget(f, faces.xc[f], faces.yc[f], faces.zc[f]);
}

// A ghost cell stands at the centre of its face, a halo cell at its own centre. That is also the target point of the
// face: the interpolation to a partition face is defined at its halo cell.
void CZynFaceRBFInternalObject::CollateFaces(FaceKind kind) {
  CZYN3DFiniteVolumeMesh const& mesh = *pMesh;
  FaceGroup const faces = FacesWithPoints(kind, mesh, pPartFace);
  bool const isHalo = kind == FaceKind::Partition;
  for (int f = 1; f <= faces.count; ++f) {
    int const c = faces.other[f];
    DQVector const point = isHalo ? DQVector{mesh.xc[c], mesh.yc[c], mesh.zc[c]}
                                  : DQVector{faces.xc[f], faces.yc[f], faces.zc[f]};
    m_pNodeTable[c].SetData(point.x, point.y, point.z, c);
    m_pCellType[c] = static_cast<int>(kind);
    if (kind == Kind()) SetTarget(f, point.x, point.y, point.z);

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
  return Status::kDone;
}

int CZynFaceRBFInternalObject::SetBoundaryCellADTress() {
  CZYN3DFiniteVolumeMesh const& mesh = *pMesh;
  m_pBoundaryTree->SetADTreeRange(Xmax, Ymax, Zmax, Xmin, Ymin, Zmin, 1, 10000, 200000);
  int id = 0;
  for (FaceKind const kind : face_groups::kFacesWithOwnCell) {
    if (kind == FaceKind::Partition) continue;
    FaceGroup const faces = FacesOf(kind, mesh);
    for (int f = 1; f <= faces.count; ++f) {
      int const* const vertices = faces.nodes[f];
      BoundingBox box;
      for (int k = 1; k <= vertices[0]; ++k)
        box.Widen(mesh.xn[vertices[k]], mesh.yn[vertices[k]], mesh.zn[vertices[k]]);
      m_pBoundaryTree->AddSurfaceToADTree(++id, box.xmax, box.ymax, box.zmax, box.xmin, box.ymin, box.zmin);
    }
  }
  return Status::kDone;
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
  return Status::kDone;
}

// A search stops growing when it covers all entries, so their bounds are measured, once. Their points are copied, since
// all that a search finds is looked up by entry.
GrowingBoxSearch CZynFaceRBFInternalObject::CellSearch() {
  Work& work = work_.Get();
  int const nEntry = pMesh->NCell;
  if (!work.entries) {
    work.entries.emplace();
    work.entryPoints.resize(static_cast<std::size_t>(nEntry) + 1);
    for (int id = 1; id <= nEntry; ++id) {
      DQVector const point = PointOf(m_pTreeCell[id]);
      work.entryPoints[static_cast<std::size_t>(id)] = point;
      work.entries->Widen(point.x, point.y, point.z);
    }
  }
  return GrowingBoxSearch(*m_pCellTree, *work.entries, nEntry, MeanDistance);
}

// Fills the work arrays with the ids and distances of an answer, in its order.
void CZynFaceRBFInternalObject::MeasureFound(int const* ids, int count, DQVector const& from) {
  Work& work = work_.Get();
  work.ids.assign(ids, ids + count);
  work.distances.resize(static_cast<std::size_t>(count));
  MeasureListed(work.entryPoints.data(), ids, count, from, work.distances.data());
}

int CZynFaceRBFInternalObject::Search_ClosestCellID_byNode(double x, double y, double z) {
  GrowingBoxSearch::Answer const found = CellSearch().AtLeast(1, x, y, z);
  if (found.count < 1) return 0;

  // What sorting would bring to the front: the first of the least distances. Squares decide where they can. Two
  // different squares may have the same root, so roots are compared where a square is less.
  DQVector const from = {x, y, z};
  Work& work = work_.Get();
  work.distances.resize(static_cast<std::size_t>(found.count));
  double const* const squares = work.distances.data();
  MeasureSquaresListed(work.entryPoints.data(), found.ids, found.count, from, work.distances.data());
  int closest = 0;
  double least2 = std::numeric_limits<double>::infinity(), least = least2;
  bool isOrdered = true;
  for (int k = 0; k < found.count; ++k) {
    double const r2 = squares[k];
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

  // A distance that is not a number ends up where sorting leaves it.
  MeasureFound(found.ids, found.count, from);
  Dis_Sorting(work.ids.data(), work.distances.data(), found.count);
  return work.ids[0];
}

void CZynFaceRBFInternalObject::Dis_Sorting(int* ids, double* dist, int n) {
  work_.Get().distanceSort.Sort(ids, dist, n);
}
