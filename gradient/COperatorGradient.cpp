#include "gradient/COperatorGradient.h"

#include <cstring>

#include "gradient/COperatorGradientImpl.h"

COperatorGradient::COperatorGradient() : m_pImpl(new COperatorGradientImpl), m_szText{} {}

COperatorGradient::~COperatorGradient() {
  delete m_pImpl;
  m_pImpl = nullptr;
}

// Copies the pointer, as the interface promises: both sides share the right side's state from here on, and nobody
// frees the left side's former state.
// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): pointer and text are simply stored again
COperatorGradient& COperatorGradient::operator=(COperatorGradient const& other) {
  m_pImpl = other.m_pImpl;
  std::memmove(m_szText, other.m_szText, sizeof(m_szText));
  return *this;
}

int COperatorGradient::getZyn3dGV(CZyn3dGV* pGV, CZYNGVGPU* pGPU, CZYNGVOpenMP* pOpenMP,
                                  CZYN3DFiniteVolumeMesh* pMesh) {
  return m_pImpl->getZyn3dGV(pGV, pGPU, pOpenMP, pMesh);
}

int COperatorGradient::getPartitionFace(CPartitionFace_DLL* pPartFace) {
  return m_pImpl->getPartitionFace(pPartFace);
}

int COperatorGradient::getCommunication(CCommunication* pComm, CZYNCom* pCom) {
  return m_pImpl->getCommunication(pComm, pCom);
}

int COperatorGradient::getGradType(int& type) { return m_pImpl->getGradType(type); }

int COperatorGradient::ResetMaxGradientIterationNumber(int n) {
  return m_pImpl->ResetMaxGradientIterationNumber(n);
}

int COperatorGradient::Initialize() { return m_pImpl->Initialize(); }

void COperatorGradient::Release() { m_pImpl->Release(); }

int COperatorGradient::UpdateGeometry() { return m_pImpl->UpdateGeometry(); }

void COperatorGradient::SetResultExchange(bool wanted) { m_pImpl->m_bExchangesResult = wanted; }

void COperatorGradient::GradMethod(double* phi, double* gx, double* gy, double* gz, int n) {
  m_pImpl->GradMethod(phi, gx, gy, gz, n);
}

void COperatorGradient::GradMethod_3(double* phi1, double* phi2, double* phi3, double* g1x, double* g1y,
                                     double* g1z, double* g2x, double* g2y, double* g2z, double* g3x,
                                     double* g3y, double* g3z) {
  m_pImpl->GradMethod_3(phi1, phi2, phi3, g1x, g1y, g1z, g2x, g2y, g2z, g3x, g3y, g3z);
}

void COperatorGradient::GradMethod_Weighted(double* phi, double* gx, double* gy, double* gz, double* weight,
                                            int n) {
  m_pImpl->GradMethod_Weighted(phi, gx, gy, gz, weight, n);
}

void COperatorGradient::GradMethod_LeastSquares_3(double* phi1, double* phi2, double* phi3, double* g1x,
                                                  double* g1y, double* g1z, double* g2x, double* g2y,
                                                  double* g2z, double* g3x, double* g3y, double* g3z) {
  m_pImpl->GradMethod_LeastSquares_3(phi1, phi2, phi3, g1x, g1y, g1z, g2x, g2y, g2z, g3x, g3y, g3z);
}

char const* COperatorGradient::getErrorMsg() { return m_pImpl->m_szError; }
