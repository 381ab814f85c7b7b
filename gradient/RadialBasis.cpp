// Radial-basis gradient. The cell operator of rbf_cell/ does all of the work; this file creates it, sets it up and calls
// it.

#include "foundation/Status.h"
#include "gradient/COperatorGradientImpl.h"
#include "rbf_cell/CZynRBFInternalObject.h"

// Creates the cell operator at the first call.
// @return the status of the derivation, whatever became of the settings; 0 if the operator exists already
int COperatorGradientImpl::SetUpRadialBasisOperator() {
  if (m_pRBF != nullptr) return Status::kDone;
  m_pRBF = new CZynRBFInternalObject;
  m_pRBF->getZyn3dGV(m_pGV, m_pGVGPU, m_pGVOpenMP, m_pMesh);
  m_pRBF->getPartitionFace(m_pPartFace);
  m_pRBF->getCommunication(m_pComm);
  m_pRBF->InitialRBFSetting();
  return m_pRBF->DeriveRBFweighting();
}

// The destructor of the cell operator destroys the host objects that it has. They belong to the solver, so it gives them
// back first.
void COperatorGradientImpl::DestroyRadialBasisOperator() {
  if (m_pRBF == nullptr) return;
  m_pRBF->m_pGV = nullptr;
  m_pRBF->m_pPartFace = nullptr;
  m_pRBF->m_pComm = nullptr;
  m_pRBF->m_pGVGPU = nullptr;
  m_pRBF->m_pGVOpenMP = nullptr;
  delete m_pRBF;
  m_pRBF = nullptr;
}

void COperatorGradientImpl::RadialBasis(double* phi, double* gx, double* gy, double* gz) {
  m_pRBF->MultiplyRBFCoefficent(phi, gx, gy, gz);
}
