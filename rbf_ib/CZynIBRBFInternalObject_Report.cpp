// How well the coefficients reproduce the field 1: its value is 1 and its derivatives are 0 at every point.

#include <cmath>

#include "foundation/Progress.h"
#include "foundation/Status.h"
#include "foundation/WeightRows.h"
#include "rbf_ib/CZynIBRBFInternalObject.h"

namespace {

// The report's coordinates are those of the mesh times this, and nothing else in it is scaled: the header says so,
// since a reader has to know it.
constexpr double kPrintedCoordinateScale = 10.0;

double Printed(double const* coordinates, int point) {
  return coordinates == nullptr ? 0.0 : coordinates[point] * kPrintedCoordinateScale;
}

// Adds the error of a sum of coefficients, and keeps the largest with its point.
void RaiseError(double error, double computed, int point, double& sumOfSquares, double& largest,
                int& pointOfLargest, double& computedThere) {
  sumOfSquares += error * error;
  if (!(error > largest)) return;
  largest = error;
  pointOfLargest = point;
  computedThere = computed;
}

}  // namespace

void CZynIBRBFInternalObject::GatherErrors(int i, WeightSums const& sums) {
  double const sum = sums.value;
  double const sumX = sums.gradient.x, sumY = sums.gradient.y, sumZ = sums.gradient.z;
  ++m_iNDerived;
  double const error = std::fabs(1.0 - sum);
  if (error > m_dFiMaxError) m_dFiMaxAnalysis = 1.0;
  RaiseError(error, sum, i, m_dFiSumSq, m_dFiMaxError, m_iFiMaxPoint, m_dFiMaxRBF);
  RaiseError(std::fabs(sumX), sumX, i, m_dDfdxSumSq, m_dDfdxMaxError, m_iDfdxMaxPoint, m_dDfdxMaxRBF);
  RaiseError(std::fabs(sumY), sumY, i, m_dDfdySumSq, m_dDfdyMaxError, m_iDfdyMaxPoint, m_dDfdyMaxRBF);
  RaiseError(std::fabs(sumZ), sumZ, i, m_dDfdzSumSq, m_dDfdzMaxError, m_iDfdzMaxPoint, m_dDfdzMaxRBF);
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
  return Status::kDone;
}
