// Iterated Green-Gauss gradient: every sweep corrects the face values for skewness with the gradient G of the sweep
// before it
//
//   g_c = 1/(V_c + 1e-30) * sum over the faces f of c of phi_f S_f,    S_f pointing out of c
//
//   phi_f = median(phi_other, v, phi_cv)                               between the cells `cv` and `other`
//       v = (1 - w) phi_cv + w phi_other + (x_f - x_i) . G_i
//     x_i = (1 - w) x_cv + w x_other                                   the point of interpolation between the centres
//     G_i = (1 - w) G_cv + w G_other
//   phi_f = phi_ghost                                                  on the boundary
//
// with G = 0 in the first sweep. @cite demirdzic1995

#include <algorithm>

#include "gradient/COperatorGradientImpl.h"
#include "gradient/GreenGauss.h"
#include "gradient/GreenGaussSums.h"

namespace {

/// w q_other + (1 - w) q_cv, in this order.
template <class Face, class Weight>
[[gnu::always_inline]] inline auto Interpolated(Face const& face, Weight w, double const* q) {
  return w * face.InOther(q) + (1.0 - w) * face.InCv(q);
}

struct LimitedCorrected {
  using Records = ring_walk::CorrectedRecords<LimitedCorrected>;

  double const* phi;
  double const *xc, *yc, *zc;  // cell centres
  double const *Gx, *Gy, *Gz;  // gradient of the sweep before

  // The order of the additions into v is part of the result: x-part, linear value, y-part, z-part.
  template <class Face>
  [[gnu::always_inline]] auto operator()(Face const& face) const {
    auto const w = face.Weight();
    auto const xi = Interpolated(face, w, xc), yi = Interpolated(face, w, yc), zi = Interpolated(face, w, zc);
    auto const Gxi = Interpolated(face, w, Gx), Gyi = Interpolated(face, w, Gy),
               Gzi = Interpolated(face, w, Gz);
    auto const dx = face.CentreX() - xi, dy = face.CentreY() - yi, dz = face.CentreZ() - zi;
    auto const phiOther = face.InOther(phi), phiCv = face.InCv(phi);
    auto const linear = green_gauss::Linear(w, phiCv, phiOther);
    auto const v = dx * Gxi + linear + dy * Gyi + dz * Gzi;
    return green_gauss::Median(phiOther, v, phiCv);
  }
};

}  // namespace

void COperatorGradientImpl::IteratedGreenGauss(double const* phi, double* gx, double* gy, double* gz,
                                               int nSweep) {
  CZYN3DFiniteVolumeMesh const& mesh = *m_pMesh;
  FaceGroups const faces(mesh, PartitionFaces(*m_pPartFace, mesh));
  double *const Gx = m_pGV->PrevGradX, *const Gy = m_pGV->PrevGradY, *const Gz = m_pGV->PrevGradZ;

  green_gauss::Sums const sums(mesh, faces, *m_pFaceRing);
  auto const sweep = [&](auto const& faceValue, double* sumX, double* sumY, double* sumZ) {
    sums.Store<face_walk::Flux>(faceValue, phi, {sumX, sumY, sumZ});
  };
  green_gauss::LimitedLinear const uncorrected{phi};
  LimitedCorrected const corrected{phi, mesh.xc, mesh.yc, mesh.zc, Gx, Gy, Gz};

  if (nSweep < 2) {
    for (double* array : {Gx, Gy, Gz}) std::fill(array + 1, array + mesh.NCell + 1, 0.0);
    if (nSweep == 1) sweep(uncorrected, gx, gy, gz);
    ExchangeResult(gx, gy, gz);
    return;
  }

  // Nothing reads the previous-iterate arrays in the first sweep, so it can leave its result there at once.
  sweep(uncorrected, Gx, Gy, Gz);
  ExchangeThree(Gx, Gy, Gz);
  for (int s = 2; s <= nSweep; ++s) {
    sweep(corrected, gx, gy, gz);
    if (s == nSweep) break;
    std::copy(gx + 1, gx + mesh.NCell + 1, Gx + 1);
    std::copy(gy + 1, gy + mesh.NCell + 1, Gy + 1);
    std::copy(gz + 1, gz + mesh.NCell + 1, Gz + 1);
    ExchangeThree(Gx, Gy, Gz);
  }
  ExchangeResult(gx, gy, gz);
}
