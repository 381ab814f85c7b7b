// Iterated Green-Gauss gradient: every sweep corrects the linear face value for skewness with the gradient of
// the sweep before it, and keeps it between the two cell values. @cite demirdzic1995

#include <initializer_list>

#include "gradient/COperatorGradientImpl.h"
#include "gradient/GreenGaussKernels.h"

namespace {

using green_gauss::FaceSet;

/// A vector field over the cells, [1..NCell] each.
struct CellVectors {
  double const *x, *y, *z;
};

// v = L + G . (xf - xi): the linear value, moved from the point xi of the line of centres to the face centre
// xf with the interpolated previous gradient G. The order of the additions, x-part first, then L, is part of
// the result.
double CorrectedFaceValue(FaceSet const& faces, int f, double w, int a, int b, double const* phi,
                          CellVectors const& centre, CellVectors const& previous) {
  double const xi = w * centre.x[a] + (1 - w) * centre.x[b];
  double const yi = w * centre.y[a] + (1 - w) * centre.y[b];
  double const zi = w * centre.z[a] + (1 - w) * centre.z[b];
  double const Gx = w * previous.x[a] + (1 - w) * previous.x[b];
  double const Gy = w * previous.y[a] + (1 - w) * previous.y[b];
  double const Gz = w * previous.z[a] + (1 - w) * previous.z[b];
  double const L = green_gauss::LinearFaceValue(w, phi[b], phi[a]);
  return (faces.xc[f] - xi) * Gx + L + (faces.yc[f] - yi) * Gy + (faces.zc[f] - zi) * Gz;
}

}  // namespace

void COperatorGradientImpl::IteratedGreenGauss(double const* phi, double* gx, double* gy, double* gz,
                                               int nSweep) {
  using namespace green_gauss;
  CZYN3DFiniteVolumeMesh const& mesh = *m_pMesh;
  double *const px = m_pGV->PrevGradX, *const py = m_pGV->PrevGradY, *const pz = m_pGV->PrevGradZ;

  // One sweep without and with correction, into the given sums.
  auto const plainSweep = [&](double* sx, double* sy, double* sz) {
    SumFaceFluxes(mesh, *m_pPartFace, phi, sx, sy, sz, PlainFaceValues(phi));
    DivideByVolume(mesh, sx, sy, sz);
  };
  auto const correctedSweep = [&] {
    CellVectors const centre{mesh.xc, mesh.yc, mesh.zc}, previous{px, py, pz};
    auto const faceValues = [&](FaceSet const& faces) {
      return [faces, phi, centre, previous](int f, double w, int a, int b) {
        double const v = CorrectedFaceValue(faces, f, w, a, b, phi, centre, previous);
        return MedianFaceValue(phi[a], v, phi[b]);
      };
    };
    SumFaceFluxes(mesh, *m_pPartFace, phi, gx, gy, gz, faceValues);
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
