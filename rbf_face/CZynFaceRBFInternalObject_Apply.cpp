// The rows applied to a field: nothing but loads, multiplies and adds.

#include <algorithm>

#include "rbf_face/CZynFaceRBFInternalObject.h"

namespace {

constexpr int kDone = 0;

}  // namespace

int CZynFaceRBFInternalObject::Multiply_FaceRBFCoefficent(double* phi, double* faceValue, double* zero1,
                                                          double* zero2, double* zero3) {
  int const nFace = NFace;
  if (nFace == 0) return kDone;
  for (double* const output : {faceValue, zero1, zero2, zero3})
    std::fill(output + 1, output + nFace + 1, 0.0);

  // value_i = sum over the stencil of face i, in its order, of phi times the weights.
  for (int i = 1; i <= nFace; ++i) {
    int const* const stencil = m_ppFaceCellConn[i];
    if (stencil == nullptr) continue;  // a method that builds none
    double const* const weights = m_ppFaceFiCoef[i];
    int const n = stencil[0];
    double value = 0.0;
    for (int k = 1; k <= n; ++k) value += phi[stencil[k]] * weights[k];
    faceValue[i] = value;
  }

  // A caller that has one array for all outputs finds the zeros in it, which come after the value.
  for (double const* const zero : {zero1, zero2, zero3})
    if (zero == faceValue) std::fill(faceValue + 1, faceValue + nFace + 1, 0.0);
  return kDone;
}
