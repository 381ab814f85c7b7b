// The coefficients applied to fields, and the report on how well they reproduce a constant.

#include <algorithm>
#include <cmath>

#include "foundation/Progress.h"
#include "rbf_ib/CZynIBRBFInternalObject.h"

namespace {

// The report's coordinates are those of the mesh times this, on purpose; nothing else is scaled.
constexpr double kPrintedCoordinateScale = 10.0;

double Printed(double const* coordinates, int point) {
  return coordinates == nullptr ? 0.0 : coordinates[point] * kPrintedCoordinateScale;
}

}  // namespace

int CZynIBRBFInternalObject::Multiply_IBRBFCoefficent(double* pField, double* pValue, double* pDfdx,
                                                      double* pDfdy, double* pDfdz) {
  int const nPoint = m_iNIBNode;
  for (double* out : {pValue, pDfdx, pDfdy, pDfdz})
    if (nPoint > 0) std::fill_n(out + 1, nPoint, 0.0);

  // (value, d/dx, d/dy, d/dz)_i = sum over the stencil of i, in its order, of the field times the coefficients.
  for (int i = 1; i <= nPoint; ++i) {
    int const* const stencil = m_ppIBConn[i];
    if (stencil == nullptr) continue;
    IBCnode const* const coef = m_ppIBCoef[i];
    double const* const valueCoef = m_ppIBValueCoef[i];
    int const n = stencil[0];
    double sum = 0.0, sumX = 0.0, sumY = 0.0, sumZ = 0.0;
    for (int k = 1; k <= n; ++k) {
      double const f = pField[stencil[k]];
      sumX += f * coef[k].x;
      sumY += f * coef[k].y;
      sumZ += f * coef[k].z;
      sum += f * valueCoef[k];
    }
    pDfdx[i] = sumX;
    pDfdy[i] = sumY;
    pDfdz[i] = sumZ;
    pValue[i] = sum;
  }
  return 0;
}

int CZynIBRBFInternalObject::PrintDebugMessage(double* x, double* y, double* z) {
  for (double* sum : {&m_dFiSumSq, &m_dDfdxSumSq, &m_dDfdySumSq, &m_dDfdzSumSq})
    *sum = std::sqrt(*sum / m_iNDerived);

  auto const printErrors = [=](char const* name, double rms, double largest, double analysis, double computed,
                               int point) {
    PrintFormatted("%s RMS ERROR                = %le\n", name, rms);
    PrintFormatted("%s MAX ERROR                = %le\n", name, largest);
    PrintFormatted("%s MAX analysis ; RBF %-6s= %le %le\n", name, name, analysis, computed);
    PrintFormatted("%s MAX Coord                = %le %le %le\n\n", name, Printed(x, point),
                   Printed(y, point), Printed(z, point));
  };
  PrintFlushed("FI = 1.e0\n\n");
  printErrors("fi", m_dFiSumSq, m_dFiMaxError, m_dFiMaxAnalysis, m_dFiMaxRBF, m_iFiMaxPoint);
  printErrors("dfi/dx", m_dDfdxSumSq, m_dDfdxMaxError, 0.0, m_dDfdxMaxRBF, m_iDfdxMaxPoint);
  printErrors("dfi/dy", m_dDfdySumSq, m_dDfdyMaxError, 0.0, m_dDfdyMaxRBF, m_iDfdyMaxPoint);
  printErrors("dfi/dz", m_dDfdzSumSq, m_dDfdzMaxError, 0.0, m_dDfdzMaxRBF, m_iDfdzMaxPoint);
  return 0;
}
