#pragma once

#include <cstdint>
#include <vector>

#include "foundation/Export.h"
#include "rbf_cell/RBFnode.h"

class CCommunication;
class CPartitionFace_DLL;
class CZYN3DFiniteVolumeMesh;
class CZYNGVGPU;
class CZYNGVOpenMP;
class CZYNOptKer;
class CZyn3dGV;
class CellSystem;
enum class FaceKind : int;
struct BoundingBox;
struct MeshExtent;

/// Radial-basis gradient of cell fields: the object behind gradient type 2 of COperatorGradient.
///
/// The stencil of an interior cell consists of the cell itself and its neighbours, in the order of the mesh's
/// CellCell row. With the members' points X_1..X_n, the gradient of a field phi at the cell is
///   (d phi/dx)_cell = sum_k w_k phi_k,   y and z alike.
/// The weights are derived once, at set-up, from a local differential-quadrature system for each direction,
///   sum_k w_k kernel(|X_k - X_j|) + m = d/dx kernel(|x - X_j|) at x = X_cell, for every member j,
///   sum_k w_k = 0.
/// Constants have no slope up to rounding. There is no linear term: a linear field is reproduced approximately, better
/// the wider the support.  @cite shu2003 @cite wendland1995
///
/// Call sequence: construct; `getZyn3dGV` with a mesh, `getPartitionFace`, `getCommunication`; `InitialRBFSetting`;
/// `DeriveRBFweighting`; `MultiplyRBFCoefficent` as often as needed. The object does not record its stage: a call out
/// of order reaches a null pointer. A repeated set-up leaves the earlier tables behind, unfreed. Nothing is
/// collective.
///
/// The setters are called `get...` because the object *gets* its objects from the caller. It *takes over* all of them
/// except the mesh: the destructor destroys the global variables, partition faces, communication, accelerator and
/// threading objects. COperatorGradient therefore never destroys its cell operator.
///
/// Copying copies pointers, host objects and tables included: only one of two such objects may be destroyed.
/// Assignment leaves behind what its left side held.
///
/// Thread safety: one thread at a time per object.
///
/// Notation: `[1..n]` is a 1-based array of n+1 elements, element 0 unused. A row table is an array of pointers to
/// rows, null for every row that is not used. L is the mesh's unit of length, U that of the field.
class ZYN_EXPORT CZynRBFInternalObject {
 public:
  CZynRBFInternalObject();
  CZynRBFInternalObject(CZynRBFInternalObject const&);
  CZynRBFInternalObject& operator=(CZynRBFInternalObject const&);

  /// Frees the tables, then destroys the host objects that it was given, except the mesh. The mesh and the partition
  /// faces must be alive until then.
  virtual ~CZynRBFInternalObject();

  // Lifecycle: CZynRBFInternalObject.cpp

  /// Stores `pGV`, and each of the other three unless it is null: a null keeps the earlier object.
  /// @return 1; -1 for a null `pGV`, with a line of failure text and nothing stored
  int getZyn3dGV(CZyn3dGV* pGV, CZYNGVGPU* pGPU, CZYNGVOpenMP* pOpenMP, CZYN3DFiniteVolumeMesh* pMesh);

  /// @return 1; -1 for null, with a line of failure text and the earlier object kept
  int getPartitionFace(CPartitionFace_DLL* pPartFace);

  /// @return 1; -1 for null, with a line of failure text and the earlier object kept
  int getCommunication(CCommunication* pComm);

  /// The failure text so far: "Operator Gradient Error = " and one line for each failure, at most 1023 characters.
  /// Owned by the object.
  char const* getErrorMsg();

  /// Sets the operator up as far as its stencils: allocates the tables of the cells, reads or writes the settings
  /// file, gives every cell number a point and collects the stencils.
  /// @pre the setters were called, with a mesh
  /// @return 1
  int InitialRBFSetting();

  /// Reads `Span` and `iShape_Normalize` from `m_szRBFFileName`. A missing file is written with the defaults. A file
  /// whose first line is not 1001 is replaced by one with the defaults, and its content is lost. Lines count by their
  /// place; keys are not compared and values not validated. If no file can be read, both settings keep their values.
  /// @return 0
  int ReadRBFbackdoorfile();

  /// ReplaceExtension() of foundation/SettingsText.h. @return 1
  int ChangeFileName(char* result, char const* extension, char* name);

  /// SplitSettingsLine() of foundation/SettingsText.h. @return 1 when the line has a "=", else 0
  int StrCopyAB(char const* line, char* key, char* value);

  // Points and stencils: CZynRBFInternalObject_Stencil.cpp

  /// Gives cell numbers their points and enters these in the tree: interior and halo cells their centres, ghost cells
  /// of walls, inlets and outlets their face centres.
  /// @note Ghost cells of symmetry faces get no point. They stay at the origin with kind 0, and the weights of the
  /// cells beside them are defined by that.
  /// @pre InitialRBFSetting @return 1
  int SetNodeCollation();

  /// Stencils, support lengths and extents of all interior cells. @pre SetNodeCollation @return 1
  int SetCellToCellconnection();

  // Weights of the cells and their application: CZynRBFInternalObject_Weights.cpp, with the system in CellSystem.h

  /// Derives the weights of all interior cells in ascending order. Then prints the largest residual of each
  /// direction, the sum of a cell's weights and multiplier. @pre InitialRBFSetting @return 1
  int DeriveRBFweighting();

  /// Derives the weights of one interior cell anew.
  /// @param[in] cell  1..NInnerCells
  /// @note Neither a singular system nor a division by zero (a stencil without extent) is reported. They show as
  /// large or missing residuals and as NaN in the weights.
  /// @pre InitialRBFSetting @return 1
  int DeriveCellCoefficentBysolveDQfullMatrix(int cell);

  /// (gx, gy, gz)_i = sum over the stencil of cell i, in its order, of phi times the weights.
  ///
  /// Allocates and exchanges nothing: `phi` is used in ghost and halo cells as it stands.
  /// @param[in]  phi       [1..NCell], U
  /// @param[out] gx,gy,gz  [1..NCell], U/L, overwritten. Ghost cells of walls and inlets get the gradient of their
  /// interior cell, all other ghost and halo cells 0.0
  /// @pre InitialRBFSetting; before DeriveRBFweighting the result is zero
  /// @return 1
  int MultiplyRBFCoefficent(double* phi, double* gx, double* gy, double* gz);

  // Face family: CZynRBFInternalObject_FaceTables.cpp, CZynRBFInternalObject_FaceWeights.cpp. Nothing in the library
  // calls it. Kinds of faces: 1 inner, 2 wall, 3 inlet, 4 outlet, 5 partition.

  /// Allocates the face tables. With mode 0 a row has room for two nodes; with mode 1 it has room for all cells
  /// around the face, of which there are none around faces whose number within their kind is beyond the partition
  /// faces. With any other mode there are no rows. A second call leaves the earlier tables behind.
  /// @pre InitialRBFSetting @return 0
  int faceToCellconnection_memoryallocate(int mode);

  /// Number of distinct cells around a face. For i = 1, 2, ... over the nodes of the face, these are the entries of
  /// NodeCell row i, as many as the NodeCell row of the face's i-th node has.
  /// @note Two oddities are part of the definition, and the sizes of mode 1 depend on them: the nodes come from the
  /// partition faces' table whatever the kind, and the cells from row i instead of the node's row. Entries beyond the
  /// end of a row count as nothing, and so does a face whose number is beyond the partition faces.
  /// @param[in] face  number within its kind, from 1
  /// @param[in] kind  1..5; any other kind has no cells
  int CountingfaceToCellconnectionNumber(int face, int kind);

  /// Does nothing: the face family takes the two cells of a face from the mesh. @return 0
  int SetfaceToCellconnection(int);

  /// @name Two-node weights of all faces of a kind; prints the residuals.
  /// @pre faceToCellconnection_memoryallocate @return 1
  /// @{
  int DeriveRBFweighting_InnerfaceFlux();
  int DeriveRBFweighting_InletfaceFlux();
  int DeriveRBFweighting_OutletfaceFlux();
  /// Derives inlet faces, not wall faces: the inlet operation for the numbers of wall faces, as far as there are
  /// inlet faces. DeriveWallFaceCoefficentBysolveDQfullMatrix derives a wall face.
  int DeriveRBFweighting_WallfaceFlux();
  int DeriveRBFweighting_PartInterfaceFlux();
  /// @}

  /// @name Two-node weights of face f of a kind. Those of d/dx, d/dy, d/dz go into the kind's table of weights; those
  /// of the derivative along the normal of an inner face go into `m_ppRBFInnerFaceFlux`.
  /// @pre faceToCellconnection_memoryallocate @return 1
  /// @{
  int DeriveInletFaceCoefficentBysolveDQfullMatrix(int f);
  int DeriveOutletFaceCoefficentBysolveDQfullMatrix(int f);
  int DeriveWallFaceCoefficentBysolveDQfullMatrix(int f);
  int DerivePartInterFaceCoefficentBysolveDQfullMatrix(int f);
  int DeriveInnerFaceCoefficentBysolveDQfullMatrix(int f);
  /// @}

  /// (fx, fy, fz)_f = sum over the two cells of inner face f of phi times the weights of `m_ppRBFInnerFaceCoef`.
  /// @note Nothing in the library fills that table, since the weights of inner faces go to `m_ppRBFInnerFaceFlux`.
  /// The result is zero unless the caller fills it.
  /// @param[in]  phi       [1..NCell], U
  /// @param[out] fx,fy,fz  [1..NInnerFaces], U/L, overwritten
  /// @pre faceToCellconnection_memoryallocate @return 1
  int MultiplyRBFCoefficent_InnerfaceFlux(double* phi, double* fx, double* fy, double* fz);

  // Immersed-boundary points: CZynRBFInternalObject_IB.cpp. Nothing in the library calls these six, and together they
  // do not interpolate: use CZynIBRBFInternalObject for that. The search takes a filled tree and a map of its
  // identities from the caller.

  /// Reads the settings, makes the tables of `nIB` points without rows, gives the cell numbers their points, and
  /// prints two lines per cell. It searches nothing. The points' tables, `m_pRBFnode` and `m_piNodeKind` are made
  /// anew and the earlier ones left behind, as in every repeated set-up of this class: a copy of the object may still
  /// read them.
  /// @param[in] nIB  number of points; the other arguments are not used
  /// @return 0
  int Initialize_IBInterpolateData(double* pCellMark, int nIB, double* x, double* y, double* z, int iMethod,
                                   double dDistance, int iNumber);

  /// Measures the mesh, clears the two reset blocks of the global variables and gives cell numbers their points as
  /// SetNodeCollation does, without a tree.
  /// @return 1
  int SetIBNodeCollation();

  /// Prints the number of cells and the running number for every cell, and does nothing else: no tree is filled.
  /// @return 0
  int SetIBADTress(double* pCellMark, std::vector<int> vCell, CZYNOptKer tree, int* piCellToBlock);

  /// Stencils of all points, in the tree's order. By method 1 they are the entries of `tree` in a cube of half-width
  /// `dDistance`; by method 2 those of the first cube of half-width 1, 2, 3... mean cell distances that holds
  /// `iNumber` of them. By any other method they are empty.
  /// @note The cube is centred at (x[i], x[i], x[i]); `y` and `z` are not read. Callers that want a search around a
  /// point use CZynIBRBFInternalObject. With fewer entries than `iNumber` in the tree, the cube stops growing when it
  /// covers all cells.
  /// @param[in]  x              [1..m_iNIBNode], L
  /// @param[in]  piBlockToCell  [1..] the cell number of an identity of the tree
  /// @param[in]  tree           shares its entries with the object it was copied from
  /// @param[out] pSupport       [1..m_iNIBNode] half-width of the cube, L
  /// @pre Initialize_IBInterpolateData
  /// @return 0
  int SearchIBADTress(double* x, double* y, double* z, int iMethod, double dDistance, int iNumber,
                      int* piBlockToCell, CZYNOptKer tree, double* pSupport);

  /// Weights of value and gradient at point i. Its system stands on the cells of the stencil, in double precision and
  /// without the constant term that the systems of cells have: see KernelSystem.h.
  /// @param[in] i         1..m_iNIBNode
  /// @param[in] x,y,z     [1..m_iNIBNode], L
  /// @param[in] pSupport  [1..m_iNIBNode], L; times `Span`, the support radius
  /// @pre SearchIBADTress @return 1
  int DeriveIBCoefficentBysolveDQfullMatrix(int i, double* x, double* y, double* z, double* pSupport);

  /// Sets the four outputs to 0.0, elements 1..m_iNIBNode; the weights are not applied. @return 0
  int Multiply_IBRBFCoefficent(double* pField, double* pValue, double* pDfdx, double* pDfdy, double* pDfdz);

  CPartitionFace_DLL* m_pPartFace = nullptr;
  CCommunication* m_pComm = nullptr;  ///< destroyed at the end, not used otherwise
  CZYNGVGPU* m_pGVGPU = nullptr;
  CZYNGVOpenMP* m_pGVOpenMP = nullptr;
  std::uint64_t m_GPUHead = 0;      ///< first word of the accelerator object; nothing reads it
  CZYNOptKer* m_pADTree = nullptr;  ///< boxes around the points of all cells; owned, not searched for cells
  RBFnode* m_pRBFnode = nullptr;    ///< [1..NCell] the point of a cell number
  RBFnode* m_pStencilExtent = nullptr;  ///< [1..NCell] extents of a cell's stencil along the axes, L
  int m_iWorstElement = 0;              ///< cell or face at which a largest residual last rose
  double MAXResidual_X = 0.0;           ///< largest residual of d/dx; never negative, as it starts at 0
  double MAXResidual_Y = 0.0;
  double MAXResidual_Z = 0.0;
  double MAX_Weithting_Residual_Normal = 0.0;  ///< largest multiplier of an inner face
  double m_dStoredLimit = 0.0;                 ///< not read
  double m_dStoredFactor = 0.0;                ///< not read
  char m_szRBFFileName[1024] = "";
  double Span = 500.0;       ///< support radius as a multiple of the stencil's length
  int iShape_Normalize = 0;  ///< 1: shape-normalised form of the kernel; any other value: plain form

  /// [1..NInnerCells] stencil: row[0] members at row[1..row[0]], the cell first; one element more, left zero.
  int** m_ppRBFCellConn = nullptr;
  int** m_ppRBFInnerFaceConn = nullptr;  ///< stencils of faces: row[0] set, members left zero
  int** m_ppRBFWallFaceConn = nullptr;
  int** m_ppRBFInletFaceConn = nullptr;
  int** m_ppRBFOutletFaceConn = nullptr;
  int** m_ppRBFPartInterFaceConn = nullptr;
  /// [1..NInnerCells] weights, 1/L, at 1..n in the order of the stencil, and the multiplier at n+1. With the
  /// shape-normalised form they belong to the derivatives with respect to the scaled coordinates.
  RBFnode** m_ppRBFCellCoef = nullptr;
  RBFnode** m_ppRBFInnerFaceCoef = nullptr;  ///< weights of faces at 1, 2
  RBFnode** m_ppRBFPartInterFaceCoef = nullptr;
  RBFnode** m_ppRBFInletFaceCoef = nullptr;
  RBFnode** m_ppRBFWallFaceCoef = nullptr;
  RBFnode** m_ppRBFOutletFaceCoef = nullptr;
  double** m_ppRBFInnerFaceFlux = nullptr;  ///< [1..NInnerFaces] normal weights at 1, 2, multiplier at 3

  double* m_pSupportLength = nullptr;  ///< [1..NCell] greatest distance from a cell to its stencil, L
  int* m_piNodeKind = nullptr;  ///< [1..NCell] 1 interior, 2 wall, 3 inlet, 4 outlet, 5 partition, 0 none
  int* m_piNodeKindIndex = nullptr;         ///< [1..NCell] number of the cell or face within its kind
  double m_dBoundMax[3] = {0.0, 0.0, 0.0};  ///< range of the tree, x, y, z
  double m_dBoundMin[3] = {0.0, 0.0, 0.0};
  double m_dMeanCellDistance = 0.0;  ///< mean distance between the two cells of an inner face, L

  int m_iNIBNode = 0;                  ///< number of immersed-boundary points
  int** m_ppIBConn = nullptr;          ///< [1..m_iNIBNode] their stencils, each row an allocation of its own
  RBFnode** m_ppIBCoef = nullptr;      ///< their gradient weights, likewise
  double** m_ppIBValueCoef = nullptr;  ///< their value weights, likewise

  CZyn3dGV* m_pGV = nullptr;
  CZYN3DFiniteVolumeMesh* m_pMesh = nullptr;
  char m_szError[1024];

 private:
  struct FaceNodes;

  // Lifecycle
  void AllocateCellTables();
  void ReleaseTables();
  void DestroyHostObjects();

  // Points and stencils
  void MeasureBounds();
  void StoreExtent(MeshExtent const& extent);
  void CollateAll();
  void CollectStencil(int i);

  // Weights of the cells
  void DeriveCellCoefficents(int cell, CellSystem& system);
  void FillGhostGradients(double* gx, double* gy, double* gz) const;

  // Residuals: CZynRBFInternalObject_Residuals.cpp
  void RaiseResidual(double residual, double& maximum, int element);
  void ClearResiduals();
  void PrintResiduals() const;

  // Face family
  int DeriveAllFaces(FaceKind kind, int nFace, RBFnode** table, char const* message);
  int DeriveFace(FaceKind kind, int f, RBFnode** table);

  // Immersed-boundary points
  void CreateIBTables(int nIB);
  BoundingBox BoundsOfCells() const;
};
