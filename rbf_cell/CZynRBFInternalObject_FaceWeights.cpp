// The weights of the face-flux family. With X_1, X_2 the points of the two cells of a face and F its centre,
//   (d phi/dx)_F = w_1 phi_1 + w_2 phi_2,   y and z alike, and for inner faces the derivative along the normal,
// where [A 1; 1' 0] [w; m] = [b; 0] is the system of a cell (see CellSystem.h) with two members, evaluated at F.
// Nothing in the library calls it.

#include <algorithm>
#include <cmath>

#include "foundation/CDenseSolver.h"
#include "foundation/DQKernel.h"
#include "foundation/DQMatrix.h"
#include "foundation/DQVector.h"
#include "foundation/FaceGroups.h"
#include "foundation/Progress.h"
#include "foundation/Status.h"
#include "foundation/WithoutTraps.h"
#include "host/Zyn3dGV.h"
#include "rbf_cell/CZynRBFInternalObject.h"

/// The two nodes of a face, and the point at which the weights are wanted.
struct CZynRBFInternalObject::FaceNodes {
  DQVector points[2];  // interior side, other side
  DQVector centre;     // of the face

  FaceNodes(CZynRBFInternalObject const& object, FaceGroup const& faces, int f)
      : points{PointOf(object, faces.cv[f]), PointOf(object, faces.other[f])},
        centre{faces.xc[f], faces.yc[f], faces.zc[f]} {}

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

constexpr int kOrder = 3;  // two nodes and the constant term

/// The system of a face, row-major. The right-hand sides are zero until the caller fills them.
struct FaceSystem {
  double matrix[kOrder * kOrder];
  double columns[kOrder * 3] = {};  // right-hand sides, then the solution
  DQVector gradients[2];            // of the kernel centred on node k, at the face centre

  template <typename Kernel, typename Nodes>
  FaceSystem(Kernel const& kernel, Nodes const& nodes) {
    FillMatrixWithConstantTerm(kernel, nodes.points, 2, matrix);
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

// A component of exactly zero stays zero without a division, so that a face without area has a normal of zeros.
DQVector UnitNormal(DQVector const& areaVector) {
  double const area = Length(areaVector);
  auto const unit = [area](double component) { return component != 0.0 ? component / area : 0.0; };
  return {unit(areaVector.x), unit(areaVector.y), unit(areaVector.z)};
}

// Keeps the shape-normalised form from dividing by zero where an inner face is in line with an axis. The other kinds
// have no such guard.
DQVector WithoutZeros(DQVector const& extent) {
  auto const guarded = [](double e) { return e == 0.0 ? 1e-6 : e; };
  return {guarded(extent.x), guarded(extent.y), guarded(extent.z)};
}

}  // namespace

int CZynRBFInternalObject::DeriveRBFweighting_InnerfaceFlux() {
  WithoutTraps const duringSetUp;
  MAX_Weithting_Residual_Normal = 0.0;
  for (int f = 1; f <= m_pMesh->NInnerFaces; ++f) DeriveInnerFaceCoefficentBysolveDQfullMatrix(f);
  PrintFlushed("Inner face RBF flux Interpolation is done.\n");
  PrintFormatted("Span = %lf, MAX_Weithting_Residual_Normal = %le\n", Span, MAX_Weithting_Residual_Normal);
  return Status::kSuccess;
}

int CZynRBFInternalObject::DeriveRBFweighting_InletfaceFlux() {
  return DeriveAllFaces(FaceKind::Inlet, FacesOf(FaceKind::Inlet, *m_pMesh).count, m_ppRBFInletFaceCoef,
                        "Inelt face RBF flux Interpolation is done.\n");
}

int CZynRBFInternalObject::DeriveRBFweighting_OutletfaceFlux() {
  return DeriveAllFaces(FaceKind::Outlet, FacesOf(FaceKind::Outlet, *m_pMesh).count, m_ppRBFOutletFaceCoef,
                        "Outlet face flux Interpolation is done.\n");
}

// Inlet faces under the numbers of wall faces: that is what this operation is defined to do. There are no inlet
// arrays beyond the number of inlet faces.
int CZynRBFInternalObject::DeriveRBFweighting_WallfaceFlux() {
  int const nFace =
      std::min(FacesOf(FaceKind::Wall, *m_pMesh).count, FacesOf(FaceKind::Inlet, *m_pMesh).count);
  return DeriveAllFaces(FaceKind::Inlet, nFace, m_ppRBFInletFaceCoef,
                        "Wall face flux Interpolation is done.\n");
}

int CZynRBFInternalObject::DeriveRBFweighting_PartInterfaceFlux() {
  return DeriveAllFaces(FaceKind::Partition, m_pPartFace->NParInterFace(), m_ppRBFPartInterFaceCoef,
                        "Part inter face RBF flux Interpolation is done.\n");
}

int CZynRBFInternalObject::DeriveAllFaces(FaceKind kind, int nFace, RBFnode** table, char const* message) {
  WithoutTraps const duringSetUp;
  ClearResiduals();
  for (int f = 1; f <= nFace; ++f) DeriveFace(kind, f, table);
  PrintFlushed(message);
  PrintResiduals();
  return Status::kSuccess;
}

int CZynRBFInternalObject::DeriveInletFaceCoefficentBysolveDQfullMatrix(int f) {
  return DeriveFace(FaceKind::Inlet, f, m_ppRBFInletFaceCoef);
}

int CZynRBFInternalObject::DeriveOutletFaceCoefficentBysolveDQfullMatrix(int f) {
  return DeriveFace(FaceKind::Outlet, f, m_ppRBFOutletFaceCoef);
}

int CZynRBFInternalObject::DeriveWallFaceCoefficentBysolveDQfullMatrix(int f) {
  return DeriveFace(FaceKind::Wall, f, m_ppRBFWallFaceCoef);
}

int CZynRBFInternalObject::DerivePartInterFaceCoefficentBysolveDQfullMatrix(int f) {
  return DeriveFace(FaceKind::Partition, f, m_ppRBFPartInterFaceCoef);
}

// One column for each of d/dx, d/dy, d/dz. Unlike those of a cell, these right-hand sides keep double precision, and
// the residual leaves the multiplier out.
int CZynRBFInternalObject::DeriveFace(FaceKind kind, int f, RBFnode** table) {
  WithoutTraps const duringSetUp;
  FaceNodes const nodes(*this, FacesOf(kind, *m_pMesh, m_pPartFace), f);
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
  return Status::kSuccess;
}

// One column: the derivative along the face's normal, summed in the order y, x, z. The residual is the multiplier.
int CZynRBFInternalObject::DeriveInnerFaceCoefficentBysolveDQfullMatrix(int f) {
  WithoutTraps const duringSetUp;
  FaceGroup const faces = FacesOf(FaceKind::Inner, *m_pMesh);
  FaceNodes const nodes(*this, faces, f);
  DQVector const normal = UnitNormal({faces.sx[f], faces.sy[f], faces.sz[f]});
  FaceSystem system = MakeFaceSystem(nodes, iShape_Normalize, Span, WithoutZeros(nodes.Extent()));
  for (int k = 0; k < 2; ++k) {
    DQVector const& gradient = system.gradients[k];
    system.columns[k] = gradient.y * normal.y + gradient.x * normal.x + gradient.z * normal.z;
  }
  system.Solve(1);

  double* const row = m_ppRBFInnerFaceFlux[f];
  for (int k = 0; k < kOrder; ++k) row[k + 1] = system.columns[k];
  RaiseResidual(row[3], MAX_Weithting_Residual_Normal, f);
  return Status::kSuccess;
}

int CZynRBFInternalObject::MultiplyRBFCoefficent_InnerfaceFlux(double* phi, double* fx, double* fy,
                                                               double* fz) {
  FaceGroup const faces = FacesOf(FaceKind::Inner, *m_pMesh);
  for (int f = 1; f <= faces.count; ++f) {
    double const first = phi[faces.cv[f]], second = phi[faces.other[f]];
    RBFnode const &w1 = m_ppRBFInnerFaceCoef[f][1], &w2 = m_ppRBFInnerFaceCoef[f][2];
    fx[f] = first * w1.x + second * w2.x;
    fy[f] = first * w1.y + second * w2.y;
    fz[f] = first * w1.z + second * w2.z;
  }
  return Status::kSuccess;
}
