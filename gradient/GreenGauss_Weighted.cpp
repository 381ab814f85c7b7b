// Green-Gauss gradient with harmonic face values, for fields with a coefficient k that jumps between cells
//
//   g_c = 1/V_c * sum over the faces f of c of phi_f S_f,    S_f pointing out of c
//
//   phi_f = median(phi_other, v, phi_cv)                     between the cells `cv` and `other`
//       t = (1 - w) / (k_other + 1e-30)
//       v = (phi_cv - phi_other) t / (w / (k_cv + 1e-30) + t) + phi_other
//   phi_f = phi_ghost                                        on the boundary
//
// v is the value at which the flux k dphi/dn is the same from either side, the distances from the cells to the face being
// as w to 1 - w: the interface value behind the harmonic mean of the coefficients. @cite patankar1980
//
// V has no guard here, unlike in the other forms: the gradient of an empty cell is infinite or NaN, and callers can
// see that.

#include "gradient/COperatorGradientImpl.h"
#include "gradient/GreenGauss.h"

namespace {

using green_gauss::kTiny;

struct LimitedHarmonic {
  double const *phi, *k;

  // v is evaluated from the left.
  template <class Face>
  [[gnu::always_inline]] auto operator()(Face const& face) const {
    auto const w = face.Weight();
    auto const phiOther = face.InOther(phi), phiCv = face.InCv(phi);
    auto const t = (1.0 - w) / (face.InOther(k) + kTiny);
    auto const v = (phiCv - phiOther) * t / (w / (face.InCv(k) + kTiny) + t) + phiOther;
    return green_gauss::Median(phiOther, v, phiCv);
  }
};

}  // namespace

void COperatorGradientImpl::WeightedGreenGauss(double const* phi, double* gx, double* gy, double* gz,
                                               double const* coefficient) {
  CZYN3DFiniteVolumeMesh const& mesh = *m_pMesh;
  FaceGroups const faces(mesh, PartitionFaces(*m_pPartFace, mesh));
  face_walk::CellSums<face_walk::Flux> g({gx, gy, gz}, mesh.NCell);

  // g_cv += phi_f S,  g_other -= phi_f S
  for (FaceGroup const& group : faces.BetweenCells()) AddFluxes(group, LimitedHarmonic{phi, coefficient}, g);
  // g_cv += phi_ghost S
  for (FaceGroup const& group : faces.OnBoundaryInGreenGaussOrder()) AddBoundaryFluxes(group, phi, g);
  // g_c *= 1/V
  for (int c = 1; c <= mesh.NInnerCells; ++c) g.Multiply(c, 1.0 / mesh.Volume[c]);

  ExchangeResult(gx, gy, gz);
}
