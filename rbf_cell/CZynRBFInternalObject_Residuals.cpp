// The largest residuals of the systems of cells and faces: kept during a walk over these, and printed at its end.

#include "foundation/Progress.h"
#include "rbf_cell/CZynRBFInternalObject.h"

// The comparison has a sign: a negative residual never shows, and neither does a NaN. The printed maxima are defined
// so.
void CZynRBFInternalObject::RaiseResidual(double residual, double& maximum, int element) {
  if (residual > maximum) {
    maximum = residual;
    m_iWorstElement = element;
  }
}

void CZynRBFInternalObject::ClearResiduals() { MAXResidual_X = MAXResidual_Y = MAXResidual_Z = 0.0; }

void CZynRBFInternalObject::PrintResiduals() const {
  PrintFormatted("Span = %lf, MAXResidual_X = %le, MAXResidual_Y = %le, MAXResidual_Z = %le\n", Span,
                 MAXResidual_X, MAXResidual_Y, MAXResidual_Z);
}
