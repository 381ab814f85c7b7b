// Weighted Green-Gauss gradient: face values weighted harmonically with a cell coefficient k, for fields
// whose coefficient jumps between cells.

#include "gradient/COperatorGradientImpl.h"
#include "gradient/GreenGaussKernels.h"

namespace {

using green_gauss::FaceSet;
using green_gauss::kTiny;
using green_gauss::MedianFaceValue;

struct WeightedScheme {
  double const* phi;
  double const* coefficient;

  struct Cell {
    double phi, k;
  };
  Cell At(int cell) const { return {phi[cell], coefficient[cell]}; }

  // t = (1-w)/(k_a + 1e-30);  v = (phi_b - phi_a) * t / (w/(k_b + 1e-30) + t) + phi_a, evaluated from the
  // left.
  double FaceValue(FaceSet const& faces, int f, Cell const& a, Cell const& b) const {
    double const w = faces.weight[f];
    double const t = (1 - w) / (a.k + kTiny);
    double const v = (b.phi - a.phi) * t / (w / (b.k + kTiny) + t) + a.phi;
    return MedianFaceValue(a.phi, v, b.phi);
  }
};

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
  SumFaceFluxes(*m_pMesh, *m_pPartFace, phi, gx, gy, gz, WeightedScheme{phi, weight});
  DivideByBareVolume(*m_pMesh, gx, gy, gz);
  ExchangeThree(gx, gy, gz);
}
