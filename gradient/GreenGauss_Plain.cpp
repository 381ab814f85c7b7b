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
#include "gradient/GreenGaussSums.h"

void COperatorGradientImpl::PlainGreenGauss(double const* phi, double* gx, double* gy, double* gz) {
  using namespace green_gauss;
  CZYN3DFiniteVolumeMesh const& mesh = *m_pMesh;
  FaceGroups const faces(mesh, PartitionFaces(*m_pPartFace, mesh));

  Sums const sums(mesh, faces, *m_pFaceRing);
  sums.Store<face_walk::Flux>(LimitedLinear{phi}, phi, {gx, gy, gz});

  ExchangeResult(gx, gy, gz);
}
