// Iterated Green-Gauss gradient: every sweep corrects the linear face value for skewness with the gradient of
// the sweep before it, and keeps it between the two cell values. @cite demirdzic1995

#include <initializer_list>

#include "gradient/COperatorGradientImpl.h"
#include "gradient/GreenGaussKernels.h"

namespace {

using green_gauss::FaceSet;

struct CorrectedScheme {
  double const* phi;
  double const *xc, *yc, *zc;           // cell centres
  double const *prevX, *prevY, *prevZ;  // gradient of the sweep before

  struct Cell {
    double phi, x, y, z, gx, gy, gz;
  };
  Cell At(int c) const { return {phi[c], xc[c], yc[c], zc[c], prevX[c], prevY[c], prevZ[c]}; }

  // v = L + G . (xf - xi): the linear value, moved from the point xi of the line of centres to the face
  // centre xf with the interpolated previous gradient G. The order of the additions, x-part first, then L, is
  // part of the result.
  double FaceValue(FaceSet const& faces, int f, Cell const& a, Cell const& b) const {
    double const w = faces.weight[f];
    double const xi = w * a.x + (1 - w) * b.x;
    double const yi = w * a.y + (1 - w) * b.y;
    double const zi = w * a.z + (1 - w) * b.z;
    double const Gx = w * a.gx + (1 - w) * b.gx;
    double const Gy = w * a.gy + (1 - w) * b.gy;
    double const Gz = w * a.gz + (1 - w) * b.gz;
    double const L = green_gauss::LinearFaceValue(w, b.phi, a.phi);
    double const v = (faces.xc[f] - xi) * Gx + L + (faces.yc[f] - yi) * Gy + (faces.zc[f] - zi) * Gz;
    return green_gauss::MedianFaceValue(a.phi, v, b.phi);
  }
};

}  // namespace

void COperatorGradientImpl::IteratedGreenGauss(double const* phi, double* gx, double* gy, double* gz,
                                               int nSweep) {
  using namespace green_gauss;
  CZYN3DFiniteVolumeMesh const& mesh = *m_pMesh;
  double *const px = m_pGV->PrevGradX, *const py = m_pGV->PrevGradY, *const pz = m_pGV->PrevGradZ;

  auto const plainSweep = [&](double* sumX, double* sumY, double* sumZ) {
    SumFaceFluxes(mesh, *m_pPartFace, phi, sumX, sumY, sumZ, PlainScheme{phi});
    DivideByVolume(mesh, sumX, sumY, sumZ);
  };
  auto const correctedSweep = [&] {
    CorrectedScheme const scheme{phi, mesh.xc, mesh.yc, mesh.zc, px, py, pz};
    SumFaceFluxes(mesh, *m_pPartFace, phi, gx, gy, gz, scheme);
    DivideByVolume(mesh, gx, gy, gz);
  };

  if (nSweep < 2) {
    for (double* array : {px, py, pz}) std::fill(array + 1, array + mesh.NCell + 1, 0.0);
    if (nSweep == 1) plainSweep(gx, gy, gz);
    ExchangeThree(gx, gy, gz);
    return;
  }

  // The previous gradient of the first sweep is zero, so that sweep needs no correction, and as nothing reads
  // the previous-iterate arrays in it, it can leave its result there at once.
  plainSweep(px, py, pz);
  ExchangeThree(px, py, pz);
  for (int s = 2; s <= nSweep; ++s) {
    correctedSweep();
    if (s == nSweep) break;
    std::copy(gx + 1, gx + mesh.NCell + 1, px + 1);
    std::copy(gy + 1, gy + mesh.NCell + 1, py + 1);
    std::copy(gz + 1, gz + mesh.NCell + 1, pz + 1);
    ExchangeThree(px, py, pz);
  }
  ExchangeThree(gx, gy, gz);
}
