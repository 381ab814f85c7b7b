#pragma once

#include <cstdint>
#include <memory>

class CCommunication;
class CPartitionFace_DLL;
class CZYN3DFiniteVolumeMesh;
class CZYNCom;
class CZYNGVGPU;
class CZYNGVOpenMP;
class CZynRBFInternalObject;
class CZyn3dGV;
class FaceGroups;
class FaceRing;
class LeastSquaresPlan;
namespace normal_equations {
struct Matrices;
}

/// Private state of COperatorGradient, and the gradient methods with one source file each.
///
/// The host objects are borrowed. The nine least-squares arrays are owned: the destructor frees those of the last
/// Initialize, earlier ones are never freed. Release frees them, and the cell operator.
class COperatorGradientImpl {
 public:
  COperatorGradientImpl();
  ~COperatorGradientImpl();
  COperatorGradientImpl(COperatorGradientImpl const&) = delete;
  COperatorGradientImpl& operator=(COperatorGradientImpl const&) = delete;

  int getZyn3dGV(CZyn3dGV* pGV, CZYNGVGPU* pGPU, CZYNGVOpenMP* pOpenMP, CZYN3DFiniteVolumeMesh* pMesh);
  int getPartitionFace(CPartitionFace_DLL* pPartFace);
  int getCommunication(CCommunication* pComm, CZYNCom* pCom);
  int getGradType(int& type);
  int ResetMaxGradientIterationNumber(int n);
  int Initialize();
  void Release();
  int UpdateGeometry();
  void GradMethod(double* phi, double* gx, double* gy, double* gz, int n);
  void GradMethod_3(double* phi1, double* phi2, double* phi3, double* g1x, double* g1y, double* g1z,
                    double* g2x, double* g2y, double* g2z, double* g3x, double* g3y, double* g3z);
  void GradMethod_Weighted(double* phi, double* gx, double* gy, double* gz, double* weight, int n);
  void GradMethod_LeastSquares_3(double* phi1, double* phi2, double* phi3, double* g1x, double* g1y,
                                 double* g1z, double* g2x, double* g2y, double* g2z, double* g3x, double* g3y,
                                 double* g3z);

  CZyn3dGV* m_pGV = nullptr;
  CZYN3DFiniteVolumeMesh* m_pMesh = nullptr;
  CPartitionFace_DLL* m_pPartFace = nullptr;
  CCommunication* m_pComm = nullptr;
  CZYNCom* m_pCom = nullptr;
  CZYNGVGPU* m_pGVGPU = nullptr;
  CZYNGVOpenMP* m_pGVOpenMP = nullptr;
  std::uintptr_t m_GPUHead = 0;             ///< first word of the accelerator object; nothing reads it
  CZynRBFInternalObject* m_pRBF = nullptr;  ///< cell operator of gradient type 2; destroyed by Release alone
  int m_iMaxGradIter = 1;                   ///< stored for the caller's sake, never read
  int m_iGradType = 0;
  char m_szError[1024];

  /// [1..NCell] least-squares moments, L^2: sums of dx*dx, dy*dy, dz*dz, dy*dx, dz*dx, dz*dy over a cell's
  /// neighbours.
  double *m_pSxx = nullptr, *m_pSyy = nullptr, *m_pSzz = nullptr;
  double *m_pSxy = nullptr, *m_pSxz = nullptr, *m_pSyz = nullptr;
  /// [1..NCell] least-squares right-hand sides, U*L: sums of dphi*dx, dphi*dy, dphi*dz.
  double *m_pBx = nullptr, *m_pBy = nullptr, *m_pBz = nullptr;

  bool m_bExchangesResult = true;             ///< whether the halo cells of the outputs are filled
  std::unique_ptr<LeastSquaresPlan> m_pPlan;  ///< of the least-squares gradients; made with the arrays above
  /// Never null; prepared by Initialize. The Green-Gauss gradients work without that, too.
  std::unique_ptr<FaceRing> m_pFaceRing;

 private:
  void AppendError(char const* message);
  int Agreed(int status);
  void PrepareFaceRing();

  // GreenGauss_Iterated.cpp, GreenGauss_Plain.cpp, GreenGauss_Weighted.cpp, GreenGauss_ThreeComponent.cpp
  void IteratedGreenGauss(double const* phi, double* gx, double* gy, double* gz, int nSweep);
  void PlainGreenGauss(double const* phi, double* gx, double* gy, double* gz);
  void WeightedGreenGauss(double const* phi, double* gx, double* gy, double* gz, double const* coefficient);
  void ThreeComponentGreenGauss(double const* const phi[3], double* const g9[9]);

  // LeastSquares.cpp
  void AllocateLeastSquaresArrays();
  void FreeLeastSquaresArrays();
  void GatherLeastSquaresMoments();
  void PlanLeastSquaresWalk();
  normal_equations::Matrices LeastSquaresMatrices() const;
  void LeastSquares(double const* phi, double* gx, double* gy, double* gz);
  void ThreeComponentLeastSquares(double const* const phi[3], double* const g9[9]);
  void ClearLeastSquaresSums(int first, double* gx, double* gy, double* gz);
  bool GatherThenSolve(FaceGroups const& faces, double const* phi, double* gx, double* gy, double* gz);

  // RadialBasis.cpp
  int SetUpRadialBasisOperator();
  void DestroyRadialBasisOperator();
  void RadialBasis(double* phi, double* gx, double* gy, double* gz);

  // Exchange.cpp
  void ExchangeThree(double* gx, double* gy, double* gz);
  void ExchangeResult(double* gx, double* gy, double* gz);
  void ExchangeResult(double* const g[9]);
};
