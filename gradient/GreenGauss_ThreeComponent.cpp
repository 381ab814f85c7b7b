// Plain Green-Gauss gradients of three fields phi_k, as of the components of a vector, in one walk over the faces
//
//   g_k,c = 1/(V_c + 1e-30) * sum over the faces f of c of phi_k,f S_f,      k = 1, 2, 3
//
//   phi_k,f = median(phi_k,other, (1 - w) phi_k,cv + w phi_k,other, phi_k,cv)    between the cells `cv` and `other`
//   phi_k,f = phi_k,ghost                                                        on the boundary
//
// Bit for bit what GreenGauss_Plain.cpp gives for each field alone, which also names the source.

#include "gradient/COperatorGradientImpl.h"
#include "gradient/GreenGauss.h"
#include "gradient/GreenGaussSums.h"
#include "gradient/ThreeFields.h"

void COperatorGradientImpl::ThreeComponentGreenGauss(double const* const phi[3], double* const g9[9]) {
  using namespace green_gauss;
  CZYN3DFiniteVolumeMesh const& mesh = *m_pMesh;
  FaceGroups const faces(mesh, PartitionFaces(*m_pPartFace, mesh));
  face_walk::ThreeFields const fields{phi[0], phi[1], phi[2]};

  Sums const sums(mesh, faces, *m_pFaceRing);
  sums.Store<face_walk::ThreeFluxes>(LimitedLinear{fields}, fields,
                                     {g9[0], g9[1], g9[2], g9[3], g9[4], g9[5], g9[6], g9[7], g9[8]});

  ExchangeResult(g9);
}
