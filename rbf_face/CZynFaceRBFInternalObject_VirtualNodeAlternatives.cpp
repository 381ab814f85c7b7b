// Other ways to place virtual nodes and to collect the cells around them. Nothing in the library calls them.

#include <algorithm>
#include <cstddef>

#include "foundation/DQVector.h"
#include "foundation/Progress.h"
#include "foundation/Status.h"
#include "host/ZYNOptKer.h"
#include "host/Zyn3dGV.h"
#include "rbf_face/CZynFaceRBFInternalObjectImpl.h"

namespace {

constexpr double kFarthestPlane = 99999999.0;  // L
constexpr double kParallel =
    1e-6;  // of e1 . (e2 x D), L^2; a ray this close to parallel to a plane misses it

struct Triangle {
  DQVector v0, v1, v2;
};

DQVector Cross(DQVector const& a, DQVector const& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

DQVector Along(DQVector const& origin, double t, DQVector const& direction) {
  return {origin.x + t * direction.x, origin.y + t * direction.y, origin.z + t * direction.z};
}

DQVector Unit(DQVector const& v) {
  double const length = Length(v);
  return {v.x / length, v.y / length, v.z / length};
}

// t of O + t D = V0 + u e1 + v e2 by Cramer's rule, with e1 = V1 - V0, e2 = V2 - V0. A face counts as its whole
// plane, so u and v are not needed.
bool MeetsPlane(DQVector const& origin, DQVector const& direction, Triangle const& triangle, double& t) {
  DQVector const e1 = OffsetBetween(triangle.v0, triangle.v1);
  DQVector const e2 = OffsetBetween(triangle.v0, triangle.v2);
  double const q = Dot(e1, Cross(e2, direction));
  if (q >= -kParallel && q < kParallel) return false;
  t = Dot(e1, Cross(OffsetBetween(triangle.v0, origin), e2)) / q;
  return true;
}

}  // namespace

int CZynFaceRBFInternalObject::Set_VirtualNode_Coord_InCellPE(int faceType, int i, int* pair, double Sx,
                                                              double Sy, double Sz) {
  DQVector const normal = Unit({Sx, Sy, Sz});
  DQVector const at = Target(i);
  double const tP = NearestPlane(pair[0], faceType, i, at, {-normal.x, -normal.y, -normal.z});
  double const backward = 0.5 * tP;
  m_ppVirtualNode[i][kP].SetData(at.x - backward * normal.x, at.y - backward * normal.y,
                                 at.z - backward * normal.z, pair[0]);
  DQVector e = PointOf(pair[1]);
  if (faceType == static_cast<int>(FaceKind::Inner))
    e = Along(at, 0.5 * NearestPlane(pair[1], faceType, i, at, normal), normal);
  m_ppVirtualNode[i][kE].SetData(e.x, e.y, e.z, pair[1]);
  return Status::kDone;
}

// The distance along a ray from a point to the nearest plane of an interior cell's faces, except one face.
double CZynFaceRBFInternalObject::NearestPlane(int c, int skippedType, int skippedFace, DQVector const& from,
                                               DQVector const& along) {
  CZYN3DFiniteVolumeMesh const& mesh = *pMesh;
  double nearest = kFarthestPlane;
  if (c < 1 || c > mesh.NInnerCells) return nearest;  // only interior cells have faces
  int const* const cellFaces = mesh.CellFace[c];
  for (int k = 1; k <= cellFaces[0]; ++k) {
    FaceGroupMembers const* const group = GroupWithCode(mesh.CellFaceType[c][k]);
    if (group == nullptr) continue;
    FaceGroup const faces = FacesWithPoints(group->kind, mesh, pPartFace);
    int const f = cellFaces[k];
    bool const isSkipped = f == skippedFace && group->kind == static_cast<FaceKind>(skippedType);
    if (f < 1 || f > faces.count || isSkipped) continue;
    int const* const vertices = faces.nodes[f];
    double t = 0.0;
    Triangle const triangle = {VertexPoint(vertices[1]), VertexPoint(vertices[2]), VertexPoint(vertices[3])};
    if (MeetsPlane(from, along, triangle, t) && t > 0.0 && t < nearest) nearest = t;
  }
  return nearest;
}

int CZynFaceRBFInternalObject::CountingVirtualNodeToCellconnectionNumber(int i, int* pair) {
  Work& work = work_.Get();
  ClearAllMarks();
  StartSides(pair);
  CollectAroundVertices(m_ppVirtualNode[i][kP].tag, work.sideP, m_pMarkP);
  CollectAroundVertices(m_ppVirtualNode[i][kE].tag, work.sideE, m_pMarkE);
  StoreSides(i);
  int const n = StoreStencil(i);
  MakeValueRows(i, n);
  return n;
}

void CZynFaceRBFInternalObject::ClearAllMarks() {
  for (int* const marks : {m_pMarkAll, m_pMarkP, m_pMarkE}) std::fill_n(marks + 1, pMesh->NCell, 0);
}

// The cells around the vertices of a cell. The cell itself enters only as one of these.
void CZynFaceRBFInternalObject::CollectAroundVertices(int c, std::vector<int>& side, int* marks) {
  int const* const vertices = m_ppRBFlnods[c];
  if (vertices == nullptr) return;
  for (int k = 1; k <= vertices[0]; ++k) {
    int const* const around = ppRBFiNodeConn[vertices[k]];
    for (int m = 1; m <= around[0]; ++m) AppendToSide(around[m], side, marks);
  }
}

int CZynFaceRBFInternalObject::CountingVirtualNodeToCellBySearchNumber(int i, int* pair, double nx, double ny,
                                                                       double nz) {
  Work& work = work_.Get();
  ClearAllMarks();
  StartSides(pair);
  DQVector const u = Unit({nx, ny, nz});
  DQVector const at = Target(i);
  double const step = 2.0 * MeanDistance;
  DQVector const ahead = Along(at, step, u);
  DQVector const behind = {at.x - step * u.x, at.y - step * u.y, at.z - step * u.z};
  CollectCube(m_ppVirtualNode[i][kP], Length(OffsetBetween(PointOf(pair[1]), ahead)), work.sideP, m_pMarkP);
  CollectCube(m_ppVirtualNode[i][kE], Length(OffsetBetween(PointOf(pair[0]), behind)), work.sideE, m_pMarkE);
  StoreSides(i);
  int const n = StoreStencil(i);
  MakeValueRows(i, n);
  int const nP = static_cast<int>(work.sideP.size()) - 1, nE = static_cast<int>(work.sideE.size()) - 1;
  PrintFormatted("iface_VP[%d] = %d, iface_VE[%d] = %d\n", i, nP, i, nE);
  return n;
}

void CZynFaceRBFInternalObject::CollectCube(IBCnode const& around, double halfWidth, std::vector<int>& side,
                                            int* marks) {
  double const d = halfWidth;
  int count = 0;
  int const* const ids = m_pCellTree->SearchNearBlockID(around.x - d, around.y - d, around.z - d,
                                                        around.x + d, around.y + d, around.z + d, count, 0);
  for (int k = 0; k < count; ++k) AppendToSide(m_pTreeCell[ids[k]], side, marks);
}
