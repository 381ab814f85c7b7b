// Plain Green-Gauss gradient
//
//   g_c = 1/(V_c + 1e-30) * sum over the faces f of c of phi_f S_f,    S_f pointing out of c
//
//   phi_f = median(phi_other, (1 - w) phi_cv + w phi_other, phi_cv)    between the cells `cv` and `other`
//   phi_f = phi_ghost                                                  on the boundary
//
// The divergence theorem with face values by linear interpolation: the "common DT gradient" of
// @cite syrakos2017. The same S_f points out of `cv` and into `other`, hence the two signs.

#include "gradient/COperatorGradientImpl.h"
#include "gradient/GreenGauss.h"

void COperatorGradientImpl::PlainGreenGauss(double const* phi, double* gx, double* gy, double* gz) {
  using namespace green_gauss;
  CZYN3DFiniteVolumeMesh const& mesh = *m_pMesh;
  FaceGroups const faces(mesh, PartitionFaces(*m_pPartFace, mesh));
  face_walk::CellSums<face_walk::Flux> g({gx, gy, gz}, mesh.NCell);

  // g_cv += phi_f S,  g_other -= phi_f S
  for (FaceGroup const& group : faces.BetweenCells()) AddFluxes(group, LimitedLinear{phi}, g);
  // g_cv += phi_ghost S
  for (FaceGroup const& group : faces.OnBoundaryInGreenGaussOrder()) AddBoundaryFluxes(group, phi, g);
  // g_c *= 1/V
  for (int c = 1; c <= mesh.NInnerCells; ++c) g.Multiply(c, 1.0 / (mesh.Volume[c] + kTiny));

  ExchangeResult(gx, gy, gz);
}
