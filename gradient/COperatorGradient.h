#pragma once

#include "foundation/Export.h"

class CCommunication;
class CPartitionFace_DLL;
class CZYN3DFiniteVolumeMesh;
class CZYNCom;
class CZYNGVGPU;
class CZYNGVOpenMP;
class CZyn3dGV;
class COperatorGradientImpl;

/// Gradient of a cell field on one partition of an unstructured finite-volume mesh.
///
/// Call sequence: construct; `getZyn3dGV` with a mesh, `getPartitionFace`, `getCommunication` with both
/// objects; `getGradType`; `Initialize` once the mesh is complete; then the `GradMethod` family as often as
/// needed. The operator does not check the sequence: a call out of order reaches a null pointer.
///
/// Gradient types (`getGradType`), with n the last argument of `GradMethod`:
/// - 0, after construction: plain Green-Gauss for n = 1, iterated Green-Gauss with n sweeps for any other n;
/// - 1: unweighted least squares, n is ignored; needs `Initialize`;
/// - 2: radial-basis differential quadrature, n is ignored; needs `Initialize`. No exchange follows: halo cells of
///   the outputs hold 0.0 until the caller exchanges them;
/// - 3: returns at once, outputs untouched, no exchange;
/// - any other: iterated Green-Gauss with n sweeps, also for n = 1.
///
/// The setters are called `get...` because the operator *gets* its objects from the caller. They *borrow*:
/// every object must outlive the operator, which destroys none of them.
///
/// Fields are cell arrays [1..NCell]. The caller fills an input in all cells: ghost cells with the boundary
/// value, halo cells with the owner's value. Outputs hold the gradient (U/L) in interior cells, the owner's gradient
/// in halo cells and exactly 0.0 in ghost cells. Type 2 differs: it leaves 0.0 in halo cells, and gives the ghost
/// cells of walls and inlets the gradient of the cell that has the face. `Initialize` and all gradients except
/// types 2 and 3 are collective over the partitions. A gradient call allocates nothing.
///
/// Thread safety: one thread at a time per object. Different objects are independent unless they share the
/// previous-iterate arrays of one CZyn3dGV.
///
/// Copying is shallow: both objects then share one private state, and only one of them may be destroyed.
/// Assignment does not free the left side's former state.
class ZYN_EXPORT COperatorGradient {
 public:
  COperatorGradient();
  COperatorGradient(COperatorGradient const&) = default;
  ~COperatorGradient();
  COperatorGradient& operator=(COperatorGradient const& other);

  /// Stores `pGV`, and each of the other three that is not null; a null keeps the earlier value.
  /// @return 1; -1 for a null `pGV`, with a line of failure text and nothing stored
  int getZyn3dGV(CZyn3dGV* pGV, CZYNGVGPU* pGPU, CZYNGVOpenMP* pOpenMP, CZYN3DFiniteVolumeMesh* pMesh);

  /// @return 1; -1 for null, with a line of failure text and the earlier value kept
  int getPartitionFace(CPartitionFace_DLL* pPartFace);

  /// Stores `pComm`, then `pCom`.
  /// @return 1; -1 with a line of failure text for a null `pComm` (nothing is stored) or a null `pCom` (`pComm` is
  ///         stored)
  int getCommunication(CCommunication* pComm, CZYNCom* pCom);

  /// Stores the gradient type, whatever it is.
  /// @return 1 for 0, 1, 2; -1 with a line of failure text for any other, which is stored nevertheless
  int getGradType(int& type);

  /// Has no effect on gradients: the number of sweeps is the last argument of GradMethod.
  /// @return 1; -1 for n < 1, nothing stored
  int ResetMaxGradientIterationNumber(int n);

  /// Prepares the gradient type: gathers the least-squares moments for type 1, derives the weights for type 2. For every
  /// type, it looks at the numbers of the inner faces, for a faster walk over them; without it, Green-Gauss gradients
  /// have the same bits. Collective for every type. A second call gathers the moments into new arrays and does not free the first
  /// ones; it keeps the weights, even those of a call that failed.
  /// @return 1; -1 on all partitions if one of them failed
  int Initialize();

  /// Frees what Initialize has made, for a mesh of other cells and faces: Initialize may follow, with the same records or
  /// with others received since, and nothing is left behind. Copies share the state, so it is gone for them, too.
  void Release();

  /// Brings what Initialize has made up to date after points have moved: gathers the moments of type 1 into the arrays
  /// that are there, derives the weights of type 2 anew, does nothing for other types. Collective like Initialize.
  /// @pre Initialize with the same gradient type, on a mesh with the same cells and faces
  /// @return as Initialize
  int UpdateGeometry();

  /// Whether gradients exchange their outputs at the end, as they do after construction. Without it, the outputs have no
  /// defined values in halo cells, for solvers that exchange or never read them. Exchanges between the sweeps of the
  /// iterated gradient stay. The same on all partitions.
  void SetResultExchange(bool wanted);

  /// Gradient of `phi` by the method of the gradient type. Collective, except with types 2 and 3.
  /// @param[in]  phi       [1..NCell], U
  /// @param[out] gx,gy,gz  [1..NCell], U/L, overwritten (with 0 sweeps only exchanged)
  /// @param[in]  n         number of sweeps, see the table above
  /// @note With type 1, a cell whose neighbours do not span space may stop the solve. The call then prints
  ///       "aa[ii][j]=0." and "4" and returns without the exchange.
  void GradMethod(double* phi, double* gx, double* gy, double* gz, int n);

  /// Plain Green-Gauss gradients of three fields in one walk over the faces, whatever the gradient type.
  /// Collective.
  /// @param[in]  phi1,phi2,phi3  [1..NCell], U
  /// @param[out] g1x,g1y,g1z,g2x,g2y,g2z,g3x,g3y,g3z  [1..NCell], U/L, overwritten
  void GradMethod_3(double* phi1, double* phi2, double* phi3, double* g1x, double* g1y, double* g1z,
                    double* g2x, double* g2y, double* g2z, double* g3x, double* g3y, double* g3z);

  /// Green-Gauss gradient with face values from the harmonic mean of a cell coefficient, whatever the gradient type.
  /// Collective.
  /// @param[in]  phi       [1..NCell], U
  /// @param[out] gx,gy,gz  [1..NCell], U/L, overwritten
  /// @param[in]  weight    [1..NCell] the coefficient, halo cells included
  /// @param[in]  n         ignored
  void GradMethod_Weighted(double* phi, double* gx, double* gy, double* gz, double* weight, int n);

  /// Least-squares gradients of three fields in one walk over the faces, whatever the gradient type now is. Each field gets
  /// what GradMethod with type 1 gives it, to the last bit. Collective.
  /// @param[in]  phi1,phi2,phi3  [1..NCell], U
  /// @param[out] g1x,g1y,g1z,g2x,g2y,g2z,g3x,g3y,g3z  [1..NCell], U/L, overwritten; no two the same array
  /// @pre Initialize with gradient type 1
  /// @note A cell at which GradMethod stops, stops all three fields: the call then prints the two lines once and returns
  ///       without the exchange.
  void GradMethod_LeastSquares_3(double* phi1, double* phi2, double* phi3, double* g1x, double* g1y,
                                 double* g1z, double* g2x, double* g2y, double* g2z, double* g3x, double* g3y,
                                 double* g3z);

  /// The failure text gathered so far: "Operator Gradient Error = " and one line per failure, at most 1023
  /// characters. Owned by the operator; valid until it is destroyed.
  char const* getErrorMsg();

  COperatorGradientImpl* m_pImpl;  ///< private state, owned; not for callers
  char m_szText[1024];             ///< reserved; only assignment copies it
};
