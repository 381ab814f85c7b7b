// Weighted Green-Gauss gradient: face values weighted harmonically with a cell coefficient k, for fields
// whose coefficient jumps between cells.

#include "gradient/COperatorGradientImpl.h"
#include "gradient/GreenGaussKernels.h"

namespace {

// t = (1-w)/(k_a + 1e-30);  v = (phi_b - phi_a) * t / (w/(k_b + 1e-30) + t) + phi_a, evaluated from the left.
double HarmonicFaceValue(double w, double phiCv, double phiOther, double kCv, double kOther) {
  using green_gauss::kTiny;
  double const t = (1 - w) / (kOther + kTiny);
  return (phiCv - phiOther) * t / (w / (kCv + kTiny) + t) + phiOther;
}

// No guard against an empty cell here, unlike the other forms: it gives infinities or NaN in that cell.
void DivideByBareVolume(CZYN3DFiniteVolumeMesh const& mesh, double* gx, double* gy, double* gz) {
  for (int i = 1; i <= mesh.NInnerCells; ++i) {
    double const r = 1.0 / mesh.Volume[i];
    gx[i] *= r;
    gy[i] *= r;
    gz[i] *= r;
  }
}

}  // namespace

void COperatorGradientImpl::WeightedGreenGauss(double const* phi, double* gx, double* gy, double* gz,
                                               double const* weight) {
  using namespace green_gauss;
  auto const faceValues = [phi, weight](FaceSet const&) {
    return [phi, weight](int /*f*/, double w, int a, int b) {
      return MedianFaceValue(phi[a], HarmonicFaceValue(w, phi[b], phi[a], weight[b], weight[a]), phi[b]);
    };
  };
  SumFaceFluxes(*m_pMesh, *m_pPartFace, phi, gx, gy, gz, faceValues);
  DivideByBareVolume(*m_pMesh, gx, gy, gz);
  ExchangeThree(gx, gy, gz);
}
