// Iterated Green-Gauss gradient: every sweep corrects the linear face value for skewness with the gradient of
// the sweep before it, and keeps it between the two cell values. @cite demirdzic1995

#include <initializer_list>

#include "gradient/COperatorGradientImpl.h"
#include "gradient/GreenGaussKernels.h"

namespace {

using green_gauss::At;
using green_gauss::FaceSet;
using green_gauss::InCells;

struct CorrectedScheme {
  double const* phi;
  double const *xc, *yc, *zc;           // cell centres
  double const *prevX, *prevY, *prevZ;  // gradient of the sweep before

  // v = L + G . (xf - xi): the linear value, moved from the point xi of the line of centres to the face
  // centre xf with the interpolated previous gradient G. The order of the additions, x-part first, then L, is
  // part of the result.
  template <class Value, class Cells>
  Value FaceValue(FaceSet const& faces, int f, Cells a, Cells b) const {
    Value const w = At<Value>(faces.weight, f);
    auto const interpolated = [&](double const* q) { return w * InCells(q, a) + (1.0 - w) * InCells(q, b); };
    Value const xi = interpolated(xc), yi = interpolated(yc), zi = interpolated(zc);
    Value const Gx = interpolated(prevX), Gy = interpolated(prevY), Gz = interpolated(prevZ);
    Value const dx = At<Value>(faces.xc, f) - xi;
    Value const dy = At<Value>(faces.yc, f) - yi;
    Value const dz = At<Value>(faces.zc, f) - zi;
    Value const phiOther = InCells(phi, a), phiCv = InCells(phi, b);
    Value const L = green_gauss::LinearFaceValue(w, phiCv, phiOther);
    Value const v = dx * Gx + L + dy * Gy + dz * Gz;
    return green_gauss::MedianFaceValue(phiOther, v, phiCv);
  }
  [[gnu::always_inline]] void PrefetchFaces(FaceSet const& faces, int f) const {
    green_gauss::PrefetchFaces(faces, f);
    for (double const* x : {faces.xc, faces.yc, faces.zc}) __builtin_prefetch(x + f);
  }
  [[gnu::always_inline]] void PrefetchCell(int c) const {
    for (double const* q : {phi, xc, yc, zc, prevX, prevY, prevZ}) __builtin_prefetch(q + c);
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
