// Weighted Green-Gauss gradient: face values weighted harmonically with a cell coefficient k, for fields
// whose coefficient jumps between cells.

#include "gradient/COperatorGradientImpl.h"
#include "gradient/GreenGaussKernels.h"

namespace {

using green_gauss::At;
using green_gauss::FaceSet;
using green_gauss::InCells;
using green_gauss::kTiny;
using green_gauss::MedianFaceValue;

struct WeightedScheme {
  double const* phi;
  double const* coefficient;

  // t = (1-w)/(k_a + 1e-30);  v = (phi_b - phi_a) * t / (w/(k_b + 1e-30) + t) + phi_a, evaluated from the
  // left.
  template <class Value, class Cells>
  Value FaceValue(FaceSet const& faces, int f, Cells a, Cells b) const {
    Value const w = At<Value>(faces.weight, f);
    Value const phiOther = InCells(phi, a), phiCv = InCells(phi, b);
    Value const t = (1.0 - w) / (InCells(coefficient, a) + kTiny);
    Value const v = (phiCv - phiOther) * t / (w / (InCells(coefficient, b) + kTiny) + t) + phiOther;
    return MedianFaceValue(phiOther, v, phiCv);
  }
  [[gnu::always_inline]] void PrefetchFaces(FaceSet const& faces, int f) const {
    green_gauss::PrefetchFaces(faces, f);
  }
  [[gnu::always_inline]] void PrefetchCell(int c) const {
    __builtin_prefetch(phi + c);
    __builtin_prefetch(coefficient + c);
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
