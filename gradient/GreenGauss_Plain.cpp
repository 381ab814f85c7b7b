// Plain Green-Gauss gradient: one sweep with the linear face value.

#include "gradient/COperatorGradientImpl.h"
#include "gradient/GreenGaussKernels.h"

void COperatorGradientImpl::PlainGreenGauss(double const* phi, double* gx, double* gy, double* gz) {
  using namespace green_gauss;
  SumFaceFluxes(*m_pMesh, *m_pPartFace, phi, gx, gy, gz, PlainScheme{phi});
  DivideByVolume(*m_pMesh, gx, gy, gz);
  ExchangeThree(gx, gy, gz);
}
