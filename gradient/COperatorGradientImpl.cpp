#include "gradient/COperatorGradientImpl.h"

#include <initializer_list>

#include "foundation/ErrorText.h"
#include "foundation/FaceGroups.h"
#include "foundation/HostObjects.h"
#include "foundation/Status.h"
#include "gradient/FaceRing.h"
#include "gradient/GradientTypes.h"
#include "gradient/LeastSquaresWalk.h"
#include "host/ZYNCom.h"
#include "host/Zyn3dGV.h"

COperatorGradientImpl::COperatorGradientImpl() : m_szError{}, m_pFaceRing(new FaceRing) {
  StartErrorText(m_szError);
}

// Destroys neither the host objects, which are borrowed, nor the cell operator of type 2, whose destructor would destroy
// them.
COperatorGradientImpl::~COperatorGradientImpl() {
  m_pGV = nullptr;
  m_pPartFace = nullptr;
  m_pComm = nullptr;
  m_pCom = nullptr;
  m_pGVGPU = nullptr;
  m_pGVOpenMP = nullptr;
  m_pRBF = nullptr;
  FreeLeastSquaresArrays();
}

void COperatorGradientImpl::AppendError(char const* message) { AppendErrorText(m_szError, message); }

int COperatorGradientImpl::getZyn3dGV(CZyn3dGV* pGV, CZYNGVGPU* pGPU, CZYNGVOpenMP* pOpenMP,
                                      CZYN3DFiniteVolumeMesh* pMesh) {
  if (Receive(pGV, m_pGV, m_szError, kNoGlobals) == Status::kFailure) return Status::kFailure;
  ReceiveAccelerator(pGPU, m_pGVGPU, m_GPUHead);
  ReceiveIfGiven(pOpenMP, m_pGVOpenMP);
  ReceiveIfGiven(pMesh, m_pMesh);
  return Status::kSuccess;
}

int COperatorGradientImpl::getPartitionFace(CPartitionFace_DLL* pPartFace) {
  return Receive(pPartFace, m_pPartFace, m_szError, kNoPartitionFaces);
}

int COperatorGradientImpl::getCommunication(CCommunication* pComm, CZYNCom* pCom) {
  if (Receive(pComm, m_pComm, m_szError, kNoCommunication) == Status::kFailure) return Status::kFailure;
  return Receive(pCom, m_pCom, m_szError, "Can not get the object of CZYNCom\n");
}

// A refused type is stored nevertheless, and decides what GradMethod does.
int COperatorGradientImpl::getGradType(int& type) {
  m_iGradType = type;
  if (static_cast<unsigned>(type) <= static_cast<unsigned>(kRadialBasisType)) return Status::kSuccess;
  AppendError("Default grad type is wrong\n");
  return Status::kFailure;
}

int COperatorGradientImpl::ResetMaxGradientIterationNumber(int n) {
  if (n < 1) return Status::kFailure;
  m_iMaxGradIter = n;
  return Status::kSuccess;
}

/// Collective: failure, if one of the partitions failed.
int COperatorGradientImpl::Agreed(int status) {
  m_pCom->AllMin(status);
  return status < 0 ? Status::kFailure : Status::kSuccess;
}

/// Speeds up the gradients that work without Initialize, so a mesh that is missing or not complete is no error.
void COperatorGradientImpl::PrepareFaceRing() {
  if (m_pMesh != nullptr) m_pFaceRing->Prepare(FacesOf(FaceKind::Inner, *m_pMesh), m_pMesh->NInnerCells);
}

int COperatorGradientImpl::Initialize() {
  int status = Status::kDone;
  PrepareFaceRing();
  if (m_iGradType == kLeastSquaresType) {
    AllocateLeastSquaresArrays();
    GatherLeastSquaresMoments();
    PlanLeastSquaresWalk();
  }
  if (m_iGradType == kRadialBasisType) status = SetUpRadialBasisOperator();
  return Agreed(status);
}

void COperatorGradientImpl::Release() {
  FreeLeastSquaresArrays();
  DestroyRadialBasisOperator();
  m_pFaceRing->Release();
}

int COperatorGradientImpl::UpdateGeometry() {
  int status = Status::kDone;
  if (m_iGradType == kLeastSquaresType) GatherLeastSquaresMoments();
  if (m_iGradType == kRadialBasisType) {
    DestroyRadialBasisOperator();
    status = SetUpRadialBasisOperator();
  }
  return Agreed(status);
}

void COperatorGradientImpl::GradMethod(double* phi, double* gx, double* gy, double* gz, int n) {
  switch (m_iGradType) {
    case kGreenGaussType:
      if (n == 1) {
        PlainGreenGauss(phi, gx, gy, gz);
      } else {
        IteratedGreenGauss(phi, gx, gy, gz, n);
      }
      return;
    case kLeastSquaresType:
      LeastSquares(phi, gx, gy, gz);
      return;
    case kRadialBasisType:
      RadialBasis(phi, gx, gy, gz);
      return;
    case kNoGradientType:
      return;
    default:
      IteratedGreenGauss(phi, gx, gy, gz, n);
  }
}

void COperatorGradientImpl::GradMethod_3(double* phi1, double* phi2, double* phi3, double* g1x, double* g1y,
                                         double* g1z, double* g2x, double* g2y, double* g2z, double* g3x,
                                         double* g3y, double* g3z) {
  double const* const phi[3] = {phi1, phi2, phi3};
  double* const g[9] = {g1x, g1y, g1z, g2x, g2y, g2z, g3x, g3y, g3z};
  ThreeComponentGreenGauss(phi, g);
}

void COperatorGradientImpl::GradMethod_Weighted(double* phi, double* gx, double* gy, double* gz,
                                                double* coefficient, int /*n*/) {
  WeightedGreenGauss(phi, gx, gy, gz, coefficient);
}

void COperatorGradientImpl::GradMethod_LeastSquares_3(double* phi1, double* phi2, double* phi3, double* g1x,
                                                      double* g1y, double* g1z, double* g2x, double* g2y,
                                                      double* g2z, double* g3x, double* g3y, double* g3z) {
  double const* const phi[3] = {phi1, phi2, phi3};
  double* const g[9] = {g1x, g1y, g1z, g2x, g2y, g2z, g3x, g3y, g3z};
  ThreeComponentLeastSquares(phi, g);
}
