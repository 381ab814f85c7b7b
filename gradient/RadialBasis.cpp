// Radial-basis gradient: the cell operator does all of the work; here is how it is created, set up and
// called.

#include "foundation/Status.h"
#include "gradient/COperatorGradientImpl.h"
#include "rbf_cell/CZynRBFInternalObject.h"

// Creates the cell operator once. It is never destroyed: its destructor would destroy the host objects handed
// to it, which belong to the solver.
// @return the status of the derivation; that of the settings is not looked at. 0 when the operator exists
// already
int COperatorGradientImpl::SetUpRadialBasisOperator() {
  if (m_pRBF != nullptr) return Status::kDone;
  m_pRBF = new CZynRBFInternalObject;
  m_pRBF->getZyn3dGV(m_pGV, m_pGVGPU, m_pGVOpenMP, m_pMesh);
  m_pRBF->getPartitionFace(m_pPartFace);
  m_pRBF->getCommunication(m_pComm);
  m_pRBF->InitialRBFSetting();
  return m_pRBF->DeriveRBFweighting();
}

void COperatorGradientImpl::RadialBasis(double* phi, double* gx, double* gy, double* gz) {
  m_pRBF->MultiplyRBFCoefficent(phi, gx, gy, gz);
}
