// The face-flux family: tables of the faces and their two-node weights. Nothing in the library calls it.

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "foundation/CDenseSolver.h"
#include "foundation/DQKernel.h"
#include "foundation/DQMatrix.h"
#include "foundation/DQVector.h"
#include "foundation/Progress.h"
#include "foundation/RowTable.h"
#include "foundation/WithoutTraps.h"
#include "host/Zyn3dGV.h"
#include "rbf_cell/CZynRBFInternalObject.h"

/// The two nodes of a face, their points, and the point at which the weights are wanted.
struct CZynRBFInternalObject::FaceNodes {
  DQVector points[2];  // interior side, other side
  DQVector centre;     // of the face

  FaceNodes(CZynRBFInternalObject const& object, int first, int second, DQVector const& faceCentre)
      : points{PointOf(object, first), PointOf(object, second)}, centre(faceCentre) {}

  /// Along each axis, the larger distance from the face centre to a node.
  DQVector Extent() const {
    DQVector const a = OffsetBetween(points[0], centre), b = OffsetBetween(points[1], centre);
    return {std::max(std::fabs(a.x), std::fabs(b.x)), std::max(std::fabs(a.y), std::fabs(b.y)),
            std::max(std::fabs(a.z), std::fabs(b.z))};
  }

  /// The larger distance from the face centre to a node.
  double Support() const {
    return std::max(Length(OffsetBetween(points[0], centre)), Length(OffsetBetween(points[1], centre)));
  }

 private:
  static DQVector PointOf(CZynRBFInternalObject const& object, int c) {
    RBFnode const& node = object.m_pRBFnode[c];
    return {node.x, node.y, node.z};
  }
};

namespace {

constexpr int kSuccess = 1;
constexpr int kOrder = 3;  // two nodes and the constant term

enum FaceKind : int { kInner = 1, kWall = 2, kInlet = 3, kOutlet = 4, kPartition = 5 };
enum TableMode : int { kTwoNodes = 0, kAllNodes = 1 };

constexpr int kTwoNodeStencil = 2;
constexpr int kTwoNodeRow = 4;  // elements 1 to 3 are written: two weights and a multiplier

/// Number of distinct cells around a face; `seen` is work storage. The table of nodes need not have rows beyond the
/// partition faces.
int CountCellsAround(CZYN3DFiniteVolumeMesh const& mesh, int nParInterFace, int face, int kind,
                     std::vector<int>& seen) {
  if (kind < kInner || kind > kPartition || mesh.ijParLnods == nullptr) return 0;
  if (face < 1 || face > nParInterFace) return 0;
  int const* const nodes = mesh.ijParLnods[face];
  seen.clear();
  for (int i = 1; i <= nodes[0]; ++i) {
    // The length is that of the node's row and the cells are those of row i: on purpose, see the header.
    int const* const row = mesh.NodeCell[i];
    int const m = std::min(mesh.NodeCell[nodes[i]][0], row[0]);
    if (m > 0) seen.insert(seen.end(), row + 1, row + 1 + m);
  }
  std::sort(seen.begin(), seen.end());
  return static_cast<int>(std::unique(seen.begin(), seen.end()) - seen.begin());
}

/// Stencil sizes [1..nFace] that a mode gives the faces of a kind; empty when it gives them no rows.
std::vector<int> StencilSizes(CZYN3DFiniteVolumeMesh const& mesh, int nParInterFace, int mode, int kind,
                              int nFace) {
  if (mode != kTwoNodes && mode != kAllNodes) return {};
  std::vector<int> sizes(static_cast<std::size_t>(nFace) + 1, kTwoNodeStencil);
  if (mode == kTwoNodes) return sizes;
  std::vector<int> seen;
  for (int f = 1; f <= nFace; ++f) sizes[f] = CountCellsAround(mesh, nParInterFace, f, kind, seen);
  return sizes;
}

int** NewStencilTable(int nFace, std::vector<int> const& sizes) {
  int const nFilled = sizes.empty() ? 0 : nFace;
  int** const table = RowTable<int>::Create(nFace, nFilled, [&](int f) { return sizes[f] + 1; });
  for (int f = 1; f <= nFilled; ++f) table[f][0] = sizes[f];
  return table;
}

// A row has two elements more than the stencil, and never fewer than the weights of two nodes take: they are
// written whatever was counted.
template <typename T>
T** NewWeightTable(int nFace, std::vector<int> const& sizes) {
  int const nFilled = sizes.empty() ? 0 : nFace;
  return RowTable<T>::Create(nFace, nFilled, [&](int f) { return std::max(sizes[f] + 2, kTwoNodeRow); });
}

/// The system of a face: [A 1; 1' 0] [w; m] = [right-hand sides; 0], row-major.
struct FaceSystem {
  double matrix[kOrder * kOrder];
  double columns[kOrder * 3] = {};  // right-hand sides, then the solution
  DQVector gradients[2];            // of the kernel centred on node k, at the face centre

  template <typename Kernel, typename Nodes>
  FaceSystem(Kernel const& kernel, Nodes const& nodes) {
    FillKernelMatrix(kernel, nodes.points, 2, matrix, kOrder);
    AddConstantTerm(matrix, 2);
    for (int k = 0; k < 2; ++k)
      gradients[k] = kernel.Gradient(kernel.Scaled(OffsetBetween(nodes.points[k], nodes.centre)));
  }

  void Solve(int nColumn) { CDenseSolver().Solve(kOrder, matrix, columns, columns, nColumn); }
};

template <typename Nodes>
FaceSystem MakeFaceSystem(Nodes const& nodes, int shapeNormalize, double span, DQVector const& extent) {
  if (shapeNormalize == 1) return {ShapeNormalisedDQKernel(span, extent), nodes};
  return {PlainDQKernel(span, nodes.Support()), nodes};
}

// A component of exactly zero stays zero without a division.
DQVector UnitNormal(DQVector const& areaVector) {
  double const area = Length(areaVector);
  auto const unit = [area](double component) { return component != 0.0 ? component / area : 0.0; };
  return {unit(areaVector.x), unit(areaVector.y), unit(areaVector.z)};
}

// Only inner faces are guarded against a face that is flat along an axis.
DQVector WithoutZeros(DQVector const& extent) {
  auto const guarded = [](double e) { return e == 0.0 ? 1e-6 : e; };
  return {guarded(extent.x), guarded(extent.y), guarded(extent.z)};
}

}  // namespace

int CZynRBFInternalObject::faceToCellconnection_memoryallocate(int mode) {
  CZYN3DFiniteVolumeMesh const& mesh = *m_pMesh;
  int const nParInterFace = m_pPartFace->NParInterFace();
  auto const sizesOf = [&](int kind, int nFace) {
    return StencilSizes(mesh, nParInterFace, mode, kind, nFace);
  };
  auto const allocate = [&](int kind, int nFace, int**& stencils, RBFnode**& weights) {
    std::vector<int> const sizes = sizesOf(kind, nFace);
    stencils = NewStencilTable(nFace, sizes);
    weights = NewWeightTable<RBFnode>(nFace, sizes);
  };

  std::vector<int> const innerSizes = sizesOf(kInner, mesh.NInnerFaces);
  m_ppRBFInnerFaceConn = NewStencilTable(mesh.NInnerFaces, innerSizes);
  m_ppRBFInnerFaceCoef = NewWeightTable<RBFnode>(mesh.NInnerFaces, innerSizes);
  m_ppRBFInnerFaceFlux = NewWeightTable<double>(mesh.NInnerFaces, innerSizes);
  allocate(kWall, mesh.NWall, m_ppRBFWallFaceConn, m_ppRBFWallFaceCoef);
  allocate(kInlet, mesh.NInlet, m_ppRBFInletFaceConn, m_ppRBFInletFaceCoef);
  allocate(kOutlet, mesh.NOutlet, m_ppRBFOutletFaceConn, m_ppRBFOutletFaceCoef);
  allocate(kPartition, nParInterFace, m_ppRBFPartInterFaceConn, m_ppRBFPartInterFaceCoef);
  return 0;
}

int CZynRBFInternalObject::CountingfaceToCellconnectionNumber(int face, int kind) {
  std::vector<int> seen;
  // Without partition faces the caller vouches for the row.
  int const nParInterFace = m_pPartFace != nullptr ? m_pPartFace->NParInterFace() : face;
  return CountCellsAround(*m_pMesh, nParInterFace, face, kind, seen);
}

int CZynRBFInternalObject::SetfaceToCellconnection(int) { return 0; }

int CZynRBFInternalObject::DeriveRBFweighting_InnerfaceFlux() {
  WithoutTraps const duringSetUp;
  MAX_Weithting_Residual_Normal = 0.0;
  for (int f = 1; f <= m_pMesh->NInnerFaces; ++f) DeriveInnerFaceCoefficentBysolveDQfullMatrix(f);
  PrintFlushed("Inner face RBF flux Interpolation is done.\n");
  PrintFormatted("Span = %lf, MAX_Weithting_Residual_Normal = %le\n", Span, MAX_Weithting_Residual_Normal);
  return kSuccess;
}

int CZynRBFInternalObject::DeriveRBFweighting_InletfaceFlux() {
  WithoutTraps const duringSetUp;
  ClearResiduals();
  for (int f = 1; f <= m_pMesh->NInlet; ++f) DeriveInletFaceCoefficentBysolveDQfullMatrix(f);
  PrintFlushed("Inelt face RBF flux Interpolation is done.\n");
  PrintResiduals();
  return kSuccess;
}

int CZynRBFInternalObject::DeriveRBFweighting_OutletfaceFlux() {
  WithoutTraps const duringSetUp;
  ClearResiduals();
  for (int f = 1; f <= m_pMesh->NOutlet; ++f) DeriveOutletFaceCoefficentBysolveDQfullMatrix(f);
  PrintFlushed("Outlet face flux Interpolation is done.\n");
  PrintResiduals();
  return kSuccess;
}

// The inlet operation, on purpose; walls beyond the number of inlet faces have no inlet arrays to be read
// from.
int CZynRBFInternalObject::DeriveRBFweighting_WallfaceFlux() {
  WithoutTraps const duringSetUp;
  ClearResiduals();
  int const nFace = std::min(m_pMesh->NWall, m_pMesh->NInlet);
  for (int f = 1; f <= nFace; ++f) DeriveInletFaceCoefficentBysolveDQfullMatrix(f);
  PrintFlushed("Wall face flux Interpolation is done.\n");
  PrintResiduals();
  return kSuccess;
}

int CZynRBFInternalObject::DeriveRBFweighting_PartInterfaceFlux() {
  WithoutTraps const duringSetUp;
  ClearResiduals();
  int const nParInterFace = m_pPartFace->NParInterFace();
  for (int f = 1; f <= nParInterFace; ++f) DerivePartInterFaceCoefficentBysolveDQfullMatrix(f);
  PrintFlushed("Part inter face RBF flux Interpolation is done.\n");
  PrintResiduals();
  return kSuccess;
}

int CZynRBFInternalObject::DeriveInletFaceCoefficentBysolveDQfullMatrix(int f) {
  WithoutTraps const duringSetUp;
  CZYN3DFiniteVolumeMesh const& mesh = *m_pMesh;
  DQVector const centre = {mesh.ijInletxc[f], mesh.ijInletyc[f], mesh.ijInletzc[f]};
  DeriveFaceCoefficents({*this, mesh.ijInletCV[f], mesh.ijInlet[f], centre}, f, m_ppRBFInletFaceCoef);
  return kSuccess;
}

int CZynRBFInternalObject::DeriveOutletFaceCoefficentBysolveDQfullMatrix(int f) {
  WithoutTraps const duringSetUp;
  CZYN3DFiniteVolumeMesh const& mesh = *m_pMesh;
  DQVector const centre = {mesh.ijOutletxc[f], mesh.ijOutletyc[f], mesh.ijOutletzc[f]};
  DeriveFaceCoefficents({*this, mesh.ijOutletCV[f], mesh.ijOutlet[f], centre}, f, m_ppRBFOutletFaceCoef);
  return kSuccess;
}

int CZynRBFInternalObject::DeriveWallFaceCoefficentBysolveDQfullMatrix(int f) {
  WithoutTraps const duringSetUp;
  CZYN3DFiniteVolumeMesh const& mesh = *m_pMesh;
  DQVector const centre = {mesh.ijWallxc[f], mesh.ijWallyc[f], mesh.ijWallzc[f]};
  DeriveFaceCoefficents({*this, mesh.ijWallCV[f], mesh.ijWall[f], centre}, f, m_ppRBFWallFaceCoef);
  return kSuccess;
}

int CZynRBFInternalObject::DerivePartInterFaceCoefficentBysolveDQfullMatrix(int f) {
  WithoutTraps const duringSetUp;
  CPartitionFace_DLL& faces = *m_pPartFace;
  DQVector const centre = {faces.ijParxc()[f], faces.ijParyc()[f], faces.ijParzc()[f]};
  DeriveFaceCoefficents({*this, faces.ijParCV()[f], faces.ijPar()[f], centre}, f, m_ppRBFPartInterFaceCoef);
  return kSuccess;
}

// Unlike a cell's, these right-hand sides keep double precision, and the residual leaves the multiplier out.
void CZynRBFInternalObject::DeriveFaceCoefficents(FaceNodes const& nodes, int f, RBFnode** table) {
  FaceSystem system = MakeFaceSystem(nodes, iShape_Normalize, Span, nodes.Extent());
  double* const s = system.columns;
  for (int k = 0; k < 2; ++k) {
    s[3 * k] = system.gradients[k].x;
    s[3 * k + 1] = system.gradients[k].y;
    s[3 * k + 2] = system.gradients[k].z;
  }
  system.Solve(3);

  table[f][1].Set(s[0], s[1], s[2], f);
  table[f][2].Set(s[3], s[4], s[5], f);
  RaiseResidual(s[0] + s[3], MAXResidual_X, f);
  RaiseResidual(s[1] + s[4], MAXResidual_Y, f);
  RaiseResidual(s[2] + s[5], MAXResidual_Z, f);
}

// One column: the derivative along the face's normal, summed in the order y, x, z. The residual is the
// multiplier.
int CZynRBFInternalObject::DeriveInnerFaceCoefficentBysolveDQfullMatrix(int f) {
  WithoutTraps const duringSetUp;
  CZYN3DFiniteVolumeMesh const& mesh = *m_pMesh;
  FaceNodes const nodes(*this, mesh.ijCV[f], mesh.ij[f], {mesh.ijxc[f], mesh.ijyc[f], mesh.ijzc[f]});
  DQVector const normal = UnitNormal({mesh.ijSx[f], mesh.ijSy[f], mesh.ijSz[f]});
  FaceSystem system = MakeFaceSystem(nodes, iShape_Normalize, Span, WithoutZeros(nodes.Extent()));
  for (int k = 0; k < 2; ++k) {
    DQVector const& gradient = system.gradients[k];
    system.columns[k] = gradient.y * normal.y + gradient.x * normal.x + gradient.z * normal.z;
  }
  system.Solve(1);

  double* const row = m_ppRBFInnerFaceFlux[f];
  for (int k = 0; k < kOrder; ++k) row[k + 1] = system.columns[k];
  RaiseResidual(row[3], MAX_Weithting_Residual_Normal, f);
  return kSuccess;
}
