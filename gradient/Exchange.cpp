// A gradient ends with the exchange of its output arrays, blocking or through the four non-blocking buffers, unless the
// solver has switched it off.

#include "gradient/COperatorGradientImpl.h"
#include "host/ZYNCommunication.h"
#include "host/Zyn3dGV.h"

namespace {

constexpr int kBuffers = 4;

ZYNNonBlockingBufferId Buffer(int i) { return static_cast<ZYNNonBlockingBufferId>(i % kBuffers); }

}  // namespace

void COperatorGradientImpl::ExchangeThree(double* gx, double* gy, double* gz) {
  double* const arrays[3] = {gx, gy, gz};
  if (m_pGV->UseNonBlockingExch == 0) {
    for (double* array : arrays) m_pComm->DDM_Exch(array);
    return;
  }
  for (int i = 0; i < 3; ++i) m_pComm->DDM_IExch_Start(arrays[i], Buffer(i));
  for (int i = 0; i < 3; ++i) m_pComm->DDM_IExch_Wait(arrays[i], Buffer(i));
}

void COperatorGradientImpl::ExchangeResult(double* gx, double* gy, double* gz) {
  if (m_bExchangesResult) ExchangeThree(gx, gy, gz);
}

// Nine arrays pass through four buffers in rotation: each wait frees the buffer that the next start takes.
void COperatorGradientImpl::ExchangeResult(double* const g[9]) {
  if (!m_bExchangesResult) return;
  constexpr int kArrays = 9;
  if (m_pGV->UseNonBlockingExch == 0) {
    for (int i = 0; i < kArrays; ++i) m_pComm->DDM_Exch(g[i]);
    return;
  }
  for (int i = 0; i < kBuffers; ++i) m_pComm->DDM_IExch_Start(g[i], Buffer(i));
  for (int i = 0; i < kArrays; ++i) {
    m_pComm->DDM_IExch_Wait(g[i], Buffer(i));
    if (i + kBuffers < kArrays) m_pComm->DDM_IExch_Start(g[i + kBuffers], Buffer(i + kBuffers));
  }
}
